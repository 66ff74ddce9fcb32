// List of gate items.
#pragma once

#include "utdata/igate.h"
#include "utdata/itemlist.h"

namespace utdata {

struct GateListTraits {
  using Item = CIGate;
  static constexpr std::array rules{IdRule::Exact, IdRule::Exact};
  static std::array<std::uint32_t, 2> IdsOf(const Item& item) {
    igate_id id;
    item.igate1_GetId(&id);
    return {id.gateId, id.channelId};
  }
  static bool IsModified(const Item& item) { return item.igate1_ModifGetStatus(); }
  static bool IsNew(const Item& item) { return item.igate1_NewGetStatus(); }
};

}  // namespace utdata

/// utdata/itemlist.h tells the lookups. Gate ids are compared exactly, not by gate number.
class UTDATA_API CIGateLst : public utdata::ItemList<utdata::GateListTraits> {
  DECLARE_DYNAMIC(CIGateLst)

 public:
  [[nodiscard]] CIGate* GetIGate(fset_enumFilters filter,
                                 std::uint32_t gateId,
                                 std::uint32_t chanId) const;
  void GetIGateLst(fset_enumFilters filter,
                   CIGateLst* out,
                   std::uint32_t gateId,
                   std::uint32_t chanId) const;
  void RemoveIGate(fset_enumFilters filter,
                   CIGateLst* out,
                   std::uint32_t gateId,
                   std::uint32_t chanId);
};
