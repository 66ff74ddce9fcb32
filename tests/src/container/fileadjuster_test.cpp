#include "utdata/fileadjuster.h"

#include <gtest/gtest.h>

#include <array>

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
  for (CRDataTypeDD* descriptor : {&none, &indexed, &cells}) list.AddTail(descriptor);
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

// Quantities that were changed after the table was attached: it ends before the cells do, and their
// product is negative.
TEST(FileAdjuster, StaysWithinWhatTheRecordKnowsOfTheTable) {
  std::array<std::uint32_t, 3> table = {1, 2, 3};
  CRDataTypeDD descriptor;
  descriptor.storageMode = kvt_StorIndexed;
  descriptor.columnQuantity = 2;
  descriptor.rowQuantity = 1;
  descriptor.dataSize = 8;
  descriptor.SetDiskTable(reinterpret_cast<char*>(table.data()), true);
  descriptor.columnQuantity = descriptor.rowQuantity = 1000;
  CList<CRDataTypeDD*> list;
  list.AddTail(&descriptor);
  CFileAdjuster().FileUnadjust(list, reinterpret_cast<void*>(std::uintptr_t{1}));
  EXPECT_EQ(table, (std::array<std::uint32_t, 3>{2, 3, 3}));
  descriptor.columnQuantity = 0x80000000;
  descriptor.rowQuantity = 1;
  CFileAdjuster().FileUnadjust(list, reinterpret_cast<void*>(std::uintptr_t{1}));
  EXPECT_EQ(table, (std::array<std::uint32_t, 3>{2, 3, 3}));
}

}  // namespace
