// Gate item.
#include "utdata/igate.h"

void CIGate::Dump(CDumpContext& context) const { context << "A CIGate object\n"; }

void CIGate::igate1_GetId(igate_id* id) const {
  if (Given(id)) *id = {InfoRef()->gateId, InfoRef()->channelId};
}

void CIGate::igate1_GetName(std::wstring& name) const { name = InfoRef()->name; }

void CIGate::igate9_OnLineUpdate(const CGGateTypeDescr* source, std::uint32_t) {
  if (!Given(source)) return;
  const HomeScope home(*this);
  const utdata::MutexScope lock(Lock());
  igate1_ReplaceGInfo(source);
  SetModified(true);
}

// A viewer reads a gate while the inspector drags it, hence the atomic access.

float CIGate::Read(float CGGateTypeDescr::*field) const {
  return std::atomic_ref(InfoRef()->*field).load(std::memory_order_relaxed);
}

void CIGate::Store(float CGGateTypeDescr::*field, float value) {
  const utdata::MutexScope lock(Lock());
  const std::atomic_ref stored(InfoRef()->*field);
  if (stored.load(std::memory_order_relaxed) == value) return;
  stored.store(value, std::memory_order_relaxed);
  SetModified(true);
}

float CIGate::Start() const { return Read(&CGGateTypeDescr::start); }
void CIGate::Start(float seconds) { Store(&CGGateTypeDescr::start, seconds); }
float CIGate::Width() const { return Read(&CGGateTypeDescr::width); }
void CIGate::Width(float seconds) { Store(&CGGateTypeDescr::width, seconds); }
float CIGate::PLevel() const { return Read(&CGGateTypeDescr::positiveLevel); }
void CIGate::PLevel(float percent) { Store(&CGGateTypeDescr::positiveLevel, percent); }
float CIGate::NLevel() const { return Read(&CGGateTypeDescr::negativeLevel); }
void CIGate::NLevel(float percent) { Store(&CGGateTypeDescr::negativeLevel, percent); }
std::int32_t CIGate::GetReferenceGate() const { return InfoRef()->referenceGate; }
ggate_EnumGateRef CIGate::Ref() const { return InfoRef()->reference; }
ggate_EnumPeakSelection CIGate::PeakSelection() const { return InfoRef()->peakSelection; }
