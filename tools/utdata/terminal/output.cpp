#include "terminal/output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>

#include "terminal/failure.h"
#include "terminal/text.h"
#include "utdata/arrays.h"

namespace utdata::program {

void TextTable::Add(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = Printable(cell);
  m_rows.push_back(std::move(cells));
}

std::string TextTable::Text(std::size_t indent) const {
  std::vector<std::size_t> widths(m_rows.front().size());
  for (const auto& row : m_rows)
    for (std::size_t column = 0; column < row.size(); ++column)
      widths[column] = std::max(widths[column], DisplayWidth(row[column]));
  std::string text;
  for (const auto& row : m_rows) {
    std::string line(indent, ' ');
    for (std::size_t column = 0; column < row.size(); ++column)
      line += row[column] + std::string(widths[column] - DisplayWidth(row[column]) + 2, ' ');
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

void PrintResult(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
    throw Failure("standard output", "cannot be written", std::strerror(errno));
}

nlohmann::ordered_json JsonNumber(float value) { return Shortest(value); }

}  // namespace utdata::program
