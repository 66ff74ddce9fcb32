// The data groups of an inspection as a page shows them: axes, scales, gates and values.
#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "utdata/inspection.h"

namespace utdata::program {

/// One view for each data group of A-scans with the C-scans of its channel as layers, and one for
/// each other C-scan.
struct ReportViews {
  nlohmann::ordered_json views = nlohmann::ordered_json::array();
  std::vector<std::string>
      packed;  ///< values as PackValues gives them; views name them by their place
  std::vector<std::string> missing;  ///< what a page does not show, and why, one line each

  /// Packs values behind those that are there. @return their place among them
  std::size_t Pack(const std::vector<std::uint16_t>& values, bool quiet);
  /// The views of A-scans, by the index of their data group.
  [[nodiscard]] std::map<std::size_t, std::size_t> OfAScans() const;
  /// Those of them that have the samples too.
  [[nodiscard]] std::map<std::size_t, std::size_t> WithSamples() const;
};

/// An axis as the page's scripts take it.
/// @param plainUnit what positions without a unit count
[[nodiscard]] nlohmann::ordered_json AxisJson(const AxisScale& axis, const char* plainUnit = "");

/// @param sampleLimit bytes of A-scans, two a sample, that a page may carry; of a group beyond it
///                    only the largest amplitude of each cell is carried
[[nodiscard]] ReportViews MakeViews(const Inspection& inspection,
                                    std::uint64_t sampleLimit,
                                    bool quiet);

}  // namespace utdata::program
