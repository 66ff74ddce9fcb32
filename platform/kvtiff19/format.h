// The byte layout of an inspection file, as docs/file-format.md draws it: its constants, its fixed
// records, and their coding.
//
// Everything here is a value or a pure function; any thread may use it.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "interfaces/kvtiff19.h"

namespace utdata::kvtiff19 {

using Bytes = std::span<const std::byte>;

inline constexpr std::uint64_t pageSize = 4096;
inline constexpr std::uint64_t headerOffset = 0;
inline constexpr std::array<std::uint64_t, 2> slotOffsets = {pageSize, 2 * pageSize};
inline constexpr std::uint64_t dataStart = 3 * pageSize;

// Before 1.0 a reader takes its own version only.
inline constexpr std::uint16_t majorVersion = 0;
inline constexpr std::uint16_t minorVersion = 9;

inline constexpr unsigned maxDepth = 16;  ///< groups inside each other, the top group counted
inline constexpr std::size_t maxNameLength = 32767;            ///< characters of a group's name
inline constexpr std::size_t maxNameSize = 4 * maxNameLength;  ///< its UTF-8 bytes
inline constexpr std::uint64_t maxBodySize = 0xFFFFFFF0;
inline constexpr std::uint64_t chunkSize =
    1u << 16;  ///< bytes of a block under one checksum, as written
inline constexpr std::uint64_t maxChunkSize = 1u << 26;

inline constexpr std::size_t headerSize = 88;
inline constexpr std::uint32_t maxCompanionNumber = 99;
inline constexpr std::size_t slotSize = 64;
inline constexpr std::size_t segmentHeaderSize = 40;
inline constexpr std::size_t itemHeaderSize = 8;
inline constexpr std::size_t groupHeaderSize = 8;  ///< of a group's body: name size and item count
inline constexpr std::size_t blockRefSize = 40;

/// A number at `at`, which need not be aligned.
template <class Number>
[[nodiscard]] Number Load(const std::byte* at) noexcept {
  std::array<std::byte, sizeof(Number)> bytes;
  std::memcpy(bytes.data(), at, sizeof(Number));
  if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
  return std::bit_cast<Number>(bytes);
}

template <class Number>
void Store(std::byte* at, Number value) noexcept {
  auto bytes = std::bit_cast<std::array<std::byte, sizeof(Number)>>(value);
  if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
  std::memcpy(at, bytes.data(), sizeof(Number));
}

/// Copies numbers of `size` bytes each between the machine's order and the file's.
void CopyNumbers(std::byte* target,
                 const std::byte* source,
                 std::uint64_t count,
                 std::size_t size) noexcept;

/// XXH3 of 64 bits with seed 0.
[[nodiscard]] std::uint64_t Checksum(Bytes bytes) noexcept;

/// The checksum of bytes that come in pieces.
class ChecksumStream {
 public:
  ChecksumStream();
  ChecksumStream(const ChecksumStream&) = delete;
  ChecksumStream& operator=(const ChecksumStream&) = delete;
  ~ChecksumStream();
  void Add(Bytes bytes) noexcept;
  [[nodiscard]] std::uint64_t Value() const noexcept;  ///< of what was added so far

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

/// Whether every byte is zero.
[[nodiscard]] bool AllZero(Bytes bytes) noexcept;

/// The next multiple of `unit`, a power of two.
[[nodiscard]] constexpr std::uint64_t RoundUp(std::uint64_t value, std::uint64_t unit) {
  return (value + unit - 1) & ~(unit - 1);
}

/// Bytes of one stored element of a value type; 0 for no type. Of a text a UTF-8 byte, of a block
/// its whole reference.
[[nodiscard]] constexpr std::size_t ElementSize(std::uint32_t type) {
  constexpr std::uint8_t sizes[] = {0, 0, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8, 1, blockRefSize};
  return type < std::size(sizes) ? sizes[type] : 0;
}

/// The first page of a file.
[[nodiscard]] std::array<std::byte, pageSize> EncodeHeader(
    const SCFile::FileOrigin& origin) noexcept;
/// status_Ok, status_NotInspection, status_NewerVersion or status_Damaged. `page` may be shorter
/// when the file is.
[[nodiscard]] int DecodeHeader(Bytes page, SCFile::FileOrigin& origin) noexcept;

/// Whether a file can say this of itself: a companion names its base and its predecessor, another
/// file names none.
[[nodiscard]] bool IsOriginSound(const SCFile::FileOrigin& origin) noexcept;

/// The page that a new file begins with until everything in it is written, and ends with until it
/// has its name.
[[nodiscard]] std::array<std::byte, pageSize> EncodeUnfinishedMark() noexcept;

/// Names a stretch of the file with what it must hold; all zero names nothing.
struct Link {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  std::uint64_t checksum = 0;
  friend bool operator==(const Link&, const Link&) = default;
};

/// What a commit makes visible.
struct CommitRecord {
  std::uint64_t number = 0;        ///< of commits so far, 1 for a new file
  std::uint64_t end = dataStart;   ///< the committed bytes end here
  std::uint64_t segmentCount = 0;  ///< top groups
  Link newest;                     ///< the segment of the last top group
  friend bool operator==(const CommitRecord&, const CommitRecord&) = default;
};

[[nodiscard]] std::array<std::byte, slotSize> EncodeSlot(const CommitRecord& record) noexcept;
/// The checksum that a slot of this record carries.
[[nodiscard]] std::uint64_t ChecksumOf(const CommitRecord& record) noexcept;
/// The record of a slot's page; nothing unless every byte of the page is right.
[[nodiscard]] std::optional<CommitRecord> DecodeSlot(Bytes page) noexcept;
/// Whether a page that is no valid slot can be one whose writing was cut short.
[[nodiscard]] bool CanBeTornSlot(Bytes page) noexcept;

/// Head of a segment: one committed top group.
struct SegmentHeader {
  std::uint64_t ordinal = 0;  ///< of the top group, from 0
  Link previous;              ///< the segment of the top group before it
};

void EncodeSegmentHeader(std::byte* at, const SegmentHeader& header) noexcept;
/// Nothing when the bytes do not start a segment. REQUIRES: at least segmentHeaderSize bytes.
[[nodiscard]] std::optional<SegmentHeader> DecodeSegmentHeader(Bytes segment) noexcept;

/// Head of every item. A child group has type 0 and counts the bytes of its body.
struct ItemHeader {
  std::uint16_t code = 0;
  std::uint8_t type = 0;
  std::uint8_t reserved = 0;  ///< zero
  std::uint32_t count = 0;
};

inline void EncodeItemHeader(std::byte* at,
                             std::uint16_t code,
                             std::uint8_t type,
                             std::uint32_t count) noexcept {
  Store(at, code);
  Store(at + 2, type);
  Store(at + 3, std::uint8_t{0});
  Store(at + 4, count);
}
[[nodiscard]] inline ItemHeader DecodeItemHeader(const std::byte* at) noexcept {
  return {Load<std::uint16_t>(at),
          Load<std::uint8_t>(at + 2),
          Load<std::uint8_t>(at + 3),
          Load<std::uint32_t>(at + 4)};
}
/// Whether a type is that of a value or a child group.
[[nodiscard]] constexpr bool IsItemType(std::uint8_t type) {
  return type != 1 && type <= SCFile::value_Block;
}

/// Bytes of an item's data without its padding to 4; at most 40 * 2^32. REQUIRES: IsItemType(type).
/// Walking a group waits for this result at every item, hence no table in memory.
[[nodiscard]] constexpr std::uint64_t DataSize(std::uint8_t type, std::uint32_t count) {
  constexpr std::uint64_t shifts =
      0x0323322110000;  // a digit per type, from the right: the element's size as a power of two
  if (type == SCFile::value_Block) return std::uint64_t{count} * blockRefSize;
  return std::uint64_t{count} << ((shifts >> (4 * type)) & 0xF);
}
/// Whether an item is one number of four bytes, as most are. A walk asks this first and by a
/// branch: a processor that guesses the answer goes on to the next item without waiting for this
/// one's size.
[[nodiscard]] constexpr bool IsOneNumber(const ItemHeader& header) {
  constexpr std::uint32_t types =
      1u << SCFile::value_Int32 | 1u << SCFile::value_UInt32 | 1u << SCFile::value_Float;
  return header.count == 1 && header.type < 32 && (types >> header.type & 1u) != 0;
}
inline constexpr std::size_t oneNumberSize = 4;
/// The header of such an item as it is stored, in one load.
[[nodiscard]] constexpr std::uint64_t OneNumberHead(std::uint16_t code, std::uint8_t type) {
  return std::uint64_t{code} | std::uint64_t{type} << 16 | std::uint64_t{1} << 32;
}

/// Where a block and the table of its chunks' checksums lie.
struct BlockRef {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;           ///< bytes
  std::uint64_t chunk = chunkSize;  ///< bytes under one checksum
  std::uint64_t tableOffset = 0;
  std::uint64_t tableChecksum = 0;

  [[nodiscard]] std::uint64_t ChunkCount() const { return size / chunk + (size % chunk != 0); }
  [[nodiscard]] std::uint64_t TableSize() const { return ChunkCount() * sizeof(std::uint64_t); }
};

[[nodiscard]] std::array<std::byte, blockRefSize> EncodeBlockRef(const BlockRef& block) noexcept;
/// REQUIRES: blockRefSize bytes.
[[nodiscard]] BlockRef DecodeBlockRef(const std::byte* at) noexcept;
/// Whether a block and its table lie between the start of the data and `end`, in that order and
/// aligned.
[[nodiscard]] bool IsBlockRefSound(const BlockRef& block, std::uint64_t end) noexcept;

}  // namespace utdata::kvtiff19
