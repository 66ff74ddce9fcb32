// The inside of the item pattern.
#pragma once

#include <atomic>
#include <tuple>

#include "interfaces/framework.h"
#include "interfaces/thread_safety.h"
#include "src/items/itemplace.h"
#include "src/items/recordids.h"
#include "utdata/item.h"

namespace utdata {

/// Whether a pointer was given; a missing one is reported.
template <class Value>
[[nodiscard]] bool Given(const Value* pointer) {
  UTDATA_ASSERT(pointer != nullptr);
  return pointer != nullptr;
}

template <class Descriptor>
struct UTDATA_LOCAL Item<Descriptor>::State final : ItemPlace {
  explicit State(Descriptor* source) : fileSide(source) {}

  mutable RecursiveMutex lock;  ///< taken after a file set's; nothing of the host runs under it
  std::atomic<Descriptor*> fileSide;
  Descriptor working;  ///< written under the lock, and by whoever it was handed out to
  std::atomic<bool> isModified{false};
};

/// What `read(const Descriptor&)` answers of an item's working copy, in one piece.
template <class Descriptor, class Read>
auto ReadWorkingCopy(const Item<Descriptor>& item, Read read) {
  const auto& state = ItemAccess::StateOf(item);
  const MutexScope lock(state.lock);
  return read(state.working);
}

/// Puts an item's working copy back as it was.
template <class Descriptor>
void RestoreWorkingCopy(Item<Descriptor>& item, Descriptor&& record, bool isModified) noexcept {
  auto& state = ItemAccess::StateOf(item);
  const MutexScope lock(state.lock);
  state.working = std::move(record);
  state.isModified = isModified;
  ItemAccess::PublishIds(item, IdsOf(state.working));
}

/// The ids that an item has now, in the order of its list's look-ups.
template <class Descriptor>
[[nodiscard]] auto IdsOf(const Item<Descriptor>& item) {
  using Ids = decltype(IdsOf(ItemAccess::StateOf(item).working));
  const ItemPlace& place = ItemAccess::PlaceOf(item);
  if (!place.isHandedOut.load()) return place.ids.template Load<std::tuple_size_v<Ids>>();
  return ReadWorkingCopy(item, [](const Descriptor& working) { return IdsOf(working); });
}

}  // namespace utdata
