// Values that every lookup shares: status filters, the wildcard id, the gate-number rule, and the
// id and name records that items fill. Data classes, bookmark types, axes and sample types are
// those of the file-format layer.
#pragma once

#include <cstdint>

#include "interfaces/export.h"
#include "interfaces/kvtiff19_types.h"

/// Which items a lookup of a file set considers, by their status.
enum fset_enumFilters : std::uint32_t {
  fset_All = 0,
  fset_Modified = 1,  ///< items whose modified flag is set
  fset_New = 2        ///< items without a group of the file behind them
};

/// The same for the specimen.
enum spec_enumFilters : std::uint32_t { spec_All = 0, spec_Modified = 1, spec_New = 2 };

/// Matches every id and every data class in a lookup. A bookmark type is matched by 0 instead.
inline constexpr std::uint32_t fset_AnyId = 0xFFFFFFFF;

/// Identity of a data item.
struct idata_typeId {
  std::uint32_t patchId = 0;
  std::uint32_t channelId = 0;
  std::uint32_t subChannelId = 0;  ///< 0: not a sub-channel group
  std::uint32_t gateId = 0;        ///< gate number plus multiples of 2000
  gdata_enumDataClass dataClass = gdata_enumDataClass{0};
  eDataBookmarkType bookmarkType = bookmark_None;
};

struct ichan_id {
  std::uint32_t channelId = 0;
};

struct igate_id {
  std::uint32_t gateId = 0;
  std::uint32_t channelId = 0;
};

struct ischa_id {
  std::uint32_t subChannelId = 0;
  std::uint32_t channelId = 0;
};

struct iprob_id {
  std::uint32_t probeId = 0;
};

class CIPatchTypeId {
 public:
  CIPatchTypeId() = default;
  std::uint32_t patchId = 0;
};

// Name records point at the terminated text inside an item's working copy: valid while the item
// lives and until that copy is replaced.

struct ichan_name {
  const wchar_t* name = nullptr;
};

struct iprob_name {
  const wchar_t* name = nullptr;
};

struct ischa_name {
  const wchar_t* name = nullptr;
};

/// Non-zero for a class of A-scans. The multi-channel-master bit is not cleared first: a master is
/// none.
[[nodiscard]] UTDATA_API std::int32_t enum_IsAscanData(gdata_enumDataClass dataClass);
/// Non-zero for a class of C-scans, tested as by enum_IsAscanData.
[[nodiscard]] UTDATA_API std::int32_t enum_IsCscanData(gdata_enumDataClass dataClass);

namespace utdata {

/// The gate that a gate id means: ids of one gate differ by multiples of 2000.
[[nodiscard]] constexpr std::uint32_t GateNumber(std::uint32_t gateId) { return gateId % 2000; }

}  // namespace utdata
