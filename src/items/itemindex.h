// The item index, documented once: a file set's list with hash tables beside it.
//
// Look-ups answer as the list's walk over present ids does, at every size. A combination of ids
// that is asked for gets a table of its own, so that a look-up that names an id costs as much as it
// finds. Tables are a hint: a candidate is compared with its item's present ids before it counts,
// and an item whose ids may be others than it is filed under is looked at in every look-up:
// - loose items, whose working copies were handed out for writing, for good, by a scan that reads
//   one line of memory of most of them;
// - waiting items, whose ids have changed through their own operations, until they are filed anew
//   (CatchUp, and every addition and removal).
// Each item has a number that grows along the list; the matches of all three are put in its order.
//
// The file set's lock guards all but Count and IsBehind: the writer side for Add, Remove and
// CatchUp, the reader side for the rest. Items report changes at any time, without it.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "interfaces/thread_safety.h"
#include "src/foundation/hashtable.h"
#include "src/items/itemlookup.h"
#include "src/items/itemplace.h"
#include "utdata/idatalst.h"

namespace utdata {

/// An item at its place in the order of a list.
struct OrderedItem {
  std::uint64_t order = 0;
  PlacedItem* item = nullptr;
  bool operator<(const OrderedItem& other) const { return order < other.order; }
  bool operator==(const OrderedItem& other) const { return order == other.order; }
};

/// Items by a hash of ids, those of one hash in order.
class ItemTable {
 public:
  void Insert(std::uint64_t hash, OrderedItem entry) {
    Slot& slot = m_slots.Obtain(hash, [hash](const Slot& each) { return each.hash == hash; });
    if (slot.IsEmpty()) {
      slot.hash = hash;
      slot.first = entry;
      return;
    }
    const OrderedItem later = std::max(entry, slot.first);
    if (slot.others)
      slot.others->insert(slot.others->end(), later);
    else
      slot.others =
          std::make_unique<std::set<OrderedItem>>(std::initializer_list<OrderedItem>{later});
    slot.first = std::min(entry, slot.first);
  }

  /// Nothing when the item is not under that hash.
  void Erase(std::uint64_t hash, std::uint64_t order) noexcept {
    Slot* const slot = m_slots.Find(hash, [hash](const Slot& each) { return each.hash == hash; });
    if (!slot) return;
    if (slot->others) {
      if (slot->first.order == order)
        slot->first = slot->others->extract(slot->others->begin()).value();
      else
        slot->others->erase({order, nullptr});
      if (slot->others->empty()) slot->others.reset();
    } else if (slot->first.order == order) {
      m_slots.Remove(*slot);
    }
  }

  /// Calls `visit(entry)` for each item of that hash, in order, until it answers false.
  template <class Visit>
  void ForEach(std::uint64_t hash, Visit visit) const {
    const Slot* const slot =
        m_slots.Find(hash, [hash](const Slot& each) { return each.hash == hash; });
    if (!slot || !visit(slot->first) || !slot->others) return;
    for (const OrderedItem& entry : *slot->others)
      if (!visit(entry)) return;
  }

 private:
  struct Slot {
    std::uint64_t hash = 0;
    OrderedItem first;                              ///< without an item: empty
    std::unique_ptr<std::set<OrderedItem>> others;  ///< null or not empty
    [[nodiscard]] bool IsEmpty() const { return !first.item; }
    [[nodiscard]] std::uint64_t Hash() const { return hash; }
  };

  HashTable<Slot> m_slots;
};

/// An item that every look-up looks at.
struct LooseItem : OrderedItem {
  /// The record by which most look-ups pass over it at once: one whose ids, but the bookmark type,
  /// only the host changes. Null where the library changes them too.
  const CGDataTypeFDD* record = nullptr;
};

template <class Item>
[[nodiscard]] LooseItem LooseEntry(std::uint64_t order, Item& item) {
  LooseItem entry{{order, &item}};
  if constexpr (requires { item.Descriptor(); })
    if (!item.idata1_SubChannelGetList()) entry.record = item.Descriptor();
  return entry;
}

/// False when the ids that are asked for are surely not the item's.
template <std::size_t idQuantity>
[[nodiscard]] bool MayMatch(const LooseItem& item,
                            const std::array<std::uint32_t, idQuantity>& ids) {
  if constexpr (idQuantity == std::tuple_size_v<CIDataLst::Ids>) {
    if (!item.record) return true;
    const CGDataTypeFDD& record = *item.record;
    const auto is = [&ids](std::size_t index, std::uint32_t actual) {
      return IdMatches(rulesOf<CIData>[index], ids[index], actual);
    };
    return is(2, record.channelId) && is(5, record.dataClass) && is(3, record.subChannelId) &&
           is(4, record.gateId) && is(1, record.GetPatchID());
  }
  return true;
}

template <class List>
class IndexedItemList final : private ItemHome {
 public:
  using Item = typename List::Item;
  using Ids = typename List::Ids;

