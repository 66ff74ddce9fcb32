// What happened to an inspection since it was first written, write by write.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "utdata/inspection.h"

namespace utdata::program {

/// [{"file", "write", "when", "microseconds", "program", "version", "author", "reason", "changes":
/// [{"group", "added", "fields": [{"field", "before", "after"}, ...]}, ...]}, ...] of
/// utdata::HistoryOf; "when" is null where it is not known. `file` has no folder.
[[nodiscard]] nlohmann::ordered_json HistoryJson(const Inspection& inspection);

/// The same for people: a line for each write, and under it one for each change.
[[nodiscard]] std::string HistoryText(const Inspection& inspection);

/// "part thickness" of a field "partThickness".
[[nodiscard]] std::string SpokenField(std::string_view key);

}  // namespace utdata::program
