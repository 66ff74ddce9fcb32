#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/failure.h"
#include "utdata/newscan.h"
#include "utdata/views.h"

namespace utdata::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint32_t samplesOfBeam = 400;

/// A beam of a test: its record, its exit point and its echoes.
struct TestBeam {
  double angle = 0;
  double index = 0;                     ///< along the column axis, mm
  std::vector<std::uint32_t> echoes{};  ///< samples of full scale; all others have 1 %
  std::function<void(CGDataTypeFDD&)> change{};
};

/// A sample counts 0.1 mm of half path, from 0.
CGDataTypeFDD BeamRecord() {
  CGDataTypeFDD record = NominalRecord(*FindSampleType("u16"));
  SetLayout(record, *FindSampleType("u16"), {1, 1, samplesOfBeam, true});
  record.SetDataRectification(gdata_RectifFull);
  record.SetDataBookmarkType(bookmark_MultiChannel);
  record.dataMaximum = 1000;
  record.soundSpeed = 5000;
  record.sampleResolution = 40e-9F;
  record.partThickness = 0.01F;
  return record;
}

class SectorTest : public testing::Test {
 protected:
  [[nodiscard]] std::string Path() const { return (m_folder.Path() / "sector.fpd").string(); }

  /// Writes an inspection of one channel with these beams, and opens it.
  [[nodiscard]] Inspection Make(const std::vector<TestBeam>& beams,
                                const CGWeldTypeDescr* weld = nullptr) const {
    {
      Inspection inspection = Inspection::New(Path());
      for (std::uint32_t number = 1; number <= beams.size(); ++number)
        Add(inspection, beams[number - 1], number);
      if (weld) {
        CGWeldTypeDescr* added = gweld_Allocate(1, L"");
        *added = *weld;
        inspection.Descriptor().welds.AddTail(added);
      }
      inspection.SaveAs(Path(), true);
    }
    return Inspection::Open(Path());
  }

  static void Add(Inspection& inspection, const TestBeam& beam, std::uint32_t number) {
    CGSubchanTypeDescr* subChannel = gsubchan_Allocate(1, L"");
    subChannel->subChannelId = number;
    subChannel->indexOffset = static_cast<float>(beam.index / 1000);
    inspection.Descriptor().subChannels.AddTail(subChannel);
    CGDataTypeFDD record = BeamRecord();
    record.subChannelId = number;
    record.probeAngle = static_cast<float>(beam.angle);
    if (beam.change) beam.change(record);
    std::vector<std::uint16_t> samples(
        std::size_t{record.rowQuantity} * record.columnQuantity * samplesOfBeam, 10);
    for (const std::uint32_t echo : beam.echoes) samples[echo] = 1000;
    const auto bytes = std::as_bytes(std::span(samples));
    inspection.AddData(record, {bytes.begin(), bytes.end()});
  }

  /// The pixel on a place of the view.
  static std::size_t PixelAt(const SectorView& view, double across, double down) {
    const double x = std::round(view.across.IndexOf(across));
    const double y = std::round(view.down.IndexOf(down));
    EXPECT_TRUE(x >= 0 && x < view.across.quantity && y >= 0 && y < view.down.quantity)
        << across << ", " << down;
    return static_cast<std::size_t>(y) * view.across.quantity + static_cast<std::size_t>(x);
  }

  static std::vector<TestBeam> Fan(double first, double step, std::size_t quantity) {
    std::vector<TestBeam> beams;
    for (std::size_t beam = 0; beam < quantity; ++beam)
      beams.push_back({first + step * static_cast<double>(beam), 0, {}, {}});
    return beams;
  }

  ScratchDirectory m_folder;
};

