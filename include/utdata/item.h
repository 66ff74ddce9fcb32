// The item pattern, told once: what a file set keeps of one descriptor group.
//
// An item refers to the descriptor it was made from (its file side, not owned), owns a working copy
// that callers read and edit, and carries a modified flag. An item without a file side is new. The
// pair of both tells what changed.
//
// Locks. Each item has a recursive lock of its own; it orders the item's changes and status
// operations among each other. A change of the whole working copy (SetInfoCopy, ReplaceGInfo,
// OnLineUpdate) of an item in a file set also holds that set's writer side, taken before the item's
// own lock, so that no query meets half a change. Reads of the working copy take no lock: who reads
// while others change relies on the file set's queries. A pointer handed out is not guarded once
// the call has returned.
//
// What a host may not do: change the ids in a working copy through the pointers that GetInfoRef and
// ModifGet return. The file set finds items by their ids; SetInfoCopy is the way to change them.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "interfaces/framework.h"
#include "interfaces/kvtiff19.h"
#include "interfaces/thread_safety.h"

namespace utdata {

class PlacedItem;

/// What an item asks of the file set that holds it.
class ItemHome {
 public:
  /// Takes the writer side.
  virtual void BeginEdit() = 0;
  /// Files the item under its present ids and releases the writer side.
  virtual void EndEdit(PlacedItem& item) = 0;

 protected:
  ~ItemHome() = default;
};

/// Where an item stands in a file set. Written by its home alone, under the writer side.
struct ItemPlace {
  ItemHome* home = nullptr;     ///< null: in no file set
  POSITION position = nullptr;  ///< in the home's list
  std::uint64_t order = 0;      ///< grows along the home's list
  std::array<std::uint32_t, 6>
      ids{};  ///< that it is filed under, in the order of the list's lookups
};

/// An object that a file set can hold and find.
class UTDATA_API PlacedItem : public CObject {
 protected:
  /// Surrounds a change of what queries of the file set read; nothing for an item in no file set.
  class HomeScope {
   public:
    explicit HomeScope(PlacedItem& item) : m_item(item) {
      if (m_item.m_place.home) m_item.m_place.home->BeginEdit();
    }
    ~HomeScope() {
      if (m_item.m_place.home) m_item.m_place.home->EndEdit(m_item);
    }
    HomeScope(const HomeScope&) = delete;
    HomeScope& operator=(const HomeScope&) = delete;

   private:
    PlacedItem& m_item;
  };

  PlacedItem() = default;
  PlacedItem(const PlacedItem&) = delete;
  PlacedItem& operator=(const PlacedItem&) = delete;

 private:
  template <class List>
  friend class IndexedItemList;

  ItemPlace m_place;
};

/// The pattern. An item class gives its exported names to these operations and adds what it does
/// differently.
/// @tparam duplicate the file layer's operation that makes one descriptor equal to another
/// @tparam release   the file layer's operation that empties a descriptor; null where the pattern
///   leaves it to the destructor
template <class Descriptor, int (*duplicate)(Descriptor*, const Descriptor*), auto release>
class Item : public PlacedItem {
 public:
  void AssertValid() const override { UTDATA_ASSERT(m_working != nullptr); }

  ~Item() override { EmptyWorkingCopy(); }

 protected:
  /// @param descriptor content of the working copy. With isNew 0 it becomes the file side and has
  ///                   to outlive the item, else nothing refers to it afterwards. Null is reported
  ///                   and makes a new item with an empty working copy.
  Item(Descriptor* descriptor, int isNew)
      : m_fileSide(isNew ? nullptr : descriptor), m_working(std::make_unique<Descriptor>()) {
    if (Given(descriptor)) duplicate(m_working.get(), descriptor);
  }

  /// The working copy, owned by the item.
  [[nodiscard]] Descriptor* InfoRef() const { return m_working.get(); }

  void CopyInfo(Descriptor* out) const {
    if (Given(out)) *out = *m_working;
  }

  /// Assigns a record that differs to the working copy and marks the item as modified; an equal one
  /// changes nothing.
  void SetInfo(const Descriptor* in) {
    if (!Given(in)) return;
    const HomeScope home(*this);
    const MutexScope lock(m_lock);
    if (*in == *m_working) return;
    m_modified = true;
    *m_working = *in;
  }

  /// The file side, owned by whoever made the item; null for a new item.
  [[nodiscard]] Descriptor* FileSide() const { return m_fileSide; }

  /// Whether there is a file side to copy; `out` is left alone when there is none.
  bool CopyFileSide(Descriptor* out) const {
    const Descriptor* fileSide = m_fileSide;
    if (!fileSide || !Given(out)) return false;
    *out = *fileSide;
    return true;
  }

  /// Copies a record into the file side and from there into the working copy; of a new item into
  /// the working copy alone, and the item stays new. The modified flag stays as it is. Null is
  /// reported and changes nothing.
  void Replace(const Descriptor* source) {
    if (!Given(source)) return;
    const HomeScope home(*this);
    const MutexScope lock(m_lock);
    Descriptor* fileSide = m_fileSide;
    if (fileSide) *fileSide = *source;
    Renew(fileSide ? fileSide : source);
  }

  /// Makes a caller's record the file side, and the working copy equal to it.
  void Adopt(Descriptor* fileSide) {
    if (!Given(fileSide)) return;
    const HomeScope home(*this);
    const MutexScope lock(m_lock);
    m_fileSide = fileSide;
    Renew(fileSide);
  }

  std::uint32_t GetBoth(Descriptor** working, Descriptor** fileSide) const {
    const MutexScope lock(m_lock);
    if (Given(working)) *working = m_working.get();
    if (Given(fileSide)) *fileSide = m_fileSide;
    return 0;
  }

  [[nodiscard]] bool IsModified() const {
    const MutexScope lock(m_lock);
    return m_modified;
  }
  /// Without the lock.
  void SetModified(bool modified) { m_modified = modified; }
  /// Once a change under way is done.
  void SetModifiedLocked(bool modified) {
    const MutexScope lock(m_lock);
    m_modified = modified;
  }
  [[nodiscard]] bool IsNew() const {
    const MutexScope lock(m_lock);
    return !m_fileSide;
  }

  /// Whether a pointer was given; a missing one is reported.
  template <class Value>
  [[nodiscard]] static bool Given(const Value* pointer) {
    UTDATA_ASSERT(pointer != nullptr);
    return pointer != nullptr;
  }

  [[nodiscard]] RecursiveMutex& Lock() const { return m_lock; }

 private:
  void EmptyWorkingCopy() {
    if constexpr (!std::is_null_pointer_v<decltype(release)>) release(m_working.get(), 0);
  }

  void Renew(const Descriptor* source) {
    if (source == m_working.get()) return;
    EmptyWorkingCopy();
    duplicate(m_working.get(), source);
  }

  mutable RecursiveMutex m_lock;
  std::atomic<Descriptor*> m_fileSide;
  const std::unique_ptr<Descriptor> m_working;
  std::atomic<bool> m_modified{false};
};

}  // namespace utdata
