// What an inspection holds, as text and as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "utdata/inspection.h"

namespace utdata::program {

struct InfoContent {
  bool hash = false;  ///< adds the SHA-256 of each data group's samples
  bool sorted =
      false;  ///< data groups by channel, sub-channel and the display order of their gates
  bool history = false;  ///< adds each write and what it changed
  bool quiet = false;    ///< shows no progress
};

/// Path, files, group counts, one object per data group in the order of the file, and one per
/// multi-channel master; sorted, the rows of each channel too.
[[nodiscard]] nlohmann::ordered_json InfoJson(const Inspection& inspection,
                                              const InfoContent& content);

/// The same for people: a heading, two tables with one row per data group, what it is and what its
/// axes and values span, and one of the masters.
[[nodiscard]] std::string InfoText(const Inspection& inspection, const InfoContent& content);

/// The first of the tables, in the order of the file.
[[nodiscard]] std::string DataGroupTable(const Inspection& inspection);

}  // namespace utdata::program
