#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "run_program.h"
#include "utdata/fcont.h"

namespace utdata::test {
namespace {

constexpr std::array<std::uint32_t, 3> quantities = {3, 5, 7};  // rows, columns, samples

/// 16-bit values that differ in both bytes; those of 8 bits are their low bytes. `order` names the
/// axes of the file, outermost first: 0 row, 1 column, 2 sample.
std::string Elements(const std::array<std::size_t, 3>& order,
                     std::uint32_t size,
                     bool bigEndian = false) {
  std::string bytes;
  std::array<std::uint32_t, 3> at{};
  for (at[order[0]] = 0; at[order[0]] < quantities[order[0]]; ++at[order[0]])
    for (at[order[1]] = 0; at[order[1]] < quantities[order[1]]; ++at[order[1]])
      for (at[order[2]] = 0; at[order[2]] < quantities[order[2]]; ++at[order[2]]) {
        const std::uint32_t value =
            ((at[0] * quantities[1] + at[1]) * quantities[2] + at[2]) * 601 + 30000;
        const std::string little = {static_cast<char>(value & 0xFFU),
                                    static_cast<char>(value >> 8U & 0xFFU)};
        bytes += size == 1   ? little.substr(0, 1)
                 : bigEndian ? std::string(little.rbegin(), little.rend())
                             : little;
      }
  return bytes;
}

constexpr std::array<std::size_t, 3> naturalOrder = {0, 1, 2};

std::string Npy(const std::string& literal, const std::string& elements, int version = 1) {
  const std::size_t size = literal.size();
  std::string bytes = std::string("\x93NUMPY") + static_cast<char>(version) + std::string(1, 0);
  for (int at = 0; at < (version == 1 ? 2 : 4); ++at)
    bytes += static_cast<char>(size >> 8 * at & 0xFFU);
  return bytes + literal + elements;
}

std::string Literal(const std::string& descr, const std::string& shape, bool fortran = false) {
  return "{'descr': '" + descr + "', 'fortran_order': " + (fortran ? "True" : "False") +
         ", 'shape': " + shape + ", }\n";
}

/// The literal and the elements of a .npy file of version 1.0, whose elements begin at a multiple
/// of 64 bytes.
std::pair<std::string, std::string> SplitNpy(const std::string& bytes) {
  EXPECT_TRUE(bytes.starts_with(std::string("\x93NUMPY\x01\x00", 8)));
  const std::size_t end =
      10 + static_cast<unsigned char>(bytes[8]) + 256U * static_cast<unsigned char>(bytes[9]);
  EXPECT_EQ(end % 64, 0U);
  EXPECT_EQ(bytes[end - 1], '\n');
  const std::string literal = bytes.substr(10, end - 11);
  return {literal.substr(0, literal.find_last_not_of(' ') + 1), bytes.substr(end)};
}

class ArraysTest : public ProgramTest {
 protected:
  /// An inspection of A-scans of the type with spacings that no preset has.
  void MakeScan(const std::string& dtype) const {
    WriteFile(At("scan.raw"), Elements(naturalOrder, dtype.ends_with("16") ? 2 : 1));
    const ProgramResult made =
        Run("import scan.raw -o scan.fpd --force --shape 3,5,7 --axes row,column,sample "
            "--column-step 0.3 --row-step 7 "
            "--sample-step 12.5 --column-offset -3.3 --sample-offset 740 --sound-speed 3230 "
            "--probe-angle 45 "
            "--thickness 20 "
            "--channel-name Links° --dtype " +
            dtype);
    ASSERT_EQ(made.status, 0) << made.error;
  }

  /// The data groups of an inspection as JSON, samples included.
  [[nodiscard]] nlohmann::json Data(const std::string& file) const {
    return RunJson("info --json --hash " + file)["data"];
  }

  /// The samples of an inspection's only data group, as an export has them.
  [[nodiscard]] std::string Exported(const std::string& file) const {
    const ProgramResult result = Run("export " + file + " --data 0 -o exported.npy --force");
    EXPECT_EQ(result.status, 0) << result.error;
    return SplitNpy(ReadFile(At("exported.npy"))).second;
  }

