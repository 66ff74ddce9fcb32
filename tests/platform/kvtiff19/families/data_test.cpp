// What data groups have beyond the other families: samples, private fields, texts of bounded
// length.
#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <vector>

#include "platform/kvtiff19/families/data_table.h"
#include "tests/platform/kvtiff19/families/family_functions.h"
#include "tests/support/record_samples.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace utdata::kvtiff19;
using namespace utdata::test;

constexpr std::uint32_t dataCode = 10004;
constexpr std::uint32_t modifiedDataCode = 10018;

std::vector<std::uint8_t> Ramp(std::size_t size, std::uint8_t first) {
  std::vector<std::uint8_t> bytes(size);
  std::iota(bytes.begin(), bytes.end(), first);
  return bytes;
}

std::vector<std::uint8_t> ReadSamples(const CGDataTypeFDD& record) {
  std::byte* data = nullptr;
  std::uint64_t size = 0;
  EXPECT_EQ(gdata_SamplesRead(&record, &data, &size), SCFile::status_Ok)
      << SCFile::file_LastError();
  const std::unique_ptr<std::byte[]> owner(data);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(data);
  return {bytes, bytes + size};
}

class DataTest : public ::testing::Test {
 protected:
  ScratchDirectory m_directory;
};

// The table of a class with private members cannot be checked when it is compiled. Every byte of
// the record must count, but for the members that are not stored.
TEST(DataRecord, TableCoversEveryByte) {
  static_assert(std::is_trivially_copyable_v<CGDataTypeFDD>);
  auto record = MakeRecord<CGDataTypeFDD>(1);
  ForEachField<CGDataTypeFDD>([&](const auto& field) {
    using Member = typename std::remove_cvref_t<decltype(field)>::Member;
    if constexpr (std::is_same_v<Member, wchar_t[CGDataTypeFDD::nameSize]>)
      std::fill_n(record.*field.member, CGDataTypeFDD::nameSize - 1, L'x');
  });
  std::size_t without = 0;
  for (std::size_t at = 0; at < sizeof record; ++at) {
    CGDataTypeFDD other = record;
    reinterpret_cast<unsigned char*>(&other)[at] ^= 1;
    without += other == record;
  }
  EXPECT_EQ(without,
            sizeof(void*) + sizeof record.dataSize + sizeof record.samples + sizeof record.stored +
                sizeof(SCFile::GroupHandle));
}

TEST(DataRecord, InitializesCutsNamesAndComputesItsLayout) {
  auto record = MakeRecord<CGDataTypeFDD>(2);
  int nothing = 0;
  record.dataPointer = &nothing;
  record.SetGroupHandle(reinterpret_cast<SCFile::GroupHandle>(&nothing));
  record.samples.offset = 4096;
  record.InitializeData();
  EXPECT_TRUE(record == CGDataTypeFDD());
  EXPECT_EQ(record.dataPointer, nullptr);
  EXPECT_EQ(record.GetGroupHandle(), nullptr);
  EXPECT_EQ(record.samples.offset, gdata_typeSampleRef::none);

  const wchar_t* name = nullptr;
  EXPECT_EQ(record.GetPatchIDName(&name), 0u);
  EXPECT_EQ(name, nullptr);
  record.SetPatchIDName(std::wstring(40, L'p').c_str());
  EXPECT_EQ(record.GetPatchIDName(&name), 31u);
  EXPECT_EQ(name, std::wstring(31, L'p'));
  record.SetPatchIDName(nullptr);
  EXPECT_EQ(record.GetPatchIDName(&name), 0u);

  CGDataTypeFDD* allocated = gdata_Allocate(0, std::wstring(40, L'd').c_str());
  EXPECT_EQ(allocated->dataName, std::wstring(31, L'd'));
  gdata_Delete(allocated, 1);
  EXPECT_EQ(allocated, nullptr);

  const std::uint32_t most = ~0u;
  struct {
    std::uint32_t sampleSize, samples, columns, rows;
    kvt_enumStorMode mode;
    bool fits;
    std::uint64_t size;
  } const cases[] = {{2, 256, 256, 10, kvt_StorCells, true, 1310720},
                     {2, 0, most, most, kvt_StorCells, true, 0},
                     {1, most, most, 1, kvt_StorCells, true, 18446744065119617025u},
                     {2, most, most, 1, kvt_StorCells, false, 0},
                     {1, most, most, 2, kvt_StorCells, false, 0},
                     {2, 256, 256, 10, kvt_StorIndexed, false, 0}};
  for (const auto& layout : cases) {
    record.sampleSize = layout.sampleSize;
    record.sampleQuantity = layout.samples;
    record.columnQuantity = layout.columns;
    record.rowQuantity = layout.rows;
    record.storageMode = layout.mode;
    std::uint64_t size = 0;
    EXPECT_EQ(record.LayoutSize(size), layout.fits);
    EXPECT_EQ(size, layout.size);
  }
}

