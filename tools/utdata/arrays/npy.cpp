#include "arrays/npy.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "arrays/input_file.h"

namespace utdata::program {
namespace {

constexpr std::string_view magic = "\x93NUMPY";
constexpr std::size_t largestHeader =
    65536;  ///< bytes; the header of three axes takes about a hundred
constexpr std::size_t mostNpyAxes = 32;

/// The literal of a header, read from its front. A failed step leaves it anywhere; the header is
/// then refused as a whole.
class Literal {
 public:
  explicit Literal(std::string_view text) : m_text(text) {}

  /// Takes a token when it comes next.
  bool Take(std::string_view token) {
    SkipBlanks();
    if (!m_text.starts_with(token)) return false;
    m_text.remove_prefix(token.size());
    return true;
  }

  std::optional<std::string_view> Text() {
    SkipBlanks();
    if (m_text.empty() || (m_text[0] != '\'' && m_text[0] != '"')) return std::nullopt;
    const std::size_t end = m_text.find(m_text[0], 1);
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view text = m_text.substr(1, end - 1);
    m_text.remove_prefix(end + 1);
    return text;
  }

  bool Flag(bool& value) {
    value = Take("True");
    return value || Take("False");
  }

  /// "(10, 256, 256)", "(10,)", "()"
  bool Tuple(std::vector<std::uint64_t>& numbers) {
    if (!Take("(")) return false;
    while (!Take(")")) {
      SkipBlanks();
      std::uint64_t number = 0;
      const auto [end, error] =
          std::from_chars(m_text.data(), m_text.data() + m_text.size(), number);
      if (error != std::errc() || numbers.size() == mostNpyAxes) return false;
      m_text.remove_prefix(static_cast<std::size_t>(end - m_text.data()));
      numbers.push_back(number);
      Take("L");  // as older writers have it
      if (!Take(",")) return Take(")");
    }
    return true;
  }

  bool AtEnd() {
    SkipBlanks();
    return m_text.empty();
  }

 private:
  void SkipBlanks() {
    m_text.remove_prefix(std::min(m_text.find_first_not_of(" \n\t\r"), m_text.size()));
  }

  std::string_view m_text;
};

bool ParseEntry(Literal& literal, std::string_view key, NpyHeader& header, std::string& kind) {
  if (key == "fortran_order") return literal.Flag(header.fortranOrder);
  if (key == "shape") return header.shape.empty() && literal.Tuple(header.shape);
  const std::optional<std::string_view> described = key == "descr" ? literal.Text() : std::nullopt;
  kind = described.value_or("");
  return described.has_value();
}

/// Reads the three entries in any order; the kind of element is given as its text. False when the
/// literal is not a header's.
bool ParseLiteral(std::string_view text, NpyHeader& header, std::string& kind) {
  Literal literal(text);
  if (!literal.Take("{")) return false;
  std::size_t entries = 0;
  bool closed = false;
  do {
    closed = literal.Take("}");
    if (closed) break;
    const std::optional<std::string_view> key = literal.Text();
    if (!key || !literal.Take(":")) return false;
    if (*key == "descr" && literal.Take("[")) {
      kind = "a record of fields";
      return true;  // what follows describes the fields
    }
    if (!ParseEntry(literal, *key, header, kind)) return false;
    ++entries;
  } while (literal.Take(","));
  return (closed || literal.Take("}")) && entries == 3 && literal.AtEnd();
}

/// "<u2": byte order, kind, bytes.
void SetElement(const std::string& kind, const std::string& path, NpyHeader& header) {
  const bool known = kind.size() == 3 && (kind[1] == 'u' || kind[1] == 'i') &&
                     std::string_view("<>|=").find(kind[0]) != std::string_view::npos;
  if (known)
    header.type = FindSampleType(static_cast<std::uint64_t>(kind[2] - '0'), kind[1] == 'i');
  if (!header.type)
    throw Failure(
        path,
        "cannot be imported",
        "its elements are '" + kind + "'",
        "convert them to whole numbers of 8 or 16 bits first, as with array.astype('<i2')");
  header.bigEndian = kind[0] == '>' || (kind[0] == '=' && std::endian::native == std::endian::big);
}

[[noreturn]] void Refuse(const InputFile& file, const std::string& why) {
  throw Failure(file.Path(), "is no .npy array", why);
}

/// Bytes at a place of the file; refuses the file when it ends before them.
std::string BytesAt(const InputFile& file, std::uint64_t offset, std::size_t size) {
  std::string bytes(size, 0);
  if (!file.Read(offset, std::as_writable_bytes(std::span(bytes))))
    Refuse(file, "it ends in its header");
  return bytes;
}

}  // namespace

std::string NpyHeaderBytes(const SampleType& type, const std::vector<std::uint64_t>& shape) {
  constexpr std::size_t alignment = 64;
  constexpr std::size_t before = 10;  // magic, version, length
  std::string literal = std::string("{'descr': '") + (type.size == 1 ? '|' : '<') +
                        (type.isSigned ? 'i' : 'u') + std::to_string(type.size) +
                        "', 'fortran_order': False, 'shape': (";
  for (const std::uint64_t quantity : shape) literal += std::to_string(quantity) + ", ";
  literal.erase(literal.size() - (shape.size() == 1 ? 1 : 2));
  literal += "), }";
  const std::size_t behind = (alignment - (before + literal.size() + 1) % alignment) % alignment;
  literal += std::string(behind, ' ') + "\n";
  std::string bytes(magic);
  bytes +=
      {1, 0, static_cast<char>(literal.size() & 0xFFU), static_cast<char>(literal.size() >> 8U)};
  return bytes + literal;
}

NpyHeader ReadNpyHeader(const std::string& path) {
  const InputFile file(path);
  const std::string start = BytesAt(file, 0, magic.size() + 2);
  if (!start.starts_with(magic)) Refuse(file, "it does not begin as one");
  const int version = start[magic.size()];
  if (version < 1 || version > 3 || start.back() != 0)
    Refuse(file, "its version is not 1.0, 2.0 or 3.0");
  const std::size_t lengthSize = version == 1 ? 2 : 4;
  const std::string lengthBytes = BytesAt(file, start.size(), lengthSize);
  std::size_t length = 0;
  for (std::size_t index = 0; index < lengthSize; ++index)
    length |= std::size_t{static_cast<unsigned char>(lengthBytes[index])} << (8 * index);
  if (length > largestHeader)
    Refuse(file, "its header is longer than " + std::to_string(largestHeader) + " bytes");
  NpyHeader header;
  std::string kind;
  if (!ParseLiteral(BytesAt(file, start.size() + lengthSize, length), header, kind))
    Refuse(file, "its header is not understood");
  SetElement(kind, path, header);
  header.size = start.size() + lengthSize + length;
  return header;
}

}  // namespace utdata::program
