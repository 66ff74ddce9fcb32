// TOFD data made, edited and calibrated with the program: a plate of 30 mm between probes 90 mm
// apart. The lateral wave has a half path of 45 mm, the back wall √(45² + 30²) = 54.08 mm.
#include <cmath>
#include <numbers>

#include "tests/tools/run_program.h"

namespace utdata::test {
namespace {

using Json = nlohmann::json;

constexpr int tofdRows = 12, tofdSamples = 600;

/// A-scans of 16 bits, 10 ns a sample, from 14.5 µs on, at 5920 m/s.
std::string PlateScan(double delay) {  // µs
  std::string bytes;
  for (int row = 0; row < tofdRows; ++row)
    for (int sample = 0; sample < tofdSamples; ++sample) {
      double value = (sample * 31 + row * 17) % 41 - 20;
      for (const auto& [path, height] :
           {std::pair(45.0, 8000.0), std::pair(std::hypot(45, 30), -25000.0)}) {
        const double away = 14.5 + sample * 0.01 - 2 * path / 5.92 - delay;
        value +=
            height * std::cos(2 * std::numbers::pi * 10 * away) * std::exp(-away * away / 0.005);
      }
      const auto stored = static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lround(value)));
      bytes += static_cast<char>(stored & 0xFFU);
      bytes += static_cast<char>(stored >> 8U);
    }
  return bytes;
}

class TofdTest : public ProgramTest {
 protected:
  void Import(double delay, const std::string& more) const {
    WriteFile(At("plate.raw"), PlateScan(delay));
    const ProgramResult made =
        Run("import plate.raw -o plate.fpd --shape 12,1,600 --axes row,column,sample --dtype i16 "
            "--sample-step 10 --sample-offset 14500 --sound-speed 5920 --row-step 2 " +
            more);
    ASSERT_EQ(made.status, 0) << made.error;
  }

  /// What the pictures say of the strongest echo, the back wall: with a depth, or without one.
  void ExpectCaptions(const std::string& depth) const {
    for (const std::string view : {"a", "b", "d", "d --straighten"}) {
      if (depth != "30.0 mm" && view.ends_with("n")) continue;  // it would change the depth
      const ProgramResult drawn = Run("render plate.fpd --data 0 --force -o d.png --view " + view);
      EXPECT_EQ(drawn.status, 0) << drawn.error;
      if (depth.empty())
        EXPECT_EQ(drawn.out.find(" deep"), std::string::npos) << view << drawn.out;
      else
        EXPECT_NE(drawn.out.find(", " + depth + " deep"), std::string::npos) << view << drawn.out;
    }
  }
};

TEST_F(TofdTest, APlainChannelBecomesTofdAndAgainPlain) {
  Import(0, "--thickness 30");
  ExpectCaptions("");
  for (const std::string as : {"append", "companion"}) {
    SCOPED_TRACE(as);
    ProgramResult edited =
        Run("edit plate.fpd data 0 tofd=yes probeSeparation=90 --as " + as + " --author AB");
    ASSERT_EQ(edited.status, 0) << edited.error;
    EXPECT_NE(edited.out.find("channel 0: tofd no -> yes"), std::string::npos) << edited.out;
    Json row = RunJson("info plate.fpd --json")["data"][0];
    EXPECT_EQ(row["tofd"], true);
    EXPECT_EQ(row["bookmark"], 2) << "keeps its type";
    ExpectCaptions("30.0 mm");
    edited = Run("edit plate.fpd channel 0 tofd=no --as " + as);
    ASSERT_EQ(edited.status, 0) << edited.error;
    row = RunJson("info plate.fpd --json")["data"][0];
    EXPECT_EQ(row["tofd"], false);
    EXPECT_EQ(row["bookmark"], 2);
    ExpectCaptions("");
  }
  const std::string history = Run("info plate.fpd --history").out;
  EXPECT_NE(history.find("TOFD no -> yes"), std::string::npos) << history;
  EXPECT_NE(history.find("TOFD yes -> no"), std::string::npos) << history;
  EXPECT_EQ(Run("verify plate.fpd plate.A01 plate.A02").status, 0);
}