// The plate is 10 mm thick. At 60 degrees a half path of 30 mm is 15 mm deep unfolded: 5 mm, going
// up, and 25.98 mm away.
TEST_F(SectorTest, PutsEachEchoWhereItsOwnRecordHasIt) {
  std::vector<TestBeam> beams = Fan(40, 5, 5);
  beams[0].echoes = {300};
  beams[4].echoes = {100};
  beams[2].echoes = {50};
  beams[2].change = [](CGDataTypeFDD& record) {  // 0.2 mm a sample, from 4 mm
    record.sampleResolution = 80e-9F;
    record.sampleOffset = 1.6e-6F;
  };
  beams[4].index = 12;
  std::reverse(beams.begin(), beams.end());  // the view orders them by angle
  const Inspection inspection = Make(beams);
  const SectorView view = MakeSector(inspection.Masters().front());
  ASSERT_EQ(view.beams.size(), 5U);
  EXPECT_TRUE(std::is_sorted(
      view.beams.begin(), view.beams.end(), [](const SectorBeam& a, const SectorBeam& b) {
        return a.refractedAngle < b.refractedAngle;
      }));
  struct Case {
    std::size_t beam;
    std::uint32_t sample;
    double across, down, depth;
    std::uint32_t leg;
  };
  constexpr double degree = 0.017453292519943295;
  for (const Case& at :
       {Case{0, 300, 30 * std::sin(40 * degree), 30 * std::cos(40 * degree), 2.98133, 3},
        Case{2, 50, 14 * std::sin(50 * degree), 14 * std::cos(50 * degree), 8.99903, 1},
        Case{4, 100, 12 + 5 * std::sqrt(3.0), 5, 5, 1}}) {
    const auto echo = view.EchoOf(at.beam, at.sample);
    ASSERT_TRUE(echo) << at.beam;
    EXPECT_NEAR(echo->across, at.across, 1e-4) << at.beam;
    EXPECT_NEAR(echo->down, at.down, 1e-4) << at.beam;
    EXPECT_NEAR(echo->point.depth, at.depth, 1e-4) << at.beam;
    EXPECT_EQ(echo->point.leg, at.leg) << at.beam;
    EXPECT_NEAR(echo->percent, 100, 1e-4) << at.beam;
    const std::size_t pixel = PixelAt(view, at.across, at.down);
    EXPECT_EQ(view.pixels[pixel].beam, at.beam);
    EXPECT_EQ(view.pixels[pixel].sample, at.sample);
    EXPECT_NEAR(view.percents[pixel], 100, 1e-4);
  }
  const SectorView bounded = MakeSector(inspection.Masters().front(), {.from = 11, .to = 20});
  ASSERT_TRUE(bounded.strongest);
  EXPECT_EQ(bounded.strongest->beam, 2U);
  EXPECT_NEAR(bounded.strongest->halfPath, 14, 1e-4);
}

TEST_F(SectorTest, LosesNoEchoAndShowsNothingFartherThanHalfABeam) {
  std::vector<TestBeam> beams = Fan(-60, 2, 61);
  beams.erase(beams.begin() + 40);  // 20 degrees is missing
  for (std::size_t beam = 0; beam < beams.size(); ++beam)
    for (std::uint32_t echo = static_cast<std::uint32_t>(beam % 7) + 1; echo < samplesOfBeam;
         echo += 37)
      beams[beam].echoes.push_back(echo);
  const Inspection inspection = Make(beams);
  const SectorView view = MakeSector(inspection.Masters().front(), {.widest = 200, .highest = 200});
  std::size_t seen = 0;
  for (std::uint32_t y = 0; y < view.down.quantity; ++y)
    for (std::uint32_t x = 0; x < view.across.quantity; ++x) {
      const SectorView::Source source = view.pixels[std::size_t{y} * view.across.quantity + x];
      if (source.beam == SectorView::Source::nothing) continue;
      ++seen;
      const double across = view.across.At(x), down = view.down.At(y);
      const double angle = std::atan2(across, down) * 57.29577951308232;
      const double pixelAngle = view.across.step / std::hypot(across, down) * 57.3;
      EXPECT_LE(std::abs(angle - view.beams[source.beam].refractedAngle), 1 + pixelAngle);
      EXPECT_NEAR(view.beams[source.beam].halfPaths.At(source.sample),
                  std::hypot(across, down),
                  view.across.step * 2);
    }
  EXPECT_GT(seen, view.pixels.size() / 4);
  EXPECT_EQ(view.pixels[PixelAt(view, 30 * std::sin(0.349066), 30 * std::cos(0.349066))].beam,
            SectorView::Source::nothing);
  // The map shows the same at any scan position.
  const SectorMap map =
      MakeSectorMap(inspection.Masters().front(), {.widest = 200, .highest = 200});
  ASSERT_EQ(map.across.quantity, view.across.quantity);
  std::vector<double> strongest(view.pixels.size(), -1);
  std::uint32_t last = 0;
  for (const SectorMap::Stretch& stretch : map.stretches) {
    ASSERT_GE(stretch.pixel, last);
    last = stretch.pixel;
    for (std::uint32_t sample = stretch.first; sample <= stretch.last; ++sample) {
      const bool isEcho = std::ranges::count(beams[stretch.beam].echoes, sample) != 0;
      strongest[last] = std::max(strongest[last], isEcho ? 100.0 : 1.0);
    }
  }
  for (std::size_t pixel = 0; pixel < strongest.size(); ++pixel)
    if (strongest[pixel] < 0)
      EXPECT_TRUE(std::isnan(view.percents[pixel])) << pixel;
    else
      EXPECT_NEAR(view.percents[pixel], strongest[pixel], 1e-4) << pixel;
  for (std::size_t beam = 0; beam < beams.size(); ++beam)
    for (const std::uint32_t echo : beams[beam].echoes) {
      const auto place = view.EchoOf(beam, echo);
      ASSERT_TRUE(place);
      // In its own pixel, or beside it where another beam runs through the same one.
      bool isShown = false;
      for (const double x : {-1.0, 0.0, 1.0})
        for (const double y : {-1.0, 0.0, 1.0}) {
          const double across = place->across + x * view.across.step;
          const double down = place->down + y * view.down.step;
          if (across < view.across.first || across > view.across.At(view.across.quantity - 1.0) ||
              down < view.down.first || down > view.down.At(view.down.quantity - 1.0))
            continue;
          isShown |= view.percents[PixelAt(view, across, down)] > 99;
        }
      EXPECT_TRUE(isShown) << beam << " " << echo;
    }
}

