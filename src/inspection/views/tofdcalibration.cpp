#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "src/inspection/tofdpair.h"
#include "src/inspection/views/sectorbeams.h"
#include "utdata/failure.h"
#include "utdata/samples.h"
#include "utdata/tofd.h"
#include "utdata/views.h"

namespace utdata {
namespace {

constexpr double gapTolerance = 0.15;  // of the time from lateral wave to back wall

[[noreturn]] void RefuseCalibration(const DataGroup& group,
                                    const std::string& why,
                                    const std::string& remedy = {}) {
  throw Error(group.Name(), "cannot be calibrated", why, remedy);
}

/// Samples of one sign next to each other.
struct HalfWave {
  double at = 0;      ///< sample index of its crest, between samples
  double height = 0;  ///< of the crest, without sign
  bool isPositive = false;
};

template <class Value>
double MedianOf(std::vector<Value> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return static_cast<double>(*middle);
}

/// Where a crest lies that covers the samples from `first` to `last`: the middle of a clipped one,
/// else the top of the parabola through the sample and its neighbours.
double CrestOf(const std::vector<double>& wave, std::size_t first, std::size_t last) {
  const double middle = static_cast<double>(first + last) / 2;
  if (first != last || first == 0 || last + 1 == wave.size()) return middle;
  const double before = wave[first - 1], top = wave[first], behind = wave[first + 1];
  const double bend = before - 2 * top + behind;
  return bend == 0 ? middle : middle + (before - behind) / (2 * bend);
}

std::vector<HalfWave> HalfWavesOf(const std::vector<double>& wave) {
  std::vector<HalfWave> halfWaves;
  for (std::size_t begin = 0; begin < wave.size();) {
    const bool isPositive = wave[begin] > 0;
    std::size_t end = begin, first = begin, last = begin;
    for (; end < wave.size() && (wave[end] > 0) == isPositive; ++end) {
      const double height = std::abs(wave[end]), highest = std::abs(wave[first]);
      if (height > highest) first = end;
      if (height >= highest) last = end;
    }
    halfWaves.push_back({CrestOf(wave, first, last), std::abs(wave[first]), isPositive});
    begin = end;
  }
  return halfWaves;
}

/// Lateral wave and back wall of one A-scan.
class EchoFinder {
 public:
  /// @param gap samples from lateral wave to back wall, as they are expected
  EchoFinder(const std::vector<std::int32_t>& ascan, double gap) : m_gap(gap) {
    const double zero = MedianOf(ascan);
    std::vector<double> wave, sizes;
    for (const std::int32_t value : ascan) {
      wave.push_back(value - zero);
      sizes.push_back(std::abs(wave.back()));
    }
    m_strongest = *std::max_element(sizes.begin(), sizes.end());
    constexpr double deviationOfMedian = 1.4826;  // of what is spread normally
    m_level = std::max(5 * deviationOfMedian * MedianOf(std::move(sizes)), m_strongest / 50);
    if (m_strongest > 0) m_halfWaves = HalfWavesOf(wave);
  }

  [[nodiscard]] bool HasSamples() const { return m_strongest > 0; }
  /// Why Find has found nothing.
  [[nodiscard]] const char* Why() const { return m_why; }

  /// Sample indices.
  std::optional<TofdEchoTimes> Find() {
    m_why = "no echo stands out of the noise";
    for (std::size_t index = 0; index < m_halfWaves.size(); ++index) {
      if (m_halfWaves[index].height < m_level || !IsLargest(index)) continue;
      const HalfWave& lateral = m_halfWaves[index];
      const auto back = StrongestBehind(lateral, !lateral.isPositive);
      const auto alike = StrongestBehind(lateral, lateral.isPositive);
      m_why = "no echo of the back wall lies where thickness, probe separation and sound speed say";
      if (std::max(HeightOf(back), HeightOf(alike)) < std::max(m_level, m_strongest / 5)) continue;
      // Half waves beside the largest one are often not much smaller.
      if (HeightOf(back) < 0.8 * HeightOf(alike)) {
        m_why = "the echo of the back wall has the same phase as the lateral wave";
        return std::nullopt;
      }
      if (IsLargestOfPhase(*back)) return TofdEchoTimes{lateral.at, m_halfWaves[*back].at};
    }
    return std::nullopt;
  }

