// List of data items.
#pragma once

#include "utdata/idata.h"
#include "utdata/itemlist.h"

/// utdata/itemlist.h documents the lookups. A bookmark type of 0 matches every bookmark type, a
/// data class of fset_AnyId every class, and gate ids are compared by gate number.
class UTDATA_API CIDataLst : public utdata::ItemList<CIData, 6> {
  DECLARE_DYNAMIC(CIDataLst)

 public:
  CIDataLst();
  ~CIDataLst() override;
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] CIData* GetIData(fset_enumFilters filter,
                                 std::uint32_t bookmark,
                                 std::uint32_t patchId,
                                 std::uint32_t chanId,
                                 std::uint32_t subChanId,
                                 std::uint32_t gateId,
                                 std::uint32_t dataClass) const;
  void GetIDataLst(fset_enumFilters filter,
                   CIDataLst* out,
                   std::uint32_t bookmark,
                   std::uint32_t patchId,
                   std::uint32_t chanId,
                   std::uint32_t subChanId,
                   std::uint32_t gateId,
                   std::uint32_t dataClass) const;
  void RemoveIData(fset_enumFilters filter,
                   CIDataLst* out,
                   std::uint32_t bookmark,
                   std::uint32_t patchId,
                   std::uint32_t chanId,
                   std::uint32_t subChanId,
                   std::uint32_t gateId,
                   std::uint32_t dataClass);
  /// As GetIDataLst for every bookmark type, but `gateId` itself has to be the item's gate number:
  /// 2000 or more matches nothing.
  void GetGateIDataList(fset_enumFilters filter,
                        CIDataLst* out,
                        std::uint32_t patchId,
                        std::uint32_t chanId,
                        std::uint32_t subChanId,
                        std::uint32_t gateId,
                        std::uint32_t dataClass) const;
};
