#include <gtest/gtest.h>

#include "src/container/groupwriting.h"
#include "tests/src/container/inspection.h"

namespace utdata::test {
namespace {

/// Writes a file with a primary group of each record, then a modifier group of each modifier, in
/// one top group. Modifiers are written whole, or against `base`.
template <class Descriptor>
void WriteModified(const std::wstring& path,
                   const std::vector<Descriptor>& primaries,
                   const std::vector<Descriptor>& modifiers,
                   const Descriptor* base = nullptr) {
  SCFile::FileHandle file = nullptr;
  ASSERT_EQ(SCFile::file_Create(path.c_str(), &file), 0);
  const SCFile::GroupHandle top = container::CreateGroup(file, 0, L"FC");
  const auto write = [&](std::uint32_t code, const Descriptor* from, const Descriptor& record) {
    const SCFile::GroupHandle group = container::CreateGroup(top, code, L"");
    ASSERT_EQ(SCFile::Family<Descriptor>::Write(group, from, &record, 0), 0);
  };
  for (const Descriptor& primary : primaries)
    write(SCFile::groupTypeOf<Descriptor>.primaryCode, nullptr, primary);
  for (const Descriptor& modifier : modifiers)
    write(SCFile::groupTypeOf<Descriptor>.modifierCode, base, modifier);
  ASSERT_EQ(SCFile::file_Commit(file), 0);
  ASSERT_EQ(SCFile::file_Close(file), 0);
}

CGDataTypeFDD Data(std::uint32_t channel,
                   std::uint32_t gate,
                   std::uint32_t patch,
                   eDataBookmarkType bookmark,
                   float maximum) {
  CGDataTypeFDD data;
  data.channelId = channel;
  data.gateId = gate;
  data.SetPatchID(patch);
  data.SetDataBookmarkType(bookmark);
  data.dataMaximum = maximum;
  return data;
}

TEST(Modifier, OverwritesTheFirstMatchAndKeepsItsGroup) {
  const ScratchDirectory scratch;
  auto channel = MakeRecord<CGChanTypeDescr>(1);
  auto other = channel;
  other.secondProbeId += 1;
  auto modified = channel;
  modified.gain = 12.5F;
  modified.name = L"\u00c4nderung";
  auto third = channel;
  third.channelId += 1;
  WriteModified<CGChanTypeDescr>(
      scratch.File(L"a.fpd"), {other, channel, channel}, {modified, third});
  const Inspection loaded = Load(scratch.File(L"a.fpd"));
  ASSERT_TRUE(loaded);
  const std::vector<CGChanTypeDescr> expected = {other, modified, channel, third};
  ASSERT_EQ(loaded->channels.GetCount(), 4);
  auto at = expected.begin();
  for (const CGChanTypeDescr* read : loaded->channels) EXPECT_TRUE(*read == *at++);
  // The match still refers to its own group, which holds the values as acquired.
  CGChanTypeDescr acquired;
  auto second = ++loaded->channels.begin();
  ASSERT_EQ(gchan_ReadGroupInfo((*second)->group, &acquired), 0);
  EXPECT_TRUE(acquired == channel);
}

TEST(Modifier, AgainstABaseChangesNothingElse) {
  const ScratchDirectory scratch;
  const auto base = MakeRecord<CGGateTypeDescr>(1);
  auto modified = base;
  modified.width *= 2;
  auto drifted =
      base;  // what stands in the file, different from the base where the modification says nothing
  drifted.start += 1;
  WriteModified<CGGateTypeDescr>(scratch.File(L"a.fpd"), {drifted}, {modified}, &base);
  const Inspection loaded = Load(scratch.File(L"a.fpd"));
  ASSERT_TRUE(loaded);
  ASSERT_EQ(loaded->gates.GetCount(), 1);
  EXPECT_EQ(loaded->gates.GetHead()->width, modified.width);
  EXPECT_EQ(loaded->gates.GetHead()->start, drifted.start);
}

TEST(Modifier, DataGroupsMatchByIdsAndBookmark) {
  struct Case {
    const char* what;
    std::vector<CGDataTypeFDD> primaries, modifiers;
    std::vector<float> maxima;  ///< of the loaded groups, in order
  };
  const auto single = bookmark_Single, tofd = bookmark_Tofd, none = bookmark_None;
  const Case cases[] = {
      {"match", {Data(1, 1, 0, single, 1)}, {Data(1, 1, 0, single, 2)}, {2}},
      {"other channel", {Data(1, 1, 0, single, 1)}, {Data(2, 1, 0, single, 2)}, {1, 2}},
      {"other gate", {Data(1, 1, 0, single, 1)}, {Data(1, 2001, 0, single, 2)}, {1, 2}},
      {"other patch", {Data(1, 1, 0, single, 1)}, {Data(1, 1, 3, single, 2)}, {1, 2}},
      {"other bookmark", {Data(1, 1, 0, single, 1)}, {Data(1, 1, 0, tofd, 2)}, {1, 2}},
      {"listed one not assigned", {Data(1, 1, 0, none, 1)}, {Data(1, 1, 0, tofd, 2)}, {2}},
      {"modifier not assigned", {Data(1, 1, 0, single, 1)}, {Data(1, 1, 0, none, 2)}, {1, 2}},
      {"walk goes on",
       {Data(1, 1, 0, single, 1), Data(1, 1, 0, tofd, 2)},
       {Data(1, 1, 0, tofd, 3)},
       {1, 3}},
      {"first in the list",
       {Data(1, 1, 0, none, 1), Data(1, 1, 0, tofd, 2)},
       {Data(1, 1, 0, tofd, 3)},
       {3, 2}},
      {"assigned by the first",
       {Data(1, 1, 0, none, 1)},
       {Data(1, 1, 0, tofd, 2), Data(1, 1, 0, single, 3)},
       {2, 3}},
      {"a joined one is matched", {}, {Data(1, 1, 0, tofd, 1), Data(1, 1, 0, tofd, 2)}, {2}},
  };
  const ScratchDirectory scratch;
  for (const Case& each : cases) {
    SCOPED_TRACE(each.what);
    const std::wstring path =
        scratch.File(std::wstring(each.what, each.what + std::strlen(each.what)));
    WriteModified<CGDataTypeFDD>(path, each.primaries, each.modifiers);
    CDataNewGroup newGroups;
    const Inspection loaded = Load(path, &newGroups);
    ASSERT_TRUE(loaded);
    std::vector<float> maxima;
    for (CGDataTypeFDD* data : loaded->data) {
      const bool joined = maxima.size() >= each.primaries.size();
      EXPECT_EQ(newGroups.GetNumMapping(data), joined ? 1 : 0);
      maxima.push_back(data->dataMaximum);
    }
    EXPECT_EQ(maxima, each.maxima);
    EXPECT_EQ(newGroups.GetNbFile(), each.maxima.size() > each.primaries.size() ? 1 : 0);
  }
}

TEST(Modifier, SpecimenModifiersApplyInOrderToTheFirst) {
  const ScratchDirectory scratch;
  std::vector<CGSpecmatTypeDescr> materials;
  for (unsigned seed = 1; seed <= 4; ++seed)
    materials.push_back(MakeRecord<CGSpecmatTypeDescr>(seed));
  WriteModified<CGSpecmatTypeDescr>(
      scratch.File(L"a.fpd"), {materials[0], materials[1]}, {materials[2], materials[3]});
  const Inspection loaded = Load(scratch.File(L"a.fpd"));
  ASSERT_TRUE(loaded);
  ASSERT_EQ(loaded->specimenMaterials.GetCount(), 2);
  EXPECT_TRUE(*loaded->specimenMaterials.GetHead() == materials[3]);
  EXPECT_TRUE(*loaded->specimenMaterials.GetTail() == materials[1]);
}

template <class Descriptor>
void ExpectModifierDropped() {
  for (const bool withPrimary : {false, true}) {
    const ScratchDirectory scratch;
    const auto primary = MakeRecord<Descriptor>(1);
    std::vector<Descriptor> primaries(withPrimary ? 1 : 0, primary);
    WriteModified<Descriptor>(scratch.File(L"a.fpd"), primaries, {MakeRecord<Descriptor>(2)});
    const Inspection loaded = Load(scratch.File(L"a.fpd"));
    ASSERT_TRUE(loaded);
    const auto& list = (*loaded).*listOf<Descriptor>;
    ASSERT_EQ(list.GetCount(), withPrimary ? 1 : 0);
    if (withPrimary) {
      EXPECT_TRUE(*list.GetHead() == primary);
    }
  }
}

TEST(Modifier, SomeTypesAreNeverModified) {
  ExpectModifierDropped<CGInfoTypeDescr>();
  ExpectModifierDropped<CGSpecdimTypeDescr>();
  ExpectModifierDropped<CGMeshTypeDescr>();
  ExpectModifierDropped<CGSpecdefTypeDescr>();
}

struct Numbering {
  const char* what;
  int channels;
  std::vector<std::uint32_t> subChannels;  ///< ids, all of channel 0
  std::vector<std::pair<std::uint32_t, const wchar_t*>>
      groups;  ///< sub-channel id and name of the data groups of channel 0
  std::vector<std::uint32_t> subChannelsAfter, groupsAfter;
};

TEST(SubChannels, AreNumberedFromOneOrNotAtAll) {
  const Numbering cases[] = {
      {"nothing", 1, {}, {}, {}, {}},
      {"no data groups: the descriptors are shifted", 1, {0, 1}, {}, {1, 2}, {}},
      {"one pair for one channel: no sub-channels", 1, {0}, {{0, L""}}, {0}, {0}},
      {"ids that link nothing are cleared", 1, {1, 2}, {{0, L""}, {7, L""}}, {0, 0}, {0, 0}},
      {"named and from 0: both are shifted", 1, {0, 1}, {{0, L"45"}, {1, L"50"}}, {1, 2}, {1, 2}},
      {"unnamed and from 0, more pairs than channels",
       1,
       {0, 1},
       {{0, L""}, {1, L""}},
       {1, 2},
       {1, 2}},
      {"named and from 1 already", 1, {1, 2}, {{1, L"45"}, {2, L"50"}}, {1, 2}, {1, 2}},
      {"descriptors from 0, groups from 1", 1, {0, 1}, {{1, L"45"}, {2, L"50"}}, {1, 2}, {1, 2}},
      {"the same, unnamed, with the channel's own group",
       0,
       {0, 1},
       {{0, L""}, {1, L""}, {2, L""}},
       {1, 2},
       {0, 1, 2}},
      {"the channel's own group beside named ones",
       1,
       {0, 1},
       {{0, L""}, {0, L"45"}, {1, L"50"}},
       {1, 2},
       {0, 1, 2}},
      {"no group has id 0: names count as used", 1, {1}, {{1, L""}}, {1}, {1}},
  };
  for (const Numbering& each : cases) {
    SCOPED_TRACE(each.what);
    const Inspection inspection = MakeInspection();
    for (int channel = 0; channel < each.channels; ++channel)
      Add(inspection->channels, CGChanTypeDescr());
    for (const std::uint32_t id : each.subChannels)
      Add(inspection->subChannels, CGSubchanTypeDescr())->subChannelId = id;
    for (const auto& [id, name] : each.groups) {
      CGDataTypeFDD* const data = Add(inspection->data, CGDataTypeFDD());
      data->subChannelId = id;
      std::copy_n(name, std::wcslen(name) + 1, data->subChannelName);
    }
    CGDataTypeFDD* const elsewhere = Add(inspection->data, Data(9, 0, 0, bookmark_None, 0));
    elsewhere->subChannelId = each.groups.empty() ? 1 : each.groups.front().first;
    CFCont().UpdateSubChannelList(inspection.get());
    std::vector<std::uint32_t> subChannels, groups;
    for (const CGSubchanTypeDescr* subChannel : inspection->subChannels)
      subChannels.push_back(subChannel->subChannelId);
    for (const CGDataTypeFDD* data : inspection->data)
      if (data->channelId == 0) groups.push_back(data->subChannelId);
    EXPECT_EQ(subChannels, each.subChannelsAfter);
    EXPECT_EQ(groups, each.groupsAfter);
    if (!groups.empty() && groups != std::vector<std::uint32_t>(groups.size(), 0)) {
      EXPECT_EQ(elsewhere->subChannelId, each.groups.front().first)
          << "a channel without sub-channels is left alone";
    }
  }
}

}  // namespace
}  // namespace utdata::test
