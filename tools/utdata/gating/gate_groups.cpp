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
constexpr std::uint32_t gateNumbers = 2000;  // a gate id is its number plus multiples of this

std::string NameOf(const Document& document, std::size_t index) {
  return document.Path() + ": data group " + std::to_string(index);
}

void CheckAScans(const CGDataTypeFDD& ascans, const std::string& name) {
  const auto fail = [&](const std::string& why) { throw Failure(name, cannotBeGated, why); };
  const auto type = static_cast<std::uint32_t>(ascans.GetDataType());
  const bool isKnown = type >= kvt_Int8 && type <= kvt_UInt16;
  if (!isKnown || ascans.sampleSize != (type <= kvt_UInt8 ? 1 : 2))
    fail("samples of " + SampleTypeName(ascans) + " and " + std::to_string(ascans.sampleSize) +
         " bytes are no amplitudes");
  if (AllCells(ascans).count == 0 || ascans.sampleQuantity == 0 || !ascans.samples.group) fail("it has no samples");
  const bool hasTime = ascans.sampleUnits == kvt_UnitSecond && std::isfinite(ascans.sampleOffset) &&
                       std::isfinite(ascans.sampleResolution) && ascans.sampleResolution > 0;
  if (!hasTime) fail("its sample axis is not one of time");
  const bool hasRange = std::isfinite(ascans.dataMinimum) && std::isfinite(ascans.dataMaximum);
  if (!hasRange || FullScale(WithSignedSamples(ascans)) == 0) fail("the range of its values has no extent");
}

GateWindow CheckedWindow(const CGDataTypeFDD& ascans, const GateSettings& settings, const std::string& name) {
  const GateWindow window = WindowOf(ascans, settings.start, settings.width);
  const double end = ascans.sampleOffset + double{ascans.sampleResolution} * ascans.sampleQuantity;
  if (window.quantity == 0)
    throw Failure(name,
                  cannotBeGated,
                  "no sample lies in the gate",
                  "the A-scans run from " + Microseconds(ascans.sampleOffset) + " to " + Microseconds(end) +
                      " in steps of " + Microseconds(ascans.sampleResolution));
  if (std::uint64_t{window.first} + window.quantity > positionEnd)
    throw Failure(name,
                  cannotBeGated,
                  "the gate ends at sample " + std::to_string(window.first + window.quantity) +
                      ", and a position tells 65536 of them");
  return window;
}

void CheckNoCScans(const Document& document, const CGDataTypeFDD& ascans, std::uint32_t gateId) {
  std::size_t index = 0;
  for (const CGDataTypeFDD* group : document.Groups().data) {
    const bool isCScan = PlainClass(*group) == gdata_CScanAmplitude || PlainClass(*group) == gdata_CScanPosition;
    if (isCScan && group->channelId == ascans.channelId && group->subChannelId == ascans.subChannelId &&
        group->GetPatchID() == ascans.GetPatchID() && group->gateId % gateNumbers == gateId % gateNumbers)
      throw Failure(document.Path(),
                    cannotBeGated,
                    "data group " + std::to_string(index) + " is a C-scan of gate " + std::to_string(gateId),
                    "choose a gate without one");
    ++index;
  }
}

/// Two groups of A-scans that differ in neither patch nor sub-channel would have one C-scan hide the other.
void CheckOnlyOne(const Document& document, const std::vector<GatedGroup>& groups, const CGDataTypeFDD& ascans) {
  for (const GatedGroup& other : groups)
    if (other.ascans->subChannelId == ascans.subChannelId && other.ascans->GetPatchID() == ascans.GetPatchID())
      throw Failure(document.Path(),
                    cannotBeGated,
                    "data group " + std::to_string(other.index) + " is not the only one with A-scans of its channel" +
                        ", sub-channel and patch");
}

/// Maps the samples and gates them.
GatedGroup GateGroup(const Document& document,
                     const CGDataTypeFDD& ascans,
                     std::size_t index,
                     const GateSettings& settings,
                     bool quiet) {
  const std::string name = NameOf(document, index);
  CheckAScans(ascans, name);
  const GateWindow window = CheckedWindow(ascans, settings, name);
  const CGDataTypeFDD record = WithSignedSamples(ascans);
  const MappedSamples samples(ascans);
  const CellTable cells(ascans, {samples.Data(), samples.Size()}, name);
  return {&ascans,
          index,
          window,
          FullScale(record),
          GateAScans(record, cells, window, settings.threshold.value_or(0), quiet)};
}

const CGGateTypeDescr* FindGate(const Document& document, const GateSettings& settings) {
  const auto& gates = document.Groups().gates;
  const auto found = std::find_if(gates.begin(), gates.end(), [&](const CGGateTypeDescr* gate) {
    return gate->gateId == settings.gateId && gate->channelId == settings.channelId;
  });
  return found == gates.end() ? nullptr : *found;
}

void SetUp(CGGateTypeDescr& gate, const GateSettings& settings) {
  gate.gateId = settings.gateId;
  gate.channelId = settings.channelId;
  gate.start = static_cast<float>(settings.start);
  gate.width = static_cast<float>(settings.width);
  if (settings.threshold) gate.positiveLevel = gate.negativeLevel = static_cast<float>(*settings.threshold);
  gate.referenceGate = CGGateTypeDescr().referenceGate;
  gate.reference = ggate_RefInitialPulse;
  gate.peakSelection = ggate_PeakMaximum;
  gate.polarity = gdata_RectifFull;
}

}  // namespace

GatedInspection GateChannel(const Document& loaded, const GateSettings& settings, bool quiet) {
  GatedInspection result{Document::New(loaded.Path()), {}, {}, true};
  std::size_t index = 0;
  for (const CGDataTypeFDD* group : loaded.Groups().data) {
    if (group->dataClass == gdata_AScan && group->channelId == settings.channelId) {
      CheckNoCScans(loaded, *group, settings.gateId);
      CheckOnlyOne(loaded, result.groups, *group);
      result.groups.push_back(GateGroup(loaded, *group, index, settings, quiet));
    }
    ++index;
  }
  if (result.groups.empty())
    throw Failure(loaded.Path(),
                  cannotBeGated,
                  "channel " + std::to_string(settings.channelId) + " has no A-scans",
                  "'utdata info' lists the data groups");
  const CGGateTypeDescr* before = FindGate(loaded, settings);
  result.isNewGate = before == nullptr;
  if (before) ggate_Duplicate(&result.gate, before);
  SetUp(result.gate, settings);
  CGGateTypeDescr* gate = ggate_Allocate(1, nullptr);
  if (!gate) throw std::bad_alloc();
  result.changes.Groups().gates.AddTail(gate);
  ggate_Duplicate(gate, &result.gate);
  for (GatedGroup& group : result.groups)
    AddCScans(
        result.changes, *group.ascans, result.gate, {group.cells.amplitudes, group.cells.positions}, group.fullScale);
  return result;
}

double PercentOf(const GatedGroup& group, std::size_t cell) {
  return 100 * group.cells.amplitudes[cell] / group.fullScale;
}

std::size_t StrongestCell(const GatedGroup& group) {
  const auto& amplitudes = group.cells.amplitudes;
  return static_cast<std::size_t>(std::max_element(amplitudes.begin(), amplitudes.end()) - amplitudes.begin());
}

}  // namespace utdata::program
