// The item index, told once: a file set's list with a hash table beside it.
//
// Lookups answer as the list's walk does. One that names every key id reads the few items filed under them; any other walks. An item
// is filed under the ids it has when it is added, and filed anew by each change that goes through its own operations; a candidate is
// compared with its item's present ids before it counts, so that an id changed behind the library's back can hide an item from a
// lookup by ids, but never yields a wrong one.
//
// The file set's lock guards all but Count: the writer side for Add, Move and edits, the reader side for the rest.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "interfaces/ostrin.h"
#include "utdata/item.h"
#include "utdata/itemlist.h"

namespace utdata {

/// Mixes the words of a key with a seed that differs from list to list, so that no file can aim at one bucket.
class ItemKeyHash {
 public:
  explicit ItemKeyHash(std::uint64_t seed) : m_seed(seed) {}

  std::size_t operator()(const ItemKey& key) const noexcept {
    std::uint64_t hash = m_seed;
    for (const std::uint32_t word : key) {
      hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
      hash ^= hash >> 32;
    }
    return static_cast<std::size_t>(hash);
  }

 private:
  std::uint64_t m_seed;
};

/// The ids of a list's lookups that make its key, as bits: all but the bookmark type, whose wildcard is what most records carry.
template <class List>
inline constexpr unsigned allKeyIds = [] {
  unsigned ids = 0;
  for (std::size_t index = 0; index < List::idCount; ++index)
    if (List::rules[index] != IdRule::BookmarkType) ids |= 1U << index;
  return ids;
}();

/// @tparam keyIds bit n: the n-th id of a lookup belongs to the key
template <class List, unsigned keyIds = allKeyIds<List>>
class IndexedItemList final : private ItemHome {
 public:
  using Item = typename List::Item;
  using Ids = typename List::Ids;

  explicit IndexedItemList(CReaderWriterLock& lock)
      : m_lock(lock), m_index(0, ItemKeyHash(reinterpret_cast<std::uintptr_t>(this))) {}
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
    if (!IsIndexed(filter, ids)) return m_items.First(filter, ids);
    Item* first = nullptr;
    for (auto [candidate, end] = m_index.equal_range(KeyOf(ids)); candidate != end; ++candidate) {
      Item* item = candidate->second;
      if (List::Matches(*item, filter, ids) && (!first || IsBefore(item, first))) first = item;
    }
    return first;
  }

  void Append(fset_enumFilters filter, List& out, const Ids& ids) const {
    if (!IsIndexed(filter, ids)) return m_items.Append(filter, out, ids);
    for (Item* item : Candidates(filter, ids)) out.AddTail(item);
  }

  /// The items that are moved belong to no file set any more.
  void Move(fset_enumFilters filter, List& out, const Ids& ids) {
    if (IsIndexed(filter, ids)) {
      for (Item* item : Candidates(filter, ids)) {
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
  using Index = std::unordered_multimap<ItemKey, Item*, ItemKeyHash>;

  static ItemPlace& PlaceOf(PlacedItem& item) { return item.m_place; }

  static bool IsBefore(Item* a, Item* b) { return PlaceOf(*a).order < PlaceOf(*b).order; }

  /// An unknown filter walks, since it is reported once for each item on the way.
  static bool IsIndexed(fset_enumFilters filter, const Ids& ids) {
    if (filter > fset_New) return false;
    for (std::size_t index = 0; index < List::idCount; ++index)
      if ((keyIds >> index & 1U) && IsWildcard(List::rules[index], ids[index])) return false;
    return true;
  }

  /// Ids that a lookup takes for equal have one key.
  static ItemKey KeyOf(const Ids& ids) {
    ItemKey key{};
    std::size_t used = 0;
    for (std::size_t index = 0; index < List::idCount; ++index)
      if (keyIds >> index & 1U)
        key[used++] = List::rules[index] == IdRule::SameGate ? GateNumber(ids[index]) : ids[index];
    return key;
  }

  /// The matches in list order.
  std::vector<Item*> Candidates(fset_enumFilters filter, const Ids& ids) const {
    std::vector<Item*> found;
    for (auto [candidate, end] = m_index.equal_range(KeyOf(ids)); candidate != end; ++candidate)
      if (List::Matches(*candidate->second, filter, ids)) found.push_back(candidate->second);
    std::sort(found.begin(), found.end(), IsBefore);
    return found;
  }

  void File(Item& item) {
    ItemPlace& place = PlaceOf(item);
    place.key = KeyOf(List::IdsOf(item));
    m_index.emplace(place.key, &item);
  }

  void Unfile(Item& item) {
    auto [entry, end] = m_index.equal_range(PlaceOf(item).key);
    entry = std::find_if(entry, end, [&item](const auto& filed) { return filed.second == &item; });
    if (entry != end) m_index.erase(entry);
  }

  void Leave(Item& item, List& out) {
    Unfile(item);
    PlaceOf(item) = {};
    out.AddTail(&item);
  }

  // The writer side spans two calls, which is beyond the analysis.
  void BeginEdit() override UTDATA_NO_THREAD_SAFETY_ANALYSIS { m_lock.LockBufferWriter(CReaderWriterLock::forEver); }

  void EndEdit(PlacedItem& placed) override UTDATA_NO_THREAD_SAFETY_ANALYSIS {
    Item& item = static_cast<Item&>(placed);
    if (KeyOf(List::IdsOf(item)) != PlaceOf(item).key) {
      Unfile(item);
      File(item);
    }
    m_lock.UnlockBufferWriter();
  }

  CReaderWriterLock& m_lock;
  List m_items;
  Index m_index;
  std::uint64_t m_nextOrder = 0;
  std::atomic<std::ptrdiff_t> m_count{0};
};

}  // namespace utdata
