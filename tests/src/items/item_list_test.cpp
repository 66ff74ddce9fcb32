// The list walk: order, filters, wildcards and the two ways of comparing gates.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"
#include "utdata/igatelist.h"
#include "utdata/ipatchlst.h"

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
  CIDataLst moved;
  list.RemoveIData(fset_All, &moved, 0, 0, 7, 0, 2003, gdata_CScanAmplitude);
  EXPECT_THAT(ContentOf(list), ElementsAre(&d));
}

TEST(ListRecord, ListsKnowTheirClass) {
  CIPatchLst patches;
  CIGateLst gates;
  CDumpContext dump;
  EXPECT_EQ(RUNTIME_CLASS(CIPatchLst), patches.GetRuntimeClass());
  EXPECT_TRUE(gates.IsKindOf(RUNTIME_CLASS(CObject)));
  EXPECT_FALSE(gates.IsKindOf(RUNTIME_CLASS(CIPatchLst)));
  patches.Dump(dump);
  EXPECT_EQ(L"A CIPatchLst object\n", dump.Text());
}

}  // namespace
