// Samples that are damaged on disk: whoever reads them knows, and nobody gets a wrong value.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/gating.h"
#include "utdata/idata.h"
#include "utdata/inspection.h"
#include "utdata/newscan.h"
#include "utdata/rdata.h"
#include "utdata/readout.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

constexpr std::uint32_t columnQuantity = 100;
constexpr std::uint32_t rowQuantity = 5;
constexpr std::uint32_t cellQuantity = rowQuantity * columnQuantity;
constexpr std::uint32_t sampleQuantity = 4000;
constexpr std::uint64_t cellBytes = 2 * sampleQuantity;

/// In the middle of the samples, some chunks from either end of the table.
constexpr std::uint32_t middleRow = rowQuantity / 2;
constexpr std::uint32_t middleColumn = columnQuantity / 2;
constexpr std::uint32_t middleCell = middleRow * columnQuantity + middleColumn;
constexpr std::uint64_t middleByte = middleCell * cellBytes + 101;

CGDataTypeFDD ScanRecord() {
  const SampleType& type = *FindSampleType(kvt_Int16);
  CGDataTypeFDD record = NominalRecord(type);
  SetLayout(record, type, {columnQuantity, rowQuantity, sampleQuantity, true});
  record.sampleResolution = 20e-9F;
  return record;
}

std::vector<std::byte> ScanSamples() {
  std::vector<std::int16_t> samples(std::size_t{cellQuantity} * sampleQuantity);
  for (std::size_t at = 0; at < samples.size(); ++at)
    samples[at] = static_cast<std::int16_t>(1 + at % 1000);
  const auto bytes = std::as_bytes(std::span(samples));
  return {bytes.begin(), bytes.end()};
}

/// The same cells, found by one offset each.
std::vector<std::byte> IndexedSamples() {
  std::vector<std::uint32_t> offsets(cellQuantity);
  for (std::uint32_t cell = 0; cell < cellQuantity; ++cell)
    offsets[cell] = static_cast<std::uint32_t>(4 * cellQuantity + cell * cellBytes);
  const auto index = std::as_bytes(std::span(offsets));
  std::vector<std::byte> table(index.begin(), index.end());
  const std::vector<std::byte> samples = ScanSamples();
  table.insert(table.end(), samples.begin(), samples.end());
  return table;
}

/// Flips a bit of the samples of the first data group.
void FlipSampleBit(const std::string& path, std::uint64_t byte) {
  const std::uint64_t offset = Inspection::Open(path).Data()[0].Stored().samples.offset;
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekg(static_cast<std::streamoff>(offset + byte));
  const int before = file.get();
  file.seekp(static_cast<std::streamoff>(offset + byte));
  file.put(static_cast<char>(before ^ 4));
}

class DamagedInspection : public ::testing::Test {
 protected:
  void Make(const CGDataTypeFDD& record, std::vector<std::byte> samples, std::uint64_t flipped) {
    m_path = (m_scratch.Path() / "weld.fpd").string();
    Inspection inspection = Inspection::New(m_path);
    inspection.AddData(record, std::move(samples));
    inspection.SaveAs(m_path, true);
    FlipSampleBit(m_path, flipped);
  }

  [[nodiscard]] Inspection Open(SampleTables tables, bool acceptDamage) const {
    OpenOptions options;
    options.tables = tables;
    options.acceptDamage = acceptDamage;
    return Inspection::Open(m_path, options);
  }
  [[nodiscard]] std::string CopyPath() const { return (m_scratch.Path() / "copy.fpd").string(); }

  test::ScratchDirectory m_scratch;
  std::string m_path;
};

constexpr SampleTables bothTables[] = {SampleTables::Mapped, SampleTables::InMemory};

/// One way of reading samples, the damaged ones among them.
struct Reading {
  const char* name;
  std::function<void(Inspection&, const DataGroup&)> read;
};

