#include <gmock/gmock.h>

#include <cmath>

#include "drawing.h"

namespace utdata::test {
namespace {

using testing::HasSubstr;

class SectorViewTest : public RenderTest {
 protected:
  /// Writes one channel of 11 beams from 40 to 60 degrees in a plate of 20 mm. A sample counts
  /// 0.1 mm; that of 50 degrees has an echo of full scale after 25 mm, all begin with a pulse.
  void SetUp() override {
    RenderTest::SetUp();
    CFContTypeFileDescr file;
    ASSERT_TRUE(file.SetPath(At("sector.fpd").wstring()));
    std::vector<std::vector<std::uint16_t>> samples(beams, std::vector<std::uint16_t>(500, 100));
    for (std::uint32_t beam = 0; beam < beams; ++beam) {
      samples[beam][3] = 10000;
      if (beam == 5) samples[beam][250] = 8000;
      file.data.AddTail(MakeBeam(beam, samples[beam]));
    }
    SCFile::GroupHandle top = nullptr;
    SCFile::FileHandle handle = nullptr;
    ASSERT_EQ(CFCont().FileWrite(nullptr, &file, 1, &top, &handle, 0), 0);
    EXPECT_EQ(SCFile::file_Close(handle), 0);
    while (!file.data.IsEmpty()) {
      CGDataTypeFDD* group = file.data.RemoveHead();
      gdata_Delete(group, 1);
    }
  }

  static CGDataTypeFDD* MakeBeam(std::uint32_t beam, std::vector<std::uint16_t>& samples) {
    CGDataTypeFDD* group = gdata_Allocate(1, nullptr);
    group->columnQuantity = group->rowQuantity = 1;
    group->sampleQuantity = 500;
    group->sampleSize = 2;
    group->cellSize = 1000;
    group->columnResolution = group->rowResolution = 0.001F;
    group->sampleResolution = 40e-9F;
    group->soundSpeed = 5000;
    group->dataMaximum = 10000;
    group->SetDataRectification(gdata_RectifFull);
    group->SetDataBookmarkType(bookmark_MultiChannel);
    group->subChannelId = beam + 1;
    group->probeAngle = 40 + 2 * static_cast<float>(beam);
    group->partThickness = 0.02F;
    group->dataPointer = samples.data();
    return group;
  }

