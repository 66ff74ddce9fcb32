// The groups and items of a file as they are stored.
#pragma once

#include "interfaces/kvtiff19.h"

namespace utdata::program {

/// Prints every group and item of an open file, in order and item by item: {"groups": [{"code",
/// "name", "type", "items": [...]}]}. A value has its code, its field's name where the group's type
/// is known, its value type, its count and its value; a block has its place instead.
/// @param full whole arrays and texts; else the first few elements
void PrintTreeJson(SCFile::FileHandle file, bool full);

/// The same for people: one line per group and item, indented by depth.
void PrintTreeText(SCFile::FileHandle file, bool full);

}  // namespace utdata::program
