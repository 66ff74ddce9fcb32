// Goes the whole way from a plan's files to samples and back to files, and aborts where what must
// hold does not.
#pragma once

#include "tests/fuzz/inspection/plan.h"

namespace utdata::fuzz {

/// Files that are right are verified and open; what is saved comes back as it was, edits included,
/// and is listed in the history; damage is refused or reported, and what is rescued of it opens.
void Check(const Plan& plan);

}  // namespace utdata::fuzz
