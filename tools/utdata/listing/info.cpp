#include "listing/info.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "listing/damage.h"
#include "listing/data_rows.h"
#include "listing/history.h"
#include "terminal/output.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/companions.h"
#include "utdata/rdata.h"

namespace utdata::program {
namespace {

using Groups = std::vector<DataGroup>;

std::string GroupsText(const Inspection& inspection) {
  std::string text;
  for (const auto& [name, count] : inspection.CountGroups()) {
    if (count == 0) continue;
    std::string spoken = name;
    std::replace(spoken.begin(), spoken.end(), '_', ' ');
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + spoken;
  }
  return text.empty() ? "none" : text;
}

std::vector<std::string> KindRow(const DataGroup& group) {
  const CGDataTypeFDD& stored = group.Stored();
  return {
      std::to_string(group.Index()),
      group.Label(),
      group.ClassName(),
      group.TypeName() + (stored.GetDataRectification() == gdata_RectifNone ? "" : " rectified"),
      SpacingText(group.Columns()),
      SpacingText(group.Rows()),
      SpacingText(group.Times()),
      group.HasTable() ? Bytes(stored.samples.size) : "none",
      group.BookmarkName(),
      MatchText(group)};
}

/// "-100 to 100 %, -90.3 to 0.0 dB": the range of the values, and the levels from one step above
/// zero to the largest amplitude.
std::string AmplitudeRange(const DataGroup& group) {
  if (!group.HoldsAmplitudes()) return "no amplitudes";
  const CRDataTypeDD& descriptor = group.Descriptor();
  const double low = group.Percent(descriptor.GetDataMin());
  const double high = group.Percent(descriptor.GetDataMax());
  const double smallest = std::abs(group.Percent(1));
  if (!std::isfinite(low) || !std::isfinite(high) || smallest > 100) return "no scale";
  const double largest = std::max(std::abs(low), std::abs(high));
  return Number(low) + " to " + Percent(high) + ", " +
         Number(std::round(group.Decibels(smallest) * 10) / 10) + " to " +
         group.AmplitudeText(largest, unit_DataDecibel);
}

/// "channel 1.41 at 70°": which beam of which channel, and its refracted angle.
std::string BeamText(const DataGroup& group) {
  const CGDataTypeFDD& stored = group.Stored();
  std::string text = "channel " + std::to_string(stored.channelId);
  if (stored.subChannelId != 0) text += "." + std::to_string(stored.subChannelId);
  if (group.IsTofd())
    return text + (stored.probeSeparation > 0
                       ? " TOFD, probes " + Millimetres(stored.probeSeparation) + " apart"
                       : " TOFD, probe separation not known");
  return text + " at " + Number(stored.probeAngle) + "°";
}

std::vector<std::string> RangeRow(const DataGroup& group) {
  const CGDataTypeFDD& stored = group.Stored();
  const std::optional<AxisScale> path = group.HalfPaths();
  return {std::to_string(group.Index()),
          BeamText(group),
          RangeText(group.Columns()),
          RangeText(group.Rows()),
          RangeText(group.Times()),
          path ? RangeText(*path) : "unknown",
          Number(stored.dataMinimum) + " to " + Number(stored.dataMaximum),
          AmplitudeRange(group)};
}

/// The data groups in the order of the file, or sorted, those last that the file set does not hold.
Groups GroupsOf(const Inspection& inspection, bool sorted) {
  if (!sorted) return inspection.Data();
  Groups groups;
  for (const auto& [channel, ofChannel] : inspection.DataByChannel())
    groups.insert(groups.end(), ofChannel.begin(), ofChannel.end());
  for (const DataGroup& group : inspection.Data())
    if (!group.IsListed()) groups.push_back(group);
  return groups;
}

/// One row per data group, made by `cells`.
template <class Cells>
std::string TableOfGroups(const Groups& groups, std::vector<std::string> header, Cells&& cells) {
  TextTable table(std::move(header));
  for (const DataGroup& group : groups) table.Add(cells(group));
  return table.Text();
}

std::string KindTable(const Groups& groups) {
  return TableOfGroups(
      groups,
      {"#", "label", "class", "type", "columns", "rows", "samples", "table", "bookmark", "matches"},
      KindRow);
}

std::string HashLines(const Inspection& inspection, const Groups& groups, bool quiet) {
  std::string text;
  for (const DataGroup& group : groups) {
    const std::string hash = SamplesHash(group, quiet);
    const std::vector<DamagedSamples> found = inspection.Damage();
    const bool isDamaged = std::any_of(found.begin(), found.end(), [&](const auto& damage) {
      return damage.group == group.Index();
    });
    text += std::to_string(group.Index()) + "  sha256 " + (hash.empty() ? "none" : hash) +
            (isDamaged ? "  damaged" : "") + "\n";
  }
  return text;
}

void AddTitles(const Inspection& inspection, std::string& text) {
  for (const CGInfoTypeDescr* info : inspection.Descriptor().infos) {
    if (!info->title.empty()) text += "title    " + Printable(ToUtf8(info->title)) + "\n";
    if (!info->comment.empty()) text += "comment  " + Printable(ToUtf8(info->comment)) + "\n";
  }
}

}  // namespace

nlohmann::ordered_json InfoJson(const Inspection& inspection, const InfoContent& content) {
  nlohmann::ordered_json groups = nlohmann::ordered_json::object();
  for (const auto& [name, count] : inspection.CountGroups()) groups[name] = count;
  nlohmann::ordered_json data = nlohmann::ordered_json::array();
  for (const DataGroup& group : inspection.Data()) {
    data.push_back(DataRowJson(group));
    if (content.hash && group.HasTable())
      data.back()["table_sha256"] = SamplesHash(group, content.quiet);
  }
  std::vector<std::string> warnings = inspection.Warnings();
  for (const std::string& line : DamageLines(inspection)) warnings.push_back(line);
  nlohmann::ordered_json result = {{"path", inspection.Path()},
                                   {"files", inspection.Files()},
                                   {"role", DescribeCompanion(inspection.Path())},
                                   {"warnings", warnings},
                                   {"groups", groups},
                                   {"data", data},
                                   {"masters", MastersJson(inspection)}};
  if (result["role"].get<std::string>().empty()) result.erase("role");
  if (content.history) result["history"] = HistoryJson(inspection);
  if (!content.sorted) return result;
  result["sorted"] = nlohmann::ordered_json::array();
  for (const auto& [channel, ofChannel] : inspection.DataByChannel()) {
    nlohmann::ordered_json indices = nlohmann::ordered_json::array();
    for (const DataGroup& group : ofChannel) indices.push_back(group.Index());
    result["sorted"].push_back({{"channel", channel}, {"data", indices}});
  }
  return result;
}

std::string InfoText(const Inspection& inspection, const InfoContent& content) {
  std::string text;
  for (const std::string& file : inspection.Files())
    text += (text.empty() ? "file     " : "with     ") + Printable(file) + "\n";
  if (const std::string role = DescribeCompanion(inspection.Path()); !role.empty())
    text += "it is    " + Printable(role) + ", shown without the rest\n";
  text += "groups   " + GroupsText(inspection) + "\n";
  AddTitles(inspection, text);
  const std::string history = content.history ? "\n" + HistoryText(inspection) : "";
  if (inspection.Data().empty()) return text + history;
  const Groups groups = GroupsOf(inspection, content.sorted);
  text += "\n" + KindTable(groups) + "\n";
  text +=
      TableOfGroups(groups,
                    {"#", "beam", "columns", "rows", "samples", "half path", "values", "amplitude"},
                    RangeRow);
  const std::string masters = MastersText(inspection);
  if (!masters.empty()) text += "\n" + masters;
  if (content.hash) text += "\n" + HashLines(inspection, groups, content.quiet);
  return text + history;
}

std::string DataGroupTable(const Inspection& inspection) { return KindTable(inspection.Data()); }

}  // namespace utdata::program
