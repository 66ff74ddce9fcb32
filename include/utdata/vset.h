// The volume of an inspection: its six axes with their limits, the base units, and every unit set.
//
// One volume set per document, owned by the host. Axes are numbered as kvt_enumAxis, 0 to 5. Data
// items that hold a unit set must be destroyed before it. No lock: the host serialises use.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <utility>

#include "utdata/axe.h"
#include "utdata/unitset.h"

class IGDataSupplier;

class UTDATA_API CVolumeSet {
 public:
  /// @param document the host's document, not owned; a missing one raises an assertion
  /// The unit systems and names are not used. May let std::bad_alloc pass.
  CVolumeSet(IGDataSupplier* document,
             unit_enumUnits firstSystem,
             const wchar_t* firstName,
             unit_enumUnits secondSystem,
             const wchar_t* secondName);
  CVolumeSet(const CVolumeSet&) = delete;
  CVolumeSet& operator=(const CVolumeSet&) = delete;
  /// Destroys every unit set with its units, whatever its reference count.
  virtual ~CVolumeSet();

  /// The unit set of an identity: an existing one with equal kind and first three values, its count
  /// raised, or a new one with count 1. Identities of kind 6 are never shared.
  /// @param created receives 1 for a new set, else 0; may be null
  /// @return owned here; given back with vol_DeleteUnitSet. Null without memory
  [[nodiscard]] CUnitSet* vol_CreateUnitSet(const vset_groupId& identity, int* created);
  /// Gives back one reference; the set is destroyed with its last one. Clears the caller's pointer.
  /// A set that another volume set made, or nobody did, is reported, loses a reference and is not
  /// destroyed.
  void vol_DeleteUnitSet(CUnitSet** set);

  /// The axis, or null outside 0 to 5.
  [[nodiscard]] CAxe* vol_GetAxis(kvt_enumAxis axis);
  /// The first base unit of an axis, or null when it has none (or outside 0 to 5).
  [[nodiscard]] CUnit* vol_GetBaseUnit(kvt_enumAxis axis) const;
  /// Sets the limits of an axis, when both lie strictly between -1e15 and 1e15 and the axis within
  /// 0 to 5; else changes nothing.
  void vol_SetLimits(kvt_enumAxis axis, double start, double end);
  /// The limits last accepted as (start, end); (0, 0) before, and outside 0 to 5.
  [[nodiscard]] std::pair<double, double> vol_GetLimits(kvt_enumAxis axis) const;
  [[nodiscard]] IGDataSupplier* vol_GetDocument() const;

  /// Fills the base units of the axes that have none: degrees on the axes named, metres on the
  /// other length axes (0, 1, 4, 5), metres of half path on the sample axis, percent on the
  /// amplitude axis.
  ///
  /// Until this is called there are no base units, and every unit converts each value to itself. A
  /// unit takes its parent when it is created: call this before the first data item is made.
  /// @param angleAxes those of 0, 1, 4 and 5 that are angles; others have no effect
  /// @return how many base units were added. May let std::bad_alloc pass; a further call adds those
  ///   that are missing then
  int vol_FillBaseUnits(std::span<const kvt_enumAxis> angleAxes = {});

 private:
  [[nodiscard]] CUnitSet* GetUnitSet(const vset_groupId& identity) const;
  void DeleteUnitListContents();

  IGDataSupplier* m_document;
  std::array<std::pair<double, double>, CUnitSet::axisQuantity> m_limits{};
  std::array<CAxe, CUnitSet::axisQuantity> m_axes;
  CUnitSet* m_baseSet = nullptr;
  CList<CUnitSet*> m_unitSets;
};
