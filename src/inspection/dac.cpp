#include "utdata/dac.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "src/inspection/state.h"
#include "utdata/failure.h"

namespace utdata {
namespace {

constexpr double microsecond = 1e6;  // of seconds

bool IsLevel(const DacCurve::Point& point) {
  return std::isfinite(point.time) && std::isfinite(point.percent) && point.percent > 0;
}

std::vector<DacCurve::Point> Ordered(std::vector<DacCurve::Point> points) {
  std::erase_if(points, [](const DacCurve::Point& point) { return !IsLevel(point); });
  std::stable_sort(
      points.begin(), points.end(), [](const auto& a, const auto& b) { return a.time < b.time; });
  const auto last = std::unique(
      points.begin(), points.end(), [](const auto& a, const auto& b) { return a.time == b.time; });
  points.erase(last, points.end());
  return points;
}

const CGDacTypeDescr* EnabledDacOf(const DataGroup& group) {
  InspectionState& state = DataGroupInside::State(group);
  const CIChan* channel = state.set.fset_GetIChan(fset_All, group.Descriptor().GetChannelID());
  if (!channel || channel->ichan1_GetInfoRef()->dacEnabled == 0) return nullptr;
  for (const CGDacTypeDescr* dac : state.descriptor->dacs)
    if (dac->dacId == channel->ichan1_GetInfoRef()->dacId) return dac;
  return nullptr;
}

}  // namespace

DacCurve::DacCurve(std::vector<Point> points, std::string name)
    : m_points(Ordered(std::move(points))), m_name(std::move(name)) {
  if (m_points.size() < 2)
    throw Error(m_name, "is no distance-amplitude curve", "it has fewer than two points");
}

std::optional<double> DacCurve::LevelAt(double time) const {
  if (!(time >= m_points.front().time && time <= m_points.back().time)) return std::nullopt;
  const auto after =
      std::upper_bound(std::next(m_points.begin()),
                       std::prev(m_points.end()),
                       time,
                       [](double wanted, const Point& point) { return wanted < point.time; });
  const Point& from = *std::prev(after);
  const double part = (time - from.time) / (after->time - from.time);
  return from.percent * std::pow(after->percent / from.percent, part);
}

std::optional<double> DacCurve::DecibelsAt(double percent, double time) const {
  const std::optional<double> level = LevelAt(time);
  return level ? std::optional(20 * std::log10(std::abs(percent) / *level)) : std::nullopt;
}

std::optional<DacCurve> DacOf(const DataGroup& group) {
  if (!group.HasAScans() || !group.HoldsAmplitudes() || group.Times().symbol != "µs")
    return std::nullopt;
  const CGDacTypeDescr* dac = EnabledDacOf(group);
  if (!dac) return std::nullopt;
  std::vector<DacCurve::Point> points;
  for (const auto& [time, level] : dac->points)
    points.push_back(
        {double{time} * microsecond, double{dac->timeCorrectedGain ? dac->referenceLevel : level}});
  if (Ordered(points).size() < 2) return std::nullopt;
  return DacCurve(std::move(points), ToUtf8(dac->name));
}

}  // namespace utdata
