#include "utdata/newscan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/gating.h"
#include "utdata/idata.h"
#include "utdata/readout.h"
#include "utdata/samples.h"

namespace utdata::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class NewScanTest : public testing::Test {
 protected:
  [[nodiscard]] std::string Path() const { return (m_folder.Path() / "scan.fpd").string(); }

  ScratchDirectory m_folder;
};

/// A record of A-scans of 4 samples in 3 columns, 16 bits each.
CGDataTypeFDD SmallRecord(std::uint32_t channel = 0) {
  const SampleType& type = *FindSampleType("i16");
  CGDataTypeFDD record = NominalRecord(type);
  SetLayout(record, type, {.columns = 3, .samples = 4});
  record.SetDataRectification(gdata_RectifNone);
  record.channelId = channel;
  return record;
}

/// Samples that count up from 0.
std::vector<std::int16_t> Counting(std::size_t quantity) {
  std::vector<std::int16_t> samples(quantity);
  std::iota(samples.begin(), samples.end(), std::int16_t{0});
  return samples;
}

constexpr double sectorAngles[] = {-10, 0, 45.5};

ChannelSetup SectorOf(const CGDataTypeFDD& record) {
  ChannelSetup setup = SetupOf(record);
  setup.beams = BeamsOf(record, sectorAngles);
  return setup;
}

/// What a reopened inspection says of its beams, one line each, master by master.
std::vector<std::string> BeamsIn(const Inspection& inspection) {
  std::vector<std::string> lines;
  for (const DataGroup& master : inspection.Masters())
    for (const DataGroup& beam : master.Elements()) {
      const CRDataTypeDD& record = beam.Descriptor();
      lines.push_back(std::to_string(record.channelId) + "." + std::to_string(record.subChannelId) +
                      " " + std::to_string(std::lround(10 * beam.Item().idata3_GetProbeAngle())) +
                      " " + std::to_string(beam.AScan<std::int16_t>(0, 2)[3]));
    }
  return lines;
}

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

TEST_F(NewScanTest, BeamsComeBackUnderAMasterEachWithItsOwnAngle) {
  CGDataTypeFDD record = SmallRecord(2);
  std::vector<std::int16_t> samples = Counting(3 * 12);
  {
    Inspection inspection = Inspection::New(Path());
    ChannelSetup setup = SectorOf(record);
    setup.beams[2].skew = 90;
    setup.beams[2].indexOffset = 5e-3F;
    setup.channel.gain = 20;
    setup.probes[0].elementQuantity = 64;
    const auto added =
        AddBeams(inspection, record, setup, std::as_writable_bytes(std::span(samples)));
    EXPECT_THAT(added, SizeIs(3));
    EXPECT_EQ(added[1].Descriptor().subChannelId, 2U);
    AddTexts(inspection, {"sector", "", ""});
    inspection.SaveAs(Path());
  }
  const Inspection saved = Inspection::Open(Path());
  EXPECT_THAT(saved.Masters(), SizeIs(1));
  EXPECT_THAT(BeamsIn(saved), ElementsAre("2.1 -100 11", "2.2 0 23", "2.3 455 35"));
  const DataGroup last = saved.Data({.subChannel = 3});
  EXPECT_EQ(last.Item().idata3_GetProbeSkew(), 90);
  EXPECT_EQ(ToUtf8(last.Descriptor().subChannelName), "Beam 3");
  const CFContTypeFileDescr& groups = saved.Descriptor();
  ASSERT_EQ(groups.subChannels.GetCount(), 3);
  EXPECT_EQ(groups.subChannels.GetTail()->indexOffset, 5e-3F);
  ASSERT_EQ(groups.channels.GetCount(), 1);
  EXPECT_EQ(groups.channels.GetHead()->gain, 20);
  ASSERT_EQ(groups.probes.GetCount(), 1);
  EXPECT_EQ(groups.probes.GetHead()->elementQuantity, 64U);
  EXPECT_EQ(groups.infos.GetHead()->title, L"sector");
}

