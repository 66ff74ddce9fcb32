// The triangles are worked by hand: sides 3, 4, 5 and 5, 12, 13, and angles of 30, 45, 60 degrees.
#include "utdata/geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "utdata/failure.h"

namespace utdata {
namespace {

constexpr double degree = std::numbers::pi / 180;
const double angle345 = std::atan2(3, 4) / degree;  // sine 0.6, cosine 0.8

TEST(Geometry, FoldsABeamAtTheWallsOfAFlatPart) {
  const FlatPart plate(10);
  struct Case {
    double halfPath, angle, distance, depth;
    std::uint32_t leg, skip;
  };
  const double root3 = std::sqrt(3.0);
  for (const Case& at : {Case{5, angle345, 3, 4, 1, 1},
                         Case{12.5, angle345, 7.5, 10, 2, 1},  // on the back wall
                         Case{20, angle345, 12, 4, 2, 1},      // 16 deep unfolded: 4 on the way up
                         Case{30, angle345, 18, 4, 3, 2},      // 24 unfolded: 4 on the way down
                         Case{12.5, -angle345, -7.5, 10, 2, 1},  // to the other side
                         Case{7, 0, 0, 7, 1, 1},
                         Case{30, 60, 15 * root3, 5, 2, 1}}) {
    const auto point = plate.PointAt(at.halfPath, at.angle);
    ASSERT_TRUE(point) << at.halfPath;
    EXPECT_NEAR(point->distance, at.distance, 1e-9) << at.halfPath;
    EXPECT_NEAR(point->depth, at.depth, 1e-9) << at.halfPath;
    EXPECT_EQ(point->leg, at.leg) << at.halfPath;
    EXPECT_EQ(point->Skip(), at.skip) << at.halfPath;
    const BeamPath back = plate.PathTo(*point);
    EXPECT_NEAR(back.halfPath, at.halfPath, 1e-9);
    EXPECT_NEAR(back.refractedAngle, at.angle, 1e-9);
  }
  EXPECT_NEAR(plate.LegEnd(2, angle345), 25, 1e-9);
  EXPECT_FALSE(plate.PointAt(-1, 0)) << "before the index point";
}

TEST(Geometry, FollowsTheFirstLegWhereTheThicknessIsNotKnown) {
  const FlatPart unknown(0);
  const auto point = unknown.PointAt(500, angle345);
  ASSERT_TRUE(point);
  EXPECT_NEAR(point->depth, 400, 1e-9);
  EXPECT_EQ(point->leg, 1U);
  EXPECT_TRUE(std::isinf(unknown.LegEnd(1, 0)));
  EXPECT_THROW((void)unknown.PathTo({0, 5, 2}), Error);
}

// Outside radius 13, inner 5: a beam whose nearest point to the axis is 5 away grazes the inner
// wall after a half path of 12, at sine 5/13.
TEST(Geometry, FollowsTheFirstLegOfARoundPart) {
  const CurvedPart pipe(13, 8);
  const double grazing = std::atan2(5, 12) / degree;
  EXPECT_TRUE(pipe.ReachesInnerWall(grazing - 0.001));
  EXPECT_FALSE(pipe.ReachesInnerWall(grazing + 0.001));
  EXPECT_NEAR(pipe.LegEnd(0), 8, 1e-9);
  EXPECT_NEAR(pipe.LegEnd(grazing - 1e-9), 12, 1e-3);
  EXPECT_NEAR(pipe.LegEnd(60), 13, 1e-9) << "a chord of 60 degrees, as long as the radius";

  // Half way along that chord: a right angle at the point, 13 cos 30 from the axis.
  const auto middle = pipe.PointAt(6.5, 60);
  ASSERT_TRUE(middle);
  EXPECT_NEAR(middle->depth, 13 - 13 * std::sqrt(3.0) / 2, 1e-9);
  EXPECT_NEAR(middle->distance, 13 * 30 * degree, 1e-9);
  EXPECT_FALSE(pipe.PointAt(13.001, 60)) << "behind the outer wall";
  EXPECT_FALSE(pipe.PointAt(8.001, 0)) << "behind the inner wall";

  for (const double angle : {-60.0, -10.0, 0.0, 20.0, 60.0}) {
    const double halfPath = pipe.LegEnd(angle) * 0.9;
    const auto point = pipe.PointAt(halfPath, angle);
    ASSERT_TRUE(point);
    const auto back = pipe.PathTo(*point);
    ASSERT_TRUE(back);
    EXPECT_NEAR(back->halfPath, halfPath, 1e-9);
    EXPECT_NEAR(back->refractedAngle, angle, 1e-9);
  }
  EXPECT_FALSE(pipe.PathTo({13 * 150 * degree, 7, 1})) << "behind the inner wall";
}

TEST(Geometry, HasNoTofdDepthBeforeTheLateralWave) {
  const TofdPair pair(90);
  EXPECT_EQ(pair.LateralPath(), 45);
  EXPECT_FALSE(pair.DepthAt(44.999));
  EXPECT_EQ(pair.DepthAt(45), 0);
  EXPECT_NEAR(pair.DepthAt(75).value_or(-1), 60, 1e-9);  // 45, 60, 75
  EXPECT_NEAR(pair.PathTo(60), 75, 1e-9);
}

TEST(Geometry, TurnsADistanceBySkew) {
  for (const auto& [skew, column, row] : {std::tuple(0.0, 2.0, 0.0),
                                          {90.0, 0.0, 2.0},
                                          {180.0, -2.0, 0.0},
                                          {270.0, 0.0, -2.0},
                                          {-90.0, 0.0, -2.0},
                                          {60.0, 1.0, std::sqrt(3.0)}}) {
    EXPECT_NEAR(TurnedBySkew(2, skew).column, column, 1e-12) << skew;
    EXPECT_NEAR(TurnedBySkew(2, skew).row, row, 1e-12) << skew;
  }
}

TEST(Geometry, RefusesSizesThatNoPartHas) {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  for (const double thickness : {-1.0, none}) EXPECT_THROW((void)FlatPart(thickness), Error);
  for (const double angle : {90.0, -90.0, 120.0, none}) {
    EXPECT_THROW((void)FlatPart(10).PointAt(1, angle), Error) << angle;
    EXPECT_THROW((void)CurvedPart(10, 1).PointAt(1, angle), Error) << angle;
  }
  EXPECT_THROW((void)FlatPart(10).PathTo({0, 11, 1}), Error);
  EXPECT_THROW((void)FlatPart(10).PathTo({0, 5, 0}), Error);
  EXPECT_THROW(CurvedPart(10, 10.1), Error);
  EXPECT_THROW(CurvedPart(0, 0), Error);
  EXPECT_THROW((void)CurvedPart(10, 1).PathTo({0, 0.5, 2}), Error);
  for (const double separation : {0.0, -90.0, none}) EXPECT_THROW(TofdPair{separation}, Error);
}

}  // namespace
}  // namespace utdata
