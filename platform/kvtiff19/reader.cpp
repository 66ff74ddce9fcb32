#include "platform/kvtiff19/reader.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <vector>

#include "platform/kvtiff19/structure.h"

namespace utdata::kvtiff19 {
namespace {

/// The fixed pages of a file as one read saw them, and the file's size right after it.
struct Front {
  std::vector<std::byte> pages;
  std::uint64_t fileSize = 0;

  [[nodiscard]] Bytes Page(std::uint64_t offset) const {
    const std::size_t from = std::min<std::size_t>(static_cast<std::size_t>(offset), pages.size());
    return Bytes(pages).subspan(from, std::min<std::size_t>(pageSize, pages.size() - from));
  }
  friend bool operator==(const Front&, const Front&) = default;
};

os::Error ReadFront(os::File& handle, Front& front) {
  front.pages.resize(dataStart);
  std::size_t done = 0;
  if (const os::Error error = handle.ReadAt(0, front.pages, done); error != os::Error::None)
    return error;
  front.pages.resize(done);
  return handle.Size(front.fileSize);
}

/// Decides which record counts; null, or what is wrong. A file that ends at its committed end is at
/// rest, and then both slots must be whole and equal: anything else is damage. A longer file was
/// left by a writer, or has one at work: one slot may then be half written, or one commit behind.
const char* Settle(const Front& front, SlotState& state) {
  std::optional<CommitRecord> slots[] = {DecodeSlot(front.Page(slotOffsets[0])),
                                         DecodeSlot(front.Page(slotOffsets[1]))};
  if (!slots[0] && !slots[1]) return "both commit records are damaged";
  for (std::size_t index : {0u, 1u}) {
    if (slots[index]) continue;
    if (!CanBeTornSlot(front.Page(slotOffsets[index]))) return "a commit record is damaged";
    slots[index] = slots[1 - index];
    state.atRest = false;
    state.record = *slots[index];
    return front.fileSize > state.record.end ? nullptr : "a commit record is damaged";
  }
  const auto [older, newer] = std::minmax(
      *slots[0], *slots[1], [](const auto& a, const auto& b) { return a.number < b.number; });
  state.record = newer;
  if (front.fileSize < newer.end) return "the file is cut short";
  state.atRest = front.fileSize == newer.end && older == newer;
  if (older == newer) return nullptr;
  return front.fileSize > newer.end && newer.number - older.number == 1
             ? nullptr
             : "the commit records contradict each other";
}

const char* CheckRecord(const CommitRecord& record) {
  const bool emptyChain = record.newest == Link{};
  const bool sound =
      record.number > 0 && record.end >= dataStart && (record.segmentCount == 0) == emptyChain;
  return sound ? nullptr : "the commit record contradicts itself";
}

int RefuseHeader(const OpenFile& file, int status, std::uint64_t fileSize) {
  switch (status) {
    case SCFile::status_NewerVersion:
      return FailAt(file, status, "written in another version of the format");
    case SCFile::status_Damaged:
      return FailAt(file, status, "the file header is damaged");
    default:
      return FailAt(file, status, fileSize == 0 ? "the file is empty" : "not an inspection file");
  }
}

/// Reads the chain of segments from the newest to the oldest.
class ChainReader {
 public:
  explicit ChainReader(OpenFile& file) : m_file(file) {}

  int Read() {
    Link link = m_file.current.newest;
    std::uint64_t end = m_file.current.end;
    for (std::uint64_t ordinal = m_file.current.segmentCount; ordinal-- > 0;) {
      SegmentHeader header;
      if (const int status = ReadSegment(link, end, ordinal, header)) return status;
      end = link.offset;
      link = header.previous;
    }
    if (link != Link{}) return Refuse(0, end, "a group stands before the first one");
    std::reverse(m_file.children.begin(), m_file.children.end());
    return SCFile::status_Ok;
  }

 private:
  int Refuse(std::uint64_t ordinal, std::uint64_t offset, std::string_view what) {
    std::string text =
        "top group " + std::to_string(ordinal) + " at byte " + std::to_string(offset) + ": ";
    return FailAt(m_file, SCFile::status_Damaged, text.append(what));
  }

