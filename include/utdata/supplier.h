// What a host implements so that library objects can call its document. The library never creates,
// owns or deletes an implementation: it stores and calls the pointers it is given. Calls come on
// the thread that called the library.
#pragma once

#include <cstdint>

#include "interfaces/export.h"
#include "interfaces/pellam.h"

class CFContTypeFileDescr;
class CFSet;
class CTableFactory;
class CVolumeSet;
struct stDefectExtern;

/// The host's document: owner of one opened inspection.
class UTDATA_API IGDataSupplier : public virtual IPellamSupplier {
 public:
  IGDataSupplier() = default;
  IGDataSupplier(const IGDataSupplier&) : IPellamSupplier() {}
  IGDataSupplier(IGDataSupplier&&) noexcept : IPellamSupplier() {}
  IGDataSupplier& operator=(const IGDataSupplier& other) {
    IPellamSupplier::operator=(other);
    return *this;
  }
  IGDataSupplier& operator=(IGDataSupplier&& other) noexcept {
    IPellamSupplier::operator=(other);
    return *this;
  }

  /// The document's file set, or null.
  virtual CFSet* GetFileSet() = 0;
  /// The document's look-up-table factory, or null: data groups then have no look-up tables.
  virtual CTableFactory* GetTableFactory() = 0;
  /// The document's volume set, or null. The library never calls it.
  virtual CVolumeSet* GetVolumeSet() = 0;
  /// The document's loaded file, or null. The library never calls it.
  virtual CFContTypeFileDescr* GetFileDescriptor() = 0;
  /// A data item was added to the file set. Called while that file set's writer side is held; so
  /// are GetFileSet and HandleParameterRequest while the file set makes an item. Such a call may
  /// query the set and edit items, since its thread is granted both sides again. It must not change
  /// the set (add, remove, replace, clear flags), nor wait for another thread that uses it.
  /// @param hasPatch 1 when the data group's patch id is not 0, else 0
  virtual void OnDataGroupAdded(std::int32_t hasPatch) = 0;
};

/// A host's defect table, for other parts of the host: the library calls none of it. Indices count
/// from 0; records stay the table's; operations that return int return 0 on success and -1 on
/// failure.
class UTDATA_API IDefectTableService {
 public:
  IDefectTableService() = default;
  IDefectTableService(const IDefectTableService&) = default;
  IDefectTableService& operator=(const IDefectTableService&) = default;

  virtual std::uint32_t GetDefectQty() = 0;
  virtual stDefectExtern* GetDefect(std::uint32_t index) = 0;
  virtual stDefectExtern* FindDefect(std::uint32_t number) = 0;
  virtual int AddDefect(const stDefectExtern& defect) = 0;
  virtual int InsertDefect(std::uint32_t index, const stDefectExtern& defect) = 0;
  virtual int ReplaceDefect(std::uint32_t index, const stDefectExtern& defect) = 0;
  virtual int MoveDefect(std::uint32_t from, std::uint32_t to) = 0;
  virtual int RemoveDefect(std::uint32_t index) = 0;
  virtual void RemoveAllDefects() = 0;
  virtual int RenumberDefects(std::uint32_t first) = 0;
  virtual int SelectDefect(std::uint32_t index) = 0;
  virtual std::int32_t GetSelectedDefect() = 0;  ///< -1 when none is selected
  virtual void ClearSelection() = 0;
  virtual bool IsModified() = 0;
  virtual void SetModified(bool modified) = 0;
  virtual bool IsReadOnly() = 0;
  virtual void BeginUpdate() = 0;
  virtual void EndUpdate() = 0;

 protected:
  ~IDefectTableService() = default;
};
