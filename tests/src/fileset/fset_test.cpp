// The file set: what additions, lookups, removals, replacements and status operations answer, on
// every type.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "src/fileset/data_lists.h"
#include "tests/src/fileset/document.h"
#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"
#include "utdata/fset.h"
#include "utdata/spec.h"

namespace {

using testing::ElementsAre;
using utdata::test::DataHost;
using utdata::test::EditableItem;
using utdata::test::ReportCapture;

constexpr auto noSuchFilter = static_cast<fset_enumFilters>(7);

class FileSet : public testing::Test {
 protected:
  CDocument document;
  CFSet set{&document};
};

using CIChanList = CIChanLst;
using CIPatchList = CIPatchLst;
using CIProbeList = CIProbeLst;
using CIGateList = CIGateLst;
using CISubChanList = CISubChanLst;

// One type's operations under one name: a record and a lookup with the ids (number, 4), or (number)
// where the type has one id.
#define TYPE_OPERATIONS(Type, Short, Descriptor, idField, ...)                                    \
  struct Type##Operations {                                                                       \
    using Record = Descriptor;                                                                    \
    using List = Type##List;                                                                      \
    static Record Make(std::uint32_t number) {                                                    \
      Record record;                                                                              \
      record.idField = number;                                                                    \
      __VA_OPT__(record.channelId = 4;)                                                           \
      record.name = L"made";                                                                      \
      return record;                                                                              \
    }                                                                                             \
    static Type* Add(CFSet& set, Record* record, int isNew = 0) {                                 \
      return set.fset_AddG##Short(record, isNew);                                                 \
    }                                                                                             \
    static Type* Get(CFSet& set, fset_enumFilters filter, std::uint32_t number) {                 \
      return set.fset_GetI##Short(filter, number __VA_OPT__(, ) __VA_ARGS__);                     \
    }                                                                                             \
    static std::uint32_t GetAll(CFSet& set,                                                       \
                                List* out,                                                        \
                                fset_enumFilters filter,                                          \
                                std::uint32_t number) {                                           \
      return set.fset_GetI##Short##Lst(out, filter, number __VA_OPT__(, ) __VA_ARGS__);           \
    }                                                                                             \
    static std::uint32_t Remove(CFSet& set, fset_enumFilters filter, std::uint32_t number) {      \
      return set.fset_RemoveG##Short(filter, number __VA_OPT__(, ) __VA_ARGS__);                  \
    }                                                                                             \
    static Type* Replace(CFSet& set, Record* record) { return set.fset_ReplaceG##Short(record); } \
  };
TYPE_OPERATIONS(CIChan, Chan, CGChanTypeDescr, channelId)
TYPE_OPERATIONS(CIPatch, Patch, CGPatchTypeDescr, patchId)
TYPE_OPERATIONS(CIProbe, Probe, CGProbeTypeDescr, probeId)
TYPE_OPERATIONS(CIGate, Gate, CGGateTypeDescr, gateId, 4)
TYPE_OPERATIONS(CISubChan, SubChan, CGSubchanTypeDescr, subChannelId, 4)

template <class Operations>
class DescriptorItems : public testing::Test {
 protected:
  CDocument document;
  CFSet fileSet{&document};
};
using Types = testing::Types<CIChanOperations,
                             CIPatchOperations,
                             CIProbeOperations,
                             CIGateOperations,
                             CISubChanOperations>;
TYPED_TEST_SUITE(DescriptorItems, Types);

TYPED_TEST(DescriptorItems, AreAddedFoundAndRemovedByTheirIds) {
  CFSet& set = this->fileSet;
  auto first = TypeParam::Make(1), second = TypeParam::Make(2001), twin = TypeParam::Make(1);
  auto* const item = TypeParam::Add(set, &first);
  ASSERT_NE(nullptr, item);
  auto* const fresh = TypeParam::Add(set, &second, 1);
  EXPECT_EQ(nullptr, TypeParam::Add(set, &twin)) << "its ids are taken";
  EXPECT_EQ(item, TypeParam::Get(set, fset_All, 1));
  EXPECT_EQ(fresh, TypeParam::Get(set, fset_New, fset_AnyId));
  EXPECT_EQ(nullptr, TypeParam::Get(set, fset_Modified, fset_AnyId));
  EXPECT_EQ(nullptr, TypeParam::Get(set, fset_All, 4001));

  typename TypeParam::List all;
  EXPECT_EQ(2U, TypeParam::GetAll(set, &all, fset_All, fset_AnyId));
  EXPECT_EQ(item, all.GetHead());
  EXPECT_EQ(3U, TypeParam::GetAll(set, &all, fset_All, 2001)) << "results are appended";

  EXPECT_EQ(1U, TypeParam::Remove(set, fset_New, 1));
  EXPECT_EQ(0U, TypeParam::Remove(set, fset_All, 1));
  EXPECT_EQ(nullptr, TypeParam::Get(set, fset_All, 1));
  EXPECT_NE(nullptr, TypeParam::Add(set, &twin)) << "its ids are free again";
  EXPECT_EQ(0U, TypeParam::Remove(set, fset_All, fset_AnyId));
  EXPECT_EQ(1U, TypeParam::Remove(set, fset_All, fset_AnyId));
}

TYPED_TEST(DescriptorItems, AreReplacedInPlace) {
  CFSet& set = this->fileSet;
  auto record = TypeParam::Make(1), replacement = TypeParam::Make(1), unknown = TypeParam::Make(9);
  replacement.name = L"replaced";
  auto* const item = TypeParam::Add(set, &record);
  EXPECT_EQ(item, TypeParam::Replace(set, &replacement));
  EXPECT_EQ(L"replaced", record.name);
  EXPECT_EQ(nullptr, TypeParam::Replace(set, &unknown));
  EXPECT_EQ(0, set.fset_IsModified());
}

TYPED_TEST(DescriptorItems, AnswerNothingForNothing) {
  CFSet& set = this->fileSet;
  EXPECT_EQ(nullptr, TypeParam::Add(set, nullptr));
  EXPECT_EQ(nullptr, TypeParam::Replace(set, nullptr));
  EXPECT_EQ(0U, TypeParam::GetAll(set, nullptr, fset_All, fset_AnyId));
  auto record = TypeParam::Make(1);
  auto* const item = TypeParam::Add(set, &record);
  const ReportCapture reports;
  EXPECT_EQ(item, TypeParam::Get(set, noSuchFilter, 1));
  EXPECT_EQ(1U, reports.Assertions());
}

TYPED_TEST(DescriptorItems, ADescriptorWithTheWildcardIdMeansTheFirstItem) {
  CFSet& set = this->fileSet;
  auto anyId = TypeParam::Make(fset_AnyId), record = TypeParam::Make(1);
  anyId.name = L"any";
  auto* const item = TypeParam::Add(set, &record);
  EXPECT_EQ(nullptr, TypeParam::Add(set, &anyId));
  EXPECT_EQ(item, TypeParam::Replace(set, &anyId));
  EXPECT_EQ(nullptr, TypeParam::Get(set, fset_All, 1)) << "it took the descriptor's id, too";
}

TEST_F(FileSet, FindsAnItemUnderTheIdItIsGiven) {
  CGChanTypeDescr records[2];
  records[1].channelId = 1;
  CIChan* const zero = set.fset_AddGChan(&records[0], 0);
  CIChan* const one = set.fset_AddGChan(&records[1], 0);
  EXPECT_EQ(2U, set.fset_GetIChanCount());
  CGChanTypeDescr edited;
  edited.channelId = 1;
  zero->ichan1_SetInfoCopy(&edited);
  EXPECT_EQ(zero, set.fset_GetIChan(fset_All, 1)) << "the first in the list's order";
  EXPECT_EQ(nullptr, set.fset_GetIChan(fset_All, 0));
  edited.channelId = 5;
  zero->ichan1_SetInfoCopy(&edited);
  EXPECT_EQ(one, set.fset_GetIChan(fset_All, 1));
  EXPECT_EQ(zero, set.fset_GetIChan(fset_Modified, 5));
}

TEST_F(FileSet, HoldsOneGeneralInformation) {
  CGInfoTypeDescr record, other;
  other.inspector = L"other";
  EXPECT_EQ(nullptr, set.fset_ReplaceGInfo(&record));
  EXPECT_EQ(nullptr, set.fset_ReplaceGInfo(nullptr));
  EXPECT_EQ(nullptr, set.fset_AddGInfo(nullptr, 0));
  EXPECT_EQ(1U, set.fset_RemoveGInfo(fset_All));
  CIInfo* const info = set.fset_AddGInfo(&record, 0);
  EXPECT_EQ(nullptr, set.fset_AddGInfo(&other, 0));
  EXPECT_EQ(info, set.fset_GetIInfo(fset_All));
  EXPECT_EQ(nullptr, set.fset_GetIInfo(fset_Modified));
  EXPECT_EQ(nullptr, set.fset_GetIInfo(fset_New));
  EXPECT_EQ(info, set.fset_ReplaceGInfo(&other));
  EXPECT_EQ(L"other", record.inspector);
  const ReportCapture reports;
  EXPECT_EQ(nullptr, set.fset_GetIInfo(noSuchFilter)) << "here an unknown filter passes nothing";
  EXPECT_EQ(1U, set.fset_RemoveGInfo(noSuchFilter));
  EXPECT_EQ(2U, reports.Assertions());
  EXPECT_EQ(1U, set.fset_RemoveGInfo(fset_Modified));
  EXPECT_EQ(0U, set.fset_RemoveGInfo(fset_All));
  EXPECT_EQ(nullptr, set.fset_GetIInfo(fset_All));
}

TEST_F(FileSet, StoresCopiesOfWeldDescriptorsByTheirTwoIds) {
  CGWeldFillDescr fill, twin;
  fill.weldId = twin.weldId = 1;
  fill.fillId = twin.fillId = 2;
  fill.outline = {{0.001, 0.002}};
  EXPECT_EQ(&fill, set.fset_AddGWeldFill(&fill));
  CGWeldFillDescr* const stored = set.fset_GetGWeldFill(1, 2);
  ASSERT_NE(nullptr, stored);
  EXPECT_NE(&fill, stored);
  EXPECT_EQ(fill, *stored);
  EXPECT_EQ(stored, set.fset_AddGWeldFill(&twin));
  EXPECT_EQ(nullptr, set.fset_GetGWeldFill(2, 1));
  EXPECT_EQ(nullptr, set.fset_AddGWeldFill(nullptr));
  EXPECT_THAT(set.fset_GetGWeldFillList(), ElementsAre(stored));

  EXPECT_EQ(nullptr, set.fset_AddGWeldScanPlan(nullptr));
  CGWeldScanPlanDescr plan, otherSide;
  plan.planId = otherSide.planId = 3;
  otherSide.side = 2;
  EXPECT_EQ(&plan, set.fset_AddGWeldScanPlan(&plan));
  EXPECT_NE(&otherSide, set.fset_AddGWeldScanPlan(&otherSide))
      << "the side does not distinguish plans";
  EXPECT_THAT(set.fset_GetGWeldScanPlanList(), ElementsAre(set.fset_GetGWeldScanPlan(0, 3)));
}

TEST_F(FileSet, SaysWhetherAnythingIsModified) {
  CGChanTypeDescr channel;
  CGGateTypeDescr gate;
  CGPatchTypeDescr patch;
  CGProbeTypeDescr probe;
  CGSubchanTypeDescr subChannel;
  CGInfoTypeDescr info;
  CIChan* const iChannel = set.fset_AddGChan(&channel, 1);
  CIGate* const iGate = set.fset_AddGGate(&gate, 0);
  CIPatch* const iPatch = set.fset_AddGPatch(&patch, 0);
  CIProbe* const iProbe = set.fset_AddGProbe(&probe, 0);
  CISubChan* const iSubChannel = set.fset_AddGSubChan(&subChannel, 0);
  CIInfo* const iInfo = set.fset_AddGInfo(&info, 0);
  EXPECT_EQ(0, set.fset_IsModified()) << "a new channel alone does not count";
  patch.name = info.title = L"edited";
  DataHost host;
  CGDataTypeFDD scan = utdata::test::SoundRecord();
  CIData* const iData = set.fset_AddGData(&scan, nullptr, &host.volumes, 0);
  const std::vector<std::function<void()>> edits = {
      [&] { iData->idata3_Modified(); },
      [&] { iChannel->ichan1_ModifSetStatus(true); },
      [&] { iGate->Width(1e-6F); },
      [&] { iPatch->ipatch1_SetInfoCopy(&patch); },
      [&] { iProbe->iprob1_ModifSetStatus(true); },
      [&] { iSubChannel->ischa1_ModifSetStatus(true); },
      [&] { iInfo->iinfo1_SetInfoCopy(&info); }};
  for (const auto& edit : edits) {
    edit();
    EXPECT_EQ(1, set.fset_IsModified());
    set.fset_ClearNew();
    EXPECT_EQ(1, set.fset_IsModified());
    set.fset_ClearModified();
    EXPECT_EQ(0, set.fset_IsModified());
  }
  iData->idata3_New();
  EXPECT_EQ(1, set.fset_IsModified());
  set.fset_ClearNew();
  EXPECT_EQ(0, set.fset_IsModified());
  EXPECT_EQ(0U, set.fset_RemoveGData(fset_All, 0, 0, 0, 0, 0, gdata_AScan)) << "before its host";
}

TEST(FileSetLife, AMissingDocumentIsReported) {
  const ReportCapture reports;
  CFSet set(static_cast<IGDataSupplier*>(nullptr));
  EXPECT_EQ(1U, reports.Assertions());
  CIDataLst out;
  EXPECT_EQ(
      0U,
      set.fset_GetIDataLst(
          &out, fset_All, 0, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, fset_AnyId, 0, 0));
  EXPECT_EQ(0U, set.fset_GetIDataLst(nullptr, fset_All, 0, 0, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(2U, reports.Assertions());
}

TEST(DataLists, SubChannelsLeaveTheirMasterBeforeTheyGo) {
  DataHost host;
  utdata::DataList data, masters;
  constexpr auto masterClass =
      static_cast<gdata_enumDataClass>(gdata_CScanAmplitude | gdata_MultiChannelMaster);
  auto* const master = new EditableItem(host, {.dataClass = masterClass});
  masters.Add(master);
  for (std::uint32_t number : {1U, 2U, 3U}) {
    auto* const element =
        new EditableItem(host, {.subChannelId = number, .dataClass = gdata_CScanAmplitude});
    element->idata3_New();
    element->idata3_Modified();
    data.Add(element);
    master->idata1_SubChannelAdd(element);
  }
  utdata::ClearEach(data, fset_New, utdata::everyDataItem, &CIData::idata1_NewClear);
  EXPECT_EQ(nullptr, data.First(fset_New, utdata::everyDataItem));
  CIData* const first = data.First(fset_Modified, utdata::everyDataItem);
  EXPECT_TRUE(CIData::IsValidObject(first));
  utdata::DeleteDataItems(data);
  EXPECT_FALSE(CIData::IsValidObject(first));
  EXPECT_EQ(0U, master->idata1_SubChannelQty());
  EXPECT_EQ(0, data.Count());
  utdata::DeleteDataItems(masters);
  EXPECT_FALSE(CIData::IsValidObject(master));
}

TEST(Specimen, HoldsOneMaterial) {
  CSpec specimen;
  CGSpecmatTypeDescr steel, copper;
  EXPECT_EQ(nullptr, specimen.spec_SpecMatGet(spec_All));
  EXPECT_EQ(nullptr, specimen.spec_SpecMatReplace(&copper));
  EXPECT_EQ(nullptr, specimen.spec_SpecMatAdd(nullptr, 0));
  CISpecMat* const material = specimen.spec_SpecMatAdd(&steel, 1);
  EXPECT_EQ(nullptr, specimen.spec_SpecMatAdd(&copper, 0));
  EXPECT_EQ(material, specimen.spec_SpecMatGet(spec_New));
  EXPECT_EQ(material, specimen.spec_SpecMatReplace(&copper));
  EXPECT_EQ(nullptr, specimen.spec_SpecMatGet(spec_New));
  EXPECT_EQ(1U, specimen.spec_SpecMatRemove(spec_Modified));
  const ReportCapture reports;
  EXPECT_EQ(nullptr, specimen.spec_SpecMatGet(static_cast<spec_enumFilters>(3)));
  EXPECT_EQ(1U, specimen.spec_SpecMatRemove(static_cast<spec_enumFilters>(3)));
  EXPECT_EQ(2U, reports.Assertions());
  EXPECT_EQ(0U, specimen.spec_SpecMatRemove(spec_All));
  EXPECT_EQ(nullptr, specimen.spec_SpecMatGet(spec_All));
  EXPECT_EQ(kvt_SystemMetric, specimen.spec_GetPreferredUnitSystem());
}

TEST(Specimen, AnInfoFieldCarriesItsTexts) {
  idata_typeId dataId;
  const CInfoField empty;
  EXPECT_EQ(12U, empty.GetViewType());
  EXPECT_EQ(1, empty.IsActiveView());
  EXPECT_EQ(nullptr, empty.GetDataId());
  const CInfoField field(-3,
                         L"description",
                         L"short",
                         L"category",
                         L"mm",
                         0,
                         static_cast<scandora_enumViewType>(4),
                         &dataId);
  CInfoField copy;
  copy = field;
  EXPECT_EQ(-3, copy.GetId());
  EXPECT_EQ(L"description", copy.GetDescription());
  EXPECT_EQ(L"short", copy.GetShortName());
  EXPECT_EQ(L"category", copy.GetCategory());
  EXPECT_EQ(L"mm", copy.GetUnit());
  EXPECT_EQ(0, copy.IsActiveView());
  EXPECT_EQ(4U, copy.GetViewType());
  EXPECT_EQ(&dataId, copy.GetDataId());
  copy.SetDescription(L"other");
  copy.SetShortName(L"o");
  copy.SetUnit(L"s");
  copy.SetViewType(static_cast<scandora_enumViewType>(5));
  copy.SetIsActiveView(1);
  copy.SetDataId(nullptr);
  EXPECT_EQ(L"other", copy.GetDescription());
  EXPECT_EQ(L"o", copy.GetShortName());
  EXPECT_EQ(L"s", copy.GetUnit());
  EXPECT_EQ(5U, copy.GetViewType());
  EXPECT_EQ(1, copy.IsActiveView());
  EXPECT_EQ(nullptr, copy.GetDataId());
}

}  // namespace
