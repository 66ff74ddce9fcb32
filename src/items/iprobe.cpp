// Probe item.
#include "utdata/iprobe.h"

void CIProbe::Dump(CDumpContext& context) const { context << "A CIProbe object\n"; }

void CIProbe::iprob1_GetId(iprob_id* id) const {
  if (Given(id)) id->probeId = InfoRef()->probeId;
}

void CIProbe::iprob1_GetName(iprob_name* name) const {
  if (Given(name)) name->name = InfoRef()->name.c_str();
}
