// Data items: what construction finds out. Electronic scanning, bookmark types, and the C-scans
// that are matched to each other.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"
#include "utdata/idatalst.h"

namespace {

using testing::ElementsAre;
using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

constexpr gdata_enumDataClass Master(gdata_enumDataClass c) {
  return static_cast<gdata_enumDataClass>(c | gdata_MultiChannelMaster);
}

// -------------------------------------------------------------------------------------------------
// electronic scanning

TEST(DataScanning, TwoVariablesAreAskedForTheChannelCountedFromOne) {
  DataHost host;
  const auto item = host.Make(SoundRecord({.channelId = 6, .dataClass = gdata_AScan}));
  ASSERT_EQ(2U, host.requests.size());
  const auto asked = [&](std::size_t n) {
    const PellamServiceParam& request = host.requests[n];
    return std::tuple(request.variable, request.size, request.index, request.isWrite);
  };
  EXPECT_EQ(std::tuple(PRM_ID_ElectronicScanning, 4U, 7U, false), asked(0));
  EXPECT_EQ(std::tuple(PRM_ID_bLinearMerged, 1U, 7U, false), asked(1));
}

TEST(DataScanning, LinearMergingInModes2And4MakesAnItemItsOwnMaster) {
  for (const std::uint32_t mode : {1U, 2U, 3U, 4U, 5U, 11U})
    for (const int merged : {0, 1, 2, 255}) {
      DataHost host;
      host.scanning[3] = {static_cast<enumElectronicScanning>(mode),
                          static_cast<std::uint8_t>(merged)};
      const auto item = host.Make(SoundRecord({.channelId = 3, .dataClass = gdata_AScan}));
      const bool gathers = merged != 0 && (mode == 2 || mode == 4);
      EXPECT_EQ(gathers, item->idata1_SubChannelGetList() != nullptr) << mode << " " << merged;
      EXPECT_EQ(gathers ? item.get() : nullptr, item->idata1_SubChannelMaster());
      EXPECT_FALSE(item->idata1_IsMultiChannelMaster());
    }
  DataHost silent;
  EXPECT_EQ(nullptr, silent.Make(SoundRecord())->idata1_SubChannelGetList()) << "nobody answers";
  const auto master = silent.Make(SoundRecord({.dataClass = Master(gdata_AScan)}));
  EXPECT_EQ(master.get(), master->idata1_SubChannelMaster());
}

TEST(DataBookmark, ATypeIsAssignedOnceByItsRules) {
  struct Case {
    std::uint32_t given;
    gdata_enumDataClass dataClass;
    std::uint32_t subChannelId, gateId, mode;
    std::int32_t tofd;
    std::uint32_t type;
  };
  const Case cases[] = {
      {0, gdata_AScan, 0, 0, 11, 0, 2},
      {0xFFFFFFFF, gdata_AScan, 0, 0, 2, 0, 2},
      {0, gdata_AScan, 0, 0, 11, 1, 3},
      {0, gdata_AScan, 0, 0, 11, 2, 2},  // only 1 is TOFD
      {0, gdata_AScan, 1, 0, 11, 0, 1},
      {0, gdata_AScan, 1, 0, 4, 0, 1},
      {0, gdata_AScan, 1, 0, 2, 0, 2},
      {0, gdata_AScan, 1, 0, 2, 1, 17},
      {0, Master(gdata_CScanAmplitude), 0, 0, 11, 0, 1},
      {0xFFFFFFFF, Master(gdata_CScanAmplitude), 0, 0, 2, 0, 2},
      {0, Master(gdata_CScanAmplitude), 0, 0, 11, 1, 17},
      {0, gdata_CScanAmplitude, 0, 140, 11, 0, 10},
      {0, gdata_CScanAmplitude, 5, 140, 2, 1, 10},
      {0, gdata_CScanAmplitude, 0, 2140, 11, 0, 2},  // the id itself, not the gate number
      {7, gdata_CScanAmplitude, 5, 140, 2, 1, 7},
  };
  for (const Case& c : cases) {
    DataHost host;
    host.scanning[0] = {static_cast<enumElectronicScanning>(c.mode), false};
    CGDataTypeFDD record = SoundRecord({.subChannelId = c.subChannelId,
                                        .gateId = c.gateId,
                                        .dataClass = c.dataClass,
                                        .bookmarkType = static_cast<eDataBookmarkType>(c.given)});
    record.tofd = c.tofd;
    CIData item(&record, nullptr, &host.volumes, 0, nullptr);
    EXPECT_EQ(c.type, record.GetDataBookmarkType()) << &c - cases << ": the caller's record";
    EXPECT_EQ(c.type, item.idata1_GetGInfoRef()->GetDataBookmarkType());
    idata_typeId id;
    item.idata1_GetId(id);
    EXPECT_EQ(c.type, id.bookmarkType);
  }
}

// -------------------------------------------------------------------------------------------------
// matching

class DataMatch : public testing::Test {
 protected:
  /// Adds a data group to the file set. Positions have values up to `maximum`, 20 ns each from 1 us
  /// on.
  CIData* Add(const idata_typeId& id, float maximum = 300.9f) {
    CGDataTypeFDD record = SoundRecord(id);
    record.dataMaximum = maximum;
    record.dataResolution = 2e-8f;
    record.dataOffset = 1e-6f;
    return host.set.fset_AddGData(&record, nullptr, &host.volumes, 0);
  }
  static CIData* Matched(const CIData* item) {
    return item->idata1_GetInfoRef()->GetMatchedCScan();
  }
  static CIData* Meridio(const CIData* item) {
    return item->idata1_GetInfoRef()->GetMeridioAmpCscan();
  }

