// Sub-channel item.
#include "utdata/ischan.h"

void CISubChan::Dump(CDumpContext& context) const { context << "A CISubChan object\n"; }

void CISubChan::ischa1_GetId(ischa_id* id) const {
  if (Given(id)) *id = {InfoRef()->subChannelId, InfoRef()->channelId};
}

void CISubChan::ischa1_GetName(ischa_name* name) const {
  if (Given(name)) name->name = InfoRef()->name.c_str();
}
