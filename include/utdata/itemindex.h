// The item index, told once: a file set's list with hash tables beside it.
//
// Lookups answer as the list's walk does. A combination of ids that is asked for gets a table of
// its own, so that any lookup that names an id costs as much as it finds, however many items there
// are and whatever their ids. An item is filed under the ids it has when it is added, and filed
// anew by each change that goes through its own operations; a candidate is compared with its item's
// present ids before it counts, so that an id changed behind the library's back can hide an item
// from a lookup by ids, but never yields a wrong one.
//
// The file set's lock guards all but Count: the writer side for Add, Move, Remove and edits, the
// reader side for the rest.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "interfaces/ostrin.h"
#include "utdata/item.h"
#include "utdata/itemlist.h"

namespace utdata {

/// Items by a hash, those of one hash in the order of their list. Open addressing in one array, at
/// most half full, so that a look-up reads one place of it; a place holds the first item of its
/// hash and, seldom, a set of others.
class ItemTable {
 public:
  void Insert(std::uint64_t hash, std::uint64_t order, PlacedItem* item) {
    if (m_used * 2 >= m_slots.size()) Grow();
    Slot& slot = m_slots[PlaceOf(hash)];
    Entry entry{order, item};
    if (!slot.first.item) {
      slot.hash = hash;
      slot.first = entry;
      ++m_used;
      return;
    }
    if (order < slot.first.order) std::swap(entry, slot.first);
    if (!slot.others) slot.others = std::make_unique<std::set<Entry>>();
    slot.others->insert(slot.others->end(), entry);
  }

  void Erase(std::uint64_t hash, std::uint64_t order) {
    if (m_slots.empty()) return;
    const std::size_t place = PlaceOf(hash);
    Slot& slot = m_slots[place];
    if (slot.others) {
      if (slot.first.order == order)
        slot.first = slot.others->extract(slot.others->begin()).value();
      else
        slot.others->erase({order, nullptr});
      if (slot.others->empty()) slot.others.reset();
    } else if (slot.first.item && slot.first.order == order) {
      Empty(place);
    }
  }

  /// Calls `visit(item)` for each item of that hash, in order, until it answers false.
  template <class Visit>
  void ForEach(std::uint64_t hash, Visit visit) const {
    if (m_slots.empty()) return;
    const Slot& slot = m_slots[PlaceOf(hash)];
    if (!slot.first.item || !visit(slot.first.item) || !slot.others) return;
    for (const Entry& entry : *slot.others)
      if (!visit(entry.item)) return;
  }

 private:
  struct Entry {
    std::uint64_t order = 0;
    PlacedItem* item = nullptr;
    bool operator<(const Entry& other) const { return order < other.order; }
  };
  struct Slot {
    std::uint64_t hash = 0;
    Entry first;                              ///< without an item: empty
    std::unique_ptr<std::set<Entry>> others;  ///< null or not empty
  };

  [[nodiscard]] std::size_t Mask() const { return m_slots.size() - 1; }

  /// Where a hash is, or would go.
  [[nodiscard]] std::size_t PlaceOf(std::uint64_t hash) const {
    std::size_t place = hash & Mask();
    while (m_slots[place].first.item && m_slots[place].hash != hash) place = (place + 1) & Mask();
    return place;
  }

  void Empty(std::size_t hole) {
    // Whoever was pushed past the hole moves back, so that every run stays without a gap.
    for (std::size_t next = (hole + 1) & Mask(); m_slots[next].first.item;
         next = (next + 1) & Mask()) {
      const std::size_t pushed = (next - m_slots[next].hash) & Mask();
      if (pushed < ((next - hole) & Mask())) continue;
      m_slots[hole] = std::move(m_slots[next]);
      hole = next;
    }
    m_slots[hole] = {};
    --m_used;
  }

  void Grow() {
    std::vector<Slot> before(m_slots.empty() ? 16 : 2 * m_slots.size());
    before.swap(m_slots);
    for (Slot& slot : before)
      if (slot.first.item) m_slots[PlaceOf(slot.hash)] = std::move(slot);
  }

  std::vector<Slot> m_slots;  ///< a power of two
  std::size_t m_used = 0;
};

template <class List>
class IndexedItemList final : private ItemHome {
 public:
  using Item = typename List::Item;
  using Ids = typename List::Ids;

  explicit IndexedItemList(CReaderWriterLock& lock)
      : m_lock(lock), m_seed(reinterpret_cast<std::uintptr_t>(this)) {}
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
    const ItemTable* table = TableFor(filter, ids);
    if (!table) return m_items.First(filter, ids);
    Item* first = nullptr;
    table->ForEach(HashOf(GivenIds(ids), ids), [&](PlacedItem* candidate) {
      Item* item = static_cast<Item*>(candidate);
      if (List::Matches(*item, filter, ids)) first = item;
      return !first;
    });
    return first;
  }

  void Append(fset_enumFilters filter, List& out, const Ids& ids) const {
    const ItemTable* table = TableFor(filter, ids);
    if (!table) return m_items.Append(filter, out, ids);
    table->ForEach(HashOf(GivenIds(ids), ids), [&](PlacedItem* candidate) {
      Item* item = static_cast<Item*>(candidate);
      if (List::Matches(*item, filter, ids)) out.AddTail(item);
      return true;
    });
  }

