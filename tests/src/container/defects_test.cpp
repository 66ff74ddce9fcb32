// Defect records that cannot be read whole: reported, and never written over.
#include <gtest/gtest.h>

#include <functional>

#include "src/container/groupwriting.h"
#include "tests/src/container/inspection.h"

namespace utdata::test {
namespace {

void WriteItem(SCFile::GroupHandle group, std::uint32_t code, std::uint32_t value) {
  ASSERT_EQ(SCFile::file_ItemValueWrite(group, code, SCFile::value_UInt32, 1, &value), 0);
}

/// A file of two defect records; the second ends at item 14, which is a text there.
void WriteShortened(const std::wstring& path) {
  SCFile::FileHandle file = nullptr;
  ASSERT_EQ(SCFile::file_Create(path.c_str(), &file), 0);
  const SCFile::GroupHandle table = container::CreateGroup(
      container::CreateGroup(file, 0, L"FC"), container::codeDefectTable, L"");
  WriteItem(container::CreateGroup(table, container::codeDefect, L""), 9, 1);
  const SCFile::GroupHandle broken = container::CreateGroup(table, container::codeDefect, L"");
  WriteItem(broken, 13, 7);
  ASSERT_EQ(SCFile::file_ItemValueWrite(broken, 14, SCFile::value_Text, 2, L"8"), 0);
  WriteItem(broken, 9, 2);
  ASSERT_EQ(SCFile::file_Commit(file), 0);
  ASSERT_EQ(SCFile::file_Close(file), 0);
}

Inspection LoadAll(const std::wstring& path) {
  CFContTypeFileDescr* const descriptor = CFCont().FileLoad(path.c_str(), nullptr, nullptr);
  EXPECT_EQ(CFCont().FileUpdate(path.c_str(), descriptor, readAll, nullptr, nullptr), 0);
  return Inspection(descriptor);
}

TEST(Defects, OneThatIsCutShortIsReported) {
  const ScratchDirectory scratch;
  WriteShortened(scratch.File(L"weld.fpd"));
  const Inspection loaded = Load(scratch.File(L"weld.fpd"));
  ASSERT_TRUE(loaded);
  ASSERT_EQ(loaded->defects.GetCount(), 2);
  EXPECT_EQ(loaded->defects.GetTail()->numbers[1], 7u) << "what was read so far stays";
  EXPECT_EQ(loaded->defects.GetTail()->numbers[0], 0u);
  const std::vector<ShortenedDefect> shortened = ShortenedDefects(*loaded);
  ASSERT_EQ(shortened.size(), 1u);
  EXPECT_EQ(shortened[0].place, 1u);
  for (const char* part : {"weld.fpd", "item 14", "another value type"})
    EXPECT_NE(shortened[0].reason.find(part), std::string::npos) << shortened[0].reason;
}

enum class Form { Whole, Companion, Append };

TEST(Defects, ALossIsNotWrittenOver) {
  const auto all = [](const CFContTypeFileDescr& loaded, CFContTypeFileDescr& written) {
    for (const stDefectExtern* record : loaded.defects) Add(written.defects, *record);
  };
  const auto fresh = [](const CFContTypeFileDescr&, CFContTypeFileDescr& written) {
    Add(written.defects, MakeDefect(3));
  };
  const auto mended = [](const CFContTypeFileDescr& loaded, CFContTypeFileDescr& written) {
    Add(written.defects, *loaded.defects.GetHead());
    Add(written.defects, MakeDefect(2));
  };
  const auto none = [](const CFContTypeFileDescr&, CFContTypeFileDescr& written) {
    written.defectTableFlag = 0;
  };
  const struct {
    const char* what;
    Form form;
    std::function<void(const CFContTypeFileDescr&, CFContTypeFileDescr&)> fill;
    bool isWritten;
    std::ptrdiff_t recordsAfter, lossesAfter;
  } cases[] = {
      {"the whole, shortened", Form::Whole, all, false, 2, 1},
      {"the whole, mended", Form::Whole, mended, true, 2, 0},
      {"a companion of what there is", Form::Companion, all, false, 2, 1},
      {"a companion of a new record", Form::Companion, fresh, true, 3, 1},
      {"what there is, appended", Form::Append, all, false, 2, 1},
      {"a new record, appended over the table", Form::Append, fresh, false, 2, 1},
      {"other changes, appended", Form::Append, none, true, 2, 1},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    const ScratchDirectory scratch;
    const std::wstring path = scratch.File(L"weld.fpd");
    WriteShortened(path);
    {
      const Inspection loaded = Load(path);
      const Inspection written = MakeInspection(path);
      written->defectTableFlag = 1;
      Add(written->channels, MakeRecord<CGChanTypeDescr>(1));
      each.fill(*loaded, *written);
      SCFile::FileHandle file = nullptr;
      const int status = CFCont().FileWrite(each.form == Form::Whole ? nullptr : loaded.get(),
                                            written.get(),
                                            each.form == Form::Companion ? 1 : 0,
                                            nullptr,
                                            &file,
                                            0);
      EXPECT_EQ(status, each.isWritten ? SCFile::status_Ok : SCFile::status_Damaged);
      const std::string why = SCFile::file_LastError();
      EXPECT_TRUE(each.isWritten || why.find("item 14") != std::string::npos) << why;
      if (each.form == Form::Whole && file) SCFile::file_Close(file);
    }
    const Inspection again = LoadAll(path);
    EXPECT_EQ(again->channels.GetCount(), each.isWritten ? 1 : 0);
    EXPECT_EQ(again->defects.GetCount(), each.recordsAfter);
    EXPECT_EQ(ShortenedDefects(*again).size(), static_cast<std::size_t>(each.lossesAfter));
  }
}

TEST(Defects, ATableIsReplacedInACompanionOfItsOwn) {
  const ScratchDirectory scratch;
  const std::wstring path = scratch.File(L"weld.fpd");
  WriteShortened(path);
  const Inspection loaded = Load(path);
  const Inspection written = MakeInspection();
  written->defectTableFlag = 1;
  Add(written->defects, MakeDefect(3));
  for (const int newFile : {1, 0}) {
    ASSERT_EQ(CFCont().FileWrite(loaded.get(), written.get(), newFile, nullptr, nullptr, 0), 0)
        << SCFile::file_LastError();
    EXPECT_EQ(LoadAll(path)->defects.GetCount(), 3);
  }
}

}  // namespace
}  // namespace utdata::test
