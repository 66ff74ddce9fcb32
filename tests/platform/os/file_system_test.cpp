// The machine's own file system behind the layer's interface, and paths.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <thread>

#include "interfaces/os.h"
#include "platform/os/path.h"
#include "tests/support/file_folder.h"
#include "tests/support/small_disk.h"

namespace {
std::size_t mostAtOnce = std::numeric_limits<std::size_t>::max();
}

/// In place of the system's own, which may do a part of what it is asked for too.
extern "C" ssize_t pread(int file, void* buffer, std::size_t size, off_t offset) {
  return ::syscall(SYS_pread64, file, buffer, std::min(size, mostAtOnce), offset);
}
extern "C" ssize_t pwrite(int file, const void* buffer, std::size_t size, off_t offset) {
  return ::syscall(SYS_pwrite64, file, buffer, std::min(size, mostAtOnce), offset);
}

namespace {

using namespace utdata::os;
using utdata::test::FileFolder;

std::unique_ptr<File> Open(const std::wstring& path, OpenMode mode, Error expected = Error::None) {
  std::unique_ptr<File> file;
  EXPECT_EQ(CurrentFileSystem().Open(path, mode, file), expected);
  EXPECT_EQ(file != nullptr, expected == Error::None);
  return file;
}

std::span<const std::byte> AsBytes(std::string_view text) { return std::as_bytes(std::span(text)); }

/// Ends the process well, unless reading the byte ends it first.
[[noreturn]] void Touch(const volatile std::byte* place) {
  static_cast<void>(*place);
  std::exit(0);
}

bool IsMapped(const std::byte* place) {
  constexpr std::uintptr_t page = 4096;
  unsigned char isResident = 0;
  auto* const start =
      reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(place) / page * page);
  return ::mincore(start, 1, &isResident) == 0;
}

TEST(FileSystem, OpensByMode) {
  const FileFolder folder;
  const std::wstring path = folder / L"a\x00E9\U0001F527";
  Open(path, OpenMode::Read, Error::NotFound);
  Open(path, OpenMode::ReadWrite, Error::NotFound);
  Open(folder / L"", OpenMode::Read, Error::NotAFile);
  Open(L"", OpenMode::Read, Error::NotFound);
  Open(folder / std::wstring(300, L'x'), OpenMode::Create, Error::PathTooLong);
  EXPECT_EQ(Open(path, OpenMode::Create)->WriteAt(0, AsBytes("content")), Error::None);
  Open(path, OpenMode::Create, Error::Exists);
  EXPECT_NE(Open(path, OpenMode::Read)->WriteAt(0, AsBytes("x")), Error::None);
  std::uint64_t size = 0;
  EXPECT_EQ(Open(path, OpenMode::ReadWriteHere)->Size(size), Error::None);
  EXPECT_EQ(size, 7u);
  const std::wstring link = folder / L"link";
  ASSERT_EQ(::symlink(NarrowPath(path).c_str(), NarrowPath(link).c_str()), 0);
  EXPECT_EQ(Open(link, OpenMode::ReadWrite)->Size(size), Error::None);
  Open(link, OpenMode::ReadWriteHere, Error::NotAFile);
  Open(link, OpenMode::Create, Error::Exists);
}

/// What a process does whose standard streams are closed as the bits of `closed` say: it opens a
/// file in every way, and prints.
[[noreturn]] void PrintWithClosedStreams(const std::wstring& path, int closed) {
  for (int stream = 0; stream < 3; ++stream)
    if (closed >> stream & 1) ::close(stream);
  int status = 0;
  for (const OpenMode mode : {OpenMode::Create, OpenMode::ReadWrite, OpenMode::Read}) {
    std::unique_ptr<File> file;
    if (CurrentFileSystem().Open(path, mode, file) != Error::None) status = 1;
    for (int stream = 0; stream < 3; ++stream)
      if ((closed >> stream & 1) && ::write(stream, "printed", 7) != -1) status = 2;
  }
  ::_exit(status);
}

