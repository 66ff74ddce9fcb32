// Specimen and information fields: two small values that the host keeps beside a file set. Neither
// takes a lock; the host serialises the use of one object.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "utdata/enum.h"
#include "utdata/ismat.h"

/// The specimen: its material, once added, and the unit system it is described in.
class UTDATA_API CSpec : public CObject {
 public:
  CSpec();
  CSpec(const CSpec&) = delete;
  CSpec& operator=(const CSpec&) = delete;
  ~CSpec() override;
  void Dump(CDumpContext& context) const override;  ///< writes nothing

  /// Makes the material item; null, and nothing is changed, when there is one, when the descriptor
  /// is null, or without memory. The item belongs to the specimen; with isNew 0 the descriptor
  /// stays the caller's and has to outlive it.
  CISpecMat* spec_SpecMatAdd(CGSpecmatTypeDescr* descriptor, int isNew);
  /// The material when there is one that passes the filter, else null. An unknown filter value is
  /// reported and passes nothing.
  [[nodiscard]] CISpecMat* spec_SpecMatGet(spec_enumFilters filter) const;
  /// Destroys the material that spec_SpecMatGet would give. 0, or 1 when there is none.
  std::uint32_t spec_SpecMatRemove(spec_enumFilters filter);
  /// Makes the caller's record the material's file side (CISpecMat::ismat1_ReplaceGInfo); null when
  /// there is no material.
  CISpecMat* spec_SpecMatReplace(CGSpecmatTypeDescr* descriptor);
  [[nodiscard]] kvt_enumUnitSystems spec_GetPreferredUnitSystem() const;

 private:
  struct Values {
    kvt_enumUnitSystems preferredUnitSystem = kvt_SystemMetric;
    std::uint32_t reserved[3] = {};
  };

  Values m_values;
  std::unique_ptr<CISpecMat> m_material;
};

/// Kinds of view of the host. The values are the host's; this one is what a field starts with.
enum scandora_enumViewType : std::uint32_t { scandora_ViewDefault = 12 };

/// One information field that the host shows.
class UTDATA_API CInfoField : public CObject {
 public:
  CInfoField();
  /// @param dataId the data item it concerns; not owned, may be null
  CInfoField(std::int32_t id,
             std::wstring description,
             std::wstring shortName,
             std::wstring category,
             std::wstring unit,
             int isActiveView,
             scandora_enumViewType viewType,
             idata_typeId* dataId);
  /// Copies share the data id's record.
  CInfoField(const CInfoField&);
  CInfoField& operator=(const CInfoField&);
  ~CInfoField() override;

  [[nodiscard]] std::int32_t GetId() const;
  [[nodiscard]] std::wstring GetCategory() const;
  [[nodiscard]] std::wstring GetDescription() const;
  [[nodiscard]] std::wstring GetShortName() const;
  [[nodiscard]] std::wstring GetUnit() const;
  [[nodiscard]] scandora_enumViewType GetViewType() const;
  [[nodiscard]] int IsActiveView() const;
  [[nodiscard]] idata_typeId* GetDataId() const;

  void SetDescription(std::wstring description);
  void SetShortName(std::wstring shortName);
  void SetUnit(std::wstring unit);
  void SetViewType(scandora_enumViewType viewType);
  void SetIsActiveView(int isActiveView);
  void SetDataId(idata_typeId* dataId);

 private:
  std::int32_t m_isActiveView = 1;
  std::int32_t m_id = 0;
  scandora_enumViewType m_viewType = scandora_ViewDefault;
  std::wstring m_description;
  std::wstring m_shortName;
  std::wstring m_category;
  std::wstring m_unit;
  idata_typeId* m_dataId = nullptr;
};
