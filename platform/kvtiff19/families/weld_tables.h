// The field tables of welds, their scan plans and their passes.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGWeldTypeDescr> {
  using Record = CGWeldTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{
        UTDATA_FIELD(1, weldId, Id("weld"), ""),
        UTDATA_FIELD(2, name, text, ""),
        UTDATA_FIELD(3, preparation, OneOf(choice::preparations), ""),
        UTDATA_FIELD(4, process, text, ""),
        UTDATA_FIELD(5, centerPosition, position, "of the centre line along the column axis"),
        UTDATA_FIELD(6, bevelAngle, angle, "from the vertical, one side"),
        UTDATA_FIELD(7, rootGap, length, ""),
        UTDATA_FIELD(8, rootFace, length, ""),
        UTDATA_FIELD(9, rootRadius, length, ""),
        UTDATA_FIELD(10, capWidth, length, ""),
        UTDATA_FIELD(11, capHeight, length, ""),
        UTDATA_FIELD(12, rootWidth, length, ""),
        UTDATA_FIELD(13, rootHeight, length, ""),
        UTDATA_FIELD(14, heatAffectedZone, length, "width on either side"),
        UTDATA_FIELD(15, thickness, length, ""),
        UTDATA_FIELD(16, symmetric, yesNo, "")};
  }();
};

template <>
struct FieldTable<CGWeldScanPlanDescr> {
  using Record = CGWeldScanPlanDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{
        UTDATA_FIELD(1, weldId, Id("weld"), "first identifying field"),
        UTDATA_FIELD(2, side, OneOf(choice::sides), ""),
        UTDATA_FIELD(3, planId, Id("plan"), "second identifying field"),
        UTDATA_FIELD(4, name, text, ""),
        UTDATA_FIELD(5, probeDistance, position, "of the probe's front from the weld centre"),
        UTDATA_FIELD(6, scanStart, position, "along the weld"),
        UTDATA_FIELD(7, scanEnd, position, "along the weld"),
        UTDATA_FIELD(8, scanStep, length, ""),
        UTDATA_FIELD(9, indexStart, position, "across the weld"),
        UTDATA_FIELD(10, indexEnd, position, "across the weld"),
        UTDATA_FIELD(11, indexStep, length, ""),
        UTDATA_FIELD(12, firstAngle, angle, ""),
        UTDATA_FIELD(13, lastAngle, angle, ""),
        UTDATA_FIELD(14, angleStep, angle, ""),
        UTDATA_FIELD(15, channelIds, List(), "")};
  }();
};

template <>
struct FieldTable<CGWeldFillDescr> {
  using Record = CGWeldFillDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, weldId, Id("weld"), "first identifying field"),
                      UTDATA_FIELD(2, fillId, Id("fill"), "second identifying field"),
                      UTDATA_FIELD(3, name, text, ""),
                      UTDATA_FIELD(4, kind, OneOf(choice::fillKinds), ""),
                      UTDATA_FIELD(5, depth, position, "of its lower edge from the surface"),
                      UTDATA_FIELD(6, height, length, ""),
                      UTDATA_FIELD(7, width, length, ""),
                      UTDATA_FIELD(8, angle, angle, "of its flank from the vertical"),
                      UTDATA_FIELD(9, outline, List(unit::length), "(across the weld, depth)")};
  }();
};

}  // namespace utdata::kvtiff19
