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

/// Chosen calls fail, or each call in turn. A disk is never synced: no test of it loses power.
class FailingFileSystem final : public PassingFileSystem {
 public:
  enum class Call {
    Open,
    Exists,
    IdentifyName,
    Rename,
    Remove,
    SyncDirectory,
    FreeSpace,
    Reserve,
    Read,
    Write,
    Sync,
    Size,
    IsStored,
    Truncate,
    Seek,
    Allocate,
    Map,
    CreateMapping,
    MapAt,
    Lock,
    Identify,
    Permissions
  };

  /// From now on these calls do nothing and answer `error`; None lets them work again.
  void Let(Call call, os::Error error) { m_errors[call] = error; }
  /// The `number`-th call from now on, from 1, answers `error`, and every call after it where
  /// `andAllAfter` says so; they do nothing, but a write does its first half. 0: none.
  void FailAt(std::uint64_t number, os::Error error, bool andAllAfter);
  /// The calls since FailAt.
  [[nodiscard]] std::uint64_t Calls() const { return m_calls; }
  /// The first call that FailAt made fail.
  [[nodiscard]] std::optional<Call> FailedCall() const { return m_failed; }
  /// What FreeSpace answers from now on.
  void SetFreeSpace(std::uint64_t bytes) { m_freeSpace = bytes; }

  os::Error Open(const std::wstring& path,
                 os::OpenMode mode,
                 std::unique_ptr<os::File>& file) override;
  bool Exists(const std::wstring& path) override;
  os::Error Identify(const std::wstring& path, os::FileIdentity& identity) override;
  os::Error Rename(const std::wstring& from, const std::wstring& to, bool replace) override;
  os::Error Remove(const std::wstring& path) override;
  os::Error SyncDirectoryOf(const std::wstring& path) override;
  os::Error FreeSpace(const std::wstring& path, std::uint64_t& bytes) override;
  os::Error Reserve(std::size_t size, std::unique_ptr<os::AddressRange>& range) override;

  /// For its files: the error of a call, noted as the platform's last.
  [[nodiscard]] os::Error ErrorOf(Call call);

 private:
  std::map<Call, os::Error> m_errors;
  std::uint64_t m_calls = 0;
  std::uint64_t m_failAt = 0;
  os::Error m_failWith = os::Error::None;
  bool m_andAllAfter = false;
  std::optional<Call> m_failed;
  std::optional<std::uint64_t> m_freeSpace;
};

}  // namespace utdata::test
