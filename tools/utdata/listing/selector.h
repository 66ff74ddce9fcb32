// Finds the data group that the user means.
#pragma once

#include <cstddef>
#include <string>

#include "utdata/inspection.h"

namespace utdata::program {

/// @param selector the index of a row of `info`, or field=value pairs of its JSON joined by commas
/// (class=2,channel=0,gate=1) Unless it matches exactly one data group, the list of them is printed
/// and Failure is thrown.
[[nodiscard]] DataGroup SelectGroup(const Inspection& inspection, const std::string& selector);

}  // namespace utdata::program
