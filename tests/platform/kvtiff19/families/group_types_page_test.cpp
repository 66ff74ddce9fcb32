// docs/group-types.md is written from the catalogue, so that both say the same. After a
// change of a field table, run this test with UTDATA_WRITE_PAGES=1 in the environment to write the
// page anew.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "interfaces/framework.h"
#include "interfaces/kvtiff19_catalogue.h"

namespace {

using SCFile::FieldInfo;
using SCFile::GroupTypeInfo;

constexpr const char* introduction = R"(# Group types

What the groups of an inspection file hold, type by type: the type codes of the group, and for each
item its code, its value type, how many elements it has, its unit, its default and what it means.
[file-format.md](file-format.md) says how groups, items and values are laid out in bytes,
[meaning.md](meaning.md) how records come of groups, and percent, millimetres and microseconds of
records.

- A group whose type code is the *primary* one holds a record whole: a writer puts every item of the
  table into it, in the table's order.
- A group whose type code is the *modifier* one holds a later modification: the items marked *key*,
  which say [which record it modifies](meaning.md#modifications), and those whose value changed.
- Modifications of types whose modifications are *not applied* change nothing.
- Types without a modifier code keep modifications as whole groups under the primary code; of
  several with the same keys the last one counts.
- A reader takes items in any order, and fewer of them. One that a record's group lacks has its
  *default*: zeros, an empty text or no elements, or what the table says. In a modification an item
  that is missing is unchanged.
- Each item comes once at most, with the value type and elements of the table: a reader refuses a
  file in which it does not. This holds for modifications that are not applied too, but not for
  defect tables and what a write says of itself, which have rules of their own; of two items 100 of
  a data group the later one counts.
- Items with other codes may stand between them and are skipped.
- An item code is never given another meaning.
- The elements of a text are its UTF-8 bytes; "up to 124 bytes" also means at most 31 characters,
  U+0000 not among them. Lists of points and triples hold their numbers one after the other. A block
  has as many bytes as it needs.
- Levels are in percent of full scale; bits and colours are unsigned numbers.
- Items whose unit is that of an axis have the unit that the named item says.
)";

constexpr const char* defects = R"(
## Defect table: 10045, no modifier

One child group of type code 10044 for each record; its items are the record's values. Those that
are missing are zero or empty.

| item | value type | elements | value |
|---|---|---|---|
| 1 to 6 | f64 | 1 | first to sixth value |
| 15, 16 | f64 | 1 | seventh and eighth value |
| 7 | text | any | first text |
| 8 | text | any | second text |
| 9 | u32 | 1 | first number |
| 13 | u32 | 1 | second number |
| 14 | u32 | 1 | third number |
| 10 | u32 | 1 | number of a sub-entry, which it starts |
| 11 | text | any | first text of the sub-entry |
| 12 | text | any | second text of the sub-entry, which it ends |

They are written in this order, items 10, 11 and 12 once for each sub-entry. A reader takes them in
any order; what counts is that a sub-entry's 10 comes first and its 12 last. An 11 or 12 outside a
sub-entry is skipped, and so is a sub-entry without its 12; of an item that comes twice the later
one counts. An item of another value type or number of elements ends the record: it and what follows
it are lost, which the program warns of. A text ends at a U+0000 in it.

Of several defect tables in one file the last one counts; the records of all files stand one after
the other, those of the base first.
)";

const char* TypeName(std::uint8_t type) {
  switch (type) {
    case SCFile::value_Int32:
      return "i32";
    case SCFile::value_UInt32:
      return "u32";
    case SCFile::value_Int64:
      return "i64";
    case SCFile::value_Float:
      return "f32";
    case SCFile::value_Double:
      return "f64";
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
  if (field.kind == SCFile::FieldKind::Block) return "1";
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

/// What a new record holds in a field; nothing for zero, an empty text and no elements.
std::string Default(const FieldInfo& field, const void* record) {
  const SCFile::FieldAccess& access = field.access;
  if (access.text) {
    const std::string text = utdata::NarrowFromWide(access.text(record));
    return text.empty() ? text : '"' + text + '"';
  }
  std::vector<double> numbers;
  if (access.number) numbers = {access.number(record)};
  if (access.numbers) numbers = access.numbers(record);
  if (std::ranges::count(numbers, 0) == std::ssize(numbers)) return {};
  std::ostringstream text;
  for (const double number : numbers) text << (text.tellp() > 0 ? ", " : "") << number;
  return text.str();
}

void WriteField(std::ostream& page, const FieldInfo& field, const void* record) {
  const std::string unit(field.unitOf.empty() ? field.unit.stored
                                              : "as " + std::string(field.unitOf));
  page << "|" << Cell(std::to_string(field.code)) << Cell(TypeName(field.valueType))
       << Cell(Elements(field)) << Cell(std::string(field.key) + (field.IsKey() ? " (key)" : ""))
       << Cell(unit) << Cell(Default(field, record)) << Cell(Meaning(field)) << "\n";
}

/// @param record as loading makes it before it reads a group
void WriteType(std::ostream& page, const GroupTypeInfo& type, const void* record) {
  std::string title(type.name);
  title.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(title.front())));
  page << "\n## " << title << ": " << type.primaryCode;
  if (type.HasModifierCode())
    page << ", modifier " << type.modifierCode << (type.isModified ? "" : " (not applied)");
  else
    page << ", no modifier";
  page << "\n\n| item | value type | elements | field | unit | default | meaning |\n"
          "|---|---|---|---|---|---|---|\n";
  for (const FieldInfo& field : type.fields) WriteField(page, field, record);
}

std::string Render() {
  std::ostringstream page;
  page << introduction;
  const auto write = [&]<class Record>(const SCFile::GroupType<Record>&) {
    Record* record = SCFile::Family<Record>::Allocate(1, L"no name");
    // Reading a gate that is no modification starts with a new one.
    if constexpr (std::is_same_v<Record, CGGateTypeDescr>) *record = CGGateTypeDescr();
    WriteType(page, SCFile::file_GroupTypeOf<Record>(), record);
    SCFile::Family<Record>::Delete(record, 1);
  };
  std::apply([&](const auto&... type) { (write(type), ...); }, SCFile::groupTypes);
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
