#include "demo/butt_weld.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>
#include <nlohmann/json.hpp>
#include <numbers>
#include <optional>
#include <span>
#include <utility>

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

constexpr std::size_t sides = 2;
constexpr std::uint32_t tofdChannel = 2;
constexpr double degree = std::numbers::pi / 180;

float AsFloat(double value) { return static_cast<float>(value); }

/// How a flaw is seen from one side: in a leg, at an angle and a half path.
struct Sight {
  int leg = 1;
  double angle = 0;     ///< degrees
  double halfPath = 0;  ///< m
};

/// The part is mirrored at its walls, so that each beam runs straight on through all legs.
std::vector<Sight> SightsOf(const ButtWeld& weld, const WeldFlaw& flaw, std::size_t side) {
  const double distance = std::abs(flaw.x - weld.IndexPoint(side));
  std::vector<Sight> sights;
  double before = 0;
  for (const auto& [leg, down] : {std::pair(1, flaw.depth),
                                  std::pair(2, 2 * weld.thickness - flaw.depth),
                                  std::pair(3, 2 * weld.thickness + flaw.depth)}) {
    // What lies in a wall is met once, where one leg ends and the next begins.
    if (down != before)
      sights.push_back({leg, std::atan2(distance, down) / degree, std::hypot(distance, down)});
    before = down;
  }
  return sights;
}

/// Half of the way from probe to probe over a tip.
double TofdHalfPath(const ButtWeld& weld, double x, double depth) {
  const double half = weld.separation / 2, beside = x - weld.centre;
  return (std::hypot(half + beside, depth) + std::hypot(half - beside, depth)) / 2;
}

double AngleOf(const ButtWeld& weld, std::uint32_t beam) {
  return weld.firstAngle + beam * weld.angleStep;
}

/// How much of a flaw the beam sees at a place along the weld.
double PartInBeam(const ButtWeld& weld, const WeldFlaw& flaw, double y) {
  const double beside = std::max({flaw.from - y, y - flaw.to, 0.0});
  return BeamFactor(beside, weld.beamHalfWidth);
}

/// One recorded channel or beam: A-scans along the weld.
template <class AddEchoes>
std::vector<std::int16_t> SimulateRows(const ButtWeld& weld,
                                       std::uint32_t samplesOfRow,
                                       double sampleStep,
                                       double start,
                                       GrainNoise noise,
                                       AddEchoes&& addEchoes) {
  std::vector<std::int16_t> digitised;
  digitised.reserve(std::size_t{weld.rows} * samplesOfRow);
  std::vector<double> samples(samplesOfRow);
  for (std::uint32_t row = 0; row < weld.rows; ++row) {
    std::fill(samples.begin(), samples.end(), 0);
    addEchoes(EchoTrain{samples, sampleStep, start}, row * weld.rowStep);
    noise.AddTo(samples);
    std::transform(samples.begin(), samples.end(), std::back_inserter(digitised), Digitise);
  }
  return digitised;
}

double BeamStartTime(const ButtWeld& weld) { return 2 * weld.beamStart / weld.shearSpeed; }

std::vector<std::int16_t> SimulateBeam(const ButtWeld& weld, std::size_t side, std::uint32_t beam) {
  const Pulse pulse(weld.frequency, weld.bandwidth);
  return SimulateRows(
      weld,
      weld.samples,
      weld.sampleStep,
      BeamStartTime(weld),
      GrainNoise(pulse, weld.sampleStep, weld.noise, weld.seed + side * weld.beams + beam),
      [&](const EchoTrain& train, double y) {
        for (const WeldFlaw& flaw : weld.flaws)
          for (const Sight& sight : SightsOf(weld, flaw, side)) {
            const double part = PartInBeam(weld, flaw, y) *
                                BeamFactor(sight.angle - AngleOf(weld, beam), weld.beamHalfAngle);
            train.Add(pulse, 2 * sight.halfPath / weld.shearSpeed, flaw.amplitudes[side] * part);
          }
      });
}

/// Lateral wave and back wall have opposite phases, as have the upper and the lower tip of a flaw.
std::vector<std::int16_t> SimulateTofd(const ButtWeld& weld) {
  const Pulse pulse(weld.tofdFrequency, weld.bandwidth);
  const auto add = [&](const EchoTrain& train, double x, double depth, double amplitude) {
    train.Add(pulse, 2 * TofdHalfPath(weld, x, depth) / weld.longitudinalSpeed, amplitude);
  };
  return SimulateRows(
      weld,
      weld.tofdSamples,
      weld.tofdStep,
      weld.tofdStart,
      GrainNoise(pulse, weld.tofdStep, weld.noise, weld.seed + sides * weld.beams),
      [&](const EchoTrain& train, double y) {
        add(train, weld.centre, 0, 0.3);
        add(train, weld.centre, weld.thickness, -0.8);
        for (const WeldFlaw& flaw : weld.flaws)
          add(train, flaw.x, flaw.depth, flaw.diffracted * PartInBeam(weld, flaw, y));
      });
}

