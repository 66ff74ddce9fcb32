#include "tests/support/faulty_file_system.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace utdata::test {

using os::Error;

struct FaultyFileSystem::Inode {
  struct Work {
    bool isCut;
    std::uint64_t offset;  ///< of a cut, the new size
    Content bytes;
  };

  void Cut(std::uint64_t size) {
    unsynced.push_back({true, size, {}});
    now.resize(static_cast<std::size_t>(size));
  }
  void Write(std::uint64_t offset, std::span<const std::byte> bytes) {
    if (bytes.empty()) return;
    unsynced.push_back({false, offset, {bytes.begin(), bytes.end()}});
    Apply(now, offset, bytes);
  }
  void Sync() {
    durable = now;
    unsynced.clear();
  }
  void LosePower(std::mt19937_64& dice, Tearing tearing) {
    for (const Work& work : unsynced) {
      if (dice() % 2 == 0) continue;
      if (work.isCut) {
        durable.resize(static_cast<std::size_t>(work.offset));
      } else if (tearing == Tearing::Sectors) {
        ApplySectors(work, dice);
      } else {
        const std::size_t part = dice() % (work.bytes.size() + 1);
        const std::span<const std::byte> bytes(work.bytes);
        dice() % 2 ? Apply(durable, work.offset, bytes.first(part))
                   : Apply(durable, work.offset + part, bytes.subspan(part));
      }
    }
    unsynced.clear();
    now = durable;
    lockedBy = nullptr;
  }

  /// Of inodes that live at the same time.
  [[nodiscard]] os::FileIdentity Identity() const {
    return {1, reinterpret_cast<std::uintptr_t>(this)};
  }

  Content now;
  Content durable;
  std::vector<Work> unsynced;
  const void* lockedBy = nullptr;

 private:
  static void Apply(Content& content, std::uint64_t offset, std::span<const std::byte> bytes) {
    const auto at = static_cast<std::size_t>(offset);
    if (content.size() < at + bytes.size()) content.resize(at + bytes.size());
    std::copy(bytes.begin(), bytes.end(), content.begin() + static_cast<std::ptrdiff_t>(at));
  }
  void ApplySectors(const Work& work, std::mt19937_64& dice) {
    constexpr std::uint64_t sector = 512;
    const bool whole = dice() % 2 == 0;
    for (std::uint64_t from = 0; from < work.bytes.size();) {
      const std::uint64_t next =
          std::min<std::uint64_t>(work.bytes.size(), from + sector - (work.offset + from) % sector);
      const auto bytes =
          std::span(work.bytes)
              .subspan(static_cast<std::size_t>(from), static_cast<std::size_t>(next - from));
      if (whole || dice() % 2) Apply(durable, work.offset + from, bytes);
      from = next;
    }
  }
};

namespace {

class MemoryView final : public os::Mapping {
 public:
  explicit MemoryView(std::span<const std::byte> bytes) : m_bytes(bytes.begin(), bytes.end()) {}
  std::byte* Data() const noexcept override { return m_bytes.data(); }
  std::size_t Size() const noexcept override { return m_bytes.size(); }

 private:
  mutable std::vector<std::byte> m_bytes;
};

}  // namespace

class FaultyFile final : public os::File {
 public:
  FaultyFile(FaultyFileSystem& disk, std::shared_ptr<FaultyFileSystem::Inode> inode, bool writable)
      : m_disk(disk), m_inode(std::move(inode)), m_life(disk.m_life), m_writable(writable) {}
  FaultyFile(const FaultyFile&) = delete;
  FaultyFile& operator=(const FaultyFile&) = delete;
  ~FaultyFile() override { Unlock(); }

