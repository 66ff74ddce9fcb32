// The group descriptors and their families of operations, one family per group type.
//
// A descriptor is a plain record. Equality compares the fields that a file stores, bit for bit (so
// a NaN equals itself and -0 differs from 0); `group`, where a record was read from, is not
// compared. Texts are wide characters; lengths in metres, times in seconds, angles in degrees,
// frequencies in hertz, levels in percent of full scale, gains in decibel, speeds in metres per
// second, where a field does not say otherwise.
//
// Each family, documented on `gchan`:
//   gchan_Init(lock, unlock, alloc, free, error)
//     once per process; all null, else status_BadArgument (gdata_Init takes none)
//   gchan_Allocate(mode, name)
//     a new descriptor, owned by the caller, named `name` (may be null) where the record has a
//     name; null when there is no memory. `mode` has no effect.
//   gchan_Delete(descriptor, whole)
//     whole 1: deletes the descriptor; 0: empties its texts and arrays. Null is allowed.
//   gchan_ReadGroupInfo(group, descriptor)
//     overwrites the fields that the group holds, leaves the others, skips items it does not know,
//     and makes `group` the descriptor's own. An item of a wrong type: status_Damaged, and the
//     descriptor is left as it was.
//   gchan_WriteGroupInfo(group, base, descriptor)
//     into an uncommitted group; base null: every field; else the key fields and those that differ
//     from the base, so that reading the group over a copy of the base gives the descriptor
//   gchan_Duplicate(target, source)
//     makes target equal to source, `group` included (families that have it)
//   SCFile::file_Identity(descriptor)
//     its key fields
// None takes a lock; a descriptor is used by one thread at a time.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "export.h"
#include "kvtiff19_types.h"

/// Channel: one set of pulser, receiver and path settings.
struct CGChanTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t channelId = 0;      ///< from 0; key
  std::uint32_t firstProbeId = 0;   ///< transmitter; key
  std::uint32_t secondProbeId = 0;  ///< receiver, the transmitter's id in pulse-echo; key
  std::wstring name;
  float gain = 0;           ///< receiver gain, dB
  float referenceGain = 0;  ///< gain of the calibration, dB
  float rangeStart = 0;     ///< first digitised instant after the pulse, s
  float range = 0;          ///< digitised length, s
  float delay = 0;          ///< time in wedge and cable before the part is entered, s
  float soundSpeed = 0;     ///< of the wave mode in the part, m/s
  gdata_enumWaveMode waveMode = gdata_WaveLongitudinal;
  float refractedAngle = 0;       ///< in the part, degrees
  float skew = 0;                 ///< degrees
  float digitizingFrequency = 0;  ///< Hz
  float repetitionFrequency = 0;  ///< pulses per second, Hz
  float pulseWidth = 0;           ///< s
  float pulseVoltage = 0;         ///< V
  float filterLow = 0;            ///< band-pass corner, Hz
  float filterHigh = 0;           ///< band-pass corner, Hz
  gdata_enumRectif rectification = gdata_RectifNone;
  std::uint32_t averaging = 1;    ///< pulses averaged per A-scan
  std::uint32_t compression = 1;  ///< samples merged into one
  float smoothing = 0;            ///< of the rectified signal, Hz
  float reject = 0;               ///< percent
  float indexOffset = 0;          ///< probe index point along the column axis, m
  float scanOffset = 0;           ///< probe index point along the row axis, m
  float focalDepth = 0;           ///< m, 0 unfocused
  float apertureStart = 0;        ///< first active element, from 0
  float apertureSize = 0;         ///< active elements
  std::int32_t tofd = 0;          ///< 1: time-of-flight diffraction
  float probeSeparation = 0;      ///< between the index points of a probe pair, m
  std::int32_t dacEnabled = 0;    ///< 1: the DAC curve applies
  std::uint32_t dacId = 0;
  std::int32_t synchronised = 0;  ///< 1: the range follows the interface gate
  float synchroLevel = 0;         ///< percent
  std::uint32_t color = 0;        ///< 0xRRGGBB
  std::int32_t enabled = 1;
  std::wstring comment;
  float transferCorrection = 0;     ///< for the part's surface against the calibration block's, dB
  float attenuationCorrection = 0;  ///< for the part's material, dB/m of sound path
  utdata::StoredIds stored;
};