/// All that is recorded, beams first, those of the left before those of the right.
std::vector<std::vector<std::int16_t>> SimulateAll(const ButtWeld& weld, bool quiet) {
  std::vector<std::vector<std::int16_t>> recorded;
  Progress progress("simulating", quiet);
  for (std::size_t side = 0; side < sides; ++side)
    for (std::uint32_t beam = 0; beam < weld.beams; ++beam) {
      progress.At(recorded.size(), sides * weld.beams);
      recorded.push_back(SimulateBeam(weld, side, beam));
    }
  recorded.push_back(SimulateTofd(weld));
  return recorded;
}

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
  record.sampleOffset = AsFloat(isTofd ? weld.tofdStart : BeamStartTime(weld));
  record.dataMaximum = simulatedFullScale;
  record.partThickness = AsFloat(weld.thickness);
  record.soundSpeed = AsFloat(isTofd ? weld.longitudinalSpeed : weld.shearSpeed);
  if (isTofd) {
    record.tofd = 1;
    record.probeSeparation = AsFloat(weld.separation);
  }
  return record;
}

/// The beams of one side: skew 0 looks along rising x.
ChannelSetup SectorSetup(const ButtWeld& weld, std::size_t side, CGDataTypeFDD& record) {
  record.probeSkew = side == 0 ? 0.0F : 180.0F;
  std::vector<double> angles;
  for (std::uint32_t beam = 0; beam < weld.beams; ++beam) angles.push_back(AngleOf(weld, beam));
  record.probeAngle = AsFloat(angles[angles.size() / 2]);
  ChannelSetup setup = SetupOf(record);
  setup.beams = BeamsOf(record, angles);
  for (CGSubchanTypeDescr& beam : setup.beams) {
    beam.indexOffset = AsFloat(weld.IndexPoint(side));
    beam.elementQuantity = 16;
  }
  setup.channel.indexOffset = AsFloat(weld.IndexPoint(side));
  setup.channel.waveMode = gdata_WaveShear;
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

/// The inspection of the recorded blocks, which stand in the order of SimulateAll.
void WriteInspection(const ButtWeldFiles& files,
                     const ButtWeld& weld,
                     std::span<const std::uint64_t> blocks,
                     const Signature& signature,
                     bool replace) {
  Recording recorded(files.acquisition);  // outlives the inspection, which refers to its samples
  Inspection inspection = Inspection::New(files.inspection);
  auto block = blocks.begin();
  for (std::size_t side = 0; side < sides; ++side) {
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
  for (std::size_t side = 0; side < sides; ++side)
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

ButtWeld::ButtWeld() {
  const double lackDepth = 8e-3;
  const double bevel =
      centre - rootGap / 2 - (thickness - rootFace - lackDepth) * std::tan(bevelAngle * degree);
  flaws = {{"crack at the root", centre, thickness, 30e-3, 50e-3, {0.7, 0.7}, 0},
           {"tip of the crack", centre, 17e-3, 30e-3, 50e-3, {0.2, 0.2}, 0.25},
           {"lack of fusion", bevel, lackDepth, 62e-3, 78e-3, {0.6, 0.25}, 0.15}};
  int pore = 0;
  for (const auto& [x, depth, y] : {std::array{51.0, 11.0, 96.0},
                                    std::array{52.5, 13.0, 100.0},
                                    std::array{50.0, 9.0, 104.0},
                                    std::array{53.0, 12.0, 108.0}})
    flaws.push_back({"pore " + std::to_string(++pore),
                     x * 1e-3,
                     depth * 1e-3,
                     y * 1e-3,
                     y * 1e-3,
                     {0.15, 0.15},
                     0.05});
}

std::vector<std::string> MakeButtWeld(const ButtWeldFiles& files,
                                      const ButtWeld& weld,
                                      const Signature& signature,
                                      bool replace,
                                      bool quiet) {
  const auto samples = SimulateAll(weld, quiet);
  std::vector<AScanBlock> blocks;
  for (const auto& recorded : samples) {
    const bool isTofd = blocks.size() == sides * weld.beams;
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
