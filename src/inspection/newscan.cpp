#include "utdata/newscan.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <set>
#include <string>
#include <utility>

#include "src/foundation/dataclass.h"
#include "src/inspection/addedrows.h"
#include "utdata/fields.h"

namespace utdata {
namespace {

constexpr SampleType sampleTypes[] = {{"u8", kvt_UInt8, 1, false, 0, 255},
                                      {"i8", kvt_Int8, 1, true, -128, 127},
                                      {"u16", kvt_UInt16, 2, false, 0, 65535},
                                      {"i16", kvt_Int16, 2, true, -32768, 32767}};

template <class Test>
const SampleType* Find(Test test) {
  const auto* found = std::find_if(std::begin(sampleTypes), std::end(sampleTypes), test);
  return found == std::end(sampleTypes) ? nullptr : found;
}

constexpr int ofTheHost = 1;

InspectionState& StateBehind(Inspection& inspection) {
  return static_cast<InspectionState&>(inspection.Supplier());
}

CGChanTypeDescr ChannelOf(const CGDataTypeFDD& record) {
  CGChanTypeDescr channel;
  channel.name = record.channelName;
  channel.channelId = record.channelId;
  channel.rangeStart = record.sampleOffset;
  channel.range = record.sampleResolution * static_cast<float>(record.sampleQuantity);
  channel.soundSpeed = record.soundSpeed;
  channel.refractedAngle = record.probeAngle;
  channel.skew = record.probeSkew;
  channel.digitizingFrequency = static_cast<float>(1 / double{record.sampleResolution});
  channel.rectification = record.GetDataRectification();
  channel.tofd = record.tofd;
  channel.probeSeparation = record.tofd == 1 ? record.probeSeparation : 0;
  return channel;
}

CGSubchanTypeDescr BeamOf(const CGDataTypeFDD& record, std::uint32_t number, float angle) {
  CGSubchanTypeDescr beam;
  beam.channelId = record.channelId;
  beam.subChannelId = number;
  beam.name = record.subChannelName[0] != 0 ? std::wstring(record.subChannelName)
                                            : L"Beam " + std::to_wstring(number);
  beam.refractedAngle = angle;
  beam.skew = record.probeSkew;
  beam.rangeStart = record.sampleOffset;
  beam.range = record.sampleResolution * static_cast<float>(record.sampleQuantity);
  return beam;
}

/// Groups that a file set gets; unless they are kept, it loses them again.
class AddedGroups {
 public:
  explicit AddedGroups(CFSet& set) : m_set(set) {}
  AddedGroups(const AddedGroups&) = delete;
  AddedGroups& operator=(const AddedGroups&) = delete;
  ~AddedGroups() {
    if (m_isKept) return;
    for (const CGSubchanTypeDescr& beam : m_beams)
      m_set.fset_RemoveGSubChan(fset_All, beam.subChannelId, beam.channelId);
    for (const std::uint32_t id : m_channels) m_set.fset_RemoveGChan(fset_All, id);
    for (const std::uint32_t id : m_probes) m_set.fset_RemoveGProbe(fset_All, id);
  }

  void Add(CGChanTypeDescr channel) {
    m_channels.reserve(m_channels.size() + 1);
    Check(m_set.fset_AddGChan(&channel, ofTheHost));
    m_channels.push_back(channel.channelId);
  }
  void Add(CGProbeTypeDescr probe) {
    m_probes.reserve(m_probes.size() + 1);
    Check(m_set.fset_AddGProbe(&probe, ofTheHost));
    m_probes.push_back(probe.probeId);
  }
  void Add(CGSubchanTypeDescr beam) {
    m_beams.reserve(m_beams.size() + 1);
    Check(m_set.fset_AddGSubChan(&beam, ofTheHost));
    m_beams.push_back(std::move(beam));
  }
  void Keep() noexcept { m_isKept = true; }

 private:
  /// The ids of what is added are free: without an item there was no memory.
  static void Check(const void* item) {
    if (!item) throw std::bad_alloc();
  }

