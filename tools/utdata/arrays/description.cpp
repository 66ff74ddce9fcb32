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
#include "utdata/fields.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

/// A field of the record by the name that a description gives it, and by its key.
struct DescribedField {
  const char* name;
  const char* key;
};
constexpr DescribedField describedFields[] = {{"class", "dataClass"},
                                              {"channel", "channelId"},
                                              {"gate", "gateId"},
                                              {"rectification", "rectification"},
                                              {"value_scale", "dataScale"},
                                              {"value_units", "dataUnits"},
                                              {"geometry", "inspectionGeometry"},
                                              {"options", "fileFormat"},
                                              {"tofd", "tofd"},
                                              {"channel_name", "channelName"},
                                              {"gate_name", "gateName"},
                                              {"minimum", "dataMinimum"},
                                              {"maximum", "dataMaximum"},
                                              {"value_resolution", "dataResolution"},
                                              {"value_offset", "dataOffset"},
                                              {"sample_resolution", "sampleResolution"},
                                              {"sample_offset", "sampleOffset"},
                                              {"probe_angle", "probeAngle"},
                                              {"probe_skew", "probeSkew"},
                                              {"probe_separation", "probeSeparation"},
                                              {"sound_speed", "soundSpeed"},
                                              {"part_thickness", "partThickness"},
                                              {"inspection_radius", "inspectionRadius"}};

/// A description that is being read.
class RecordReader {
 public:
  RecordReader(const std::string& holder, CGDataTypeFDD& record)
      : m_holder(holder), m_record(record) {}

  void ReadRecord(const Json& record) {
    const Fields fields(m_record);
    for (const DescribedField& described : describedFields) {
      if (!record.contains(described.name)) continue;
      const Json& value = record[described.name];
      const Field field = fields[described.key];
      const SCFile::FieldInfo& info = field.Info();
      if (info.kind == SCFile::FieldKind::Text) {
        if (!value.is_string()) Refuse(described.name, "is not a text");
        const std::wstring text = ToWide(value.get<std::string>());
        info.access.setText(&m_record, text.substr(0, CGDataTypeFDD::nameSize - 1));
      } else if (info.kind == SCFile::FieldKind::Quantity) {
        info.access.setNumber(&m_record, Number(value, described.name));
      } else {
        if (!value.is_number_unsigned() || !field.Takes(value.get<double>()))
          Refuse(described.name, "is no whole number, or not one of: " + field.Range());
        info.access.setNumber(&m_record, value.get<double>());
      }
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
                  "correct it, or remove it and give the rest as options");
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
    const bool isCounted = units == kvt_UnitNone && found->axis != ArrayAxis::Sample;
    m_record.*found->first = isCounted ? 0 : first;
    m_record.*found->step = isCounted ? 0 : step;
    if (!isCounted) m_record.*found->units = units;
    return found->axis;
  }

  const ArrayUnit& UnitOf(const Json& axis, const std::string& called) const {
    const Json name = axis.value("unit", Json(""));
    const ArrayUnit* unit = name.is_string() ? FindArrayUnit(name.get<std::string>()) : nullptr;
    if (!unit) Refuse("unit of " + called, "is not m, mm, in, s, us, ns or degree");
    return *unit;
  }

  float Number(const Json& value, const std::string& what) const {
    const double number = value.is_number() ? value.get<double>() : std::nan("");
    if (!(std::abs(number) <= std::numeric_limits<float>::max()))
      Refuse(what, "is not a number that fits");
    return static_cast<float>(number);
  }

  const std::string& m_holder;
  CGDataTypeFDD& m_record;
};

/// What a record says beside its axes, in base units.
Json RecordJson(const DataGroup& group) {
  const Fields fields(group.Stored());
  Json json = Json::object();
  for (const DescribedField& described : describedFields) {
    const Field field = fields[described.key];
    switch (field.Info().kind) {
      case SCFile::FieldKind::Text:
        json[described.name] = field.Text();
        break;
      case SCFile::FieldKind::Quantity:
        json[described.name] = JsonNumber(static_cast<float>(field.Number()));
        break;
      default:
        json[described.name] = static_cast<std::uint32_t>(field.Number());
    }
  }
  json["class"] = group.Class();
  // Elements of a signed type are values, however they are stored.
  const kvt_enumDataType type = group.Stored().GetDataType();
  if (type == kvt_Int8 || type == kvt_Int16)
    json["options"] = group.Stored().fileFormat & ~std::uint32_t{gdata_OptionOffsetBinary};
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
          {"record", RecordJson(group)}};
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