TEST_F(DataTest, SamplesAreReadMappedAndCopied) {
  auto byLayout = MakeRecord<CGDataTypeFDD>(1);
  auto indexed = MakeRecord<CGDataTypeFDD>(2);
  auto empty = MakeRecord<CGDataTypeFDD>(3);
  auto none = MakeRecord<CGDataTypeFDD>(4);
  std::uint64_t layoutSize = 0;
  ASSERT_TRUE(byLayout.LayoutSize(layoutSize));
  auto first = Ramp(static_cast<std::size_t>(layoutSize), 1);
  auto second = Ramp(3'000'001, 7);
  byLayout.dataPointer = first.data();
  indexed.storageMode = kvt_StorIndexed;
  indexed.dataPointer = second.data();
  indexed.dataSize = second.size();
  empty.rowQuantity = 0;
  empty.dataPointer = first.data();
  const CGDataTypeFDD* const records[] = {&byLayout, &indexed, &empty, &none};

  GroupFile source(m_directory.File(L"source.fpd"));
  for (const CGDataTypeFDD* record : records)
    ASSERT_EQ(gdata_WriteGroupInfo(source.NewGroup(dataCode), nullptr, record, 0),
              SCFile::status_Ok);
  source.Reopen();
  std::vector<CGDataTypeFDD> loaded(std::size(records));
  for (std::uint32_t index = 0; index < loaded.size(); ++index)
    ASSERT_EQ(gdata_ReadGroupInfo(source.Group(index), &loaded[index]), SCFile::status_Ok)
        << SCFile::file_LastError();

  // What was loaded is written elsewhere, straight from the source's blocks.
  GroupFile copy(m_directory.File(L"copy.fpd"));
  for (const CGDataTypeFDD& record : loaded)
    ASSERT_EQ(gdata_WriteGroupInfo(copy.NewGroup(dataCode), nullptr, &record, 0), SCFile::status_Ok)
        << SCFile::file_LastError();
  copy.Reopen();
  for (std::uint32_t index = 0; index < loaded.size(); ++index) {
    CGDataTypeFDD copied;
    ASSERT_EQ(gdata_ReadGroupInfo(copy.Group(index), &copied), SCFile::status_Ok)
        << SCFile::file_LastError();
    EXPECT_TRUE(copied == *records[index]);
    EXPECT_EQ(copied.dataPointer, nullptr);
    EXPECT_EQ(copied.samples.size, loaded[index].samples.size);
    if (index == 3) {
      EXPECT_EQ(copied.samples.offset, gdata_typeSampleRef::none);
      void* data = nullptr;
      std::uint64_t size = 0;
      EXPECT_EQ(gdata_SamplesMap(&copied, &data, &size), SCFile::status_NotFound);
      continue;
    }
    EXPECT_EQ(ReadSamples(copied),
              index == 0   ? first
              : index == 1 ? second
                           : std::vector<std::uint8_t>());
    if (index == 2) continue;

    // A view may be written to; the file and other views stay as they are.
    void* data = nullptr;
    std::uint64_t size = 0;
    ASSERT_EQ(gdata_SamplesMap(&copied, &data, &size), SCFile::status_Ok)
        << SCFile::file_LastError();
    EXPECT_EQ(size, copied.samples.size);
    EXPECT_EQ(std::memcmp(
                  data, index == 0 ? first.data() : second.data(), static_cast<std::size_t>(size)),
              0);
    static_cast<char*>(data)[0] ^= 1;
    EXPECT_EQ(ReadSamples(copied), index == 0 ? first : second);
    EXPECT_EQ(SCFile::file_BlockUnmap(SCFile::file_OfGroup(copied.samples.group), data),
              SCFile::status_Ok);
  }
}

