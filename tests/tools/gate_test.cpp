#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "run_program.h"
#include "utdata/fcont.h"

namespace utdata::test {
namespace {

using WordValues = std::vector<std::uint16_t>;

constexpr std::uint32_t rows = 3, columns = 5,
                        quantity = 83;  // no multiple of what is compared at a time

/// A file as the library loads it.
class LoadedFile {
 public:
  explicit LoadedFile(const std::filesystem::path& path)
      : m_file(m_container.FileLoad(path.wstring().c_str(), nullptr, nullptr)) {}
  ~LoadedFile() {
    if (!m_file) return;
    for (CGDataTypeFDD* group : m_file->data) gdata_Delete(group, 1);
    for (CGChanTypeDescr* group : m_file->channels) gchan_Delete(group, 1);
    for (CGGateTypeDescr* group : m_file->gates) ggate_Delete(group, 1);
    m_container.FileClose(m_file.get());
  }
  LoadedFile(const LoadedFile&) = delete;
  LoadedFile& operator=(const LoadedFile&) = delete;

  [[nodiscard]] const CFContTypeFileDescr& operator*() const { return *m_file; }
  /// The only data group of a class and sub-channel, or null.
  [[nodiscard]] const CGDataTypeFDD* Find(gdata_enumDataClass dataClass,
                                          std::uint32_t subChannel = 0) const {
    const CGDataTypeFDD* found = nullptr;
    for (const CGDataTypeFDD* group : m_file->data)
      if (group->dataClass == dataClass && group->subChannelId == subChannel)
        found = found ? nullptr : group;
    return found;
  }
  [[nodiscard]] WordValues Samples(gdata_enumDataClass dataClass,
                                   std::uint32_t subChannel = 0) const {
    const CGDataTypeFDD* group = Find(dataClass, subChannel);
    void* samples = nullptr;
    std::uint64_t size = 0;
    if (!group || gdata_SamplesMap(group, &samples, &size) != SCFile::status_Ok) return {};
    WordValues values(size / 2);
    std::memcpy(values.data(), samples, size);
    SCFile::file_BlockUnmap(SCFile::file_OfGroup(group->samples.group), samples);
    return values;
  }

