// The field tables of the inspection and its specimen.
#pragma once

#include <cstddef>

#include "platform/kvtiff19/families/field_table.h"

namespace utdata::kvtiff19 {

template <>
struct FieldTable<CGInfoTypeDescr> {
  using Record = CGInfoTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, title, text, ""),
                      UTDATA_FIELD(2, company, text, ""),
                      UTDATA_FIELD(3, site, text, ""),
                      UTDATA_FIELD(4, inspector, text, ""),
                      UTDATA_FIELD(5, procedure, text, ""),
                      UTDATA_FIELD(6, instrument, text, ""),
                      UTDATA_FIELD(7, instrumentSerialNumber, text, ""),
                      UTDATA_FIELD(8, software, text, ""),
                      UTDATA_FIELD(9, comment, text, ""),
                      UTDATA_FIELD(10,
                                   acquisitionTime,
                                   Whole(0, 1e11, unit::date),
                                   "since 1970-01-01 00:00 UTC, 0: unknown"),
                      UTDATA_FIELD(11, unitSystem, OneOf(choice::unitSystems), "")};
  }();
};

template <>
struct FieldTable<CGSpecdimTypeDescr> {
  using Record = CGSpecdimTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, shape, OneOf(choice::shapes), ""),
                      UTDATA_FIELD(2, length, length, ""),
                      UTDATA_FIELD(3, width, length, ""),
                      UTDATA_FIELD(4, thickness, length, ""),
                      UTDATA_FIELD(5, outsideDiameter, length, ""),
                      UTDATA_FIELD(6, insideDiameter, length, ""),
                      UTDATA_FIELD(7, originX, position, "of the inspection's axes on the part"),
                      UTDATA_FIELD(8, originY, position, "of the inspection's axes on the part"),
                      UTDATA_FIELD(9, unitSystem, OneOf(choice::unitSystems), "")};
  }();
};

template <>
struct FieldTable<CGSpecinfTypeDescr> {
  using Record = CGSpecinfTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, name, text, ""),
                      UTDATA_FIELD(2, serialNumber, text, ""),
                      UTDATA_FIELD(3, drawing, text, ""),
                      UTDATA_FIELD(4, customer, text, ""),
                      UTDATA_FIELD(5, location, text, ""),
                      UTDATA_FIELD(6, surfaceCondition, text, ""),
                      UTDATA_FIELD(7, couplant, text, ""),
                      UTDATA_FIELD(8, comment, text, ""),
                      UTDATA_FIELD(9, temperature, temperature, "during the inspection")};
  }();
};

template <>
struct FieldTable<CGSpecmatTypeDescr> {
  using Record = CGSpecmatTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, name, text, ""),
                      UTDATA_FIELD(2, longitudinalSpeed, soundSpeed, ""),
                      UTDATA_FIELD(3, shearSpeed, soundSpeed, ""),
                      UTDATA_FIELD(4, surfaceSpeed, soundSpeed, ""),
                      UTDATA_FIELD(5, density, In(unit::density, 0, 1e5), ""),
                      UTDATA_FIELD(6, attenuation, attenuation, ""),
                      UTDATA_FIELD(7, temperature, temperature, "")};
  }();
};

template <>
struct FieldTable<CGSpecdefTypeDescr> {
  using Record = CGSpecdefTypeDescr;
  static constexpr auto fields = [] {
    using namespace form;
    return std::tuple{UTDATA_FIELD(1, name, text, ""),
                      UTDATA_FIELD(2, shape, OneOf(choice::shapes), ""),
                      UTDATA_FIELD(3, entryMeshId, reference, ""),
                      UTDATA_FIELD(4, backWallMeshId, reference, ""),
                      UTDATA_FIELD(5, entryContourId, reference, ""),
                      UTDATA_FIELD(6, backWallContourId, reference, ""),
                      UTDATA_FIELD(7, placement, List(), "part to inspection axes, row by row")};
  }();
};

}  // namespace utdata::kvtiff19
