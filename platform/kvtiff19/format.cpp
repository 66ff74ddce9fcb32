#include "platform/kvtiff19/format.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace utdata::kvtiff19 {

using SCFile::FileIdentity;
using SCFile::FileOrigin;
using SCFile::FileState;

namespace {

// A byte past 127, a line end of each kind: a transfer that treats the file as text shows in its
// first bytes.
constexpr std::array<unsigned char, 8> fileMagic = {0xD5, 'U', 'T', 'D', 0x0D, 0x0A, 0x1A, 0x0A};
constexpr std::array<unsigned char, 8> slotMagic = {'u', 't', 'c', 'o', 'm', 'm', 'i', 't'};
constexpr std::array<unsigned char, 8> segmentMagic = {'u', 't', 'g', 'r', 'o', 'u', 'p', 0x0A};
// Cannot be mistaken for the beginning of a whole file.
constexpr std::string_view unfinishedMark = "\xD5UTDpart: an unfinished inspection file\n";

bool StartsWith(Bytes bytes, const std::array<unsigned char, 8>& magic) {
  return bytes.size() >= magic.size() && std::memcmp(bytes.data(), magic.data(), magic.size()) == 0;
}

void StoreLink(std::byte* at, const Link& link) {
  Store(at, link.offset);
  Store(at + 8, link.size);
  Store(at + 16, link.checksum);
}

Link LoadLink(const std::byte* at) {
  return {Load<std::uint64_t>(at), Load<std::uint64_t>(at + 8), Load<std::uint64_t>(at + 16)};
}

constexpr std::size_t checksumOfHeader = 80;

void StoreIdentity(std::byte* at, const FileIdentity& identity) {
  std::memcpy(at, identity.data(), identity.size());
}

FileIdentity LoadIdentity(const std::byte* at) {
  FileIdentity identity;
  std::memcpy(identity.data(), at, identity.size());
  return identity;
}

}  // namespace

void CopyNumbers(std::byte* target,
                 const std::byte* source,
                 std::uint64_t count,
                 std::size_t size) noexcept {
  const auto bytes = static_cast<std::size_t>(count * size);
  if (bytes == 0) return;
  std::memcpy(target, source, bytes);
  if constexpr (std::endian::native == std::endian::big)
    for (std::size_t at = 0; at < bytes; at += size) std::reverse(target + at, target + at + size);
}

std::uint64_t Checksum(Bytes bytes) noexcept { return XXH3_64bits(bytes.data(), bytes.size()); }

struct ChecksumStream::State {
  XXH3_state_t hash;
};
ChecksumStream::ChecksumStream() : m_state(std::make_unique<State>()) {
  XXH3_64bits_reset(&m_state->hash);
}
ChecksumStream::~ChecksumStream() = default;
void ChecksumStream::Add(Bytes bytes) noexcept {
  XXH3_64bits_update(&m_state->hash, bytes.data(), bytes.size());
}
std::uint64_t ChecksumStream::Value() const noexcept { return XXH3_64bits_digest(&m_state->hash); }

