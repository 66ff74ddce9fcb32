// Patch item.
#pragma once

#include "utdata/enum.h"
#include "utdata/item.h"

using ipatch_typeDescr = CGPatchTypeDescr;

/// One patch of a file set; utdata/item.h tells the pattern, ownership and locks.
class UTDATA_API CIPatch : public utdata::Item<CGPatchTypeDescr, gpatch_Duplicate, gpatch_Delete> {
 public:
  CIPatch(CGPatchTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}
  void Dump(CDumpContext& context) const override;

  void ipatch1_GetId(CIPatchTypeId* id) const;
  [[nodiscard]] ipatch_typeDescr* ipatch1_GetInfoRef() const { return InfoRef(); }
  void ipatch1_GetInfoCopy(ipatch_typeDescr* copy) const { CopyInfo(copy); }
  void ipatch1_SetInfoCopy(const ipatch_typeDescr* info) { SetInfo(info); }
  [[nodiscard]] CGPatchTypeDescr* ipatch1_GetGInfoRef() const { return FileSide(); }
  /// A new item leaves `copy` alone.
  void ipatch1_GetGInfoCopy(CGPatchTypeDescr* copy) const { CopyFileSide(copy); }
  void ipatch1_ReplaceGInfo(const CGPatchTypeDescr* source) { Replace(source); }
  /// Always 0. The file side is null for a new item.
  std::uint32_t ipatch1_ModifGet(CGPatchTypeDescr** working, CGPatchTypeDescr** fileSide) const {
    return GetBoth(working, fileSide);
  }
  [[nodiscard]] bool ipatch1_ModifGetStatus() const { return IsModified(); }
  void ipatch1_ModifClear() { SetModifiedLocked(false); }
  [[nodiscard]] bool ipatch1_NewGetStatus() const { return IsNew(); }
};
