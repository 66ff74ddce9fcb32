// Data items: dimensions, kinds of data, loading, and the way to the samples.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"

namespace {

using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

constexpr gdata_enumDataClass Class(std::uint32_t c) { return static_cast<gdata_enumDataClass>(c); }

TEST(DataAccess, DimensionsAreTheRecordsAndResolutionsTheDescriptors) {
  DataHost host;
  CGDataTypeFDD record = SoundRecord({.dataClass = gdata_CScanPosition});
  record.columnOffset = 0.5f;
  record.dataResolution = 2e-8f;
  record.dataOffset = 3e-6f;
  record.sampleOffset = 1e-6f;
  record.SetDataRectification(gdata_RectifNone);
  record.SetDataType(kvt_Int8);
  record.dataMinimum = -128;
  record.dataMaximum = 127;
  const auto item = host.Make(record);
  const std::uint32_t quantities[] = {10, 5, 100, 255};
  const double resolutions[] = {0.001f, 0.001f, 2e-8f, 2e-8f};
  const double offsets[] = {0.5f, 0, 1e-6f, 3e-6f};
  for (const std::uint32_t axis : {0u, 1u, 2u, 3u}) {
    EXPECT_EQ(item->idata3_GetDimQty(static_cast<kvt_enumAxis>(axis)), quantities[axis]);
    EXPECT_EQ(item->idata3_GetDimResol(static_cast<kvt_enumAxis>(axis)), resolutions[axis]);
    EXPECT_EQ(item->idata3_GetDimOffs(static_cast<kvt_enumAxis>(axis)), offsets[axis]);
  }
  EXPECT_EQ(item->idata3_GetSampleQty(), 255u) << "re-derived, other than the record's";
  EXPECT_EQ(item->idata3_GetSampleOffs(), 3e-6f);
  ReportCapture reports;
  EXPECT_EQ(item->idata3_GetDimQty(kvt_AxisFifth), 0u);
  EXPECT_EQ(item->idata3_GetDimResol(kvt_AxisSixth), 0);
  EXPECT_EQ(reports.Assertions(), 2u);
  EXPECT_EQ(item->idata3_GetDimOffs(kvt_AxisFifth), 0);
  EXPECT_EQ(reports.Assertions(), 2u) << "offsets are not reported";
  CGDataTypeFDD& stored = *item->idata1_GetGInfoRef();
  stored.dataMaximum = stored.dataMinimum;
  EXPECT_EQ(item->idata3_GetDimQty(kvt_AxisAmplitude), 0u);
  stored.dataMaximum = 1e30f;
  EXPECT_EQ(item->idata3_GetDimQty(kvt_AxisAmplitude), 0xFFFFFFFFu);
}

/// What the getters of single values answer, one after the other.
std::string Answers(const CIData& item) {
  float extremes[] = {0, 0};
  item.idata3_GetAbsoluteMinMax(&extremes[0], &extremes[1]);
  std::ostringstream text;
  const auto put = [&text](auto... answers) { ((text << ' ' << answers), ...); };
  put(item.idata3_GetColQty(), item.idata3_GetColResol(), item.idata3_GetColOffs());
  put(item.idata3_GetColUnits(), item.idata3_GetRowQty(), item.idata3_GetRowResol());
  put(item.idata3_GetRowOffs(), item.idata3_GetRowUnits(), item.idata3_GetSampleQty());
  put(item.idata3_GetSampleResol(), item.idata3_GetSampleOffs(), item.idata3_GetSampleUnits());
  put(item.idata3_GetSampleSize(), item.idata3_GetSoundSpeed(), item.idata3_GetDataMin());
  put(item.idata3_GetDataMax(), item.idata3_GetDataId(), item.idata3_GetDataType());
  put(item.idata3_GetUnitSystem(), extremes[0], extremes[1], item.idata3_GetProbeAngle());
  put(item.idata3_GetProbeSkew(), item.idata3_GetPartThickness(), item.idata3_IsTOFD());
  return text.str();
}

TEST(DataAccess, EachGetterAnswersItsOwnField) {
  DataHost host;
  const auto item = host.Make(SoundRecord());
  CRDataTypeDD& d = *item->idata1_GetInfoRef();
  int next = 10;
  for (std::uint32_t* field :
       {&d.columnQuantity, &d.rowQuantity, &d.sampleQuantity, &d.sampleSize, &d.cellSize})
    *field = static_cast<std::uint32_t>(next++);
  for (float* field : {&d.columnResolution,
                       &d.columnOffset,
                       &d.rowResolution,
                       &d.rowOffset,
                       &d.sampleResolution,
                       &d.sampleOffset,
                       &d.soundSpeed,
                       &d.dataMinimum,
                       &d.dataMaximum,
                       &d.probeAngle,
                       &d.probeSkew,
                       &d.partThickness})
    *field = static_cast<float>(next++);
  d.columnUnits = kvt_UnitSecond;
  d.rowUnits = kvt_UnitDegree;
  d.sampleUnits = kvt_UnitMetre;
  d.SetDataType(kvt_UInt16);
  d.unitSystem = static_cast<kvt_enumUnitSystems>(kvt_SystemMetric + 1);
  d.tofd = 1;
  EXPECT_EQ(Answers(*item), " 10 15 16 1 11 17 18 3 12 19 20 2 13 21 22 23 1 5 1 22 23 24 25 26 1");
  const ReportCapture reports;
  float kept = 7;
  item->idata3_GetAbsoluteMinMax(&kept, nullptr);
  item->idata3_GetAbsoluteMinMax(nullptr, &kept);
  item->idata1_GetGInfoCopy(nullptr);
  EXPECT_EQ(reports.Assertions(), 3u);
  EXPECT_EQ(kept, 7);
}

TEST(DataAccess, ABareItemHasNothingToAnswerAndTakesNothing) {
  DataHost host;
  CIData bare(nullptr, &host.volumes);
  std::string zeros;
  for (int answer = 0; answer < 25; ++answer) zeros += " 0";
  EXPECT_EQ(Answers(bare), zeros);
  for (const std::uint32_t axis : {0u, 1u, 2u, 3u}) {
    EXPECT_EQ(bare.idata3_GetDimQty(static_cast<kvt_enumAxis>(axis)), 0u);
    EXPECT_EQ(bare.idata3_GetDimResol(static_cast<kvt_enumAxis>(axis)), 0);
    EXPECT_EQ(bare.idata3_GetDimOffs(static_cast<kvt_enumAxis>(axis)), 0);
  }
  EXPECT_EQ(bare.idata3_GetVSet(), &host.volumes);
  EXPECT_EQ(bare.idata1_GetGInfoRef(), nullptr);
  EXPECT_EQ(bare.idata1_GetInfoRef(), nullptr);
  EXPECT_EQ(bare.idata1_NewGetStatus(), 1);
  EXPECT_FALSE(bare.idata1_IsMultiChannelMaster() || bare.idata1_IsMultiChannelElement());
  EXPECT_EQ(bare.idata1_SubChannelGet(1), &bare);
  bare.SetDataBookmarkTypeofAssociatedChannel(bookmark_Tofd);
  EXPECT_EQ(bare.idata0_Init(), 0);
  EXPECT_EQ(bare.idata1_SubChannelLastModifiedGet(), nullptr);
  bare.NotifyChangeToConsList();
  bare.idata1_NewClear();
  bare.idata3_SetPartThickness(1);
  bare.idata3_SetPartOutsideDiameter(1);
  CGDataTypeFDD record;
  idata_typeInspParams params{.probeAngle = 7};
  idata_typeTOFD tofd{.valid = 7};
  idata_typeName names{.gateName = L"before"};
  bare.idata1_GetGInfoCopy(&record);
  bare.idata3_GetInspParam(&params);
  bare.idata1_ModifyInspParam(&params, 0);
  bare.idata3_GetTOFDParam(&tofd);
  bare.idata3_ModifyTOFDParam(&tofd, &params);
  bare.idata1_GetName(&names);
  std::wstring name = L"before";
  bare.idata3_GetChannelName(&name);
  EXPECT_EQ(name, L"before");
  {
    const ReportCapture reports;
    bare.idata3_GetChannelIdName(&name, &name, 0);
    EXPECT_EQ(name, L"before");
    const auto item = host.Make(SoundRecord());
    item->idata3_GetChannelIdName(&name, nullptr, 0);
    item->idata3_GetChannelIdName(nullptr, &name, 0);
    item->idata3_GetChannelName(nullptr);
    item->idata1_GetName(nullptr);
    EXPECT_EQ(reports.Assertions(), 5U);
    EXPECT_EQ(name, L"before") << "an output is missing";
  }
  double geometry = 7;
  EXPECT_EQ(bare.GetCircularParameter(&geometry, &geometry), 0);
  EXPECT_TRUE(record == CGDataTypeFDD());
  EXPECT_EQ(params.probeAngle, 7);
  EXPECT_EQ(tofd.valid, 7);
  EXPECT_STREQ(names.gateName, L"before");
  EXPECT_EQ(geometry, 7);
  EXPECT_EQ(bare.idata3_IsModified(), 0);
}

TEST(DataAccess, KindsOfDataGoByTheClass) {
  struct Case {
    std::uint32_t dataClass;
    bool isVolume, isAmplitude, isAnalog, isEddyCurrent, isSimulation;
  };
  const Case cases[] = {{1, true, true, false, false, false},
                        {2, false, false, false, false, false},
                        {5, false, false, false, true, false},
                        {6, false, false, false, true, false},
                        {7, false, false, true, false, false},
                        {8, false, false, true, false, false},
                        {9, false, false, true, false, false},
                        {10, true, true, false, false, false},
                        {11, false, true, false, false, false},
                        {17, false, false, false, false, false},
                        {2000, true, false, false, false, true},
                        {2001, false, false, false, false, false},
                        {0x8001, false, true, false, false, false},
                        {0x8008, false, false, false, false, false}};
  DataHost host;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.dataClass);
    const auto item = host.Make(SoundRecord({.dataClass = Class(c.dataClass)}));
    EXPECT_EQ(item->idata1_DataIsVolume(), c.isVolume);
    EXPECT_EQ(item->idata3_isAmplitudeData(), c.isAmplitude);
    EXPECT_EQ(item->idata3_IsAnalogData(), c.isAnalog);
    EXPECT_EQ(item->idata3_IsEddyCurrentData(), c.isEddyCurrent);
    EXPECT_EQ(item->idata3_IsBeamSimulation(), c.isSimulation);
    EXPECT_FALSE(item->idata3_IsLABEnabled());
  }
}