  void ExpectRoundTrip(const std::string& file,
                       const std::string& selector,
                       const std::string& array) const {
    SCOPED_TRACE(selector + " " + array);
    const std::string name = array.substr(0, array.find(':'));
    const ProgramResult out =
        Run("export " + file + " --data " + selector + " -o " + name + " --force");
    ASSERT_EQ(out.status, 0) << out.error;
    const ProgramResult in = Run("import " + array + " -o again.fpd --force");
    EXPECT_EQ(in.status, 0);
    EXPECT_EQ(in.error, "");
    nlohmann::json before = Data(file)[std::stoul(selector)];
    before["matched"] = nullptr;  // it comes back alone
    EXPECT_EQ(Data("again.fpd")[0], before);
  }

  [[nodiscard]] bool HasHdf5() const {
    return Run("export none.fpd --data 0 -o none.h5").error.find("this build") == std::string::npos;
  }
};

TEST_F(ArraysTest, NpyHoldsTheSamplesInNaturalOrderWithTheirType) {
  for (const auto& [dtype, descr] : {std::pair<std::string, std::string>{"u8", "|u1"},
                                     {"i8", "|i1"},
                                     {"u16", "<u2"},
                                     {"i16", "<i2"}}) {
    MakeScan(dtype);
    ASSERT_EQ(Run("export scan.fpd --data class=1 -o scan.npy --force").status, 0);
    const auto [literal, elements] = SplitNpy(ReadFile(At("scan.npy")));
    EXPECT_EQ(literal, "{'descr': '" + descr + "', 'fortran_order': False, 'shape': (3, 5, 7), }");
    EXPECT_TRUE(elements == ReadFile(At("scan.raw"))) << dtype;
  }
  const nlohmann::json description = nlohmann::json::parse(ReadFile(At("scan.json")));
  EXPECT_EQ(description["axes"][1],
            nlohmann::json::parse(R"({"name": "column", "label": "column position", "unit": "m",
      "quantity": 5, "first": -0.0033, "step": 0.0003})"));
  EXPECT_EQ(
      description["axes"][2],
      nlohmann::json::parse(R"({"name": "sample", "label": "two-way time of flight", "unit": "s",
      "quantity": 7, "first": 7.4e-7, "step": 1.25e-8})"));
  EXPECT_EQ(description["values"]["unit"], "%");
  EXPECT_NEAR(description["values"]["scale"].get<double>(), 100 / 32767.0, 1e-12);
}

TEST_F(ArraysTest, ExportAndImportGiveTheSameDataGroup) {
  for (const std::string dtype : {"u8", "i16"}) {
    MakeScan(dtype);
    ExpectRoundTrip("scan.fpd", "0", "scan.npy");
    if (HasHdf5()) ExpectRoundTrip("scan.fpd", "0", "scan.h5:/samples");
  }
}

TEST_F(ArraysTest, CScansHaveTwoAxesAndPhysicalPositions) {
  MakeScan("u16");
  const ProgramResult gated = Run("gate scan.fpd --channel 0 --gate 1 --start 0.75 --width 0.05");
  ASSERT_EQ(gated.status, 0) << gated.error;
  for (const std::string selector : {"1", "2"}) {
    ExpectRoundTrip("scan.fpd", selector, "cscan.npy");
    if (HasHdf5()) ExpectRoundTrip("scan.fpd", selector, "cscan.h5:/samples");
  }
  const nlohmann::json description =
      RunJson("export scan.fpd --data class=3 -o position.npy --json");
  EXPECT_EQ(description["shape"], nlohmann::json({3, 5}));
  EXPECT_EQ(description["values"]["unit"], "s");
  EXPECT_EQ(description["values"]["offset"], 7.4e-7);
  EXPECT_EQ(description["values"]["scale"], 1.25e-8);
}

/// Two rows of two cells of three samples behind a table of offsets; the second cell has none.
void WriteIndexedFile(const std::filesystem::path& path, bool bigEndian) {
  std::string table;
  for (const std::uint32_t offset : {22U, 0U, 16U, 28U})
    table.append(reinterpret_cast<const char*>(&offset), sizeof offset);
  for (int value = 1; value <= 9; ++value)
    table += bigEndian ? std::string{0, char(value)} : std::string{char(value), 0};
  CGDataTypeFDD record;
  record.rowQuantity = record.columnQuantity = 2;
  record.sampleQuantity = 3;
  record.sampleSize = 2;
  record.dataMaximum = 65535;
  record.storageMode = kvt_StorIndexed;
  record.byteSwap = bigEndian ? 1 : 0;
  record.dataPointer = table.data();
  record.dataSize = table.size();
  CFContTypeFileDescr groups;
  ASSERT_TRUE(groups.SetPath(path.wstring()));
  groups.data.AddTail(&record);
  SCFile::GroupHandle top = nullptr;
  SCFile::FileHandle file = nullptr;
  ASSERT_EQ(CFCont().FileWrite(nullptr, &groups, 0, &top, &file, 0), SCFile::status_Ok);
  groups.data.RemoveAll();
  ASSERT_EQ(SCFile::file_Close(file), SCFile::status_Ok);
}

TEST_F(ArraysTest, ExportsCellsInTheirOrderHoweverTheyAreStored) {
  for (const bool bigEndian : {false, true}) {
    WriteIndexedFile(At("indexed.fpd"), bigEndian);
    const std::string noAmplitude("\0\x80\0\x80\0\x80", 6);  // 32768 stands for 0
    const auto cell = [](char first) {
      return std::string{first, 0, char(first + 1), 0, char(first + 2), 0};
    };
    EXPECT_EQ(Exported("indexed.fpd"), cell(4) + noAmplitude + cell(1) + cell(7)) << bigEndian;
  }
}

TEST_F(ArraysTest, ImportsNpyOfEveryOrderAndByteOrder) {
  const std::string ascans16 = Elements(naturalOrder, 2);
  const std::string ascans8 = Elements(naturalOrder, 1);
  struct Case {
    std::string bytes;
    std::string options;
    const std::string& expected;
  };
  const std::vector<Case> cases = {
      {Npy(Literal("<u2", "(3, 5, 7)"), ascans16), "", ascans16},
      {Npy(Literal(">i2", "(3, 5, 7)"), Elements(naturalOrder, 2, true), 2), "", ascans16},
      {Npy(Literal("=i2", "(3L, 5L, 7L)"), ascans16, 3), "", ascans16},
      {Npy("{\"shape\":(3,5,7),\"fortran_order\":False,\"descr\":\"|i1\"}", ascans8), "", ascans8},
      // The first axis of an array in Fortran order is the innermost in the file.
      {Npy(Literal("<u2", "(3, 5, 7)", true), Elements({2, 1, 0}, 2)), "", ascans16},
      {Npy(Literal("|u1", "(7, 3, 5)", true), Elements({1, 0, 2}, 1)),
       " --axes sample,row,column",
       ascans8},
      {Npy(Literal("<u2", "(5, 7, 3)"), Elements({1, 2, 0}, 2)),
       " --axes column,sample,row",
       ascans16},
      {Npy(Literal("<u2", "(105,)"), ascans16), " --axes sample", ascans16},
      {Npy(Literal("<u2", "(15, 7)"), ascans16), " --axes column,sample", ascans16},
  };
  for (const Case& array : cases) {
    SCOPED_TRACE(array.bytes.substr(10, 70) + array.options);
    WriteFile(At("array.npy"), array.bytes);
    const ProgramResult result = Run("import array.npy -o array.fpd --force" + array.options);
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_TRUE(Exported("array.fpd") == array.expected);
  }
  WriteFile(At("values.npy"), Npy(Literal("<u2", "(15, 7)"), ascans16));
  EXPECT_EQ(Run("import values.npy -o values.fpd --axes column,row").status, 0);
  EXPECT_EQ(Data("values.fpd")[0]["class"], 2);  // without an axis of samples: a C-scan
  EXPECT_EQ(Data("values.fpd")[0]["rows"]["quantity"], 7);
}

TEST_F(ArraysTest, RefusesArraysThatAreDamagedOrOfAnotherKind) {
  const std::string literal = Literal("<u2", "(3, 5, 7)");
  const std::string good = Npy(literal, Elements(naturalOrder, 2));
  std::string longHeader = good;
  longHeader[9] = '\x7F';
  std::string otherVersion = good;
  otherVersion[6] = 4;
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "ends in its header"},
      {"\x93NUMP", "ends in its header"},
      {std::string(300, 'x'), "does not begin"},
      {otherVersion, "version"},
      {longHeader, "ends in its header"},
      {std::string("\x93NUMPY\x02\x00\xFF\xFF\xFF\xFF", 12) + literal, "longer than"},
      {Npy("", ""), "not understood"},
      {Npy(std::string(60000, '('), ""), "not understood"},
      {Npy("{'descr': '<u2', 'shape': (3, 5, 7)}", ""), "not understood"},
      {Npy("{'descr': '<u2', 'fortran_order': False, 'shape': (3, 5, 7)", ""), "not understood"},
      {Npy(Literal("<u2", "(3, -5, 7)"), ""), "not understood"},
      {Npy(Literal("<u2", "(99999999999999999999, 1, 1)"), ""), "not understood"},
      {Npy(Literal("<f4", "(3, 5, 7)"), ""), "'<f4'"},
      {Npy(Literal("|O", "(3, 5, 7)"), ""), "'|O'"},
      {Npy(Literal("<u\x1b[2J", "(3, 5, 7)"), ""), "\\x1b"},
      {Npy("{'descr': [('a', '<u2')], 'fortran_order': False, 'shape': (3,)}", ""),
       "record of fields"},
      {Npy(Literal("<u2", "()"), "ab"), "0 axes"},
      {Npy(Literal("<u2", "(3, 5, 7, 1)"), ""), "4 axes"},
      {Npy(Literal("<u2", "(15, 7)"), ""), "--axes"},
      {Npy(Literal("<u2", "(3, 0, 7)"), ""), "0 elements"},
      {Npy(Literal("<u2", "(4294967296, 1, 1)"), ""), "4294967296 elements"},
      {Npy(Literal("<u2", "(4294967295, 4294967295, 4294967295)"), ""), "does not fit the shape"},
      {good.substr(0, good.size() - 1), "does not fit the shape"},
      {good + "x", "does not fit the shape"},
  };
  for (const auto& [bytes, named] : cases) {
    SCOPED_TRACE(named);
    WriteFile(At("bad.npy"), bytes);
    ExpectOneLine(Run("import bad.npy -o new.fpd"), 1, named);
    EXPECT_EQ(Names(), std::set<std::string>({"bad.npy"}));
  }
  WriteFile(At("bad.npy"), good);
  for (const std::string options :
       {" --shape 3,5,7", " --dtype u16", " --axes row,column", " --axes row,row,sample"})
    ExpectOneLine(Run("import bad.npy -o new.fpd" + options), 2, "--help'");
}

