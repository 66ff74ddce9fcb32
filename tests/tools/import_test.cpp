#include <string>

#include "run_program.h"

namespace utdata::test {
namespace {

class ImportTest : public ProgramTest {};

TEST_F(ImportTest, InfoShowsWhatTheCommandLineSaid) {
  WriteFile(At("scan.raw"), std::string(2 * 3 * 4 * 2, 'x'));
  ASSERT_EQ(Run("import scan.raw -o scan.fpd --shape 2,3,4 --axes row,column,sample --dtype i16 "
                "--rectified --column-step 1 "
                "--row-step 10 --sample-step 20 --sample-offset -40 --channel-name Links° --title "
                "'Naht 7'")
                .status,
            0);
  const nlohmann::json info = RunJson("info scan.fpd --json --hash");
  EXPECT_EQ(info["path"], "scan.fpd");
  EXPECT_EQ(info["files"], nlohmann::json({"scan.fpd"}));
  EXPECT_EQ(info["groups"].size(), 19U);
  for (const auto& [name, count] : info["groups"].items())
    EXPECT_EQ(count,
              name == "data" || name == "channel" || name == "probe" || name == "info" ? 1 : 0)
        << name;
  ASSERT_EQ(info["data"].size(), 1U);
  const nlohmann::json expected = nlohmann::json::parse(R"({
      "label": "Links° G0 ", "id_label": "C 1 G0 ", "class": 1, "master": false, "channel": 0,
      "sub_channel": 0, "gate": 0, "patch": 0, "bookmark": 2, "type": "i16", "rectified": true,
      "columns": {"quantity": 3, "resolution": 0.001, "offset": 0.0},
      "rows": {"quantity": 2, "resolution": 0.01, "offset": 0.0},
      "samples": {"quantity": 4, "resolution": 2e-8, "offset": -4e-8},
      "minimum": -32768, "maximum": 32767, "sample_bytes": 2, "table_bytes": 48,
      "table_sha256": "23b3634e2751a892cddd80e42c0027949226cffdb231c42cba9361fce2a3021e"})");
  for (const auto& [field, value] : expected.items())
    EXPECT_EQ(info["data"][0][field], value) << field;
  EXPECT_NE(Run("info scan.fpd").out.find("Naht 7"), std::string::npos);
}

TEST_F(ImportTest, NeverReplacesAFileUnlessForced) {
  WriteFile(At("scan.raw"), "12345678");
  const std::string import =
      "import scan.raw -o scan.fpd --shape 2,2,2 --axes row,column,sample --dtype u8";
  ASSERT_EQ(Run(import).status, 0);
  const std::string first = ReadFile(At("scan.fpd"));
  WriteFile(At("scan.raw"), "abcdefgh");
  ExpectOneLine(Run(import), 1, "scan.fpd");
  EXPECT_EQ(ReadFile(At("scan.fpd")), first);
  EXPECT_EQ(Run(import + " --force").status, 0);
  EXPECT_NE(ReadFile(At("scan.fpd")).find("abcdefgh"), std::string::npos);
  // A stray companion would change what a reader sees in the new file.
  WriteFile(At("scan.A01"), "");
  ExpectOneLine(Run(import + " --force"), 1, "scan.A01");
}

}  // namespace
}  // namespace utdata::test
