#include "platform/os/path.h"

#include <cstdint>

#include "interfaces/os.h"

namespace utdata::os {

std::string NarrowPath(std::wstring_view path) {
  std::string bytes;
  bytes.reserve(path.size());
  PutPath(bytes, path);
  return bytes;
}

std::wstring WidePath(std::string_view path) {
  std::wstring text;
  text.reserve(path.size());
  while (!path.empty()) {
    const auto byte = static_cast<unsigned char>(path.front());
    if (const char32_t character = TakeUtf8(path); character != notACharacter) {
      PutWide(text, character);
    } else {
      text.push_back(static_cast<wchar_t>(0xDC00 + byte));
    }
  }
  return text;
}

PathParts SplitPath(std::wstring_view path) {
  PathParts parts;
  const std::size_t separator = path.find_last_of(L'/');
  const std::size_t nameStart = separator == std::wstring_view::npos ? 0 : separator + 1;
  parts.directory = path.substr(0, nameStart);
  const std::wstring_view file = path.substr(nameStart);
  const std::size_t dot = file == L".." ? 0 : file.find_last_of(L'.');
  const bool hasExtension =
      dot != std::wstring_view::npos && dot != 0;  // a leading dot only hides the file
  parts.name = file.substr(0, hasExtension ? dot : file.size());
  parts.extension = hasExtension ? file.substr(dot) : std::wstring_view();
  return parts;
}

}  // namespace utdata::os
