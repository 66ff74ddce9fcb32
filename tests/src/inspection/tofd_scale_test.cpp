#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/newscan.h"
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
  EXPECT_FALSE(scale->SampleAt(scale->depths.back() + 1));
}

TEST(TofdScale, IsNotThereWhereItsUnitKnowsNoDepth) {
  const ScratchDirectory folder;
  const std::string path = (folder.Path() / "tofd.fpd").string();
  for (const auto change : {+[](CGDataTypeFDD& record) { record.tofd = 0; },
                            +[](CGDataTypeFDD& record) { record.probeSeparation = 0; },
                            +[](CGDataTypeFDD& record) { record.soundSpeed = 0; }}) {
    Inspection inspection = Inspection::New(path);
    CGDataTypeFDD record = TofdRecord();
    change(record);
    EXPECT_FALSE(TofdScaleOf(inspection.AddData(record, std::vector<std::byte>(200))));
  }
}

}  // namespace
}  // namespace utdata::test