TEST_F(DamagedInspection, IsRefusedWithItsPlaceByWhoeverReadsIt) {
  Make(ScanRecord(), ScanSamples(), middleByte);
  const Reading readings[] = {
      {"A-scan",
       [](Inspection&, const DataGroup& group) {
         static_cast<void>(group.AScan<std::int16_t>(middleRow, middleColumn));
       }},
      {"read-out",
       [](Inspection&, const DataGroup& group) {
         static_cast<void>(group.ReadOut(middleRow, middleColumn, 7));
       }},
      {"table", [](Inspection&, const DataGroup& group) { static_cast<void>(group.Table()); }},
      {"peaks",
       [](Inspection&, const DataGroup& group) {
         static_cast<void>(group.Samples().FindPeaks(group.AllCells()));
       }},
      {"values",
       [](Inspection&, const DataGroup& group) {
         static_cast<void>(group.Samples().Values(middleCell));
       }},
      {"codes",
       [](Inspection&, const DataGroup& group) {
         static_cast<void>(group.Samples().Codes(group.CellsOfColumn(middleColumn)));
       }},
      {"gate",
       [](Inspection& inspection, const DataGroup&) {
         Gate(inspection, {0, 1, 1e-6, 2e-6, {}});
       }},
      {"copy",
       [this](Inspection& inspection, const DataGroup&) { inspection.SaveAs(CopyPath()); }}};
  for (const SampleTables tables : bothTables)
    for (const Reading& reading : readings) {
      Inspection inspection = Open(tables, false);
      const DataGroup group = inspection.Data()[0];
      try {
        reading.read(inspection, group);
        ADD_FAILURE() << reading.name;
      } catch (const Error& error) {
        EXPECT_EQ(error.File(), m_path + ": data group 0") << reading.name;
        EXPECT_EQ(error.Status(), SCFile::status_Damaged) << reading.name;
        ASSERT_EQ(inspection.Damage().size(), 1U) << reading.name;
        const DamagedSamples damage = inspection.Damage()[0];
        EXPECT_EQ(error.Why(), damage.why) << reading.name;
        EXPECT_NE(damage.why.find(" of " + m_path), std::string::npos) << damage.why;
        const std::uint64_t at = group.Stored().samples.offset + middleByte;
        EXPECT_TRUE(damage.offset <= at && at < damage.offset + damage.size) << damage.why;
        EXPECT_LE(damage.firstCell, middleCell);
        EXPECT_GE(damage.lastCell, middleCell);
        EXPECT_EQ(damage.cells, damage.lastCell - damage.firstCell + 1);
      }
      EXPECT_EQ(group.AScan<std::int16_t>(0, 0)[3], 4) << "what is whole is read";
    }
  EXPECT_FALSE(std::filesystem::exists(CopyPath()));
}

TEST_F(DamagedInspection, AcceptedDamageIsCellsWithoutSamples) {
  Make(ScanRecord(), ScanSamples(), middleByte);
  for (const SampleTables tables : bothTables) {
    Inspection inspection = Open(tables, true);
    const DataGroup group = inspection.Data()[0];
    EXPECT_TRUE(inspection.Damage().empty()) << "nothing was read";
    const Samples samples = group.Samples();
    const Peaks peaks = samples.FindPeaks(group.AllCells());
    ASSERT_EQ(inspection.Damage().size(), 1U);
    const DamagedSamples damage = inspection.Damage()[0];
    const GateResult gated = Gate(inspection, {0, 1, 1e-6, 2e-6, {}});
    EXPECT_EQ(gated.data[0].damaged, damage.cells);
    for (std::uint64_t cell = 0; cell < cellQuantity; ++cell) {
      const bool isDamaged = cell >= damage.firstCell && cell <= damage.lastCell;
      const auto row = static_cast<std::uint32_t>(cell / columnQuantity);
      const auto column = static_cast<std::uint32_t>(cell % columnQuantity);
      EXPECT_EQ(samples.IsDamaged(cell), isDamaged) << cell;
      EXPECT_EQ(group.AScan<std::int16_t>(row, column).empty(), isDamaged) << cell;
      EXPECT_EQ(peaks.values[cell], isDamaged ? 0 : 1000) << cell;
      EXPECT_EQ(gated.data[0].amplitudes.AScan<std::uint16_t>(row, column).empty(), isDamaged);
      EXPECT_EQ(gated.data[0].positions.AScan<std::uint16_t>(row, column).empty(), isDamaged);
    }
    EXPECT_THROW(inspection.SaveAs(CopyPath()), Error) << "a copy would call it whole";
    const std::string companion = inspection.SaveCompanion();
    const Inspection again = Inspection::Open(m_path);
    const DataGroup cscan = again.Data({.dataClass = gdata_CScanAmplitude});
    EXPECT_EQ(cscan.AScan<std::uint16_t>(0, 0).size(), 1U);
    EXPECT_TRUE(cscan.AScan<std::uint16_t>(middleRow, middleColumn).empty())
        << "the C-scans on disk say so too";
    std::filesystem::remove(companion);
  }
}

