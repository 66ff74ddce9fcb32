// Runs in builds with HDF5 only, whose library makes what an import has to read, and reads what an
// export made.
#include <hdf5.h>
#include <hdf5_hl.h>

#include <cstdint>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "platform/os/path.h"
#include "run_program.h"
#include "tests/support/small_disk.h"

namespace utdata::test {
namespace {

constexpr hsize_t shape[] = {3, 5, 7};

std::vector<std::uint16_t> Values() {
  std::vector<std::uint16_t> values(3 * 5 * 7);
  std::iota(values.begin(), values.end(), std::uint16_t{30000});
  return values;
}

std::string TextAttribute(hid_t object, const char* name) {
  const hid_t attribute = H5Aopen(object, name, H5P_DEFAULT);
  const hid_t type = H5Aget_type(attribute);
  char* text = nullptr;
  EXPECT_GE(H5Aread(attribute, type, &text), 0) << name;
  const std::string copy = text ? text : "";
  H5free_memory(text);
  H5Tclose(type);
  H5Aclose(attribute);
  return copy;
}

class Hdf5Test : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    const std::vector<std::uint16_t> values = Values();
    WriteFile(At("scan.raw"), {reinterpret_cast<const char*>(values.data()), values.size() * 2});
    ASSERT_EQ(Run("import scan.raw -o scan.fpd --shape 3,5,7 --axes row,column,sample --dtype u16 "
                  "--row-step 7")
                  .status,
              0);
  }

  /// A file with one data set /scan/data of a type and creation properties, filled when `values` is
  /// not null.
  void MakeFile(
      hid_t type,
      const std::vector<hsize_t>& extent,
      const void* values,
      const std::function<void(hid_t)>& prepare = [](hid_t) {}) const {
    const hid_t file = H5Fcreate(At("made.h5").c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT);
    const hid_t group = H5Gcreate2(file, "scan", H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT);
    const hid_t space = H5Screate_simple(static_cast<int>(extent.size()), extent.data(), nullptr);
    const hid_t creation = H5Pcreate(H5P_DATASET_CREATE);
    prepare(creation);
    const hid_t data = H5Dcreate2(group, "data", type, space, H5P_DEFAULT, creation, H5P_DEFAULT);
    ASSERT_GE(data, 0);
    if (values) {
      EXPECT_GE(H5Dwrite(data, H5T_NATIVE_UINT16, H5S_ALL, H5S_ALL, H5P_DEFAULT, values), 0);
    }
    H5Dclose(data);
    H5Pclose(creation);
    H5Sclose(space);
    H5Gclose(group);
    ASSERT_GE(H5Fclose(file), 0);
  }
};

