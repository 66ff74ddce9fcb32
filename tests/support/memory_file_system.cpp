#include "tests/support/memory_file_system.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace utdata::test {

using os::Error;

struct MemoryFileSystem::Inode {
  std::uint64_t number;
  Content content;
  const void* lockedBy = nullptr;
};

namespace {

/// Aligned as well as samples are in a mapped file, for what is read of them at once.
class CopiedView final : public os::Mapping {
 public:
  explicit CopiedView(std::span<const std::byte> bytes)
      : m_bytes(static_cast<std::byte*>(::operator new(bytes.size(), alignment))),
        m_size(bytes.size()) {
    std::copy(bytes.begin(), bytes.end(), m_bytes);
  }
  CopiedView(const CopiedView&) = delete;
  CopiedView& operator=(const CopiedView&) = delete;
  ~CopiedView() override { ::operator delete(m_bytes, alignment); }
  std::byte* Data() const noexcept override { return m_bytes; }
  std::size_t Size() const noexcept override { return m_size; }

 private:
  static constexpr std::align_val_t alignment{64};
  std::byte* m_bytes;
  std::size_t m_size;
};

}  // namespace

class MemoryFile final : public os::File {
 public:
  MemoryFile(std::shared_ptr<MemoryFileSystem::Inode> inode, bool writable)
      : m_inode(std::move(inode)), m_writable(writable) {}
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() override { Unlock(); }

  Error ReadAt(std::uint64_t offset, std::span<std::byte> buffer, std::size_t& done) override {
    done = 0;
    const auto& bytes = m_inode->content;
    if (offset >= bytes.size()) return Error::None;
    done = std::min<std::size_t>(buffer.size(), bytes.size() - static_cast<std::size_t>(offset));
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), done, buffer.begin());
    return Error::None;
  }
  Error WriteAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
    if (!m_writable) return os::Fail(Error::AccessDenied);
    if (offset > MemoryFileSystem::largestFile ||
        bytes.size() > MemoryFileSystem::largestFile - offset)
      return os::Fail(Error::DiskFull);
    auto& content = m_inode->content;
    const auto at = static_cast<std::size_t>(offset);
    if (content.size() < at + bytes.size()) content.resize(at + bytes.size());
    std::copy(bytes.begin(), bytes.end(), content.begin() + static_cast<std::ptrdiff_t>(at));
    return Error::None;
  }
  Error Sync() override { return Error::None; }
  Error Size(std::uint64_t& size) override {
    size = m_inode->content.size();
    return Error::None;
  }
  Error IsStored(std::uint64_t, std::uint64_t, std::uint64_t, bool& isStored) override {
    isStored = true;
    return Error::None;
  }
  Error Truncate(std::uint64_t size) override {
    if (!m_writable) return os::Fail(Error::AccessDenied);
    if (size > MemoryFileSystem::largestFile) return os::Fail(Error::DiskFull);
    m_inode->content.resize(static_cast<std::size_t>(size));
    return Error::None;
  }
  Error Seek(std::uint64_t) override { return Error::None; }
  Error Allocate(std::uint64_t offset, std::uint64_t size) override {
    return offset + size > m_inode->content.size() ? Truncate(offset + size) : Error::None;
  }
  Error CreateMapping(std::uint64_t, std::unique_ptr<os::FileMapping>&) override {
    return os::Fail(Error::NotSupported);
  }
  Error Map(std::uint64_t offset,
            std::size_t size,
            std::unique_ptr<os::Mapping>& mapping) override {
    mapping = std::make_unique<CopiedView>(
        std::span(m_inode->content).subspan(static_cast<std::size_t>(offset), size));
    return Error::None;
  }
  Error TryLock() override {
    if (m_inode->lockedBy && m_inode->lockedBy != this) return os::Fail(Error::Busy);
    m_inode->lockedBy = this;
    return Error::None;
  }
  void Unlock() noexcept override {
    if (m_inode->lockedBy == this) m_inode->lockedBy = nullptr;
  }
  Error Identify(os::FileIdentity& identity) override {
    identity = {1, m_inode->number};
    return Error::None;
  }
  Error CopyPermissionsOf(const std::wstring&) override { return Error::None; }

 private:
  std::shared_ptr<MemoryFileSystem::Inode> m_inode;
  bool m_writable;
};

MemoryFileSystem::MemoryFileSystem() = default;
MemoryFileSystem::~MemoryFileSystem() = default;

void MemoryFileSystem::Put(const std::wstring& path, Content content) {
  std::shared_ptr<Inode>& inode = m_names[path];
  if (!inode) inode = std::make_shared<Inode>(Inode{++m_made, {}});
  inode->content = std::move(content);
}

const MemoryFileSystem::Content& MemoryFileSystem::Get(const std::wstring& path) const {
  return m_names.at(path)->content;
}

Error MemoryFileSystem::Open(const std::wstring& path,
                             os::OpenMode mode,
                             std::unique_ptr<os::File>& file) {
  const bool isNew = mode == os::OpenMode::Create;
  if (m_names.contains(path) == isNew) return os::Fail(isNew ? Error::Exists : Error::NotFound);
  if (isNew) Put(path, {});
  file = std::make_unique<MemoryFile>(m_names[path], mode != os::OpenMode::Read);
  return Error::None;
}

bool MemoryFileSystem::Exists(const std::wstring& path) { return m_names.contains(path); }

Error MemoryFileSystem::Identify(const std::wstring& path, os::FileIdentity& identity) {
  const auto found = m_names.find(path);
  if (found == m_names.end()) return os::Fail(Error::NotFound);
  identity = {1, found->second->number};
  return Error::None;
}

Error MemoryFileSystem::Rename(const std::wstring& from, const std::wstring& to, bool replace) {
  const auto found = m_names.find(from);
  if (found == m_names.end()) return os::Fail(Error::NotFound);
  if (!replace && m_names.contains(to)) return os::Fail(Error::Exists);
  m_names[to] = found->second;
  m_names.erase(from);
  return Error::None;
}

Error MemoryFileSystem::Remove(const std::wstring& path) {
  return m_names.erase(path) == 1 ? Error::None : os::Fail(Error::NotFound);
}

Error MemoryFileSystem::SyncDirectoryOf(const std::wstring&) { return Error::None; }

Error MemoryFileSystem::FreeSpace(const std::wstring&, std::uint64_t& bytes) {
  bytes = largestFile;
  return Error::None;
}

Error MemoryFileSystem::Reserve(std::size_t, std::unique_ptr<os::AddressRange>&) {
  return os::Fail(Error::NotSupported);
}

}  // namespace utdata::test
