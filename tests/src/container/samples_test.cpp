// Samples on their way from a host's tables into files: a change of a data group's parameters adds
// no samples, and what is written of a table is that table.
#include <filesystem>
#include <functional>
#include <numeric>

#include "tests/src/container/inspection.h"
#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"

namespace utdata::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Layout {
  const char* name;
  std::uint32_t dataClass;
  std::uint32_t storage;
  std::uint32_t cellSize;
  std::uint32_t columns;
  std::uint64_t size;  ///< of the whole table
};
// Rows of one cell; cells of 1000 samples of two bytes, one sample of a C-scan.
constexpr Layout layouts[] = {
    {"A-scans", gdata_AScan, kvt_StorCells, 0, 700, 700 * 2000},
    {"C-scan whose record says more than one sample", gdata_CScanAmplitude, 0, 0, 700, 700 * 2},
    {"cells wider than their samples", gdata_AScan, kvt_StorCells, 2048, 700, 700 * 2048},
    {"table with offsets", gdata_AScan, kvt_StorIndexed, 0, 700, 700 * 2004}};

Bytes TableOf(const Layout& layout) {
  Bytes table(layout.size);
  std::iota(table.begin(), table.end(), std::uint8_t{1});
  if (layout.storage != kvt_StorIndexed) return table;
  for (std::uint32_t cell = 0; cell < layout.columns; ++cell) {
    const std::uint32_t offset = layout.columns * 4 + cell * 2000;
    std::memcpy(table.data() + std::size_t{cell} * 4, &offset, 4);
  }
  return table;
}

/// A file of one data group with such a table.
void WriteGroup(const std::wstring& path, const Layout& layout, Bytes table) {
  CGDataTypeFDD record = SoundRecord({.dataClass = gdata_enumDataClass{layout.dataClass}});
  record.SetDataType(kvt_UInt16);
  record.sampleSize = 2;
  record.sampleQuantity = 1000;
  record.storageMode = kvt_enumStorMode{layout.storage};
  record.cellSize = layout.cellSize;
  record.columnQuantity = layout.columns;
  record.rowQuantity = 1;
  record.dataPointer = table.empty() ? &record : static_cast<void*>(table.data());
  record.dataSize = table.size();
  const Inspection written = MakeInspection(path);
  Add(written->data, record);
  ASSERT_EQ(WriteWholeFile(*written), 0) << SCFile::file_LastError();
}

Bytes BytesIn(const CGDataTypeFDD& data) {
  std::byte* bytes = nullptr;
  std::uint64_t size = 0;
  EXPECT_EQ(gdata_SamplesRead(&data, &bytes, &size), 0) << SCFile::file_LastError();
  const std::unique_ptr<std::byte[]> owned(bytes);
  const auto* first = reinterpret_cast<const std::uint8_t*>(bytes);
  return {first, first + size};
}

/// A host with one loaded inspection of one data group.
struct OpenGroup {
  explicit OpenGroup(const std::wstring& path) : loaded(Load(path)) {
    item = host.set.fset_AddGData(loaded->data.GetHead(), nullptr, &host.volumes, 0);
  }

  [[nodiscard]] CRDataTypeDD& Descriptor() const { return *item->idata1_GetInfoRef(); }

  char* AttachView(bool isSizeStated = false) {
    void* view = nullptr;
    std::uint64_t size = 0;
    EXPECT_EQ(gdata_SamplesMap(loaded->data.GetHead(), &view, &size), 0);
    if (isSizeStated)
      Descriptor().SetDiskTable(static_cast<char*>(view), true, size);
    else
      Descriptor().SetDiskTable(static_cast<char*>(view), true);
    return static_cast<char*>(view);
  }

  void Turn(float angle) const {
    idata_typeInspParams params{};
    item->idata3_GetInspParam(&params);
    params.probeAngle = angle;
    item->idata1_ModifyInspParam(&params, 0);
  }

  /// The bytes that the files grow by when a record of the group is written.
  std::uintmax_t Write(const CGDataTypeFDD& record, bool isCompanion) const {
    const auto sizeOfAll = [this] {
      std::uintmax_t size = 0;
      for (const SCFile::FileHandle file : loaded->files)
        size += std::filesystem::file_size(SCFile::file_Path(file));
      return size;
    };
    const std::uintmax_t before = sizeOfAll();
    const Inspection changed = MakeInspection();
    Add(changed->data, record);
    SCFile::FileHandle file = nullptr;
    EXPECT_EQ(
        CFCont().FileWrite(loaded.get(), changed.get(), isCompanion ? 1 : 0, nullptr, &file, 0), 0)
        << SCFile::file_LastError();
    return sizeOfAll() - before;
  }
  std::uintmax_t WriteCopy(bool isCompanion = false) const {
    CGDataTypeFDD copy;
    item->idata1_GetGInfoCopy(&copy);
    return Write(copy, isCompanion);
  }

  Inspection loaded;
  DataHost host;
  CIData* item = nullptr;
};

Inspection LoadWithCompanions(const std::wstring& path) {
  Inspection inspection = Load(path);
  constexpr int readAll[8] = {0, 0, 0, 0, 1, 1, 0, 0};
  EXPECT_EQ(CFCont().FileUpdate(path.c_str(), inspection.get(), readAll, nullptr, nullptr), 0);
  return inspection;
}

constexpr std::uintmax_t fewKilobytes = 16'384;  ///< a commit on a page boundary, and its record

