// The functions of each family under one name, so that one test runs on all.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "interfaces/kvtiff19.h"

namespace utdata::test {

template <class Record>
struct Family;

#define UTDATA_FAMILY_FUNCTIONS(prefix, Descriptor)                                         \
  template <>                                                                               \
  struct Family<Descriptor> {                                                               \
    static Descriptor* Allocate(const wchar_t* name) { return prefix##_Allocate(1, name); } \
    static void Delete(Descriptor* record, int whole) { prefix##_Delete(record, whole); }   \
    static int Read(SCFile::GroupHandle group, Descriptor* record) {                        \
      return prefix##_ReadGroupInfo(group, record);                                         \
    }                                                                                       \
    static int Write(SCFile::GroupHandle group,                                             \
                     const Descriptor* base,                                                \
                     const Descriptor* record) {                                            \
      return prefix##_WriteGroupInfo(group, base, record);                                  \
    }                                                                                       \
    static int Init(SCFile::LockCallback lock) {                                            \
      return prefix##_Init(lock, nullptr, nullptr, nullptr, nullptr);                       \
    }                                                                                       \
  };
UTDATA_FAMILY_FUNCTIONS(gchan, CGChanTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gsubchan, CGSubchanTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gpatch, CGPatchTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gprobe, CGProbeTypeDescr)
UTDATA_FAMILY_FUNCTIONS(ginfo, CGInfoTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gspecmat, CGSpecmatTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gspecdim, CGSpecdimTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gspecinf, CGSpecinfTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gweld, CGWeldTypeDescr)
UTDATA_FAMILY_FUNCTIONS(grefadj, CGRefadjTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gmesh, CGMeshTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gspecdef, CGSpecdefTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gdac, CGDacTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gcontour, CGContourTypeDescr)
UTDATA_FAMILY_FUNCTIONS(gweldsp, CGWeldScanPlanDescr)
UTDATA_FAMILY_FUNCTIONS(gweldFill, CGWeldFillDescr)
#undef UTDATA_FAMILY_FUNCTIONS

template <>
struct Family<CGGateTypeDescr> {
  static CGGateTypeDescr* Allocate(const wchar_t* name) { return ggate_Allocate(1, name); }
  static void Delete(CGGateTypeDescr* record, int whole) { ggate_Delete(record, whole); }
  static int Read(SCFile::GroupHandle group, CGGateTypeDescr* record) {
    return ggate_ReadGroupInfo(group, record, true);
  }
  static int Write(SCFile::GroupHandle group,
                   const CGGateTypeDescr* base,
                   const CGGateTypeDescr* record) {
    return ggate_WriteGroupInfo(group, base, record);
  }
  static int Init(SCFile::LockCallback lock) {
    return ggate_Init(lock, nullptr, nullptr, nullptr, nullptr);
  }
};

template <>
struct Family<CGDataTypeFDD> {
  static CGDataTypeFDD* Allocate(const wchar_t* name) { return gdata_Allocate(1, name); }
  static void Delete(CGDataTypeFDD* record, int whole) { gdata_Delete(record, whole); }
  static int Read(SCFile::GroupHandle group, CGDataTypeFDD* record) {
    return gdata_ReadGroupInfo(group, record);
  }
  static int Write(SCFile::GroupHandle group,
                   const CGDataTypeFDD* base,
                   const CGDataTypeFDD* record) {
    return gdata_WriteGroupInfo(group, base, record, 0);
  }
  static int Init(SCFile::LockCallback) { return gdata_Init(); }
};

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
