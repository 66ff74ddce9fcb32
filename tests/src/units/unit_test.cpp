#include "utdata/unit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/report_capture.h"

namespace {

using utdata::test::ReportCapture;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

CUnit& Base() {
  static CUnit base(unit_Generic, unit_DataGeneric, unit_ConversionLinear, 1, 0, nullptr);
  return base;
}

CUnit Unit(unit_enumConversionType conversion, double positive, double negative, double offset) {
  CUnit unit(unit_Point, unit_DataPoint, conversion, 1, 0, &Base());
  unit.SetLinearFactors(positive, negative, offset);
  return unit;
}

CUnit Tofd(double depthOffset, double slope, double rootConstant, double pathOffset) {
  CUnit unit(unit_TofdDepth, unit_Millimetre, 1, 0, 0, &Base());
  unit.SetTOFDFactors(depthOffset, slope, rootConstant, pathOffset);
  return unit;
}

TEST(Unit, WithoutParentConvertsEveryValueToItself) {
  CUnit unit(unit_Decibel, unit_DataDecibel, unit_ConversionDecibel, 3, 4, nullptr);
  for (const double value : {0.0, -7.5, 1e300, inf}) {
    EXPECT_EQ(unit.ConvertToBase(value), value);
    EXPECT_EQ(unit.ConvertFromBase(value), value);
  }
}

TEST(Unit, ConvertsToBaseByItsType) {
  const ReportCapture reports;  // of the types that are none
  struct Case {
    CUnit unit;
    double displayed;
    double base;
  };
  const Case cases[] = {
      {Unit(unit_ConversionLinear, 2, 4, 1), 5, 2},
      {Unit(unit_ConversionLinear, 2, 4, 1), -3, -1},
      {Unit(unit_ConversionFactors, 2, 4, 1), 0, -0.5},
      {Unit(unit_ConversionDecibel, 9, 9, 9), 0, 100},
      {Unit(unit_ConversionDecibel, 9, 9, 9), -6, 50.11872336272722},
      {Unit(unit_ConversionDecibel, 9, 9, 9), 6, 50.11872336272722},
      {Unit(unit_ConversionDecibel, 9, 9, 9), 20, 10},
      {Unit(unit_ConversionNone, 2, 4, 1), -3, -2},
      {Unit(static_cast<unit_enumConversionType>(5), 2, 4, 1), -3, -2},
      {Unit(unit_ConversionPercent, 9, 9, 9), 100, 100},
      {Unit(unit_ConversionPercent, 9, 9, 9), 1, 50},
      {Unit(unit_ConversionPercent, 9, 9, 9), -1, 50},
      {Unit(unit_ConversionPercent, 9, 9, 9), 1000, 125},
      {Unit(unit_ConversionPercent, 9, 9, 9), 0.001, 0},
      {Unit(unit_ConversionPercent, 9, 9, 9), 1e-300, 0},
      {Unit(unit_ConversionPercent, 9, 9, 9), 0, 0},
      {Tofd(0, 1, 100, 0), 0, 10},
      {Tofd(0, 1, 100, 0), 10, std::sqrt(200)},
      {Tofd(0, 1, 100, 0), -10, 0},
      {Tofd(0, 1, 100, 0), -20, std::sqrt(300)},
      {Tofd(3, 2, 16, 5), 6, 5},
  };
  for (const auto& [unit, displayed, base] : cases)
    EXPECT_NEAR(unit.ConvertToBase(displayed), base, 1e-12) << displayed;
  EXPECT_EQ(cases[0].unit.GetParent(), &Base());
}

TEST(Unit, ConvertingBackGivesAValueWithTheSameBase) {
  const ReportCapture reports;
  const CUnit units[] = {Unit(unit_ConversionNone, 2, 4, 1),
                         Unit(static_cast<unit_enumConversionType>(5), 2, 4, 1),
                         Unit(unit_ConversionLinear, 2, 4, 0),
                         Unit(unit_ConversionLinear, 2, 4, 1),
                         Unit(unit_ConversionFactors, 3, 0.5, 0),
                         Unit(unit_ConversionDecibel, 1, 1, 0),
                         Unit(unit_ConversionPercent, 1, 1, 0),
                         Tofd(0, 1, 100, 0),
                         Tofd(-2, 39.37, 1549.9969, 0.5),
                         Tofd(1, 1000, -4, 0)};
  for (const CUnit& unit : units)
    for (const double displayed : {-50.0, -9.5, -1.0, -0.02, 0.0, 0.02, 0.7, 12.0, 99.0, 250.0}) {
      const double base = unit.ConvertToBase(displayed);
      const double back = unit.ConvertFromBase(base);
      EXPECT_NEAR(unit.ConvertToBase(back), base, 1e-9 * std::max(1.0, std::fabs(base)))
          << &unit - units << " " << displayed;
    }
}

TEST(Unit, ConvertingBackChoosesAsDocumented) {
  EXPECT_DOUBLE_EQ(Unit(unit_ConversionLinear, 2, 4, 1).ConvertFromBase(-0.4), 0.2)
      << "-0.6 has that base too";
  // No displayed value has a base between -offset / negative slope and -offset / positive slope.
  EXPECT_EQ(Unit(unit_ConversionLinear, 2, 4, -1).ConvertFromBase(0.4), 0);
  EXPECT_EQ(Unit(unit_ConversionLinear, 4, 2, 1).ConvertFromBase(-0.4), 0);
  EXPECT_NEAR(Unit(unit_ConversionDecibel, 1, 1, 0).ConvertFromBase(10), -20, 1e-12);
  EXPECT_EQ(Unit(unit_ConversionDecibel, 1, 1, 0).ConvertFromBase(0), -inf);
  EXPECT_TRUE(std::isnan(Unit(unit_ConversionDecibel, 1, 1, 0).ConvertFromBase(100.1)));
  EXPECT_TRUE(std::isnan(Unit(unit_ConversionDecibel, 1, 1, 0).ConvertFromBase(-1)));
  EXPECT_NEAR(Unit(unit_ConversionPercent, 1, 1, 0).ConvertFromBase(50), 1, 1e-12);
  EXPECT_EQ(Unit(unit_ConversionPercent, 1, 1, 0).ConvertFromBase(0), 0);
  EXPECT_TRUE(std::isnan(Unit(unit_ConversionPercent, 1, 1, 0).ConvertFromBase(-1)));
  EXPECT_NEAR(Tofd(0, 1, 100, 0).ConvertFromBase(6), -8, 1e-12)
      << "on the rising branch, before depth 0";
  EXPECT_NEAR(Tofd(0, 1, 100, 0).ConvertFromBase(std::sqrt(200)), 10, 1e-12)
      << "-sqrt(300) has that base too";
  EXPECT_TRUE(std::isnan(Tofd(0, 1, 100, 3).ConvertFromBase(2.9)));
  EXPECT_TRUE(std::isnan(Unit(unit_ConversionLinear, 2, 4, 1).ConvertFromBase(nan)));
}

TEST(Unit, ZeroSlopeIsReportedAndGivesZeroWhereItIsGuarded) {
  ReportCapture reports;
  const CUnit tofd = Tofd(0, 0, 100, 0);
  CUnit unknown;
  unknown.CUpdateUnit(unit_Generic, unit_DataGeneric, unit_ConversionNone, 0, 0, &Base());
  const std::size_t before = reports.Assertions();
  EXPECT_EQ(tofd.ConvertToBase(5), 0);
  EXPECT_EQ(tofd.ConvertFromBase(5), 0);
  EXPECT_EQ(unknown.ConvertToBase(5), 0);
  EXPECT_EQ(unknown.ConvertFromBase(5), 0);
  EXPECT_EQ(reports.Assertions(), before + 4);
}

TEST(Unit, EachBrokenInvariantIsReported) {
  ReportCapture reports;
  const auto after = [&reports](const auto& act) {
    const std::size_t before = reports.Assertions();
    act();
    return reports.Assertions() - before;
  };
  CUnit unit(unit_Length, unit_Metre, unit_ConversionLinear, 1, 0, nullptr);
  EXPECT_EQ(after([&] { CUnit copy(unit); }), 0u) << "a copy carries its own tag";
  EXPECT_EQ(after([] { CUnit fresh; }), 0u);
  EXPECT_EQ(after([] { CUnit().ValidateObjectState(); }), 1u) << "conversion -1";
  EXPECT_EQ(after([] { CUnit(unit_Length, unit_Metre, unit_ConversionLinear, 0, 0, nullptr); }), 2u)
      << "both slopes";
  EXPECT_EQ(after([] { CUnit(unit_Length, unit_Metre, unit_ConversionLinear, nan, 0, nullptr); }),
            2u);
  EXPECT_EQ(after([] {
              CUnit(static_cast<unit_enumUnits>(17),
                    static_cast<unit_enumDataUnit>(15),
                    static_cast<unit_enumConversionType>(5),
                    1,
                    0,
                    nullptr);
            }),
            3u);
  EXPECT_EQ(after([&] { unit.SetLinearFactors(1, -1, 0); }), 2u) << "on entry, and in the state";
  EXPECT_EQ(after([&] { unit.SetLinearFactors(1, -1, 0); }), 1u)
      << "equal factors leave the object alone";
  EXPECT_EQ(after([&] { unit.SetDBFactors(1, 0, 0); }), 0u);
  EXPECT_EQ(after([&] { unit.SetDisplayPrecision(11); }), 2u);
}

TEST(Unit, UpdatesKeepPrecisionAndFormat) {
  CUnit unit(unit_Length, unit_Millimetre, unit_ConversionLinear, 1000, 0, &Base());
  unit.SetDisplayPrecision(1);
  EXPECT_EQ(unit.GetDisplayFormat(), L"%.1f") << "the precision was 1 already";
  unit.SetDisplayPrecision(3);
  EXPECT_EQ(unit.GetDisplayFormat(), L"%-12.3f");
  unit.CUpdateUnit(unit_Decibel, unit_DataDecibel, 2, 1, 0, &Base());
  EXPECT_EQ(unit.GetDisplayFormat(), L"%-12.3f");
  EXPECT_EQ(unit.GetDisplayPrecision(), 3);
  EXPECT_EQ(unit.ConvertToBase(5), 2);
}

TEST(Unit, FormatsValuesWithTheirSymbol) {
  const auto text = [](unit_enumDataUnit dataUnit, int digits, double value) {
    CUnit unit(unit_Generic, dataUnit, unit_ConversionLinear, 1, 0, nullptr);
    unit.SetDisplayPrecision(digits);
    return unit.FormatValue(value);
  };
  EXPECT_EQ(text(unit_Millimetre, 1, 12.34), L"12.3 mm");
  EXPECT_EQ(text(unit_Microsecond, 2, -0.001), L"0.00 \u00b5s") << "no sign on zero";
  EXPECT_EQ(text(unit_Degree, 0, 45.4), L"45\u00b0");
  EXPECT_EQ(text(unit_DataPoint, 0, 7), L"7");
  EXPECT_EQ(text(unit_DataDecibel, 1, -inf), L"-inf dB");
  EXPECT_EQ(text(unit_DataPercent, 1, nan), L"--- %");
  EXPECT_EQ(text(unit_Metre, 10, -1e308).size(), 1 + 309 + 11 + 2u);
  const ReportCapture reports;
  EXPECT_EQ(text(static_cast<unit_enumDataUnit>(15), 1, 2), L"2.0");
  EXPECT_EQ(CUnit().GetDisplayFormat(), L"");
}

}  // namespace
