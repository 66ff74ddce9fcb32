// Sample values as text that a page carries within itself.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace utdata::program {

/// Packs 16-bit values: each as its difference from the one before, modulo 2^16; of the differences
/// all low bytes, then all high bytes; these as a zlib stream, in base64. Echoes are smooth, so
/// that this is far shorter than the values are. Shows progress on long work.
[[nodiscard]] std::string PackValues(std::span<const std::uint16_t> values, bool quiet);

/// A length in whole steps, as tables hold it: signed, within 16 bits.
[[nodiscard]] std::uint16_t InSteps(double length, double step);
/// The step for lengths up to the longest: 0.01, or what lets all of them fit 16 bits.
[[nodiscard]] double StepFor(double longest);

}  // namespace utdata::program
