// Results on the standard output: tables of text.
#pragma once

#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace utdata::program {

/// Left-aligned columns, as wide as their widest cell; cells are UTF-8 and are made printable.
class TextTable {
 public:
  explicit TextTable(std::vector<std::string> header) { Add(std::move(header)); }
  /// REQUIRES: as many cells as the header has.
  void Add(std::vector<std::string> cells);
  /// The table with `indent` blanks before each line, the header first.
  [[nodiscard]] std::string Text(std::size_t indent = 0) const;

 private:
  std::vector<std::vector<std::string>> m_rows;
};

/// Writes a result; throws Failure when the stream does not take it (a full disk, a closed pipe).
void PrintResult(const std::string& text);

/// A number whose shortest decimal form is that of the 32-bit value: 0.001, not
/// 0.0010000000474974513.
[[nodiscard]] nlohmann::ordered_json JsonNumber(float value);

}  // namespace utdata::program
