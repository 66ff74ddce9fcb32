// List of sub-channel items.
#pragma once

#include "utdata/ischan.h"
#include "utdata/itemlist.h"

/// utdata/itemlist.h documents the lookups.
class UTDATA_API CISubChanLst : public utdata::ItemList<CISubChan, 2> {
  DECLARE_DYNAMIC(CISubChanLst)

 public:
  CISubChanLst();
  ~CISubChanLst() override;
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] CISubChan* GetISubChan(fset_enumFilters filter,
                                       std::uint32_t subChanId,
                                       std::uint32_t chanId) const;
  void GetISubChanLst(fset_enumFilters filter,
                      CISubChanLst* out,
                      std::uint32_t subChanId,
                      std::uint32_t chanId) const;
  void RemoveISubChan(fset_enumFilters filter,
                      CISubChanLst* out,
                      std::uint32_t subChanId,
                      std::uint32_t chanId);
};
