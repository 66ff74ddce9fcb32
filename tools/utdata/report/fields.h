// Fields of groups as a page names and shows them.
#pragma once

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "editing/edit_fields.h"

namespace utdata::program {

/// "Refracted angle" of "refractedAngle".
[[nodiscard]] std::string SpokenField(std::string_view name);

/// A stored value of a field, in the user's unit where fields that can be edited have one; texts
/// without quotes, "none" for null.
/// @param type  of the group, as `tree` names it
/// @param group fields of the same group, which tell the units of its axes
[[nodiscard]] std::string ShownField(const std::string& type,
                                     const std::string& name,
                                     const nlohmann::ordered_json& value,
                                     const std::map<std::string, nlohmann::ordered_json>& group);

/// The fields of a record that say something: texts that are not empty and numbers that are not 0,
/// with their units.
template <class Record>
std::vector<std::pair<std::string, std::string>> TellingFields(const Record& record) {
  std::vector<std::pair<std::string, std::string>> rows;
  for (const auto& field : EditFields(static_cast<const Record*>(nullptr))) {
    if (field.text) {
      if (!(record.*field.text).empty())
        rows.emplace_back(SpokenField(field.key), ToUtf8(record.*field.text));
      continue;
    }
    const double value = field.get(record);
    const bool says = field.kind == EditKind::Choice || (value != 0 && std::isfinite(value));
    if (says) rows.emplace_back(SpokenField(field.key), Shown(field, record, 4));
  }
  return rows;
}

}  // namespace utdata::program
