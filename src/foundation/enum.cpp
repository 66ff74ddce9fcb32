// Families of data classes.
#include "utdata/enum.h"

std::int32_t enum_IsAscanData(gdata_enumDataClass dataClass) {
  return dataClass == gdata_AScan || dataClass == gdata_AScanMerged ||
         dataClass == gdata_AScanProcessed;
}

std::int32_t enum_IsCscanData(gdata_enumDataClass dataClass) {
  switch (dataClass) {
    case gdata_CScanAmplitude:
    case gdata_CScanPosition:
    case gdata_CScanPositionFirst:
    case gdata_CScanPositionLast:
    case gdata_CScanThickness:
    case gdata_CScanStatistic:
    case gdata_CScanAngle:
      return 1;
    default:
      return 0;
  }
}
