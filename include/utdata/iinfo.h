// General-information item.
#pragma once

#include "utdata/item.h"

using iinfo_typeDescr = CGInfoTypeDescr;

/// The general information of a file set; utdata/item.h documents the pattern, ownership and locks.
class UTDATA_API CIInfo : public utdata::Item<CGInfoTypeDescr> {
 public:
  CIInfo(CGInfoTypeDescr* descriptor, int isNew);
  ~CIInfo() override;
  void Dump(CDumpContext& context) const override;

  [[nodiscard]] iinfo_typeDescr* iinfo1_GetInfoRef() const;
  void iinfo1_GetInfoCopy(iinfo_typeDescr* copy) const;
  void iinfo1_SetInfoCopy(const iinfo_typeDescr* info);
  [[nodiscard]] CGInfoTypeDescr* iinfo1_GetGInfoRef() const;
  /// A new item leaves `copy` alone.
  void iinfo1_GetGInfoCopy(CGInfoTypeDescr* copy) const;
  void iinfo1_ReplaceGInfo(const CGInfoTypeDescr* source);
  /// Always 0. The file side is null for a new item.
  std::uint32_t iinfo1_ModifGet(CGInfoTypeDescr** working, CGInfoTypeDescr** fileSide) const;
  [[nodiscard]] bool iinfo1_ModifGetStatus() const;
  void iinfo1_ModifClear();
  [[nodiscard]] bool iinfo1_NewGetStatus() const;
};