TEST(FileSystem, OpensNoFileAsAStandardStream) {
  const FileFolder folder;
  for (int closed = 0; closed < 8; ++closed) {
    const std::wstring path = folder / (L"f" + std::to_wstring(closed));
    const pid_t child = ::fork();
    if (child == 0) PrintWithClosedStreams(path, closed);
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "closed: " << closed;
    EXPECT_EQ(std::filesystem::file_size(NarrowPath(path)), 0u) << "closed: " << closed;
  }
  // The same in this process, whose standard input is not needed meanwhile.
  const int kept = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  for (const OpenMode mode : {OpenMode::Create, OpenMode::Read}) {
    const auto file = Open(folder / L"f", mode);
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1) << "still closed";
  }
  ::dup2(kept, STDIN_FILENO);
  ::close(kept);
}

TEST(FileSystem, IdentifiesFilesAndCopiesPermissions) {
  const FileFolder folder;
  FileSystem& system = CurrentFileSystem();
  const auto one = Open(folder / L"one", OpenMode::Create);
  const auto two = Open(folder / L"two", OpenMode::Create);
  FileIdentity first;
  FileIdentity second;
  FileIdentity named;
  ASSERT_EQ(one->Identify(first), Error::None);
  ASSERT_EQ(two->Identify(second), Error::None);
  EXPECT_NE(first, second);
  ASSERT_EQ(system.Rename(folder / L"one", folder / L"two", true), Error::None);
  ASSERT_EQ(system.Identify(folder / L"two", named), Error::None);
  EXPECT_EQ(named, first);
  EXPECT_EQ(system.Identify(folder / L"one", named), Error::NotFound);
  EXPECT_EQ(system.Identify(folder / std::wstring(300, L'x'), named), Error::PathTooLong);

  namespace fs = std::filesystem;
  const auto permissions = static_cast<fs::perms>(0640);
  fs::permissions(NarrowPath(folder / L"two"), permissions);
  const auto three = Open(folder / L"three", OpenMode::Create);
  ASSERT_EQ(three->CopyPermissionsOf(folder / L"two"), Error::None);
  EXPECT_EQ(fs::status(NarrowPath(folder / L"three")).permissions(), permissions);
  EXPECT_EQ(three->CopyPermissionsOf(folder / L"none"), Error::NotFound);
}

TEST(FileSystem, ReadsWritesAndMapsAPrivateView) {
  const FileFolder folder;
  const auto file = Open(folder / L"f", OpenMode::Create);
  ASSERT_EQ(file->WriteAt(5000, AsBytes("hello")), Error::None);
  ASSERT_EQ(file->Sync(), Error::None);
  std::byte buffer[10];
  std::size_t done = 0;
  ASSERT_EQ(file->ReadAt(4998, buffer, done), Error::None);
  EXPECT_EQ(std::string_view(reinterpret_cast<char*>(buffer), done),
            std::string_view("\0\0hello", 7));
  ASSERT_EQ(file->ReadAt(~std::uint64_t{0}, buffer, done), Error::None);
  EXPECT_EQ(done, 0u);
  std::unique_ptr<Mapping> view;
  ASSERT_EQ(file->Map(4096, 909, view), Error::None);
  EXPECT_EQ(view->Size(), 909u);
  EXPECT_EQ(std::memcmp(view->Data() + 904, "hello", 5), 0);
  view->Data()[904] = std::byte{'J'};
  ASSERT_EQ(file->ReadAt(5000, buffer, done), Error::None);
  EXPECT_EQ(buffer[0], std::byte{'h'});
  ASSERT_EQ(file->Truncate(5 * 4096), Error::None);
  ASSERT_EQ(file->Map(100, 4 * 4096, view), Error::None);
  EXPECT_EQ(view->Size(), 4 * 4096u);
  const std::byte* const start = view->Data();
  EXPECT_TRUE(IsMapped(start) && IsMapped(start + view->Size() - 1));
  view.reset();
  EXPECT_FALSE(IsMapped(start) || IsMapped(start + 4 * 4096 - 1)) << "all of it is given back";
}

