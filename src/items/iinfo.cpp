// General-information item.
#include "utdata/iinfo.h"

void CIInfo::Dump(CDumpContext& context) const { context << "A CIInfo object\n"; }
