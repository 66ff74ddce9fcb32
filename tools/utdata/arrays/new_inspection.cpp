#include "arrays/new_inspection.h"

#include <new>

#include "arrays/described_array.h"
#include "document/data_group.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

template <class Descriptor>
Descriptor& Add(CList<Descriptor*>& list, Descriptor* descriptor) {
  if (!descriptor) throw std::bad_alloc();
  list.AddTail(descriptor);
  return *descriptor;
}

}  // namespace

CGDataTypeFDD NominalRecord(const SampleType& type) {
  CGDataTypeFDD record;
  record.columnResolution = record.rowResolution = static_cast<float>(1e-3);
  record.sampleResolution = static_cast<float>(10e-9);
  record.soundSpeed = 5900;
  record.dataMinimum = type.minimum;
  record.dataMaximum = type.maximum;
  return record;
}

void SetLayout(CGDataTypeFDD& record,
               const ArrayLayout& layout,
               const SampleType& type,
               bool hasSamples) {
  if (HasSampleAxis(record) != hasSamples) {
    record.dataClass = hasSamples ? gdata_AScan : gdata_CScanAmplitude;
    if (!hasSamples) record.SetDataRectification(gdata_RectifFull);
  }
  record.columnQuantity = layout.Quantity(ArrayAxis::Column);
  record.rowQuantity = layout.Quantity(ArrayAxis::Row);
  record.sampleQuantity = layout.Quantity(ArrayAxis::Sample);
  record.SetDataType(type.type);
  record.sampleSize = type.size;
  record.cellSize = type.size * record.sampleQuantity;
}

void AddScan(Document& document,
             const CGDataTypeFDD& record,
             std::byte* samples,
             const InspectionTexts& texts) {
  CFContTypeFileDescr& groups = document.Groups();
  CGDataTypeFDD& data = Add(groups.data, gdata_Allocate(1, nullptr));
  data = record;
  data.dataPointer = samples;
  AssignBookmarkType(data);

  CGChanTypeDescr& channel = Add(groups.channels, gchan_Allocate(1, record.channelName));
  channel.channelId = record.channelId;
  channel.rangeStart = record.sampleOffset;
  channel.range = record.sampleResolution * static_cast<float>(record.sampleQuantity);
  channel.soundSpeed = record.soundSpeed;
  channel.refractedAngle = record.probeAngle;
  channel.digitizingFrequency =
      static_cast<float>(1 / static_cast<double>(record.sampleResolution));
  channel.rectification = record.GetDataRectification();

  Add(groups.probes, gprobe_Allocate(1, nullptr)).angle = record.probeAngle;

  CGInfoTypeDescr& info = Add(groups.infos, ginfo_Allocate(1, nullptr));
  info.title = ToWide(texts.title);
  info.software = ToWide("utdata " UTDATA_VERSION);
  if (!texts.nominal.empty()) info.comment = ToWide("nominal, not measured: " + texts.nominal);
}

}  // namespace utdata::program