  /// The items that are moved belong to no file set any more.
  void Move(fset_enumFilters filter, List& out, const Ids& ids) {
    List moved;
    Append(filter, moved, ids);
    for (Item* item : moved) {
      Leave(*item);
      out.AddTail(item);
    }
  }

  /// Takes out one item, which belongs to no file set any more. False when it is not in this list.
  bool Remove(Item* item) {
    if (PlaceOf(*item).home != this) return false;
    Leave(*item);
    return true;
  }

  /// The list in order, for walks.
  [[nodiscard]] const List& Items() const { return m_items; }
  /// The number of items; may be asked without the lock.
  [[nodiscard]] std::ptrdiff_t Count() const { return m_count.load(std::memory_order_relaxed); }

 private:
  /// A list of fewer items is walked unless it has the table already.
  static constexpr std::ptrdiff_t fewItems = 32;

  struct TableOfIds {
    unsigned given;  ///< bit n: the n-th id of a lookup
    ItemTable items;
  };

  static ItemPlace& PlaceOf(PlacedItem& item) { return item.m_place; }

  /// The ids that a lookup names, as bits.
  static unsigned GivenIds(const Ids& ids) {
    unsigned given = 0;
    for (std::size_t index = 0; index < List::idCount; ++index)
      if (!IsWildcard(List::rules[index], ids[index])) given |= 1U << index;
    return given;
  }

  /// Of the given ids; what a lookup takes for equal has one hash. The seed differs from list to
  /// list, so that no file can aim at one place.
  template <class AnyIds>
  std::uint64_t HashOf(unsigned given, const AnyIds& ids) const {
    std::uint64_t hash = m_seed;
    for (std::size_t index = 0; index < List::idCount; ++index) {
      if (!(given >> index & 1U)) continue;
      hash ^= List::rules[index] == IdRule::SameGate ? GateNumber(ids[index]) : ids[index];
      hash *= 0x9E3779B97F4A7C15U;
      hash ^= hash >> 32;
    }
    return hash;
  }

  /// The table for a lookup, made when it is asked for the first time; null when the lookup has to
  /// walk. An unknown filter walks, since it is reported once for each item on the way.
  const ItemTable* TableFor(fset_enumFilters filter, const Ids& ids) const {
    const unsigned given = GivenIds(ids);
    if (given == 0 || filter > fset_New) return nullptr;
    if (const ItemTable* table = m_byIds[given].load(std::memory_order_acquire)) return table;
    if (m_items.GetCount() < fewItems) return nullptr;
    const MutexScope scope(m_making);  // readers may ask for one table at a time
    if (const ItemTable* table = m_byIds[given].load(std::memory_order_relaxed)) return table;
    auto made = std::make_unique<TableOfIds>(TableOfIds{given, {}});
    for (Item* item : m_items)
      made->items.Insert(HashOf(given, PlaceOf(*item).ids), PlaceOf(*item).order, item);
    m_tables.push_back(std::move(made));
    m_byIds[given].store(&m_tables.back()->items, std::memory_order_release);
    return &m_tables.back()->items;
  }

  void File(Item& item) {
    ItemPlace& place = PlaceOf(item);
    const Ids ids = List::IdsOf(item);
    std::copy(ids.begin(), ids.end(), place.ids.begin());
    const MutexScope scope(m_making);
    for (const auto& table : m_tables)
      table->items.Insert(HashOf(table->given, ids), place.order, &item);
  }

  void Unfile(Item& item) {
    const ItemPlace& place = PlaceOf(item);
    const MutexScope scope(m_making);
    for (const auto& table : m_tables)
      table->items.Erase(HashOf(table->given, place.ids), place.order);
  }

  void Leave(Item& item) {
    m_items.RemoveAt(PlaceOf(item).position);
    Unfile(item);
    PlaceOf(item) = {};
    m_count.store(m_items.GetCount(), std::memory_order_relaxed);
  }

  // The writer side spans two calls, which is beyond the analysis.
  void BeginEdit() override UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    m_lock.LockBufferWriter(CReaderWriterLock::forEver);
  }

  void EndEdit(PlacedItem& placed) override UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    Item& item = static_cast<Item&>(placed);
    const Ids ids = List::IdsOf(item);
    if (!std::equal(ids.begin(), ids.end(), PlaceOf(item).ids.begin())) {
      Unfile(item);
      File(item);
    }
    m_lock.UnlockBufferWriter();
  }

  CReaderWriterLock& m_lock;
  List m_items;
  const std::uint64_t m_seed;
  std::uint64_t m_nextOrder = 0;
  std::atomic<std::ptrdiff_t> m_count{0};
  mutable Mutex m_making;  ///< taken last
  mutable std::vector<std::unique_ptr<TableOfIds>> m_tables UTDATA_GUARDED_BY(m_making);
  mutable std::array<std::atomic<const ItemTable*>, std::size_t{1} << List::idCount>
      m_byIds{};  ///< by the ids given
};

}  // namespace utdata
