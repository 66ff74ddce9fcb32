#include "document/document.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <type_traits>
#include <utility>

#include "interfaces/os.h"
#include "terminal/failure.h"
#include "terminal/interrupt.h"
#include "terminal/text.h"
#include "utdata/grouplists.h"

namespace utdata::program {
namespace {

std::string FirstCompanion(const std::string& path) {
  const os::PathParts parts = os::SplitPath(ToWide(path));
  return ToUtf8(parts.drive + parts.directory + parts.name + L".A01");
}

bool Exists(const std::string& path) { return os::CurrentFileSystem().Exists(ToWide(path)); }

/// Why a file that did not load cannot be opened; loading itself tells no status.
int StatusOfOpening(const std::wstring& path) {
  SCFile::FileHandle file = nullptr;
  const int status = SCFile::file_OpenReadOnly(path.c_str(), &file);
  if (status == SCFile::status_Ok) SCFile::file_Close(file);
  return status;
}

void WriteWhole(CFContTypeFileDescr& groups, const std::string& path, bool replace) {
  const UnfinishedFileScope unfinished(path);
  SCFile::GroupHandle topGroup = nullptr;
  SCFile::FileHandle file = nullptr;
  const int status = CFCont().FileWrite(nullptr, &groups, replace ? 0 : 1, &topGroup, &file, 0);
  if (status != SCFile::status_Ok) throw Failure::OfLibrary(status, path, "cannot be written");
  if (const int closed = SCFile::file_Close(file); closed != SCFile::status_Ok)
    throw Failure::OfLibrary(closed, path, "cannot be closed");
}

/// Calls join(list, other) for each pair of lists of two descriptors that hold the same type.
template <class Join>
void ForEachListPair(const CFContTypeFileDescr& groups, CFContTypeFileDescr& others, Join join) {
  std::apply([&](const auto&... each) { (join(groups.*each.list, others.*each.list), ...); },
             groupLists);
}

/// Lets a group stand where the first one with its ids stands.
template <class Descriptor>
void PutInPlace(CList<Descriptor*>& list, Descriptor* group) {
  if constexpr (!std::is_same_v<Descriptor, stDefectExtern>) {
    const auto found = std::find_if(list.begin(), list.end(), [&](const Descriptor* listed) {
      return SCFile::file_Identity(*listed) == SCFile::file_Identity(*group);
    });
    if (found != list.end()) {
      *found = group;
      return;
    }
  }
  list.AddTail(group);
}

}  // namespace

void Document::Release::operator()(CFContTypeFileDescr* groups) const {
  DeleteGroups(*groups);
  CFCont().FileClose(groups);
  delete groups;
}

Document Document::New(const std::string& path) {
  Document document(path, new CFContTypeFileDescr);
  if (!document.m_groups->SetPath(ToWide(path)))
    throw Failure(path, "cannot be written", "the path is too long");
  return document;
}

Document Document::Load(const std::string& path, Tables tables) {
  CFCont container;
  const std::wstring widePath = ToWide(path);
  Document document(path, container.FileLoad(widePath.c_str(), nullptr, nullptr));
  if (!document.m_groups)
    throw Failure::OfLibrary(StatusOfOpening(widePath), path, "cannot be loaded");
  constexpr int readAllCompanions[8] = {0, 0, 0, 0, 1, 1, 0, 0};
  CFContTypeFileDescr* groups = document.m_groups.release();  // a failed update deletes it
  if (container.FileUpdate(widePath.c_str(), groups, readAllCompanions, nullptr, nullptr) != 0)
    throw Failure::OfLibrary(SCFile::status_Ok, path, "a companion cannot be read");
  document.m_groups.reset(groups);
  document.m_tables = tables;
  return document;
}

std::vector<std::string> Document::Files() const {
  std::vector<std::string> paths;
  for (SCFile::FileHandle file : m_groups->files) paths.push_back(ToUtf8(SCFile::file_Path(file)));
  return paths;
}

Host& Document::GetHost() const {
  if (!m_host) m_host = std::make_unique<Host>(*m_groups, m_tables);
  return *m_host;
}

void Document::WriteNew(bool replace) { WriteWhole(*m_groups, m_path, replace); }

std::string Document::WriteCompanion(CFContTypeFileDescr& changes) {
  const auto filesBefore = m_groups->files.GetCount();
  const int status = CFCont().FileWrite(m_groups.get(), &changes, 1, nullptr, nullptr, 0);
  if (status != SCFile::status_Ok)
    throw Failure::OfLibrary(status, m_path, "its companion cannot be written");
  if (m_groups->files.GetCount() == filesBefore)
    throw Failure(m_path,
                  "its companion cannot be written",
                  "the companions are not numbered without a gap",
                  "bring the missing one back, or move away those behind the gap");
  return LastFile();
}

std::string Document::Append(CFContTypeFileDescr& changes) {
  const int status = CFCont().FileWrite(m_groups.get(), &changes, 0, nullptr, nullptr, 0);
  if (status != SCFile::status_Ok)
    throw Failure::OfLibrary(status, LastFile(), "cannot be written");
  return LastFile();
}

void Document::WriteCopy(CFContTypeFileDescr& changes, const std::string& path, bool replace) {
  CheckNotInput(*this, path);
  const auto copy = std::make_unique<CFContTypeFileDescr>();
  if (!copy->SetPath(ToWide(path)))
    throw Failure(path, "cannot be written", "the path is too long");
  ForEachListPair(*m_groups, *copy, [](const auto& from, auto& to) {
    for (auto* group : from) to.AddTail(group);
  });
  ForEachListPair(changes, *copy, [](const auto& from, auto& to) {
    for (auto* group : from) PutInPlace(to, group);
  });
  copy->defectTableFlag = copy->defects.IsEmpty() ? 0 : 1;
  WriteWhole(*copy, path, replace);
}

std::string Document::LastFile() const {
  return ToUtf8(SCFile::file_Path(m_groups->files.GetTail()));
}

void CheckNewPath(const std::string& path, bool replace) {
  if (!replace && Exists(path))
    throw Failure(path, "cannot be written", "the file exists", "--force replaces it");
  const std::filesystem::path folder = std::filesystem::path(ToWide(path)).parent_path();
  std::error_code ignored;
  if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
    throw Failure(path, "cannot be written", "its folder does not exist", "make the folder first");
  if (const std::string companion = FirstCompanion(path); Exists(companion))
    throw Failure(path,
                  "cannot be written",
                  companion + " would be read as its companion",
                  "move that file away or choose another name");
}

void CheckNotInput(const Document& document, const std::string& path) {
  for (const std::string& file : document.Files()) {
    std::error_code ignored;
    if (std::filesystem::equivalent(
            std::filesystem::path(ToWide(file)), std::filesystem::path(ToWide(path)), ignored))
      throw Failure(
          path, "cannot be written", "it is the inspection file itself", "choose another name");
  }
}

MappedSamples::MappedSamples(const CGDataTypeFDD& group)
    : m_file(SCFile::file_OfGroup(group.samples.group)) {
  const int status = gdata_SamplesMap(&group, &m_data, &m_size);
  if (status != SCFile::status_Ok) {
    const std::string path = m_file ? ToUtf8(SCFile::file_Path(m_file)) : std::string();
    throw Failure::OfLibrary(status, path, "its samples cannot be mapped");
  }
}

MappedSamples::~MappedSamples() { SCFile::file_BlockUnmap(m_file, m_data); }

}  // namespace utdata::program
