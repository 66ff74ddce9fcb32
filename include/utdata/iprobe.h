// Probe item.
#pragma once

#include "utdata/enum.h"
#include "utdata/item.h"

using iprob_typeDescr = CGProbeTypeDescr;

/// One probe of a file set; utdata/item.h tells the pattern, ownership and locks.
class UTDATA_API CIProbe : public utdata::Item<CGProbeTypeDescr, gprobe_Duplicate, gprobe_Delete> {
 public:
  CIProbe(CGProbeTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}
  void Dump(CDumpContext& context) const override;

  void iprob1_GetId(iprob_id* id) const;
  void iprob1_GetName(iprob_name* name) const;
  [[nodiscard]] iprob_typeDescr* iprob1_GetInfoRef() const { return InfoRef(); }
  void iprob1_GetInfoCopy(iprob_typeDescr* copy) const { CopyInfo(copy); }
  void iprob1_SetInfoCopy(const iprob_typeDescr* info) { SetInfo(info); }
  [[nodiscard]] CGProbeTypeDescr* iprob1_GetGInfoRef() const { return FileSide(); }
  /// A new item leaves `copy` alone.
  void iprob1_GetGInfoCopy(CGProbeTypeDescr* copy) const { CopyFileSide(copy); }
  void iprob1_ReplaceGInfo(const CGProbeTypeDescr* source) { Replace(source); }
  /// Always 0. The file side is null for a new item.
  std::uint32_t iprob1_ModifGet(CGProbeTypeDescr** working, CGProbeTypeDescr** fileSide) const {
    return GetBoth(working, fileSide);
  }
  [[nodiscard]] bool iprob1_ModifGetStatus() const { return IsModified(); }
  void iprob1_ModifSetStatus(bool modified) { SetModified(modified); }
  void iprob1_ModifClear() { SetModifiedLocked(false); }
  [[nodiscard]] bool iprob1_NewGetStatus() const { return IsNew(); }
};
