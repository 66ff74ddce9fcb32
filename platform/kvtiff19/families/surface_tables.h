// The field tables of contours and meshes.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGContourTypeDescr> {
  using Record = CGContourTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_FIELD(1, kind, "0 entry surface, 1 back wall, 2 weld preparation, 3 defect outline"),
      UTDATA_FIELD(2, surface, "number of the surface it lies on"),
      UTDATA_KEY(3, contourId, ""),
      UTDATA_FIELD(4, units, "0 none, 1 s, 2 m, 3 degrees, 4 %, 5 dB, 6 V (of the points)"),
      UTDATA_FIELD(5, originX, "m"),
      UTDATA_FIELD(6, originY, "m"),
      UTDATA_FIELD(7, originZ, "m"),
      UTDATA_FIELD(8, rotationX, "degrees"),
      UTDATA_FIELD(9, rotationY, "degrees"),
      UTDATA_FIELD(10, rotationZ, "degrees"),
      UTDATA_FIELD(11, columnResolution, "m"),
      UTDATA_FIELD(12, rowResolution, "m"),
      UTDATA_FIELD(13, columnStart, "m"),
      UTDATA_FIELD(14, columnEnd, "m"),
      UTDATA_FIELD(15, rowStart, "m"),
      UTDATA_FIELD(16, rowEnd, "m"),
      UTDATA_FIELD(17, insideRadius, "m, 0 flat"),
      UTDATA_FIELD(18, outsideRadius, "m, 0 flat"),
      UTDATA_FIELD(19, thickness, "m"),
      UTDATA_FIELD(20, closed, "1: the last point joins the first"),
      UTDATA_FIELD(21, interpolation, "0 straight, 1 spline"),
      UTDATA_FIELD(22, color, "0xRRGGBB"),
      UTDATA_FIELD(23, visible, ""),
      UTDATA_FIELD(24, smoothing, "m"),
      UTDATA_KEY(25, channelId, "channel it was measured with"),
      UTDATA_FIELD(26, name, ""),
      UTDATA_FIELD(27, points, "(x, y)")};
};

template <>
struct FieldTable<CGMeshTypeDescr> {
  using Record = CGMeshTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_FIELD(1, meshId, ""),
      UTDATA_FIELD(2, name, ""),
      UTDATA_FIELD(3, units, "0 none, 1 s, 2 m, 3 degrees, 4 %, 5 dB, 6 V"),
      UTDATA_FIELD(4, vertices, "(x, y, z), in `units`"),
      UTDATA_FIELD(5, normals, "one per vertex, or none"),
      UTDATA_FIELD(6, triangles, "vertex indices from 0")};
};

}  // namespace utdata::kvtiff19
