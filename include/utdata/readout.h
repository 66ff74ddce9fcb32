// What one position of a data group holds: where it is, when it was, how deep, and how strong.
#pragma once

#include <cstdint>
#include <string>

#include "utdata/datagroup.h"

namespace utdata {

/// A value on one axis of a data group, shown through its item's units. Good while the inspection
/// lives.
class UTDATA_API AxisValue {
 public:
  AxisValue() = default;  ///< not known
  /// @param base in the base unit of the axis
  AxisValue(const CIData& item, kvt_enumAxis axis, unit_enumUnits family, double base)
      : m_item(&item), m_axis(axis), m_family(family), m_base(base) {}

  /// Whether the data give it: there is no depth without a sound speed.
  [[nodiscard]] bool IsKnown() const;
  /// In a unit of its kind: unit_Millimetre, unit_Microsecond, unit_Degree. NaN when it is not
  /// known, or has no such unit.
  [[nodiscard]] double In(unit_enumDataUnit unit) const;
  /// With the unit's precision and symbol: "12.3 mm".
  [[nodiscard]] std::string Text(unit_enumDataUnit unit) const;

 private:
  [[nodiscard]] const CUnit* Unit(unit_enumDataUnit unit) const;

  const CIData* m_item = nullptr;
  kvt_enumAxis m_axis = kvt_AxisColumn;
  unit_enumUnits m_family = unit_Generic;
  double m_base = 0;
};

/// Made by DataGroup::ReadOut. Of a position C-scan the sample is the one that its value names, and
/// there is no percent.
class UTDATA_API ReadOut {
 public:
  std::uint32_t rowIndex = 0;
  std::uint32_t columnIndex = 0;
  double sampleIndex = 0;

  AxisValue column;
  AxisValue row;
  AxisValue time;      ///< two-way
  AxisValue halfPath;  ///< one-way sound path
  /// Below the surface, along the first leg: half path x cos(refracted angle).
  AxisValue depth;
  AxisValue tofdDepth;  ///< of a diffracting tip between two probes; known where TofdDepths has one

  std::int32_t value = 0;  ///< of the sample, corrected
  double percent = 0;      ///< of full scale, negative for negative half waves; NaN for positions
  double decibels = 0;     ///< of full scale; minus infinity for 0 percent; NaN for positions
  /// Above the channel's distance-amplitude curve, dB; NaN where DacOf gives none, and outside it.
  double decibelsToDac = 0;
};

}  // namespace utdata
