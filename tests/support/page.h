// The project's pages, for tests that compare them with what the code does.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace utdata::test {

/// The text of a page of docs/; empty when it cannot be read.
[[nodiscard]] std::string ReadPage(const std::string& name);

/// The file whose bytes a page shows in hexadecimal: rows of an offset and up to 16 bytes in pairs,
/// with two blanks before what is said of them. What is left out is zero; slot B is slot A's copy.
[[nodiscard]] std::vector<std::byte> FileOfDump(const std::string& page);

/// The cells of the first row of a table that begins with `first`, without the blanks around them.
[[nodiscard]] std::vector<std::string> TableRow(const std::string& page, const std::string& first);

}  // namespace utdata::test