 private:
  CFCont m_container;
  std::unique_ptr<CFContTypeFileDescr> m_file;
};

/// A-scans in memory: their record, and the raw samples that it points at.
struct AScans {
  CGDataTypeFDD record;
  std::string bytes;
};

/// Samples over the whole range of their type, with ties and both ends of the range; every second
/// cell is quiet.
std::string MakeSamples(std::uint32_t sampleSize) {
  std::string bytes;
  std::uint32_t random = 7;
  for (std::uint32_t cell = 0; cell < rows * columns; ++cell)
    for (std::uint32_t sample = 0; sample < quantity; ++sample) {
      random = random * 1664525 + 1013904223;
      const std::uint32_t value = cell % 2 == 0 ? random >> 16U : (random >> 16U) % 4 * 1000;
      for (std::uint32_t byte = 0; byte < sampleSize; ++byte)
        bytes += static_cast<char>(value >> 8U * byte & 0xFFU);
    }
  return bytes;
}

AScans MakeAScans(kvt_enumDataType type, gdata_enumRectif rectification) {
  AScans ascans;
  CGDataTypeFDD& record = ascans.record;
  const bool isByte = type == kvt_Int8 || type == kvt_UInt8;
  const bool isSigned = type == kvt_Int8 || type == kvt_Int16;
  record.sampleSize = isByte ? 1 : 2;
  record.columnQuantity = columns;
  record.rowQuantity = rows;
  record.sampleQuantity = quantity;
  record.columnResolution = 2e-3F;
  record.rowResolution = 3e-3F;
  record.rowOffset = 0.5F;
  record.sampleResolution = 20e-9F;
  record.sampleOffset = 1e-6F;
  record.SetDataType(type);
  record.SetDataRectification(rectification);
  const float half = isByte ? 128 : 32768;
  record.dataMinimum = isSigned ? -half : 0;
  record.dataMaximum = record.dataMinimum + 2 * half - 1;
  record.cellSize = record.sampleSize * quantity;
  record.soundSpeed = 5900;
  ascans.bytes = MakeSamples(record.sampleSize);
  return ascans;
}

void WriteInspection(const std::filesystem::path& path,
                     std::vector<AScans> groups,
                     CGGateTypeDescr* gate = nullptr) {
  const auto file = std::make_unique<CFContTypeFileDescr>();
  CFCont container;
  CGChanTypeDescr channel;
  ASSERT_TRUE(file->SetPath(path.wstring()));
  file->channels.AddTail(&channel);
  if (gate) file->gates.AddTail(gate);
  for (AScans& group : groups) {
    if (!group.bytes.empty()) group.record.dataPointer = group.bytes.data();
    file->data.AddTail(&group.record);
  }
  SCFile::GroupHandle top = nullptr;
  SCFile::FileHandle handle = nullptr;
  ASSERT_EQ(container.FileWrite(nullptr, file.get(), 1, &top, &handle, 0), SCFile::status_Ok);
  ASSERT_EQ(SCFile::file_Close(handle), SCFile::status_Ok);
}

/// Amplitude of the raw sample at a place, by the meaning of its bytes.
using Meaning = std::function<double(const std::string& bytes, std::size_t sample)>;

int Word(const std::string& bytes, std::size_t sample) {
  return static_cast<unsigned char>(bytes[2 * sample]) +
         256 * static_cast<unsigned char>(bytes[2 * sample + 1]);
}
int ByteAt(const std::string& bytes, std::size_t sample) {
  return static_cast<unsigned char>(bytes[sample]);
}
int Signed(int value, int half) { return value < half ? value : value - 2 * half; }
/// An amplitude on the positive scale, which ends at half - 1: each half wave by its own slope.
double Positive(int value, int half) { return value < 0 ? -value * (half - 1.0) / half : value; }

/// What a gate over `count` samples from `first` has to see.
void Expect(const LoadedFile& file,
            const AScans& ascans,
            const Meaning& amplitude,
            int first,
            int count,
            double least) {
  WordValues amplitudes, positions;
  for (std::size_t cell = 0; cell < rows * columns; ++cell) {
    double largest = -1;
    int position = 0;
    for (int sample = first; sample < first + count; ++sample) {
      const double value =
          amplitude(ascans.bytes, cell * quantity + static_cast<std::size_t>(sample));
      if (value > largest) position = sample;
      largest = std::max(largest, value);
    }
    amplitudes.push_back(static_cast<std::uint16_t>(std::round(largest)));
    positions.push_back(static_cast<std::uint16_t>(largest < least ? 0 : position));
  }
  EXPECT_EQ(file.Samples(gdata_CScanAmplitude, ascans.record.subChannelId), amplitudes);
  EXPECT_EQ(file.Samples(gdata_CScanPosition, ascans.record.subChannelId), positions);
}

class GateTest : public ProgramTest {
 protected:
  [[nodiscard]] ProgramResult Gate(const std::string& more) const {
    return Run("gate weld.fpd --channel 0 --gate 3 " + more);
  }
  [[nodiscard]] std::map<std::string, std::string> Bytes() const {
    std::map<std::string, std::string> bytes;
    for (const std::string& name : Names()) bytes[name] = ReadFile(At(name));
    return bytes;
  }
};

struct TypeCase {
  const char* name;
  kvt_enumDataType type;
  gdata_enumRectif rectification;
  float fullScale;
  Meaning amplitude;
  std::int32_t byteSwap = 0;
};

TEST_F(GateTest, SeesTheLargestAmplitudeOfEachCellInEverySampleType) {
  const std::vector<TypeCase> cases = {
      {"u8 rectified", kvt_UInt8, gdata_RectifFull, 255, ByteAt},
      {"u8",
       kvt_UInt8,
       gdata_RectifNone,
       127,
       [](auto& b, auto s) { return Positive(ByteAt(b, s) - 128, 128); }},
      {"i8",
       kvt_Int8,
       gdata_RectifNone,
       127,
       [](auto& b, auto s) { return Positive(Signed(ByteAt(b, s), 128), 128); }},
      {"u16 rectified", kvt_UInt16, gdata_RectifFull, 65535, Word},
      {"u16",
       kvt_UInt16,
       gdata_RectifNone,
       32767,
       [](auto& b, auto s) { return Positive(Word(b, s) - 32768, 32768); }},
      {"i16",
       kvt_Int16,
       gdata_RectifNone,
       32767,
       [](auto& b, auto s) { return Positive(Signed(Word(b, s), 32768), 32768); }},
      {"i16 with its bytes swapped",
       kvt_Int16,
       gdata_RectifNone,
       32767,
       [](auto& b, auto s) {
         return Positive(Signed(Word(b, s) % 256 * 256 + Word(b, s) / 256, 32768), 32768);
       },
       1},
  };
  for (const TypeCase& type : cases) {
    SCOPED_TRACE(type.name);
    std::filesystem::remove(At("weld.fpd"));
    AScans ascans = MakeAScans(type.type, type.rectification);
    ascans.record.byteSwap = type.byteSwap;
    WriteInspection(At("weld.fpd"), {ascans});
    ASSERT_EQ(Gate("--start 1.1 --width 1.42 --as append").status, 0);
    const LoadedFile file(At("weld.fpd"));
    Expect(file, ascans, type.amplitude, 5, 71, 0);
    EXPECT_EQ(file.Find(gdata_CScanAmplitude)->dataMaximum, type.fullScale);
  }
}

TEST_F(GateTest, DescribesTheCScansSoThatTheyMatchAndKeepTheirAxes) {
  std::vector<AScans> groups;
  for (std::uint32_t subChannel = 1; subChannel <= 2; ++subChannel) {
    groups.push_back(MakeAScans(kvt_Int16, gdata_RectifNone));
    groups.back().record.subChannelId = subChannel;
    groups.back().record.SetPatchID(4);
    std::reverse(groups.back().bytes.begin(), groups.back().bytes.end());
  }
  groups[1].bytes[0] ^= 1;
  groups.push_back(MakeAScans(kvt_Int16, gdata_RectifNone));
  groups.back().record.channelId = 1;
  WriteInspection(At("weld.fpd"), groups);
  ASSERT_EQ(Gate("--start 1 --width 50 --threshold 40 --as new -o gated.fpd").status, 0);
  const LoadedFile file(At("gated.fpd"));
  EXPECT_EQ((*file).data.GetCount(), 3 + 2 * 2);
  for (std::uint32_t subChannel = 1; subChannel <= 2; ++subChannel) {
    SCOPED_TRACE(subChannel);
    const auto amplitude = [](auto& bytes, auto sample) {
      return Positive(Signed(Word(bytes, sample), 32768), 32768);
    };
    Expect(file, groups[subChannel - 1], amplitude, 0, quantity, 0.4 * 32767);
    for (const gdata_enumDataClass dataClass : {gdata_CScanAmplitude, gdata_CScanPosition}) {
      const CGDataTypeFDD& cscan = *file.Find(dataClass, subChannel);
      EXPECT_EQ(cscan.gateId, 3U);
      EXPECT_EQ(cscan.GetPatchID(), 4U);
      EXPECT_EQ(cscan.GetDataBookmarkType(), bookmark_MultiChannel);
      EXPECT_EQ(cscan.GetDataType(), kvt_UInt16);
      EXPECT_EQ(cscan.columnResolution, 2e-3F);
      EXPECT_EQ(cscan.rowOffset, 0.5F);
      EXPECT_EQ(cscan.dataMinimum, 0);
    }
    // The sample axis of both is made of this range, resolution and offset when they are loaded.
    const CGDataTypeFDD& position = *file.Find(gdata_CScanPosition, subChannel);
    EXPECT_EQ(position.dataMaximum, quantity);
    EXPECT_EQ(position.dataResolution, 20e-9F);
    EXPECT_EQ(position.dataOffset, 1e-6F);
  }
  const CGGateTypeDescr& gate = *(*file).gates.GetHead();
  EXPECT_EQ(gate.start, 1e-6F);
  EXPECT_EQ(gate.positiveLevel, 40);
}

TEST_F(GateTest, APositionNeedsTheThreshold) {
  AScans ascans = MakeAScans(kvt_UInt16, gdata_RectifFull);
  ascans.bytes.assign(ascans.bytes.size(), 0);
  const auto set = [&](std::size_t cell, std::size_t sample, int value) {
    ascans.bytes[2 * (cell * quantity + sample)] = static_cast<char>(value % 256);
    ascans.bytes[2 * (cell * quantity + sample) + 1] = static_cast<char>(value / 256);
  };
  set(0, 40, 13106);
  set(1, 41, 13107);  // 20 % of 65535
  set(2, 42, 13107), set(2, 50, 13107);
  set(3, 80, 60000);  // behind the gate
  WriteInspection(At("weld.fpd"), {ascans});
  const nlohmann::json result = RunJson(
      "gate weld.fpd --channel 0 --gate 3 --start 1 --width 1 --threshold 20 --json --as "
      "companion");
  EXPECT_EQ(result["gated"][0]["strongest"]["amplitude"], 13107);
  EXPECT_EQ(result["gated"][0]["strongest"]["column"], 1);
  EXPECT_EQ(result["written"], "weld.A01");
  const LoadedFile file(At("weld.fpd"));  // without its companion
  EXPECT_EQ((*file).data.GetCount(), 1);
  const nlohmann::json info = RunJson("info weld.fpd --json");
  EXPECT_EQ(info["data"].size(), 3U);
  EXPECT_EQ(info["data"][1]["gate"], 3);
  ASSERT_EQ(Gate("--start 1 --width 1 --threshold 20 --as append").status, 1);
  std::filesystem::remove(At("weld.A01"));
  ASSERT_EQ(Gate("--start 1 --width 1 --threshold 20 --as append").status, 0);
  const WordValues positions = LoadedFile(At("weld.fpd")).Samples(gdata_CScanPosition);
  EXPECT_EQ(WordValues(positions.begin(), positions.begin() + 4), WordValues({0, 41, 42, 0}));
}

TEST_F(GateTest, ChangesOnlyTheFileItSaysAndTheGateThatIsThere) {
  CGGateTypeDescr gate;
  gate.gateId = 3;
  gate.name = L"Root";
  gate.positiveLevel = 35;
  gate.peakSelection = ggate_PeakFirst;
  WriteInspection(At("weld.fpd"), {MakeAScans(kvt_Int16, gdata_RectifNone)}, &gate);
  const std::string before = ReadFile(At("weld.fpd"));
  ASSERT_EQ(Gate("--start 1.2 --width 0.4 --as companion").status, 0);
  ASSERT_EQ(Gate("--start 1.2 --width 0.4 --as new -o other.fpd").status,
            1);  // its C-scans are in the companion
  EXPECT_EQ(ReadFile(At("weld.fpd")), before);
  EXPECT_EQ(Names(), std::set<std::string>({"weld.fpd", "weld.A01"}));
  std::filesystem::remove(At("weld.A01"));
  ASSERT_EQ(Gate("--start 1.2 --width 0.4 --as new -o other.fpd").status, 0);
  EXPECT_EQ(ReadFile(At("weld.fpd")), before);
  const LoadedFile file(At("other.fpd"));
  ASSERT_EQ((*file).gates.GetCount(), 1);
  const CGGateTypeDescr& changed = *(*file).gates.GetHead();
  EXPECT_EQ(changed.name, L"Root");
  EXPECT_EQ(changed.positiveLevel, 35);
  EXPECT_EQ(changed.start, 1.2e-6F);
  EXPECT_EQ(changed.peakSelection, ggate_PeakMaximum);
  EXPECT_EQ(std::wstring(file.Find(gdata_CScanAmplitude)->gateName), L"Root");
}

TEST_F(GateTest, RefusesWhatItCannotGateAndWritesNothing) {
  const AScans good = MakeAScans(kvt_Int16, gdata_RectifNone);
  const auto write = [&](const std::string& name, const std::function<void(AScans&)>& spoil) {
    std::vector<AScans> groups = {good};
    spoil(groups.front());
    WriteInspection(At(name), groups);
  };
  WriteInspection(At("weld.fpd"), {good});
  AScans other = good;
  other.record.gateId = 5;
  WriteInspection(At("twice.fpd"), {good, other});
  write("none.fpd", [](AScans& ascans) { ascans.bytes.clear(); });
  write("class.fpd", [](AScans& ascans) { ascans.record.dataClass = gdata_CScanAmplitude; });
  write("step.fpd", [](AScans& ascans) { ascans.record.sampleResolution = 0; });
  write("nan.fpd", [](AScans& ascans) { ascans.record.sampleOffset = std::nanf(""); });
  write("path.fpd", [](AScans& ascans) { ascans.record.sampleUnits = kvt_UnitMetre; });
  write("range.fpd", [](AScans& ascans) { ascans.record.dataMaximum = std::nanf(""); });
  write("type.fpd",
        [](AScans& ascans) { ascans.record.SetDataType(static_cast<kvt_enumDataType>(9)); });
  const auto before = Bytes();
  struct Case {
    std::string file;
    std::string arguments;
    int status;
    std::string named;
  };
  for (const Case& bad : std::vector<Case>{
           {"weld.fpd", "--channel 1 --gate 1 --start 1 --width 1", 1, "channel 1 has no A-scans"},
           {"weld.fpd",
            "--channel 0 --gate 1 --start 2.66 --width 1",
            1,
            "no sample lies in the gate"},
           {"weld.fpd",
            "--channel 0 --gate 1 --start 0 --width 0.98",
            1,
            "run from 1 µs to 2.66 µs"},
           {"weld.fpd",
            "--channel 0 --gate 1 --start 1 --width 1 --as new -o weld.fpd --force",
            1,
            "weld.fpd"},
           {"weld.fpd",
            "--channel 0 --gate 1 --start 1 --width 1 --as new -o none.fpd",
            1,
            "the file exists"},
           {"weld.fpd", "--channel 0 --gate 1 --start 1 --width 1 --as new", 2, "-o OUT"},
           {"weld.fpd", "--channel 0 --gate 1 --start nan --width 1", 2, "--start"},
           {"weld.fpd", "--channel 0 --gate 1 --start 1 --width 0", 2, "--width"},
           {"weld.fpd",
            "--channel 0 --gate 1 --start 1 --width 1 --threshold 101",
            2,
            "--threshold"},
           {"weld.fpd", "--channel 0 --gate 2003 --start 1 --width 1", 2, "--gate"},
           {"twice.fpd",
            "--channel 0 --gate 1 --start 1 --width 1",
            1,
            "data group 1 has A-scans of the same"},
           {"none.fpd", "--channel 0 --gate 1 --start 1 --width 1", 1, "has no samples"},
           {"class.fpd", "--channel 0 --gate 1 --start 1 --width 1", 1, "channel 0 has no A-scans"},
           {"step.fpd",
            "--channel 0 --gate 1 --start 1 --width 1",
            1,
            "sample axis is not one of time"},
           {"nan.fpd",
            "--channel 0 --gate 1 --start 1 --width 1",
            1,
            "sample axis is not one of time"},
           {"path.fpd",
            "--channel 0 --gate 1 --start 1 --width 1",
            1,
            "sample axis is not one of time"},
           {"range.fpd", "--channel 0 --gate 1 --start 1 --width 1", 1, "range of its values"},
           {"type.fpd", "--channel 0 --gate 1 --start 1 --width 1", 1, "are no amplitudes"}}) {
    SCOPED_TRACE(bad.file + " " + bad.arguments);
    ExpectOneLine(Run("gate " + bad.file + " " + bad.arguments), bad.status, bad.named);
  }
  EXPECT_EQ(Bytes() == before, true);
}

}  // namespace
}  // namespace utdata::test
