// Builds inspection files of any content whose checksums are right, so that what stands behind the
// checksums is tested too.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/kvtiff19/format.h"

namespace utdata::test {

/// Bytes put together field by field.
class ByteText {
 public:
  template <class Number>
  ByteText& Put(Number value) {
    m_bytes.resize(m_bytes.size() + sizeof(Number));
    kvtiff19::Store(m_bytes.data() + m_bytes.size() - sizeof(Number), value);
    return *this;
  }
  ByteText& Text(std::string_view text);  ///< its bytes as they are
  ByteText& Item(std::uint16_t code, std::uint8_t type, std::uint32_t count);  ///< an item's header
  ByteText& Head(std::uint32_t nameSize, std::uint32_t itemCount);  ///< the start of a group's body
  ByteText& Append(kvtiff19::Bytes bytes);
  [[nodiscard]] const std::vector<std::byte>& Bytes() const { return m_bytes; }

 private:
  std::vector<std::byte> m_bytes;
};

/// A file of top groups with the given bodies.
class FileForge {
 public:
  FileForge();
  /// Of a file that says this of itself.
  explicit FileForge(const SCFile::FileOrigin& origin);
  /// Appends a segment. The item's count is the body's size plus `countMore`.
  void AddTop(kvtiff19::Bytes body,
              std::int64_t countMore = 0,
              std::uint16_t code = 60000,
              std::uint8_t type = 0);
  /// Appends bytes to the data, page-aligned; returns where.
  std::uint64_t AddPages(kvtiff19::Bytes bytes);
  /// Appends a block and the table of its chunks' checksums. REQUIRES: `chunk` is a power of two.
  kvtiff19::BlockRef AddBlock(kvtiff19::Bytes bytes, std::uint64_t chunk = kvtiff19::chunkSize);
  /// The whole file. `record` can be changed first.
  [[nodiscard]] std::vector<std::byte> Finish();

  kvtiff19::CommitRecord record;

 private:
  std::vector<std::byte> m_file;
};

}  // namespace utdata::test
