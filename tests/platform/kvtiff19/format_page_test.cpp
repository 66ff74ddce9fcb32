// docs/file-format.md, from which others write readers: its file in hexadecimal is one, and its
// checksums are those of the format.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>

#include "interfaces/framework.h"
#include "platform/kvtiff19/format.h"
#include "tests/support/page.h"
#include "tests/support/scratch_directory.h"

namespace utdata::kvtiff19 {
namespace {

TEST(FormatPage, ChecksumsAreThoseOfTheFormat) {
  const std::string page = test::ReadPage("file-format.md");
  for (const std::size_t size : {0U, 16U, 200U, 241U, 5000U}) {
    std::vector<std::byte> bytes(size);
    for (std::size_t at = 0; at < size; ++at) bytes[at] = static_cast<std::byte>(at % 251);
    std::array<char, 48> row{};
    std::snprintf(row.data(),
                  row.size(),
                  "\n| %zu | `%016llX` |\n",
                  size,
                  static_cast<unsigned long long>(Checksum(bytes)));
    EXPECT_NE(page.find(row.data()), page.npos) << row.data();
  }
}

TEST(FormatPage, ItsFileInHexadecimalIsOne) {
  const test::ScratchDirectory scratch;
  const std::string path = scratch.Path().string() + "/page.fpd";
  const std::vector<std::byte> bytes = test::FileOfDump(test::ReadPage("file-format.md"));
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  SCFile::FileHandle file = nullptr;
  ASSERT_EQ(SCFile::file_OpenReadOnly(WideFromNarrow(path.c_str()).c_str(), &file),
            SCFile::status_Ok)
      << SCFile::file_LastError();
  SCFile::GroupHandle top = nullptr, child = nullptr;
  ASSERT_EQ(SCFile::file_GroupOpen(file, &top, 0), SCFile::status_Ok);
  std::uint32_t number = 0, count = 1;
  EXPECT_EQ(SCFile::file_IndexValueRead(top, 0, SCFile::value_UInt32, &number, &count),
            SCFile::status_Ok);
  EXPECT_EQ(number, 7U);
  std::uint32_t code = 0, kind = 0, key = 0;
  ASSERT_EQ(SCFile::file_ItemInfo(top, 1, &code, &kind, nullptr, &key, nullptr, 0),
            SCFile::status_Ok);
  ASSERT_EQ(SCFile::file_GroupOpen(top, &child, key), SCFile::status_Ok);
  std::array<wchar_t, 8> text{};
  count = text.size();
  EXPECT_EQ(SCFile::file_IndexValueRead(child, 0, SCFile::value_Text, text.data(), &count),
            SCFile::status_Ok);
  EXPECT_STREQ(text.data(), L"\u00e9!");
  std::array<std::byte, 3> samples{};
  EXPECT_EQ(SCFile::file_BlockRead(child, 1, 0, samples.size(), samples.data()), SCFile::status_Ok);
  EXPECT_EQ(samples, (std::array{std::byte{10}, std::byte{20}, std::byte{30}}));
  SCFile::file_Close(file);
}

}  // namespace
}  // namespace utdata::kvtiff19
