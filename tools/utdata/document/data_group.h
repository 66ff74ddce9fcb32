// What the program says about a data group: labels, names of its kinds, and its record as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "interfaces/kvtiff19.h"

namespace utdata::program {

/// The gate that watches the coupling, not the part.
inline constexpr std::uint32_t couplingGate = 140;

/// Gives a record without a bookmark type (0 or all ones) the one that its kind calls for: coupling
/// for gate 140, else by multi-channel and TOFD.
void AssignBookmarkType(CGDataTypeFDD& group);

/// Whether the group gathers the sub-channel groups of its channel.
[[nodiscard]] bool IsMaster(const CGDataTypeFDD& group);
/// The data class without the master bit.
[[nodiscard]] std::uint32_t PlainClass(const CGDataTypeFDD& group);

/// Whether the samples are amplitudes, and percent and dB mean something.
[[nodiscard]] bool HoldsAmplitudes(const CGDataTypeFDD& group);

/// Channel and gate by name where they have one, else by number: "C 1 G0 ", "Left A ".
[[nodiscard]] std::string Label(const CGDataTypeFDD& group);
/// Channel and gate by number.
[[nodiscard]] std::string IdLabel(const CGDataTypeFDD& group);

[[nodiscard]] std::string ClassName(const CGDataTypeFDD& group);  ///< "A-scan"
[[nodiscard]] std::string SampleTypeName(
    const CGDataTypeFDD& group);  ///< "u16"; "type 9" for one without a name

/// The SHA-256 of a group's samples as mapped, 64 hexadecimal digits; empty when it has none.
/// @param quiet shows no progress
[[nodiscard]] std::string SamplesHash(const CGDataTypeFDD& group, bool quiet);

/// The record as an object; quantities in base units.
[[nodiscard]] nlohmann::ordered_json DataGroupJson(const CGDataTypeFDD& group);

/// A number whose shortest decimal form is that of the 32-bit value: 0.001, not
/// 0.0010000000474974513.
[[nodiscard]] nlohmann::ordered_json JsonNumber(float value);

}  // namespace utdata::program