bool AllZero(Bytes bytes) noexcept {
  // Every byte equals the one before it, and the first is zero.
  return bytes.empty() || (bytes.front() == std::byte{0} &&
                           std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

std::array<std::byte, pageSize> EncodeHeader(const FileOrigin& origin) noexcept {
  std::array<std::byte, pageSize> page{};
  std::memcpy(page.data(), fileMagic.data(), fileMagic.size());
  Store(page.data() + 8, majorVersion);
  Store(page.data() + 10, minorVersion);
  Store(page.data() + 12, origin.number);
  StoreIdentity(page.data() + 16, origin.identity);
  StoreIdentity(page.data() + 32, origin.base);
  StoreIdentity(page.data() + 48, origin.predecessor.identity);
  Store(page.data() + 64, origin.predecessor.commitNumber);
  Store(page.data() + 72, origin.predecessor.commitChecksum);
  Store(page.data() + checksumOfHeader, Checksum(Bytes(page).first(checksumOfHeader)));
  return page;
}

int DecodeHeader(Bytes page, FileOrigin& origin) noexcept {
  constexpr std::size_t versionEnd = 12;
  if (page.size() < versionEnd || !StartsWith(page, fileMagic)) return SCFile::status_NotInspection;
  // Another version may lay out everything behind it in another way, its checksum included.
  if (Load<std::uint16_t>(page.data() + 8) != majorVersion ||
      Load<std::uint16_t>(page.data() + 10) != minorVersion)
    return SCFile::status_NewerVersion;
  if (page.size() != pageSize || !AllZero(page.subspan(headerSize)) ||
      Load<std::uint64_t>(page.data() + checksumOfHeader) != Checksum(page.first(checksumOfHeader)))
    return SCFile::status_Damaged;
  origin.number = Load<std::uint32_t>(page.data() + 12);
  origin.identity = LoadIdentity(page.data() + 16);
  origin.base = LoadIdentity(page.data() + 32);
  origin.predecessor = {LoadIdentity(page.data() + 48),
                        Load<std::uint64_t>(page.data() + 64),
                        Load<std::uint64_t>(page.data() + 72)};
  return IsOriginSound(origin) ? SCFile::status_Ok : SCFile::status_Damaged;
}

bool IsOriginSound(const FileOrigin& origin) noexcept {
  constexpr FileIdentity none{};
  if (origin.identity == none || origin.number > maxCompanionNumber) return false;
  const FileState& before = origin.predecessor;
  if (!origin.IsCompanion()) return origin.base == none && before == FileState{};
  return origin.base != none && before.identity != none && before.commitNumber > 0;
}

std::array<std::byte, pageSize> EncodeUnfinishedMark() noexcept {
  std::array<std::byte, pageSize> page{};
  std::memcpy(page.data(), unfinishedMark.data(), unfinishedMark.size());
  return page;
}

std::uint64_t ChecksumOf(const CommitRecord& record) noexcept {
  return Load<std::uint64_t>(EncodeSlot(record).data() + 56);
}

std::array<std::byte, slotSize> EncodeSlot(const CommitRecord& record) noexcept {
  std::array<std::byte, slotSize> bytes{};
  std::memcpy(bytes.data(), slotMagic.data(), slotMagic.size());
  Store(bytes.data() + 8, record.number);
  Store(bytes.data() + 16, record.end);
  Store(bytes.data() + 24, record.segmentCount);
  StoreLink(bytes.data() + 32, record.newest);
  Store(bytes.data() + 56, Checksum(Bytes(bytes).first(56)));
  return bytes;
}

std::optional<CommitRecord> DecodeSlot(Bytes page) noexcept {
  if (!CanBeTornSlot(page) || Load<std::uint64_t>(page.data() + 56) != Checksum(page.first(56)))
    return std::nullopt;
  return CommitRecord{Load<std::uint64_t>(page.data() + 8),
                      Load<std::uint64_t>(page.data() + 16),
                      Load<std::uint64_t>(page.data() + 24),
                      LoadLink(page.data() + 32)};
}

bool CanBeTornSlot(Bytes page) noexcept {
  return page.size() == pageSize && StartsWith(page, slotMagic) && AllZero(page.subspan(slotSize));
}

void EncodeSegmentHeader(std::byte* at, const SegmentHeader& header) noexcept {
  std::memcpy(at, segmentMagic.data(), segmentMagic.size());
  Store(at + 8, header.ordinal);
  StoreLink(at + 16, header.previous);
}

std::optional<SegmentHeader> DecodeSegmentHeader(Bytes segment) noexcept {
  if (!StartsWith(segment, segmentMagic)) return std::nullopt;
  return SegmentHeader{Load<std::uint64_t>(segment.data() + 8), LoadLink(segment.data() + 16)};
}

std::array<std::byte, blockRefSize> EncodeBlockRef(const BlockRef& block) noexcept {
  std::array<std::byte, blockRefSize> bytes{};
  Store(bytes.data(), block.offset);
  Store(bytes.data() + 8, block.size);
  Store(bytes.data() + 16, block.chunk);
  Store(bytes.data() + 24, block.tableOffset);
  Store(bytes.data() + 32, block.tableChecksum);
  return bytes;
}

BlockRef DecodeBlockRef(const std::byte* at) noexcept {
  return {Load<std::uint64_t>(at),
          Load<std::uint64_t>(at + 8),
          Load<std::uint64_t>(at + 16),
          Load<std::uint64_t>(at + 24),
          Load<std::uint64_t>(at + 32)};
}

bool IsBlockRefSound(const BlockRef& block, std::uint64_t end) noexcept {
  return block.chunk >= pageSize && block.chunk <= maxChunkSize &&
         std::has_single_bit(block.chunk) &&                                                  //
         block.offset >= dataStart && block.offset % pageSize == 0 && block.offset <= end &&  //
         block.size <= end - block.offset && block.tableOffset % 8 == 0 &&                    //
         block.tableOffset >= block.offset + block.size && block.tableOffset <= end &&        //
         block.TableSize() <= end - block.tableOffset;
}

}  // namespace utdata::kvtiff19