  IndexedItemList() = default;
  IndexedItemList(const IndexedItemList&) = delete;
  IndexedItemList& operator=(const IndexedItemList&) = delete;

  /// Appends an item that is in no file set.
  void Add(Item* item) {
    CatchUp();
    ItemPlace& place = ItemAccess::PlaceOf(*item);
    place.position = m_items.AddTail(item);
    place.order = m_nextOrder++;
    place.home.store(this);
    const MutexScope scope(m_filing);
    File(*item);
    m_count.store(m_items.GetCount(), std::memory_order_relaxed);
  }

  [[nodiscard]] Item* First(fset_enumFilters filter, const Ids& ids) const {
    const ItemTable* table = TableFor(filter, ids);
    if (!table) return m_items.First(filter, ids);
    OrderedItem first;
    // Whether a later one of the same source may do better.
    const auto consider = [&](const OrderedItem& candidate) {
      if (first.item && first.order <= candidate.order) return false;
      if (!Matches(*static_cast<Item*>(candidate.item), filter, ids)) return true;
      first = candidate;
      return false;
    };
    table->ForEach(HashOf(GivenIds(ids), ids), consider);
    for (const LooseItem& loose : m_loose) {
      if (!MayMatch(loose, ids)) continue;
      if (!consider(loose)) break;
    }
    ForEachWaiting(consider);
    return static_cast<Item*>(first.item);
  }

  void Append(fset_enumFilters filter, List& out, const Ids& ids) const {
    const ItemTable* table = TableFor(filter, ids);
    if (!table) return m_items.Append(filter, out, ids);
    std::vector<OrderedItem> found;
    const auto consider = [&](const OrderedItem& candidate) {
      if (Matches(*static_cast<Item*>(candidate.item), filter, ids)) found.push_back(candidate);
      return true;
    };
    table->ForEach(HashOf(GivenIds(ids), ids), consider);
    const std::size_t ofTable = found.size();  // in order
    for (const LooseItem& loose : m_loose)
      if (MayMatch(loose, ids)) consider(loose);
    ForEachWaiting(consider);
    if (found.size() != ofTable) {
      std::sort(found.begin(), found.end());
      // One that waits may be in the table too.
      found.erase(std::unique(found.begin(), found.end()), found.end());
    }
    Appending appending(out);
    for (const OrderedItem& entry : found) out.AddTail(static_cast<Item*>(entry.item));
    appending.Keep();
  }

  /// Takes each match out, which then belongs to no file set, and hands it to `take`. Takes no
  /// memory. @return whether there was one
  template <class Take>
  bool Remove(fset_enumFilters filter, const Ids& ids, Take take) {
    CatchUp();
    PlacedItem* first = nullptr;
    PlacedItem** end = &first;
    const auto consider = [&](const OrderedItem& candidate) {
      ItemPlace& place = ItemAccess::PlaceOf(*candidate.item);
      if (place.isLeaving || !Matches(*static_cast<Item*>(candidate.item), filter, ids))
        return true;
      place.isLeaving = true;
      *end = candidate.item;
      end = &place.nextLeaving;
      return true;
    };
    if (const ItemTable* table = TableFor(filter, ids)) {
      table->ForEach(HashOf(GivenIds(ids), ids), consider);
      for (const LooseItem& loose : m_loose)
        if (MayMatch(loose, ids)) consider(loose);
      ForEachWaiting(consider);
    } else {
      for (Item* item : m_items) consider({ItemAccess::PlaceOf(*item).order, item});
    }
    const bool isAny = first != nullptr;
    while (first) {
      Item& item = static_cast<Item&>(*first);
      ItemPlace& place = ItemAccess::PlaceOf(item);
      first = std::exchange(place.nextLeaving, nullptr);
      place.isLeaving = false;
      Leave(item);
      take(&item);
    }
    return isAny;
  }

