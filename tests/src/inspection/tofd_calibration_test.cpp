// The calibration of TOFD data. Probes 80 mm apart on a plate of 30 mm make a triangle of 40, 30
// and 50 mm: at 5 mm/µs the lateral wave takes 16 µs, the echo of the back wall 20 µs.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/failure.h"
#include "utdata/gating.h"
#include "utdata/history.h"
#include "utdata/idata.h"
#include "utdata/newscan.h"
#include "utdata/readout.h"
#include "utdata/tofd.h"
#include "utdata/views.h"

namespace utdata::test {
namespace {

constexpr std::uint32_t plateRows = 21, plateSamples = 900;
constexpr double firstTime = 14, timeStep = 0.01;  // µs

CGDataTypeFDD PlateRecord() {
  CGDataTypeFDD record = NominalRecord(*FindSampleType("i16"));
  SetLayout(record, *FindSampleType("i16"), {1, plateRows, plateSamples, true});
  record.SetDataRectification(gdata_RectifNone);
  record.tofd = 1;
  record.probeSeparation = 0.08F;
  record.partThickness = 0.03F;
  record.soundSpeed = 5000;
  record.sampleResolution = static_cast<float>(timeStep * 1e-6);
  record.sampleOffset = static_cast<float>(firstTime * 1e-6);
  return record;
}

struct PlateEcho {
  double time = 0;  ///< µs
  double height = 0;
};

/// A wave of 10 MHz and a few periods.
void AddPlateEcho(std::span<std::int16_t> ascan, const PlateEcho& echo) {
  for (std::size_t index = 0; index < ascan.size(); ++index) {
    const double away = firstTime + static_cast<double>(index) * timeStep - echo.time;  // µs
    const double wave = std::cos(2 * std::numbers::pi * 10 * away) * std::exp(-away * away / 0.005);
    ascan[index] = static_cast<std::int16_t>(ascan[index] + std::lround(echo.height * wave));
  }
}

using PlateEchoes = std::function<std::vector<PlateEcho>(std::uint32_t row)>;

/// Both echoes, late by a delay in µs.
PlateEchoes LateBy(double delay) {
  return [=](std::uint32_t) {
    return std::vector<PlateEcho>{{16 + delay, 3000}, {20 + delay, -9000}};
  };
}

class TofdCalibrationTest : public testing::Test {
 protected:
  Inspection Make(const CGDataTypeFDD& record, const PlateEchoes& echoes) const {
    Inspection inspection = Inspection::New(m_path);
    Add(inspection, record, echoes);
    return inspection;
  }

  static DataGroup Add(Inspection& inspection,
                       const CGDataTypeFDD& record,
                       const PlateEchoes& echoes) {
    std::vector<std::int16_t> table(std::size_t{plateRows} * plateSamples);
    std::uint32_t noise = 1;
    for (std::int16_t& sample : table) {
      noise = noise * 1664525U + 1013904223U;
      sample = static_cast<std::int16_t>((noise >> 24U) % 101 - 50);
    }
    for (std::uint32_t row = 0; row < plateRows; ++row)
      for (const PlateEcho& echo : echoes(row))
        AddPlateEcho(std::span(table).subspan(std::size_t{row} * plateSamples, plateSamples), echo);
    const auto bytes = std::as_bytes(std::span(table));
    return inspection.AddData(record, {bytes.begin(), bytes.end()});
  }

