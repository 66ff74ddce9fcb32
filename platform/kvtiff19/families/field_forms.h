// What the values of fields are, for the rows of the field tables: kinds, units, bounds and names
// of choices. Bounds are those of a sensible inspection, wide enough for an odd one.
#pragma once

#include <array>

#include "interfaces/kvtiff19_catalogue.h"

namespace utdata::kvtiff19 {

// Stored in base units, shown in those of the trade.
namespace unit {
using SCFile::FieldUnit;
inline constexpr FieldUnit none = {};
inline constexpr FieldUnit length = {"m", "mm", 1e-3};
inline constexpr FieldUnit time = {"s", "µs", 1e-6};
inline constexpr FieldUnit date = {"s", "s"};
inline constexpr FieldUnit angle = {"degrees", "°"};
inline constexpr FieldUnit percent = {"percent", "%"};
inline constexpr FieldUnit decibel = {"dB", "dB"};
inline constexpr FieldUnit attenuation = {"dB/m", "dB/m"};
inline constexpr FieldUnit soundSpeed = {"m/s", "m/s"};
inline constexpr FieldUnit scanSpeed = {"m/s", "mm/s", 1e-3};
inline constexpr FieldUnit frequency = {"Hz", "MHz", 1e6};
inline constexpr FieldUnit repetition = {"Hz", "Hz"};
inline constexpr FieldUnit voltage = {"V", "V"};
inline constexpr FieldUnit density = {"kg/m3", "kg/m³"};
inline constexpr FieldUnit celsius = {"degrees Celsius", "°C"};
}  // namespace unit

/// Names of the values 0, 1, 2 and so on.
template <class... Name>
constexpr auto Named(Name... name) {
  std::uint32_t value = 0;
  return std::array{SCFile::FieldChoice{value++, name}...};
}

namespace choice {
inline constexpr auto noYes = Named("no", "yes");
inline constexpr auto waveModes = Named("longitudinal", "shear", "surface");
inline constexpr auto rectifications = Named("none", "positive", "negative", "full");
inline constexpr auto gateReferences =
    Named("initial-pulse", "gate-start", "gate-peak", "gate-crossing");
inline constexpr auto peakSelections = Named("maximum", "first", "last", "crossing");
inline constexpr auto axisUnits = Named("none", "s", "m", "degrees", "percent", "dB", "V");
inline constexpr auto unitSystems = Named("metric", "imperial");
inline constexpr auto geometries = Named("flat", "axial", "circumferential");
inline constexpr auto dataScales = Named("linear", "logarithmic");
inline constexpr auto storageModes = Named("cells", "indexed");
inline constexpr auto shapes = Named("plate", "pipe", "bar", "sphere", "other");
inline constexpr auto preparations = Named("I", "V", "X", "U", "J", "K");
inline constexpr auto sides = Named("both", "left", "right");
inline constexpr auto fillKinds = Named("root", "hot-pass", "fill", "cap");
inline constexpr auto contourKinds =
    Named("entry-surface", "back-wall", "weld-preparation", "defect-outline");
inline constexpr auto contourInterpolations = Named("straight", "spline");
inline constexpr auto dacInterpolations = Named("straight-in-dB", "exponential");
inline constexpr std::array<SCFile::FieldChoice, 4> sampleTypes = {
    {{kvt_Int8, "i8"}, {kvt_UInt8, "u8"}, {kvt_Int16, "i16"}, {kvt_UInt16, "u16"}}};
inline constexpr std::array<SCFile::FieldChoice, 6> bookmarkTypes = {
    {{bookmark_None, "none"},
     {bookmark_MultiChannel, "multi-channel"},
     {bookmark_Single, "single"},
     {bookmark_Tofd, "TOFD"},
     {bookmark_Coupling, "coupling"},
     {bookmark_MultiChannelTofd, "multi-channel TOFD"}}};
inline constexpr std::array<SCFile::FieldChoice, 17> dataClasses = {
    {{gdata_AScan, "A-scan"},
     {gdata_CScanAmplitude, "C-scan amplitude"},
     {gdata_CScanPosition, "C-scan position"},
     {gdata_EddyCurrentX, "eddy current X"},
     {gdata_EddyCurrentY, "eddy current Y"},
     {gdata_Analog, "analog"},
     {gdata_AnalogScaled, "analog scaled"},
     {gdata_AnalogCounter, "analog counter"},
     {gdata_AScanMerged, "A-scan merged"},
     {gdata_AScanProcessed, "A-scan processed"},
     {gdata_CScanPositionFirst, "C-scan first position"},
     {gdata_CScanPositionLast, "C-scan last position"},
     {gdata_CScanThickness, "C-scan thickness"},
     {gdata_CScanStatistic, "C-scan statistic"},
     {gdata_CScanAngle, "C-scan angle"},
     {gdata_BeamSimulation, "beam simulation"},
     {gdata_AdvancedView, "advanced view"}}};
}  // namespace choice

namespace form {

using SCFile::FieldForm;
using SCFile::FieldKind;
using SCFile::FieldRole;

inline constexpr double farthest = 1e6;           // mm, µs
inline constexpr double largestId = 0xFFFFFFFEU;  // all ones is the wildcard
inline constexpr double largestQuantity = 1e6;    // of elements, averages, cells of one axis

constexpr FieldForm In(const SCFile::FieldUnit& unit, double minimum, double maximum) {
  return {.kind = FieldKind::Quantity, .unit = unit, .minimum = minimum, .maximum = maximum};
}

/// A quantity in the unit that another field of the group says.
constexpr FieldForm OnAxis(std::string_view unitOf, double minimum, double maximum = farthest) {
  return {.kind = FieldKind::Quantity, .unitOf = unitOf, .minimum = minimum, .maximum = maximum};
}

constexpr FieldForm Whole(double minimum,
                          double maximum,
                          const SCFile::FieldUnit& unit = unit::none) {
  return {.kind = FieldKind::Whole, .unit = unit, .minimum = minimum, .maximum = maximum};
}

constexpr FieldForm OneOf(std::span<const SCFile::FieldChoice> choices) {
  return {.kind = FieldKind::Choice, .choices = choices};
}

/// Numbers or tuples of numbers, one after the other.
constexpr FieldForm List(const SCFile::FieldUnit& unit = unit::none) {
  return {.kind = FieldKind::Numbers, .unit = unit};
}

constexpr FieldForm As(FieldRole role, FieldForm form) {
  form.role = role;
  return form;
}
constexpr FieldForm Fixed(const FieldForm& form) { return As(FieldRole::Fixed, form); }

inline constexpr FieldForm reference = Whole(0, largestId);  // the id of another group
inline constexpr FieldForm quantity = Whole(0, largestQuantity);
/// 0xRRGGBB.
inline constexpr FieldForm color = {.kind = FieldKind::Color, .maximum = 0xFFFFFF};
inline constexpr FieldForm number = In(unit::none, -farthest, farthest);
inline constexpr FieldForm samples = {.kind = FieldKind::Block, .role = FieldRole::Fixed};
inline constexpr FieldForm text = {.kind = FieldKind::Text};
inline constexpr FieldForm yesNo = OneOf(choice::noYes);

inline constexpr FieldForm length = In(unit::length, 0, farthest);
inline constexpr FieldForm position = In(unit::length, -farthest, farthest);
inline constexpr FieldForm duration = In(unit::time, 0, farthest);
inline constexpr FieldForm instant = In(unit::time, -farthest, farthest);
inline constexpr FieldForm angle = In(unit::angle, -90, 90);
inline constexpr FieldForm turn = In(unit::angle, -360, 360);
inline constexpr FieldForm level = In(unit::percent, 0, 1000);
inline constexpr FieldForm gain = In(unit::decibel, -200, 200);
inline constexpr FieldForm attenuation = In(unit::attenuation, 0, 1e5);
inline constexpr FieldForm soundSpeed = In(unit::soundSpeed, 0, 1e5);
inline constexpr FieldForm frequency = In(unit::frequency, 0, 1e4);
inline constexpr FieldForm temperature = In(unit::celsius, -273, 2000);

/// An id of the group. @param idName what people call it
constexpr FieldForm Id(std::string_view idName, FieldForm form = reference) {
  form.idName = idName;
  return As(FieldRole::Id, form);
}

}  // namespace form
}  // namespace utdata::kvtiff19
