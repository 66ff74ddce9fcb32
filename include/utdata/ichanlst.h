// List of channel items.
#pragma once

#include "utdata/ichan.h"
#include "utdata/itemlist.h"

namespace utdata {

struct ChanListTraits {
  using Item = CIChan;
  static constexpr std::array rules{IdRule::Exact};
  static std::array<std::uint32_t, 1> IdsOf(const Item& item) {
    ichan_id id;
    item.ichan1_GetId(&id);
    return {id.channelId};
  }
  static bool IsModified(const Item& item) { return item.ichan1_ModifGetStatus(); }
  static bool IsNew(const Item& item) { return item.ichan1_NewGetStatus(); }
};

}  // namespace utdata

/// utdata/itemlist.h tells the lookups.
class UTDATA_API CIChanLst : public utdata::ItemList<utdata::ChanListTraits> {
  DECLARE_DYNAMIC(CIChanLst)

 public:
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] CIChan* GetIChan(fset_enumFilters filter, std::uint32_t chanId) const;
  void GetIChanLst(fset_enumFilters filter, CIChanLst* out, std::uint32_t chanId) const;
  void RemoveIChan(fset_enumFilters filter, CIChanLst* out, std::uint32_t chanId);
};
