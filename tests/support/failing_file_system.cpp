#include "tests/support/failing_file_system.h"

#include <utility>

namespace utdata::test {

using os::Error;
using Call = FailingFileSystem::Call;

namespace {

class FailingMapping final : public os::FileMapping {
 public:
  FailingMapping(FailingFileSystem& system, std::unique_ptr<os::FileMapping> real)
      : m_system(system), m_real(std::move(real)) {}
  std::uint64_t Size() const noexcept override { return m_real->Size(); }
  Error MapAt(os::AddressRange& range, std::size_t offset, std::size_t size) override {
    const Error error = m_system.ErrorOf(Call::MapAt);
    return error != Error::None ? error : m_real->MapAt(range, offset, size);
  }

 private:
  FailingFileSystem& m_system;
  std::unique_ptr<os::FileMapping> m_real;
};

class FailingFile final : public os::File {
 public:
  FailingFile(FailingFileSystem& system, std::unique_ptr<os::File> real)
      : m_system(system), m_real(std::move(real)) {}

  Error ReadAt(std::uint64_t offset, std::span<std::byte> buffer, std::size_t& done) override {
    done = 0;
    return Unless(Call::Read, [&] { return m_real->ReadAt(offset, buffer, done); });
  }
  Error WriteAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
    const Error error = m_system.ErrorOf(Call::Write);
    if (error != Error::None) bytes = bytes.first(bytes.size() / 2);
    const Error real = m_real->WriteAt(offset, bytes);
    return error != Error::None ? os::Fail(error) : real;
  }
  Error Sync() override { return m_system.ErrorOf(Call::Sync); }
  Error Size(std::uint64_t& size) override {
    return Unless(Call::Size, [&] { return m_real->Size(size); });
  }
  Error IsStored(std::uint64_t offset,
                 std::uint64_t size,
                 std::uint64_t least,
                 bool& isStored) override {
    return Unless(Call::IsStored, [&] { return m_real->IsStored(offset, size, least, isStored); });
  }
  Error Truncate(std::uint64_t size) override {
    return Unless(Call::Truncate, [&] { return m_real->Truncate(size); });
  }
  Error Seek(std::uint64_t position) override {
    return Unless(Call::Seek, [&] { return m_real->Seek(position); });
  }
  Error Allocate(std::uint64_t offset, std::uint64_t size) override {
    return Unless(Call::Allocate, [&] { return m_real->Allocate(offset, size); });
  }
  Error Map(std::uint64_t offset,
            std::size_t size,
            std::unique_ptr<os::Mapping>& mapping) override {
    return Unless(Call::Map, [&] { return m_real->Map(offset, size, mapping); });
  }
  Error CreateMapping(std::uint64_t size, std::unique_ptr<os::FileMapping>& mapping) override {
    return Unless(Call::CreateMapping, [&] {
      std::unique_ptr<os::FileMapping> real;
      const Error error = m_real->CreateMapping(size, real);
      if (error == Error::None)
        mapping = std::make_unique<FailingMapping>(m_system, std::move(real));
      return error;
    });
  }
  Error TryLock() override {
    return Unless(Call::Lock, [&] { return m_real->TryLock(); });
  }
  void Unlock() noexcept override { m_real->Unlock(); }
  Error Identify(os::FileIdentity& identity) override {
    return Unless(Call::Identify, [&] { return m_real->Identify(identity); });
  }
  Error CopyPermissionsOf(const std::wstring& path) override {
    return Unless(Call::Permissions, [&] { return m_real->CopyPermissionsOf(path); });
  }

 private:
  template <class Do>
  Error Unless(Call call, Do&& work) {
    const Error error = m_system.ErrorOf(call);
    return error != Error::None ? error : work();
  }

  FailingFileSystem& m_system;
  std::unique_ptr<os::File> m_real;
};

}  // namespace

void FailingFileSystem::FailAt(std::uint64_t number, Error error, bool andAllAfter) {
  m_calls = 0;
  m_failAt = number;
  m_failWith = error;
  m_andAllAfter = andAllAfter;
  m_failed.reset();
}

Error FailingFileSystem::ErrorOf(Call call) {
  ++m_calls;
  if (m_failAt > 0 && (m_calls == m_failAt || (m_andAllAfter && m_calls > m_failAt))) {
    if (!m_failed) m_failed = call;
    return os::Fail(m_failWith);
  }
  const auto found = m_errors.find(call);
  return found == m_errors.end() || found->second == Error::None ? Error::None
                                                                 : os::Fail(found->second);
}

Error FailingFileSystem::Open(const std::wstring& path,
                              os::OpenMode mode,
                              std::unique_ptr<os::File>& file) {
  if (const Error error = ErrorOf(Call::Open); error != Error::None) return error;
  std::unique_ptr<os::File> real;
  const Error error = PassingFileSystem::Open(path, mode, real);
  if (error == Error::None) file = std::make_unique<FailingFile>(*this, std::move(real));
  return error;
}

bool FailingFileSystem::Exists(const std::wstring& path) {
  const Error error = ErrorOf(Call::Exists);
  return error == Error::None ? PassingFileSystem::Exists(path) : os::MayExist(error);
}

Error FailingFileSystem::Identify(const std::wstring& path, os::FileIdentity& identity) {
  const Error error = ErrorOf(Call::IdentifyName);
  return error != Error::None ? error : PassingFileSystem::Identify(path, identity);
}

Error FailingFileSystem::Rename(const std::wstring& from, const std::wstring& to, bool replace) {
  const Error error = ErrorOf(Call::Rename);
  return error != Error::None ? error : PassingFileSystem::Rename(from, to, replace);
}

Error FailingFileSystem::Remove(const std::wstring& path) {
  const Error error = ErrorOf(Call::Remove);
  return error != Error::None ? error : PassingFileSystem::Remove(path);
}

Error FailingFileSystem::SyncDirectoryOf(const std::wstring&) {
  return ErrorOf(Call::SyncDirectory);
}

Error FailingFileSystem::FreeSpace(const std::wstring& path, std::uint64_t& bytes) {
  if (const Error error = ErrorOf(Call::FreeSpace); error != Error::None) return error;
  if (!m_freeSpace) return PassingFileSystem::FreeSpace(path, bytes);
  bytes = *m_freeSpace;
  return Error::None;
}

Error FailingFileSystem::Reserve(std::size_t size, std::unique_ptr<os::AddressRange>& range) {
  const Error error = ErrorOf(Call::Reserve);
  return error != Error::None ? error : PassingFileSystem::Reserve(size, range);
}

}  // namespace utdata::test
