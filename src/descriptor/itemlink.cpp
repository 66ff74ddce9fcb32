#include "utdata/itemlink.h"

#include <array>
#include <utility>

#include "interfaces/thread_safety.h"
#include "src/foundation/hashtable.h"

namespace utdata {

namespace {

std::uint64_t HashOf(const CIData* item) {
  return SpreadBits(reinterpret_cast<std::uintptr_t>(item));
}

/// One item that lives.
struct Entry {
  const CIData* item = nullptr;  ///< null: no entry
  std::uint64_t serial = 0;
  [[nodiscard]] bool IsEmpty() const { return !item; }
  [[nodiscard]] std::uint64_t Hash() const { return HashOf(item); }
};

auto Is(const CIData* item) {
  return [item](const Entry& entry) { return entry.item == item; };
}

/// The items that live. Addresses are spread over parts with a lock each, so that threads seldom
/// meet.
class Registry {
 public:
  void Add(const CIData* item) {
    const std::uint64_t serial = m_lastSerial.fetch_add(1, std::memory_order_relaxed) + 1;
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    part.entries.Obtain(HashOf(item), Is(item)) = {item, serial};
  }

  bool Remove(const CIData* item) {
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    const Entry* const entry = part.entries.Find(HashOf(item), Is(item));
    if (entry) part.entries.Remove(*entry);
    return entry != nullptr;
  }

  /// 0 where no item lives.
  std::uint64_t SerialOf(const CIData* item) {
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    const Entry* const entry = part.entries.Find(HashOf(item), Is(item));
    return entry ? entry->serial : 0;
  }

 private:
  static constexpr unsigned partBits = 6;

  struct alignas(64) Part {
    Mutex lock;
    HashTable<Entry> entries UTDATA_GUARDED_BY(lock);
  };
  Part& PartOf(const CIData* item) { return m_parts[HashOf(item) >> (64 - partBits)]; }

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

bool LiveDataItem::End() noexcept {
  const CIData* const item = std::exchange(m_item, nullptr);
  return item && TheRegistry().Remove(item);
}

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
