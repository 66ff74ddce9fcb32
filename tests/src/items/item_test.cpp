// The item pattern on every class that follows it, and what single classes do differently.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "tests/support/report_capture.h"
#include "utdata/ichan.h"
#include "utdata/igate.h"
#include "utdata/iinfo.h"
#include "utdata/ipatch.h"
#include "utdata/iprobe.h"
#include "utdata/ischan.h"
#include "utdata/ismat.h"

namespace {

using utdata::test::ReportCapture;

// The exported names of each class under one name, and a field that distinguishes records.
#define PATTERN(Class, prefix, Descriptor, field)                   \
  struct Class##Pattern : Class {                                   \
    using Record = Descriptor;                                      \
    using Class::Class;                                             \
    static constexpr auto dumped = L"A " #Class " object\n";        \
    static constexpr auto text = &Descriptor::field;                \
    Record* Ref() { return prefix##_GetInfoRef(); }                 \
    void Copy(Record* out) { prefix##_GetInfoCopy(out); }           \
    void Set(Record* in) { prefix##_SetInfoCopy(in); }              \
    Record* FileSide() { return prefix##_GetGInfoRef(); }           \
    void FileCopy(Record* out) { prefix##_GetGInfoCopy(out); }      \
    void Replace(Record* source) { prefix##_ReplaceGInfo(source); } \
    std::uint32_t Both(Record** working, Record** fileSide) {       \
      return prefix##_ModifGet(working, fileSide);                  \
    }                                                               \
    bool Modified() { return prefix##_ModifGetStatus(); }           \
    void Clear() { prefix##_ModifClear(); }                         \
    bool New() { return prefix##_NewGetStatus(); }                  \
  };
PATTERN(CIChan, ichan1, CGChanTypeDescr, comment)
PATTERN(CIProbe, iprob1, CGProbeTypeDescr, model)
PATTERN(CIPatch, ipatch1, CGPatchTypeDescr, name)
PATTERN(CISubChan, ischa1, CGSubchanTypeDescr, name)
PATTERN(CIInfo, iinfo1, CGInfoTypeDescr, inspector)
PATTERN(CISpecMat, ismat1, CGSpecmatTypeDescr, name)

template <class Class>
class ItemPattern : public testing::Test {
 public:
  using Record = typename Class::Record;
  static Record Named(const wchar_t* text) {
    Record record;
    record.*Class::text = text;
    return record;
  }
};
using Patterns = testing::Types<CIChanPattern,
                                CIProbePattern,
                                CIPatchPattern,
                                CISubChanPattern,
                                CIInfoPattern,
                                CISpecMatPattern>;
TYPED_TEST_SUITE(ItemPattern, Patterns);

TYPED_TEST(ItemPattern, AnItemOfTheFileWorksOnACopy) {
  auto record = this->Named(L"stored");
  TypeParam item(&record, 0);
  typename TypeParam::Record *working = nullptr, *fileSide = nullptr;
  EXPECT_EQ(0U, item.Both(&working, &fileSide));
  EXPECT_EQ(&record, fileSide);
  EXPECT_EQ(&record, item.FileSide());
  EXPECT_EQ(item.Ref(), working);
  EXPECT_NE(&record, working);
  EXPECT_EQ(record, *working);
  EXPECT_FALSE(item.New());
  EXPECT_FALSE(item.Modified());
  CDumpContext dump;
  item.Dump(dump);
  const bool isNamed = !std::is_same_v<TypeParam, CISpecMatPattern>;
  EXPECT_EQ(isNamed ? TypeParam::dumped : L"", dump.Text());
}

TYPED_TEST(ItemPattern, ANewItemKeepsNothingOfTheGivenRecord) {
  auto record = std::make_unique<typename TypeParam::Record>(this->Named(L"given"));
  TypeParam item(record.get(), 1);
  record.reset();
  typename TypeParam::Record *working = nullptr, *fileSide = item.Ref();
  item.Both(&working, &fileSide);
  EXPECT_EQ(nullptr, fileSide);
  EXPECT_EQ(nullptr, item.FileSide());
  EXPECT_EQ(this->Named(L"given"), *working);
  auto untouched = this->Named(L"untouched");
  item.FileCopy(&untouched);
  EXPECT_EQ(this->Named(L"untouched"), untouched);
  EXPECT_TRUE(item.New());
  EXPECT_FALSE(item.Modified());
}

TYPED_TEST(ItemPattern, OnlyADifferingRecordModifies) {
  auto record = this->Named(L"stored");
  TypeParam item(&record, 0);
  auto same = this->Named(L"stored"), other = this->Named(L"edited"), copy = this->Named(L"");
  auto* const working = item.Ref();
  item.Set(&same);
  EXPECT_FALSE(item.Modified());
  item.Set(&other);
  EXPECT_TRUE(item.Modified());
  EXPECT_EQ(working, item.Ref()) << "pointers handed out stay good";
  item.Copy(&copy);
  EXPECT_EQ(other, copy);
  item.FileCopy(&copy);
  EXPECT_EQ(this->Named(L"stored"), copy);
  item.Clear();
  EXPECT_FALSE(item.Modified());
}

TYPED_TEST(ItemPattern, ReplaceKeepsTheModifiedFlag) {
  for (const int isNew : {0, 1}) {
    auto record = this->Named(L"stored"), edited = this->Named(L"edited"),
         replacement = this->Named(L"replacement");
    TypeParam item(&record, isNew);
    item.Replace(&replacement);
    EXPECT_FALSE(item.Modified());
    EXPECT_EQ(replacement, *item.Ref());
    item.Set(&edited);
    item.Replace(&replacement);
    EXPECT_TRUE(item.Modified());
    EXPECT_EQ(replacement, *item.Ref());
    item.Replace(item.Ref());
    EXPECT_EQ(replacement, *item.Ref()) << "its own working copy";
  }
}

TYPED_TEST(ItemPattern, MissingRecordsAreReportedAndChangeNothing) {
  ReportCapture reports;
  TypeParam empty(nullptr, 0);
  EXPECT_EQ(1U, reports.Assertions());
  EXPECT_TRUE(empty.New());
  EXPECT_EQ(typename TypeParam::Record{}, *empty.Ref());
  auto record = this->Named(L"stored");
  TypeParam item(&record, 0);
  item.Set(nullptr);
  item.Replace(nullptr);
  item.Copy(nullptr);
  item.FileCopy(nullptr);
  item.Both(nullptr, nullptr);
  EXPECT_EQ(7U, reports.Assertions());
  EXPECT_FALSE(item.Modified());
  EXPECT_EQ(record, *item.Ref());
}

TEST(Item, ReplaceCopiesIntoTheFileSideOrAdoptsIt) {
  CGChanTypeDescr stored, replacement;
  replacement.gain = 6;
  CIChan channel(&stored, 0);
  channel.ichan1_ReplaceGInfo(&replacement);
  EXPECT_EQ(&stored, channel.ichan1_GetGInfoRef());
  EXPECT_EQ(6, stored.gain);

  CGSpecmatTypeDescr steel, copper;
  copper.density = 8960;
  CISpecMat material(&steel, 1);
  EXPECT_TRUE(material.ismat1_NewGetStatus());
  material.ismat1_ReplaceGInfo(&copper);
  EXPECT_EQ(&copper, material.ismat1_GetGInfoRef());
  EXPECT_FALSE(material.ismat1_NewGetStatus());
  EXPECT_EQ(0, steel.density);
  EXPECT_EQ(8960, material.ismat1_GetInfoRef()->density);
}

TEST(Item, IdsAndNamesAreThoseOfTheWorkingCopy) {
  // Of the file's record, in which the id is another one by now.
  const auto item = []<class Item, class Record>(Item*, Record& record, std::uint32_t Record::*id) {
    record.*id = 7;
    record.name = L"upstream";
    auto made = std::make_unique<Item>(&record, 0);
    record.*id = 8;
    return made;
  };
  CGSubchanTypeDescr beam;
  CGGateTypeDescr echo;
  CGChanTypeDescr record;
  CGProbeTypeDescr angled;
  CGPatchTypeDescr weld;
  beam.subChannelId = 3;
  echo.gateId = 2003;
  const auto subChannel =
      item(static_cast<CISubChan*>(nullptr), beam, &CGSubchanTypeDescr::channelId);
  const auto gate = item(static_cast<CIGate*>(nullptr), echo, &CGGateTypeDescr::channelId);
  const auto channel = item(static_cast<CIChan*>(nullptr), record, &CGChanTypeDescr::channelId);
  const auto probe = item(static_cast<CIProbe*>(nullptr), angled, &CGProbeTypeDescr::probeId);
  const auto patch = item(static_cast<CIPatch*>(nullptr), weld, &CGPatchTypeDescr::patchId);
  ischa_id beamId;
  ischa_name beamName;
  subChannel->ischa1_GetId(&beamId);
  subChannel->ischa1_GetName(&beamName);
  igate_id gateId;
  std::wstring gateName;
  gate->igate1_GetId(&gateId);
  gate->igate1_GetName(gateName);
  ichan_id channelId;
  ichan_name channelName;
  channel->ichan1_GetId(&channelId);
  channel->ichan1_GetName(&channelName);
  iprob_id probeId;
  iprob_name probeName;
  probe->iprob1_GetId(&probeId);
  probe->iprob1_GetName(&probeName);
  CIPatchTypeId patchId;
  patch->ipatch1_GetId(&patchId);
  EXPECT_EQ(beamId.subChannelId, 3U);
  EXPECT_EQ(gateId.gateId, 2003U);
  for (const std::uint32_t id :
       {beamId.channelId, gateId.channelId, channelId.channelId, probeId.probeId, patchId.patchId})
    EXPECT_EQ(id, 7U);
  for (const std::wstring& name : {std::wstring(beamName.name),
                                   gateName,
                                   std::wstring(channelName.name),
                                   std::wstring(probeName.name)})
    EXPECT_EQ(name, L"upstream");
  EXPECT_EQ(1, channel->ichan1_GetGInfoCopy(&record));
  EXPECT_EQ(0, CIChan(&record, 1).ichan1_GetGInfoCopy(&record));

  const ReportCapture reports;
  subChannel->ischa1_GetId(nullptr);
  subChannel->ischa1_GetName(nullptr);
  gate->igate1_GetId(nullptr);
  channel->ichan1_GetId(nullptr);
  channel->ichan1_GetName(nullptr);
  probe->iprob1_GetId(nullptr);
  probe->iprob1_GetName(nullptr);
  patch->ipatch1_GetId(nullptr);
  EXPECT_EQ(8U, reports.Assertions());
}

TEST(Item, AGateSetterModifiesOnlyWithANewValue) {
  struct Setter {
    float CGGateTypeDescr::*field;
    void (CIGate::*set)(float);
    float (CIGate::*get)() const;
  };
  const Setter setters[] = {{&CGGateTypeDescr::start, &CIGate::Start, &CIGate::Start},
                            {&CGGateTypeDescr::width, &CIGate::Width, &CIGate::Width},
                            {&CGGateTypeDescr::positiveLevel, &CIGate::PLevel, &CIGate::PLevel},
                            {&CGGateTypeDescr::negativeLevel, &CIGate::NLevel, &CIGate::NLevel}};
  for (const auto& [field, set, get] : setters) {
    CGGateTypeDescr record;
    record.*field = 0.25F;
    CIGate gate(&record, 0);
    (gate.*set)(0.25F);
    EXPECT_FALSE(gate.igate1_ModifGetStatus());
    (gate.*set)(std::nextafter(0.25F, 1.0F));
    EXPECT_TRUE(gate.igate1_ModifGetStatus());
    EXPECT_EQ(std::nextafter(0.25F, 1.0F), (gate.*get)());
    EXPECT_EQ((gate.*get)(), gate.igate1_GetInfoRef()->*field);
    EXPECT_EQ(0.25F, record.*field);
  }
}

TEST(Item, AnOnLineUpdateReplacesAndModifies) {
  CGGateTypeDescr record, update, copy;
  update.start = 1e-6F;
  update.referenceGate = -2;
  update.reference = static_cast<ggate_EnumGateRef>(1);
  update.peakSelection = static_cast<ggate_EnumPeakSelection>(2);
  CIGate gate(&record, 0);
  EXPECT_FALSE(gate.igate1_NewGetStatus());
  gate.igate9_OnLineUpdate(&update, 0);
  EXPECT_TRUE(gate.igate1_ModifGetStatus());
  gate.igate1_GetGInfoCopy(&copy);
  EXPECT_EQ(update, copy);
  EXPECT_EQ(1e-6F, record.start);
  EXPECT_EQ(-2, gate.GetReferenceGate());
  EXPECT_EQ(update.reference, gate.Ref());
  EXPECT_EQ(update.peakSelection, gate.PeakSelection());
  CDumpContext dump;
  gate.Dump(dump);
  EXPECT_EQ(L"A CIGate object\n", dump.Text());
  EXPECT_EQ(1e-6F, gate.Start());
  gate.igate1_ModifSetStatus(false);
  ReportCapture reports;
  gate.igate9_OnLineUpdate(nullptr, 0);
  EXPECT_EQ(1U, reports.Assertions());
  EXPECT_FALSE(gate.igate1_ModifGetStatus());
}

}  // namespace
