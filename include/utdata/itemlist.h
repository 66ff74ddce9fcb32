// The item lists, documented once: an ordered list of items it does not own, and three lookups by
// status filter and ids.
//
// Every lookup walks the list from head to tail and takes the items that match: status filter
// first, then each id in the list's order. GetI<Type> returns the first match or null;
// GetI<Type>Lst appends every match to `out`, which is not cleared; RemoveI<Type> moves every match
// from this list to the end of `out`. Matches keep their order, and so do the items that stay.
//
// Ids are compared exactly where a list does not say otherwise; fset_AnyId matches every id. An
// unknown filter value is reported as an assertion and lets the item pass. `out` must not be null.
// Without memory those that fill a list let std::bad_alloc pass, and change neither list.
//
// Lists take no lock: those of a file set are guarded by it, the others belong to their caller.
// Destroying a list or taking an item out of it does not destroy the item.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "interfaces/framework.h"
#include "utdata/enum.h"

class CIChan;
class CIData;
class CIGate;
class CIPatch;
class CIProbe;
class CISubChan;

namespace utdata {

/// The walk, under which the exported names of each list stand.
/// @tparam idQuantity ids that a lookup names
template <class ItemClass, std::size_t idQuantity>
class ItemList : public CObject, public CList<ItemClass*> {
 public:
  using Item = ItemClass;
  using Ids = std::array<std::uint32_t, idQuantity>;

  ItemList();

  [[nodiscard]] Item* First(fset_enumFilters filter, const Ids& ids) const;
  void Append(fset_enumFilters filter, ItemList& out, const Ids& ids) const;
  void Move(fset_enumFilters filter, ItemList& out, const Ids& ids);
};

extern template class UTDATA_API ItemList<CIChan, 1>;
extern template class UTDATA_API ItemList<CIData, 6>;
extern template class UTDATA_API ItemList<CIGate, 2>;
extern template class UTDATA_API ItemList<CIPatch, 1>;
extern template class UTDATA_API ItemList<CIProbe, 1>;
extern template class UTDATA_API ItemList<CISubChan, 2>;

}  // namespace utdata
