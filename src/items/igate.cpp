// Gate item.
#include "utdata/igate.h"

#include <atomic>

#include "src/items/itemstate.h"

using utdata::ItemAccess;

CIGate::CIGate(CGGateTypeDescr* descriptor, int isNew) : Item(descriptor, isNew) {}

CIGate::~CIGate() = default;

void CIGate::Dump(CDumpContext& context) const { context << "A CIGate object\n"; }

void CIGate::igate1_GetId(igate_id* id) const {
  if (!utdata::Given(id)) return;
  const std::array<std::uint32_t, 2> ids = utdata::IdsOf(*this);
  *id = {ids[0], ids[1]};
}

void CIGate::igate1_GetName(std::wstring& name) const {
  name =
      utdata::ReadWorkingCopy(*this, [](const CGGateTypeDescr& working) { return working.name; });
}

CGGateTypeDescr* CIGate::igate1_GetInfoRef() const { return InfoRef(); }

void CIGate::igate1_GetGInfoCopy(CGGateTypeDescr* copy) const { CopyFileSide(copy); }

void CIGate::igate1_ReplaceGInfo(const CGGateTypeDescr* source) { Replace(source); }

bool CIGate::igate1_ModifGetStatus() const { return IsModified(); }

void CIGate::igate1_ModifSetStatus(bool modified) { SetModifiedLocked(modified); }

void CIGate::igate1_ModifClear() { SetModifiedLocked(false); }

bool CIGate::igate1_NewGetStatus() const { return IsNew(); }

void CIGate::igate9_OnLineUpdate(const CGGateTypeDescr* source, std::uint32_t) {
  if (!utdata::Given(source)) return;
  const utdata::MutexScope lock(ItemAccess::StateOf(*this).lock);
  igate1_ReplaceGInfo(source);
  SetModified(true);
}

// A viewer reads a gate on one thread while another moves it, hence the atomic access.

float CIGate::Read(float CGGateTypeDescr::*field) const {
  return std::atomic_ref(ItemAccess::StateOf(*this).working.*field).load(std::memory_order_relaxed);
}

void CIGate::Store(float CGGateTypeDescr::*field, float value) {
  auto& state = ItemAccess::StateOf(*this);
  const utdata::MutexScope lock(state.lock);
  const std::atomic_ref stored(state.working.*field);
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
std::int32_t CIGate::GetReferenceGate() const {
  return ItemAccess::StateOf(*this).working.referenceGate;
}
ggate_EnumGateRef CIGate::Ref() const { return ItemAccess::StateOf(*this).working.reference; }
ggate_EnumPeakSelection CIGate::PeakSelection() const {
  return ItemAccess::StateOf(*this).working.peakSelection;
}
