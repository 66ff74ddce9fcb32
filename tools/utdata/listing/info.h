// What an inspection holds, as text and as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "document/document.h"

namespace utdata::program {

struct InfoContent {
  bool hash = false;   ///< adds the SHA-256 of each data group's samples
  bool quiet = false;  ///< shows no progress
};

/// Path, files, group counts, and one object per data group.
[[nodiscard]] nlohmann::ordered_json InfoJson(const Document& document, const InfoContent& content);

/// The same for people: a heading, and two tables with one row per data group: what it is, and what its axes and values span.
[[nodiscard]] std::string InfoText(const Document& document, const InfoContent& content);

/// The first of the two tables.
[[nodiscard]] std::string DataGroupTable(const Document& document);

}  // namespace utdata::program
