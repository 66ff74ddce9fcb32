#include "pictures/ticks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace utdata::program {
namespace {

struct Step {
  double value;
  int minorParts;
};

/// The smallest round step that divides `length` into at most `most` - 1 parts and a rest.
Step RoundStep(double length, int most) {
  const double atLeast = length / std::max(most - 1, 1);
  const double power = std::pow(10.0, std::floor(std::log10(atLeast)));
  for (const auto& [factor, parts] : {Step{1, 5}, Step{2, 4}, Step{5, 5}})
    if (factor * power >= atLeast * (1 - 1e-9)) return {factor * power, parts};
  return {10 * power, 5};
}

std::string Label(double value, double step) {
  std::array<char, 64> text{};
  const int decimals = static_cast<int>(std::max(0.0, -std::floor(std::log10(step) + 1e-9)));
  const double shown = std::abs(value) < step / 2 ? 0.0 : value;
  const bool plain = decimals <= 6 && std::abs(value) < 1e7;
  std::snprintf(text.data(), text.size(), plain ? "%.*f" : "%.*g", plain ? decimals : 6, shown);
  return text.data();
}

}  // namespace

Ticks RoundTicks(double from, double to, int most) {
  const double low = std::min(from, to);
  const double length = std::abs(to - from);
  const double largest = std::max(std::abs(from), std::abs(to));
  const double shortest = std::max(largest * 1e-12, 1e-300);
  Ticks ticks;
  if (!std::isfinite(from) || !std::isfinite(to) || !std::isfinite(length) || !(length > shortest))
    return ticks;
  const Step step = RoundStep(length, most);
  const double minorStep = step.value / step.minorParts;
  constexpr double tolerance = 1e-6;  // of a minor step, so that rounding loses no tick at an end
  const double first = std::ceil(low / minorStep - tolerance);
  const int count =
      static_cast<int>(std::floor((low + length) / minorStep + tolerance) - first) + 1;
  for (int index = 0; index < count; ++index) {
    const double number = first + index;
    const double value = number * minorStep;
    if (std::fmod(number, step.minorParts) == 0)
      ticks.major.push_back({value, Label(value, step.value)});
    else
      ticks.minor.push_back(value);
  }
  return ticks;
}

}  // namespace utdata::program