/// Sub-channel: one beam of a channel with several (a sector or an electronic scan).
struct CGSubchanTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t subChannelId = 0;  ///< key
  std::uint32_t channelId = 0;     ///< key
  std::wstring name;
  float refractedAngle = 0;        ///< degrees
  float skew = 0;                  ///< degrees
  float gainOffset = 0;            ///< added to the channel's gain, dB
  float delay = 0;                 ///< added to the channel's delay, s
  float rangeStart = 0;            ///< s
  float range = 0;                 ///< s
  std::uint32_t firstElement = 0;  ///< from 0
  std::uint32_t elementQuantity = 0;
  float focalDepth = 0;   ///< m
  float indexOffset = 0;  ///< exit point along the column axis, m
  float scanOffset = 0;   ///< exit point along the row axis, m
  std::int32_t enabled = 1;
  utdata::StoredIds stored;
};

/// Gate: the stretch of an A-scan that is watched, and what counts in it.
struct CGGateTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t gateId = 0;     ///< gate number plus multiples of 2000; key
  std::uint32_t channelId = 0;  ///< key
  std::wstring name;
  float start = 0;                  ///< s after its reference
  float width = 0;                  ///< s
  float positiveLevel = 0;          ///< percent
  float negativeLevel = 0;          ///< percent
  std::int32_t referenceGate = -1;  ///< gate id that the start is counted from, -1 none
  ggate_EnumGateRef reference = ggate_RefInitialPulse;
  ggate_EnumPeakSelection peakSelection = ggate_PeakMaximum;
  gdata_enumRectif polarity = gdata_RectifFull;  ///< half waves that count
  std::int32_t alarmEnabled = 0;
  std::uint32_t color = 0;  ///< 0xRRGGBB
  std::int32_t enabled = 1;
};

/// Patch: the grid of cells that one scan covers.
struct CGPatchTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t patchId = 0;  ///< key
  std::wstring name;
  std::int32_t firstColumn = 0;
  std::int32_t firstRow = 0;
  std::uint32_t columnQuantity = 0;
  std::uint32_t rowQuantity = 0;
  float columnResolution = 0;  ///< m or degrees per cell
  float rowResolution = 0;     ///< m or degrees per cell
  float columnOffset = 0;      ///< m or degrees
  float rowOffset = 0;         ///< m or degrees
  kvt_enumUnits columnUnits = kvt_UnitMetre;
  kvt_enumUnits rowUnits = kvt_UnitMetre;
  float rotation = 0;   ///< of the grid on the part, degrees
  float scanSpeed = 0;  ///< m/s
};

/// Probe: a transducer with its wedge.
struct CGProbeTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t probeId = 0;  ///< key
  std::wstring name;
  std::wstring model;
  std::wstring serialNumber;
  float frequency = 0;  ///< centre frequency, Hz
  float bandwidth = 0;  ///< at -6 dB, percent of the centre frequency
  std::uint32_t elementQuantity = 1;
  std::uint32_t elementRows = 1;
  float pitch = 0;            ///< between element centres, m
  float elementWidth = 0;     ///< m
  float elementLength = 0;    ///< elevation, or the crystal's second dimension, m
  float crystalDiameter = 0;  ///< of a round single crystal, m
  float angle = 0;            ///< nominal refracted angle, degrees
  float skew = 0;             ///< on the part, degrees
  float squint = 0;           ///< beam deviation, degrees
  float wedgeAngle = 0;       ///< degrees
  float wedgeSoundSpeed = 0;  ///< m/s
  float wedgeHeight = 0;      ///< of the first element's centre, m
  float wedgeDelay = 0;       ///< s
  float indexOffset = 0;      ///< of the exit point from the wedge front, m
  float positionX = 0;        ///< on the part, m
  float positionY = 0;        ///< on the part, m
  float radius = 0;           ///< curvature of the wedge's contact face, m, 0 flat
  gdata_enumWaveMode waveMode = gdata_WaveLongitudinal;
};

