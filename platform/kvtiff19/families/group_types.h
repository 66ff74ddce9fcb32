// The group types that are stored as field tables, with their two codes.
#pragma once

#include <cstdint>
#include <tuple>

#include "interfaces/kvtiff19.h"

namespace utdata::kvtiff19 {

/// The type of a group and of its modifications. Types without a modifier code write modifications
/// under the primary one.
template <class Descriptor>
struct GroupType {
  using Record = Descriptor;

  const char* title;
  std::uint16_t primary;
  std::uint16_t modifier;
};

/// In the order in which a file descriptor lists them.
inline constexpr std::tuple groupTypes = {
    GroupType<CGDataTypeFDD>{"Data group", 10004, 10018},
    GroupType<CGChanTypeDescr>{"Channel", 10009, 10017},
    GroupType<CGSubchanTypeDescr>{"Sub-channel", 10020, 10021},
    GroupType<CGGateTypeDescr>{"Gate", 10224, 10025},
    GroupType<CGPatchTypeDescr>{"Patch", 10007, 10014},
    GroupType<CGProbeTypeDescr>{"Probe", 10008, 10016},
    GroupType<CGSpecdimTypeDescr>{"Specimen dimensions", 10006, 10013},
    GroupType<CGSpecinfTypeDescr>{"Specimen information", 10028, 10029},
    GroupType<CGSpecmatTypeDescr>{"Specimen material", 10026, 10027},
    GroupType<CGWeldTypeDescr>{"Weld", 10022, 10023},
    GroupType<CGInfoTypeDescr>{"Info", 15697, 10019},
    GroupType<CGContourTypeDescr>{"Contour", 10011, 10032},
    GroupType<CGRefadjTypeDescr>{"Reference adjustment", 10031, 10034},
    GroupType<CGMeshTypeDescr>{"Mesh", 10030, 10033},
    GroupType<CGSpecdefTypeDescr>{"Specimen definition", 10035, 10036},
    GroupType<CGDacTypeDescr>{"DAC curve", 10010, 10039},
    GroupType<CGWeldScanPlanDescr>{"Weld scan plan", 10047, 10047},
    GroupType<CGWeldFillDescr>{"Weld fill", 10048, 10048}};

}  // namespace utdata::kvtiff19
