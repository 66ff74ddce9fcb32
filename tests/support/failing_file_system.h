// The machine's own file system in which chosen calls fail. FailingFileSystem works on real files,
// so that mappings are real too; a disk that is kept in memory and loses power is FaultyFileSystem.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "interfaces/os.h"

namespace utdata::test {

/// Hands everything on to the machine's own file system; a test derives from it and changes what it
/// needs.
class PassingFileSystem : public os::FileSystem {
 public:
  os::Error Open(const std::wstring& path,
                 os::OpenMode mode,
                 std::unique_ptr<os::File>& file) override {
    return m_real.Open(path, mode, file);
  }
  bool Exists(const std::wstring& path) override { return m_real.Exists(path); }
  os::Error Identify(const std::wstring& path, os::FileIdentity& identity) override {
    return m_real.Identify(path, identity);
  }
  os::Error Rename(const std::wstring& from, const std::wstring& to, bool replace) override {
    return m_real.Rename(from, to, replace);
  }
  os::Error Remove(const std::wstring& path) override { return m_real.Remove(path); }
  os::Error SyncDirectoryOf(const std::wstring& path) override {
    return m_real.SyncDirectoryOf(path);
  }
  os::Error FreeSpace(const std::wstring& path, std::uint64_t& bytes) override {
    return m_real.FreeSpace(path, bytes);
  }
  os::Error Reserve(std::size_t size, std::unique_ptr<os::AddressRange>& range) override {
    return m_real.Reserve(size, range);
  }

 private:
  os::FileSystem& m_real = os::CurrentFileSystem();
};

class FailingFileSystem final : public PassingFileSystem {
 public:
  enum class Call {
    Open,
    Write,
    Truncate,
    Seek,
    Allocate,
    CreateMapping,
    MapAt,
    FreeSpace,
    Reserve
  };

  /// From now on these calls do nothing and answer `error`; None lets them work again.
  void Let(Call call, os::Error error) { m_errors[call] = error; }
  /// What FreeSpace answers from now on.
  void SetFreeSpace(std::uint64_t bytes) { m_freeSpace = bytes; }

  os::Error Open(const std::wstring& path,
                 os::OpenMode mode,
                 std::unique_ptr<os::File>& file) override;
  os::Error FreeSpace(const std::wstring& path, std::uint64_t& bytes) override;
  os::Error Reserve(std::size_t size, std::unique_ptr<os::AddressRange>& range) override;

  /// For its files: the error of a call, noted as the platform's last.
  [[nodiscard]] os::Error ErrorOf(Call call) const;

 private:
  std::map<Call, os::Error> m_errors;
  std::optional<std::uint64_t> m_freeSpace;
};

}  // namespace utdata::test