/// General information: who, what, when. One per file.
struct CGInfoTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::wstring title;
  std::wstring company;
  std::wstring site;
  std::wstring inspector;
  std::wstring procedure;
  std::wstring instrument;
  std::wstring instrumentSerialNumber;
  std::wstring software;
  std::wstring comment;
  std::int64_t acquisitionTime = 0;  ///< seconds since 1970-01-01 00:00 UTC, 0 unknown
  kvt_enumUnitSystems unitSystem = kvt_SystemMetric;
};

/// Specimen material.
struct CGSpecmatTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::wstring name;
  float longitudinalSpeed = 0;  ///< m/s
  float shearSpeed = 0;         ///< m/s
  float surfaceSpeed = 0;       ///< m/s
  float density = 0;            ///< kg/m3
  float attenuation = 0;        ///< dB/m
  float temperature = 0;        ///< degrees Celsius
};

/// Specimen dimensions.
struct CGSpecdimTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t shape = 0;    ///< 0 plate, 1 pipe, 2 bar, 3 sphere, 4 other
  float length = 0;           ///< m
  float width = 0;            ///< m
  float thickness = 0;        ///< m
  float outsideDiameter = 0;  ///< m
  float insideDiameter = 0;   ///< m
  float originX = 0;          ///< of the inspection's axes on the part, m
  float originY = 0;          ///< m
  kvt_enumUnitSystems unitSystem = kvt_SystemMetric;
};

/// Specimen information.
struct CGSpecinfTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::wstring name;
  std::wstring serialNumber;
  std::wstring drawing;
  std::wstring customer;
  std::wstring location;
  std::wstring surfaceCondition;
  std::wstring couplant;
  std::wstring comment;
  float temperature = 0;  ///< during the inspection, degrees Celsius
};

/// Weld: preparation and cap of a joint across the column axis.
struct CGWeldTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t weldId = 0;  ///< key
  std::wstring name;
  std::uint32_t preparation = 0;  ///< 0 I, 1 V, 2 X, 3 U, 4 J, 5 K
  std::wstring process;
  float centerPosition = 0;    ///< of the centre line along the column axis, m
  float bevelAngle = 0;        ///< from the vertical, one side, degrees
  float rootGap = 0;           ///< m
  float rootFace = 0;          ///< m
  float rootRadius = 0;        ///< m
  float capWidth = 0;          ///< m
  float capHeight = 0;         ///< m
  float rootWidth = 0;         ///< m
  float rootHeight = 0;        ///< m
  float heatAffectedZone = 0;  ///< width on either side, m
  float thickness = 0;         ///< m
  std::int32_t symmetric = 1;
};

/// Contour: a line on the part, as points in its own plane.
struct CGContourTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t kind = 0;  ///< 0 entry surface, 1 back wall, 2 weld preparation, 3 defect outline
  std::uint32_t surface = 0;                          ///< number of the surface it lies on
  std::uint32_t contourId = 0;                        ///< key
  kvt_enumUnits units = kvt_UnitMetre;                ///< of the points
  float originX = 0, originY = 0, originZ = 0;        ///< m
  float rotationX = 0, rotationY = 0, rotationZ = 0;  ///< degrees
  float columnResolution = 0, rowResolution = 0;      ///< m
  float columnStart = 0, columnEnd = 0;               ///< m
  float rowStart = 0, rowEnd = 0;                     ///< m
  float insideRadius = 0, outsideRadius = 0;          ///< m, 0 flat
  float thickness = 0;                                ///< m
  std::int32_t closed = 0;                            ///< 1: the last point joins the first
  std::uint32_t interpolation = 0;                    ///< 0 straight, 1 spline
  std::uint32_t color = 0;                            ///< 0xRRGGBB
  std::int32_t visible = 1;
  float smoothing = 0;          ///< m
  std::uint32_t channelId = 0;  ///< channel it was measured with; key
  std::wstring name;
  std::vector<std::array<double, 2>> points;  ///< (x, y)
};

