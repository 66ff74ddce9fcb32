// The field tables of channels, sub-channels, gates and DAC curves.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGChanTypeDescr> {
  using Record = CGChanTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, channelId, "from 0"),
      UTDATA_KEY(2, firstProbeId, "transmitter"),
      UTDATA_KEY(3, secondProbeId, "receiver, the transmitter's id in pulse-echo"),
      UTDATA_FIELD(4, name, ""),
      UTDATA_FIELD(5, gain, "receiver gain, dB"),
      UTDATA_FIELD(6, referenceGain, "gain of the calibration, dB"),
      UTDATA_FIELD(7, rangeStart, "first digitised instant after the pulse, s"),
      UTDATA_FIELD(8, range, "digitised length, s"),
      UTDATA_FIELD(9, delay, "time in wedge and cable before the part is entered, s"),
      UTDATA_FIELD(10, soundSpeed, "of the wave mode in the part, m/s"),
      UTDATA_FIELD(11, waveMode, "0 longitudinal, 1 shear, 2 surface"),
      UTDATA_FIELD(12, refractedAngle, "in the part, degrees"),
      UTDATA_FIELD(13, skew, "degrees"),
      UTDATA_FIELD(14, digitizingFrequency, "Hz"),
      UTDATA_FIELD(15, repetitionFrequency, "pulses per second, Hz"),
      UTDATA_FIELD(16, pulseWidth, "s"),
      UTDATA_FIELD(17, pulseVoltage, "V"),
      UTDATA_FIELD(18, filterLow, "band-pass corner, Hz"),
      UTDATA_FIELD(19, filterHigh, "band-pass corner, Hz"),
      UTDATA_FIELD(20, rectification, "0 none, 1 positive, 2 negative, 3 full wave"),
      UTDATA_FIELD(21, averaging, "pulses averaged per A-scan"),
      UTDATA_FIELD(22, compression, "samples merged into one"),
      UTDATA_FIELD(23, smoothing, "of the rectified signal, Hz"),
      UTDATA_FIELD(24, reject, "percent"),
      UTDATA_FIELD(25, indexOffset, "probe index point along the column axis, m"),
      UTDATA_FIELD(26, scanOffset, "probe index point along the row axis, m"),
      UTDATA_FIELD(27, focalDepth, "m, 0 unfocused"),
      UTDATA_FIELD(28, apertureStart, "first active element, from 0"),
      UTDATA_FIELD(29, apertureSize, "active elements"),
      UTDATA_FIELD(30, tofd, "1: time-of-flight diffraction"),
      UTDATA_FIELD(31, probeSeparation, "between the index points of a probe pair, m"),
      UTDATA_FIELD(32, dacEnabled, "1: the DAC curve applies"),
      UTDATA_FIELD(33, dacId, ""),
      UTDATA_FIELD(34, synchronised, "1: the range follows the interface gate"),
      UTDATA_FIELD(35, synchroLevel, "percent"),
      UTDATA_FIELD(36, color, "0xRRGGBB"),
      UTDATA_FIELD(37, enabled, ""),
      UTDATA_FIELD(38, comment, ""),
      UTDATA_FIELD(39,
                   transferCorrection,
                   "for the part's surface against the calibration block's, dB"),
      UTDATA_FIELD(40, attenuationCorrection, "for the part's material, dB/m of sound path")};
};

template <>
struct FieldTable<CGSubchanTypeDescr> {
  using Record = CGSubchanTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, subChannelId, ""),
      UTDATA_KEY(2, channelId, ""),
      UTDATA_FIELD(3, name, ""),
      UTDATA_FIELD(4, refractedAngle, "degrees"),
      UTDATA_FIELD(5, skew, "degrees"),
      UTDATA_FIELD(6, gainOffset, "added to the channel's gain, dB"),
      UTDATA_FIELD(7, delay, "added to the channel's delay, s"),
      UTDATA_FIELD(8, rangeStart, "s"),
      UTDATA_FIELD(9, range, "s"),
      UTDATA_FIELD(10, firstElement, "from 0"),
      UTDATA_FIELD(11, elementQuantity, ""),
      UTDATA_FIELD(12, focalDepth, "m"),
      UTDATA_FIELD(13, indexOffset, "exit point along the column axis, m"),
      UTDATA_FIELD(14, scanOffset, "exit point along the row axis, m"),
      UTDATA_FIELD(15, enabled, "")};
};

template <>
struct FieldTable<CGGateTypeDescr> {
  using Record = CGGateTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, gateId, "gate number plus multiples of 2000"),
      UTDATA_KEY(2, channelId, ""),
      UTDATA_FIELD(3, name, ""),
      UTDATA_FIELD(4, start, "s after its reference"),
      UTDATA_FIELD(5, width, "s"),
      UTDATA_FIELD(6, positiveLevel, "percent"),
      UTDATA_FIELD(7, negativeLevel, "percent"),
      UTDATA_FIELD(8, referenceGate, "gate id that the start is counted from, -1 none"),
      UTDATA_FIELD(9,
                   reference,
                   "0 initial pulse, 1 start, 2 peak, 3 crossing of the reference gate"),
      UTDATA_FIELD(10, peakSelection, "0 maximum, 1 first, 2 last, 3 crossing of the level"),
      UTDATA_FIELD(11, polarity, "half waves that count: 0 none, 1 positive, 2 negative, 3 both"),
      UTDATA_FIELD(12, alarmEnabled, ""),
      UTDATA_FIELD(13, color, "0xRRGGBB"),
      UTDATA_FIELD(14, enabled, "")};
};

template <>
struct FieldTable<CGDacTypeDescr> {
  using Record = CGDacTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, dacId, ""),
      UTDATA_FIELD(2, name, ""),
      UTDATA_FIELD(3, channelId, ""),
      UTDATA_FIELD(4, gateId, ""),
      UTDATA_FIELD(5, interpolation, "0 straight in dB, 1 exponential"),
      UTDATA_FIELD(6, timeCorrectedGain, "1: the curve is applied to the receiver's gain"),
      UTDATA_FIELD(7, referenceGain, "dB"),
      UTDATA_FIELD(8, referenceLevel, "percent"),
      UTDATA_FIELD(9, points, "(position along the path in s, level in percent)")};
};

}  // namespace utdata::kvtiff19
