#include "utdata/fileadjuster.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace {

/// The cell offsets of a table with storage mode 1. The quantity is a signed 32-bit product: a
/// negative one means none.
std::span<std::uint32_t> CellOffsets(const CRDataTypeDD& descriptor) {
  if (descriptor.GetStorageMode() != kvt_StorIndexed) return {};
  const auto cells = static_cast<std::int32_t>(descriptor.GetColQty() * descriptor.GetRowQty());
  const std::uint64_t held = descriptor.KnownTableSize() / sizeof(std::uint32_t);
  return {descriptor.GetDiskTable(),
          static_cast<std::size_t>(
              std::min<std::uint64_t>(static_cast<std::uint64_t>(std::max(cells, 0)), held))};
}

void Shift(CList<CRDataTypeDD*>& descriptors,
           std::uintptr_t pointerShift,
           std::uint32_t offsetShift) {
  for (CRDataTypeDD* descriptor : descriptors) {
    if (!descriptor || !descriptor->GetDiskTable()) continue;
    descriptor->dataPointer = reinterpret_cast<void*>(
        reinterpret_cast<std::uintptr_t>(descriptor->GetDiskTable()) - pointerShift);
    for (std::uint32_t& offset : CellOffsets(*descriptor))
      if (offset != 0) offset += offsetShift;
  }
}

}  // namespace

void CFileAdjuster::FileAdjust(CList<CRDataTypeDD*>& descriptors, void* base) {
  const auto address = reinterpret_cast<std::uintptr_t>(base);
  Shift(descriptors, address, 0u - static_cast<std::uint32_t>(address & 0xFFFFFFFFu));
}

void CFileAdjuster::FileUnadjust(CList<CRDataTypeDD*>& descriptors, void* base) {
  Shift(descriptors,
        0,
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(base) & 0xFFFFFFFFu));
}