TEST_F(ArraysTest, ADescriptionIsHeededWhenItIsOursAndRefusedWhenItDoesNotFit) {
  MakeScan("u16");
  ASSERT_EQ(Run("export scan.fpd --data 0 -o scan.npy").status, 0);
  const nlohmann::json description = nlohmann::json::parse(ReadFile(At("scan.json")));
  const auto import = [&](const char* pointer, const nlohmann::json& value) {
    nlohmann::json changed = description;
    changed[nlohmann::json::json_pointer(pointer)] = value;
    WriteFile(At("scan.json"), changed.dump());
    return Run("import scan.npy -o again.fpd --force --quiet");
  };
  EXPECT_EQ(import("/axes/1/unit", "mm").status, 0);
  EXPECT_EQ(Data("again.fpd")[0]["columns"]["resolution"], 3e-7);
  EXPECT_EQ(import("/format", "something else").status, 0);
  EXPECT_EQ(Data("again.fpd")[0]["columns"]["resolution"], 1e-3);
  WriteFile(At("scan.json"), std::string(100000, '['));
  EXPECT_EQ(Run("import scan.npy -o again.fpd --force").status, 0);
  EXPECT_EQ(import("/version", 1).status, 0);
  EXPECT_EQ(
      Run("import scan.npy -o again.fpd --force --column-step 2 --channel-name Rechts").status, 0);
  EXPECT_EQ(Data("again.fpd")[0]["columns"]["resolution"], 2e-3);  // the command line counts more
  EXPECT_EQ(Data("again.fpd")[0]["label"], "Rechts G0 ");
  for (const auto& [pointer, value] :
       std::vector<std::pair<const char*, nlohmann::json>>{{"/version", 2},
                                                           {"/type", "i16"},
                                                           {"/axes/0/quantity", 4},
                                                           {"/axes/0/step", "wide"},
                                                           {"/axes/0/step", 1e300},
                                                           {"/axes/0/first", nullptr},
                                                           {"/axes/0/unit", "furlong"},
                                                           {"/axes/0/unit", 7},
                                                           {"/axes/0/name", "depth"},
                                                           {"/axes/0", 3},
                                                           {"/axes", {1, 2}},
                                                           {"/record/class", 18},
                                                           {"/record/channel", -1},
                                                           {"/record/sound_speed", "fast"},
                                                           {"/record/gate_name", 1}}) {
    SCOPED_TRACE(std::string(pointer) + " " + value.dump());
    ExpectOneLine(import(pointer, value), 1, "scan.json: does not describe the array");
  }
  // Two axes of one name leave the samples without a place.
  ExpectOneLine(import("/axes/1/name", "row"), 1, "scan.json");
}