// Modifications bring samples only where their base does not have them: on disk, or, never read
// from a file, in the same memory.
TEST_F(DataTest, ModificationBringsSamplesOnlyWhenTheyAreOthers) {
  auto inMemory = MakeRecord<CGDataTypeFDD>(1);
  auto samples = Ramp(3'000'001, 1);
  auto equal = samples;
  auto others = samples;
  others.back() ^= 1;
  inMemory.dataPointer = samples.data();
  inMemory.dataSize = samples.size();
  GroupFile file(m_directory.File(L"modified.A01"));
  ASSERT_EQ(gdata_WriteGroupInfo(file.NewGroup(dataCode), nullptr, &inMemory, 0),
            SCFile::status_Ok);
  file.Reopen();
  CGDataTypeFDD base;
  ASSERT_EQ(gdata_ReadGroupInfo(file.Group(0), &base), SCFile::status_Ok);
  void* view = nullptr;
  std::uint64_t viewSize = 0;
  ASSERT_EQ(gdata_SamplesMap(&base, &view, &viewSize), SCFile::status_Ok);
  CGDataTypeFDD withoutBlock = base;  // read from a file that has no samples of it
  withoutBlock.samples = {};
  withoutBlock.dataPointer = samples.data();

  struct Case {
    const CGDataTypeFDD* base;
    void* data;
    std::uint64_t size;  ///< bytes that are stated; 0: none
    std::uint64_t written;
  };
  const std::uint64_t size = samples.size();
  std::uint64_t layoutSize = 0;
  ASSERT_TRUE(base.LayoutSize(layoutSize));
  const Case cases[] = {{&base, nullptr, 0, 0},
                        {&base, reinterpret_cast<void*>(~std::uintptr_t{0}), size, 0},
                        {&base, samples.data(), size, 0},
                        {&base, equal.data(), size, 0},
                        {&base, view, size, 0},
                        {&base, view, 0, 0},  // a view is as long as it is
                        {&base, equal.data(), 0, layoutSize},
                        {&base, equal.data(), size - 1, size - 1},
                        {&base, others.data(), size, size},
                        {&withoutBlock, samples.data(), size, size},
                        {&inMemory, samples.data(), size, 0},
                        {&inMemory, equal.data(), size, size}};
  GroupFile changes(m_directory.File(L"modified.A02"));
  for (const Case& c : cases) {
    auto changed = base;
    changed.dataPointer = c.data;
    changed.dataSize = c.size;
    ASSERT_EQ(gdata_WriteGroupInfo(changes.NewGroup(modifiedDataCode), c.base, &changed, 0),
              SCFile::status_Ok);
  }
  changes.Reopen();
  for (std::uint32_t index = 0; index < std::size(cases); ++index) {
    SCOPED_TRACE(index);
    CGDataTypeFDD loaded = base;
    loaded.samples = {};
    ASSERT_EQ(gdata_ReadGroupInfo(changes.Group(index), &loaded), SCFile::status_Ok);
    EXPECT_EQ(loaded.samples.size, cases[index].written);
    if (cases[index].written == 0) continue;
    const auto* data = static_cast<const std::uint8_t*>(cases[index].data);
    EXPECT_EQ(ReadSamples(loaded), std::vector<std::uint8_t>(data, data + cases[index].written));
  }
}

