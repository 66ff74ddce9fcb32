// How a member of a group descriptor is stored as one item: its value type, how many elements it
// may have, and both directions. Stored values are little-endian whatever the machine; floats keep
// every bit.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/text.h"

namespace utdata::kvtiff19 {

inline constexpr std::uint32_t anyCount = std::numeric_limits<std::uint32_t>::max();

/// What a codec asks of an item; as in ItemRule, without the code.
struct ValueShape {
  SCFile::ValueType type;
  std::uint32_t minCount;
  std::uint32_t maxCount;
  std::uint32_t multipleOf = 1;
  std::uint32_t maxCharacters = 0;
};

/// A value ready to be appended; `data` points at the member itself or into the scratch that was
/// handed in.
struct EncodedValue {
  std::span<const std::byte> data;
  std::size_t count;
};

/// The numbers that can be stored. Enumerations are stored as the number they stand on.
template <class Number>
struct NumberType;
template <>
struct NumberType<std::uint32_t> : std::integral_constant<SCFile::ValueType, SCFile::value_UInt32> {
};
template <>
struct NumberType<std::int32_t> : std::integral_constant<SCFile::ValueType, SCFile::value_Int32> {};
template <>
struct NumberType<std::int64_t> : std::integral_constant<SCFile::ValueType, SCFile::value_Int64> {};
template <>
struct NumberType<float> : std::integral_constant<SCFile::ValueType, SCFile::value_Float> {};
template <>
struct NumberType<double> : std::integral_constant<SCFile::ValueType, SCFile::value_Double> {};
template <class Number>
requires std::is_enum_v<Number>
struct NumberType<Number> : NumberType<std::underlying_type_t<Number>> {
};

/// Copies numbers between memory and their stored form.
template <class Number>
void CopyLittleEndian(std::byte* to, const std::byte* from, std::size_t count) {
  if constexpr (std::endian::native == std::endian::little) {
    if (count) std::memcpy(to, from, count * sizeof(Number));
  } else {
    for (std::size_t index = 0; index < count;
         ++index, to += sizeof(Number), from += sizeof(Number))
      std::reverse_copy(from, from + sizeof(Number), to);
  }
}

/// A run of numbers in memory as it is stored.
template <class Number>
EncodedValue EncodeNumbers(const Number* numbers, std::size_t count, std::string& scratch) {
  const auto bytes = std::as_bytes(std::span(numbers, count));
  if constexpr (std::endian::native == std::endian::little) return {bytes, count};
  scratch.resize(bytes.size());
  const auto stored = std::as_writable_bytes(std::span(scratch));
  CopyLittleEndian<Number>(stored.data(), bytes.data(), count);
  return {stored, count};
}

inline std::string_view TextOf(const StoredItem& item) {
  return {reinterpret_cast<const char*>(item.data.data()), item.data.size()};
}

inline std::optional<EncodedValue> EncodeText(std::wstring_view text, std::string& scratch) {
  scratch.clear();
  if (!AppendUtf8(scratch, text)) return std::nullopt;
  return EncodedValue{std::as_bytes(std::span(scratch)), scratch.size()};
}

/// For each kind of member:
///   shape                    what its item looks like
///   Encode(member, scratch)  its stored form; nothing for a text with something that is no
///                            character
///   Decode(item, member)     REQUIRES: the item has that shape. False when the member cannot hold
///                            the value; may throw bad_alloc
///   Same(a, b)               whether both have the same stored form
///   Empty(member)            empties texts and lists
template <class Member>
struct ValueCodec;

/// One number.
template <class Number>
requires(std::is_arithmetic_v<Number> || std::is_enum_v<Number>) struct ValueCodec<Number> {
  static constexpr ValueShape shape{NumberType<Number>::value, 1, 1};
  static std::optional<EncodedValue> Encode(const Number& member, std::string& scratch) {
    return EncodeNumbers(&member, 1, scratch);
  }
  static void Decode(const std::byte* stored, Number& member) {
    CopyLittleEndian<Number>(reinterpret_cast<std::byte*>(&member), stored, 1);
  }
  static bool Decode(const StoredItem& item, Number& member) {
    Decode(item.data.data(), member);
    return true;
  }
  static bool Same(const Number& a, const Number& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
  static void Empty(Number&) {}
};

/// A fixed number of numbers.
template <class Number, std::size_t size>
requires(!std::is_same_v<Number, wchar_t>) struct ValueCodec<Number[size]> {
  static constexpr ValueShape shape{NumberType<Number>::value, size, size};
  static std::optional<EncodedValue> Encode(const Number (&member)[size], std::string& scratch) {
    return EncodeNumbers(member, size, scratch);
  }
  static bool Decode(const StoredItem& item, Number (&member)[size]) {
    CopyLittleEndian<Number>(reinterpret_cast<std::byte*>(member), item.data.data(), size);
    return true;
  }
  static bool Same(const Number (&a)[size], const Number (&b)[size]) {
    return std::memcmp(a, b, sizeof a) == 0;
  }
  static void Empty(Number (&)[size]) {}
};

template <class Number, std::size_t size>
struct ValueCodec<std::array<Number, size>> {
  static constexpr ValueShape shape{NumberType<Number>::value, size, size};
  static std::optional<EncodedValue> Encode(const std::array<Number, size>& member,
                                            std::string& scratch) {
    return EncodeNumbers(member.data(), size, scratch);
  }
  static bool Decode(const StoredItem& item, std::array<Number, size>& member) {
    CopyLittleEndian<Number>(reinterpret_cast<std::byte*>(member.data()), item.data.data(), size);
    return true;
  }
  static bool Same(const std::array<Number, size>& a, const std::array<Number, size>& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
  }
  static void Empty(std::array<Number, size>&) {}
};

/// What the elements of a list are made of: themselves, or the numbers of a tuple.
template <class Element>
struct ElementParts {
  using Number = Element;
  static constexpr std::uint32_t quantity = 1;
};
template <class Part, std::size_t size>
struct ElementParts<std::array<Part, size>> {
  using Number = Part;
  static constexpr std::uint32_t quantity = size;
};

/// A list of numbers or of tuples of numbers, one after the other.
template <class Element>
struct ValueCodec<std::vector<Element>> {
  using Number = typename ElementParts<Element>::Number;
  static constexpr std::uint32_t parts = ElementParts<Element>::quantity;
  static_assert(sizeof(Element) == parts * sizeof(Number));

  static constexpr ValueShape shape{NumberType<Number>::value, 0, anyCount, parts};
  static std::optional<EncodedValue> Encode(const std::vector<Element>& member,
                                            std::string& scratch) {
    return EncodeNumbers(
        reinterpret_cast<const Number*>(member.data()), member.size() * parts, scratch);
  }
  static bool Decode(const StoredItem& item, std::vector<Element>& member) {
    member.resize(item.count / parts);
    CopyLittleEndian<Number>(
        reinterpret_cast<std::byte*>(member.data()), item.data.data(), item.count);
    return true;
  }
  static bool Same(const std::vector<Element>& a, const std::vector<Element>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Element)) == 0);
  }
  static void Empty(std::vector<Element>& member) { member.clear(); }
};

