// List of channel items.
#pragma once

#include "utdata/ichan.h"
#include "utdata/itemlist.h"

/// utdata/itemlist.h documents the lookups.
class UTDATA_API CIChanLst : public utdata::ItemList<CIChan, 1> {
  DECLARE_DYNAMIC(CIChanLst)

 public:
  CIChanLst();
  ~CIChanLst() override;
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] CIChan* GetIChan(fset_enumFilters filter, std::uint32_t chanId) const;
  void GetIChanLst(fset_enumFilters filter, CIChanLst* out, std::uint32_t chanId) const;
  void RemoveIChan(fset_enumFilters filter, CIChanLst* out, std::uint32_t chanId);
};
