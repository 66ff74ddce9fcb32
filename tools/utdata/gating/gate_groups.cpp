#include "gating/gate_groups.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <string>

#include "document/data_group.h"
#include "gating/cscan_records.h"
#include "terminal/failure.h"
#include "terminal/quantity.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

constexpr const char* cannotBeGated = "cannot be gated";

using DataRow = DataItems::Row;

std::string NameOf(const Document& document, const DataRow& row) {
  return document.Path() + ": data group " + std::to_string(row.index);
}

/// Holds what the file says of the A-scans against what gating needs; an item's record has had
/// unusable values replaced.
void CheckAScans(const CGDataTypeFDD& ascans, const std::string& name) {
  const auto fail = [&](const std::string& why) { throw Failure(name, cannotBeGated, why); };
  const auto type = static_cast<std::uint32_t>(ascans.GetDataType());
  const bool isKnown = type >= kvt_Int8 && type <= kvt_UInt16;
  if (!isKnown || ascans.sampleSize != (type <= kvt_UInt8 ? 1 : 2))
    fail("samples of " + SampleTypeName(ascans) + " and " + std::to_string(ascans.sampleSize) +
         " bytes are no amplitudes");
  if (AllCells(ascans).count == 0 || ascans.sampleQuantity == 0 || !ascans.samples.group)
    fail("it has no samples");
  const bool hasTime = ascans.sampleUnits == kvt_UnitSecond && std::isfinite(ascans.sampleOffset) &&
                       std::isfinite(ascans.sampleResolution) && ascans.sampleResolution > 0;
  if (!hasTime) fail("its sample axis is not one of time");
  if (!std::isfinite(ascans.dataMinimum) || !std::isfinite(ascans.dataMaximum) ||
      ascans.dataMinimum == ascans.dataMaximum)
    fail("the range of its values has no extent");
}

GateWindow CheckedWindow(const CRDataTypeDD& ascans,
                         const GateSettings& settings,
                         const std::string& name) {
  const GateWindow window = WindowOf(ascans, settings.start, settings.width);
  const double start = ascans.GetSampleOffs();
  const double step = ascans.GetSampleResol();
  if (window.quantity == 0)
    throw Failure(name,
                  cannotBeGated,
                  "no sample lies in the gate",
                  "the A-scans run from " + Microseconds(start) + " to " +
                      Microseconds(start + step * ascans.GetSampleQty()) + " in steps of " +
                      Microseconds(step));
  if (std::uint64_t{window.first} + window.quantity > positionEnd)
    throw Failure(name,
                  cannotBeGated,
                  "the gate ends at sample " + std::to_string(window.first + window.quantity) +
                      ", and a position tells 65536 of them");
  return window;
}

/// The rows of a data class and channel: all, or those of a patch, sub-channel and gate.
std::vector<const DataRow*> FindRows(const Document& document,
                                     gdata_enumDataClass dataClass,
                                     std::uint32_t channelId,
                                     std::uint32_t patchId = fset_AnyId,
                                     std::uint32_t subChannelId = fset_AnyId,
                                     std::uint32_t gateId = fset_AnyId) {
  Host& host = document.GetHost();
  CIDataLst found;
  host.GetFileSet()->fset_GetIDataLst(&found,
                                      fset_All,
                                      bookmark_None,
                                      patchId,
                                      channelId,
                                      subChannelId,
                                      gateId,
                                      dataClass,
                                      fset_AnyId,
                                      fset_AnyId);
  std::vector<const DataRow*> rows;
  for (const CIData* item : found)
    if (const DataRow* row = host.Data().RowOf(item)) rows.push_back(row);
  return rows;
}

/// A C-scan of the same ids would hide the new one, or be hidden.
void CheckNoCScans(const Document& document, const CGDataTypeFDD& ascans, std::uint32_t gateId) {
  for (const gdata_enumDataClass dataClass : {gdata_CScanAmplitude, gdata_CScanPosition}) {
    const auto rows = FindRows(
        document, dataClass, ascans.channelId, ascans.GetPatchID(), ascans.subChannelId, gateId);
    if (rows.empty()) continue;
    throw Failure(document.Path(),
                  cannotBeGated,
                  "data group " + std::to_string(rows.front()->index) + " is a C-scan of gate " +
                      std::to_string(gateId),
                  "choose a gate without one");
  }
}

