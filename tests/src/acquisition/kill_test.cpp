// A process that is killed while it saves leaves every block that it had reported, and a file that
// is seen to be unfinished.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "tests/src/acquisition/acquisition_reader.h"
#include "tests/src/acquisition/acquisition_samples.h"
#include "tests/support/file_folder.h"
#include "utdata/gdatamanager.h"

namespace {

using namespace utdata::test;
namespace os = utdata::os;

/// What the writing process reports after each block, as a host would note it in its journal.
struct Note {
  std::uint32_t offset;
  std::uint32_t writtenSize;
};

constexpr int columns = 20;
constexpr int rows = 5;
constexpr int samples = 501;

/// Saves blocks until it is killed.
[[noreturn]] void SaveForEver(const std::wstring& path, int journal) {
  GDataManager writer(path);
  if (writer.FileCreate(Estimate(10 << 20)) != 0) ::_exit(1);
  const auto ascans = MakeAscans(MakePatch(0, 0, columns, rows), 2, samples);
  for (;;) {
    Note note{writer.SavePatchBuffer(ascans), 0};
    note.writtenSize = static_cast<std::uint32_t>(writer.GetWrittenSize());
    if (::write(journal, &note, sizeof note) != sizeof note) ::_exit(2);
  }
}

/// Runs SaveForEver and kills it after `blocks` notes; returns these and any that came before the
/// end.
std::vector<Note> SaveUntilKilled(const std::wstring& path, std::size_t blocks) {
  int ends[2];
  if (::pipe(ends) != 0) return {};
  const pid_t child = ::fork();
  if (child == 0) SaveForEver(path, ends[1]);
  ::close(ends[1]);
  std::vector<Note> notes;
  for (Note note{}; ::read(ends[0], &note, sizeof note) == sizeof note;) {
    notes.push_back(note);
    if (notes.size() == blocks) ::kill(child, SIGKILL);
  }
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  return notes;
}

TEST(KilledWriter, LeavesWhatItHadSaved) {
  for (const std::size_t blocks : {1u, 2u, 17u, 90u}) {
    const FileFolder folder;
    const std::wstring path = folder / L"f";
    const std::vector<Note> notes = SaveUntilKilled(path, blocks);
    ASSERT_GE(notes.size(), blocks);

    std::unique_ptr<os::File> file;
    ASSERT_EQ(os::CurrentFileSystem().Open(path, os::OpenMode::ReadWrite, file), os::Error::None);
    EXPECT_EQ(file->TryLock(), os::Error::None) << "no writer is at work any more";
    EXPECT_EQ(AcquisitionReader(path).Size(), GetMapViewManager().GetReservedSize())
        << "and none finished the file";
    ASSERT_EQ(file->Truncate(notes.back().writtenSize), os::Error::None) << "as a host recovers it";

    AcquisitionReader reader(path);
    std::uint64_t end = 2048;
    for (const Note& note : notes) {
      EXPECT_EQ(note.offset, end);
      end = note.writtenSize;
      const auto table = reader.Table(note.offset, columns * rows);
      for (std::uint32_t cell = 0; cell < table.size(); ++cell) {
        const auto stored = reader.Samples(table[cell], samples, 2);
        ASSERT_EQ(stored.size(), static_cast<std::size_t>(samples));
        for (const std::size_t n : {std::size_t{0}, stored.size() - 1})
          ASSERT_EQ(
              stored[n],
              static_cast<std::uint32_t>(SampleAt(cell % columns, cell / columns, n)) & 0xFFFF);
      }
    }
    EXPECT_EQ(reader.Size(), end);
  }
}

TEST(KilledWriter, IsDistinguishedFromOneAtWork) {
  const FileFolder folder;
  const std::wstring path = folder / L"f";
  GDataManager writer(path);
  ASSERT_EQ(writer.FileCreate(Estimate(5000)), 0u);
  std::unique_ptr<os::File> file;
  ASSERT_EQ(os::CurrentFileSystem().Open(path, os::OpenMode::ReadWrite, file), os::Error::None);
  EXPECT_EQ(file->TryLock(), os::Error::Busy);
  EXPECT_EQ(writer.FileClose(), 0u);
  EXPECT_EQ(file->TryLock(), os::Error::None);
}

}  // namespace
