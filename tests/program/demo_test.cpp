#include <string>

#include "run_program.h"

namespace utdata::test {
namespace {

using DemoTest = ProgramTest;

/// The value of a field of the first group of a type, as `tree --json` tells it.
nlohmann::json Field(const nlohmann::json& tree, int typeCode, const std::string& name) {
  for (const auto& group : tree["groups"][0]["items"]) {
    if (group["code"] != typeCode) continue;
    for (const auto& item : group["items"])
      if (item["name"] == name) return item["value"];
    return nullptr;
  }
  return nullptr;
}

TEST_F(DemoTest, WritesChangesAndReloadsAScan) {
  const ProgramResult demo = Run("demo --out out");
  ASSERT_EQ(demo.status, 0) << demo.error;
  EXPECT_EQ(demo.error, "");

  const nlohmann::json info = RunJson("info out/weld.fpd --json");
  EXPECT_EQ(info["files"], nlohmann::json({"out/weld.fpd", "out/weld.A01"}));
  EXPECT_EQ(info["groups"]["gate"], 2);
  ASSERT_EQ(info["data"].size(), 3U);
  EXPECT_EQ(info["data"][0]["type"], "i16");
  EXPECT_EQ(info["data"][0]["table_bytes"], 10 * 256 * 512 * 2);
  EXPECT_EQ(info["data"][1]["class"], 2);
  EXPECT_EQ(info["data"][1]["gate"], 1);
  EXPECT_EQ(info["data"][1]["table_bytes"], 10 * 256 * 2);

  const nlohmann::json base = RunJson("tree out/weld.fpd --json");
  const nlohmann::json companion = RunJson("tree out/weld.A01 --json");
  EXPECT_EQ(Field(base, 10224, "positiveLevel"), 20.0);
  EXPECT_EQ(Field(companion, 10025, "positiveLevel"), 15.0);
  EXPECT_EQ(Field(companion, 10025, "gateId"), 1);
  EXPECT_TRUE(std::filesystem::exists(At("out/crack.png")));
  EXPECT_EQ(Run("verify out/weld.fpd out/weld.A01").status, 0);
}

TEST_F(DemoTest, IsTheSameEachTimeAndReplacesOnlyWhenForced) {
  ASSERT_EQ(Run("demo").status, 0);
  const nlohmann::json first = RunJson("info utdata-demo/weld.fpd --json --hash");
  ExpectOneLine(Run("demo"), 1, "utdata-demo/weld.fpd");
  ASSERT_EQ(Run("edit utdata-demo/weld.fpd channel 0 gain=40 --as companion").status, 0);
  const ProgramResult again = Run("demo --force --quiet");
  EXPECT_EQ(again.status, 0) << again.error;
  EXPECT_EQ(again.out + again.error, "");
  EXPECT_EQ(RunJson("info utdata-demo/weld.fpd --json --hash"), first);
}

TEST_F(DemoTest, ADamagedCompanionIsNotPassedOver) {
  ASSERT_EQ(Run("demo --out .").status, 0);
  std::filesystem::resize_file(At("weld.A01"), 5000);
  ExpectOneLine(Run("info weld.fpd"), 1, "weld.A01");
}

TEST_F(DemoTest, EveryVerbExplainsItselfWithAnExampleThatWorks) {
  for (const std::string verb : {"demo", "edit", "gate", "import", "info", "render", "tree", "verify"}) {
    SCOPED_TRACE(verb);
    const ProgramResult help = Run(verb + " --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.error, "");
    const std::size_t example = help.out.find("Example:\n");
    ASSERT_NE(example, std::string::npos) << help.out;
    const std::string script = "set -e; utdata() { '" UTDATA_PROGRAM "' \"$@\"; }\n" + help.out.substr(example + 9);
    WriteFile(At("example.sh"), script);
    const std::string command = "cd '" + m_folder.string() + "' && sh example.sh >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << script;
  }
}

}  // namespace
}  // namespace utdata::test
