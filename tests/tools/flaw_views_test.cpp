#include <cmath>
#include <cstdlib>
#include <map>
#include <string>

#include "drawing.h"

namespace utdata::test {
namespace {

constexpr double degree = 3.14159265358979 / 180;
constexpr double near = 0.5;      // mm
constexpr double halfBeam = 0.5;  // degrees

/// The simulated weld: where its flaws are, and pictures of it.
class FlawViewsTest : public RenderTest {
 protected:
  void SetUp() override {
    RenderTest::SetUp();
    ASSERT_EQ(Run("demo --out . --scans phased").status, 0);
    m_part = nlohmann::json::parse(ReadFile(At("flaws.json")));
  }

  /// Behind the interface echoes that no flaw makes.
  [[nodiscard]] Drawing Part(const std::string& view) const {
    return View("paut.fpd", "--data class=1 --from 30 --view " + view);
  }
  static double Number(const nlohmann::json& object, const char* field) {
    return object[field].get<double>();
  }
  /// The largest half beam of those that see a flaw, mm.
  static double HalfBeamAt(const nlohmann::json& flaw) {
    double widest = 0;
    for (const auto& sight : flaw["seen"])
      widest = std::max(widest, Number(sight, "half_path") * halfBeam * degree);
    return widest;
  }

  nlohmann::json m_part;
};

// Sound paths of a sector scan are straight, the part is mirrored at its walls.
TEST_F(FlawViewsTest, SectorScansShowEachFlawInItsBeamAtItsPath) {
  std::map<std::pair<int, long>, Drawing> sectors;
  for (const auto& flaw : m_part["flaws"])
    for (const auto& sight : flaw["seen"]) {
      SCOPED_TRACE(flaw["name"].get<std::string>() + " " + sight.dump());
      const double angle = Number(sight, "angle"), path = Number(sight, "half_path");
      if (angle < 40) continue;  // beside the beams
      const int side = sight["channel"].get<int>();
      const long row = std::lround((Number(flaw, "from") + Number(flaw, "to")) / 2 / 2);
      auto found = sectors.find({side, row});
      if (found == sectors.end())
        found = sectors
                    .try_emplace({side, row},
                                 RunJson("render paut.fpd -o picture.png --force --json --view s "
                                         "--data sub_channel=1,channel=" +
                                         std::to_string(side) + " --row " + std::to_string(row)),
                                 At("picture.png"))
                    .first;
      const double index = m_part["index_points"][static_cast<std::size_t>(side)].get<double>();
      const double towards = side == 0 ? 1 : -1;
      const auto place = [&](double across, double down) {
        const double away = towards * (across - index);
        return std::pair(std::hypot(away, down), std::atan2(away, down) / degree);
      };
      const Drawing::Spot spot = found->second.BrightestWhere([&](double across, double down) {
        const auto [seenPath, seenAngle] = place(across, down);
        return std::abs(seenPath - path) < 0.8 && std::abs(seenAngle - angle) < 1.1;
      });
      const auto [seenPath, seenAngle] = place(spot.across, spot.down);
      EXPECT_GT(spot.brightness, 20);
      EXPECT_NEAR(seenPath, path, near);
      EXPECT_NEAR(seenAngle, angle, halfBeam + 0.1);
    }
  EXPECT_EQ(sectors.size(), 12U);
}

TEST_F(FlawViewsTest, TopSideAndEndViewsShowEachFlawAtItsPlace) {
  const Drawing top = Part("top"), side = Part("side"), end = Part("end");
  for (const auto& flaw : m_part["flaws"]) {
    SCOPED_TRACE(flaw.dump());
    const double x = Number(flaw, "x"), depth = Number(flaw, "depth");
    const double from = Number(flaw, "from") - 1, to = Number(flaw, "to") + 1;
    const double tolerance = near + HalfBeamAt(flaw);
    const Drawing::Spot above = top.BrightestWithin(x - 2, x + 2, from, to);
    EXPECT_GT(above.brightness, 20);
    EXPECT_NEAR(above.across, x, tolerance);
    const Drawing::Spot along = side.BrightestWithin(from, to, depth - 1.4, depth + 1.4);
    EXPECT_GT(along.brightness, 20);
    EXPECT_NEAR(along.down, depth, tolerance);
    const Drawing::Spot across = end.BrightestWithin(x - 1, x + 1, depth - 1, depth + 1);
    EXPECT_GT(across.brightness, 20);
    EXPECT_NEAR(across.across, x, tolerance);
    EXPECT_NEAR(across.down, depth, tolerance);
    // Beside its ends it is gone.
    const Drawing::Spot beside = top.BrightestWithin(x - 2, x + 2, to, to + 2);
    EXPECT_LT(beside.brightness, 0.8 * above.brightness);
  }
}

TEST_F(FlawViewsTest, TofdScansShowEachTipAtItsPath) {
  const Drawing scan = View("paut.fpd", "--data channel=2 --view d --samples path");
  int seen = 0;
  for (const auto& flaw : m_part["flaws"]) {
    if (!flaw.contains("tofd")) continue;
    SCOPED_TRACE(flaw.dump());
    ++seen;
    const double path = Number(flaw["tofd"], "half_path");
    const double from = Number(flaw, "from") - 1, to = Number(flaw, "to") + 1;
    const Drawing::Spot tip = scan.BrightestWithin(from, to, path - 0.6, path + 0.6, true);
    EXPECT_NEAR(tip.down, path, 0.1);
    EXPECT_GT(tip.brightness, 10);
  }
  EXPECT_EQ(seen, 6);
}

}  // namespace
}  // namespace utdata::test
