// Companions that lost their names get them back.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/scratch_directory.h"
#include "utdata/companions.h"
#include "utdata/fset.h"
#include "utdata/inspection.h"

namespace utdata {
namespace {

namespace fs = std::filesystem;

class Adoption : public testing::Test {
 protected:
  void SetUp() override { Make("weld"); }

  [[nodiscard]] std::string At(const std::string& name) const { return m_folder + name; }
  void Move(const std::string& from, const std::string& to) const { fs::rename(At(from), At(to)); }
  void Copy(const std::string& from, const std::string& to) const {
    fs::copy_file(At(from), At(to));
  }
  /// NAME.fpd with NAME.A01 to NAME.A03, which set the level of a gate to 1, 2 and 3 %.
  void Make(const std::string& name) const {
    Inspection made = Inspection::New(At(name + ".fpd"));
    CGGateTypeDescr gate;
    gate.gateId = 1;
    made.FileSet().fset_AddGGate(&gate, 1);
    made.SaveAs(At(name + ".fpd"));
    Inspection inspection = Inspection::Open(At(name + ".fpd"));
    for (const double level : {1, 2, 3}) {
      inspection.Gate(0, 1).SetLevel(level);
      inspection.SaveCompanion();
    }
  }
  [[nodiscard]] double Level(const std::string& name) const {
    return Inspection::Open(At(name)).Gate(0, 1).Level();
  }
  /// Without the folder.
  [[nodiscard]] std::string Short(std::string text) const {
    for (std::size_t at = 0; (at = text.find(m_folder)) != std::string::npos;)
      text.erase(at, m_folder.size());
    return text;
  }
  [[nodiscard]] std::string Problems(const std::string& base) const {
    std::string text;
    for (const CompanionProblem& problem : CheckCompanions(At(base)).problems)
      text += Short(problem.Line()) + "\n";
    return text;
  }
  /// The renamings, or why there are none.
  [[nodiscard]] std::string Plan(const std::string& base,
                                 std::vector<std::string> companions = {}) const {
    for (std::string& each : companions) each = At(each);
    std::string text;
    try {
      for (const auto& [from, to] : PlanAdoption(At(base), companions))
        text += Short(from) + " -> " + Short(to) + "; ";
    } catch (const Error& error) {
      return Short(error.what());
    }
    return text;
  }

 private:
  const test::ScratchDirectory m_scratch;
  const std::string m_folder = m_scratch.Path().string() + "/";
};

TEST_F(Adoption, OfARenamedBase) {
  Move("weld.fpd", "tube.fpd");
  EXPECT_EQ(Problems("tube.fpd"),
            "weld.A01 is companion 1 of tube.fpd under another file's name; it was not read\n");
  EXPECT_EQ(DescribeCompanion(At("weld.A02")), "companion 2 of tube.fpd");
  EXPECT_EQ(DescribeCompanion(At("tube.fpd")), "");
  std::ofstream(At("tube.A02")) << "theirs";
  EXPECT_NE(Plan("tube.fpd").find("weld.A02: cannot be renamed: tube.A02 exists"),
            std::string::npos);
  fs::remove(At("tube.A02"));
  EXPECT_EQ(Plan("tube.fpd"), "weld.A01 -> tube.A01; weld.A02 -> tube.A02; weld.A03 -> tube.A03; ");
  Rename(PlanAdoption(At("tube.fpd")));
  EXPECT_EQ(Level("tube.fpd"), 3);
  EXPECT_EQ(Problems("tube.fpd") + Plan("tube.fpd"), "");
  EXPECT_EQ(CheckCompanions(At("tube.fpd")).files.size(), 3U);
  fs::remove(At("tube.fpd"));
  EXPECT_EQ(DescribeCompanion(At("tube.A02")),
            "companion 2 of an inspection that is not in its folder");
}

TEST_F(Adoption, TakesItsOwnOnly) {
  Make("pipe");
  fs::create_directory(At("away"));
  Copy("weld.A03", "away/weld.A03");
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"pipe.A01"}, "pipe.A01: cannot be renamed: it is a companion of another inspection"},
      {{"pipe.fpd"}, "pipe.fpd: cannot be renamed: it is no companion"},
      {{"weld.A07"}, "weld.A07: "},
      {{"away/weld.A03"}, "it is in another folder"}};
  for (const auto& [companions, why] : cases)
    EXPECT_NE(Plan("weld.fpd", companions).find(why), std::string::npos) << why;
  EXPECT_NE(Plan("weld.A01", {"weld.A02"}).find("it is a companion itself"), std::string::npos);
  Copy("weld.A03", "weld.A09");
  EXPECT_NE(Plan("weld.fpd").find("weld.A03 has the same number"), std::string::npos);
  fs::remove(At("weld.A03"));
  EXPECT_EQ(Plan("weld.fpd"), "weld.A09 -> weld.A03; ");
}

TEST_F(Adoption, OfNumbersThatWereSwapped) {
  const std::vector<std::vector<std::string>> turns = {
      {"A01", "A02"}, {"A01", "A02", "A03"}, {"A03", "A01", "A02"}};
  for (const auto& turn : turns) {
    for (const std::string& number : turn) Move("weld." + number, "away." + number);
    for (std::size_t at = 0; at < turn.size(); ++at)
      Move("away." + turn[at], "weld." + turn[(at + 1) % turn.size()]);
    EXPECT_NE(Problems("weld.fpd"), "");
    // An interruption between any two steps leaves what the next adoption finds.
    const std::vector<Renaming> plan = PlanAdoption(At("weld.fpd"));
    ASSERT_EQ(plan.size(), turn.size() + 1);
    for (std::size_t done = 0; done < plan.size(); ++done) {
      EXPECT_EQ(PlanAdoption(At("weld.fpd")).size(), plan.size() - done);
      Rename({plan[done]});
    }
    EXPECT_EQ(Problems("weld.fpd") + Plan("weld.fpd"), "");
    EXPECT_EQ(Level("weld.fpd"), 3);
  }
  Move("weld.A03", "weld.A04");
  Move("weld.A02", "weld.A03");
  EXPECT_EQ(Plan("weld.fpd"), "weld.A03 -> weld.A02; weld.A04 -> weld.A03; ");
}

TEST_F(Adoption, LeavesThoseOfACopyAlone) {
  Copy("weld.fpd", "copy.fpd");
  EXPECT_EQ(Problems("copy.fpd") + Plan("copy.fpd"), "") << "they have their base beside them";
  Copy("weld.A01", "copy.A01");
  EXPECT_EQ(Level("copy.fpd"), 1);
  EXPECT_EQ(Problems("copy.fpd") + Problems("weld.fpd"), "");
  // What is saved anew is another inspection.
  Inspection::Open(At("weld.fpd")).SaveAs(At("new.fpd"));
  Copy("weld.A01", "new.A01");
  EXPECT_EQ(Level("new.fpd"), 3);
  EXPECT_EQ(Problems("new.fpd") + Plan("new.fpd"),
            "new.A01 is a companion of another inspection; it was not read\n");
}

}  // namespace
}  // namespace utdata