  Error ReadAt(std::uint64_t offset, std::span<std::byte> buffer, std::size_t& done) override {
    done = 0;
    if (const Error error = Count("read"); error != Error::None) return error;
    const auto& bytes = m_inode->now;
    if (offset >= bytes.size()) return Error::None;
    done = std::min<std::size_t>(buffer.size(), bytes.size() - static_cast<std::size_t>(offset));
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), done, buffer.begin());
    return Error::None;
  }
  Error WriteAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
    if (!m_writable) return Error::AccessDenied;
    Error error = Count("write");
    if (error != Error::None) {
      if (IsAlive()) m_inode->Write(offset, bytes.first(bytes.size() / 2));
      return error;
    }
    const std::uint64_t end = offset + bytes.size();
    const std::uint64_t growth = end > m_inode->now.size() ? end - m_inode->now.size() : 0;
    const std::uint64_t missing = growth - m_disk.RoomFor(growth);
    m_inode->Write(offset,
                   bytes.first(bytes.size() - static_cast<std::size_t>(
                                                  std::min<std::uint64_t>(missing, bytes.size()))));
    return missing == 0 ? Error::None : Error::DiskFull;
  }
  Error Sync() override {
    const Error error = Count("sync");
    if (error == Error::None) m_inode->Sync();
    return error;
  }
  Error Size(std::uint64_t& size) override {
    const Error error = Count("size");
    size = m_inode->now.size();
    return error;
  }
  Error IsStored(std::uint64_t, std::uint64_t, std::uint64_t, bool& isStored) override {
    isStored = true;
    return Count("is stored");
  }
  Error Truncate(std::uint64_t size) override {
    if (!m_writable) return Error::AccessDenied;
    if (const Error error = Count("truncate"); error != Error::None) return error;
    const std::uint64_t growth = size > m_inode->now.size() ? size - m_inode->now.size() : 0;
    if (m_disk.RoomFor(growth) < growth) return Error::DiskFull;
    m_inode->Cut(size);
    return Error::None;
  }
  Error Seek(std::uint64_t) override { return Count("seek"); }
  Error Allocate(std::uint64_t offset, std::uint64_t size) override {
    if (const Error error = Count("allocate"); error != Error::None) return error;
    return offset + size > m_inode->now.size() ? Truncate(offset + size) : Error::None;
  }
  Error CreateMapping(std::uint64_t, std::unique_ptr<os::FileMapping>&) override {
    return os::Fail(Error::NotSupported);  // what is mapped shared has no state to lose in a way
                                           // that this disk could play
  }
  Error Map(std::uint64_t offset,
            std::size_t size,
            std::unique_ptr<os::Mapping>& mapping) override {
    if (const Error error = Count("map"); error != Error::None) return error;
    mapping = std::make_unique<MemoryView>(
        std::span(m_inode->now).subspan(static_cast<std::size_t>(offset), size));
    return Error::None;
  }
  Error TryLock() override {
    if (const Error error = Count("lock"); error != Error::None) return error;
    if (m_inode->lockedBy && m_inode->lockedBy != this) return Error::Busy;
    m_inode->lockedBy = this;
    return Error::None;
  }
  void Unlock() noexcept override {
    if (m_inode->lockedBy == this) m_inode->lockedBy = nullptr;
  }
  Error Identify(os::FileIdentity& identity) override {
    identity = m_inode->Identity();
    return Count("identify");
  }
  Error CopyPermissionsOf(const std::wstring&) override { return Count("permissions"); }

 private:
  [[nodiscard]] bool IsAlive() const {
    return m_life == m_disk.m_life && !(m_disk.m_cutAt && m_disk.m_calls > *m_disk.m_cutAt);
  }
  Error Count(const char* call) {
    if (m_life != m_disk.m_life) return Error::Other;
    return m_disk.Count(call);
  }

  FaultyFileSystem& m_disk;
  std::shared_ptr<FaultyFileSystem::Inode> m_inode;
  std::uint64_t m_life;
  bool m_writable;
};

FaultyFileSystem::FaultyFileSystem() = default;
FaultyFileSystem::~FaultyFileSystem() = default;

void FaultyFileSystem::FailAt(std::uint64_t call, Error error) {
  m_failAt = m_calls + call;
  m_failWith = error;
  m_failedCall.clear();
}

void FaultyFileSystem::CutPowerAfter(std::uint64_t calls) { m_cutAt = m_calls + calls; }

void FaultyFileSystem::Restart(std::uint64_t seed, Tearing tearing) {
  std::mt19937_64 dice(seed);
  for (const NameChange& change : m_unsyncedChanges) {
    if (dice() % 2 == 0) continue;
    for (const auto& [path, inode] : change)
      if (inode) {
        m_durableNames[path] = inode;
      } else {
        m_durableNames.erase(path);
      }
  }
  m_unsyncedChanges.clear();
  m_names = m_durableNames;
  for (const auto& each : m_inodes)
    if (const auto inode = each.lock()) inode->LosePower(dice, tearing);
  ++m_life;
  m_failAt = 0;
  m_cutAt.reset();
  m_capacity.reset();
}

