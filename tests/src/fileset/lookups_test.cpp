// Look-ups of a file set against a walk written separately, over random additions, removals and
// changes of ids: through the items' own operations, and through references that a host has kept.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <random>
#include <vector>

#include "tests/src/fileset/data_fixture.h"
#include "tests/support/effort.h"
#include "tests/support/report_capture.h"

namespace utdata::test {
namespace {

constexpr int operations = Repetitions(100'000);
constexpr int operationsOfARound = 2'000;  ///< then everything is removed: no reference is out

class Random {
 public:
  explicit Random(unsigned seed) : m_engine(seed) {}
  std::uint32_t Pick(std::uint32_t count) { return static_cast<std::uint32_t>(m_engine() % count); }
  bool OneIn(std::uint32_t count) { return Pick(count) == 0; }

 private:
  std::mt19937 m_engine;
};

// ---- descriptor items, shown on sub-channels, which are found by two ids

using Ids = std::array<std::uint32_t, 2>;  ///< sub-channel, channel

bool Matches(const Ids& wanted, const Ids& actual) {
  for (std::size_t index = 0; index < wanted.size(); ++index)
    if (wanted[index] != fset_AnyId && wanted[index] != actual[index]) return false;
  return true;
}

/// An item as the test knows it.
struct Known {
  CISubChan* item;
  Ids ids;
  bool isNew;
  bool isModified = false;
  CGSubchanTypeDescr* reference = nullptr;  ///< kept by the host, once it has asked for it
};

class SubChannelLookups : public testing::Test {
 protected:
  std::vector<CISubChan*> Walk(fset_enumFilters filter, const Ids& ids) const {
    std::vector<CISubChan*> found;
    for (const Known& known : all)
      if ((filter == fset_All || (filter == fset_New ? known.isNew : known.isModified)) &&
          Matches(ids, known.ids))
        found.push_back(known.item);
    return found;
  }
  Ids PickIds() { return {random.OneIn(20) ? fset_AnyId : random.Pick(9), random.Pick(9)}; }
  CGSubchanTypeDescr& RecordOf(const Ids& ids) {
    CGSubchanTypeDescr& record = records.emplace_back();
    record.subChannelId = ids[0];
    record.channelId = ids[1];
    return record;
  }
  Known* Some() {
    return all.empty() ? nullptr : &all[random.Pick(static_cast<std::uint32_t>(all.size()))];
  }

  void Add(const Ids& ids) {
    const bool isThere = !Walk(fset_All, ids).empty();
    const bool isNew = random.OneIn(2);
    CISubChan* const added = set.fset_AddGSubChan(&RecordOf(ids), isNew ? 1 : 0);
    ASSERT_EQ(isThere, added == nullptr);
    if (added) all.push_back({added, ids, isNew});
  }
  void EditThroughAReference(Known& known, const Ids& ids) {
    CGSubchanTypeDescr* fileSide = nullptr;
    if (known.reference == nullptr && random.OneIn(2))
      known.item->ischa1_ModifGet(&known.reference, &fileSide);
    else if (known.reference == nullptr)
      known.reference = known.item->ischa1_GetInfoRef();
    known.reference->subChannelId = ids[0];
    known.reference->channelId = ids[1];
    known.ids = ids;
  }
  void Set(Known& known, const Ids& ids) {
    known.item->ischa1_SetInfoCopy(&RecordOf(ids));
    known.isModified |= known.ids != ids;
    known.ids = ids;
  }
  void Replace(Known& known, const Ids& ids) {
    known.item->ischa1_ReplaceGInfo(&RecordOf(ids));
    known.ids = ids;
  }
  void ReplaceFirst(const Ids& ids) {
    const std::vector<CISubChan*> found = Walk(fset_All, ids);
    CISubChan* const replaced = set.fset_ReplaceGSubChan(&RecordOf(ids));
    ASSERT_EQ(found.empty() ? nullptr : found.front(), replaced);
    for (Known& known : all)
      if (known.item == replaced) known.ids = ids;
  }
  void Remove(fset_enumFilters filter, const Ids& ids) {
    const std::vector<CISubChan*> gone = Walk(filter, ids);
    ASSERT_EQ(gone.empty() ? 1U : 0U, set.fset_RemoveGSubChan(filter, ids[0], ids[1]));
    std::erase_if(all, [&](const Known& known) {
      return std::find(gone.begin(), gone.end(), known.item) != gone.end();
    });
  }
  void Change() {
    const Ids ids = PickIds();
    Known* const some = Some();
    const std::uint32_t kind = random.Pick(40);
    if (kind < 20 || !some)
      Add(ids);
    else if (kind < 23)
      Set(*some, ids);
    else if (kind < 25)
      Replace(*some, ids);
    else if (kind < 26)
      EditThroughAReference(*some, ids);
    else if (kind < 30 && some->reference)
      EditThroughAReference(*some, ids);
    else if (kind < 32)
      ReplaceFirst(ids);
    else if (kind < 34)
      some->item->ischa1_ModifSetStatus(some->isModified = random.OneIn(2));
    else if (kind < 38)
      Remove(fset_All, some->ids);
    else if (kind < 39)
      Remove(fset_Modified, {ids[0], fset_AnyId});
  }
  void Compare() {
    const Known* const some = Some();
    Ids ids = some && random.OneIn(2) ? some->ids : PickIds();
    if (random.OneIn(4)) ids[random.Pick(2)] = fset_AnyId;
    const auto filter = static_cast<fset_enumFilters>(random.OneIn(3) ? random.Pick(3) : 0);
    const std::vector<CISubChan*> expected = Walk(filter, ids);
    ASSERT_EQ(expected.empty() ? nullptr : expected.front(),
              set.fset_GetISubChan(filter, ids[0], ids[1]));
    CISubChanLst found;
    ASSERT_EQ(expected.size(), set.fset_GetISubChanLst(&found, filter, ids[0], ids[1]));
    ASSERT_EQ(expected, std::vector<CISubChan*>(found.begin(), found.end()));
  }

  Random random{20240917};
  DataHost host;
  CFSet& set = host.set;
  std::deque<CGSubchanTypeDescr> records;
  std::vector<Known> all;
};

TEST_F(SubChannelLookups, AnswerAsTheWalkDoesWhateverWayIdsChange) {
  std::size_t most = 0;
  for (int step = 0; step < operations; ++step) {
    if (step % operationsOfARound == 0) {
      Remove(fset_All, {fset_AnyId, fset_AnyId});
      records.clear();
    }
    Change();
    Compare();
    most = std::max(most, all.size());
    if (HasFatalFailure()) FAIL() << "at step " << step << " with " << all.size() << " items";
  }
  EXPECT_GT(most, 50U) << "more than a list that is walked anyway";
}

// ---- data items

using DataIds =
    std::array<std::uint32_t, 6>;  ///< bookmark, patch, channel, sub-channel, gate, class

struct KnownData {
  CIData* item;
  idata_typeId id;
  bool isNew = false;
  bool isModified = false;
  CRDataTypeDD* reference = nullptr;
};

bool Matches(const DataIds& wanted, const idata_typeId& id) {
  return (wanted[0] == 0 || wanted[0] == id.bookmarkType) &&
         (wanted[1] == fset_AnyId || wanted[1] == id.patchId) &&
         (wanted[2] == fset_AnyId || wanted[2] == id.channelId) &&
         (wanted[3] == fset_AnyId || wanted[3] == id.subChannelId) &&
         (wanted[4] == fset_AnyId || wanted[4] % 2000 == id.gateId % 2000) &&
         (wanted[5] == fset_AnyId || wanted[5] == id.dataClass);
}

DataIds IdsOf(const idata_typeId& id) {
  return {id.bookmarkType, id.patchId, id.channelId, id.subChannelId, id.gateId, id.dataClass};
}

class DataLookups : public DataGroups {
 protected:
  using Group = std::vector<KnownData>;

  static std::vector<CIData*> Walk(const Group& group,
                                   fset_enumFilters filter,
                                   const DataIds& ids) {
    std::vector<CIData*> found;
    for (const KnownData& known : group)
      if ((filter == fset_All || (filter == fset_New ? known.isNew : known.isModified)) &&
          Matches(ids, known.id))
        found.push_back(known.item);
    return found;
  }
  /// Masters among them.
  static bool MayBeGathered(std::uint32_t dataClass) {
    return dataClass <= 3 || dataClass == gdata_AScanMerged ||
           dataClass >= gdata_MultiChannelMaster;
  }
  static bool IsGathered(const idata_typeId& id) {
    return id.subChannelId != 0 && MayBeGathered(id.dataClass) &&
           id.dataClass < gdata_MultiChannelMaster;
  }
  idata_typeId PickId() {
    constexpr std::uint32_t classes[] = {1, 2, 3, 5, 7, 10, 12, 14, 17, 2001};
    const auto id = [this](std::uint32_t count) {
      return random.OneIn(25) ? fset_AnyId : random.Pick(count);
    };
    return {id(2),
            id(3),
            id(3),
            random.Pick(2) + 2000 * random.Pick(2),
            static_cast<gdata_enumDataClass>(classes[random.Pick(10)]),
            static_cast<eDataBookmarkType>(id(4))};
  }
  Group& AnyGroup() { return random.OneIn(4) ? masters : data; }
  KnownData* Some(Group& group) {
    return group.empty() ? nullptr : &group[random.Pick(static_cast<std::uint32_t>(group.size()))];
  }
  static KnownData& Of(Group& group, const CIData* item) {
    return *std::find_if(
        group.begin(), group.end(), [item](const KnownData& known) { return known.item == item; });
  }

  void AddOne() {
    const idata_typeId id = PickId();
    const std::vector<CIData*> there = Walk(data, fset_All, IdsOf(id));
    CIData* const added = Add(id);
    if (!there.empty()) {
      ASSERT_EQ(id.dataClass == gdata_CScanAngle ? there.front() : nullptr, added);
      return;
    }
    ASSERT_NE(nullptr, added);
    data.push_back({added, id});
    KnownData& known = data.back();
    added->idata1_GetId(known.id);  // construction gives a bookmark type
    if ((known.isModified = random.OneIn(2))) added->idata3_Modified();
    if ((known.isNew = random.OneIn(3))) added->idata3_New();
    if (IsGathered(known.id)) CheckMasterOf(known);
  }
  /// An element's master is the first of its ids among those there, else a new one at the end.
  void CheckMasterOf(const KnownData& element) {
    const bool isCScan = element.id.dataClass == 2 || element.id.dataClass == 3;
    idata_typeId id = element.id;
    id.dataClass = MasterOf(id.dataClass);
    DataIds wanted = IdsOf(id);
    wanted[3] = fset_AnyId;
    wanted[4] = isCScan ? id.gateId % 2000 : fset_AnyId;
    const std::vector<CIData*> there = Walk(masters, fset_All, wanted);
    CIData* const master = element.item->idata1_SubChannelMaster();
    ASSERT_NE(nullptr, master);
    if (there.empty()) {
      id.subChannelId = 0;
      id.gateId = isCScan ? id.gateId % 2000 : 0;
      masters.push_back({master, id});
    } else {
      ASSERT_EQ(there.front(), master);
    }
    std::uint32_t& number = Of(masters, master).id.subChannelId;
    number = std::max(number, element.id.subChannelId);
  }
  void EditThroughAReference(KnownData& known) {
    const idata_typeId id = PickId();
    if (!known.reference) known.reference = known.item->idata1_GetInfoRef();
    // One id or all: each may be what a look-up asks for.
    const std::uint32_t which = random.Pick(7);
    const auto is = [which](std::uint32_t number) { return which == number || which == 6; };
    if (is(0)) known.reference->SetDataBookmarkType(known.id.bookmarkType = id.bookmarkType);
    if (is(1)) known.reference->SetPatchID(known.id.patchId = id.patchId);
    if (is(2)) known.reference->channelId = known.id.channelId = id.channelId;
    // What makes an element of an item, or none of an element, is left alone.
    if (is(3) && !MayBeGathered(known.id.dataClass))
      known.reference->subChannelId = known.id.subChannelId = id.subChannelId;
    if (is(4)) known.reference->gateId = known.id.gateId = id.gateId;
    if (is(5) && !MayBeGathered(known.id.dataClass) && !MayBeGathered(id.dataClass))
      known.reference->dataClass = known.id.dataClass = id.dataClass;
  }
  void GiveBookmarkType(KnownData& known) {
    if (!IsGathered(known.id)) return;
    const auto type = static_cast<eDataBookmarkType>(random.Pick(4));
    CIData* const master = known.item->idata1_SubChannelMaster();
    for (std::uint32_t number = 1; number <= master->idata1_SubChannelQty(); ++number)
      Of(data, master->idata1_SubChannelGet(static_cast<long>(number))).id.bookmarkType = type;
    Of(masters, master).id.bookmarkType = type;
    known.item->SetDataBookmarkTypeofAssociatedChannel(type);
  }
  void RemoveSome(fset_enumFilters filter, const DataIds& ids) {
    const std::vector<CIData*> gone = Walk(data, filter, ids);
    ASSERT_EQ(gone.empty() ? 1U : 0U,
              set.fset_RemoveGData(filter, ids[0], ids[1], ids[2], ids[3], ids[4], ids[5]));
    std::erase_if(data, [&](const KnownData& known) {
      return std::find(gone.begin(), gone.end(), known.item) != gone.end();
    });
    std::erase_if(masters,
                  [](const KnownData& known) { return !CIData::IsValidObject(known.item); });
  }
  void Change() {
    KnownData* const some = Some(AnyGroup());
    const std::uint32_t kind = random.Pick(40);
    if (kind < 22 || !some)
      AddOne();
    else if (kind < 24)
      EditThroughAReference(*some);
    else if (kind < 30 && some->reference)
      EditThroughAReference(*some);
    else if (kind < 32)
      GiveBookmarkType(*some);
    else if (kind < 36)
      RemoveSome(fset_All, IdsOf(some->id));
  }

  void Compare() {
    const Group& of = AnyGroup();
    DataIds ids = IdsOf(PickId());
    if (const KnownData* const some = Some(const_cast<Group&>(of)); some && random.OneIn(2))
      ids = IdsOf(some->id);
    if (random.OneIn(8)) ids[5] = MasterOf(static_cast<gdata_enumDataClass>(ids[5]));
    for (std::size_t index = 0; index < ids.size(); ++index)
      if (random.OneIn(4)) ids[index] = index == 0 ? 0 : fset_AnyId;
    const auto filter = static_cast<fset_enumFilters>(random.OneIn(3) ? random.Pick(3) : 0);
    const bool isOfMasters = ids[5] != fset_AnyId && (ids[5] & gdata_MultiChannelMaster);
    const Group& group = isOfMasters ? masters : data;

    const std::vector<CIData*> expected = Walk(group, filter, ids);
    CIDataLst found;
    set.fset_GetIDataLst(&found, filter, ids[0], ids[1], ids[2], ids[3], ids[4], ids[5], 0, 0);
    ASSERT_EQ(expected, Content(found));
    ASSERT_EQ(expected.empty() ? nullptr : expected.front(),
              set.fset_GetIData(filter, ids[0], ids[1], ids[2], ids[3], ids[4], ids[5]));
    if (random.OneIn(10)) CompareOthers(filter, ids, group);
  }
  void CompareOthers(fset_enumFilters filter, DataIds ids, const Group& group) {
    CIDataLst found, channel, special, probe;
    set.fset_GetGateSpecificIDataList(&found, filter, ids[1], ids[2], ids[3], ids[4], ids[5]);
    ids[0] = 0;
    ASSERT_EQ(
        ids[4] == fset_AnyId || ids[4] < 2000 ? Walk(group, filter, ids) : std::vector<CIData*>(),
        Content(found));
    set.fset_GetSpecificChannelSortedIDataList(ids[2], &channel);
    const std::vector<CIData*> items = Content(channel);
    std::vector<CIData*> ofChannel;
    for (const KnownData& known : data)
      if (known.id.channelId == ids[2]) ofChannel.push_back(known.item);
    ASSERT_TRUE(
        std::is_permutation(items.begin(), items.end(), ofChannel.begin(), ofChannel.end()));
    std::vector<CIData*> specials;
    for (const KnownData& known : data)
      if (known.id.dataClass == 5 || known.id.dataClass == 7 || known.id.dataClass == 2001)
        specials.push_back(known.item);
    set.fset_GetSpecialIDataList(&special);
    ASSERT_EQ(specials, Content(special));
    const auto has = [this](std::uint32_t dataClass) {
      return !Walk(data, fset_All, {0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, dataClass})
                  .empty();
    };
    ASSERT_EQ(has(2001), set.fset_HasAdvancedViewData());
    ASSERT_EQ(has(5), set.fset_HasEddyCurrentData());
    ASSERT_EQ(has(7) ? 1 : 0, set.fset_HasAnalogData());
  }

  Random random{20250611};
  Group data, masters;
};

TEST_F(DataLookups, AnswerAsTheWalkDoesWhateverWayIdsChange) {
  const ReportCapture reports;  // elements of one master need not agree
  std::size_t most = 0;
  for (int step = 0; step < operations; ++step) {
    if (step % operationsOfARound == 0)
      RemoveSome(fset_All, {0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId});
    Change();
    Compare();
    most = std::max(most, data.size());
    if (HasFatalFailure()) FAIL() << "at step " << step << " with " << data.size() << " items";
  }
  EXPECT_GT(most, 50U) << "more than a list that is walked anyway";
}

}  // namespace
}  // namespace utdata::test
