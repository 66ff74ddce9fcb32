#include "src/container/defects.h"

#include <cwchar>
#include <new>
#include <optional>
#include <utility>
#include <variant>

#include "src/container/groupwriting.h"

namespace utdata::container {
namespace {

/// One field of a record: its item code and its place; the place's type decides the value type.
template <class Record>
struct Field {
  std::uint32_t code;
  std::variant<double& (*)(Record&), std::wstring& (*)(Record&), std::uint32_t& (*)(Record&)> place;
};

template <std::size_t Index>
double& Value(stDefectExtern& record) {
  return record.values[Index];
}
template <std::size_t Index>
std::uint32_t& Number(stDefectExtern& record) {
  return record.numbers[Index];
}
template <auto Member, class Record>
auto& Of(Record& record) {
  return record.*Member;
}

// In the order in which the items are written.
constexpr Field<stDefectExtern> recordFields[] = {
    {1, Value<0>},
    {2, Value<1>},
    {3, Value<2>},
    {4, Value<3>},
    {5, Value<4>},
    {6, Value<5>},
    {15, Value<6>},
    {16, Value<7>},
    {7, Of<&stDefectExtern::firstText, stDefectExtern>},
    {8, Of<&stDefectExtern::secondText, stDefectExtern>},
    {9, Number<0>},
    {13, Number<1>},
    {14, Number<2>},
};
constexpr std::uint32_t codeSubEntryBegins = 10;
constexpr std::uint32_t codeSubEntryEnds = 12;
constexpr Field<stDefectSubEntry> subEntryFields[] = {
    {codeSubEntryBegins, Of<&stDefectSubEntry::number, stDefectSubEntry>},
    {11, Of<&stDefectSubEntry::firstText, stDefectSubEntry>},
    {codeSubEntryEnds, Of<&stDefectSubEntry::secondText, stDefectSubEntry>},
};

template <class Record, std::size_t Count>
const Field<Record>* FindField(const Field<Record> (&fields)[Count], std::uint32_t code) {
  for (const Field<Record>& field : fields)
    if (field.code == code) return &field;
  return nullptr;
}

// Reading and writing of one value, mirrored; the counts are elements, of a text with its
// terminator.

int ReadValue(SCFile::GroupHandle group, std::uint32_t index, std::uint32_t, double& value) {
  std::uint32_t count = 1;
  return SCFile::file_IndexValueRead(group, index, SCFile::value_Double, &value, &count);
}
int ReadValue(SCFile::GroupHandle group, std::uint32_t index, std::uint32_t, std::uint32_t& value) {
  std::uint32_t count = 1;
  return SCFile::file_IndexValueRead(group, index, SCFile::value_UInt32, &value, &count);
}
int ReadValue(SCFile::GroupHandle group,
              std::uint32_t index,
              std::uint32_t storedCount,
              std::wstring& value) {
  std::wstring buffer(std::size_t{storedCount} + 1, L'\0');
  std::uint32_t count = storedCount + 1;
  const int status =
      SCFile::file_IndexValueRead(group, index, SCFile::value_Text, buffer.data(), &count);
  if (status == SCFile::status_Ok) value = buffer.c_str();
  return status;
}

void WriteValue(SCFile::GroupHandle group, std::uint32_t code, const double& value) {
  SCFile::file_ItemValueWrite(group, code, SCFile::value_Double, 1, &value);
}
void WriteValue(SCFile::GroupHandle group, std::uint32_t code, const std::uint32_t& value) {
  SCFile::file_ItemValueWrite(group, code, SCFile::value_UInt32, 1, &value);
}
void WriteValue(SCFile::GroupHandle group, std::uint32_t code, const std::wstring& value) {
  SCFile::file_ItemValueWrite(
      group, code, SCFile::value_Text, static_cast<std::uint32_t>(value.size() + 1), value.c_str());
}

/// Calls `visit(type, group)` with each child group; one that cannot be opened is passed over.
template <class Visit>
void ForEachChild(SCFile::Node* parent, Visit visit) {
  const std::uint32_t itemCount = SCFile::file_ItemNbrGet(parent);
  for (std::uint32_t index = 0; index < itemCount; ++index) {
    std::uint32_t type = 0, kind = 0, key = 0;
    SCFile::GroupHandle child = nullptr;
    if (SCFile::file_ItemInfo(parent, index, &type, &kind, nullptr, &key, nullptr, 0) ==
            SCFile::status_Ok &&
        kind == SCFile::kind_Group &&
        SCFile::file_GroupOpen(parent, &child, key) == SCFile::status_Ok)
      visit(type, child);
  }
}

template <class Record>
int ReadField(SCFile::GroupHandle group,
              std::uint32_t index,
              std::uint32_t count,
              const Field<Record>& field,
              Record& record) {
  return std::visit([&](auto place) { return ReadValue(group, index, count, place(record)); },
                    field.place);
}

template <class Record, std::size_t Count>
void WriteFields(SCFile::GroupHandle group, const Field<Record> (&fields)[Count], Record& record) {
  for (const Field<Record>& field : fields)
    std::visit([&](auto place) { WriteValue(group, field.code, place(record)); }, field.place);
}

}  // namespace

void ReadDefect(SCFile::GroupHandle group, stDefectExtern& record) {
  std::optional<stDefectSubEntry> subEntry;
  const std::uint32_t itemCount = SCFile::file_ItemNbrGet(group);
  for (std::uint32_t index = 0; index < itemCount; ++index) {
    std::uint32_t code = 0, kind = 0, count = 0;
    int status = SCFile::file_ItemInfo(group, index, &code, &kind, &count, nullptr, nullptr, 0);
    if (status == SCFile::status_Ok) {
      if (code == codeSubEntryBegins) subEntry.emplace();
      if (const auto* field = FindField(recordFields, code))
        status = ReadField(group, index, count, *field, record);
      else if (const auto* subField = FindField(subEntryFields, code); subField && subEntry)
        status = ReadField(group, index, count, *subField, *subEntry);
    }
    if (status == SCFile::status_TooLarge) throw std::bad_alloc();
    if (status != SCFile::status_Ok) {
      record.loss = SCFile::file_LastError() + ": item " + std::to_string(code) +
                    " of a defect record, and what follows it";
      return;
    }
    if (code == codeSubEntryEnds && subEntry)
      record.subEntries.push_back(*std::exchange(subEntry, std::nullopt));
  }
}

void WriteDefectTable(SCFile::GroupHandle top, const CList<stDefectExtern*>& defects) {
  const SCFile::GroupHandle table = CreateGroup(top, codeDefectTable, L"Defect Table Group");
  for (stDefectExtern* record : defects) {
    const SCFile::GroupHandle group = CreateGroup(table, codeDefect, L"Defect");
    WriteFields(group, recordFields, *record);
    for (stDefectSubEntry& subEntry : record->subEntries)
      WriteFields(group, subEntryFields, subEntry);
  }
}

std::string LossIn(const CList<stDefectExtern*>& defects) {
  for (const stDefectExtern* record : defects)
    if (!record->loss.empty()) return record->loss;
  return {};
}

std::string LossInLastTable(SCFile::FileHandle file) {
  SCFile::GroupHandle last = nullptr;
  ForEachChild(file, [&last](std::uint32_t, SCFile::GroupHandle top) {
    ForEachChild(top, [&last](std::uint32_t type, SCFile::GroupHandle group) {
      if (type == codeDefectTable) last = group;
    });
  });
  std::string loss;
  ForEachChild(last, [&loss](std::uint32_t type, SCFile::GroupHandle group) {
    if (type != codeDefect || !loss.empty()) return;
    stDefectExtern record;
    ReadDefect(group, record);
    loss = record.loss;
  });
  return loss;
}

void ReleaseDefects(CList<stDefectExtern*>& defects) noexcept {
  for (stDefectExtern* record : defects) delete record;
  defects.RemoveAll();
}

}  // namespace utdata::container