 private:
  /// Whether the two half waves to either side are smaller.
  [[nodiscard]] bool IsLargest(std::size_t index) const {
    const double height = m_halfWaves[index].height;
    const std::size_t from = index < 2 ? 0 : index - 2;
    const std::size_t end = std::min(index + 3, m_halfWaves.size());
    for (std::size_t other = from; other < end; ++other)
      if (other < index ? m_halfWaves[other].height >= height : m_halfWaves[other].height > height)
        return false;
    return true;
  }

  [[nodiscard]] bool IsLargestOfPhase(std::size_t index) const {
    const double height = m_halfWaves[index].height;
    return (index < 2 || m_halfWaves[index - 2].height <= height) &&
           (index + 2 >= m_halfWaves.size() || m_halfWaves[index + 2].height <= height);
  }

  [[nodiscard]] std::optional<std::size_t> StrongestBehind(const HalfWave& lateral,
                                                           bool isPositive) const {
    constexpr double atLeast = 3;  // samples
    const double reach = std::max(gapTolerance * m_gap, atLeast);
    std::optional<std::size_t> strongest;
    for (std::size_t index = 0; index < m_halfWaves.size(); ++index) {
      const HalfWave& halfWave = m_halfWaves[index];
      if (halfWave.isPositive != isPositive || halfWave.at <= lateral.at ||
          std::abs(halfWave.at - lateral.at - m_gap) > reach)
        continue;
      if (!strongest || halfWave.height > m_halfWaves[*strongest].height) strongest = index;
    }
    return strongest;
  }

  [[nodiscard]] double HeightOf(const std::optional<std::size_t>& index) const {
    return index ? m_halfWaves[*index].height : 0;
  }

