// Views lie side by side in the reserved range, come back to it, and are the file.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "interfaces/ostrin.h"
#include "tests/support/failing_file_system.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/file_folder.h"
#include "tests/support/report_capture.h"

namespace {

namespace os = utdata::os;
using utdata::test::FailingFileSystem;
using utdata::test::FileFolder;
using Call = FailingFileSystem::Call;

constexpr std::uint64_t unit = CViewMapManager::granularity;

/// A file of its own, ready to be mapped.
class Mappable {
 public:
  Mappable(const std::wstring& name, std::uint64_t size) : path(name) {
    EXPECT_EQ(os::CurrentFileSystem().Open(path, os::OpenMode::Create, m_file), os::Error::None);
    EXPECT_EQ(m_file->CreateMapping(size, mapping), os::Error::None);
  }
  std::wstring path;

 private:
  std::unique_ptr<os::File> m_file;

 public:
  std::unique_ptr<os::FileMapping> mapping;
};

std::byte* Map(CViewMapManager& manager, Mappable& file, std::uint64_t size) {
  return static_cast<std::byte*>(manager.MapViewForData(file.mapping.get(), size, view_ReadWrite));
}

/// Ends the process well, unless reading the byte ends it first.
[[noreturn]] void Touch(const volatile std::byte* place) {
  static_cast<void>(*place);
  std::exit(0);
}

TEST(ViewMapManager, IsOneForTheProcessAndHoldsTheLargestFile) {
  EXPECT_EQ(&GetMapViewManager(), &GetMapViewManager());
  EXPECT_EQ(GetMapViewManager().GetReservedSize(), 0xFFFF0000u);
}

TEST(ViewMapManager, MapsEightOfTheLargestViewsAtOnce) {
  const FileFolder folder;
  Mappable file(folder / L"f", CViewMapManager::largestSize);
  CViewMapManager manager;
  std::vector<std::byte*> views;
  for (std::size_t n = 0; n < CViewMapManager::viewQuantity; ++n) {
    views.push_back(Map(manager, file, CViewMapManager::largestSize));
    ASSERT_NE(views.back(), nullptr) << n;
  }
  EXPECT_EQ(Map(manager, file, CViewMapManager::largestSize), nullptr);
  EXPECT_EQ(os::LastErrorNumber(), ENOMEM);
  views[3][CViewMapManager::largestSize - 1] = std::byte{9};
  EXPECT_EQ(views[7][CViewMapManager::largestSize - 1], std::byte{9})
      << "views of one file share its bytes";
  for (std::byte* view : views) manager.UnmapViewOfFileToReservedSpace(view, 0);
}

TEST(ViewMapManager, RefusesSizesThatDoNotSuit) {
  CViewMapManager manager;
  for (const std::uint64_t size :
       {std::uint64_t{0}, unit - 1, unit + 4096, CViewMapManager::largestSize + unit})
    EXPECT_FALSE(manager.SetReservedSize(size)) << size;
  EXPECT_EQ(manager.GetReservedSize(), CViewMapManager::largestSize);
  ASSERT_TRUE(manager.SetReservedSize(4 * unit));
  const FileFolder folder;
  Mappable file(folder / L"f", 8 * unit);
  Mappable shortFile(folder / L"s", 100);
  EXPECT_EQ(Map(manager, file, 4 * unit + 1), nullptr);
  EXPECT_EQ(os::LastErrorNumber(), EINVAL);
  EXPECT_EQ(Map(manager, shortFile, 101), nullptr) << "past the file's end";
  EXPECT_EQ(Map(manager, file, 0), nullptr);
  EXPECT_EQ(manager.MapViewForData(nullptr, unit, view_ReadWrite), nullptr);
  EXPECT_EQ(manager.MapViewForData(file.mapping.get(), unit, 4), nullptr);
  std::byte* view = Map(manager, file, 100);
  ASSERT_NE(view, nullptr);
  EXPECT_FALSE(manager.SetReservedSize(unit)) << "while a view is mapped";
  manager.UnmapViewOfFileToReservedSpace(view, 0);
  EXPECT_TRUE(manager.SetReservedSize(unit));
}

TEST(ViewMapManager, UsesThePlacesThatCameBack) {
  constexpr std::uint64_t place = CViewMapManager::placeAlignment;
  const FileFolder folder;
  Mappable file(folder / L"f", 4 * place);
  CViewMapManager manager;
  ASSERT_TRUE(manager.SetReservedSize(4 * place));
  std::byte* views[4];
  for (std::byte*& view : views) {
    view = Map(manager, file, 4 * place);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(view) % place, 0u) << "where large pages can be";
  }
  for (int n = 0; n < 3; ++n)
    EXPECT_GE(std::abs(views[n + 1] - views[n]), static_cast<std::ptrdiff_t>(4 * place));
  manager.UnmapViewOfFileToReservedSpace(views[1], 12);
  EXPECT_DEATH(Touch(views[1]), "");
  std::byte* first = Map(manager, file, place + 1);
  std::byte* second = Map(manager, file, 2 * place);
  std::byte* third = Map(manager, file, 1);
  EXPECT_EQ(first, views[1]);
  EXPECT_EQ(second, first + 2 * place);
  EXPECT_NE(third, nullptr);
  for (const std::byte* view : {views[0], views[2], views[3]})
    EXPECT_TRUE(third < view || third >= view + 4 * place) << "the gap was used up";
  for (std::byte* view : {first, second, third, views[0], views[2], views[3]})
    manager.UnmapViewOfFileToReservedSpace(view, 0);
  manager.UnmapViewOfFileToReservedSpace(nullptr, 0);
  const utdata::test::ReportCapture reports;
  manager.UnmapViewOfFileToReservedSpace(first, 0);
  manager.UnmapViewOfFileToReservedSpace(&manager, 0);
  EXPECT_EQ(reports.Assertions(), 2u) << "not views, or not any more";
}

