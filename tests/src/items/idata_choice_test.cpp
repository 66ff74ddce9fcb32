// Data items: which units are chosen, and how far a choice reaches.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"

namespace {

using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

using Type = std::pair<std::uint32_t, std::uint32_t>;

constexpr Type none{99, 99};

Type Current(const CIData& item, kvt_enumAxis axis, int alternative = 0) {
  const CUnit* const unit = item.idata3_GetCurrentUnit(axis, alternative);
  if (!unit) return none;
  unit_enumUnits family;
  unit_enumDataUnit dataUnit;
  unit->GetUnitType(family, dataUnit);
  return {family, dataUnit};
}

TEST(CurrentUnits, BeginWithWhatTheClassAsksFor) {
  struct Case {
    gdata_enumDataClass dataClass;
    std::int32_t tofd;
    kvt_enumUnits sampleUnits;
    gdata_enumDataScale scale;
    Type sample, amplitude;
  };
  const Case cases[] = {
      {gdata_AScan, 0, kvt_UnitSecond, gdata_ScaleLinear, none, {unit_Percent, unit_DataPercent}},
      {gdata_AScan,
       0,
       kvt_UnitDegree,
       gdata_ScaleLogarithmic,
       none,
       {unit_Decibel, unit_DataDecibel}},
      {gdata_AScan,
       1,
       kvt_UnitSecond,
       gdata_ScaleLinear,
       {unit_TofdDepth, unit_Millimetre},
       {unit_Percent, unit_DataPercent}},
      {gdata_CScanAngle,
       1,
       kvt_UnitDegree,
       gdata_ScaleLinear,
       {unit_Angle, unit_Degree},
       {unit_Percent, unit_DataPercent}},
      {gdata_CScanAngle,
       1,
       kvt_UnitSecond,
       gdata_ScaleLinear,
       none,
       {unit_Percent, unit_DataPercent}},
      {gdata_AnalogScaled,
       0,
       kvt_UnitSecond,
       gdata_ScaleLinear,
       none,
       {unit_Scaled, unit_DataScaled}},
  };
  DataHost host;
  for (const Case& c : cases) {
    CGDataTypeFDD record = SoundRecord({.dataClass = c.dataClass});
    record.tofd = c.tofd;
    record.sampleUnits = c.sampleUnits;
    record.SetDataScale(c.scale);
    const auto item = host.Make(record);
    EXPECT_EQ(Current(*item, kvt_AxisSample), c.sample);
    EXPECT_EQ(Current(*item, kvt_AxisSample, 1), none);
    EXPECT_EQ(Current(*item, kvt_AxisAmplitude), c.amplitude);
    EXPECT_EQ(Current(*item, kvt_AxisColumn), none);
  }
}

/// Channels 4 and 5 with two masters each, of A-scans and of C-scans, and two elements to a master;
/// all in one file set.
struct Choices : testing::Test {
  Choices() {
    for (const std::uint32_t channelId : {4u, 5u})
      for (const auto c : {gdata_AScan, gdata_CScanAmplitude})
        for (const std::uint32_t subChannelId : {1u, 2u}) {
          CGDataTypeFDD record = SoundRecord(
              {.channelId = channelId, .subChannelId = subChannelId, .gateId = 1, .dataClass = c});
          items.push_back(host.set.fset_AddGData(&record, nullptr, &host.volumes, 0));
        }
  }
  CIData& Of(std::size_t channel, std::size_t kind, std::size_t element) {
    return *items[4 * channel + 2 * kind + element];
  }
  static CIData& MasterOf(CIData& item) { return *item.idata1_SubChannelMaster(); }

