#include "report/tables.h"

#include <cctype>
#include <cmath>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "terminal/quantity.h"
#include "utdata/fields.h"
#include "utdata/grouplists.h"
#include "utdata/history.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;
using Rows = std::vector<std::pair<std::string, std::string>>;

/// "refracted angle" of "refractedAngle".
std::string Spoken(std::string_view key) {
  std::string spoken;
  for (const char character : key) {
    const bool isCapital = std::isupper(static_cast<unsigned char>(character)) != 0;
    if (isCapital && !spoken.empty()) spoken += ' ';
    spoken += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  return spoken;
}

/// A value of a field for a page: a text without quotes.
std::string Plain(const FieldValue& value, const std::string& shown) {
  const auto* text = std::get_if<std::string>(&value);
  return text ? *text : shown;
}

/// Adds the fields of a group that say something: choices, texts that are not empty, and numbers
/// that are finite and not 0; no list of numbers, and none that identify the group.
void AddRows(Rows& rows, const Fields& group) {
  for (const Field& field : group.All()) {
    const SCFile::FieldInfo& info = field.Info();
    if (info.IsKey() || info.kind == SCFile::FieldKind::Numbers) continue;
    const FieldValue value = field.Value();
    const auto* number = std::get_if<double>(&value);
    const bool isSaying =
        number ? info.kind == SCFile::FieldKind::Choice || (*number != 0 && std::isfinite(*number))
               : !std::get<std::string>(value).empty();
    if (isSaying) rows.emplace_back(Spoken(field.Key()), Plain(value, field.Show(4)));
  }
}

void AddTable(Json& tables, std::string title, const Rows& rows) {
  title[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(title[0])));
  if (!rows.empty()) tables.push_back({{"title", std::move(title)}, {"rows", rows}});
}

template <class Descriptor>
void AddTables(Json& tables, const CFContTypeFileDescr& groups) {
  for (const Descriptor* group : groups.*listOf<Descriptor>) {
    Rows rows;
    AddRows(rows, Fields(*group));
    if constexpr (std::is_same_v<Descriptor, CGDacTypeDescr>)
      for (const auto& [time, level] : group->points)
        rows.emplace_back("at " + OnAxis(time, kvt_UnitSecond),
                          Percent(std::round(10 * level) / 10));
    AddTable(tables, Fields(*group).Name(), rows);
  }
}

}  // namespace

Json TablesJson(const Inspection& inspection) {
  const CFContTypeFileDescr& groups = inspection.Descriptor();
  Json tables = Json::array();
  AddTables<CGInfoTypeDescr>(tables, groups);
  AddTables<CGSpecinfTypeDescr>(tables, groups);
  AddTables<CGSpecdimTypeDescr>(tables, groups);
  AddTables<CGSpecmatTypeDescr>(tables, groups);
  AddTables<CGWeldTypeDescr>(tables, groups);
  AddTables<CGChanTypeDescr>(tables, groups);
  AddTables<CGSubchanTypeDescr>(tables, groups);
  AddTables<CGProbeTypeDescr>(tables, groups);
  AddTables<CGGateTypeDescr>(tables, groups);
  AddTables<CGDacTypeDescr>(tables, groups);
  AddTables<CGPatchTypeDescr>(tables, groups);
  return tables;
}

Json HistoryJson(const Inspection& inspection) {
  Json events = Json::array();
  for (const HistoryEvent& event : HistoryOf(inspection)) {
    Json changes = Json::array();
    for (const FieldChange& change : event.changes)
      changes.push_back({Spoken(change.field->key),
                         Plain(change.before, change.shownBefore),
                         Plain(change.after, change.shownAfter)});
    events.push_back({{"file", std::filesystem::path(event.file).filename().string()},
                      {"write", event.write},
                      {"what", event.group},
                      {"added", changes.empty()},
                      {"changes", std::move(changes)}});
  }
  return events;
}

Json DefectsJson(const Inspection& inspection) {
  Json columns = {"#", "text 1", "text 2"};
  for (int value = 1; value <= 8; ++value) columns.push_back("value " + std::to_string(value));
  for (int number = 1; number <= 3; ++number) columns.push_back("number " + std::to_string(number));
  columns.push_back("entries");
  Json rows = Json::array();
  for (const stDefectExtern* defect : inspection.Descriptor().defects) {
    Json row = {
        std::to_string(rows.size() + 1), ToUtf8(defect->firstText), ToUtf8(defect->secondText)};
    for (const double value : defect->values) row.push_back(Number(value));
    for (const std::uint32_t number : defect->numbers) row.push_back(std::to_string(number));
    row.push_back(std::to_string(defect->subEntries.size()));
    rows.push_back(std::move(row));
  }
  return {{"columns", std::move(columns)}, {"rows", std::move(rows)}};
}

}  // namespace utdata::program