  double m_gap;
  double m_strongest = 0;
  double m_level = 0;  ///< that an echo has to reach
  std::vector<HalfWave> m_halfWaves;
  const char* m_why = "";
};

/// What is known of the part, in metres and seconds.
struct TofdPart {
  double lateralPath = 0;   ///< half path
  double backWallPath = 0;  ///< half path
  double thickness = 0;
  double soundSpeed = 0;
  bool isFlat = true;
};

TofdPart PartOf(const DataGroup& group) {
  if (!group.HasAScans() || group.IsMaster())
    RefuseCalibration(group, "it has no A-scans of one pair of probes");
  if (const std::string why = WhyNoTofdScale(group); !why.empty()) RefuseCalibration(group, why);
  const CIData& item = group.Item();
  TofdPart part;
  part.thickness = item.idata3_GetPartThickness();
  if (!(part.thickness > 0))
    RefuseCalibration(group,
                      "the thickness of the part is not known",
                      "set partThickness of the data group first");
  const CUnit* depths = item.idata3_GetUnit(kvt_AxisSample, unit_TofdDepth, unit_Millimetre);
  double rise = 0, half = 0;
  part.isFlat = item.GetCircularParameter(&rise, &half) == 0;
  part.lateralPath = LateralPath(item);
  if (!part.isFlat && part.thickness <= rise)
    RefuseCalibration(group, "the back wall does not lie below the lateral wave");
  part.backWallPath = depths->ConvertToBase(part.thickness * millimetre);
  part.soundSpeed = item.idata3_GetSoundSpeed();
  return part;
}

CellRange SearchedCells(const DataGroup& group, const TofdCalibrationOptions& options) {
  const auto check = [&](const char* what,
                         std::optional<std::uint32_t> index,
                         std::uint32_t quantity) {
    if (index && *index >= quantity)
      RefuseCalibration(group,
                        std::string("it has no ") + what + " " + std::to_string(*index),
                        std::string("its ") + what + "s are 0 to " + std::to_string(quantity - 1));
  };
  check("row", options.row, group.RowQuantity());
  check("column", options.column, group.ColumnQuantity());
  if (options.row && options.column)
    return {std::uint64_t{*options.row} * group.ColumnQuantity() + *options.column, 1, 1};
  CellRange cells = options.row      ? group.CellsOfRow(*options.row)
                    : options.column ? group.CellsOfColumn(*options.column)
                                     : group.AllCells();
  constexpr std::uint64_t most = 1000;
  const std::uint64_t every = (cells.count + most - 1) / most;
  cells.count = (cells.count + every - 1) / every;
  cells.step *= every;
  return cells;
}

/// Sample indices of both echoes.
void FindEchoes(const DataGroup& group,
                const TofdCalibrationOptions& options,
                double gap,
                TofdCalibration& found) {
  const std::string remedy = "give the times of lateral wave and back wall";
  if (group.Descriptor().GetDataRectification() != gdata_RectifNone)
    RefuseCalibration(
        group, "echoes of rectified data have no phase by which they are found", remedy);
  const Samples samples = group.Samples();
  const CellRange cells = SearchedCells(group, options);
  std::vector<double> lateralWaves, gaps;
  const char* why = "there are no samples";
  for (std::uint64_t index = 0; index < cells.count; ++index) {
    EchoFinder finder(samples.Values(cells.At(index)), gap);
    if (!finder.HasSamples()) continue;
    ++found.searched;
    if (const auto echoes = finder.Find()) {
      lateralWaves.push_back(echoes->lateralWave);
      gaps.push_back(echoes->backWall - echoes->lateralWave);
    } else {
      why = finder.Why();
    }
  }
  found.ascans = gaps.size();
  if (gaps.empty() || 2 * found.ascans < found.searched)
    RefuseCalibration(
        group,
        std::string(why) + (gaps.empty() ? std::string()
                                         : " in more than half of the A-scans: both are found in " +
                                               std::to_string(found.ascans) + " of " +
                                               std::to_string(found.searched)),
        remedy);
  found.lateralWave = MedianOf(std::move(lateralWaves));
  found.backWall = found.lateralWave + MedianOf(std::move(gaps));
}

std::string TimeOf(double microseconds) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%.6g µs", microseconds);
  return text.data();
}

void TakeTimes(const DataGroup& group,
               const AxisScale& times,
               const TofdEchoTimes& given,
               TofdCalibration& found) {
  found.lateralWave = times.IndexOf(given.lateralWave);
  found.backWall = times.IndexOf(given.backWall);
  const double last = times.quantity - 1.0;
  for (const auto& [name, time] :
       {std::pair("lateral wave", given.lateralWave), std::pair("back wall", given.backWall)})
    if (const double at = times.IndexOf(time); !(at >= 0 && at <= last))
      RefuseCalibration(group,
                        std::string("the ") + name + " at " + TimeOf(time) +
                            " is outside the samples, which run from " + TimeOf(times.first) +
                            " to " + TimeOf(times.At(last)));
  if (!(found.backWall > found.lateralWave))
    RefuseCalibration(group, "the back wall comes before the lateral wave");
}

/// What would put both echoes in their places, from the way that the back wall's echo is longer.
void FitFlatPart(const TofdPart& part, double gap, TofdCalibration& found) {
  const double longer = part.soundSpeed * gap / 2;
  if (longer < part.thickness)
    found.fittingSeparation =
        (part.thickness * part.thickness - longer * longer) / longer * millimetre;
  found.fittingSoundSpeed = 2 * (part.backWallPath - part.lateralPath) / gap;
}

}  // namespace

TofdCalibration CalibrateTofd(const DataGroup& group, const TofdCalibrationOptions& options) {
  const TofdPart part = PartOf(group);
  const AxisScale times = group.Times();
  const double step = times.step * 1e-6;  // s
  TofdCalibration found;
  if (options.times)
    TakeTimes(group, times, *options.times, found);
  else
    FindEchoes(
        group, options, 2 * (part.backWallPath - part.lateralPath) / part.soundSpeed / step, found);
  found.times = {times.At(found.lateralWave), times.At(found.backWall)};
  found.correction = found.times.lateralWave * 1e-6 - 2 * part.lateralPath / part.soundSpeed;
  found.isNeeded = std::abs(found.correction) >= step / 20;
  const double gap = (found.backWall - found.lateralWave) * step;
  found.thickness = part.thickness * millimetre;
  found.backWallDepth = group.Item()
                            .idata3_GetUnit(kvt_AxisSample, unit_TofdDepth, unit_Millimetre)
                            ->ConvertFromBase(part.lateralPath + part.soundSpeed * gap / 2);
  if (part.isFlat) FitFlatPart(part, gap, found);
  return found;
}

}  // namespace utdata
