// The C-scans of a gate as data groups: an amplitude and a position for each cell of its A-scans.
#pragma once

#include <cstdint>
#include <span>

#include "document/document.h"

namespace utdata::program {

/// What a gate saw in each cell, in row-major order.
struct GateReadings {
  std::span<const std::uint16_t> amplitudes;  ///< largest absolute value in the gate
  std::span<const std::uint16_t>
      positions;  ///< index in the A-scan of the first sample of that amplitude
};

/// Adds an amplitude and a position C-scan with the ids, names and scan axes of the A-scans. They
/// match each other, but for the position C-scans of gates 11, 21 and 31, which belong to the
/// amplitudes of the gate before. The position C-scan's data axis is the A-scans' sample axis: its
/// range is their quantity.
/// @param readings  one of each for every cell; used when the document is written
/// @param fullScale amplitude that is 100 %
void AddCScans(Document& document,
               const CGDataTypeFDD& ascans,
               const CGGateTypeDescr& gate,
               const GateReadings& readings,
               double fullScale);

}  // namespace utdata::program