/// Reference adjustment: a correction of axes against a known reflector.
struct CGRefadjTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t adjustmentId = 0;  ///< key
  std::wstring name;
  std::uint32_t channelId = 0;
  float columnOffset = 0;        ///< m or degrees
  float rowOffset = 0;           ///< m or degrees
  float sampleOffset = 0;        ///< s
  float gainOffset = 0;          ///< dB
  float referenceAmplitude = 0;  ///< percent
  float referencePath = 0;       ///< sound path of the reflector, m
  std::wstring reflector;
};

/// Mesh: a surface as vertices and triangles.
struct CGMeshTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t meshId = 0;
  std::wstring name;
  kvt_enumUnits units = kvt_UnitMetre;
  std::vector<std::array<double, 3>> vertices;          ///< (x, y, z), in `units`
  std::vector<std::array<double, 3>> normals;           ///< one per vertex, or none
  std::vector<std::array<std::uint32_t, 3>> triangles;  ///< vertex indices from 0
};

/// Specimen definition: which surfaces bound the part.
struct CGSpecdefTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::wstring name;
  std::uint32_t shape = 0;  ///< as in the specimen dimensions
  std::uint32_t entryMeshId = 0;
  std::uint32_t backWallMeshId = 0;
  std::uint32_t entryContourId = 0;
  std::uint32_t backWallContourId = 0;
  std::array<double, 16> placement =
      {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};  ///< part to inspection axes, row by row
};

/// DAC: distance-amplitude correction curve.
struct CGDacTypeDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t dacId = 0;  ///< key
  std::wstring name;
  std::uint32_t channelId = 0;
  std::uint32_t gateId = 0;
  std::uint32_t interpolation = 0;           ///< 0 straight in dB, 1 exponential
  std::int32_t timeCorrectedGain = 0;        ///< 1: the curve is applied to the receiver's gain
  float referenceGain = 0;                   ///< dB
  float referenceLevel = 0;                  ///< percent
  std::vector<std::array<float, 2>> points;  ///< (position along the path in s, level in percent)
};

/// Weld scan plan: how a weld is to be scanned.
struct CGWeldScanPlanDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t weldId = 0;  ///< first identifying field; key
  std::uint32_t side = 0;    ///< 0 both, 1 left, 2 right
  std::uint32_t planId = 0;  ///< second identifying field; key
  std::wstring name;
  float probeDistance = 0;  ///< of the probe's front from the weld centre, m
  float scanStart = 0;      ///< along the weld, m
  float scanEnd = 0;        ///< m
  float scanStep = 0;       ///< m
  float indexStart = 0;     ///< across the weld, m
  float indexEnd = 0;       ///< m
  float indexStep = 0;      ///< m
  float firstAngle = 0;     ///< degrees
  float lastAngle = 0;      ///< degrees
  float angleStep = 0;      ///< degrees
  std::vector<std::uint32_t> channelIds;
};

