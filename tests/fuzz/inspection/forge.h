// Makes the files that a plan describes, under checksums that are right.
#pragma once

#include <string>
#include <vector>

#include "tests/fuzz/inspection/plan.h"
#include "tests/support/memory_file_system.h"

namespace utdata::fuzz {

/// In a folder that no machine has: what looks for neighbours there finds none.
inline constexpr const char* folder = "/utdata-fuzzed/";

struct ForgedFile {
  std::wstring path;
  std::vector<std::byte> bytes;
};

/// The base first.
[[nodiscard]] std::vector<ForgedFile> Forge(const std::vector<PlannedFile>& files);

/// Damages bytes that are right. @return where
std::size_t Damage(std::vector<std::byte>& bytes, const PlannedDamage& damage);

}  // namespace utdata::fuzz
