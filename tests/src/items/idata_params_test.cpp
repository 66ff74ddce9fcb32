// Data items: inspection parameters, and the geometry of time-of-flight diffraction.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"

namespace {

using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

idata_typeInspParams OtherParams() {
  return {60, -90, 3, 450, 0.01f, 3230, 5, 0.2f, 6, 0.3f, 4e-6f};
}

TEST(Angles, AreBroughtBetween0And360) {
  const double cases[][2] = {{0, 0},
                             {359.5, 359.5},
                             {360, 0},
                             {720.5, 0.5},
                             {-90, 270},
                             {-720, 0},
                             {-1e-9, 0},
                             {nan, 0},
                             {inf, 0},
                             {-inf, 0},
                             {-0.25, 359.75}};
  for (const auto& [angle, normalised] : cases)
    EXPECT_EQ(NormalizeAngle(angle), normalised) << angle;
  EXPECT_FALSE(std::signbit(NormalizeAngle(-1e-300)));
}

TEST(InspectionParameters, ChangeRecordAndDescriptorAndMarkTheItem) {
  DataHost host;
  for (const std::uint32_t bit : {0u, std::uint32_t{gdata_MultiChannelMaster}})
    for (const auto c : {gdata_AScan,
                         gdata_CScanAmplitude,
                         gdata_CScanPosition,
                         gdata_CScanPositionFirst,
                         gdata_CScanPositionLast}) {
      SCOPED_TRACE(testing::Message() << c << " " << bit);
      CGDataTypeFDD record =
          SoundRecord({.gateId = 3, .dataClass = static_cast<gdata_enumDataClass>(c | bit)});
      record.sampleOffset = 1e-6f;
      record.dataOffset = 0.25f;
      const auto item = host.Make(record);
      idata_typeInspParams params = OtherParams();
      EXPECT_EQ(item->idata1_ModifyInspParam(&params, 0), 0);
      EXPECT_EQ(item->idata1_ModifGetStatus(), 1);

      idata_typeInspParams read;
      EXPECT_EQ(item->idata3_GetInspParam(&read), 0);
      EXPECT_EQ(read.probeAngle, 60);
      EXPECT_EQ(read.probeSkew, 270);
      EXPECT_EQ(read.probeThird, 3);
      EXPECT_EQ(read.probeFourth, 90);
      EXPECT_EQ(read.partThickness, 0.01f);
      EXPECT_EQ(read.soundSpeed, 3230);
      EXPECT_EQ(read.columnResolution, 0.001f) << "resolutions stay";
      EXPECT_EQ(read.columnOffset, 0.2f);
      EXPECT_EQ(read.rowResolution, 0.001f);
      EXPECT_EQ(read.rowOffset, 0.3f);
      EXPECT_EQ(read.sampleOffset, 4e-6f);

      const CGDataTypeFDD& copy = *item->idata1_GetGInfoRef();
      EXPECT_EQ(copy.probeSkew, 270);
      EXPECT_EQ(copy.soundSpeed, 3230);
      EXPECT_EQ(copy.rowOffset, 0.3f);
      EXPECT_EQ(copy.sampleOffset, c == gdata_CScanAmplitude ? 1e-6f : 4e-6f);
      const bool holdsPositions = c != gdata_AScan && c != gdata_CScanAmplitude;
      for (const CGDataTypeFDD* each :
           {&copy, static_cast<const CGDataTypeFDD*>(item->idata1_GetInfoRef())})
        EXPECT_EQ(each->dataOffset, holdsPositions ? 4e-6f : 0.25f);
    }
}

TEST(InspectionParameters, OfTofdChangeTheGeometryToo) {
  DataHost host;
  CGDataTypeFDD record = SoundRecord();
  record.tofd = 1;
  const auto item = host.Make(record);
  EXPECT_EQ(item->idata3_IsTOFD(), 1);
  idata_typeTOFD tofd = {0, gdata_GeometryCircumferential, 17, 0.3f, 0.04f, 0.06f, 12, 5920, 1e-6f};
  idata_typeInspParams params = OtherParams();
  item->idata3_ModifyTOFDParam(&tofd, &params);
  EXPECT_EQ(item->idata1_ModifGetStatus(), 1);
  idata_typeTOFD read;
  item->idata3_GetTOFDParam(&read);
  EXPECT_EQ(read.valid, 1);
  EXPECT_EQ(read.inspectionGeometry, gdata_GeometryCircumferential);
  EXPECT_EQ(read.geometryKind, 17u);
  EXPECT_EQ(read.inspectionRadius, 0.3f);
  EXPECT_EQ(read.partThickness, 0.04f) << "not that of the inspection parameters";
  EXPECT_EQ(read.probeSeparation, 0.06f);
  EXPECT_EQ(read.tofdValue, 12);
  EXPECT_EQ(read.soundSpeed, 5920);
  EXPECT_EQ(read.sampleOffsetCorrection, 0);
  for (const CGDataTypeFDD* each :
       {item->idata1_GetGInfoRef(), static_cast<CGDataTypeFDD*>(item->idata1_GetInfoRef())}) {
    EXPECT_EQ(each->columnResolution, 5);
    EXPECT_EQ(each->rowResolution, 6);
    EXPECT_EQ(each->geometryKind, 17u);
    EXPECT_FLOAT_EQ(each->sampleOffset, 3e-6f);
  }
}

TEST(InspectionParameters, ThatAreNoNumbersAreRefused) {
  DataHost host;
  const auto item = host.Make(SoundRecord());
  const CGDataTypeFDD before = *item->idata1_GetGInfoRef();
  using Params = float idata_typeInspParams::*;
  for (const Params field : {&idata_typeInspParams::probeAngle,
                             &idata_typeInspParams::probeFourth,
                             &idata_typeInspParams::soundSpeed,
                             &idata_typeInspParams::rowResolution,
                             &idata_typeInspParams::sampleOffset}) {
    idata_typeInspParams params = OtherParams();
    params.*field = static_cast<float>(nan);
    idata_typeTOFD tofd;
    ReportCapture reports;
    item->idata1_ModifyInspParam(&params, 0);
    item->idata3_ModifyTOFDParam(&tofd, &params);
    EXPECT_EQ(reports.Assertions(), 2u);
  }
  idata_typeTOFD tofd;
  tofd.probeSeparation = static_cast<float>(inf);
  idata_typeInspParams params = OtherParams();
  ReportCapture reports;
  item->idata3_ModifyTOFDParam(&tofd, &params);
  item->idata3_ModifyTOFDParam(nullptr, &params);
  item->idata1_ModifyInspParam(nullptr, 0);
  item->idata3_SetPartThickness(static_cast<float>(nan));
  item->idata3_SetPartOutsideDiameter(1e300);
  EXPECT_EQ(reports.Assertions(), 5u);
  EXPECT_TRUE(*item->idata1_GetGInfoRef() == before);
  EXPECT_EQ(item->idata3_GetPartThickness(), before.partThickness);
  EXPECT_EQ(item->idata1_ModifGetStatus(), 0);
}

TEST(InspectionParameters, ThicknessAndDiameterOfThePartConcernTheDescriptorAlone) {
  DataHost host;
  const auto item = host.Make(SoundRecord());
  item->idata3_SetPartThickness(0.007f);
  item->idata3_SetPartOutsideDiameter(0.5);
  EXPECT_EQ(item->idata3_GetPartThickness(), 0.007f);
  EXPECT_EQ(item->idata1_GetInfoRef()->GetInspRadius(), 0.25);
  EXPECT_EQ(item->idata1_GetGInfoRef()->partThickness, 0.02f);
  EXPECT_EQ(item->idata1_ModifGetStatus(), 0);
}

TEST(CircularGeometry, HasSagittaAndHalfChord) {
  struct Case {
    gdata_enumInspGeometry geometry;
    std::uint32_t kind;
    int result;
    double sagitta, halfChord;
  };
  const auto outer = [](double radius, double angle) { return radius * (1 - std::cos(angle)); };
  const Case cases[] = {
      {gdata_GeometryAxial, 16, 1, outer(0.1, 0.25), 0.1 * std::sin(0.25)},
      {gdata_GeometryCircumferential, 17, 1, outer(0.1, 0.25), 0.1 * std::sin(0.25)},
      // On the inside of a wall of 20 mm the radius is 80 mm.
      {gdata_GeometryAxial, 18, 1, -outer(0.08, 0.3125), 0.08 * std::sin(0.3125)},
      {gdata_GeometryAxial, 0, 1, -outer(0.08, 0.3125), 0.08 * std::sin(0.3125)},
      {gdata_GeometryFlat, 16, 0, 7, 8},
      {static_cast<gdata_enumInspGeometry>(3), 16, 0, 7, 8}};
  DataHost host;
  for (const Case& c : cases) {
    CGDataTypeFDD record = SoundRecord();
    record.inspectionGeometry = c.geometry;
    record.geometryKind = c.kind;
    const auto item = host.Make(record);
    double sagitta = 7, halfChord = 8;
    EXPECT_EQ(item->GetCircularParameter(&sagitta, &halfChord), c.result);
    EXPECT_NEAR(sagitta, c.sagitta, 1e-8);
    EXPECT_NEAR(halfChord, c.halfChord, 1e-8);
    EXPECT_EQ(item->GetCircularParameter(nullptr, &halfChord), 0);
  }
  CGDataTypeFDD solid = SoundRecord();
  solid.inspectionGeometry = gdata_GeometryAxial;
  solid.partThickness = solid.inspectionRadius;
  double sagitta = 7, halfChord = 8;
  EXPECT_EQ(host.Make(solid)->GetCircularParameter(&sagitta, &halfChord), 0)
      << "it has no inner surface";
  EXPECT_EQ(sagitta, 7);
}

}  // namespace
