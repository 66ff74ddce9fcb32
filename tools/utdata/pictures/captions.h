// What pictures of a data group have in common: the axes as they are drawn, and the words for
// places and echoes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "interfaces/kvtiff19.h"
#include "pictures/scale.h"
#include "samples/group_axes.h"

namespace utdata::program {

enum class SampleAxis {
  Time,  ///< microseconds first, millimetres of half sound path at the other side
  Path   ///< millimetres of half sound path first, microseconds at the other side
};

[[nodiscard]] PlotAxis ColumnAxis(const GroupAxes& axes);
[[nodiscard]] PlotAxis RowAxis(const GroupAxes& axes);

/// The sample axis as it is read, and again in the other unit where there is one.
struct SampleAxes {
  PlotAxis first;
  std::optional<PlotAxis> again;
};
/// Throws Failure, which begins with `name`, when the sound path is wanted and not known.
[[nodiscard]] SampleAxes SampleAxesOf(const CGDataTypeFDD& group,
                                      const GroupAxes& axes,
                                      SampleAxis wanted,
                                      const std::string& name);

/// The group's label without blanks behind it.
[[nodiscard]] std::string Caption(const CGDataTypeFDD& group);
/// "row 3 (30 mm)"; "row 3" alone where the axis has no unit.
[[nodiscard]] std::string RowText(const GroupAxes& axes, std::uint32_t row);
[[nodiscard]] std::string ColumnText(const GroupAxes& axes, std::uint32_t column);
/// "30 mm"; "row 3" where the axis has no unit.
[[nodiscard]] std::string RowPlace(const GroupAxes& axes, std::uint32_t row);
[[nodiscard]] std::string ColumnPlace(const GroupAxes& axes, std::uint32_t column);
/// "3.3 µs, 9.77 mm half path"
[[nodiscard]] std::string SamplePlace(const GroupAxes& axes, std::uint32_t sample);
/// "25.6 % (-11.8 dB)"
[[nodiscard]] std::string AmplitudeText(const GroupAxes& axes, double percent);
/// " · soft gain × 3"; nothing for 1
[[nodiscard]] std::string GainText(std::uint32_t gain);

/// Throws Failure, which begins with `name`, unless the row or column that is wanted is one of the
/// group's.
void CheckRow(const CGDataTypeFDD& group,
              std::optional<std::uint32_t> row,
              const std::string& name);
void CheckColumn(const CGDataTypeFDD& group,
                 std::optional<std::uint32_t> column,
                 const std::string& name);

}  // namespace utdata::program
