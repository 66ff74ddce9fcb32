// The field tables of welds, their scan plans and their passes.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGWeldTypeDescr> {
  using Record = CGWeldTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, weldId, ""),
      UTDATA_FIELD(2, name, ""),
      UTDATA_FIELD(3, preparation, "0 I, 1 V, 2 X, 3 U, 4 J, 5 K"),
      UTDATA_FIELD(4, process, ""),
      UTDATA_FIELD(5, centerPosition, "of the centre line along the column axis, m"),
      UTDATA_FIELD(6, bevelAngle, "from the vertical, one side, degrees"),
      UTDATA_FIELD(7, rootGap, "m"),
      UTDATA_FIELD(8, rootFace, "m"),
      UTDATA_FIELD(9, rootRadius, "m"),
      UTDATA_FIELD(10, capWidth, "m"),
      UTDATA_FIELD(11, capHeight, "m"),
      UTDATA_FIELD(12, rootWidth, "m"),
      UTDATA_FIELD(13, rootHeight, "m"),
      UTDATA_FIELD(14, heatAffectedZone, "width on either side, m"),
      UTDATA_FIELD(15, thickness, "m"),
      UTDATA_FIELD(16, symmetric, "")};
};

template <>
struct FieldTable<CGWeldScanPlanDescr> {
  using Record = CGWeldScanPlanDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, weldId, "first identifying field"),
      UTDATA_FIELD(2, side, "0 both, 1 left, 2 right"),
      UTDATA_KEY(3, planId, "second identifying field"),
      UTDATA_FIELD(4, name, ""),
      UTDATA_FIELD(5, probeDistance, "of the probe's front from the weld centre, m"),
      UTDATA_FIELD(6, scanStart, "along the weld, m"),
      UTDATA_FIELD(7, scanEnd, "m"),
      UTDATA_FIELD(8, scanStep, "m"),
      UTDATA_FIELD(9, indexStart, "across the weld, m"),
      UTDATA_FIELD(10, indexEnd, "m"),
      UTDATA_FIELD(11, indexStep, "m"),
      UTDATA_FIELD(12, firstAngle, "degrees"),
      UTDATA_FIELD(13, lastAngle, "degrees"),
      UTDATA_FIELD(14, angleStep, "degrees"),
      UTDATA_FIELD(15, channelIds, "")};
};

template <>
struct FieldTable<CGWeldFillDescr> {
  using Record = CGWeldFillDescr;
  static constexpr std::tuple fields = {
      UTDATA_KEY(1, weldId, "first identifying field"),
      UTDATA_KEY(2, fillId, "second identifying field"),
      UTDATA_FIELD(3, name, ""),
      UTDATA_FIELD(4, kind, "0 root, 1 hot pass, 2 fill, 3 cap"),
      UTDATA_FIELD(5, depth, "of its lower edge from the surface, m"),
      UTDATA_FIELD(6, height, "m"),
      UTDATA_FIELD(7, width, "m"),
      UTDATA_FIELD(8, angle, "of its flank from the vertical, degrees"),
      UTDATA_FIELD(9, outline, "(across the weld, depth), m")};
};

}  // namespace utdata::kvtiff19
