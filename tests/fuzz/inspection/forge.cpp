#include "tests/fuzz/inspection/forge.h"

#include <algorithm>
#include <variant>

#include "tests/support/file_forge.h"

namespace utdata::fuzz {
namespace {

using test::ByteText;
using test::FileForge;

kvtiff19::Bytes AsBytes(const std::string& text) { return std::as_bytes(std::span(text)); }

void Pad(ByteText& text) {
  while (text.Bytes().size() % 4 != 0) text.Put(std::uint8_t{0});
}

/// The body of a group; blocks go into the file before it.
class GroupEncoder {
 public:
  explicit GroupEncoder(FileForge& file) : m_file(file) {}

  [[nodiscard]] std::vector<std::byte> Encode(const PlannedGroup& group) {
    ByteText body;
    body.Head(static_cast<std::uint32_t>(group.name.size()),
              static_cast<std::uint32_t>(group.parts.size()));
    body.Text(group.name);
    Pad(body);
    for (const auto& part : group.parts) std::visit([&](const auto& is) { Add(body, is); }, part);
    return body.Bytes();
  }

 private:
  static void Add(ByteText& body, const PlannedItem& item) {
    body.Item(item.code, item.type, item.count).Append(AsBytes(item.data));
    Pad(body);
  }
  void Add(ByteText& body, const PlannedBlock& block) {
    const auto reference = EncodeBlockRef(m_file.AddBlock(AsBytes(block.bytes), block.chunk));
    body.Item(block.code, SCFile::value_Block, 1).Append(reference);
  }
  void Add(ByteText& body, const PlannedGroup& group) {
    const std::vector<std::byte> inner = Encode(group);
    body.Item(group.code, 0, static_cast<std::uint32_t>(inner.size())).Append(inner);
  }

  FileForge& m_file;
};

SCFile::FileIdentity IdentityOf(std::size_t file) {
  SCFile::FileIdentity identity;
  identity.fill(static_cast<std::uint8_t>(0x80 + file));
  return identity;
}

std::wstring PathOf(std::uint32_t number) {
  const std::wstring name = std::wstring(folder, folder + std::char_traits<char>::length(folder));
  if (number == 0) return name + L"weld.fpd";
  return name + L"weld.A" + static_cast<wchar_t>(L'0' + number / 10) +
         static_cast<wchar_t>(L'0' + number % 10);
}

/// What the file before a companion was when the companion was written.
struct Predecessor {
  SCFile::FileState now;
  SCFile::FileState old;  ///< one commit before, where there was one
};

SCFile::FileOrigin OriginOf(const PlannedFile& file, std::size_t place, const Predecessor& before) {
  SCFile::FileOrigin origin;
  origin.identity = IdentityOf(place);
  if (file.number == 0) return origin;
  origin.number = file.number + (file.fault == OriginFault::OtherNumber ? 1 : 0);
  origin.base = IdentityOf(file.fault == OriginFault::OtherBase ? 90 : 0);
  origin.predecessor = file.fault == OriginFault::OldState ? before.old : before.now;
  if (file.fault == OriginFault::OtherPredecessor) origin.predecessor.identity = IdentityOf(91);
  return origin;
}

}  // namespace

std::vector<ForgedFile> Forge(const std::vector<PlannedFile>& files) {
  std::vector<ForgedFile> forged;
  Predecessor before;
  for (const PlannedFile& file : files) {
    const SCFile::FileOrigin origin = OriginOf(file, forged.size(), before);
    FileForge forge(origin);
    before = {};
    const auto note = [&] {
      before.old = before.now;
      before.now = {origin.identity, forge.record.number, ChecksumOf(forge.record)};
    };
    note();
    before.old = before.now;
    for (const PlannedGroup& write : file.writes) {
      const std::vector<std::byte> body = GroupEncoder(forge).Encode(write);
      forge.AddTop(body, 0, write.code);
      forge.record.number = forge.record.segmentCount;
      note();
    }
    forged.push_back({PathOf(file.number), forge.Finish()});
  }
  return forged;
}

std::size_t Damage(std::vector<std::byte>& bytes, const PlannedDamage& damage) {
  const std::size_t from =
      damage.isInData && bytes.size() > kvtiff19::dataStart ? kvtiff19::dataStart : 0;
  const std::size_t at = from + damage.place % (bytes.size() - from);
  switch (damage.kind) {
    case PlannedDamage::Kind::Change:
      bytes[at] ^= static_cast<std::byte>(damage.change);
      return at;
    case PlannedDamage::Kind::Cut:
      bytes.resize(at);
      return at;
    case PlannedDamage::Kind::Tail:
      break;
  }
  const std::size_t end = bytes.size();
  bytes.insert(bytes.end(), 1 + damage.place % 5000, static_cast<std::byte>(damage.change));
  return end;
}

}  // namespace utdata::fuzz
