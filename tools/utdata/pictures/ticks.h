// Where an axis is marked, and with what.
#pragma once

#include <string>
#include <vector>

namespace utdata::program {

struct Tick {
  double value = 0;
  std::string label;
};

struct Ticks {
  std::vector<Tick> major;    ///< at 1, 2 or 5 times a power of ten, rising
  std::vector<double> minor;  ///< between them, rising
};

/// Round values between two ends, in either order.
/// @param most labelled ones at the most; at least 2
/// @return nothing when the ends are equal, not finite, or too close for the precision of a number
[[nodiscard]] Ticks RoundTicks(double from, double to, int most);

}  // namespace utdata::program
