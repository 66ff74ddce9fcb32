// The field tables of channels, sub-channels, gates and DAC curves.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGChanTypeDescr> {
  using Record = CGChanTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{
        UTDATA_FIELD(1, channelId, Id("channel"), "from 0"),
        UTDATA_FIELD(2, firstProbeId, As(FieldRole::Match, reference), "transmitter"),
        UTDATA_FIELD(3,
                     secondProbeId,
                     As(FieldRole::Match, reference),
                     "receiver, the transmitter's id in pulse-echo"),
        UTDATA_FIELD(4, name, text, ""),
        UTDATA_FIELD(5, gain, gain, "receiver gain"),
        UTDATA_FIELD(6, referenceGain, gain, "gain of the calibration"),
        UTDATA_FIELD(7, rangeStart, instant, "first digitised instant after the pulse"),
        UTDATA_FIELD(8, range, duration, "digitised length"),
        UTDATA_FIELD(9, delay, instant, "time in wedge and cable before the part is entered"),
        UTDATA_FIELD(10, soundSpeed, In(unit::soundSpeed, 1, 1e5), "of the wave mode in the part"),
        UTDATA_FIELD(11, waveMode, OneOf(choice::waveModes), ""),
        UTDATA_FIELD(12, refractedAngle, angle, "in the part"),
        UTDATA_FIELD(13, skew, turn, ""),
        UTDATA_FIELD(14, digitizingFrequency, In(unit::frequency, 0, 1e5), ""),
        UTDATA_FIELD(15, repetitionFrequency, In(unit::repetition, 0, 1e7), "pulses per second"),
        UTDATA_FIELD(16, pulseWidth, In(unit::time, 0, 1000), ""),
        UTDATA_FIELD(17, pulseVoltage, In(unit::voltage, 0, 1e4), ""),
        UTDATA_FIELD(18, filterLow, frequency, "band-pass corner"),
        UTDATA_FIELD(19, filterHigh, frequency, "band-pass corner"),
        UTDATA_FIELD(20, rectification, OneOf(choice::rectifications), ""),
        UTDATA_FIELD(21, averaging, Whole(1, largestQuantity), "pulses averaged per A-scan"),
        UTDATA_FIELD(22, compression, Whole(1, largestQuantity), "samples merged into one"),
        UTDATA_FIELD(23, smoothing, frequency, "of the rectified signal"),
        UTDATA_FIELD(24, reject, In(unit::percent, 0, 100), ""),
        UTDATA_FIELD(25, indexOffset, position, "probe index point along the column axis"),
        UTDATA_FIELD(26, scanOffset, position, "probe index point along the row axis"),
        UTDATA_FIELD(27, focalDepth, length, "0: unfocused"),
        UTDATA_FIELD(
            28, apertureStart, In(unit::none, 0, largestQuantity), "first active element, from 0"),
        UTDATA_FIELD(29, apertureSize, In(unit::none, 0, largestQuantity), "active elements"),
        UTDATA_FIELD(30, tofd, yesNo, "time-of-flight diffraction"),
        UTDATA_FIELD(31, probeSeparation, length, "between the index points of a probe pair"),
        UTDATA_FIELD(32, dacEnabled, yesNo, "the DAC curve applies"),
        UTDATA_FIELD(33, dacId, reference, ""),
        UTDATA_FIELD(34, synchronised, yesNo, "the range follows the interface gate"),
        UTDATA_FIELD(35, synchroLevel, level, ""),
        UTDATA_FIELD(36, color, color, "0xRRGGBB"),
        UTDATA_FIELD(37, enabled, yesNo, ""),
        UTDATA_FIELD(38, comment, text, ""),
        UTDATA_FIELD(
            39, transferCorrection, gain, "for the part's surface against the calibration block's"),
        UTDATA_FIELD(40,
                     attenuationCorrection,
                     attenuation,
                     "for the part's material, along the sound path")};
  }();
};

template <>
struct FieldTable<CGSubchanTypeDescr> {
  using Record = CGSubchanTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, subChannelId, Id("sub_channel"), ""),
                      UTDATA_FIELD(2, channelId, Id("channel"), ""),
                      UTDATA_FIELD(3, name, text, ""),
                      UTDATA_FIELD(4, refractedAngle, angle, ""),
                      UTDATA_FIELD(5, skew, turn, ""),
                      UTDATA_FIELD(6, gainOffset, gain, "added to the channel's gain"),
                      UTDATA_FIELD(7, delay, instant, "added to the channel's delay"),
                      UTDATA_FIELD(8, rangeStart, instant, ""),
                      UTDATA_FIELD(9, range, duration, ""),
                      UTDATA_FIELD(10, firstElement, quantity, "from 0"),
                      UTDATA_FIELD(11, elementQuantity, quantity, ""),
                      UTDATA_FIELD(12, focalDepth, length, ""),
                      UTDATA_FIELD(13, indexOffset, position, "exit point along the column axis"),
                      UTDATA_FIELD(14, scanOffset, position, "exit point along the row axis"),
                      UTDATA_FIELD(15, enabled, yesNo, "")};
  }();
};

template <>
struct FieldTable<CGGateTypeDescr> {
  using Record = CGGateTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{
        UTDATA_FIELD(1, gateId, Id("gate"), "gate number plus multiples of 2000"),
        UTDATA_FIELD(2, channelId, Id("channel"), ""),
        UTDATA_FIELD(3, name, text, ""),
        UTDATA_FIELD(4, start, instant, "after its reference"),
        UTDATA_FIELD(5, width, duration, ""),
        UTDATA_FIELD(6, positiveLevel, level, ""),
        UTDATA_FIELD(7, negativeLevel, level, ""),
        UTDATA_FIELD(8,
                     referenceGate,
                     Whole(-1, 0x7FFFFFFF),
                     "gate id that the start is counted from, -1 none"),
        UTDATA_FIELD(9,
                     reference,
                     OneOf(choice::gateReferences),
                     "start, peak and crossing are those of the reference gate"),
        UTDATA_FIELD(10, peakSelection, OneOf(choice::peakSelections), "crossing: of the level"),
        UTDATA_FIELD(11, polarity, OneOf(choice::rectifications), "half waves that count"),
        UTDATA_FIELD(12, alarmEnabled, yesNo, ""),
        UTDATA_FIELD(13, color, color, "0xRRGGBB"),
        UTDATA_FIELD(14, enabled, yesNo, "")};
  }();
};

template <>
struct FieldTable<CGDacTypeDescr> {
  using Record = CGDacTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{
        UTDATA_FIELD(1, dacId, Id("dac"), ""),
        UTDATA_FIELD(2, name, text, ""),
        UTDATA_FIELD(3, channelId, reference, ""),
        UTDATA_FIELD(4, gateId, reference, ""),
        UTDATA_FIELD(5, interpolation, OneOf(choice::dacInterpolations), ""),
        UTDATA_FIELD(6, timeCorrectedGain, yesNo, "the curve is applied to the receiver's gain"),
        UTDATA_FIELD(7, referenceGain, gain, ""),
        UTDATA_FIELD(8, referenceLevel, level, ""),
        UTDATA_FIELD(9, points, List(), "(position along the path in s, level in percent)")};
  }();
};

}  // namespace utdata::kvtiff19
