// Probe item.
#include "utdata/iprobe.h"

#include "src/items/itemstate.h"

CIProbe::CIProbe(CGProbeTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}

CIProbe::~CIProbe() = default;

void CIProbe::Dump(CDumpContext& context) const { context << "A CIProbe object\n"; }

void CIProbe::iprob1_GetId(iprob_id* id) const {
  if (utdata::Given(id)) id->probeId = utdata::IdsOf(*this)[0];
}

void CIProbe::iprob1_GetName(iprob_name* name) const {
  if (utdata::Given(name))
    name->name = utdata::ReadWorkingCopy(
        *this, [](const CGProbeTypeDescr& working) { return working.name.c_str(); });
}

iprob_typeDescr* CIProbe::iprob1_GetInfoRef() const { return InfoRef(); }

void CIProbe::iprob1_GetInfoCopy(iprob_typeDescr* copy) const { CopyInfo(copy); }

void CIProbe::iprob1_SetInfoCopy(const iprob_typeDescr* info) { SetInfo(info); }

CGProbeTypeDescr* CIProbe::iprob1_GetGInfoRef() const { return FileSide(); }

void CIProbe::iprob1_GetGInfoCopy(CGProbeTypeDescr* copy) const { CopyFileSide(copy); }

void CIProbe::iprob1_ReplaceGInfo(const CGProbeTypeDescr* source) { Replace(source); }

std::uint32_t CIProbe::iprob1_ModifGet(CGProbeTypeDescr** working,
                                       CGProbeTypeDescr** fileSide) const {
  return GetBoth(working, fileSide);
}

bool CIProbe::iprob1_ModifGetStatus() const { return IsModified(); }

void CIProbe::iprob1_ModifSetStatus(bool modified) { SetModified(modified); }

void CIProbe::iprob1_ModifClear() { SetModifiedLocked(false); }

bool CIProbe::iprob1_NewGetStatus() const { return IsNew(); }
