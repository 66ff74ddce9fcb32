// Descriptors of opened inspections: loaded, updated from companions, closed.
#include "utdata/fcont.h"

#include <algorithm>
#include <mutex>
#include <new>

#include "interfaces/os.h"
#include "src/container/companions.h"
#include "src/container/defects.h"
#include "src/container/fcontkvt.h"
#include "src/container/subchannels.h"

using namespace utdata::container;

namespace {

template <int (*Init)(SCFile::LockCallback,
                      SCFile::LockCallback,
                      SCFile::AllocCallback,
                      SCFile::FreeCallback,
                      SCFile::ErrorCallback)>
int InitAlone() {
  return Init(nullptr, nullptr, nullptr, nullptr, nullptr);
}

constexpr int (*initOrder[])() = {
    InitAlone<gchan_Init>,     InitAlone<gcontour_Init>,   gdata_Init,
    InitAlone<ggate_Init>,     InitAlone<gpatch_Init>,     InitAlone<gprobe_Init>,
    InitAlone<gspecdim_Init>,  InitAlone<gspecinf_Init>,   InitAlone<gspecmat_Init>,
    InitAlone<gweld_Init>,     InitAlone<gsubchan_Init>,   InitAlone<ginfo_Init>,
    InitAlone<gmesh_Init>,     InitAlone<gspecdef_Init>,   InitAlone<grefadj_Init>,
    InitAlone<gdac_Init>,      InitAlone<genumtable_Init>, InitAlone<gweldsp_Init>,
    InitAlone<gweldFill_Init>,
};

std::mutex initLock;  // guards CFCont::m_init

/// Moves every element to the tail of another list. Each stays in exactly one of them, also when
/// memory runs out.
template <class Element>
void MoveAll(CList<Element>& from, CList<Element>& to) {
  while (!from.IsEmpty()) {
    to.AddTail(from.GetHead());
    from.RemoveHead();
  }
}

/// Takes back what was read of a file.
void Drop(fcontsec_typeFileDescriptor& work) noexcept {
  if (work.file) SCFile::file_Close(work.file);
  work.file = nullptr;
  ReleaseAll(work);
}

/// The first two companions are read on request only. Their names are those built here, with a
/// capital letter.
bool IsLeftOut(const std::wstring& name, const int options[8]) {
  const std::wstring extension = utdata::os::SplitPath(name).extension;
  return (extension == L".A01" && options[4] == 0) || (extension == L".A02" && options[5] == 0);
}

/// Whether a companion belongs to the inspection of a descriptor, as far as that is known.
bool IsOwn(const CFContTypeFileDescr& descriptor, SCFile::FileHandle companion) {
  if (descriptor.files.IsEmpty()) return true;
  const SCFile::FileOrigin origin = SCFile::file_Origin(companion);
  return origin.IsCompanion() &&
         origin.base == InspectionOf(SCFile::file_Origin(descriptor.files.GetHead()));
}

}  // namespace

CFContTypeFileDescr::CFContTypeFileDescr() { initializeData(); }

CFContTypeFileDescr::~CFContTypeFileDescr() = default;

void CFContTypeFileDescr::initializeData() {
  status = 0;
  path[0] = L'\0';
  defectTableFlag = 0;
}

bool CFContTypeFileDescr::SetPath(std::wstring_view newPath) {
  if (newPath.size() >= pathSize) return false;
  *std::copy(newPath.begin(), newPath.end(), path) = L'\0';
  return true;
}

std::int32_t CFCont::m_init = 0;