/// Two groups of A-scans that differ in neither patch nor sub-channel would have one C-scan hide
/// the other.
void CheckOnlyOne(const Document& document,
                  const std::vector<const DataRow*>& rows,
                  const DataRow& row) {
  for (const DataRow* other : rows)
    if (other != &row && other->group->subChannelId == row.group->subChannelId &&
        other->group->GetPatchID() == row.group->GetPatchID())
      throw Failure(NameOf(document, row),
                    cannotBeGated,
                    "data group " + std::to_string(other->index) +
                        " has A-scans of the same sub-channel and patch");
}

GatedGroup GateGroup(const Document& document,
                     const DataRow& row,
                     const GateSettings& settings,
                     bool quiet) {
  const std::string name = NameOf(document, row);
  CheckAScans(*row.group, name);
  const CRDataTypeDD& ascans = *row.item->idata1_GetInfoRef();
  const GateWindow window = CheckedWindow(ascans, settings, name);
  const CellTable cells(*row.group, document.GetHost().Data().Table(*row.group), name);
  return {&row,
          window,
          FullScale(ascans),
          GateAScans(ascans, cells, window, settings.threshold.value_or(0), quiet)};
}

const CGGateTypeDescr* FindGate(const Document& document, const GateSettings& settings) {
  const CIGate* gate =
      document.GetHost().GetFileSet()->fset_GetIGate(fset_All, settings.gateId, settings.channelId);
  return gate ? gate->igate1_GetInfoRef() : nullptr;
}

void SetUp(CGGateTypeDescr& gate, const GateSettings& settings) {
  gate.gateId = settings.gateId;
  gate.channelId = settings.channelId;
  gate.start = static_cast<float>(settings.start);
  gate.width = static_cast<float>(settings.width);
  if (settings.threshold)
    gate.positiveLevel = gate.negativeLevel = static_cast<float>(*settings.threshold);
  gate.referenceGate = CGGateTypeDescr().referenceGate;
  gate.reference = ggate_RefInitialPulse;
  gate.peakSelection = ggate_PeakMaximum;
  gate.polarity = gdata_RectifFull;
}

/// Adds the C-scans of a group, which get the bookmark type of its item: the file may leave it
/// open.
void AddCScansOf(Document& changes, const GatedGroup& group, const CGGateTypeDescr& gate) {
  CGDataTypeFDD ascans = *group.ascans->group;
  ascans.SetDataBookmarkType(group.ascans->taken.GetDataBookmarkType());
  AddCScans(
      changes, ascans, gate, {group.cells.amplitudes, group.cells.positions}, group.fullScale);
}

}  // namespace

GatedInspection GateChannel(const Document& loaded, const GateSettings& settings, bool quiet) {
  GatedInspection result{Document::New(loaded.Path()), {}, {}, true};
  const auto rows = FindRows(loaded, gdata_AScan, settings.channelId);
  if (rows.empty())
    throw Failure(loaded.Path(),
                  cannotBeGated,
                  "channel " + std::to_string(settings.channelId) + " has no A-scans",
                  "'utdata info' lists the data groups");
  for (const DataRow* row : rows) {
    CheckNoCScans(loaded, *row->group, settings.gateId);
    CheckOnlyOne(loaded, rows, *row);
    result.groups.push_back(GateGroup(loaded, *row, settings, quiet));
  }
  const CGGateTypeDescr* before = FindGate(loaded, settings);
  result.isNewGate = before == nullptr;
  if (before) ggate_Duplicate(&result.gate, before);
  SetUp(result.gate, settings);
  CGGateTypeDescr* gate = ggate_Allocate(1, nullptr);
  if (!gate) throw std::bad_alloc();
  result.changes.Groups().gates.AddTail(gate);
  ggate_Duplicate(gate, &result.gate);
  for (const GatedGroup& group : result.groups) AddCScansOf(result.changes, group, result.gate);
  return result;
}

double PercentOf(const GatedGroup& group, std::size_t cell) {
  return 100 * group.cells.amplitudes[cell] / group.fullScale;
}

std::size_t StrongestCell(const GatedGroup& group) {
  const auto& amplitudes = group.cells.amplitudes;
  return static_cast<std::size_t>(std::max_element(amplitudes.begin(), amplitudes.end()) -
                                  amplitudes.begin());
}

}  // namespace utdata::program
