// Channel item.
#include "utdata/ichan.h"

#include "src/items/itemstate.h"

CIChan::CIChan(CGChanTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}

CIChan::~CIChan() = default;

void CIChan::Dump(CDumpContext& context) const { context << "A CIChan object\n"; }

void CIChan::ichan1_GetId(ichan_id* id) const {
  if (utdata::Given(id)) id->channelId = utdata::IdsOf(*this)[0];
}

void CIChan::ichan1_GetName(ichan_name* name) const {
  if (utdata::Given(name))
    name->name = utdata::ReadWorkingCopy(
        *this, [](const CGChanTypeDescr& working) { return working.name.c_str(); });
}

ichan_typeDescr* CIChan::ichan1_GetInfoRef() const { return InfoRef(); }

void CIChan::ichan1_GetInfoCopy(ichan_typeDescr* copy) const { CopyInfo(copy); }

void CIChan::ichan1_SetInfoCopy(const ichan_typeDescr* info) { SetInfo(info); }

CGChanTypeDescr* CIChan::ichan1_GetGInfoRef() const { return FileSide(); }

int CIChan::ichan1_GetGInfoCopy(CGChanTypeDescr* copy) const { return CopyFileSide(copy) ? 1 : 0; }

void CIChan::ichan1_ReplaceGInfo(const CGChanTypeDescr* source) { Replace(source); }

std::uint32_t CIChan::ichan1_ModifGet(CGChanTypeDescr** working, CGChanTypeDescr** fileSide) const {
  return GetBoth(working, fileSide);
}

bool CIChan::ichan1_ModifGetStatus() const { return IsModified(); }

void CIChan::ichan1_ModifSetStatus(bool modified) { SetModified(modified); }

void CIChan::ichan1_ModifClear() { SetModifiedLocked(false); }

bool CIChan::ichan1_NewGetStatus() const { return IsNew(); }
