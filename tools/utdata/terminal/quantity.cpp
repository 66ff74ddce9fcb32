#include "terminal/quantity.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "interfaces/kvtiff19_catalogue.h"

namespace utdata::program {
namespace {

template <class... Values>
std::string Format(const char* pattern, Values... values) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), pattern, values...);
  return text.data();
}

std::string WithSymbol(double value, std::string_view symbol) {
  const bool isApart = !symbol.empty() && symbol != "°";
  return Number(value) + (isApart ? " " : "") + std::string(symbol);
}

std::string InUnit(double stored, const SCFile::FieldUnit& unit) {
  return WithSymbol(stored / unit.scale, unit.shown);
}

}  // namespace

std::string Number(double value) { return Format("%.6g", value == 0 ? 0.0 : value); }
std::string Millimetres(double metres) { return OnAxis(metres, kvt_UnitMetre); }
std::string Microseconds(double seconds) { return OnAxis(seconds, kvt_UnitSecond); }
std::string Percent(double percent) { return OnAxis(percent, kvt_UnitPercent); }
std::string Decibels(double decibels) { return OnAxis(decibels, kvt_UnitDecibel); }
std::string Megahertz(double hertz) {
  return InUnit(hertz, SCFile::file_GroupTypeOf<CGProbeTypeDescr>().Find("frequency")->unit);
}

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
  return InUnit(value, SCFile::UnitOf(units));
}

std::string AxisText(const AxisScale& axis, double index) {
  return WithSymbol(axis.At(index), axis.symbol);
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
