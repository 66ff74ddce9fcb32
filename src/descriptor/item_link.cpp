#include "src/descriptor/item_link.h"

#include <atomic>

namespace utdata {

namespace {

std::atomic<const ItemLink*> itemLink{nullptr};

}  // namespace

const ItemLink* SetItemLink(const ItemLink* link) noexcept { return itemLink.exchange(link); }

CRDataTypeDD* DescriptorOfLiveItem(CIData* item) {
  const ItemLink* const link = itemLink.load();
  return item && link && link->isLive(item) ? link->descriptor(item) : nullptr;
}

}  // namespace utdata
