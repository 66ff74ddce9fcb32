#include <algorithm>
#include <cmath>

#include "src/inspection/state.h"
#include "src/inspection/tofdpair.h"
#include "src/inspection/views/sectorbeams.h"
#include "utdata/failure.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

/// The lateral wave of some A-scans: samples around the place where it is expected.
struct LateralWindow {
  std::int32_t middle = 0;  ///< sample index
  std::int32_t half = 0;    ///< samples to either side that are compared
  std::int32_t reach = 0;   ///< samples to either side by which an A-scan may be off

  [[nodiscard]] std::int32_t Size() const { return 2 * half + 1; }
};

LateralWindow WindowOf(const DataGroup& group) {
  const std::optional<TofdScale> scale = TofdScaleOf(group);
  const auto refuse = [&](const std::string& why) {
    throw Error(group.Name(), "cannot be straightened", why);
  };
  if (!scale) refuse(WhyNoTofdScale(group));
  const auto samples = static_cast<double>(group.SampleQuantity());
  if (!(scale->lateralWave >= 0 && scale->lateralWave < samples))
    refuse("no sample lies where the lateral wave is expected");
  // Half of the way to the back wall, so that its echo is not taken for the lateral wave.
  const double toBackWall = scale->backWall ? *scale->backWall - scale->lateralWave : samples / 4;
  constexpr double mostSamples = 200;
  LateralWindow window;
  window.middle = static_cast<std::int32_t>(std::lround(scale->lateralWave));
  window.half = static_cast<std::int32_t>(std::clamp(toBackWall / 4, 2.0, mostSamples));
  window.reach = window.half;
  return window;
}

/// How alike an A-scan, read from `lag` samples later on, is to a wave in the window.
double Likeness(const std::vector<double>& wave,
                const std::vector<std::int32_t>& ascan,
                const LateralWindow& window,
                std::int32_t lag) {
  double sum = 0;
  for (std::int32_t at = 0; at < window.Size(); ++at) {
    const std::int32_t sample = window.middle - window.half + at + lag;
    if (sample >= 0 && sample < static_cast<std::int32_t>(ascan.size()))
      sum += wave[static_cast<std::size_t>(at)] * ascan[static_cast<std::size_t>(sample)];
  }
  return sum;
}

std::int32_t FindLag(const std::vector<double>& wave,
                     const std::vector<std::int32_t>& ascan,
                     const LateralWindow& window) {
  std::int32_t best = 0;
  double most = Likeness(wave, ascan, window, 0);
  for (std::int32_t away = 1; away <= window.reach; ++away)  // the nearest of equal ones
    for (const std::int32_t lag : {-away, away})
      if (const double alike = Likeness(wave, ascan, window, lag); alike > most) {
        most = alike;
        best = lag;
      }
  return best;
}

void AddTo(std::vector<double>& wave,
           const std::vector<std::int32_t>& ascan,
           const LateralWindow& window,
           std::int32_t lag) {
  for (std::int32_t at = 0; at < window.Size(); ++at) {
    const std::int32_t sample = window.middle - window.half + at + lag;
    if (sample >= 0 && sample < static_cast<std::int32_t>(ascan.size()))
      wave[static_cast<std::size_t>(at)] += ascan[static_cast<std::size_t>(sample)];
  }
}

}  // namespace

std::vector<std::int32_t> StraighteningShifts(const DataGroup& group, const CellRange& cells) {
  const LateralWindow window = WindowOf(group);
  const Samples samples = group.Samples();
  // The wave grows from A-scan to A-scan, each put on it where it is most alike: neighbours differ
  // by little, so that it is followed over any distance.
  std::vector<double> wave(static_cast<std::size_t>(window.Size()));
  std::vector<std::int32_t> lags;
  for (std::uint64_t index = 0; index < cells.count; ++index) {
    const std::vector<std::int32_t> ascan = samples.Values(cells.At(index));
    lags.push_back(index == 0 ? 0 : FindLag(wave, ascan, window));
    AddTo(wave, ascan, window, lags.back());
  }
  const auto peak = std::max_element(
      wave.begin(), wave.end(), [](double a, double b) { return std::abs(a) < std::abs(b); });
  const auto offPlace = static_cast<std::int32_t>(peak - wave.begin()) - window.half;
  std::vector<std::int32_t> shifts;
  for (const std::int32_t lag : lags) shifts.push_back(-lag - offPlace);
  return shifts;
}

std::optional<double> TofdScale::SampleAt(double depth) const {
  const auto first =
      std::find_if(depths.begin(), depths.end(), [](double known) { return !std::isnan(known); });
  const auto behind = std::lower_bound(first, depths.end(), depth);
  if (behind == depths.end() || depth < 0) return std::nullopt;
  const auto index = static_cast<double>(behind - depths.begin());
  // Before the first sample with a depth lies the lateral wave, whose depth is 0.
  const double before = behind == first ? 0 : *(behind - 1);
  const double from = behind == first ? std::min(lateralWave, index) : index - 1;
  const double place =
      *behind > before ? from + (index - from) * (depth - before) / (*behind - before) : index;
  return place >= 0 ? std::optional(place) : std::nullopt;
}

std::string WhyNoTofdScale(const DataGroup& group) {
  if (const char* obstacle = TofdObstacle(group)) return obstacle;
  if (group.HalfPaths()) return {};
  return group.Times().symbol == "µs" ? "the sound speed is not known"
                                      : "its samples do not count time";
}

std::optional<TofdScale> TofdScaleOf(const DataGroup& group) {
  if (!WhyNoTofdScale(group).empty()) return std::nullopt;
  const std::optional<AxisScale> paths = group.HalfPaths();
  TofdScale scale;
  scale.lateralWave = paths->IndexOf(LateralPath(group.Item()) * millimetre);
  scale.depths = group.TofdDepths();
  const double thickness = double{group.Item().idata3_GetPartThickness()} * millimetre;
  if (thickness > 0) scale.backWall = scale.SampleAt(thickness);
  return scale;
}

}  // namespace utdata