  /// `end` bounds the segment: segments before it lie at smaller offsets, so that the walk ends.
  int ReadSegment(const Link& link,
                  std::uint64_t end,
                  std::uint64_t ordinal,
                  SegmentHeader& header) {
    constexpr std::size_t headSize = segmentHeaderSize + itemHeaderSize;
    const bool inside =
        link.offset >= dataStart && link.offset <= end && link.size <= end - link.offset;
    if (!inside || link.offset % 4 != 0)
      return Refuse(ordinal, link.offset, "it lies outside the data");
    if (link.size < headSize || link.size > headSize + maxBodySize ||
        link.size > std::numeric_limits<std::size_t>::max())
      return Refuse(ordinal, link.offset, "its size is impossible");
    if (const int status = CheckClaim(link, ordinal)) return status;
    const auto size = static_cast<std::size_t>(link.size);
    auto buffer = std::make_unique_for_overwrite<std::byte[]>(size);
    const std::span<std::byte> segment(buffer.get(), size);
    if (const int status = ReadWhole(m_file, link.offset, segment)) return status;
    if (Checksum(segment) != link.checksum)
      return Refuse(ordinal, link.offset, "its checksum does not match");
    const auto decoded = DecodeSegmentHeader(segment);
    if (!decoded || decoded->ordinal != ordinal)
      return Refuse(ordinal, link.offset, "another group stands in its place");
    header = *decoded;
    m_file.metadata.push_back(std::move(buffer));
    m_file.segmentsRead.push_back(link);
    return AddTop(Bytes(segment).subspan(segmentHeaderSize), link.offset, ordinal);
  }

  /// A few bytes may claim a segment of any size, most of it a hole: before memory is allocated,
  /// its head is checked, and whether enough of it is stored. Writers leave no holes in a segment;
  /// a file system may make some of its zeros.
  int CheckClaim(const Link& link, std::uint64_t ordinal) {
    constexpr std::uint64_t alwaysFine = 1u << 20;
    constexpr std::uint64_t mostPerStored = 64;
    if (link.size <= alwaysFine) return SCFile::status_Ok;
    std::array<std::byte, segmentHeaderSize + itemHeaderSize> head;
    if (const int status = ReadWhole(m_file, link.offset, head)) return status;
    const auto decoded = DecodeSegmentHeader(head);
    const ItemHeader item = DecodeItemHeader(head.data() + segmentHeaderSize);
    if (!decoded || decoded->ordinal != ordinal || item.count != link.size - head.size())
      return Refuse(ordinal, link.offset, "another group stands in its place");
    bool isStored = true;
    if (const os::Error error =
            m_file.handle->IsStored(link.offset, link.size, link.size / mostPerStored, isStored);
        error != os::Error::None)
      return FailOs(m_file.path, error, "cannot be read");
    return isStored ? SCFile::status_Ok
                    : Refuse(ordinal, link.offset, "it is larger than what is stored of it");
  }

  int AddTop(Bytes item, std::uint64_t offset, std::uint64_t ordinal) {
    const ItemHeader header = DecodeItemHeader(item.data());
    const Bytes body = item.subspan(itemHeaderSize);
    if (header.type != 0 || header.reserved != 0 || header.count != body.size())
      return Refuse(ordinal, offset, "its size contradicts itself");
    StructureFindings findings;
    if (const char* problem = CheckStructure(body, header.code, offset, findings))
      return Refuse(ordinal, offset, problem);
    Node& top = m_file.AddGroup(m_file, NodeState::Committed, header.code);
    ViewBody(top, body);
    top.itemOffsets = std::move(findings.itemOffsets);
    m_file.misfits.insert(m_file.misfits.end(), findings.misfits.begin(), findings.misfits.end());
    m_file.children.push_back(&top);
    return SCFile::status_Ok;
  }

  OpenFile& m_file;
};

}  // namespace

int ReadWhole(const OpenFile& file, std::uint64_t offset, std::span<std::byte> buffer) {
  std::size_t done = 0;
  if (const os::Error error = file.handle->ReadAt(offset, buffer, done); error != os::Error::None)
    return FailOs(file.path, error, "cannot be read");
  if (done < buffer.size()) return FailAt(file, SCFile::status_Damaged, "the file is cut short");
  return SCFile::status_Ok;
}

int ReadSlots(const OpenFile& file, SlotState& state) {
  // A commit in progress can make one look inconsistent; real damage looks the same twice.
  constexpr int attempts = 16;
  const char* problem = nullptr;
  Front before;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    Front front;
    if (const os::Error error = ReadFront(*file.handle, front); error != os::Error::None)
      return FailOs(file.path, error, "cannot be read");
    if (const int status = DecodeHeader(front.Page(headerOffset), state.origin))
      return RefuseHeader(file, status, front.fileSize);
    problem = Settle(front, state);
    if (!problem) problem = CheckRecord(state.record);
    if (!problem) return SCFile::status_Ok;
    if (attempt > 0 && front == before) break;
    before = std::move(front);
  }
  return FailAt(file, SCFile::status_Damaged, problem);
}

int ReadCommitted(OpenFile& file) {
  SlotState state;
  if (const int status = ReadSlots(file, state)) return status;
  file.origin = state.origin;
  file.current = state.record;
  ChainReader chain(file);
  if (const int status = chain.Read()) return status;
  std::sort(file.misfits.begin(), file.misfits.end(), std::less<>());
  for (Node* top : file.children) top->rulesHold = file.FitsType(*top);
  file.committedTops = file.children.size();
  return SCFile::status_Ok;
}

}  // namespace utdata::kvtiff19
