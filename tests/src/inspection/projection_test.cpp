#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/failure.h"
#include "utdata/newscan.h"
#include "utdata/samples.h"
#include "utdata/views.h"

namespace utdata::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint32_t rows = 7, columns = 4, quantity = 150;

/// Beams of 45, 50 and 55 degrees in a plate of 10 mm; a sample counts 0.2 mm of half path. Rows
/// are 2 mm apart and columns 5 mm.
class ProjectionTest : public testing::Test {
 protected:
  /// @param samples of each beam, in the order of rows, columns and samples
  [[nodiscard]] Inspection Make(const std::vector<std::vector<std::int16_t>>& samples,
                                const std::function<void(CGDataTypeFDD&)>& change = {}) const {
    Inspection inspection = Inspection::New((m_folder.Path() / "part.fpd").string());
    const SampleType& type = *FindSampleType("i16");
    for (std::uint32_t beam = 0; beam < samples.size(); ++beam) {
      CGDataTypeFDD record = NominalRecord(type);
      SetLayout(record, type, {columns, rows, quantity, true});
      record.SetDataRectification(gdata_RectifNone);
      record.SetDataBookmarkType(bookmark_MultiChannel);
      record.dataMinimum = -1000;
      record.dataMaximum = 1000;
      record.subChannelId = beam + 1;
      record.probeAngle = 45 + 5 * static_cast<float>(beam);
      record.soundSpeed = 5000;
      record.sampleResolution = 80e-9F;
      record.partThickness = 0.01F;
      record.columnResolution = 0.005F;
      record.rowResolution = 0.002F;
      if (change) change(record);
      const auto bytes = std::as_bytes(std::span(samples[beam]));
      inspection.AddData(record, {bytes.begin(), bytes.end()});
    }
    return inspection;
  }

  [[nodiscard]] static std::vector<std::vector<std::int16_t>> Silence() {
    return std::vector(3, std::vector<std::int16_t>(rows * columns * quantity, 1));
  }
  [[nodiscard]] static std::vector<std::vector<std::int16_t>> Noise() {
    std::mt19937 random(5);
    std::vector<std::vector<std::int16_t>> noise = Silence();
    for (auto& beam : noise)
      for (std::int16_t& sample : beam) sample = static_cast<std::int16_t>(random() % 1999) - 999;
    return noise;
  }
  static std::size_t At(std::uint32_t row, std::uint32_t column, std::uint32_t sample) {
    return (std::size_t{row} * columns + column) * quantity + sample;
  }
  static std::size_t PixelAt(const ProjectionView& view, double across, double down) {
    const auto x = static_cast<std::size_t>(std::lround(view.across.IndexOf(across)));
    const auto y = static_cast<std::size_t>(std::lround(view.down.IndexOf(down)));
    return y * view.across.quantity + x;
  }

  ScratchDirectory m_folder;
};

// 45 degrees, sample 100: 20 mm of half path, 14.14 mm unfolded and to the side, 5.86 mm deep on
// the way up.
TEST_F(ProjectionTest, PutsAnEchoIntoEachViewWhereItLies) {
  auto samples = Silence();
  samples[0][At(3, 2, 100)] = -900;
  samples[1][At(3, 2, 20)] = 999;  // before the half paths that are shown
  const Inspection inspection = Make(samples);
  const double away = 20 * std::sqrt(0.5), depth = 20 - away;
  for (const auto& [wanted, across, down] : {std::tuple(PartView::Top, 10 + away, 6.0),
                                             {PartView::Side, 6.0, depth},
                                             {PartView::End, 10 + away, depth}}) {
    const ProjectionView view = MakeProjection(inspection.Masters(), wanted, {.from = 5});
    const auto strongest = view.Strongest();
    ASSERT_TRUE(strongest);
    EXPECT_EQ(strongest->beam, 0U);
    EXPECT_EQ(strongest->row, 3U);
    EXPECT_EQ(strongest->column, 2U);
    EXPECT_EQ(strongest->sample, 100U);
    EXPECT_NEAR(strongest->percent, -90, 1e-3);
    EXPECT_NEAR(strongest->place.column, 10 + away, 1e-3);
    EXPECT_NEAR(strongest->place.row, 6, 1e-6);
    EXPECT_NEAR(strongest->point.depth, depth, 1e-3);
    EXPECT_EQ(strongest->point.leg, 2U);
    EXPECT_NEAR(view.percents[PixelAt(view, across, down)], -90, 1e-3);
  }
}

