// The item index, told once: a file set's list with a hash table beside it.
//
// Lookups answer as the list's walk does. Items are filed under one key or two, each made of some of their ids. A lookup that names
// every id of a key reads the few items filed under them, of the first such key; any other walks. An item is filed under the ids it has
// when it is added, and filed anew by each change that goes through its own operations; a candidate is compared with its item's present
// ids before it counts, so that an id changed behind the library's back can hide an item from a lookup by ids, but never yields a wrong
// one.
//
// The file set's lock guards all but Count: the writer side for Add, Move and edits, the reader side for the rest.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <vector>

#include "interfaces/ostrin.h"
#include "utdata/item.h"
#include "utdata/itemlist.h"

namespace utdata {

/// The ids that an item is filed under, in the list's order; unused ones are 0.
using ItemKey = std::array<std::uint32_t, 5>;

/// A hash of a key with a seed that differs from list to list, so that no file can aim at one place.
[[nodiscard]] inline std::uint64_t HashOf(const ItemKey& key, std::uint64_t seed) {
  std::uint64_t hash = seed;
  for (const std::uint32_t word : key) {
    hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
    hash ^= hash >> 32;
  }
  return hash;
}

/// Items by the hash of their keys, with open addressing: one array, at most half full, so that a look-up reads one place of it.
class ItemTable {
 public:
  void Insert(std::uint64_t hash, PlacedItem* item) {
    if (m_used * 2 >= m_slots.size()) Grow();
    ++m_used;
    Put({hash, item});
  }

  void Erase(std::uint64_t hash, const PlacedItem* item) {
    if (m_slots.empty()) return;
    std::size_t hole = hash & Mask();
    for (; m_slots[hole].item != item; hole = (hole + 1) & Mask())
      if (!m_slots[hole].item) return;
    // Whoever was pushed past the hole moves back, so that every run stays without a gap.
    for (std::size_t next = (hole + 1) & Mask(); m_slots[next].item; next = (next + 1) & Mask()) {
      const std::size_t pushed = (next - m_slots[next].hash) & Mask();
      if (pushed < ((next - hole) & Mask())) continue;
      m_slots[hole] = m_slots[next];
      hole = next;
    }
    m_slots[hole] = {};
    --m_used;
  }

  /// Calls `visit(item)` for each item of that hash, in no order.
  template <class Visit>
  void ForEach(std::uint64_t hash, Visit visit) const {
    if (m_slots.empty()) return;
    for (std::size_t place = hash & Mask(); m_slots[place].item; place = (place + 1) & Mask())
      if (m_slots[place].hash == hash) visit(m_slots[place].item);
  }

 private:
  struct Slot {
    std::uint64_t hash = 0;
    PlacedItem* item = nullptr;  ///< null: empty
  };

  [[nodiscard]] std::size_t Mask() const { return m_slots.size() - 1; }

  void Put(const Slot& slot) {
    std::size_t place = slot.hash & Mask();
    while (m_slots[place].item) place = (place + 1) & Mask();
    m_slots[place] = slot;
  }

  void Grow() {
    std::vector<Slot> before(m_slots.empty() ? 16 : 2 * m_slots.size());
    before.swap(m_slots);
    for (const Slot& slot : before)
      if (slot.item) Put(slot);
  }

  std::vector<Slot> m_slots;  ///< a power of two
  std::size_t m_used = 0;
};

/// The ids of a list's lookups that make its key, as bits: all but the bookmark type, whose wildcard is what most records carry.
template <class List>
inline constexpr unsigned allKeyIds = [] {
  unsigned ids = 0;
  for (std::size_t index = 0; index < List::idCount; ++index)
    if (List::rules[index] != IdRule::BookmarkType) ids |= 1U << index;
  return ids;
}();

/// @tparam keyIds of each key, the one with more ids first; bit n: the n-th id of a lookup belongs to it. None: all key ids
template <class List, unsigned... keyIds>
class IndexedItemList final : private ItemHome {
  static constexpr auto keys = [] {
    if constexpr (sizeof...(keyIds) == 0)
      return std::array{allKeyIds<List>};
    else
      return std::array{keyIds...};
  }();
  static_assert(keys.size() <= std::tuple_size_v<decltype(ItemPlace::hashes)>);

 public:
  using Item = typename List::Item;
  using Ids = typename List::Ids;

  explicit IndexedItemList(CReaderWriterLock& lock) : m_lock(lock), m_seed(reinterpret_cast<std::uintptr_t>(this)) {}
  IndexedItemList(const IndexedItemList&) = delete;
  IndexedItemList& operator=(const IndexedItemList&) = delete;

  /// Appends an item that is in no file set.
  void Add(Item* item) {
    ItemPlace& place = PlaceOf(*item);
    place.position = m_items.AddTail(item);
    place.order = m_nextOrder++;
    place.home = this;
    File(*item);
    m_count.store(m_items.GetCount(), std::memory_order_relaxed);
  }

