#include "src/foundation/dataclass.h"

#include <algorithm>
#include <iterator>

#include "utdata/enum.h"

namespace utdata {
namespace {

enum Meaning : unsigned { Other = 0, Amplitudes = 1, Positions = 2, Gathered = 4 };

struct Row {
  gdata_enumDataClass dataClass;
  unsigned meaning;
  const char* name;
};

constexpr Row rows[] = {
    {gdata_AScan, Amplitudes | Gathered, "A-scan"},
    {gdata_CScanAmplitude, Amplitudes | Gathered, "C-scan amplitude"},
    {gdata_CScanPosition, Positions | Gathered, "C-scan position"},
    {gdata_EddyCurrentX, Other, "eddy current X"},
    {gdata_EddyCurrentY, Other, "eddy current Y"},
    {gdata_Analog, Other, "analog"},
    {gdata_AnalogScaled, Other, "analog scaled"},
    {gdata_AnalogCounter, Other, "analog counter"},
    {gdata_AScanMerged, Amplitudes | Gathered, "A-scan merged"},
    {gdata_AScanProcessed, Amplitudes | Gathered, "A-scan processed"},
    {gdata_CScanPositionFirst, Positions, "C-scan first position"},
    {gdata_CScanPositionLast, Positions, "C-scan last position"},
    {gdata_CScanThickness, Other, "C-scan thickness"},
    {gdata_CScanStatistic, Other, "C-scan statistic"},
    {gdata_CScanAngle, Other, "C-scan angle"},
    {gdata_BeamSimulation, Other, "beam simulation"},
};

const Row* Find(gdata_enumDataClass dataClass) {
  const auto* found = std::find_if(std::begin(rows), std::end(rows), [=](const Row& row) {
    return row.dataClass == ClassOfElements(dataClass);
  });
  return found == std::end(rows) ? nullptr : found;
}

bool Means(gdata_enumDataClass dataClass, Meaning meaning) {
  const Row* row = Find(dataClass);
  return row && (row->meaning & meaning) != 0;
}

}  // namespace

bool HoldsAmplitudes(gdata_enumDataClass dataClass) { return Means(dataClass, Amplitudes); }
bool HoldsPositions(gdata_enumDataClass dataClass) { return Means(dataClass, Positions); }
bool IsGathered(gdata_enumDataClass dataClass) {
  return !IsMaster(dataClass) && Means(dataClass, Gathered);
}

bool IsCScan(gdata_enumDataClass dataClass) {
  return enum_IsCscanData(ClassOfElements(dataClass)) != 0;
}

const char* ClassName(gdata_enumDataClass dataClass) {
  const Row* row = Find(dataClass);
  return row ? row->name : nullptr;
}

}  // namespace utdata
