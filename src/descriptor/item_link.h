// What a descriptor needs of data items, which stand a floor above it: the items register how they are read.
#pragma once

class CIData;
class CRDataTypeDD;

namespace utdata {

struct ItemLink {
  bool (*isLive)(CIData* item);  ///< whether `item` is a data item that still lives; may be asked of any address
  CRDataTypeDD* (*descriptor)(CIData* item);  ///< of a live item; may be null
};

/// Registers how items are read and returns what was registered before. `link` must outlive its use; null registers nothing: no item
/// is live then. For the items' own initialisation, and tests; any thread.
const ItemLink* SetItemLink(const ItemLink* link) noexcept;

/// The descriptor of `item` when it is a live data item that has one, else null. Null is allowed.
[[nodiscard]] CRDataTypeDD* DescriptorOfLiveItem(CIData* item);

}  // namespace utdata
