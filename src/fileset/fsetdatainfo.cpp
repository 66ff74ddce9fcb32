// The file set: copies of everything around one data item.
#include <memory>
#include <new>
#include <utility>

#include "src/fileset/contents.h"

namespace {

/// A copy made by the operations of the descriptor's family.
template <class Descriptor>
Descriptor* CopyOf(const Descriptor* source,
                   Descriptor* (*allocate)(int, const wchar_t*),
                   int (*duplicate)(Descriptor*, const Descriptor*)) {
  Descriptor* const copy = allocate(0, L"");
  if (!copy) throw std::bad_alloc();
  if (duplicate(copy, source) == SCFile::status_Ok) return copy;
  delete copy;
  throw std::bad_alloc();
}

/// The same of an item's working copy; null for null.
template <class Descriptor>
Descriptor* CopyOf(const utdata::Item<Descriptor>* item,
                   Descriptor* (*allocate)(int, const wchar_t*),
                   int (*duplicate)(Descriptor*, const Descriptor*)) {
  if (!item) return nullptr;
  return utdata::ReadWorkingCopy(
      *item, [=](const Descriptor& working) { return CopyOf(&working, allocate, duplicate); });
}

bool IsComplete(const fset_typeDataInfoDescr& info) {
  return info.data && info.patch && info.channel && info.firstProbe && info.secondProbe &&
         info.gate && info.tofd;
}

/// Whoever asks keeps the set from being changed.
template <class Contents>
void FillDataInfo(Contents& c,
                  CIData& item,
                  fset_typeDataInfoDescr& info) UTDATA_NO_THREAD_SAFETY_ANALYSIS {
  info.tofd = new idata_typeTOFD;
  item.idata3_GetTOFDParam(info.tofd);
  if (const CGDataTypeFDD* data = std::as_const(item).idata1_GetGInfoRef())
    info.data = CopyOf(data, gdata_Allocate, gdata_Duplicate);
  if (!info.data) return;

  const utdata::Item<CGPatchTypeDescr>* patch =
      c.patches.First(fset_All, {info.data->GetPatchID()});
  info.patch = CopyOf(patch, gpatch_Allocate, gpatch_Duplicate);
  const std::uint32_t channelId = info.data->channelId;
  const utdata::Item<CGChanTypeDescr>* channel = c.channels.First(fset_All, {channelId});
  info.channel = CopyOf(channel, gchan_Allocate, gchan_Duplicate);
  if (info.channel) {
    const utdata::Item<CGProbeTypeDescr>* first =
        c.probes.First(fset_All, {info.channel->firstProbeId});
    const utdata::Item<CGProbeTypeDescr>* second =
        c.probes.First(fset_All, {info.channel->secondProbeId});
    if (first && second) {
      info.firstProbe = CopyOf(first, gprobe_Allocate, gprobe_Duplicate);
      info.secondProbe = CopyOf(second, gprobe_Allocate, gprobe_Duplicate);
    }
    const utdata::Item<CGGateTypeDescr>* gate =
        c.gates.First(fset_All, {info.data->gateId, channelId});
    info.gate = CopyOf(gate, ggate_Allocate, ggate_Duplicate);
    const utdata::Item<CGSubchanTypeDescr>* subChannel =
        c.subChannels.First(fset_All, {info.data->subChannelId, channelId});
    info.subChannel = CopyOf(subChannel, gsubchan_Allocate, gsubchan_Duplicate);
  }
  info.complete = IsComplete(info) ? 1 : 0;
}

}  // namespace

fset_typeDataInfoDescr* CFSet::fset_DataInfoRequestCopy(CIData* item) {
  UTDATA_ASSERT(item != nullptr);
  if (!item) return nullptr;
  const auto release = [this](fset_typeDataInfoDescr* info) { fset_DataInfoReleaseCopy(info); };
  return utdata::OrNull([&] {
    std::unique_ptr<fset_typeDataInfoDescr, decltype(release)> info(new fset_typeDataInfoDescr,
                                                                    release);
    FillDataInfo(*m_contents, *item, *info);
    return info.release();
  });
}

void CFSet::fset_DataInfoReleaseCopy(fset_typeDataInfoDescr* info) {
  UTDATA_ASSERT(info != nullptr);
  if (!info) return;
  gdata_Delete(info->data, 1);
  delete info->tofd;
  gpatch_Delete(info->patch, 1);
  gchan_Delete(info->channel, 1);
  gprobe_Delete(info->firstProbe, 1);
  gprobe_Delete(info->secondProbe, 1);
  ggate_Delete(info->gate, 1);
  gsubchan_Delete(info->subChannel, 1);
  delete info;
}
