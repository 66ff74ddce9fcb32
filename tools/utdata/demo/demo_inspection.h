// The inspection of the simulated weld scan, from its acquisition to a later change of it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "acquisition/acquisition_file.h"
#include "acquisition/record_scan.h"
#include "demo/simulate.h"
#include "document/document.h"
#include "gating/gate_groups.h"

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
                                         std::span<const std::int16_t> samples);

/// Fills an empty document with what was recorded and everything that was set for it: channel,
/// gates, DAC curve, probe, patch, specimen and weld.
/// @param recorded the samples stay in it and are used when the document is written
void FillInspection(Document& document,
                    const WeldScan& scan,
                    const AcquisitionFile& recorded,
                    const RecordedBlocks& blocks);

/// Gates a loaded inspection anew: the flaw gate starts later and is lower.
/// @param loaded has to outlive the result
[[nodiscard]] GatedInspection RefineFlawGate(const Document& loaded, bool quiet);

}  // namespace utdata::program