TEST_F(DataTest, WhatCannotBeWrittenFailsTheCommit) {
  const auto good = MakeRecord<CGDataTypeFDD>(1);
  auto endless = good;
  endless.sampleQuantity = endless.columnQuantity = endless.rowQuantity = ~0u;
  auto indexed = good;
  indexed.storageMode = kvt_StorIndexed;
  int samples = 0;
  endless.dataPointer = indexed.dataPointer = &samples;
  auto unterminated = good;
  std::fill(std::begin(unterminated.gateName), std::end(unterminated.gateName), L'x');
  CGProbeTypeDescr surrogate;
  surrogate.model = L"\xD800";

  const std::wstring path = m_directory.File(L"refused.fpd");
  const auto refused = [&](int status, const auto& write) {
    GroupFile file(path);
    EXPECT_EQ(write(file.NewGroup(dataCode)), status);
    EXPECT_EQ(file.Commit(), status);
  };
  refused(SCFile::status_BadArgument,
          [&](auto* group) { return gdata_WriteGroupInfo(group, nullptr, &endless, 0); });
  refused(SCFile::status_BadArgument,
          [&](auto* group) { return gdata_WriteGroupInfo(group, nullptr, &indexed, 0); });
  refused(SCFile::status_BadArgument,
          [&](auto* group) { return gdata_WriteGroupInfo(group, nullptr, nullptr, 0); });
  refused(SCFile::status_BadText,
          [&](auto* group) { return gdata_WriteGroupInfo(group, nullptr, &unterminated, 0); });
  refused(SCFile::status_BadText,
          [&](auto* group) { return gprobe_WriteGroupInfo(group, nullptr, &surrogate); });
  EXPECT_TRUE(std::filesystem::is_empty(m_directory.Path()));
}

TEST_F(DataTest, TextsThatDoNotFitTheirPlaceAndFieldsThatComeTwiceAreDamage) {
  GroupFile file(m_directory.File(L"long.fpd"));
  struct {
    std::wstring text;
    int times;
    int status;
  } const cases[] = {{std::wstring(31, L'溶'), 1, SCFile::status_Ok},
                     {std::wstring(32, L'a'), 1, SCFile::status_Damaged},
                     {std::wstring(124, L'a'), 1, SCFile::status_Damaged},
                     {std::wstring(L"a\0b", 3), 1, SCFile::status_Damaged},
                     {L"twice", 2, SCFile::status_Damaged}};
  for (const auto& entry : cases) {
    const SCFile::GroupHandle group = file.NewGroup(dataCode);
    const auto count = static_cast<std::uint32_t>(entry.text.size() + 1);
    for (int time = 0; time < entry.times; ++time)
      ASSERT_EQ(
          SCFile::file_ItemValueWrite(group, 2, SCFile::value_Text, count, entry.text.c_str()),
          SCFile::status_Ok);
  }
  file.Reopen();
  for (std::uint32_t index = 0; index < std::size(cases); ++index) {
    SCFile::GroupHandle group = nullptr;
    EXPECT_EQ(SCFile::file_GroupOpen(file.Top(), &group, index), cases[index].status) << index;
    CGDataTypeFDD record;
    if (group) {
      EXPECT_EQ(gdata_ReadGroupInfo(group, &record), SCFile::status_Ok);
    }
    EXPECT_EQ(record.dataName, group ? cases[index].text : L"");
  }
}

TEST(GateRecord, LoadingGivesDefaultsForWhatAModificationKeeps) {
  ScratchDirectory directory;
  GroupFile file(directory.File(L"gate.fpd"));
  const auto base = MakeRecord<CGGateTypeDescr>(1);
  ASSERT_EQ(ggate_WriteGroupInfo(file.NewGroup(10025), &base, &base), SCFile::status_Ok);
  file.Reopen();
  CGGateTypeDescr onlyKeys;
  onlyKeys.gateId = base.gateId;
  onlyKeys.channelId = base.channelId;
  auto loaded = MakeRecord<CGGateTypeDescr>(2);
  ASSERT_EQ(ggate_ReadGroupInfo(file.Group(0), &loaded, false), SCFile::status_Ok);
  EXPECT_TRUE(loaded == onlyKeys);
  auto modified = base;
  ASSERT_EQ(ggate_ReadGroupInfo(file.Group(0), &modified, true), SCFile::status_Ok);
  EXPECT_TRUE(modified == base);
  EXPECT_EQ(ggate_ReadGroupInfo(file.Group(0), nullptr, false), SCFile::status_BadArgument);
}

}  // namespace
