// Patch item.
#pragma once

#include "utdata/enum.h"
#include "utdata/item.h"

using ipatch_typeDescr = CGPatchTypeDescr;

/// One patch of a file set; utdata/item.h documents the pattern, ownership and locks.
class UTDATA_API CIPatch : public utdata::Item<CGPatchTypeDescr> {
 public:
  CIPatch(CGPatchTypeDescr* descriptor, int isNew);
  ~CIPatch() override;
  void Dump(CDumpContext& context) const override;

  void ipatch1_GetId(CIPatchTypeId* id) const;
  [[nodiscard]] ipatch_typeDescr* ipatch1_GetInfoRef() const;
  void ipatch1_GetInfoCopy(ipatch_typeDescr* copy) const;
  void ipatch1_SetInfoCopy(const ipatch_typeDescr* info);
  [[nodiscard]] CGPatchTypeDescr* ipatch1_GetGInfoRef() const;
  /// A new item leaves `copy` alone.
  void ipatch1_GetGInfoCopy(CGPatchTypeDescr* copy) const;
  void ipatch1_ReplaceGInfo(const CGPatchTypeDescr* source);
  /// Always 0. The file side is null for a new item.
  std::uint32_t ipatch1_ModifGet(CGPatchTypeDescr** working, CGPatchTypeDescr** fileSide) const;
  [[nodiscard]] bool ipatch1_ModifGetStatus() const;
  void ipatch1_ModifClear();
  [[nodiscard]] bool ipatch1_NewGetStatus() const;
};
