// The rules of a group's bytes: checked once, when a file is opened, so that later reading needs no
// checks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/kvtiff19/format.h"
#include "platform/kvtiff19/node.h"

namespace utdata::kvtiff19 {

/// What CheckStructure finds.
struct StructureFindings {
  std::vector<std::uint32_t>
      itemOffsets;  ///< where each item of the group starts, from the first item on
  std::vector<const std::byte*> misfits;  ///< first items of the groups that do not fit their type
};

/// Checks the body of a group and of all groups inside it: every size against the bytes that are
/// left, every padding for zeros, every text for UTF-8, every block for lying in the data before
/// `blockEnd`. Also finds the groups whose items do not fit their type.
/// @param body     starts with the group's head, and holds nothing after its last item
/// @param typeCode of the group
/// @param findings receives what was found on the way, of a sound body all of it
/// @return null, or what is wrong
[[nodiscard]] const char* CheckStructure(Bytes body,
                                         std::uint16_t typeCode,
                                         std::uint64_t blockEnd,
                                         StructureFindings& findings);

/// Checks the items of a committed group of a known type against that type's rules.
[[nodiscard]] bool CheckRules(const Node& group, std::string& problem);

}  // namespace utdata::kvtiff19
