// File descriptors for tests: filled, compared, and disposed of as a host does.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "src/container/defects.h"
#include "src/container/grouptypes.h"
#include "tests/support/record_samples.h"
#include "tests/support/scratch_directory.h"
#include "utdata/fcont.h"
#include "utdata/newdata.h"

namespace utdata::test {

/// A host's end of a descriptor: the group descriptors are deleted, the files closed.
struct Dispose {
  void operator()(CFContTypeFileDescr* descriptor) const {
    container::ForEachType([&](const auto& type) { container::Release(descriptor->*type.list); });
    container::ReleaseDefects(descriptor->defects);
    CFCont().FileClose(descriptor);
    delete descriptor;
  }
};
using Inspection = std::unique_ptr<CFContTypeFileDescr, Dispose>;

inline Inspection MakeInspection(const std::wstring& path = L"") {
  Inspection inspection(new CFContTypeFileDescr);
  EXPECT_TRUE(inspection->SetPath(path));
  return inspection;
}

inline Inspection Load(const std::wstring& path, CDataNewGroup* newGroups = nullptr) {
  return Inspection(CFCont().FileLoad(path.c_str(), nullptr, newGroups));
}

/// Adds a copy of a record to the list of its type.
template <class Descriptor>
Descriptor* Add(CList<Descriptor*>& list, const Descriptor& record) {
  list.AddTail(new Descriptor(record));
  return list.GetTail();
}

/// Samples that differ from group to group; they live as long as the program.
inline void GiveSamples(CGDataTypeFDD& data, unsigned seed) {
  static std::vector<std::unique_ptr<std::vector<std::uint16_t>>> all;
  std::uint64_t size = 0;
  ASSERT_TRUE(data.LayoutSize(size));
  all.push_back(std::make_unique<std::vector<std::uint16_t>>(size / 2));
  for (std::size_t index = 0; index < size / 2; ++index)
    (*all.back())[index] = static_cast<std::uint16_t>(seed * 1000 + index);
  data.dataPointer = all.back()->data();
}

inline std::vector<std::uint16_t> SamplesOf(const CGDataTypeFDD& data) {
  std::byte* bytes = nullptr;
  std::uint64_t size = 0;
  if (gdata_SamplesRead(&data, &bytes, &size) != SCFile::status_Ok) return {};
  const std::unique_ptr<std::byte[]> owned(bytes);
  std::vector<std::uint16_t> samples(size / 2);
  std::memcpy(samples.data(), bytes, size);
  return samples;
}

inline stDefectExtern MakeDefect(unsigned seed) {
  stDefectExtern defect;
  for (int index = 0; index < 8; ++index) defect.values[index] = seed + index / 8.0;
  defect.firstText = L"Lunker \u00e9\u4e2d\U0001f50a" + std::to_wstring(seed);
  defect.secondText = L"";
  for (std::uint32_t& number : defect.numbers) number = seed++;
  for (std::uint32_t part = 0; part < 3; ++part)
    defect.subEntries.push_back(
        {part, L"part \u03b1" + std::to_wstring(part), part == 1 ? L"" : L"tip"});
  return defect;
}

/// Two groups of each type, and two defect records.
inline void Fill(CFContTypeFileDescr& descriptor, unsigned seed = 1) {
  container::ForEachType([&]<class Descriptor>(const container::GroupType<Descriptor>& type) {
    for (unsigned number = seed; number < seed + 2; ++number) {
      Descriptor* const added = Add(descriptor.*type.list, MakeRecord<Descriptor>(number));
      if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>) GiveSamples(*added, number);
    }
  });
  for (unsigned number = seed; number < seed + 2; ++number)
    Add(descriptor.defects, MakeDefect(number));
  descriptor.defectTableFlag = 1;
}

/// A writable copy of every list, without handles and samples in memory.
inline Inspection CopyOf(const CFContTypeFileDescr& source) {
  Inspection copy = MakeInspection(source.path);
  container::ForEachType([&](const auto& type) {
    for (const auto* descriptor : source.*type.list) Add((*copy).*type.list, *descriptor);
  });
  for (const stDefectExtern* defect : source.defects) Add(copy->defects, *defect);
  copy->defectTableFlag = source.defectTableFlag;
  return copy;
}

template <class Value>
void ExpectSameList(const CList<Value*>& a, const CList<Value*>& b, const std::wstring& what) {
  ASSERT_EQ(a.GetCount(), b.GetCount()) << what.c_str();
  auto other = b.begin();
  for (const Value* value : a) {
    const bool same = *value == **other++;
    EXPECT_TRUE(same) << std::string(what.begin(), what.end());
  }
}

}  // namespace utdata::test

inline bool operator==(const stDefectExtern& a, const stDefectExtern& b) {
  return std::equal(std::begin(a.values), std::end(a.values), b.values) &&
         a.firstText == b.firstText && a.secondText == b.secondText &&
         std::equal(std::begin(a.numbers), std::end(a.numbers), b.numbers) &&
         a.subEntries == b.subEntries;
}

namespace utdata::test {

/// Field by field, list by list, in order.
inline void ExpectSame(const CFContTypeFileDescr& a, const CFContTypeFileDescr& b) {
  container::ForEachType(
      [&](const auto& type) { ExpectSameList(a.*type.list, b.*type.list, type.primaryName); });
  ExpectSameList(a.defects, b.defects, L"Defect");
}

/// Writes a whole new file and closes it. Returns the status.
inline int WriteWholeFile(CFContTypeFileDescr& descriptor, int newFile = 1) {
  SCFile::GroupHandle top = nullptr;
  SCFile::FileHandle file = nullptr;
  const int status = CFCont().FileWrite(nullptr, &descriptor, newFile, &top, &file, 0);
  EXPECT_EQ(status == 0, file && top);
  if (file) {
    EXPECT_EQ(SCFile::file_Close(file), 0);
  }
  return status;
}

/// FileUpdate's options that read every companion.
inline constexpr int readAll[8] = {0, 0, 0, 0, 1, 1, 0, 0};

inline std::string FileBytes(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace utdata::test
