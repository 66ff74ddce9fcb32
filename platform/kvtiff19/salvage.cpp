#include "platform/kvtiff19/salvage.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "platform/kvtiff19/reader.h"
#include "platform/kvtiff19/structure.h"

namespace utdata::kvtiff19 {
namespace {

constexpr std::size_t headSize = segmentHeaderSize + itemHeaderSize;

/// Tries every other value of each byte: what has the checksum is what was written.
bool MendHeader(std::span<std::byte> page, SCFile::FileOrigin& origin) {
  std::ranges::fill(page.subspan(headerSize), std::byte{0});
  for (std::byte& byte : page.first(headerSize)) {
    const std::byte before = byte;
    for (unsigned change = 0; change < 256; ++change) {
      byte = before ^ static_cast<std::byte>(change);
      if (DecodeHeader(page, origin) == SCFile::status_Ok) return true;
    }
    byte = before;
  }
  origin = {};
  return false;
}

std::string RangeText(std::uint64_t first, std::uint64_t last) {
  if (first == last) return "top group " + std::to_string(first);
  return "top groups " + std::to_string(first) + " to " + std::to_string(last);
}

}  // namespace

int Salvage::Run() {
  if (const os::Error error = m_file.handle->Size(m_size); error != os::Error::None)
    return FailOs(m_file.path, error, "cannot be read");
  if (const int status = ReadRecord()) return status;
  const bool isEmpty = m_record && m_record->segmentCount == 0;
  const bool isWhole = isEmpty || (m_record && Walk(m_record->newest, m_record->segmentCount - 1));
  if (!isWhole)
    if (const int status = Scan()) return status;
  ListLostGroups();
  return SCFile::status_Ok;
}

/// Of two whole records the newer one counts; which of them an interrupted commit left is no
/// matter of damage.
int Salvage::ReadRecord() {
  std::vector<std::byte> front(static_cast<std::size_t>(std::min(m_size, dataStart)));
  if (const int status = ReadWhole(m_file, 0, front)) return status;
  front.resize(dataStart);
  const int header = DecodeHeader(Bytes(front).first(pageSize), m_file.origin);
  if (header == SCFile::status_NewerVersion)
    return FailAt(m_file, header, "written by another version of the format");
  if (header != SCFile::status_Ok) {
    if (MendHeader({front.data(), static_cast<std::size_t>(pageSize)}, m_file.origin))
      m_findings.mended.push_back("the file header was damaged");
    else
      m_findings.lost.push_back(
          "the file header: if the file was a companion, the new one is an inspection of its own");
  }
  for (const std::uint64_t offset : slotOffsets) {
    const auto slot = DecodeSlot(Bytes(front).subspan(static_cast<std::size_t>(offset), pageSize));
    if (slot && (!m_record || slot->number > m_record->number)) m_record = slot;
  }
  SlotState state;
  if (header == SCFile::status_Ok && ReadSlots(m_file, state) == SCFile::status_Ok) {
    m_record = state.record;
    return SCFile::status_Ok;
  }
  if (!m_record) {
    m_findings.lost.push_back("both commit records: groups that were written last may be missing");
    return SCFile::status_Ok;
  }
  if (m_size < m_record->end)
    m_findings.lost.push_back("the last " + std::to_string(m_record->end - m_size) +
                              " bytes of the file, which is cut short");
  else if (header == SCFile::status_Ok)
    m_findings.mended.push_back("a commit record was damaged");
  return SCFile::status_Ok;
}

bool Salvage::Walk(Link link, std::uint64_t ordinal) {
  for (;; --ordinal) {
    const auto header = Take(link, ordinal);
    if (!header) return false;
    if (ordinal == 0) return true;
    link = header->previous;
  }
}

/// A few bytes can claim a group of any size: most of it must be stored.
bool Salvage::IsBacked(const Link& link) const {
  const bool inside = link.offset >= dataStart && link.offset % 4 == 0 && link.offset <= m_size &&
                      link.size <= m_size - link.offset && link.size >= headSize &&
                      link.size <= std::min<std::uint64_t>(headSize + maxBodySize,
                                                           std::numeric_limits<std::size_t>::max());
  constexpr std::uint64_t mostPerStored = 64;
  bool isStored = true;
  return inside &&
         m_file.handle->IsStored(link.offset, link.size, link.size / mostPerStored, isStored) ==
             os::Error::None &&
         isStored;
}

std::optional<SegmentHeader> Salvage::Take(const Link& link, std::uint64_t ordinal) {
  if (!IsBacked(link)) return std::nullopt;
  const auto size = static_cast<std::size_t>(link.size);
  auto buffer = std::make_unique_for_overwrite<std::byte[]>(size);
  const std::span<std::byte> segment(buffer.get(), size);
  if (ReadWhole(m_file, link.offset, segment) != SCFile::status_Ok) return std::nullopt;
  if (Checksum(segment) != link.checksum && !Mend(segment, link, ordinal)) return std::nullopt;
  return Keep(std::move(buffer), link, ordinal);
}

/// Tries every other value of each byte of a short group, and every bit of a longer one, for some
/// seconds at most: what has the checksum is what was written.
bool Salvage::Mend(std::span<std::byte> segment, const Link& link, std::uint64_t ordinal) {
  constexpr std::size_t bytesUpTo = std::size_t{1} << 14, bitsUpTo = std::size_t{1} << 16;
  if (segment.size() > bitsUpTo) return false;
  const bool isShort = segment.size() <= bytesUpTo;
  for (std::size_t at = 0; at < segment.size(); ++at) {
    const std::byte before = segment[at];
    for (unsigned change = 1; change < 256; change = isShort ? change + 1 : 2 * change) {
      segment[at] = before ^ static_cast<std::byte>(change);
      if (Checksum(segment) != link.checksum) continue;
      m_findings.mended.push_back("byte " + std::to_string(link.offset + at) + ", in top group " +
                                  std::to_string(ordinal) + ", was damaged");
      return true;
    }
    segment[at] = before;
  }
  return false;
}

std::optional<SegmentHeader> Salvage::Keep(std::unique_ptr<std::byte[]> buffer,
                                           const Link& link,
                                           std::uint64_t ordinal) {
  const Bytes segment(buffer.get(), static_cast<std::size_t>(link.size));
  const auto decoded = DecodeSegmentHeader(segment);
  const ItemHeader header = DecodeItemHeader(segment.data() + segmentHeaderSize);
  const Bytes body = segment.subspan(headSize);
  StructureFindings findings;
  if (!decoded || decoded->ordinal != ordinal || header.type != 0 || header.count != body.size() ||
      CheckStructure(body, header.code, link.offset, findings) != nullptr)
    return std::nullopt;
  Node& top = m_file.AddGroup(m_file, NodeState::Committed, header.code);
  ViewBody(top, body);
  m_file.metadata.push_back(std::move(buffer));
  m_file.misfits.insert(m_file.misfits.end(), findings.misfits.begin(), findings.misfits.end());
  m_tops[ordinal] = &top;
  return decoded;
}

/// What named the group is lost: its own structure must do.
void Salvage::TakeUnchecked(std::uint64_t ordinal, std::uint64_t offset) {
  std::array<std::byte, headSize> head;
  if (ReadWhole(m_file, offset, head) != SCFile::status_Ok) return;
  const ItemHeader item = DecodeItemHeader(head.data() + segmentHeaderSize);
  const Link link = {offset, headSize + std::uint64_t{item.count}, 0};
  if (item.type != 0 || !IsBacked(link)) return;
  auto buffer = std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(link.size));
  if (ReadWhole(m_file, offset, {buffer.get(), static_cast<std::size_t>(link.size)}) !=
          SCFile::status_Ok ||
      !Keep(std::move(buffer), link, ordinal))
    return;
  m_findings.unchecked.push_back("top group " + std::to_string(ordinal) + " at byte " +
                                 std::to_string(offset) +
                                 ": what held its checksum is lost, and its values may be wrong");
}

