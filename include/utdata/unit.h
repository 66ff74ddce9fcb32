// One way of showing the values of one axis: a unit family, a data unit, how a displayed value
// converts to the axis's base value and back, and how it is printed.
//
// A unit without a parent is a base unit and converts every value to itself. Units belong to a unit
// set. No lock: the host serialises use. Broken invariants raise debug assertions and the operation
// goes on with the values given.
#pragma once

#include <cstdint>
#include <string>

#include "interfaces/framework.h"

/// Unit families: which data units an axis offers.
enum unit_enumUnits : std::uint32_t {
  unit_Generic = 0,  ///< data unit 0
  unit_Time = 1,     ///< two-way time of flight
  unit_Length = 2,   ///< along a scan axis
  unit_Angle = 3,
  unit_Percent = 4,    ///< amplitude
  unit_Decibel = 5,    ///< amplitude
  unit_Reserved6 = 6,  ///< not supported by unit sets
  unit_Reserved7 = 7,  ///< not supported by unit sets
  unit_Point = 8,      ///< index along the axis
  unit_OneWayTime = 9,
  unit_Path = 10,      ///< there and back
  unit_HalfPath = 11,  ///< one way
  unit_Depth = 12,  ///< one way along the beam, as half path: no angle is in it. Below the surface
                    ///< an echo lies at this times the cosine of the refracted angle
  unit_TofdDepth = 13,
  unit_Scaled = 14,  ///< scaled analog data
  unit_Reserved15 = 15,
  unit_Reserved16 = 16
};

/// Concrete units.
enum unit_enumDataUnit : std::uint32_t {
  unit_DataGeneric = 0,
  unit_Second = 1,
  unit_Microsecond = 2,
  unit_Metre = 3,
  unit_Millimetre = 4,
  unit_Inch = 5,
  unit_Mil = 6,
  unit_Degree = 7,
  unit_Radian = 8,
  unit_DataPoint = 9,
  unit_DataPercent = 10,
  unit_DataDecibel = 11,
  unit_Reserved12 = 12,
  unit_Reserved13 = 13,
  unit_DataScaled = 14
};

/// What conversion to the base value computes from a displayed value v.
enum unit_enumConversionType : std::int32_t {
  unit_ConversionNone = -1,  ///< of a default-constructed unit: (v - offset) / positive slope
  unit_ConversionLinear =
      0,  ///< (v - offset) / slope, the positive slope for v >= 0, the negative one below
  unit_ConversionTofd = 1,  ///< (path offset + sqrt|s|) / positive slope, s = offset +- (v - depth
                            ///< offset)^2 by the sign of v - depth offset
  unit_ConversionFactors = 2,  ///< as linear
  unit_ConversionDecibel = 3,  ///< 100 * 10^(-|v| / 20)
  unit_ConversionPercent =
      4  ///< 0 for 0, else 100 + d / 80 * 100 with d = 20 log10(|v| / 100), at least -80
};

/// Carries no run-time class record of its own.
class UTDATA_API CUnit : public CObject {
 public:
  /// A unit that is not valid until it is updated: family 0, conversion -1, slopes 1, no parent.
  CUnit();
  /// Both slopes equal; one digit after the decimal point. @param parent base unit of the axis, not
  /// owned; null for a base unit
  CUnit(unit_enumUnits family,
        unit_enumDataUnit dataUnit,
        unit_enumConversionType conversion,
        double slope,
        double offset,
        CUnit* parent);
  /// The same with conversion type 2. @param auxiliary stored and copied, not used by any
  /// conversion
  CUnit(unit_enumUnits family,
        unit_enumDataUnit dataUnit,
        double slope,
        double offset,
        double auxiliary,
        CUnit* parent);
  CUnit(const CUnit& other);
  CUnit& operator=(const CUnit&) = delete;
  ~CUnit() override;

  /// As the constructors, but keep precision, TOFD factors and display format (the first one the
  /// auxiliary factor too).
  void CUpdateUnit(unit_enumUnits family,
                   unit_enumDataUnit dataUnit,
                   unit_enumConversionType conversion,
                   double slope,
                   double offset,
                   CUnit* parent);
  void CUpdateUnit(unit_enumUnits family,
                   unit_enumDataUnit dataUnit,
                   double slope,
                   double offset,
                   double auxiliary,
                   CUnit* parent);