TEST_F(ArraysTest, ExportReplacesNothingUnlessForcedAndLeavesNothingHalfWritten) {
  MakeScan("u8");
  WriteFile(At("taken.json"), "{}");
  WriteFile(At("there.npy"), "mine");
  const auto before = Names();
  ExpectOneLine(Run("export scan.fpd --data 0 -o taken.npy"), 1, "taken.json");
  ExpectOneLine(Run("export scan.fpd --data 0 -o there.npy"), 1, "there.npy");
  ExpectOneLine(Run("export scan.fpd --data 7 -o new.npy"), 1, "matches no data group");
  ExpectOneLine(Run("export missing.fpd --data 0 -o new.npy"), 1, "missing.fpd");
  ExpectOneLine(Run("export scan.fpd --data 0 -o no/folder/new.npy"), 1, "no/folder/new.npy");
  ExpectOneLine(Run("export scan.fpd --data 0 -o new.txt"), 2, "--help'");
  ExpectOneLine(Run("export scan.fpd --data 0"), 2, "--help'");
  if (HasHdf5()) ExpectOneLine(Run("export missing.fpd --data 0 -o new.h5"), 1, "missing.fpd");
  EXPECT_EQ(Names(), before);
  EXPECT_EQ(ReadFile(At("there.npy")), "mine");
  EXPECT_EQ(Run("export scan.fpd --data 0 -o there.npy --force").status, 0);
  // A disk that fills up, as a limit on the size of files plays it.
  std::filesystem::resize_file(At("scan.raw"), std::uintmax_t{3} << 20U);
  ASSERT_EQ(
      Run("import scan.raw -o big.fpd --shape 3,1024,1024 --axes row,column,sample --dtype u8")
          .status,
      0);
  const auto withBig = Names();
  const std::string limited =
      "--version >/dev/null; trap '' XFSZ; ulimit -f 1024; "
      "LLVM_PROFILE_FILE=/dev/null '" UTDATA_PROGRAM "' ";  // which the limit would cut short
  for (const std::string array : {"full.npy", "full.h5"}) {
    const ProgramResult full = Run(limited + "export big.fpd --data 0 -o " + array);
    EXPECT_EQ(full.status, 1) << array;
    EXPECT_NE(full.error.find(array), std::string::npos) << full.error;
    EXPECT_EQ(Names(), withBig) << array;
  }
}

