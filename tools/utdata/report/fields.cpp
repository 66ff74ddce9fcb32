#include "report/fields.h"

#include <cctype>
#include <optional>

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

template <class Record>
std::optional<EditField> Find(const std::string& name) {
  for (const auto& field : EditFields(static_cast<const Record*>(nullptr)))
    if (name == field.key) return field;
  return std::nullopt;
}

/// The field of a group type that can be edited, by the type's name.
std::optional<EditField> FindField(const std::string& type, const std::string& name) {
  if (type == "channel") return Find<CGChanTypeDescr>(name);
  if (type == "sub-channel") return Find<CGSubchanTypeDescr>(name);
  if (type == "gate") return Find<CGGateTypeDescr>(name);
  if (type == "probe") return Find<CGProbeTypeDescr>(name);
  if (type == "patch") return Find<CGPatchTypeDescr>(name);
  if (type == "info") return Find<CGInfoTypeDescr>(name);
  if (type == "specimen material") return Find<CGSpecmatTypeDescr>(name);
  return std::nullopt;
}

EditUnit UnitIn(const EditField& field,
                const std::string& name,
                const std::map<std::string, Json>& group) {
  if (!field.onAxis) return field.unit;
  const auto units = group.find(name.starts_with("column") ? "columnUnits" : "rowUnits");
  const bool isKnown = units != group.end() && units->second.is_number_unsigned();
  return UnitOnAxis(isKnown ? static_cast<kvt_enumUnits>(units->second.get<std::uint32_t>())
                            : kvt_UnitNone);
}

}  // namespace

std::string SpokenField(std::string_view name) {
  std::string spoken;
  for (const char character : name) {
    const bool isCapital = std::isupper(static_cast<unsigned char>(character)) != 0;
    if (isCapital && !spoken.empty()) spoken += ' ';
    spoken += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  return spoken;
}

std::string ShownField(const std::string& type,
                       const std::string& name,
                       const Json& value,
                       const std::map<std::string, Json>& group) {
  if (value.is_null()) return "none";
  if (value.is_string()) return value.get<std::string>();
  const std::optional<EditField> field = FindField(type, name);
  if (!field || !value.is_number()) return value.dump();
  return ShowValue(*field, UnitIn(*field, name, group), value.get<double>(), 6);
}

}  // namespace utdata::program
