// Specimen-material item.
#include "utdata/ismat.h"

CISpecMat::CISpecMat(CGSpecmatTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}

CISpecMat::~CISpecMat() = default;

void CISpecMat::Dump(CDumpContext&) const {}

ismat_typeDescr* CISpecMat::ismat1_GetInfoRef() const { return InfoRef(); }

void CISpecMat::ismat1_GetInfoCopy(ismat_typeDescr* copy) const { CopyInfo(copy); }

void CISpecMat::ismat1_SetInfoCopy(const ismat_typeDescr* info) { SetInfo(info); }

CGSpecmatTypeDescr* CISpecMat::ismat1_GetGInfoRef() const { return FileSide(); }

void CISpecMat::ismat1_GetGInfoCopy(CGSpecmatTypeDescr* copy) const { CopyFileSide(copy); }

void CISpecMat::ismat1_ReplaceGInfo(CGSpecmatTypeDescr* fileSide) { Adopt(fileSide); }

std::uint32_t CISpecMat::ismat1_ModifGet(CGSpecmatTypeDescr** working,
                                         CGSpecmatTypeDescr** fileSide) const {
  return GetBoth(working, fileSide);
}

bool CISpecMat::ismat1_ModifGetStatus() const { return IsModified(); }

void CISpecMat::ismat1_ModifClear() { SetModifiedLocked(false); }

bool CISpecMat::ismat1_NewGetStatus() const { return IsNew(); }
