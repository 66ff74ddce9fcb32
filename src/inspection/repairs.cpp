// What loading has put in place of values that no record should have, said as warnings.
#include <cmath>
#include <cstdio>
#include <string>

#include "src/foundation/dataclass.h"
#include "src/inspection/state.h"

namespace utdata {
namespace {

std::string NumberText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, value == std::trunc(value) ? "%.0f" : "%.6g", value);
  return text;
}

/// Gathers the fields whose value is not the one that is stored.
class Repairs {
 public:
  Repairs(const CGDataTypeFDD& stored, const CGDataTypeFDD& taken)
      : m_stored(stored), m_taken(taken) {}

  void CompareQuantity(const char* name, std::uint32_t CGDataTypeFDD::*member) {
    if (m_stored.*member != 0) Compare(name, member);
  }

  template <class Number>
  void Compare(const char* name, Number CGDataTypeFDD::*member) {
    const auto stored = static_cast<double>(m_stored.*member);
    const auto taken = static_cast<double>(m_taken.*member);
    if (stored == taken) return;
    m_text += (m_text.empty() ? "" : ", ") + std::string(name) + " " + NumberText(stored) +
              " is taken as " + NumberText(taken);
  }
  [[nodiscard]] const std::string& Text() const { return m_text; }

 private:
  const CGDataTypeFDD& m_stored;
  const CGDataTypeFDD& m_taken;
  std::string m_text;
};

/// An axis of one row or column has no step of its own, nor does one with the samples of a C-scan,
/// and an empty group is as its file says: what stands there is no repair.
std::string RepairsOf(const CGDataTypeFDD& stored, const CGDataTypeFDD& taken) {
  Repairs repairs(stored, taken);
  const bool hasSamples = !IsCScan(ClassOfElements(stored.dataClass));
  repairs.CompareQuantity("column quantity", &CGDataTypeFDD::columnQuantity);
  repairs.CompareQuantity("row quantity", &CGDataTypeFDD::rowQuantity);
  if (hasSamples) repairs.CompareQuantity("sample quantity", &CGDataTypeFDD::sampleQuantity);
  repairs.Compare("sample size", &CGDataTypeFDD::sampleSize);
  // A step of 0 says that indices are counted.
  if (taken.columnQuantity > 1 && stored.columnResolution != 0)
    repairs.Compare("column step", &CGDataTypeFDD::columnResolution);
  if (taken.rowQuantity > 1 && stored.rowResolution != 0)
    repairs.Compare("row step", &CGDataTypeFDD::rowResolution);
  if (hasSamples) repairs.Compare("sample step", &CGDataTypeFDD::sampleResolution);
  repairs.Compare("column offset", &CGDataTypeFDD::columnOffset);
  repairs.Compare("row offset", &CGDataTypeFDD::rowOffset);
  repairs.Compare("sample offset", &CGDataTypeFDD::sampleOffset);
  return repairs.Text();
}

}  // namespace

void InspectionState::WarnOfRepairs() {
  for (const DataRow& row : rows)
    if (const std::string repairs = RepairsOf(*row.stored, row.taken); !repairs.empty())
      warnings.push_back(NameOf(row) + ": repaired on loading: " + repairs);
}

}  // namespace utdata
