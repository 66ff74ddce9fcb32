// Gate item.
#pragma once

#include <string>

#include "utdata/enum.h"
#include "utdata/item.h"

/// One gate of a file set; utdata/item.h documents the pattern, ownership and locks.
///
/// The single values may be read and set from several threads at once, but not read while the whole
/// record is replaced. A setter that is given the stored value changes nothing, else it marks the
/// gate as modified.
class UTDATA_API CIGate : public utdata::Item<CGGateTypeDescr> {
 public:
  CIGate(CGGateTypeDescr* descriptor, int isNew);
  ~CIGate() override;
  void Dump(CDumpContext& context) const override;

  void igate1_GetId(igate_id* id) const;
  void igate1_GetName(std::wstring& name) const;
  [[nodiscard]] CGGateTypeDescr* igate1_GetInfoRef() const;
  /// A new gate leaves `copy` alone.
  void igate1_GetGInfoCopy(CGGateTypeDescr* copy) const;
  void igate1_ReplaceGInfo(const CGGateTypeDescr* source);
  [[nodiscard]] bool igate1_ModifGetStatus() const;
  void igate1_ModifSetStatus(bool modified);
  void igate1_ModifClear();
  [[nodiscard]] bool igate1_NewGetStatus() const;

  /// Replaces the record as igate1_ReplaceGInfo does and marks the gate as modified. @param flags
  /// no effect
  void igate9_OnLineUpdate(const CGGateTypeDescr* source, std::uint32_t flags);

  [[nodiscard]] float Start() const;  ///< seconds after its reference
  void Start(float seconds);
  [[nodiscard]] float Width() const;  ///< seconds
  void Width(float seconds);
  [[nodiscard]] float PLevel() const;  ///< level of positive half waves, percent of full scale
  void PLevel(float percent);
  [[nodiscard]] float NLevel() const;  ///< level of negative half waves, percent of full scale
  void NLevel(float percent);
  [[nodiscard]] std::int32_t GetReferenceGate()
      const;  ///< gate id that the start is counted from, -1 none
  [[nodiscard]] ggate_EnumGateRef Ref() const;
  [[nodiscard]] ggate_EnumPeakSelection PeakSelection() const;

 private:
  [[nodiscard]] float Read(float CGGateTypeDescr::*field) const;
  void Store(float CGGateTypeDescr::*field, float value);
};
