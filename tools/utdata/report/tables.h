// What an inspection says of itself, its specimen, its set-up, its defects and its history, as
// tables.
#pragma once

#include <nlohmann/json.hpp>

#include "utdata/inspection.h"

namespace utdata::program {

/// [{"title", "rows": [[name, value], ...]}, ...], without tables that say nothing.
[[nodiscard]] nlohmann::ordered_json TablesJson(const Inspection& inspection);

/// {"columns": [name, ...], "rows": [[value, ...], ...]}; the meaning of a defect's eight values is
/// the host's.
[[nodiscard]] nlohmann::ordered_json DefectsJson(const Inspection& inspection);

/// [{"file", "write", "what", "added", "changes": [[field, before, after], ...]}] of HistoryOf.
[[nodiscard]] nlohmann::ordered_json HistoryJson(const Inspection& inspection);

}  // namespace utdata::program
