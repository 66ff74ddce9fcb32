// Sections through A-scans, as plots: B-scans along a row, D-scans along a column.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "pictures/captions.h"
#include "pictures/plot.h"
#include "utdata/samples.h"

namespace utdata::program {

enum class Cut {
  AlongRow,    ///< B-scan: samples over the columns of one row
  AlongColumn  ///< D-scan: samples over the rows of one column
};

struct SectionOptions {
  Cut cut = Cut::AlongRow;
  std::optional<std::uint32_t> position;  ///< the row or column; none: that of the strongest cell
  std::optional<std::uint32_t> gain;  ///< soft gain, a whole factor from 1; none: as much as the
                                      ///< strongest echo of the section allows
  SampleAxis samples = SampleAxis::Time;
  PathLimits limits;
  bool straighten = false;  ///< moves each A-scan of TOFD data by its lateral wave
  bool quiet = false;       ///< shows no progress
};

/// What a section shows, beside the picture of it.
struct Section {
  ImagePlot plot;
  std::uint32_t row = 0;     ///< of the section, or of its strongest echo
  std::uint32_t column = 0;  ///< of the section, or of its strongest echo
  std::uint32_t sample = 0;  ///< of the section's strongest echo, where it is shown
  double percent = 0;        ///< of full scale, of that echo, negative below zero
  std::uint32_t gain = 1;
  std::uint64_t damagedCells = 0;  ///< striped in the picture
};

/// REQUIRES: the group is of class 1. Throws Error or Failure when its samples
/// cannot be shown, the row or column is not there, or a path is wanted and not known.
[[nodiscard]] Section MakeSection(const DataGroup& group, const SectionOptions& options);

}  // namespace utdata::program
