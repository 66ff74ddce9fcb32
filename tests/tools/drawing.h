// Pictures that the program draws, read back from their files.
#pragma once

#include <png.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "run_program.h"
#include "utdata/fcont.h"

namespace utdata::test {

struct Pixel {
  int x = 0;
  int y = 0;
};

/// A picture as it is on disk. Brightness rises with the amplitude.
class PngFile {
 public:
  explicit PngFile(const std::filesystem::path& path) {
    m_image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&m_image, path.c_str()) == 0) return;
    m_image.format = PNG_FORMAT_RGB;
    m_bytes.resize(PNG_IMAGE_SIZE(m_image));
    if (png_image_finish_read(&m_image, nullptr, m_bytes.data(), 0, nullptr) == 0) m_bytes.clear();
  }
  ~PngFile() { png_image_free(&m_image); }
  PngFile(const PngFile&) = delete;
  PngFile& operator=(const PngFile&) = delete;

  [[nodiscard]] int Width() const { return m_bytes.empty() ? 0 : static_cast<int>(m_image.width); }
  [[nodiscard]] int Height() const {
    return m_bytes.empty() ? 0 : static_cast<int>(m_image.height);
  }
  [[nodiscard]] int Brightness(Pixel at) const {
    const std::array<int, 3> color = Color(at);
    return color[0] + color[1] + color[2];
  }
  /// Red, green and blue.
  [[nodiscard]] std::array<int, 3> Color(Pixel at) const {
    const std::size_t index =
        3 * (static_cast<std::size_t>(at.y) * m_image.width + static_cast<std::size_t>(at.x));
    return {m_bytes.at(index), m_bytes.at(index + 1), m_bytes.at(index + 2)};
  }

 private:
  png_image m_image = {};
  std::vector<std::uint8_t> m_bytes;
};

/// A picture with what `render --json` says about it: from pixels to the values on its axes.
struct Drawing {
  Drawing(const nlohmann::json& described, const std::filesystem::path& path)
      : facts(described), png(path) {}

  [[nodiscard]] double Image(const char* field) const {
    return facts["image"][field].get<double>();
  }
  /// The value at a part of an axis: 0 at its beginning, 1 at its end.
  [[nodiscard]] double Value(const char* axis, double part) const {
    const nlohmann::json& shown = facts[axis];
    const double cell = part * shown["quantity"].get<double>() - 0.5;
    return shown["first"].get<double>() + cell * shown["step"].get<double>();
  }

  struct Spot {
    double across = 0;
    double down = 0;
    int brightness = -1;
  };

  /// The middle of the brightest pixels among those of the image for whose values `isMeant` holds;
  /// of a wave, of those farthest from grey.
  template <class IsMeant>
  [[nodiscard]] Spot BrightestWhere(const IsMeant& isMeant, bool isWave = false) const {
    const int firstX = static_cast<int>(Image("left"));
    const int firstY = static_cast<int>(Image("top"));
    const int width = static_cast<int>(Image("width"));
    const int height = static_cast<int>(Image("height"));
    std::vector<double> across;
    for (int x = 0; x < width; ++x) across.push_back(Value("across", (x + 0.5) / width));
    Spot sum;
    int count = 0;
    for (int y = 0; y < height; ++y) {
      const double down = Value("down", (y + 0.5) / height);
      for (std::size_t x = 0; x < across.size(); ++x) {
        if (!isMeant(across[x], down)) continue;
        const int bright = png.Brightness({firstX + static_cast<int>(x), firstY + y});
        const int brightness = isWave ? std::abs(bright - 3 * 255 / 2) : bright;
        if (brightness < sum.brightness) continue;
        if (brightness > sum.brightness) {
          sum = {0, 0, brightness};
          count = 0;
        }
        sum.across += across[x];
        sum.down += down;
        ++count;
      }
    }
    return {sum.across / count, sum.down / count, sum.brightness};
  }
  /// The same of those within (left, right) and (top, bottom).
  [[nodiscard]] Spot BrightestWithin(double left,
                                     double right,
                                     double top,
                                     double bottom,
                                     bool isWave = false) const {
    return BrightestWhere(
        [&](double across, double down) {
          return across > left && across < right && down > top && down < bottom;
        },
        isWave);
  }
  [[nodiscard]] Spot Brightest() const { return BrightestWithin(-1e9, 1e9, -1e9, 1e9); }

