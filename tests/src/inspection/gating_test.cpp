// What a gate sees, and what it leaves in the inspection.
#include "utdata/gating.h"

#include <gmock/gmock.h>

#include "tests/support/scratch_directory.h"
#include "utdata/fset.h"
#include "utdata/igate.h"
#include "utdata/newscan.h"

namespace utdata {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// 2 rows and 3 columns of A-scans of 83 samples, 20 ns each from 1 µs on.
class Gating : public testing::Test {
 protected:
  static constexpr std::uint32_t columns = 3, rows = 2, quantity = 83;

  static CGDataTypeFDD AScans(const char* typeName, std::uint32_t subChannel = 0) {
    const SampleType& type = *FindSampleType(typeName);
    CGDataTypeFDD record = NominalRecord(type);
    SetLayout(record, type, {columns, rows, quantity, true});
    record.SetDataRectification(type.isSigned ? gdata_RectifNone : gdata_RectifFull);
    record.sampleResolution = 20e-9F;
    record.sampleOffset = 1e-6F;
    record.rowOffset = 0.5F;
    record.subChannelId = subChannel;
    return record;
  }
  void Set(std::size_t cell, std::size_t sample, std::uint16_t value) {
    samples[cell * quantity + sample] = value;
  }
  void Add(const CGDataTypeFDD& record) {
    const auto bytes = std::as_bytes(std::span(samples));
    inspection.AddData(record, {bytes.begin(), bytes.end()});
  }
  static std::vector<std::uint16_t> ValuesOf(const DataGroup& cscan) {
    std::vector<std::uint16_t> values;
    for (std::uint32_t cell = 0; cell < columns * rows; ++cell)
      values.push_back(cscan.AScan<std::uint16_t>(cell / columns, cell % columns)[0]);
    return values;
  }
  std::string WhyNot(const GateSettings& settings) {
    try {
      Gate(inspection, settings);
      return {};
    } catch (const Error& error) {
      return error.Why() + " " + error.Remedy();
    }
  }

