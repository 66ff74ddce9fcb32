// The rules of a group's bytes: checked once, when a file is opened, so that nothing read from it later can fail or lead astray.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/kvtiff19/format.h"
#include "platform/kvtiff19/node.h"

namespace utdata::kvtiff19 {

/// Checks the body of a group and of all groups inside it: every size against the bytes that are left, every padding for zeros,
/// every text for UTF-8, every block for lying in the data before `blockEnd`.
/// @param body        starts with the group's head, and holds nothing after its last item
/// @param itemOffsets receives where each item starts, from the first item on
/// @param problem     receives what is wrong
[[nodiscard]] bool CheckStructure(Bytes body,
                                  std::uint64_t blockEnd,
                                  std::vector<std::uint32_t>& itemOffsets,
                                  std::string& problem);

/// Checks the items of a committed group of a known type against that type's rules.
[[nodiscard]] bool CheckRules(const Node& group, std::string& problem);

}  // namespace utdata::kvtiff19
