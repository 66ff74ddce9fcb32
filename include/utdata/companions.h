// The companions of an inspection file, as files: which stand beside it, what is wrong with them,
// and how those that lost their name get it back.
//
// A companion B.A01, B.A02, ... belongs to its base by the identities that both carry, and is found
// by its name. Whoever renames the base has to rename its companions. Texts and paths are UTF-8.
// What cannot be done is thrown as Error. Any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "interfaces/export.h"

namespace utdata {

/// A companion that is not what its name promises.
struct CompanionProblem {
  std::string path;        ///< of the file; of the first missing one where there is a gap
  std::string what;        ///< "is a companion of another inspection": goes on behind its name
  bool isRead = false;     ///< by Inspection::Open
  bool isForeign = false;  ///< it belongs to another inspection

  /// "weld.A01 is a companion of another inspection; it was not read"
  [[nodiscard]] UTDATA_API std::string Line() const;
};

struct CompanionCheck {
  std::vector<std::string> files;  ///< beside the base under its name, in order, read or not
  std::vector<CompanionProblem> problems;
};

/// Checks the companions of a file: numbers that are missing among those that exist, files of other
/// inspections, numbers that are not those of the names, files that were not written on the one
/// before them, and files of this inspection that stand under another base's name in its folder.
/// That the last companions are missing cannot be seen. Nothing of a file that is a companion
/// itself.
[[nodiscard]] UTDATA_API CompanionCheck CheckCompanions(const std::string& path);

/// "companion 3 of weld.fpd", or "companion 3 of an inspection that is not in its folder"; empty
/// for a file that is no companion, or cannot be read.
[[nodiscard]] UTDATA_API std::string DescribeCompanion(const std::string& path);

/// A file that gets another name in its folder.
struct Renaming {
  std::string from;
  std::string to;
};

/// What has to be renamed so that companions are found beside their base.
/// @param companions of that base; empty: those that stand in its folder under any name with the
///   extension of a companion
/// @return those whose names are not right yet. Throws when one belongs to another inspection or
///   stands in another folder, when two have the same number, and when a name is taken
[[nodiscard]] UTDATA_API std::vector<Renaming> PlanAdoption(
    const std::string& base,
    const std::vector<std::string>& companions = {});

/// Renames the files, each in one step that fails when the name is taken. Throws when one fails;
/// those before it then have their new names.
UTDATA_API void Rename(const std::vector<Renaming>& renamings);

}  // namespace utdata