TEST_F(Hdf5Test, AnExportDescribesItselfByDimensionScales) {
  ASSERT_EQ(Run("export scan.fpd --data 0 -o scan.h5").status, 0);
  const hid_t file = H5Fopen(At("scan.h5").c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
  const hid_t samples = H5Dopen2(file, "/samples", H5P_DEFAULT);
  std::vector<std::uint16_t> values(3 * 5 * 7);
  ASSERT_GE(H5Dread(samples, H5T_NATIVE_UINT16, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data()), 0);
  EXPECT_EQ(values, Values());
  EXPECT_EQ(TextAttribute(samples, "units"), "%");
  EXPECT_EQ(H5DSget_num_scales(samples, 2), 2);  // time, and half sound path
  struct Axis {
    const char* name;
    const char* unit;
    double last;
  };
  unsigned place = 0;
  for (const Axis& axis :
       {Axis{"row", "m", 0.014}, Axis{"column", "m", 0.004}, Axis{"sample", "s", 6e-8}}) {
    SCOPED_TRACE(axis.name);
    const hid_t scale = H5Dopen2(file, axis.name, H5P_DEFAULT);
    EXPECT_GT(H5DSis_attached(samples, scale, place), 0);
    EXPECT_EQ(TextAttribute(scale, "units"), axis.unit);
    std::vector<double> positions(shape[place]);
    ASSERT_GE(H5Dread(scale, H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, positions.data()),
              0);
    EXPECT_NEAR(positions.back(), axis.last, 1e-12);
    H5Dclose(scale);
    ++place;
  }
  H5Dclose(samples);
  H5Fclose(file);
}

TEST_F(Hdf5Test, ImportsDataSetsOfOtherPrograms) {
  const std::vector<std::uint16_t> values = Values();
  const std::vector<hsize_t> extent(std::begin(shape), std::end(shape));
  const auto chunked = [](hid_t creation) {
    constexpr hsize_t chunk[] = {2, 2, 4};
    H5Pset_chunk(creation, 3, chunk);
    H5Pset_deflate(creation, 6);
  };
  for (const auto& [type, prepare] : std::vector<std::pair<hid_t, std::function<void(hid_t)>>>{
           {H5T_STD_U16BE, [](hid_t) {}}, {H5T_STD_U16LE, chunked}}) {
    MakeFile(type, extent, values.data(), prepare);
    const ProgramResult result =
        Run("import made.h5:/scan/data -o made.fpd --force --row-step 7 --column-step 1 "
            "--sample-step 10");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(RunJson("info made.fpd --json --hash")["data"],
              RunJson("info scan.fpd --json --hash")["data"]);
  }
}

TEST_F(Hdf5Test, RefusesDataSetsThatAreNoArrayOfSamples) {
  const std::vector<std::uint16_t> values = Values();
  const auto refused = [&](const std::string& array, const std::string& why) {
    ExpectOneLine(Run("import " + array + " -o new.fpd"), 1, why);
    EXPECT_FALSE(std::filesystem::exists(At("new.fpd")));
  };
  MakeFile(H5T_IEEE_F32LE, {3, 5, 7}, values.data());
  refused("made.h5:/scan/data", "32-bit floating-point numbers");
  refused("made.h5:/scan", "no such data set");
  refused("made.h5:/none", "no such data set");
  refused("made.h5", "made.h5:/samples");
  refused("missing.h5:/scan/data", "missing.h5");
  refused("scan.fpd:/scan/data", "scan.fpd");
  MakeFile(H5T_STD_I32LE, {3, 5, 7}, values.data());
  refused("made.h5:/scan/data", "32-bit integers");
  // A few bytes that claim thousands of gigabytes.
  MakeFile(H5T_STD_U16LE, {40000, 40000, 4000}, nullptr);
  refused("made.h5:/scan/data", "are stored");
  MakeFile(H5T_STD_U16LE, {3, 5, 7}, values.data(), [&](hid_t creation) {
    H5Pset_external(creation, At("outside.bin").c_str(), 0, H5F_UNLIMITED);
  });
  refused("made.h5:/scan/data", "other files");
}

TEST_F(Hdf5Test, AnExportThatTheDiskDoesNotHoldIsAFailure) {
  const auto made = [&](const std::string& name, std::size_t cells) {
    std::string bytes(cells * 100, '\0');
    std::iota(bytes.begin(), bytes.end(), '\1');
    WriteFile(At(name + ".raw"), bytes);
    EXPECT_EQ(Run("import " + name + ".raw -o " + name + ".fpd --dtype u8 --shape 1," +
                  std::to_string(cells) + ",100 --axes row,column,sample")
                  .status,
              0);
    return RunJson("info " + name + ".fpd --json --hash")["data"];
  };
  for (const std::size_t cells : {90u, 600u}) {
    const std::string name = "cells" + std::to_string(cells);
    const nlohmann::json data = made(name, cells);
    int failed = 0;
    for (std::uint64_t pages = 1; pages < 22; ++pages) {
      const SmallDisk disk(4096 * pages);
      if (!disk.IsMounted()) GTEST_SKIP() << "this machine mounts no file systems for a test";
      const std::string array = os::NarrowPath(disk / L"full.h5");
      const ProgramResult result = Run("export " + name + ".fpd --data 0 -o " + array);
      if (result.status != 0) {
        ExpectOneLine(result, 1, array);
        EXPECT_TRUE(disk.Names().empty());
        ++failed;
        continue;
      }
      ASSERT_EQ(Run("import " + array + ":/samples -o back.fpd --force").status, 0) << pages;
      EXPECT_EQ(RunJson("info back.fpd --json --hash")["data"][0]["table_sha256"],
                data[0]["table_sha256"])
          << cells << " cells, " << pages << " pages";
    }
    EXPECT_GT(failed, 2);
    EXPECT_LT(failed, 21);
  }
}

TEST_F(Hdf5Test, ADamagedFileThatTheLibraryReadsForEverIsGivenUp) {
  ASSERT_EQ(Run("export scan.fpd --data 0 -o scan.h5").status, 0);
  std::string bad = ReadFile(At("scan.h5"));
  const std::size_t text = bad.find("two-way time of flight");
  ASSERT_NE(text, std::string::npos);
  bad[text - 8] = '\xFF';  // the size of that text among the other texts
  WriteFile(At("bad.h5"), bad);
  const std::string import = "utdata import bad.h5:/samples -o bad.fpd";
  const ProgramResult stopped =
      RunShell("sh", import + " & program=$!\nsleep 1\nkill -TERM $program\nwait $program");
  const ProgramResult ended = RunShell("sh", "timeout 60 " + import + " --force");
  // A library that has learnt to read it ends sooner, and well or not.
  if (stopped.status != 130) GTEST_SKIP() << "this HDF5 comes to an end: " << stopped.error;
  ExpectOneLine(ended, 1, "bad.h5: cannot be read: the HDF5 library comes to no end");
  EXPECT_FALSE(std::filesystem::exists(At("bad.fpd")));
}

TEST_F(Hdf5Test, ADamagedFileIsAFailureNeverACrash) {
  ASSERT_EQ(Run("export scan.fpd --data 0 -o scan.h5").status, 0);
  const std::string good = ReadFile(At("scan.h5"));
  const auto import = [&](const std::string& bytes, std::size_t at) {
    WriteFile(At("bad.h5"), bytes);
    const ProgramResult result = Run("import bad.h5:/samples -o bad.fpd --force --quiet");
    EXPECT_TRUE(result.status == 0 || result.status == 1)
        << at << ": " << result.status << " " << result.error;
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), result.status)
        << at << ": " << result.error;
  };
  for (std::size_t at = 8; at < good.size(); at += good.size() / 60) {
    std::string bad = good;
    for (std::size_t byte = at; byte < std::min(at + 4, bad.size()); ++byte) bad[byte] = '\xFF';
    import(bad, at);
  }
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{7}, std::size_t{100}, good.size() / 2, good.size() - 1})
    import(good.substr(0, size), size);
}

}  // namespace
}  // namespace utdata::test