TEST(ViewMapManager, LosesNothingToAFailureOfTheSystem) {
  FailingFileSystem system;
  const utdata::test::FileSystemInPlace inPlace(system);
  const FileFolder folder;
  Mappable file(folder / L"f", unit);
  CViewMapManager manager;
  ASSERT_TRUE(manager.SetReservedSize(unit));
  system.Let(Call::Reserve, os::Error::NoMemory);
  EXPECT_EQ(Map(manager, file, unit), nullptr);
  EXPECT_EQ(os::LastErrorNumber(), ENOMEM);
  system.Let(Call::Reserve, os::Error::None);
  system.Let(Call::MapAt, os::Error::AccessDenied);
  for (std::size_t n = 0; n < 2 * CViewMapManager::viewQuantity; ++n)
    EXPECT_EQ(Map(manager, file, unit), nullptr);
  EXPECT_EQ(os::LastErrorNumber(), EACCES);
  system.Let(Call::MapAt, os::Error::None);
  std::byte* view = Map(manager, file, unit);
  ASSERT_NE(view, nullptr);
  manager.UnmapViewOfFileToReservedSpace(view, unit);
}

TEST(ViewMapManager, KeepsTheViewsOfManyThreadsApart) {
  const FileFolder folder;
  CViewMapManager manager;
  ASSERT_TRUE(manager.SetReservedSize(16 * unit));
  std::vector<std::thread> threads;
  for (unsigned char mark = 1; mark <= 4; ++mark)
    threads.emplace_back([&, mark] {
      Mappable file(folder / (L"f" + std::to_wstring(mark)), 16 * unit);
      for (int round = 0; round < 100; ++round) {
        const std::uint64_t size = unit * (1 + (mark * 7u + static_cast<unsigned>(round)) % 16) - 5;
        std::byte* view = Map(manager, file, size);
        ASSERT_NE(view, nullptr);
        for (std::uint64_t at = 0; at < size; at += unit / 2) view[at] = std::byte{mark};
        std::this_thread::yield();
        for (std::uint64_t at = 0; at < size; at += unit / 2) ASSERT_EQ(view[at], std::byte{mark});
        manager.UnmapViewOfFileToReservedSpace(view, 1);
      }
    });
  for (std::thread& thread : threads) thread.join();
  for (const std::wstring& name : folder.Names()) {
    const auto bytes = utdata::test::BytesOf(folder / name);
    EXPECT_EQ(static_cast<wchar_t>(L'0' + std::to_integer<int>(bytes[0])), name[1])
        << "its own mark reached the file";
  }
}

}  // namespace
