// What holds for every family alike.
#include <cstring>
#include <map>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/kvtiff19/families/record_operations.h"
#include "tests/platform/kvtiff19/families/family_functions.h"
#include "tests/support/record_samples.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace utdata::kvtiff19;
using namespace utdata::test;
using SCFile::Family;
using SCFile::groupTypeOf;

SCFile::GroupHandle GroupOf(const CGDataTypeFDD& record) { return record.GetGroupHandle(); }
template <class Record>
SCFile::GroupHandle GroupOf(const Record& record) {
  return record.group;
}

template <class Record>
std::uint32_t KeyCount() {
  std::uint32_t count = 0;
  ForEachField<Record>([&](const auto& field) { count += field.form.IsKey(); });
  return count;
}

template <class Record>
class FamilyTest : public ::testing::Test {
 protected:
  ScratchDirectory m_directory;
};

/// Every field of one record, given to another by name, makes it equal.
template <class Record>
void ExpectAccess() {
  const auto from = MakeRecord<Record>(7);
  auto to = MakeRecord<Record>(8);
  for (const SCFile::FieldInfo& field : SCFile::file_GroupTypeOf<Record>().fields) {
    const SCFile::FieldAccess& access = field.access;
    if (access.number) access.setNumber(&to, access.number(&from));
    if (access.text) {
      EXPECT_TRUE(access.setText(&to, access.text(&from))) << field.key;
    }
    if (access.numbers) {
      EXPECT_TRUE(access.setNumbers(&to, access.numbers(&from))) << field.key;
    }
  }
  EXPECT_TRUE(from == to);
}

TYPED_TEST_SUITE(FamilyTest, AllRecords);

TYPED_TEST(FamilyTest, WrittenWholeReplacesEveryField) {
  constexpr unsigned count = 20;
  GroupFile file(this->m_directory.File(L"whole.fpd"));
  for (unsigned seed = 0; seed < count; ++seed) {
    auto record = MakeRecord<TypeParam>(seed);
    RandomEngine engine(seed);
    if (seed >= count / 2) ChangeFields(record, engine);
    ASSERT_EQ(Family<TypeParam>::Write(
                  file.NewGroup(groupTypeOf<TypeParam>.primaryCode), nullptr, &record, 0),
              SCFile::status_Ok)
        << SCFile::file_LastError();
  }
  file.Reopen();
  for (unsigned seed = 0; seed < count; ++seed) {
    auto expected = MakeRecord<TypeParam>(seed);
    RandomEngine engine(seed);
    if (seed >= count / 2) ChangeFields(expected, engine);
    auto read = MakeRecord<TypeParam>(seed + 1000);
    ASSERT_EQ(Family<TypeParam>::Read(file.Group(seed), &read, true), SCFile::status_Ok)
        << SCFile::file_LastError();
    EXPECT_TRUE(read == expected);
    EXPECT_EQ(GroupOf(read), file.Group(seed));
  }
}

TYPED_TEST(FamilyTest, ModificationCarriesKeysAndWhatDiffers) {
  constexpr unsigned count = 60;
  GroupFile file(this->m_directory.File(L"modified.A01"));
  std::vector<TypeParam> bases;
  std::vector<TypeParam> wanted;
  std::vector<std::uint32_t> changed;
  for (unsigned seed = 0; seed < count; ++seed) {
    RandomEngine engine(seed);
    bases.push_back(MakeRecord<TypeParam>(seed));
    if (seed % 2) ChangeFields(bases.back(), engine);
    wanted.push_back(bases.back());
    changed.push_back(seed % 5 ? ChangeFields(wanted.back(), engine) : 0);
    const SCFile::GroupHandle group = file.NewGroup(groupTypeOf<TypeParam>.modifierCode);
    ASSERT_EQ(Family<TypeParam>::Write(group, &bases.back(), &wanted.back(), 0), SCFile::status_Ok)
        << SCFile::file_LastError();
  }
  file.Reopen();
  for (unsigned index = 0; index < count; ++index) {
    const SCFile::GroupHandle group = file.Group(index);
    EXPECT_EQ(SCFile::file_ItemNbrGet(group), KeyCount<TypeParam>() + changed[index]);
    TypeParam applied = bases[index];
    ASSERT_EQ(Family<TypeParam>::Read(group, &applied, true), SCFile::status_Ok)
        << SCFile::file_LastError();
    EXPECT_TRUE(applied == wanted[index]);

    // Over another record, it changes what it changed in its base and nothing else.
    const auto other = MakeRecord<TypeParam>(index + 500);
    TypeParam mixed = other;
    ASSERT_EQ(Family<TypeParam>::Read(group, &mixed, true), SCFile::status_Ok);
    ForEachField<TypeParam>([&](const auto& field) {
      using Codec = typename std::remove_cvref_t<decltype(field)>::Codec;
      const bool written = field.form.IsKey() ||
                           !Codec::Same(bases[index].*field.member, wanted[index].*field.member);
      EXPECT_TRUE(Codec::Same(mixed.*field.member, (written ? wanted[index] : other).*field.member))
          << field.name;
    });
  }
}

