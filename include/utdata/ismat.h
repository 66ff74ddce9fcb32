// Specimen-material item.
#pragma once

#include "utdata/item.h"

using ismat_typeDescr = CGSpecmatTypeDescr;

/// The material of a specimen; utdata/item.h documents the pattern, ownership and locks.
class UTDATA_API CISpecMat : public utdata::Item<CGSpecmatTypeDescr> {
 public:
  CISpecMat(CGSpecmatTypeDescr* descriptor, int isNew);
  ~CISpecMat() override;
  void Dump(CDumpContext& context) const override;  ///< writes nothing

  [[nodiscard]] ismat_typeDescr* ismat1_GetInfoRef() const;
  void ismat1_GetInfoCopy(ismat_typeDescr* copy) const;
  void ismat1_SetInfoCopy(const ismat_typeDescr* info);
  [[nodiscard]] CGSpecmatTypeDescr* ismat1_GetGInfoRef() const;
  /// A new item leaves `copy` alone.
  void ismat1_GetGInfoCopy(CGSpecmatTypeDescr* copy) const;
  /// Makes the caller's record itself the file side, so that the item is not new, and the working
  /// copy equal to it; the record has to outlive the item. The modified flag stays as it is.
  void ismat1_ReplaceGInfo(CGSpecmatTypeDescr* fileSide);
  /// Always 0. The file side is null for a new item.
  std::uint32_t ismat1_ModifGet(CGSpecmatTypeDescr** working, CGSpecmatTypeDescr** fileSide) const;
  [[nodiscard]] bool ismat1_ModifGetStatus() const;
  void ismat1_ModifClear();
  [[nodiscard]] bool ismat1_NewGetStatus() const;
};
