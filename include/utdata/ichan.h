// Channel item.
#pragma once

#include "utdata/enum.h"
#include "utdata/item.h"

using ichan_typeDescr = CGChanTypeDescr;

/// One channel of a file set; utdata/item.h tells the pattern, ownership and locks.
class UTDATA_API CIChan : public utdata::Item<CGChanTypeDescr, gchan_Duplicate, gchan_Delete> {
 public:
  CIChan(CGChanTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}
  void Dump(CDumpContext& context) const override;

  void ichan1_GetId(ichan_id* id) const;
  void ichan1_GetName(ichan_name* name) const;
  [[nodiscard]] ichan_typeDescr* ichan1_GetInfoRef() const { return InfoRef(); }
  void ichan1_GetInfoCopy(ichan_typeDescr* copy) const { CopyInfo(copy); }
  void ichan1_SetInfoCopy(const ichan_typeDescr* info) { SetInfo(info); }
  [[nodiscard]] CGChanTypeDescr* ichan1_GetGInfoRef() const { return FileSide(); }
  /// 1 when there is a file side; else 0, and `copy` is left alone.
  int ichan1_GetGInfoCopy(CGChanTypeDescr* copy) const { return CopyFileSide(copy) ? 1 : 0; }
  void ichan1_ReplaceGInfo(const CGChanTypeDescr* source) { Replace(source); }
  /// Always 0. The file side is null for a new item.
  std::uint32_t ichan1_ModifGet(CGChanTypeDescr** working, CGChanTypeDescr** fileSide) const {
    return GetBoth(working, fileSide);
  }
  [[nodiscard]] bool ichan1_ModifGetStatus() const { return IsModified(); }
  void ichan1_ModifSetStatus(bool modified) { SetModified(modified); }
  void ichan1_ModifClear() { SetModifiedLocked(false); }
  [[nodiscard]] bool ichan1_NewGetStatus() const { return IsNew(); }
};
