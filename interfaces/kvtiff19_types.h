// What the file functions and the group descriptors share: handles, callbacks, and the enumerations
// of the inspection file. The enumerations are 32-bit; a file may hold values that are not named
// here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace SCFile {

/// A file or a group. Handles of groups live until their file is closed; nobody deletes them.
struct Node;
using FileHandle = Node*;
using GroupHandle = Node*;

using LockCallback = void (*)();
using AllocCallback = void* (*)(std::size_t bytes);
using FreeCallback = void (*)(void* memory);
using ErrorCallback = void (*)(int status);
using ProgressCallback = void (*)(std::uint64_t done, std::uint64_t total);

/// Which group of its type a descriptor is; a modification has that of the group it modifies.
struct GroupIdentity {
  using Ids = std::array<std::uint32_t, 5>;

  Ids ids = {};            ///< places that a type does not use are 0
  std::uint32_t kind = 0;  ///< distinguishes groups of equal ids, unless it is 0 in one of them
  friend bool operator==(const GroupIdentity&, const GroupIdentity&) = default;
};

}  // namespace SCFile

namespace utdata {

/// The ids of a loaded channel, sub-channel or data group as they are in its file; those in memory
/// may differ. CFCont fills it on loading and keeps it true; copies of a record keep it; no file
/// holds it.
struct StoredIds {
  static constexpr std::uint32_t none = 0xFFFFFFFF;

  std::uint32_t subChannelId = none;  ///< in the file; none: not read from one
  std::uint32_t number = none;        ///< the id that numbering gave instead; none: not numbered
  std::uint32_t fixedNumber = none;   ///< the number that the file itself states; of a channel 0
  std::uint32_t bookmark = 0;         ///< of a data group, in the file
  bool isNamed = false;               ///< of a data group: for numbering it has a sub-channel name
};

}  // namespace utdata

/// Class of a data group. Bit 15 marks a multi-channel master, which gathers the per-sub-channel
/// groups of one channel.
enum gdata_enumDataClass : std::uint32_t {
  gdata_AScan = 1,           ///< A-scans
  gdata_CScanAmplitude = 2,  ///< one amplitude per cell
  gdata_CScanPosition = 3,   ///< one position along the ultrasonic path per cell
  gdata_EddyCurrentX = 5,
  gdata_EddyCurrentY = 6,
  gdata_Analog = 7,
  gdata_AnalogScaled = 8,
  gdata_AnalogCounter = 9,
  gdata_AScanMerged = 10,
  gdata_AScanProcessed = 11,
  gdata_CScanPositionFirst = 12,
  gdata_CScanPositionLast = 13,
  gdata_CScanThickness = 14,
  gdata_CScanStatistic = 15,
  gdata_CScanAngle = 17,
  gdata_BeamSimulation = 2000,
  gdata_AdvancedView = 2001,
  gdata_MultiChannelMaster = 0x8000  ///< added to one of the above
};

/// Whether each cell of a class holds one value, whatever a record says of samples: C-scans do, and
/// the masters that gather them.
[[nodiscard]] constexpr bool gdata_HoldsOneValuePerCell(gdata_enumDataClass dataClass) {
  switch (dataClass & ~std::uint32_t{gdata_MultiChannelMaster}) {
    case gdata_CScanAmplitude:
    case gdata_CScanPosition:
    case gdata_CScanPositionFirst:
    case gdata_CScanPositionLast:
    case gdata_CScanThickness:
    case gdata_CScanStatistic:
    case gdata_CScanAngle:
      return true;
    default:
      return false;
  }
}

/// What kind of view a data group is listed under. 0: not assigned yet.
enum eDataBookmarkType : std::uint32_t {
  bookmark_None = 0,
  bookmark_MultiChannel = 1,
  bookmark_Single = 2,
  bookmark_Tofd = 3,
  bookmark_Coupling = 10,
  bookmark_MultiChannelTofd = 17
};

/// Axes of a data group (0 to 3) and of the volume (0 to 5).
enum kvt_enumAxis : std::uint32_t {
  kvt_AxisColumn = 0,     ///< first scan axis
  kvt_AxisRow = 1,        ///< second scan axis
  kvt_AxisSample = 2,     ///< along the ultrasonic path
  kvt_AxisAmplitude = 3,  ///< the data values
  kvt_AxisFifth = 4,
  kvt_AxisSixth = 5
};

/// Sample types.
enum kvt_enumDataType : std::uint32_t {
  kvt_Int8 = 2,
  kvt_UInt8 = 3,
  kvt_Int16 = 4,
  kvt_UInt16 = 5
};

/// Base unit of the values on an axis.
enum kvt_enumUnits : std::uint32_t {
  kvt_UnitNone = 0,
  kvt_UnitSecond = 1,
  kvt_UnitMetre = 2,
  kvt_UnitDegree = 3,
  kvt_UnitPercent = 4,
  kvt_UnitDecibel = 5,
  kvt_UnitVolt = 6
};

/// How a sample block is laid out.
enum kvt_enumStorMode : std::uint32_t {
  kvt_StorCells =
      0,  ///< cells in row-major order (row outer, column inner), each one vector of samples
  kvt_StorIndexed = 1  ///< one 32-bit offset per cell, then the vectors
};

enum kvt_enumUnitSystems : std::uint32_t { kvt_SystemMetric = 0, kvt_SystemImperial = 1 };

enum gdata_enumRectif : std::uint32_t {
  gdata_RectifNone = 0,
  gdata_RectifPositive = 1,
  gdata_RectifNegative = 2,
  gdata_RectifFull = 3
};

enum gdata_enumDataScale : std::uint32_t { gdata_ScaleLinear = 0, gdata_ScaleLogarithmic = 1 };

enum gdata_enumInspGeometry : std::uint32_t {
  gdata_GeometryFlat = 0,
  gdata_GeometryAxial = 1,
  gdata_GeometryCircumferential = 2
};

/// Option bits of a data group's samples.
enum gdata_bitmapFileOptions : std::uint32_t {
  gdata_OptionNone = 0,
  gdata_OptionOffsetBinary = 0x1,  ///< samples re-typed from offset binary
  gdata_OptionCompressed = 0x100   ///< the low four bits of 16-bit samples carry no amplitude
};

enum gdata_enumWaveMode : std::uint32_t {
  gdata_WaveLongitudinal = 0,
  gdata_WaveShear = 1,
  gdata_WaveSurface = 2
};

/// What a gate's start is counted from.
enum ggate_EnumGateRef : std::uint32_t {
  ggate_RefInitialPulse = 0,
  ggate_RefGateStart = 1,  ///< the start of the reference gate
  ggate_RefGatePeak = 2,   ///< the peak found in the reference gate
  ggate_RefGateCrossing = 3
};

/// Which peak inside a gate counts.
enum ggate_EnumPeakSelection : std::uint32_t {
  ggate_PeakMaximum = 0,
  ggate_PeakFirst = 1,
  ggate_PeakLast = 2,
  ggate_PeakCrossing = 3  ///< the first crossing of the level
};
