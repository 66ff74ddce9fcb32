#include "utdata/newdata.h"

#include <gtest/gtest.h>

namespace {

struct Numbering {
  std::vector<std::wstring> names;  ///< of the records, in order
  int files;
  std::vector<std::wstring> nameOf;  ///< by file number, from 0
  std::vector<int> numberOf;         ///< by record
};

TEST(NewData, FilesAreNumberedByAppearance) {
  const std::wstring b = L"x.fpd", upper = L"x.FPD", a1 = L"x.A01", a2 = L"x.A02";
  const Numbering cases[] = {
      {{b, a1, a1, a2}, 2, {b, a1, a2, a2}, {0, 1, 1, 2}},
      {{a1, a2}, 2, {a2, a1, a2}, {1, 2}},
      {{upper, a1}, 1, {upper, a1, a1}, {0, 1}},
      {{a1, b, a2},
       2,
       {a2, a1, a2},
       {1, 1, 2}},  // what comes before the base file has counted from 1
      {{a1, b}, 1, {b, a1}, {1, 1}},
      {{L"fpd"}, 1, {L"fpd", L"fpd"}, {1}},
      {{}, 0, {L"", L""}, {}},
  };
  for (const Numbering& expected : cases) {
    CDataNewGroup groups;
    std::vector<CGDataTypeFDD> data(expected.names.size());
    for (std::size_t index = 0; index < data.size(); ++index)
      groups.AddGData(&data[index], expected.names[index]);
    EXPECT_EQ(groups.GetNbFile(), expected.files);
    for (std::size_t number = 0; number < expected.nameOf.size(); ++number)
      EXPECT_EQ(groups.GetFileName(static_cast<int>(number)), expected.nameOf[number]) << number;
    for (std::size_t index = 0; index < data.size(); ++index)
      EXPECT_EQ(groups.GetNumMapping(&data[index]), expected.numberOf[index]) << index;
    CGDataTypeFDD unknown;
    EXPECT_EQ(groups.GetNumMapping(&unknown), 0);
  }
}

TEST(NewData, AListMovesWhatIsRecordedToTheEnd) {
  CDataNewGroup groups;
  CGDataTypeFDD first, second, third;
  for (CGDataTypeFDD* group : {&first, &second}) groups.AddGData(group, L"x.A01");
  CList<CGDataTypeFDD*> list;
  for (CGDataTypeFDD* group : {&first, &third}) list.AddTail(group);
  groups.AddGData(&list, L"x.A02");
  groups.AddGData(static_cast<CList<CGDataTypeFDD*>*>(nullptr), L"x.A03");
  EXPECT_EQ(groups.GetNbFile(), 2);
  EXPECT_EQ(groups.GetNumMapping(&first), 2);
  EXPECT_EQ(groups.GetNumMapping(&second), 1);
  EXPECT_EQ(groups.GetNumMapping(&third), 2);
}

}  // namespace
