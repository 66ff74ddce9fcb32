#include "listing/info.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "document/data_group.h"
#include "document/group_lists.h"
#include "samples/group_axes.h"
#include "terminal/output.h"
#include "terminal/quantity.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

using GroupCounts = std::vector<std::pair<std::string, std::ptrdiff_t>>;

// How many groups of a type a host finds: its items where the file set holds the type, else the groups of the descriptor.

std::ptrdiff_t CountIn(CFSet& set, const CList<CGChanTypeDescr*>&) { return set.fset_GetIChanCount(); }
std::ptrdiff_t CountIn(CFSet& set, const CList<CGSubchanTypeDescr*>&) {
  CISubChanLst found;
  return set.fset_GetISubChanLst(&found, fset_All, fset_AnyId, fset_AnyId);
}
std::ptrdiff_t CountIn(CFSet& set, const CList<CGGateTypeDescr*>&) {
  CIGateLst found;
  return set.fset_GetIGateLst(&found, fset_All, fset_AnyId, fset_AnyId);
}
std::ptrdiff_t CountIn(CFSet& set, const CList<CGPatchTypeDescr*>&) {
  CIPatchLst found;
  return set.fset_GetIPatchLst(&found, fset_All, fset_AnyId);
}
std::ptrdiff_t CountIn(CFSet& set, const CList<CGProbeTypeDescr*>&) {
  CIProbeLst found;
  return set.fset_GetIProbeLst(&found, fset_All, fset_AnyId);
}
std::ptrdiff_t CountIn(CFSet& set, const CList<CGInfoTypeDescr*>&) { return set.fset_GetIInfo(fset_All) ? 1 : 0; }
std::ptrdiff_t CountIn(CFSet& set, const CList<CGWeldScanPlanDescr*>&) {
  return std::ssize(set.fset_GetGWeldScanPlanList());
}
std::ptrdiff_t CountIn(CFSet& set, const CList<CGWeldFillDescr*>&) { return std::ssize(set.fset_GetGWeldFillList()); }
template <class Descriptor>
std::ptrdiff_t CountIn(CFSet&, const CList<Descriptor*>& list) {
  return list.GetCount();
}

GroupCounts CountGroups(const Document& document) {
  GroupCounts counts;
  CFSet& set = *document.GetHost().GetFileSet();
  VisitGroupLists(document.Groups(),
                  [&](const char* name, const auto& list, auto) { counts.emplace_back(name, CountIn(set, list)); });
  return counts;
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

std::vector<std::string> DataRow(std::size_t index, const CGDataTypeFDD& group, const GroupAxes& axes) {
  return {std::to_string(index),
          Label(group),
          ClassName(group),
          SampleTypeName(group) + (group.GetDataRectification() == gdata_RectifNone ? "" : " rectified"),
          axes.Columns().Spacing(),
          axes.Rows().Spacing(),
          axes.Samples().Spacing(),
          group.samples.group ? Bytes(group.samples.size) : "none"};
}

std::vector<std::string> RangeRow(std::size_t index, const CGDataTypeFDD& group, const GroupAxes& axes) {
  const std::optional<ShownAxis> path = axes.HalfPath();
  return {std::to_string(index),
          axes.Columns().Range(),
          axes.Rows().Range(),
          axes.Samples().Range(),
          path ? path->Range() : "unknown",
          Number(group.dataMinimum) + " to " + Number(group.dataMaximum),
          HoldsAmplitudes(group) ? axes.AmplitudeRange() : "no amplitudes"};
}

/// One row per data group, made by `row`.
template <class Row>
std::string TableOfGroups(const Document& document, std::vector<std::string> header, Row&& row) {
  TextTable table(std::move(header));
  std::size_t index = 0;
  for (const CGDataTypeFDD* group : document.Groups().data)
    table.Add(row(index++, *group, GroupAxes(document.GetHost(), *group)));
  return table.Text();
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
  text += "\n" + DataGroupTable(document) + "\n";
  text += TableOfGroups(document, {"#", "columns", "rows", "samples", "half path", "values", "amplitude"}, RangeRow);
  if (!content.hash) return text;
  std::size_t index = 0;
  for (const CGDataTypeFDD* group : document.Groups().data) {
    const std::string hash = SamplesHash(*group, content.quiet);
    text += (index == 0 ? "\n" : "") + std::to_string(index) + "  sha256 " + (hash.empty() ? "none" : hash) + "\n";
    ++index;
  }
  return text;
}

std::string DataGroupTable(const Document& document) {
  return TableOfGroups(document, {"#", "label", "class", "type", "columns", "rows", "samples", "table"}, DataRow);
}

}  // namespace utdata::program
