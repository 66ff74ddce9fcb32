#include "utdata/axe.h"

#include <algorithm>
#include <cwchar>
#include <string_view>

#include "interfaces/framework.h"

CAxe::CAxe() = default;
CAxe::CAxe(const CAxe&) = default;
CAxe& CAxe::operator=(const CAxe&) = default;

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

double CAxe::GetStart() const { return m_start; }
double CAxe::GetRange() const { return m_range; }
double CAxe::GetEnd() const { return m_start + m_range; }
const wchar_t* CAxe::GetName() const { return m_name; }
std_enumUnits CAxe::GetUnits() const { return m_units; }
int CAxe::LimitsEnabled() const { return m_limitsEnabled; }

int CAxe::IsValueInAxe(double value) const {
  return value >= m_start && value - m_start <= m_range ? 1 : 0;
}

bool CAxe::operator==(const CAxe& other) const {
  return m_name[0] && std::wcscmp(m_name, other.m_name) == 0 && m_units == other.m_units;
}
