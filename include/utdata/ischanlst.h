// List of sub-channel items.
#pragma once

#include "utdata/ischan.h"
#include "utdata/itemlist.h"

namespace utdata {

struct SubChanListTraits {
  using Item = CISubChan;
  static constexpr std::array rules{IdRule::Exact, IdRule::Exact};
  static std::array<std::uint32_t, 2> IdsOf(const Item& item) {
    ischa_id id;
    item.ischa1_GetId(&id);
    return {id.subChannelId, id.channelId};
  }
  static bool IsModified(const Item& item) { return item.ischa1_ModifGetStatus(); }
  static bool IsNew(const Item& item) { return item.ischa1_NewGetStatus(); }
};

}  // namespace utdata

/// utdata/itemlist.h tells the lookups.
class UTDATA_API CISubChanLst : public utdata::ItemList<utdata::SubChanListTraits> {
  DECLARE_DYNAMIC(CISubChanLst)

 public:
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
