#include <cmath>
#include <new>
#include <nlohmann/json.hpp>
#include <span>

#include "demo/butt_weld.h"
#include "demo/echoes.h"
#include "terminal/interrupt.h"
#include "terminal/new_file.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "utdata/newscan.h"
#include "utdata/recording.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t tofdChannel = 2;

float AsFloat(double value) { return static_cast<float>(value); }

CGDataTypeFDD RecordOf(const ButtWeld& weld, std::uint32_t channel, const wchar_t* name) {
  const bool isTofd = channel == tofdChannel;
  const SampleType& type = *FindSampleType("i16");
  CGDataTypeFDD record = NominalRecord(type);
  SetLayout(record, type, {1, weld.rows, isTofd ? weld.tofdSamples : weld.samples, true});
  record.SetDataRectification(gdata_RectifNone);
  record.channelId = channel;
  SetName(record.channelName, name);
  SetName(record.dataName, L"Butt weld");
  record.rowResolution = AsFloat(weld.rowStep);
  record.sampleResolution = AsFloat(isTofd ? weld.tofdStep : weld.sampleStep);
  record.sampleOffset = AsFloat(isTofd ? weld.tofdStart : weld.BeamStartTime());
  record.dataMaximum = simulatedFullScale;
  record.partThickness = AsFloat(weld.thickness);
  record.soundSpeed = AsFloat(isTofd ? weld.longitudinalSpeed : weld.shearSpeed);
  if (isTofd) {
    record.tofd = 1;
    record.probeSeparation = AsFloat(weld.separation);
  }
  return record;
}

constexpr std::uint32_t DacOfSide(std::size_t side) { return static_cast<std::uint32_t>(side) + 1; }

/// The beams of one side: skew 0 looks along rising x.
ChannelSetup SectorSetup(const ButtWeld& weld, std::size_t side, CGDataTypeFDD& record) {
  record.probeSkew = side == 0 ? 0.0F : 180.0F;
  std::vector<double> angles;
  for (std::uint32_t beam = 0; beam < weld.beams; ++beam) angles.push_back(weld.AngleOf(beam));
  record.probeAngle = AsFloat(angles[angles.size() / 2]);
  ChannelSetup setup = SetupOf(record);
  setup.beams = BeamsOf(record, angles);
  for (CGSubchanTypeDescr& beam : setup.beams) {
    beam.indexOffset = AsFloat(weld.IndexPoint(side));
    beam.elementQuantity = 16;
  }
  setup.channel.indexOffset = AsFloat(weld.IndexPoint(side));
  setup.channel.waveMode = gdata_WaveShear;
  setup.channel.dacEnabled = 1;
  setup.channel.dacId = DacOfSide(side);
  CGProbeTypeDescr& probe = setup.probes.front();
  probe.name = L"Simulated array 4 MHz";
  probe.frequency = AsFloat(weld.frequency);
  probe.bandwidth = AsFloat(weld.bandwidth);
  probe.elementQuantity = 32;
  probe.pitch = 0.6e-3F;
  probe.waveMode = gdata_WaveShear;
  return setup;
}

ChannelSetup TofdSetup(const ButtWeld& weld, const CGDataTypeFDD& record) {
  ChannelSetup setup = SetupOf(record);
  setup.channel.indexOffset = AsFloat(weld.centre);
  for (CGProbeTypeDescr& probe : setup.probes) {
    probe.name = L"Simulated TOFD 10 MHz";
    probe.frequency = AsFloat(weld.tofdFrequency);
    probe.bandwidth = AsFloat(weld.bandwidth);
  }
  return setup;
}

/// Adds a new descriptor to a list, which owns it with its document.
template <class Group>
Group& AddGroup(CList<Group*>& list, Group* group) {
  if (!group) throw std::bad_alloc();
  list.AddTail(group);
  return *group;
}

