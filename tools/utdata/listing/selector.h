// Finds the group that the user means.
#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "utdata/inspection.h"

namespace utdata::program {

/// The index of the one group that a selector names. Unless there is exactly one, the list of
/// groups is printed and Failure is thrown.
/// @param selector an index, or name=value pairs joined by commas (class=2,channel=0,gate=1), which
///                 `rows` are searched for; a hyphen in a name counts as an underscore
/// @param what     what one of the groups is called: "gate"
/// @param list     the list that is printed
[[nodiscard]] std::size_t SelectRow(const std::vector<nlohmann::ordered_json>& rows,
                                    const std::string& selector,
                                    const std::string& file,
                                    const std::string& what,
                                    const std::function<std::string()>& list);

/// The data group of a row of `info`, by its index or by fields of its JSON.
[[nodiscard]] DataGroup SelectGroup(const Inspection& inspection, const std::string& selector);

/// The A-scans of all data groups that a selector names; elements of a master stand for it, so that
/// the beams of a channel need not be told apart. Throws as SelectGroup does when there are none.
[[nodiscard]] std::vector<DataGroup> SelectChannels(const Inspection& inspection,
                                                    const std::string& selector);

}  // namespace utdata::program