// Whatever the table is and whichever record the host writes: a turned probe adds an angle.
TEST(Samples, AChangedParameterAddsNoSamples) {
  enum Table { view, statedView, copy, statedCopy, none };
  for (const Layout& layout : layouts)
    for (const Table table : {view, statedView, copy, statedCopy, none})
      for (const bool isCompanion : {false, true}) {
        SCOPED_TRACE(layout.name);
        SCOPED_TRACE(testing::Message() << "table " << table << ", companion " << isCompanion);
        const ScratchDirectory scratch;
        const std::wstring path = scratch.File(L"weld.fpd");
        Bytes samples = TableOf(layout);
        WriteGroup(path, layout, samples);
        OpenGroup group(path);
        if (table == view || table == statedView) group.AttachView(table == statedView);
        if (table == copy)
          group.Descriptor().SetDiskTable(reinterpret_cast<char*>(samples.data()), true);
        if (table == statedCopy)
          group.Descriptor().SetDiskTable(
              reinterpret_cast<char*>(samples.data()), true, samples.size());
        EXPECT_EQ(group.Descriptor().KnownTableSize(), table == none ? 0 : layout.size);
        float angle = 60;
        const std::function<std::uintmax_t()> ways[] = {
            [&] { return group.WriteCopy(isCompanion); },
            [&] { return group.Write(*group.item->idata1_GetGInfoRef(), isCompanion); },
            [&] {
              CGDataTypeFDD record = *group.loaded->data.GetHead();
              record.probeAngle = angle;
              return group.Write(record, isCompanion);
            }};
        for (const auto& write : ways) {
          angle += 1;
          group.Turn(angle);
          EXPECT_LT(write(), fewKilobytes);
          const Inspection again = LoadWithCompanions(path);
          ASSERT_EQ(again->data.GetCount(), 1);
          EXPECT_EQ(again->data.GetHead()->probeAngle, angle);
          EXPECT_TRUE(BytesIn(*again->data.GetHead()) == samples);
        }
      }
}

// Samples that the host has changed are written, all of them and no byte more.
TEST(Samples, AChangedTableIsWrittenAsItIs) {
  for (const Layout& layout : layouts) {
    SCOPED_TRACE(layout.name);
    const ScratchDirectory scratch;
    const std::wstring path = scratch.File(L"weld.fpd");
    WriteGroup(path, layout, TableOf(layout));
    OpenGroup group(path);
    Bytes expected = TableOf(layout);
    char* const view = group.AttachView();
    for (const std::size_t place : {expected.size() - 1, expected.size() / 2}) {
      view[place] ^= 0x55;
      expected[place] ^= 0x55;
      EXPECT_GE(group.WriteCopy(), layout.size);
      EXPECT_TRUE(BytesIn(*Load(path)->data.GetHead()) == expected);
      EXPECT_LT(group.WriteCopy(), fewKilobytes) << "the file has them by now";
    }
    std::unique_ptr<char[]> table(new char[layout.size]);
    std::memcpy(table.get(), TableOf(layout).data(), layout.size);
    group.Descriptor().SetDiskTable(table.get(), true);
    EXPECT_GE(group.WriteCopy(), layout.size);
    table.reset();
    group.Descriptor().SetDiskTable(nullptr, true);
    EXPECT_LT(group.WriteCopy(), fewKilobytes);
    EXPECT_TRUE(BytesIn(*Load(path)->data.GetHead()) == TableOf(layout));
  }
}

// A view shows a block as it lies on disk, but for a header of older writers, which is cleared.
// Neither that nor a flaw makes new samples of old ones: damage stays to be found.
TEST(Samples, WhatAViewShowsOfItsBlockIsTheBlock) {
  const Layout& layout = layouts[0];
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  Bytes samples = TableOf(layout);
  const std::uint32_t header[] = {0x3344, 0x5553};
  std::memcpy(samples.data(), header, sizeof header);
  WriteGroup(path, layout, samples);
  {
    OpenGroup group(path);
    EXPECT_EQ(*group.AttachView(), 0) << "the header is cleared";
    EXPECT_LT(group.WriteCopy(), fewKilobytes);
  }
  const std::uint64_t place = Load(path)->data.GetHead()->samples.offset + samples.size() - 1;
  {
    std::fstream file(std::filesystem::path(path), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(place)).put('!');
  }
  OpenGroup group(path);
  group.AttachView();
  group.Turn(33);
  EXPECT_LT(group.WriteCopy(), fewKilobytes);
  EXPECT_EQ(SCFile::file_Verify(path.c_str(), nullptr), SCFile::status_Damaged);
}

// A block without bytes is no table of unknown size: it would be read as long as the layout says.
TEST(Samples, AnEmptyBlockIsNoTable) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  Layout layout = layouts[0];
  layout.columns = 0;
  WriteGroup(path, layout, {});
  OpenGroup group(path);
  ASSERT_EQ(group.loaded->data.GetHead()->samples.size, 0u);
  ASSERT_NE(group.loaded->data.GetHead()->samples.offset, gdata_typeSampleRef::none);
  for (const bool isSizeStated : {false, true}) {
    ReportCapture reports;
    group.AttachView(isSizeStated);
    EXPECT_EQ(group.Descriptor().GetDiskTable(), nullptr) << "one column and row are assumed";
    EXPECT_EQ(group.item->idata3_GetDataTablePtr(), nullptr);
    EXPECT_EQ(reports.Assertions(), 1u);
    EXPECT_LT(group.WriteCopy(), fewKilobytes);
  }
}

}  // namespace
}  // namespace utdata::test
