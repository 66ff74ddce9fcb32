// The data item: names, and the labels that viewers show.
#include <array>
#include <cwchar>
#include <string>

#include "src/items/idatainside.h"
#include "utdata/idata.h"

namespace {

/// A text of one number; `format` has one %d.
std::wstring Numbered(const wchar_t* format, std::uint32_t number) {
  std::array<wchar_t, 24> text{};
  std::swprintf(text.data(), text.size(), format, static_cast<std::int32_t>(number));
  return text.data();
}

/// One part of a label in its two forms.
struct LabelPart {
  std::wstring name;
  std::wstring id;
};

LabelPart PartOf(const wchar_t* name,
                 const wchar_t* idFormat,
                 std::uint32_t number,
                 const wchar_t* ending = L" ") {
  LabelPart part;
  part.id = Numbered(idFormat, number);
  part.name = *name ? std::wstring(name) + ending : part.id;
  return part;
}

const wchar_t* PatchNameOf(const CRDataTypeDD& descriptor) {
  const wchar_t* name = L"";
  return descriptor.GetPatchIDName(&name) > 0 ? name : L"";
}

}  // namespace

void CIData::idata1_GetName(idata_typeName* names) const {
  UTDATA_ASSERT(names != nullptr);
  if (!names || !m_descriptor) return;
  *names = {PatchNameOf(*m_descriptor),
            m_descriptor->channelName,
            m_descriptor->subChannelName,
            m_descriptor->gateName,
            m_descriptor->dataName,
            m_descriptor->dataNameText};
}

void CIData::idata3_GetChannelIdName(std::wstring* label,
                                     std::wstring* idLabel,
                                     int withPatch) const {
  UTDATA_ASSERT(m_descriptor && label && idLabel);
  if (!m_descriptor || !label || !idLabel) return;
  const CRDataTypeDD& d = *m_descriptor;
  const LabelPart patch =
      withPatch ? PartOf(PatchNameOf(d), L"P%d ", d.GetPatchID(), L". ") : LabelPart{};
  const LabelPart channel = PartOf(d.channelName, L"C%2d ", d.channelId + 1);
  const LabelPart gate = PartOf(d.gateName, L"G%d ", d.gateId);
  *label = channel.name + patch.name + gate.name;
  *idLabel = channel.id + patch.id + gate.id;
}

void CIData::idata3_GetChannelName(std::wstring* out) const {
  UTDATA_ASSERT(out != nullptr);
  if (!out || !m_descriptor) return;
  const LockScope lock(*this);
  const CRDataTypeDD& d = *m_descriptor;
  *out = PartOf(d.channelName, L"C%02d", d.channelId + 1, L"").name;
  if (d.subChannelId == 0 || idata1_IsMultiChannelMaster()) return;
  *out += L" : " + PartOf(d.subChannelName, L"[%d]", d.subChannelId, L"").name;
}
