// Data groups that are added together: all of them stay, or none.
#pragma once

#include "src/inspection/state.h"

namespace utdata {

/// Takes data groups that were added out again, unless they are kept.
class AddedRows {
 public:
  explicit AddedRows(InspectionState& inspection)
      : m_inspection(inspection), m_before(inspection.rows.size()) {}
  AddedRows(const AddedRows&) = delete;
  AddedRows& operator=(const AddedRows&) = delete;
  ~AddedRows() {
    while (!m_isKept && m_inspection.rows.size() > m_before) m_inspection.RemoveLastRow();
  }
  void Keep() noexcept { m_isKept = true; }

 private:
  InspectionState& m_inspection;
  std::size_t m_before;
  bool m_isKept = false;
};

}  // namespace utdata
