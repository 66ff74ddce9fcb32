// The typeface within the program: the bytes of DejaVu Sans, put there when the program is built.
#pragma once

#include <cstddef>
#include <span>

namespace utdata::program {

/// The whole font file.
[[nodiscard]] std::span<const std::byte> FontData();

}  // namespace utdata::program
