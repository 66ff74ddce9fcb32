#include "tests/support/file_forge.h"

#include <algorithm>

namespace utdata::test {

using namespace kvtiff19;

ByteText& ByteText::Text(std::string_view text) { return Append(std::as_bytes(std::span(text))); }

ByteText& ByteText::Item(std::uint16_t code, std::uint8_t type, std::uint32_t count) {
  return Put(code).Put(type).Put(std::uint8_t{0}).Put(count);
}

ByteText& ByteText::Head(std::uint32_t nameSize, std::uint32_t itemCount) {
  return Put(nameSize).Put(itemCount);
}

ByteText& ByteText::Append(kvtiff19::Bytes bytes) {
  m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
  return *this;
}

namespace {

SCFile::FileOrigin PlainOrigin() {
  SCFile::FileOrigin origin;
  origin.identity.fill(1);
  return origin;
}

}  // namespace

FileForge::FileForge() : FileForge(PlainOrigin()) {}

FileForge::FileForge(const SCFile::FileOrigin& origin) {
  record.number = 1;
  const auto header = EncodeHeader(origin);
  m_file.assign(header.begin(), header.end());
  m_file.resize(dataStart);
}

void FileForge::AddTop(kvtiff19::Bytes body,
                       std::int64_t countMore,
                       std::uint16_t code,
                       std::uint8_t type) {
  m_file.resize(static_cast<std::size_t>(RoundUp(m_file.size(), 4)));
  const std::size_t start = m_file.size();
  m_file.resize(start + segmentHeaderSize + itemHeaderSize);
  EncodeSegmentHeader(m_file.data() + start, {record.segmentCount, record.newest});
  const auto count = static_cast<std::uint32_t>(static_cast<std::int64_t>(body.size()) + countMore);
  EncodeItemHeader(m_file.data() + start + segmentHeaderSize, code, type, count);
  m_file.insert(m_file.end(), body.begin(), body.end());
  const kvtiff19::Bytes segment(m_file.data() + start, m_file.size() - start);
  record.newest = {start, segment.size(), Checksum(segment)};
  ++record.segmentCount;
  record.end = m_file.size();
}

std::uint64_t FileForge::AddPages(kvtiff19::Bytes bytes) {
  m_file.resize(static_cast<std::size_t>(RoundUp(m_file.size(), pageSize)));
  const std::uint64_t offset = m_file.size();
  m_file.insert(m_file.end(), bytes.begin(), bytes.end());
  record.end = m_file.size();
  return offset;
}

BlockRef FileForge::AddBlock(kvtiff19::Bytes bytes, std::uint64_t chunk) {
  BlockRef block;
  block.offset = AddPages(bytes);
  block.size = bytes.size();
  block.chunk = chunk;
  ByteText table;
  for (std::uint64_t from = 0; from < block.size; from += chunk)
    table.Put(Checksum(bytes.subspan(
        static_cast<std::size_t>(from),
        static_cast<std::size_t>(std::min<std::uint64_t>(chunk, block.size - from)))));
  m_file.resize(static_cast<std::size_t>(RoundUp(m_file.size(), 8)));
  block.tableOffset = m_file.size();
  block.tableChecksum = Checksum(table.Bytes());
  m_file.insert(m_file.end(), table.Bytes().begin(), table.Bytes().end());
  record.end = m_file.size();
  return block;
}

std::vector<std::byte> FileForge::Finish() {
  const auto slot = EncodeSlot(record);
  for (const std::uint64_t offset : slotOffsets)
    std::copy(slot.begin(), slot.end(), m_file.begin() + static_cast<std::ptrdiff_t>(offset));
  return m_file;
}

}  // namespace utdata::test
