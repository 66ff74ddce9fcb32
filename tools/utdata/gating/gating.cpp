#include "gating/gating.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <type_traits>

#include "terminal/progress.h"
#include "utdata/lut.h"

namespace utdata::program {
namespace {

/// The largest absolute value; eight or sixteen samples an instruction, two at a time.
template <class Sample>
std::uint16_t LargestMagnitude(std::span<const Sample> samples) {
  using Lanes [[gnu::vector_size(16)]] = Sample;
  constexpr std::size_t lanes = sizeof(Lanes) / sizeof(Sample);
  Lanes highest[2] = {}, lowest[2] = {};
  std::size_t at = 0;
  for (; at + 2 * lanes <= samples.size(); at += 2 * lanes)
    for (std::size_t half = 0; half < 2; ++half) {
      Lanes values;
      std::memcpy(&values, samples.data() + at + half * lanes, sizeof(values));
      highest[half] = highest[half] < values ? values : highest[half];
      lowest[half] = values < lowest[half] ? values : lowest[half];
    }
  int high = 0, low = 0;
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    high = std::max({high, int{highest[0][lane]}, int{highest[1][lane]}});
    low = std::min({low, int{lowest[0][lane]}, int{lowest[1][lane]}});
  }
  for (; at < samples.size(); ++at) {
    high = std::max(high, int{samples[at]});
    low = std::min(low, int{samples[at]});
  }
  return static_cast<std::uint16_t>(std::max(high, -low));
}

/// Samples whose amplitude is their absolute value.
template <class Sample>
struct Plain {
  [[nodiscard]] static std::uint16_t Amplitude(Sample sample) {
    return static_cast<std::uint16_t>(std::abs(int{sample}));
  }
  [[nodiscard]] static std::uint16_t Largest(std::span<const Sample> samples) {
    return LargestMagnitude(samples);
  }
};

/// Samples that are corrected first: the amplitude of every raw sample in a table, so that no
/// correction costs more than another.
template <class Sample>
class Corrected {
 public:
  explicit Corrected(lut_enumConversion conversion)
      : m_amplitudes(std::size_t{std::numeric_limits<std::make_unsigned_t<Sample>>::max()} + 1) {
    for (std::size_t raw = 0; raw < m_amplitudes.size(); ++raw) {
      const std::int32_t value =
          CLookUpTable::CorrectAmplitudeData(static_cast<Sample>(raw), conversion);
      m_amplitudes[raw] = Plain<Sample>::Amplitude(static_cast<Sample>(value));
    }
  }
  [[nodiscard]] std::uint16_t Amplitude(Sample sample) const {
    return m_amplitudes[static_cast<std::make_unsigned_t<Sample>>(sample)];
  }
  [[nodiscard]] std::uint16_t Largest(std::span<const Sample> samples) const {
    std::uint16_t largest = 0;
    for (const Sample sample : samples) largest = std::max(largest, Amplitude(sample));
    return largest;
  }

 private:
  std::vector<std::uint16_t> m_amplitudes;
};

/// What is alike for all cells of a group.
struct Gating {
  const CellTable& cells;
  GateWindow window;
  double threshold;  ///< a hundred times the sample value, so that whole percents of whole values
                     ///< stay exact
  bool quiet;
};

template <class Sample, class Amplitudes>
GatedCells GateWith(const Gating& gating, const Amplitudes& amplitudes) {
  const std::size_t quantity = gating.cells.Cells();
  const std::size_t cellBytes = gating.cells.SamplesPerCell() * sizeof(Sample);
  GatedCells gated = {std::vector<std::uint16_t>(quantity), std::vector<std::uint16_t>(quantity)};
  Progress progress("gating", gating.quiet);
  const std::size_t cellsPerTell =
      1 + (std::size_t{1} << 20U) / std::max<std::size_t>(1, cellBytes);
  for (std::size_t cell = 0; cell < quantity; ++cell) {
    if (cell % cellsPerTell == 0) progress.At(cell * cellBytes, quantity * cellBytes);
    const auto* samples = reinterpret_cast<const Sample*>(gating.cells.Cell(cell));
    if (!samples) continue;
    const std::span<const Sample> seen(samples + gating.window.first, gating.window.quantity);
    const std::uint16_t largest = amplitudes.Largest(seen);
    gated.amplitudes[cell] = largest;
    if (100.0 * largest < gating.threshold) continue;
    const auto found = std::find_if(seen.begin(), seen.end(), [&](Sample sample) {
      return amplitudes.Amplitude(sample) == largest;
    });
    gated.positions[cell] =
        static_cast<std::uint16_t>(gating.window.first + (found - seen.begin()));
  }
  return gated;
}

template <class Sample>
GatedCells Gate(const Gating& gating, lut_enumConversion conversion) {
  constexpr std::uint32_t corrections = lut_SwapData | lut_RemoveSVcompression | lut_RemoveOffset;
  if ((conversion & corrections) == 0) return GateWith<Sample>(gating, Plain<Sample>());
  return GateWith<Sample>(gating, Corrected<Sample>(conversion));
}

}  // namespace

GateWindow WindowOf(const CGDataTypeFDD& ascans, double start, double width) {
  const double all = ascans.sampleQuantity;
  const double first = std::round((start - ascans.sampleOffset) / ascans.sampleResolution);
  const double end = first + std::round(width / ascans.sampleResolution);
  const double cutFirst = std::clamp(first, 0.0, all);
  const double cutEnd = std::clamp(end, cutFirst, all);
  return {static_cast<std::uint32_t>(cutFirst),
          static_cast<std::uint32_t>(cutEnd - cutFirst),
          cutFirst != first || cutEnd != end};
}

double FullScale(const CGDataTypeFDD& ascans) {
  return std::max(std::abs(double{ascans.dataMinimum}), std::abs(double{ascans.dataMaximum}));
}

GatedCells GateAScans(const CGDataTypeFDD& ascans,
                      const CellTable& cells,
                      GateWindow window,
                      double threshold,
                      bool quiet) {
  const CRDataTypeDD descriptor(&ascans, nullptr, nullptr);
  const lut_enumConversion conversion = CLookUpTable::GetConversionStyle(&descriptor);
  const Gating gating = {cells, window, threshold * FullScale(ascans), quiet};
  switch (ascans.GetDataType()) {
    case kvt_Int8:
      return Gate<std::int8_t>(gating, conversion);
    case kvt_UInt8:
      return Gate<std::uint8_t>(gating, conversion);
    case kvt_Int16:
      return Gate<std::int16_t>(gating, conversion);
    case kvt_UInt16:
      return Gate<std::uint16_t>(gating, conversion);
  }
  return {};
}

}  // namespace utdata::program
