// Every byte of an acquisition file, read back without the writer.
#include <gtest/gtest.h>

#include <algorithm>

#include "src/acquisition/narrow.h"
#include "tests/src/acquisition/acquisition_reader.h"
#include "tests/src/acquisition/acquisition_samples.h"
#include "tests/support/file_folder.h"
#include "utdata/gdatamanager.h"

namespace {

using namespace utdata::test;
using utdata::CscanRecord;

bool AreZeros(const std::vector<unsigned char>& bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](unsigned char each) { return each == 0; });
}

/// Checks an A-scan block at `table` against what MakeAscans put into the cells; returns the offset
/// of its end.
std::uint64_t ExpectAscans(AcquisitionReader& file,
                           std::uint64_t table,
                           std::uint32_t columns,
                           std::uint32_t rows,
                           int storageBytes,
                           std::size_t samples,
                           const HasAscan& hasAscan) {
  const auto entries = file.Table(table, columns * rows);
  EXPECT_EQ(entries.size(), columns * rows);
  const std::uint64_t stored = samples * static_cast<std::uint64_t>(storageBytes);
  const std::uint64_t padded = stored % 4 == 0 ? stored : stored + 4 - stored % 4;
  std::uint64_t next = table + 4 * columns * rows;
  for (std::uint32_t cell = 0; cell < entries.size(); ++cell) {
    const std::uint32_t column = cell % columns;
    const std::uint32_t row = cell / columns;
    const bool isThere = hasAscan(column, row);
    EXPECT_EQ(entries[cell], isThere ? next : 0) << "cell " << column << ", " << row;
    if (!isThere) continue;
    std::vector<std::uint32_t> expected(samples);
    const std::uint32_t mask = storageBytes == 1 ? 0xFF : 0xFFFF;
    for (std::size_t n = 0; n < samples; ++n)
      expected[n] = static_cast<std::uint32_t>(SampleAt(column, row, n)) & mask;
    EXPECT_EQ(file.Samples(next, samples, storageBytes), expected)
        << "cell " << column << ", " << row;
    const auto padding = file.Bytes(next + stored, static_cast<std::size_t>(padded - stored));
    EXPECT_TRUE(padding.size() == padded - stored && AreZeros(padding));
    next += padded;
  }
  return next;
}

TEST(AcquisitionFile, IsAHeaderOfZerosWhenNothingIsSaved) {
  const FileFolder folder;
  const std::wstring path = folder / L"empty.acq";
  GDataManager writer(path);
  EXPECT_EQ(writer.GetMapViewOfFile(), nullptr);
  EXPECT_EQ(writer.GetWrittenSize(), 0u);
  EXPECT_EQ(writer.GetMaxAcqFileSize(), 0xFFFF0000u);
  ASSERT_EQ(writer.FileCreate(Aurelis::MemoryData()), 0u);
  EXPECT_EQ(AcquisitionReader(path).Size(), writer.GetMaxAcqFileSize())
      << "an open file shows by its length";
  EXPECT_EQ(writer.GetWrittenSize(), 2048u);
  EXPECT_EQ(writer.FileClose(), 0u);
  EXPECT_EQ(writer.GetMapViewOfFile(), nullptr);
  const auto bytes = AcquisitionReader(path).Bytes(0, 4096);
  EXPECT_TRUE(bytes.size() == 2048 && AreZeros(bytes));
}

TEST(AcquisitionFile, HoldsEveryShapeOfPatch) {
  const HasAscan all = [](auto, auto) { return true; };
  const HasAscan none = [](auto, auto) { return false; };
  const HasAscan some = [](auto column, auto row) { return (column + 2 * row) % 3 != 0; };
  const struct {
    Aurelis::Patch patch;
    std::uint32_t columns, rows;
    int storageBytes, samples;
    HasAscan hasAscan;
  } blocks[] = {
      {MakePatch(0, 0, 1, 1), 1, 1, 1, 1, all},
      {MakePatch(5, 5, 1, 1), 1, 1, 2, 3, none},
      {MakePatch(-3, -7, 4, 9), 4, 9, 2, 3, some},
      {MakePatch(-1, 2, 5, 1), 5, 1, 1, 33, all},
      {MakePatch(0, -4, 1, 7), 1, 7, 2, 1, some},
      {MakePatch(2, 0, 3, 3), 3, 3, 1, 0, all},
      {MakePatch(-100, 100, 31, 17), 31, 17, 1, 257, some},
      {MakePatch(0, 0, 17, 31), 17, 31, 2, 2000, all},
  };
  const FileFolder folder;
  const std::wstring path = folder / L"f";
  Aurelis::MemoryData memory;
  for (const auto& each : blocks)
    memory.AddAscanBlocks(
        each.patch,
        Aurelis::Ultrasound::AscanDataDescriptor(each.storageBytes, Aurelis::Axis(each.samples)));
  GDataManager writer(path);
  ASSERT_EQ(writer.FileCreate(memory), 0u);
  std::vector<std::uint32_t> offsets;
  for (const auto& each : blocks)
    offsets.push_back(writer.SavePatchBuffer(
        MakeAscans(each.patch, each.storageBytes, each.samples, each.hasAscan)));
  EXPECT_LE(writer.GetWrittenSize(), memory.EstimateDataFileSize());
  EXPECT_EQ(writer.FileClose(), 0u);

  AcquisitionReader file(path);
  std::uint64_t end = 2048;
  for (std::size_t n = 0; n < std::size(blocks); ++n) {
    SCOPED_TRACE(n);
    const auto& each = blocks[n];
    EXPECT_EQ(offsets[n], end);
    end = ExpectAscans(file,
                       end,
                       each.columns,
                       each.rows,
                       each.storageBytes,
                       static_cast<std::size_t>(each.samples),
                       each.hasAscan);
  }
  EXPECT_EQ(file.Size(), end);
  EXPECT_EQ(writer.GetWrittenSize(), end);
}