  /// Takes out one item, which then belongs to no file set. False when it is not in this list.
  bool Remove(Item* item) {
    if (ItemAccess::PlaceOf(*item).home.load() != this) return false;
    CatchUp();
    Leave(*item);
    return true;
  }

  /// The list in order, for walks.
  [[nodiscard]] const List& Items() const { return m_items; }
  /// The number of items; may be asked without the lock.
  [[nodiscard]] std::ptrdiff_t Count() const { return m_count.load(std::memory_order_relaxed); }

  /// Whether enough items wait to file them before a query; may be asked without the lock.
  [[nodiscard]] bool IsBehind() const {
    return m_waitingCount.load(std::memory_order_relaxed) > fewWaiting;
  }

  /// Files what waits. Without the memory for it, look-ups are right all the same, but slower.
  void CatchUp() noexcept {
    if (!m_firstWaiting.load(std::memory_order_acquire)) return;
    const MutexScope scope(m_filing);
    PlacedItem* next = m_firstWaiting.exchange(nullptr, std::memory_order_relaxed);
    m_waitingCount.store(0, std::memory_order_relaxed);
    while (next) {
      ItemPlace& place = ItemAccess::PlaceOf(*next);
      Item& item = static_cast<Item&>(*std::exchange(next, place.nextWaiting));
      place.isWaiting = false;
      if (place.filing == ItemPlace::Filing::Loose) continue;
      Unfile(item);
      File(item);
    }
  }

 private:
  /// A list of fewer items is walked unless it has the table already.
  static constexpr std::ptrdiff_t fewItems = 32;
  static constexpr std::ptrdiff_t fewWaiting = 16;

  struct TableOfIds {
    unsigned given;  ///< bit n: the n-th id of a lookup
    ItemTable items;
  };

  static constexpr std::size_t idCount = std::tuple_size_v<Ids>;
  static constexpr auto rules = rulesOf<Item>;

  /// The ids that a lookup names, as bits.
  static unsigned GivenIds(const Ids& ids) {
    unsigned given = 0;
    for (std::size_t index = 0; index < idCount; ++index)
      if (!IsWildcard(rules[index], ids[index])) given |= 1U << index;
    return given;
  }

  /// Of the given ids; ids that a lookup takes for equal have one hash. The seed differs from list
  /// to list, so that no file can be made of ids with one hash.
  template <class AnyIds>
  std::uint64_t HashOf(unsigned given, const AnyIds& ids) const {
    std::uint64_t hash = reinterpret_cast<std::uintptr_t>(this);
    for (std::size_t index = 0; index < idCount; ++index)
      if (given >> index & 1U)
        hash = SpreadBits(hash ^
                          (rules[index] == IdRule::SameGate ? GateNumber(ids[index]) : ids[index]));
    return hash;
  }

