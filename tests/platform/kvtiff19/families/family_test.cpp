// What holds for every family alike.
#include <cstring>
#include <tuple>

#include "platform/kvtiff19/families/group_types.h"
#include "platform/kvtiff19/families/record_operations.h"
#include "tests/platform/kvtiff19/families/family_functions.h"
#include "tests/support/record_samples.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace utdata::kvtiff19;
using namespace utdata::test;

template <class Record>
const GroupType<Record>& TypeOf() {
  return std::get<GroupType<Record>>(groupTypes);
}

SCFile::GroupHandle GroupOf(const CGDataTypeFDD& record) { return record.GetGroupHandle(); }
template <class Record>
SCFile::GroupHandle GroupOf(const Record& record) {
  return record.group;
}

template <class Record>
std::uint32_t KeyCount() {
  std::uint32_t count = 0;
  ForEachField<Record>([&](const auto& field) { count += field.role == FieldRole::Key; });
  return count;
}

template <class Record>
class FamilyTest : public ::testing::Test {
 protected:
  ScratchDirectory m_directory;
};

TYPED_TEST_SUITE(FamilyTest, AllRecords);

TYPED_TEST(FamilyTest, WrittenWholeReplacesEveryField) {
  constexpr unsigned count = 20;
  GroupFile file(this->m_directory.File(L"whole.fpd"));
  for (unsigned seed = 0; seed < count; ++seed) {
    auto record = MakeRecord<TypeParam>(seed);
    RandomEngine engine(seed);
    if (seed >= count / 2) ChangeFields(record, engine);
    ASSERT_EQ(
        Family<TypeParam>::Write(file.NewGroup(TypeOf<TypeParam>().primary), nullptr, &record),
        SCFile::status_Ok)
        << SCFile::file_LastError();
  }
  file.Reopen();
  for (unsigned seed = 0; seed < count; ++seed) {
    auto expected = MakeRecord<TypeParam>(seed);
    RandomEngine engine(seed);
    if (seed >= count / 2) ChangeFields(expected, engine);
    auto read = MakeRecord<TypeParam>(seed + 1000);
    ASSERT_EQ(Family<TypeParam>::Read(file.Group(seed), &read), SCFile::status_Ok)
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
    const SCFile::GroupHandle group = file.NewGroup(TypeOf<TypeParam>().modifier);
    ASSERT_EQ(Family<TypeParam>::Write(group, &bases.back(), &wanted.back()), SCFile::status_Ok)
        << SCFile::file_LastError();
  }
  file.Reopen();
  for (unsigned index = 0; index < count; ++index) {
    const SCFile::GroupHandle group = file.Group(index);
    EXPECT_EQ(SCFile::file_ItemNbrGet(group), KeyCount<TypeParam>() + changed[index]);
    TypeParam applied = bases[index];
    ASSERT_EQ(Family<TypeParam>::Read(group, &applied), SCFile::status_Ok)
        << SCFile::file_LastError();
    EXPECT_TRUE(applied == wanted[index]);

    // Over another record, it changes what it changed in its base and nothing else.
    const auto other = MakeRecord<TypeParam>(index + 500);
    TypeParam mixed = other;
    ASSERT_EQ(Family<TypeParam>::Read(group, &mixed), SCFile::status_Ok);
    ForEachField<TypeParam>([&](const auto& field) {
      using Codec = typename std::remove_cvref_t<decltype(field)>::Codec;
      const bool written = field.role == FieldRole::Key ||
                           !Codec::Same(bases[index].*field.member, wanted[index].*field.member);
      EXPECT_TRUE(Codec::Same(mixed.*field.member, (written ? wanted[index] : other).*field.member))
          << field.name;
    });
  }
}