void AddPart(CFContTypeFileDescr& groups, const ButtWeld& weld) {
  CGWeldTypeDescr& described = AddGroup(groups.welds, gweld_Allocate(1, L"Butt weld"));
  described.preparation = 1;
  described.centerPosition = AsFloat(weld.centre);
  described.bevelAngle = AsFloat(weld.bevelAngle);
  described.rootGap = AsFloat(weld.rootGap);
  described.rootFace = AsFloat(weld.rootFace);
  described.thickness = AsFloat(weld.thickness);
  described.heatAffectedZone = 5e-3F;
  CGSpecdimTypeDescr& part = AddGroup(groups.specimenDimensions, gspecdim_Allocate(1, nullptr));
  part.length = AsFloat(weld.rows * weld.rowStep);
  part.width = AsFloat(2 * weld.centre);
  part.thickness = AsFloat(weld.thickness);
  CGSpecmatTypeDescr& steel =
      AddGroup(groups.specimenMaterials, gspecmat_Allocate(1, L"Carbon steel"));
  steel.longitudinalSpeed = AsFloat(weld.longitudinalSpeed);
  steel.shearSpeed = AsFloat(weld.shearSpeed);
  steel.density = 7850;
}

/// The curves of both sides through side-drilled holes at several half paths. Simulated beams lose
/// nothing on their way, so that these echoes are alike and the curves are level.
void AddDacs(CFContTypeFileDescr& groups, const ButtWeld& weld) {
  for (std::size_t side = 0; side < weldSides; ++side) {
    CGDacTypeDescr& dac = AddGroup(groups.dacs, gdac_Allocate(1, L"Side-drilled holes"));
    dac.dacId = DacOfSide(side);
    dac.channelId = static_cast<std::uint32_t>(side);
    dac.referenceLevel = AsFloat(100 * weld.referenceEcho);
    for (const double halfPath : {20e-3, 40e-3, 60e-3, 80e-3})
      dac.points.push_back({AsFloat(2 * halfPath / weld.shearSpeed), dac.referenceLevel});
  }
}

/// The inspection of the recorded blocks, which stand in the order of SimulateWeld.
void WriteInspection(const ButtWeldFiles& files,
                     const ButtWeld& weld,
                     std::span<const std::uint64_t> blocks,
                     const Signature& signature,
                     bool replace) {
  Recording recorded(files.acquisition);  // outlives the inspection, which refers to its samples
  Inspection inspection = Inspection::New(files.inspection);
  auto block = blocks.begin();
  for (std::size_t side = 0; side < weldSides; ++side) {
    CGDataTypeFDD record =
        RecordOf(weld, static_cast<std::uint32_t>(side), side == 0 ? L"Left" : L"Right");
    const ChannelSetup setup = SectorSetup(weld, side, record);
    AddChannel(inspection, setup);
    for (const CGSubchanTypeDescr& beam : setup.beams)
      recorded.AddAScans(inspection, BeamRecord(record, beam), *block++);
  }
  const CGDataTypeFDD record = RecordOf(weld, tofdChannel, L"TOFD");
  AddChannel(inspection, TofdSetup(weld, record));
  recorded.AddAScans(inspection, record, *block);
  AddTexts(inspection,
           {"Simulated butt weld",
            "utdata " UTDATA_VERSION,
            "simulated: a crack at the root, a lack of fusion at the left bevel, porosity"});
  AddPart(inspection.Descriptor(), weld);
  AddDacs(inspection.Descriptor(), weld);
  const UnfinishedFileScope unfinished(files.inspection);
  inspection.SaveAs(files.inspection, replace, signature);
}

double Millimetre(double metres) { return metres * 1000; }

Json SightJson(const ButtWeld& weld, std::size_t side, const Sight& sight) {
  const double beam = std::round((sight.angle - weld.firstAngle) / weld.angleStep);
  return {{"channel", side},
          {"sub_channel", static_cast<int>(beam) + 1},
          {"leg", sight.leg},
          {"angle", sight.angle},
          {"half_path", Millimetre(sight.halfPath)}};
}

