// The words of an `edit` command line: which group, and what changes.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "editing/group_ids.h"

namespace utdata::program {

struct EditWords {
  std::string selector;
  std::vector<std::pair<std::string, std::string>> values;
};

[[nodiscard]] CLI::ValidationError WrongUsage(const std::string& about, const std::string& why);

/// Throws a usage error.
/// @param needsSelector of a type that an inspection has several groups of; the selector of others
///   is "0" when it is not given
[[nodiscard]] EditWords SplitWords(const std::vector<std::string>& words, bool needsSelector);

/// Whether a selector is an index, which is then given out.
[[nodiscard]] bool IsIndex(const std::string& selector, std::size_t& index);

/// Whether a selector is name=value pairs, joined by commas, of these ids. A hyphen in a name
/// counts as an underscore.
[[nodiscard]] bool HasIds(const IdPairs& ids, const std::string& selector);

}  // namespace utdata::program
