// Patch item.
#include "utdata/ipatch.h"

#include "src/items/itemstate.h"

CIPatch::CIPatch(CGPatchTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}

CIPatch::~CIPatch() = default;

void CIPatch::Dump(CDumpContext& context) const { context << "A CIPatch object\n"; }

void CIPatch::ipatch1_GetId(CIPatchTypeId* id) const {
  if (utdata::Given(id)) id->patchId = utdata::IdsOf(*this)[0];
}

ipatch_typeDescr* CIPatch::ipatch1_GetInfoRef() const { return InfoRef(); }

void CIPatch::ipatch1_GetInfoCopy(ipatch_typeDescr* copy) const { CopyInfo(copy); }

void CIPatch::ipatch1_SetInfoCopy(const ipatch_typeDescr* info) { SetInfo(info); }

CGPatchTypeDescr* CIPatch::ipatch1_GetGInfoRef() const { return FileSide(); }

void CIPatch::ipatch1_GetGInfoCopy(CGPatchTypeDescr* copy) const { CopyFileSide(copy); }

void CIPatch::ipatch1_ReplaceGInfo(const CGPatchTypeDescr* source) { Replace(source); }

std::uint32_t CIPatch::ipatch1_ModifGet(CGPatchTypeDescr** working,
                                        CGPatchTypeDescr** fileSide) const {
  return GetBoth(working, fileSide);
}

bool CIPatch::ipatch1_ModifGetStatus() const { return IsModified(); }

void CIPatch::ipatch1_ModifClear() { SetModifiedLocked(false); }

bool CIPatch::ipatch1_NewGetStatus() const { return IsNew(); }
