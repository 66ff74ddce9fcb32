#include "src/container/companions.h"

#include "interfaces/os.h"

namespace utdata::container {
namespace {

constexpr wchar_t letter = L'A';
constexpr int lastNumber = 99;
constexpr std::size_t driveSize = 3;
constexpr std::size_t partSize = 260;

std::wstring Name(const os::PathParts& parts, int number) {
  std::wstring name = parts.drive + parts.directory + parts.name + L'.';
  name += letter;
  name += static_cast<wchar_t>(L'0' + number / 10);
  name += static_cast<wchar_t>(L'0' + number % 10);
  return name;
}

}  // namespace

std::wstring CompanionName(const std::wstring& path, int number) {
  return Name(os::SplitPath(path), number);
}

Companions ListCompanions(const std::wstring& path) {
  const os::PathParts parts = os::SplitPath(path);
  os::FileSystem& fileSystem = os::CurrentFileSystem();
  Companions companions;
  int next = 1;
  for (; next < lastNumber; ++next) {
    std::wstring name = Name(parts, next);
    if (!fileSystem.Exists(name)) break;
    companions.names.push_back(std::move(name));
  }
  companions.gap = next < lastNumber && fileSystem.Exists(Name(parts, next + 1));
  return companions;
}

bool CompanionNameFits(const std::wstring& path) {
  const os::PathParts parts = os::SplitPath(path);
  return parts.drive.size() < driveSize && parts.directory.size() < partSize &&
         parts.name.size() < partSize && Name(parts, 1).size() < partSize;
}

}  // namespace utdata::container
