// List of probe items.
#pragma once

#include "utdata/iprobe.h"
#include "utdata/itemlist.h"

/// utdata/itemlist.h documents the lookups.
class UTDATA_API CIProbeLst : public utdata::ItemList<CIProbe, 1> {
  DECLARE_DYNAMIC(CIProbeLst)

 public:
  CIProbeLst();
  ~CIProbeLst() override;
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] CIProbe* GetIProbe(fset_enumFilters filter, std::uint32_t probeId) const;
  void GetIProbeLst(fset_enumFilters filter, CIProbeLst* out, std::uint32_t probeId) const;
  void RemoveIProbe(fset_enumFilters filter, CIProbeLst* out, std::uint32_t probeId);
};
