// List of patch items.
#pragma once

#include "utdata/ipatch.h"
#include "utdata/itemlist.h"

/// utdata/itemlist.h documents the lookups.
class UTDATA_API CIPatchLst : public utdata::ItemList<CIPatch, 1> {
  DECLARE_DYNAMIC(CIPatchLst)

 public:
  CIPatchLst();
  ~CIPatchLst() override;
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] CIPatch* GetIPatch(fset_enumFilters filter, std::uint32_t patchId) const;
  void GetIPatchLst(fset_enumFilters filter, CIPatchLst* out, std::uint32_t patchId) const;
  void RemoveIPatch(fset_enumFilters filter, CIPatchLst* out, std::uint32_t patchId);
};
