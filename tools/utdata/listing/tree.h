// The groups and items of a file as they are stored.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "interfaces/kvtiff19.h"

namespace utdata::program {

/// Every group and item of an open file, in order: {"groups": [{"code", "name", "type", "items":
/// [...]}]}. A value has its code, its field's name where the group's type is known, its value
/// type, its count and its value; a block has its place instead.
/// @param full whole arrays and texts; else the first few elements
[[nodiscard]] nlohmann::ordered_json TreeJson(SCFile::FileHandle file, bool full);

/// Prints what TreeJson returns, item by item.
void PrintTreeJson(SCFile::FileHandle file, bool full);

/// The same for people: one line per group and item, indented by depth.
void PrintTreeText(SCFile::FileHandle file, bool full);

}  // namespace utdata::program
