// Paths between wide characters and the bytes that the operating system wants.
#pragma once

#include <string>
#include <string_view>

#include "interfaces/export.h"

namespace utdata::os {

/// The system's bytes of a path: UTF-8. A byte of a name that is not UTF-8 travels in wide texts as
/// U+DC80 to U+DCFF and comes back as that byte. Characters that no name can hold become '?'.
[[nodiscard]] UTDATA_API std::string NarrowPath(std::wstring_view path);
/// The inverse of NarrowPath.
[[nodiscard]] UTDATA_API std::wstring WidePath(std::string_view path);

}  // namespace utdata::os
