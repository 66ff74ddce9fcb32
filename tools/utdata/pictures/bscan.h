// B-scans: the samples of one row of A-scans, as a plot.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "document/host.h"
#include "interfaces/kvtiff19.h"
#include "pictures/plot.h"

namespace utdata::program {

enum class SampleAxis {
  Time,  ///< microseconds down, millimetres of half sound path at the right
  Path   ///< millimetres of half sound path down, as long as those across; microseconds at the right
};

struct BScanOptions {
  std::optional<std::uint32_t> row;  ///< none: that of the strongest cell
  std::optional<std::uint32_t>
      gain;  ///< soft gain, a whole factor from 1; none: as much as the strongest echo of the row allows
  SampleAxis samples = SampleAxis::Time;
  bool quiet = false;  ///< shows no progress
};

/// What a B-scan shows, beside the picture of it.
struct BScan {
  ImagePlot plot;
  std::uint32_t row = 0;
  std::uint32_t column = 0;  ///< of the row's strongest echo
  std::uint32_t sample = 0;  ///< of the row's strongest echo
  double percent = 0;        ///< of full scale, of that echo, negative below zero
  std::uint32_t gain = 1;
};

/// REQUIRES: the group is of class 1. Throws Failure, which begins with `name`, when its samples cannot be shown, the row is not
/// there, or a path is wanted and not known.
[[nodiscard]] BScan MakeBScan(Host& host,
                              const CGDataTypeFDD& group,
                              const std::string& name,
                              const BScanOptions& options);

}  // namespace utdata::program
