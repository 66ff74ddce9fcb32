// A gate and the C-scans of what it sees, as changes of a loaded inspection.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "document/document.h"
#include "gating/gating.h"

namespace utdata::program {

struct GateSettings {
  std::uint32_t channelId = 0;
  std::uint32_t gateId = 0;
  double start = 0;  ///< s
  double width = 0;  ///< s
  std::optional<double>
      threshold;  ///< percent of full scale; without one, every cell has a position
};

/// What the gate sees in one data group of A-scans.
struct GatedGroup {
  const DataItems::Row* ascans = nullptr;  ///< the loaded document's
  GateWindow window;
  double fullScale = 0;  ///< amplitude that is 100 %
  GatedCells cells;
};

/// What gating changes. The C-scans of `changes` have their samples in `groups`, which must outlive
/// the writing.
struct GatedInspection {
  Document changes;
  std::vector<GatedGroup> groups;
  CGGateTypeDescr gate;
  bool isNewGate = true;
};

/// Gates the A-scans of a channel, those of each sub-channel and patch: for each data group of
/// class 1, an amplitude and a position C-scan with its ids, names and scan axes. They match each
/// other, but for the position C-scans of gates 11, 21 and 31, which belong to the amplitudes of
/// the gate before. The position C-scan's data axis is the A-scans' sample axis: its range is their
/// quantity.
///
/// A gate with these ids that is there already gets start and width, the threshold as its levels if
/// there is one, and what else decides which echo counts: the largest of either half wave, counted
/// from the initial pulse.
///
/// Throws Failure when the channel has no A-scans, when one of its groups cannot be gated, and when
/// the gate has C-scans already, which would hide the new ones.
/// @param loaded has to outlive the result
/// @param quiet  shows no progress
[[nodiscard]] GatedInspection GateChannel(const Document& loaded,
                                          const GateSettings& settings,
                                          bool quiet);

/// The amplitude of a cell, percent of full scale.
[[nodiscard]] double PercentOf(const GatedGroup& group, std::size_t cell);

/// The strongest cell; the first of several.
[[nodiscard]] std::size_t StrongestCell(const GatedGroup& group);

}  // namespace utdata::program
