// What pictures of a data group have in common: the axes as they are drawn, and the words for
// places and echoes.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "pictures/scale.h"
#include "utdata/datagroup.h"

namespace utdata::program {

enum class SampleAxis {
  Time,  ///< microseconds first, millimetres of half sound path at the other side
  Path   ///< millimetres of half sound path first, microseconds at the other side
};

[[nodiscard]] PlotAxis ColumnAxis(const DataGroup& group);
[[nodiscard]] PlotAxis RowAxis(const DataGroup& group);

/// Between which half paths, in millimetres, samples are shown.
struct PathLimits {
  std::optional<double> from;
  std::optional<double> to;

  [[nodiscard]] bool AreGiven() const { return from || to; }
  [[nodiscard]] double From() const {
    return from.value_or(-std::numeric_limits<double>::infinity());
  }
  [[nodiscard]] double To() const { return to.value_or(std::numeric_limits<double>::infinity()); }
};
/// The samples between limits. Throws Failure when these are given and there are none, or the sound
/// path is not known.
[[nodiscard]] IndexRange SamplesBetween(const DataGroup& group, const PathLimits& limits);
/// "Samples from 5 to 20 mm half path"
[[nodiscard]] std::string LimitsText(const PathLimits& limits);

/// Some cells of an axis alone.
[[nodiscard]] PlotAxis Part(const PlotAxis& axis, const IndexRange& cells);

/// The sample axis as it is read, and again in the other unit where there is one.
struct SampleAxes {
  PlotAxis first;
  std::optional<PlotAxis> again;
};
/// Throws Failure when the sound path is wanted and not known.
[[nodiscard]] SampleAxes SampleAxesOf(const DataGroup& group, SampleAxis wanted);

/// The group's label without blanks behind it.
[[nodiscard]] std::string Caption(const DataGroup& group);
/// "row 3 (30 mm)"; "row 3" alone where the axis has no unit.
[[nodiscard]] std::string RowText(const DataGroup& group, std::uint32_t row);
[[nodiscard]] std::string ColumnText(const DataGroup& group, std::uint32_t column);
/// "30 mm"; "row 3" where the axis has no unit.
[[nodiscard]] std::string RowPlace(const DataGroup& group, std::uint32_t row);
[[nodiscard]] std::string ColumnPlace(const DataGroup& group, std::uint32_t column);
/// "3.3 µs, 9.77 mm half path"
[[nodiscard]] std::string SamplePlace(const DataGroup& group, std::uint32_t sample);
/// ", 30.0 mm deep" as the unit of TOFD data prints it; nothing for other data, and before the
/// lateral wave.
[[nodiscard]] std::string TipDepthText(const DataGroup& group,
                                       std::uint32_t row,
                                       std::uint32_t column,
                                       std::uint32_t sample);
/// "25.6 % (-11.8 dB)"
[[nodiscard]] std::string AmplitudeText(const DataGroup& group, double percent);
/// " · soft gain × 3"; nothing for 1
[[nodiscard]] std::string GainText(std::uint32_t gain);

/// "12 cells are damaged: striped, without samples"
[[nodiscard]] std::string DamageNote(std::uint64_t cells);

/// Throws Failure unless the row or column that is wanted is one of the group's.
void CheckRow(const DataGroup& group, std::optional<std::uint32_t> row);
void CheckColumn(const DataGroup& group, std::optional<std::uint32_t> column);

}  // namespace utdata::program
