// What opening an inspection says of its companions.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "utdata/companions.h"
#include "utdata/fcont.h"

namespace utdata {

[[nodiscard]] CompanionProblem ProblemOf(const CompanionFault& fault);

/// The companion that is due next, where it stands in the folder of `path` under the name of a file
/// that is not there, or is another inspection: what a renamed base leaves behind.
/// @param found how many companions were found under the right name
[[nodiscard]] std::vector<CompanionProblem> FindLostCompanions(const std::wstring& path,
                                                               const SCFile::FileIdentity& identity,
                                                               std::size_t found);

}  // namespace utdata
