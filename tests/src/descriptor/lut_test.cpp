#include "utdata/lut.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <random>
#include <string>

#include "src/descriptor/blockcoder.h"
#include "tests/src/descriptor/lut_model.h"
#include "tests/support/report_capture.h"

namespace utdata {

struct LookUpTableSteps {
  static int Byte(int sample, std::uint32_t flags) {
    return CLookUpTable::GetCorrectedValue(static_cast<char>(sample),
                                           static_cast<lut_enumConversion>(flags));
  }
  static int UnsignedByte(int sample, std::uint32_t flags) {
    return CLookUpTable::GetCorrectedValue(static_cast<unsigned char>(sample),
                                           static_cast<lut_enumConversion>(flags));
  }
  static int Word(int sample, std::uint32_t flags) {
    return CLookUpTable::GetCorrectedValue(
        static_cast<short>(sample), -32768, 32767, 1, static_cast<lut_enumConversion>(flags));
  }
  static int UnsignedWord(int sample, std::uint32_t flags) {
    return CLookUpTable::GetCorrectedValue(static_cast<unsigned short>(sample),
                                           0,
                                           65535,
                                           1,
                                           static_cast<lut_enumConversion>(flags),
                                           0);
  }
};

}  // namespace utdata

namespace {

using lut_model::Group;
using utdata::LookUpTableSteps;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

CRDataTypeDD Descriptor(const Group& g) {
  CRDataTypeDD d;
  d.SetDataType(g.bits == 8 ? (g.isSigned ? kvt_Int8 : kvt_UInt8)
                            : (g.isSigned ? kvt_Int16 : kvt_UInt16));
  d.dataClass = gdata_AScan;
  d.dataMinimum = static_cast<float>(g.minimum);
  d.dataMaximum = static_cast<float>(g.maximum);
  d.byteSwap = g.isSwapped;
  d.fileFormat =
      static_cast<gdata_bitmapFileOptions>((g.isOffset ? 1u : 0u) | (g.isCompressed ? 0x100u : 0u));
  d.GetGroupVersionNumber() = 1;
  const bool isUnrectified = g.isOffset || g.isCentred;
  d.SetDataRectification(isUnrectified ? gdata_RectifNone : gdata_RectifFull);
  return d;
}

std::string Text(const Group& g) {
  return std::string(g.isSigned ? "i" : "u") + std::to_string(g.bits) +
         (g.isSwapped ? " swapped" : "") + (g.isCompressed ? " compressed" : "") +
         (g.isOffset ? " offset" : "") + (g.isCentred ? " centred" : "") + " [" +
         std::to_string(g.minimum) + ", " + std::to_string(g.maximum) + "] x " +
         std::to_string(g.factor);
}

template <class Sample>
void ExpectBlocks(const CLookUpTable& table, const std::vector<std::uint8_t>& codes) {
  std::vector<Sample> samples(codes.size());
  std::iota(samples.begin(), samples.end(), Sample{});
  std::vector<std::uint8_t> got(codes.size());
  ASSERT_TRUE(table.ConvertBlock(samples.data(), samples.size(), got.data()));
  EXPECT_EQ(got, codes);
  for (std::size_t raw = 0; raw < codes.size(); ++raw)
    ASSERT_EQ(table.Convert(samples[raw]), codes[raw]) << raw;
}

// Every raw sample through Convert, through ConvertBlock, and through each path of the machine,
// against the model.
void ExpectModel(const Group& g) {
  SCOPED_TRACE(Text(g));
  CRDataTypeDD d = Descriptor(g);
  CLookUpTable table(&d, nullptr);
  if (g.factor != 1) static_cast<void>(table.RemapLUT(&d, static_cast<std::uint32_t>(g.factor)));
  const std::vector<std::uint8_t> codes = lut_model::Codes(g);
  if (g.bits == 8) {
    g.isSigned ? ExpectBlocks<char>(table, codes) : ExpectBlocks<unsigned char>(table, codes);
    return;
  }
  g.isSigned ? ExpectBlocks<short>(table, codes) : ExpectBlocks<unsigned short>(table, codes);
  std::vector<std::uint16_t> samples(codes.size());
  std::iota(samples.begin(), samples.end(), std::uint16_t{});
  for (const auto path : {utdata::VectorPath::Portable, utdata::VectorPath::Avx2}) {
    if (!utdata::IsPathAvailable(path)) continue;
    const auto plan = utdata::FindWordPlan(path,
                                           CLookUpTable::GetConversionStyle(&d),
                                           g.isSigned,
                                           codes.data(),
                                           255 * g.factor / (g.maximum - g.minimum));
    if (plan.method == utdata::WordPlan::Method::Table) continue;
    std::vector<std::uint8_t> got(codes.size());
    ASSERT_EQ(utdata::CodeWords(path, plan, samples.data(), samples.size(), got.data()),
              samples.size());
    EXPECT_EQ(got, codes) << "path " << static_cast<int>(path);
  }
}

TEST(LookUpTable, CodesEqualTheModelForEveryByte) {
  for (const bool isOffset : {false, true}) {
    ExpectModel(
        {.bits = 8, .isSigned = true, .isOffset = isOffset, .minimum = -128, .maximum = 127});
    ExpectModel({.bits = 8, .isOffset = isOffset, .minimum = 0, .maximum = 255});
  }
}

TEST(LookUpTable, CodesEqualTheModelForEveryWord) {
  const std::pair<double, double> ranges[] = {{0, 65535},
                                              {-32768, 32767},
                                              {0, 4095},
                                              {-2048, 2047},
                                              {0, 32767},
                                              {-32000, 32000},
                                              {100, 60000},
                                              {-1, 1},
                                              {0, 1},
                                              {0, 70000},
                                              {-100000, 100000},
                                              {0.25, 1023.75},
                                              // neither rising nor finite: a documented code,
                                              // whatever it is
                                              {4095, 0},
                                              {32767, -32768},
                                              {7, 7},
                                              {0, 0},
                                              {40000, 40000},
                                              {nan, 100},
                                              {0, nan},
                                              {nan, nan},
                                              {-inf, inf},
                                              {0, inf},
                                              {inf, -inf}};
  for (const auto& [minimum, maximum] : ranges)
    for (const bool isSigned : {false, true})
      for (const double factor : {1.0, 2.0, 37.0, 0.0}) {
        Group g{.isSigned = isSigned, .minimum = minimum, .maximum = maximum, .factor = factor};
        ExpectModel(g);
        (isSigned ? g.isOffset : g.isCentred) = true;
        g.isSwapped = factor == 1.0;
        ExpectModel(g);
      }
}

// The largest sample is not the largest amplitude where the range goes on beyond it.
TEST(LookUpTable, TheLastSampleBelowItsRangeIsNoPeak) {
  const CRDataTypeDD d = Descriptor({.isSigned = true, .minimum = -100000, .maximum = 100000});
  const CLookUpTable table(&d, nullptr);
  EXPECT_EQ(table.Convert(short{32766}), 82);
  EXPECT_EQ(table.Convert(short{32767}), 82);
  const std::vector<short> samples(64, 32767);
  std::vector<std::uint8_t> codes(samples.size());
  ASSERT_TRUE(table.ConvertBlock(samples.data(), samples.size(), codes.data()));
  EXPECT_EQ(codes, std::vector<std::uint8_t>(samples.size(), 82));
}

// Samples of 8 bits have three types in a program, of which two may be negative.
TEST(LookUpTable, SignedCharactersAreSamplesLikeAnyOther) {
  const CRDataTypeDD d = Descriptor({.bits = 8, .isSigned = true, .minimum = -128, .maximum = 127});
  const CLookUpTable table(&d, nullptr);
  for (const int sample : {-128, -1, 0, 1, 127}) {
    const auto raw = static_cast<signed char>(sample);
    EXPECT_EQ(table.Convert(raw), CLookUpTable::RectifySC(raw)) << sample;
    unsigned char code = 0;
    EXPECT_TRUE(table.ConvertBlock(&raw, 1, &code));
    EXPECT_EQ(code, CLookUpTable::RectifySC(raw)) << sample;
  }
}

TEST(LookUpTable, CodesEqualTheModelForRandomGroups) {
  std::mt19937 random(20240511);
  std::uniform_real_distribution<float> limit(-70000, 70000);
  std::uniform_int_distribution<int> factor(1, 9);
  const auto toss = [&random] { return (random() & 1u) != 0; };
  for (int round = 0; round < 60; ++round) {
    Group g{.isSigned = toss(), .isSwapped = toss(), .isCompressed = toss()};
    (g.isSigned ? g.isOffset : g.isCentred) = toss();
    // Descriptors hold single-precision limits.
    g.minimum = toss() ? limit(random) : std::floor(limit(random));
    g.maximum = limit(random);
    g.factor = toss() ? 1 : factor(random);
    ExpectModel(g);
  }
}

// Arithmetic must replace the table where it matters, or the bulk conversion is only as fast as the
// table.
TEST(LookUpTable, UsualRangesNeedNoTable) {
  using Method = utdata::WordPlan::Method;
  const auto methodOf = [](Group g) {
    CRDataTypeDD d = Descriptor(g);
    return utdata::FindWordPlan(utdata::FastestPath(),
                                CLookUpTable::GetConversionStyle(&d),
                                g.isSigned,
                                lut_model::Codes(g).data(),
                                255 * g.factor / (g.maximum - g.minimum))
        .method;
  };
  EXPECT_EQ(methodOf({.minimum = 0, .maximum = 65535}), Method::Narrow);
  EXPECT_EQ(methodOf({.isSigned = true, .minimum = -32768, .maximum = 32767}), Method::Narrow);
  EXPECT_EQ(methodOf({.isSigned = true, .isOffset = true, .minimum = -32768, .maximum = 32767}),
            Method::Narrow);
  EXPECT_EQ(methodOf({.isSwapped = true, .minimum = 0, .maximum = 65535}), Method::Narrow);
  EXPECT_EQ(methodOf({.minimum = 0, .maximum = 4095}), Method::Narrow);
  EXPECT_EQ(methodOf({.isSigned = true, .minimum = -2048, .maximum = 2047}), Method::Narrow);
  EXPECT_NE(methodOf({.minimum = 123.5, .maximum = 54321.25}), Method::Table);
  EXPECT_NE(methodOf({.isSigned = true, .minimum = -31234, .maximum = 29999}), Method::Table);
  EXPECT_EQ(methodOf({.minimum = 65535, .maximum = 0}), Method::Table);
}

TEST(LookUpTable, BlocksOfAnyLengthAndPlaceTouchOnlyTheirCodes) {
  CRDataTypeDD d = Descriptor({.isSigned = true, .minimum = -32768, .maximum = 32767});
  const CLookUpTable table(&d, nullptr);
  std::vector<short> samples(200);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<short>(i * 331 - 30000);
  for (std::size_t from = 0; from < 3; ++from)
    for (std::size_t count : {0u, 1u, 31u, 32u, 33u, 64u, 100u, 197u}) {
      std::vector<std::uint8_t> codes(samples.size(), 0xAB);
      ASSERT_TRUE(table.ConvertBlock(samples.data() + from, count, codes.data()));
      for (std::size_t i = 0; i < codes.size(); ++i)
        ASSERT_EQ(codes[i], i < count ? table.Convert(samples[from + i]) : 0xAB)
            << from << " " << count << " " << i;
    }
  unsigned short other = 0;
  unsigned char untouched = 7;
  EXPECT_FALSE(table.ConvertBlock(&other, 1, &untouched));
  EXPECT_EQ(untouched, 7);
}

TEST(LookUpTable, SampleOutsideTheTableIsRefusedInCheckedBuilds) {
  CRDataTypeDD d = Descriptor({.bits = 8, .isSigned = true});
  const CLookUpTable bytes(&d, nullptr);
  d.SetDataType(static_cast<kvt_enumDataType>(6));
  const CLookUpTable none(&d, nullptr);
  char sample = 0;
  unsigned char code = 0;
  EXPECT_FALSE(none.ConvertBlock(&sample, 1, &code));
  EXPECT_EQ(bytes.Convert(0xFFu), 1);
  EXPECT_EQ(bytes.Convert(static_cast<int>(0xABCD0001)), 2) << "int indexes by its low 16 bits";
#if defined(UTDATA_CHECKED)
  utdata::test::ReportCapture log;
  EXPECT_EQ(none.Convert(char{0}), 0);
  EXPECT_EQ(bytes.Convert(short{256}), 0);
  EXPECT_EQ(bytes.Convert(0x10000u), 0);
  EXPECT_EQ(log.Assertions(), 3u);
#endif
}

TEST(LookUpTable, StepsRectifyAndReplaceErrorCodes) {
  struct Case {
    int sample;
    std::uint32_t flags;
    int code;
  };
  const Case cases[] = {{0, lut_IgnoreErrorCodes, 6},
                        {2, lut_IgnoreErrorCodes, 6},
                        {-1, lut_IgnoreErrorCodes, 1},
                        {3, lut_RectifyPos, 3},
                        {-3, lut_RectifyPos, 0},
                        {-1, lut_RectifyNeg, 3},
                        {-2, lut_RectifyNeg, 3},
                        {-3, lut_RectifyNeg, 3},
                        {-128, lut_RectifyNeg, 128},
                        {2, lut_RectifyNeg, 2},
                        {3, lut_RectifyNeg, 0},
                        {-1, lut_RectifyBipolar, 3},
                        {-2, lut_RectifyBipolar, 3},
                        {-5, lut_RectifyBipolar, 5},
                        {-128, lut_RectifyBipolar, 128},
                        {127, lut_RectifyBipolar, 127}};
  for (const auto& [sample, flags, code] : cases)
    EXPECT_EQ(LookUpTableSteps::Byte(sample, flags), code) << sample << " " << flags;
  EXPECT_EQ(LookUpTableSteps::UnsignedByte(2, lut_IgnoreErrorCodes), 3);
  EXPECT_EQ(LookUpTableSteps::UnsignedWord(2 << 8, lut_SwapData | lut_IgnoreErrorCodes), 0)
      << "3 / 257";
  EXPECT_EQ(LookUpTableSteps::Word(-32768, lut_RectifyBipolar), 128);
  for (int c = -128; c < 128; ++c)
    EXPECT_EQ(CLookUpTable::UnRectifySC(CLookUpTable::RectifySC(static_cast<signed char>(c))), c);
}

TEST(LookUpTable, ForbiddenFlagsAreReportedAndTheSampleStillConverted) {
  utdata::test::ReportCapture log;
  EXPECT_EQ(LookUpTableSteps::Byte(5, lut_SwapData), 10);
  EXPECT_EQ(log.Reports().back().text.substr(0, 67),
            L"(conv & lut_SwapData) == 0 &&(conv & lut_RemoveSVcompression) == 0\n");
  EXPECT_EQ(LookUpTableSteps::UnsignedByte(5, lut_RectifyNeg), 5);
  EXPECT_EQ(CLookUpTable::CorrectAmplitudeData(
                5, static_cast<lut_enumConversion>(lut_SignedByte | lut_SwapData)),
            5);
  EXPECT_EQ(CLookUpTable::CorrectAmplitudeData(
                5, static_cast<lut_enumConversion>(lut_UnsignedByte | lut_RectifyPos)),
            5);
  EXPECT_EQ(log.Assertions(), 4u);
}

TEST(LookUpTable, AmplitudesAreCorrectedAsBeforeCompression) {
  struct Case {
    std::int32_t sample;
    std::uint32_t flags;
    std::int32_t corrected;
  };
  const Case cases[] = {
      {0, lut_SignedByte | lut_RemoveOffset, -128},
      {200, lut_SignedByte | lut_RemoveOffset, 72},
      {200, lut_SignedByte, 200},
      {200, lut_UnsignedByte | lut_RemoveOffset, 200},
      {0x80FF, lut_SignedWord | lut_SwapData, 0xFF80},
      {0x80FF, lut_SignedWord | lut_SwapData | lut_RemoveSVcompression, -128},
      {0x00FF, lut_SignedWord | lut_RemoveOffset, 0xFF - 0x8000},
      {0xFFFF, lut_SignedWord | lut_RemoveSVcompression | lut_RemoveOffset, 0x7FF0},
      {0x12FF,
       lut_UnsignedWord | lut_SwapData | lut_RemoveSVcompression | lut_IgnoreErrorCodes,
       0xFF10},
      {-7, lut_UnsignedWord, -7},
      {-7, lut_None, -7}};
  for (const auto& [sample, flags, corrected] : cases)
    EXPECT_EQ(CLookUpTable::CorrectAmplitudeData(sample, static_cast<lut_enumConversion>(flags)),
              corrected)
        << sample << " " << flags;
}

TEST(LookUpTable, ConversionStyleFollowsTheRecord) {
  const auto styleOf = [](const auto& change) {
    CRDataTypeDD d = Descriptor({.isSigned = true, .isCompressed = true});
    change(d);
    return static_cast<std::uint32_t>(CLookUpTable::GetConversionStyle(&d));
  };
  EXPECT_EQ(styleOf([](CRDataTypeDD&) {}), lut_SignedWord | lut_RemoveSVcompression);
  EXPECT_EQ(styleOf([](CRDataTypeDD& d) { d.GetGroupVersionNumber() = 2; }), lut_SignedWord);
  EXPECT_EQ(styleOf([](CRDataTypeDD& d) { d.dataClass = gdata_AScanProcessed; }), lut_SignedWord);
  EXPECT_EQ(styleOf([](CRDataTypeDD& d) {
              d.dataClass = gdata_AScanMerged;
              d.byteSwap = 2;
            }),
            lut_SignedWord | lut_RemoveSVcompression | lut_SwapData);
  EXPECT_EQ(styleOf([](CRDataTypeDD& d) {
              d.SetDataType(kvt_Int8);
              d.byteSwap = 1;
            }),
            lut_SignedByte | lut_IgnoreErrorCodes);
  EXPECT_EQ(styleOf([](CRDataTypeDD& d) {
              d.SetDataType(kvt_UInt8);
              d.fileFormat = gdata_OptionOffsetBinary;
              d.SetDataRectification(gdata_RectifNone);
            }),
            lut_UnsignedByte | lut_IgnoreErrorCodes | lut_RemoveOffset);
}

TEST(LookUpTable, RemapRefillsTheSameStorageAndServesTheNewRange) {
  CRDataTypeDD d = Descriptor({.isSigned = true, .minimum = -32768, .maximum = 32767});
  CLookUpTable table(&d, nullptr);
  const unsigned char* const codes = table.RemapLUT(&d, 1);
  EXPECT_EQ(table.Convert(short{16384}), 126);
  EXPECT_EQ(table.RemapLUT(&d, 2), codes);
  EXPECT_EQ(table.GetLAB(), 2u);
  EXPECT_EQ(table.Convert(short{16384}), 254) << "saturates above half the maximum";
  EXPECT_EQ(table.Compare(&d, nullptr), 1) << "amplification is not compared";
  CRDataTypeDD narrow = Descriptor({.isSigned = true, .minimum = -100, .maximum = 100});
  EXPECT_EQ(table.RemapLUT(&narrow, 1), codes);
  EXPECT_EQ(table.Convert(short{100}), 254);
  EXPECT_EQ(table.Compare(&d, nullptr), 0);
  EXPECT_EQ(table.RemapLUT(&d, 1), codes);
  EXPECT_EQ(table.Convert(short{16384}), 126) << "back to the first range, the first codes";

  CRDataTypeDD byte = Descriptor({.bits = 8, .isSigned = true, .minimum = -128, .maximum = 127});
  CLookUpTable bytes(&byte, nullptr);
  EXPECT_EQ(bytes.RemapLUT(&byte, 5)[127], 254);
  EXPECT_EQ(bytes.GetLAB(), 5u);
}

}  // namespace
