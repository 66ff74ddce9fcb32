// A link from one data item to another that never follows an item that has gone.
//
// Every live data item is known to the process by its address and a serial number that is given
// once. A link keeps both: it answers null once its item is destroyed, whatever stands at the
// address then. Links own nothing. Following, copying and assigning a link is free of data races
// whatever other threads do to it; who follows one sees to it that the item outlives the use (a
// file set's lock).
#pragma once

#include <atomic>
#include <cstdint>

#include "interfaces/export.h"

class CIData;  // of the layer above, whose items own what holds the links

namespace utdata {

/// A data item's place among those that live: the member that is made before the others.
class UTDATA_API LiveDataItem {
 public:
  explicit LiveDataItem(CIData* item);
  LiveDataItem(const LiveDataItem&) = delete;
  LiveDataItem& operator=(const LiveDataItem&) = delete;
  ~LiveDataItem() { End(); }

  /// The item ceases to live. @return whether it lived until now
  bool End() noexcept;
  /// Whether a data item lives at an address, which is not read. Any thread.
  [[nodiscard]] static bool IsLive(const CIData* item);

 private:
  const CIData* m_item;  ///< null once it has ceased to live
};

class UTDATA_API DataItemLink {
 public:
  DataItemLink() = default;
  /// @param item null, or any address: one at which no data item lives makes an empty link
  explicit DataItemLink(CIData* item);
  DataItemLink(const DataItemLink& other) noexcept { *this = other; }
  DataItemLink& operator=(const DataItemLink& other) noexcept;
  DataItemLink& operator=(CIData* item) { return *this = DataItemLink(item); }
  ~DataItemLink() = default;

  /// The item while it lives, else null.
  [[nodiscard]] CIData* Get() const;

 private:
  // A reader that meets a link between its two halves finds a serial number that is not the
  // address's, and answers null.
  std::atomic<CIData*> m_item{nullptr};
  std::atomic<std::uint64_t> m_serial{0};  ///< 0: none
};

}  // namespace utdata