/// Whether a beam of the sector and its range hold what is seen so.
bool IsSeen(const ButtWeld& weld, const Sight& sight) {
  const double beam = (sight.angle - weld.firstAngle) / weld.angleStep;
  const double range = weld.samples * weld.sampleStep * weld.shearSpeed / 2;
  return beam >= -0.5 && beam <= weld.beams - 0.5 && sight.halfPath >= weld.beamStart &&
         sight.halfPath <= weld.beamStart + range;
}

Json FlawJson(const ButtWeld& weld, const WeldFlaw& flaw) {
  Json json = {{"name", flaw.name},
               {"x", Millimetre(flaw.x)},
               {"depth", Millimetre(flaw.depth)},
               {"from", Millimetre(flaw.from)},
               {"to", Millimetre(flaw.to)},
               {"seen", Json::array()}};
  for (std::size_t side = 0; side < weldSides; ++side)
    for (const Sight& sight : SightsOf(weld, flaw, side))
      if (IsSeen(weld, sight)) json["seen"].push_back(SightJson(weld, side, sight));
  if (flaw.diffracted != 0) {
    const double path = TofdHalfPath(weld, flaw.x, flaw.depth), half = weld.separation / 2;
    json["tofd"] = {{"channel", tofdChannel},
                    {"half_path", Millimetre(path)},
                    {"depth_if_midway", Millimetre(std::sqrt(path * path - half * half))}};
  }
  return json;
}

Json PartJson(const ButtWeld& weld) {
  Json flaws = Json::array();
  for (const WeldFlaw& flaw : weld.flaws) flaws.push_back(FlawJson(weld, flaw));
  return {{"units", "mm, degrees; x across the weld, from and to along it"},
          {"thickness", Millimetre(weld.thickness)},
          {"weld_centre", Millimetre(weld.centre)},
          {"index_points", {Millimetre(weld.IndexPoint(0)), Millimetre(weld.IndexPoint(1))}},
          {"probe_separation", Millimetre(weld.separation)},
          {"flaws", flaws}};
}

std::string FlawLine(const Json& flaw) {
  const auto number = [](const Json& value) {
    return Number(std::round(value.get<double>() * 10) / 10);
  };
  std::string text = flaw["name"].get<std::string>() + ": x " + number(flaw["x"]) + " mm, " +
                     number(flaw["depth"]) + " mm deep, " + number(flaw["from"]) + " to " +
                     number(flaw["to"]) + " mm along the weld";
  for (const Json& seen : flaw["seen"])
    text += std::string(", ") + (seen["channel"] == 0 ? "left" : "right") + " at " +
            number(seen["angle"]) + "° and " + number(seen["half_path"]) + " mm";
  return text;
}

}  // namespace

std::vector<std::string> MakeButtWeld(const ButtWeldFiles& files,
                                      const ButtWeld& weld,
                                      const Signature& signature,
                                      bool replace,
                                      bool quiet) {
  const auto samples = SimulateWeld(weld, quiet);
  std::vector<AScanBlock> blocks;
  for (const auto& recorded : samples) {
    const bool isTofd = blocks.size() == weldSides * weld.beams;
    blocks.push_back({{1,
                       weld.rows,
                       isTofd ? weld.tofdSamples : weld.samples,
                       isTofd ? weld.tofdStep : weld.sampleStep},
                      recorded});
  }
  const auto places = RecordBeams(files.acquisition, blocks, Watching(quiet));
  WriteInspection(files, weld, places, signature, replace);
  const Json part = PartJson(weld);
  const std::string text = part.dump(2) + "\n";
  WriteNewFile(files.flaws, std::as_bytes(std::span(text)), replace);
  std::vector<std::string> lines;
  for (const Json& flaw : part["flaws"]) lines.push_back(FlawLine(flaw));
  return lines;
}

}  // namespace utdata::program
