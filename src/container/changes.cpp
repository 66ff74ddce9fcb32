#include "src/container/changes.h"

#include <new>
#include <set>

namespace utdata::container {

Changes::Changes(CFContTypeFileDescr& loadedDescriptor, int flag)
    : m_loaded(loadedDescriptor), m_writeFlag(flag) {
  if (m_loaded.m_numbering) m_given = m_loaded.m_numbering->given;
}

Changes::~Changes() {
  for (const POSITION copy : m_copies) {
    if (!copy) continue;
    gdata_Delete(m_loaded.data.GetAt(copy), 1);
    m_loaded.data.RemoveAt(copy);
  }
}

void Changes::Settle() noexcept {
  m_copies.clear();
  for (const auto& settle : m_settling) settle();
  if (m_loaded.m_numbering) m_loaded.m_numbering->given.swap(m_given);
}

void Changes::TakeOver(SCFile::GroupHandle group, CGDataTypeFDD& base, bool withName) noexcept {
  const std::uint32_t number = base.subChannelId;
  static_cast<void>(ReadModification(group, &base));
  base.subChannelId = number;
  base.stored.bookmark = base.GetDataBookmarkType();
  if (withName) base.stored.isNamed = IsNamed(base);
}

void Changes::KeepOthersApart(SCFile::GroupHandle top,
                              const CGDataTypeFDD* base,
                              const CGDataTypeFDD& descriptor,
                              std::uint32_t subChannelId) {
  std::set<std::uint32_t> bookmarks = {bookmark_None};
  for (CGDataTypeFDD* other : Namesakes(descriptor, subChannelId)) {
    if (other == base) return;  // those behind it are not reached
    if (other->stored.subChannelId == StoredIds::none) continue;
    const std::uint32_t bookmark = other->GetDataBookmarkType();
    const bool isStored = other->stored.bookmark != bookmark_None;
    // What would write its bookmark reaches the first one that has it.
    const bool isFirst = bookmarks.insert(bookmark).second;
    if (base && (bookmark == descriptor.GetDataBookmarkType() || (!isStored && !isFirst)))
      m_isAmbiguous = true;
    const bool isItself =
        !base && other->GetGroupHandle() && other->GetGroupHandle() == descriptor.GetGroupHandle();
    if (isStored || bookmark == bookmark_None || isItself || !m_keptApart.insert(other).second)
      continue;
    const SCFile::GroupHandle group =
        CreateGroup(top, typeOf<CGDataTypeFDD>.modifierCode, typeOf<CGDataTypeFDD>.modifierName);
    WriteUnder<CGDataTypeFDD>(group, other, *other, {subChannelId, {}}, m_writeFlag);
    m_settling.emplace_back([other] { other->stored.bookmark = other->GetDataBookmarkType(); });
  }
}

const std::vector<CGDataTypeFDD*>& Changes::Namesakes(const CGDataTypeFDD& descriptor,
                                                      std::uint32_t subChannelId) {
  if (!m_namesakes) {
    auto& all = m_namesakes.emplace();
    for (CGDataTypeFDD* data : m_loaded.data)
      all[KeyUnder(*data, StoredIdOf(*data))].push_back(data);
  }
  return (*m_namesakes)[KeyUnder(descriptor, subChannelId)];
}

int Changes::Check() const {
  if (!m_isAmbiguous) return SCFile::status_Ok;
  return SCFile::file_Fail(
      SCFile::status_BadArgument,
      m_loaded.path,
      "a changed data group has the ids of another one in the file, which would take the change");
}

CGDataTypeFDD* Changes::LeaveCopy(SCFile::GroupHandle group,
                                  const CGDataTypeFDD& data,
                                  const WrittenIds& ids) {
  auto copy = Hold(gdata_Allocate(0, L"Stand-In"));
  if (!copy) throw std::bad_alloc();
  gdata_Duplicate(copy.get(), &data);
  copy->dataPointer = nullptr;
  copy->dataSize = 0;
  const std::uint32_t number = ids.number.value_or(StoredIds::none);
  copy->stored = {ids.subChannelId, number, number, data.GetDataBookmarkType(), IsNamed(data)};
  CGDataTypeFDD* const left = copy.get();
  m_settling.emplace_back([group, left, id = data.subChannelId] {
    gdata_ReadGroupInfo(group, left);
    left->subChannelId = id;
  });
  POSITION& place = m_copies.emplace_back(nullptr);
  place = m_loaded.data.AddTail(left);
  copy.release();
  if (m_namesakes) (*m_namesakes)[KeyUnder(*left, ids.subChannelId)].push_back(left);
  return left;
}

}  // namespace utdata::container
