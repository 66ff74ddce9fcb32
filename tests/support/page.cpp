#include "tests/support/page.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace utdata::test {

std::string ReadPage(const std::string& name) {
  std::ifstream file(std::filesystem::path(UTDATA_SOURCE_DIR) / "docs" / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::byte> FileOfDump(const std::string& page) {
  constexpr std::size_t slotA = 0x1000, slotB = 0x2000, slotSize = 64;
  static const std::regex row(
      "^([0-9a-f]{8}): ((?:[0-9a-f]{2}){1,2}(?: (?:[0-9a-f]{2}){1,2})*).*$");
  std::vector<std::byte> file;
  std::istringstream lines(page);
  std::smatch parts;
  for (std::string line; std::getline(lines, line);) {
    if (!std::regex_match(line, parts, row)) continue;
    std::string digits = parts[2];
    std::erase(digits, ' ');
    const std::size_t at = std::stoul(parts[1], nullptr, 16);
    file.resize(std::max(file.size(), at + digits.size() / 2));
    for (std::size_t byte = 0; byte < digits.size() / 2; ++byte)
      file[at + byte] = static_cast<std::byte>(std::stoul(digits.substr(2 * byte, 2), nullptr, 16));
  }
  if (file.size() >= slotB + slotSize)
    std::copy_n(file.begin() + slotA, slotSize, file.begin() + slotB);
  return file;
}

std::vector<std::string> TableRow(const std::string& page, const std::string& first) {
  const std::size_t at = page.find("\n| " + first + " |");
  std::vector<std::string> cells;
  if (at == page.npos) return cells;
  std::istringstream row(page.substr(at + 2, page.find('\n', at + 1) - at - 2));
  for (std::string cell; std::getline(row, cell, '|');) {
    cell.erase(0, cell.find_first_not_of(' '));
    cell.erase(cell.find_last_not_of(' ') + 1);
    cells.push_back(cell);
  }
  return cells;
}

}  // namespace utdata::test
