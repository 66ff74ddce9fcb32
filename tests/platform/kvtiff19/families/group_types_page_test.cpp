// docs/group-types.md is written from the catalogue, so that both say the same. After a
// change of a field table, run this test with UTDATA_WRITE_PAGES=1 in the environment to write the
// page anew.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "interfaces/kvtiff19_catalogue.h"

namespace {

using SCFile::FieldInfo;
using SCFile::GroupTypeInfo;

constexpr const char* introduction = R"(# Group types

What the groups of an inspection file hold, type by type: the codes of the group, and for each item
its code, its value type, how many elements it has, its unit and what it means.
[file-format.md](file-format.md) says how groups, items and values are laid out in bytes.

- A group whose code is the *primary* one holds a record whole: every item of the table, in the
  table's order.
- A group whose code is the *modifier* one holds a later modification: the items marked *key*, which
  say which record is modified, and those whose value changed. It belongs to the first record of its
  type that agrees in every key; a bookmark type of 0 in that record agrees with any. A type without
  keys has one record that counts, the first. A modification that belongs to none is a record of its
  own.
- Modifications of types whose modifications are *not applied* are skipped by readers.
- Types without a modifier code keep modifications as whole groups under the primary code.
- Each item comes once at most. Items with other codes may stand between them and are skipped.
- An item code is never given another meaning.
- The elements of a text are its UTF-8 bytes; "up to 124 bytes" also means at most 31 characters.
  Lists of points and triples hold their numbers one after the other.
- Levels are in percent of full scale; bits and colours are unsigned numbers.
- Items whose unit is that of an axis have the unit that the named item says.
)";

constexpr const char* defects = R"(
## Defect table: 10045, no modifier

One child group of code 10044 for each record; its items are the record's values. Those that are
missing are zero or empty.

| item | type | elements | field | unit | meaning |
|---|---|---|---|---|---|
| 1 to 6 | double | 1 | first to sixth value | | |
| 7 | text | any | first text | | |
| 8 | text | any | second text | | |
| 9 | uint32 | 1 | first number | | |
| 10 | uint32 | 1 | number of a sub-entry, which it starts | | |
| 11 | text | any | first text of the sub-entry | | |
| 12 | text | any | second text of the sub-entry, which it ends | | |
| 13 | uint32 | 1 | second number | | |
| 14 | uint32 | 1 | third number | | |
| 15, 16 | double | 1 | seventh and eighth value | | |

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

std::string Elements(const FieldInfo& field) {
  constexpr std::uint32_t anyCount = 0xFFFFFFFF;
  if (field.kind == SCFile::FieldKind::Block) return "any";
  if (field.minCount == field.maxCount) return std::to_string(field.minCount);
  if (field.maxCount != anyCount) return "up to " + std::to_string(field.maxCount) + " bytes";
  return field.multipleOf == 1 ? "any" : "any multiple of " + std::to_string(field.multipleOf);
}

std::string Meaning(const FieldInfo& field) {
  std::string text;
  for (const SCFile::FieldChoice& choice : field.choices)
    text +=
        (text.empty() ? "" : ", ") + std::to_string(choice.value) + " " + std::string(choice.name);
  const bool both = !text.empty() && !field.meaning.empty();
  return text + (both ? "; " : "") + std::string(field.meaning);
}

/// A cell of a table, with the blank before it.
std::string Cell(const std::string& text) { return text.empty() ? " |" : " " + text + " |"; }

void WriteField(std::ostream& page, const FieldInfo& field) {
  const std::string unit(field.unitOf.empty() ? field.unit.stored
                                              : "as " + std::string(field.unitOf));
  page << "|" << Cell(std::to_string(field.code)) << Cell(TypeName(field.valueType))
       << Cell(Elements(field)) << Cell(std::string(field.key) + (field.IsKey() ? " (key)" : ""))
       << Cell(unit) << Cell(Meaning(field)) << "\n";
}

void WriteType(std::ostream& page, const GroupTypeInfo& type) {
  std::string title(type.name);
  title.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(title.front())));
  page << "\n## " << title << ": " << type.primaryCode;
  if (type.HasModifierCode())
    page << ", modifier " << type.modifierCode << (type.isModified ? "" : " (not applied)");
  else
    page << ", no modifier";
  page << "\n\n| item | type | elements | field | unit | meaning |\n|---|---|---|---|---|---|\n";
  for (const FieldInfo& field : type.fields) WriteField(page, field);
}

std::string Render() {
  std::ostringstream page;
  page << introduction;
  for (const GroupTypeInfo& type : SCFile::file_GroupTypes()) WriteType(page, type);
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
