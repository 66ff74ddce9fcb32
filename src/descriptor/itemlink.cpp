#include "utdata/itemlink.h"

#include <array>
#include <unordered_map>

#include "interfaces/thread_safety.h"

namespace utdata {

namespace {

/// Serial numbers of live items by address. Addresses are spread over parts with a lock each, so that threads seldom meet.
class Registry {
 public:
  void Add(const CIData* item) {
    const std::uint64_t serial = m_lastSerial.fetch_add(1, std::memory_order_relaxed) + 1;
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    part.serials[item] = serial;
  }

  bool Remove(const CIData* item) {
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    return part.serials.erase(item) != 0;
  }

  /// 0 where no item lives.
  std::uint64_t SerialOf(const CIData* item) {
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    const auto found = part.serials.find(item);
    return found == part.serials.end() ? 0 : found->second;
  }

 private:
  static constexpr unsigned partBits = 6;

  struct alignas(64) Part {
    Mutex lock;
    std::unordered_map<const CIData*, std::uint64_t> serials UTDATA_GUARDED_BY(lock);
  };

  Part& PartOf(const CIData* item) {
    const std::uint64_t spread = std::uint64_t{reinterpret_cast<std::uintptr_t>(item)} * 0x9E3779B97F4A7C15U;
    return m_parts[spread >> (64 - partBits)];
  }

  std::array<Part, 1U << partBits> m_parts;
  std::atomic<std::uint64_t> m_lastSerial{0};
};

/// Never destroyed: items of a host's static objects outlive the library's own.
Registry& TheRegistry() {
  static Registry& registry = *new Registry;
  return registry;
}

}  // namespace

LiveDataItem::LiveDataItem(CIData* item) : m_item(item) { TheRegistry().Add(item); }

bool LiveDataItem::End() noexcept { return TheRegistry().Remove(m_item); }

bool LiveDataItem::IsLive(const CIData* item) { return item && TheRegistry().SerialOf(item) != 0; }

DataItemLink::DataItemLink(CIData* item) {
  const std::uint64_t serial = item ? TheRegistry().SerialOf(item) : 0;
  if (serial == 0) return;
  m_item.store(item, std::memory_order_relaxed);
  m_serial.store(serial, std::memory_order_relaxed);
}

DataItemLink& DataItemLink::operator=(const DataItemLink& other) noexcept {
  m_item.store(other.m_item.load(std::memory_order_relaxed), std::memory_order_relaxed);
  m_serial.store(other.m_serial.load(std::memory_order_relaxed), std::memory_order_relaxed);
  return *this;
}

CIData* DataItemLink::Get() const {
  CIData* const item = m_item.load(std::memory_order_relaxed);
  const std::uint64_t serial = m_serial.load(std::memory_order_relaxed);
  return serial != 0 && TheRegistry().SerialOf(item) == serial ? item : nullptr;
}

}  // namespace utdata
