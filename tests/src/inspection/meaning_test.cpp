// What no writer of ours makes, but files may hold and the pages give a meaning to.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/file_forge.h"
#include "tests/support/scratch_directory.h"
#include "utdata/arrays.h"
#include "utdata/fset.h"
#include "utdata/igate.h"
#include "utdata/inspection.h"
#include "utdata/readout.h"
#include "utdata/samples.h"

namespace utdata {
namespace {

using kvtiff19::Bytes;

/// The body of a group, item by item.
class GroupBody {
 public:
  template <class Number>
  GroupBody& Put(std::uint16_t code, Number number) {
    constexpr std::uint8_t type = std::is_same_v<Number, float>          ? SCFile::value_Float
                                  : std::is_same_v<Number, double>       ? SCFile::value_Double
                                  : std::is_same_v<Number, std::int32_t> ? SCFile::value_Int32
                                                                         : SCFile::value_UInt32;
    m_items.Item(code, type, 1).Put(number);
    ++m_quantity;
    return *this;
  }
  /// REQUIRES: a multiple of four bytes.
  GroupBody& Text(std::uint16_t code, std::string_view text) {
    m_items.Item(code, SCFile::value_Text, static_cast<std::uint32_t>(text.size())).Text(text);
    ++m_quantity;
    return *this;
  }
  GroupBody& Group(std::uint16_t code, const GroupBody& group) {
    const std::vector<std::byte> body = group.Whole();
    m_items.Item(code, 0, static_cast<std::uint32_t>(body.size())).Append(body);
    ++m_quantity;
    return *this;
  }
  /// Samples, put into the file in front of the group.
  GroupBody& Samples(test::FileForge& forge, std::vector<std::byte> samples) {
    const std::uint64_t size = samples.size();
    const std::uint64_t checksum = kvtiff19::Checksum(samples);
    samples.resize(static_cast<std::size_t>(kvtiff19::RoundUp(size, 8)));
    const std::uint64_t table = samples.size();
    test::ByteText entry;
    samples.insert(samples.end(), 8, {});
    kvtiff19::Store(samples.data() + table, checksum);
    const std::uint64_t at = forge.AddPages(samples);
    m_items.Item(100, SCFile::value_Block, 1)
        .Append(kvtiff19::EncodeBlockRef(
            {at,
             size,
             kvtiff19::chunkSize,
             at + table,
             kvtiff19::Checksum(Bytes(samples).subspan(static_cast<std::size_t>(table)))}));
    ++m_quantity;
    return *this;
  }
  [[nodiscard]] std::vector<std::byte> Whole() const {
    test::ByteText body;
    return body.Head(0, m_quantity).Append(m_items.Bytes()).Bytes();
  }

 private:
  test::ByteText m_items;
  std::uint32_t m_quantity = 0;
};

std::vector<std::byte> BytesOf(std::initializer_list<int> values) {
  std::vector<std::byte> bytes;
  for (const int value : values) bytes.push_back(static_cast<std::byte>(value));
  return bytes;
}

GroupBody AScans(std::uint32_t channel, std::uint32_t columns, std::uint32_t rows, unsigned size) {
  GroupBody group;
  return group.Put(4, channel)
      .Put(11, columns)
      .Put(12, 0.001F)
      .Put(15, rows)
      .Put(16, 0.001F)
      .Put(20, 1e-6F)
      .Put(37, 6000.0F)
      .Put(42, size);
}

struct Forged {
  test::ScratchDirectory scratch;
  std::string path = (scratch.Path() / "odd.fpd").string();

  void Write(test::FileForge& forge) const {
    const std::vector<std::byte> file = forge.Finish();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()),
               static_cast<std::streamsize>(file.size()));
  }
};

