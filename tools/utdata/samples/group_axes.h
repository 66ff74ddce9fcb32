// The axes of a data group as they are shown: from the index of a cell, sample or value to a number
// in an everyday unit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "document/host.h"
#include "interfaces/kvtiff19.h"

namespace utdata::program {

/// One axis in one unit. Values are evenly spaced.
struct ShownAxis {
  std::string symbol;  ///< of the unit; empty for plain numbers
  double first = 0;    ///< value at index 0
  double step = 1;     ///< from one index to the next
  std::uint32_t quantity = 0;

  [[nodiscard]] double At(double index) const { return first + index * step; }
  /// "12.5 mm", with the digits that a step calls for.
  [[nodiscard]] std::string Text(double index) const;
  /// "256 × 1 mm"; "1" alone where there is no axis to speak of.
  [[nodiscard]] std::string Spacing() const;
  /// "0 to 255 mm"
  [[nodiscard]] std::string Range() const;
};

/// The value that counts as no amplitude: the middle of the range of A-scans with unrectified
/// unsigned samples, 0 of all others.
[[nodiscard]] double ZeroOfSamples(const CGDataTypeFDD& group);

/// Converts through a unit set of the group's own, which is given back at the end. Host and group
/// must outlive it.
class GroupAxes {
 public:
  GroupAxes(Host& host, const CGDataTypeFDD& group);
  ~GroupAxes();
  GroupAxes(const GroupAxes&) = delete;
  GroupAxes& operator=(const GroupAxes&) = delete;

  /// The scan axes in millimetres or degrees; in plain numbers where the record gives no usable
  /// spacing. So do the others.
  [[nodiscard]] ShownAxis Columns() const;
  [[nodiscard]] ShownAxis Rows() const;
  /// The sample axis in microseconds, where it is one of time.
  [[nodiscard]] ShownAxis Samples() const;
  /// The sample axis in millimetres of half sound path; none where it is not one of time, or the
  /// sound speed is unknown.
  [[nodiscard]] std::optional<ShownAxis> HalfPath() const;
  /// The values of a position C-scan along the sample axis: from its data offset in steps of its
  /// data resolution.
  [[nodiscard]] ShownAxis Positions() const;
  /// The same in millimetres of half sound path.
  [[nodiscard]] std::optional<ShownAxis> PositionsOnHalfPath() const;

  /// Percent of full scale of a sample value, negative below the zero of the samples; NaN for a
  /// range that has no extent.
  [[nodiscard]] double Percent(double value) const;
  /// dB below full scale of an amplitude in percent; minus infinity for 0.
  [[nodiscard]] double Decibels(double percent) const;
  /// Percent of full scale of an amplitude in dB.
  [[nodiscard]] double PercentOfDecibels(double decibels) const;
  /// "-11.7 dB"
  [[nodiscard]] std::string DecibelText(double percent) const;
  /// "26.1 %"
  [[nodiscard]] std::string PercentText(double percent) const;
  /// "-100 to 100 %, -90.3 to 0.0 dB": the range of the values, and the levels from one step above
  /// zero to the largest amplitude.
  [[nodiscard]] std::string AmplitudeRange() const;

 private:
  void AddScanUnits(kvt_enumAxis axis);
  void AddSampleUnits();
  void AddAmplitudeUnits();
  [[nodiscard]] ShownAxis Shown(const CUnit* unit,
                                double base,
                                double baseStep,
                                std::uint32_t quantity) const;
  [[nodiscard]] const CUnit* ScanUnit(kvt_enumAxis axis, kvt_enumUnits units) const;
  [[nodiscard]] const CUnit* NaturalUnit() const;
  [[nodiscard]] ShownAxis OnUltrasoundAxis(const CUnit* unit,
                                           double offset,
                                           double step,
                                           std::uint32_t quantity) const;
  [[nodiscard]] std::optional<ShownAxis> OnHalfPath(double offset,
                                                    double step,
                                                    std::uint32_t quantity) const;

  CVolumeSet& m_volume;
  const CGDataTypeFDD& m_group;
  double m_zero;
  CUnitSet* m_units;
  double m_basePerSecond =
      1;  ///< half path in metres of one second of flight; 1 where the sound speed is unknown
};

}  // namespace utdata::program
