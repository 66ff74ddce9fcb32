// What loading repairs is said.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/inspection.h"
#include "utdata/newscan.h"
#include "utdata/readout.h"

namespace utdata {
namespace {

std::vector<std::string> WarningsAbout(const CGDataTypeFDD& record) {
  const test::ScratchDirectory scratch;
  const std::string path = (scratch.Path() / "weld.fpd").string();
  {
    Inspection inspection = Inspection::New(path);
    inspection.AddData(record, std::vector<std::byte>(2 * 3 * 10 * 2));
    inspection.SaveAs(path);
  }
  std::vector<std::string> warnings = Inspection::Open(path).Warnings();
  for (std::string& warning : warnings) warning.erase(0, path.size());
  return warnings;
}

TEST(InspectionRepairs, AreWarningsWithBothValues) {
  const SampleType& type = *FindSampleType(kvt_Int16);
  CGDataTypeFDD sound = NominalRecord(type);
  SetLayout(sound, type, {3, 2, 10, true});
  EXPECT_EQ(WarningsAbout(sound), std::vector<std::string>());

  CGDataTypeFDD absurd = sound;
  absurd.columnQuantity = 0x80000000;
  absurd.rowQuantity = 0xFFFFFFFE;
  absurd.sampleResolution = std::numeric_limits<float>::quiet_NaN();
  const std::vector<std::string> warnings = WarningsAbout(absurd);
  ASSERT_EQ(warnings.size(), 1U);
  EXPECT_EQ(warnings[0],
            ": data group 0: repaired on loading: column quantity 2147483648 is taken as 1, row "
            "quantity 4294967294 is taken as 1, sample step nan is taken as 2e-08");

  CGDataTypeFDD empty = sound;
  empty.rowQuantity = 0;
  EXPECT_EQ(WarningsAbout(empty), std::vector<std::string>());
  // One column or row needs no step, and unsigned samples of a wave are only read in another way.
  CGDataTypeFDD single = sound;
  single.columnQuantity = 1;
  single.columnResolution = 0;
  EXPECT_EQ(WarningsAbout(single), std::vector<std::string>());
  CGDataTypeFDD wave = sound;
  wave.SetDataType(kvt_UInt16);
  wave.dataMinimum = 0;
  wave.dataMaximum = 65535;
  EXPECT_EQ(WarningsAbout(wave), std::vector<std::string>());
}

TEST(InspectionRepairs, AStepThatStandsForNoneGivesNoTimes) {
  const test::ScratchDirectory scratch;
  const std::string path = (scratch.Path() / "weld.fpd").string();
  const SampleType& type = *FindSampleType(kvt_Int16);
  CGDataTypeFDD record = NominalRecord(type);
  SetLayout(record, type, {3, 2, 10, true});
  record.sampleResolution = 0;
  Inspection inspection = Inspection::New(path);
  inspection.AddData(record, std::vector<std::byte>(2 * 3 * 10 * 2));
  inspection.SaveAs(path);
  const Inspection saved = Inspection::Open(path);
  const DataGroup group = saved.Data().front();
  EXPECT_TRUE(group.Times().symbol.empty());
  const ReadOut at = group.ReadOut(1, 2, 3);
  EXPECT_FALSE(at.time.IsKnown());
  EXPECT_FALSE(at.halfPath.IsKnown());
  EXPECT_TRUE(at.column.IsKnown());
}

}  // namespace
}  // namespace utdata