TEST(DataAccess, LoadingAnswersByWhatIsLoaded) {
  struct Case {
    gdata_enumDataClass dataClass;
    bool isDataLoaded, isVolumeLoaded;
    int volume, result;
  };
  const Case cases[] = {{gdata_AScan, false, false, 0, 0},
                        {gdata_AScan, false, true, 0, -1},
                        {gdata_AScan, true, false, 0, 0},
                        {gdata_AScan, true, false, 1, -1},
                        {gdata_CScanAmplitude, true, false, 0, -1},
                        {gdata_CScanAmplitude, false, false, 1, 0}};
  DataHost host;
  for (const Case& c : cases) {
    const auto item = host.Make(SoundRecord({.dataClass = c.dataClass}));
    item->idata1_GetInfoRef()->SetDataLoaded(c.isDataLoaded);
    item->idata1_GetInfoRef()->SetVolumeLoaded(c.isVolumeLoaded);
    EXPECT_EQ(item->idata1_DataLoad(c.volume), c.result);
    EXPECT_EQ(item->idata1_DataLoad(c.volume), c.result)
        << "an item that is no master does not remember";
  }
  EXPECT_EQ(CIData(nullptr, &host.volumes).idata1_DataLoad(0), -1);

  const auto master = host.Make(SoundRecord({.dataClass = Class(0x8001)}));
  EXPECT_EQ(master->idata1_DataLoad(0), 0);
  master->idata1_GetInfoRef()->SetVolumeLoaded(true);
  EXPECT_EQ(master->idata1_DataLoad(0), 0) << "a master that has begun is done";
}

