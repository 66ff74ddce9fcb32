// Families of data classes.
#include "utdata/enum.h"

std::int32_t enum_IsAscanData(gdata_enumDataClass dataClass) {
  return dataClass == gdata_AScan || dataClass == gdata_AScanMerged ||
         dataClass == gdata_AScanProcessed;
}

std::int32_t enum_IsCscanData(gdata_enumDataClass dataClass) {
  return (dataClass & gdata_MultiChannelMaster) == 0 && gdata_HoldsOneValuePerCell(dataClass);
}
