// Where an echo lies: from the half path of a beam to a point of the part, and back.
//
// The half path is the one-way sound path from the index point, where the beam enters the part. A
// leg crosses the wall once, leg 1 downwards and leg 2 upwards; a skip is two legs. Distances along
// the surface count from the index point in the direction of the beam, so that those of a beam with
// a negative angle are negative. Lengths are all in one unit, whichever; angles in degrees.
//
// Pure values, safe in any thread. Sizes that no part has are thrown as utdata::Error.
#pragma once

#include <cstdint>
#include <optional>

#include "interfaces/export.h"

namespace utdata {

/// A point of the part that a beam passes.
struct BeamPoint {
  double distance = 0;    ///< along the surface from the index point
  double depth = 0;       ///< below the entry surface
  std::uint32_t leg = 1;  ///< in which the beam passes it

  [[nodiscard]] std::uint32_t Skip() const { return (leg + 1) / 2; }
};

/// What leads from an index point to a point of the part.
struct BeamPath {
  double halfPath = 0;
  double refractedAngle = 0;
};

/// A part with two flat, parallel walls.
class UTDATA_API FlatPart {
 public:
  /// @param thickness 0: not known; the beam is then followed along its first leg, without end.
  ///   Throws when it is negative or not finite.
  explicit FlatPart(double thickness);

  [[nodiscard]] bool HasBackWall() const { return m_thickness > 0; }
  [[nodiscard]] double Thickness() const { return m_thickness; }

  /// None before the index point. Throws unless the angle is between -90 and 90 degrees.
  [[nodiscard]] std::optional<BeamPoint> PointAt(double halfPath, double refractedAngle) const;
  /// The reverse: what leads to a point in a leg. Throws when no beam does: the depth is outside
  /// the part, or the leg is not there.
  [[nodiscard]] BeamPath PathTo(const BeamPoint& point) const;
  /// The half path to the end of a leg; infinite without a known thickness. Throws as PointAt does.
  [[nodiscard]] double LegEnd(std::uint32_t leg, double refractedAngle) const;

 private:
  double m_thickness;
};

/// A round part that is inspected across its axis from outside. Only the first leg is followed.
class UTDATA_API CurvedPart {
 public:
  /// @param thickness 0: not known; the first leg then ends where the beam meets the outer wall
  ///   again. Throws when the radius is not above 0 or the thickness is more than the radius.
  CurvedPart(double outsideRadius, double thickness);

  [[nodiscard]] double OutsideRadius() const { return m_radius; }
  [[nodiscard]] double Thickness() const { return m_thickness; }

  /// The distance is the arc along the outer wall. None before the index point and behind the first
  /// leg. Throws unless the angle is between -90 and 90 degrees.
  [[nodiscard]] std::optional<BeamPoint> PointAt(double halfPath, double refractedAngle) const;
  /// The reverse. None when the inner wall lies between the index point and that point. Throws when
  /// the depth is outside the part, or the leg is not the first.
  [[nodiscard]] std::optional<BeamPath> PathTo(const BeamPoint& point) const;
  /// Whether the beam meets the inner wall, rather than pass it by. False without a thickness.
  [[nodiscard]] bool ReachesInnerWall(double refractedAngle) const;
  /// The half path to the inner wall; of a beam that passes it by, to the outer wall.
  [[nodiscard]] double LegEnd(double refractedAngle) const;

 private:
  double m_radius;
  double m_thickness;
};

/// Two probes for time-of-flight diffraction on a flat part, of which one sends and one receives.
/// Depths are those of a tip midway between them; the half path is half of the whole way.
class UTDATA_API TofdPair {
 public:
  /// @param separation of the two index points. Throws unless it is above 0.
  explicit TofdPair(double separation);

  /// Of the lateral wave, which runs straight from probe to probe.
  [[nodiscard]] double LateralPath() const { return m_half; }
  /// None before the lateral wave.
  [[nodiscard]] std::optional<double> DepthAt(double halfPath) const;
  /// The reverse; the half path of the back wall when given the thickness. Throws when the depth is
  /// negative or not finite.
  [[nodiscard]] double PathTo(double depth) const;

 private:
  double m_half;  ///< of the separation
};

/// A distance on the surface along the scan axes.
struct ScanOffset {
  double column = 0;
  double row = 0;
};

/// A distance along a beam's direction on the surface: a beam of skew 0 points along rising
/// columns, one of 90 degrees along rising rows.
[[nodiscard]] UTDATA_API ScanOffset TurnedBySkew(double distance, double skew);

}  // namespace utdata