  [[nodiscard]] Item* First(fset_enumFilters filter, const Ids& ids) const {
    const std::size_t key = KeyFor(filter, ids);
    if (key == noKey) return m_items.First(filter, ids);
    Item* first = nullptr;
    m_tables[key].ForEach(FiledHash(key, ids), [&](PlacedItem* candidate) {
      Item* item = static_cast<Item*>(candidate);
      if (List::Matches(*item, filter, ids) && (!first || IsBefore(item, first))) first = item;
    });
    return first;
  }

  void Append(fset_enumFilters filter, List& out, const Ids& ids) const {
    const std::size_t key = KeyFor(filter, ids);
    if (key == noKey) return m_items.Append(filter, out, ids);
    for (Item* item : Candidates(key, filter, ids)) out.AddTail(item);
  }

  /// The items that are moved belong to no file set any more.
  void Move(fset_enumFilters filter, List& out, const Ids& ids) {
    if (const std::size_t key = KeyFor(filter, ids); key != noKey) {
      for (Item* item : Candidates(key, filter, ids)) {
        m_items.RemoveAt(PlaceOf(*item).position);
        Leave(*item, out);
      }
    } else {
      List moved;
      m_items.Move(filter, moved, ids);
      for (Item* item : moved) Leave(*item, out);
    }
    m_count.store(m_items.GetCount(), std::memory_order_relaxed);
  }

  /// The list in order, for walks.
  [[nodiscard]] const List& Items() const { return m_items; }
  /// The number of items; may be asked without the lock.
  [[nodiscard]] std::ptrdiff_t Count() const { return m_count.load(std::memory_order_relaxed); }

 private:
  static ItemPlace& PlaceOf(PlacedItem& item) { return item.m_place; }

  static bool IsBefore(Item* a, Item* b) { return PlaceOf(*a).order < PlaceOf(*b).order; }

  static constexpr std::size_t noKey = keys.size();

  /// The first key all of whose ids a lookup names. An unknown filter walks, since it is reported once for each item on the way.
  static std::size_t KeyFor(fset_enumFilters filter, const Ids& ids) {
    if (filter > fset_New) return noKey;
    unsigned named = 0;
    for (std::size_t index = 0; index < List::idCount; ++index)
      if (!IsWildcard(List::rules[index], ids[index])) named |= 1U << index;
    const auto found = std::find_if(keys.begin(), keys.end(), [named](unsigned key) { return (key & ~named) == 0; });
    return static_cast<std::size_t>(found - keys.begin());
  }

  /// The hash of one key's ids: ids that a lookup takes for equal have one hash.
  std::uint64_t FiledHash(std::size_t key, const Ids& ids) const {
    ItemKey words{};
    std::size_t used = 0;
    for (std::size_t index = 0; index < List::idCount; ++index)
      if (keys[key] >> index & 1U)
        words[used++] = List::rules[index] == IdRule::SameGate ? GateNumber(ids[index]) : ids[index];
    return HashOf(words, m_seed);
  }

  /// The matches in list order.
  std::vector<Item*> Candidates(std::size_t key, fset_enumFilters filter, const Ids& ids) const {
    std::vector<Item*> found;
    m_tables[key].ForEach(FiledHash(key, ids), [&](PlacedItem* candidate) {
      Item* item = static_cast<Item*>(candidate);
      if (List::Matches(*item, filter, ids)) found.push_back(item);
    });
    std::sort(found.begin(), found.end(), IsBefore);
    return found;
  }

  /// Files an item under its present ids, in each table where they differ from those that it is filed under.
  void FileAnew(Item& item) {
    ItemPlace& place = PlaceOf(item);
    const Ids ids = List::IdsOf(item);
    for (std::size_t key = 0; key < keys.size(); ++key) {
      const std::uint64_t hash = FiledHash(key, ids);
      if (hash == place.hashes[key]) continue;
      m_tables[key].Erase(place.hashes[key], &item);
      place.hashes[key] = hash;
      m_tables[key].Insert(hash, &item);
    }
  }

  void File(Item& item) {
    ItemPlace& place = PlaceOf(item);
    const Ids ids = List::IdsOf(item);
    for (std::size_t key = 0; key < keys.size(); ++key) {
      place.hashes[key] = FiledHash(key, ids);
      m_tables[key].Insert(place.hashes[key], &item);
    }
  }

  void Unfile(Item& item) {
    for (std::size_t key = 0; key < keys.size(); ++key) m_tables[key].Erase(PlaceOf(item).hashes[key], &item);
  }

  void Leave(Item& item, List& out) {
    Unfile(item);
    PlaceOf(item) = {};
    out.AddTail(&item);
  }

  // The writer side spans two calls, which is beyond the analysis.
  void BeginEdit() override UTDATA_NO_THREAD_SAFETY_ANALYSIS { m_lock.LockBufferWriter(CReaderWriterLock::forEver); }

  void EndEdit(PlacedItem& placed) override UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    FileAnew(static_cast<Item&>(placed));
    m_lock.UnlockBufferWriter();
  }

  CReaderWriterLock& m_lock;
  List m_items;
  const std::uint64_t m_seed;
  std::array<ItemTable, keys.size()> m_tables;
  std::uint64_t m_nextOrder = 0;
  std::atomic<std::ptrdiff_t> m_count{0};
};

}  // namespace utdata
