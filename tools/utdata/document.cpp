#include "document.h"

#include <filesystem>
#include <utility>

#include "data_group.h"
#include "failure.h"
#include "group_lists.h"
#include "interfaces/os.h"
#include "interrupt.h"
#include "text.h"

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

}  // namespace

void Document::Release::operator()(CFContTypeFileDescr* groups) const {
  VisitGroupLists(*groups, [](const char*, auto& list, auto remove) {
    for (auto* group : list) remove(group);
    list.RemoveAll();
  });
  CFCont().FileClose(groups);
  delete groups;
}

Document Document::New(const std::string& path) {
  Document document(path, new CFContTypeFileDescr);
  if (!document.m_groups->SetPath(ToWide(path))) throw Failure(path, "cannot be written", "the path is too long");
  return document;
}

Document Document::Load(const std::string& path) {
  CFCont container;
  const std::wstring widePath = ToWide(path);
  Document document(path, container.FileLoad(widePath.c_str(), nullptr, nullptr));
  if (!document.m_groups) throw Failure::OfLibrary(StatusOfOpening(widePath), path, "cannot be loaded");
  constexpr int readAllCompanions[8] = {0, 0, 0, 0, 1, 1, 0, 0};
  CFContTypeFileDescr* groups = document.m_groups.release();  // a failed update deletes it
  if (container.FileUpdate(widePath.c_str(), groups, readAllCompanions, nullptr, nullptr) != 0)
    throw Failure::OfLibrary(SCFile::status_Ok, path, "a companion cannot be read");
  document.m_groups.reset(groups);
  for (CGDataTypeFDD* group : groups->data) AssignBookmarkType(*group);
  return document;
}

std::vector<std::string> Document::Files() const {
  std::vector<std::string> paths;
  for (SCFile::FileHandle file : m_groups->files) paths.push_back(ToUtf8(SCFile::file_Path(file)));
  return paths;
}

Host& Document::GetHost() const {
  if (!m_host) m_host = std::make_unique<Host>(*m_groups);
  return *m_host;
}

void Document::WriteNew(bool replace) {
  const UnfinishedFileScope unfinished(m_path);
  SCFile::GroupHandle topGroup = nullptr;
  SCFile::FileHandle file = nullptr;
  const int status = CFCont().FileWrite(nullptr, m_groups.get(), replace ? 0 : 1, &topGroup, &file, 0);
  if (status != SCFile::status_Ok) throw Failure::OfLibrary(status, m_path, "cannot be written");
  if (const int closed = SCFile::file_Close(file); closed != SCFile::status_Ok)
    throw Failure::OfLibrary(closed, m_path, "cannot be closed");
}

std::string Document::WriteCompanion(Document& changes) {
  const auto filesBefore = m_groups->files.GetCount();
  const int status = CFCont().FileWrite(m_groups.get(), changes.m_groups.get(), 1, nullptr, nullptr, 0);
  if (status != SCFile::status_Ok) throw Failure::OfLibrary(status, m_path, "its companion cannot be written");
  if (m_groups->files.GetCount() == filesBefore)
    throw Failure(m_path, "its companion cannot be written", "the companions are not numbered without a gap");
  return ToUtf8(SCFile::file_Path(m_groups->files.GetTail()));
}

void CheckNewPath(const std::string& path, bool replace) {
  if (!replace && Exists(path)) throw Failure(path, "cannot be written", "the file exists", "--force replaces it");
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

MappedSamples::MappedSamples(const CGDataTypeFDD& group) : m_file(SCFile::file_OfGroup(group.samples.group)) {
  const int status = gdata_SamplesMap(&group, &m_data, &m_size);
  if (status != SCFile::status_Ok) {
    const std::string path = m_file ? ToUtf8(SCFile::file_Path(m_file)) : std::string();
    throw Failure::OfLibrary(status, path, "its samples cannot be mapped");
  }
}

MappedSamples::~MappedSamples() { SCFile::file_BlockUnmap(m_file, m_data); }

}  // namespace utdata::program
