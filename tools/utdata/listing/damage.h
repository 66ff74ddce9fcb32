// The damaged samples that were met while an inspection was read.
#pragma once

#include <string>
#include <vector>

#include "utdata/inspection.h"

namespace utdata::program {

/// The damage that was found so far, a line each: "weld.fpd: data group 0: 12 cells from row 0,
/// column 3 to ...". Of very much damage the first lines, and how many more there are.
[[nodiscard]] std::vector<std::string> DamageLines(const Inspection& inspection);

/// Prints these as warnings on the standard error stream.
void WarnOfDamage(const Inspection& inspection);

}  // namespace utdata::program
