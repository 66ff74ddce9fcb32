// Channel item.
#pragma once

#include "utdata/enum.h"
#include "utdata/item.h"

using ichan_typeDescr = CGChanTypeDescr;

/// One channel of a file set; utdata/item.h documents the pattern, ownership and locks.
class UTDATA_API CIChan : public utdata::Item<CGChanTypeDescr> {
 public:
  CIChan(CGChanTypeDescr* descriptor, int isNew);
  ~CIChan() override;
  void Dump(CDumpContext& context) const override;

  void ichan1_GetId(ichan_id* id) const;
  void ichan1_GetName(ichan_name* name) const;
  [[nodiscard]] ichan_typeDescr* ichan1_GetInfoRef() const;
  void ichan1_GetInfoCopy(ichan_typeDescr* copy) const;
  void ichan1_SetInfoCopy(const ichan_typeDescr* info);
  [[nodiscard]] CGChanTypeDescr* ichan1_GetGInfoRef() const;
  /// 1 when there is a file side; else 0, and `copy` is left alone.
  int ichan1_GetGInfoCopy(CGChanTypeDescr* copy) const;
  void ichan1_ReplaceGInfo(const CGChanTypeDescr* source);
  /// Always 0. The file side is null for a new item.
  std::uint32_t ichan1_ModifGet(CGChanTypeDescr** working, CGChanTypeDescr** fileSide) const;
  [[nodiscard]] bool ichan1_ModifGetStatus() const;
  void ichan1_ModifSetStatus(bool modified);
  void ichan1_ModifClear();
  [[nodiscard]] bool ichan1_NewGetStatus() const;
};
