// The pictures of the demonstration.
#pragma once

#include <string>

#include "demo/butt_weld.h"
#include "demo/simulate.h"
#include "utdata/inspection.h"

namespace utdata::program {

/// The B-scan through the middle of the crack, bright enough for the echo of its tip. REQUIRES: an
/// InterruptScope.
/// @param inspection the reloaded one, whose first data group is the scan
/// @return what is to be seen, in a few words
std::string DrawCrack(const Inspection& inspection,
                      const WeldScan& scan,
                      const std::string& path,
                      bool replace);

/// The C-scan of what the flaw gate sees: the amplitudes from above. REQUIRES: an InterruptScope.
/// @return what is to be seen, in a few words
std::string DrawFlaws(const Inspection& inspection,
                      const WeldScan& scan,
                      const std::string& path,
                      bool replace);

/// The sector scan from the left through the middle of the crack at the root. REQUIRES: an
/// InterruptScope.
/// @param inspection the reloaded one
/// @return what is to be seen, in a few words
std::string DrawSector(const Inspection& inspection,
                       const ButtWeld& weld,
                       const std::string& path,
                       bool replace);

}  // namespace utdata::program