  DataHost host;
};

TEST_F(DataMatch, AmplitudeAndPositionFindEachOtherInEitherOrder) {
  std::uint32_t channel = 0;
  for (const auto position :
       {gdata_CScanPosition, gdata_CScanPositionFirst, gdata_CScanPositionLast})
    for (const bool isAmplitudeFirst : {true, false}) {
      const idata_typeId amplitudeId{2, ++channel, 3, 4, gdata_CScanAmplitude, bookmark_None};
      idata_typeId positionId = amplitudeId;
      positionId.dataClass = position;
      positionId.gateId = 2004;  // the same gate
      CIData* first = Add(isAmplitudeFirst ? amplitudeId : positionId);
      CIData* second = Add(isAmplitudeFirst ? positionId : amplitudeId);
      ASSERT_TRUE(first && second);
      EXPECT_EQ(second, Matched(first)) << position;
      EXPECT_EQ(first, Matched(second));
      EXPECT_EQ(nullptr, Meridio(first));
      const CRDataTypeDD& amplitude = *(isAmplitudeFirst ? first : second)->idata1_GetInfoRef();
      EXPECT_EQ(300U, amplitude.GetSampleQty());
      EXPECT_EQ(double{2e-8f}, amplitude.GetSampleResol());
      EXPECT_EQ(double{1e-6f}, amplitude.GetSampleOffs());
      EXPECT_EQ(isAmplitudeFirst ? 1U : 300U, amplitude.GetVectorSize())
          << "sizes stay as they were";
      // The units follow: sample 50 lies at 50 steps of 20 ns, half a path of sound speed.
      const CUnit* point = amplitude.GetPointUnit(kvt_AxisSample);
      ASSERT_NE(nullptr, point);
      EXPECT_NEAR(50 * 2e-8 * 5900 / 2, point->ConvertToBase(50) - point->ConvertToBase(0), 1e-9);
    }
}

TEST_F(DataMatch, EveryIdButTheClassHasToAgree) {
  const idata_typeId id{2, 5, 3, 4, gdata_CScanAmplitude, bookmark_Single};
  CIData* const amplitude = Add(id);
  for (int differing = 0; differing < 5; ++differing) {
    idata_typeId other = id;
    other.dataClass = gdata_CScanPosition;
    if (differing == 0) other.patchId = 7;
    if (differing == 1) other.channelId = 7;
    if (differing == 2) other.subChannelId = 7;
    if (differing == 3) other.gateId = 7;
    if (differing == 4) other.bookmarkType = bookmark_Tofd;
    EXPECT_EQ(nullptr, Matched(Add(other))) << differing;
    EXPECT_EQ(nullptr, Matched(amplitude)) << differing;
  }
  for (const auto c : {gdata_AScan, gdata_CScanThickness, gdata_CScanAngle, gdata_Analog}) {
    idata_typeId other = id;
    other.dataClass = c;
    EXPECT_EQ(nullptr, Matched(Add(other))) << c;
  }
  EXPECT_EQ(nullptr, Matched(amplitude));
}

TEST_F(DataMatch, OfSeveralPartnersTheLastInTheListIsTheOwn) {
  const auto position = [](eDataBookmarkType type) {
    return idata_typeId{.gateId = 4, .dataClass = gdata_CScanPosition, .bookmarkType = type};
  };
  CIData* const single = Add(position(bookmark_Single));
  CIData* const tofd = Add(position(bookmark_Tofd));
  CIData* const amplitude =
      Add({.gateId = 4, .dataClass = gdata_CScanAmplitude});  // no bookmark type yet: any will do
  EXPECT_EQ(amplitude, Matched(single));
  EXPECT_EQ(amplitude, Matched(tofd));
  EXPECT_EQ(tofd, Matched(amplitude));
}

TEST_F(DataMatch, MeridioPositionsTakeTheAmplitudesOfTheGateBefore) {
  std::uint32_t channel = 0;
  for (const std::uint32_t gate : {11U, 21U, 31U, 2011U, 4031U}) {
    CIData* const before =
        Add({.channelId = ++channel, .gateId = gate - 1, .dataClass = gdata_CScanAmplitude});
    CIData* const beside =
        Add({.channelId = channel, .gateId = gate, .dataClass = gdata_CScanAmplitude});
    CIData* const position =
        Add({.channelId = channel, .gateId = gate, .dataClass = gdata_CScanPosition});
    EXPECT_EQ(before, Meridio(position)) << gate;
    EXPECT_EQ(nullptr, Matched(position));
    for (const CIData* amplitude : {before, beside}) {
      EXPECT_EQ(nullptr, Matched(amplitude)) << gate;
      EXPECT_EQ(1U, amplitude->idata1_GetInfoRef()->GetSampleQty());
    }
    CIData* const other =
        Add({.channelId = channel, .gateId = gate, .dataClass = gdata_CScanPositionFirst});
    EXPECT_EQ(beside, Matched(other)) << "only class 3 is Meridio";
  }
  CIData* const amplitude = Add({.gateId = 41, .dataClass = gdata_CScanAmplitude});
  EXPECT_EQ(amplitude, Matched(Add({.gateId = 41, .dataClass = gdata_CScanPosition})))
      << "nor is any other gate";
}

TEST_F(DataMatch, EddyCurrentComponentsAreAPair) {
  for (const bool isXFirst : {true, false}) {
    const std::uint32_t channel = isXFirst ? 1 : 2;
    CIData* const first = Add(
        {.channelId = channel, .dataClass = isXFirst ? gdata_EddyCurrentX : gdata_EddyCurrentY});
    CIData* const second = Add(
        {.channelId = channel, .dataClass = isXFirst ? gdata_EddyCurrentY : gdata_EddyCurrentX});
    EXPECT_EQ(second, Matched(first));
    EXPECT_EQ(first, Matched(second));
  }
}

TEST_F(DataMatch, MastersAreMatchedByGateNumberWhateverTheirSubChannels) {
  for (const bool isAmplitudeFirst : {true, false}) {
    const std::uint32_t channel = isAmplitudeFirst ? 1 : 2;
    const auto first = isAmplitudeFirst ? gdata_CScanAmplitude : gdata_CScanPosition;
    const auto second = isAmplitudeFirst ? gdata_CScanPosition : gdata_CScanAmplitude;
    for (const auto c : {first, second})
      for (const std::uint32_t sub : {4U, 2U})
        ASSERT_NE(nullptr,
                  Add({.channelId = channel, .subChannelId = sub, .gateId = 2003, .dataClass = c}));
    const auto master = [&](gdata_enumDataClass c) {
      return host.set.fset_GetIData(fset_All, 0, 0, channel, fset_AnyId, fset_AnyId, Master(c));
    };
    CIData* const amplitude = master(gdata_CScanAmplitude);
    CIData* const position = master(gdata_CScanPosition);
    ASSERT_TRUE(amplitude && position);
    EXPECT_EQ(position, Matched(amplitude));
    EXPECT_EQ(amplitude, Matched(position));
    CIData* const element = amplitude->idata1_SubChannelGet(2);
    EXPECT_EQ(position->idata1_SubChannelGet(2), Matched(element));
  }
}

TEST_F(DataMatch, AnImpossibleDataMaximumGivesOneSample) {
  CIData* const amplitude = Add({.gateId = 4, .dataClass = gdata_CScanAmplitude});
  struct Case {
    float maximum;
    std::uint32_t quantity;
    std::size_t reports;
  };
  for (const auto& [maximum, quantity, reported] :
       {Case{-1, 1, 1}, {1e30f, 1, 0}, {0.9f, 0, 0}, {2e9f, 2000000000, 0}}) {
    CGDataTypeFDD record = SoundRecord({.gateId = 4, .dataClass = gdata_CScanPosition});
    record.dataMinimum = -10;
    record.dataMaximum = maximum;
    record.SetDataRectification(gdata_RectifNone);
    const ReportCapture reports;
    const std::unique_ptr<CIData> position = host.Make(record);
    EXPECT_EQ(quantity, amplitude->idata1_GetInfoRef()->GetSampleQty()) << maximum;
    EXPECT_GE(reports.Assertions(), reported) << maximum;
  }
}

TEST_F(DataMatch, WithoutAFileSetNothingIsMatched) {
  CIData* const amplitude = Add({.dataClass = gdata_CScanAmplitude});
  host.hasFileSet = false;
  EXPECT_EQ(nullptr, Matched(host.Make(SoundRecord({.dataClass = gdata_CScanPosition})).get()));
  EXPECT_EQ(nullptr, Matched(amplitude));
}

}  // namespace