/// Weld fill: one pass of a weld.
struct CGWeldFillDescr {
  SCFile::GroupHandle group = nullptr;
  std::uint32_t weldId = 0;  ///< first identifying field; key
  std::uint32_t fillId = 0;  ///< second identifying field; key
  std::wstring name;
  std::uint32_t kind = 0;                      ///< 0 root, 1 hot pass, 2 fill, 3 cap
  float depth = 0;                             ///< of its lower edge from the surface, m
  float height = 0;                            ///< m
  float width = 0;                             ///< m
  float angle = 0;                             ///< of its flank from the vertical, degrees
  std::vector<std::array<double, 2>> outline;  ///< (across the weld, depth), m
};

#include "kvtiff19_data.h"

#define UTDATA_FAMILY(prefix, Descriptor)                                                \
  UTDATA_API int prefix##_Init(SCFile::LockCallback lock,                                \
                               SCFile::LockCallback unlock,                              \
                               SCFile::AllocCallback alloc,                              \
                               SCFile::FreeCallback free,                                \
                               SCFile::ErrorCallback error);                             \
  [[nodiscard]] UTDATA_API Descriptor* prefix##_Allocate(int mode, const wchar_t* name); \
  UTDATA_API void prefix##_Delete(Descriptor* descriptor, int whole);                    \
  UTDATA_API int prefix##_WriteGroupInfo(                                                \
      SCFile::GroupHandle group, const Descriptor* base, const Descriptor* descriptor);  \
  UTDATA_API bool operator==(const Descriptor& a, const Descriptor& b);                  \
  namespace SCFile {                                                                     \
  [[nodiscard]] UTDATA_API GroupIdentity file_Identity(const Descriptor& descriptor);    \
  }
#define UTDATA_FAMILY_READ(prefix, Descriptor) \
  UTDATA_API int prefix##_ReadGroupInfo(SCFile::GroupHandle group, Descriptor* descriptor);
#define UTDATA_FAMILY_DUPLICATE(prefix, Descriptor) \
  UTDATA_API int prefix##_Duplicate(Descriptor* target, const Descriptor* source);

// Families whose records are copied by the items of a file set.
#define UTDATA_ITEM_FAMILY(prefix, Descriptor) \
  UTDATA_FAMILY(prefix, Descriptor)            \
  UTDATA_FAMILY_READ(prefix, Descriptor) UTDATA_FAMILY_DUPLICATE(prefix, Descriptor)
UTDATA_ITEM_FAMILY(gchan, CGChanTypeDescr)
UTDATA_ITEM_FAMILY(gsubchan, CGSubchanTypeDescr)
UTDATA_ITEM_FAMILY(gpatch, CGPatchTypeDescr)
UTDATA_ITEM_FAMILY(gprobe, CGProbeTypeDescr)
UTDATA_ITEM_FAMILY(ginfo, CGInfoTypeDescr)
UTDATA_ITEM_FAMILY(gspecmat, CGSpecmatTypeDescr)
#undef UTDATA_ITEM_FAMILY

// Families without a duplicate operation.
#define UTDATA_PLAIN_FAMILY(prefix, Descriptor) \
  UTDATA_FAMILY(prefix, Descriptor) UTDATA_FAMILY_READ(prefix, Descriptor)
UTDATA_PLAIN_FAMILY(gspecdim, CGSpecdimTypeDescr)
UTDATA_PLAIN_FAMILY(gspecinf, CGSpecinfTypeDescr)
UTDATA_PLAIN_FAMILY(gweld, CGWeldTypeDescr)
UTDATA_PLAIN_FAMILY(grefadj, CGRefadjTypeDescr)
UTDATA_PLAIN_FAMILY(gmesh, CGMeshTypeDescr)
UTDATA_PLAIN_FAMILY(gspecdef, CGSpecdefTypeDescr)
UTDATA_PLAIN_FAMILY(gdac, CGDacTypeDescr)
UTDATA_PLAIN_FAMILY(gcontour, CGContourTypeDescr)
UTDATA_PLAIN_FAMILY(gweldsp, CGWeldScanPlanDescr)
UTDATA_PLAIN_FAMILY(gweldFill, CGWeldFillDescr)
#undef UTDATA_PLAIN_FAMILY