  /// The table for a lookup, made when it is asked for the first time; null when the lookup has to
  /// walk. An unknown filter walks, since it is reported once for each item on the way.
  const ItemTable* TableFor(fset_enumFilters filter, const Ids& ids) const {
    const unsigned given = GivenIds(ids);
    if (given == 0 || filter > fset_New) return nullptr;
    if (const ItemTable* table = m_byIds[given].load(std::memory_order_acquire)) return table;
    if (m_items.GetCount() < fewItems) return nullptr;
    const MutexScope scope(m_filing);  // readers may ask for one table at a time
    if (const ItemTable* table = m_byIds[given].load(std::memory_order_relaxed)) return table;
    try {
      auto made = std::make_unique<TableOfIds>(TableOfIds{given, {}});
      for (Item* item : m_items) {
        const ItemPlace& place = ItemAccess::PlaceOf(*item);
        if (place.filing == ItemPlace::Filing::InTables)
          made->items.Insert(HashOf(given, place.filedIds), {place.order, item});
      }
      m_tables.push_back(std::move(made));
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
    m_byIds[given].store(&m_tables.back()->items, std::memory_order_release);
    return &m_tables.back()->items;
  }

  /// Calls `visit(entry)` for each waiting item, in no order.
  template <class Visit>
  void ForEachWaiting(Visit visit) const {
    for (PlacedItem* item = m_firstWaiting.load(std::memory_order_acquire); item;) {
      const ItemPlace& place = ItemAccess::PlaceOf(*item);
      visit(OrderedItem{place.order, item});
      item = place.nextWaiting;
    }
  }

  /// Puts an item where look-ups find it; without memory, among those that wait.
  void File(Item& item) noexcept UTDATA_REQUIRES(m_filing) {
    ItemPlace& place = ItemAccess::PlaceOf(item);
    try {
      if (place.isHandedOut.load()) {
        m_loose.insert(PlaceAmongLoose(place.order), LooseEntry(place.order, item));
        place.filing = ItemPlace::Filing::Loose;
        return;
      }
      const Ids ids = place.ids.template Load<idCount>();
      std::copy(ids.begin(), ids.end(), place.filedIds.begin());
      place.filing = ItemPlace::Filing::InTables;
      for (const auto& table : m_tables)
        table->items.Insert(HashOf(table->given, ids), {place.order, &item});
    } catch (const std::bad_alloc&) {
      Unfile(item);
      Wait(item);
    }
  }

  void Unfile(Item& item) noexcept UTDATA_REQUIRES(m_filing) {
    ItemPlace& place = ItemAccess::PlaceOf(item);
    if (place.filing == ItemPlace::Filing::Loose) m_loose.erase(PlaceAmongLoose(place.order));
    if (place.filing == ItemPlace::Filing::InTables)
      for (const auto& table : m_tables)
        table->items.Erase(HashOf(table->given, place.filedIds), place.order);
    place.filing = ItemPlace::Filing::None;
  }

  /// Where the item of that order is, or would go.
  auto PlaceAmongLoose(std::uint64_t order) {
    return std::lower_bound(m_loose.begin(), m_loose.end(), OrderedItem{order, nullptr});
  }

  void Wait(PlacedItem& item) noexcept UTDATA_REQUIRES(m_filing) {
    ItemPlace& place = ItemAccess::PlaceOf(item);
    if (place.isWaiting) return;
    place.isWaiting = true;
    place.nextWaiting = m_firstWaiting.load(std::memory_order_relaxed);
    m_firstWaiting.store(&item, std::memory_order_release);
    m_waitingCount.fetch_add(1, std::memory_order_relaxed);
  }

  void NoteChange(PlacedItem& item) noexcept override {
    const MutexScope scope(m_filing);
    if (ItemAccess::PlaceOf(item).filing != ItemPlace::Filing::Loose) Wait(item);
  }

  void StopWaiting(PlacedItem& item) noexcept UTDATA_REQUIRES(m_filing) {
    if (!ItemAccess::PlaceOf(item).isWaiting) return;
    PlacedItem* const first = m_firstWaiting.exchange(nullptr, std::memory_order_relaxed);
    m_waitingCount.store(0, std::memory_order_relaxed);
    for (PlacedItem* next = first; next;) {
      ItemPlace& place = ItemAccess::PlaceOf(*next);
      place.isWaiting = false;
      PlacedItem& waiting = *std::exchange(next, place.nextWaiting);
      if (&waiting != &item) Wait(waiting);
    }
  }

  void Leave(Item& item) {
    ItemPlace& place = ItemAccess::PlaceOf(item);
    m_items.RemoveAt(place.position);
    const MutexScope scope(m_filing);
    Unfile(item);
    StopWaiting(item);
    place.home.store(nullptr);
    place.position = nullptr;
    m_count.store(m_items.GetCount(), std::memory_order_relaxed);
  }

  List m_items;
  std::vector<LooseItem> m_loose;                    ///< in order
  std::atomic<PlacedItem*> m_firstWaiting{nullptr};  ///< chain; readers follow it while it grows
  std::atomic<std::ptrdiff_t> m_waitingCount{0};
  std::uint64_t m_nextOrder = 0;
  std::atomic<std::ptrdiff_t> m_count{0};
  mutable Mutex m_filing;  ///< taken last
  mutable std::vector<std::unique_ptr<TableOfIds>> m_tables UTDATA_GUARDED_BY(m_filing);
  mutable std::array<std::atomic<const ItemTable*>, std::size_t{1} << idCount>
      m_byIds{};  ///< by the ids given
};

}  // namespace utdata
