// The units of one group: for each of six axes an ordered list of the units in which its values can
// be shown.
//
// Unit sets are made and shared by the volume set, which owns them. No lock: the host serialises
// use.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "interfaces/framework.h"
#include "interfaces/kvtiff19_types.h"
#include "utdata/unit.h"

class CVolumeSet;

/// The identity by which unit sets and look-up tables are shared.
class UTDATA_API vset_groupId {
 public:
  vset_groupId();  ///< all zeros
  vset_groupId(std::uint32_t newKind,
               std::uint32_t firstValue,
               std::uint32_t secondValue,
               std::uint32_t thirdValue,
               std::uint32_t fourthValue);
  vset_groupId(const vset_groupId&);
  vset_groupId& operator=(const vset_groupId&);
  virtual ~vset_groupId();  ///< leaves all zeros

  std::uint32_t kind =
      0;  ///< 5: a data group's look-up table; 6: a private unit set; 1 and 3: other look-up tables
  std::uint32_t first = 0;   ///< kind 5: channel id; kind 6: low 32 bits of the owner's address
  std::uint32_t second = 0;  ///< kind 5: gate id
  std::uint32_t third = 0;
  std::uint32_t fourth = 0;  ///< kind 5: 2 for data class 3, 1 for 1 and 2
};

class UTDATA_API CUnitSet : public CObject {
  DECLARE_DYNAMIC(CUnitSet)

 public:
  static constexpr std::uint32_t axisQuantity = 6;

  /// A set without lists, which takes no units: for creation by class record only.
  CUnitSet();
  /// @param identity  copied
  /// @param volumeSet where base units are looked up; not owned
  /// @param baseSet   not used
  /// May let std::bad_alloc pass.
  CUnitSet(const vset_groupId& identity, CVolumeSet* volumeSet, CUnitSet* baseSet);
  CUnitSet(const CUnitSet&) = delete;
  CUnitSet& operator=(const CUnitSet&) = delete;
  ~CUnitSet() override;  ///< destroys the units

  /// Adds the units of a family to an axis, in order, each with the volume set's base unit of that
  /// axis as parent. Times: s, us. Lengths: m, mm, in, mil. Angles: degrees, radians. Each slope
  /// and offset is `slope` and `offset` scaled to its unit. TOFD depth: the same four lengths with
  /// slope 13, offset `slope` and auxiliary factor `offset` scaled.
  /// @param auxiliary third factor of family 5
  /// @return the first unit created; null without memory, and then nothing is added; null, with an
  ///         assertion, for an axis outside 0 to 5 and for a family without units. Families 4 and 5
  ///         belong to AddAmplitudeSubUnit: here they raise an assertion, and are added
  CUnit* AddSubUnit(kvt_enumAxis axis,
                    unit_enumUnits family,
                    double slope,
                    double offset,
                    double auxiliary);

  /// Adds the percent unit and the dB unit to the amplitude axis.
  /// @param linear not 0: amplitudes are linear, percent is the reference; 0: they are logarithmic,
  ///   dB is
  /// @return the reference; null without memory, and then nothing has changed
  CUnit* AddAmplitudeSubUnit(int linear);
  /// As AddAmplitudeSubUnit, but the last percent and dB units that are there are changed instead,
  /// keeping precision and format.
  CUnit* ModifyAmplitudeSubUnit(int linear);

  /// Sets the factors of the units of a family that are there: AdjustSubUnit2 with both slopes
  /// equal.
  void AdjustSubUnit(kvt_enumAxis axis,
                     unit_enumUnits family,
                     double slope,
                     double offset,
                     double third,
                     double fourth);
  /// Sets the factors of the units of a family that are there, each scaled to its unit. Inches get
  /// three digits.
  /// @param negativeSlope used by family 8 only
  /// @param offset        of TOFD depth the constant under the root, which scales with the square
  ///   of the unit
  /// @param fourth        of TOFD depth the depth offset; of dB the auxiliary factor
  /// @param fifth         of TOFD depth the path offset
  /// An axis outside 0 to 5 or a family outside 1 to 13 raises an assertion and changes nothing.
  void AdjustSubUnit2(kvt_enumAxis axis,
                      unit_enumUnits family,
                      double positiveSlope,
                      double negativeSlope,
                      double offset,
                      double fourth,
                      double fifth);

  /// The first unit of an axis with this family and data unit; null when there is none.
  [[nodiscard]] CUnit* GetUnit(kvt_enumAxis axis,
                               unit_enumUnits family,
                               unit_enumDataUnit dataUnit) const;

  /// Appends a unit to an axis and takes it over; what is returned stays the set's.
  /// @return the unit; null without memory and, with an assertion, for an axis that the set does
  ///   not have: the unit is then destroyed
  CUnit* AppendUnit(kvt_enumAxis axis, std::unique_ptr<CUnit> unit);

  /// The units of an axis in order; null for an axis that the set does not have.
  [[nodiscard]] const CList<CUnit*>* GetUnits(kvt_enumAxis axis) const;

  [[nodiscard]] const vset_groupId& GetIdentity() const;
  [[nodiscard]] std::int32_t GetReferenceCount() const;

 private:
  friend class CVolumeSet;

  template <class Make>
  CUnit* AddMade(kvt_enumAxis axis, std::size_t quantity, Make make);
  CUnit* SetAmplitudes(int linear, CUnit* percent, CUnit* decibel);
  [[nodiscard]] CUnit* BaseUnit(kvt_enumAxis axis) const;
  [[nodiscard]] CUnit* FindLast(kvt_enumAxis axis, unit_enumUnits family) const;

  vset_groupId m_identity;
  std::int32_t m_referenceCount = 1;
  CVolumeSet* m_volumeSet = nullptr;
  POSITION m_place = nullptr;  ///< among the volume set's
  std::deque<CUnit> m_made;    ///< by the set itself: a data item has dozens of units
  std::vector<std::unique_ptr<CUnit>> m_given;                       ///< by AppendUnit
  std::array<std::unique_ptr<CList<CUnit*>>, axisQuantity> m_units;  ///< all of them
};