  /// Slopes must be greater than 0. The conversion type is not changed. Equal factors leave the
  /// object untouched.
  void SetLinearFactors(double slope, double offset);
  void SetLinearFactors(double positiveSlope, double negativeSlope, double offset);
  /// The slope must be greater than 0. The conversion type is not changed.
  void SetDBFactors(double slope, double offset, double auxiliary);
  /// Makes the unit a TOFD depth. @param rootConstant the constant under the root
  void SetTOFDFactors(double depthOffset, double slope, double rootConstant, double pathOffset);
  /// @param digits after the decimal point, 0 to 10
  void SetDisplayPrecision(int digits);

  void GetUnitType(unit_enumUnits& family, unit_enumDataUnit& dataUnit) const;
  [[nodiscard]] int GetDisplayPrecision() const;
  /// printf format of one value: "%.1f" until the precision changes, then "%-12.Nf"; empty while
  /// the unit is not valid.
  [[nodiscard]] std::wstring GetDisplayFormat() const;
  [[nodiscard]] CUnit* GetParent() const;

  /// Base value of a displayed value. A TOFD or unknown conversion with a slope of 0 raises an
  /// assertion and gives 0; the linear ones divide by it.
  [[nodiscard]] double ConvertToBase(const double& displayed) const;

  /// Displayed value of a base value: ConvertToBase of it gives the base value back, within
  /// rounding. Where several displayed values share a base value: of two slopes the value at or
  /// above 0; of TOFD the one on the branch on which the base grows with the displayed value; of dB
  /// (type 3) the one at or below 0; of type 4 the one at or above 0, and 0 for base 0. Where none
  /// has it: 0 in the gap that two slopes leave around 0, with a negative offset when the negative
  /// slope is the greater, with a positive offset when the positive slope is; NaN for a TOFD path
  /// shorter than the path offset, for a type 3 base below 0 or above 100, for a type 4 base below
  /// 0. A type 3 base of 0 gives minus infinity. NaN stays NaN; a TOFD or unknown conversion with a
  /// slope of 0 raises an assertion and gives 0, as ConvertToBase does.
  [[nodiscard]] double ConvertFromBase(const double& base) const;

  /// The data unit's symbol ("mm", L"\u00b5s", "%"); empty for generic values, points and scaled
  /// data.
  [[nodiscard]] const wchar_t* GetSymbol() const;

  /// A displayed value with the unit's precision and symbol ("12.3 mm", L"45.0\u00b0"): point as
  /// decimal separator whatever the locale, no sign on a value that rounds to zero, "---" for NaN
  /// and "inf" or "-inf" for infinities.
  [[nodiscard]] std::wstring FormatValue(double displayed) const;

  /// Raises an assertion for each invariant that does not hold: the tag, the precision, the slopes,
  /// the three enumerations.
  void ValidateObjectState() const;

 private:
  /// Which format a value is printed with. Not the text itself: an item has dozens of units.
  enum class DisplayFormat : std::uint8_t { None, Initial, Precise };

  struct Parameters {
    unit_enumUnits family = unit_Generic;
    unit_enumDataUnit dataUnit = unit_DataGeneric;
    unit_enumConversionType conversion = unit_ConversionNone;
    DisplayFormat displayFormat = DisplayFormat::None;
    double positiveSlope = 1;
    double negativeSlope = 1;
    double offset = 0;       ///< of the linear conversions; for TOFD the constant under the root
    double depthOffset = 0;  ///< TOFD, subtracted from the displayed value
    double pathOffset = 0;   ///< TOFD, added to the root
    double auxiliary = 0;
    CUnit* parent = nullptr;
    std::int32_t precision = 0;
  };

  void SetParameters(const Parameters& parameters);
  [[nodiscard]] double TofdToBase(double displayed) const;
  [[nodiscard]] double TofdFromBase(double base) const;
  [[nodiscard]] double LinearFromBase(double base) const;

  Parameters m_parameters;
  std::uint32_t m_tag = 0;  ///< low 32 bits of the object's own address: a copied or stale object
                            ///< does not pass for a unit
};