TYPED_TEST(FamilyTest, EqualityTellsEveryStoredFieldAndOnlyThose) {
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
  const auto rules = RulesOfGroupType(TypeOf<TypeParam>().primary);
  const std::int16_t wrongType[] = {1, 2, 3, 4};
  const std::uint8_t zeros[256] = {};
  GroupFile file(this->m_directory.File(L"misfit.fpd"));
  std::uint32_t count = 0;
  for (std::size_t index = 0; index < fieldCount<TypeParam>; ++index) {
    const ItemRule& rule = rules[index];
    SCFile::GroupHandle group = file.NewGroup(freeCode);
    ASSERT_EQ(Family<TypeParam>::Write(group, &record, &record), SCFile::status_Ok);
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
  ASSERT_EQ(Family<TypeParam>::Write(twice, nullptr, &record), SCFile::status_Ok);
  ASSERT_EQ(Family<TypeParam>::Write(twice, nullptr, &record), SCFile::status_Ok);
  ++count;
  file.Reopen();
  for (std::uint32_t index = 0; index < count; ++index) {
    auto read = MakeRecord<TypeParam>(2);
    EXPECT_EQ(Family<TypeParam>::Read(file.Group(index), &read), SCFile::status_Damaged)
        << "group " << index;
    EXPECT_TRUE(read == MakeRecord<TypeParam>(2)) << "group " << index;
    EXPECT_EQ(GroupOf(read), nullptr);
  }
}

TYPED_TEST(FamilyTest, ReadsItemsInAnyOrderBetweenUnknownOnes) {
  const auto record = MakeRecord<TypeParam>(4);
  GroupFile file(this->m_directory.File(L"order.fpd"));
  const SCFile::GroupHandle group = file.NewGroup(TypeOf<TypeParam>().primary);
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
  ASSERT_EQ(Family<TypeParam>::Read(file.Group(0), &read), SCFile::status_Ok)
      << SCFile::file_LastError();
  EXPECT_TRUE(read == record);
}

TYPED_TEST(FamilyTest, AllocatesNamesEmptiesAndRefusesNull) {
  TypeParam* record = Family<TypeParam>::Allocate(L"Prüfkopf");
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
    EXPECT_EQ(Family<TypeParam>::Init(+[] {}), SCFile::status_BadArgument);
  }
  EXPECT_EQ(Family<TypeParam>::Init(nullptr), SCFile::status_Ok);
  ForEachField<TypeParam>([&](const auto& field) {
    using Codec = typename std::remove_cvref_t<decltype(field)>::Codec;
    const bool hasLength = Codec::shape.minCount == 0;
    EXPECT_NE(Codec::Same(full.*field.member, emptied.*field.member), hasLength) << field.name;
  });

  EXPECT_EQ(Family<TypeParam>::Read(nullptr, &full), SCFile::status_BadArgument);
  EXPECT_EQ(Family<TypeParam>::Write(nullptr, nullptr, &full), SCFile::status_BadArgument);
}

TYPED_TEST(FamilyTest, BothCodesHaveTheRulesOfTheTable) {
  const auto rules = RulesOfGroupType(TypeOf<TypeParam>().primary);
  EXPECT_EQ(rules.data(), RulesOfGroupType(TypeOf<TypeParam>().modifier).data());
  ASSERT_GE(rules.size(), fieldCount<TypeParam>);
  std::size_t index = 0;
  ForEachField<TypeParam>([&](const auto& field) { EXPECT_EQ(rules[index++].code, field.code); });
}

TEST(FamilyRules, AreEmptyForCodesWithoutAFamily) {
  for (const std::uint32_t code :
       {0u, 10003u, 10005u, 10012u, 10015u, 10024u, 10037u, 10044u, 10045u, 10225u, 15696u, ~0u})
    EXPECT_TRUE(RulesOfGroupType(code).empty()) << code;
}

// A record with a member that its table misses must not compile: the count of its members is what
// tells.
struct FourMembers {
  void* handle;
  std::wstring text;
  std::array<double, 3> place;
  std::vector<std::array<float, 2>> points;
};
static_assert(hasMembers<FourMembers, 4>);
static_assert(!hasMembers<FourMembers, 3> && !hasMembers<FourMembers, 5>);

}  // namespace
