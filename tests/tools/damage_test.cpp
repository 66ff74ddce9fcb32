// Inspections with a damaged sample: what the verbs make of them, refused and accepted.
#include <cstdint>
#include <string>
#include <vector>

#include "drawing.h"
#include "run_program.h"

namespace utdata::test {
namespace {

constexpr int damagedRow = 15;

class DamagedSampleTest : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    std::string samples;
    for (std::size_t at = 0; at < std::size_t{30} * 50 * 1000; ++at)
      samples += {static_cast<char>(at % 251), static_cast<char>(at % 97)};
    WriteFile(At("scan.raw"), samples);
    const ProgramResult made =
        Run("import scan.raw -o scan.fpd --shape 30,50,1000 --axes row,column,sample --dtype i16 "
            "--quiet");
    ASSERT_EQ(made.status, 0) << made.error;
    std::string bytes = ReadFile(At("scan.fpd"));
    const std::size_t block = bytes.find(samples.substr(0, 4096));
    ASSERT_NE(block, std::string::npos);
    bytes[block + std::size_t{damagedRow} * 50 * 2000 + 77] ^= 1;
    WriteFile(At("scan.fpd"), bytes);
  }
};

TEST_F(DamagedSampleTest, EveryVerbThatReadsItRefusesAndNamesTheInput) {
  const std::vector<std::string> verbs = {
      "render scan.fpd --data 0 --view a -o out.png",
      "render scan.fpd --data 0 --view b --row 15 -o out.png",
      "render scan.fpd --data 0 --view c -o out.png",
      "render scan.fpd --data 0 --view c --in-memory -o out.png",
      "render scan.fpd --data 0 --view d --column 0 -o out.png",
      "export scan.fpd --data 0 -o out.npy",
      "report scan.fpd -o out.html",
      "info --hash scan.fpd",
      "gate scan.fpd --channel 0 --gate 1 --start 1 --width 2 --as companion",
      "gate scan.fpd --channel 0 --gate 1 --start 1 --width 2 --in-memory --as append",
      "gate scan.fpd --channel 0 --gate 1 --start 1 --width 2 --as new -o out.fpd",
      "edit scan.fpd info title=a --as new -o out.fpd"};
  const auto before = Names();
  const std::string bytes = ReadFile(At("scan.fpd"));
  for (const std::string& verb : verbs) {
    SCOPED_TRACE(verb);
    const ProgramResult result = Run(verb + " --quiet");
    ExpectOneLine(result, 1, "scan.fpd: data group 0: cannot be ");
    EXPECT_NE(result.error.find("damaged: bytes "), std::string::npos) << result.error;
    EXPECT_EQ(result.error.find("out."), std::string::npos) << result.error;
    EXPECT_EQ(Names(), before);
  }
  EXPECT_EQ(ReadFile(At("scan.fpd")), bytes);
  EXPECT_EQ(Run("render scan.fpd --data 0 --view b --row 0 --quiet -o whole.png").status, 0)
      << "a row that is whole is drawn";
}

TEST_F(DamagedSampleTest, AcceptedItIsMarkedInPicturesAndListed) {
  const auto accept = [this](const std::string& verb) {
    const ProgramResult result = Run(verb + " --accept-damage --quiet --json");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_TRUE(result.error.starts_with("warning: scan.fpd: data group 0: ")) << result.error;
    return nlohmann::json::parse(result.out, nullptr, false);
  };
  const nlohmann::json cscan = accept("render scan.fpd --data 0 --view c -o c.png");
  EXPECT_GT(cscan["damaged_cells"], 0);
  const nlohmann::json bscan = accept("render scan.fpd --data 0 --view b --row 15 -o b.png");
  EXPECT_GT(bscan["damaged_cells"], 0);
  for (const char* name : {"c.png", "b.png"}) {
    const PngFile picture(At(name));
    int striped = 0;
    for (int y = 0; y < picture.Height(); ++y)
      for (int x = 0; x < picture.Width(); ++x)
        if (picture.Color({x, y}) == std::array<int, 3>{0, 150, 255}) ++striped;
    EXPECT_GT(striped, 100) << name;
  }
  const nlohmann::json whole = RunJson("render scan.fpd --data 0 --view b --row 0 -o r.png --json");
  EXPECT_EQ(whole["damaged_cells"], 0);

  const nlohmann::json array = accept("export scan.fpd --data 0 -o out.npy");
  ASSERT_EQ(array["damaged"].size(), 1U);
  EXPECT_GE(array["damaged"][0]["last_cell"], damagedRow * 50);

  const nlohmann::json info = accept("info --hash scan.fpd");
  ASSERT_EQ(info["warnings"].size(), 1U) << info["warnings"];

  const nlohmann::json gated =
      accept("gate scan.fpd --channel 0 --gate 1 --start 1 --width 2 --as companion");
  EXPECT_EQ(gated["gated"][0]["damaged_cells"], cscan["damaged_cells"]);
  const nlohmann::json hashes = accept("info --hash scan.fpd");
  EXPECT_TRUE(hashes["data"][1].contains("table_sha256")) << "the C-scans have good checksums";

  const ProgramResult report = Run("report scan.fpd --accept-damage --quiet -o report.html");
  EXPECT_EQ(report.status, 0) << report.error;
  EXPECT_NE(ReadFile(At("report.html")).find("\"damaged\":[["), std::string::npos);
}

TEST_F(DamagedSampleTest, RescueWritesWhatIsWholeAndListsTheRest) {
  const ProgramResult result = Run("rescue scan.fpd -o rescued.fpd --json");
  ExpectOneLine(result, 1, "scan.fpd: not all of it is rescued: ");
  const nlohmann::json listed = nlohmann::json::parse(result.out, nullptr, false);
  EXPECT_EQ(listed["complete"], false);
  ASSERT_EQ(listed["lost"].size(), 1U);
  EXPECT_EQ(Run("verify rescued.fpd").status, 0);
  EXPECT_EQ(Run("render rescued.fpd --data 0 --view c --quiet -o c.png").status, 0);
  ExpectOneLine(Run("rescue scan.fpd -o rescued.fpd"), 1, "rescued.fpd: ");
  const ProgramResult again = Run("rescue rescued.fpd -o again.fpd");
  EXPECT_EQ(again.status, 0) << again.error;
  EXPECT_EQ(again.out, "written to again.fpd: nothing is lost\n");
}

}  // namespace
}  // namespace utdata::test
