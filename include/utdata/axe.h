// An axis of the inspection volume: a name, a unit tag, and limits as a start and a range. A value;
// not shared between threads.
#pragma once

#include <cstddef>
#include <cstdint>

#include "interfaces/export.h"

/// Unit tag of an axis: stored, copied and compared, never interpreted.
enum std_enumUnits : std::uint32_t { std_UnitNone = 0 };

class UTDATA_API CAxe {
 public:
  static constexpr std::size_t nameSize = 32;  ///< wide characters of a name with its terminator

  CAxe();  ///< no limits, start and range 0, no name
  CAxe(const CAxe&);
  CAxe& operator=(const CAxe&);

  /// Names the axis; limits stay. A name of more than 31 characters raises an assertion and is cut.
  /// Null counts as empty.
  void Create(const wchar_t* name, std_enumUnits units);
  /// The same, and sets and enables the limits.
  void Create(const wchar_t* name, std_enumUnits units, double start, double range);

  void SetStart(double start);  ///< the range stays, so the end moves; enables the limits
  void SetEnd(double end);      ///< the start stays; enables the limits
  void SetRange(double range);  ///< the start stays; enables the limits

  [[nodiscard]] double GetStart() const;
  [[nodiscard]] double GetRange() const;
  [[nodiscard]] double GetEnd() const;
  [[nodiscard]] const wchar_t* GetName() const;  ///< valid until the axis changes or ends
  [[nodiscard]] std_enumUnits GetUnits() const;
  [[nodiscard]] int LimitsEnabled() const;

  /// 1 when `value` lies within the limits, both ends included, else 0 (always 0 with a negative
  /// range, and for NaN).
  [[nodiscard]] int IsValueInAxe(double value) const;

  /// Whether both axes have a name, and names and units are equal. Limits are not compared.
  [[nodiscard]] bool operator==(const CAxe& other) const;

 private:
  std::int32_t m_limitsEnabled = 0;
  double m_start = 0;
  double m_range = 0;
  std_enumUnits m_units = std_UnitNone;
  wchar_t m_name[nameSize] = {};
};
