// The field tables of probes, patches and reference adjustments.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGProbeTypeDescr> {
  using Record = CGProbeTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{
        UTDATA_FIELD(1, probeId, Id("probe"), ""),
        UTDATA_FIELD(2, name, text, ""),
        UTDATA_FIELD(3, model, text, ""),
        UTDATA_FIELD(4, serialNumber, text, ""),
        UTDATA_FIELD(5, frequency, frequency, "centre frequency"),
        UTDATA_FIELD(6, bandwidth, level, "at -6 dB, of the centre frequency"),
        UTDATA_FIELD(7, elementQuantity, Whole(1, largestQuantity), ""),
        UTDATA_FIELD(8, elementRows, Whole(1, largestQuantity), ""),
        UTDATA_FIELD(9, pitch, length, "between element centres"),
        UTDATA_FIELD(10, elementWidth, length, ""),
        UTDATA_FIELD(11, elementLength, length, "elevation, or the crystal's second dimension"),
        UTDATA_FIELD(12, crystalDiameter, length, "of a round single crystal"),
        UTDATA_FIELD(13, angle, angle, "nominal refracted angle"),
        UTDATA_FIELD(14, skew, turn, "on the part"),
        UTDATA_FIELD(15, squint, angle, "beam deviation"),
        UTDATA_FIELD(16, wedgeAngle, angle, ""),
        UTDATA_FIELD(17, wedgeSoundSpeed, soundSpeed, ""),
        UTDATA_FIELD(18, wedgeHeight, length, "of the first element's centre"),
        UTDATA_FIELD(19, wedgeDelay, duration, ""),
        UTDATA_FIELD(20, indexOffset, position, "of the exit point from the wedge front"),
        UTDATA_FIELD(21, positionX, position, "on the part"),
        UTDATA_FIELD(22, positionY, position, "on the part"),
        UTDATA_FIELD(23, radius, position, "curvature of the wedge's contact face, 0: flat"),
        UTDATA_FIELD(24, waveMode, OneOf(choice::waveModes), "")};
  }();
};

template <>
struct FieldTable<CGPatchTypeDescr> {
  using Record = CGPatchTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, patchId, Id("patch"), ""),
                      UTDATA_FIELD(2, name, text, ""),
                      UTDATA_FIELD(3, firstColumn, Whole(-largestQuantity, largestQuantity), ""),
                      UTDATA_FIELD(4, firstRow, Whole(-largestQuantity, largestQuantity), ""),
                      UTDATA_FIELD(5, columnQuantity, quantity, ""),
                      UTDATA_FIELD(6, rowQuantity, quantity, ""),
                      UTDATA_FIELD(7, columnResolution, OnAxis("columnUnits", 1e-6), "per cell"),
                      UTDATA_FIELD(8, rowResolution, OnAxis("rowUnits", 1e-6), "per cell"),
                      UTDATA_FIELD(9, columnOffset, OnAxis("columnUnits", -farthest), ""),
                      UTDATA_FIELD(10, rowOffset, OnAxis("rowUnits", -farthest), ""),
                      UTDATA_FIELD(11, columnUnits, OneOf(choice::axisUnits), ""),
                      UTDATA_FIELD(12, rowUnits, OneOf(choice::axisUnits), ""),
                      UTDATA_FIELD(13, rotation, turn, "of the grid on the part"),
                      UTDATA_FIELD(14, scanSpeed, In(unit::scanSpeed, 0, 1e6), "")};
  }();
};

template <>
struct FieldTable<CGRefadjTypeDescr> {
  using Record = CGRefadjTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, adjustmentId, Id("adjustment"), ""),
                      UTDATA_FIELD(2, name, text, ""),
                      UTDATA_FIELD(3, channelId, reference, ""),
                      UTDATA_FIELD(4, columnOffset, number, "m or degrees"),
                      UTDATA_FIELD(5, rowOffset, number, "m or degrees"),
                      UTDATA_FIELD(6, sampleOffset, instant, ""),
                      UTDATA_FIELD(7, gainOffset, gain, ""),
                      UTDATA_FIELD(8, referenceAmplitude, level, ""),
                      UTDATA_FIELD(9, referencePath, length, "sound path of the reflector"),
                      UTDATA_FIELD(10, reflector, text, "")};
  }();
};

}  // namespace utdata::kvtiff19
