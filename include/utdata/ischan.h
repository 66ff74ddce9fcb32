// Sub-channel item.
#pragma once

#include "utdata/enum.h"
#include "utdata/item.h"

using ischa_typeDescr = CGSubchanTypeDescr;

/// One sub-channel of a file set; utdata/item.h documents the pattern, ownership and locks.
class UTDATA_API CISubChan : public utdata::Item<CGSubchanTypeDescr> {
 public:
  CISubChan(CGSubchanTypeDescr* descriptor, int isNew);
  ~CISubChan() override;
  void Dump(CDumpContext& context) const override;

  void ischa1_GetId(ischa_id* id) const;
  void ischa1_GetName(ischa_name* name) const;
  [[nodiscard]] ischa_typeDescr* ischa1_GetInfoRef() const;
  void ischa1_GetInfoCopy(ischa_typeDescr* copy) const;
  void ischa1_SetInfoCopy(const ischa_typeDescr* info);
  [[nodiscard]] CGSubchanTypeDescr* ischa1_GetGInfoRef() const;
  /// A new item leaves `copy` alone.
  void ischa1_GetGInfoCopy(CGSubchanTypeDescr* copy) const;
  void ischa1_ReplaceGInfo(const CGSubchanTypeDescr* source);
  /// Always 0. The file side is null for a new item.
  std::uint32_t ischa1_ModifGet(CGSubchanTypeDescr** working, CGSubchanTypeDescr** fileSide) const;
  [[nodiscard]] bool ischa1_ModifGetStatus() const;
  void ischa1_ModifSetStatus(bool modified);
  void ischa1_ModifClear();
  [[nodiscard]] bool ischa1_NewGetStatus() const;
};
