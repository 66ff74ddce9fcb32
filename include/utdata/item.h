// The item pattern, documented once: what a file set keeps of one descriptor group.
//
// An item refers to the descriptor it was made from (its file side, not owned), owns a working copy
// that callers read and edit, and carries a modified flag. An item without a file side is new. What
// has changed is the difference between the working copy and the file side.
//
// Locks. Each item has a recursive lock of its own and takes no other: SetInfoCopy, ReplaceGInfo,
// OnLineUpdate, setters and status operations exclude each other, whatever the file set is doing.
// Copies and ids are read in one piece while another thread edits. A pointer that was handed out is
// not protected once the call has returned.
//
// Memory. Construction and whatever copies a record may let std::bad_alloc pass, and then have
// changed nothing; a caller's own record that was to receive a copy may hold part of it.
//
// A file set finds items by the ids they have at that moment, however they were changed. It keeps
// an index for that; an item whose working copy was handed out for writing (GetInfoRef, ModifGet)
// is looked at in every look-up from then on, since its ids may change unnoticed. In a set of many
// thousand items a host therefore reads with GetId, GetName and GetInfoCopy, and edits with
// SetInfoCopy.
#pragma once

#include <cstdint>
#include <memory>

#include "interfaces/framework.h"
#include "interfaces/kvtiff19.h"

namespace utdata {

struct ItemAccess;
struct ItemPlace;

/// An object that a file set can hold and find.
class UTDATA_API PlacedItem : public CObject {
 public:
  PlacedItem(const PlacedItem&) = delete;
  PlacedItem& operator=(const PlacedItem&) = delete;
  ~PlacedItem() override;

 protected:
  PlacedItem();
  /// For what keeps more beside its place.
  explicit PlacedItem(std::unique_ptr<ItemPlace> place);
  /// Whoever calls this is about to give a pointer away through which ids can be changed.
  void HandOut() const;

 private:
  friend struct ItemAccess;

  const std::unique_ptr<ItemPlace> m_place;
};

/// The pattern. An item class gives its exported names to these operations and adds what it does
/// differently. Null pointers are reported and change nothing.
template <class Descriptor>
class Item : public PlacedItem {
 public:
  ~Item() override;

 protected:
  /// @param descriptor content of the working copy. With isNew 0 it becomes the file side and has
  ///                   to outlive the item, else nothing refers to it afterwards. Null is reported
  ///                   and makes a new item with an empty working copy.
  Item(Descriptor* descriptor, int isNew);

  /// The working copy, owned by the item, to be written.
  [[nodiscard]] Descriptor* InfoRef() const;
  void CopyInfo(Descriptor* out) const;
  /// Assigns a record that differs to the working copy and marks the item as modified; an equal one
  /// changes nothing.
  void SetInfo(const Descriptor* in);
  /// The file side, owned by whoever made the item; null for a new item.
  [[nodiscard]] Descriptor* FileSide() const;
  /// Whether there is a file side to copy; `out` is left alone when there is none.
  bool CopyFileSide(Descriptor* out) const;
  /// Copies a record into the file side and from there into the working copy; of a new item into
  /// the working copy alone, and the item stays new. The modified flag stays as it is.
  void Replace(const Descriptor* source);
  /// Makes a caller's record the file side, and the working copy equal to it.
  void Adopt(Descriptor* fileSide);
  /// Always 0. The working copy, to be written, and the file side.
  std::uint32_t GetBoth(Descriptor** working, Descriptor** fileSide) const;

  [[nodiscard]] bool IsModified() const;
  /// Without the lock.
  void SetModified(bool modified);
  /// Once a change under way is done.
  void SetModifiedLocked(bool modified);
  [[nodiscard]] bool IsNew() const;

 private:
  friend struct ItemAccess;
  struct State;

  [[nodiscard]] State& Inside() const;
};

extern template class UTDATA_API Item<CGChanTypeDescr>;
extern template class UTDATA_API Item<CGGateTypeDescr>;
extern template class UTDATA_API Item<CGInfoTypeDescr>;
extern template class UTDATA_API Item<CGPatchTypeDescr>;
extern template class UTDATA_API Item<CGProbeTypeDescr>;
extern template class UTDATA_API Item<CGSpecmatTypeDescr>;
extern template class UTDATA_API Item<CGSubchanTypeDescr>;

}  // namespace utdata