TEST_F(ArraysTest, AnInterruptLeavesWholeFilesOrNone) {
  WriteFile(At("zeros.raw"), "");
  std::filesystem::resize_file(At("zeros.raw"), std::uintmax_t{40} << 20U);
  ASSERT_EQ(
      Run("import zeros.raw -o zeros.fpd --shape 40,1024,1024 --axes row,column,sample --dtype u8")
          .status,
      0);
  const auto before = Names();
  for (const std::string seconds : {"0.02", "0.04", "0.06", "0.1"}) {
    const ProgramResult result =
        Run("--version >/dev/null; timeout -s INT --preserve-status " + seconds +
            " '" UTDATA_PROGRAM "' export zeros.fpd --data 0 -o zeros.npy");
    // A signal may also end the program when both files are there and it has nothing left to do.
    if (result.status == 0 || (result.error.empty() && Names().count("zeros.npy") == 1)) {
      EXPECT_EQ(SplitNpy(ReadFile(At("zeros.npy"))).second.size(), std::size_t{40} << 20U);
      EXPECT_EQ(Names().count("zeros.json"), 1U);
      std::filesystem::remove(At("zeros.npy"));
      std::filesystem::remove(At("zeros.json"));
    }
    EXPECT_EQ(Names(), before) << seconds << " s: " << result.error;
  }
}

}  // namespace
}  // namespace utdata::test
