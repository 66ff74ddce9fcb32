// Whether the depths of time-of-flight diffraction data can be computed: an item has a probe
// separation and a radius also where nobody gave one.
#pragma once

#include "src/inspection/state.h"

namespace utdata {

/// Whether somebody gave the separation of the probes. Loading puts another in place of none.
[[nodiscard]] bool IsSeparationKnown(const DataRow& row);

/// What stands between TOFD data with a sound path and their depths, as a failure says it; null:
/// nothing.
[[nodiscard]] const char* TofdObstacle(const DataGroup& group);

/// One-way path of the lateral wave, metres: half the straight way from probe to probe. No
/// diffracted echo comes before it.
[[nodiscard]] double LateralPath(const CIData& item);

}  // namespace utdata
