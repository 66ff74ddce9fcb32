// Files that belong together, and how the program says that they do not.
#include "run_program.h"

namespace utdata::test {
namespace {

using Json = nlohmann::json;

class CompanionsTest : public ProgramTest {
 protected:
  /// weld.fpd with weld.A01 to weld.A03, which set the gain of channel 0 to 1, 2 and 3 dB.
  void SetUp() override {
    ProgramTest::SetUp();
    Make("weld");
  }

  void Make(const std::string& name) const {
    WriteFile(At("scan.raw"), std::string(2 * 3 * 50, 'x'));
    ASSERT_EQ(Run("import scan.raw -o " + name +
                  ".fpd --shape 2,3,50 --axes row,column,sample --dtype u8 --rectified")
                  .status,
              0);
    for (const char* gain : {"1", "2", "3"})
      ASSERT_EQ(Run("edit " + name + ".fpd channel 0 gain=" + gain + " --as companion").status, 0);
  }

  [[nodiscard]] double Gain(const std::string& name) const {
    const ProgramResult result = Run("edit " + name + " channel 0 --json");
    return Json::parse(result.out)["values"]["gain"];
  }
  void Rename(const std::string& from, const std::string& to) const {
    std::filesystem::rename(At(from), At(to));
  }
};

TEST_F(CompanionsTest, VerifyCoversThem) {
  const ProgramResult whole = Run("verify weld.fpd");
  EXPECT_EQ(whole.status, 0) << whole.error;
  EXPECT_EQ(std::count(whole.out.begin(), whole.out.end(), '\n'), 4) << whole.out;
  EXPECT_NE(whole.out.find("weld.A03: clean, 1 commit, "), std::string::npos) << whole.out;
  EXPECT_NE(whole.out.find(", companion 3 of weld.fpd\n"), std::string::npos) << whole.out;
  EXPECT_EQ(RunJson("verify weld.fpd weld.A01 weld.A02 --json").size(), 4U) << "each once";

  Rename("weld.A02", "kept");
  const ProgramResult gap = Run("verify weld.fpd");
  ExpectOneLine(gap, 1, "weld.A02: not clean: missing");
  EXPECT_NE(gap.out.find("weld.A03: clean"), std::string::npos) << gap.out;
  EXPECT_NE(gap.out.find("weld.A02: is missing; weld.A03 was not read\n"), std::string::npos)
      << gap.out;
  Rename("kept", "weld.A02");
  std::filesystem::resize_file(At("weld.A02"), 9000);
  ExpectOneLine(Run("verify weld.fpd --quiet"), 1, "weld.A02: not clean: damaged");
}

TEST_F(CompanionsTest, WhatIsNotReadIsAWarningEverywhere) {
  Make("pipe");
  Rename("pipe.A03", "weld.A03");
  const std::string line = "weld.A03 is a companion of another inspection; it was not read";
  for (const char* verb : {"info weld.fpd", "render weld.fpd --data 0 --view c -o x.png"})
    EXPECT_EQ(Run(verb).error, "warning: " + line + "\n") << verb;
  EXPECT_EQ(RunJson("info weld.fpd --json")["warnings"], Json({line}));
  EXPECT_EQ(Gain("weld.fpd"), 2);
  const ProgramResult verified = Run("verify weld.fpd");
  EXPECT_EQ(verified.status, 1);
  EXPECT_NE(verified.out.find("weld.A03: misplaced: is a companion of another inspection\n"),
            std::string::npos)
      << verified.out;
  // Nothing goes behind it; what is appended to the files that were read does no harm.
  EXPECT_EQ(Run("edit weld.fpd channel 0 gain=9 --as companion").status, 1);
  EXPECT_EQ(Run("edit weld.fpd channel 0 gain=9").status, 0);
  EXPECT_EQ(Gain("weld.fpd"), 9);
  // Who has lost it is told where it is.
  EXPECT_EQ(Run("info pipe.fpd").error,
            "warning: weld.A03 is companion 3 of pipe.fpd under another file's name; it was not "
            "read\n");
}

TEST_F(CompanionsTest, OneAloneIsShownAsWhatItIs) {
  const ProgramResult info = Run("info weld.A02");
  EXPECT_EQ(info.status, 0);
  EXPECT_EQ(info.error, "");
  EXPECT_TRUE(info.out.starts_with("file     weld.A02\nit is    companion 2 of weld.fpd, "))
      << info.out;
  EXPECT_EQ(RunJson("info weld.A02 --json")["role"], "companion 2 of weld.fpd");
  EXPECT_FALSE(RunJson("info weld.fpd --json").contains("role"));
  EXPECT_EQ(Run("verify weld.A02").status, 0);
  std::filesystem::create_directory(At("away"));
  Rename("weld.A02", "away/weld.A02");
  EXPECT_EQ(RunJson("verify away/weld.A02 --json")[0]["role"],
            "companion 2 of an inspection that is not in its folder");
  EXPECT_EQ(Run("verify away/weld.A02").status, 0);
}

TEST_F(CompanionsTest, ARenamedBaseGetsItsCompanionsBack) {
  Rename("weld.fpd", "tube.fpd");
  EXPECT_EQ(Run("info tube.fpd").error,
            "warning: weld.A01 is companion 1 of tube.fpd under another file's name; it was not "
            "read\n");
  EXPECT_EQ(Gain("tube.fpd"), 0);
  EXPECT_EQ(Run("verify tube.fpd").status, 1);
  for (const char* way : {"append", "companion"})
    EXPECT_EQ(Run(std::string("edit tube.fpd channel 0 gain=7 --as ") + way).status, 1)
        << "what is there would come behind it";

  const auto before = Names();
  EXPECT_EQ(Run("adopt tube.fpd --dry-run").out,
            "weld.A01 -> tube.A01\nweld.A02 -> tube.A02\nweld.A03 -> tube.A03\n");
  EXPECT_EQ(Names(), before);
  WriteFile(At("tube.A02"), "theirs");
  ExpectOneLine(Run("adopt tube.fpd"), 1, "tube.A02 exists");
  EXPECT_EQ(ReadFile(At("tube.A02")), "theirs");
  EXPECT_TRUE(std::filesystem::exists(At("weld.A01"))) << "all or nothing";
  std::filesystem::remove(At("tube.A02"));
  const Json result = RunJson("adopt tube.fpd --json");
  EXPECT_EQ(result["renamed"].size(), 3U);
  EXPECT_EQ(result["renamed"][2], (Json{{"from", "weld.A03"}, {"to", "tube.A03"}}));
  EXPECT_EQ(Run("verify tube.fpd").status, 0);
  EXPECT_EQ(Gain("tube.fpd"), 3);
  EXPECT_EQ(Run("adopt tube.fpd").out, "tube.fpd: nothing to rename\n");
}

TEST_F(CompanionsTest, ARescuedOneStaysOneOfItsBase) {
  ASSERT_EQ(Run("edit weld.fpd channel 0 gain=4").status, 0);  // at the end of weld.A03
  const std::string damaged = ReadFile(At("weld.A03"));
  const auto damage = [&](std::size_t at, std::size_t size) {
    WriteFile(At("weld.A03"),
              std::string(damaged).replace(at, size, std::string(size, static_cast<char>(0xA5))));
    EXPECT_EQ(Run("info weld.fpd").status, 1);
    std::filesystem::remove(At("rescued.A03"));
  };
  damage(damaged.size() - 100, 1);
  EXPECT_NE(Run("rescue weld.A03 -o rescued.A03")
                .out.find("rescued.A03, companion 3 of weld.fpd: nothing is lost\n"),
            std::string::npos);
  std::filesystem::rename(At("rescued.A03"), At("weld.A03"));
  EXPECT_EQ(Run("verify weld.fpd").status, 0);
  EXPECT_EQ(Gain("weld.fpd"), 4);
  // A header with one wrong byte says no less; one with several is lost, and that is said.
  damage(20, 1);
  EXPECT_EQ(RunJson("rescue weld.A03 -o rescued.A03 --json")["role"], "companion 3 of weld.fpd");
  damage(20, 8);
  ExpectOneLine(
      Run("rescue weld.A03 -o rescued.A03"), 1, "the new one is an inspection of its own");
  // What is lost of it is not taken for a change that was never made.
  damage(damaged.size() - 100, 60);
  const ProgramResult partly = Run("rescue weld.A03 -o rescued.A03");
  EXPECT_EQ(partly.status, 1);
  EXPECT_NE(partly.out.find("companion 3 of weld.fpd: what is left\n"), std::string::npos)
      << partly.out;
  std::filesystem::rename(At("rescued.A03"), At("weld.A03"));
  EXPECT_EQ(Gain("weld.fpd"), 3);
}

TEST_F(CompanionsTest, TheHistoryListsEveryWrite) {
  ASSERT_EQ(
      Run("edit weld.fpd channel 0 gain=4 --author 'A B' --reason 'too low' --as companion").status,
      0);
  const ProgramResult result =
      RunShell("sh", "UTDATA_AUTHOR=CD utdata edit weld.fpd channel 0 gain=5 name='x\ty'");
  ASSERT_EQ(result.status, 0) << result.error;
  const Json history = RunJson("info weld.fpd --history --json")["history"];
  ASSERT_EQ(history.size(), 6U);
  const auto says = [&](std::size_t at) {
    const Json& event = history[at];
    return event["file"].get<std::string>() + " " + std::to_string(event["write"].get<int>()) +
           " " + event["program"].get<std::string>() + " by " + event["author"].get<std::string>() +
           ": " + event["reason"].get<std::string>();
  };
  EXPECT_EQ(says(0), "weld.fpd 1 utdata by : ");
  EXPECT_EQ(says(4), "weld.A04 1 utdata by A B: too low");
  EXPECT_EQ(says(5), "weld.A04 2 utdata by CD: ");
  EXPECT_TRUE(history[0]["changes"].empty());
  EXPECT_EQ(history[4]["changes"], Json::parse(R"([{"group": "channel 0", "added": false, "fields":
                            [{"field": "gain", "before": "3 dB", "after": "4 dB"}]}])"));
  const std::string text = Run("info weld.fpd --history").out;
  EXPECT_NE(text.find(" UTC, utdata "), std::string::npos) << text;
  EXPECT_NE(text.find(", by A B: too low\n  channel 0: gain 3 dB -> 4 dB\n"), std::string::npos)
      << text;
  EXPECT_NE(text.find("name \"\" -> \"x\\x09y\"\n"), std::string::npos) << text;
  EXPECT_EQ(Run("info weld.fpd").out.find("UTC"), std::string::npos);
  const std::string tree = Run("tree weld.A04").out;
  EXPECT_NE(tree.find("4    author                text   \"A B\""), std::string::npos) << tree;
  // An environment that is no text is refused before anything is written.
  const auto before = ReadFile(At("weld.A04"));
  ExpectOneLine(
      RunShell("sh", "UTDATA_AUTHOR=$(printf '\\377') utdata edit weld.fpd channel 0 gain=6"),
      1,
      "not valid UTF-8");
  EXPECT_EQ(ReadFile(At("weld.A04")) == before, true);
}

}  // namespace
}  // namespace utdata::test
