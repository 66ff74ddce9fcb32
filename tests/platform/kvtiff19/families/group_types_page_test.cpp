// docs/group-types.md is written from the field tables, so that it cannot drift from them. After a
// change of a table, run this test with UTDATA_WRITE_PAGES=1 in the environment to write the page
// anew.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/kvtiff19/families/group_types.h"
#include "tests/support/record_samples.h"

namespace {

using namespace utdata::kvtiff19;

constexpr const char* introduction = R"(# Group types

What the groups of an inspection file hold, type by type: the codes of the group, and for each item its code, its value type, how
many elements it has, and what it means. [file-format.md](file-format.md) tells how groups, items and values are laid out in bytes.

- A group whose code is the *primary* one holds a record whole: every item of the table, in the table's order.
- A group whose code is the *modifier* one holds a later modification: the items marked *key*, which say which record is modified, and
  those whose value changed. Types without a modifier code of their own keep modifications under the primary one.
- Each item comes once at most. Items with other codes may stand between them and are skipped.
- An item code is never given another meaning.
- The elements of a text are its UTF-8 bytes; "up to 124 bytes" also means at most 31 characters. Lists of points and triples hold their numbers one after the other.
- Angles are in degrees, levels in percent of full scale, gains in decibel; bits and colours are unsigned numbers.
)";

constexpr const char* defects = R"(
## Defect table: 10045, no modifier

One child group of code 10044 for each record; its items are the record's values. Those that are missing are zero or empty.

| item | type | elements | field | unit or meaning |
|---|---|---|---|---|
| 1 to 6 | double | 1 | first to sixth value | |
| 7 | text | any | first text | |
| 8 | text | any | second text | |
| 9 | uint32 | 1 | first number | |
| 10 | uint32 | 1 | number of a sub-entry, which it starts | |
| 11 | text | any | first text of the sub-entry | |
| 12 | text | any | second text of the sub-entry, which it ends | |
| 13 | uint32 | 1 | second number | |
| 14 | uint32 | 1 | third number | |
| 15, 16 | double | 1 | seventh and eighth value | |

Items 10, 11 and 12 come once for each sub-entry, in this order.
)";

const char* TypeName(std::uint8_t type) {
  switch (type) {
    case SCFile::value_Int32:
      return "int32";
    case SCFile::value_UInt32:
      return "uint32";
    case SCFile::value_Int64:
      return "int64";
    case SCFile::value_Float:
      return "float";
    case SCFile::value_Double:
      return "double";
    case SCFile::value_Text:
      return "text";
    case SCFile::value_Block:
      return "block";
    default:
      return "?";
  }
}

std::string Elements(const ItemRule& rule) {
  if (rule.minCount == rule.maxCount) return std::to_string(rule.minCount);
  if (rule.maxCount != anyCount) return "up to " + std::to_string(rule.maxCount) + " bytes";
  return rule.multipleOf == 1 ? "any" : "any multiple of " + std::to_string(rule.multipleOf);
}

/// Private members carry a prefix that means nothing outside.
std::string_view FieldName(std::string_view member) {
  return member.starts_with("m_") ? member.substr(2) : member;
}

template <class Record>
void WriteType(std::ostream& page, const GroupType<Record>& type) {
  page << "\n## " << type.title << ": " << type.primary;
  if (type.modifier != type.primary)
    page << ", modifier " << type.modifier;
  else
    page << ", modifications too";
  page << "\n\n| item | type | elements | field | unit or meaning |\n|---|---|---|---|---|\n";
  ForEachField<Record>([&](const auto& field) {
    const ItemRule rule = field.Rule();
    const bool key = field.role == FieldRole::Key;
    page << "| " << field.code << " | " << TypeName(rule.type) << " | " << Elements(rule) << " | "
         << FieldName(field.name) << (key ? " (key)" : "") << " |"
         << (field.note.empty() ? "" : " ") << field.note << " |\n";
  });
  if constexpr (std::is_same_v<Record, CGDataTypeFDD>)
    page << "| " << sampleBlockCode
         << " | block | any | samples | laid out as the storage mode says; missing: no samples |\n";
}

std::string Render() {
  std::ostringstream page;
  page << introduction;
  std::apply([&](const auto&... type) { (WriteType(page, type), ...); }, groupTypes);
  page << defects;
  return page.str();
}

TEST(GroupTypesPage, IsWhatTheTablesSay) {
  const std::filesystem::path path =
      std::filesystem::path(UTDATA_SOURCE_DIR) / "docs" / "group-types.md";
  const std::string expected = Render();
  if (std::getenv("UTDATA_WRITE_PAGES")) {
    std::ofstream(path, std::ios::binary) << expected;
  }
  std::ifstream file(path, std::ios::binary);
  const std::string page{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  EXPECT_EQ(page, expected) << "write it anew with UTDATA_WRITE_PAGES=1";
}

}  // namespace
