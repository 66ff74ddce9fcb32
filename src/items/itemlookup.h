// What every look-up does with one item: status filter first, then each id by its rule.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>

#include "interfaces/framework.h"
#include "src/items/itemstate.h"
#include "utdata/enum.h"
#include "utdata/ichan.h"
#include "utdata/idata.h"
#include "utdata/igate.h"
#include "utdata/ipatch.h"
#include "utdata/iprobe.h"
#include "utdata/ischan.h"

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

/// One rule per id of a look-up, in order.
template <class Item>
inline constexpr std::array rulesOf{IdRule::Exact};
template <>
inline constexpr std::array rulesOf<CIGate>{IdRule::Exact, IdRule::Exact};
template <>
inline constexpr std::array rulesOf<CISubChan>{IdRule::Exact, IdRule::Exact};
template <>
inline constexpr std::array rulesOf<CIData>{IdRule::BookmarkType,
                                            IdRule::Exact,
                                            IdRule::Exact,
                                            IdRule::Exact,
                                            IdRule::SameGate,
                                            IdRule::Exact};

/// The ids that a data item has now, as IdsOf of src/items/itemstate.h gives those of the others.
[[nodiscard]] inline std::array<std::uint32_t, 6> IdsOf(const CIData& item) {
  idata_typeId id;
  item.idata1_GetId(id);
  return {id.bookmarkType, id.patchId, id.channelId, id.subChannelId, id.gateId, id.dataClass};
}

/// Whether an item passes the filter and has the ids.
template <class Item, std::size_t idQuantity>
[[nodiscard]] bool Matches(const Item& item,
                           fset_enumFilters filter,
                           const std::array<std::uint32_t, idQuantity>& ids,
                           const std::array<IdRule, idQuantity>& rules = rulesOf<Item>) {
  const auto isModified = [&item] {
    if constexpr (requires { item.idata1_ModifGetStatus(); })
      return item.idata1_ModifGetStatus() != 0;
    else
      return ItemAccess::IsModified(item);
  };
  const auto isNew = [&item] {
    if constexpr (requires { item.idata1_NewGetStatus(); })
      return item.idata1_NewGetStatus() != 0;
    else
      return ItemAccess::IsNew(item);
  };
  if (!PassesFilter(filter, isModified, isNew, true)) return false;
  const std::array<std::uint32_t, idQuantity> actual = IdsOf(item);
  for (std::size_t index = 0; index < idQuantity; ++index)
    if (!IdMatches(rules[index], ids[index], actual[index])) return false;
  return true;
}

/// Takes back what was appended to a list, unless it is kept: a list gets all matches or none.
template <class List>
class Appending {
 public:
  explicit Appending(List& list) : m_list(list), m_before(list.GetTailPosition()) {}
  Appending(const Appending&) = delete;
  Appending& operator=(const Appending&) = delete;
  ~Appending() {
    while (!m_isKept && m_list.GetTailPosition() != m_before)
      m_list.RemoveAt(m_list.GetTailPosition());
  }
  void Keep() noexcept { m_isKept = true; }

 private:
  List& m_list;
  POSITION m_before;
  bool m_isKept = false;
};

/// Hands each match of a list to `take(place, item)`, which may remove it, until that answers
/// false.
template <class List, class Take>
void Walk(const List& list,
          fset_enumFilters filter,
          const typename List::Ids& ids,
          const std::array<IdRule, std::tuple_size_v<typename List::Ids>>& rules,
          Take take) {
  for (POSITION next = list.GetHeadPosition(); next;) {
    const POSITION place = next;
    auto* const item = list.GetNext(next);
    if (Matches(*item, filter, ids, rules) && !take(place, item)) return;
  }
}

}  // namespace utdata