TEST_F(SectorTest, LooksAlongTheAxisThatTheBeamsAreSkewedTo) {
  const auto skewed = [](float skew) {
    return [=](CGDataTypeFDD& record) {
      record.probeSkew = skew;
      record.columnOffset = 0.1F;
      record.rowOffset = 0.02F;
    };
  };
  struct Case {
    float skew;
    SectorAcross acrossOf;
    double across;
  };
  const double away = 10 * std::sqrt(0.5);  // of sample 100 at 45 degrees
  for (const Case& test : {Case{0, SectorAcross::Columns, 100 + 5 + away},
                           Case{180, SectorAcross::Columns, 100 + 5 - away},
                           Case{90, SectorAcross::Rows, 20 + away},
                           Case{270, SectorAcross::Rows, 20 - away},
                           Case{30, SectorAcross::ScanPosition, 5 * std::sqrt(0.75) + away}}) {
    std::vector<TestBeam> beams = Fan(40, 5, 3);
    for (TestBeam& beam : beams) {
      beam.change = skewed(test.skew);
      beam.index = 5;
    }
    const Inspection inspection = Make(beams);
    const SectorView view = MakeSector(inspection.Data().front());
    EXPECT_EQ(view.acrossOf, test.acrossOf) << test.skew;
    EXPECT_NEAR(view.EchoOf(1, 100)->across, test.across, 1e-3) << test.skew;
    EXPECT_NEAR(view.EchoOf(1, 100)->point.distance, away, 1e-3) << "forward is positive";
  }
}

TEST_F(SectorTest, RefusesBeamsThatMakeNoSector) {
  const auto with = [](std::function<void(CGDataTypeFDD&)> change) {
    std::vector<TestBeam> beams = Fan(40, 5, 3);
    for (TestBeam& beam : beams) beam.change = change;
    return beams;
  };
  std::vector<TestBeam> skews = Fan(40, 5, 3);
  skews[1].change = [](CGDataTypeFDD& record) { record.probeSkew = 10; };
  std::vector<TestBeam> compound = Fan(40, 5, 3);
  compound.push_back({40, 10, {}, {}});
  struct Case {
    std::vector<TestBeam> beams;
    const char* why;
  };
  for (const Case& test :
       {Case{Fan(45, 0, 3), "all of its beams have the refracted angle 45°"},
        Case{Fan(45, 0, 1), "one beam"},
        Case{skews, "skews"},
        Case{compound, "several index points"},
        Case{with([](CGDataTypeFDD& record) { record.subChannelId = 0; }), "no beam of a channel"},
        Case{with([](CGDataTypeFDD& record) { record.soundSpeed = 0; }), "sound speed"},
        Case{with([](CGDataTypeFDD& record) { record.sampleOffset = -1; }), "index point"},
        Case{with([](CGDataTypeFDD& record) { record.tofd = 1; }), "time-of-flight"},
        Case{with([](CGDataTypeFDD& record) {
               record.inspectionGeometry = gdata_GeometryCircumferential;
             }),
             "radius is not known"},
        Case{with([](CGDataTypeFDD& record) {
               record.inspectionGeometry = gdata_GeometryCircumferential;
               record.inspectionRadius = 0.009F;
             }),
             "below the thickness"}}) {
    std::vector<TestBeam> beams = test.beams;
    if (std::string(test.why) == "no beam of a channel") beams.resize(1);
    const Inspection inspection = Make(beams);
    try {
      (void)MakeSector(inspection.Data().front());
      ADD_FAILURE() << "drawn: " << test.why;
    } catch (const Error& error) {
      EXPECT_THAT(error.Why(), HasSubstr(test.why));
    }
  }
}