TEST_F(NewScanTest, ATofdScanShowsDepthsAndNamesBothProbes) {
  CGDataTypeFDD record = SmallRecord();
  record.tofd = 1;
  record.probeSeparation = 90e-3F;
  record.soundSpeed = 6000;
  record.sampleResolution = 1e-6F;
  record.sampleOffset = 15e-6F;  // the lateral wave's time: 90 mm at 6000 m/s
  std::vector<std::int16_t> samples = Counting(12);
  {
    Inspection inspection = Inspection::New(Path());
    AddScan(inspection, record, std::as_writable_bytes(std::span(samples)), {});
    inspection.SaveAs(Path());
  }
  const Inspection saved = Inspection::Open(Path());
  const DataGroup tofd = saved.Data().front();
  EXPECT_TRUE(tofd.IsTofd());
  EXPECT_EQ(tofd.BookmarkName(), "TOFD");
  // 18 us are 54 mm to the tip: sqrt(54^2 - 45^2) = 29.85 mm.
  EXPECT_NEAR(tofd.ReadOut(0, 0, 3).tofdDepth.In(unit_Millimetre), 29.85, 0.01);
  const CGChanTypeDescr& channel = *saved.Descriptor().channels.GetHead();
  EXPECT_EQ(channel.tofd, 1);
  EXPECT_EQ(channel.probeSeparation, 90e-3F);
  EXPECT_NE(channel.firstProbeId, channel.secondProbeId);
  EXPECT_EQ(saved.Descriptor().probes.GetCount(), 2);
}

/// Beams, whole channels, and beams of a channel that is there, in any order and file: each comes
/// back under its number, beside what was there.
TEST_F(NewScanTest, ScansAreAddedToAnInspectionThatWasOpened) {
  std::vector<std::int16_t> samples = Counting(3 * 12);
  const std::span<std::byte> bytes = std::as_writable_bytes(std::span(samples));
  const auto one = bytes.first(24);
  const auto addSector = [&](Inspection& inspection, std::uint32_t channel) {
    AddBeams(inspection, SmallRecord(channel), SectorOf(SmallRecord(channel)), bytes);
  };
  const auto addWhole = [&](Inspection& inspection, std::uint32_t channel) {
    AddScan(inspection, SmallRecord(channel), one, {"no title of it", "", ""});
  };
  const auto addBeam = [&](Inspection& inspection, std::uint32_t number) {
    CGDataTypeFDD record = SmallRecord();
    record.subChannelId = number;
    record.probeAngle = 60;
    AddScan(inspection, record, one, {});
  };
  for (const bool companion : {false, true})
    for (const bool beamsFirst : {false, true}) {
      SCOPED_TRACE(testing::Message() << companion << beamsFirst);
      const ScratchDirectory folder;
      const std::string path = (folder.Path() / "scan.fpd").string();
      {
        Inspection made = Inspection::New(path);
        if (beamsFirst)
          addSector(made, 0);
        else
          addWhole(made, 1);
        made.SaveAs(path);
      }
      const auto save = [companion](Inspection& inspection) {
        companion ? inspection.SaveCompanion() : inspection.SaveAppended();
      };
      Inspection opened = Inspection::Open(path);
      if (beamsFirst)
        addWhole(opened, 1);
      else
        addSector(opened, 0);
      save(opened);
      addBeam(opened, 5);
      save(opened);
      opened.SaveAs((folder.Path() / "whole.fpd").string());
      for (const char* file : {"scan.fpd", "whole.fpd"}) {
        SCOPED_TRACE(file);
        const Inspection again = Inspection::Open((folder.Path() / file).string());
        EXPECT_THAT(again.Warnings(), IsEmpty());
        EXPECT_THAT(BeamsIn(again),
                    ElementsAre("0.1 -100 11", "0.2 0 23", "0.3 455 35", "0.5 600 11"));
        EXPECT_EQ(again.Data({.channel = 1}).Descriptor().subChannelId, 0U);
        const CFContTypeFileDescr& groups = again.Descriptor();
        ASSERT_EQ(groups.channels.GetCount(), 2);
        EXPECT_NE(groups.channels.GetHead()->firstProbeId, groups.channels.GetTail()->firstProbeId);
        EXPECT_EQ(groups.probes.GetCount(), 2);
        EXPECT_EQ(groups.subChannels.GetCount(), 4);
      }
    }
}