// Each field that a depth follows from, as an inspector sets it.
TEST_F(TofdTest, DepthsFollowEachFieldTheyAreMadeOf) {
  Import(0.4, "");
  struct Edit {
    const char* change;
    const char* depth;
  };
  const std::vector<Edit> edits = {{"tofd=yes", ""},  // the probe separation is not known
                                   {"probeSeparation=90", "32.1 mm"},
                                   {"sampleOffset=14.1", "30.0 mm"},
                                   {"soundSpeed=6000", "31.3 mm"},  // √(54.81² - 45²)
                                   {"soundSpeed=5920", "30.0 mm"},
                                   {"partThickness=30", "30.0 mm"},
                                   {"probeSeparation=100", "20.6 mm"}};  // √(54.08² - 50²)
  for (const Edit& edit : edits) {
    SCOPED_TRACE(edit.change);
    const ProgramResult edited = Run(std::string("edit plate.fpd data 0 ") + edit.change);
    ASSERT_EQ(edited.status, 0) << edited.error;
    ExpectCaptions(edit.depth);
    ASSERT_EQ(Run("report plate.fpd -o r.html --force").status, 0);
    const std::string page = ReadFile(At("r.html"));
    const bool hasNone = *edit.depth == '\0';
    EXPECT_EQ(page.find("no depths: the probe separation is not known") != page.npos, hasNone);
    EXPECT_EQ(page.find("\"tofdDepths\"") == page.npos, hasNone);
    EXPECT_EQ(page.find("\"depth\":"), page.npos) << "along a leg of one probe";
  }
}

TEST_F(TofdTest, ASeparationThatNobodyGaveIsMarkedAsDefault) {
  Import(0, "--thickness 30");
  ASSERT_EQ(Run("edit plate.fpd data 0 tofd=yes").status, 0);
  EXPECT_NE(Run("edit plate.fpd data 0").out.find("1 mm (default)"), std::string::npos);
  EXPECT_NE(Run("info plate.fpd").out.find("probe separation not known"), std::string::npos);
  EXPECT_EQ(RunJson("edit plate.fpd data 0 --json")["defaults"],
            Json({"inspectionRadius", "probeSeparation"}));
  const Json edited = RunJson("edit plate.fpd data 0 probeSeparation=90 --json");
  EXPECT_EQ(edited["defaults"], Json({"inspectionRadius"}));
  EXPECT_EQ(RunJson("edit plate.fpd channel 0 --json")["defaults"], Json::array());
}

TEST_F(TofdTest, PicturesSayWhereTheLateralWaveIsNotAmongTheSamples) {
  const std::vector<std::pair<std::string, std::string>> places = {
      {"0", "No depths: the samples end before the lateral wave"},
      {"17", "The samples begin behind the lateral wave"}};
  Import(0, "--thickness 30 --tofd --pcs 90");
  for (const auto& [offset, note] : places) {
    ASSERT_EQ(Run("edit plate.fpd data 0 sampleOffset=" + offset).status, 0);
    const ProgramResult drawn = Run("render plate.fpd --data 0 --view d -o d.png --force");
    EXPECT_NE(drawn.out.find(note), std::string::npos) << drawn.out;
    ExpectOneLine(Run("render plate.fpd --data 0 --view d -o d.png --force --straighten"),
                  1,
                  "no sample lies where the lateral wave is expected");
  }
}

