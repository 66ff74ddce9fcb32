#include "utdata/gating.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

#include "src/inspection/addedrows.h"
#include "src/inspection/amplitudes.h"
#include "src/inspection/state.h"
#include "src/items/idatarecord.h"

namespace utdata {
namespace {

constexpr const char* cannotBeGated = "cannot be gated";

/// The gate that watches the coupling, not the part.
constexpr std::uint32_t couplingGate = 140;
/// A position is an unsigned 16-bit sample index.
constexpr std::uint32_t positionEnd = 0x10000;

GateWindow WindowOf(const CGDataTypeFDD& ascans, const GateSettings& settings) {
  const double all = ascans.sampleQuantity;
  const double step = ascans.sampleResolution;
  const double first = std::round((settings.start - ascans.sampleOffset) / step);
  const double end = first + std::round(settings.width / step);
  const double cutFirst = std::clamp(first, 0.0, all);
  const double cutEnd = std::clamp(end, cutFirst, all);
  return {static_cast<std::uint32_t>(cutFirst),
          static_cast<std::uint32_t>(cutEnd - cutFirst),
          cutFirst != first || cutEnd != end};
}

GateReadings ReadGate(const CRDataTypeDD& ascans,
                      const CellTable& cells,
                      const GateWindow& window,
                      double threshold,
                      const Watch& watch) {
  const AmplitudeRule rule(ascans);
  return WithValues(ascans, [&](const auto& values) {
    using Raw = typename std::remove_cvref_t<decltype(values)>::Raw;
    const std::size_t quantity = cells.Cells();
    const std::size_t cellBytes = cells.VectorBytes();
    const std::size_t cellsPerCall = 1 + (std::size_t{1} << 20U) / (cellBytes + 1);
    GateReadings gated = {
        std::vector<std::uint16_t>(quantity), std::vector<std::uint16_t>(quantity), {}};
    for (std::size_t cell = 0; cell < quantity; ++cell) {
      if (watch && cell % cellsPerCall == 0)
        watch("gating", cell * cellBytes, quantity * cellBytes);
      const auto* begin = reinterpret_cast<const Raw*>(cells.Cell(cell));
      if (!begin) {
        if (cells.IsDamaged(cell)) gated.damaged.push_back(cell);
        continue;
      }
      const std::span<const Raw> seen(begin + window.first, window.quantity);
      const Extremes extremes = values.Of(seen);
      const double amplitude = rule.Positive(rule.Larger(extremes));
      gated.amplitudes[cell] =
          static_cast<std::uint16_t>(std::clamp(std::round(amplitude), 0.0, 65535.0));
      // A hundred times the amplitude: whole percents of whole values stay exact.
      if (100 * amplitude < threshold * rule.FullScale()) continue;
      gated.positions[cell] =
          static_cast<std::uint16_t>(window.first + FirstLargest(rule, values, seen, extremes));
    }
    return gated;
  });
}

std::string Microseconds(double seconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.6g \u00b5s", seconds * 1e6);
  return text.data();
}

/// Checks the stored record of the A-scans, not the item's, in which unusable values are replaced.
void CheckAScans(const DataGroup& ascans, const std::string& name) {
  const CGDataTypeFDD& stored = ascans.Stored();
  const auto fail = [&](const std::string& why) { throw Error(name, cannotBeGated, why); };
  const auto type = static_cast<std::uint32_t>(stored.GetDataType());
  const bool isKnown = type >= kvt_Int8 && type <= kvt_UInt16;
  if (!isKnown || stored.sampleSize != (type <= kvt_UInt8 ? 1 : 2))
    fail("samples of " + ascans.TypeName() + " and " + std::to_string(stored.sampleSize) +
         " bytes are no amplitudes");
  if (stored.rowQuantity == 0 || stored.columnQuantity == 0 || stored.sampleQuantity == 0 ||
      !ascans.HasTable())
    fail("it has no samples");
  const bool hasTime = stored.sampleUnits == kvt_UnitSecond && std::isfinite(stored.sampleOffset) &&
                       std::isfinite(stored.sampleResolution) && stored.sampleResolution > 0;
  if (!hasTime) fail("its sample axis is not one of time");
  if (!std::isfinite(stored.dataMinimum) || !std::isfinite(stored.dataMaximum) ||
      stored.dataMinimum == stored.dataMaximum)
    fail("the range of its values has no extent");
  if (!(ascans.Descriptor().GetDataMax() > 0)) fail("the range of its values ends below zero");
}

GateWindow CheckedWindow(const CGDataTypeFDD& ascans,
                         const GateSettings& settings,
                         const std::string& name) {
  const GateWindow window = WindowOf(ascans, settings);
  const double start = ascans.sampleOffset;
  const double step = ascans.sampleResolution;
  if (window.quantity == 0)
    throw Error(name,
                cannotBeGated,
                "no sample lies in the gate",
                "the A-scans run from " + Microseconds(start) + " to " +
                    Microseconds(start + step * ascans.sampleQuantity) + " in steps of " +
                    Microseconds(step));
  if (std::uint64_t{window.first} + window.quantity > positionEnd)
    throw Error(name,
                cannotBeGated,
                "the gate ends at sample " + std::to_string(window.first + window.quantity) +
                    ", and a position counts 65536 of them");
  return window;
}

std::vector<DataGroup> FindData(const Inspection& inspection, const idata_typeId& id) {
  CIDataLst found;
  inspection.FileSet().fset_GetIDataLst(&found,
                                        fset_All,
                                        bookmark_None,
                                        id.patchId,
                                        id.channelId,
                                        id.subChannelId,
                                        id.gateId,
                                        id.dataClass,
                                        fset_AnyId,
                                        fset_AnyId);
  std::vector<DataGroup> groups;
  for (const CIData* item : found)
    if (const auto group = inspection.DataOf(item)) groups.push_back(*group);
  return groups;
}

/// A C-scan of the same ids would hide the new one, or be hidden.
void CheckNoCScans(const Inspection& inspection,
                   const CGDataTypeFDD& ascans,
                   const GateSettings& settings) {
  for (const gdata_enumDataClass dataClass : {gdata_CScanAmplitude, gdata_CScanPosition}) {
    const auto groups = FindData(inspection,
                                 {ascans.GetPatchID(),
                                  ascans.channelId,
                                  ascans.subChannelId,
                                  settings.gate,
                                  dataClass,
                                  bookmark_None});
    if (groups.empty()) continue;
    throw Error(inspection.Path(),
                cannotBeGated,
                "data group " + std::to_string(groups.front().Index()) + " is a C-scan of gate " +
                    std::to_string(settings.gate),
                "choose a gate without one");
  }
}

/// Two groups of A-scans that differ in neither patch nor sub-channel would have one C-scan hide
/// the other.
void CheckOnlyOne(const std::vector<DataGroup>& groups,
                  const DataGroup& group,
                  const std::string& name) {
  for (const DataGroup& other : groups)
    if (other.Index() != group.Index() &&
        other.Stored().subChannelId == group.Stored().subChannelId &&
        other.Stored().GetPatchID() == group.Stored().GetPatchID())
      throw Error(name,
                  cannotBeGated,
                  "data group " + std::to_string(other.Index()) +
                      " has A-scans of the same sub-channel and patch");
}

void SetUp(CGGateTypeDescr& gate, const GateSettings& settings) {
  gate.gateId = settings.gate;
  gate.channelId = settings.channel;
  gate.start = static_cast<float>(settings.start);
  gate.width = static_cast<float>(settings.width);
  if (settings.threshold)
    gate.positiveLevel = gate.negativeLevel = static_cast<float>(*settings.threshold);
  gate.referenceGate = CGGateTypeDescr().referenceGate;
  gate.reference = ggate_RefInitialPulse;
  gate.peakSelection = ggate_PeakMaximum;
  gate.polarity = gdata_RectifFull;
}

std::vector<std::byte> BytesOf(const std::vector<std::uint16_t>& values) {
  const auto bytes = std::as_bytes(std::span(values));
  return {bytes.begin(), bytes.end()};
}

/// A C-scan over the cells of A-scans: one unsigned 16-bit value each.
CGDataTypeFDD CScanRecord(const CGDataTypeFDD& ascans,
                          const CGGateTypeDescr& gate,
                          gdata_enumDataClass dataClass) {
  CGDataTypeFDD cscan = ascans;
  cscan.samples = {};
  cscan.SetGroupHandle(nullptr);
  cscan.dataPointer = nullptr;
  cscan.dataSize = 0;
  cscan.dataClass = dataClass;
  cscan.sampleQuantity = 1;
  cscan.storageMode = kvt_StorCells;
  cscan.compressionBits = cscan.compressionLSBit = 0;
  cscan.fileFormat = gdata_OptionNone;
  cscan.byteSwap = 0;
  cscan.SetDataType(kvt_UInt16);
  cscan.SetDataRectification(gdata_RectifFull);
  cscan.dataMinimum = 0;
  cscan.sampleSize = cscan.cellSize = sizeof(std::uint16_t);
  cscan.gateId = gate.gateId;
  const std::size_t length = std::min(gate.name.size(), CGDataTypeFDD::nameSize - 1);
  std::copy_n(gate.name.begin(), length, cscan.gateName);
  cscan.gateName[length] = 0;
  if (gate.gateId == couplingGate) cscan.SetDataBookmarkType(bookmark_Coupling);
  return cscan;
}

/// A table with an offset for each cell, 0 for those that have no value.
std::vector<std::byte> IndexedBytesOf(const std::vector<std::uint16_t>& values,
                                      const std::vector<std::uint64_t>& without) {
  const std::size_t start = values.size() * sizeof(std::uint32_t);
  std::vector<std::uint32_t> offsets(values.size());
  for (std::size_t cell = 0; cell < values.size(); ++cell)
    offsets[cell] = static_cast<std::uint32_t>(start + cell * sizeof(std::uint16_t));
  for (const std::uint64_t cell : without) offsets[static_cast<std::size_t>(cell)] = 0;
  std::vector<std::byte> bytes(start);
  std::memcpy(bytes.data(), offsets.data(), start);
  const auto samples = std::as_bytes(std::span(values));
  bytes.insert(bytes.end(), samples.begin(), samples.end());
  return bytes;
}

DataGroup AddCScan(Inspection& inspection,
                   CGDataTypeFDD record,
                   const std::vector<std::uint16_t>& values,
                   const std::vector<std::uint64_t>& damaged) {
  if (damaged.empty()) return inspection.AddData(record, BytesOf(values));
  constexpr std::size_t bytesOfCell = sizeof(std::uint32_t) + sizeof(std::uint16_t);
  if (values.size() > std::numeric_limits<std::uint32_t>::max() / bytesOfCell)
    throw Error(inspection.Path(),
                cannotBeGated,
                "cells with damaged samples cannot be left out of so many cells");
  record.storageMode = kvt_StorIndexed;
  return inspection.AddData(record, IndexedBytesOf(values, damaged));
}

struct DestroyDescriptor {
  void operator()(CRDataTypeDD* descriptor) const { descriptor->Destroy(); }
};

CIGate& AddGate(Inspection& inspection, CGGateTypeDescr& record) {
  constexpr int ofTheHost = 1;
  CIGate* const gate = inspection.FileSet().fset_AddGGate(&record, ofTheHost);
  if (!gate) throw Error(inspection.Path(), cannotBeGated, "the gate cannot be added");
  return *gate;
}

void Change(CIGate& gate, CGGateTypeDescr record) noexcept {
  *gate.igate1_GetInfoRef() = std::move(record);
  gate.igate1_ModifSetStatus(true);
}

}  // namespace

GateResult Gate(Inspection& inspection, const GateSettings& settings, const Watch& watch) {
  InspectionState& state = static_cast<InspectionState&>(inspection.Supplier());
  const auto groups =
      FindData(inspection,
               {fset_AnyId, settings.channel, fset_AnyId, fset_AnyId, gdata_AScan, bookmark_None});
  if (groups.empty())
    throw Error(inspection.Path(),
                cannotBeGated,
                "channel " + std::to_string(settings.channel) + " has no A-scans",
                "choose one of the channels that have");
  struct Seen {
    GateWindow window;
    GateReadings readings;
  };
  std::vector<Seen> seen;
  for (const DataGroup& group : groups) {
    const std::string name = inspection.Path() + ": data group " + std::to_string(group.Index());
    CheckNoCScans(inspection, group.Stored(), settings);
    CheckOnlyOne(groups, group, name);
    CheckAScans(group, name);
    const CRDataTypeDD& ascans = group.Descriptor();
    const GateWindow window = CheckedWindow(ascans, settings, name);
    const CellTable& cells = DataGroupInside::Cells(group);
    seen.push_back(
        {window, ReadGate(ascans, cells, window, settings.threshold.value_or(0), watch)});
  }
  GateResult result;
  result.gate = inspection.FileSet().fset_GetIGate(fset_All, settings.gate, settings.channel);
  result.isNew = result.gate == nullptr;
  CGGateTypeDescr gate;
  if (result.gate) gate = *std::as_const(*result.gate).igate1_GetInfoRef();
  SetUp(gate, settings);
  AddedRows rows(state);
  for (std::size_t index = 0; index < groups.size(); ++index) {
    CGDataTypeFDD ascans = groups[index].Stored();
    ascans.SetDataBookmarkType(groups[index].Taken().GetDataBookmarkType());
    const GateReadings& readings = seen[index].readings;
    const auto strongest = std::max_element(readings.amplitudes.begin(), readings.amplitudes.end());
    result.data.push_back(
        {groups[index],
         AddCScan(inspection, AmplitudeRecord(ascans, gate), readings.amplitudes, readings.damaged),
         AddCScan(inspection, PositionRecord(ascans, gate), readings.positions, readings.damaged),
         seen[index].window,
         static_cast<std::uint64_t>(strongest - readings.amplitudes.begin()),
         readings.damaged.size()});
  }
  if (result.isNew)
    result.gate = &AddGate(inspection, gate);
  else
    Change(*result.gate, std::move(gate));
  rows.Keep();
  return result;
}

GateReadings GateSamples(const CGDataTypeFDD& record,
                         std::span<const std::byte> samples,
                         const GateSettings& settings) {
  CGDataTypeFDD taken = record;
  NormaliseDataRecord(taken);
  const std::unique_ptr<CRDataTypeDD, DestroyDescriptor> ascans(
      new CRDataTypeDD(&taken, nullptr, nullptr));
  const GateWindow window = CheckedWindow(*ascans, settings, {});
  const CellTable cells(*ascans, samples, {});
  return ReadGate(*ascans, cells, window, settings.threshold.value_or(0), {});
}

CGDataTypeFDD AmplitudeRecord(const CGDataTypeFDD& ascans, const CGGateTypeDescr& gate) {
  CGDataTypeFDD taken = ascans;
  NormaliseDataRecord(taken);
  CGDataTypeFDD amplitude = CScanRecord(ascans, gate, gdata_CScanAmplitude);
  amplitude.dataMaximum = taken.dataMaximum;
  return amplitude;
}

CGDataTypeFDD PositionRecord(const CGDataTypeFDD& ascans, const CGGateTypeDescr& gate) {
  CGDataTypeFDD position = CScanRecord(ascans, gate, gdata_CScanPosition);
  position.dataMaximum = static_cast<float>(std::min(ascans.sampleQuantity, positionEnd - 1));
  position.dataResolution = ascans.sampleResolution;
  position.dataOffset = ascans.sampleOffset;
  position.SetDataScale(gdata_ScaleLinear);
  position.SetDataUnits(ascans.sampleUnits);
  return position;
}

}  // namespace utdata
