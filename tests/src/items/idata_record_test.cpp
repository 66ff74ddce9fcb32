// Data items: what the record of a damaged or careless file becomes before an item is made of it.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "src/items/idatarecord.h"
#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"

namespace {

using utdata::NormaliseDataRecord;
using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

constexpr float floatNan = std::numeric_limits<float>::quiet_NaN();
constexpr float floatInf = std::numeric_limits<float>::infinity();

constexpr gdata_enumDataClass MasterOf(gdata_enumDataClass c) {
  return static_cast<gdata_enumDataClass>(c | gdata_MultiChannelMaster);
}

TEST(DataRecord, ASoundOneStaysAsItIs) {
  for (const auto c : {gdata_AScan, gdata_CScanAmplitude, gdata_Analog}) {
    CGDataTypeFDD record = SoundRecord({.dataClass = c});
    const CGDataTypeFDD before = record;
    ReportCapture reports;
    NormaliseDataRecord(record);
    EXPECT_TRUE(record == before);
    EXPECT_TRUE(reports.Reports().empty());
  }
}

TEST(DataRecord, MissingParametersGetTheirDefaults) {
  CGDataTypeFDD record = SoundRecord({.dataClass = gdata_CScanPosition});
  record.soundSpeed = 0;
  record.probeAngle = 95;
  record.dataResolution = 0;
  record.inspectionRadius = record.probeSeparation = 0;
  record.columnQuantity = record.rowQuantity = 1;
  record.columnUnits = kvt_UnitDegree;
  record.rowUnits = kvt_UnitSecond;
  record.columnResolution = record.rowResolution = 7;
  ReportCapture reports;
  NormaliseDataRecord(record);
  EXPECT_EQ(record.soundSpeed, 5890.0f);
  EXPECT_EQ(record.probeAngle, 89.999f);
  EXPECT_EQ(record.dataResolution, 2e-8f);
  EXPECT_EQ(record.inspectionRadius, 0.0573f);
  EXPECT_EQ(record.probeSeparation, 0.001f);
  EXPECT_EQ(record.columnResolution, 0.001f);
  EXPECT_EQ(record.rowResolution, 0.001f);
  EXPECT_EQ(record.columnUnits, kvt_UnitDegree);
  EXPECT_EQ(record.rowUnits, kvt_UnitMetre);
  ASSERT_EQ(reports.Reports().size(), 2u);
  EXPECT_EQ(reports.Assertions(), 1u) << "of the sound speed";
  EXPECT_EQ(reports.Reports().back().text, L"Invalid angle: >= 90!\n");

  CGDataTypeFDD amplitude = SoundRecord({.dataClass = gdata_CScanAmplitude});
  amplitude.dataResolution = 0;
  amplitude.probeAngle = 89.9999f;
  NormaliseDataRecord(amplitude);
  EXPECT_EQ(amplitude.dataResolution, 0) << "only positions need one";
  EXPECT_EQ(amplitude.probeAngle, 89.9999f);
}

TEST(DataRecord, SampleTypesFollowRectificationAndRange) {
  struct Case {
    gdata_enumDataClass dataClass;
    gdata_enumRectif rectification;
    kvt_enumDataType type;
    float minimum, maximum;
    kvt_enumDataType becomes;
    float shift;
  };
  constexpr auto none = gdata_RectifNone;
  constexpr auto full = gdata_RectifFull;
  const Case cases[] = {{gdata_AScan, none, kvt_UInt8, 0, 255, kvt_Int8, 128},
                        {gdata_AScan, full, kvt_UInt8, 0, 255, kvt_UInt8, 0},
                        {gdata_AScan, none, kvt_UInt8, -1, 255, kvt_UInt8, 0},
                        {gdata_AScan, none, kvt_UInt16, 0, 65535, kvt_Int16, 32768},
                        {gdata_AnalogScaled, none, kvt_UInt16, 0, 65535, kvt_UInt16, 0},
                        {gdata_AnalogScaled, none, kvt_UInt8, 0, 255, kvt_Int8, 128},
                        {gdata_AScan, none, kvt_Int16, 0, 4095, kvt_Int16, 0},
                        {gdata_CScanPosition, none, kvt_UInt16, 0, 4095, kvt_UInt16, 0},
                        {MasterOf(gdata_CScanPosition), none, kvt_UInt16, 0, 4095, kvt_UInt16, 0},
                        {gdata_CScanPositionFirst, none, kvt_UInt8, 0, 255, kvt_Int8, 128},
                        {gdata_CScanPosition, full, kvt_Int16, 0, 4095, kvt_UInt16, 0},
                        {gdata_CScanAngle, none, kvt_UInt8, 0, 255, kvt_UInt8, 0},
                        {gdata_CScanAngle, full, kvt_Int16, 0, 4095, kvt_Int16, 0},
                        {gdata_AScan, full, kvt_Int16, 0, 4095, kvt_UInt16, 0},
                        {gdata_AScan, full, kvt_Int16, -10, 4095, kvt_Int16, 0},
                        {gdata_AScan, full, kvt_Int16, 0, 65536, kvt_Int16, 0},
                        {gdata_AScan, full, kvt_Int8, 0, 256, kvt_UInt8, 0},
                        {gdata_AScan, full, kvt_Int8, 0, 257, kvt_Int8, 0}};
  for (const Case& c : cases) {
    CGDataTypeFDD record = SoundRecord({.dataClass = c.dataClass});
    record.SetDataRectification(c.rectification);
    record.SetDataType(c.type);
    record.dataMinimum = c.minimum;
    record.dataMaximum = c.maximum;
    record.fileFormat = gdata_OptionCompressed;
    NormaliseDataRecord(record);
    SCOPED_TRACE(testing::Message()
                 << c.dataClass << " " << c.type << " " << c.minimum << " " << c.maximum);
    EXPECT_EQ(record.GetDataType(), c.becomes);
    EXPECT_EQ(record.dataMinimum, c.minimum - c.shift);
    EXPECT_EQ(record.dataMaximum, c.maximum - c.shift);
    EXPECT_EQ(
        record.fileFormat,
        gdata_OptionCompressed | (c.shift != 0 ? gdata_OptionOffsetBinary : gdata_OptionNone));
  }
  for (const auto rectification : {none, full}) {
    CGDataTypeFDD record = SoundRecord();
    record.SetDataRectification(rectification);
    record.SetDataType(static_cast<kvt_enumDataType>(9));
    ReportCapture reports;
    NormaliseDataRecord(record);
    EXPECT_EQ(reports.Assertions(), 1u);
  }
}

TEST(DataRecord, QuantitiesCanBeCountedAndMultiplied) {
  struct Case {
    std::uint32_t columns, rows, samples, sampleSize;
    std::uint32_t newColumns, newRows, newSamples, newSampleSize;
  };
  const Case cases[] = {
      {0, 0, 0, 0, 1, 1, 1, 1},
      {0xFFFFFFFF, 0x80000000, 7, 1, 1, 1, 7, 1},
      {0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, 1, 1, 1, 1, 1},
      {0x7FFFFFFF, 0x7FFFFFFF, 1, 1, 0x7FFFFFFF, 0x7FFFFFFF, 1, 1},
      {0x10000, 0x10000, 0x7FFFFFFF, 0xFFFFFFFF, 1, 1, 1, 0xFFFFFFFF},
  };
  for (const Case& c : cases) {
    CGDataTypeFDD record = SoundRecord();
    record.cellSize = 0;
    record.columnQuantity = c.columns;
    record.rowQuantity = c.rows;
    record.sampleQuantity = c.samples;
    record.sampleSize = c.sampleSize;
    NormaliseDataRecord(record);
    EXPECT_EQ(record.columnQuantity, c.newColumns);
    EXPECT_EQ(record.rowQuantity, c.newRows);
    EXPECT_EQ(record.sampleQuantity, c.newSamples);
    EXPECT_EQ(record.sampleSize, c.newSampleSize);
  }
  CGDataTypeFDD wide = SoundRecord();
  wide.SetDataType(kvt_UInt16);
  NormaliseDataRecord(wide);
  EXPECT_EQ(wide.sampleSize, 2u) << "who reads by the type must not read past the samples";
}

// Whatever a float of a record is, units, limits and steps come out finite and the range in order.
TEST(DataRecord, NoFloatMakesAnItemUnusable) {
  using Field = float CGDataTypeFDD::*;
  constexpr Field fields[] = {&CGDataTypeFDD::columnResolution,
                              &CGDataTypeFDD::columnOffset,
                              &CGDataTypeFDD::rowResolution,
                              &CGDataTypeFDD::rowOffset,
                              &CGDataTypeFDD::sampleResolution,
                              &CGDataTypeFDD::sampleOffset,
                              &CGDataTypeFDD::dataMinimum,
                              &CGDataTypeFDD::dataMaximum,
                              &CGDataTypeFDD::dataResolution,
                              &CGDataTypeFDD::dataOffset,
                              &CGDataTypeFDD::probeAngle,
                              &CGDataTypeFDD::probeSkew,
                              &CGDataTypeFDD::probeThird,
                              &CGDataTypeFDD::probeFourth,
                              &CGDataTypeFDD::tofdValue,
                              &CGDataTypeFDD::partThickness,
                              &CGDataTypeFDD::inspectionRadius,
                              &CGDataTypeFDD::probeSeparation,
                              &CGDataTypeFDD::soundSpeed};
  constexpr Field steps[] = {&CGDataTypeFDD::columnResolution,
                             &CGDataTypeFDD::rowResolution,
                             &CGDataTypeFDD::sampleResolution,
                             &CGDataTypeFDD::inspectionRadius,
                             &CGDataTypeFDD::probeSeparation,
                             &CGDataTypeFDD::soundSpeed};
  for (const auto c : {gdata_AScan, gdata_CScanPosition})
    for (const Field field : fields)
      for (const float value : {floatNan, floatInf, -floatInf, -1.0f}) {
        CGDataTypeFDD record = SoundRecord({.dataClass = c});
        record.*field = value;
        const ReportCapture reports;  // keeps reports off the screen
        NormaliseDataRecord(record);
        for (const Field each : fields) EXPECT_TRUE(std::isfinite(record.*each));
        for (const Field step : steps) EXPECT_NE(record.*step, 0);
        EXPECT_GT(record.sampleResolution, 0);
        EXPECT_LE(record.dataMinimum, record.dataMaximum);
        EXPECT_LT(record.probeAngle, 90);
      }
  CGDataTypeFDD reversed = SoundRecord();
  std::swap(reversed.dataMinimum, reversed.dataMaximum);
  reversed.columnResolution = -0.002f;
  reversed.sampleResolution = -1e-8f;
  NormaliseDataRecord(reversed);
  EXPECT_EQ(reversed.dataMinimum, 0);
  EXPECT_EQ(reversed.dataMaximum, 255);
  EXPECT_EQ(reversed.columnResolution, -0.002f) << "the scan ran backwards";
  EXPECT_EQ(reversed.sampleResolution, 1e-8f);
}

TEST(DataRecord, TextsWithoutTerminatorAreCut) {
  CGDataTypeFDD record = SoundRecord();
  for (wchar_t* text : {record.dataName,
                        record.dataNameText,
                        record.channelName,
                        record.subChannelName,
                        record.gateName})
    std::fill_n(text, CGDataTypeFDD::nameSize, L'x');
  DataHost host;
  const auto item = host.Make(record);
  std::wstring name;
  item->idata3_GetChannelName(&name);
  EXPECT_EQ(name, std::wstring(31, L'x'));
}

TEST(DataRecord, ABlockShorterThanItsLayoutIsReportedAndNotAttached) {
  DataHost host;
  std::vector<char> block(10 * 5 * 100);
  CGDataTypeFDD record = SoundRecord();
  record.dataPointer = block.data();
  for (const std::uint64_t size : {block.size(), block.size() - 1}) {
    record.dataSize = size;
    ReportCapture reports;
    const auto item = host.Make(record, 1);
    const bool isWhole = size == block.size();
    EXPECT_EQ(reports.Assertions(), isWhole ? 0u : 1u);
    EXPECT_EQ(item->idata1_GetInfoRef()->IsDataLoaded(), isWhole ? 1 : 0);
    EXPECT_EQ(reinterpret_cast<char*>(item->idata1_GetInfoRef()->GetDiskTable()),
              isWhole ? block.data() : nullptr);
  }
}

}  // namespace