TEST(Meaning, SamplesLieAsTheirRecordSays) {
  const Forged forged;
  test::FileForge forge;
  GroupBody top;
  // An offset for each cell, none for the second; big-endian offset binary.
  GroupBody indexed = AScans(0, 3, 1, 2).Put(19, 2U).Put(26, 65535.0F).Put(44, 1U).Put(45, 1);
  indexed.Samples(forge, BytesOf({12, 0,    0, 0,    0, 0,    0, 0,    16,   0, 0,
                                  0,  0x80, 0, 0xC0, 0, 0x40, 0, 0xFF, 0xFF, 9}));
  // Cells of which each has two bytes behind its samples; signed, and of a range that is not.
  GroupBody wide = AScans(1, 1, 2, 2).Put(19, 1U).Put(26, 1000.0F).Put(41, 4U).Put(47, 4U);
  wide.Put(48, 3U).Samples(forge, BytesOf({0, 1, 7, 7, 232, 3, 7, 7}));
  // Called offset binary by the file; no sample size.
  GroupBody called = AScans(2, 1, 1, 0).Put(19, 3U).Put(25, -128.0F).Put(26, 127.0F);
  called.Put(43, 1U).Put(47, 2U).Samples(forge, BytesOf({128, 255, 0}));
  for (const GroupBody& group : {indexed, wide, called}) top.Group(10004, group);
  forge.AddTop(top.Whole());
  forged.Write(forge);

  const Inspection inspection = Inspection::Open(forged.path);
  const auto valuesOf = [&](std::size_t group, std::uint64_t cell) {
    return inspection.Data().at(group).Samples().Values(cell);
  };
  using Values = std::vector<std::int32_t>;
  EXPECT_EQ(valuesOf(0, 0), (Values{0, 0x4000}));
  EXPECT_EQ(valuesOf(0, 1), (Values{0, 0}));
  EXPECT_EQ(valuesOf(0, 2), (Values{-0x4000, 32767}));
  ForEachPiece(DescribeArray(inspection.Data()[0]),
               inspection.Data()[0],
               [](std::span<const std::byte> piece, std::uint64_t) {
                 EXPECT_EQ(std::vector(piece.begin(), piece.end()),
                           BytesOf({0, 0x80, 0, 0xC0, 0, 0x80, 0, 0x80, 0, 0x40, 0xFF, 0xFF}));
               });
  EXPECT_DOUBLE_EQ(inspection.Data()[0].ReadOut(0, 2, 0).percent, -50);
  EXPECT_EQ(valuesOf(1, 0), (Values{256}));
  EXPECT_DOUBLE_EQ(inspection.Data()[1].ReadOut(0, 0, 0).percent, 25.6);
  EXPECT_EQ(valuesOf(1, 1), (Values{1000}));
  EXPECT_EQ(valuesOf(2, 0), (Values{0, 127, -128}));
}

// The numbers of an array are those that are stored, and the scale and offset beside it make them
// what they mean; where those cannot, the numbers are the values.
TEST(Meaning, ArraysSayTheSame) {
  const Forged forged;
  test::FileForge forge;
  GroupBody top;
  GroupBody eddy = AScans(0, 1, 1, 2).Put(1, 5U).Put(19, 2U).Put(26, 65535.0F);
  eddy.Put(27, 0.5F).Put(28, 2.0F).Put(50, 6U).Samples(forge, BytesOf({0, 0x80, 4, 0x80}));
  GroupBody analog = AScans(0, 1, 1, 2).Put(1, 8U).Put(19, 1U).Put(26, 1000.0F);
  analog.Put(27, 0.5F).Put(28, 2.0F).Put(50, 6U).Samples(forge, BytesOf({0xF4, 1}));
  GroupBody turned = AScans(0, 1, 1, 1).Put(19, 3U).Put(25, -128.0F).Put(26, 127.0F);
  turned.Put(43, 1U).Put(47, 2U).Samples(forge, BytesOf({128, 255, 0}));
  for (const GroupBody& group : {eddy, analog, turned}) top.Group(10004, group);
  forge.AddTop(top.Whole());
  forged.Write(forge);

  const Inspection inspection = Inspection::Open(forged.path);
  const auto volts = [&](std::size_t group, int stored) {
    const DescribedValues values = DescribeArray(inspection.Data().at(group)).values;
    EXPECT_EQ(values.unit, "V");
    return values.scale * stored + values.offset;
  };
  EXPECT_DOUBLE_EQ(volts(0, 0x8000), 2);
  EXPECT_DOUBLE_EQ(volts(0, 0x8004), 4);
  EXPECT_DOUBLE_EQ(volts(1, 500), 0.5 * 50 + 2);
  const DescribedArray array = DescribeArray(inspection.Data().at(2));
  EXPECT_DOUBLE_EQ(array.values.offset, 0);
  ForEachPiece(array, inspection.Data().at(2), [](std::span<const std::byte> piece, std::uint64_t) {
    EXPECT_EQ(std::vector(piece.begin(), piece.end()), BytesOf({0, 127, -128}));
  });
}

