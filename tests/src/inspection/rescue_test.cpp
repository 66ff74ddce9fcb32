// What a rescue makes of damaged samples, and of modifications whose group is lost.
#include "utdata/rescue.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "tests/support/failing_file_system.h"
#include "tests/support/file_system_in_place.h"
#include "tests/support/scratch_directory.h"
#include "utdata/fset.h"
#include "utdata/idata.h"
#include "utdata/igate.h"
#include "utdata/inspection.h"
#include "utdata/newscan.h"

namespace utdata {
namespace {

constexpr std::uint32_t rescuedColumns = 40, rescuedRows = 10, rescuedSamples = 2000;
constexpr std::uint32_t rescuedCells = rescuedColumns * rescuedRows;

/// Overwrites bytes of a file.
void Spoil(const std::string& path, std::uint64_t at, std::size_t size) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(at));
  file << std::string(size, '\x5A');
}

class RescuedInspection : public ::testing::Test {
 protected:
  void SetUp() override {
    Make([](CGDataTypeFDD&) {});
  }

  void Make(void (*change)(CGDataTypeFDD&)) const {
    const SampleType& type = *FindSampleType(kvt_UInt16);
    CGDataTypeFDD record = NominalRecord(type);
    SetLayout(record, type, {rescuedColumns, rescuedRows, rescuedSamples, true});
    change(record);
    std::vector<std::uint16_t> samples(std::size_t{rescuedCells} * rescuedSamples);
    for (std::size_t at = 0; at < samples.size(); ++at)
      samples[at] = static_cast<std::uint16_t>(1 + at % 60000);
    const auto bytes = std::as_bytes(std::span(samples));
    Inspection inspection = Inspection::New(m_damaged);
    inspection.AddData(record, std::vector<std::byte>(bytes.begin(), bytes.end()));
    CGGateTypeDescr gate;
    gate.gateId = 1;
    inspection.FileSet().fset_AddGGate(&gate, 1);
    inspection.SaveAs(m_damaged, true);
  }

  [[nodiscard]] std::string At(const char* name) const {
    return (m_scratch.Path() / name).string();
  }

  test::ScratchDirectory m_scratch;
  std::string m_damaged = At("damaged.fpd");
  std::string m_rescued = At("rescued.fpd");
};

TEST_F(RescuedInspection, DamagedCellsAreCellsWithoutSamples) {
  const std::uint64_t block = Inspection::Open(m_damaged).Data()[0].Stored().samples.offset;
  constexpr std::uint64_t cell = rescuedCells / 2;
  Spoil(m_damaged, block + cell * rescuedSamples * 2 + 10, 3);
  const Rescued rescued = Rescue(m_damaged, m_rescued);
  ASSERT_EQ(rescued.lost.size(), 1U);
  EXPECT_NE(rescued.lost[0].find(" of 400 cells of a data group "), std::string::npos);
  EXPECT_TRUE(rescued.unchecked.empty() && rescued.mended.empty());
  const Inspection inspection = Inspection::Open(m_rescued);
  EXPECT_TRUE(inspection.Warnings().empty());
  std::uint64_t without = 0;
  for (std::uint32_t at = 0; at < rescuedCells; ++at) {
    const auto ascan =
        inspection.Data()[0].AScan<std::uint16_t>(at / rescuedColumns, at % rescuedColumns);
    if (ascan.empty()) {
      ++without;
      continue;
    }
    ASSERT_EQ(ascan[7], 1 + (std::size_t{at} * rescuedSamples + 7) % 60000) << at;
  }
  EXPECT_TRUE(inspection.Data()[0]
                  .AScan<std::uint16_t>(cell / rescuedColumns, cell % rescuedColumns)
                  .empty());
  EXPECT_LT(without, rescuedCells / 2 + 200);
  EXPECT_NE(rescued.lost[0].find(" " + std::to_string(without) + " of 400 cells"),
            std::string::npos)
      << rescued.lost[0];
  // The rescued file has offsets now; damaged again, it is rescued again.
  constexpr std::uint64_t other = 3 * rescuedCells / 4;
  const std::uint64_t newBlock = inspection.Data()[0].Stored().samples.offset;
  Spoil(m_rescued, newBlock + 4 * rescuedCells + other * rescuedSamples * 2, 3);
  const Rescued again = Rescue(m_rescued, At("again.fpd"));
  EXPECT_EQ(again.lost.size(), 1U);
  const Inspection twice = Inspection::Open(At("again.fpd"));
  const auto ascanOf = [&](std::uint64_t at) {
    return twice.Data()[0].AScan<std::uint16_t>(static_cast<std::uint32_t>(at / rescuedColumns),
                                                static_cast<std::uint32_t>(at % rescuedColumns));
  };
  EXPECT_TRUE(ascanOf(cell).empty());
  EXPECT_TRUE(ascanOf(other).empty());
  // Damaged offsets cost the cells that they name.
  Spoil(At("again.fpd"), twice.Data()[0].Stored().samples.offset, 3);
  EXPECT_EQ(Rescue(At("again.fpd"), At("third.fpd")).lost.size(), 1U);
  EXPECT_TRUE(Inspection::Open(At("third.fpd")).Data()[0].AScan<std::uint16_t>(0, 0).empty());
  ASSERT_FALSE(ascanOf(rescuedCells - 1).empty());
  EXPECT_EQ(ascanOf(rescuedCells - 1)[0],
            1 + std::size_t{rescuedCells - 1} * rescuedSamples % 60000);
}

