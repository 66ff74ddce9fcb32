#include <string>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "run_program.h"

namespace utdata::test {
namespace {

constexpr const char* arrayOptions = " --shape 10,20,30 --axes row,column,sample --dtype u8";

class BadInputTest : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    WriteFile(At("scan.raw"), std::string(6000, 'r'));
    ASSERT_EQ(Run(std::string("import scan.raw -o good.fpd") + arrayOptions).status, 0);
    const std::string good = ReadFile(At("good.fpd"));
    std::filesystem::create_directory(At("folder"));
    WriteFile(At("empty.fpd"), "");
    WriteFile(At("text.fpd"),
              "This is a text, and a long one, so that it is not refused for its length alone.\n");
    WriteFile(At("cut.fpd"), good.substr(0, good.size() / 2));
    std::string flipped = good;
    const std::size_t metadata =
        good.find("utdata 0");  // the software's name in the general information
    ASSERT_NE(metadata, std::string::npos);
    flipped[metadata] = static_cast<char>(flipped[metadata] ^ 1);
    WriteFile(At("flipped.fpd"), flipped);
  }
};

TEST_F(BadInputTest, EveryReadingVerbRefusesAFileThatIsNoWholeInspection) {
  const auto before = Names();
  for (const std::string verb :
       {"info", "tree", "verify", "info --json --hash", "verify --json", "verify --quiet"})
    for (const std::string name :
         {"missing.fpd", "folder", "empty.fpd", "text.fpd", "cut.fpd", "flipped.fpd"}) {
      SCOPED_TRACE(verb + " " + name);
      const ProgramResult result = Run(verb + " " + name);
      ExpectOneLine(result, 1, name);
      EXPECT_EQ(result.out.empty(), !verb.starts_with("verify")) << result.out;
    }
  EXPECT_EQ(Names(), before);
}

TEST_F(BadInputTest, VerifySaysALineForEachFile) {
  const ProgramResult result = Run("verify good.fpd flipped.fpd text.fpd");
  ExpectOneLine(result, 1, "flipped.fpd");
  EXPECT_TRUE(result.out.starts_with("good.fpd: clean, 1 commit, ")) << result.out;
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 3) << result.out;
  EXPECT_NE(result.out.find("\nflipped.fpd: damaged"), std::string::npos) << result.out;
}

TEST_F(BadInputTest, VerifyFindsAFlippedSampleThatInfoDoesNotRead) {
  std::string bytes = ReadFile(At("good.fpd"));
  const std::size_t sample = bytes.find(std::string(100, 'r'));
  ASSERT_NE(sample, std::string::npos);
  bytes[sample + 50] = 's';
  WriteFile(At("sample.fpd"), bytes);
  EXPECT_EQ(Run("info sample.fpd").status, 0);
  const ProgramResult result = Run("verify sample.fpd");
  ExpectOneLine(result, 1, "sample.fpd");
  EXPECT_TRUE(result.out.starts_with("sample.fpd: damaged: ")) << result.out;
}

TEST_F(BadInputTest, VerifyMentionsTheTailOfAnInterruptedCommit) {
  WriteFile(At("tail.fpd"), ReadFile(At("good.fpd")) + std::string(5000, 't'));
  const ProgramResult result = Run("verify tail.fpd");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_TRUE(result.out.starts_with("tail.fpd: clean, 1 commit, ")) << result.out;
  EXPECT_NE(result.out.find("the 5000 bytes of its tail do not count"), std::string::npos);
  EXPECT_EQ(RunJson("verify --json tail.fpd")[0]["tail_bytes"], 5000);
  EXPECT_EQ(RunJson("verify --json good.fpd")[0]["tail_bytes"], 0);
}

#ifndef UTDATA_SANITIZED
// Eight bytes an item in the file; all of them as a document in memory would take gigabytes.
TEST_F(BadInputTest, AMillionEmptyItemsAreListedInLittleMemory) {
  SCFile::FileHandle file = nullptr;
  SCFile::GroupHandle top = nullptr;
  ASSERT_EQ(SCFile::file_Create(At("many.fpd").wstring().c_str(), &file), 0);
  ASSERT_EQ(SCFile::file_GroupCreate(file, &top, 60000, L"FC"), 0);
  constexpr int quantity = 1'000'000;
  for (int item = 0; item < quantity; ++item)
    ASSERT_EQ(SCFile::file_ItemValueWrite(top, 7, SCFile::value_UInt8, 0, nullptr), 0);
  ASSERT_EQ(SCFile::file_Close(file), 0);
  const ProgramResult text = RunShell("sh", "ulimit -v 400000; utdata tree many.fpd | wc -l");
  EXPECT_EQ(text.error, "");
  EXPECT_EQ(std::stoi("0" + text.out), quantity + 2);
  const ProgramResult json =
      RunShell("sh", "ulimit -v 400000; utdata tree --json many.fpd | grep -c '\"value\"'");
  EXPECT_EQ(json.error, "");
  EXPECT_EQ(std::stoi("0" + json.out), quantity);
}
#endif

