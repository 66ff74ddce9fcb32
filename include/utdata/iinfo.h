// General-information item.
#pragma once

#include "utdata/item.h"

using iinfo_typeDescr = CGInfoTypeDescr;

/// The general information of a file set; utdata/item.h tells the pattern, ownership and locks.
class UTDATA_API CIInfo : public utdata::Item<CGInfoTypeDescr, ginfo_Duplicate, ginfo_Delete> {
 public:
  CIInfo(CGInfoTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] iinfo_typeDescr* iinfo1_GetInfoRef() const { return InfoRef(); }
  void iinfo1_GetInfoCopy(iinfo_typeDescr* copy) const { CopyInfo(copy); }
  void iinfo1_SetInfoCopy(const iinfo_typeDescr* info) { SetInfo(info); }
  [[nodiscard]] CGInfoTypeDescr* iinfo1_GetGInfoRef() const { return FileSide(); }
  /// A new item leaves `copy` alone.
  void iinfo1_GetGInfoCopy(CGInfoTypeDescr* copy) const { CopyFileSide(copy); }
  void iinfo1_ReplaceGInfo(const CGInfoTypeDescr* source) { Replace(source); }
  /// Always 0. The file side is null for a new item.
  std::uint32_t iinfo1_ModifGet(CGInfoTypeDescr** working, CGInfoTypeDescr** fileSide) const {
    return GetBoth(working, fileSide);
  }
  [[nodiscard]] bool iinfo1_ModifGetStatus() const { return IsModified(); }
  void iinfo1_ModifClear() { SetModifiedLocked(false); }
  [[nodiscard]] bool iinfo1_NewGetStatus() const { return IsNew(); }
};