TEST(FileSystem, GoesOnWhereTheSystemDoesAPartOnly) {
  const FileFolder folder;
  const auto file = Open(folder / L"f", OpenMode::Create);
  char text[8] = {};
  std::size_t done = 0;
  mostAtOnce = 3;
  EXPECT_EQ(file->WriteAt(5, AsBytes("abcdefgh")), Error::None);
  EXPECT_EQ(file->ReadAt(5, std::as_writable_bytes(std::span(text)), done), Error::None);
  mostAtOnce = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(std::string_view(text, done), "abcdefgh");
}

TEST(FileSystem, MapsAFileSharedIntoReservedAddresses) {
  const FileFolder folder;
  constexpr std::size_t unit = 65536;
  std::unique_ptr<AddressRange> range;
  ASSERT_EQ(CurrentFileSystem().Reserve(4 * unit, range), Error::None);
  const auto file = Open(folder / L"f", OpenMode::Create);
  ASSERT_EQ(file->WriteAt(0, AsBytes("hello")), Error::None);
  std::unique_ptr<FileMapping> mapping;
  ASSERT_EQ(file->CreateMapping(unit + 100, mapping), Error::None);
  EXPECT_EQ(mapping->Size(), unit + 100);
  std::uint64_t size = 0;
  ASSERT_EQ(file->Size(size), Error::None);
  EXPECT_EQ(size, unit + 100) << "grown to what is mapped";
  ASSERT_EQ(mapping->MapAt(*range, unit, unit + 100), Error::None);
  std::byte* view = range->Data() + unit;
  EXPECT_EQ(std::memcmp(view, "hello", 5), 0);
  view[unit] = std::byte{7};
  std::byte buffer[1];
  std::size_t done = 0;
  ASSERT_EQ(file->ReadAt(unit, buffer, done), Error::None);
  EXPECT_EQ(buffer[0], std::byte{7}) << "stored for every reader";
  EXPECT_EQ(range->Clear(unit, 2 * unit), Error::None);
  EXPECT_DEATH(Touch(view), "") << "cleared";
  ASSERT_EQ(mapping->MapAt(*range, unit, unit), Error::None) << "the place can be used again";
  EXPECT_EQ(file->CreateMapping(10, mapping), Error::None);
  ASSERT_EQ(file->Size(size), Error::None);
  EXPECT_EQ(size, unit + 100) << "never cut";
  const std::byte* const start = range->Data();
  range.reset();
  EXPECT_FALSE(IsMapped(start) || IsMapped(start + 4 * unit - 1));
}

TEST(FileSystem, SaysHowMuchOfAPartIsStored) {
  const FileFolder folder;
  const auto file = Open(folder / L"f", OpenMode::Create);
  constexpr std::uint64_t size = 1 << 20, half = size / 2, page = 4096;
  ASSERT_EQ(file->Truncate(size), Error::None);
  ASSERT_EQ(file->WriteAt(half, AsBytes(std::string(page, 'x'))), Error::None);
  ASSERT_EQ(file->Seek(7), Error::None);
  const struct {
    std::uint64_t offset, size, least;
    bool isStored;
  } cases[] = {{0, size, page, true},
               {0, size, half, false},
               {0, half, 1, false},
               {half, page, page, true},
               {half, half, page + 1, false},
               {half + page, half - page, 1, false},
               {0, 0, 0, true}};
  for (const auto& each : cases) {
    bool isStored = !each.isStored;
    EXPECT_EQ(file->IsStored(each.offset, each.size, each.least, isStored), Error::None);
    EXPECT_EQ(isStored, each.isStored) << &each - cases;
  }
}

