// The index against a walk written separately, over random additions, edits, removals and lookups.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "tests/support/data_host.h"
#include "utdata/igatelist.h"
#include "utdata/itemindex.h"

namespace {

using utdata::test::DataHost;
using utdata::test::EditableItem;

/// A walk that knows nothing of the library's: a vector in insertion order, and how one lookup
/// compares two arrays of ids.
template <class Item, class Ids>
struct Model {
  std::vector<Item*> items;
  bool (*equal)(const Ids& wanted, const Ids& actual);
  Ids (*idsOf)(Item&);
  bool (*passes)(Item&, fset_enumFilters);

  std::vector<Item*> Matches(fset_enumFilters filter, const Ids& wanted) const {
    std::vector<Item*> found;
    for (Item* item : items)
      if (passes(*item, filter) && equal(wanted, idsOf(*item))) found.push_back(item);
    return found;
  }
  void Remove(const std::vector<Item*>& gone) {
    std::erase_if(
        items, [&](Item* item) { return std::find(gone.begin(), gone.end(), item) != gone.end(); });
  }
};

template <class List>
auto Content(const List& list) {
  return std::vector<typename List::Item*>(list.begin(), list.end());
}

/// One random lookup of each kind has to answer as the model does; a move now and then.
template <class Index, class List, class Item, class Ids>
void Compare(Index& index,
             Model<Item, Ids>& model,
             fset_enumFilters filter,
             const Ids& ids,
             bool move) {
  const std::vector<Item*> expected = model.Matches(filter, ids);
  ASSERT_EQ(expected.empty() ? nullptr : expected.front(), index.First(filter, ids));
  List all;
  index.Append(filter, all, ids);
  ASSERT_EQ(expected, Content(all));
  if (!move) return;
  List moved;
  index.Move(filter, moved, ids);
  ASSERT_EQ(expected, Content(moved));
  model.Remove(expected);
  ASSERT_EQ(model.items, Content(index.Items()));
  ASSERT_EQ(static_cast<std::ptrdiff_t>(model.items.size()), index.Count());
  for (Item* item : moved) delete item;
}

TEST(ItemIndex, GatesAnswerAsTheWalkDoes) {
  using Ids = std::array<std::uint32_t, 2>;
  CReaderWriterLock lock;
  utdata::IndexedItemList<CIGateLst> index(lock);
  Model<CIGate, Ids> model{
      {},
      [](const Ids& wanted, const Ids& actual) {
        return (wanted[0] == fset_AnyId || wanted[0] == actual[0]) &&
               (wanted[1] == fset_AnyId || wanted[1] == actual[1]);
      },
      [](CIGate& gate) {
        return Ids{gate.igate1_GetInfoRef()->gateId, gate.igate1_GetInfoRef()->channelId};
      },
      [](CIGate& gate, fset_enumFilters filter) {
        return filter == fset_All ||
               (filter == fset_New ? gate.igate1_NewGetStatus() : gate.igate1_ModifGetStatus());
      }};
  std::mt19937 random(20240917);
  const auto pick = [&](std::uint32_t count) {
    return static_cast<std::uint32_t>(random() % count);
  };
  const auto gateRecord = [&] {
    CGGateTypeDescr record;
    record.gateId = pick(6) == 0 ? fset_AnyId : pick(5) + 2000 * pick(2);
    record.channelId = pick(4);
    record.start = static_cast<float>(pick(3));
    return record;
  };
  for (int step = 0; step < 20000; ++step) {
    CGGateTypeDescr record = gateRecord();
    CIGate* some = model.items.empty()
                       ? nullptr
                       : model.items[pick(static_cast<std::uint32_t>(model.items.size()))];
    switch (pick(8)) {
      case 0:
      case 1:
      case 2:
        index.Add(model.items.emplace_back(new CIGate(&record, 1)));
        break;
      case 3:
        if (some) some->igate1_ReplaceGInfo(&record);
        break;
      case 4:
        if (some) some->igate9_OnLineUpdate(&record, 0);
        break;
      case 5:
        if (some) some->igate1_ModifSetStatus(pick(2) == 0);
        break;
      default:
        break;
    }
    const Ids ids{pick(4) == 0 ? fset_AnyId : record.gateId,
                  pick(4) == 0 ? fset_AnyId : record.channelId};
    const auto filter = static_cast<fset_enumFilters>(pick(3));
    Compare<decltype(index), CIGateLst>(index, model, filter, ids, pick(6) == 0);
    if (HasFatalFailure()) FAIL() << "at step " << step;
  }
  for (CIGate* gate : model.items) delete gate;
}

/// Data items: gates by number, a wildcard of their own for bookmark types, and lookups of every
/// combination of ids.
TEST(ItemIndex, DataItemsAnswerAsTheWalkDoes) {
  using Ids = CIDataLst::Ids;
  DataHost host;
  CReaderWriterLock lock;
  utdata::IndexedItemList<CIDataLst> index(lock);
  Model<CIData, Ids> model{
      {},
      [](const Ids& wanted, const Ids& actual) {
        for (const std::size_t exact : {1U, 2U, 3U, 5U})
          if (wanted[exact] != fset_AnyId && wanted[exact] != actual[exact]) return false;
        return (wanted[0] == 0 || wanted[0] == actual[0]) &&
               (wanted[4] == fset_AnyId || wanted[4] % 2000 == actual[4] % 2000);
      },
      [](CIData& item) {
        idata_typeId id;
        item.idata1_GetId(id);
        return Ids{
            id.bookmarkType, id.patchId, id.channelId, id.subChannelId, id.gateId, id.dataClass};
      },
      [](CIData& item, fset_enumFilters filter) {
        return filter == fset_All || (filter == fset_New ? item.idata1_NewGetStatus()
                                                         : item.idata1_ModifGetStatus()) != 0;
      }};
  std::mt19937 random(1);
  const auto pick = [&](std::uint32_t count) {
    return static_cast<std::uint32_t>(random() % count);
  };
  for (int step = 0; step < 20000; ++step) {
    const idata_typeId id{pick(2),
                          pick(3),
                          pick(3),
                          pick(20) == 0 ? fset_AnyId : pick(2) + 2000 * pick(3),
                          static_cast<gdata_enumDataClass>(1 + pick(2)),
                          static_cast<eDataBookmarkType>(pick(8) == 0 ? fset_AnyId : pick(3))};
    CIData* some = model.items.empty()
                       ? nullptr
                       : model.items[pick(static_cast<std::uint32_t>(model.items.size()))];
    if (const std::uint32_t action = pick(4); action < 2) {
      auto* item = new EditableItem(host, id);
      if (pick(2)) item->idata3_Modified();
      if (pick(2)) item->idata3_New();
      model.items.push_back(item);
      index.Add(item);
    } else if (action == 2 && some) {
      static_cast<EditableItem*>(some)->SetId(id);
    }
    Ids ids{id.bookmarkType, id.patchId, id.channelId, id.subChannelId, id.gateId, id.dataClass};
    for (std::size_t place = 0; place < ids.size(); ++place)
      if (pick(5) == 0) ids[place] = place == 0 ? 0 : fset_AnyId;
    Compare<decltype(index), CIDataLst>(
        index, model, static_cast<fset_enumFilters>(pick(3)), ids, pick(4) == 0);
    if (HasFatalFailure()) FAIL() << "at step " << step;
  }
  for (CIData* item : model.items) delete item;
}

TEST(ItemIndex, AnIdChangedBehindItsBackNeverYieldsAWrongItem) {
  CReaderWriterLock lock;
  utdata::IndexedItemList<CIGateLst> index(lock);
  CGGateTypeDescr record;
  CIGate gate(&record, 1);
  index.Add(&gate);
  gate.igate1_GetInfoRef()->gateId = 5;
  EXPECT_EQ(nullptr, index.First(fset_All, {0, 0}));
  gate.igate1_ReplaceGInfo(gate.igate1_GetInfoRef());
  EXPECT_EQ(&gate, index.First(fset_All, {5, 0})) << "the next operation of its own files it";
  gate.igate1_GetInfoRef()->gateId = 6;
  CIGateLst moved;
  index.Move(fset_All, moved, {fset_AnyId, fset_AnyId});
  EXPECT_EQ(nullptr, index.First(fset_All, {5, 0})) << "nothing of it is left behind";
}

}  // namespace
