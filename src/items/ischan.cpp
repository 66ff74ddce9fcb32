// Sub-channel item.
#include "utdata/ischan.h"

#include "src/items/itemstate.h"

CISubChan::CISubChan(CGSubchanTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}

CISubChan::~CISubChan() = default;

void CISubChan::Dump(CDumpContext& context) const { context << "A CISubChan object\n"; }

void CISubChan::ischa1_GetId(ischa_id* id) const {
  if (!utdata::Given(id)) return;
  const auto [subChannelId, channelId] = utdata::IdsOf(*this);
  *id = {subChannelId, channelId};
}

void CISubChan::ischa1_GetName(ischa_name* name) const {
  if (utdata::Given(name))
    name->name = utdata::ReadWorkingCopy(
        *this, [](const CGSubchanTypeDescr& working) { return working.name.c_str(); });
}

ischa_typeDescr* CISubChan::ischa1_GetInfoRef() const { return InfoRef(); }

void CISubChan::ischa1_GetInfoCopy(ischa_typeDescr* copy) const { CopyInfo(copy); }

void CISubChan::ischa1_SetInfoCopy(const ischa_typeDescr* info) { SetInfo(info); }

CGSubchanTypeDescr* CISubChan::ischa1_GetGInfoRef() const { return FileSide(); }

void CISubChan::ischa1_GetGInfoCopy(CGSubchanTypeDescr* copy) const { CopyFileSide(copy); }

void CISubChan::ischa1_ReplaceGInfo(const CGSubchanTypeDescr* source) { Replace(source); }

std::uint32_t CISubChan::ischa1_ModifGet(CGSubchanTypeDescr** working,
                                         CGSubchanTypeDescr** fileSide) const {
  return GetBoth(working, fileSide);
}

bool CISubChan::ischa1_ModifGetStatus() const { return IsModified(); }

void CISubChan::ischa1_ModifSetStatus(bool modified) { SetModifiedLocked(modified); }

void CISubChan::ischa1_ModifClear() { SetModifiedLocked(false); }

bool CISubChan::ischa1_NewGetStatus() const { return IsNew(); }