TEST(FileSystem, RefusesPlacesThatNoFileHas) {
  const FileFolder folder;
  FileSystem& system = CurrentFileSystem();
  const auto file = Open(folder / L"f", OpenMode::Create);
  constexpr std::uint64_t beyond = ~std::uint64_t{0}, most = beyond / 2;
  bool isStored = false;
  std::unique_ptr<Mapping> view;
  EXPECT_EQ(file->WriteAt(beyond, AsBytes("x")), Error::DiskFull);
  EXPECT_EQ(file->WriteAt(most, AsBytes("x")), Error::DiskFull);
  EXPECT_EQ(file->Truncate(beyond), Error::DiskFull);
  EXPECT_EQ(file->Seek(beyond), Error::Other);
  EXPECT_EQ(file->Allocate(0, 0), Error::None);
  for (const auto& [offset, size] : {std::pair(beyond, std::uint64_t{1}),
                                     std::pair(std::uint64_t{1}, beyond),
                                     std::pair(most, most)}) {
    EXPECT_EQ(file->Allocate(offset, size), Error::DiskFull);
    EXPECT_EQ(file->IsStored(offset, size, 1, isStored), Error::BadArgument);
  }
  EXPECT_EQ(file->Map(beyond, 1, view), Error::Other);
  EXPECT_EQ(file->Map(1, std::numeric_limits<std::size_t>::max(), view), Error::Other);
  EXPECT_NE(file->Map(0, 0, view), Error::None);
  std::uint64_t bytes = 0;
  EXPECT_EQ(system.FreeSpace(L"missing/folder/f", bytes), Error::None);
  EXPECT_EQ(system.FreeSpace(L"/missing/f", bytes), Error::None);
  EXPECT_EQ(system.FreeSpace((folder / L"f") + L"/g", bytes), Error::NotFound);
  EXPECT_EQ(system.SyncDirectoryOf(L"missing/f"), Error::NotFound);
  EXPECT_EQ(system.SyncDirectoryOf(L"f"), Error::None) << "the one that it works in";
}

TEST(FileSystem, AFileThatIsOnlyReadKeepsItsSizeAndItsReservedPlace) {
  const FileFolder folder;
  ASSERT_EQ(Open(folder / L"f", OpenMode::Create)->WriteAt(0, AsBytes("hello")), Error::None);
  const auto file = Open(folder / L"f", OpenMode::Read);
  std::unique_ptr<FileMapping> mapping;
  EXPECT_NE(file->CreateMapping(6, mapping), Error::None);
  EXPECT_NE(file->Truncate(1), Error::None);
  ASSERT_EQ(file->CreateMapping(5, mapping), Error::None);
  std::unique_ptr<AddressRange> range;
  ASSERT_EQ(CurrentFileSystem().Reserve(65536, range), Error::None);
  EXPECT_EQ(mapping->MapAt(*range, 0, 5), Error::AccessDenied);
  EXPECT_DEATH(Touch(range->Data()), "");
}

TEST(FileSystem, AllocatesSpaceThatAFullDiskCannotTakeBack) {
  const utdata::test::SmallDisk disk(1 << 20);
  if (!disk.IsMounted()) GTEST_SKIP() << "this machine mounts no file systems for a test";
  const std::wstring path = disk / L"f";
  const auto file = Open(path, OpenMode::Create);
  std::uint64_t before = 0;
  ASSERT_EQ(CurrentFileSystem().FreeSpace(path, before), Error::None);
  EXPECT_EQ(before, 1u << 20);
  ASSERT_EQ(file->Allocate(0, 3 << 18), Error::None);
  std::uint64_t size = 0;
  ASSERT_EQ(file->Size(size), Error::None);
  EXPECT_EQ(size, 3u << 18);
  std::uint64_t after = 0;
  ASSERT_EQ(CurrentFileSystem().FreeSpace(disk / L"missing/g", after), Error::None);
  EXPECT_EQ(after, 1u << 18) << "asked of the nearest directory that exists";
  EXPECT_EQ(file->Allocate(3 << 18, (1 << 18) + 1), Error::DiskFull);
  EXPECT_EQ(LastErrorNumber(), ENOSPC);
}

