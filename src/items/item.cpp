// The item pattern.
#include "utdata/item.h"

#include <new>
#include <type_traits>
#include <utility>

#include "src/items/itemstate.h"

namespace utdata {

namespace {

/// Of each descriptor, the file layer's operation that makes one equal to another, and the one that
/// empties it; null where the pattern leaves that to the destructor.
template <class Descriptor>
struct Family;

template <auto duplicateOperation, auto releaseOperation>
struct FamilyOf {
  static constexpr auto duplicate = duplicateOperation;
  static constexpr auto release = releaseOperation;
};

// clang-format off
template <> struct Family<CGChanTypeDescr> : FamilyOf<gchan_Duplicate, gchan_Delete> {};
template <> struct Family<CGGateTypeDescr> : FamilyOf<ggate_Duplicate, nullptr> {};
template <> struct Family<CGInfoTypeDescr> : FamilyOf<ginfo_Duplicate, ginfo_Delete> {};
template <> struct Family<CGPatchTypeDescr> : FamilyOf<gpatch_Duplicate, gpatch_Delete> {};
template <> struct Family<CGProbeTypeDescr> : FamilyOf<gprobe_Duplicate, gprobe_Delete> {};
template <> struct Family<CGSpecmatTypeDescr> : FamilyOf<gspecmat_Duplicate, gspecmat_Delete> {};
template <> struct Family<CGSubchanTypeDescr> : FamilyOf<gsubchan_Duplicate, gsubchan_Delete> {};
// clang-format on

/// All of it or, without memory, nothing.
template <class Descriptor>
void Duplicate(Descriptor& target, const Descriptor& source) {
  if (Family<Descriptor>::duplicate(&target, &source) != SCFile::status_Ok) throw std::bad_alloc();
}

template <class Descriptor>
void Empty(Descriptor& descriptor) {
  if constexpr (!std::is_null_pointer_v<decltype(Family<Descriptor>::release)>)
    Family<Descriptor>::release(&descriptor, 0);
}

}  // namespace

PlacedItem::PlacedItem() : m_place(std::make_unique<ItemPlace>()) {}

PlacedItem::PlacedItem(std::unique_ptr<ItemPlace> place) : m_place(std::move(place)) {}

PlacedItem::~PlacedItem() = default;

// The list is notified before any call returns the pointer, also one on a second thread while the
// first is under way. A list that the item is added to meanwhile sees the flag, or is seen here.
void PlacedItem::HandOut() const {
  ItemPlace& place = *m_place;
  if (place.isHomeTold.load(std::memory_order_acquire)) return;
  place.isHandedOut.store(true);
  ItemHome* const home = place.home.load();
  if (!home) return;
  home->NoteChange(const_cast<PlacedItem&>(*this));
  place.isHomeTold.store(true, std::memory_order_release);
}

template <class Descriptor>
Item<Descriptor>::Item(Descriptor* descriptor, int isNew)
    : PlacedItem(std::make_unique<State>(isNew ? nullptr : descriptor)) {
  if (!Given(descriptor)) return;
  Duplicate(Inside().working, *descriptor);
  ItemAccess::PlaceOf(*this).ids.Begin(IdsOf(Inside().working));
}

template <class Descriptor>
Item<Descriptor>::~Item() {
  Empty(Inside().working);
}

template <class Descriptor>
typename Item<Descriptor>::State& Item<Descriptor>::Inside() const {
  return static_cast<State&>(ItemAccess::PlaceOf(*this));
}

template <class Descriptor>
Descriptor* Item<Descriptor>::InfoRef() const {
  HandOut();
  return &Inside().working;
}

template <class Descriptor>
void Item<Descriptor>::CopyInfo(Descriptor* out) const {
  if (Given(out)) ReadWorkingCopy(*this, [out](const Descriptor& working) { *out = working; });
}

template <class Descriptor>
void Item<Descriptor>::SetInfo(const Descriptor* in) {
  if (!Given(in)) return;
  const MutexScope lock(Inside().lock);
  if (*in == Inside().working) return;
  Descriptor next(*in);  // all of it or, without memory, nothing
  Inside().isModified = true;
  Inside().working = std::move(next);
  ItemAccess::PublishIds(*this, IdsOf(Inside().working));
}

template <class Descriptor>
Descriptor* Item<Descriptor>::FileSide() const {
  return Inside().fileSide;
}

template <class Descriptor>
bool Item<Descriptor>::CopyFileSide(Descriptor* out) const {
  if (IsNew() || !Given(out)) return false;
  const MutexScope lock(Inside().lock);
  *out = *Inside().fileSide;
  return true;
}

template <class Descriptor>
void Item<Descriptor>::Replace(const Descriptor* source) {
  if (!Given(source)) return;
  const MutexScope lock(Inside().lock);
  Descriptor next(*source);
  if (Descriptor* const fileSide = Inside().fileSide) Duplicate(*fileSide, *source);
  Inside().working = std::move(next);
  ItemAccess::PublishIds(*this, IdsOf(Inside().working));
}

template <class Descriptor>
void Item<Descriptor>::Adopt(Descriptor* fileSide) {
  if (!Given(fileSide)) return;
  const MutexScope lock(Inside().lock);
  Duplicate(Inside().working, *fileSide);
  Inside().fileSide = fileSide;
  ItemAccess::PublishIds(*this, IdsOf(Inside().working));
}

template <class Descriptor>
std::uint32_t Item<Descriptor>::GetBoth(Descriptor** working, Descriptor** fileSide) const {
  if (Given(working)) *working = InfoRef();
  if (!Given(fileSide)) return 0;
  const MutexScope lock(Inside().lock);
  *fileSide = Inside().fileSide;
  return 0;
}

template <class Descriptor>
bool Item<Descriptor>::IsModified() const {
  const MutexScope lock(Inside().lock);
  return Inside().isModified;
}

template <class Descriptor>
void Item<Descriptor>::SetModified(bool modified) {
  Inside().isModified = modified;
}

template <class Descriptor>
void Item<Descriptor>::SetModifiedLocked(bool modified) {
  const MutexScope lock(Inside().lock);
  Inside().isModified = modified;
}

template <class Descriptor>
bool Item<Descriptor>::IsNew() const {
  const MutexScope lock(Inside().lock);
  return !Inside().fileSide;
}

template class Item<CGChanTypeDescr>;
template class Item<CGGateTypeDescr>;
template class Item<CGInfoTypeDescr>;
template class Item<CGPatchTypeDescr>;
template class Item<CGProbeTypeDescr>;
template class Item<CGSpecmatTypeDescr>;
template class Item<CGSubchanTypeDescr>;

}  // namespace utdata
