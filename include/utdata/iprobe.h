// Probe item.
#pragma once

#include "utdata/enum.h"
#include "utdata/item.h"

using iprob_typeDescr = CGProbeTypeDescr;

/// One probe of a file set; utdata/item.h documents the pattern, ownership and locks.
class UTDATA_API CIProbe : public utdata::Item<CGProbeTypeDescr> {
 public:
  CIProbe(CGProbeTypeDescr* descriptor, int isNew);
  ~CIProbe() override;
  void Dump(CDumpContext& context) const override;

  void iprob1_GetId(iprob_id* id) const;
  void iprob1_GetName(iprob_name* name) const;
  [[nodiscard]] iprob_typeDescr* iprob1_GetInfoRef() const;
  void iprob1_GetInfoCopy(iprob_typeDescr* copy) const;
  void iprob1_SetInfoCopy(const iprob_typeDescr* info);
  [[nodiscard]] CGProbeTypeDescr* iprob1_GetGInfoRef() const;
  /// A new item leaves `copy` alone.
  void iprob1_GetGInfoCopy(CGProbeTypeDescr* copy) const;
  void iprob1_ReplaceGInfo(const CGProbeTypeDescr* source);
  /// Always 0. The file side is null for a new item.
  std::uint32_t iprob1_ModifGet(CGProbeTypeDescr** working, CGProbeTypeDescr** fileSide) const;
  [[nodiscard]] bool iprob1_ModifGetStatus() const;
  void iprob1_ModifSetStatus(bool modified);
  void iprob1_ModifClear();
  [[nodiscard]] bool iprob1_NewGetStatus() const;
};
