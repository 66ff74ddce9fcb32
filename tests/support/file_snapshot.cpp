#include "tests/support/file_snapshot.h"

#include <vector>

#include "platform/kvtiff19/format.h"
#include "platform/kvtiff19/items.h"

namespace utdata::test {
namespace {

using namespace SCFile;

std::string Hex(std::span<const std::byte> bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const std::byte each : bytes) {
    text.push_back(digits[std::to_integer<unsigned>(each) >> 4]);
    text.push_back(digits[std::to_integer<unsigned>(each) & 15]);
  }
  return text;
}

std::string Value(Node* group, std::uint32_t index, std::uint32_t type, std::uint32_t count) {
  if (type == value_Block) {
    std::uint64_t size = 0;
    if (const int status = file_BlockInfo(group, index, nullptr, &size))
      return "status " + std::to_string(status);
    std::vector<std::byte> bytes(static_cast<std::size_t>(size));
    if (const int status = file_BlockRead(group, index, 0, size, bytes.data()))
      return "status " + std::to_string(status);
    return std::to_string(size) + " bytes " + std::to_string(kvtiff19::Checksum(bytes));
  }
  const std::size_t element = type == value_Text ? sizeof(wchar_t) : kvtiff19::ElementSize(type);
  std::vector<std::byte> bytes(count * element);
  if (const int status = file_IndexValueRead(group, index, type, bytes.data(), &count))
    return "status " + std::to_string(status);
  return Hex(bytes);
}

void Tell(Node* parent, std::string& text, std::string indent) {
  std::vector<wchar_t> name(kvtiff19::maxNameLength + 1);
  for (std::uint32_t index = 0; index < file_ItemNbrGet(parent); ++index) {
    std::uint32_t code = 0, kind = 0, count = 0, key = 0, type = 0;
    const int status = file_ItemInfo(parent,
                                     index,
                                     &code,
                                     &kind,
                                     &count,
                                     &key,
                                     name.data(),
                                     static_cast<std::uint32_t>(name.size()));
    if (status || file_ItemValueType(parent, index, &type)) {
      text += indent + "status " + std::to_string(status) + "\n";
      continue;
    }
    text += indent + std::to_string(code) + " type " + std::to_string(type) + " count " +
            std::to_string(count) + " ";
    if (kind == kind_Value) {
      text += Value(parent, index, type, count) + "\n";
      continue;
    }
    static_cast<void>(kvtiff19::AppendUtf8(text, name.data()));
    text += "\n";
    GroupHandle group = nullptr;
    if (const int refused = file_GroupOpen(parent, &group, key)) {
      text += indent + "  status " + std::to_string(refused) + "\n";
    } else {
      Tell(group, text, indent + "  ");
    }
  }
}

}  // namespace

std::string Snapshot(Node* parent) {
  std::string text;
  Tell(parent, text, "");
  return text;
}

std::optional<std::string> SnapshotOf(const std::wstring& path) {
  FileHandle file = nullptr;
  if (file_OpenReadOnly(path.c_str(), &file)) return std::nullopt;
  std::string text = Snapshot(file);
  file_Close(file);
  return text;
}

}  // namespace utdata::test
