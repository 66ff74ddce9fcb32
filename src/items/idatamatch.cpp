// The data item: what its construction finds out about it. The electronic scanning of its channel,
// its bookmark type, and the C-scan that it is matched to: amplitude and position of one channel
// and gate, or the two components of eddy-current data.
#include <algorithm>

#include "src/foundation/dataclass.h"
#include "src/items/idatainside.h"
#include "utdata/fset.h"
#include "utdata/idata.h"
#include "utdata/supplier.h"
#include "utdata/vset.h"

namespace {

constexpr std::uint32_t couplingGate = 140;
constexpr auto noBookmark = static_cast<eDataBookmarkType>(0xFFFFFFFF);
constexpr auto anyClass = static_cast<gdata_enumDataClass>(fset_AnyId);

/// Gates in which the tip-diffraction echo of a position C-scan lies; the gate before each holds
/// the amplitudes.
constexpr std::uint32_t meridioGates[] = {11, 21, 31};

gdata_enumDataClass ClassOf(const CIData& item) {
  idata_typeId id;
  item.idata1_GetId(id);
  return id.dataClass;
}

/// Appends the data items of the record's bookmark type, patch and channel. A master is matched to
/// the masters of its gate number.
void FindItemsBeside(CFSet& set,
                     const CGDataTypeFDD& record,
                     std::uint32_t gateId,
                     gdata_enumDataClass masterClass,
                     CIDataLst& out) {
  const bool isMaster = utdata::IsMaster(record.dataClass);
  set.fset_GetIDataLst(&out,
                       fset_All,
                       record.GetDataBookmarkType(),
                       record.GetPatchID(),
                       record.channelId,
                       isMaster ? fset_AnyId : record.subChannelId,
                       gateId,
                       isMaster ? utdata::WithMasterBit(masterClass) : anyClass,
                       fset_AnyId,
                       fset_AnyId);
}

/// The sample quantity that a data maximum stands for, 1 when it cannot be one.
std::uint32_t QuantityOf(double maximum) {
  return maximum >= 0 && maximum < 4294967296.0 ? static_cast<std::uint32_t>(maximum) : 1;
}

}  // namespace

CIData::ChannelScanning CIData::ReadChannelScanning(std::uint32_t channelId) const {
  ChannelScanning scanning;
  if (!m_document) return scanning;
  PellamServiceParam request(0, 0, nullptr, nullptr, 0, 0, L"", nullptr, 1, 1, 0, false);
  const auto read = [&](enumPellamVariable variable, void* buffer, std::uint32_t size) {
    PellamScandoraService::PellamReadVariable(request, variable, buffer, size, channelId + 1);
    m_document->HandleParameterRequest(request, 0);
  };
  read(PRM_ID_ElectronicScanning, &scanning.mode, sizeof scanning.mode);
  std::uint8_t merged = 0;  // a database may answer with any byte, which a bool cannot hold
  read(PRM_ID_bLinearMerged, &merged, sizeof merged);
  scanning.isLinearMerged = merged != 0;
  return scanning;
}

void CIData::UpdateBookmarkType(const enumElectronicScanning& mode, CGDataTypeFDD* record) {
  const eDataBookmarkType present = record->GetDataBookmarkType();
  if (present != bookmark_None && present != noBookmark) return;
  const bool isTofd = record->tofd == 1;
  eDataBookmarkType type = isTofd ? bookmark_Tofd : bookmark_Single;
  if (utdata::IsMaster(record->dataClass) || record->subChannelId != 0) {
    if (isTofd)
      type = bookmark_MultiChannelTofd;
    else
      type = mode == escan_Mode2 ? bookmark_Single : bookmark_MultiChannel;
  }
  record->SetDataBookmarkType(record->gateId == couplingGate ? bookmark_Coupling : type);
}

void CIData::FindPartners(const CGDataTypeFDD& record, CVolumeSet& volumes, Partners& partners) {
  IGDataSupplier* const document = volumes.vol_GetDocument();
  CFSet* const set = document ? document->GetFileSet() : nullptr;
  if (!set) return;
  const gdata_enumDataClass c = utdata::ClassOfElements(record.dataClass);
  if (c == gdata_CScanAmplitude)
    FindForAmplitudes(record, *set, partners);
  else if (utdata::HoldsPositions(record.dataClass))
    FindForPositions(record, *set, partners);
  else if (utdata::IsEddyCurrent(c))
    FindForEddyCurrent(record, *set, partners);
}

void CIData::FindForAmplitudes(const CGDataTypeFDD& record, CFSet& set, Partners& partners) {
  CIDataLst found;
  const std::uint32_t gateId =
      utdata::IsMaster(record.dataClass) ? utdata::GateNumber(record.gateId) : record.gateId;
  FindItemsBeside(set, record, gateId, gdata_CScanPosition, found);
  for (CIData* partner : found) {
    if (!utdata::HoldsPositions(ClassOf(*partner))) continue;
    partners.linked.AddTail(partner);
    partners.matched = partner;
  }
}

void CIData::FindForPositions(const CGDataTypeFDD& record, CFSet& set, Partners& partners) {
  const std::uint32_t number = utdata::GateNumber(record.gateId);
  const bool isMeridio =
      utdata::ClassOfElements(record.dataClass) == gdata_CScanPosition &&
      std::find(std::begin(meridioGates), std::end(meridioGates), number) != std::end(meridioGates);
  CIDataLst found;
  FindItemsBeside(
      set, record, isMeridio ? record.gateId - 1 : record.gateId, gdata_CScanAmplitude, found);
  for (CIData* partner : found) {
    if (utdata::ClassOfElements(ClassOf(*partner)) != gdata_CScanAmplitude) continue;
    if (isMeridio) {
      partners.meridio = partner;
      break;
    }
    partners.linked.AddTail(partner);
    partners.matched = partner;
  }
}

void CIData::FindForEddyCurrent(const CGDataTypeFDD& record, CFSet& set, Partners& partners) {
  const gdata_enumDataClass other = utdata::ClassOfElements(record.dataClass) == gdata_EddyCurrentX
                                        ? gdata_EddyCurrentY
                                        : gdata_EddyCurrentX;
  CIDataLst found;
  set.fset_GetIDataLst(&found,
                       fset_All,
                       record.GetDataBookmarkType(),
                       record.GetPatchID(),
                       record.channelId,
                       record.subChannelId,
                       record.gateId,
                       anyClass,
                       fset_AnyId,
                       fset_AnyId);
  for (CIData* partner : found) {
    if (ClassOf(*partner) != other) continue;
    partners.linked.AddTail(partner);
    partners.matched = partner;
  }
}

void CIData::Link(const Partners& partners) {
  m_descriptor->SetMatchedCScan(partners.matched);
  for (CIData* partner : partners.linked) {
    const LockScope lock(*partner);
    partner->m_descriptor->SetMatchedCScan(this);
    if (utdata::HoldsPositions(m_record->dataClass)) partner->TakeSampleAxisOf(*m_record);
  }
}

/// The sample axis of an amplitude C-scan is that of the positions beside it. Under the lock.
void CIData::TakeSampleAxisOf(const CGDataTypeFDD& position) {
  UTDATA_ASSERT(position.dataMaximum >= 0);
  m_descriptor->sampleQuantity = QuantityOf(double{position.dataMaximum});
  m_descriptor->sampleResolution = position.dataResolution;
  m_descriptor->sampleOffset = position.dataOffset;
  UpdateUnits();
}
