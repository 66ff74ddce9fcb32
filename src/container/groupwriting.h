// Making groups. Without a status: a file remembers a failed write, and its commit then fails.
#pragma once

#include <cstdint>
#include <string_view>

#include "interfaces/kvtiff19.h"

namespace utdata::container {

/// A new child group, named where `name` is not empty; null when it could not be made. A null
/// parent makes no group.
inline SCFile::GroupHandle CreateGroup(SCFile::Node* parent,
                                       std::uint32_t code,
                                       std::wstring_view name,
                                       const wchar_t* nameAtCreation = L"") {
  SCFile::GroupHandle group = nullptr;
  if (SCFile::file_GroupCreate(parent, &group, code, nameAtCreation) != SCFile::status_Ok)
    return nullptr;
  if (!name.empty())
    SCFile::file_GroupNameSet(group, name.data(), static_cast<std::uint32_t>(name.size() + 1));
  return group;
}

}  // namespace utdata::container
