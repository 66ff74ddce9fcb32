// Families of data classes, of which a master's class is none.
#include "utdata/enum.h"

#include "src/foundation/dataclass.h"

std::int32_t enum_IsAscanData(gdata_enumDataClass dataClass) {
  return !utdata::IsMaster(dataClass) && utdata::IsAScan(dataClass) ? 1 : 0;
}

std::int32_t enum_IsCscanData(gdata_enumDataClass dataClass) {
  return !utdata::IsMaster(dataClass) && utdata::IsCScan(dataClass) ? 1 : 0;
}