TEST_F(NewScanTest, WhatDoesNotAgreeWithAChannelThatIsThereChangesNothing) {
  std::vector<std::int16_t> samples = Counting(3 * 12);
  const std::span<std::byte> bytes = std::as_writable_bytes(std::span(samples));
  Inspection inspection = Inspection::New(Path());
  AddBeams(inspection, SmallRecord(), SectorOf(SmallRecord()), bytes);
  inspection.SaveAs(Path());
  Inspection opened = Inspection::Open(Path());
  struct Case {
    std::function<void(CGDataTypeFDD&, ChannelSetup&)> change;
    const char* why;
  };
  const auto renumber = [](ChannelSetup& setup) {
    for (CGSubchanTypeDescr& beam : setup.beams) beam.subChannelId += 10;
  };
  for (const Case& test : {
           Case{[&](auto&record, auto&setup) {
                  renumber(setup);
                  record.soundSpeed = setup.channel.soundSpeed = 3240;
                },
                "soundSpeed"},
           Case{[&](auto&, auto&setup) {
                  renumber(setup);
                  setup.channel.tofd = 1;
                },
                "tofd"},
           Case{[](auto&, auto&setup) { setup.beams[2].refractedAngle = 46; },
                "sub-channel 3 of channel 0 is there with "
                "refractedAngle 45.5"},
           Case{[](auto&, auto&) {}, "has its ids"},
           // The first two are new, the third has the ids of a data group.
           Case{[](auto&, auto&setup) {
                  setup.beams[0].subChannelId = 8;
                  setup.beams[1].subChannelId = 9;
                },
                "has its ids"},
           Case{[](auto&, auto&setup) { setup.beams[1].subChannelId = 0; }, "count from 1"},
           Case{[](auto&, auto&setup) { setup.beams[1].subChannelId = 1; }, "two of"},
           Case{[](auto&, auto&setup) { setup.channel.channelId = 1; }, "another channel"},
           Case{[](auto&record, auto&setup) {
                  record.channelId = setup.channel.channelId = 1;
                  for (CGSubchanTypeDescr& beam : setup.beams) beam.channelId = 1;
                  setup.beams.pop_back();
                },
                "bytes"},
       }) {
    CGDataTypeFDD record = SmallRecord();
    ChannelSetup setup = SectorOf(record);
    test.change(record, setup);
    try {
      AddBeams(opened, record, setup, bytes);
      FAIL() << "nothing thrown: " << test.why;
    } catch (const Error& error) {
      EXPECT_THAT(error.what(), HasSubstr(test.why));
    }
    EXPECT_FALSE(opened.IsModified()) << test.why;
    EXPECT_THAT(opened.Data(), SizeIs(3)) << test.why;
  }
}

/// Gates of a channel of beams make C-scans of each, which the file set gathers too.
TEST_F(NewScanTest, BeamsAreGatedUnderMasters) {
  std::vector<std::int16_t> samples = Counting(3 * 12);
  Inspection inspection = Inspection::New(Path());
  const CGDataTypeFDD record = SmallRecord();
  AddBeams(inspection, record, SectorOf(record), std::as_writable_bytes(std::span(samples)));
  const GateResult gated = Gate(inspection, {0, 1, 0, 40e-9, {}});
  EXPECT_THAT(gated.data, SizeIs(3));
  inspection.SaveAs(Path());
  const Inspection saved = Inspection::Open(Path());
  ASSERT_THAT(saved.Masters(), SizeIs(3));
  for (const DataGroup& master : saved.Masters()) EXPECT_THAT(master.Elements(), SizeIs(3));
}

}  // namespace
}  // namespace utdata::test
