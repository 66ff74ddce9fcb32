#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/dac.h"
#include "utdata/failure.h"
#include "utdata/newscan.h"
#include "utdata/readout.h"

namespace utdata::test {
namespace {

constexpr double never = std::numeric_limits<double>::quiet_NaN();

// From 80 % at 2 us to 20 % at 4 us the curve falls by 12.04 dB: half way it is at the geometric
// mean, after a quarter of the way at 80 % x 4^(-1/4).
TEST(DacCurve, IsStraightInDecibelsBetweenItsPoints) {
  const DacCurve curve({{4, 20}, {2, 80}, {8, 10}});
  EXPECT_DOUBLE_EQ(curve.LevelAt(2).value_or(never), 80);
  EXPECT_DOUBLE_EQ(curve.LevelAt(3).value_or(never), 40);
  EXPECT_NEAR(curve.LevelAt(2.5).value_or(never), 56.569, 1e-3);
  EXPECT_DOUBLE_EQ(curve.LevelAt(4).value_or(never), 20);
  EXPECT_NEAR(curve.LevelAt(6).value_or(never), 14.142, 1e-3);
  EXPECT_DOUBLE_EQ(curve.LevelAt(8).value_or(never), 10);
  EXPECT_NEAR(curve.DecibelsAt(-20, 3).value_or(never), -6.0206, 1e-4);
  EXPECT_NEAR(curve.DecibelsAt(40, 8).value_or(never), 12.0412, 1e-4);
  EXPECT_EQ(curve.DecibelsAt(0, 3).value_or(never), -std::numeric_limits<double>::infinity());
  for (const double outside : {1.999, 8.001, never}) {
    EXPECT_FALSE(curve.LevelAt(outside)) << outside;
    EXPECT_FALSE(curve.DecibelsAt(50, outside)) << outside;
  }
}

TEST(DacCurve, LeavesOutWhatIsNoLevel) {
  const DacCurve curve({{4, 20}, {3, 0}, {3, -5}, {never, 5}, {2, 80}, {4, 70}, {5, never}});
  EXPECT_EQ(curve.Points(), (std::vector<DacCurve::Point>{{2, 80}, {4, 20}}));
  EXPECT_THROW(DacCurve({{2, 80}, {2, 40}}), Error);
}

/// Samples of 0.5 us each, of which number 6, at 3 us, holds 32 %.
class DacOfTest : public testing::Test {
 protected:
  struct Setup {
    CGDataTypeFDD record;
    std::int32_t enabled = 1;
    std::uint32_t channelDac = 3;
    std::int32_t timeCorrectedGain = 0;
    std::vector<std::array<float, 2>> points = {{4e-6F, 20}, {2e-6F, 80}};
  };

  /// What is asked of the data group with that setup, as it is read from a file.
  static void Ask(const std::function<void(Setup&)>& change,
                  const std::function<void(const DataGroup&)>& ask) {
    const SampleType& type = *FindSampleType("i16");
    Setup setup{.record = NominalRecord(type)};
    SetLayout(setup.record, type, {1, 1, 10, true});
    setup.record.SetDataRectification(gdata_RectifNone);
    setup.record.dataMinimum = -100;
    setup.record.dataMaximum = 100;
    setup.record.sampleResolution = 0.5e-6F;
    change(setup);
    const ScratchDirectory folder;
    const std::string path = (folder.Path() / "dac.fpd").string();
    Inspection made = Inspection::New(path);
    ChannelSetup channel = SetupOf(setup.record);
    channel.channel.dacEnabled = setup.enabled;
    channel.channel.dacId = setup.channelDac;
    AddChannel(made, channel);
    std::vector<std::byte> samples(20);
    samples[12] = std::byte{32};
    made.AddData(setup.record, samples);
    CGDacTypeDescr* dac = gdac_Allocate(1, L"Holes");
    dac->dacId = 3;
    dac->timeCorrectedGain = setup.timeCorrectedGain;
    dac->referenceLevel = 64;
    dac->points = setup.points;
    made.Descriptor().dacs.AddTail(dac);
    made.SaveAs(path);
    const Inspection inspection = Inspection::Open(path);
    ask(inspection.Data().front());
  }
};

TEST_F(DacOfTest, ReadsTheCurveThatTheChannelNames) {
  Ask([](Setup&) {},
      [](const DataGroup& group) {
        const auto curve = DacOf(group);
        ASSERT_TRUE(curve);
        EXPECT_EQ(curve->Name(), "Holes");
        EXPECT_NEAR(curve->LevelAt(3).value_or(never), 40, 1e-4);
        EXPECT_NEAR(group.ReadOut(0, 0, 6).decibelsToDac, -1.9382, 1e-3);  // 32 % of 40 %
        EXPECT_TRUE(std::isnan(group.ReadOut(0, 0, 9).decibelsToDac));
      });
}

// 32 % is half of the level of 64 % that the receiver brought the reference echoes to.
TEST_F(DacOfTest, IsLevelWhereTheReceiverFollowedIt) {
  Ask([](Setup& setup) { setup.timeCorrectedGain = 1; },
      [](const DataGroup& group) {
        const auto curve = DacOf(group);
        ASSERT_TRUE(curve);
        EXPECT_NEAR(curve->LevelAt(2.1).value_or(never), 64, 1e-4);
        EXPECT_NEAR(group.ReadOut(0, 0, 6).decibelsToDac, -6.0206, 1e-3);
        EXPECT_FALSE(curve->LevelAt(4.5));
      });
}

TEST_F(DacOfTest, IsNotThereWhereTheFileGivesNone) {
  for (const auto change : {+[](Setup& setup) { setup.enabled = 0; },
                            +[](Setup& setup) { setup.channelDac = 2; },
                            +[](Setup& setup) { setup.points.pop_back(); },
                            +[](Setup& setup) { setup.points[0][1] = 0; },
                            +[](Setup& setup) { setup.record.sampleUnits = kvt_UnitMetre; },
                            +[](Setup& setup) { setup.record.dataClass = gdata_CScanAmplitude; }})
    Ask(change, [](const DataGroup& group) { EXPECT_FALSE(DacOf(group)); });
}

}  // namespace
}  // namespace utdata::test
