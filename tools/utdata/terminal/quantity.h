// Physical quantities as the program shows them: base units in, the field's everyday units out.
#pragma once

#include <cstdint>
#include <string>

#include "interfaces/kvtiff19.h"
#include "utdata/datagroup.h"

namespace utdata::program {

/// A number with up to six significant digits and no trailing zeros.
[[nodiscard]] std::string Number(double value);

[[nodiscard]] std::string Millimetres(double metres);    ///< "12.5 mm"
[[nodiscard]] std::string Microseconds(double seconds);  ///< "6.76 µs"
[[nodiscard]] std::string Percent(double percent);       ///< "80 %"
[[nodiscard]] std::string Decibels(double decibels);     ///< "38 dB"
[[nodiscard]] std::string Megahertz(double hertz);       ///< "5 MHz"
[[nodiscard]] std::string Bytes(std::uint64_t bytes);    ///< "1.3 MB", decimal multiples
[[nodiscard]] std::string Duration(double seconds);      ///< "0.12 s", "3 min 20 s"

/// A value on an axis whose base unit is `units`.
[[nodiscard]] std::string OnAxis(double value, kvt_enumUnits units);

/// A value on an axis of a data group, by its index: "12.5 mm".
[[nodiscard]] std::string AxisText(const AxisScale& axis, double index);
/// "256 × 1 mm"; "1" for one index at 0.
[[nodiscard]] std::string SpacingText(const AxisScale& axis);
/// "0 to 255 mm"
[[nodiscard]] std::string RangeText(const AxisScale& axis);

}  // namespace utdata::program
