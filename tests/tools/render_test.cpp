#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "drawing.h"

namespace utdata::test {
namespace {

TEST_F(RenderTest, ShowsTheCrackOfTheSimulatedScanWhereItIs) {
  ASSERT_EQ(Run("demo --out .").status, 0);
  constexpr double halfWavelength = 0.6;  // mm: as near as the middle of a pulse can be located
  const Drawing path = Render("weld.fpd", "--row 5 --samples path --gain 3");
  const Drawing::Spot tip = path.BrightestWithin(50, 85, 3, 18);
  EXPECT_NEAR(tip.across, 66, 1);
  EXPECT_NEAR(tip.down, 14, halfWavelength);
  const Drawing::Spot hole = path.BrightestWithin(10, 30, 1, 18);
  EXPECT_NEAR(hole.across, 20, 1);
  EXPECT_NEAR(hole.down, 5 - 0.75, halfWavelength);

  const Drawing time = Render("weld.fpd", "--row 5 --gain 3");
  const Drawing::Spot sameTip = time.BrightestWithin(50, 85, 1, 6);
  EXPECT_NEAR(sameTip.across, 66, 1);
  EXPECT_NEAR(sameTip.down, 2 * 14e3 / 5920, 2 * halfWavelength * 1e3 / 5920);

  // Beyond the crack's ends there is only noise.
  const Drawing beside = Render("weld.fpd", "--row 0 --samples path --gain 3");
  EXPECT_LT(beside.BrightestWithin(50, 85, 3, 18).brightness, tip.brightness / 2);
}

TEST_F(RenderTest, KeepsLengthsInProportionAndCellsWhole) {
  ASSERT_EQ(Run("demo --out .").status, 0);
  const Drawing path = Render("weld.fpd", "--samples path");
  const double acrossScale =
      path.Image("width") / (path.Value("across", 1) - path.Value("across", 0));
  const double downScale = path.Image("height") / (path.Value("down", 1) - path.Value("down", 0));
  EXPECT_NEAR(acrossScale / downScale, 1, 1 / path.Image("height"));
  const Drawing time = Render("weld.fpd", "");
  EXPECT_EQ(std::fmod(time.Image("width"), 256), 0);
  EXPECT_EQ(time.Image("height"), 512);
  EXPECT_EQ(time.png.Width(), time.facts["width"]);
  EXPECT_EQ(time.png.Height(), time.facts["height"]);
}

// 4205 x 270 mm true to scale would be a strip of 56 pixels.
TEST_F(RenderTest, KeepsAStripLegible) {
  Import(std::string(4205 * 27, '\1'), "27,4205,1", "u8", "--rectified --row-step 10");
  const Drawing strip = View("scan.fpd", "--data 0 --view c");
  EXPECT_GE(strip.Image("height"), 270);
  EXPECT_LE(strip.png.Width(), 2000);
  const ProgramResult text = Run("render scan.fpd --data 0 --view c -o strip.png");
  EXPECT_NE(text.out.find("Not true to scale"), std::string::npos) << text.out;
}

struct RenderCase {
  const char* dtype;
  const char* more;
  std::string quiet;   ///< the bytes of a sample without amplitude
  std::string strong;  ///< of one near full scale
  std::string weak;    ///< of one at about half
  double percent;      ///< of the strong one
};

TEST_F(RenderTest, FindsTheStrongestCellInEverySampleType) {
  const std::vector<RenderCase> cases = {
      {"u8", "--rectified", {'\0'}, {'\xF0'}, {'\x78'}, 100 * 240 / 255.0},
      {"u8", "", {'\x80'}, {'\x08'}, {'\xC0'}, 100 * (8 - 128) / 128.0},
      {"i8", "", {'\0'}, {'\x90'}, {'\x38'}, 100 * -112 / 128.0},
      {"u16", "--rectified", {'\0', '\0'}, {'\0', '\xF0'}, {'\0', '\x78'}, 100 * 0xF000 / 65535.0},
      {"u16",
       "--rectified --big-endian",
       {'\0', '\0'},
       {'\xF0', '\0'},
       {'\x78', '\0'},
       100 * 0xF000 / 65535.0},
      {"u16",
       "",
       {'\0', '\x80'},
       {'\0', '\x08'},
       {'\0', '\xC0'},
       100 * (0x0800 - 0x8000) / 32768.0},
      {"i16", "", {'\0', '\0'}, {'\0', '\x90'}, {'\0', '\x38'}, 100 * -28672 / 32768.0},
  };
  for (const RenderCase& type : cases) {
    SCOPED_TRACE(std::string(type.dtype) + " " + type.more);
    std::string bytes;
    for (int cell = 0; cell < 5 * 6; ++cell)
      for (int sample = 0; sample < 9; ++sample)
        bytes += cell == 3 * 6 + 4 && sample == 7 ? type.strong
                 : cell == 6 && sample == 1       ? type.weak
                                                  : type.quiet;
    Import(
        bytes, "5,6,9", type.dtype, std::string(type.more) + " --column-step 2 --sample-step 50");
    const Drawing drawing = Render("scan.fpd", "");
    EXPECT_EQ(drawing.facts["row"], 3);
    EXPECT_NE(drawing.facts["title"].get<std::string>().find("strongest cell"), std::string::npos);
    EXPECT_NEAR(drawing.facts["strongest"]["percent"].get<double>(), type.percent, 1e-6);
    EXPECT_NEAR(drawing.Brightest().across, 8, 1e-3);   // column 4
    EXPECT_NEAR(drawing.Brightest().down, 0.35, 1e-4);  // sample 7
    const Drawing chosen = Render("scan.fpd", "--row 1");
    EXPECT_NEAR(chosen.Brightest().across, 0, 1e-3);
    EXPECT_NEAR(chosen.Brightest().down, 0.05, 1e-4);
    EXPECT_EQ(chosen.facts["title"].get<std::string>().find("strongest cell"), std::string::npos);
  }
}

TEST_F(RenderTest, LosesNoEchoAmongMoreCellsThanPixels) {
  std::vector<std::uint16_t> samples(3000 * 2500, 100);
  samples[1777 * 2500 + 1234] = 60000;
  Import(Bytes(samples), "1,3000,2500", "u16", "--rectified --sample-step 10");
  const Drawing drawing = Render("scan.fpd", "");
  EXPECT_LT(drawing.Image("width"), 2000);
  EXPECT_NEAR(drawing.Brightest().across, 1777, 5);
  EXPECT_NEAR(drawing.Brightest().down, 12.34, 0.05);
}

TEST_F(RenderTest, DrawsAxesBeyondReason) {
  constexpr float infinite = std::numeric_limits<float>::infinity();
  for (const auto& [step, offset] : std::vector<std::pair<float, float>>{{0.F, 0.F},
                                                                         {1e-12F, 1e30F},
                                                                         {1e30F, -1e30F},
                                                                         {3e38F, 3e38F},
                                                                         {1e-38F, 0.F},
                                                                         {-0.001F, 0.5F},
                                                                         {infinite, 0.F},
                                                                         {0.001F, std::nanf("")}}) {
    for (const float soundSpeed : {0.F, 5900.F, 1e-38F, infinite}) {
      SCOPED_TRACE(std::to_string(step) + " from " + std::to_string(offset) + ", " +
                   std::to_string(soundSpeed) + " m/s");
      std::filesystem::remove(At("axes.fpd"));
      WriteGroup("axes.fpd", [step = step, offset = offset, soundSpeed](CGDataTypeFDD& group) {
        group.columnResolution = group.rowResolution = group.sampleResolution = step;
        group.columnOffset = group.rowOffset = group.sampleOffset = offset;
        group.soundSpeed = soundSpeed;
      });
      const Drawing drawing = Render("axes.fpd", "");
      EXPECT_GT(drawing.png.Width(), 100);
      EXPECT_LT(drawing.png.Width() * drawing.png.Height(), 10'000'000);
      EXPECT_EQ(Run("info axes.fpd").status, 0);
    }
  }
}

TEST_F(RenderTest, RefusesWhatItCannotDraw) {
  ASSERT_EQ(Run("demo --out .").status, 0);
  WriteFile(At("file.png"), "kept");
  std::filesystem::create_directory(At("folder"));
  WriteGroup("none.fpd", [](CGDataTypeFDD& group) { group.dataPointer = nullptr; });
  WriteGroup("empty.fpd", [](CGDataTypeFDD& group) {
    group.columnQuantity = 0;
    group.dataPointer = nullptr;
  });
  WriteGroup("type.fpd",
             [](CGDataTypeFDD& group) { group.SetDataType(static_cast<kvt_enumDataType>(9)); });
  WriteGroup("range.fpd", [](CGDataTypeFDD& group) { group.dataMaximum = std::nanf(""); });
  WriteGroup("flat.fpd", [](CGDataTypeFDD& group) { group.dataMinimum = group.dataMaximum = 5; });
  WriteIndexed("outside.fpd", {0, 24, 0, 32, 0, 41}, 48);
  WriteIndexed("odd.fpd", {0, 24, 0, 32, 0, 25}, 48);
  WriteGroup("short.fpd", [](CGDataTypeFDD& group) { group.dataSize = 47; });
  const std::set<std::string> before = Names();
  struct Case {
    std::string arguments;
    int status;
    std::string named;   ///< in the one line of the failure
    std::string listed;  ///< on the standard output
  };
  for (const Case& bad : std::vector<Case>{
           {"weld.fpd --data 9 --view b -o p.png",
            1,
            "'9' matches no data group",
            "C-scan amplitude"},
           {"weld.fpd --data class=7 --view b -o p.png", 1, "matches no data group", "A-scan"},
           {"weld.fpd --data colour=red --view b -o p.png", 1, "matches no data group", "A-scan"},
           {"weld.fpd --data channel=0 --view b -o p.png", 1, "matches 5", "C-scan amplitude"},
           {"weld.fpd --data class=2,channel=0,gate=1 --view b -o p.png", 1, "has no B-scan", ""},
           {"weld.fpd --data class=3,channel=0,gate=1 --view d -o p.png", 1, "has no D-scan", ""},
           {"weld.fpd --data 0 --view d --column 256 -o p.png", 1, "its columns are 0 to 255", ""},
           {"weld.fpd --data 0 --view a --row 10 --column 0 -o p.png",
            1,
            "its rows are 0 to 9",
            ""},
           {"weld.fpd --data 0 --view a --row 0 --column 256 -o p.png",
            1,
            "its columns are 0 to 255",
            ""},
           {"outside.fpd --data 0 --view c -o p.png", 1, "cell 5 is said to begin at byte 41", ""},
           {"odd.fpd --data 0 --view c -o p.png", 1, "cell 5 is said to begin at byte 25", ""},
           {"short.fpd --data 0 --view c -o p.png", 1, "its layout needs 6 cells of 8 bytes", ""},
           {"weld.fpd --data 0 --view b -o p.jpg", 2, "no name of a PNG file", ""},
           {"weld.fpd --data 0 --view b --column 3 -o p.png",
            2,
            "--column: a B-scan takes none",
            ""},
           {"weld.fpd --data 0 --view c --row 3 -o p.png", 2, "--row: a C-scan takes none", ""},
           {"weld.fpd --data 0 --view c --samples path -o p.png",
            2,
            "--samples: a C-scan takes none",
            ""},
           {"weld.fpd --data 0 --view b --row 10 -o p.png", 1, "its rows are 0 to 9", ""},
           {"weld.fpd --data 0 --view b -o nowhere/p.png",
            1,
            "nowhere/p.png: cannot be written",
            ""},
           {"weld.fpd --data 0 --view b -o file.png/p.png --force",
            1,
            "file.png/p.png: cannot be written",
            ""},
           {"weld.fpd --data 0 --view b -o folder --force", 1, "folder: cannot be written", ""},
           {"weld.fpd --data 0 --view b -o file.png", 1, "the file exists", ""},
           {"weld.fpd --data 0 --view b -o ./weld.A01 --force",
            1,
            "it is the inspection file itself",
            ""},
           {"file.png --data 0 --view b -o p.png", 1, "file.png", ""},
           {"none.fpd --data 0 --view b -o p.png", 1, "has no samples", ""},
           {"empty.fpd --data 0 --view b -o p.png", 1, "the data group is empty", ""},
           {"type.fpd --data 0 --view b -o p.png", 1, "have no display codes", ""},
           {"range.fpd --data 0 --view b -o p.png", 1, "range of its values", ""},
           {"flat.fpd --data 0 --view b -o p.png", 1, "range of its values", ""},
           {"weld.fpd --data 0 --view z -o p.png", 2, "--view", ""},
           {"weld.fpd --data 0 --view b --gain 0 -o p.png", 2, "--gain", ""},
           {"weld.fpd --view b -o p.png", 2, "--data", ""}}) {
    SCOPED_TRACE(bad.arguments);
    const ProgramResult result = Run("render " + bad.arguments);
    ExpectOneLine(result, bad.status, bad.named);
    EXPECT_NE(result.out.find(bad.listed), std::string::npos) << result.out;
    EXPECT_EQ(Names(), before);
  }
  EXPECT_EQ(ReadFile(At("file.png")), "kept");
}

TEST_F(RenderTest, InfoShowsRangesInEverydayUnits) {
  ASSERT_EQ(Run("demo --out .").status, 0);
  const std::string info = Run("info weld.fpd").out;
  for (const std::string wanted : {"256 × 0.5 mm",
                                   "0 to 127.5 mm",
                                   "0 to 45 mm",
                                   "0 to 10.22 µs",
                                   "0 to 30.25",
                                   "-100 to 100 %, -90.3 to 0.0 dB"})
    EXPECT_NE(info.find(wanted), std::string::npos) << wanted << "\n" << info;
}

}  // namespace
}  // namespace utdata::test
