// The field tables of probes, patches and reference adjustments.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGProbeTypeDescr> {
  using Record = CGProbeTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, probeId, ""),
      UTDATA_FIELD(2, name, ""),
      UTDATA_FIELD(3, model, ""),
      UTDATA_FIELD(4, serialNumber, ""),
      UTDATA_FIELD(5, frequency, "centre frequency, Hz"),
      UTDATA_FIELD(6, bandwidth, "at -6 dB, percent of the centre frequency"),
      UTDATA_FIELD(7, elementQuantity, ""),
      UTDATA_FIELD(8, elementRows, ""),
      UTDATA_FIELD(9, pitch, "between element centres, m"),
      UTDATA_FIELD(10, elementWidth, "m"),
      UTDATA_FIELD(11, elementLength, "elevation, or the crystal's second dimension, m"),
      UTDATA_FIELD(12, crystalDiameter, "of a round single crystal, m"),
      UTDATA_FIELD(13, angle, "nominal refracted angle, degrees"),
      UTDATA_FIELD(14, skew, "on the part, degrees"),
      UTDATA_FIELD(15, squint, "beam deviation, degrees"),
      UTDATA_FIELD(16, wedgeAngle, "degrees"),
      UTDATA_FIELD(17, wedgeSoundSpeed, "m/s"),
      UTDATA_FIELD(18, wedgeHeight, "of the first element's centre, m"),
      UTDATA_FIELD(19, wedgeDelay, "s"),
      UTDATA_FIELD(20, indexOffset, "of the exit point from the wedge front, m"),
      UTDATA_FIELD(21, positionX, "on the part, m"),
      UTDATA_FIELD(22, positionY, "on the part, m"),
      UTDATA_FIELD(23, radius, "curvature of the wedge's contact face, m, 0 flat"),
      UTDATA_FIELD(24, waveMode, "0 longitudinal, 1 shear, 2 surface")};
};

template <>
struct FieldTable<CGPatchTypeDescr> {
  using Record = CGPatchTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, patchId, ""),
      UTDATA_FIELD(2, name, ""),
      UTDATA_FIELD(3, firstColumn, ""),
      UTDATA_FIELD(4, firstRow, ""),
      UTDATA_FIELD(5, columnQuantity, ""),
      UTDATA_FIELD(6, rowQuantity, ""),
      UTDATA_FIELD(7, columnResolution, "m or degrees per cell"),
      UTDATA_FIELD(8, rowResolution, "m or degrees per cell"),
      UTDATA_FIELD(9, columnOffset, "m or degrees"),
      UTDATA_FIELD(10, rowOffset, "m or degrees"),
      UTDATA_FIELD(11, columnUnits, "0 none, 1 s, 2 m, 3 degrees, 4 %, 5 dB, 6 V"),
      UTDATA_FIELD(12, rowUnits, "0 none, 1 s, 2 m, 3 degrees, 4 %, 5 dB, 6 V"),
      UTDATA_FIELD(13, rotation, "of the grid on the part, degrees"),
      UTDATA_FIELD(14, scanSpeed, "m/s")};
};

template <>
struct FieldTable<CGRefadjTypeDescr> {
  using Record = CGRefadjTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, adjustmentId, ""),
      UTDATA_FIELD(2, name, ""),
      UTDATA_FIELD(3, channelId, ""),
      UTDATA_FIELD(4, columnOffset, "m or degrees"),
      UTDATA_FIELD(5, rowOffset, "m or degrees"),
      UTDATA_FIELD(6, sampleOffset, "s"),
      UTDATA_FIELD(7, gainOffset, "dB"),
      UTDATA_FIELD(8, referenceAmplitude, "percent"),
      UTDATA_FIELD(9, referencePath, "sound path of the reflector, m"),
      UTDATA_FIELD(10, reflector, "")};
};

}  // namespace utdata::kvtiff19