// When the table of checksums cannot be read, nothing says that a cell is whole.
TEST_F(RescuedInspection, ADamagedCellStaysLostWhicheverCallFails) {
  const std::uint64_t block = Inspection::Open(m_damaged).Data()[0].Stored().samples.offset;
  Spoil(m_damaged, block + 10, 3);
  test::FailingFileSystem disk;
  bool wasAllLost = false;
  for (std::uint64_t call = 1; disk.Calls() >= call - 1; ++call) {
    const std::string rescued = At(std::to_string(call).c_str());
    SCFile::RescueFindings findings;
    {
      const test::FileSystemInPlace inPlace(disk);
      disk.FailAt(call, os::Error::Other, false);
      if (SCFile::file_Rescue(ToWide(m_damaged).c_str(), ToWide(rescued).c_str(), true, &findings))
        continue;
    }
    const Inspection inspection = Inspection::Open(rescued);
    const auto isLost = [&](std::uint32_t row, std::uint32_t column) {
      return inspection.Data()[0].AScan<std::uint16_t>(row, column).empty();
    };
    EXPECT_TRUE(isLost(0, 0)) << call;
    wasAllLost |= isLost(1, 0) && isLost(rescuedRows - 1, 0);
  }
  EXPECT_TRUE(wasAllLost);
}

