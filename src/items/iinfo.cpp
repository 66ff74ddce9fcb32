// General-information item.
#include "utdata/iinfo.h"

CIInfo::CIInfo(CGInfoTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}

CIInfo::~CIInfo() = default;

void CIInfo::Dump(CDumpContext& context) const { context << "A CIInfo object\n"; }

iinfo_typeDescr* CIInfo::iinfo1_GetInfoRef() const { return InfoRef(); }

void CIInfo::iinfo1_GetInfoCopy(iinfo_typeDescr* copy) const { CopyInfo(copy); }

void CIInfo::iinfo1_SetInfoCopy(const iinfo_typeDescr* info) { SetInfo(info); }

CGInfoTypeDescr* CIInfo::iinfo1_GetGInfoRef() const { return FileSide(); }

void CIInfo::iinfo1_GetGInfoCopy(CGInfoTypeDescr* copy) const { CopyFileSide(copy); }

void CIInfo::iinfo1_ReplaceGInfo(const CGInfoTypeDescr* source) { Replace(source); }

std::uint32_t CIInfo::iinfo1_ModifGet(CGInfoTypeDescr** working, CGInfoTypeDescr** fileSide) const {
  return GetBoth(working, fileSide);
}

bool CIInfo::iinfo1_ModifGetStatus() const { return IsModified(); }

void CIInfo::iinfo1_ModifClear() { SetModifiedLocked(false); }

bool CIInfo::iinfo1_NewGetStatus() const { return IsNew(); }
