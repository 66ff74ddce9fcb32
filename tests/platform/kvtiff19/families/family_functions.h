// What tests of the families share: all descriptors, and a file of groups.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "interfaces/kvtiff19_catalogue.h"

namespace utdata::test {

using AllRecords = ::testing::Types<CGDataTypeFDD,
                                    CGChanTypeDescr,
                                    CGSubchanTypeDescr,
                                    CGGateTypeDescr,
                                    CGPatchTypeDescr,
                                    CGProbeTypeDescr,
                                    CGSpecdimTypeDescr,
                                    CGSpecinfTypeDescr,
                                    CGSpecmatTypeDescr,
                                    CGWeldTypeDescr,
                                    CGInfoTypeDescr,
                                    CGContourTypeDescr,
                                    CGRefadjTypeDescr,
                                    CGMeshTypeDescr,
                                    CGSpecdefTypeDescr,
                                    CGDacTypeDescr,
                                    CGWeldScanPlanDescr,
                                    CGWeldFillDescr>;

/// A file with one top group, written and then read.
class GroupFile {
 public:
  explicit GroupFile(const std::wstring& path) : m_path(path) {
    EXPECT_EQ(SCFile::file_CreateEx(path.c_str(), &m_file), SCFile::status_Ok)
        << SCFile::file_LastError();
    EXPECT_EQ(SCFile::file_GroupCreate(m_file, &m_top, 0, L"FC"), SCFile::status_Ok);
  }
  GroupFile(const GroupFile&) = delete;
  GroupFile& operator=(const GroupFile&) = delete;
  ~GroupFile() {
    if (m_file) SCFile::file_Close(m_file);
  }

  SCFile::GroupHandle NewGroup(std::uint32_t typeCode) {
    SCFile::GroupHandle group = nullptr;
    EXPECT_EQ(SCFile::file_GroupCreate(m_top, &group, typeCode, L""), SCFile::status_Ok)
        << SCFile::file_LastError();
    return group;
  }
  [[nodiscard]] int Commit() { return SCFile::file_Commit(m_file); }
  /// Commits, closes and opens the file again.
  void Reopen() {
    ASSERT_EQ(Commit(), SCFile::status_Ok) << SCFile::file_LastError();
    SCFile::file_Close(m_file);
    m_file = nullptr;
    ASSERT_EQ(SCFile::file_Open(m_path.c_str(), &m_file), SCFile::status_Ok)
        << SCFile::file_LastError();
    std::uint32_t key = 0;
    ASSERT_EQ(SCFile::file_ItemInfo(m_file, 0, nullptr, nullptr, nullptr, &key, nullptr, 0),
              SCFile::status_Ok);
    ASSERT_EQ(SCFile::file_GroupOpen(m_file, &m_top, key), SCFile::status_Ok)
        << SCFile::file_LastError();
  }
  [[nodiscard]] SCFile::GroupHandle Top() const { return m_top; }
  /// The group at `index` of the reopened file.
  SCFile::GroupHandle Group(std::uint32_t index) {
    std::uint32_t key = 0;
    SCFile::GroupHandle group = nullptr;
    EXPECT_EQ(SCFile::file_ItemInfo(m_top, index, nullptr, nullptr, nullptr, &key, nullptr, 0),
              SCFile::status_Ok);
    EXPECT_EQ(SCFile::file_GroupOpen(m_top, &group, key), SCFile::status_Ok)
        << SCFile::file_LastError();
    return group;
  }

 private:
  std::wstring m_path;
  SCFile::FileHandle m_file = nullptr;
  SCFile::GroupHandle m_top = nullptr;
};

}  // namespace utdata::test