/// A text of any length.
template <>
struct ValueCodec<std::wstring> {
  static constexpr ValueShape shape{SCFile::value_Text, 0, anyCount};
  static std::optional<EncodedValue> Encode(const std::wstring& member, std::string& scratch) {
    return EncodeText(member, scratch);
  }
  static bool Decode(const StoredItem& item, std::wstring& member) {
    std::optional<std::wstring> text = FromUtf8(TextOf(item));
    if (!text) return false;
    member = std::move(*text);
    return true;
  }
  static bool Same(const std::wstring& a, const std::wstring& b) { return a == b; }
  static void Empty(std::wstring& member) { member.clear(); }
};

/// A terminated text in a fixed place. What lies behind the terminator is not stored.
template <std::size_t size>
struct ValueCodec<wchar_t[size]> {
  static constexpr std::uint32_t maxUtf8 = 4 * (size - 1);
  static constexpr ValueShape shape{SCFile::value_Text, 0, maxUtf8, 1, size - 1};

  /// Without a terminator the whole place counts.
  static std::wstring_view View(const wchar_t (&member)[size]) {
    return {member, static_cast<std::size_t>(std::find(member, member + size, L'\0') - member)};
  }
  static std::optional<EncodedValue> Encode(const wchar_t (&member)[size], std::string& scratch) {
    if (View(member).size() == size) return std::nullopt;
    return EncodeText(View(member), scratch);
  }
  static bool Decode(const StoredItem& item, wchar_t (&member)[size]) {
    const std::optional<std::size_t> length = WideLength(TextOf(item));
    if (!length || *length >= size || TextOf(item).find('\0') != std::string_view::npos)
      return false;
    CopyWide(TextOf(item), member);
    std::fill(member + *length, member + size, L'\0');
    return true;
  }
  static bool Same(const wchar_t (&a)[size], const wchar_t (&b)[size]) {
    return View(a) == View(b);
  }
  static void Empty(wchar_t (&member)[size]) { member[0] = L'\0'; }
};

}  // namespace utdata::kvtiff19