TEST(FileSystem, NumbersFailuresAsThePlatformDoes) {
  const FileFolder folder;
  const std::wstring path = folder / L"f";
  const auto file = Open(path, OpenMode::Create);
  Open(path, OpenMode::Create, Error::Exists);
  EXPECT_EQ(LastErrorNumber(), EEXIST);
  Open(path + L"/g", OpenMode::Create, Error::NotFound);
  EXPECT_EQ(LastErrorNumber(), ENOTDIR) << "the number and not only the kind";
  EXPECT_EQ(Fail(Error::NoMemory), Error::NoMemory);
  EXPECT_EQ(LastErrorNumber(), ENOMEM);
  std::thread([] { EXPECT_EQ(LastErrorNumber(), 0); }).join();
  std::unique_ptr<AddressRange> range;
  EXPECT_EQ(CurrentFileSystem().Reserve(std::size_t{1} << 60, range), Error::NoMemory);
}

TEST(Memory, StatusIsInProportion) {
  const MemoryStatus status = QueryMemoryStatus();
  EXPECT_GT(status.totalPhysical, 1u << 20);
  EXPECT_LE(status.availablePhysical, status.totalPhysical);
  EXPECT_LE(status.loadPercent, 100u);
  EXPECT_GE(status.totalPaged, status.totalPhysical);
  EXPECT_LE(status.availableVirtual, status.totalVirtual);
  EXPECT_EQ(status.totalVirtual, std::uint64_t{1} << 47) << "what a process of 64 bits has";
}

TEST(FileSystem, LocksPerOpenFile) {
  const FileFolder folder;
  const std::wstring path = folder / L"f";
  auto one = Open(path, OpenMode::Create);
  const auto two = Open(path, OpenMode::ReadWrite);
  EXPECT_EQ(one->TryLock(), Error::None);
  EXPECT_EQ(two->TryLock(), Error::Busy);
  one.reset();
  EXPECT_EQ(two->TryLock(), Error::None) << "closing gives the lock up";
}

TEST(FileSystem, RenamesWithAndWithoutReplacing) {
  const FileFolder folder;
  FileSystem& system = CurrentFileSystem();
  const auto one = Open(folder / L"one", OpenMode::Create);
  const auto two = Open(folder / L"two", OpenMode::Create);
  EXPECT_EQ(system.Rename(folder / L"one", folder / L"two", false), Error::Exists);
  EXPECT_EQ(system.Rename(folder / L"one", folder / L"three", false), Error::None);
  EXPECT_EQ(system.Rename(folder / L"three", folder / L"two", true), Error::None);
  EXPECT_EQ(system.SyncDirectoryOf(folder / L"two"), Error::None);
  EXPECT_EQ(folder.Names(), std::vector<std::wstring>{L"two"});
  EXPECT_EQ(system.Remove(folder / L"two"), Error::None);
  EXPECT_EQ(system.Remove(folder / L"two"), Error::NotFound);
}

TEST(Path, SplitsAtTheLastSeparatorAndDot) {
  const struct {
    const wchar_t *path, *directory, *name, *extension;
  } cases[] = {
      {L"/scans/weld.fpd", L"/scans/", L"weld", L".fpd"},
      {L"weld.A01", L"", L"weld", L".A01"},
      {L"a.b/weld", L"a.b/", L"weld", L""},
      {L"weld.part.fpd", L"", L"weld.part", L".fpd"},
      {L"x/.hidden", L"x/", L".hidden", L""},
      {L"x/", L"x/", L"", L""},
      {L"..", L"", L"..", L""},
      {L"weld.", L"", L"weld", L"."},
  };
  for (const auto& each : cases) {
    const PathParts parts = SplitPath(each.path);
    EXPECT_EQ(parts.drive, L"");
    EXPECT_EQ(parts.directory, each.directory) << each.path;
    EXPECT_EQ(parts.name, each.name);
    EXPECT_EQ(parts.extension, each.extension);
  }
}

TEST(Path, KeepsNamesThatAreNotUtf8) {
  for (const std::string name :
       {"plain", "\xC3\xA9\xF0\x9F\x94\xA7", "\xFF\x80\xC3", "\xED\xA0\x80", "a\xC0\xAF"})
    EXPECT_EQ(NarrowPath(WidePath(name)), name);
}

}  // namespace
