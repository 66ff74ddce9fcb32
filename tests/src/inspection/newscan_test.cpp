#include "utdata/newscan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <span>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/samples.h"

namespace utdata::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NewScanTest : public testing::Test {
 protected:
  [[nodiscard]] std::string Path() const { return (m_folder.Path() / "scan.fpd").string(); }

  ScratchDirectory m_folder;
};

TEST_F(NewScanTest, ASavedScanHasItsSamplesAxesAndGroups) {
  const SampleType& type = *FindSampleType("i16");
  CGDataTypeFDD record = NominalRecord(type);
  SetLayout(record, type, {.columns = 2, .rows = 2, .samples = 3});
  record.SetDataRectification(gdata_RectifNone);
  record.channelId = 4;
  record.probeAngle = 45;
  record.sampleOffset = 1e-6F;
  SetName(record.channelName, std::wstring(100, L'x'));
  std::vector<std::int16_t> samples = {1, 2, 3, 4, 5, 6, 7, 8, 9, -10, -11, -12};
  {
    Inspection inspection = Inspection::New(Path());
    AddScan(inspection,
            record,
            std::as_writable_bytes(std::span(samples)),
            {"Schweißnaht", "a host", "nominal"});
    inspection.SaveAs(Path());
  }

  const Inspection saved = Inspection::Open(Path());
  const DataGroup ascans = saved.Data({.dataClass = gdata_AScan, .channel = 4});
  EXPECT_THAT(ascans.AScan<std::int16_t>(1, 1), ElementsAre(-10, -11, -12));
  EXPECT_NEAR(ascans.Times().At(1), 1.01, 1e-6);
  EXPECT_EQ(ascans.Label(), std::string(CGDataTypeFDD::nameSize - 1, 'x') + " G0 ");
  const CFContTypeFileDescr& groups = saved.Descriptor();
  ASSERT_EQ(groups.channels.GetCount(), 1);
  EXPECT_EQ(groups.channels.GetHead()->channelId, 4U);
  EXPECT_NEAR(groups.channels.GetHead()->digitizingFrequency, 1e8, 10);
  ASSERT_EQ(groups.probes.GetCount(), 1);
  EXPECT_EQ(groups.probes.GetHead()->angle, 45);
  ASSERT_EQ(groups.infos.GetCount(), 1);
  EXPECT_EQ(groups.infos.GetHead()->title, L"Schweißnaht");
}

TEST_F(NewScanTest, TheClassFollowsTheLayout) {
  const SampleType& type = *FindSampleType("u8");
  struct Case {
    gdata_enumDataClass before;
    bool hasAScans;
    gdata_enumDataClass after;
  };
  for (const Case& test : {Case{gdata_AScan, false, gdata_CScanAmplitude},
                           Case{gdata_CScanPosition, false, gdata_CScanPosition},
                           Case{gdata_CScanThickness, true, gdata_AScan},
                           Case{gdata_AScanMerged, true, gdata_AScanMerged}}) {
    CGDataTypeFDD record = NominalRecord(type);
    record.dataClass = test.before;
    SetLayout(record, type, {.samples = test.hasAScans ? 9U : 1U, .hasAScans = test.hasAScans});
    EXPECT_EQ(record.dataClass, test.after);
    EXPECT_EQ(record.cellSize, record.sampleQuantity);
  }
}

TEST_F(NewScanTest, ALayoutThatDoesNotFitTheSamplesChangesNothing) {
  constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
  const SampleType& type = *FindSampleType("u16");
  std::vector<std::byte> samples(12);
  Inspection inspection = Inspection::New(Path());
  struct Case {
    ScanLayout layout;
    std::size_t bytes;
  };
  for (const Case& test : {
           Case{{.columns = 7}, 12},
           Case{{.columns = 5}, 12},
           Case{{.columns = most, .rows = most, .samples = most}, 12},
           Case{{.columns = 1U << 31U, .rows = 1U << 31U, .samples = 2}, 0},  // modulo 2^64
       }) {
    CGDataTypeFDD record = NominalRecord(type);
    SetLayout(record, type, test.layout);
    EXPECT_THROW(AddScan(inspection, record, std::span(samples).first(test.bytes), {}), Error);
  }
  CGDataTypeFDD record = NominalRecord(type);
  SetLayout(record, type, {.columns = 6});
  EXPECT_THROW(AddScan(inspection, record, samples, {"\xFF", "", ""}), Error);
  EXPECT_THAT(inspection.Data(), IsEmpty());
  EXPECT_TRUE(inspection.Descriptor().channels.IsEmpty());
  EXPECT_NO_THROW(AddScan(inspection, record, samples, {}));
}

TEST_F(NewScanTest, ASilentSampleHasNoAmplitudeHoweverItIsStored) {
  struct Case {
    const char* type;
    gdata_enumRectif rectification;
    std::int32_t byteSwap;
    std::uint16_t bits;
  };
  for (const Case& test : {Case{"u8", gdata_RectifFull, 0, 0},
                           Case{"u8", gdata_RectifNone, 0, 0x80},
                           Case{"i8", gdata_RectifNone, 0, 0},
                           Case{"u16", gdata_RectifNone, 0, 0x8000},
                           Case{"u16", gdata_RectifNone, 1, 0x0080},
                           Case{"i16", gdata_RectifNone, 0, 0}}) {
    const SampleType& type = *FindSampleType(test.type);
    CGDataTypeFDD record = NominalRecord(type);
    SetLayout(record, type, {});
    record.SetDataRectification(test.rectification);
    record.byteSwap = test.byteSwap;
    std::vector<std::uint16_t> samples = {test.bits};
    Inspection inspection = Inspection::New(Path());
    const DataGroup group = AddScan(
        inspection, record, std::as_writable_bytes(std::span(samples)).first(type.size), {});
    EXPECT_EQ(group.SilentSample(), test.bits) << test.type << " " << test.byteSwap;
    EXPECT_THAT(group.Samples().Values(0), ElementsAre(0)) << test.type << " " << test.byteSwap;
  }
}

}  // namespace
}  // namespace utdata::test
