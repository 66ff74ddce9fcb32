// The field tables of contours and meshes.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGContourTypeDescr> {
  using Record = CGContourTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, kind, OneOf(choice::contourKinds), ""),
                      UTDATA_FIELD(2, surface, reference, "number of the surface it lies on"),
                      UTDATA_FIELD(3, contourId, Id("contour"), ""),
                      UTDATA_FIELD(4, units, OneOf(choice::axisUnits), "of the points"),
                      UTDATA_FIELD(5, originX, position, ""),
                      UTDATA_FIELD(6, originY, position, ""),
                      UTDATA_FIELD(7, originZ, position, ""),
                      UTDATA_FIELD(8, rotationX, turn, ""),
                      UTDATA_FIELD(9, rotationY, turn, ""),
                      UTDATA_FIELD(10, rotationZ, turn, ""),
                      UTDATA_FIELD(11, columnResolution, length, ""),
                      UTDATA_FIELD(12, rowResolution, length, ""),
                      UTDATA_FIELD(13, columnStart, position, ""),
                      UTDATA_FIELD(14, columnEnd, position, ""),
                      UTDATA_FIELD(15, rowStart, position, ""),
                      UTDATA_FIELD(16, rowEnd, position, ""),
                      UTDATA_FIELD(17, insideRadius, length, "0: flat"),
                      UTDATA_FIELD(18, outsideRadius, length, "0: flat"),
                      UTDATA_FIELD(19, thickness, length, ""),
                      UTDATA_FIELD(20, closed, yesNo, "the last point joins the first"),
                      UTDATA_FIELD(21, interpolation, OneOf(choice::contourInterpolations), ""),
                      UTDATA_FIELD(22, color, color, "0xRRGGBB"),
                      UTDATA_FIELD(23, visible, yesNo, ""),
                      UTDATA_FIELD(24, smoothing, length, ""),
                      UTDATA_FIELD(25, channelId, Id("channel"), "channel it was measured with"),
                      UTDATA_FIELD(26, name, text, ""),
                      UTDATA_FIELD(27, points, List(), "(x, y)")};
  }();
};

template <>
struct FieldTable<CGMeshTypeDescr> {
  using Record = CGMeshTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, meshId, Id("mesh"), ""),
                      UTDATA_FIELD(2, name, text, ""),
                      UTDATA_FIELD(3, units, OneOf(choice::axisUnits), ""),
                      UTDATA_FIELD(4, vertices, List(), "(x, y, z), in `units`"),
                      UTDATA_FIELD(5, normals, List(), "one per vertex, or none"),
                      UTDATA_FIELD(6, triangles, List(), "vertex indices from 0")};
  }();
};

}  // namespace utdata::kvtiff19
