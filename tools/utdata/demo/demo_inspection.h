// The inspection of the simulated weld scan, and a later change of it.
#pragma once

#include <cstdint>
#include <vector>

#include "demo/simulate.h"
#include "document/document.h"
#include "gating/gate_groups.h"

namespace utdata::program {

/// Number of the gate that watches the plate between its surfaces.
inline constexpr std::uint32_t flawGate = 1;
/// What it watches for in the end, percent of full scale.
inline constexpr double flawThreshold = 15;

/// Fills an empty document with the scan's A-scans and everything that was set for it: channel, gates, DAC curve, probe, patch,
/// specimen and weld.
/// @param samples stay the caller's and are used when the document is written
void FillInspection(Document& document, const WeldScan& scan, std::vector<std::int16_t>& samples);

/// Gates a loaded inspection anew: the flaw gate starts later and is lower.
/// @param loaded has to outlive the result
[[nodiscard]] GatedInspection RefineFlawGate(const Document& loaded, bool quiet);

}  // namespace utdata::program
