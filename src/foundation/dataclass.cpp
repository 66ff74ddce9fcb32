// What a data class means.
#include "src/foundation/dataclass.h"

#include <algorithm>
#include <iterator>

#include "interfaces/kvtiff19_catalogue.h"

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
};

constexpr Row rows[] = {
    {gdata_AScan, AScans | Amplitudes | Volume | Gathered},
    {gdata_CScanAmplitude, Amplitudes | Gathered | NativeOrder},
    {gdata_CScanPosition, Positions | Gathered | NativeOrder},
    {gdata_EddyCurrentX, EddyCurrent | Special | NativeOrder},
    {gdata_EddyCurrentY, EddyCurrent | NativeOrder},
    {gdata_Analog, Analog | Special | NativeOrder},
    {gdata_AnalogScaled, Analog | Special | NativeOrder},
    {gdata_AnalogCounter, Analog | Special | NativeOrder},
    {gdata_AScanMerged, AScans | Amplitudes | Volume | Gathered},
    {gdata_AScanProcessed, AScans | Amplitudes | Gathered},
    {gdata_CScanPositionFirst, Positions | NativeOrder},
    {gdata_CScanPositionLast, Positions | NativeOrder},
    {gdata_CScanThickness, Other},
    {gdata_CScanStatistic, Other},
    {gdata_enumDataClass{16}, NativeOrder},
    {gdata_CScanAngle, Shared | NativeOrder},
    {gdata_BeamSimulation, Volume | Special | Shared},
    {gdata_AdvancedView, Special},
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

std::string_view ClassName(gdata_enumDataClass dataClass) {
  static const SCFile::FieldInfo& field =
      *SCFile::file_GroupTypeOf<CGDataTypeFDD>().Find("dataClass");
  for (const SCFile::FieldChoice& choice : field.choices)
    if (choice.value == ClassOfElements(dataClass)) return choice.name;
  return {};
}

}  // namespace utdata