TEST(Meaning, ModificationsFindTheirRecords) {
  const Forged forged;
  test::FileForge forge;
  GroupBody first, second;
  const auto change = [](std::uint32_t channel, std::uint32_t bookmark, float offset) {
    return GroupBody().Put(4, channel).Put(51, bookmark).Put(21, offset);
  };
  const auto defects = [](double value, std::string_view text) {
    GroupBody record;
    record.Put(1, value).Text(7, text).Put(10, 4U).Text(11, "open").Text(12, "shut").Put(9, 3U);
    return GroupBody().Group(10044, record.Put(10, 5U));
  };
  first
      .Group(10018, change(1, 0, 5e-6F))  // in front of its record
      .Group(10004, AScans(0, 1, 1, 2))
      .Group(10004, AScans(1, 1, 1, 2))
      .Group(10224, GroupBody().Put(1, 1U).Put(4, 1e-6F))
      .Group(15697, GroupBody().Text(1, "old1"))
      .Group(10019, GroupBody().Text(1, "new1"))
      .Group(10006, GroupBody().Put(4, 0.02F))
      .Group(10013, GroupBody().Put(4, 0.03F))
      .Group(10048, GroupBody().Put(1, 1U).Put(2, 2U).Put(5, 0.001F))
      .Group(10045, defects(1.5, "lost"));
  second.Put(77, 1U)
      .Group(10018, change(0, 3, 1e-6F))  // the record's bookmark 0 agrees with any, and becomes 3
      .Group(10018, change(0, 0, 2e-6F))  // so that this one is a record of its own
      .Group(10018, change(0, 3, 3e-6F))
      .Group(10025, GroupBody().Put(1, 1U).Put(5, 2e-6F))
      .Group(10048, GroupBody().Put(1, 1U).Put(2, 2U).Put(6, 0.002F))
      .Group(10045, defects(2.5, std::string_view("ki\0t", 4)));
  forge.AddTop(first.Whole());
  forge.AddTop(second.Whole());
  forged.Write(forge);

  const Inspection inspection = Inspection::Open(forged.path);
  const CFContTypeFileDescr& groups = inspection.Descriptor();
  std::vector<float> offsets;
  for (const CGDataTypeFDD* group : groups.data) offsets.push_back(group->sampleOffset);
  EXPECT_EQ(offsets, (std::vector{3e-6F, 5e-6F, 2e-6F}));
  EXPECT_EQ(groups.data.GetHead()->GetDataBookmarkType(), bookmark_Tofd);
  EXPECT_STREQ(groups.data.GetTail()->dataName, L"no name");
  const CGGateTypeDescr& gate = *groups.gates.GetHead();
  EXPECT_EQ(gate.start, 1e-6F);
  EXPECT_EQ(gate.width, 2e-6F);
  EXPECT_EQ(gate.referenceGate, -1);
  EXPECT_EQ(groups.infos.GetHead()->title, L"old1");
  EXPECT_EQ(groups.specimenDimensions.GetHead()->thickness, 0.02F);
  const CGWeldFillDescr* fill = inspection.FileSet().fset_GetGWeldFill(1, 2);
  ASSERT_NE(fill, nullptr);
  EXPECT_EQ(fill->depth, 0);
  EXPECT_EQ(fill->height, 0.002F);
  ASSERT_EQ(groups.defects.GetCount(), 1);
  const stDefectExtern& defect = *groups.defects.GetHead();
  EXPECT_EQ(defect.values[0], 2.5);
  EXPECT_EQ(defect.firstText, L"ki");
  EXPECT_EQ(defect.numbers[0], 3U);
  ASSERT_EQ(defect.subEntries.size(), 1U);
  EXPECT_EQ(defect.subEntries[0].secondText, L"shut");
}

}  // namespace
}  // namespace utdata
