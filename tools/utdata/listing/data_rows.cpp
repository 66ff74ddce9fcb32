#include "listing/data_rows.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "document/data_group.h"
#include "terminal/output.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::pair<eDataBookmarkType, const char*>, 5> bookmarkNames = {{
    {bookmark_MultiChannel, "multi-channel"},
    {bookmark_Single, "single"},
    {bookmark_Tofd, "TOFD"},
    {bookmark_Coupling, "coupling"},
    {bookmark_MultiChannelTofd, "multi-channel TOFD"},
}};

Json IndexOf(const Document& document, const CIData* item) {
  const DataRow* row = document.GetHost().Data().RowOf(item);
  return row ? Json(row->index) : Json();
}

std::vector<std::size_t> Elements(const Document& document, CIData& master) {
  std::vector<std::size_t> rows;
  CIDataLst elements;
  master.GetOrderedSubChannelList(&elements);
  for (const CIData* element : elements)
    if (const DataRow* row = document.GetHost().Data().RowOf(element)) rows.push_back(row->index);
  return rows;
}

}  // namespace

Masters::Masters(const Document& document) {
  CIDataLst list;
  document.GetHost().GetFileSet()->fset_GetMSCIDataLst(&list);
  for (CIData* master : list) {
    m_numbers.emplace(master, m_list.size());
    m_list.push_back(master);
  }
}

Json Masters::NumberOf(const CIData* item) const {
  const auto found = m_numbers.find(item);
  return found == m_numbers.end() ? Json() : Json(found->second);
}

Json DataRowJson(const Document& document, const DataRow& row, const Masters& masters) {
  Json json = DataGroupJson(*row.group);
  json["item"] = row.item != nullptr;
  for (const char* link : {"matched", "meridio", "master_number"}) json[link] = nullptr;
  if (!row.item) return json;
  const CRDataTypeDD& descriptor = *row.item->idata1_GetInfoRef();
  json["bookmark"] = static_cast<std::uint32_t>(descriptor.GetDataBookmarkType());
  json["matched"] = IndexOf(document, descriptor.GetMatchedCScan());
  json["meridio"] = IndexOf(document, descriptor.GetMeridioAmpCscan());
  if (row.item->idata1_IsMultiChannelElement())
    json["master_number"] = masters.NumberOf(row.item->idata1_SubChannelMaster());
  return json;
}

Json MastersJson(const Document& document) {
  const Masters masters(document);
  Json result = Json::array();
  for (CIData* master : masters.List()) {
    const CRDataTypeDD& descriptor = *master->idata1_GetInfoRef();
    result.push_back({{"label", Label(descriptor)},
                      {"id_label", IdLabel(descriptor)},
                      {"class", PlainClass(descriptor)},
                      {"master", true},
                      {"channel", descriptor.channelId},
                      {"gate", descriptor.gateId},
                      {"patch", descriptor.GetPatchID()},
                      {"bookmark", static_cast<std::uint32_t>(descriptor.GetDataBookmarkType())},
                      {"elements", Elements(document, *master)},
                      {"matched", masters.NumberOf(descriptor.GetMatchedCScan())}});
  }
  return result;
}

std::string MastersText(const Document& document) {
  const Masters masters(document);
  if (masters.List().empty()) return {};
  TextTable table({"master", "label", "class", "bookmark", "gathers rows", "matches"});
  for (std::size_t number = 0; number < masters.List().size(); ++number) {
    const CRDataTypeDD& descriptor = *masters.List()[number]->idata1_GetInfoRef();
    std::string rows;
    for (const std::size_t row : Elements(document, *masters.List()[number]))
      rows += (rows.empty() ? "" : ", ") + std::to_string(row);
    const Json matched = masters.NumberOf(descriptor.GetMatchedCScan());
    table.Add({std::to_string(number),
               Label(descriptor),
               ClassName(descriptor),
               BookmarkName(descriptor.GetDataBookmarkType()),
               rows,
               matched.is_null() ? "-" : "master " + matched.dump()});
  }
  return table.Text();
}

std::vector<ChannelRows> SortedRows(const Document& document) {
  Host& host = document.GetHost();
  std::set<std::uint32_t> channels;
  for (const auto& row : host.Data().Rows())
    if (row->item) channels.insert(row->item->idata1_GetInfoRef()->GetChannelID());
  std::vector<ChannelRows> sorted;
  for (const std::uint32_t channelId : channels) {
    CIDataLst list;
    host.GetFileSet()->fset_GetSpecificChannelSortedIDataList(channelId, &list);
    sorted.push_back({channelId, {}});
    for (const CIData* item : list)
      if (const DataRow* row = host.Data().RowOf(item)) sorted.back().rows.push_back(row);
  }
  return sorted;
}

std::string BookmarkName(eDataBookmarkType type) {
  const auto* found = std::find_if(bookmarkNames.begin(),
                                   bookmarkNames.end(),
                                   [=](const auto& entry) { return entry.first == type; });
  return found == bookmarkNames.end() ? "type " + std::to_string(static_cast<std::uint32_t>(type))
                                      : found->second;
}

std::string MatchText(const Document& document, const DataRow& row) {
  if (!row.item) return "no item";
  const CRDataTypeDD& descriptor = *row.item->idata1_GetInfoRef();
  if (const DataRow* matched = document.GetHost().Data().RowOf(descriptor.GetMatchedCScan()))
    return "row " + std::to_string(matched->index);
  if (const DataRow* amplitude = document.GetHost().Data().RowOf(descriptor.GetMeridioAmpCscan()))
    return "row " + std::to_string(amplitude->index) + " (Meridio)";
  return "-";
}

}  // namespace utdata::program