TEST_F(RescuedInspection, WhatDamageCostsFollowsFromTheLayout) {
  constexpr std::uint64_t size = std::uint64_t{rescuedCells} * rescuedSamples * 2;
  struct Case {
    void (*change)(CGDataTypeFDD&);
    std::uint64_t at;
    const char* finding;
    bool isMended, isLeftOut;
  };
  const Case cases[] = {
      {[](CGDataTypeFDD& r) { r.rowQuantity = 5; }, size - 9, "to no cell", true, false},
      {[](CGDataTypeFDD& r) { r.storageMode = static_cast<kvt_enumStorMode>(7); },
       9,
       "cannot be said of which cells",
       false,
       true},
      {[](CGDataTypeFDD& r) { r.rowQuantity = 20; }, 9, "cannot be said", false, true},
      {[](CGDataTypeFDD& r) { r.columnQuantity = 0; }, 9, "cannot be said", false, true},
      {[](CGDataTypeFDD& r) { r.dataClass = gdata_CScanAmplitude; }, 9, "400 cells", false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    Make(c.change);
    Spoil(m_damaged,
          Inspection::Open(m_damaged).Descriptor().data.GetHead()->samples.offset + c.at,
          3);
    const Rescued rescued = Rescue(m_damaged, m_rescued, true);
    ASSERT_EQ(rescued.lost.size(), c.isMended ? 0U : 1U);
    ASSERT_EQ(rescued.mended.size(), c.isMended ? 1U : 0U);
    const std::string& finding = c.isMended ? rescued.mended[0] : rescued.lost[0];
    EXPECT_NE(finding.find(c.finding), std::string::npos) << finding;
    EXPECT_EQ(Inspection::Open(m_rescued).Data().size(), c.isLeftOut ? 0U : 1U);
  }
}

TEST_F(RescuedInspection, AModificationGoesWithTheGroupThatItModifies) {
  const std::uint64_t before = std::filesystem::file_size(m_damaged);
  {
    Inspection inspection = Inspection::Open(m_damaged);
    inspection.Gate(0, 1).SetStart(5e-6);
    inspection.SaveAppended();
  }
  const std::string copy = At("copy.fpd");
  std::filesystem::copy_file(m_damaged, copy);
  // The first write's group lies at its end, before the bytes of the second one.
  Spoil(m_damaged, before - 300, 64);
  EXPECT_THROW(static_cast<void>(Inspection::Open(m_damaged)), Error);
  const Rescued rescued = Rescue(m_damaged, m_rescued);
  ASSERT_EQ(rescued.lost.size(), 2U);
  EXPECT_TRUE(rescued.lost[0].starts_with("top group 0 ")) << rescued.lost[0];
  EXPECT_NE(rescued.lost[1].find("a modification of a gate"), std::string::npos);
  const Inspection left = Inspection::Open(m_rescued);
  EXPECT_TRUE(left.Data().empty());
  EXPECT_THROW(static_cast<void>(left.Gate(0, 1)), Error) << "not a gate of default values";

  // A file that is cut within the second write keeps the first one, as it was, and says so.
  std::filesystem::resize_file(copy, before + 40);
  const Rescued cut = Rescue(copy, At("cut.fpd"));
  EXPECT_FALSE(cut.lost.empty());
  const Inspection first = Inspection::Open(At("cut.fpd"));
  EXPECT_EQ(first.Data().size(), 1U);
  EXPECT_EQ(first.Gate(0, 1).Start(), 0);
}

// A companion holds no group that its modifications are of.
TEST_F(RescuedInspection, ACompanionKeepsWhatEachOfItsWritesModifies) {
  {
    Inspection inspection = Inspection::Open(m_damaged);
    inspection.Gate(0, 1).SetStart(5e-6);
    inspection.SaveCompanion();
    CIData& item = inspection.Data().front().Item();
    idata_typeInspParams params;
    item.idata3_GetInspParam(&params);
    params.soundSpeed = 3200;
    item.idata1_ModifyInspParam(&params, 0);
    inspection.SaveAppended();
  }
  EXPECT_TRUE(Rescue(At("damaged.A01"), At("rescued.A01")).lost.empty());
  std::filesystem::rename(At("rescued.A01"), At("damaged.A01"));
  const Inspection inspection = Inspection::Open(m_damaged);
  EXPECT_EQ(inspection.Files().size(), 2U);
  EXPECT_EQ(static_cast<float>(inspection.Gate(0, 1).Start()), 5e-6F);
  EXPECT_EQ(inspection.Data().front().Item().idata3_GetSoundSpeed(), 3200);
}

TEST_F(RescuedInspection, RefusesWhatItCannotDo) {
  EXPECT_THROW(static_cast<void>(Rescue(m_damaged, m_damaged, true)), Error);
  EXPECT_TRUE(Rescue(m_damaged, m_rescued).IsComplete());
  EXPECT_THROW(static_cast<void>(Rescue(m_damaged, m_rescued)), Error) << "it exists";
  EXPECT_TRUE(Rescue(m_damaged, m_rescued, true).IsComplete());
  std::ofstream(At("text.fpd")) << std::string(50000, 't');
  try {
    static_cast<void>(Rescue(At("text.fpd"), At("none.fpd")));
    ADD_FAILURE();
  } catch (const Error& error) {
    EXPECT_EQ(error.File(), At("text.fpd"));
    EXPECT_EQ(error.Status(), SCFile::status_Damaged);
  }
  EXPECT_FALSE(std::filesystem::exists(At("none.fpd")));
}

}  // namespace
}  // namespace utdata