void FaultyFileSystem::Put(const std::wstring& path, Content content) {
  auto inode = std::make_shared<Inode>();
  inode->now = inode->durable = std::move(content);
  m_inodes.push_back(inode);
  m_names[path] = m_durableNames[path] = inode;
}

std::optional<FaultyFileSystem::Content> FaultyFileSystem::Get(const std::wstring& path) const {
  const auto found = m_names.find(path);
  if (found == m_names.end()) return std::nullopt;
  return found->second->now;
}

Error FaultyFileSystem::Open(const std::wstring& path,
                             os::OpenMode mode,
                             std::unique_ptr<os::File>& file) {
  if (const Error error = Count("open"); error != Error::None) return error;
  const bool writable = mode != os::OpenMode::Read;
  if (writable && std::find(m_protected.begin(), m_protected.end(), path) != m_protected.end())
    return Error::AccessDenied;
  auto found = m_names.find(path);
  if (found != m_names.end() && mode == os::OpenMode::Create) return Error::Exists;
  if (found == m_names.end()) {
    if (mode != os::OpenMode::Create) return Error::NotFound;
    auto inode = std::make_shared<Inode>();
    m_inodes.push_back(inode);
    Change({{path, inode}});
    found = m_names.find(path);
  }
  file = std::make_unique<FaultyFile>(*this, found->second, writable);
  return Error::None;
}

bool FaultyFileSystem::Exists(const std::wstring& path) {
  const Error error = Count("exists");
  return error == Error::None ? m_names.contains(path) : os::MayExist(error);
}

Error FaultyFileSystem::Identify(const std::wstring& path, os::FileIdentity& identity) {
  if (const Error error = Count("identify name"); error != Error::None) return error;
  const auto found = m_names.find(path);
  if (found == m_names.end()) return Error::NotFound;
  identity = found->second->Identity();
  return Error::None;
}

Error FaultyFileSystem::Rename(const std::wstring& from, const std::wstring& to, bool replace) {
  if (const Error error = Count("rename"); error != Error::None) return error;
  const auto found = m_names.find(from);
  if (found == m_names.end()) return Error::NotFound;
  if (!replace && m_names.contains(to)) return Error::Exists;
  Change({{to, found->second}, {from, nullptr}});
  return Error::None;
}

Error FaultyFileSystem::Remove(const std::wstring& path) {
  if (const Error error = Count("remove"); error != Error::None) return error;
  if (!m_names.contains(path)) return Error::NotFound;
  Change({{path, nullptr}});
  return Error::None;
}

Error FaultyFileSystem::SyncDirectoryOf(const std::wstring&) {
  if (const Error error = Count("sync directory"); error != Error::None) return error;
  m_durableNames = m_names;
  m_unsyncedChanges.clear();
  return Error::None;
}

Error FaultyFileSystem::FreeSpace(const std::wstring&, std::uint64_t& bytes) {
  bytes = RoomFor(std::numeric_limits<std::uint64_t>::max());
  return Count("free space");
}

Error FaultyFileSystem::Reserve(std::size_t, std::unique_ptr<os::AddressRange>&) {
  return os::Fail(Error::NotSupported);
}

Error FaultyFileSystem::Count(const char* call) {
  ++m_calls;
  if (m_cutAt && m_calls > *m_cutAt) return os::Fail(Error::Other);
  if (m_calls != m_failAt) return Error::None;
  m_failedCall = call;
  return os::Fail(m_failWith);
}

void FaultyFileSystem::Change(NameChange change) {
  for (const auto& [path, inode] : change)
    if (inode) {
      m_names[path] = inode;
    } else {
      m_names.erase(path);
    }
  m_unsyncedChanges.push_back(std::move(change));
}

std::uint64_t FaultyFileSystem::RoomFor(std::uint64_t growth) const {
  if (!m_capacity) return growth;
  std::uint64_t used = 0;
  for (const auto& each : m_inodes)
    if (const auto inode = each.lock()) used += inode->now.size();
  return used >= *m_capacity ? 0 : std::min(growth, *m_capacity - used);
}

}  // namespace utdata::test
