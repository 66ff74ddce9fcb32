// The formulas follow from two triangles. On a flat part: index point, point in the part and the
// foot of its perpendicular on the surface; behind the first leg the part is mirrored at each wall,
// so that the beam stays straight. On a round part: its axis, the index point and the point in the
// part, whose sides are the outside radius, the half path and the distance from the axis.
#include "utdata/geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "utdata/failure.h"

namespace utdata {
namespace {

constexpr double degree = std::numbers::pi / 180;

[[noreturn]] void Refuse(const char* what, const std::string& why) {
  throw Error("", std::string(what) + " cannot be", why);
}

double RadiansOf(double refractedAngle) {
  if (!(std::abs(refractedAngle) < 90))
    Refuse("the refracted angle", "it has to be between -90 and 90 degrees");
  return refractedAngle * degree;
}

double CheckedThickness(double thickness) {
  if (!std::isfinite(thickness) || thickness < 0)
    Refuse("the thickness", "it has to be above 0, or 0 where it is not known");
  return thickness;
}

void CheckDepth(double depth, double deepest) {
  if (!(depth >= 0 && depth <= deepest)) Refuse("the depth", "it lies outside the part");
}

}  // namespace

FlatPart::FlatPart(double thickness) : m_thickness(CheckedThickness(thickness)) {}

std::optional<BeamPoint> FlatPart::PointAt(double halfPath, double refractedAngle) const {
  const double angle = RadiansOf(refractedAngle);
  if (!(halfPath >= 0)) return std::nullopt;
  const double unfolded = halfPath * std::cos(angle);
  BeamPoint point = {halfPath * std::sin(angle), unfolded, 1};
  if (!HasBackWall()) return point;
  const double walls = std::floor(unfolded / m_thickness);
  if (!(walls < std::numeric_limits<std::uint32_t>::max())) return std::nullopt;
  point.leg = static_cast<std::uint32_t>(walls) + 1;
  const bool isUpwards = point.leg % 2 == 0;
  point.depth = isUpwards ? (walls + 1) * m_thickness - unfolded : unfolded - walls * m_thickness;
  return point;
}

BeamPath FlatPart::PathTo(const BeamPoint& point) const {
  CheckDepth(point.depth, HasBackWall() ? m_thickness : std::numeric_limits<double>::max());
  if (point.leg == 0 || (point.leg > 1 && !HasBackWall()))
    Refuse("the leg", "it has to be 1 at least, and 1 without a known thickness");
  const bool isUpwards = point.leg % 2 == 0;
  const double unfolded = isUpwards ? point.leg * m_thickness - point.depth
                                    : (point.leg - 1) * m_thickness + point.depth;
  return {std::hypot(point.distance, unfolded), std::atan2(point.distance, unfolded) / degree};
}

double FlatPart::LegEnd(std::uint32_t leg, double refractedAngle) const {
  const double cosine = std::cos(RadiansOf(refractedAngle));
  return HasBackWall() ? leg * m_thickness / cosine : std::numeric_limits<double>::infinity();
}

CurvedPart::CurvedPart(double outsideRadius, double thickness)
    : m_radius(outsideRadius), m_thickness(CheckedThickness(thickness)) {
  if (!std::isfinite(outsideRadius) || outsideRadius <= 0)
    Refuse("the outside radius", "it has to be above 0");
  if (thickness > outsideRadius)
    Refuse("the outside radius", "it is below the thickness of the wall");
}

std::optional<BeamPoint> CurvedPart::PointAt(double halfPath, double refractedAngle) const {
  const double angle = RadiansOf(refractedAngle);
  if (!(halfPath >= 0 && halfPath <= LegEnd(refractedAngle))) return std::nullopt;
  const double across = halfPath * std::sin(angle);
  const double towardsAxis = m_radius - halfPath * std::cos(angle);
  return BeamPoint{
      m_radius * std::atan2(across, towardsAxis), m_radius - std::hypot(across, towardsAxis), 1};
}

std::optional<BeamPath> CurvedPart::PathTo(const BeamPoint& point) const {
  CheckDepth(point.depth, m_thickness > 0 ? m_thickness : m_radius);
  if (point.leg != 1) Refuse("the leg", "only the first is followed in a round part");
  const double turn = point.distance / m_radius;
  const double fromAxis = m_radius - point.depth;
  const double across = fromAxis * std::sin(turn);
  const double down = m_radius - fromAxis * std::cos(turn);
  const BeamPath path = {std::hypot(across, down), std::atan2(across, down) / degree};
  constexpr double rounding = 1e-9;  // of the half path to a point on the inner wall itself
  const bool isFirstLeg = std::abs(path.refractedAngle) < 90 &&
                          path.halfPath <= LegEnd(path.refractedAngle) * (1 + rounding);
  return isFirstLeg ? std::optional(path) : std::nullopt;
}

bool CurvedPart::ReachesInnerWall(double refractedAngle) const {
  return m_thickness > 0 &&
         std::abs(std::sin(RadiansOf(refractedAngle))) <= (m_radius - m_thickness) / m_radius;
}

double CurvedPart::LegEnd(double refractedAngle) const {
  const double angle = RadiansOf(refractedAngle);
  const double nearest = m_radius * std::cos(angle);  // half path to the point nearest to the axis
  if (!ReachesInnerWall(refractedAngle)) return 2 * nearest;
  const double inner = m_radius - m_thickness;
  const double passing = m_radius * std::sin(angle);  // distance of that point from the axis
  return nearest - std::sqrt(std::max(0.0, inner * inner - passing * passing));
}

TofdPair::TofdPair(double separation) : m_half(separation / 2) {
  if (!std::isfinite(separation) || separation <= 0)
    Refuse("the probe separation", "it has to be above 0");
}

std::optional<double> TofdPair::DepthAt(double halfPath) const {
  if (!(halfPath >= m_half)) return std::nullopt;
  return std::sqrt((halfPath - m_half) * (halfPath + m_half));
}

double TofdPair::PathTo(double depth) const {
  CheckDepth(depth, std::numeric_limits<double>::max());
  return std::hypot(depth, m_half);
}

ScanOffset TurnedBySkew(double distance, double skew) {
  // Quarters exactly, so that a beam along an axis does not leave it by a rounding error.
  const double quarters = skew / 90;
  if (quarters == std::floor(quarters)) {
    const auto quarter = static_cast<int>(quarters - 4 * std::floor(quarters / 4));
    constexpr ScanOffset directions[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    return {distance * directions[quarter].column, distance * directions[quarter].row};
  }
  return {distance * std::cos(skew * degree), distance * std::sin(skew * degree)};
}

}  // namespace utdata
