// Saves what is whole of a damaged inspection file.
#pragma once

#include <string>
#include <vector>

#include "interfaces/export.h"

namespace utdata {

/// What became of a damaged file, a line each.
struct Rescued {
  std::vector<std::string> mended;  ///< damage that cost nothing
  /// What the new file has, though no checksum is left that says it is whole.
  std::vector<std::string> unchecked;
  std::vector<std::string> lost;  ///< what the new file does not have

  /// Whether the new file has everything, and all of it is known to be right.
  [[nodiscard]] bool IsComplete() const { return unchecked.empty() && lost.empty(); }
};

/// Writes what is whole of a damaged inspection file as a new inspection (SCFile::file_Rescue says
/// what that is). Companions are rescued one by one, and stay companions of their base where
/// their header is not lost; one behind a rescued one was written on another state of it, and is
/// reported as such. Throws when nothing is left, or the new file cannot be written.
/// @param replace an existing file
UTDATA_API Rescued Rescue(const std::string& damaged,
                          const std::string& output,
                          bool replace = false);

}  // namespace utdata
