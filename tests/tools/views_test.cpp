#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "drawing.h"

namespace utdata::test {
namespace {

/// A scan with two echoes: the strongest, 60000, in row 2, column 4 at sample 30, and 50000 in row
/// 1, column 1 at sample 10.
std::string TwoEchoes() {
  constexpr int rows = 4, columns = 6, quantity = 50;
  std::vector<std::uint16_t> samples(rows * columns * quantity, 600);
  samples[(2 * columns + 4) * quantity + 30] = 60000;
  samples[(1 * columns + 1) * quantity + 10] = 50000;
  return Bytes(samples);
}

class ViewsTest : public RenderTest {
 protected:
  void SetUp() override {
    RenderTest::SetUp();
    Import(
        TwoEchoes(), "4,6,50", "u16", "--rectified --column-step 2 --row-step 5 --sample-step 20");
  }

  /// The highest point of an A-scan's curve, in the units of its axes.
  [[nodiscard]] static Drawing::Spot CurveTop(const Drawing& drawing) {
    const int left = static_cast<int>(drawing.Image("left"));
    const int top = static_cast<int>(drawing.Image("top"));
    const int width = static_cast<int>(drawing.Image("width"));
    const int height = static_cast<int>(drawing.Image("height"));
    const nlohmann::json& values = drawing.facts["values"];
    const double low = values["low"].get<double>(), high = values["high"].get<double>();
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const auto [red, green, blue] = drawing.png.Color({left + x, top + y});
        if (blue - red < 80) continue;  // the curve is blue, all else is grey or red
        return {drawing.Value("across", (x + 0.5) / width),
                high - (y + 0.5) / height * (high - low),
                0};
      }
    return {};
  }
};

TEST_F(ViewsTest, DrawsEachViewOfTheSameEchoes) {
  const Drawing cscan = View("scan.fpd", "--data 0 --view c");
  EXPECT_EQ(cscan.facts["strongest"]["row"], 2);
  EXPECT_EQ(cscan.facts["strongest"]["column"], 4);
  EXPECT_EQ(cscan.facts["strongest"]["sample"], 30);
  EXPECT_NEAR(cscan.Brightest().across, 8, 1e-3);
  EXPECT_NEAR(cscan.Brightest().down, 10, 0.05);
  const Drawing::Spot second = cscan.BrightestWithin(-1, 7, -3, 8);
  EXPECT_NEAR(second.across, 2, 1e-3);
  EXPECT_NEAR(second.down, 5, 0.05);

  const Drawing dscan = View("scan.fpd", "--data 0 --view d");
  EXPECT_EQ(dscan.facts["column"], 4);
  EXPECT_NE(dscan.facts["title"].get<std::string>().find(
                "D-scan at column 4 (8 mm), that of the strongest cell"),
            std::string::npos);
  EXPECT_NEAR(dscan.Brightest().across, 10, 1e-3);
  EXPECT_NEAR(dscan.Brightest().down, 0.6, 1e-4);
  const Drawing chosen = View("scan.fpd", "--data 0 --view d --column 1");
  EXPECT_EQ(chosen.facts["title"].get<std::string>().find("strongest"), std::string::npos);
  EXPECT_NEAR(chosen.Brightest().across, 5, 1e-3);
  EXPECT_NEAR(chosen.Brightest().down, 0.2, 1e-4);
}

// Samples count 0.0592 mm of half path: the second echo lies at 0.59 mm, before the strongest at
// 1.78 mm.
TEST_F(ViewsTest, ShowsSamplesBetweenHalfPathsAlone) {
  const std::string limits = " --from 0.3 --to 1.2";
  const Drawing cscan = View("scan.fpd", "--data 0 --view c" + limits);
  EXPECT_EQ(cscan.facts["strongest"]["row"], 1);
  EXPECT_EQ(cscan.facts["strongest"]["sample"], 10);
  EXPECT_NEAR(cscan.Brightest().across, 2, 1e-3);
  EXPECT_NEAR(cscan.Brightest().down, 5, 0.05);
  const Drawing bscan = View("scan.fpd", "--data 0 --view b" + limits);
  EXPECT_EQ(bscan.facts["row"], 1);
  EXPECT_EQ(bscan.facts["down"]["quantity"], 15);
  EXPECT_NEAR(bscan.facts["down"]["first"].get<double>(), 0.12, 1e-6);
  EXPECT_NEAR(bscan.Brightest().down, 0.2, 1e-4);
  const Drawing ascan = View("scan.fpd", "--data 0 --view a --samples path" + limits);
  EXPECT_EQ(ascan.facts["strongest"]["sample"], 10);
  EXPECT_NEAR(CurveTop(ascan).across, 0.592, 0.01);
  EXPECT_NEAR(CurveTop(ascan).down, 100 * 50000 / 65535.0, 0.5);
  for (const auto& [more, why] : {std::pair("--from 9", "from 0 to 2.891 mm"),
                                  {"--to 1 --from 1.01", "no samples between half paths"}}) {
    const ProgramResult refused =
        Run(std::string("render scan.fpd --data 0 --view d -o d.png ") + more);
    EXPECT_EQ(refused.status, 1) << more;
    EXPECT_NE(refused.error.find(why), std::string::npos) << refused.error;
  }
}

TEST_F(ViewsTest, IsDrawnInThePaletteThatIsWanted) {
  const Drawing rainbow = View("scan.fpd", "--data 0 --view c --palette rainbow");
  const Pixel corner = {static_cast<int>(rainbow.Image("left")) + 2,
                        static_cast<int>(rainbow.Image("top")) + 2};
  EXPECT_GT(rainbow.png.Brightness(corner), 700);
  EXPECT_LT(View("scan.fpd", "--data 0 --view c").png.Brightness(corner), 50);
  EXPECT_EQ(Run("render scan.fpd --data 0 --view a --palette grey -o a.png").status, 2);
}

TEST_F(ViewsTest, DrawsTheAScanOfTheCellThatIsMeant) {
  struct Case {
    const char* position;
    int row, column;
    const char* title;
    double microseconds, percent;
  };
  for (const Case& meant :
       std::vector<Case>{{"", 2, 4, ", the strongest cell", 0.6, 100 * 60000 / 65535.0},
                         {"--row 1",
                          1,
                          1,
                          ", the column of the strongest cell in that row",
                          0.2,
                          100 * 50000 / 65535.0},
                         {"--column 1",
                          1,
                          1,
                          ", the row of the strongest cell in that column",
                          0.2,
                          100 * 50000 / 65535.0},
                         {"--row 2 --column 4",
                          2,
                          4,
                          "row 2 (10 mm), column 4 (8 mm)",
                          0.6,
                          100 * 60000 / 65535.0}}) {
    SCOPED_TRACE(meant.position);
    const Drawing ascan = View("scan.fpd", std::string("--data 0 --view a ") + meant.position);
    EXPECT_EQ(ascan.facts["row"], meant.row);
    EXPECT_EQ(ascan.facts["column"], meant.column);
    const std::string title = ascan.facts["title"];
    EXPECT_EQ(title.substr(title.size() - std::string(meant.title).size()), meant.title);
    EXPECT_NEAR(ascan.facts["strongest"]["percent"].get<double>(), meant.percent, 1e-3);
    EXPECT_NEAR(CurveTop(ascan).across, meant.microseconds, 0.005);
    EXPECT_NEAR(CurveTop(ascan).down, meant.percent, 0.5);
  }
  // The quiet cell is drawn at its own level, which soft gain brings into sight.
  EXPECT_NEAR(CurveTop(View("scan.fpd", "--data 0 --view a --row 0 --column 0")).down,
              100 * 600 / 65535.0,
              0.01);
}

/// The raster scan of the demonstration has a curve through its side-drilled holes: 62 % at
/// 1.436 us, 48 % at 3.125 us, 38 % at 4.814 us. The initial pulse and the back wall lie outside.
TEST_F(ViewsTest, DrawsTheDacCurveAndReadsAmplitudesOverIt) {
  ExpectOneLine(Run("render scan.fpd --data 0 --view a --relative-to dac -o p.png"),
                1,
                "its channel has no DAC curve that is switched on");
  ExpectOneLine(
      Run("render scan.fpd --data 0 --view b --relative-to dac -o p.png"), 2, "takes none");
  ASSERT_EQ(Run("demo --out . --scans raster").status, 0);
  const std::string cell = "--data class=1 --view a --row 5 --column 131";
  const Drawing plain = View("weld.fpd", cell);
  EXPECT_FALSE(plain.facts["strongest"].contains("decibels_to_dac"));
  const Drawing relative = View("weld.fpd", cell + " --relative-to dac");
  const nlohmann::json& strongest = relative.facts["strongest"];
  // The tip of the crack, at 4.74 us: the curve is at 48 % x (38 / 48)^0.956 = 38.39 %.
  EXPECT_EQ(strongest["sample"], 237);
  EXPECT_NEAR(strongest["percent"].get<double>(), 22.18, 0.01);
  EXPECT_NEAR(strongest["decibels_to_dac"].get<double>(), -4.765, 0.002);
  const auto isViolet = [&](double microseconds, double percent) {
    const double part = (microseconds - plain.Value("across", 0)) /
                        (plain.Value("across", 1) - plain.Value("across", 0));
    const double high = plain.facts["values"]["high"], low = plain.facts["values"]["low"];
    const auto [red, green, blue] =
        plain.png.Color({static_cast<int>(plain.Image("left") + part * plain.Image("width")),
                         static_cast<int>(plain.Image("top") + (high - percent) / (high - low) *
                                                                   plain.Image("height"))});
    return red > green + 50 && blue > green + 50;
  };
  EXPECT_TRUE(isViolet(3.125, 48));
  EXPECT_TRUE(isViolet(2.28, 54.55));  // half way from the first to the second, in dB
  EXPECT_FALSE(isViolet(1.3, 62));
  EXPECT_FALSE(isViolet(4.9, 38));
}

TEST_F(ViewsTest, DrawsGatesWhereTheySee) {
  ASSERT_EQ(
      Run("gate scan.fpd --channel 0 --gate 1 --start 0.1 --width 0.2 --threshold 40 --as append")
          .status,
      0);
  const Drawing ascan = View("scan.fpd", "--data class=1 --view a --row 1 --column 1");
  ASSERT_EQ(ascan.facts["gates"].size(), 1U);
  const nlohmann::json gate = ascan.facts["gates"][0];
  EXPECT_NEAR(gate["from"].get<double>(), 0.1, 1e-4);
  EXPECT_NEAR(gate["to"].get<double>(), 0.3, 1e-4);
  EXPECT_NEAR(gate["level"].get<double>(), 40, 1e-4);
  const auto colorAt = [&](double microseconds) {
    const double part = (microseconds - ascan.Value("across", 0)) /
                        (ascan.Value("across", 1) - ascan.Value("across", 0));
    const double level = 1 - 40 / ascan.facts["values"]["high"].get<double>();
    return ascan.png.Color({static_cast<int>(ascan.Image("left") + part * ascan.Image("width")),
                            static_cast<int>(ascan.Image("top") + level * ascan.Image("height"))});
  };
  EXPECT_GT(colorAt(0.12)[0], colorAt(0.12)[2] + 80);  // red
  EXPECT_LT(colorAt(0.35)[0], colorAt(0.35)[2] + 80);

  // A position is time of flight: the data offset and resolution of the C-scan give it, not its
  // 16-bit values.
  const Drawing positions = View("scan.fpd", "--data class=3 --view c");
  EXPECT_EQ(positions.facts["values"]["unit"], "µs");
  EXPECT_EQ(positions.facts["farthest"]["row"], 1);
  EXPECT_EQ(positions.facts["farthest"]["column"], 1);
  EXPECT_NEAR(positions.facts["farthest"]["position"].get<double>(), 0.2, 1e-4);
  // A cell without an echo shows no position, not the earliest one.
  const auto colorOfCell = [&](double row, double column) {
    const auto pixel = [&](const char* from, const char* size, const char* axis, double cell) {
      return static_cast<int>(positions.Image(from) +
                              (cell + 0.5) / positions.facts[axis]["quantity"].get<double>() *
                                  positions.Image(size));
    };
    return positions.png.Color(
        {pixel("left", "width", "across", column), pixel("top", "height", "down", row)});
  };
  constexpr std::array nothing = {222, 225, 230};
  EXPECT_NE(colorOfCell(1, 1), nothing);
  EXPECT_EQ(colorOfCell(0, 0), nothing);
  const Drawing amplitudes = View("scan.fpd", "--data class=2 --view c");
  EXPECT_NEAR(amplitudes.facts["strongest"]["percent"].get<double>(), 100 * 50000 / 65535.0, 1e-3);
  EXPECT_NEAR(amplitudes.Brightest().down, 5, 0.05);
}

TEST_F(ViewsTest, FindsSamplesThroughATableOfOffsets) {
  // Cells 1, 3 and 4 have samples, out of order: 9 to 12, 1 to 4 and 5 to 8; the others have none.
  WriteIndexed("indexed.fpd", {0, 40, 0, 24, 32, 0}, 48);
  const Drawing cscan = View("indexed.fpd", "--data 0 --view c");
  EXPECT_EQ(cscan.facts["strongest"]["row"], 0);
  EXPECT_EQ(cscan.facts["strongest"]["column"], 1);
  EXPECT_NEAR(cscan.facts["strongest"]["percent"].get<double>(), 100 * 12 / 20.0, 1e-4);
  EXPECT_GT(cscan.BrightestWithin(-0.5, 0.5, 1.5, 2.5).brightness,
            cscan.BrightestWithin(0.5, 1.5, 0.5, 1.5).brightness);
  for (const auto& [cell, percent] :
       std::vector<std::pair<std::string, double>>{{"--row 0 --column 1", 60},
                                                   {"--row 1 --column 1", 20},
                                                   {"--row 2 --column 0", 40},
                                                   {"--row 2 --column 1", 0}}) {
    SCOPED_TRACE(cell);
    const Drawing ascan = View("indexed.fpd", "--data 0 --view a " + cell);
    EXPECT_NEAR(ascan.facts["strongest"]["percent"].get<double>(), percent, 1e-4);
  }
  const Drawing bscan = View("indexed.fpd", "--data 0 --view b --row 2");
  EXPECT_EQ(bscan.facts["strongest"]["column"], 0);
  EXPECT_NEAR(bscan.Brightest().across, 0, 1e-3);
}

}  // namespace
}  // namespace utdata::test