  DataHost host;
  std::vector<CIData*> items;
};

constexpr Type millimetresOfPath{unit_HalfPath, unit_Millimetre};

TEST_F(Choices, ReachEveryMasterOfTheChannel) {
  CIData& item = Of(0, 0, 1);
  item.idata3_SetCurrentUnit(
      kvt_AxisSample, item.idata3_GetUnit(kvt_AxisSample, unit_HalfPath, unit_Millimetre), 0);
  for (const std::size_t channel : {0u, 1u})
    for (const std::size_t kind : {0u, 1u})
      for (const std::size_t element : {0u, 1u}) {
        CIData& each = Of(channel, kind, element);
        EXPECT_EQ(Current(each, kvt_AxisSample), channel == 0 ? millimetresOfPath : none);
        EXPECT_EQ(Current(MasterOf(each), kvt_AxisSample), channel == 0 ? millimetresOfPath : none);
        EXPECT_EQ(Current(each, kvt_AxisSample, 1), none);
        if (const CUnit* const unit = each.idata3_GetCurrentUnit(kvt_AxisSample, 0)) {
          EXPECT_EQ(unit, each.idata3_GetUnit(kvt_AxisSample, unit_HalfPath, unit_Millimetre))
              << "its own unit";
        }
      }
}

TEST_F(Choices, WithoutNotificationStayWithTheMaster) {
  CIData& item = Of(0, 0, 0);
  CUnit* const unit = item.idata3_GetUnit(kvt_AxisSample, unit_HalfPath, unit_Millimetre);
  item.idata3_SetCurrentUnitWithoutNotification(kvt_AxisSample, unit, 1);
  for (CIData* each : {&item, &Of(0, 0, 1), &MasterOf(item)}) {
    EXPECT_EQ(Current(*each, kvt_AxisSample, 1), millimetresOfPath);
    EXPECT_EQ(Current(*each, kvt_AxisSample), none);
  }
  EXPECT_EQ(Current(Of(0, 1, 0), kvt_AxisSample, 1), none);
  item.SetCurrentUnitType(kvt_AxisSample, unit_Scaled, unit_DataScaled, 1, 0);
  EXPECT_EQ(Current(item, kvt_AxisSample, 1), millimetresOfPath)
      << "a unit that the axis does not have is no choice";
  ReportCapture reports;
  item.idata3_SetCurrentUnit(kvt_AxisSample, nullptr, 0);
  EXPECT_EQ(reports.Assertions(), 1u);
}

TEST_F(Choices, AreRestoredWithTheirPrecision) {
  CIData& item = Of(0, 0, 0);
  EXPECT_EQ(item.IsUnitRestored(), 0);
  item.idata3_RestoreUnit(kvt_AxisColumn, unit_Length, unit_Inch, 4, 0);
  for (CIData* each : {&item, &Of(0, 0, 1), &MasterOf(item)}) {
    EXPECT_EQ(Current(*each, kvt_AxisColumn), Type(unit_Length, unit_Inch));
    EXPECT_EQ(each->idata3_GetCurrentUnit(kvt_AxisColumn, 0)->GetDisplayPrecision(), 4);
    EXPECT_EQ(each->IsUnitRestored(), 1);
  }
  EXPECT_EQ(Of(0, 1, 0).IsUnitRestored(), 0);
  MasterOf(item).SetUnitRestored(0);
  EXPECT_EQ(item.IsUnitRestored(), 0);
}

// The sub-channels of a merged channel make one data group, which counts as its own master.
TEST(CurrentUnits, OfAnItemThatIsItsOwnMasterAreItsOwn) {
  DataHost host;
  host.scanning[0] = {escan_Mode4, true};
  const auto item = host.Make(SoundRecord({.subChannelId = 3, .dataClass = gdata_AScan}));
  ASSERT_EQ(item->idata1_SubChannelMaster(), item.get());
  item->idata3_RestoreUnit(kvt_AxisRow, unit_Point, unit_DataPoint, 2, 0);
  EXPECT_EQ(Current(*item, kvt_AxisRow), Type(unit_Point, unit_DataPoint));
  EXPECT_EQ(item->IsUnitRestored(), 1);
}

TEST(CurrentUnits, AreNothingBeyondTheAxes) {
  DataHost host;
  const auto item = host.Make(SoundRecord());
  CIData bare(nullptr, &host.volumes);
  for (const std::uint32_t axis : {6u, 7u, 0xFFFFFFFFu}) {
    const auto beyond = static_cast<kvt_enumAxis>(axis);
    item->SetCurrentUnitType(beyond, unit_Point, unit_DataPoint, 0, 0);
    EXPECT_EQ(item->idata3_GetUnit(beyond, unit_Point, unit_DataPoint), nullptr);
    EXPECT_EQ(item->idata3_GetCurrentUnit(beyond, 1), nullptr);
  }
  EXPECT_EQ(bare.idata3_GetUnit(kvt_AxisRow, unit_Length, unit_Metre), nullptr);
  bare.idata3_RestoreUnit(kvt_AxisRow, unit_Length, unit_Metre, 2, 0);
  EXPECT_EQ(bare.idata3_GetCurrentUnit(kvt_AxisRow, 0), nullptr);
}

}  // namespace
