#include "utdata/rdata.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <cwchar>
#include <new>
#include <vector>

#include "tests/support/data_host.h"
#include "tests/support/report_capture.h"
#include "utdata/supplier.h"
#include "utdata/tablefactory.h"

namespace {

using utdata::test::DataHost;
using utdata::test::ReportCapture;
using utdata::test::SoundRecord;

CGDataTypeFDD Record(gdata_enumDataClass dataClass, float minimum, float maximum) {
  CGDataTypeFDD record;
  record.dataClass = dataClass;
  record.dataMinimum = minimum;
  record.dataMaximum = maximum;
  record.dataResolution = 0.5f;
  record.dataOffset = 0.25f;
  record.sampleSize = 2;
  record.sampleQuantity = 1000;
  record.sampleResolution = 8;
  record.columnQuantity = 10;
  record.rowQuantity = 20;
  record.byteSwap = 7;
  return record;
}

TEST(Descriptor, SizesAndByteOrderComeFromTheRecord) {
  const CGDataTypeFDD record = Record(gdata_AScan, 0, 100);
  CRDataTypeDD scan(&record, nullptr, nullptr);
  EXPECT_EQ(scan.GetVectorSize(), 2000u);
  EXPECT_EQ(scan.GetVolumeSize(), 400000u);
  EXPECT_EQ(scan.IsSwapNeeded(), 1);
  EXPECT_EQ(scan.GetSampleResol(), 8.0);
  EXPECT_EQ(scan.IsDataOwned(), 1);
  for (std::uint32_t c = 1; c < 20; ++c) {
    const CGDataTypeFDD other = Record(static_cast<gdata_enumDataClass>(c), 0, 100);
    const bool isSwapped =
        c == 1 || c == 4 || c == 10 || c == 11 || c == 14 || c == 15 || c == 18 || c == 19;
    EXPECT_EQ(CRDataTypeDD(&other, nullptr, nullptr).IsSwapNeeded(), isSwapped ? 1 : 0) << c;
  }
  CRDataTypeDD empty(nullptr, nullptr, nullptr);
  EXPECT_EQ(empty.GetVolumeSize(), 0u);
  EXPECT_EQ(empty.IsDataOwned(), 1);
}

TEST(Descriptor, PositionCScansTakeTheirSampleAxisFromTheirRange) {
  struct Case {
    float minimum, maximum;
    std::uint32_t quantity;
  };
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const Case cases[] = {{0, 511, 511},
                        {0.5f, 511, 510},
                        {1, 0, 1},
                        {0.5f, 0, 0},
                        {-1, 1e8f, 1},
                        {0, 1e8f, 100000000},
                        {0, 3e38f, 1},
                        {-3e38f, 3e38f, 1},
                        {nan, 1, 1}};
  for (const auto c : {gdata_CScanPosition, gdata_CScanPositionFirst, gdata_CScanPositionLast})
    for (const auto& [minimum, maximum, quantity] : cases) {
      const CGDataTypeFDD record = Record(c, minimum, maximum);
      const CRDataTypeDD descriptor(&record, nullptr, nullptr);
      EXPECT_EQ(descriptor.GetSampleQty(), quantity) << minimum << " " << maximum;
      EXPECT_EQ(descriptor.GetSampleResol(), 0.5);
      EXPECT_EQ(descriptor.GetSampleOffs(), 0.25);
    }
  const CGDataTypeFDD master = Record(static_cast<gdata_enumDataClass>(0x8003), 0, 511);
  EXPECT_EQ(CRDataTypeDD(&master, nullptr, nullptr).GetSampleQty(), 1000u)
      << "the class is taken with bit 15";
}

/// A position C-scan whose values are sample positions, up to the 300th.
CGDataTypeFDD PositionRecord() {
  CGDataTypeFDD record = SoundRecord({.dataClass = gdata_CScanPosition});
  record.dataMaximum = 300.9f;
  record.dataResolution = 0.5f;
  return record;
}

TEST(Descriptor, AmplitudeCScansTakeTheSampleAxisOfTheirLivePartner) {
  DataHost host;
  auto partner = host.Make(PositionRecord());
  CIData* const gone = partner.get();
  const CGDataTypeFDD record = Record(gdata_CScanAmplitude, 0, 100);
  const CRDataTypeDD matched(&record, partner.get(), nullptr);
  EXPECT_EQ(matched.GetSampleQty(), 300u);
  EXPECT_EQ(matched.GetSampleResol(), 0.5);
  EXPECT_EQ(matched.GetMatchedCScan(), partner.get());

  partner.reset();
  EXPECT_EQ(matched.GetMatchedCScan(), nullptr);
  for (CIData* item : {static_cast<CIData*>(nullptr), gone}) {
    const CRDataTypeDD alone(&record, item, nullptr);
    EXPECT_EQ(alone.GetSampleQty(), 1u);
    EXPECT_EQ(alone.GetSampleResol(), 1.0);
    EXPECT_EQ(alone.GetSampleOffs(), 0.0);
  }
}

TEST(Descriptor, LinksEndWithTheirItemEvenWhenItsAddressIsUsedAgain) {
  DataHost host;
  alignas(CIData) std::byte place[sizeof(CIData)];
  CGDataTypeFDD record = PositionRecord();
  CRDataTypeDD descriptor;
  auto* item = new (place) CIData(&record, nullptr, &host.volumes, 0, nullptr);
  descriptor.SetMatchedCScan(item);
  const CRDataTypeDD copy(descriptor);
  EXPECT_EQ(copy.GetMatchedCScan(), item);
  item->~CIData();
  EXPECT_EQ(copy.GetMatchedCScan(), nullptr);
  item = new (place) CIData(&record, nullptr, &host.volumes, 0, nullptr);
  EXPECT_TRUE(CIData::IsValidObject(item));
  EXPECT_EQ(copy.GetMatchedCScan(), nullptr);
  item->~CIData();
  EXPECT_FALSE(CIData::IsValidObject(item));
}

TEST(Descriptor, DestroyUnlinksALivePartner) {
  DataHost host;
  const auto self = host.Make(PositionRecord());
  const auto partner = host.Make(PositionRecord());
  partner->idata1_GetInfoRef()->SetMatchedCScan(self.get());
  auto* descriptor = new CRDataTypeDD;
  descriptor->SetMatchedCScan(partner.get());
  descriptor->Destroy();
  EXPECT_EQ(partner->idata1_GetInfoRef()->GetMatchedCScan(), nullptr);
}

TEST(Descriptor, DuplicatesShareTheTableWithoutOwningIt) {
  const CGDataTypeFDD record = Record(gdata_AScan, 0, 100);
  CRDataTypeDD source(&record, nullptr, nullptr);
  char* const table = reinterpret_cast<char*>(new std::byte[400000]{});
  source.SetDiskTable(table, false);
  source.SetTableAllocationSize(12345);
  source.SetSampleAxisScale(1);
  source.SetSampleLimits(2, 3);
  source.GetGroupVersionNumber() = 9;
  CRDataTypeDD copy;
  copy = source;
  EXPECT_EQ(reinterpret_cast<char*>(copy.GetDiskTable()), table);
  EXPECT_EQ(copy.IsDataOwned(), 0);
  EXPECT_EQ(copy.GetTableAllocationSize(), 4000u);
  EXPECT_EQ(copy.GetVolumeSize(), 400000u);
  EXPECT_EQ(copy.GetSampleAxisScale(), 1);
  EXPECT_EQ(copy.GetSampleStop(), 3);
  EXPECT_EQ(copy.GetGroupVersionNumber(), 9u);
  for (const bool isLoaded : {true, false}) {
    source.SetVolumeLoaded(isLoaded);
    EXPECT_EQ(CRDataTypeDD(source).IsVolumeLoaded(), isLoaded ? 1 : 0);
  }
  copy.Flush(0);
  EXPECT_EQ(copy.GetDiskTable(), nullptr);
  EXPECT_EQ(source.GetDiskTable()[0], 0u) << "still alive";
  ReportCapture reports;
  source.AssociateProcessDD_From(source);
  EXPECT_EQ(reports.Assertions(), 1u);
  EXPECT_EQ(source.IsDataOwned(), 1);
  source.Flush(0);  // the address sanitizer reports a table that is not freed, or twice
  EXPECT_EQ(source.GetDiskTable(), nullptr);
}

TEST(Descriptor, MappedTablesAreDroppedButNeverFreed) {
  alignas(4) char mapped[64] = {};
  CRDataTypeDD descriptor;
  descriptor.SetDiskTable(mapped, true);
  descriptor.SetDataLoaded(true);
  descriptor.Flush(0);
  EXPECT_EQ(descriptor.GetDiskTable(), nullptr);
  EXPECT_TRUE(descriptor.GetUseMemoryMappedFilePointer());
  EXPECT_EQ(descriptor.IsDataLoaded(), 1);
}

TEST(Descriptor, StaleHeadersAreClearedAndNothingElse) {
  const auto cleared = [](std::uint32_t first, std::uint32_t second) {
    std::array<std::uint32_t, 10> table;
    table.fill(0xFFFFFFFF);
    table[0] = first;
    table[1] = second;
    CRDataTypeDD descriptor;
    descriptor.SetDiskTable(reinterpret_cast<char*>(table.data()), true);
    EXPECT_EQ(table[9], 0xFFFFFFFF);
    return std::count(table.begin(), table.end(), 0u);
  };
  EXPECT_EQ(cleared(0x3344, 0x5553), 9);
  EXPECT_EQ(cleared(0xABCD3344, 0x12345553), 9);
  EXPECT_EQ(cleared(0x3345, 0x5553), 0);
  EXPECT_EQ(cleared(0x3344, 0x5554), 0);

  // One cell of one sample: two bytes, which the record states although the sample axis is derived.
  CGDataTypeFDD record = Record(gdata_CScanPosition, 0, 511);
  record.columnQuantity = record.rowQuantity = 1;
  CRDataTypeDD small(&record, nullptr, nullptr);
  small.SetDiskTable(reinterpret_cast<char*>(new std::byte[2]{std::byte{0x44}, std::byte{0x33}}),
                     false);
  small.Flush(0);
}

// A table that is not here: neither read, nor freed by the descriptor that is said to own it.
TEST(Descriptor, TheAllOnesPointerIsKeptAndNeverFollowed) {
  char* const elsewhere = reinterpret_cast<char*>(~std::uintptr_t{0});
  for (const auto storage : {kvt_StorCells, kvt_StorIndexed}) {
    CGDataTypeFDD record = Record(gdata_AScan, 0, 100);
    record.storageMode = storage;
    auto* const descriptor = new CRDataTypeDD(&record, nullptr, nullptr);
    descriptor->SetDiskTable(elsewhere, false);
    EXPECT_EQ(reinterpret_cast<char*>(descriptor->GetDiskTable()), elsewhere);
    EXPECT_FALSE(descriptor->HasTable());
    descriptor->Flush(0);
    EXPECT_EQ(descriptor->GetDiskTable(), nullptr);
    EXPECT_TRUE(descriptor->SetDiskTable(elsewhere, false, 1)) << "nothing to measure";
    descriptor->Destroy();
  }
}

struct Layout {
  std::uint32_t dataClass;
  std::uint32_t storage;
  std::uint32_t cellSize;
  std::uint64_t needed;
};
// 10 columns, 20 rows, 1000 samples of two bytes.
constexpr Layout layouts[] = {{gdata_AScan, kvt_StorCells, 0, 400000},
                              {gdata_AScan, kvt_StorCells, 2, 400000},
                              {gdata_AScan, kvt_StorCells, 2048, 409600},
                              {gdata_AScan, kvt_StorIndexed, 0, 800},
                              {gdata_CScanPosition, kvt_StorCells, 0, 400},
                              {gdata_CScanPosition, kvt_StorCells, 4, 800},
                              {gdata_CScanPosition | gdata_MultiChannelMaster, 0, 0, 400},
                              {gdata_CScanAngle, kvt_StorCells, 0, 400},
                              {gdata_AScan, 2, 2048, 0}};

CGDataTypeFDD RecordOf(const Layout& layout) {
  CGDataTypeFDD record = Record(static_cast<gdata_enumDataClass>(layout.dataClass), 0, 511);
  record.storageMode = static_cast<kvt_enumStorMode>(layout.storage);
  record.cellSize = layout.cellSize;
  return record;
}

// The samples' extent is what readers walk: a table that its host states to be shorter is refused,
// and stays the host's.
TEST(Descriptor, TablesOfStatedSizeHoldTheirLayoutOrAreRefused) {
  std::vector<char> table(500000);
  for (const Layout& layout : layouts) {
    SCOPED_TRACE(&layout - layouts);
    const CGDataTypeFDD record = RecordOf(layout);
    for (const std::uint64_t size : {std::uint64_t{0}, layout.needed / 2, layout.needed}) {
      CRDataTypeDD descriptor(&record, nullptr, nullptr);
      descriptor.SetDataLoaded(true);
      ReportCapture reports;
      const bool isWhole = size == layout.needed || layout.storage == 2;
      EXPECT_EQ(descriptor.SetDiskTable(table.data(), true, size), isWhole);
      EXPECT_EQ(descriptor.HasTable(), isWhole);
      EXPECT_EQ(descriptor.IsDataLoaded(), isWhole ? 1 : 0);
      EXPECT_EQ(descriptor.IsTableRefused(), !isWhole);
      EXPECT_EQ(descriptor.KnownTableSize(), isWhole ? size : 0);
      EXPECT_EQ(reports.Assertions(), isWhole ? 0u : 1u);
      descriptor.SetDiskTable(table.data(), true);
      EXPECT_TRUE(descriptor.HasTable());
      EXPECT_FALSE(descriptor.IsTableRefused());
    }
  }
}

// What the record says of its block, on disk or in memory, is not the size of another table.
TEST(Descriptor, TablesOfUnstatedSizeAreAttachedWhateverTheRecordSaysOfItsBlock) {
  std::vector<char> table(500000);
  for (const Layout& layout : layouts) {
    SCOPED_TRACE(&layout - layouts);
    CGDataTypeFDD record = RecordOf(layout);
    record.samples.offset = 4096;
    record.samples.size = record.dataSize = 7;
    CRDataTypeDD descriptor(&record, nullptr, nullptr);
    descriptor.SetDiskTable(table.data(), true);
    EXPECT_TRUE(descriptor.HasTable());
    EXPECT_EQ(descriptor.KnownTableSize(), layout.needed);
    EXPECT_EQ(CRDataTypeDD(descriptor).KnownTableSize(), layout.needed);
    record.dataPointer = table.data();
    CRDataTypeDD own(&record, nullptr, nullptr);
    own.SetDiskTable(table.data(), true);
    EXPECT_EQ(own.KnownTableSize(), 7u) << "this is the block that the record means";
  }
}

// Tables with offsets are as long as these say, where they are no header of older writers. Cells of
// 20 bytes; an offset of 0 stands for an absent one.
TEST(Descriptor, TablesWithOffsetsEndWithTheirLastCell) {
  struct Case {
    std::vector<std::uint32_t> offsets;
    std::uint64_t size;
  };
  const Case cases[] = {{{8, 28}, 48},
                        {{28, 8}, 48},
                        {{8, 0}, 28},
                        {{0, 0}, 8},
                        {{0}, 4},
                        {{0x3344}, 0x3344 + 20},
                        {{0x3344, 0x5553, 7, 7, 7, 7, 7, 7, 7, 40}, 60}};
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    CGDataTypeFDD record = Record(gdata_AScan, 0, 100);
    record.storageMode = kvt_StorIndexed;
    record.cellSize = 64;  // says nothing of cells that have offsets
    record.sampleQuantity = 10;
    record.columnQuantity = static_cast<std::uint32_t>(c.offsets.size());
    record.rowQuantity = 1;
    CRDataTypeDD descriptor(&record, nullptr, nullptr);
    // The address sanitizer reports reads beyond the table.
    std::vector<char> table(c.size, 'x');
    const auto fill = [&] { std::memcpy(table.data(), c.offsets.data(), c.offsets.size() * 4); };
    ReportCapture reports;
    fill();
    EXPECT_FALSE(descriptor.SetDiskTable(table.data(), true, c.size - 1));
    EXPECT_TRUE(descriptor.SetDiskTable(table.data(), true, c.size));
    fill();
    descriptor.SetDiskTable(table.data(), true);
    EXPECT_EQ(descriptor.KnownTableSize(), c.size);
  }
}

