// Specimen and information fields.
#include "utdata/spec.h"

#include <utility>

#include "src/fileset/contents.h"
#include "src/items/itemlookup.h"

CSpec::CSpec() = default;
CSpec::~CSpec() = default;

void CSpec::Dump(CDumpContext&) const {}

kvt_enumUnitSystems CSpec::spec_GetPreferredUnitSystem() const {
  return m_values.preferredUnitSystem;
}

CISpecMat* CSpec::spec_SpecMatAdd(CGSpecmatTypeDescr* descriptor, int isNew) {
  if (m_material || !descriptor) return nullptr;
  m_material.reset(utdata::OrNull([&] { return new CISpecMat(descriptor, isNew); }));
  return m_material.get();
}

CISpecMat* CSpec::spec_SpecMatGet(spec_enumFilters filter) const {
  if (!m_material) return nullptr;
  const auto isModified = [this] { return m_material->ismat1_ModifGetStatus(); };
  const auto isNew = [this] { return m_material->ismat1_NewGetStatus(); };
  return utdata::PassesFilter(filter, isModified, isNew, false) ? m_material.get() : nullptr;
}

std::uint32_t CSpec::spec_SpecMatRemove(spec_enumFilters filter) {
  if (!spec_SpecMatGet(filter)) return 1;
  m_material.reset();
  return 0;
}

CISpecMat* CSpec::spec_SpecMatReplace(CGSpecmatTypeDescr* descriptor) {
  return utdata::OrNull([&] {
    if (m_material) m_material->ismat1_ReplaceGInfo(descriptor);
    return m_material.get();
  });
}

CInfoField::CInfoField() = default;
CInfoField::CInfoField(std::int32_t id,
                       std::wstring description,
                       std::wstring shortName,
                       std::wstring category,
                       std::wstring unit,
                       int isActiveView,
                       scandora_enumViewType viewType,
                       idata_typeId* dataId)
    : m_isActiveView(isActiveView),
      m_id(id),
      m_viewType(viewType),
      m_description(std::move(description)),
      m_shortName(std::move(shortName)),
      m_category(std::move(category)),
      m_unit(std::move(unit)),
      m_dataId(dataId) {}
CInfoField::CInfoField(const CInfoField&) = default;
CInfoField& CInfoField::operator=(const CInfoField&) = default;
CInfoField::~CInfoField() = default;

std::int32_t CInfoField::GetId() const { return m_id; }
std::wstring CInfoField::GetCategory() const { return m_category; }
std::wstring CInfoField::GetDescription() const { return m_description; }
std::wstring CInfoField::GetShortName() const { return m_shortName; }
std::wstring CInfoField::GetUnit() const { return m_unit; }
scandora_enumViewType CInfoField::GetViewType() const { return m_viewType; }
int CInfoField::IsActiveView() const { return m_isActiveView; }
idata_typeId* CInfoField::GetDataId() const { return m_dataId; }
void CInfoField::SetDescription(std::wstring description) {
  m_description = std::move(description);
}
void CInfoField::SetShortName(std::wstring shortName) { m_shortName = std::move(shortName); }
void CInfoField::SetUnit(std::wstring unit) { m_unit = std::move(unit); }
void CInfoField::SetViewType(scandora_enumViewType viewType) { m_viewType = viewType; }
void CInfoField::SetIsActiveView(int isActiveView) { m_isActiveView = isActiveView; }
void CInfoField::SetDataId(idata_typeId* dataId) { m_dataId = dataId; }
