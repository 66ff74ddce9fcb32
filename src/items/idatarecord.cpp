#include "src/items/idatarecord.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "interfaces/framework.h"

namespace utdata {

namespace {

constexpr float steelLongitudinal = 5890.0f;  ///< sound speed, m/s
constexpr float defaultSampleStep = 2e-8f;    ///< s
constexpr float defaultScanStep = 0.001f;     ///< m or degrees
constexpr float largestProbeAngle =
    89.999f;  ///< degrees; the path to a depth grows without bound towards 90
constexpr float defaultInspectionRadius = 0.0573f;  ///< m
constexpr float defaultProbeSeparation = 0.001f;    ///< m

/// What stands in place of a data maximum that is no number: the largest value of the sample type.
float LargestSample(kvt_enumDataType type) {
  switch (type) {
    case kvt_Int8:
      return 127;
    case kvt_UInt8:
      return 255;
    case kvt_Int16:
      return 32767;
    case kvt_UInt16:
      return 65535;
  }
  return 100;
}

void MakeFinite(float& value, float substitute) {
  if (!std::isfinite(value)) value = substitute;
}

void MakeStep(float& step, float substitute) {
  if (!std::isfinite(step) || step == 0) step = substitute;
}

void MakePositive(float& value, float substitute) {
  if (!std::isfinite(value) || value <= 0) value = substitute;
}

/// A quantity with the top bit set was negative where it was written.
void MakeQuantity(std::uint32_t& quantity) {
  if (quantity == 0 ||
      quantity > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max()))
    quantity = 1;
}

void MakeLayoutUsable(CGDataTypeFDD& record) {
  for (std::uint32_t* quantity :
       {&record.columnQuantity, &record.rowQuantity, &record.sampleQuantity})
    MakeQuantity(*quantity);
  record.sampleSize = std::max(record.sampleSize, SampleSizeOf(record.GetDataType()));
  const std::uint64_t cells = std::uint64_t{record.columnQuantity} * record.rowQuantity;
  const std::uint64_t cell = std::max<std::uint64_t>(
      record.cellSize, std::uint64_t{record.sampleSize} * record.sampleQuantity);
  if (cell > std::numeric_limits<std::int64_t>::max() / cells)
    record.columnQuantity = record.rowQuantity = record.sampleQuantity = 1;
}

void MakeScalesUsable(CGDataTypeFDD& record) {
  MakeStep(record.columnResolution, defaultScanStep);
  MakeStep(record.rowResolution, defaultScanStep);
  MakeStep(record.sampleResolution, defaultSampleStep);
  record.sampleResolution =
      std::fabs(record.sampleResolution);  // a scan may run backwards, time does not
  for (float* value : {&record.columnOffset,
                       &record.rowOffset,
                       &record.sampleOffset,
                       &record.dataMinimum,
                       &record.dataOffset,
                       &record.probeSkew,
                       &record.probeThird,
                       &record.probeFourth,
                       &record.tofdValue,
                       &record.partThickness})
    MakeFinite(*value, 0);
  if (std::isnan(record.probeAngle)) record.probeAngle = 0;
  MakeFinite(record.dataMaximum, LargestSample(record.GetDataType()));
  if (record.dataMaximum < record.dataMinimum) std::swap(record.dataMinimum, record.dataMaximum);
  MakeFinite(record.dataResolution, HoldsPositions(record.dataClass) ? 0.0f : 1.0f);
  MakePositive(record.inspectionRadius, defaultInspectionRadius);
  MakePositive(record.probeSeparation, defaultProbeSeparation);
}

/// An axis of one row or column has no step of its own, and its offset needs a unit.
void GiveSingleAxisStep(std::uint32_t quantity, float& resolution, kvt_enumUnits& units) {
  if (quantity != 1) return;
  resolution = defaultScanStep;
  if (units != kvt_UnitMetre && units != kvt_UnitDegree) units = kvt_UnitMetre;
}

/// Samples written around half their range become signed ones around 0. The bits in the table stay:
/// the flag says how to read them.
void TakeForSigned(CGDataTypeFDD& record, kvt_enumDataType type, float zero) {
  record.SetDataType(type);
  record.dataMinimum -= zero;
  record.dataMaximum -= zero;
  record.fileFormat =
      static_cast<gdata_bitmapFileOptions>(record.fileFormat | gdata_OptionOffsetBinary);
}

/// Unrectified amplitudes swing around 0, which only signed types can hold.
void NormaliseUnrectified(CGDataTypeFDD& record) {
  const bool isOffset = record.dataMinimum >= 0;
  switch (record.GetDataType()) {
    case kvt_UInt8:
      if (isOffset) TakeForSigned(record, kvt_Int8, 128);
      return;
    case kvt_UInt16:
      if (isOffset && ClassOfElements(record.dataClass) != gdata_AnalogScaled)
        TakeForSigned(record, kvt_Int16, 32768);
      return;
    case kvt_Int8:
    case kvt_Int16:
      return;
  }
  UTDATA_ASSERT(SampleSizeOf(record.GetDataType()) != 0);
}

/// Rectified amplitudes are never negative: a signed type whose range says so is an unsigned one.
void NormaliseRectified(CGDataTypeFDD& record) {
  const float extent = record.dataMaximum - record.dataMinimum;
  const bool isUnsigned = record.dataMinimum >= 0;
  switch (record.GetDataType()) {
    case kvt_Int8:
      if (isUnsigned && extent <= 256) record.SetDataType(kvt_UInt8);
      return;
    case kvt_Int16:
      if (isUnsigned && extent <= 65535) record.SetDataType(kvt_UInt16);
      return;
    case kvt_UInt8:
    case kvt_UInt16:
      return;
  }
  UTDATA_ASSERT(SampleSizeOf(record.GetDataType()) != 0);
}

void NormaliseSampleType(CGDataTypeFDD& record) {
  const std::uint32_t c = ClassOfElements(record.dataClass);
  if (c == gdata_CScanAngle) return;
  if (record.GetDataRectification() != gdata_RectifNone)
    NormaliseRectified(record);
  else if (c != gdata_CScanPosition)
    NormaliseUnrectified(record);
}

}  // namespace

std::uint32_t SampleSizeOf(kvt_enumDataType type) {
  if (type == kvt_Int8 || type == kvt_UInt8) return 1;
  return type == kvt_Int16 || type == kvt_UInt16 ? 2 : 0;
}

void NormaliseDataRecord(CGDataTypeFDD& record) {
  MakeLayoutUsable(record);
  MakeScalesUsable(record);
  const bool hasSoundSpeed = std::isfinite(record.soundSpeed) && record.soundSpeed > 0;
  UTDATA_ASSERT(hasSoundSpeed);
  if (!hasSoundSpeed) record.soundSpeed = steelLongitudinal;
  if (HoldsPositions(record.dataClass) && record.dataResolution <= 0)
    record.dataResolution = defaultSampleStep;
  if (record.probeAngle >= 90.0f) {
    DebugTrace(L"Invalid angle: >= 90!\n");
    record.probeAngle = largestProbeAngle;
  }
  MakeFinite(record.probeAngle, 0);
  GiveSingleAxisStep(record.rowQuantity, record.rowResolution, record.rowUnits);
  GiveSingleAxisStep(record.columnQuantity, record.columnResolution, record.columnUnits);
  NormaliseSampleType(record);
}

}  // namespace utdata
