#include "src/container/fcontkvt.h"

#include <memory>
#include <new>

#include "src/container/defects.h"
#include "src/container/subchannels.h"

IMPLEMENT_DYNAMIC(CFContKVTiff, CObject)

namespace utdata::container {
namespace {

/// Calls `visit(type, kind, key)` for each item of a file or group until one answers false, which
/// is then the result; false too when the item's info cannot be read.
template <class Visit>
bool ForEachItem(SCFile::Node* parent, Visit visit) {
  const std::uint32_t itemCount = SCFile::file_ItemNbrGet(parent);
  for (std::uint32_t index = 0; index < itemCount; ++index) {
    std::uint32_t type = 0, kind = 0, key = 0;
    if (SCFile::file_ItemInfo(parent, index, &type, &kind, nullptr, &key, nullptr, 0) !=
        SCFile::status_Ok)
      return false;
    if (!visit(type, kind, key)) return false;
  }
  return true;
}

/// False when the group cannot be read.
template <class Descriptor>
bool ReadInto(SCFile::GroupHandle group, CList<Descriptor*>& list) {
  auto descriptor = Hold(Family<Descriptor>::Allocate(1, L"no name"));
  if (!descriptor) throw std::bad_alloc();
  if (Family<Descriptor>::Read(group, descriptor.get(), false) != SCFile::status_Ok) return false;
  if constexpr (hasNumber<Descriptor>) NoteStored(group, *descriptor);
  list.AddTail(descriptor.get());
  descriptor.release();
  return true;
}

bool ReadDefectTable(SCFile::GroupHandle table, CList<stDefectExtern*>& defects) {
  ReleaseDefects(defects);
  return ForEachItem(table, [&](std::uint32_t type, std::uint32_t /*kind*/, std::uint32_t key) {
    if (type != codeDefect) return true;
    SCFile::GroupHandle group = nullptr;
    if (SCFile::file_GroupOpen(table, &group, key) != SCFile::status_Ok) return false;
    auto record = std::make_unique<stDefectExtern>();
    ReadDefect(group, *record);
    defects.AddTail(record.get());
    record.release();
    return true;
  });
}

/// Reads one typed group; a code that no type has is skipped.
bool ReadGroup(std::uint32_t code, SCFile::GroupHandle group, fcontsec_typeFileDescriptor& work) {
  if (code == codeDefectTable) return ReadDefectTable(group, work.defects);
  bool isRead = true;
  ForEachType([&](const auto& type) {
    if (code == type.primaryCode)
      isRead = ReadInto(group, work.*type.primaries);
    else if (code == type.modifierCode)
      isRead = ReadInto(group, work.*type.modifiers);
  });
  return isRead;
}

bool ReadTopGroup(SCFile::GroupHandle top, fcontsec_typeFileDescriptor& work) {
  return ForEachItem(top, [&](std::uint32_t code, std::uint32_t kind, std::uint32_t key) {
    if (kind != SCFile::kind_Group) return true;
    SCFile::GroupHandle group = nullptr;
    return SCFile::file_GroupOpen(top, &group, key) == SCFile::status_Ok &&
           ReadGroup(code, group, work);
  });
}

bool ReadFile(const wchar_t* path, fcontsec_typeFileDescriptor& work) {
  if (SCFile::file_Open(path, &work.file) != SCFile::status_Ok) return false;
  return ForEachItem(work.file,
                     [&](std::uint32_t /*code*/, std::uint32_t /*kind*/, std::uint32_t key) {
                       SCFile::GroupHandle top = nullptr;
                       return SCFile::file_GroupOpen(work.file, &top, key) == SCFile::status_Ok &&
                              ReadTopGroup(top, work);
                     });
}

}  // namespace

void FailToLoad() noexcept {
  SCFile::file_Fail(SCFile::status_TooLarge, "out of memory on loading an inspection");
}

}  // namespace utdata::container

CFContKVTiff::~CFContKVTiff() = default;

int CFContKVTiff::FileLoad(const wchar_t* path, fcontsec_typeFileDescriptor* work) {
  const std::scoped_lock lock(m_lock);
  return fcontOpen(path, work);
}

int CFContKVTiff::fcontOpen(const wchar_t* path, fcontsec_typeFileDescriptor* work) {
  try {
    if (utdata::container::ReadFile(path, *work)) return 0;
  } catch (const std::bad_alloc&) {
    utdata::container::FailToLoad();
  }
  if (work->file) SCFile::file_Close(work->file);
  work->file = nullptr;
  fcontFree(work);
  return -1;
}

void CFContKVTiff::fcontFree(fcontsec_typeFileDescriptor* work) noexcept {
  utdata::container::ReleaseAll(*work);
}
