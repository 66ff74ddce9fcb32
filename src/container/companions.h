// The numbered files beside an inspection file: B.A01, B.A02, ... beside B with any extension. What
// they are called, and which of them belong.
#pragma once

#include <string>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "interfaces/os.h"
#include "utdata/fcont.h"

namespace utdata::container {

/// The companions of numbers 1, 2, ... without a gap, at most 98: asks for each name in turn.
[[nodiscard]] std::vector<std::wstring> ListCompanions(const std::wstring& path);

/// The companions of higher numbers than `number`, whatever is missing between them.
[[nodiscard]] std::vector<std::wstring> CompanionsBehind(const std::wstring& path, int number);

/// The companion of number `number` (1 to 99).
[[nodiscard]] std::wstring CompanionName(const std::wstring& path, int number);

/// Whether a file is called as a companion is: "weld.A01", whatever it holds.
[[nodiscard]] bool HasCompanionName(const os::PathParts& parts);

/// Whether a companion's name can be built from the path when one is written: a directory, a name
/// and the whole of at most 260 wide characters, a drive of 3, terminators included.
[[nodiscard]] bool CompanionNameFits(const std::wstring& path);

/// The file name of a path, in UTF-8.
[[nodiscard]] std::string ShownName(const std::wstring& path);

/// The inspection that a file belongs to: of a companion its base, of any other file itself.
[[nodiscard]] inline const SCFile::FileIdentity& InspectionOf(const SCFile::FileOrigin& origin) {
  return origin.IsCompanion() ? origin.base : origin.identity;
}

/// A companion that is to be read.
struct OwnCompanion {
  std::wstring path;
  SCFile::FileIdentity identity;
};

/// Which companions of a path belong to it.
struct Judgement {
  std::vector<OwnCompanion> own;  ///< in order; the last one may be a file that cannot be read
  std::vector<CompanionFault> faults;
};

/// Judges the companions of a path by what they say of themselves, without reading their groups.
/// @param base of the file at `path`, as is `state`
[[nodiscard]] Judgement JudgeCompanions(const std::wstring& path,
                                        const SCFile::FileOrigin& base,
                                        const SCFile::FileState& state);

/// What a new companion of a loaded descriptor is written on: the companion before `number` that
/// belongs to it, else its base; as it was loaded, or as it is where it was not. Fails when one of
/// them cannot be read: a companion that names the wrong file would never be read itself.
[[nodiscard]] int FindPredecessor(const CFContTypeFileDescr& loaded,
                                  int number,
                                  SCFile::FileState& predecessor);

}  // namespace utdata::container
