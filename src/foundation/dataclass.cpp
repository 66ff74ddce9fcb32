// What a data class means.
#include "src/foundation/dataclass.h"

#include <algorithm>
#include <iterator>

namespace utdata {
namespace {

enum Meaning : unsigned {
  Other = 0,
  Amplitudes = 1U << 0,
  Positions = 1U << 1,
  Gathered = 1U << 2,
  AScans = 1U << 3,
  Volume = 1U << 5,
  Analog = 1U << 6,
  EddyCurrent = 1U << 7,
  Special = 1U << 8,
  Shared = 1U << 9,
  NativeOrder = 1U << 10
};

struct Row {
  gdata_enumDataClass dataClass;
  unsigned meaning;
  const char* name;
};

constexpr Row rows[] = {
    {gdata_AScan, AScans | Amplitudes | Volume | Gathered, "A-scan"},
    {gdata_CScanAmplitude, Amplitudes | Gathered | NativeOrder, "C-scan amplitude"},
    {gdata_CScanPosition, Positions | Gathered | NativeOrder, "C-scan position"},
    {gdata_EddyCurrentX, EddyCurrent | Special | NativeOrder, "eddy current X"},
    {gdata_EddyCurrentY, EddyCurrent | NativeOrder, "eddy current Y"},
    {gdata_Analog, Analog | Special | NativeOrder, "analog"},
    {gdata_AnalogScaled, Analog | Special | NativeOrder, "analog scaled"},
    {gdata_AnalogCounter, Analog | Special | NativeOrder, "analog counter"},
    {gdata_AScanMerged, AScans | Amplitudes | Volume | Gathered, "A-scan merged"},
    {gdata_AScanProcessed, AScans | Amplitudes | Gathered, "A-scan processed"},
    {gdata_CScanPositionFirst, Positions | NativeOrder, "C-scan first position"},
    {gdata_CScanPositionLast, Positions | NativeOrder, "C-scan last position"},
    {gdata_CScanThickness, Other, "C-scan thickness"},
    {gdata_CScanStatistic, Other, "C-scan statistic"},
    {gdata_enumDataClass{16}, NativeOrder, nullptr},
    {gdata_CScanAngle, Shared | NativeOrder, "C-scan angle"},
    {gdata_BeamSimulation, Volume | Special | Shared, "beam simulation"},
    {gdata_AdvancedView, Special, "advanced view"},
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
bool IsAScan(gdata_enumDataClass dataClass) { return Means(dataClass, AScans); }
bool IsCScan(gdata_enumDataClass dataClass) { return gdata_HoldsOneValuePerCell(dataClass); }
bool IsVolume(gdata_enumDataClass dataClass) { return Means(dataClass, Volume); }
bool IsAnalog(gdata_enumDataClass dataClass) { return Means(dataClass, Analog); }
bool IsEddyCurrent(gdata_enumDataClass dataClass) { return Means(dataClass, EddyCurrent); }
bool IsSpecial(gdata_enumDataClass dataClass) { return Means(dataClass, Special); }
bool IsShared(gdata_enumDataClass dataClass) { return Means(dataClass, Shared); }
bool IsInNativeOrder(gdata_enumDataClass dataClass) { return Means(dataClass, NativeOrder); }
bool IsGathered(gdata_enumDataClass dataClass) {
  return !IsMaster(dataClass) && Means(dataClass, Gathered);
}

const char* ClassName(gdata_enumDataClass dataClass) {
  const Row* row = Find(dataClass);
  return row ? row->name : nullptr;
}

}  // namespace utdata
