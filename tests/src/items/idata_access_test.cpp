// Data items: dimensions, kinds of data, loading, and the way to the samples.
#include <gtest/gtest.h>

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

  const CIData bare(nullptr, &host.volumes);
  EXPECT_EQ(bare.idata3_GetDimQty(kvt_AxisColumn), 0u);
  EXPECT_EQ(bare.idata3_GetColResol(), 0);
  EXPECT_EQ(bare.idata3_GetDataId(), 0u);
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