TEST(AcquisitionFile, AlignsCscansAndNothingElse) {
  const FileFolder folder;
  const std::wstring path = folder / L"f";
  const Aurelis::Patch odd = MakePatch(-1, -1, 3, 3);
  const auto cscans = MakeCscans(odd);
  const HasAscan all = [](auto, auto) { return true; };
  Aurelis::MemoryData memory;
  memory.AddCscanBlocks(odd, 3);
  memory.AddAscanBlocks(
      MakePatch(0, 0, 2, 1), Aurelis::Ultrasound::AscanDataDescriptor(2, Aurelis::Axis(5)), 2);
  GDataManager writer(path);
  ASSERT_EQ(writer.FileCreate(memory), 0u);
  EXPECT_EQ(writer.SaveCscanBuffer(cscans, &CscanRecord::amplitude), 2048);
  EXPECT_EQ(writer.GetWrittenSize(), 2066u) << "no padding follows";
  EXPECT_EQ(writer.SaveCscanBuffer(cscans, &CscanRecord::position), 2068);
  EXPECT_EQ(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 2, 1), 2, 5)), 2086u);
  EXPECT_EQ(writer.SaveCscanBuffer(cscans, &CscanRecord::position), 2120);
  EXPECT_EQ(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 2, 1), 2, 5)), 2138u);
  EXPECT_EQ(writer.FileClose(), 0u);
  EXPECT_EQ(writer.GetWrittenSize(), memory.EstimateDataFileSize() - 2)
      << "the estimate counts a gap after every block";

  AcquisitionReader file(path);
  const std::pair<std::uint64_t, std::size_t> starts[] = {{2048, 0}, {2068, 1}, {2120, 1}};
  for (const auto& [start, field] : starts) {
    std::vector<std::uint32_t> expected;
    for (std::uint32_t cell = 0; cell < 9; ++cell)
      expected.push_back(static_cast<std::uint32_t>(SampleAt(cell % 3, cell / 3, field)) & 0xFFFF);
    EXPECT_EQ(file.Samples(start, 9, 2), expected);
  }
  EXPECT_TRUE(AreZeros(file.Bytes(2066, 2)));
  EXPECT_EQ(ExpectAscans(file, 2086, 2, 1, 2, 5, all), 2118u);
  EXPECT_EQ(ExpectAscans(file, 2138, 2, 1, 2, 5, all), file.Size());
}

TEST(AcquisitionFile, HasItsBlocksAtOnceAndIsClosedByTheNext) {
  const FileFolder folder;
  const std::wstring path = folder / L"f";
  const HasAscan all = [](auto, auto) { return true; };
  {
    GDataManager writer(path);
    ASSERT_EQ(writer.FileCreate(Aurelis::MemoryData()), 0u);
    const std::uint32_t offset = writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 4, 4), 1, 100));
    AcquisitionReader file(path);
    ExpectAscans(file, offset, 4, 4, 1, 100, all);
    EXPECT_EQ(std::to_integer<int>(writer.GetMapViewOfFile()[offset]), file.Bytes(offset, 1)[0]);
    EXPECT_EQ(writer.FileCreate(Aurelis::MemoryData()), static_cast<std::uint32_t>(EEXIST))
        << "its own, closed before";
    EXPECT_EQ(file.Size(), 2048u + 64 + 1600);
    EXPECT_EQ(writer.SavePatchBuffer(MakeAscans(MakePatch(0, 0, 4, 4), 1, 100)),
              GDataManager::ascan_Refused);
  }
  GDataManager second(folder / L"g");
  ASSERT_EQ(second.FileCreate(Aurelis::MemoryData()), 0u);
  EXPECT_EQ(second.FileClose(), 0u);
  EXPECT_EQ(second.FileClose(), 0u) << "closing twice is nothing";
}

TEST(Narrow, KeepsTheLowBitsOnEveryPath) {
  using utdata::VectorPath;
  std::vector<std::int32_t> elements(200);
  for (std::size_t n = 0; n < elements.size(); ++n) elements[n] = SampleAt(0, 0, n);
  for (const VectorPath path : {VectorPath::Portable, VectorPath::Avx2}) {
    if (!utdata::IsPathAvailable(path)) continue;
    for (std::size_t count = 0; count < 130; ++count)
      for (const std::size_t shift : {0u, 1u, 3u}) {
        std::vector<std::byte> bytes(2 * elements.size(), std::byte{0xEE});
        std::vector<std::byte> words = bytes;
        NarrowToBytes(path, elements.data() + shift, count, bytes.data() + shift);
        NarrowToWords(path, elements.data() + shift, count, words.data() + shift);
        for (std::size_t n = 0; n < count; ++n) {
          const auto element = static_cast<std::uint32_t>(elements[shift + n]);
          ASSERT_EQ(std::to_integer<std::uint32_t>(bytes[shift + n]), element & 0xFF)
              << count << " " << n;
          ASSERT_EQ(std::to_integer<std::uint32_t>(words[shift + 2 * n]), element & 0xFF);
          ASSERT_EQ(std::to_integer<std::uint32_t>(words[shift + 2 * n + 1]), element >> 8 & 0xFF);
        }
        ASSERT_EQ(bytes[shift + count], std::byte{0xEE}) << "nothing behind the last";
        ASSERT_EQ(words[shift + 2 * count], std::byte{0xEE});
      }
  }
}

}  // namespace
