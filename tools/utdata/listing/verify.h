// The check of a whole file, and what is said about it.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace utdata::program {

/// What was found about one file.
struct Verdict {
  std::string path;
  int status = 0;  ///< SCFile::Status of the first problem; 0 when the file is clean
  std::vector<std::string> problems;  ///< one line each; empty when the file is clean
  std::uint64_t commits = 0;
  std::uint64_t size = 0;  ///< bytes
  std::uint64_t tail = 0;  ///< of these, behind the last commit
  std::string role;        ///< "companion 1 of weld.fpd"; empty for a file that is none
  std::string misplaced;   ///< the word for a companion whose bytes may be right; else empty

  [[nodiscard]] bool IsClean() const { return status == 0; }
  /// One or two words for the status: "clean", "damaged", ...
  [[nodiscard]] std::string Word() const;
  /// One line without its end: "weld.fpd: clean, 2 commits, 1.3 MB".
  [[nodiscard]] std::string Line() const;
  [[nodiscard]] nlohmann::ordered_json Json() const;
};

/// Checks every byte of a file, sample blocks included, and then those of its companions, also of
/// such as it is not read with; one that is missing gets a verdict too.
/// @param quiet shows no progress
[[nodiscard]] std::vector<Verdict> Verify(const std::string& path, bool quiet);

}  // namespace utdata::program