TEST(DataAccess, ACopyOfTheRecordHasTheTableAndItsSize) {
  DataHost host;
  std::vector<char> block(10 * 5 * 100 + 7), table(block.size());
  CGDataTypeFDD record = SoundRecord();
  record.dataPointer = block.data();
  record.dataSize = block.size();
  const auto item = host.Make(record, 1);
  CGDataTypeFDD copy;
  const auto expect = [&copy](CIData& of, const void* data, std::uint64_t size) {
    of.idata1_GetGInfoCopy(&copy);
    EXPECT_EQ(copy.dataPointer, data);
    EXPECT_EQ(copy.dataSize, size);
  };
  expect(*item, block.data(), block.size());
  item->idata1_GetInfoRef()->SetDiskTable(table.data(), true);
  expect(*item, table.data(), 5000);
  item->idata1_GetInfoRef()->SetDiskTable(table.data(), true, 5003);
  expect(*item, table.data(), 5003);
  item->idata1_GetInfoRef()->SetDiskTable(nullptr, true);
  expect(*item, nullptr, 0);

  record.dataClass = Class(0x8001);
  const auto master = host.Make(record, 1);
  expect(*master, nullptr, 0);
  EXPECT_EQ(copy.dataClass, 0x8001u);
  EXPECT_EQ(master->idata1_DataLoad(0), -1) << "a loaded one has nothing to begin";
}

