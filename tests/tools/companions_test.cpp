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

TEST_F(CompanionsTest, OnlyItsOwnAreAdopted) {
  Make("pipe");
  ExpectOneLine(Run("adopt weld.fpd pipe.A01"),
                1,
                "pipe.A01: cannot be renamed: it is a companion "
                "of another inspection");
  ExpectOneLine(
      Run("adopt weld.fpd pipe.fpd"), 1, "pipe.fpd: cannot be renamed: it is no companion");
  ExpectOneLine(Run("adopt weld.A01 weld.A02"), 1, "weld.A01");
  ExpectOneLine(Run("adopt weld.fpd weld.A07"), 1, "weld.A07");
  std::filesystem::create_directory(At("away"));
  std::filesystem::copy_file(At("weld.A03"), At("away/weld.A03"));
  ExpectOneLine(Run("adopt weld.fpd away/weld.A03"), 1, "another folder");
  std::filesystem::copy_file(At("weld.A03"), At("weld.A09"));
  ExpectOneLine(Run("adopt weld.fpd"), 1, "weld.A03 has the same number");
  std::filesystem::remove(At("weld.A03"));
  EXPECT_EQ(Run("adopt weld.fpd").out, "weld.A09 -> weld.A03\n");
  EXPECT_EQ(Run("verify weld.fpd").status, 0);
}

TEST_F(CompanionsTest, ACopyOfTheBaseIsABaseToo) {
  std::filesystem::copy_file(At("weld.fpd"), At("copy.fpd"));
  EXPECT_EQ(Run("info copy.fpd").error, "") << "the companions have their base beside them";
  EXPECT_EQ(Run("adopt copy.fpd").out, "copy.fpd: nothing to rename\n");
  std::filesystem::copy_file(At("weld.A01"), At("copy.A01"));
  EXPECT_EQ(Gain("copy.fpd"), 1);
  ASSERT_EQ(Run("edit copy.fpd channel 0 gain=5 --as companion").status, 0);
  EXPECT_EQ(Gain("copy.fpd"), 5);
  EXPECT_EQ(Run("verify copy.fpd weld.fpd").status, 0);
  // What is saved anew is another inspection.
  ASSERT_EQ(Run("edit weld.fpd channel 0 gain=6 --as new -o new.fpd").status, 0);
  std::filesystem::copy_file(At("weld.A01"), At("new.A01"));
  EXPECT_EQ(Gain("new.fpd"), 6);
  EXPECT_EQ(Run("verify new.fpd").status, 1);
}

}  // namespace
}  // namespace utdata::test
