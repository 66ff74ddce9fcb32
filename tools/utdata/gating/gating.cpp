#include "gating/gating.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace utdata::program {
namespace {

template <class Sample>
std::vector<std::uint16_t> Amplitudes(const CGDataTypeFDD& ascans, const std::byte* table, GateWindow window) {
  const auto* samples = reinterpret_cast<const Sample*>(table);  // a mapped table is page-aligned
  std::vector<std::uint16_t> amplitudes(std::size_t{ascans.rowQuantity} * ascans.columnQuantity);
  for (std::uint16_t& amplitude : amplitudes) {
    for (std::uint32_t index = window.first; index < window.first + window.quantity; ++index)
      amplitude = std::max(amplitude, static_cast<std::uint16_t>(std::abs(int{samples[index]})));
    samples += ascans.sampleQuantity;
  }
  return amplitudes;
}

}  // namespace

GateWindow WindowOf(const CGDataTypeFDD& ascans, double start, double width) {
  const double all = ascans.sampleQuantity;
  const double first = std::round((start - ascans.sampleOffset) / ascans.sampleResolution);
  const double end = first + std::round(width / ascans.sampleResolution);
  const double cutFirst = std::clamp(first, 0.0, all);
  return {static_cast<std::uint32_t>(cutFirst), static_cast<std::uint32_t>(std::clamp(end, cutFirst, all) - cutFirst)};
}

std::vector<std::uint16_t> GateAmplitudes(const CGDataTypeFDD& ascans, const std::byte* samples, GateWindow window) {
  switch (ascans.GetDataType()) {
    case kvt_Int8:
      return Amplitudes<std::int8_t>(ascans, samples, window);
    case kvt_UInt8:
      return Amplitudes<std::uint8_t>(ascans, samples, window);
    case kvt_Int16:
      return Amplitudes<std::int16_t>(ascans, samples, window);
    case kvt_UInt16:
      return Amplitudes<std::uint16_t>(ascans, samples, window);
  }
  return {};
}

}  // namespace utdata::program