TEST_F(ProjectionTest, ShowsTheStrongestOfWhatFallsOnAPixelAndNamesIt) {
  const auto noise = Noise();
  for (const float skew : {0.0F, 90.0F, 210.0F}) {
    const Inspection inspection =
        Make(noise, [&](CGDataTypeFDD& record) { record.probeSkew = skew; });
    for (const PartView wanted : {PartView::Top, PartView::Side, PartView::End}) {
      const ProjectionView view = MakeProjection(inspection.Masters(), wanted, {.from = 2});
      const std::vector<ProjectedSample> traced = view.Trace();
      const auto places = {view.PlacesOf(0), view.PlacesOf(1), view.PlacesOf(2)};
      std::size_t seen = 0;
      for (std::size_t pixel = 0; pixel < view.pixels.size(); pixel += 7) {
        const auto echo = view.EchoAt(pixel);
        ASSERT_EQ(echo.has_value(), !std::isnan(view.percents[pixel]));
        if (!echo) continue;
        ++seen;
        EXPECT_NEAR(echo->percent, view.percents[pixel], 1e-3);
        EXPECT_GE(echo->halfPath, 2);
        EXPECT_EQ(traced[pixel].cell, echo->row * columns + echo->column);
        EXPECT_EQ(traced[pixel].value, std::lround(10 * echo->percent));
        const auto& place = places.begin()[echo->beam][echo->sample];
        ASSERT_TRUE(place);
        EXPECT_NEAR(place->place.column + 5 * echo->column, echo->place.column, 1e-6);
        EXPECT_NEAR(place->place.row + 2 * echo->row, echo->place.row, 1e-6);
        EXPECT_EQ(place->point.depth, echo->point.depth);
      }
      EXPECT_GT(seen, view.pixels.size() / 7 / 4) << static_cast<int>(wanted) << " " << skew;

      // No sample is stronger than the pixel on its place, but for those that a stretch of a top
      // view carries to the pixel beside it.
      std::size_t lost = 0, all = 0;
      for (std::uint32_t beam = 0; beam < 3; ++beam)
        for (std::uint32_t row = 0; row < rows; ++row)
          for (std::uint32_t column = 0; column < columns; ++column)
            for (std::uint32_t sample = 10; sample < quantity; ++sample) {
              const BeamPoint point = *FlatPart(10).PointAt(0.2 * sample, 45.0 + 5 * beam);
              const ScanOffset turned = TurnedBySkew(point.distance, skew);
              const double x = 5 * column + turned.column, y = 2 * row + turned.row;
              const std::size_t pixel = wanted == PartView::Top    ? PixelAt(view, x, y)
                                        : wanted == PartView::Side ? PixelAt(view, y, point.depth)
                                                                   : PixelAt(view, x, point.depth);
              if (pixel >= view.pixels.size()) continue;  // on the outer edge of the last
              ++all;
              const double percent = noise[beam][At(row, column, sample)] / 10.0;
              if (!(std::abs(view.percents[pixel]) >= std::abs(percent) - 1e-3)) ++lost;
            }
      EXPECT_LE(lost, wanted == PartView::Top ? all / 2 : all / 100)
          << static_cast<int>(wanted) << " " << skew;
    }
  }
}