TEST(Descriptor, AnswersItsFields) {
  CRDataTypeDD d;
  d.channelId = 7;
  std::wcscpy(d.channelName, L"left");
  d.compressionBits = 12;
  d.compressionLSBit = 4;
  d.inspectionGeometry = gdata_GeometryAxial;
  d.cellSize = 99;
  d.SetRowUnits(kvt_UnitDegree);
  EXPECT_EQ(d.GetChannelID(), 7u);
  EXPECT_STREQ(d.GetChannelIDName(), L"left");
  EXPECT_EQ(d.GetDataCompBits(), 12u);
  EXPECT_EQ(d.GetDataCompLSBitsPos(), 4u);
  EXPECT_EQ(d.GetInspGeometry(), gdata_GeometryAxial);
  EXPECT_EQ(d.GetCellSize(), 99u);
  EXPECT_EQ(d.GetRowUnits(), kvt_UnitDegree);
  EXPECT_EQ(d.GetPointUnit(kvt_AxisFifth), nullptr);
  for (const double fixed : {double(d.GetModeID()),
                             double(d.GetSubModeID()),
                             d.GetLAB(),
                             d.GetInUncontroled(),
                             d.GetInUncontroledPos(),
                             d.GetOutUncontroled(),
                             d.GetOutUncontroledPos()})
    EXPECT_EQ(fixed, 0);
}