  static constexpr std::uint32_t beams = 11;
};

TEST_F(SectorViewTest, DrawsTheBeamsOfAChannelTrueToScale) {
  const Drawing drawing = View("sector.fpd", "--data channel=0 --view s --from 5");
  const double angle = 50 * 3.14159265358979 / 180;
  const nlohmann::json& strongest = drawing.facts["strongest"];
  EXPECT_EQ(strongest["data"], 5);
  EXPECT_EQ(strongest["sample"], 250);
  EXPECT_NEAR(strongest["percent"].get<double>(), 80, 1e-3);
  EXPECT_NEAR(strongest["depth"].get<double>(), 25 * std::cos(angle), 1e-3);
  EXPECT_EQ(strongest["leg"], 1);
  EXPECT_NEAR(drawing.facts["across"]["step"].get<double>(),
              drawing.facts["down"]["step"].get<double>(),
              1e-9);
  const Drawing::Spot echo = drawing.BrightestWithin(17, 21, 14.5, 17.5);
  EXPECT_NEAR(echo.across, 25 * std::sin(angle), 0.3);
  EXPECT_NEAR(echo.down, 25 * std::cos(angle), 0.3);
  // Without --from the initial pulse is the strongest.
  EXPECT_EQ(View("sector.fpd", "--data 3 --view s").facts["strongest"]["sample"], 3);
}

TEST_F(SectorViewTest, DrawsTheSameEchoFromEachSide) {
  const double angle = 50 * 3.14159265358979 / 180;
  const double away = 25 * std::sin(angle), depth = 25 * std::cos(angle);
  for (const auto& [view, across, down] :
       {std::tuple("top", away, 0.0), {"side", 0.0, depth}, {"end", away, depth}}) {
    const Drawing drawing =
        View("sector.fpd", std::string("--data class=1 --from 5 --view ") + view);
    EXPECT_EQ(drawing.facts["beams"], 11) << view;
    const nlohmann::json& strongest = drawing.facts["strongest"];
    EXPECT_EQ(strongest["data"], 5) << view;
    EXPECT_EQ(strongest["sample"], 250) << view;
    EXPECT_NEAR(strongest["column_position"].get<double>(), away, 1e-3) << view;
    EXPECT_NEAR(strongest["depth"].get<double>(), depth, 1e-3) << view;
    const Drawing::Spot echo = drawing.BrightestWithin(across - 2, across + 2, down - 2, down + 2);
    EXPECT_NEAR(echo.across, across, 0.5) << view;
    EXPECT_NEAR(echo.down, down, 0.5) << view;
  }
}

TEST_F(SectorViewTest, RefusesWhatIsNoSector) {
  Import(std::string(200, '\1'), "1,1,100", "u16", "--rectified");
  for (const auto& [arguments, status, why] :
       {std::tuple("scan.fpd --data 0 --view s", 1, "no sub-channels"),
        {"sector.fpd --data channel=0 --view b", 1, "matches 11 data groups"},
        {"sector.fpd --data 0 --view b --palette green", 2, "heat"},
        {"sector.fpd --data 0 --view end --row 0", 2, "an end view takes none"},
        {"sector.fpd --data 0 --view s --row 1", 1, "rows are 0 to 0"}}) {
    const ProgramResult result = Run(std::string("render -o picture.png --force ") + arguments);
    EXPECT_EQ(result.status, status) << arguments;
    EXPECT_THAT(result.error, HasSubstr(why)) << arguments;
  }
}

// A pair of probes 90 mm apart on a plate of 30 mm: the lateral wave runs 45 mm to the middle, the
// back wall's echo 54.08 mm. A sample counts 0.05 mm of half path, from 42 mm; the wave of the
// second column comes 20 samples late.
TEST_F(SectorViewTest, DrawsTofdDataBetweenLateralWaveAndBackWall) {
  std::vector<std::int16_t> samples(2 * 400);
  for (const std::size_t wave : {60U, 480U}) samples[wave] = 10000;
  for (const std::size_t wall : {242U, 662U}) samples[wall] = -30000;
  WriteGroup("tofd.fpd", [&](CGDataTypeFDD& group) {
    group.rowQuantity = 1;
    group.sampleQuantity = 400;
    group.cellSize = 800;
    group.SetDataType(kvt_Int16);
    group.dataMinimum = -32768;
    group.dataMaximum = 32767;
    group.soundSpeed = 5000;
    group.sampleResolution = 20e-9F;
    group.sampleOffset = 16.8e-6F;
    group.tofd = 1;
    group.probeSeparation = 0.09F;
    group.partThickness = 0.03F;
    group.dataPointer = samples.data();
  });
  const Drawing drawing = View("tofd.fpd", "--data 0 --view b");
  ASSERT_EQ(drawing.facts["lines"].size(), 2U);
  EXPECT_NEAR(drawing.facts["lines"][0]["down"].get<double>(), 18, 1e-3);
  EXPECT_NEAR(drawing.facts["lines"][1]["down"].get<double>(), 2 * 54.0833 / 5, 1e-3);
  EXPECT_EQ(drawing.facts["strongest"]["sample"], 242);
  const ProgramResult straightened =
      Run("render tofd.fpd --data 0 --view b --straighten -o picture.png --force");
  EXPECT_EQ(straightened.status, 0) << straightened.error;
  EXPECT_THAT(straightened.out, HasSubstr("30.0"));
  EXPECT_EQ(Run("render sector.fpd --data 0 --view b --straighten -o picture.png --force").status,
            1);
}

}  // namespace
}  // namespace utdata::test
