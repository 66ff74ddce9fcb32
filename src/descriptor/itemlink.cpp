#include "utdata/itemlink.h"

#include <array>
#include <utility>
#include <vector>

#include "interfaces/thread_safety.h"

namespace utdata {

namespace {

std::uint64_t HashOf(const CIData* item) {
  const std::uint64_t spread =
      std::uint64_t{reinterpret_cast<std::uintptr_t>(item)} * 0x9E3779B97F4A7C15U;
  return spread ^ spread >> 32;
}

/// Serial numbers by address, with open addressing: one array, at most half full, so that a look-up
/// reads one place of it.
class SerialTable {
 public:
  void Insert(const CIData* item, std::uint64_t serial) {
    if (m_used * 2 >= m_slots.size()) Grow();
    Slot& slot = m_slots[PlaceOf(item)];
    if (!slot.item) ++m_used;
    slot = {item, serial};
  }

  bool Erase(const CIData* item) {
    if (m_slots.empty()) return false;
    std::size_t hole = PlaceOf(item);
    if (!m_slots[hole].item) return false;
    // Whoever was pushed past the hole moves back, so that every run stays without a gap.
    for (std::size_t next = (hole + 1) & Mask(); m_slots[next].item; next = (next + 1) & Mask()) {
      const std::size_t pushed = (next - HashOf(m_slots[next].item)) & Mask();
      if (pushed < ((next - hole) & Mask())) continue;
      m_slots[hole] = m_slots[next];
      hole = next;
    }
    m_slots[hole] = {};
    --m_used;
    return true;
  }

  /// 0 for an address that is not here.
  [[nodiscard]] std::uint64_t Find(const CIData* item) const {
    return m_slots.empty() ? 0 : m_slots[PlaceOf(item)].serial;
  }

 private:
  struct Slot {
    const CIData* item = nullptr;  ///< null: empty
    std::uint64_t serial = 0;
  };

  [[nodiscard]] std::size_t Mask() const { return m_slots.size() - 1; }

  /// Where an address is, or would go.
  [[nodiscard]] std::size_t PlaceOf(const CIData* item) const {
    std::size_t place = HashOf(item) & Mask();
    while (m_slots[place].item && m_slots[place].item != item) place = (place + 1) & Mask();
    return place;
  }

  void Grow() {
    std::vector<Slot> before(m_slots.empty() ? 16 : 2 * m_slots.size());
    before.swap(m_slots);
    for (const Slot& slot : before)
      if (slot.item) m_slots[PlaceOf(slot.item)] = slot;
  }

  std::vector<Slot> m_slots;  ///< a power of two
  std::size_t m_used = 0;
};

/// The items that live. Addresses are spread over parts with a lock each, so that threads seldom
/// meet.
class Registry {
 public:
  void Add(const CIData* item) {
    const std::uint64_t serial = m_lastSerial.fetch_add(1, std::memory_order_relaxed) + 1;
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    part.serials.Insert(item, serial);
  }

  bool Remove(const CIData* item) {
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    return part.serials.Erase(item);
  }

  /// 0 where no item lives.
  std::uint64_t SerialOf(const CIData* item) {
    Part& part = PartOf(item);
    const MutexScope lock(part.lock);
    return part.serials.Find(item);
  }

 private:
  static constexpr unsigned partBits = 6;

  struct alignas(64) Part {
    Mutex lock;
    SerialTable serials UTDATA_GUARDED_BY(lock);
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
