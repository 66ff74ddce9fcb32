// What an inspection says of itself, its specimen, its set-up and its defects, as tables.
#pragma once

#include <nlohmann/json.hpp>

#include "document/document.h"

namespace utdata::program {

/// [{"title", "rows": [[name, value], ...]}, ...], without tables that say nothing.
[[nodiscard]] nlohmann::ordered_json TablesJson(const Document& document);

/// {"columns": [name, ...], "rows": [[value, ...], ...]}; the meaning of a defect's eight values is
/// the host's.
[[nodiscard]] nlohmann::ordered_json DefectsJson(const Document& document);

}  // namespace utdata::program
