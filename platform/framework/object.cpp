// The root object class, run-time class records and the dump context.
#include "interfaces/framework.h"

const CRuntimeClass CObject::classCObject = {"CObject", sizeof(CObject), nullptr, nullptr};

bool CRuntimeClass::IsDerivedFrom(const CRuntimeClass* other) const noexcept {
  for (const CRuntimeClass* record = this; record; record = record->baseClass)
    if (record == other) return true;
  return false;
}

CObject* CRuntimeClass::CreateObject() const { return createObject ? createObject() : nullptr; }

CObject::~CObject() = default;

const CRuntimeClass* CObject::GetRuntimeClass() const { return RUNTIME_CLASS(CObject); }

bool CObject::IsKindOf(const CRuntimeClass* runtimeClass) const {
  return GetRuntimeClass()->IsDerivedFrom(runtimeClass);
}

void CObject::Serialize(CArchive&) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext& context) const {
  context << "a " << GetRuntimeClass()->className << "\n";
}

CDumpContext& CDumpContext::operator<<(std::wstring_view text) {
  m_text += text;
  return *this;
}

CDumpContext& CDumpContext::operator<<(const char* text) {
  m_text += utdata::WideFromNarrow(text);
  return *this;
}