TEST_F(SectorTest, SaysWhatItCannotShowAsItShouldBe) {
  std::vector<TestBeam> repeated = Fan(40, 5, 3);
  repeated.push_back({45, 0, {100}, {}});
  Inspection inspection = Make(repeated);
  SectorView view = MakeSector(inspection.Masters().front());
  ASSERT_EQ(view.remarks.size(), 1U);
  EXPECT_THAT(view.remarks[0], HasSubstr("1 beam has the angle and index point of another"));
  const double away = 10 * std::sqrt(0.5);
  EXPECT_NEAR(view.percents[PixelAt(view, away, away)], 100, 1e-3) << "the stronger is shown";

  for (const float thickness : {0.0F, -0.01F}) {
    std::vector<TestBeam> unknown = Fan(40, 5, 3);
    for (TestBeam& beam : unknown)
      beam.change = [thickness](CGDataTypeFDD& record) { record.partThickness = thickness; };
    inspection = Make(unknown);
    view = MakeSector(inspection.Masters().front());
    ASSERT_EQ(view.remarks.size(), 1U);
    EXPECT_THAT(view.remarks[0], HasSubstr("thickness is not known"));
    EXPECT_THAT(view.lines, IsEmpty());
    EXPECT_EQ(view.EchoOf(0, 399)->point.leg, 1U);
  }
  repeated = Fan(40, 5, 3);
  repeated[1].change = [](CGDataTypeFDD& record) { record.partThickness = 0; };
  inspection = Make(repeated);
  EXPECT_THAT(MakeSector(inspection.Masters().front()).remarks,
              testing::ElementsAre(HasSubstr("different thicknesses")));
}

TEST_F(SectorTest, IsOfTheScanPositionOfTheStrongestEcho) {
  const auto scan = [](std::uint32_t rows) {
    return [rows](CGDataTypeFDD& record) {
      SetLayout(record, *FindSampleType("u16"), {2, rows, samplesOfBeam, true});
    };
  };
  std::vector<TestBeam> beams = Fan(40, 5, 3);
  for (TestBeam& beam : beams) beam.change = scan(3);
  beams[1].echoes = {3 * samplesOfBeam + 100};
  beams[2].echoes = {4 * samplesOfBeam + 50};
  Inspection inspection = Make(beams);
  const std::pair<SectorOptions, std::uint32_t> cases[] = {
      {{}, 3}, {{.row = 2}, 4}, {{.column = 0}, 4}, {{.row = 1}, 3}, {{.row = 0, .column = 1}, 1}};
  for (const auto& [options, cell] : cases) {
    const SectorView view = MakeSector(inspection.Masters().front(), options);
    EXPECT_EQ(view.row * 2 + view.column, cell);
  }
  EXPECT_THROW((void)MakeSector(inspection.Masters().front(), {.row = 3}), Error);
  EXPECT_THROW((void)MakeSector(inspection.Masters().front(), {.column = 2}), Error);
  beams[1].change = scan(2);
  inspection = Make(beams);
  EXPECT_THROW((void)MakeSector(inspection.Masters().front()), Error);
}

TEST_F(SectorTest, DrawsAScanOfParallelBeams) {
  std::vector<TestBeam> beams;
  for (const double index : {20.0, 0.0, 10.0, 30.0, 50.0}) beams.push_back({0, index, {}, {}});
  const Inspection inspection = Make(beams);
  const SectorView view = MakeSector(inspection.Masters().front());
  ASSERT_TRUE(view.strongest);
  EXPECT_EQ(view.strongest->sample, 0U) << "all are alike: the first";
  const auto beamAt = [&](double across) { return view.pixels[PixelAt(view, across, 8)].beam; };
  EXPECT_EQ(beamAt(4.8), 0U);
  EXPECT_EQ(beamAt(5.2), 1U);
  EXPECT_EQ(beamAt(34.8), 3U);
  EXPECT_EQ(beamAt(40), SectorView::Source::nothing);
  EXPECT_EQ(beamAt(50), 4U);
}