TEST_F(TofdTest, CalibrationPutsTheBackWallWhereItIs) {
  Import(0.4, "--thickness 30 --tofd --pcs 90");
  ExpectCaptions("32.1 mm");
  const std::string before = ReadFile(At("plate.fpd"));
  const ProgramResult shown = Run("calibrate plate.fpd --data 0 --show");
  EXPECT_EQ(shown.status, 0) << shown.error;
  EXPECT_NE(shown.out.find("lateral wave   15.60"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find("found in 12 of 12 A-scans"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find("back wall then 30.00 mm deep"), std::string::npos) << shown.out;
  EXPECT_EQ(ReadFile(At("plate.fpd")), before);

  const Json result = RunJson("calibrate plate.fpd --data 0 --as companion --json --author AB");
  EXPECT_EQ(result["written"], "plate.A01");
  EXPECT_NEAR(result["correction"].get<double>(), 0.4e-6, 1e-9);
  EXPECT_NEAR(result["error"].get<double>(), 0, 0.01e-3);
  EXPECT_NEAR(RunJson("info plate.fpd --json")["data"][0]["samples"]["offset"].get<double>(),
              14.1e-6,
              1e-9);
  ExpectCaptions("30.0 mm");
  const std::string history = Run("info plate.fpd --history").out;
  EXPECT_NE(history.find("sample offset 14.5 µs -> 14.1"), std::string::npos) << history;

  const ProgramResult again = Run("calibrate plate.fpd --data 0 --as append");
  EXPECT_NE(again.out.find("nothing is written"), std::string::npos) << again.out;
  const Json given =
      RunJson("calibrate plate.fpd --data 0 --lateral-wave 15.3027 --back-wall 18.3 --show --json");
  EXPECT_NEAR(given["correction"].get<double>(), 0.1e-6, 1e-9);
  EXPECT_EQ(given["searched"], 0);
}

TEST_F(TofdTest, CalibrationRefusesAndWritesNothing) {
  Import(0.4, "--thickness 30 --tofd --pcs 90");
  const std::string before = ReadFile(At("plate.fpd"));
  const std::vector<std::pair<std::string, std::string>> failures = {
      {"--lateral-wave 18.6 --back-wall 15.6", "the back wall comes before the lateral wave"},
      {"--lateral-wave 14 --back-wall 18.6", "the lateral wave at 14 µs is outside the samples"},
      {"--row 12", "it has no row 12"}};
  for (const auto& [options, why] : failures)
    ExpectOneLine(Run("calibrate plate.fpd --data 0 " + options), 1, why);
  for (const std::string usage :
       {"--lateral-wave 15.6", "--row 1 --lateral-wave 15.6 --back-wall 18.6", "--as new"})
    EXPECT_EQ(Run("calibrate plate.fpd --data 0 " + usage).status, 2) << usage;
  EXPECT_EQ(ReadFile(At("plate.fpd")), before);

  Import(0.4, "--force --tofd --pcs 90");
  ExpectOneLine(Run("calibrate plate.fpd --data 0"), 1, "the thickness of the part is not known");
  Import(0.4, "--force --thickness 30");
  ASSERT_EQ(Run("edit plate.fpd data 0 tofd=yes").status, 0);
  ExpectOneLine(Run("calibrate plate.fpd --data 0"), 1, "the probe separation is not known");
  ExpectOneLine(Run("render plate.fpd --data 0 --view d --straighten -o d.png"),
                1,
                "separation is not known");
  Import(0.4, "--force --thickness 40 --tofd --pcs 90");
  ExpectOneLine(Run("calibrate plate.fpd --data 0"), 1, "no echo of the back wall lies where");
  Import(0.4, "--force --thickness 28 --tofd --pcs 90");
  const ProgramResult thin = Run("calibrate plate.fpd --data 0 --show");
  EXPECT_EQ(thin.status, 0) << thin.error;
  EXPECT_TRUE(thin.error.starts_with("warning: plate.fpd: the back wall is 2.00 mm deeper"))
      << thin.error;
  EXPECT_NE(thin.out.find("would fit      a probe separation of 77.2"), std::string::npos);
}

}  // namespace
}  // namespace utdata::test
