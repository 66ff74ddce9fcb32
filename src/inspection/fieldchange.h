// What two states of a group differ in.
#pragma once

#include <string>
#include <vector>

#include "utdata/edits.h"

namespace utdata {

/// Adds a change for each field that differs, its samples apart.
/// @param after of the same type
void AddChanges(const std::string& group,
                const Fields& before,
                const Fields& after,
                std::vector<FieldChange>& changes);

}  // namespace utdata