TEST_F(BadInputTest, VerifyFindsADefectRecordThatComesBackShortened) {
  SCFile::FileHandle file = nullptr;
  SCFile::GroupHandle top = nullptr, table = nullptr, record = nullptr;
  ASSERT_EQ(SCFile::file_Create((At("defects.fpd")).wstring().c_str(), &file), 0);
  ASSERT_EQ(SCFile::file_GroupCreate(file, &top, 0, L"FC"), 0);
  ASSERT_EQ(SCFile::file_GroupCreate(top, &table, 10045, L"Defect Table Group"), 0);
  ASSERT_EQ(SCFile::file_GroupCreate(table, &record, 10044, L"Defect"), 0);
  ASSERT_EQ(SCFile::file_ItemValueWrite(record, 1, SCFile::value_Text, 4, L"5.5"), 0);
  ASSERT_EQ(SCFile::file_Commit(file), 0);
  ASSERT_EQ(SCFile::file_Close(file), 0);
  const ProgramResult result = Run("verify defects.fpd");
  ExpectOneLine(result, 1, "defects.fpd");
  EXPECT_TRUE(result.out.starts_with("defects.fpd: damaged: ")) << result.out;
  EXPECT_NE(result.out.find("item 1 of a defect record"), std::string::npos) << result.out;
  const ProgramResult info = Run("info defects.fpd --json");
  EXPECT_EQ(info.status, 0);
  EXPECT_TRUE(info.error.starts_with("warning: defects.fpd: defect record 0 ")) << info.error;
  EXPECT_EQ(nlohmann::json::parse(info.out)["warnings"].size(), 1U);
}

TEST_F(BadInputTest, ImportRefusesWithoutLeavingAFile) {
  struct Case {
    std::string arguments;
    std::string named;
  };
  const std::string options = arrayOptions;
  const std::vector<Case> cases = {
      {"missing.raw -o new.fpd" + options, "missing.raw"},
      {"folder -o new.fpd" + options, "folder"},
      {"empty.fpd -o new.fpd" + options, "empty.fpd"},
      {"scan.raw -o new.fpd --shape 10,20,31 --axes row,column,sample --dtype u8", "6200"},
      {"scan.raw -o new.fpd --shape 10,20,30 --axes row,column,sample --dtype u16", "12000"},
      // Products that come back to 6000 when they are cut to 64 bits, or to 0.
      {"scan.raw -o new.fpd --shape 4294967295,4294967295,4294967295 --axes row,column,sample "
       "--dtype u16",
       "scan.raw"},
      {"empty.fpd -o new.fpd --shape 2147483648,2147483648,4 --axes row,column,sample --dtype u8",
       "empty.fpd"},
      {"scan.raw -o no/such/folder/new.fpd" + options, "no/such/folder/new.fpd"},
      {"scan.raw -o scan.raw/new.fpd" + options, "scan.raw/new.fpd"},
      {"scan.raw -o folder --force" + options, "folder"},
      {"scan.raw -o good.fpd" + options, "good.fpd"},
      {"scan.raw -o \"$(printf 'bad\\377.fpd')\"" + options, "UTF-8"},
  };
  const auto before = Names();
  for (const Case& bad : cases) {
    SCOPED_TRACE(bad.arguments);
    ExpectOneLine(Run("import " + bad.arguments), 1, bad.named);
    EXPECT_EQ(Names(), before);
  }
  EXPECT_TRUE(std::filesystem::is_empty(At("folder")));
}

TEST_F(BadInputTest, WrongUsageIsDistinguishedFromFailure) {
  const auto before = Names();
  for (const std::string arguments :
       {"",
        "paint",
        "info",
        "info good.fpd --loud",
        "import scan.raw -o new.fpd",
        "import scan.raw -o new.fpd --shape 10,20 --axes row,column,sample --dtype u8",
        "import scan.raw -o new.fpd --shape 10,20,0 --axes row,column,sample --dtype u8",
        "import scan.raw -o new.fpd --shape 10,20,4294967296 --axes row,column,sample --dtype u8",
        "import scan.raw -o new.fpd --shape 10,20,30 --axes row,row,sample --dtype u8",
        "import scan.raw -o new.fpd --shape 10,20,30 --axes row,column,sample --dtype u32",
        "import scan.raw -o new.fpd --shape 10,20,30 --axes row,column,sample --dtype u8 "
        "--column-step nan",
        "import scan.raw -o new.fpd --shape 10,20,30 --axes row,column,sample --dtype u8 "
        "--sample-step 0"}) {
    SCOPED_TRACE(arguments);
    const ProgramResult result = Run(arguments);
    ExpectOneLine(result, 2, "--help'");
    EXPECT_EQ(result.out, "");
  }
  EXPECT_EQ(Names(), before);
}

TEST_F(BadInputTest, TextsFromAFileStayOnTheirLine) {
  ASSERT_EQ(Run(std::string("import scan.raw -o odd.fpd --title \"$(printf 'a\\033[2J\\nb')\"") +
                arrayOptions)
                .status,
            0);
  const std::string text = Run("info odd.fpd").out;
  EXPECT_EQ(text.find('\033'), std::string::npos);
  EXPECT_NE(text.find("a\\x1b[2J\\x0ab"), std::string::npos) << text;
}

}  // namespace
}  // namespace utdata::test
