#include "tests/support/failing_file_system.h"

#include <utility>

namespace utdata::test {

using os::Error;
using Call = FailingFileSystem::Call;

namespace {

class FailingMapping final : public os::FileMapping {
 public:
  FailingMapping(const FailingFileSystem& system, std::unique_ptr<os::FileMapping> real)
      : m_system(system), m_real(std::move(real)) {}
  std::uint64_t Size() const noexcept override { return m_real->Size(); }
  Error MapAt(os::AddressRange& range, std::size_t offset, std::size_t size) override {
    const Error error = m_system.ErrorOf(Call::MapAt);
    return error != Error::None ? error : m_real->MapAt(range, offset, size);
  }

 private:
  const FailingFileSystem& m_system;
  std::unique_ptr<os::FileMapping> m_real;
};

class FailingFile final : public os::File {
 public:
  FailingFile(const FailingFileSystem& system, std::unique_ptr<os::File> real)
      : m_system(system), m_real(std::move(real)) {}

  Error ReadAt(std::uint64_t offset, std::span<std::byte> buffer, std::size_t& done) override {
    return m_real->ReadAt(offset, buffer, done);
  }
  Error WriteAt(std::uint64_t offset, std::span<const std::byte> bytes) override {
    const Error error = m_system.ErrorOf(Call::Write);
    return error != Error::None ? error : m_real->WriteAt(offset, bytes);
  }
  Error Sync() override { return m_real->Sync(); }
  Error Size(std::uint64_t& size) override { return m_real->Size(size); }
  Error IsStored(std::uint64_t offset,
                 std::uint64_t size,
                 std::uint64_t least,
                 bool& isStored) override {
    return m_real->IsStored(offset, size, least, isStored);
  }
  Error Truncate(std::uint64_t size) override {
    const Error error = m_system.ErrorOf(Call::Truncate);
    return error != Error::None ? error : m_real->Truncate(size);
  }
  Error Seek(std::uint64_t position) override {
    const Error error = m_system.ErrorOf(Call::Seek);
    return error != Error::None ? error : m_real->Seek(position);
  }
  Error Allocate(std::uint64_t offset, std::uint64_t size) override {
    const Error error = m_system.ErrorOf(Call::Allocate);
    return error != Error::None ? error : m_real->Allocate(offset, size);
  }
  Error Map(std::uint64_t offset,
            std::size_t size,
            std::unique_ptr<os::Mapping>& mapping) override {
    return m_real->Map(offset, size, mapping);
  }
  Error CreateMapping(std::uint64_t size, std::unique_ptr<os::FileMapping>& mapping) override {
    if (const Error error = m_system.ErrorOf(Call::CreateMapping); error != Error::None)
      return error;
    std::unique_ptr<os::FileMapping> real;
    const Error error = m_real->CreateMapping(size, real);
    if (error == Error::None) mapping = std::make_unique<FailingMapping>(m_system, std::move(real));
    return error;
  }
  Error TryLock() override { return m_real->TryLock(); }
  void Unlock() noexcept override { m_real->Unlock(); }
  Error Identify(os::FileIdentity& identity) override { return m_real->Identify(identity); }
  Error CopyPermissionsOf(const std::wstring& path) override {
    return m_real->CopyPermissionsOf(path);
  }

 private:
  const FailingFileSystem& m_system;
  std::unique_ptr<os::File> m_real;
};

}  // namespace

Error FailingFileSystem::ErrorOf(Call call) const {
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
