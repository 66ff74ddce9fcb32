// The list walk: order, filters, wildcards and the two ways of comparing gates.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"
#include "utdata/ichanlst.h"
#include "utdata/igatelist.h"
#include "utdata/ipatchlst.h"
#include "utdata/iprobelst.h"
#include "utdata/ischanlst.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using utdata::test::DataHost;
using utdata::test::EditableItem;
using utdata::test::ReportCapture;

template <class List>
auto ContentOf(const List& list) {
  return std::vector<typename List::Item*>(list.begin(), list.end());
}

class GateList : public testing::Test {
 protected:
  CIGate* Add(std::uint32_t gateId, std::uint32_t channelId) {
    CGGateTypeDescr& record = records.emplace_back();
    record.gateId = gateId;
    record.channelId = channelId;
    CIGate* gate = &gates.emplace_back(&record, 0);
    list.AddTail(gate);
    return gate;
  }

  std::deque<CGGateTypeDescr> records;
  std::deque<CIGate> gates;
  CIGateLst list, out;
};

TEST_F(GateList, AnEmptyListAnswersNothing) {
  EXPECT_EQ(nullptr, list.GetIGate(fset_All, fset_AnyId, fset_AnyId));
  list.GetIGateLst(fset_All, &out, fset_AnyId, fset_AnyId);
  list.RemoveIGate(fset_All, &out, fset_AnyId, fset_AnyId);
  EXPECT_TRUE(out.IsEmpty());
}

TEST_F(GateList, GatesAreComparedExactly) {
  CIGate* far = Add(2003, 7);
  CIGate* near = Add(3, 7);
  Add(3, 8);
  EXPECT_EQ(near, list.GetIGate(fset_All, 3, 7));
  EXPECT_EQ(far, list.GetIGate(fset_All, 2003, fset_AnyId));
  EXPECT_EQ(nullptr, list.GetIGate(fset_All, 4003, 7));
}

/// A list of three items, or as many as tell the ids apart, through its own names.
/// @param fields the ids, in the order in which a lookup names them
template <class List, class Record, class... Id>
void ExpectLookups(typename List::Item* (List::*first)(fset_enumFilters, Id...) const,
                   void (List::*all)(fset_enumFilters, List*, Id...) const,
                   void (List::*move)(fset_enumFilters, List*, Id...),
                   const std::array<std::uint32_t Record::*, sizeof...(Id)>& fields,
                   const std::wstring& dumped) {
  using Item = typename List::Item;
  constexpr std::size_t idQuantity = sizeof...(Id);
  std::array<Record, idQuantity + 1> records;  // the first is asked for; each other differs in one
  std::array<std::uint32_t, idQuantity> wanted, any;
  any.fill(fset_AnyId);
  List list, out;
  std::deque<Item> items;
  for (std::size_t place = records.size(); place-- > 0;) {
    for (std::size_t id = 0; id < idQuantity; ++id)
      records[place].*fields[id] = wanted[id] = static_cast<std::uint32_t>(10 + id);
    if (place > 0) ++(records[place].*fields[place - 1]);
    list.AddTail(&items.emplace_back(&records[place], 0));
  }
  Item* const asked = &items.back();
  const auto call = [&](auto operation, const auto& ids, auto... leading) {
    return std::apply([&](auto... id) { return (list.*operation)(fset_All, leading..., id...); },
                      ids);
  };
  EXPECT_EQ(asked, call(first, wanted));
  EXPECT_EQ(&items.front(), call(first, any));
  call(all, wanted, &out);
  call(all, any, &out);
  auto expected = ContentOf(list);
  expected.insert(expected.begin(), asked);
  EXPECT_EQ(expected, ContentOf(out));
  out.RemoveAll();
  call(move, wanted, &out);
  EXPECT_THAT(ContentOf(out), ElementsAre(asked));
  EXPECT_EQ(idQuantity, static_cast<std::size_t>(list.GetCount()));
  CDumpContext dump;
  list.Dump(dump);
  EXPECT_EQ(dumped, dump.Text());
}

TEST(Lists, AskForTheirOwnIdsUnderTheirOwnNames) {
  ExpectLookups<CIChanLst, CGChanTypeDescr>(&CIChanLst::GetIChan,
                                            &CIChanLst::GetIChanLst,
                                            &CIChanLst::RemoveIChan,
                                            {&CGChanTypeDescr::channelId},
                                            L"A CIChanLst object\n");
  ExpectLookups<CIPatchLst, CGPatchTypeDescr>(&CIPatchLst::GetIPatch,
                                              &CIPatchLst::GetIPatchLst,
                                              &CIPatchLst::RemoveIPatch,
                                              {&CGPatchTypeDescr::patchId},
                                              L"A CIPatchLst object\n");
  ExpectLookups<CIProbeLst, CGProbeTypeDescr>(&CIProbeLst::GetIProbe,
                                              &CIProbeLst::GetIProbeLst,
                                              &CIProbeLst::RemoveIProbe,
                                              {&CGProbeTypeDescr::probeId},
                                              L"A CIProbeLst object\n");
  ExpectLookups<CISubChanLst, CGSubchanTypeDescr>(
      &CISubChanLst::GetISubChan,
      &CISubChanLst::GetISubChanLst,
      &CISubChanLst::RemoveISubChan,
      {&CGSubchanTypeDescr::subChannelId, &CGSubchanTypeDescr::channelId},
      L"A CISubChanLst object\n");
  ExpectLookups<CIGateLst, CGGateTypeDescr>(&CIGateLst::GetIGate,
                                            &CIGateLst::GetIGateLst,
                                            &CIGateLst::RemoveIGate,
                                            {&CGGateTypeDescr::gateId, &CGGateTypeDescr::channelId},
                                            L"a CIGateLst\n");
}

