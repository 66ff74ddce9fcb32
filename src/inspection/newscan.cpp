#include "utdata/newscan.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "src/foundation/dataclass.h"

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

CGChanTypeDescr ChannelOf(const CGDataTypeFDD& record) {
  CGChanTypeDescr channel;
  channel.name = record.channelName;
  channel.channelId = record.channelId;
  channel.rangeStart = record.sampleOffset;
  channel.range = record.sampleResolution * static_cast<float>(record.sampleQuantity);
  channel.soundSpeed = record.soundSpeed;
  channel.refractedAngle = record.probeAngle;
  channel.digitizingFrequency = static_cast<float>(1 / double{record.sampleResolution});
  channel.rectification = record.GetDataRectification();
  return channel;
}

/// A group that is added to a list, which then owns it, once nothing can fail any more.
template <class Descriptor>
class NewGroup {
 public:
  NewGroup(CList<Descriptor*>& list, Descriptor group)
      : m_list(list), m_group(std::make_unique<Descriptor>(std::move(group))) {
    list.Reserve(1);
  }
  void Add() noexcept { m_list.AddTail(m_group.release()); }

 private:
  CList<Descriptor*>& m_list;
  std::unique_ptr<Descriptor> m_group;
};

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

DataGroup AddScan(Inspection& inspection,
                  const CGDataTypeFDD& record,
                  std::span<std::byte> samples,
                  const ScanTexts& texts) {
  constexpr const char* cannotBeMade = "cannot be made";
  std::uint64_t size = 0;
  if (!record.LayoutSize(size))
    throw Error(inspection.Path(), cannotBeMade, "its layout needs more bytes than 64 bits count");
  if (size != samples.size())
    throw Error(inspection.Path(),
                cannotBeMade,
                "its layout needs " + std::to_string(size) + " bytes, and its samples have " +
                    std::to_string(samples.size()));
  CGProbeTypeDescr probeOfScan;
  probeOfScan.angle = record.probeAngle;
  CGInfoTypeDescr infoOfScan;
  infoOfScan.title = ToWide(texts.title);
  infoOfScan.software = ToWide(texts.software);
  infoOfScan.comment = ToWide(texts.comment);
  CFContTypeFileDescr& groups = inspection.Descriptor();
  NewGroup<CGChanTypeDescr> channel(groups.channels, ChannelOf(record));
  NewGroup<CGProbeTypeDescr> probe(groups.probes, std::move(probeOfScan));
  NewGroup<CGInfoTypeDescr> info(groups.infos, std::move(infoOfScan));
  const DataGroup added = inspection.AddData(record, samples);
  channel.Add();
  probe.Add();
  info.Add();
  return added;
}

}  // namespace utdata
