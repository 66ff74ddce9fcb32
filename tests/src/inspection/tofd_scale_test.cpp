#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/failure.h"
#include "utdata/newscan.h"
#include "utdata/readout.h"
#include "utdata/views.h"

namespace utdata::test {
namespace {

/// A pair of probes 90 mm apart on a plate of 60 mm: the lateral wave runs 45 mm to the middle, the
/// back wall's echo 75 mm. A sample counts 0.5 mm of half path, from 40 mm.
CGDataTypeFDD TofdRecord() {
  CGDataTypeFDD record = NominalRecord(*FindSampleType("i16"));
  SetLayout(record, *FindSampleType("i16"), {1, 1, 100, true});
  record.SetDataRectification(gdata_RectifNone);
  record.tofd = 1;
  record.probeSeparation = 0.09F;
  record.partThickness = 0.06F;
  record.soundSpeed = 5000;
  record.sampleResolution = 200e-9F;
  record.sampleOffset = 16e-6F;
  return record;
}

TEST(TofdScale, LiesBetweenLateralWaveAndBackWall) {
  const ScratchDirectory folder;
  Inspection inspection = Inspection::New((folder.Path() / "tofd.fpd").string());
  const DataGroup group = inspection.AddData(TofdRecord(), std::vector<std::byte>(200));
  const auto scale = TofdScaleOf(group);
  ASSERT_TRUE(scale);
  EXPECT_NEAR(scale->lateralWave, 10, 1e-4);
  ASSERT_TRUE(scale->backWall);
  EXPECT_NEAR(*scale->backWall, 70, 1e-3);
  EXPECT_TRUE(std::isnan(scale->depths[9]));
  EXPECT_NEAR(scale->depths[70], 60, 1e-3);
  EXPECT_NEAR(scale->SampleAt(scale->depths[33]).value_or(0), 33, 1e-6);
  EXPECT_NEAR(scale->SampleAt(0).value_or(0), 10, 1e-3);
  EXPECT_FALSE(scale->SampleAt(-1));
  // From 50 mm on, 21.8 mm deep: no sample is less deep, and the first one is no lateral wave.
  CGDataTypeFDD late = TofdRecord();
  late.channelId = 1;
  late.sampleOffset = 20e-6F;
  const auto lateScale = TofdScaleOf(inspection.AddData(late, std::vector<std::byte>(200)));
  EXPECT_NEAR(lateScale.value().lateralWave, -10, 1e-3);
  EXPECT_FALSE(lateScale->SampleAt(0));
  EXPECT_FALSE(lateScale->SampleAt(21.7));
  EXPECT_NEAR(lateScale->SampleAt(60).value_or(0), 50, 1e-3);
  EXPECT_FALSE(scale->SampleAt(scale->depths.back() + 1));
}

// An item has a separation of 1 mm and a radius of 57.3 mm where nobody gave one.
TEST(TofdScale, IsNotThereWhereWhatItFollowsFromIsNotKnown) {
  const auto round = [](CGDataTypeFDD& record) {
    record.inspectionGeometry = gdata_GeometryCircumferential;
    record.geometryKind = 16;
    record.inspectionRadius = 0.1F;
  };
  struct Case {
    std::function<void(CGDataTypeFDD&)> change;
    std::string why;
  };
  const std::vector<Case> cases = {
      {[](CGDataTypeFDD&) {}, ""},
      {round, ""},
      {[](CGDataTypeFDD& record) { record.tofd = 0; }, "it is no time-of-flight diffraction data"},
      {[](CGDataTypeFDD& record) { record.probeSeparation = 0; },
       "the probe separation is not known"},
      {[](CGDataTypeFDD& record) { record.probeSeparation = -0.09F; },
       "the probe separation is not known"},
      {[](CGDataTypeFDD& record) { record.soundSpeed = 0; }, "the sound speed is not known"},
      {[](CGDataTypeFDD& record) { record.sampleUnits = kvt_UnitMetre; },
       "its samples do not count time"},
      {[&](CGDataTypeFDD& record) { round(record), record.inspectionRadius = 0; },
       "the radius of the part is not known"},
      {[&](CGDataTypeFDD& record) { round(record), record.inspectionRadius = 0.06F; },
       "the radius of the part is not above its thickness"},
      {[&](CGDataTypeFDD& record) { round(record), record.probeSeparation = 0.7F; },
       "the probe separation is more than half of the circumference"},
  };
  const ScratchDirectory folder;
  const std::string path = (folder.Path() / "tofd.fpd").string();
  for (const Case& each : cases) {
    SCOPED_TRACE(each.why);
    CGDataTypeFDD record = TofdRecord();
    each.change(record);
    {
      Inspection made = Inspection::New(path);
      made.AddData(record, std::vector<std::byte>(200));
      made.SaveAs(path, true);
    }
    const Inspection inspection = Inspection::Open(path);
    const DataGroup group = inspection.Data().front();
    EXPECT_EQ(WhyNoTofdScale(group), each.why);
    EXPECT_EQ(TofdScaleOf(group).has_value(), each.why.empty());
    EXPECT_EQ(group.TofdDepths().size(), each.why.empty() ? 100U : 0U);
    EXPECT_EQ(group.ReadOut(0, 0, 99).tofdDepth.IsKnown(), each.why.empty());
  }
}

// A wave of three samples wanders by 10 samples over 60 columns; the back wall's stronger echo lies
// at sample 110.
TEST(TofdScale, StraightensByTheLateralWave) {
  const ScratchDirectory folder;
  Inspection inspection = Inspection::New((folder.Path() / "tofd.fpd").string());
  CGDataTypeFDD record = TofdRecord();
  SetLayout(record, *FindSampleType("i16"), {60, 1, 140, true});
  record.sampleOffset = 8e-6F;
  std::vector<std::int16_t> samples(60 * 140);
  std::vector<std::int32_t> places;
  for (std::int32_t column = 0; column < 60; ++column) {
    const auto place = static_cast<std::int32_t>(std::lround(52 + 5 * std::sin(column / 9.0)));
    places.push_back(place);
    std::int16_t* const ascan = samples.data() + column * 140;
    ascan[place - 1] = ascan[place + 1] = -400;
    ascan[place] = 1000;
    ascan[110] = 30000;
    ascan[(column * 37) % 130 + 5] += 150;  // noise
  }
  const auto bytes = std::as_bytes(std::span(samples));
  const DataGroup group = inspection.AddData(record, {bytes.begin(), bytes.end()});
  const std::vector<std::int32_t> shifts = StraighteningShifts(group, group.AllCells());
  ASSERT_EQ(shifts.size(), places.size());
  for (std::size_t column = 0; column < places.size(); ++column)
    EXPECT_EQ(places[column] + shifts[column], 50) << column;

  record.channelId = 1;
  record.sampleOffset = 20e-6F;  // behind the lateral wave
  const DataGroup late = inspection.AddData(record, {bytes.begin(), bytes.end()});
  EXPECT_THROW((void)StraighteningShifts(late, late.AllCells()), Error);
}

}  // namespace
}  // namespace utdata::test
