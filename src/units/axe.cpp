#include "utdata/axe.h"

#include <algorithm>
#include <cwchar>
#include <string_view>

#include "interfaces/framework.h"

void CAxe::Create(const wchar_t* name, std_enumUnits units) {
  const std::wstring_view text = name ? name : L"";
  UTDATA_ASSERT(text.size() < nameSize);
  const std::size_t kept = std::min(text.size(), nameSize - 1);
  wchar_t copy[nameSize] = {};  // `name` may be this axis's own
  std::copy_n(text.data(), kept, copy);
  std::copy_n(copy, nameSize, m_name);
  m_units = units;
}

void CAxe::Create(const wchar_t* name, std_enumUnits units, double start, double range) {
  Create(name, units);
  m_start = start;
  m_range = range;
  m_limitsEnabled = 1;
}

void CAxe::SetStart(double start) {
  m_start = start;
  m_limitsEnabled = 1;
}

void CAxe::SetEnd(double end) {
  m_range = end - m_start;
  m_limitsEnabled = 1;
}

void CAxe::SetRange(double range) {
  m_range = range;
  m_limitsEnabled = 1;
}

int CAxe::IsValueInAxe(double value) const {
  return value >= m_start && value - m_start <= m_range ? 1 : 0;
}

int CAxe::operator==(const CAxe& other) const {
  if (!m_name[0] || !other.m_name[0]) return 0;
  return std::wcscmp(m_name, other.m_name) == 0 && m_units == other.m_units ? 1 : 0;
}