TEST_F(DamagedInspection, ChunksSideBySideAreOneDamage) {
  constexpr std::uint64_t chunk = 65536;
  constexpr std::uint64_t first = middleByte / chunk * chunk;
  Make(ScanRecord(), ScanSamples(), middleByte);
  FlipSampleBit(m_path, first + chunk + 3);
  constexpr std::uint64_t end = cellQuantity * cellBytes;
  FlipSampleBit(m_path, end - 1);
  const Inspection inspection = Open(SampleTables::Mapped, true);
  const DataGroup group = inspection.Data()[0];
  static_cast<void>(group.Table());
  const std::uint64_t samples = group.Stored().samples.offset;
  const std::vector<DamagedSamples> damage = inspection.Damage();
  ASSERT_EQ(damage.size(), 2U);
  EXPECT_EQ(damage[0].offset, samples + first);
  EXPECT_EQ(damage[0].size, 2 * chunk);
  EXPECT_EQ(damage[0].firstCell, first / cellBytes);
  EXPECT_EQ(damage[0].lastCell, (first + 2 * chunk - 1) / cellBytes);
  EXPECT_EQ(damage[1].offset, samples + end / chunk * chunk);
  EXPECT_EQ(damage[1].size, end % chunk) << "the last chunk is a short one";
}

TEST_F(DamagedInspection, ADamagedOffsetTakesItsCellAlong) {
  CGDataTypeFDD record = ScanRecord();
  record.storageMode = kvt_StorIndexed;
  constexpr std::uint32_t cell = 7;
  Make(record, IndexedSamples(), 4 * cell + 3);
  for (const SampleTables tables : bothTables) {
    const Inspection strict = Open(tables, false);
    EXPECT_THROW(static_cast<void>(strict.Data()[0].AScan<std::int16_t>(0, 0)), Error);
    const Inspection inspection = Open(tables, true);
    EXPECT_TRUE(inspection.Data()[0].AScan<std::int16_t>(0, cell).empty());
    ASSERT_EQ(inspection.Damage().size(), 1U);
    EXPECT_EQ(inspection.Damage()[0].firstCell, 0U);
    EXPECT_EQ(inspection.Damage()[0].lastCell, cellQuantity - 1) << "all offsets are in one chunk";
  }
  // A damaged chunk behind the offsets takes the cells whose samples lie there.
  Make(record, IndexedSamples(), 4 * cellQuantity + middleByte);
  const Inspection inspection = Open(SampleTables::Mapped, true);
  const DataGroup group = inspection.Data()[0];
  EXPECT_EQ(group.AScan<std::int16_t>(0, 0)[3], 4);
  EXPECT_TRUE(group.AScan<std::int16_t>(middleRow, middleColumn).empty());
  ASSERT_EQ(inspection.Damage().size(), 1U);
  EXPECT_LT(inspection.Damage()[0].cells, cellQuantity);
}

TEST_F(DamagedInspection, ThreadsThatReadAtOnceSeeTheSame) {
  Make(ScanRecord(), ScanSamples(), middleByte);
  const Inspection inspection = Open(SampleTables::Mapped, true);
  const DataGroup group = inspection.Data()[0];
  std::atomic<std::uint64_t> without = 0;
  constexpr std::uint32_t threadQuantity = 4;
  {
    std::vector<std::jthread> threads;
    for (std::uint32_t thread = 0; thread < threadQuantity; ++thread)
      threads.emplace_back([&] {
        for (std::uint32_t row = 0; row < rowQuantity; ++row)
          for (std::uint32_t column = 0; column < columnQuantity; ++column)
            if (group.AScan<std::int16_t>(row, column).empty()) ++without;
      });
  }
  ASSERT_EQ(inspection.Damage().size(), 1U);
  EXPECT_EQ(without, threadQuantity * inspection.Damage()[0].cells);
}

// Readers take the header of older writers at the start of a table for zeros; its bytes are whole.
TEST_F(DamagedInspection, AnOldHeaderIsNoDamage) {
  CGDataTypeFDD record = ScanRecord();
  SetLayout(record, *FindSampleType(kvt_Int16), {2, 2, 100, true});
  std::vector<std::int16_t> samples(400, 5);
  const std::string path = (m_scratch.Path() / "old.fpd").string();
  {
    Inspection inspection = Inspection::New(path);
    inspection.AddData(record, std::as_writable_bytes(std::span(samples)));
    samples[0] = 0x3344;
    samples[2] = 0x5553;
    inspection.SaveAs(path);
  }
  for (const SampleTables tables : bothTables) {
    OpenOptions options;
    options.tables = tables;
    const Inspection inspection = Inspection::Open(path, options);
    EXPECT_EQ(inspection.Data()[0].AScan<std::int16_t>(0, 0)[0], 0);
    EXPECT_EQ(inspection.Data()[0].AScan<std::int16_t>(0, 0)[50], 5);
    EXPECT_TRUE(inspection.Damage().empty());
  }
}

}  // namespace
}  // namespace utdata
