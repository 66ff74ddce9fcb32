// Data groups as rows of a listing: what each is, what it is matched with, and which master gathers
// it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "utdata/inspection.h"

namespace utdata::program {

/// A data group as an object, quantities in base units and as the file has them.
[[nodiscard]] nlohmann::ordered_json DataGroupJson(const DataGroup& group);
/// The same with the row of the C-scan that it is matched with, that of the amplitude C-scan that a
/// position C-scan of a Meridio gate belongs to, and the number of its master, null where there is
/// none.
[[nodiscard]] nlohmann::ordered_json DataRowJson(const DataGroup& group);

/// The masters, each with the rows of its elements and the number of the master it is matched with.
[[nodiscard]] nlohmann::ordered_json MastersJson(const Inspection& inspection);
/// The same for people; empty without masters.
[[nodiscard]] std::string MastersText(const Inspection& inspection);

/// "row 2", which the row's C-scan is matched with; "-" for none.
[[nodiscard]] std::string MatchText(const DataGroup& group);

/// The SHA-256 of a group's samples as stored, 64 hexadecimal digits; empty when it has none.
/// @param quiet shows no progress
[[nodiscard]] std::string SamplesHash(const DataGroup& group, bool quiet);

}  // namespace utdata::program