  const ScratchDirectory m_scratch;
  const std::string m_path = m_scratch.Path().string() + "/plate.fpd";
};

TEST_F(TofdCalibrationTest, TheLateralWaveSetsTheOffsetAndTheBackWallIsThenInItsPlace) {
  for (const double delay : {0.0, 0.4, -0.237, 0.0133}) {
    SCOPED_TRACE(delay);
    Inspection inspection = Make(PlateRecord(), LateBy(delay));
    const DataGroup group = inspection.Data().front();
    const TofdCalibration found = CalibrateTofd(group);
    EXPECT_EQ(found.ascans, plateRows);
    EXPECT_NEAR(found.times.lateralWave, 16 + delay, 1e-3);
    EXPECT_NEAR(found.times.backWall, 20 + delay, 1e-3);
    EXPECT_NEAR(found.correction * 1e6, delay, 1e-3);
    EXPECT_NEAR(found.backWallDepth, 30, 0.01);
    EXPECT_EQ(found.isNeeded, delay != 0);
    const auto changes = CorrectSampleOffset(group, found);
    ASSERT_EQ(changes.size(), delay != 0 ? 1U : 0U);
    EXPECT_EQ(inspection.Data().front().Item().idata1_ModifGetStatus(), delay != 0 ? 1 : 0);
    const TofdScale scale = TofdScaleOf(group).value();
    EXPECT_NEAR(scale.lateralWave, found.lateralWave, 0.1);
    EXPECT_NEAR(scale.backWall.value(), found.backWall, 0.1);
    const auto peak = static_cast<std::uint32_t>(std::lround(found.backWall));
    EXPECT_EQ(group.ReadOut(0, 0, peak).tofdDepth.Text(unit_Millimetre), "30.0 mm");
    EXPECT_FALSE(CalibrateTofd(group).isNeeded) << "a second time";
  }
}

TEST_F(TofdCalibrationTest, IsAnEditWithHistoryThatPositionsFollow) {
  {
    Inspection inspection = Make(PlateRecord(), LateBy(0.4));
    static_cast<void>(
        Gate(inspection, {.channel = 0, .gate = 1, .start = 20e-6, .width = 1e-6, .threshold = 5}));
    inspection.SaveAs(m_path);
  }
  {
    Inspection inspection = Inspection::Open(m_path);
    const DataGroup group = inspection.Data().front();
    const auto changes = CorrectSampleOffset(group, CalibrateTofd(group));
    ASSERT_EQ(changes.size(), 3U);
    EXPECT_EQ(changes[0].shownBefore + " to " + changes[0].shownAfter, "14 µs to 13.6 µs");
    EXPECT_EQ(changes[1].group, "C 1 G1 C-scan position");
    inspection.SaveAppended({.author = "AB", .reason = "calibrated"});
  }
  const Inspection again = Inspection::Open(m_path);
  const WriteEvent written = HistoryOf(again).back();
  EXPECT_EQ(written.author, "AB");
  ASSERT_FALSE(written.groups.empty());
  EXPECT_EQ(written.groups[0].changes[0].shownAfter, "13.6 µs");
  const DataGroup ascans = again.Data().front();
  const DataGroup positions = again.Data({.dataClass = gdata_CScanPosition});
  const auto sample = static_cast<std::uint32_t>(positions.ReadOut(3, 0).value);
  EXPECT_EQ(ascans.ReadOut(3, 0, sample).tofdDepth.Text(unit_Millimetre), "30.0 mm");
  EXPECT_NEAR(positions.ReadOut(3, 0).time.In(unit_Microsecond),
              ascans.ReadOut(3, 0, sample).time.In(unit_Microsecond),
              1e-4);
}

// The echo says 30 mm, the record 32: Δp is 10 mm. (32² - 10²) / 10 = 92.4, and half of it, 46.2,
// with 32 has the hypotenuse 56.2. 2 (√(40² + 32²) - 40) mm / 4 µs = 5.6125 mm/µs.
TEST_F(TofdCalibrationTest, SaysWhatWouldFitWhereTheBackWallDoesNot) {
  CGDataTypeFDD record = PlateRecord();
  record.partThickness = 0.032F;
  const Inspection inspection = Make(record, LateBy(0.4));
  const TofdCalibration found = CalibrateTofd(inspection.Data().front());
  EXPECT_NEAR(found.correction * 1e6, 0.4, 1e-3) << "the lateral wave's alone";
  EXPECT_NEAR(found.backWallDepth, 30, 0.01);
  EXPECT_NEAR(found.Error(), -2, 0.01);
  EXPECT_NEAR(found.fittingSeparation.value(), 92.4, 0.05);
  EXPECT_NEAR(found.fittingSoundSpeed.value(), 5612.5, 3);
}

// On a pipe of 100 mm radius, an arc of 104.72 mm is one of 30 degrees over the diameter: the chord
// between the probes is 100 mm, half of it 50, and lies 100 (1 - cos 30°) = 13.397 mm below the
// surface. The back wall at 30 mm has a half path of √(50² + 16.603²) = 52.685 mm.
TEST_F(TofdCalibrationTest, GoesByTheChordOfARoundPart) {
  CGDataTypeFDD record = PlateRecord();
  record.inspectionGeometry = gdata_GeometryCircumferential;
  record.geometryKind = 16;
  record.inspectionRadius = 0.1F;
  record.probeSeparation = 0.10472F;
  Inspection inspection = Make(record, LateBy(0));
  const DataGroup group = inspection.Data().front();
  const TofdCalibration found =
      CalibrateTofd(group, {.times = TofdEchoTimes{20 + 0.25, 2 * 52.685 / 5 + 0.25}});
  EXPECT_NEAR(found.correction * 1e6, 0.25, 1e-4);
  EXPECT_NEAR(found.backWallDepth, 30, 0.005);
  EXPECT_FALSE(found.fittingSeparation) << "of a flat part";
  CorrectSampleOffset(group, found);
  EXPECT_NEAR(TofdScaleOf(group).value().backWall.value(), found.backWall, 0.05);
}

TEST_F(TofdCalibrationTest, FindsTheEchoesWhateverElseIsThere) {
  const auto with = [](PlateEcho more) {
    return [=](std::uint32_t row) {
      auto echoes = LateBy(0.4)(row);
      echoes.push_back(more);
      return echoes;
    };
  };
  const std::vector<std::pair<std::string, PlateEchoes>> cases = {
      {"opposite polarity",
       [](std::uint32_t) {
         return std::vector<PlateEcho>{{16.4, -3000}, {20.4, 9000}};
       }},
      {"a pulse before the lateral wave", with({14.6, 9000})},
      {"a flaw that is stronger than the lateral wave", with({17.4, 8000})},
      {"a stronger echo behind the back wall", with({21.6, 20000})},
      {"a clipped back wall",
       [](std::uint32_t) {
         return std::vector<PlateEcho>{{16.4, 3000}, {20.4, -32000}, {20.4, -700}};
       }},
      {"probes that lift off",
       [](std::uint32_t row) { return LateBy(0.4 + 0.03 * (row % 3 - 1.0))(row); }},
      {"some A-scans without coupling",
       [](std::uint32_t row) {
         return row % 3 == 0 ? std::vector<PlateEcho>() : LateBy(0.4)(row);
       }},
  };
  for (const auto& [what, echoes] : cases) {
    SCOPED_TRACE(what);
    Inspection inspection = Make(PlateRecord(), echoes);
    const TofdCalibration found = CalibrateTofd(inspection.Data().front());
    EXPECT_NEAR(found.correction * 1e6, 0.4, 2e-3);
    EXPECT_NEAR(found.backWallDepth, 30, 0.02);
  }
}

TEST_F(TofdCalibrationTest, RefusesWhatItCannotKnow) {
  struct Case {
    std::function<void(CGDataTypeFDD&)> change;
    TofdCalibrationOptions options;
    PlateEchoes echoes = LateBy(0.4);
    const char* why;
  };
  const auto same = [](CGDataTypeFDD&) {};
  const TofdEchoTimes late = {.lateralWave = 16.4, .backWall = 20.4};
  const std::vector<Case> cases = {
      {[](auto& record) { record.tofd = 0; }, {.times = late}, {}, "no time-of-flight"},
      {[](auto& record) { record.probeSeparation = 0; }, {.times = late}, {}, "separation is not"},
      {[](auto& record) { record.soundSpeed = 0; }, {.times = late}, {}, "sound speed is not"},
      {[](auto& record) { record.partThickness = 0; }, {.times = late}, {}, "thickness of the"},
      {[](auto& record) { record.sampleUnits = kvt_UnitMetre; }, {.times = late}, {}, "count time"},
      {[](auto& record) { record.inspectionGeometry = gdata_GeometryAxial; },
       {.times = late},
       {},
       "radius of the part is not known"},
      {same, {.times = TofdEchoTimes{20.4, 16.4}}, {}, "the back wall comes before"},
      {same, {.times = TofdEchoTimes{13.9, 20.4}}, {}, "the lateral wave at 13.9 µs is outside"},
      {same, {.times = TofdEchoTimes{16.4, 23}}, {}, "the back wall at 23 µs is outside"},
      {same, {.times = TofdEchoTimes{NAN, 20}}, {}, "outside"},
      {same, {.row = plateRows}, LateBy(0.4), "has no row 21"},
      {same, {}, [](std::uint32_t) { return std::vector<PlateEcho>(); }, "no echo stands out"},
      {same,
       {},
       [](std::uint32_t) {
         return std::vector<PlateEcho>{{16.4, 3000}, {20.4, 9000}};
       },
       "the same phase"},
      {same,
       {},
       [](std::uint32_t) {
         return std::vector<PlateEcho>{{16.4, 3000}};
       },
       "no echo of the"},
      {same,
       {},
       [](std::uint32_t row) { return row < 15 ? std::vector<PlateEcho>() : LateBy(0.4)(row); },
       "found in 6 of 21"},
      {[](auto& record) {
         record.SetDataRectification(gdata_RectifFull);
         record.dataMinimum = 0;
       },
       {},
       {},
       "rectified"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.why);
    CGDataTypeFDD record = PlateRecord();
    each.change(record);
    Inspection inspection = Make(record, each.echoes ? each.echoes : LateBy(0.4));
    try {
      static_cast<void>(CalibrateTofd(inspection.Data().front(), each.options));
      ADD_FAILURE() << "is not refused";
    } catch (const Error& error) {
      EXPECT_NE(error.Why().find(each.why), std::string::npos) << error.what();
    }
  }
  Inspection inspection = Make(PlateRecord(), cases[12].echoes);
  const TofdCalibration given =
      CalibrateTofd(inspection.Data().front(), {.times = TofdEchoTimes{16.4, 20.4}});
  EXPECT_NEAR(given.correction * 1e6, 0.4, 1e-4) << "times that are given need no phase";
}

}  // namespace
}  // namespace utdata::test
