// What an item keeps for the file set that holds it: its ids as look-ups read them, and where it
// stands there.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "interfaces/framework.h"
#include "utdata/item.h"

class CIData;
class CRDataTypeDD;

namespace utdata {

inline constexpr std::size_t mostIds = 6;  ///< by which a look-up finds items of one kind

/// Ids that one thread at a time writes and any thread reads, in one piece and without a lock.
class PublishedIds {
 public:
  template <std::size_t quantity>
  [[nodiscard]] std::array<std::uint32_t, quantity> Load() const {
    static_assert(quantity <= mostIds);
    for (;;) {
      const std::uint32_t before = m_version.load(std::memory_order_acquire);
      std::array<std::uint32_t, quantity> ids;
      for (std::size_t index = 0; index < quantity; ++index)
        ids[index] = m_ids[index].load(std::memory_order_acquire);
      // Whoever has read an id of a write under way sees the version of that write here.
      if (before % 2 == 0 && m_version.load(std::memory_order_relaxed) == before) return ids;
    }
  }

  /// The first ones, before any other thread knows of them.
  template <std::size_t quantity>
  void Begin(const std::array<std::uint32_t, quantity>& ids) {
    for (std::size_t index = 0; index < quantity; ++index)
      m_ids[index].store(ids[index], std::memory_order_relaxed);
  }

  /// @return whether an id has changed
  template <std::size_t quantity>
  bool Store(const std::array<std::uint32_t, quantity>& ids) {
    if (Load<quantity>() == ids) return false;
    const std::uint32_t before = m_version.load(std::memory_order_relaxed);
    m_version.store(before + 1, std::memory_order_relaxed);
    for (std::size_t index = 0; index < quantity; ++index)
      m_ids[index].store(ids[index], std::memory_order_release);
    m_version.store(before + 2, std::memory_order_release);
    return true;
  }

 private:
  std::atomic<std::uint32_t> m_version{0};  ///< odd while a write is under way
  std::array<std::atomic<std::uint32_t>, mostIds> m_ids{};
};

/// The list of a file set that an item is in: its home.
class ItemHome {
 public:
  /// From here on the item's ids may differ from those that it is filed under. Any thread, with the
  /// item's lock or without.
  virtual void NoteChange(PlacedItem& item) noexcept = 0;

 protected:
  ~ItemHome() = default;
};

struct ItemPlace {
  virtual ~ItemPlace() = default;

  /// Those of the working copy, in the order of the list's lookups; out of date once the working
  /// copy was handed out. Written under the item's lock.
  PublishedIds ids;
  std::atomic<bool> isHandedOut{false};  ///< the working copy; stays so
  std::atomic<bool> isHomeTold{false};   ///< whether the home was notified of that
  std::atomic<ItemHome*> home{nullptr};  ///< null: in no file set

  /// Where its home looks for it.
  enum class Filing : std::uint8_t {
    None,
    InTables,  ///< under `filedIds`
    Loose      ///< among those that every look-up looks at
  };

  // The home's own.
  Filing filing = Filing::None;
  bool isWaiting = false;       ///< in the chain of items to be filed anew
  POSITION position = nullptr;  ///< in the list
  std::uint64_t order = 0;      ///< grows along the list
  std::array<std::uint32_t, mostIds> filedIds{};
  PlacedItem* nextWaiting = nullptr;
  bool isLeaving = false;  ///< in the chain of items that are being taken out
  PlacedItem* nextLeaving = nullptr;
};

/// Access to what items hide from hosts.
struct ItemAccess {
  [[nodiscard]] static ItemPlace& PlaceOf(const PlacedItem& item) { return *item.m_place; }

  /// After a change of the working copy, under the item's lock.
  template <std::size_t quantity>
  static void PublishIds(PlacedItem& item, const std::array<std::uint32_t, quantity>& ids) {
    ItemPlace& place = *item.m_place;
    if (!place.ids.Store(ids)) return;
    if (ItemHome* const home = place.home.load()) home->NoteChange(item);
  }

  /// To be written, ids aside; null in a bare item.
  [[nodiscard]] static CRDataTypeDD* DescriptorOf(const CIData& item);

  /// What sets the TOFD flag of an item that has a record.
  static void TakeTofdFlag(CIData& item, std::int32_t tofd);

  template <class Descriptor>
  [[nodiscard]] static auto& StateOf(const Item<Descriptor>& item) {
    return item.Inside();
  }
  template <class Descriptor>
  [[nodiscard]] static bool IsModified(const Item<Descriptor>& item) {
    return item.IsModified();
  }
  template <class Descriptor>
  [[nodiscard]] static bool IsNew(const Item<Descriptor>& item) {
    return item.IsNew();
  }
};

}  // namespace utdata
