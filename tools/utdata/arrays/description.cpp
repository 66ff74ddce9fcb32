#include "arrays/description.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string_view>

#include "listing/data_rows.h"
#include "terminal/failure.h"
#include "terminal/output.h"
#include "terminal/text.h"
#include "utdata/newscan.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

struct NumberField {
  const char* name;
  float CGDataTypeFDD::*field;
};
constexpr NumberField numberFields[] = {{"minimum", &CGDataTypeFDD::dataMinimum},
                                        {"maximum", &CGDataTypeFDD::dataMaximum},
                                        {"value_resolution", &CGDataTypeFDD::dataResolution},
                                        {"value_offset", &CGDataTypeFDD::dataOffset},
                                        {"sample_resolution", &CGDataTypeFDD::sampleResolution},
                                        {"sample_offset", &CGDataTypeFDD::sampleOffset},
                                        {"probe_angle", &CGDataTypeFDD::probeAngle},
                                        {"probe_skew", &CGDataTypeFDD::probeSkew},
                                        {"probe_separation", &CGDataTypeFDD::probeSeparation},
                                        {"sound_speed", &CGDataTypeFDD::soundSpeed},
                                        {"part_thickness", &CGDataTypeFDD::partThickness},
                                        {"inspection_radius", &CGDataTypeFDD::inspectionRadius}};

/// A whole number with the largest value that a record may have.
struct CodeField {
  const char* name;
  std::uint32_t largest;
  std::uint32_t (*get)(const CGDataTypeFDD& record);
  void (*set)(CGDataTypeFDD& record, std::uint32_t code);
};
constexpr std::uint32_t anyId = 0xFFFFFFFE;
constexpr CodeField codeFields[] = {
    {"class",
     gdata_CScanAngle,
     [](auto& record) { return record.dataClass & ~std::uint32_t{gdata_MultiChannelMaster}; },
     [](auto& record, auto code) { record.dataClass = static_cast<gdata_enumDataClass>(code); }},
    {"channel",
     anyId,
     [](auto& record) { return record.channelId; },
     [](auto& record, auto code) { record.channelId = code; }},
    {"gate",
     anyId,
     [](auto& record) { return record.gateId; },
     [](auto& record, auto code) { record.gateId = code; }},
    {"rectification",
     gdata_RectifFull,
     [](auto& record) -> std::uint32_t { return record.GetDataRectification(); },
     [](auto& record, auto code) {
       record.SetDataRectification(static_cast<gdata_enumRectif>(code));
     }},
    {"value_scale",
     gdata_ScaleLogarithmic,
     [](auto& record) -> std::uint32_t { return record.GetDataScale(); },
     [](auto& record, auto code) { record.SetDataScale(static_cast<gdata_enumDataScale>(code)); }},
    {"value_units",
     kvt_UnitVolt,
     [](auto& record) -> std::uint32_t { return record.GetDataUnits(); },
     [](auto& record, auto code) { record.SetDataUnits(static_cast<kvt_enumUnits>(code)); }},
    {"geometry",
     gdata_GeometryCircumferential,
     [](auto& record) -> std::uint32_t { return record.inspectionGeometry; },
     [](auto& record, auto code) {
       record.inspectionGeometry = static_cast<gdata_enumInspGeometry>(code);
     }},
    {"options",
     gdata_OptionCompressed | gdata_OptionOffsetBinary,
     [](auto& record) -> std::uint32_t { return record.fileFormat; },
     [](auto& record, auto code) {
       record.fileFormat = static_cast<gdata_bitmapFileOptions>(code);
     }},
    {"tofd",
     1,
     [](auto& record) { return static_cast<std::uint32_t>(record.tofd); },
     [](auto& record, auto code) { record.tofd = static_cast<std::int32_t>(code); }}};

struct NameField {
  const char* name;
  wchar_t (CGDataTypeFDD::*field)[CGDataTypeFDD::nameSize];
};
constexpr NameField nameFields[] = {{"channel_name", &CGDataTypeFDD::channelName},
                                    {"gate_name", &CGDataTypeFDD::gateName}};

/// A description that is being read.
class RecordReader {
 public:
  RecordReader(const std::string& holder, CGDataTypeFDD& record)
      : m_holder(holder), m_record(record) {}

  void ReadRecord(const Json& record) {
    for (const NumberField& field : numberFields)
      if (record.contains(field.name))
        m_record.*field.field = Number(record[field.name], field.name);
    for (const CodeField& field : codeFields)
      if (record.contains(field.name))
        field.set(m_record, Whole(record[field.name], field.name, field.largest));
    for (const NameField& field : nameFields) {
      const Json name = record.value(field.name, Json(""));
      if (!name.is_string()) Refuse(field.name, "is not a text");
      SetName(m_record.*field.field, ToWide(name.get<std::string>()));
    }
  }

  ArrayAxis ReadAxis(const Json& axis, std::uint64_t quantity) {
    const Json name = axis.is_object() ? axis.value("name", Json()) : Json();
    const std::string called = name.is_string() ? name.get<std::string>() : "an axis";
    if (!axis.is_object() || axis.value("quantity", Json()) != Json(quantity))
      Refuse(called, "has not the array's quantity, " + std::to_string(quantity));
    const ArrayUnit& unit = UnitOf(axis, called);
    const double step = Number(axis.value("step", Json()), "step of " + called) / unit.perBase;
    const double first = Number(axis.value("first", Json()), "first of " + called) / unit.perBase;
    return Place(called, unit.base, static_cast<float>(first), static_cast<float>(step));
  }

