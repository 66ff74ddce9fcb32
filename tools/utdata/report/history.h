// What happened to an inspection since it was first written, field by field.
#pragma once

#include <nlohmann/json.hpp>

#include "utdata/inspection.h"

namespace utdata::program {

/// The modifications in the files of an inspection, in the order in which they are applied:
/// [{"file", "write", "what", "changes": [[field, before, after], ...]}]. `write` counts the writes
/// of a file from 1; a group that came later has no changes. Values are in the user's units where
/// fields have one, else as they are stored. Throws Failure when a file cannot be read.
[[nodiscard]] nlohmann::ordered_json HistoryJson(const Inspection& inspection);

}  // namespace utdata::program
