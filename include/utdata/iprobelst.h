// List of probe items.
#pragma once

#include "utdata/iprobe.h"
#include "utdata/itemlist.h"

namespace utdata {

struct ProbeListTraits {
  using Item = CIProbe;
  static constexpr std::array rules{IdRule::Exact};
  static std::array<std::uint32_t, 1> IdsOf(const Item& item) {
    iprob_id id;
    item.iprob1_GetId(&id);
    return {id.probeId};
  }
  static bool IsModified(const Item& item) { return item.iprob1_ModifGetStatus(); }
  static bool IsNew(const Item& item) { return item.iprob1_NewGetStatus(); }
};

}  // namespace utdata

/// utdata/itemlist.h tells the lookups.
class UTDATA_API CIProbeLst : public utdata::ItemList<utdata::ProbeListTraits> {
  DECLARE_DYNAMIC(CIProbeLst)

 public:
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] CIProbe* GetIProbe(fset_enumFilters filter, std::uint32_t probeId) const;
  void GetIProbeLst(fset_enumFilters filter, CIProbeLst* out, std::uint32_t probeId) const;
  void RemoveIProbe(fset_enumFilters filter, CIProbeLst* out, std::uint32_t probeId);
};
