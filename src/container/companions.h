// The numbered files beside an inspection file: B.A01, B.A02, ... beside B with any extension.
#pragma once

#include <string>
#include <vector>

namespace utdata::container {

struct Companions {
  std::vector<std::wstring> names;  ///< numbers 1, 2, ... without a gap; at most 98
  bool gap = false;                 ///< the number after the next free one exists too
};

/// Lists the companions of a path by asking for each name in turn.
[[nodiscard]] Companions ListCompanions(const std::wstring& path);

/// The companion of number `number` (1 to 99).
[[nodiscard]] std::wstring CompanionName(const std::wstring& path, int number);

/// Whether a companion's name can be built from the path when one is written: a directory, a name
/// and the whole of at most 260 wide characters, a drive of 3, terminators included.
[[nodiscard]] bool CompanionNameFits(const std::wstring& path);

}  // namespace utdata::container
