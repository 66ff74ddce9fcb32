// The tables of docs/group-types.md are written from the catalogue, so that both say the same.
// After a change of a field table, run this test with UTDATA_WRITE_PAGES=1 in the environment to
// write them anew.
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
  const auto write = [&]<class Record>(const SCFile::GroupType<Record>&) {
    Record* record = SCFile::Family<Record>::Allocate(1, L"no name");
    // Reading a gate that is no modification starts with a new one.
    if constexpr (std::is_same_v<Record, CGGateTypeDescr>) *record = CGGateTypeDescr();
    WriteType(page, SCFile::file_GroupTypeOf<Record>(), record);
    SCFile::Family<Record>::Delete(record, 1);
  };
  std::apply([&](const auto&... type) { (write(type), ...); }, SCFile::groupTypes);
  return page.str();
}

TEST(GroupTypesPage, IsWhatTheTablesSay) {
  const std::filesystem::path path =
      std::filesystem::path(UTDATA_SOURCE_DIR) / "docs" / "group-types.md";
  std::ifstream file(path, std::ios::binary);
  std::string page{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::size_t begin = page.find("\n## "), end = page.find("\n## Defect table");
  ASSERT_TRUE(begin < end && end < page.size());
  const std::string expected = Render();
  EXPECT_EQ(page.substr(begin, end - begin), expected) << "write it anew with UTDATA_WRITE_PAGES=1";
  if (std::getenv("UTDATA_WRITE_PAGES"))
    std::ofstream(path, std::ios::binary) << page.replace(begin, end - begin, expected);
}

}  // namespace