TYPED_TEST(FamilyTest, EqualityComparesEveryStoredFieldAndOnlyThose) {
  const auto record = MakeRecord<TypeParam>(3);
  ForEachField<TypeParam>([&](const auto& field) {
    using Codec = typename std::remove_cvref_t<decltype(field)>::Codec;
    RandomEngine engine(field.code);
    TypeParam other = record;
    EXPECT_TRUE(other == record);
    DrawOther<Codec>(other.*field.member, engine, true);
    EXPECT_FALSE(other == record) << field.name;
  });
}

TYPED_TEST(FamilyTest, RefusesItemsThatDoNotFitAndLeavesTheDescriptor) {
  // Under a code that is no group type's, so that the file itself does not refuse the group first.
  constexpr std::uint32_t freeCode = 9999;
  const auto record = MakeRecord<TypeParam>(1);
  const auto rules = RulesOfGroupType(groupTypeOf<TypeParam>.primaryCode);
  const std::int16_t wrongType[] = {1, 2, 3, 4};
  const std::uint8_t zeros[256] = {};
  GroupFile file(this->m_directory.File(L"misfit.fpd"));
  std::uint32_t count = 0;
  for (std::size_t index = 0; index < fieldCount<TypeParam>; ++index) {
    const ItemRule& rule = rules[index];
    SCFile::GroupHandle group = file.NewGroup(freeCode);
    ASSERT_EQ(Family<TypeParam>::Write(group, &record, &record, 0), SCFile::status_Ok);
    ASSERT_EQ(SCFile::file_ItemValueWrite(group, rule.code, SCFile::value_Int16, 4, wrongType),
              SCFile::status_Ok);
    ++count;
    if (rule.type == SCFile::value_Text) continue;
    for (const std::uint32_t badCount :
         {rule.minCount - 1, rule.maxCount + 1, rule.multipleOf + 1}) {
      if (badCount > 32 || (badCount >= rule.minCount && badCount <= rule.maxCount &&
                            badCount % rule.multipleOf == 0))
        continue;
      ASSERT_EQ(SCFile::file_ItemValueWrite(
                    file.NewGroup(freeCode), rule.code, rule.type, badCount, zeros),
                SCFile::status_Ok);
      ++count;
    }
  }
  SCFile::GroupHandle twice = file.NewGroup(freeCode);
  ASSERT_EQ(Family<TypeParam>::Write(twice, nullptr, &record, 0), SCFile::status_Ok);
  ASSERT_EQ(Family<TypeParam>::Write(twice, nullptr, &record, 0), SCFile::status_Ok);
  ++count;
  file.Reopen();
  for (std::uint32_t index = 0; index < count; ++index) {
    auto read = MakeRecord<TypeParam>(2);
    EXPECT_EQ(Family<TypeParam>::Read(file.Group(index), &read, true), SCFile::status_Damaged)
        << "group " << index;
    EXPECT_TRUE(read == MakeRecord<TypeParam>(2)) << "group " << index;
    EXPECT_EQ(GroupOf(read), nullptr);
  }
}

TYPED_TEST(FamilyTest, ReadsItemsInAnyOrderBetweenUnknownOnes) {
  const auto record = MakeRecord<TypeParam>(4);
  GroupFile file(this->m_directory.File(L"order.fpd"));
  const SCFile::GroupHandle group = file.NewGroup(groupTypeOf<TypeParam>.primaryCode);
  const std::uint32_t number = 42;
  std::uint16_t unknown = 5000;
  std::string scratch;
  for (int part : {1, 0}) {
    ForEachField<TypeParam>([&](const auto& field) {
      if (field.code % 2 != part) return;
      ASSERT_EQ(WriteField(*group, field, record, scratch), SCFile::status_Ok);
      ASSERT_EQ(SCFile::file_ItemValueWrite(group, unknown++, SCFile::value_UInt32, 1, &number),
                SCFile::status_Ok);
    });
  }
  file.Reopen();
  auto read = MakeRecord<TypeParam>(5);
  ASSERT_EQ(Family<TypeParam>::Read(file.Group(0), &read, true), SCFile::status_Ok)
      << SCFile::file_LastError();
  EXPECT_TRUE(read == record);
}

