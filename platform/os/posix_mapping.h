// Mapped memory of the machine's own file system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "interfaces/os.h"

namespace utdata::os {

/// File::Map.
[[nodiscard]] Error MapPrivately(int descriptor,
                                 std::uint64_t offset,
                                 std::size_t size,
                                 std::unique_ptr<Mapping>& mapping);
/// The mapping of a file that has `size` bytes at least; the descriptor stays the caller's.
[[nodiscard]] Error NewFileMapping(int descriptor,
                                   std::uint64_t size,
                                   std::unique_ptr<FileMapping>& mapping);
/// FileSystem::Reserve.
[[nodiscard]] Error ReserveRange(std::size_t size, std::unique_ptr<AddressRange>& range);

}  // namespace utdata::os
