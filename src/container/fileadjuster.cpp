#include "utdata/fileadjuster.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace {

/// The cell offsets of a table with storage mode 1. The quantity is a signed 32-bit product: a
/// negative one means none. Offsets that a table of known size does not hold are reported and left
/// out.
std::span<std::uint32_t> CellOffsets(const CRDataTypeDD& descriptor) {
  if (descriptor.GetStorageMode() != kvt_StorIndexed || !descriptor.HasTable()) return {};
  const auto quantity = static_cast<std::int32_t>(descriptor.GetColQty() * descriptor.GetRowQty());
  std::uint64_t cells = static_cast<std::uint32_t>(std::max(quantity, 0));
  if (const std::uint64_t known = descriptor.KnownTableSize(); known != 0) {
    const std::uint64_t held = known / sizeof(std::uint32_t);
    UTDATA_ASSERT(cells <= held);
    cells = std::min(cells, held);
  }
  return {descriptor.GetDiskTable(), static_cast<std::size_t>(cells)};
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
