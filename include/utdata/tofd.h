// The calibration of time-of-flight diffraction data on the part that they were recorded on.
//
// Wedges, cables and electronics delay every echo by the same time. What it is follows from the
// lateral wave, which runs straight from probe to probe: with separation S and sound speed c it
// takes S / c in the part, and the rest is the correction by which the sample offset is too large.
// Depths count from the lateral wave, and near it a small error of time is a large one of depth:
// that is why it sets the offset.
//
// With a known thickness T the back wall is one echo more than that needs, and the check.
// Corrected, its half path is p = S / 2 + c Δt / 2, where Δt is the time from lateral wave to back
// wall, and it lies √(p² - (S / 2)²) deep: the right triangle of half path, half separation and
// depth, as in ISO 16828. How far that is from T says how far separation, sound speed or thickness
// are off. With Δp = c Δt / 2 both echoes would fit a separation of (T² - Δp²) / Δp, or a sound
// speed of 2 (√((S / 2)² + T²) - S / 2) / Δt. Of a round part the chord between the probes takes
// the place of S, through the unit of the data group's item.
//
// One thread at a time with what else changes the inspection. What cannot be done is thrown as
// utdata::Error, and changes nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "utdata/edits.h"

namespace utdata {

/// Times of two echoes on the axis of the samples (DataGroup::Times), µs.
struct TofdEchoTimes {
  double lateralWave = 0;
  double backWall = 0;
};

struct TofdCalibrationOptions {
  /// A-scans in which the echoes are looked for: one, those of a row or column, or all, of which up
  /// to a thousand, evenly spread, are read.
  std::optional<std::uint32_t> row = {};
  std::optional<std::uint32_t> column = {};
  std::optional<TofdEchoTimes> times = {};  ///< as somebody has read them; none: they are found
};

/// What the echoes say. Nothing is changed by it.
struct TofdCalibration {
  TofdEchoTimes times;                      ///< as recorded, found ones between samples
  double lateralWave = 0;                   ///< sample index, between samples
  double backWall = 0;                      ///< the same
  std::uint64_t searched = 0;               ///< A-scans; 0: the times were given
  std::uint64_t ascans = 0;                 ///< of these, those in which both echoes were found
  double correction = 0;                    ///< s, by which the sample offset becomes smaller
  double thickness = 0;                     ///< of the part as the data group has it, mm
  double backWallDepth = 0;                 ///< where the back wall lies once that is corrected, mm
  std::optional<double> fittingSeparation;  ///< with which it lies at the thickness, mm; flat parts
  std::optional<double> fittingSoundSpeed;  ///< the same, m/s
  bool isNeeded = true;  ///< false: the correction is below a twentieth of a sample

  [[nodiscard]] double Error() const { return backWallDepth - thickness; }  ///< mm
};

/// Finds lateral wave and back wall in the A-scans of a data group, or takes their times.
///
/// An echo is placed by its largest half wave, between samples by a parabola through three of them.
/// The lateral wave is the first echo above the noise that has a back wall echo behind it: one of
/// the opposite phase, within 15 % of the time that thickness, separation and sound speed say. Of
/// several A-scans the median counts.
///
/// Throws for data without a TofdScale (WhyNoTofdScale) or A-scans, where the thickness is not
/// known, where times are not within the samples or the back wall's is not behind the lateral
/// wave's, for rectified data unless the times are given, and where the echoes are not found in at
/// least half of the A-scans.
[[nodiscard]] UTDATA_API TofdCalibration CalibrateTofd(const DataGroup& group,
                                                       const TofdCalibrationOptions& options = {});

/// Makes the sample offset of a data group smaller by the correction, through its item
/// (CIData::idata3_ModifyTOFDParam). Position C-scans of the same beam and patch that had its
/// offset take the new one. Gates stay at their times. Throws for a group that the file set does
/// not hold.
/// @return what has changed, the data group first; empty when the correction is not needed
std::vector<FieldChange> UTDATA_API CorrectSampleOffset(const DataGroup& group,
                                                        const TofdCalibration& calibration);

}  // namespace utdata
