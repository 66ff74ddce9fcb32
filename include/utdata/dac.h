// The distance-amplitude curve of a channel: how strong the echo of a reference reflector is at
// each time of flight, as it was measured on a calibration block.
//
// A pure value, safe in any thread; DacOf may run in several threads as long as no other thread
// changes the inspection.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "utdata/datagroup.h"

namespace utdata {

/// Between its points the level in dB is a straight line over time, which is an exponential in
/// percent. Outside of them there is no curve.
class UTDATA_API DacCurve {
 public:
  struct Point {
    double time = 0;     ///< two-way, µs, as DataGroup::Times counts it
    double percent = 0;  ///< of full scale

    friend bool operator==(const Point&, const Point&) = default;
  };

  /// @param points in any order. Left out are those without a finite time and a finite level above
  ///   0, and of several at one time all but the first. Throws when fewer than two are left.
  explicit DacCurve(std::vector<Point> points, std::string name = {});

  [[nodiscard]] const std::string& Name() const { return m_name; }             ///< UTF-8
  [[nodiscard]] const std::vector<Point>& Points() const { return m_points; }  ///< by time
  /// Percent of full scale at a time of flight in µs; none outside the curve.
  [[nodiscard]] std::optional<double> LevelAt(double time) const;
  /// How far an amplitude in percent, of either sign, lies above the curve at a time of flight in
  /// µs: 20 x log10(|percent| / level), dB; negative below it, minus infinity for 0. None outside
  /// the curve.
  [[nodiscard]] std::optional<double> DecibelsAt(double percent, double time) const;

 private:
  std::vector<Point> m_points;
  std::string m_name;
};

/// The curve that the channel of a data group names and has switched on. Amplitudes and the curve
/// are as recorded, and no gain enters. A curve that was applied to the receiver's gain has made
/// echoes alike: it then stands at its reference level, from its first point to its last. None
/// without such a curve, where it has fewer than two points, and for samples that hold no
/// amplitudes over time.
[[nodiscard]] UTDATA_API std::optional<DacCurve> DacOf(const DataGroup& group);

}  // namespace utdata
