// The worked example of docs/meaning.md, from its bytes to its numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include "tests/support/page.h"
#include "tests/support/scratch_directory.h"
#include "utdata/inspection.h"
#include "utdata/readout.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

/// How far a number of the page may be from the program's: it is rounded where it is written.
double Slack(const std::string& number) {
  const std::size_t point = number.find('.');
  const std::size_t end = number.find_first_not_of("-0123456789.");
  if (point == number.npos || point > end) return 1e-5;
  return std::max(1e-5, 0.5 * std::pow(10, -static_cast<double>(end - point - 1)));
}

TEST(MeaningPage, ItsExampleReadsAsItSays) {
  const test::ScratchDirectory scratch;
  const std::string path = scratch.Path().string() + "/example.fpd";
  const std::string page = test::ReadPage("meaning.md");
  const std::vector<std::byte> bytes = test::FileOfDump(page);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  const Inspection inspection = Inspection::Open(path);
  ASSERT_EQ(inspection.Data().size(), 1U);
  EXPECT_TRUE(inspection.Warnings().empty());
  const DataGroup group = inspection.Data().front();
  for (const std::uint32_t sample : {2U, 3U}) {
    const ReadOut at = group.ReadOut(0, 1, sample);
    const std::pair<const char*, double> quantities[] = {
        {"value", at.value},
        {"amplitude", at.percent},
        {"level", at.decibels},
        {"column", at.column.In(unit_Millimetre)},
        {"row", at.row.In(unit_Millimetre)},
        {"time", at.time.In(unit_Microsecond)},
        {"half path", at.halfPath.In(unit_Millimetre)},
        {"depth", at.depth.In(unit_Millimetre)}};
    for (const auto& [name, quantity] : quantities) {
      const auto row = test::TableRow(page, name);
      ASSERT_EQ(row.size(), 4U) << name;
      const std::string& number = row[sample - 1];
      EXPECT_NEAR(std::atof(number.c_str()), quantity, Slack(number)) << name;
    }
  }
}

}  // namespace
}  // namespace utdata