// A viewer waits while a loader writes samples and attaches them; it sees every sample, and a
// header that is cleared.
TEST(DataAccess, WaitsForATableThatAnotherThreadAttaches) {
  DataHost host;
  const auto item = host.Make(SoundRecord());
  std::vector<char> table(10 * 5 * 100);
  std::thread loader([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::fill(table.begin(), table.end(), 'x');
    const char stale[] = {0x44, 0x33, 0, 0, 0x53, 0x55, 0, 0};
    std::copy(std::begin(stale), std::end(stale), table.begin());
    item->idata1_GetInfoRef()->SetDiskTable(table.data(), true);
    item->idata1_GetInfoRef()->SetDataLoaded(true);
  });
  const auto* const samples = static_cast<const char*>(item->idata3_GetDataTablePtr());
  EXPECT_EQ(samples, table.data());
  EXPECT_EQ(std::count(samples, samples + table.size(), 'x'),
            static_cast<std::ptrdiff_t>(table.size()) - 36);
  EXPECT_EQ(samples[0], 0);
  loader.join();

  ReportCapture reports;
  EXPECT_EQ(CIData(nullptr, &host.volumes).idata3_GetDataTablePtr(), nullptr);
  EXPECT_EQ(reports.Assertions(), 1u);
}

// Nobody waits for a table that is too short and will not come.
TEST(DataAccess, WaitingEndsWhenTheTableIsRefused) {
  DataHost host;
  const ReportCapture reports;
  const auto item = host.Make(SoundRecord());
  std::vector<char> table(10 * 5 * 100);
  std::thread loader([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    item->idata1_GetInfoRef()->SetDiskTable(table.data(), true, table.size() - 1);
  });
  EXPECT_EQ(item->idata3_GetDataTablePtr(), nullptr);
  loader.join();
  EXPECT_EQ(item->idata1_GetInfoRef()->IsDataLoaded(), 0);
  item->idata1_GetInfoRef()->SetDiskTable(table.data(), true, table.size());
  EXPECT_EQ(item->idata3_GetDataTablePtr(), table.data());
}

}  // namespace
