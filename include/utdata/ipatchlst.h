// List of patch items.
#pragma once

#include "utdata/ipatch.h"
#include "utdata/itemlist.h"

namespace utdata {

struct PatchListTraits {
  using Item = CIPatch;
  static constexpr std::array rules{IdRule::Exact};
  static std::array<std::uint32_t, 1> IdsOf(const Item& item) {
    CIPatchTypeId id;
    item.ipatch1_GetId(&id);
    return {id.patchId};
  }
  static bool IsModified(const Item& item) { return item.ipatch1_ModifGetStatus(); }
  static bool IsNew(const Item& item) { return item.ipatch1_NewGetStatus(); }
};

}  // namespace utdata

/// utdata/itemlist.h tells the lookups.
class UTDATA_API CIPatchLst : public utdata::ItemList<utdata::PatchListTraits> {
  DECLARE_DYNAMIC(CIPatchLst)

 public:
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] CIPatch* GetIPatch(fset_enumFilters filter, std::uint32_t patchId) const;
  void GetIPatchLst(fset_enumFilters filter, CIPatchLst* out, std::uint32_t patchId) const;
  void RemoveIPatch(fset_enumFilters filter, CIPatchLst* out, std::uint32_t patchId);
};