TEST(Descriptor, SamplesAreCutToTheirSize) {
  CRDataTypeDD descriptor;
  const std::uint32_t masks[] = {0, 0xFF, 0xFFFF, 0xFFFFFF, 0xFFFFFFFF};
  for (std::uint32_t size = 0; size < 5; ++size) {
    descriptor.sampleSize = size;
    EXPECT_EQ(descriptor.FormatSample(0x89ABCDEF), 0x89ABCDEF & masks[size]);
  }
}

// -------------------------------------------------------------------------------------------------
// shared tables

class Document : public IGDataSupplier {
 public:
  void HandleParameterRequest(PellamServiceParam&, std::int32_t) override {}
  void OnParametersChanged() override {}
  CFSet* GetFileSet() override { return nullptr; }
  CTableFactory* GetTableFactory() override { return factory; }
  CVolumeSet* GetVolumeSet() override { return nullptr; }
  CFContTypeFileDescr* GetFileDescriptor() override { return nullptr; }
  void OnDataGroupAdded(std::int32_t) override {}
  CTableFactory* factory = nullptr;
};

TEST(TableFactory, GroupsOfOneChannelAndGateShareATable) {
  CTableFactory factory;
  Document document;
  CGDataTypeFDD record = Record(gdata_AScan, 0, 100);
  CRDataTypeDD scan(&record, nullptr, nullptr);
  EXPECT_EQ(scan.GetLookUpTable(nullptr), nullptr);
  EXPECT_EQ(scan.GetLookUpTable(&document), nullptr) << "no factory";
  document.factory = &factory;
  CLookUpTable* const table = scan.GetLookUpTable(&document);
  record.byteSwap = 0;
  CRDataTypeDD other(&record, nullptr, nullptr);
  CLookUpTable* const otherTable = other.GetLookUpTable(&document);
  EXPECT_NE(otherTable, table) << "another byte order";
  other.byteSwap = 1;
  EXPECT_EQ(other.GetLookUpTable(&document), table);
  other.gateId = 1;
  CLookUpTable* const gated = other.GetLookUpTable(&document);
  EXPECT_NE(gated, table);
  ReportCapture reports;
  other.gateId = 0;
  other.dataClass = gdata_Analog;
  EXPECT_EQ(other.GetLookUpTable(&document), table) << "the class is reported, and not compared";
  EXPECT_EQ(reports.Assertions(), 1u);
  EXPECT_EQ(factory.GetTableQty(), 3);

  factory.ReleaseLUT(table);
  factory.ReleaseLUT(table);
  EXPECT_EQ(factory.GetTableQty(), 3) << "one reference is left";
  factory.ReleaseLUT(table);
  EXPECT_EQ(factory.GetTableQty(), 2);
  factory.ReleaseLUT(nullptr);
  factory.ReleaseLUT(otherTable);
  factory.ReleaseLUT(gated);
  EXPECT_EQ(factory.GetTableQty(), 0);
}