/// Looks for what begins like a top group. Whether it is one is shown by the checksum that another
/// one names it with; samples that look the same do no harm.
int Salvage::Scan() {
  constexpr std::uint64_t pieceSize = 1u << 20;
  const std::uint64_t end = m_record ? std::min(m_size, m_record->end) : m_size;
  std::vector<std::byte> piece;
  for (std::uint64_t from = dataStart; from < end; from += pieceSize) {
    piece.resize(static_cast<std::size_t>(std::min(pieceSize + headSize, end - from)));
    if (const int status = ReadWhole(m_file, from, piece)) return status;
    for (std::size_t at = 0; at + headSize <= piece.size() && at < pieceSize; at += 4)
      if (piece[at] == std::byte{'u'}) Note(from + at, Bytes(piece).subspan(at, headSize));
  }
  // A group that is found brings the link of the one before it along.
  for (auto found = m_links.rbegin(); found != m_links.rend(); ++found)
    if (!m_tops.contains(found->first)) static_cast<void>(Take(found->second, found->first));
  for (const auto& [ordinal, offset] : m_seen) {
    const bool isNamed =
        m_links.contains(ordinal) ||
        (m_record && ordinal + 1 == m_record->segmentCount && m_record->newest.offset == offset);
    if (!isNamed && !m_tops.contains(ordinal)) TakeUnchecked(ordinal, offset);
  }
  return SCFile::status_Ok;
}

void Salvage::Note(std::uint64_t offset, Bytes head) {
  const auto decoded = DecodeSegmentHeader(head);
  const bool isCommitted = decoded && (!m_record || decoded->ordinal < m_record->segmentCount);
  if (!isCommitted) return;
  m_seen.emplace(decoded->ordinal, offset);
  if (decoded->ordinal > 0) m_links.emplace(decoded->ordinal - 1, decoded->previous);
}

void Salvage::ListLostGroups() {
  const auto lose = [this](std::uint64_t first, std::uint64_t end) {
    if (first >= end) return;
    std::string line = RangeText(first, end - 1) + " with all that it wrote";
    if (const auto seen = m_seen.find(first); seen != m_seen.end() && first + 1 == end)
      line += ": it is damaged, at byte " + std::to_string(seen->second);
    m_findings.lost.push_back(line);
  };
  std::uint64_t expected = m_record ? m_record->segmentCount : 0;
  if (!m_record && !m_tops.empty()) expected = m_tops.rbegin()->first + 1;
  if (!m_record && !m_tops.empty() && m_seen.contains(expected)) ++expected;
  std::uint64_t next = 0;
  for (const auto& [ordinal, top] : m_tops) {
    lose(next, ordinal);
    next = ordinal + 1;
  }
  lose(next, expected);
}

}  // namespace utdata::kvtiff19
