#include "listing/info.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "document/data_group.h"
#include "listing/data_rows.h"
#include "samples/group_axes.h"
#include "terminal/output.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/grouplists.h"

namespace utdata::program {
namespace {

using GroupCounts = std::vector<std::pair<std::string, std::ptrdiff_t>>;

// How many groups of a type a host finds: its items where the file set holds the type, else the
// groups of the descriptor.

std::ptrdiff_t CountIn(CFSet& set, const CList<CGDataTypeFDD*>&) {
  CIDataLst found;
  return set.fset_GetIDataLst(&found);
}
std::ptrdiff_t CountIn(CFSet& set, const CList<CGChanTypeDescr*>&) {
  return set.fset_GetIChanCount();
}
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
std::ptrdiff_t CountIn(CFSet& set, const CList<CGInfoTypeDescr*>&) {
  return set.fset_GetIInfo(fset_All) ? 1 : 0;
}
std::ptrdiff_t CountIn(CFSet& set, const CList<CGWeldScanPlanDescr*>&) {
  return std::ssize(set.fset_GetGWeldScanPlanList());
}
std::ptrdiff_t CountIn(CFSet& set, const CList<CGWeldFillDescr*>&) {
  return std::ssize(set.fset_GetGWeldFillList());
}
template <class Descriptor>
std::ptrdiff_t CountIn(CFSet&, const CList<Descriptor*>& list) {
  return list.GetCount();
}

GroupCounts CountGroups(const Document& document) {
  GroupCounts counts;
  CFSet& set = *document.GetHost().GetFileSet();
  VisitGroupLists(document.Groups(), [&](std::string_view name, const auto& list) {
    counts.emplace_back(name, CountIn(set, list));
  });
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

std::vector<std::string> KindRow(const Document& document,
                                 const DataRow& row,
                                 const GroupAxes& axes) {
  const CGDataTypeFDD& group = *row.group;
  return {std::to_string(row.index),
          Label(group),
          ClassName(group),
          SampleTypeName(group) +
              (group.GetDataRectification() == gdata_RectifNone ? "" : " rectified"),
          axes.Columns().Spacing(),
          axes.Rows().Spacing(),
          axes.Samples().Spacing(),
          group.samples.group ? Bytes(group.samples.size) : "none",
          BookmarkName(row.taken.GetDataBookmarkType()),
          MatchText(document, row)};
}

std::vector<std::string> RangeRow(const Document&, const DataRow& row, const GroupAxes& axes) {
  const CGDataTypeFDD& group = *row.group;
  const std::optional<ShownAxis> path = axes.HalfPath();
  return {std::to_string(row.index),
          axes.Columns().Range(),
          axes.Rows().Range(),
          axes.Samples().Range(),
          path ? path->Range() : "unknown",
          Number(group.dataMinimum) + " to " + Number(group.dataMaximum),
          HoldsAmplitudes(group) ? axes.AmplitudeRange() : "no amplitudes"};
}

using Rows = std::vector<const DataRow*>;

/// The data groups in the order of the file, or sorted, those last that are no items.
Rows RowsOf(const Document& document, bool sorted) {
  Rows rows;
  if (sorted)
    for (const ChannelRows& channel : SortedRows(document))
      rows.insert(rows.end(), channel.rows.begin(), channel.rows.end());
  for (const auto& row : document.GetHost().Data().Rows())
    if (!sorted || !row->item) rows.push_back(row.get());
  return rows;
}

/// One row per data group, made by `cells`.
template <class Cells>
std::string TableOfGroups(const Document& document,
                          const Rows& rows,
                          std::vector<std::string> header,
                          Cells&& cells) {
  TextTable table(std::move(header));
  for (const DataRow* row : rows)
    table.Add(cells(document, *row, GroupAxes(document.GetHost(), *row->group)));
  return table.Text();
}

std::string KindTable(const Document& document, const Rows& rows) {
  return TableOfGroups(
      document,
      rows,
      {"#", "label", "class", "type", "columns", "rows", "samples", "table", "bookmark", "matches"},
      KindRow);
}

std::string HashLines(const Rows& rows, bool quiet) {
  std::string text;
  for (const DataRow* row : rows) {
    const std::string hash = SamplesHash(*row->group, quiet);
    text += std::to_string(row->index) + "  sha256 " + (hash.empty() ? "none" : hash) + "\n";
  }
  return text;
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
  const Masters masters(document);
  for (const DataRow* row : RowsOf(document, false)) {
    data.push_back(DataRowJson(document, *row, masters));
    if (content.hash && row->group->samples.group)
      data.back()["table_sha256"] = SamplesHash(*row->group, content.quiet);
  }
  nlohmann::ordered_json result = {{"path", document.Path()},
                                   {"files", document.Files()},
                                   {"groups", groups},
                                   {"data", data},
                                   {"masters", MastersJson(document)}};
  if (!content.sorted) return result;
  result["sorted"] = nlohmann::ordered_json::array();
  for (const ChannelRows& channel : SortedRows(document)) {
    nlohmann::ordered_json indices = nlohmann::ordered_json::array();
    for (const DataRow* row : channel.rows) indices.push_back(row->index);
    result["sorted"].push_back({{"channel", channel.channelId}, {"data", indices}});
  }
  return result;
}

std::string InfoText(const Document& document, const InfoContent& content) {
  std::string text;
  for (const std::string& file : document.Files())
    text += (text.empty() ? "file     " : "with     ") + Printable(file) + "\n";
  text += "groups   " + GroupsText(document) + "\n";
  AddTitles(document, text);
  if (document.Groups().data.IsEmpty()) return text;
  const Rows rows = RowsOf(document, content.sorted);
  text += "\n" + KindTable(document, rows) + "\n";
  text += TableOfGroups(document,
                        rows,
                        {"#", "columns", "rows", "samples", "half path", "values", "amplitude"},
                        RangeRow);
  const std::string masters = MastersText(document);
  if (!masters.empty()) text += "\n" + masters;
  if (content.hash) text += "\n" + HashLines(rows, content.quiet);
  return text;
}

std::string DataGroupTable(const Document& document) {
  return KindTable(document, RowsOf(document, false));
}

}  // namespace utdata::program
