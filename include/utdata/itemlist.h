// The item lists, told once: an ordered list of items it does not own, and three lookups by status
// filter and ids.
//
// Every lookup walks the list from head to tail and takes the items that match: status filter
// first, then each id in the list's order. GetI<Type> returns the first match or null;
// GetI<Type>Lst appends every match to `out`, which is not cleared; RemoveI<Type> moves every match
// from this list to the end of `out`. Matches keep their order, and so do the items that stay.
//
// Ids are compared exactly where a list does not say otherwise; fset_AnyId matches every id. An
// unknown filter value is reported as an assertion and lets the item pass. A lookup does not fail;
// `out` must not be null.
//
// Lists take no lock: those of a file set are guarded by it, the others belong to their caller.
// Destroying a list or taking an item out of it does not destroy the item.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "interfaces/framework.h"
#include "utdata/enum.h"

namespace utdata {

/// Whether an item passes a status filter. Modified and New are asked only when the filter needs
/// them.
/// @param unknownPasses the answer for an unknown filter value, which is reported
template <class Filter, class Modified, class New>
bool PassesFilter(Filter filter, Modified isModified, New isNew, bool unknownPasses) {
  switch (static_cast<std::uint32_t>(filter)) {
    case fset_All:
      return true;
    case fset_Modified:
      return isModified();
    case fset_New:
      return isNew();
    default:
      ReportAssertion(__FILE__, __LINE__, L"unknown status filter");
      return unknownPasses;
  }
}

/// How an id that is asked for is compared with an item's.
enum class IdRule : std::uint8_t {
  Exact,
  SameGate,     ///< both reduced to their gate numbers
  GateNumber,   ///< equals the item's gate number
  BookmarkType  ///< exact, and 0 is the wildcard instead of fset_AnyId
};

[[nodiscard]] constexpr bool IsWildcard(IdRule rule, std::uint32_t wanted) {
  return wanted == (rule == IdRule::BookmarkType ? 0 : fset_AnyId);
}

[[nodiscard]] constexpr bool IdMatches(IdRule rule, std::uint32_t wanted, std::uint32_t actual) {
  if (IsWildcard(rule, wanted)) return true;
  if (rule == IdRule::SameGate) return GateNumber(wanted) == GateNumber(actual);
  if (rule == IdRule::GateNumber) return wanted == GateNumber(actual);
  return wanted == actual;
}

/// The walk. Traits say what a list holds:
///   Item                       the item class
///   rules                      array of IdRule, one per id of a lookup, in order
///   static IdsOf(const Item&)  the item's ids, an array in the same order
///   static IsModified(const Item&), IsNew(const Item&)
template <class Traits>
class ItemList : public CObject, public CList<typename Traits::Item*> {
 public:
  using Item = typename Traits::Item;
  static constexpr std::size_t idCount = Traits::rules.size();
  using Ids = std::array<std::uint32_t, idCount>;
  using Rules = std::array<IdRule, idCount>;
  static constexpr Rules rules = Traits::rules;

  ItemList() : CList<Item*>(10) {}

  /// Whether an item passes the filter and has the ids.
  [[nodiscard]] static bool Matches(const Item& item,
                                    fset_enumFilters filter,
                                    const Ids& ids,
                                    const Rules& by = rules) {
    const auto isModified = [&item] { return Traits::IsModified(item); };
    const auto isNew = [&item] { return Traits::IsNew(item); };
    if (!PassesFilter(filter, isModified, isNew, true)) return false;
    const Ids actual = Traits::IdsOf(item);
    for (std::size_t index = 0; index < idCount; ++index)
      if (!IdMatches(by[index], ids[index], actual[index])) return false;
    return true;
  }

  [[nodiscard]] static Ids IdsOf(const Item& item) { return Traits::IdsOf(item); }

  [[nodiscard]] Item* First(fset_enumFilters filter, const Ids& ids) const {
    Item* first = nullptr;
    Walk(filter, ids, rules, [&first](POSITION, Item* item) {
      first = item;
      return false;
    });
    return first;
  }

  void Append(fset_enumFilters filter,
              ItemList& out,
              const Ids& ids,
              const Rules& by = rules) const {
    Walk(filter, ids, by, [&out](POSITION, Item* item) {
      out.AddTail(item);
      return true;
    });
  }

  void Move(fset_enumFilters filter, ItemList& out, const Ids& ids) {
    Walk(filter, ids, rules, [this, &out](POSITION place, Item* item) {
      this->RemoveAt(place);
      out.AddTail(item);
      return true;
    });
  }

 private:
  /// Hands each match to `take(place, item)`, which may remove it, until that answers false.
  template <class Take>
  void Walk(fset_enumFilters filter, const Ids& ids, const Rules& by, Take take) const {
    for (POSITION next = this->GetHeadPosition(); next;) {
      const POSITION place = next;
      Item* item = this->GetNext(next);
      if (Matches(*item, filter, ids, by) && !take(place, item)) return;
    }
  }
};

}  // namespace utdata
