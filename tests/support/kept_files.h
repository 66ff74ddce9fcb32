// Where the tests' own folders stand, and whether they outlive their test: the files in them can so
// be given to another reader. With UTDATA_KEEP_FILES=DIR in the environment the folders are made in
// DIR, which exists, and stay.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace utdata::test {

inline std::filesystem::path ScratchRoot() {
  const char* const kept = std::getenv("UTDATA_KEEP_FILES");
  return kept ? std::filesystem::path(kept) : std::filesystem::temp_directory_path();
}

/// Removes a test's folder with all it holds, unless it is to be kept.
inline void RemoveScratch(const std::filesystem::path& folder) {
  std::error_code ignored;  // a file that stays behind is no fault of what is tested
  if (!std::getenv("UTDATA_KEEP_FILES")) std::filesystem::remove_all(folder, ignored);
}

}  // namespace utdata::test