TYPED_TEST(FamilyTest, AllocatesNamesEmptiesAndRefusesNull) {
  TypeParam* record = Family<TypeParam>::Allocate(1, L"Prüfkopf");
  ASSERT_NE(record, nullptr);
  if constexpr (requires { record->name; }) {
    EXPECT_EQ(record->name, L"Prüfkopf");
  }
  Family<TypeParam>::Delete(record, 1);
  Family<TypeParam>::Delete(nullptr, 1);
  Family<TypeParam>::Delete(nullptr, 0);

  auto full = MakeRecord<TypeParam>(6);
  auto emptied = full;
  if constexpr (std::is_same_v<TypeParam, CGDataTypeFDD>) {
    EmptyFields(emptied);
  } else {
    Family<TypeParam>::Delete(&emptied, 0);
  }
  ForEachField<TypeParam>([&](const auto& field) {
    using Codec = typename std::remove_cvref_t<decltype(field)>::Codec;
    const bool hasLength = Codec::shape.minCount == 0;
    EXPECT_NE(Codec::Same(full.*field.member, emptied.*field.member), hasLength) << field.name;
  });

  EXPECT_EQ(Family<TypeParam>::Read(nullptr, &full, true), SCFile::status_BadArgument);
  EXPECT_EQ(Family<TypeParam>::Write(nullptr, nullptr, &full, 0), SCFile::status_BadArgument);
}

TEST(Catalogue, KeysAreWhatModificationsMatchBy) {
  const std::map<std::string_view, std::vector<std::string_view>> keys = {
      {"data", {"dataClass", "channelId", "subChannelId", "gateId", "bookmarkType", "patchId"}},
      {"channel", {"channelId", "firstProbeId", "secondProbeId"}},
      {"sub_channel", {"subChannelId", "channelId"}},
      {"gate", {"gateId", "channelId"}},
      {"patch", {"patchId"}},
      {"probe", {"probeId"}},
      {"weld", {"weldId"}},
      {"contour", {"contourId", "channelId"}},
      {"reference_adjustment", {"adjustmentId"}},
      {"mesh", {"meshId"}},
      {"dac", {"dacId"}},
      {"weld_scan_plan", {"weldId", "planId"}},
      {"weld_fill", {"weldId", "fillId"}}};
  for (const SCFile::GroupTypeInfo& type : SCFile::file_GroupTypes()) {
    std::vector<std::string_view> found;
    for (const SCFile::FieldInfo& field : type.fields)
      if (field.IsKey()) found.push_back(field.key);
    EXPECT_EQ(found, keys.contains(type.key) ? keys.at(type.key) : decltype(found)()) << type.key;
  }
}

TEST(Catalogue, ReadsAndChangesEveryFieldByName) {
  std::apply(
      []<class... Record>(const SCFile::GroupType<Record>&...) { (ExpectAccess<Record>(), ...); },
      SCFile::groupTypes);
}

TEST(FamilyInit, TakesNoCallbacks) {
  for (const auto init : {gchan_Init, gweldFill_Init, genumtable_Init}) {
    EXPECT_EQ(init(nullptr, nullptr, nullptr, nullptr, nullptr), SCFile::status_Ok);
    EXPECT_EQ(init(
                  nullptr, +[] {}, nullptr, nullptr, nullptr),
              SCFile::status_BadArgument);
  }
}

TEST(FamilyRules, AreEmptyForCodesWithoutAFamily) {
  for (const std::uint32_t code :
       {0u, 10003u, 10005u, 10012u, 10015u, 10024u, 10037u, 10044u, 10045u, 10225u, 15696u, ~0u})
    EXPECT_TRUE(RulesOfGroupType(code).empty()) << code;
}

// A record with a member that its table misses must not compile, by the count of its members.
struct FourMembers {
  void* handle;
  std::wstring text;
  std::array<double, 3> place;
  std::vector<std::array<float, 2>> points;
};
static_assert(hasMembers<FourMembers, 4>);
static_assert(!hasMembers<FourMembers, 3> && !hasMembers<FourMembers, 5>);

}  // namespace
