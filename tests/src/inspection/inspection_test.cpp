// An inspection as a host uses it: opened, read out, gated, edited, saved and read back.
#include "utdata/inspection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <random>
#include <vector>

#include "tests/support/scratch_directory.h"
#include "utdata/arrays.h"
#include "utdata/fset.h"
#include "utdata/gating.h"
#include "utdata/idata.h"
#include "utdata/igate.h"
#include "utdata/newscan.h"
#include "utdata/rdata.h"
#include "utdata/readout.h"
#include "utdata/samples.h"
#include "utdata/spec.h"
#include "utdata/vset.h"

namespace utdata {
namespace {

using test::ScratchDirectory;

template <class Sample>
std::vector<std::byte> BytesOf(const std::vector<Sample>& samples) {
  const auto bytes = std::as_bytes(std::span(samples));
  return {bytes.begin(), bytes.end()};
}

/// A-scans of 2 rows and 3 columns, 20 ns a sample from 1 µs on, at 5900 m/s.
CGDataTypeFDD Record(kvt_enumDataType type, std::uint32_t samples) {
  const SampleType& sampleType = *FindSampleType(type);
  CGDataTypeFDD record = NominalRecord(sampleType);
  SetLayout(record, sampleType, {3, 2, samples, true});
  record.SetDataRectification(sampleType.isSigned ? gdata_RectifNone : gdata_RectifFull);
  record.sampleResolution = 20e-9F;
  record.sampleOffset = 1e-6F;
  record.columnOffset = 0.25F;
  return record;
}

/// Makes FILE of one data group, with a gate.
template <class Sample>
void MakeFile(const std::string& path,
              const CGDataTypeFDD& record,
              const std::vector<Sample>& samples) {
  Inspection inspection = Inspection::New(path);
  inspection.AddData(record, BytesOf(samples));
  CGGateTypeDescr gate;
  gate.gateId = 1;
  gate.start = 1e-6F;
  gate.width = 1e-6F;
  inspection.FileSet().fset_AddGGate(&gate, 1);
  inspection.SaveAs(path);
}

std::string Path(const ScratchDirectory& scratch,
                 const char* name =
                     "pr\xC3\xBC"
                     "f.fpd") {
  return scratch.Path().string() + "/" + name;
}

TEST(InspectionReadOut, EveryQuantityComesThroughTheItemsUnits) {
  const ScratchDirectory scratch;
  std::vector<std::int16_t> samples(2 * 3 * 50);
  const std::size_t cell = 1 * 3 + 2;
  samples[cell * 50 + 40] = -16384;
  samples[cell * 50 + 41] = 32767;
  CGDataTypeFDD record = Record(kvt_Int16, 50);
  record.probeAngle = 60;
  MakeFile(Path(scratch), record, samples);
  const Inspection inspection = Inspection::Open(Path(scratch));
  const DataGroup group = inspection.Data({.dataClass = gdata_AScan, .channel = 0});
  const ReadOut at = group.ReadOut(1, 2, 40);
  EXPECT_NEAR(at.column.In(unit_Millimetre), 252, 1e-4);
  EXPECT_NEAR(at.row.In(unit_Millimetre), 1, 1e-6);
  EXPECT_NEAR(at.time.In(unit_Microsecond), 1.8, 1e-6);
  EXPECT_NEAR(at.halfPath.In(unit_Millimetre), 1.8e-6 / 2 * 5900 * 1e3, 1e-5);
  EXPECT_NEAR(at.depth.In(unit_Millimetre), 1.8e-6 / 2 * 5900 * 1e3 / 2, 1e-5);
  EXPECT_NEAR(at.depth.In(unit_Inch) * 25.4, at.depth.In(unit_Millimetre), 1e-4);
  EXPECT_FALSE(at.tofdDepth.IsKnown());
  EXPECT_TRUE(std::isnan(at.tofdDepth.In(unit_Millimetre)) && group.TofdDepths().empty());
  EXPECT_DOUBLE_EQ(at.percent, -50);
  EXPECT_NEAR(at.decibels, -6.0206, 1e-4);
  EXPECT_DOUBLE_EQ(group.ReadOut(1, 2, 41).percent, 100);
  EXPECT_EQ(group.AScan<std::int16_t>(1, 2)[41], 32767);
  EXPECT_EQ(group.Samples().FindPeaks(group.AllCells()).strongest.cell, cell);
  EXPECT_THROW(static_cast<void>(group.AScan<std::uint8_t>(0, 0)), Error);
  EXPECT_THROW(static_cast<void>(group.ReadOut(2, 0)), Error);
  EXPECT_THROW(static_cast<void>(group.ReadOut(0, 0, 50)), Error);
}

// The back wall of a plate of 30 mm between probes 90 mm apart: path = 2 sqrt(45^2 + 30^2).
TEST(InspectionReadOut, TofdDepthIsThatOfTheDiffractingTip) {
  const ScratchDirectory scratch;
  CGDataTypeFDD record = Record(kvt_Int16, 1000);
  record.tofd = 1;
  record.probeSeparation = 0.090F;
  record.partThickness = 0.030F;
  record.sampleOffset = 10e-6F;
  MakeFile(Path(scratch), record, std::vector<std::int16_t>(6000));
  const Inspection inspection = Inspection::Open(Path(scratch));
  const DataGroup group = inspection.Data().front();
  const double time = 2 * std::hypot(0.045, 0.030) / 5900;
  const auto sample = static_cast<std::uint32_t>(std::round((time - 10e-6) / 20e-9));
  EXPECT_NEAR(group.ReadOut(0, 0, sample).tofdDepth.In(unit_Millimetre), 30, 0.1);
  const std::vector<double> depths = group.TofdDepths();
  ASSERT_EQ(depths.size(), 1000U);
  EXPECT_TRUE(std::isnan(depths[0])) << "before the lateral wave";
  EXPECT_FALSE(group.ReadOut(0, 0, 0).tofdDepth.IsKnown());
  EXPECT_NEAR(depths[sample], 30, 0.1);
}

/// What Samples and gating find, against one pass over the values of each cell.
template <class Sample>
void CheckPeaks(kvt_enumDataType type, const CGDataTypeFDD& changes) {
  const ScratchDirectory scratch;
  std::mt19937 random(7);
  std::vector<Sample> samples(2 * 3 * 77);
  for (Sample& sample : samples) sample = static_cast<Sample>(random());
  CGDataTypeFDD record = Record(type, 77);
  record.byteSwap = changes.byteSwap;
  record.SetDataRectification(changes.GetDataRectification());
  MakeFile(Path(scratch), record, samples);
  Inspection inspection = Inspection::Open(Path(scratch));
  const DataGroup group = inspection.Data().front();
  const Samples read = group.Samples();
  const Peaks peaks = read.FindPeaks(group.AllCells());
  const GateResult gated = Gate(inspection, {0, 1, 1.2e-6, 0.8e-6, 10.0});
  const double fullScale = group.Descriptor().GetDataMax();
  for (std::uint32_t cell = 0; cell < 6; ++cell) {
    const std::vector<std::int32_t> values = read.Values(cell);
    double strongest = -1, seen = -1;
    std::size_t place = 0;
    for (std::size_t at = 0; at < values.size(); ++at) {
      const double percent = std::abs(group.Percent(values[at]));
      strongest = std::max(strongest, percent);
      if (at >= 10 && at < 50 && percent > seen + 1e-9) {
        seen = percent;
        place = at;
      }
    }
    EXPECT_NEAR(std::abs(group.Percent(peaks.values[cell])), strongest, 1e-9);
    const auto reading = [&](const DataGroup& cscan) {
      return cscan.AScan<std::uint16_t>(cell / 3, cell % 3)[0];
    };
    EXPECT_EQ(reading(gated.data[0].amplitudes), std::round(seen * fullScale / 100));
    EXPECT_EQ(reading(gated.data[0].positions), seen >= 10 ? place : 0);
  }
}

TEST(InspectionSamples, PeaksAndGatesAreThoseOfEveryValue) {
  CGDataTypeFDD plain, swapped, wave;
  plain.SetDataRectification(gdata_RectifFull);
  swapped.SetDataRectification(gdata_RectifFull);
  swapped.byteSwap = 1;
  wave.SetDataRectification(gdata_RectifNone);
  CheckPeaks<std::int8_t>(kvt_Int8, wave);
  CheckPeaks<std::uint8_t>(kvt_UInt8, plain);
  CheckPeaks<std::uint8_t>(kvt_UInt8, wave);
  CheckPeaks<std::int16_t>(kvt_Int16, wave);
  CheckPeaks<std::uint16_t>(kvt_UInt16, plain);
  CheckPeaks<std::uint16_t>(kvt_UInt16, wave);
  CheckPeaks<std::uint16_t>(kvt_UInt16, swapped);
  CheckPeaks<std::int16_t>(kvt_Int16, swapped);
}

TEST(InspectionSamples, BothEndsOfAWaveAreFullScaleEverywhere) {
  const ScratchDirectory scratch;
  std::vector<std::int8_t> samples(6 * 20);
  samples[5] = 127;
  samples[20 + 5] = -128;
  MakeFile(Path(scratch), Record(kvt_Int8, 20), samples);
  Inspection inspection = Inspection::Open(Path(scratch));
  const DataGroup group = inspection.Data().front();
  EXPECT_DOUBLE_EQ(group.ReadOut(0, 0, 5).percent, 100);
  EXPECT_DOUBLE_EQ(group.ReadOut(0, 1, 5).percent, -100);
  const GateResult gated = Gate(inspection, {0, 1, 1e-6, 0.4e-6, {}});
  EXPECT_FALSE(gated.isNew);
  for (const std::uint32_t column : {0U, 1U}) {
    EXPECT_DOUBLE_EQ(gated.data[0].amplitudes.ReadOut(0, column).percent, 100);
    const ReadOut position = gated.data[0].positions.ReadOut(0, column);
    EXPECT_NEAR(position.time.In(unit_Microsecond), 1.1, 1e-6);
    EXPECT_TRUE(std::isnan(position.percent));
  }
  EXPECT_THROW(Gate(inspection, {0, 1, 1e-6, 0.4e-6, {}}), Error) << "it has C-scans already";
  const auto byChannel = inspection.DataByChannel();
  ASSERT_EQ(byChannel.size(), 1U);
  EXPECT_EQ(byChannel.begin()->second.size(), 3U);
  inspection.Gate(0, 1).SetStart(1.1e-6);
  const std::vector<PlacedGate> gates = group.Gates();
  ASSERT_EQ(gates.size(), 1U);
  EXPECT_TRUE(gates[0].isPlaced);
  EXPECT_NEAR(gates[0].from, 5, 1e-3);
  EXPECT_NEAR(gates[0].to, 25, 1e-3);
}

TEST(InspectionTables, InMemoryAndMappedTablesHoldTheSame) {
  const ScratchDirectory scratch;
  std::vector<std::uint16_t> samples(6 * 30);
  for (std::size_t at = 0; at < samples.size(); ++at) samples[at] = static_cast<std::uint16_t>(at);
  MakeFile(Path(scratch), Record(kvt_UInt16, 30), samples);
  OpenOptions inMemory;
  inMemory.tables = SampleTables::InMemory;
  std::uint64_t watched = 0;
  inMemory.watch = [&](std::string_view, std::uint64_t, std::uint64_t total) { watched = total; };
  const Inspection mapped = Inspection::Open(Path(scratch));
  const Inspection loaded = Inspection::Open(Path(scratch), inMemory);
  EXPECT_TRUE(std::ranges::equal(mapped.Data()[0].Table(), loaded.Data()[0].Table()));
  EXPECT_EQ(watched, 2 * samples.size());
  EXPECT_TRUE(mapped.Data()[0].Item().IsDiskOrigin());
  EXPECT_FALSE(loaded.Data()[0].Item().IsDiskOrigin());
  // Work that is watched ends with what the watch throws, and the next reader starts anew.
  OpenOptions stopped = inMemory;
  stopped.watch = [](std::string_view, std::uint64_t, std::uint64_t) { throw 1; };
  const Inspection cut = Inspection::Open(Path(scratch), stopped);
  EXPECT_THROW(static_cast<void>(cut.Data()[0].Table()), int);
  EXPECT_THROW(static_cast<void>(cut.Data()[0].Table()), int);
}

TEST(InspectionSaving, ChangesComeBackWhicheverWayTheyWereSaved) {
  const ScratchDirectory scratch;
  const std::string path = Path(scratch), copy = Path(scratch, "copy.fpd");
  MakeFile(path, Record(kvt_UInt16, 30), std::vector<std::uint16_t>(180, 5));
  {
    Inspection inspection = Inspection::Open(path);
    inspection.Gate(0, 1).SetStart(1.2e-6);
    EXPECT_EQ(inspection.SaveCompanion(), path.substr(0, path.size() - 4) + ".A01");
    inspection.Gate(0, 1).SetWidth(0.4e-6);
    const GateResult gated = Gate(inspection, {0, 2, 1.1e-6, 0.2e-6, {}});
    CGGateTypeDescr third;
    third.gateId = 3;
    inspection.FileSet().fset_AddGGate(&third, 1);
    inspection.SaveAppended();
    EXPECT_THROW(inspection.SaveAppended(), Error) << "nothing is left to save";
    const GatedData& seen = gated.data[0];
    EXPECT_EQ(seen.positions.Stored().dataClass, gdata_CScanPosition);
    for (const DataGroup& group : {seen.amplitudes, seen.positions})
      EXPECT_NE(group.Stored().samples.offset, gdata_typeSampleRef::none) << "it is in a file now";
    inspection.Gate(0, 2).SetLevel(33);
    inspection.SaveAs(copy);
    EXPECT_TRUE(inspection.IsModified()) << "a copy elsewhere is no save of this file";
    EXPECT_THROW(inspection.SaveAs(path, true), Error) << "over its own input";
    EXPECT_THROW(inspection.SaveAs(copy), Error) << "over a file without being asked to";
  }
  const Inspection again = Inspection::Open(path);
  EXPECT_EQ(again.Files().size(), 2U);
  EXPECT_NEAR(again.Gate(0, 1).Start(), 1.2e-6, 1e-12);
  EXPECT_NEAR(again.Gate(0, 1).Width(), 0.4e-6, 1e-12);
  ASSERT_EQ(again.Data().size(), 3U);
  EXPECT_EQ(
      again.Data({.dataClass = gdata_CScanAmplitude, .gate = 2}).AScan<std::uint16_t>(1, 2)[0], 5);
  const Inspection copied = Inspection::Open(copy);
  EXPECT_EQ(copied.Data().size(), 3U);
  EXPECT_NEAR(copied.Gate(0, 2).Level(), 33, 1e-9);
  EXPECT_NO_THROW(static_cast<void>(copied.Gate(0, 3))) << "added, saved, and not changed since";
  EXPECT_NEAR(copied.Gate(0, 1).Width(), 0.4e-6, 1e-12);
}

TEST(InspectionSaving, CompanionsThatWouldNotBeReadAreRefusedOrReported) {
  const ScratchDirectory scratch;
  const std::string path = Path(scratch, "a.fpd");
  MakeFile(path, Record(kvt_UInt16, 30), std::vector<std::uint16_t>(180));
  Inspection inspection = Inspection::Open(path);
  for (int number = 1; number <= 98; ++number) {
    inspection.Gate(0, 1).SetLevel(number);
    inspection.SaveCompanion();
  }
  inspection.Gate(0, 1).SetLevel(99);
  EXPECT_THROW(inspection.SaveCompanion(), Error);
  EXPECT_FALSE(std::filesystem::exists(scratch.Path() / "a.A99"));
  std::filesystem::copy_file(scratch.Path() / "a.A98", scratch.Path() / "a.A99");
  const Inspection tooMany = Inspection::Open(path);
  EXPECT_EQ(tooMany.Files().size(), 99U);
  ASSERT_EQ(tooMany.Warnings().size(), 1U);
  EXPECT_NE(tooMany.Warnings()[0].find("a.A99 is one companion too many; it was not read"),
            std::string::npos);
  std::filesystem::remove(scratch.Path() / "a.A99");
  std::filesystem::remove(scratch.Path() / "a.A02");
  const Inspection gap = Inspection::Open(path);
  EXPECT_EQ(gap.Files().size(), 2U);
  ASSERT_EQ(gap.Warnings().size(), 1U);
  EXPECT_NE(gap.Warnings()[0].find("a.A02 is missing; a.A03 to a.A98 were not read"),
            std::string::npos);
  EXPECT_THROW(CheckNewInspection(Path(scratch, "a"), false), Error) << "a.A01 would be read";
}

// Beam 0 of a channel and the whole channel have the same ids in a file that numbers beams from 0
// and knows no bookmark types.
TEST(InspectionSaving, AnEditOfAChannelsGroupDoesNotGoToABeamOfItsIds) {
  const ScratchDirectory scratch;
  const std::string path = Path(scratch), copy = Path(scratch, "copy.fpd");
  std::vector<std::uint16_t> samples(60, 7);
  {
    Inspection inspection = Inspection::New(path);
    CFContTypeFileDescr& groups = inspection.Descriptor();
    groups.subChannels.AddTail(gsubchan_Allocate(1, L""));
    for (const wchar_t* beam : {L"beam", L""}) {
      CGDataTypeFDD* data = gdata_Allocate(1, nullptr);
      *data = Record(kvt_UInt16, 10);
      SetName(data->subChannelName, beam);
      data->tofd = *beam ? 0 : 1;
      data->dataPointer = samples.data();
      data->dataSize = samples.size() * 2;
      groups.data.AddTail(data);
    }
    inspection.SaveAs(path);
  }
  for (const bool asCompanion : {true, false}) {
    Inspection inspection = Inspection::Open(path);
    ASSERT_EQ(inspection.Data().size(), 2U);
    ASSERT_TRUE(inspection.Data()[0].IsListed() && inspection.Data()[1].IsListed());
    idata_typeInspParams params;
    CIData& item = inspection.Data()[1].Item();
    item.idata3_GetInspParam(&params);
    params.partThickness += 0.01F;
    item.idata1_ModifyInspParam(&params, 0);
    if (asCompanion) inspection.SaveAs(copy);
    asCompanion ? inspection.SaveCompanion() : inspection.SaveAppended();
    const Inspection again = Inspection::Open(asCompanion ? copy : path);
    EXPECT_EQ(again.Data()[0].Taken().partThickness, 0);
    EXPECT_EQ(again.Data()[1].Taken().partThickness, params.partThickness);
  }
}

TEST(InspectionData, AGroupWhoseIdsAreThereKeepsItsOwnSamples) {
  const ScratchDirectory scratch;
  const std::string path = Path(scratch);
  // Two groups of the class whose ids an item is found by, of different sizes.
  {
    Inspection inspection = Inspection::New(path);
    CGDataTypeFDD record = Record(kvt_UInt16, 10);
    inspection.AddData(record, BytesOf(std::vector<std::uint16_t>(60, 1)));
    EXPECT_THROW(inspection.AddData(record, BytesOf(std::vector<std::uint16_t>(60, 2))), Error);
    inspection.SaveAs(path);
  }
  // A file may hold them all the same: both can be read, and one is in the file set.
  {
    Inspection first = Inspection::Open(path);
    CFContTypeFileDescr& groups = first.Descriptor();
    CGDataTypeFDD* twin = gdata_Allocate(1, nullptr);
    std::vector<std::uint16_t> twinSamples(3 * 2 * 4, 9);
    *twin = Record(kvt_UInt16, 4);
    twin->SetDataBookmarkType(groups.data.GetHead()->GetDataBookmarkType());
    twin->dataPointer = twinSamples.data();
    twin->dataSize = twinSamples.size() * 2;
    groups.data.AddTail(twin);
    first.SaveAs(path + ".twins.fpd");
  }
  const Inspection twins = Inspection::Open(path + ".twins.fpd");
  ASSERT_EQ(twins.Data().size(), 2U);
  EXPECT_TRUE(twins.Data()[0].IsListed());
  EXPECT_FALSE(twins.Data()[1].IsListed());
  EXPECT_EQ(twins.Data()[0].AScan<std::uint16_t>(0, 0).size(), 10U);
  EXPECT_EQ(twins.Data()[1].AScan<std::uint16_t>(1, 2)[3], 9);
}

/// Why something cannot be done; empty when it can.
std::string WhyNot(const std::function<void()>& act) {
  try {
    act();
  } catch (const Error& error) {
    return error.Why();
  }
  return {};
}

// A group that cannot be shown, exported or gated says why; all others can.
TEST(InspectionData, OddGroupsAreRefusedWithTheReason) {
  constexpr const char *isEmpty = "the data group is empty", *hasNone = "the data group has no",
                       *isNone = "it has no samples", *noExtent = "has no extent",
                       *noTime = "is not one of time", *noCodes = "have no display codes",
                       *noNumbers = "not whole numbers", *noAmplitudes = "are no amplitudes",
                       *unknownWay = "in a way that is not known", *isDone = "";
  struct Case {
    void (*change)(CGDataTypeFDD&);
    const char *shown, *exported, *gated;
  };
  const Case cases[] = {
      {[](CGDataTypeFDD&) {}, isDone, isDone, isDone},
      {[](CGDataTypeFDD& r) { r.rowQuantity = 0; }, isEmpty, isEmpty, isNone},
      {[](CGDataTypeFDD& r) { r.columnQuantity = 0; }, isEmpty, isEmpty, isNone},
      {[](CGDataTypeFDD& r) { r.sampleQuantity = 0; }, isEmpty, isEmpty, isNone},
      {[](CGDataTypeFDD& r) { r.dataSize = 0; }, hasNone, hasNone, isNone},
      {[](CGDataTypeFDD& r) { r.SetDataType(static_cast<kvt_enumDataType>(99)); },
       noCodes,
       noNumbers,
       noAmplitudes},
      {[](CGDataTypeFDD& r) { r.sampleSize = 4; }, noCodes, noNumbers, noAmplitudes},
      {[](CGDataTypeFDD& r) { r.storageMode = static_cast<kvt_enumStorMode>(7); },
       unknownWay,
       unknownWay,
       unknownWay},
      {[](CGDataTypeFDD& r) { r.dataMaximum = r.dataMinimum; }, noExtent, isDone, noExtent},
      {[](CGDataTypeFDD& r) { r.dataMaximum = std::nanf(""); }, noExtent, isDone, noExtent},
      {[](CGDataTypeFDD& r) { r.dataMaximum = -1; }, isDone, isDone, "ends below zero"},
      {[](CGDataTypeFDD& r) { r.sampleUnits = kvt_UnitMetre; }, isDone, isDone, noTime},
      {[](CGDataTypeFDD& r) { r.sampleOffset = std::nanf(""); }, isDone, isDone, noTime},
      {[](CGDataTypeFDD& r) { r.sampleResolution = 0; }, isDone, isDone, noTime},
      {[](CGDataTypeFDD& r) { r.soundSpeed = 0; }, isDone, isDone, isDone},
      {[](CGDataTypeFDD& r) { r.SetDataScale(gdata_ScaleLogarithmic); }, isDone, isDone, isDone},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    const ScratchDirectory scratch;
    CGDataTypeFDD record = Record(kvt_Int16, 50);
    record.dataSize = 1;
    c.change(record);
    {
      Inspection made = Inspection::New(Path(scratch));
      made.AddData(record, std::vector<std::byte>(record.dataSize ? 600 : 0));
      made.SaveAs(Path(scratch));
    }
    Inspection inspection = Inspection::Open(Path(scratch));
    const DataGroup group = inspection.Data().front();
    const auto expect = [](const char* reason, const std::function<void()>& act) {
      const std::string why = WhyNot(act);
      EXPECT_NE(why.find(reason), std::string::npos) << why << " / " << reason;
      EXPECT_EQ(why.empty(), *reason == 0) << why;
    };
    expect(c.shown, [&] { static_cast<void>(group.Samples().FindPeaks(group.AllCells())); });
    expect(c.exported, [&] { static_cast<void>(DescribeArray(group)); });
    expect(c.gated, [&] { static_cast<void>(Gate(inspection, {0, 1, 1.1e-6, 0.4e-6, {}})); });
  }
}

TEST(InspectionData, AxesAreInTheUnitsThatTheGroupIsIn) {
  const ScratchDirectory scratch;
  CGDataTypeFDD record = Record(kvt_Int16, 50);
  record.columnUnits = kvt_UnitDegree;
  record.sampleUnits = kvt_UnitMetre;
  record.sampleResolution = 1e-3F;
  MakeFile(Path(scratch), record, std::vector<std::int16_t>(300));
  Inspection inspection = Inspection::Open(Path(scratch));
  const DataGroup group = inspection.Data().front();
  EXPECT_EQ(group.Columns().symbol, "°");
  EXPECT_EQ(group.Rows().symbol, "mm");
  EXPECT_EQ(group.Times().symbol, "mm");
  EXPECT_FALSE(group.HalfPaths());
  EXPECT_TRUE(group.Gates().empty());
  const ReadOut at = group.ReadOut(1, 2, 3);
  EXPECT_EQ(at.row.Text(unit_Millimetre), "1.0 mm");
  EXPECT_EQ(at.time.Text(unit_Microsecond), "---");
  EXPECT_FALSE(at.halfPath.IsKnown());
  EXPECT_EQ(DescribeArray(group).axes.back().label, std::string("half sound path"));
  EXPECT_NEAR(group.PercentOfDecibels(-20), 10, 1e-9);
  // Without a sound speed a time has no path.
  record = Record(kvt_Int16, 50);
  record.gateId = 9;
  const DataGroup still = inspection.AddData(record, std::vector<std::byte>(600));
  EXPECT_TRUE(still.HalfPaths());
  idata_typeInspParams params;
  still.Item().idata3_GetInspParam(&params);
  params.soundSpeed = 0;
  still.Item().idata1_ModifyInspParam(&params, 0);
  EXPECT_FALSE(still.HalfPaths());
}

TEST(InspectionData, WhatIsNotThereIsRefused) {
  const ScratchDirectory scratch;
  MakeFile(Path(scratch), Record(kvt_Int16, 50), std::vector<std::int16_t>(300));
  Inspection first = Inspection::Open(Path(scratch));
  Inspection inspection = std::move(first);
  first = Inspection::New(Path(scratch, "other.fpd"));
  inspection.VolumeSet().vol_SetLimits(kvt_AxisColumn, 0, 1);
  EXPECT_EQ(inspection.Specimen().spec_SpecMatGet(spec_All), nullptr);
  const DataGroup group = inspection.Data().front();
  const GateHandle gate = inspection.Gate(0, 1);
  CGDataTypeFDD record = Record(kvt_Int16, 50);
  record.gateId = 7;
  inspection.AddData(record, std::vector<std::byte>(600));
  const double nan = std::nan("");
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"several data groups match", [&] { static_cast<void>(inspection.Data(DataQuery())); }},
      {"no data group matches", [&] { static_cast<void>(inspection.Data({.channel = 9})); }},
      {"no data group matches",
       [&] { static_cast<void>(inspection.Data({.dataClass = gdata_Analog})); }},
      {"no data group matches", [&] { static_cast<void>(inspection.Data({.patch = 9})); }},
      {"outside the data", [&] { static_cast<void>(group.ReadOut(2, 0)); }},
      {"outside the data", [&] { static_cast<void>(group.ReadOut(0, 3)); }},
      {"2 rows and 3 columns", [&] { static_cast<void>(group.AScan<std::int16_t>(2, 0)); }},
      {"2 rows and 3 columns", [&] { static_cast<void>(group.AScan<std::int16_t>(0, 3)); }},
      {"samples have 600 bytes", [&] { static_cast<void>(group.Table(601, 0)); }},
      {"samples have 600 bytes", [&] { static_cast<void>(group.Table(599, 2)); }},
      {"not a number", [&] { gate.SetStart(nan); }},
      {"not above 0", [&] { gate.SetWidth(0); }},
      {"not above 0", [&] { gate.SetWidth(nan); }},
      {"0 to 1000 %", [&] { gate.SetLevel(-1); }},
      {"0 to 1000 %", [&] { gate.SetLevel(1001); }},
      {"path is too long", [&] { static_cast<void>(Inspection::New(std::string(40000, 'x'))); }},
      {"path is too long", [&] { inspection.SaveAs(std::string(40000, 'x')); }},
  };
  for (const auto& [expected, act] : cases) {
    const std::string why = WhyNot(act);
    EXPECT_NE(why.find(expected), std::string::npos) << why << " / " << expected;
  }
  EXPECT_NEAR(gate.Start(), 1e-6, 1e-12) << "nothing was changed";
  for (const double level : {0.0, 1000.0}) EXPECT_NO_THROW(gate.SetLevel(level)) << level;
}

TEST(InspectionOpening, FailuresSayFileAndReason) {
  const ScratchDirectory scratch;
  const auto reasonOf = [&](const std::string& path) {
    try {
      static_cast<void>(Inspection::Open(path));
    } catch (const Error& error) {
      EXPECT_EQ(error.File(), path);
      EXPECT_EQ(error.What(), "cannot be loaded");
      return error.Why();
    }
    return std::string();
  };
  EXPECT_FALSE(reasonOf(Path(scratch, "none.fpd")).empty());
  std::ofstream(Path(scratch, "other.fpd")) << "something else, long enough to be looked at";
  EXPECT_FALSE(reasonOf(Path(scratch, "other.fpd")).empty());
  EXPECT_THROW(static_cast<void>(Inspection::Open("bad\xFF.fpd")), Error);
  EXPECT_THROW(static_cast<void>(Inspection::Open(Path(scratch, "none.fpd")).Gate(0, 0)), Error);
}

}  // namespace
}  // namespace utdata
