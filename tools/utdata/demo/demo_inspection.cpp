#include "demo/demo_inspection.h"

#include <algorithm>
#include <new>

#include "demo/echoes.h"
#include "utdata/newscan.h"

namespace utdata::program {
namespace {

/// Adds a new descriptor to a list, which owns it with its document.
template <class Group>
Group& Add(CList<Group*>& list, Group* group) {
  if (!group) throw std::bad_alloc();
  list.AddTail(group);
  return *group;
}

float Single(double value) { return static_cast<float>(value); }

CGDataTypeFDD AScanRecord(const WeldScan& scan) {
  CGDataTypeFDD data;
  data.dataClass = gdata_AScan;
  data.columnQuantity = scan.columns;
  data.columnResolution = Single(scan.columnStep);
  data.rowQuantity = scan.rows;
  data.rowResolution = Single(scan.rowStep);
  data.sampleQuantity = scan.samples;
  data.sampleResolution = Single(scan.sampleStep);
  data.SetDataType(kvt_Int16);
  data.SetDataRectification(gdata_RectifNone);
  data.dataMinimum = -32768;
  data.dataMaximum = simulatedFullScale;
  data.sampleSize = sizeof(std::int16_t);
  data.cellSize = data.sampleSize * scan.samples;
  data.partThickness = Single(scan.thickness);
  data.soundSpeed = Single(scan.soundSpeed);
  SetName(data.dataName, L"Weld scan");
  return data;
}

CGGateTypeDescr FlawGate(const WeldScan& scan) {
  CGGateTypeDescr gate;
  gate.gateId = flawGate;
  gate.start = 1e-6F;
  gate.width = Single(BackWallTime(scan) - 1.4e-6);
  gate.positiveLevel = gate.negativeLevel = 20;
  gate.color = 0xFF0000;
  return gate;
}

CGGateTypeDescr WallGate(const WeldScan& scan) {
  CGGateTypeDescr gate;
  gate.gateId = wallGate;
  gate.name = L"Back wall";
  gate.start = Single(BackWallTime(scan) - 0.4e-6);
  gate.width = 0.8e-6F;
  gate.positiveLevel = gate.negativeLevel = 50;
  gate.color = 0x00A000;
  return gate;
}

/// The data groups of the recorded blocks. The A-scans keep their index table: cells are found
/// through it.
void AddRecorded(Inspection& inspection,
                 const WeldScan& scan,
                 Recording& recorded,
                 const RecordedBlocks& blocks) {
  const CGDataTypeFDD ascans =
      recorded.AddAScans(inspection, AScanRecord(scan), blocks.ascans).Stored();
  const CGGateTypeDescr gate = WallGate(scan);
  recorded.AddCScan(inspection, AmplitudeRecord(ascans, gate), blocks.amplitudes);
  recorded.AddCScan(inspection, PositionRecord(ascans, gate), blocks.positions);
}

void AddChannel(CFContTypeFileDescr& groups, const WeldScan& scan) {
  CGChanTypeDescr& channel = Add(groups.channels, gchan_Allocate(1, L""));
  channel.gain = 38;
  channel.referenceGain = 32;
  channel.range = Single(scan.samples * scan.sampleStep);
  channel.soundSpeed = Single(scan.soundSpeed);
  channel.waveMode = gdata_WaveLongitudinal;
  channel.digitizingFrequency = Single(1 / scan.sampleStep);
  channel.repetitionFrequency = 1000;
  channel.pulseWidth = Single(0.5 / scan.frequency);
  channel.pulseVoltage = 100;
  channel.filterLow = Single(scan.frequency * 0.4);
  channel.filterHigh = Single(scan.frequency * 2);
  channel.dacEnabled = 1;
}

void AddGates(CFContTypeFileDescr& groups, const WeldScan& scan) {
  for (const CGGateTypeDescr& gate : {FlawGate(scan), WallGate(scan)})
    ggate_Duplicate(&Add(groups.gates, ggate_Allocate(1, nullptr)), &gate);
}

/// The curve through the echoes of the side-drilled holes, which are alike but for their depth.
void AddDac(CFContTypeFileDescr& groups, const WeldScan& scan) {
  CGDacTypeDescr& dac = Add(groups.dacs, gdac_Allocate(1, L"Side-drilled holes 1.5 mm"));
  dac.gateId = flawGate;
  dac.referenceGain = 32;
  dac.referenceLevel = 80;
  for (const SideDrilledHole& hole : scan.holes)
    dac.points.push_back({Single(EchoTime(scan, hole)), Single(100 * hole.amplitude)});
  std::sort(dac.points.begin(), dac.points.end());
}

void AddProbeAndPatch(CFContTypeFileDescr& groups, const WeldScan& scan) {
  CGProbeTypeDescr& probe = Add(groups.probes, gprobe_Allocate(1, L"Simulated 5 MHz"));
  probe.frequency = Single(scan.frequency);
  probe.bandwidth = Single(scan.bandwidth);
  probe.crystalDiameter = 6e-3F;
  probe.waveMode = gdata_WaveLongitudinal;
  CGPatchTypeDescr& patch = Add(groups.patches, gpatch_Allocate(1, L""));
  patch.columnQuantity = scan.columns;
  patch.rowQuantity = scan.rows;
  patch.columnResolution = Single(scan.columnStep);
  patch.rowResolution = Single(scan.rowStep);
  patch.scanSpeed = 0.05F;
}

void AddSpecimen(CFContTypeFileDescr& groups, const WeldScan& scan) {
  CGSpecdimTypeDescr& dimensions = Add(groups.specimenDimensions, gspecdim_Allocate(1, nullptr));
  dimensions.length = Single(scan.rows * scan.rowStep);
  dimensions.width = Single(scan.columns * scan.columnStep);
  dimensions.thickness = Single(scan.thickness);
  CGSpecinfTypeDescr& information =
      Add(groups.specimenInformation, gspecinf_Allocate(1, L"Welded plate"));
  information.surfaceCondition = L"ground";
  information.temperature = 20;
  CGSpecmatTypeDescr& material =
      Add(groups.specimenMaterials, gspecmat_Allocate(1, L"Carbon steel"));
  material.longitudinalSpeed = Single(scan.soundSpeed);
  material.shearSpeed = 3240;
  material.density = 7850;
  CGWeldTypeDescr& weld = Add(groups.welds, gweld_Allocate(1, L"Butt weld"));
  weld.preparation = 1;
  weld.centerPosition = Single(scan.weldCentre);
  weld.bevelAngle = 30;
  weld.rootGap = 2e-3F;
  weld.rootFace = 1.5e-3F;
  weld.thickness = Single(scan.thickness);
  weld.heatAffectedZone = 5e-3F;
  CGInfoTypeDescr& info = Add(groups.infos, ginfo_Allocate(1, nullptr));
  info.title = L"Simulated weld scan";
  info.software = L"utdata " UTDATA_VERSION;
  info.comment = L"simulated: plate with side-drilled holes and a crack at the root";
}

}  // namespace

RecordedBlocks AcquireScan(const std::string& path,
                           const WeldScan& scan,
                           std::span<const std::int16_t> samples,
                           const Watch& watch) {
  const CGGateTypeDescr gate = WallGate(scan);
  const GateReadings seen =
      GateSamples(AScanRecord(scan),
                  std::as_bytes(samples),
                  {gate.channelId, gate.gateId, gate.start, gate.width, gate.positiveLevel});
  return RecordScan(path,
                    {scan.columns, scan.rows, scan.samples, scan.sampleStep},
                    samples,
                    {gate.gateId, seen.amplitudes, seen.positions},
                    watch);
}

void FillInspection(Inspection& inspection,
                    const WeldScan& scan,
                    Recording& recorded,
                    const RecordedBlocks& blocks) {
  AddRecorded(inspection, scan, recorded, blocks);
  CFContTypeFileDescr& groups = inspection.Descriptor();
  AddChannel(groups, scan);
  AddGates(groups, scan);
  AddDac(groups, scan);
  AddProbeAndPatch(groups, scan);
  AddSpecimen(groups, scan);
}

GateResult RefineFlawGate(Inspection& inspection, const Watch& watch) {
  constexpr double later = 0.2e-6;
  constexpr std::uint32_t channel = 0;
  const GateHandle before = inspection.Gate(channel, flawGate);
  return Gate(inspection,
              {channel, flawGate, before.Start() + later, before.Width() - later, flawThreshold},
              watch);
}

}  // namespace utdata::program