  const test::ScratchDirectory m_scratch;
  Inspection inspection = Inspection::New((m_scratch.Path() / "weld.fpd").string());
  std::vector<std::uint16_t> samples = std::vector<std::uint16_t>(columns * rows * quantity);
};

TEST_F(Gating, APositionIsThatOfTheFirstOfTheLargestAndNeedsTheThreshold) {
  Set(0, 40, 13106);
  Set(1, 41, 13107);  // 20 % of 65535
  Set(2, 42, 13107);
  Set(2, 49, 13107);
  Set(3, 50, 60000);  // behind the gate
  Set(4, 0, 60000);   // before it
  Set(5, 1, 9);
  Add(AScans("u16"));
  const GateResult result = Gate(inspection, {0, 3, 1.02e-6, 0.98e-6, 20});
  ASSERT_EQ(result.data.size(), 1U);
  const GatedData& seen = result.data[0];
  EXPECT_THAT(ValuesOf(seen.amplitudes), ElementsAre(13106, 13107, 13107, 0, 0, 9));
  EXPECT_THAT(ValuesOf(seen.positions), ElementsAre(0, 41, 42, 0, 0, 0));
  EXPECT_EQ(seen.strongest, 1U);
  EXPECT_EQ(seen.window.first, 1U);
  EXPECT_EQ(seen.window.quantity, 49U);
  EXPECT_FALSE(seen.window.isCut);
  EXPECT_TRUE(result.isNew);
  const CGGateTypeDescr& gate = *std::as_const(*result.gate).igate1_GetInfoRef();
  EXPECT_EQ(gate.start, 1.02e-6F);
  EXPECT_EQ(gate.positiveLevel, 20);
  EXPECT_EQ(gate.negativeLevel, 20);
}

TEST_F(Gating, CScansMatchTheirAScansAndKeepTheirAxes) {
  for (const std::uint32_t subChannel : {1U, 2U}) {
    CGDataTypeFDD record = AScans("i16", subChannel);
    record.SetPatchID(4);
    Set(subChannel, 82, 0x8000);
    Add(record);
  }
  CGDataTypeFDD elsewhere = AScans("i16");
  elsewhere.channelId = 1;
  Add(elsewhere);
  const GateResult result = Gate(inspection, {0, 3, 1e-6, 50e-6, {}});
  ASSERT_EQ(result.data.size(), 2U);
  for (const GatedData& seen : result.data) {
    EXPECT_TRUE(seen.window.isCut);
    EXPECT_EQ(seen.window.quantity, quantity);
    for (const DataGroup& group : {seen.amplitudes, seen.positions}) {
      const CGDataTypeFDD& cscan = group.Stored();
      EXPECT_EQ(cscan.gateId, 3U);
      EXPECT_EQ(cscan.subChannelId, seen.ascans.Stored().subChannelId);
      EXPECT_EQ(cscan.GetPatchID(), 4U);
      EXPECT_EQ(cscan.GetDataBookmarkType(), bookmark_MultiChannel);
      EXPECT_EQ(cscan.GetDataType(), kvt_UInt16);
      EXPECT_EQ(cscan.GetDataRectification(), gdata_RectifFull);
      EXPECT_EQ(cscan.columnResolution, 1e-3F);
      EXPECT_EQ(cscan.rowOffset, 0.5F);
      EXPECT_EQ(cscan.dataMinimum, 0);
    }
    EXPECT_EQ(seen.amplitudes.Stored().dataMaximum, 32767);
    EXPECT_EQ(ValuesOf(seen.amplitudes)[1], 32767) << "both ends of the wave are full scale";
    EXPECT_EQ(seen.amplitudes.Matched()->Index(), seen.positions.Index());
    // The sample axis of both is made of this range, resolution and offset when they are loaded.
    const CGDataTypeFDD& position = seen.positions.Stored();
    EXPECT_EQ(position.dataMaximum, quantity);
    EXPECT_EQ(position.dataResolution, 20e-9F);
    EXPECT_EQ(position.dataOffset, 1e-6F);
    EXPECT_EQ(ValuesOf(seen.positions)[1], 82);
  }
  EXPECT_THAT(ValuesOf(result.data[1].amplitudes), ElementsAre(0, 32767, 32767, 0, 0, 0));
}

TEST_F(Gating, AGateThatIsThereKeepsWhatIsNotSaid) {
  CGGateTypeDescr gate;
  gate.gateId = 3;
  gate.name = L"Root";
  gate.positiveLevel = 35;
  gate.peakSelection = ggate_PeakFirst;
  inspection.FileSet().fset_AddGGate(&gate, 1);
  Set(0, 20, 1);
  Add(AScans("u16"));
  const GateResult result = Gate(inspection, {0, 3, 1.2e-6, 0.4e-6, {}});
  EXPECT_FALSE(result.isNew);
  const CGGateTypeDescr& changed = *std::as_const(*result.gate).igate1_GetInfoRef();
  EXPECT_EQ(changed.name, L"Root");
  EXPECT_EQ(changed.positiveLevel, 35);
  EXPECT_EQ(changed.start, 1.2e-6F);
  EXPECT_EQ(changed.peakSelection, ggate_PeakMaximum);
  EXPECT_STREQ(result.data[0].amplitudes.Stored().gateName, L"Root");
  EXPECT_EQ(ValuesOf(result.data[0].positions)[0], 20) << "without a threshold all have one";
  EXPECT_TRUE(result.gate->igate1_ModifGetStatus());
}

TEST_F(Gating, WhatCannotBeGatedChangesNothing) {
  Add(AScans("i16"));
  EXPECT_THAT(WhyNot({1, 1, 1e-6, 1e-6, {}}), HasSubstr("channel 1 has no A-scans"));
  EXPECT_THAT(WhyNot({0, 1, 2.66e-6, 1e-6, {}}), HasSubstr("no sample lies in the gate"));
  EXPECT_THAT(WhyNot({0, 1, 0, 0.98e-6, {}}), HasSubstr("run from 1 µs to 2.66 µs"));
  CGDataTypeFDD other = AScans("i16");
  other.gateId = 5;
  Add(other);
  EXPECT_THAT(WhyNot({0, 1, 1e-6, 1e-6, {}}), HasSubstr("data group 1 has A-scans of the same"));
  EXPECT_EQ(inspection.Data().size(), 2U);
  EXPECT_EQ(inspection.FileSet().fset_GetIGate(fset_All, 1, 0), nullptr);
}

}  // namespace
}  // namespace utdata
