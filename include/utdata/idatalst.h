// List of data items.
#pragma once

#include "utdata/idata.h"
#include "utdata/itemlist.h"

namespace utdata {

struct DataListTraits {
  using Item = CIData;
  static constexpr std::array rules{IdRule::BookmarkType,
                                    IdRule::Exact,
                                    IdRule::Exact,
                                    IdRule::Exact,
                                    IdRule::SameGate,
                                    IdRule::Exact};
  static std::array<std::uint32_t, 6> IdsOf(const Item& item) {
    idata_typeId id;
    item.idata1_GetId(id);
    return {id.bookmarkType, id.patchId, id.channelId, id.subChannelId, id.gateId, id.dataClass};
  }
  static bool IsModified(const Item& item) { return item.idata1_ModifGetStatus() != 0; }
  static bool IsNew(const Item& item) { return item.idata1_NewGetStatus() != 0; }
};

}  // namespace utdata

/// utdata/itemlist.h tells the lookups. A bookmark type of 0 matches every bookmark type, a data
/// class of fset_AnyId every class, and gate ids are compared by gate number.
class UTDATA_API CIDataLst : public utdata::ItemList<utdata::DataListTraits> {
  DECLARE_DYNAMIC(CIDataLst)

 public:
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
