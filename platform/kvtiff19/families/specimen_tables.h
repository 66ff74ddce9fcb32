// The field tables of the inspection and its specimen.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGInfoTypeDescr> {
  using Record = CGInfoTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_FIELD(1, title, ""),
      UTDATA_FIELD(2, company, ""),
      UTDATA_FIELD(3, site, ""),
      UTDATA_FIELD(4, inspector, ""),
      UTDATA_FIELD(5, procedure, ""),
      UTDATA_FIELD(6, instrument, ""),
      UTDATA_FIELD(7, instrumentSerialNumber, ""),
      UTDATA_FIELD(8, software, ""),
      UTDATA_FIELD(9, comment, ""),
      UTDATA_FIELD(10, acquisitionTime, "seconds since 1970-01-01 00:00 UTC, 0 unknown"),
      UTDATA_FIELD(11, unitSystem, "0 metric, 1 imperial")};
};

template <>
struct FieldTable<CGSpecdimTypeDescr> {
  using Record = CGSpecdimTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_FIELD(1, shape, "0 plate, 1 pipe, 2 bar, 3 sphere, 4 other"),
      UTDATA_FIELD(2, length, "m"),
      UTDATA_FIELD(3, width, "m"),
      UTDATA_FIELD(4, thickness, "m"),
      UTDATA_FIELD(5, outsideDiameter, "m"),
      UTDATA_FIELD(6, insideDiameter, "m"),
      UTDATA_FIELD(7, originX, "of the inspection's axes on the part, m"),
      UTDATA_FIELD(8, originY, "m"),
      UTDATA_FIELD(9, unitSystem, "0 metric, 1 imperial")};
};

template <>
struct FieldTable<CGSpecinfTypeDescr> {
  using Record = CGSpecinfTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_FIELD(1, name, ""),
      UTDATA_FIELD(2, serialNumber, ""),
      UTDATA_FIELD(3, drawing, ""),
      UTDATA_FIELD(4, customer, ""),
      UTDATA_FIELD(5, location, ""),
      UTDATA_FIELD(6, surfaceCondition, ""),
      UTDATA_FIELD(7, couplant, ""),
      UTDATA_FIELD(8, comment, ""),
      UTDATA_FIELD(9, temperature, "during the inspection, degrees Celsius")};
};

template <>
struct FieldTable<CGSpecmatTypeDescr> {
  using Record = CGSpecmatTypeDescr;
  static constexpr std::tuple fields = {UTDATA_FIELD(1, name, ""),
                                        UTDATA_FIELD(2, longitudinalSpeed, "m/s"),
                                        UTDATA_FIELD(3, shearSpeed, "m/s"),
                                        UTDATA_FIELD(4, surfaceSpeed, "m/s"),
                                        UTDATA_FIELD(5, density, "kg/m3"),
                                        UTDATA_FIELD(6, attenuation, "dB/m"),
                                        UTDATA_FIELD(7, temperature, "degrees Celsius")};
};

template <>
struct FieldTable<CGSpecdefTypeDescr> {
  using Record = CGSpecdefTypeDescr;
  static constexpr std::tuple fields = {
      UTDATA_FIELD(1, name, ""),
      UTDATA_FIELD(2, shape, "as in the specimen dimensions"),
      UTDATA_FIELD(3, entryMeshId, ""),
      UTDATA_FIELD(4, backWallMeshId, ""),
      UTDATA_FIELD(5, entryContourId, ""),
      UTDATA_FIELD(6, backWallContourId, ""),
      UTDATA_FIELD(7, placement, "part to inspection axes, row by row")};
};

}  // namespace utdata::kvtiff19
