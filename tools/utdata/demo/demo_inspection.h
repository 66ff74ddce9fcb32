// The inspection of the simulated weld scan, and a later change of it.
#pragma once

#include <cstdint>
#include <vector>

#include "demo/simulate.h"
#include "document/document.h"

namespace utdata::program {

/// Number of the gate that watches the plate between its surfaces.
inline constexpr std::uint32_t flawGate = 1;

/// Fills an empty document with the scan's A-scans and everything that was set for it: channel, gates, DAC curve, probe, patch,
/// specimen and weld.
/// @param samples stay the caller's and are used when the document is written
void FillInspection(Document& document, const WeldScan& scan, std::vector<std::int16_t>& samples);

/// Fills an empty document with changes of a loaded inspection: the flaw gate, lowered and shortened, and a C-scan of what it sees.
/// @param amplitudes receives the samples of the C-scan; used when the changes are written
void FillChanges(Document& changes, const Document& loaded, std::vector<std::uint16_t>& amplitudes);

}  // namespace utdata::program
