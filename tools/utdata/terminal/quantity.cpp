#include "terminal/quantity.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace utdata::program {
namespace {

template <class... Values>
std::string Format(const char* pattern, Values... values) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), pattern, values...);
  return text.data();
}

}  // namespace

std::string Number(double value) { return Format("%.6g", value == 0 ? 0.0 : value); }
std::string Millimetres(double metres) { return Number(metres * 1e3) + " mm"; }
std::string Microseconds(double seconds) { return Number(seconds * 1e6) + " µs"; }
std::string Degrees(double degrees) { return Number(degrees) + "°"; }
std::string Percent(double percent) { return Number(percent) + " %"; }
std::string Decibels(double decibels) { return Number(decibels) + " dB"; }

std::string Bytes(std::uint64_t bytes) {
  if (bytes < 1000) return std::to_string(bytes) + " B";
  auto value = static_cast<double>(bytes);
  std::size_t step = 0;
  constexpr std::array<const char*, 6> multiples = {"B", "kB", "MB", "GB", "TB", "PB"};
  for (; value >= 999.95 && step + 1 < multiples.size(); ++step) value /= 1000;
  return Format("%.1f %s", value, multiples[step]);
}

std::string Duration(double seconds) {
  if (seconds < 10) return Format("%.2f s", seconds);
  if (seconds < 60) return Format("%.0f s", seconds);
  const double minutes = std::floor(seconds / 60);
  if (minutes < 60) return Format("%.0f min %.0f s", minutes, std::floor(seconds - 60 * minutes));
  return Format("%.0f h %.0f min", std::floor(minutes / 60), std::fmod(minutes, 60));
}

std::string OnAxis(double value, kvt_enumUnits units) {
  switch (units) {
    case kvt_UnitSecond:
      return Microseconds(value);
    case kvt_UnitMetre:
      return Millimetres(value);
    case kvt_UnitDegree:
      return Degrees(value);
    case kvt_UnitPercent:
      return Percent(value);
    case kvt_UnitDecibel:
      return Decibels(value);
    case kvt_UnitVolt:
      return Number(value) + " V";
    case kvt_UnitNone:
      break;
  }
  return Number(value);
}

std::string AxisText(const AxisScale& axis, double index) {
  const std::string number = Number(axis.At(index));
  return axis.symbol.empty() || axis.symbol == "°" ? number + axis.symbol
                                                   : number + " " + axis.symbol;
}

std::string SpacingText(const AxisScale& axis) {
  if (axis.quantity == 1 && axis.first == 0) return "1";
  return std::to_string(axis.quantity) + " × " + AxisText({axis.symbol, axis.step, 0, 1}, 0);
}

std::string RangeText(const AxisScale& axis) {
  if (axis.quantity == 0) return "none";
  return axis.quantity == 1 ? AxisText(axis, 0)
                            : Number(axis.At(0)) + " to " + AxisText(axis, axis.quantity - 1.0);
}

}  // namespace utdata::program
