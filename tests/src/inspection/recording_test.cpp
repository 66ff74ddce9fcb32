#include "utdata/recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <numeric>

#include "tests/support/scratch_directory.h"

namespace utdata::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint32_t headerSize = 2048;
constexpr std::uint32_t block = headerSize;  ///< of the A-scans; its table has 6 entries
constexpr std::uint32_t firstAScan = block + 24;
constexpr std::uint32_t cscan = firstAScan + 18;  ///< behind three A-scans of three samples
constexpr std::uint32_t fileSize = cscan + 12;

/// An acquisition file as an instrument leaves it: A-scans in cells 5, 0 and 2, then a C-scan.
std::string RecordedBytes() {
  std::string bytes(headerSize, '\0');
  const auto append = [&](const auto& numbers) {
    bytes.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof numbers[0]);
  };
  append(std::vector<std::uint32_t>{firstAScan + 6, 0, firstAScan + 12, 0, 0, firstAScan});
  append(std::vector<std::int16_t>{50, 51, -52, 10, -11, 12, 20, 21, 22});
  append(std::vector<std::uint16_t>{1, 2, 3, 4, 5, 6});
  return bytes;
}

CGDataTypeFDD RecordOf(gdata_enumDataClass dataClass) {
  CGDataTypeFDD record;
  record.dataClass = dataClass;
  record.columnQuantity = 3;
  record.rowQuantity = 2;
  record.columnResolution = record.rowResolution = 1e-3F;
  record.sampleQuantity = dataClass == gdata_AScan ? 3 : 1;
  record.sampleResolution = 1e-8F;
  record.SetDataType(dataClass == gdata_AScan ? kvt_Int16 : kvt_UInt16);
  record.dataMinimum = dataClass == gdata_AScan ? -100 : 0;
  record.dataMaximum = 100;
  record.sampleSize = 2;
  record.cellSize = 2 * record.sampleQuantity;
  record.soundSpeed = 5900;
  return record;
}

