// Channel item.
#include "utdata/ichan.h"

void CIChan::Dump(CDumpContext& context) const { context << "A CIChan object\n"; }

void CIChan::ichan1_GetId(ichan_id* id) const {
  if (Given(id)) id->channelId = InfoRef()->channelId;
}

void CIChan::ichan1_GetName(ichan_name* name) const {
  if (Given(name)) name->name = InfoRef()->name.c_str();
}
