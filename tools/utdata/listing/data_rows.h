// Data groups as items of their inspection: what each is matched with, which master gathers it, and
// the order of a channel.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <vector>

#include "document/document.h"

namespace utdata::program {

using DataRow = DataItems::Row;

/// The multi-channel masters of an inspection, numbered in their order.
class Masters {
 public:
  explicit Masters(const Document& document);
  [[nodiscard]] const std::vector<CIData*>& List() const { return m_list; }
  /// Null for an item that is none of them.
  [[nodiscard]] nlohmann::ordered_json NumberOf(const CIData* item) const;

 private:
  std::vector<CIData*> m_list;
  std::unordered_map<const CIData*, std::size_t> m_numbers;
};

/// A data group's record as an object, with what its item adds: its bookmark type, the row of the
/// C-scan that it is matched with, that of the amplitude C-scan that a position C-scan of a Meridio
/// gate belongs to, and the number of its master; null where there is none.
[[nodiscard]] nlohmann::ordered_json DataRowJson(const Document& document,
                                                 const DataRow& row,
                                                 const Masters& masters);

/// The masters, each with the rows of its elements and the number of the master it is matched with.
[[nodiscard]] nlohmann::ordered_json MastersJson(const Document& document);
/// The same for people; empty without masters.
[[nodiscard]] std::string MastersText(const Document& document);

struct ChannelRows {
  std::uint32_t channelId = 0;
  std::vector<const DataRow*> rows;
};
/// The rows of each channel that are items, by sub-channel and then by the display order of their
/// gates; channels by their ids.
[[nodiscard]] std::vector<ChannelRows> SortedRows(const Document& document);

/// "single", "coupling": what a bookmark type calls for.
[[nodiscard]] std::string BookmarkName(eDataBookmarkType type);

/// "row 2", which the row's C-scan is matched with; "-" for none.
[[nodiscard]] std::string MatchText(const Document& document, const DataRow& row);

}  // namespace utdata::program
