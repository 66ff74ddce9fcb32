#include "info.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "data_group.h"
#include "group_lists.h"
#include "output.h"
#include "quantity.h"
#include "text.h"

namespace utdata::program {
namespace {

using GroupCounts = std::vector<std::pair<std::string, std::ptrdiff_t>>;

GroupCounts CountGroups(const Document& document) {
  GroupCounts counts;
  VisitGroupLists(document.Groups(),
                  [&](const char* name, const auto& list, auto) { counts.emplace_back(name, list.GetCount()); });
  return counts;
}

/// "256 × 1 mm from 5 mm"; "1" alone where there is no axis to speak of.
std::string AxisText(std::uint32_t quantity, float resolution, float offset, kvt_enumUnits units) {
  if (quantity == 1 && offset == 0) return "1";
  std::string text = std::to_string(quantity) + " × " + OnAxis(resolution, units);
  if (offset != 0) text += " from " + OnAxis(offset, units);
  return text;
}

std::string GroupsText(const Document& document) {
  std::string text;
  for (const auto& [name, count] : CountGroups(document)) {
    if (count == 0) continue;
    std::string spoken = name;
    std::replace(spoken.begin(), spoken.end(), '_', ' ');
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + spoken;
  }
  return text.empty() ? "none" : text;
}

std::vector<std::string> DataRow(std::size_t index, const CGDataTypeFDD& group) {
  const std::string samples =
      AxisText(group.sampleQuantity, group.sampleResolution, group.sampleOffset, group.sampleUnits);
  return {std::to_string(index),
          Label(group),
          ClassName(group),
          SampleTypeName(group) + (group.GetDataRectification() == gdata_RectifNone ? "" : " rectified"),
          AxisText(group.columnQuantity, group.columnResolution, group.columnOffset, group.columnUnits),
          AxisText(group.rowQuantity, group.rowResolution, group.rowOffset, group.rowUnits),
          samples,
          Number(group.dataMinimum) + " to " + Number(group.dataMaximum),
          group.samples.group ? Bytes(group.samples.size) : "none"};
}

void AddTitles(const Document& document, std::string& text) {
  for (const CGInfoTypeDescr* info : document.Groups().infos) {
    if (!info->title.empty()) text += "title    " + Printable(ToUtf8(info->title)) + "\n";
    if (!info->comment.empty()) text += "comment  " + Printable(ToUtf8(info->comment)) + "\n";
  }
}

}  // namespace

nlohmann::ordered_json InfoJson(const Document& document, const InfoContent& content) {
  nlohmann::ordered_json groups = nlohmann::ordered_json::object();
  for (const auto& [name, count] : CountGroups(document)) groups[name] = count;
  nlohmann::ordered_json data = nlohmann::ordered_json::array();
  for (const CGDataTypeFDD* group : document.Groups().data) {
    data.push_back(DataGroupJson(*group));
    if (content.hash && group->samples.group) data.back()["table_sha256"] = SamplesHash(*group, content.quiet);
  }
  return {{"path", document.Path()}, {"files", document.Files()}, {"groups", groups}, {"data", data}};
}

std::string InfoText(const Document& document, const InfoContent& content) {
  std::string text;
  for (const std::string& file : document.Files())
    text += (text.empty() ? "file     " : "with     ") + Printable(file) + "\n";
  text += "groups   " + GroupsText(document) + "\n";
  AddTitles(document, text);
  if (document.Groups().data.IsEmpty()) return text;
  TextTable table({"#", "label", "class", "type", "columns", "rows", "samples", "values", "table"});
  std::size_t index = 0;
  for (const CGDataTypeFDD* group : document.Groups().data) table.Add(DataRow(index++, *group));
  text += "\n" + table.Text();
  index = 0;
  if (!content.hash) return text;
  for (const CGDataTypeFDD* group : document.Groups().data) {
    const std::string hash = SamplesHash(*group, content.quiet);
    text += (index == 0 ? "\n" : "") + std::to_string(index) + "  sha256 " + (hash.empty() ? "none" : hash) + "\n";
    ++index;
  }
  return text;
}

}  // namespace utdata::program
