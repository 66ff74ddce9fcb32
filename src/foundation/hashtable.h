// A hash table for look-ups that are made millions of times.
//
// Open addressing with linear probing in one array of a power of two, at most half full, so that a
// look-up mostly reads one place. Backward-shift deletion: there are no tombstones. No lock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace utdata {

/// Spreads what is hashed over all 64 bits.
[[nodiscard]] constexpr std::uint64_t SpreadBits(std::uint64_t value) {
  value *= 0x9E3779B97F4A7C15U;
  return value ^ value >> 32;
}

/// @tparam Slot one place of the table: empty when made, moved without throwing, with
///   `bool IsEmpty() const` and, where it is not empty, `std::uint64_t Hash() const`
template <class Slot>
class HashTable {
 public:
  /// The slot with this hash for which `isWanted(slot)` holds, or null.
  template <class IsWanted>
  [[nodiscard]] const Slot* Find(std::uint64_t hash, IsWanted isWanted) const {
    if (m_slots.empty()) return nullptr;
    const Slot& slot = m_slots[PlaceOf(hash, isWanted)];
    return slot.IsEmpty() ? nullptr : &slot;
  }
  template <class IsWanted>
  [[nodiscard]] Slot* Find(std::uint64_t hash, IsWanted isWanted) {
    return const_cast<Slot*>(std::as_const(*this).Find(hash, isWanted));
  }

  /// The same, or an empty slot, which the caller fills at once. May throw std::bad_alloc, and then
  /// has changed nothing.
  template <class IsWanted>
  [[nodiscard]] Slot& Obtain(std::uint64_t hash, IsWanted isWanted) {
    if (m_used * 2 >= m_slots.size()) Grow();
    Slot& slot = m_slots[PlaceOf(hash, isWanted)];
    if (slot.IsEmpty()) ++m_used;
    return slot;
  }

  /// Empties a slot of this table.
  void Remove(const Slot& slot) noexcept {
    auto hole = static_cast<std::size_t>(&slot - m_slots.data());
    for (std::size_t next = (hole + 1) & Mask(); !m_slots[next].IsEmpty();
         next = (next + 1) & Mask()) {
      const std::size_t pushed = (next - m_slots[next].Hash()) & Mask();
      if (pushed < ((next - hole) & Mask())) continue;
      m_slots[hole] = std::move(m_slots[next]);
      hole = next;
    }
    m_slots[hole] = Slot();
    --m_used;
  }

 private:
  [[nodiscard]] std::size_t Mask() const { return m_slots.size() - 1; }

  /// Where the wanted slot is, or would go.
  template <class IsWanted>
  [[nodiscard]] std::size_t PlaceOf(std::uint64_t hash, IsWanted isWanted) const {
    std::size_t place = hash & Mask();
    while (!m_slots[place].IsEmpty() && !isWanted(m_slots[place])) place = (place + 1) & Mask();
    return place;
  }

  void Grow() {
    std::vector<Slot> before(m_slots.empty() ? 16 : 2 * m_slots.size());
    before.swap(m_slots);
    for (Slot& slot : before)
      if (!slot.IsEmpty())
        m_slots[PlaceOf(slot.Hash(), [](const Slot&) { return false; })] = std::move(slot);
  }

  std::vector<Slot> m_slots;
  std::size_t m_used = 0;
};

}  // namespace utdata
