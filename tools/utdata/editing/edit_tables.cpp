// The tables of fields that can be edited. Bounds are those of a sensible inspection, wide enough
// for an odd one.
#include <array>

#include "editing/field_makers.h"

namespace utdata::program {
namespace {

constexpr double latestTime = 1e11;      // seconds since 1970
constexpr double largestQuantity = 1e6;  // of elements, averages, cells of one axis

constexpr std::array noYes = {"no", "yes"};
constexpr std::array waveModes = {"longitudinal", "shear", "surface"};
constexpr std::array rectifications = {"none", "positive", "negative", "full"};
constexpr std::array gateReferences = {"initial-pulse", "gate-start", "gate-peak", "gate-crossing"};
constexpr std::array peakSelections = {"maximum", "first", "last", "crossing"};
constexpr std::array axisUnits = {"none", "s", "m", "degrees", "percent", "dB", "V"};
constexpr std::array unitSystems = {"metric", "imperial"};

template <class>
struct Table;

template <>
struct Table<CGChanTypeDescr> {
  using Record = CGChanTypeDescr;
  static constexpr std::array fields = {
      UTDATA_EDIT(Text, name),
      UTDATA_EDIT(Quantity, gain, decibel, -200, 200),
      UTDATA_EDIT(Quantity, referenceGain, decibel, -200, 200),
      UTDATA_EDIT(Quantity, rangeStart, microsecond, -farthest, farthest),
      UTDATA_EDIT(Quantity, range, microsecond, 0, farthest),
      UTDATA_EDIT(Quantity, delay, microsecond, -farthest, farthest),
      UTDATA_EDIT(Quantity, soundSpeed, metrePerSecond, 1, 1e5),
      UTDATA_EDIT(Choice, waveMode, waveModes),
      UTDATA_EDIT(Quantity, refractedAngle, degree, -90, 90),
      UTDATA_EDIT(Quantity, skew, degree, -360, 360),
      UTDATA_EDIT(Quantity, digitizingFrequency, megahertz, 0, 1e5),
      UTDATA_EDIT(Quantity, repetitionFrequency, hertz, 0, 1e7),
      UTDATA_EDIT(Quantity, pulseWidth, microsecond, 0, 1000),
      UTDATA_EDIT(Quantity, pulseVoltage, volt, 0, 1e4),
      UTDATA_EDIT(Quantity, filterLow, megahertz, 0, 1e4),
      UTDATA_EDIT(Quantity, filterHigh, megahertz, 0, 1e4),
      UTDATA_EDIT(Choice, rectification, rectifications),
      UTDATA_EDIT(Whole, averaging, 1, largestQuantity),
      UTDATA_EDIT(Whole, compression, 1, largestQuantity),
      UTDATA_EDIT(Quantity, smoothing, megahertz, 0, 1e4),
      UTDATA_EDIT(Quantity, reject, percent, 0, 100),
      UTDATA_EDIT(Quantity, indexOffset, millimetre, -farthest, farthest),
      UTDATA_EDIT(Quantity, scanOffset, millimetre, -farthest, farthest),
      UTDATA_EDIT(Quantity, focalDepth, millimetre, 0, farthest),
      UTDATA_EDIT(Quantity, apertureStart, none, 0, largestQuantity),
      UTDATA_EDIT(Quantity, apertureSize, none, 0, largestQuantity),
      UTDATA_EDIT(Choice, tofd, noYes),
      UTDATA_EDIT(Quantity, probeSeparation, millimetre, 0, farthest),
      UTDATA_EDIT(Choice, dacEnabled, noYes),
      UTDATA_EDIT(Whole, dacId, 0, largestId),
      UTDATA_EDIT(Choice, synchronised, noYes),
      UTDATA_EDIT(Quantity, synchroLevel, percent, 0, largestLevel),
      UTDATA_EDIT(Color, color),
      UTDATA_EDIT(Choice, enabled, noYes),
      UTDATA_EDIT(Text, comment),
      UTDATA_EDIT(Quantity, transferCorrection, decibel, -200, 200),
      UTDATA_EDIT(Quantity, attenuationCorrection, decibelPerMetre, 0, 1e5)};
};

template <>
struct Table<CGSubchanTypeDescr> {
  using Record = CGSubchanTypeDescr;
  static constexpr std::array fields = {
      UTDATA_EDIT(Text, name),
      UTDATA_EDIT(Quantity, refractedAngle, degree, -90, 90),
      UTDATA_EDIT(Quantity, skew, degree, -360, 360),
      UTDATA_EDIT(Quantity, gainOffset, decibel, -200, 200),
      UTDATA_EDIT(Quantity, delay, microsecond, -farthest, farthest),
      UTDATA_EDIT(Quantity, rangeStart, microsecond, -farthest, farthest),
      UTDATA_EDIT(Quantity, range, microsecond, 0, farthest),
      UTDATA_EDIT(Whole, firstElement, 0, largestQuantity),
      UTDATA_EDIT(Whole, elementQuantity, 0, largestQuantity),
      UTDATA_EDIT(Quantity, focalDepth, millimetre, 0, farthest),
      UTDATA_EDIT(Quantity, indexOffset, millimetre, -farthest, farthest),
      UTDATA_EDIT(Quantity, scanOffset, millimetre, -farthest, farthest),
      UTDATA_EDIT(Choice, enabled, noYes)};
};

template <>
struct Table<CGGateTypeDescr> {
  using Record = CGGateTypeDescr;
  static constexpr std::array fields = {
      UTDATA_EDIT(Text, name),
      UTDATA_EDIT(Quantity, start, microsecond, -farthest, farthest),
      UTDATA_EDIT(Quantity, width, microsecond, 0, farthest),
      UTDATA_EDIT(Quantity, positiveLevel, percent, 0, largestLevel),
      UTDATA_EDIT(Quantity, negativeLevel, percent, 0, largestLevel),
      UTDATA_EDIT(Whole, referenceGate, -1, 0x7FFFFFFF),
      UTDATA_EDIT(Choice, reference, gateReferences),
      UTDATA_EDIT(Choice, peakSelection, peakSelections),
      UTDATA_EDIT(Choice, polarity, rectifications),
      UTDATA_EDIT(Choice, alarmEnabled, noYes),
      UTDATA_EDIT(Color, color),
      UTDATA_EDIT(Choice, enabled, noYes)};
};

template <>
struct Table<CGProbeTypeDescr> {
  using Record = CGProbeTypeDescr;
  static constexpr std::array fields = {
      UTDATA_EDIT(Text, name),
      UTDATA_EDIT(Text, model),
      UTDATA_EDIT(Text, serialNumber),
      UTDATA_EDIT(Quantity, frequency, megahertz, 0, 1e4),
      UTDATA_EDIT(Quantity, bandwidth, percent, 0, largestLevel),
      UTDATA_EDIT(Whole, elementQuantity, 1, largestQuantity),
      UTDATA_EDIT(Whole, elementRows, 1, largestQuantity),
      UTDATA_EDIT(Quantity, pitch, millimetre, 0, farthest),
      UTDATA_EDIT(Quantity, elementWidth, millimetre, 0, farthest),
      UTDATA_EDIT(Quantity, elementLength, millimetre, 0, farthest),
      UTDATA_EDIT(Quantity, crystalDiameter, millimetre, 0, farthest),
      UTDATA_EDIT(Quantity, angle, degree, -90, 90),
      UTDATA_EDIT(Quantity, skew, degree, -360, 360),
      UTDATA_EDIT(Quantity, squint, degree, -90, 90),
      UTDATA_EDIT(Quantity, wedgeAngle, degree, -90, 90),
      UTDATA_EDIT(Quantity, wedgeSoundSpeed, metrePerSecond, 0, 1e5),
      UTDATA_EDIT(Quantity, wedgeHeight, millimetre, 0, farthest),
      UTDATA_EDIT(Quantity, wedgeDelay, microsecond, 0, farthest),
      UTDATA_EDIT(Quantity, indexOffset, millimetre, -farthest, farthest),
      UTDATA_EDIT(Quantity, positionX, millimetre, -farthest, farthest),
      UTDATA_EDIT(Quantity, positionY, millimetre, -farthest, farthest),
      UTDATA_EDIT(Quantity, radius, millimetre, -farthest, farthest),
      UTDATA_EDIT(Choice, waveMode, waveModes)};
};

template <>
struct Table<CGPatchTypeDescr> {
  using Record = CGPatchTypeDescr;
  static constexpr std::array fields = {
      UTDATA_EDIT(Text, name),
      UTDATA_EDIT(Whole, firstColumn, -largestQuantity, largestQuantity),
      UTDATA_EDIT(Whole, firstRow, -largestQuantity, largestQuantity),
      UTDATA_EDIT(Whole, columnQuantity, 0, largestQuantity),
      UTDATA_EDIT(Whole, rowQuantity, 0, largestQuantity),
      UTDATA_EDIT(OnAxis, columnResolution, &Record::columnUnits, 1e-6, farthest),
      UTDATA_EDIT(OnAxis, rowResolution, &Record::rowUnits, 1e-6, farthest),
      UTDATA_EDIT(OnAxis, columnOffset, &Record::columnUnits, -farthest, farthest),
      UTDATA_EDIT(OnAxis, rowOffset, &Record::rowUnits, -farthest, farthest),
      UTDATA_EDIT(Choice, columnUnits, axisUnits),
      UTDATA_EDIT(Choice, rowUnits, axisUnits),
      UTDATA_EDIT(Quantity, rotation, degree, -360, 360),
      UTDATA_EDIT(Quantity, scanSpeed, millimetrePerSecond, 0, 1e6)};
};

template <>
struct Table<CGInfoTypeDescr> {
  using Record = CGInfoTypeDescr;
  static constexpr std::array fields = {UTDATA_EDIT(Text, title),
                                        UTDATA_EDIT(Text, company),
                                        UTDATA_EDIT(Text, site),
                                        UTDATA_EDIT(Text, inspector),
                                        UTDATA_EDIT(Text, procedure),
                                        UTDATA_EDIT(Text, instrument),
                                        UTDATA_EDIT(Text, instrumentSerialNumber),
                                        UTDATA_EDIT(Text, software),
                                        UTDATA_EDIT(Text, comment),
                                        UTDATA_EDIT(Whole, acquisitionTime, 0, latestTime, second),
                                        UTDATA_EDIT(Choice, unitSystem, unitSystems)};
};

template <>
struct Table<CGSpecmatTypeDescr> {
  using Record = CGSpecmatTypeDescr;
  static constexpr std::array fields = {
      UTDATA_EDIT(Text, name),
      UTDATA_EDIT(Quantity, longitudinalSpeed, metrePerSecond, 0, 1e5),
      UTDATA_EDIT(Quantity, shearSpeed, metrePerSecond, 0, 1e5),
      UTDATA_EDIT(Quantity, surfaceSpeed, metrePerSecond, 0, 1e5),
      UTDATA_EDIT(Quantity, density, kilogramPerCubicMetre, 0, 1e5),
      UTDATA_EDIT(Quantity, attenuation, decibelPerMetre, 0, 1e5),
      UTDATA_EDIT(Quantity, temperature, celsius, -273, 2000)};
};

}  // namespace

std::span<const RecordField<CGChanTypeDescr>> EditFields(const CGChanTypeDescr*) {
  return Table<CGChanTypeDescr>::fields;
}
std::span<const RecordField<CGSubchanTypeDescr>> EditFields(const CGSubchanTypeDescr*) {
  return Table<CGSubchanTypeDescr>::fields;
}
std::span<const RecordField<CGGateTypeDescr>> EditFields(const CGGateTypeDescr*) {
  return Table<CGGateTypeDescr>::fields;
}
std::span<const RecordField<CGProbeTypeDescr>> EditFields(const CGProbeTypeDescr*) {
  return Table<CGProbeTypeDescr>::fields;
}
std::span<const RecordField<CGPatchTypeDescr>> EditFields(const CGPatchTypeDescr*) {
  return Table<CGPatchTypeDescr>::fields;
}
std::span<const RecordField<CGInfoTypeDescr>> EditFields(const CGInfoTypeDescr*) {
  return Table<CGInfoTypeDescr>::fields;
}
std::span<const RecordField<CGSpecmatTypeDescr>> EditFields(const CGSpecmatTypeDescr*) {
  return Table<CGSpecmatTypeDescr>::fields;
}

}  // namespace utdata::program