TEST_F(GateList, MovedAndLeftItemsKeepTheirOrder) {
  CIGate *a = Add(1, 0), *b = Add(2, 1), *c = Add(3, 0), *d = Add(4, 1), *e = Add(5, 0);
  list.GetIGateLst(fset_All, &out, 4, fset_AnyId);
  list.RemoveIGate(fset_All, &out, fset_AnyId, 0);
  EXPECT_THAT(ContentOf(out), ElementsAre(d, a, c, e)) << "results are appended";
  EXPECT_THAT(ContentOf(list), ElementsAre(b, d));
  list.RemoveIGate(fset_All, &out, fset_AnyId, fset_AnyId);
  EXPECT_TRUE(list.IsEmpty());
}

TEST_F(GateList, FiltersAskForTheStatus) {
  CIGate *plain = Add(1, 0), *modified = Add(2, 0);
  CGGateTypeDescr record;
  CIGate fresh(&record, 1);
  list.AddTail(&fresh);
  modified->igate1_ModifSetStatus(true);
  list.GetIGateLst(fset_Modified, &out, fset_AnyId, fset_AnyId);
  list.GetIGateLst(fset_New, &out, fset_AnyId, fset_AnyId);
  EXPECT_THAT(ContentOf(out), ElementsAre(modified, &fresh));
  ReportCapture reports;
  out.RemoveAll();
  list.GetIGateLst(static_cast<fset_enumFilters>(3), &out, fset_AnyId, 0);
  EXPECT_THAT(ContentOf(out), ElementsAre(plain, modified, &fresh))
      << "an unknown filter passes all";
  EXPECT_EQ(3U, reports.Assertions());
}

TEST(DataList, GatesAreComparedByNumberAndBookmarksByTheirOwnWildcard) {
  const auto id = [](std::uint32_t gate, std::uint32_t bookmark) {
    return idata_typeId{
        0, 7, 0, gate, gdata_CScanAmplitude, static_cast<eDataBookmarkType>(bookmark)};
  };
  DataHost host;
  EditableItem a(host, id(3, 0)), b(host, id(2003, 2)), c(host, id(4003, fset_AnyId)),
      d(host, id(4, 2));
  CIDataLst list;
  for (CIData* item : {&a, &b, &c, &d}) list.AddTail(item);
  const auto byNumber = [&](std::uint32_t bookmark, std::uint32_t gate) {
    CIDataLst out;
    list.GetIDataLst(fset_All, &out, bookmark, fset_AnyId, 7, fset_AnyId, gate, fset_AnyId);
    return ContentOf(out);
  };
  const auto ofGate = [&](std::uint32_t gate) {
    CIDataLst out;
    list.GetGateIDataList(fset_All, &out, fset_AnyId, 7, fset_AnyId, gate, fset_AnyId);
    return ContentOf(out);
  };
  EXPECT_THAT(byNumber(0, 2003), ElementsAre(&a, &b, &c));
  EXPECT_THAT(byNumber(0, 3), ElementsAre(&a, &b, &c));
  EXPECT_THAT(byNumber(2, fset_AnyId), ElementsAre(&b, &d));
  EXPECT_THAT(byNumber(fset_AnyId, 3), ElementsAre(&c)) << "all ones is an ordinary bookmark type";
  EXPECT_THAT(ofGate(3), ElementsAre(&a, &b, &c));
  EXPECT_THAT(ofGate(2003), IsEmpty());
  EXPECT_THAT(ofGate(fset_AnyId), ElementsAre(&a, &b, &c, &d));
  EXPECT_EQ(
      nullptr,
      list.GetIData(fset_All, 0, 0, 7, 0, 3, gdata_CScanAmplitude | gdata_MultiChannelMaster));
  EXPECT_EQ(&b, list.GetIData(fset_All, 2, 0, 7, 0, 3, gdata_CScanAmplitude));
  CIDataLst moved;
  list.RemoveIData(fset_All, &moved, 0, 0, 7, 0, 2003, gdata_CScanAmplitude);
  EXPECT_THAT(ContentOf(list), ElementsAre(&d));
}

}  // namespace
