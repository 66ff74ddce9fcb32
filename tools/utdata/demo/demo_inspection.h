// The inspection of the simulated weld scan, from its acquisition to a later change of it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "demo/simulate.h"
#include "utdata/gating.h"
#include "utdata/recording.h"

namespace utdata::program {

/// Number of the gate that watches the plate between its surfaces.
inline constexpr std::uint32_t flawGate = 1;
/// What it watches for in the end, percent of full scale.
inline constexpr double flawThreshold = 15;

/// Number of the gate that the instrument itself watches: the back wall's.
inline constexpr std::uint32_t wallGate = 2;

/// Records the scan as an instrument does: its A-scans, and what the back wall's gate saw of them.
/// @param path    of the acquisition file, which must not exist yet
/// @param samples of the A-scans, cells in row-major order
[[nodiscard]] RecordedBlocks AcquireScan(const std::string& path,
                                         const WeldScan& scan,
                                         std::span<const std::int16_t> samples,
                                         const Watch& watch);

/// Fills a new inspection with what was recorded and everything that was set for it: channel,
/// gates, DAC curve, probe, patch, specimen and weld.
/// @param recorded must live as long as the inspection, which refers to its samples
void FillInspection(Inspection& inspection,
                    const WeldScan& scan,
                    Recording& recorded,
                    const RecordedBlocks& blocks);

/// Gates an inspection anew: the flaw gate starts later and is lower.
[[nodiscard]] GateResult RefineFlawGate(Inspection& inspection, const Watch& watch);

}  // namespace utdata::program
