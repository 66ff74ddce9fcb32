// Gates the A-scans of a channel: a gate, and an amplitude and a position C-scan of what it sees.
//
// The gate covers round(width / sample step) samples from sample round((start - sample offset) /
// sample step). A cell's amplitude is the largest in it in percent of full scale, each half wave by
// its own slope, on the positive scale: of a range from -128 to 127 both ends are 127. Its position
// is the index of the sample where that first occurs, 0 where the amplitude is below the threshold.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "utdata/inspection.h"

namespace utdata {

struct GateSettings {
  std::uint32_t channel = 0;
  std::uint32_t gate = 0;
  double start = 0;  ///< s, on the sample axis
  double width = 0;  ///< s
  /// Percent of full scale. None: the gate's level stays, and every amplitude has a position.
  std::optional<double> threshold;
};

/// The samples that a gate covers in A-scans.
struct GateWindow {
  std::uint32_t first = 0;
  std::uint32_t quantity = 0;
  bool isCut = false;  ///< the gate reaches beyond the A-scans
};

/// The position of a cell where nothing reached the gate's level, or that has no samples.
inline constexpr std::uint16_t noEchoPosition = 0;

/// What a gate sees in each cell, in row-major order; both 0 in a cell without samples.
struct GateReadings {
  std::vector<std::uint16_t> amplitudes;  ///< sample values on the positive scale
  std::vector<std::uint16_t> positions;   ///< sample indices
  std::vector<std::uint64_t> damaged;     ///< the cells with damaged samples, where accepted
};

/// What a gate saw in one data group of A-scans.
struct GatedData {
  DataGroup ascans;
  DataGroup amplitudes;  ///< the C-scans, added to the inspection
  DataGroup positions;
  GateWindow window;
  std::uint64_t strongest = 0;  ///< the first of several cells
  /// Cells of the A-scans whose samples are damaged, where that is accepted. They have no value in
  /// the C-scans, which are then stored with an offset for each cell.
  std::uint64_t damaged = 0;
};

struct GateResult {
  CIGate* gate = nullptr;
  bool isNew = false;
  std::vector<GatedData> data;
};

/// Gates every data group with A-scans of the channel. Adds the gate, or changes the one that is
/// there, and adds the C-scans; nothing is saved. Throws, and changes nothing, when the channel has
/// no A-scans, the gate covers no sample, has C-scans already, two groups of A-scans differ in
/// neither patch nor sub-channel, or samples are damaged and that is not accepted.
UTDATA_API GateResult Gate(Inspection& inspection,
                           const GateSettings& settings,
                           const Watch& watch = {});

/// What a gate would see in A-scans that stand cell after cell in memory, as an instrument's own
/// gate does.
/// @param record  their layout, type and range
/// @param samples `columns` x `rows` A-scans
[[nodiscard]] UTDATA_API GateReadings GateSamples(const CGDataTypeFDD& record,
                                                  std::span<const std::byte> samples,
                                                  const GateSettings& settings);

/// The records of the C-scans that a gate makes of A-scans: one unsigned 16-bit value for each of
/// their cells, on the positive scale of the A-scans' amplitudes, or as indices of their samples.
[[nodiscard]] UTDATA_API CGDataTypeFDD AmplitudeRecord(const CGDataTypeFDD& ascans,
                                                       const CGGateTypeDescr& gate);
[[nodiscard]] UTDATA_API CGDataTypeFDD PositionRecord(const CGDataTypeFDD& ascans,
                                                      const CGGateTypeDescr& gate);

}  // namespace utdata
