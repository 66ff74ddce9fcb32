// The catalogue of an inspection file: its group types, and every field of their descriptors with
// its item code, value, unit, range, choices and meaning. Everything that stores, matches, shows or
// edits fields takes what it needs of them from here.
//
// The catalogue is constant and may be read by several threads.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "kvtiff19.h"

namespace SCFile {

/// What a field is to its group.
enum class FieldRole : std::uint8_t {
  Value,
  Fixed,  ///< stays as it was acquired: another value would give the samples another meaning
  Id,     ///< one of the ids that name the group
  Match,  ///< no id; a modification and the group that it modifies agree in it all the same
  Kind    ///< as Match, but a group in which it is 0 agrees with any
};

/// What a field holds.
enum class FieldKind : std::uint8_t {
  Quantity,  ///< a number with a fraction
  Whole,     ///< a whole number
  Choice,    ///< a number that stands for one of some names
  Color,     ///< 0xRRGGBB
  Text,
  Numbers,  ///< several numbers
  Block     ///< the samples of a data group, which are no member of its descriptor
};

struct FieldChoice {
  std::uint32_t value;
  std::string_view name;
};

struct FieldUnit {
  std::string_view stored;  ///< "m"; empty for none
  std::string_view shown;   ///< as people read it: "mm"
  double scale = 1;         ///< stored units in one that is shown
};

/// The unit in which quantities of a base unit are shown.
[[nodiscard]] UTDATA_API const FieldUnit& UnitOf(kvt_enumUnits units);

/// What the values of a field are.
struct FieldForm {
  FieldKind kind = FieldKind::Numbers;
  FieldRole role = FieldRole::Value;
  FieldUnit unit = {};           ///< none when another field says it
  std::string_view unitOf = {};  ///< the field that says the unit, when it is that of an axis
  double minimum = 0;            ///< of sensible values, in the unit that is shown
  double maximum = 0;
  std::span<const FieldChoice> choices = {};
  std::string_view idName = {};  ///< of an id: what people call it, "sub_channel"

  /// Whether it says which group a modification belongs to.
  [[nodiscard]] constexpr bool IsKey() const { return role >= FieldRole::Id; }
  /// Whether people may change it.
  [[nodiscard]] constexpr bool IsEditable() const {
    return role == FieldRole::Value && kind != FieldKind::Numbers;
  }
};

/// How a field of a descriptor is read and changed, in stored units; null where it has no value of
/// that form. The descriptor is of the class that the field's group type belongs to.
struct FieldAccess {
  double (*number)(const void* descriptor) = nullptr;
  void (*setNumber)(void* descriptor, double value) = nullptr;
  std::wstring (*text)(const void* descriptor) = nullptr;
  bool (*setText)(void* descriptor, std::wstring_view value) = nullptr;  ///< false: does not fit
  std::vector<double> (*numbers)(const void* descriptor) = nullptr;
  /// False: not as many as the field takes, or one that it cannot hold.
  bool (*setNumbers)(void* descriptor, std::span<const double> values) = nullptr;
};

/// One field of a group descriptor.
struct FieldInfo : FieldForm {
  std::string_view key;      ///< the member's name
  std::string_view meaning;  ///< may be empty
  std::uint16_t code;        ///< of the item that stores it
  std::uint8_t valueType;    ///< ValueType of the item
  std::uint32_t minCount;    ///< elements of the item; of a text its UTF-8 bytes
  std::uint32_t maxCount;    ///< 0xFFFFFFFF: no bound
  std::uint32_t multipleOf;  ///< of the elements
  FieldAccess access;
};

/// What a group type is called, and which codes it has.
struct GroupTypeRow {
  std::string_view key;   ///< in results and on command lines: "sub_channel"
  std::string_view name;  ///< "sub-channel"
  std::uint16_t primaryCode;
  const wchar_t* primaryName;   ///< of a group that is written whole
  std::uint16_t modifierCode;   ///< of later modifications; the primary one when it has no other
  const wchar_t* modifierName;  ///< empty: not named
  bool isModified;              ///< whether loading applies its modifications

