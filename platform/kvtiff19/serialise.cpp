#include "platform/kvtiff19/serialise.h"

namespace utdata::kvtiff19 {
namespace {

/// Bytes of a pending group's body with all groups inside it; past maxBodySize when any of them is
/// too large.
std::uint64_t BodySize(const Node& group) {
  std::uint64_t size =
      groupHeaderSize + RoundUp(group.pending->name.size(), 4) + group.pending->items.size();
  for (const PendingChild& child : group.pending->children) size += BodySize(*child.node);
  return size;
}

class SegmentWriter {
 public:
  explicit SegmentWriter(Segments& segments) : m_segments(segments), m_at(segments.bytes.get()) {}

  void WriteSegment(Node& top, const SegmentHeader& header) {
    EncodeSegmentHeader(m_at, header);
    m_at += segmentHeaderSize;
    std::byte* itemHeader = m_at;
    m_at += itemHeaderSize;
    WriteGroup(itemHeader, top);
  }

  [[nodiscard]] std::size_t Done() const {
    return static_cast<std::size_t>(m_at - m_segments.bytes.get());
  }

 private:
  /// Writes a group's body here and its header to `itemHeader`.
  void WriteGroup(std::byte* itemHeader, Node& group) {
    const PendingGroup& pending = *group.pending;
    const std::size_t start = Done();
    m_segments.bodies.emplace_back(&group, start);
    Store(m_at, static_cast<std::uint32_t>(pending.name.size()));
    Store(m_at + 4, group.itemCount);
    m_at += groupHeaderSize;
    Put(std::as_bytes(std::span(pending.name)));
    const std::size_t padding =
        static_cast<std::size_t>(RoundUp(pending.name.size(), 4)) - pending.name.size();
    std::memset(m_at, 0, padding);
    m_at += padding;
    const Bytes items(pending.items);
    std::size_t done = 0;
    for (const PendingChild& child : pending.children) {
      Put(items.subspan(done, child.headerAt + itemHeaderSize - done));
      done = child.headerAt + itemHeaderSize;
      WriteGroup(m_at - itemHeaderSize, *child.node);
    }
    Put(items.subspan(done));
    EncodeItemHeader(itemHeader, group.typeCode, 0, static_cast<std::uint32_t>(Done() - start));
  }

  void Put(Bytes bytes) {
    if (!bytes.empty()) std::memcpy(m_at, bytes.data(), bytes.size());
    m_at += bytes.size();
  }

  Segments& m_segments;
  std::byte* m_at;
};

}  // namespace

bool Serialise(std::span<Node* const> tops,
               std::uint64_t offset,
               const CommitRecord& before,
               Segments& segments) {
  for (const Node* top : tops) {
    const std::uint64_t body = BodySize(*top);
    if (body > maxBodySize) return false;
    segments.size += segmentHeaderSize + itemHeaderSize + static_cast<std::size_t>(body);
  }
  segments.bytes = std::make_unique_for_overwrite<std::byte[]>(segments.size);
  segments.record = before;
  SegmentWriter writer(segments);
  for (Node* top : tops) {
    const std::size_t start = writer.Done();
    writer.WriteSegment(*top, {segments.record.segmentCount, segments.record.newest});
    const Bytes segment(segments.bytes.get() + start, writer.Done() - start);
    segments.record.newest = {offset + start, segment.size(), Checksum(segment)};
    ++segments.record.segmentCount;
  }
  segments.record.end = offset + segments.size;
  return true;
}

}  // namespace utdata::kvtiff19
