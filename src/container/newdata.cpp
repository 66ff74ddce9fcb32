#include "utdata/newdata.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

bool EndsInBaseExtension(std::wstring_view name) {
  constexpr std::wstring_view extension = L".fpd";
  if (name.size() < extension.size()) return false;
  const auto lower = [](wchar_t letter) {
    return letter >= L'A' && letter <= L'Z' ? static_cast<wchar_t>(letter - L'A' + L'a') : letter;
  };
  return std::ranges::equal(name.substr(name.size() - extension.size()), extension, {}, lower);
}

/// Numbers the files while the records pass by in order.
class FileWalk {
 public:
  void Pass(const CNewData& record) {
    if (record.fileName == m_name) return;
    m_name = record.fileName;
    ++m_position;
    m_baseMet = m_baseMet || EndsInBaseExtension(m_name);
  }
  /// The number of the file met last; after all records, how many files there are beside the base
  /// file.
  [[nodiscard]] int Number() const { return m_baseMet ? m_position : m_position + 1; }
  [[nodiscard]] std::wstring_view Name() const { return m_name; }

 private:
  int m_position = -1;
  bool m_baseMet = false;
  std::wstring_view m_name;
};

}  // namespace

void CDataNewGroup::AddGData(CGDataTypeFDD* group, const std::wstring& fileName) {
  m_records.AddTail({group, fileName});
}

void CDataNewGroup::AddGData(CList<CGDataTypeFDD*>* groups, const std::wstring& fileName) {
  if (!groups) return;
  for (CGDataTypeFDD* group : *groups) {
    CNewData record{group, fileName};
    for (POSITION next = m_records.GetHeadPosition(); next;) {
      const POSITION position = next;
      if (m_records.GetNext(next).group != group) continue;
      m_records.RemoveAt(position);
      break;
    }
    m_records.AddTail(std::move(record));
  }
}

std::wstring CDataNewGroup::GetFileName(int n) const {
  FileWalk walk;
  for (const CNewData& record : m_records) {
    walk.Pass(record);
    if (walk.Number() == n) break;
  }
  return std::wstring(walk.Name());
}

int CDataNewGroup::GetNbFile() const {
  FileWalk walk;
  for (const CNewData& record : m_records) walk.Pass(record);
  return walk.Number();
}

int CDataNewGroup::GetNumMapping(CGDataTypeFDD* group) const {
  FileWalk walk;
  for (const CNewData& record : m_records) {
    walk.Pass(record);
    if (record.group == group) return walk.Number();
  }
  return 0;
}