  /// A type without one stores modifications as whole groups, under the primary code; they follow,
  /// in their list, what they modify.
  [[nodiscard]] constexpr bool HasModifierCode() const { return modifierCode != primaryCode; }
};

template <class Descriptor>
struct GroupType : GroupTypeRow {};

/// The types, in the order in which a file descriptor lists them. The defect table is none: its
/// records are not a family's.
inline constexpr std::tuple groupTypes = {
    GroupType<CGDataTypeFDD>{
        {"data", "data group", 10004, L"Data Group", 10018, L"Modified Data", true}},
    GroupType<CGChanTypeDescr>{
        {"channel", "channel", 10009, L"Channel", 10017, L"Modified Channel", true}},
    GroupType<CGSubchanTypeDescr>{
        {"sub_channel", "sub-channel", 10020, L"Sub Channel", 10021, L"", true}},
    GroupType<CGGateTypeDescr>{{"gate", "gate", 10224, L"Gate", 10025, L"Modified Gate", true}},
    GroupType<CGPatchTypeDescr>{{"patch", "patch", 10007, L"Patch", 10014, L"", true}},
    GroupType<CGProbeTypeDescr>{{"probe", "probe", 10008, L"Probe", 10016, L"", true}},
    GroupType<CGSpecdimTypeDescr>{
        {"specimen_dimensions", "specimen dimensions", 10006, L"Specdim", 10013, L"", false}},
    GroupType<CGSpecinfTypeDescr>{
        {"specimen_information", "specimen information", 10028, L"Specinf", 10029, L"", true}},
    GroupType<CGSpecmatTypeDescr>{
        {"specimen_material", "specimen material", 10026, L"Specmat", 10027, L"", true}},
    GroupType<CGWeldTypeDescr>{{"weld", "weld", 10022, L"Weld", 10023, L"", true}},
    GroupType<CGInfoTypeDescr>{{"info", "info", 15697, L"Info", 10019, L"", false}},
    GroupType<CGContourTypeDescr>{
        {"contour", "contour", 10011, L"Contour", 10032, L"Modified Contour", true}},
    GroupType<CGRefadjTypeDescr>{
        {"reference_adjustment", "reference adjustment", 10031, L"Refadj", 10034, L"", true}},
    GroupType<CGMeshTypeDescr>{{"mesh", "mesh", 10030, L"Mesh", 10033, L"", false}},
    GroupType<CGSpecdefTypeDescr>{
        {"specimen_definition", "specimen definition", 10035, L"Specdef", 10036, L"", false}},
    GroupType<CGDacTypeDescr>{{"dac", "DAC curve", 10010, L"DAC", 10039, L"Modified DAC", true}},
    GroupType<CGWeldScanPlanDescr>{
        {"weld_scan_plan", "weld scan plan", 10047, L"WeldScanPlan", 10047, L"", false}},
    GroupType<CGWeldFillDescr>{{"weld_fill", "weld fill", 10048, L"WeldFill", 10048, L"", false}}};

template <class Descriptor>
inline constexpr const GroupType<Descriptor>& groupTypeOf =
    std::get<GroupType<Descriptor>>(groupTypes);

/// The operations of a family in one shape; what each does is its own.
template <class Descriptor, auto allocate, auto remove, auto read, auto write>
struct FamilyOperations {
  static Descriptor* Allocate(int mode, const wchar_t* name) { return allocate(mode, name); }
  static void Delete(Descriptor* descriptor, int whole) { remove(descriptor, whole); }
  static int Read(GroupHandle group, Descriptor* descriptor, bool modifier) {
    if constexpr (std::is_invocable_v<decltype(read), GroupHandle, Descriptor*, bool>)
      return read(group, descriptor, modifier);
    else
      return read(group, descriptor);
  }
  static int Write(GroupHandle group,
                   const Descriptor* base,
                   const Descriptor* descriptor,
                   int flag) {
    if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>)
      return write(group, base, descriptor, flag);
    else
      return write(group, base, descriptor);
  }
};

/// The family of a descriptor.
template <class Descriptor>
struct Family;
#define UTDATA_FAMILY(prefix, Descriptor)                              \
  template <>                                                          \
  struct Family<Descriptor> : FamilyOperations<Descriptor,             \
                                               prefix##_Allocate,      \
                                               prefix##_Delete,        \
                                               prefix##_ReadGroupInfo, \
                                               prefix##_WriteGroupInfo> {};
UTDATA_FAMILY(gdata, CGDataTypeFDD)
UTDATA_FAMILY(gchan, CGChanTypeDescr)
UTDATA_FAMILY(gsubchan, CGSubchanTypeDescr)
UTDATA_FAMILY(ggate, CGGateTypeDescr)
UTDATA_FAMILY(gpatch, CGPatchTypeDescr)
UTDATA_FAMILY(gprobe, CGProbeTypeDescr)
UTDATA_FAMILY(gspecdim, CGSpecdimTypeDescr)
UTDATA_FAMILY(gspecinf, CGSpecinfTypeDescr)
UTDATA_FAMILY(gspecmat, CGSpecmatTypeDescr)
UTDATA_FAMILY(gweld, CGWeldTypeDescr)
UTDATA_FAMILY(ginfo, CGInfoTypeDescr)
UTDATA_FAMILY(gcontour, CGContourTypeDescr)
UTDATA_FAMILY(grefadj, CGRefadjTypeDescr)
UTDATA_FAMILY(gmesh, CGMeshTypeDescr)
UTDATA_FAMILY(gspecdef, CGSpecdefTypeDescr)
UTDATA_FAMILY(gdac, CGDacTypeDescr)
UTDATA_FAMILY(gweldsp, CGWeldScanPlanDescr)
UTDATA_FAMILY(gweldFill, CGWeldFillDescr)
#undef UTDATA_FAMILY

/// A group type with its fields, in the order of their item codes.
struct GroupTypeInfo : GroupTypeRow {
  std::span<const FieldInfo> fields;

  /// Null when there is none.
  [[nodiscard]] UTDATA_API const FieldInfo* Find(std::string_view fieldKey) const;
  [[nodiscard]] UTDATA_API const FieldInfo* Find(std::uint32_t itemCode) const;
};

/// All group types, in the order of `groupTypes`.
[[nodiscard]] UTDATA_API std::span<const GroupTypeInfo> file_GroupTypes();
/// The group type that has a code, be it its primary or its modifier code; null when none has.
[[nodiscard]] UTDATA_API const GroupTypeInfo* file_GroupType(std::uint32_t typeCode);
/// The type of a descriptor's class.
template <class Descriptor>
[[nodiscard]] const GroupTypeInfo& file_GroupTypeOf() {
  return *file_GroupType(groupTypeOf<Descriptor>.primaryCode);
}

}  // namespace SCFile
