// What a write says of itself: when it was made, by what program, by whom and why.
#include <utility>

#include "platform/kvtiff19/guard.h"

namespace utdata::kvtiff19 {
namespace {

/// What is said of whoever says nothing.
const SCFile::Signature& LibrarySignature() {
  static const SCFile::Signature& library =
      *new SCFile::Signature{L"libutdata", L"" UTDATA_LIBRARY_VERSION, {}, {}};
  return library;
}

thread_local const SCFile::Signature* currentSignature = nullptr;

struct TextItem {
  SCFile::SignatureItem code;
  std::wstring SCFile::Signature::*text;
};
constexpr TextItem textItems[] = {{SCFile::sign_Program, &SCFile::Signature::program},
                                  {SCFile::sign_Version, &SCFile::Signature::version},
                                  {SCFile::sign_Author, &SCFile::Signature::author},
                                  {SCFile::sign_Reason, &SCFile::Signature::reason}};

int Sign(SCFile::GroupHandle top) {
  const std::int64_t now = os::CurrentSurroundings().Now();
  int status = SCFile::file_ItemValueWrite(top, SCFile::sign_When, SCFile::value_Int64, 1, &now);
  const SCFile::Signature& given = currentSignature ? *currentSignature : LibrarySignature();
  const SCFile::Signature& program = given.program.empty() ? LibrarySignature() : given;
  for (const TextItem& item : textItems) {
    const bool isOfProgram = item.code == SCFile::sign_Program || item.code == SCFile::sign_Version;
    const std::wstring& text = (isOfProgram ? program : given).*item.text;
    if (status != SCFile::status_Ok || text.empty()) continue;
    status = SCFile::file_ItemValueWrite(top,
                                         item.code,
                                         SCFile::value_Text,
                                         static_cast<std::uint32_t>(text.size() + 1),
                                         text.c_str());
  }
  return status;
}

/// Takes an item over that says something of its write, and has the type for it.
int TakeItem(const Node* top, std::uint32_t index, SCFile::WriteSignature& signature) {
  std::uint32_t code = 0, kind = 0, count = 0, type = 0;
  if (const int status =
          SCFile::file_ItemInfo(top, index, &code, &kind, &count, nullptr, nullptr, 0))
    return status;
  if (kind != SCFile::kind_Value) return SCFile::status_Ok;
  if (const int status = SCFile::file_ItemValueType(top, index, &type)) return status;
  if (code == SCFile::sign_When && type == SCFile::value_Int64 && count == 1 && !signature.when) {
    std::int64_t when = 0;
    const int status = SCFile::file_IndexValueRead(top, index, type, &when, &count);
    signature.when = when;
    return status;
  }
  for (const TextItem& item : textItems) {
    std::wstring& text = signature.by.*item.text;
    if (item.code != code || type != SCFile::value_Text || !text.empty()) continue;
    text.resize(count);
    const int status = SCFile::file_IndexValueRead(top, index, type, text.data(), &count);
    text.resize(text.find(L'\0') == text.npos ? text.size() : text.find(L'\0'));
    return status;
  }
  return SCFile::status_Ok;
}

}  // namespace
}  // namespace utdata::kvtiff19

namespace SCFile {

const char* file_SignatureItemName(std::uint32_t itemCode) noexcept {
  static constexpr const char* names[] = {"", "when", "program", "version", "author", "reason"};
  return itemCode < std::size(names) ? names[itemCode] : "";
}

SigningScope::SigningScope(Signature signature)
    : m_signature(std::move(signature)),
      m_before(std::exchange(utdata::kvtiff19::currentSignature, &m_signature)) {}

SigningScope::~SigningScope() { utdata::kvtiff19::currentSignature = m_before; }

int file_Sign(GroupHandle top) {
  using namespace utdata::kvtiff19;
  if (!IsGroup(top)) return BadCall("not a group");
  return Guarded([&] { return Sign(top); }, top->file);
}

int file_ReadSignature(const Node* top, WriteSignature* signature) {
  using namespace utdata::kvtiff19;
  if (!IsGroup(top) || !signature) return BadCall("not a group");
  return Guarded([&] {
    *signature = {};
    for (std::uint32_t index = 0; index < file_ItemNbrGet(top); ++index)
      if (const int status = TakeItem(top, index, *signature)) return status;
    return static_cast<int>(status_Ok);
  });
}

}  // namespace SCFile
