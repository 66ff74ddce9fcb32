#include "utdata/fileadjuster.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/support/report_capture.h"

namespace {

TEST(FileAdjuster, RelocatesOffsetsAndBack) {
  std::array<std::uint32_t, 6> table = {0, 5, 0x12345678, 0, 0xFFFFFFFF, 77};
  const auto before = table;
  CRDataTypeDD indexed;
  indexed.storageMode = kvt_StorIndexed;
  indexed.columnQuantity = 5;
  indexed.rowQuantity = 1;
  indexed.SetDiskTable(reinterpret_cast<char*>(table.data()), true);
  std::array<std::uint32_t, 2> samples = {1, 2};
  CRDataTypeDD cells;
  cells.columnQuantity = 2;
  cells.rowQuantity = 1;
  cells.SetDiskTable(reinterpret_cast<char*>(samples.data()), true);
  CRDataTypeDD none;
  int marker = 0;
  none.dataPointer = &marker;

  CList<CRDataTypeDD*> list;
  for (CRDataTypeDD* descriptor : {&none, &indexed, &cells, static_cast<CRDataTypeDD*>(nullptr)})
    list.AddTail(descriptor);
  void* const base = reinterpret_cast<void*>(std::uintptr_t{0x7F00'9000'0010});
  const auto address = [](const auto& values) {
    return reinterpret_cast<std::uintptr_t>(values.data());
  };

  CFileAdjuster adjuster;
  adjuster.FileAdjust(list, base);
  EXPECT_EQ(table,
            (std::array<std::uint32_t, 6>{
                0, 5 - 0x90000010u, 0x12345678 - 0x90000010u, 0, 0xFFFFFFFF - 0x90000010u, 77}));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(indexed.dataPointer), address(table) - 0x7F0090000010);
  EXPECT_EQ(samples, (std::array<std::uint32_t, 2>{1, 2})) << "samples, not offsets";
  EXPECT_EQ(none.dataPointer, &marker);

  adjuster.FileUnadjust(list, base);
  EXPECT_EQ(table, before);
  EXPECT_EQ(indexed.dataPointer, table.data());
  EXPECT_EQ(cells.dataPointer, samples.data());
}

void Shift(CRDataTypeDD& descriptor) {
  CList<CRDataTypeDD*> list;
  list.AddTail(&descriptor);
  CFileAdjuster().FileUnadjust(list, reinterpret_cast<void*>(std::uintptr_t{1}));
}

CRDataTypeDD* Indexed(std::uint32_t columns) {
  CGDataTypeFDD record;
  record.storageMode = kvt_StorIndexed;
  record.columnQuantity = columns;
  record.rowQuantity = 1;
  record.dataSize = record.samples.size = 8;  // of the block that the group has in its file
  record.samples.offset = 4096;
  return new CRDataTypeDD(&record, nullptr, nullptr);
}

TEST(FileAdjuster, ShiftsEveryOffsetWhateverTheRecordSaysOfItsBlock) {
  std::array<std::uint32_t, 3> table = {1, 2, 3};
  CRDataTypeDD* const descriptor = Indexed(3);
  descriptor->SetDiskTable(reinterpret_cast<char*>(table.data()), true);
  Shift(*descriptor);
  EXPECT_EQ(table, (std::array<std::uint32_t, 3>{2, 3, 4}));
  descriptor->SetDiskTable(reinterpret_cast<char*>(~std::uintptr_t{0}), true);
  Shift(*descriptor);  // nothing is there to shift
  descriptor->Destroy();
}

// Quantities that were changed after the table was attached: it ends before the offsets do, and
// their product is negative.
TEST(FileAdjuster, StaysWithinTheTableAndReportsWhatIsMissing) {
  std::array<std::uint32_t, 3> table = {1, 2, 3};
  CRDataTypeDD* const descriptor = Indexed(2);
  descriptor->SetDiskTable(reinterpret_cast<char*>(table.data()), true, 8);
  descriptor->columnQuantity = descriptor->rowQuantity = 1000;
  utdata::test::ReportCapture reports;
  Shift(*descriptor);
  EXPECT_EQ(table, (std::array<std::uint32_t, 3>{2, 3, 3}));
  EXPECT_EQ(reports.Assertions(), 1u);
  descriptor->columnQuantity = 0x80000000;
  descriptor->rowQuantity = 1;
  Shift(*descriptor);
  EXPECT_EQ(table, (std::array<std::uint32_t, 3>{2, 3, 3}));
  descriptor->Destroy();
}

}  // namespace
