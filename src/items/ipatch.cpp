// Patch item.
#include "utdata/ipatch.h"

void CIPatch::Dump(CDumpContext& context) const { context << "A CIPatch object\n"; }

void CIPatch::ipatch1_GetId(CIPatchTypeId* id) const {
  if (Given(id)) id->patchId = InfoRef()->patchId;
}