  [[noreturn]] void Refuse(const std::string& what, const std::string& why) const {
    throw Failure(m_holder,
                  "does not describe the array",
                  what + " " + why,
                  "correct it, or take it away and tell the rest by options");
  }

 private:
  ArrayAxis Place(const std::string& name, kvt_enumUnits units, float first, float step) {
    struct Fields {
      const char* name;
      ArrayAxis axis;
      float CGDataTypeFDD::*first;
      float CGDataTypeFDD::*step;
      kvt_enumUnits CGDataTypeFDD::*units;
    };
    constexpr Fields axes[] = {{"row",
                                ArrayAxis::Row,
                                &CGDataTypeFDD::rowOffset,
                                &CGDataTypeFDD::rowResolution,
                                &CGDataTypeFDD::rowUnits},
                               {"column",
                                ArrayAxis::Column,
                                &CGDataTypeFDD::columnOffset,
                                &CGDataTypeFDD::columnResolution,
                                &CGDataTypeFDD::columnUnits},
                               {"sample",
                                ArrayAxis::Sample,
                                &CGDataTypeFDD::sampleOffset,
                                &CGDataTypeFDD::sampleResolution,
                                &CGDataTypeFDD::sampleUnits}};
    const auto* found = std::find_if(
        std::begin(axes), std::end(axes), [&](const Fields& axis) { return name == axis.name; });
    if (found == std::end(axes)) Refuse(name, "is not row, column or sample");
    m_record.*found->first = first;
    m_record.*found->step = step;
    m_record.*found->units = units;
    return found->axis;
  }

  const ArrayUnit& UnitOf(const Json& axis, const std::string& called) const {
    const Json name = axis.value("unit", Json(""));
    const ArrayUnit* unit = name.is_string() ? FindArrayUnit(name.get<std::string>()) : nullptr;
    if (!unit) Refuse("unit of " + called, "is not m, mm, s, us, ns or degree");
    return *unit;
  }

  float Number(const Json& value, const std::string& what) const {
    const double number = value.is_number() ? value.get<double>() : std::nan("");
    if (!(std::abs(number) <= std::numeric_limits<float>::max()))
      Refuse(what, "is not a number that fits");
    return static_cast<float>(number);
  }

  std::uint32_t Whole(const Json& value, const std::string& what, std::uint32_t largest) const {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > largest)
      Refuse(what, "is not a whole number from 0 to " + std::to_string(largest));
    return value.get<std::uint32_t>();
  }

  const std::string& m_holder;
  CGDataTypeFDD& m_record;
};

/// What a record says beside its axes, in base units.
Json RecordJson(const CGDataTypeFDD& record) {
  Json json = Json::object();
  for (const CodeField& field : codeFields) json[field.name] = field.get(record);
  for (const NameField& field : nameFields) json[field.name] = ToUtf8(record.*field.field);
  for (const NumberField& field : numberFields) json[field.name] = JsonNumber(record.*field.field);
  return json;
}

}  // namespace

Json DescriptionJson(const DescribedArray& array,
                     const DataGroup& group,
                     const std::string& holder) {
  Json axes = Json::array();
  for (const DescribedAxis& axis : array.axes)
    axes.push_back({{"name", axis.name},
                    {"label", axis.label},
                    {"unit", axis.unit},
                    {"quantity", axis.quantity},
                    {"first", axis.first},
                    {"step", axis.step}});
  return {{"format", descriptionFormat},
          {"version", descriptionVersion},
          {"array", holder},
          {"type", array.type->name},
          {"shape", array.Shape()},
          {"axes", axes},
          {"values",
           {{"name", array.values.name},
            {"unit", array.values.unit},
            {"scale", array.values.scale},
            {"offset", array.values.offset}}},
          {"group", DataGroupJson(group)},
          {"record", RecordJson(group.Stored())}};
}

std::vector<ArrayAxis> ReadDescription(const ForeignArray& array, CGDataTypeFDD& record) {
  const Json description = Json::parse(array.description, nullptr, false);
  if (!description.is_object() || description.value("format", Json()) != Json(descriptionFormat))
    return {};
  RecordReader reader(array.describedBy, record);
  if (description.value("version", Json()) != Json(descriptionVersion))
    reader.Refuse("its version", "is not known");
  if (description.value("type", Json()) != Json(array.type->name))
    reader.Refuse("its type", std::string("is not the array's, ") + array.type->name);
  const Json axes = description.value("axes", Json());
  if (!axes.is_array() || axes.size() != array.shape.size())
    reader.Refuse("axes", "are not as many as the array's, " + std::to_string(array.shape.size()));
  const Json stored = description.value("record", Json());
  if (stored.is_object()) reader.ReadRecord(stored);
  std::vector<ArrayAxis> found;
  for (std::size_t index = 0; index < axes.size(); ++index) {
    const ArrayAxis axis = reader.ReadAxis(axes[index], array.shape[index]);
    if (std::find(found.begin(), found.end(), axis) != found.end())
      reader.Refuse("axes", "bear the same name");
    found.push_back(axis);
  }
  return found;
}

}  // namespace utdata::program