TEST(TableFactory, IdentitiesAreComparedByTheirKind) {
  using Id = vset_groupId;
  struct Case {
    const Id* first;
    const Id* second;
    bool isShared;
  };
  const Id one(1, 1, 1, 1, 1), oneOther(1, 9, 9, 9, 9), three(3, 1, 1, 1, 1),
      threeSame(3, 1, 9, 9, 9), threeOther(3, 2, 1, 1, 1), five(5, 1, 2, 3, 4),
      fiveSame(5, 1, 2, 9, 9), fiveOther(5, 1, 3, 3, 4), two(2, 1, 1, 1, 1), six(6, 0, 0, 0, 0);
  const Case cases[] = {{nullptr, nullptr, true},
                        {nullptr, &one, false},
                        {&one, nullptr, false},
                        {&one, &oneOther, true},
                        {&three, &threeSame, true},
                        {&three, &threeOther, false},
                        {&five, &fiveSame, true},
                        {&five, &fiveOther, false},
                        {&one, &three, false},
                        {&two, &two, false},
                        {&six, &six, false}};
  for (const auto& [first, second, isShared] : cases) {
    const auto index = &first - &cases[0].first;
    CTableFactory factory;
    CRDataTypeDD descriptor;
    int created = -1;
    CLookUpTable* const a = factory.ObtainLUT(&descriptor, nullptr, first);
    CLookUpTable* const b = factory.ObtainLUT(&descriptor, &created, second);
    EXPECT_EQ(a == b, isShared) << index;
    EXPECT_EQ(created, isShared ? 0 : 1) << index;
    factory.ReleaseLUT(a);
    factory.ReleaseLUT(b);
    EXPECT_EQ(factory.GetTableQty(), 0) << index;
  }
}

TEST(TableFactory, DestroyedWithTablesReportsAndLeavesThemToTheirHolders) {
  ReportCapture reports;
  CRDataTypeDD descriptor;
  CLookUpTable* table = nullptr;
  {
    CTableFactory factory;
    table = factory.ObtainLUT(&descriptor, nullptr, nullptr);
    EXPECT_EQ(factory.ObtainLUT(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(reports.Assertions(), 1u);
  }
  EXPECT_EQ(reports.Assertions(), 2u);
  EXPECT_EQ(table->Convert(static_cast<unsigned short>(0)), 0);
  EXPECT_EQ(table->Release(), 0);
}

}  // namespace
