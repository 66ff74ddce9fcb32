// Finds the data group that the user means.
#pragma once

#include <cstddef>
#include <string>

#include "document/document.h"

namespace utdata::program {

/// A data group and its place in the list that `info` shows.
struct SelectedGroup {
  const CGDataTypeFDD* group;
  std::size_t index;
};

/// @param selector the index of a row of `info`, or field=value pairs of its JSON joined by commas
/// (class=2,channel=0,gate=1) Unless it matches exactly one data group, the list of them is printed
/// and Failure is thrown.
[[nodiscard]] SelectedGroup SelectGroup(const Document& document, const std::string& selector);

}  // namespace utdata::program
