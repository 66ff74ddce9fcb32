// Enumeration tables take part in the initialisation only.
#include "platform/kvtiff19/families/record_operations.h"

int genumtable_Init(SCFile::LockCallback lock,
                    SCFile::LockCallback unlock,
                    SCFile::AllocCallback alloc,
                    SCFile::FreeCallback free,
                    SCFile::ErrorCallback error) {
  return utdata::kvtiff19::InitFamily(lock, unlock, alloc, free, error);
}
