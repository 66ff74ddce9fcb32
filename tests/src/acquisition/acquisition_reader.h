// Reads acquisition files with plain file reads, by the description of the layout alone.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "platform/os/path.h"

namespace utdata::test {

class AcquisitionReader {
 public:
  explicit AcquisitionReader(const std::wstring& path)
      : m_stream(os::NarrowPath(path), std::ios::binary) {}

  std::uint64_t Size() {
    m_stream.clear();
    m_stream.seekg(0, std::ios::end);
    return static_cast<std::uint64_t>(m_stream.tellg());
  }
  /// Bytes at an offset; fewer at the end of the file.
  std::vector<unsigned char> Bytes(std::uint64_t offset, std::size_t count) {
    std::vector<char> bytes(count);
    m_stream.clear();
    m_stream.seekg(static_cast<std::streamoff>(offset));
    m_stream.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<std::size_t>(m_stream.gcount()));
    return {bytes.begin(), bytes.end()};
  }
  std::vector<std::uint32_t> Table(std::uint64_t offset, std::size_t cells) {
    return Numbers<std::uint32_t>(offset, cells);
  }
  std::vector<std::uint32_t> Samples(std::uint64_t offset, std::size_t count, int storageBytes) {
    if (storageBytes == 2) return Widened(Numbers<std::uint16_t>(offset, count));
    return Widened(Bytes(offset, count));
  }

 private:
  template <class Number>
  std::vector<Number> Numbers(std::uint64_t offset, std::size_t count) {
    const auto bytes = Bytes(offset, count * sizeof(Number));
    std::vector<Number> numbers(bytes.size() / sizeof(Number));
    for (std::size_t n = 0; n < numbers.size() * sizeof(Number); ++n)
      numbers[n / sizeof(Number)] =
          static_cast<Number>(numbers[n / sizeof(Number)] |
                              static_cast<Number>(Number{bytes[n]} << 8 * (n % sizeof(Number))));
    return numbers;
  }
  template <class Number>
  static std::vector<std::uint32_t> Widened(const std::vector<Number>& numbers) {
    return {numbers.begin(), numbers.end()};
  }

  std::ifstream m_stream;
};

}  // namespace utdata::test
