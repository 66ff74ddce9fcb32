// Group descriptors filled with values for tests.
//
//   MakeRecord<CGChanTypeDescr>(7)
//     every field stored in files has a value other than the default, texts beyond ASCII; ids and
//     counts differ between seeds; numbers are finite, enumerations have named values
//   ChangeFields(record, engine)
//     about half of the fields that are not keys get another value, hard ones included: NaNs with a
//     payload, -0, infinities, emptied texts and lists
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/kvtiff19/families/tables.h"

namespace utdata::test {

using RandomEngine = std::mt19937;

/// Up to `maxLength` characters of several scripts and planes.
std::wstring MakeText(RandomEngine& engine, std::size_t maxLength);

/// Values of each kind; `wild` also draws those that are hard to carry.
template <class Member>
void Draw(Member& member, RandomEngine& engine, bool wild) {
  if constexpr (std::is_enum_v<Member>) {
    member = static_cast<Member>(engine() % 4);
  } else if constexpr (std::is_integral_v<Member>) {
    member = static_cast<Member>(wild ? engine() << 3 : 1 + engine() % 100000);
  } else if constexpr (std::is_floating_point_v<Member>) {
    static constexpr std::array<std::uint32_t, 5> hard = {
        0x80000000, 0x7F800000, 0xFFC00001, 0x7FC12345, 1};
    if (wild && engine() % 2 && sizeof(Member) == 4)
      member = static_cast<Member>(std::bit_cast<float>(hard[engine() % hard.size()]));
    else if (wild && engine() % 2)
      member = static_cast<Member>(
          std::bit_cast<double>(std::uint64_t{hard[engine() % hard.size()]} << 32 | 7));
    else
      member = static_cast<Member>(static_cast<double>(engine() % 2000000) / 64 - 10000);
  } else if constexpr (std::is_same_v<Member, std::wstring>) {
    member = wild && engine() % 3 == 0 ? std::wstring() : MakeText(engine, 40);
  } else if constexpr (std::is_array_v<Member> &&
                       std::is_same_v<std::remove_extent_t<Member>, wchar_t>) {
    const std::wstring text =
        wild && engine() % 3 == 0 ? std::wstring() : MakeText(engine, std::extent_v<Member> - 1);
    *std::copy(text.begin(), text.end(), member) = L'\0';
  } else {
    if constexpr (requires { member.resize(0); })
      member.resize(wild ? engine() % 5 : 1 + engine() % 9);
    for (auto& element : member) Draw(element, engine, wild);
  }
}

/// A value that a file stores differently from the one before.
template <class Codec, class Member>
void DrawOther(Member& member, RandomEngine& engine, bool wild) {
  struct Holder {
    Member value;
  } before{};
  if constexpr (std::is_array_v<Member>)
    std::copy(std::begin(member), std::end(member), std::begin(before.value));
  else
    before.value = member;
  do Draw(member, engine, wild);
  while (Codec::Same(before.value, member));
}

template <class Record>
Record MakeRecord(unsigned seed) {
  RandomEngine engine(seed);
  Record record{};
  kvtiff19::ForEachField<Record>([&](const auto& field) {
    using Row = std::remove_cvref_t<decltype(field)>;
    DrawOther<typename Row::Codec>(record.*field.member, engine, false);
    if constexpr (std::is_same_v<typename Row::Member, std::uint32_t>)
      record.*field.member = seed * 1000 + 100 + field.code;
  });
  if constexpr (std::is_same_v<Record, CGDataTypeFDD>) {
    record.columnQuantity = 2 + seed % 3;
    record.rowQuantity = 3;
    record.sampleQuantity = 4 + seed % 2;
    record.sampleSize = 2;
    record.cellSize = record.sampleSize * record.sampleQuantity;
    record.storageMode = kvt_StorCells;
  }
  return record;
}

/// @return how many fields were changed
template <class Record>
std::uint32_t ChangeFields(Record& record, RandomEngine& engine) {
  std::uint32_t changed = 0;
  kvtiff19::ForEachField<Record>([&](const auto& field) {
    using Row = std::remove_cvref_t<decltype(field)>;
    if (field.form.IsKey() || engine() % 2) return;
    DrawOther<typename Row::Codec>(record.*field.member, engine, true);
    ++changed;
  });
  return changed;
}

}  // namespace utdata::test
