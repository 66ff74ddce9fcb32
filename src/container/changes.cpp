#include "src/container/changes.h"

#include <new>

namespace utdata::container {

CGDataTypeFDD* Changes::LeaveCopy(SCFile::GroupHandle group, const CGDataTypeFDD& data) {
  auto copy = Hold(gdata_Allocate(0, L"Stand-In"));
  if (!copy) throw std::bad_alloc();
  gdata_Duplicate(copy.get(), &data);
  copy->dataPointer = nullptr;
  copy->dataSize = 0;
  CGDataTypeFDD* const left = copy.get();
  m_settling.emplace_back([group, left] { gdata_ReadGroupInfo(group, left); });
  POSITION& place = m_copies.emplace_back(nullptr);
  place = m_loaded.data.AddTail(left);
  copy.release();
  return left;
}

}  // namespace utdata::container