  CFSet& m_set;
  std::vector<std::uint32_t> m_channels;
  std::vector<std::uint32_t> m_probes;
  std::vector<CGSubchanTypeDescr> m_beams;
  bool m_isKept = false;
};

/// The record of that channel, in the file set or among the groups that a new inspection was given;
/// null when there is none.
const CGChanTypeDescr* FindChannel(InspectionState& state, std::uint32_t id) {
  if (const CIChan* item = state.set.fset_GetIChan(fset_All, id)) return item->ichan1_GetInfoRef();
  for (const CGChanTypeDescr* channel : state.descriptor->channels)
    if (channel->channelId == id) return channel;
  return nullptr;
}

const CGSubchanTypeDescr* FindBeam(InspectionState& state, const CGSubchanTypeDescr& beam) {
  if (const CISubChan* item =
          state.set.fset_GetISubChan(fset_All, beam.subChannelId, beam.channelId))
    return item->ischa1_GetInfoRef();
  for (const CGSubchanTypeDescr* present : state.descriptor->subChannels)
    if (present->subChannelId == beam.subChannelId && present->channelId == beam.channelId)
      return present;
  return nullptr;
}

bool IsProbeThere(InspectionState& state, std::uint32_t id) {
  return state.set.fset_GetIProbe(fset_All, id) ||
         std::ranges::any_of(state.descriptor->probes,
                             [id](const CGProbeTypeDescr* probe) { return probe->probeId == id; });
}

[[noreturn]] void RefuseScan(const Inspection& inspection,
                             const std::string& why,
                             const std::string& remedy = {}) {
  throw Error(inspection.Path(), "a scan cannot be added", why, remedy);
}

/// Refuses two descriptors of one group that differ in a field.
template <class Descriptor>
void CheckAlike(const Inspection& inspection,
                const Descriptor& present,
                const Descriptor& added,
                const char* key) {
  const Fields there(present);
  const Field is = there[key], wanted = Fields(added)[key];
  if (is.SameAs(wanted)) return;
  RefuseScan(inspection,
             there.Name() + " is there with " + key + " " + is.Show() + ", and the scan has " +
                 wanted.Show(),
             "add it as another channel");
}

void CheckBeams(const Inspection& inspection, const ChannelSetup& setup) {
  std::set<std::uint32_t> numbers;
  for (const CGSubchanTypeDescr& beam : setup.beams) {
    if (beam.subChannelId == 0)
      RefuseScan(inspection, "a sub-channel has number 0; they count from 1");
    if (beam.channelId != setup.channel.channelId)
      RefuseScan(inspection, Fields(beam).Name() + " is of another channel");
    if (!numbers.insert(beam.subChannelId).second)
      RefuseScan(inspection, "it has two of " + Fields(beam).Name());
  }
}

/// Adds the probes of a channel that is not there yet, and the channel.
void AddNewChannel(InspectionState& state, const ChannelSetup& setup, AddedGroups& added) {
  CGChanTypeDescr channel = setup.channel;
  for (std::size_t index = 0; index < setup.probes.size(); ++index) {
    CGProbeTypeDescr probe = setup.probes[index];
    while (IsProbeThere(state, probe.probeId)) ++probe.probeId;
    if (index == 0) channel.firstProbeId = channel.secondProbeId = probe.probeId;
    if (index == 1) channel.secondProbeId = probe.probeId;
    added.Add(std::move(probe));
  }
  added.Add(std::move(channel));
}

/// Adds what is not there yet of a channel.
void AddTo(Inspection& inspection, const ChannelSetup& setup, AddedGroups& added) {
  InspectionState& state = StateBehind(inspection);
  CheckBeams(inspection, setup);
  if (const CGChanTypeDescr* present = FindChannel(state, setup.channel.channelId)) {
    CheckAlike(inspection, *present, setup.channel, "soundSpeed");
    CheckAlike(inspection, *present, setup.channel, "tofd");
  } else {
    AddNewChannel(state, setup, added);
  }
  for (const CGSubchanTypeDescr& beam : setup.beams) {
    if (const CGSubchanTypeDescr* present = FindBeam(state, beam)) {
      CheckAlike(inspection, *present, beam, "refractedAngle");
      CheckAlike(inspection, *present, beam, "skew");
    } else {
      added.Add(beam);
    }
  }
}

}  // namespace

const SampleType* FindSampleType(std::string_view name) {
  return Find([=](const SampleType& type) { return name == type.name; });
}

const SampleType* FindSampleType(kvt_enumDataType wanted) {
  return Find([=](const SampleType& type) { return wanted == type.type; });
}

const SampleType* FindSampleType(std::uint64_t size, bool isSigned) {
  return Find(
      [=](const SampleType& type) { return size == type.size && isSigned == type.isSigned; });
}

CGDataTypeFDD NominalRecord(const SampleType& type) {
  CGDataTypeFDD record;
  record.columnResolution = record.rowResolution = 1e-3F;
  record.sampleResolution = 10e-9F;
  record.soundSpeed = 5900;
  record.dataMinimum = type.minimum;
  record.dataMaximum = type.maximum;
  return record;
}

void SetLayout(CGDataTypeFDD& record, const SampleType& type, const ScanLayout& layout) {
  if (IsCScan(record.dataClass) == layout.hasAScans) {
    record.dataClass = layout.hasAScans ? gdata_AScan : gdata_CScanAmplitude;
    if (!layout.hasAScans) record.SetDataRectification(gdata_RectifFull);
  }
  record.columnQuantity = layout.columns;
  record.rowQuantity = layout.rows;
  record.sampleQuantity = layout.samples;
  record.SetDataType(type.type);
  record.sampleSize = type.size;
  record.cellSize = type.size * layout.samples;
}

void SetName(wchar_t (&field)[CGDataTypeFDD::nameSize], const std::wstring& name) {
  const std::size_t length = std::min(name.size(), CGDataTypeFDD::nameSize - 1);
  std::copy_n(name.begin(), length, field);
  field[length] = 0;
}

ChannelSetup SetupOf(const CGDataTypeFDD& record) {
  ChannelSetup setup;
  setup.channel = ChannelOf(record);
  CGProbeTypeDescr probe;
  probe.angle = record.probeAngle;
  probe.skew = record.probeSkew;
  setup.probes.push_back(probe);
  if (record.tofd == 1) {
    probe.probeId = 1;
    setup.probes.push_back(std::move(probe));
  }
  if (record.subChannelId != 0)
    setup.beams.push_back(BeamOf(record, record.subChannelId, record.probeAngle));
  return setup;
}

std::vector<CGSubchanTypeDescr> BeamsOf(const CGDataTypeFDD& record,
                                        std::span<const double> angles) {
  CGDataTypeFDD unnamed = record;
  unnamed.subChannelName[0] = 0;
  std::uint32_t number = std::max(record.subChannelId, 1U);
  std::vector<CGSubchanTypeDescr> beams;
  for (const double angle : angles)
    beams.push_back(BeamOf(unnamed, number++, static_cast<float>(angle)));
  return beams;
}

CGDataTypeFDD BeamRecord(const CGDataTypeFDD& record, const CGSubchanTypeDescr& beam) {
  CGDataTypeFDD ofBeam = record;
  ofBeam.channelId = beam.channelId;
  ofBeam.subChannelId = beam.subChannelId;
  SetName(ofBeam.subChannelName, beam.name);
  ofBeam.probeAngle = beam.refractedAngle;
  ofBeam.probeSkew = beam.skew;
  return ofBeam;
}

void AddChannel(Inspection& inspection, const ChannelSetup& setup) {
  AddedGroups added(StateBehind(inspection).set);
  AddTo(inspection, setup, added);
  added.Keep();
}

std::vector<DataGroup> AddBeams(Inspection& inspection,
                                const CGDataTypeFDD& record,
                                const ChannelSetup& setup,
                                std::span<std::byte> samples) {
  if (record.channelId != setup.channel.channelId)
    RefuseScan(inspection, "its data are of another channel than its set-up");
  std::vector<CGDataTypeFDD> records;
  for (const CGSubchanTypeDescr& beam : setup.beams) records.push_back(BeamRecord(record, beam));
  if (records.empty()) records.push_back(record);
  std::uint64_t size = 0, needed = 0;
  if (!record.LayoutSize(size) || __builtin_mul_overflow(size, records.size(), &needed))
    RefuseScan(inspection, "its layout needs more bytes than 64 bits count");
  if (needed != samples.size())
    RefuseScan(inspection,
               "its layout needs " + std::to_string(needed) + " bytes, and its samples have " +
                   std::to_string(samples.size()));
  InspectionState& state = StateBehind(inspection);
  AddedRows rows(state);
  AddedGroups groups(state.set);
  AddTo(inspection, setup, groups);
  std::vector<DataGroup> added;
  for (const CGDataTypeFDD& ofBeam : records)
    added.push_back(inspection.AddData(
        ofBeam, samples.subspan(added.size() * static_cast<std::size_t>(size), size)));
  groups.Keep();
  rows.Keep();
  return added;
}

void AddTexts(Inspection& inspection, const ScanTexts& texts) {
  InspectionState& state = StateBehind(inspection);
  CGInfoTypeDescr info;
  info.title = ToWide(texts.title);
  info.software = ToWide(texts.software);
  info.comment = ToWide(texts.comment);
  if (!state.descriptor->files.IsEmpty() || !state.descriptor->infos.IsEmpty() ||
      state.set.fset_GetIInfo(fset_All))
    return;
  if (!state.set.fset_AddGInfo(&info, ofTheHost)) throw std::bad_alloc();
}

DataGroup AddScan(Inspection& inspection,
                  const CGDataTypeFDD& record,
                  std::span<std::byte> samples,
                  const ScanTexts& texts) {
  InspectionState& state = StateBehind(inspection);
  const bool hadTexts = state.set.fset_GetIInfo(fset_All) != nullptr;
  AddTexts(inspection, texts);
  try {
    return AddBeams(inspection, record, SetupOf(record), samples).front();
  } catch (...) {
    if (!hadTexts) state.set.fset_RemoveGInfo(fset_All);
    throw;
  }
}

}  // namespace utdata