TEST_F(SectorTest, FollowsTheFirstLegOfARoundPart) {
  std::vector<TestBeam> beams = Fan(0, 5, 12);
  for (TestBeam& beam : beams)
    beam.change = [](CGDataTypeFDD& record) {
      record.inspectionGeometry = gdata_GeometryCircumferential;
      record.inspectionRadius = 0.025F;
    };
  const Inspection inspection = Make(beams);
  const SectorView view = MakeSector(inspection.Masters().front());
  EXPECT_EQ(view.pixels[PixelAt(view, 0.1, 9.8)].beam, 0U);
  EXPECT_EQ(view.pixels[PixelAt(view, 0.1, 10.2)].beam, SectorView::Source::nothing);
  EXPECT_NEAR(view.EchoOf(0, 60)->point.depth, 6, 1e-4);
  EXPECT_FALSE(view.EchoOf(0, 110)) << "behind the inner wall";
  // Index point, axis and the point at 45 degrees and 20 mm: its distance from the axis by the
  // law of cosines.
  const double fromAxis = std::sqrt(625 + 400 - 2 * 25 * 20 * std::sqrt(0.5));
  EXPECT_NEAR(view.EchoOf(9, 200)->point.depth, 25 - fromAxis, 1e-4);
  ASSERT_EQ(view.lines.size(), 2U);
  for (const SectorLine::Point& point : view.lines[1].points)
    EXPECT_NEAR(std::hypot(point.across, 25 - point.down), 15, 1e-5);
  // A wire of 1.8 mm is round too; here 0.3 mm at 45 degrees.
  for (TestBeam& beam : beams)
    beam.change = [](CGDataTypeFDD& record) {
      record.inspectionGeometry = gdata_GeometryCircumferential;
      record.inspectionRadius = 0.9e-3F;
      record.partThickness = 0.4e-3F;
      record.sampleResolution /= 50;
    };
  const Inspection wire = Make(beams);
  const SectorView wireView = MakeSector(wire.Masters().front());
  EXPECT_THAT(wireView.remarks, testing::Contains(HasSubstr("only the first leg")));
  EXPECT_NEAR(wireView.EchoOf(9, 150)->point.depth,
              0.9 - std::sqrt(0.81 + 0.09 - 0.54 * std::sqrt(0.5)),
              1e-5);
}

TEST_F(SectorTest, DrawsWallsAndTheWeldInEachLeg) {
  CGWeldTypeDescr weld;
  weld.preparation = 1;
  weld.centerPosition = 0.02F;
  weld.bevelAngle = 45;
  weld.rootFace = 0.002F;
  weld.rootGap = 0.002F;
  const Inspection inspection = Make(Fan(40, 5, 4), &weld);
  const SectorView view = MakeSector(inspection.Masters().front());
  std::vector<std::pair<double, SectorLine::Kind>> walls;
  std::vector<SectorLine> bevels;
  for (const SectorLine& line : view.lines)
    if (line.kind == SectorLine::Kind::Weld)
      bevels.push_back(line);
    else
      walls.emplace_back(line.points.front().down, line.kind);
  ASSERT_EQ(walls.size(), 3U);  // 39.9 mm at 40 degrees are 30.6 mm deep
  EXPECT_NEAR(walls[0].first, 10, 1e-5);
  EXPECT_EQ(walls[0].second, SectorLine::Kind::BackWall);
  EXPECT_NEAR(walls[1].first, 20, 1e-5);
  EXPECT_EQ(walls[1].second, SectorLine::Kind::Surface);
  ASSERT_EQ(bevels.size(), 8U);  // two sides in four legs
  const auto rightIn = [&](std::uint32_t leg) {
    return *std::find_if(bevels.begin(), bevels.end(), [leg](const SectorLine& line) {
      return line.leg == leg && line.points.front().across > 20;
    });
  };
  const std::vector<SectorLine::Point> right = rightIn(2).points;
  ASSERT_EQ(right.size(), 3U);
  // 45 degrees over 8 mm from the root face: 9 mm wide at the surface, here 20 mm down.
  EXPECT_NEAR(right[0].across, 29, 1e-5);
  EXPECT_NEAR(right[0].down, 20, 1e-5);
  EXPECT_NEAR(right[1].across, 21, 1e-5);
  EXPECT_NEAR(right[1].down, 12, 1e-5);
  EXPECT_NEAR(right[2].down, 10, 1e-5);
  EXPECT_NEAR(rightIn(3).points[1].down, 28, 1e-5);
  for (const PartView part : {PartView::Top, PartView::Side, PartView::End})
    EXPECT_EQ(MakeProjection(inspection.Masters(), part).weld.size(),
              part == PartView::End ? 2U : 0U);
  EXPECT_THROW((void)view.EchoOf(4, 0), Error);
  EXPECT_THROW((void)view.EchoOf(0, samplesOfBeam), Error);
}

