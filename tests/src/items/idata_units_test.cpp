// Data items: what a displayed value of each axis stands for, checked against the physics of the
// inspection.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"

namespace {

using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

constexpr double pi = std::numbers::pi;

double Base(const CIData& item,
            kvt_enumAxis axis,
            unit_enumUnits family,
            unit_enumDataUnit unit,
            double value) {
  const CUnit* const found = item.idata3_GetUnit(axis, family, unit);
  EXPECT_NE(found, nullptr) << axis << " " << family << " " << unit;
  return found ? found->ConvertToBase(value) : 0;
}

void ExpectClose(double value, double expected) {
  EXPECT_NEAR(value, expected, 1e-6 * std::max(1e-3, std::fabs(expected)));
}

/// Gives an item the geometry of a part by changing its parameters, as a host does.
void Bend(CIData& item,
          gdata_enumInspGeometry geometry,
          std::uint32_t kind,
          float radius,
          float thickness) {
  idata_typeInspParams params;
  idata_typeTOFD tofd;
  item.idata3_GetInspParam(&params);
  item.idata3_GetTOFDParam(&tofd);
  tofd.inspectionGeometry = geometry;
  tofd.geometryKind = kind;
  tofd.inspectionRadius = radius;
  tofd.partThickness = thickness;
  item.idata3_ModifyTOFDParam(&tofd, &params);
}

// The base of a scan axis is what its record is in, metres or degrees; the other one follows along
// the surface that is scanned.
TEST(DataItemUnits, ScanAxesConvertBetweenLengthAndAngle) {
  struct Case {
    std::uint32_t kind;
    float radius, thickness;
    double scannedRadius;
  };
  const Case cases[] = {{0, 0.1f, 0.02f, 0.1},
                        {16, 0.1f, 0.02f, 0.1},
                        {17, 0.25f, 0.02f, 0.25},
                        {18, 0.1f, 0.02f, 0.08},
                        {19, 0.25f, 0.05f, 0.2},
                        {18, 0.1f, 0.1f, 1e-10 / (2 * pi)}};
  DataHost host;
  for (const kvt_enumUnits units : {kvt_UnitMetre, kvt_UnitDegree}) {
    CGDataTypeFDD record = SoundRecord();
    record.columnUnits = record.rowUnits = units;
    record.columnOffset = 0.5f;
    record.rowOffset = -0.25f;
    record.rowResolution = 0.5f;
    const auto item = host.Make(record);
    for (const Case& c : cases)
      for (const auto geometry : {gdata_GeometryFlat, gdata_GeometryAxial}) {
        SCOPED_TRACE(testing::Message() << units << " " << c.kind << " " << c.radius);
        Bend(*item, geometry, c.kind, c.radius, c.thickness);
        ExpectClose(Base(*item, kvt_AxisColumn, unit_Point, unit_DataPoint, 7), 0.507);
        ExpectClose(Base(*item, kvt_AxisRow, unit_Point, unit_DataPoint, 3), 1.25);
        for (const kvt_enumAxis axis : {kvt_AxisColumn, kvt_AxisRow}) {
          // A turn is 360 degrees and one circumference.
          const double turn = 2 * pi * c.scannedRadius;
          const double baseOfTurn = units == kvt_UnitMetre ? turn : 360;
          ExpectClose(Base(*item, axis, unit_Angle, unit_Degree, 90), baseOfTurn / 4);
          ExpectClose(Base(*item, axis, unit_Angle, unit_Radian, pi), baseOfTurn / 2);
          EXPECT_NEAR(Base(*item, axis, unit_Length, unit_Metre, turn) / baseOfTurn, 1, 1e-6);
          EXPECT_NEAR(
              Base(*item, axis, unit_Length, unit_Millimetre, 1000 * turn) / baseOfTurn, 1, 1e-6);
          EXPECT_NEAR(
              Base(*item, axis, unit_Length, unit_Inch, 39.37 * turn) / baseOfTurn, 1, 1e-6);
        }
      }
  }
}

TEST(DataItemUnits, ScanAxesOfOtherUnitsAreReportedAndTheOtherAxesFollow) {
  DataHost host;
  CGDataTypeFDD record = SoundRecord();
  record.columnUnits = kvt_UnitSecond;
  ReportCapture reports;
  const auto item = host.Make(record);
  ASSERT_EQ(reports.Assertions(), 1u);
  EXPECT_EQ(reports.Reports().front().text.substr(0, 6), L"FALSE\n");
  ExpectClose(Base(*item, kvt_AxisColumn, unit_Point, unit_DataPoint, 7), 0.007);
  ExpectClose(Base(*item, kvt_AxisRow, unit_Angle, unit_Degree, 360), 2 * pi * 0.1);
}

// The base of the sample axis is the one-way path. Sound goes there and back in the time that the
// record counts.
TEST(DataItemUnits, SampleAxisConvertsTimeAndPath) {
  DataHost host;
  CGDataTypeFDD record = SoundRecord();
  record.sampleOffset = 2e-6f;
  const auto item = host.Make(record);
  for (const double speed : {5900.0, 3230.0}) {
    idata_typeInspParams params;
    item->idata3_GetInspParam(&params);
    params.soundSpeed = static_cast<float>(speed);
    params.sampleOffset += 1e-6f;
    item->idata1_ModifyInspParam(&params, 0);
    const auto base = [&](unit_enumUnits family, unit_enumDataUnit unit, double value) {
      return Base(*item, kvt_AxisSample, family, unit, value);
    };
    const double offset = params.sampleOffset;
    ExpectClose(base(unit_HalfPath, unit_Millimetre, 30), 0.03);
    ExpectClose(base(unit_Path, unit_Millimetre, 30), 0.015);
    ExpectClose(base(unit_Time, unit_Microsecond, 10), 10e-6 * speed / 2);
    ExpectClose(base(unit_OneWayTime, unit_Second, 10e-6), 10e-6 * speed);
    ExpectClose(base(unit_Depth, unit_Mil, 39.37), 0.001);
    ExpectClose(base(unit_Point, unit_DataPoint, 40), (offset + 40 * 1e-8) * speed / 2);
    ExpectClose(item->idata1_GetInfoRef()->GetSampleStart(), offset * speed / 2);
    ExpectClose(item->idata1_GetInfoRef()->GetSampleStop(), (offset + 100 * 1e-8) * speed / 2);
    EXPECT_EQ(item->idata1_GetInfoRef()->GetPointUnit(kvt_AxisSample),
              item->idata3_GetUnit(kvt_AxisSample, unit_Point, unit_DataGeneric));
  }
}

// Both probes stand on a surface on either side of the tip; the path is the distance between a
// probe and the tip.
TEST(DataItemUnits, TofdDepthIsThatOfATipBetweenTheProbes) {
  DataHost host;
  CGDataTypeFDD record = SoundRecord();
  record.tofd = 1;
  const auto item = host.Make(record);
  const double separation = record.probeSeparation;
  const auto base = [&](double millimetres) {
    return Base(*item, kvt_AxisSample, unit_TofdDepth, unit_Millimetre, millimetres);
  };
  ExpectClose(base(15), std::hypot(separation / 2, 0.015));
  ExpectClose(base(0), separation / 2);
  const double inner = 0.25 - 0.03;
  for (const double depth : {0.004, 0.015, 0.029}) {
    // Angles from the centre of the part to a probe, over half the arc between the probes.
    Bend(*item, gdata_GeometryCircumferential, 17, 0.25f, 0.03f);
    double angle = separation / 2 / 0.25;
    ExpectClose(base(1000 * depth),
                std::hypot(0.25 * std::sin(angle), 0.25 * std::cos(angle) - (0.25 - depth)));
    Bend(*item, gdata_GeometryAxial, 19, 0.25f, 0.03f);
    angle = separation / 2 / inner;
    ExpectClose(base(1000 * depth),
                std::hypot(inner * std::sin(angle), inner + depth - inner * std::cos(angle)));
  }
  Bend(*item, gdata_GeometryFlat, 19, 0.25f, 0.03f);
  ExpectClose(base(15), std::hypot(separation / 2, 0.015));
}

TEST(DataItemUnits, AmplitudesAreInPercentOfFullScale) {
  DataHost host;
  CGDataTypeFDD record = SoundRecord();
  const auto base =
      [](const CIData& item, unit_enumUnits family, unit_enumDataUnit unit, double value) {
        return Base(item, kvt_AxisAmplitude, family, unit, value);
      };
  const auto unipolar = host.Make(record);
  ExpectClose(base(*unipolar, unit_Point, unit_DataPoint, 255), 100);
  ExpectClose(base(*unipolar, unit_Percent, unit_DataPercent, 40), 40);
  ExpectClose(base(*unipolar, unit_Decibel, unit_DataDecibel, -6.0206), 50);

  record.SetDataRectification(gdata_RectifNone);
  const auto bipolar = host.Make(record);  // becomes -128 to 127
  ExpectClose(base(*bipolar, unit_Point, unit_DataPoint, 127), 100);
  ExpectClose(base(*bipolar, unit_Point, unit_DataPoint, -128), -100);

  // 160 steps of half a decibel: full scale is 80 dB, and -80 dB of percent is nothing.
  CGDataTypeFDD logarithmic = SoundRecord();
  logarithmic.SetDataScale(gdata_ScaleLogarithmic);
  logarithmic.dataMaximum = 160;
  logarithmic.dataResolution = 0.5f;
  const auto levels = host.Make(logarithmic);
  ExpectClose(base(*levels, unit_Decibel, unit_DataDecibel, 80), 100);
  ExpectClose(base(*levels, unit_Decibel, unit_DataDecibel, 20), 25);
  ExpectClose(base(*levels, unit_Point, unit_DataPoint, 80), 50);
  ExpectClose(base(*levels, unit_Percent, unit_DataPercent, 1), 50);

  CGDataTypeFDD analog = SoundRecord({.dataClass = gdata_AnalogScaled});
  analog.dataResolution = 0.25f;
  analog.dataOffset = -10;
  const auto scaled = host.Make(analog);
  ExpectClose(base(*scaled, unit_Scaled, unit_DataScaled, 15),
              100);  // sample 100 of 0.25 each above -10
  ExpectClose(base(*scaled, unit_Percent, unit_DataPercent, 40), 40);
  EXPECT_EQ(scaled->idata3_GetUnit(kvt_AxisAmplitude, unit_Decibel, unit_DataDecibel), nullptr);

  CGDataTypeFDD empty = SoundRecord();
  empty.dataMaximum = 0;
  ReportCapture reports;
  static_cast<void>(host.Make(empty));
  EXPECT_GT(reports.Assertions(), 0u) << "no full scale";
}

TEST(DataItemUnits, SamplesOfAnAngleCScanAreAngles) {
  DataHost host;
  CGDataTypeFDD record = SoundRecord({.dataClass = gdata_CScanAngle});
  record.sampleResolution = 0.5f;
  record.sampleUnits = kvt_UnitDegree;
  const auto item = host.Make(record);
  ExpectClose(Base(*item, kvt_AxisSample, unit_Angle, unit_Degree, 45), 90);
  ExpectClose(Base(*item, kvt_AxisSample, unit_Length, unit_Millimetre, 45), 90);
  ExpectClose(Base(*item, kvt_AxisSample, unit_Point, unit_DataPoint, 90), 90);
}

}  // namespace
