// Opens any bytes as an inspection file and reads all of it. With a first byte that is odd, the
// rest is the body of a top group under checksums that are right; else the rest is the file.
#include <cstdint>
#include <cstdlib>

#include "interfaces/kvtiff19.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_forge.h"
#include "tests/support/file_snapshot.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

/// A file that opens takes a new group, and keeps what it held.
void AppendTo(const std::wstring& path, const std::string& before) {
  using namespace SCFile;
  FileHandle file = nullptr;
  GroupHandle group = nullptr;
  Require(file_Open(path.c_str(), &file) == status_Ok);
  Require(file_GroupCreate(file, &group, 60000, L"new") == status_Ok);
  Require(file_Commit(file) == status_Ok);
  Require(file_Close(file) == status_Ok);
  Require(utdata::test::SnapshotOf(path) == before + "60000 type 0 count 0 new\n");
}

}  // namespace

// The name is the fuzzing engine's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::wstring path = L"/fuzzed.fpd";
  const utdata::kvtiff19::Bytes input(reinterpret_cast<const std::byte*>(data) + 1, size - 1);
  utdata::test::FaultyFileSystem disk;
  const utdata::test::FileSystemInPlace inPlace(disk);
  if (data[0] % 2) {
    utdata::test::FileForge forge;
    forge.AddPages(std::vector<std::byte>(8192, std::byte{1}));
    forge.AddTop(input);
    disk.Put(path, forge.Finish());
  } else {
    disk.Put(path, {input.begin(), input.end()});
  }
  const auto before = utdata::test::SnapshotOf(path);
  const int verified = SCFile::file_Verify(path.c_str(), nullptr);
  Require(before.has_value() || verified != SCFile::status_Ok);
  if (before) AppendTo(path, *before);
  return 0;
}