// Of a part of 10 mm, with a gap of 2 mm, a root face of 2 mm and 45 degrees: half of each line.
TEST(WeldOutline, FollowsPreparationAndCaps) {
  using Half = std::vector<std::pair<double, double>>;
  CGWeldTypeDescr weld;
  weld.bevelAngle = 45;
  weld.rootGap = 0.002F;
  weld.rootRadius = 0.004F;
  weld.thickness = 0.01F;
  weld.centerPosition = 0.03F;
  EXPECT_THAT(WeldOutline(CGWeldTypeDescr()), IsEmpty()) << "no thickness";
  const auto expectHalf = [](const std::vector<SectorLine::Point>& line, const Half& expected) {
    ASSERT_EQ(line.size(), expected.size());
    for (std::size_t at = 0; at < line.size(); ++at) {
      EXPECT_NEAR(line[at].across - 30, expected[at].first, 1e-4) << at;
      EXPECT_NEAR(line[at].down, expected[at].second, 1e-4) << at;
    }
  };
  const Half straight = {{1, 0}, {1, 10}};
  const struct {
    std::uint32_t preparation;
    float face;
    Half half;
    bool isOneSided;
  } cases[] = {{0, 0.002F, straight, false},
               {1, 0.002F, {{9, 0}, {1, 8}, {1, 10}}, false},
               {1, 0, {{11, 0}, {1, 10}, {1, 10}}, false},
               {1, 0.5F, {{1, 0}, {1, 0}, {1, 10}}, false},
               {2, 0.002F, {{5, 0}, {1, 4}, {1, 6}, {5, 10}}, false},
               {5, 0.002F, {{5, 0}, {1, 4}, {1, 6}, {5, 10}}, true},
               {6, 0.002F, straight, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.preparation);
    weld.preparation = c.preparation;
    weld.rootFace = c.face;
    const auto lines = WeldOutline(weld);
    ASSERT_EQ(lines.size(), 2U);
    expectHalf(lines[1], c.half);
    Half left = c.isOneSided ? straight : c.half;
    for (auto& point : left) point.first = -point.first;
    expectHalf(lines[0], left);
  }
  // The arc of 4 mm about (1, 4) touches the bevel where both have 45 degrees.
  weld.preparation = 3;
  weld.rootFace = 0.002F;
  weld.symmetric = 0;
  weld.capWidth = 0.01F;
  weld.capHeight = 0.002F;
  weld.rootWidth = 0.006F;
  weld.rootHeight = 0.001F;
  const auto lines = WeldOutline(weld, 10);
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].size(), 2U);
  ASSERT_EQ(lines[1].size(), 15U);
  const double touch = 4 * std::sqrt(0.5);
  const auto pick = [](const auto& line, std::initializer_list<std::size_t> which) {
    std::vector<SectorLine::Point> points;
    for (const std::size_t at : which) points.push_back(line[at]);
    return points;
  };
  expectHalf(pick(lines[1], {0, 1, 7, 13, 14}),
             {{1 + touch + 4 + touch, 0},
              {1 + touch, 4 + touch},
              {1 + 4 * std::cos(67.5 * std::numbers::pi / 180),
               4 + 4 * std::sin(67.5 * std::numbers::pi / 180)},
              {1, 8},
              {1, 10}});
  expectHalf(pick(lines[2], {0, 8, 12, 16}), {{-5, 0}, {0, -2}, {2.5, -1.5}, {5, 0}});
  expectHalf(pick(lines[3], {0, 8, 16}), {{-3, 10}, {0, 11}, {3, 10}});
}

}  // namespace
}  // namespace utdata::test
