// A file of results: whole under its name, or not there at all.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace utdata::program {

/// Fails when a file cannot be made at `path`: one of that name unless `replace` is true, or a folder that is missing. Cheap, for a
/// check before long work.
void CheckNewFile(const std::string& path, bool replace);

/// Writes the bytes beside `path` and gives them that name in one step; what stood there is replaced only when `replace` is true. An
/// interrupt leaves nothing behind. REQUIRES: an InterruptScope. Throws Failure.
void WriteNewFile(const std::string& path, std::span<const std::byte> bytes, bool replace);

}  // namespace utdata::program