UTDATA_FAMILY(ggate, CGGateTypeDescr)
UTDATA_FAMILY_DUPLICATE(ggate, CGGateTypeDescr)
#undef UTDATA_FAMILY
#undef UTDATA_FAMILY_READ
#undef UTDATA_FAMILY_DUPLICATE
/// @param modifier false on load: fields that the group does not hold get their defaults; true when
///   a modifier is applied: they stay
UTDATA_API int ggate_ReadGroupInfo(SCFile::GroupHandle group,
                                   CGGateTypeDescr* descriptor,
                                   bool modifier);

/// Enumeration tables: made ready like a family, and not used by any group type. All null, else
/// status_BadArgument.
UTDATA_API int genumtable_Init(SCFile::LockCallback lock,
                               SCFile::LockCallback unlock,
                               SCFile::AllocCallback alloc,
                               SCFile::FreeCallback free,
                               SCFile::ErrorCallback error);

// Data groups: the samples are a block of the record's group.
UTDATA_API int gdata_Init();
[[nodiscard]] UTDATA_API CGDataTypeFDD* gdata_Allocate(int mode, const wchar_t* name);
/// Nulls the pointer. The sample block is never freed. whole 0: only empties the texts.
UTDATA_API void gdata_Delete(CGDataTypeFDD*& descriptor, int whole);
/// As for the other families. A group that holds samples sets the record's sample reference; the
/// data pointer stays as it is.
UTDATA_API int gdata_ReadGroupInfo(SCFile::GroupHandle group, CGDataTypeFDD* descriptor);
/// As for the other families, and writes the samples:
/// - with a data pointer the bytes that it leads to, unless the base has the same ones: its block
///   on disk holds them, by the checksums of its chunks, or it was never read from a file and has
///   the same pointer. Their size is the record's data size, else that of the view that starts
///   there, else the layout's. The all-ones pointer counts as none
/// - without one, and without a base, a copy of the block that the sample reference names
/// - else none
/// @param flag no effect
UTDATA_API int gdata_WriteGroupInfo(SCFile::GroupHandle group,
                                    const CGDataTypeFDD* base,
                                    const CGDataTypeFDD* descriptor,
                                    int flag);
UTDATA_API int gdata_Duplicate(CGDataTypeFDD* target, const CGDataTypeFDD* source);
UTDATA_API bool operator==(const CGDataTypeFDD& a, const CGDataTypeFDD& b);
namespace SCFile {
[[nodiscard]] UTDATA_API GroupIdentity file_Identity(const CGDataTypeFDD& descriptor);
}

/// The samples that a record's reference names, as a private copy-on-write view; valid until
/// SCFile::file_BlockUnmap or until their file is closed. status_NotFound when the record has none.
/// @param size bytes of the view
UTDATA_API int gdata_SamplesMap(const CGDataTypeFDD* descriptor, void** data, std::uint64_t* size);
/// The same bytes read and verified into memory that the caller frees with delete[].
/// status_NotFound when the record has none.
UTDATA_API int gdata_SamplesRead(const CGDataTypeFDD* descriptor,
                                 std::byte** data,
                                 std::uint64_t* size);
/// Whether a data pointer leads to samples: neither null nor all ones, which stands for samples
/// that are not here.
[[nodiscard]] inline bool gdata_IsTable(const void* samples) {
  return samples && reinterpret_cast<std::uintptr_t>(samples) != ~std::uintptr_t{0};
}
/// Bytes at the start of samples that are a header of older writers, which readers take for zeros:
/// 36 when the low halves of the first two 32-bit words are 0x3344 and 0x5553, else 0. The second
/// word is read only when the first is right.
/// @param size bytes of the samples; fewer than 36 have no header
[[nodiscard]] UTDATA_API std::uint64_t gdata_OldHeaderSize(const void* samples, std::uint64_t size);