TEST_F(ProjectionTest, LosesNoEchoWherePositionsShareAPixel) {
  auto samples = Silence();
  for (std::uint32_t row = 0; row < rows; ++row)
    samples[0][At(row, 1, 60)] = static_cast<std::int16_t>(100 + 10 * row);
  const Inspection inspection = Make(samples);
  const ProjectionView view = MakeProjection(inspection.Masters(), PartView::Top, {.mostCells = 3});
  EXPECT_EQ(view.down.quantity, 3U);
  EXPECT_NEAR(view.down.step, 14.0 / 3, 1e-6);
  std::vector<float> strongest(3);
  for (std::size_t pixel = 0; pixel < view.percents.size(); ++pixel) {
    float& ofLine = strongest[pixel / view.across.quantity];
    ofLine = std::max(ofLine, view.percents[pixel]);  // which leaves out what shows nothing
  }
  EXPECT_THAT(strongest, testing::Pointwise(testing::FloatEq(), {11.F, 14.F, 16.F}));
}

// Of A-scans as long as these only some columns are taken at a time.
TEST_F(ProjectionTest, TakesEachColumnOfLongAScansOnce) {
  constexpr std::uint32_t wide = 16, deep = 9000;
  std::vector<std::int16_t> samples(2 * wide * deep, 1);
  for (std::uint32_t column = 0; column < wide; ++column)
    samples[(wide + column) * deep + 10] = static_cast<std::int16_t>(100 + 10 * column);
  const Inspection inspection = Make({samples}, [](CGDataTypeFDD& record) {
    SetLayout(record, *FindSampleType("i16"), {wide, 2, deep, true});
    record.probeAngle = 0;
    record.sampleResolution /= 100;
  });
  const ProjectionView view = MakeProjection(inspection.Data(), PartView::End);
  std::vector<float> strongest(wide);
  for (std::size_t pixel = 0; pixel < view.percents.size(); ++pixel) {
    const double column = view.across.At(static_cast<double>(pixel % view.across.quantity)) / 5;
    float& ofColumn = strongest.at(static_cast<std::size_t>(std::lround(column)));
    ofColumn = std::max(ofColumn, view.percents[pixel]);
  }
  for (std::uint32_t column = 0; column < wide; ++column)
    EXPECT_NEAR(strongest[column], 10 + column, 1e-3) << column;
}

// The first beam ends after 3 mm.
TEST_F(ProjectionTest, LeavesOutABeamThatEndsBeforeTheLimits) {
  const Inspection inspection = Make(Noise(), [](CGDataTypeFDD& record) {
    if (record.subChannelId == 1) record.soundSpeed = 500;
  });
  for (const PartView wanted : {PartView::Top, PartView::Side, PartView::End}) {
    const ProjectionView view = MakeProjection(inspection.Masters(), wanted, {.from = 5});
    EXPECT_EQ(view.beams.size(), 3U);
    for (const ProjectionView::Source& source : view.pixels) EXPECT_NE(source.beam, 0U);
    EXPECT_TRUE(view.Strongest());
  }
}

TEST_F(ProjectionTest, RefusesWhatHasNoPlaceInThePart) {
  struct Case {
    std::function<void(CGDataTypeFDD&)> change;
    const char* why;
  };
  for (const Case& test :
       {Case{[](CGDataTypeFDD& record) { record.tofd = 1; }, "no beam is left"},
        Case{[](CGDataTypeFDD& record) { record.columnUnits = kvt_UnitDegree; }, "columns"},
        Case{[](CGDataTypeFDD& record) { record.sampleOffset = 1; }, "half paths"},
        Case{[](CGDataTypeFDD& record) { record.soundSpeed = 0; }, "sound speed"}}) {
    const Inspection inspection = Make(Silence(), test.change);
    try {
      (void)MakeProjection(inspection.Data(), PartView::End, {.to = 1000});
      ADD_FAILURE() << "drawn: " << test.why;
    } catch (const Error& error) {
      EXPECT_THAT(error.Why(), HasSubstr(test.why));
    }
  }
  const Inspection unknown =
      Make(Silence(), [](CGDataTypeFDD& record) { record.partThickness = 0; });
  EXPECT_THAT(MakeProjection(unknown.Masters(), PartView::End).remarks,
              ElementsAre(HasSubstr("thickness is not known")));
}

}  // namespace
}  // namespace utdata::test