CFCont::CFCont() {
  const std::scoped_lock lock(initLock);
  if (m_init != 0) return;
  SCFile::file_Init(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  for (const auto init : initOrder) init();
  m_init = 1;
}

CFContTypeFileDescr* CFCont::FileLoad(const wchar_t* path,
                                      IGDataSupplier*,
                                      CDataNewGroup* newGroups) {
  auto* const descriptor = new (std::nothrow) CFContTypeFileDescr;
  if (!descriptor) {
    FailToLoad();
    return nullptr;
  }
  CFContKVTiff reader;
  fcontsec_typeFileDescriptor work;
  if (!path || !descriptor->SetPath(path))
    SCFile::file_Fail(SCFile::status_BadArgument, "no path, or too long a one");
  else if (ReadInto(descriptor, path, &reader, &work, newGroups))
    return descriptor;
  FcontClose(descriptor);
  return nullptr;
}

bool CFCont::ReadInto(CFContTypeFileDescr* descriptor,
                      const wchar_t* path,
                      CFContKVTiff* reader,
                      fcontsec_typeFileDescriptor* work,
                      CDataNewGroup* newGroups) {
  return reader->FileLoad(path, work) != -1 && Merge(descriptor, path, work, newGroups);
}

bool CFCont::Merge(CFContTypeFileDescr* descriptor,
                   const wchar_t* path,
                   fcontsec_typeFileDescriptor* work,
                   CDataNewGroup* newGroups) {
  try {
    // Modifications name what they change by the ids in the files.
    const bool isNumbered = descriptor->m_numbering != nullptr;
    if (isNumbered) UnnumberSubChannels(*descriptor);
    UpdateFileDescriptor(descriptor, work);
    if (UpdateModifierGroup(descriptor, work, path, newGroups)) {
      ListRemoveAll(work);
      if (isNumbered) NumberSubChannels(*descriptor, true);
      return true;
    }
  } catch (const std::bad_alloc&) {
    FailToLoad();
  }
  Drop(*work);
  return false;
}

void CFCont::UpdateFileDescriptor(CFContTypeFileDescr* descriptor,
                                  fcontsec_typeFileDescriptor* work) {
  descriptor->files.AddTail(work->file);
  work->file = nullptr;
  ForEachType([&](const auto& type) { MoveAll(work->*type.primaries, descriptor->*type.list); });
  MoveAll(work->defects, descriptor->defects);
}

void CFCont::ListRemoveAll(fcontsec_typeFileDescriptor* work) {
  ForEachType([&](const auto& type) {
    (work->*type.primaries).RemoveAll();
    if (type.modifiers) (work->*type.modifiers).RemoveAll();
  });
  work->defects.RemoveAll();
}

int CFCont::FileUpdate(const wchar_t* path,
                       CFContTypeFileDescr* descriptor,
                       const int options[8],
                       IGDataSupplier*,
                       CDataNewGroup* newGroups) {
  if (path && descriptor && options && ReadCompanions(descriptor, path, options, newGroups))
    return 0;
  if (descriptor) FcontClose(descriptor);
  return 1;
}

bool CFCont::ReadCompanions(CFContTypeFileDescr* descriptor,
                            const wchar_t* path,
                            const int options[8],
                            CDataNewGroup* newGroups) {
  try {
    CFContKVTiff reader;
    fcontsec_typeFileDescriptor work;
    const std::vector<std::wstring> companions = ListCompanions(path);
    return std::ranges::all_of(companions, [&](const std::wstring& name) {
      if (IsLeftOut(name, options)) return true;
      if (reader.FileLoad(name.c_str(), &work) == -1) return false;
      if (IsOwn(*descriptor, work.file)) return Merge(descriptor, name.c_str(), &work, newGroups);
      SCFile::file_Fail(SCFile::status_InTheWay, name, "it belongs to another inspection");
      Drop(work);
      return false;
    });
  } catch (const std::bad_alloc&) {
    FailToLoad();
    return false;
  }
}

int CFCont::UpdateFromCompanions(CFContTypeFileDescr* descriptor,
                                 CDataNewGroup* newGroups,
                                 std::vector<utdata::CompanionFault>& faults) {
  if (!descriptor || descriptor->files.IsEmpty()) return 1;
  const SCFile::FileHandle base = descriptor->files.GetHead();
  try {
    faults.clear();
    if (SCFile::file_Origin(base).IsCompanion()) return 0;
    Judgement judgement =
        JudgeCompanions(descriptor->path, SCFile::file_Origin(base), SCFile::file_State(base));
    CFContKVTiff reader;
    fcontsec_typeFileDescriptor work;
    const bool isRead = std::ranges::all_of(judgement.own, [&](const OwnCompanion& own) {
      if (reader.FileLoad(own.path.c_str(), &work) == -1) return false;
      if (SCFile::file_Origin(work.file).identity == own.identity)
        return Merge(descriptor, own.path.c_str(), &work, newGroups);
      SCFile::file_Fail(SCFile::status_MovedOn, own.path, "another file has taken its name");
      Drop(work);
      return false;
    });
    faults = std::move(judgement.faults);
    if (isRead) return 0;
  } catch (const std::bad_alloc&) {
    FailToLoad();
  }
  FcontClose(descriptor);
  return 1;
}

void CFCont::FileClose(CFContTypeFileDescr* descriptor) {
  for (const SCFile::FileHandle file : descriptor->files) SCFile::file_Close(file);
  ForEachType([&](const auto& type) { (descriptor->*type.list).RemoveAll(); });
  descriptor->defects.RemoveAll();
}

void CFCont::FcontClose(CFContTypeFileDescr* descriptor) {
  for (const SCFile::FileHandle file : descriptor->files) SCFile::file_Close(file);
  utdata::DeleteGroups(*descriptor);
  delete descriptor;
}

std::vector<utdata::ShortenedDefect> utdata::ShortenedDefects(
    const CFContTypeFileDescr& descriptor) {
  std::vector<ShortenedDefect> shortened;
  std::size_t place = 0;
  for (const stDefectExtern* record : descriptor.defects) {
    if (!record->loss.empty()) shortened.push_back({place, record->loss});
    ++place;
  }
  return shortened;
}

void utdata::DeleteGroups(CFContTypeFileDescr& descriptor) {
  ForEachType([&](const auto& type) { Release(descriptor.*type.list); });
  ReleaseDefects(descriptor.defects);
}