class RecordingTest : public testing::Test {
 protected:
  std::string Write(const std::string& bytes) {
    const std::string path = (m_folder.Path() / "scan.acq").string();
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  /// The recorded file with another entry for a cell in its index table.
  std::string WithEntry(std::uint32_t cell, std::uint32_t entry) {
    std::string bytes = RecordedBytes();
    std::memcpy(bytes.data() + block + cell * sizeof entry, &entry, sizeof entry);
    return bytes;
  }
  [[nodiscard]] std::string NewPath() const { return (m_folder.Path() / "scan.fpd").string(); }

  ScratchDirectory m_folder;
};

void ExpectRecorded(const DataGroup& ascans) {
  EXPECT_THAT(ascans.AScan<std::int16_t>(0, 0), ElementsAre(10, -11, 12));
  EXPECT_THAT(ascans.AScan<std::int16_t>(0, 1), IsEmpty());
  EXPECT_THAT(ascans.AScan<std::int16_t>(0, 2), ElementsAre(20, 21, 22));
  EXPECT_THAT(ascans.AScan<std::int16_t>(1, 1), IsEmpty());
  EXPECT_THAT(ascans.AScan<std::int16_t>(1, 2), ElementsAre(50, 51, -52));
}

TEST_F(RecordingTest, BlocksBecomeDataGroupsThatAreSavedWithTheirSamples) {
  Recording recording(Write(RecordedBytes()));
  Inspection inspection = Inspection::New(NewPath());
  ExpectRecorded(recording.AddAScans(inspection, RecordOf(gdata_AScan), block));
  const DataGroup values = recording.AddCScan(inspection, RecordOf(gdata_CScanAmplitude), cscan);
  EXPECT_THAT(values.AScan<std::uint16_t>(1, 2), ElementsAre(6));
  inspection.SaveAs(NewPath());

  const Inspection saved = Inspection::Open(NewPath());
  ASSERT_EQ(saved.Data().size(), 2U);
  ExpectRecorded(saved.Data()[0]);
  EXPECT_THAT(saved.Data()[1].AScan<std::uint16_t>(0, 1), ElementsAre(2));
}

TEST_F(RecordingTest, AScanComesBackAsItWasRecorded) {
  std::vector<std::int16_t> samples(3 * 2 * 3);
  std::iota(samples.begin(), samples.end(), std::int16_t{-7});
  const std::vector<std::uint16_t> amplitudes = {1, 2, 3, 4, 5, 6}, positions = {6, 5, 4, 3, 2, 1};
  const std::string path = (m_folder.Path() / "new.acq").string();
  const RecordedBlocks blocks =
      RecordScan(path, {3, 2, 3, 1e-8}, samples, {1, amplitudes, positions});
  Recording recording(path);
  Inspection inspection = Inspection::New(NewPath());
  const DataGroup ascans = recording.AddAScans(inspection, RecordOf(gdata_AScan), blocks.ascans);
  CGDataTypeFDD record = RecordOf(gdata_CScanAmplitude);
  const DataGroup high = recording.AddCScan(inspection, record, blocks.amplitudes);
  record.gateId = 1;
  const DataGroup late = recording.AddCScan(inspection, record, blocks.positions);
  for (std::uint32_t cell = 0; cell < 6; ++cell) {
    const auto first = static_cast<std::int16_t>(3 * cell - 7);
    const std::uint32_t row = cell / 3, column = cell % 3;
    EXPECT_THAT(ascans.AScan<std::int16_t>(row, column), ElementsAre(first, first + 1, first + 2));
    EXPECT_THAT(high.AScan<std::uint16_t>(row, column), ElementsAre(cell + 1));
    EXPECT_THAT(late.AScan<std::uint16_t>(row, column), ElementsAre(6 - cell));
  }
}

TEST_F(RecordingTest, ABlockThatDoesNotLieInTheFileIsRefused) {
  constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
  struct Case {
    const char* name;
    std::string bytes;
    gdata_enumDataClass dataClass;
    std::uint64_t offset;
    std::function<void(CGDataTypeFDD&)> change;
  };
  const auto same = [](CGDataTypeFDD&) {};
  const std::string whole = RecordedBytes();
  const Case cases[] = {
      {"table in the header", whole, gdata_AScan, 0, same},
      {"table behind the end", whole, gdata_AScan, 1U << 20U, same},
      {"table across the end", whole, gdata_AScan, fileSize - fileSize % 4 - 4, same},
      {"odd table", whole, gdata_AScan, block + 2, same},
      {"A-scan behind the end", WithEntry(1, fileSize), gdata_AScan, block, same},
      {"first A-scan across the end", WithEntry(0, fileSize - 4), gdata_AScan, block, same},
      {"A-scan far away", WithEntry(4, most - 1), gdata_AScan, block, same},
      {"A-scan in the table", WithEntry(1, firstAScan - 2), gdata_AScan, block, same},
      {"A-scan inside a sample", WithEntry(1, firstAScan + 1), gdata_AScan, block, same},
      {"more cells than 64 bits hold",
       whole,
       gdata_AScan,
       block,
       [](auto& record) { record.columnQuantity = record.rowQuantity = most; }},
      {"longer A-scans than 32 bits hold",
       whole,
       gdata_AScan,
       block,
       [](auto& record) { record.sampleQuantity = (1U << 31U) + 3; }},
      {"no sample size", whole, gdata_AScan, block, [](auto& record) { record.sampleSize = 0; }},
      {"C-scan across the end", whole, gdata_CScanAmplitude, cscan + 2, same},
      {"odd C-scan", whole, gdata_CScanAmplitude, cscan - 1, same},
      {"C-scan of bytes",
       whole,
       gdata_CScanAmplitude,
       cscan,
       [](auto& record) { record.sampleSize = 1; }},
      {"C-scan larger than 64 bits hold",
       whole,
       gdata_CScanAmplitude,
       cscan,
       [](auto& record) { record.columnQuantity = record.rowQuantity = most; }},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    Recording recording(Write(test.bytes));
    Inspection inspection = Inspection::New(NewPath());
    CGDataTypeFDD record = RecordOf(test.dataClass);
    test.change(record);
    if (test.dataClass == gdata_AScan)
      EXPECT_THROW(recording.AddAScans(inspection, record, test.offset), Error);
    else
      EXPECT_THROW(recording.AddCScan(inspection, record, test.offset), Error);
    EXPECT_THAT(inspection.Data(), IsEmpty());
  }
}

/// An index table that is turned twice, or turned for a data group that is not taken, leads
/// nowhere.
TEST_F(RecordingTest, AnIndexTableIsTurnedOnce) {
  Recording recording(Write(RecordedBytes()));
  Inspection inspection = Inspection::New(NewPath());
  const CGDataTypeFDD values = RecordOf(gdata_CScanAmplitude);
  recording.AddCScan(inspection, values, cscan);
  CGDataTypeFDD taken = values;
  taken.sampleQuantity = 3;
  EXPECT_THROW(recording.AddAScans(inspection, taken, block), Error);
  ASSERT_EQ(inspection.Data().size(), 1U);

  const DataGroup ascans = recording.AddAScans(inspection, RecordOf(gdata_AScan), block);
  CGDataTypeFDD other = RecordOf(gdata_AScan);
  other.channelId = 1;
  EXPECT_THROW(recording.AddAScans(inspection, other, block), Error);
  ExpectRecorded(ascans);
}

TEST_F(RecordingTest, WhatIsNoRecordingIsRefused) {
  std::string marked = RecordedBytes();
  marked[7] = 1;
  for (const auto& [bytes, why] : {std::pair(std::string(headerSize - 1, '\0'), "too short"),
                                   std::pair(marked, "not an acquisition file")}) {
    const std::string path = Write(bytes);
    try {
      const Recording recording(path);
      ADD_FAILURE() << why;
    } catch (const Error& error) {
      EXPECT_EQ(error.File(), path);
      EXPECT_THAT(error.Why(), HasSubstr(why));
    }
  }
  EXPECT_THROW(static_cast<void>(Recording(NewPath())), Error);
  EXPECT_NO_THROW(Recording(Write(std::string(headerSize, '\0')))) << "nothing was recorded yet";
}

}  // namespace
}  // namespace utdata::test