  nlohmann::json facts;
  PngFile png;
};

class RenderTest : public ProgramTest {
 protected:
  /// Draws a data group of a file.
  [[nodiscard]] Drawing View(const std::string& file, const std::string& arguments) const {
    return {RunJson("render " + file + " -o picture.png --force --json " + arguments),
            At("picture.png")};
  }
  /// Draws the B-scan of data group 0.
  [[nodiscard]] Drawing Render(const std::string& file, const std::string& more) const {
    return View(file, "--data 0 --view b " + more);
  }

  /// Imports rows x columns x samples as they stand in `bytes`.
  void Import(const std::string& bytes,
              const std::string& shape,
              const std::string& dtype,
              const std::string& more) const {
    WriteFile(At("scan.raw"), bytes);
    const ProgramResult result =
        Run("import scan.raw -o scan.fpd --force --axes row,column,sample --shape " + shape +
            " --dtype " + dtype + " " + more);
    ASSERT_EQ(result.status, 0) << result.error;
  }

  /// Writes a file whose one data group is as `change` leaves it.
  template <class Change>
  void WriteGroup(const std::string& name, Change&& change) const {
    CFContTypeFileDescr file;
    ASSERT_TRUE(file.SetPath(At(name).wstring()));
    CGDataTypeFDD* group = gdata_Allocate(1, nullptr);
    std::vector<std::uint16_t> samples(24);
    group->columnQuantity = 2;
    group->rowQuantity = 3;
    group->sampleQuantity = 4;
    group->sampleSize = 2;
    group->cellSize = 8;
    group->columnResolution = group->rowResolution = 0.001F;
    group->sampleResolution = 1e-8F;
    group->dataMaximum = 65535;
    group->dataPointer = samples.data();
    change(*group);
    file.data.AddTail(group);
    SCFile::GroupHandle top = nullptr;
    SCFile::FileHandle handle = nullptr;
    EXPECT_EQ(CFCont().FileWrite(nullptr, &file, 1, &top, &handle, 0), 0)
        << SCFile::file_LastError();
    EXPECT_EQ(SCFile::file_Close(handle), 0);
    gdata_Delete(group, 1);
  }

  /// Writes a file whose data group has a table of offsets for its 3 rows of 2 cells with 4 samples
  /// each.
  /// @param offsets in bytes from the table's start, one a cell
  /// @param size    bytes of the table; the samples behind the offsets count up from 1
  void WriteIndexed(const std::string& name,
                    const std::vector<std::uint32_t>& offsets,
                    std::size_t size) const {
    std::vector<std::uint16_t> table(size / 2);
    for (std::size_t index = 2 * offsets.size(); index < table.size(); ++index)
      table[index] = static_cast<std::uint16_t>(index - 2 * offsets.size() + 1);
    std::memcpy(table.data(), offsets.data(), 4 * offsets.size());
    WriteGroup(name, [&](CGDataTypeFDD& group) {
      group.storageMode = kvt_StorIndexed;
      group.SetDataRectification(gdata_RectifFull);
      group.dataMaximum = 20;
      group.dataPointer = table.data();
      group.dataSize = size;
    });
  }
};

template <class Sample>
std::string Bytes(const std::vector<Sample>& samples) {
  std::string bytes(samples.size() * sizeof(Sample), '\0');
  std::memcpy(bytes.data(), samples.data(), bytes.size());
  return bytes;
}

}  // namespace utdata::test
