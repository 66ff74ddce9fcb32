// A file system in memory whose disk can be made to fail: at a given call, by filling up, or by
// losing power.
//
// It keeps what was synced apart from what was only written. When the power is cut, each unsynced
// write, cut and rename survives or not at random, writes also in part; Restart brings
// the machine back up. It has no mappings that are shared and no addresses to reserve. One thread
// at a time.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "interfaces/os.h"
#include "tests/support/file_system_in_place.h"

namespace utdata::test {

/// What survives of a write that the power cut interrupts.
enum class Tearing {
  Sectors,  ///< any of its sectors of 512 bytes
  Bytes     ///< any first or last part of it
};

class FaultyFileSystem final : public os::FileSystem {
 public:
  using Content = std::vector<std::byte>;

  FaultyFileSystem();
  FaultyFileSystem(const FaultyFileSystem&) = delete;
  FaultyFileSystem& operator=(const FaultyFileSystem&) = delete;
  ~FaultyFileSystem() override;

  /// The `call`-th call from now on (from 1) fails with `error`, once. A write that fails was done
  /// in half.
  void FailAt(std::uint64_t call, os::Error error);
  /// After `calls` more calls the power is off: every further call fails.
  void CutPowerAfter(std::uint64_t calls);
  /// Capacity for all files together, in bytes. None: endless.
  void SetCapacity(std::optional<std::uint64_t> bytes) { m_capacity = bytes; }
  /// Files of this path can be read but not written.
  void Protect(const std::wstring& path) { m_protected.push_back(path); }

  /// Power on again: unsynced work survives as `seed` has it; handles of before are dead, faults
  /// forgotten, the capacity endless.
  void Restart(std::uint64_t seed, Tearing tearing);

  [[nodiscard]] std::uint64_t Calls() const { return m_calls; }
  /// The name of the call that FailAt made fail; empty before that.
  [[nodiscard]] const std::string& FailedCall() const { return m_failedCall; }

  /// Places a file, synced.
  void Put(const std::wstring& path, Content content);
  [[nodiscard]] std::optional<Content> Get(const std::wstring& path) const;

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

 private:
  friend class FaultyFile;
  struct Inode;
  using Names = std::map<std::wstring, std::shared_ptr<Inode>>;
  /// Names that one directory operation sets, all or none; null removes.
  using NameChange = std::vector<std::pair<std::wstring, std::shared_ptr<Inode>>>;

  os::Error Count(const char* call);
  void Change(NameChange change);
  [[nodiscard]] std::uint64_t RoomFor(std::uint64_t growth) const;

  Names m_names;
  Names m_durableNames;
  std::vector<NameChange> m_unsyncedChanges;
  std::vector<std::weak_ptr<Inode>> m_inodes;
  std::vector<std::wstring> m_protected;
  std::uint64_t m_calls = 0;
  std::uint64_t m_failAt = 0;
  os::Error m_failWith = os::Error::None;
  std::string m_failedCall;
  std::optional<std::uint64_t> m_cutAt;
  std::optional<std::uint64_t> m_capacity;
  std::uint64_t m_life = 0;  ///< counts restarts; a handle lives in one
};

}  // namespace utdata::test
