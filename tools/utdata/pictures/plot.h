// A section through the samples as a picture: the image between its axes, a title, and a colour
// bar.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pictures/color_map.h"
#include "pictures/font.h"
#include "pictures/picture.h"
#include "pictures/scale.h"

namespace utdata::program {

/// What the colours mean: the values at code 0 and at code 255, and how they read in another unit.
struct ColorScale {
  const ColorMap* colors = nullptr;
  bool isSigned = false;    ///< zero lies in the middle of the codes
  double low = 0;           ///< value at code 0
  double high = 100;        ///< value at code 255
  std::string title;        ///< "Amplitude, of full scale"
  std::string unit;         ///< "%"
  std::vector<Tick> marks;  ///< on the other side of the bar: their place as a value, their text in
                            ///< the other unit
  std::string marksUnit;    ///< "dB"
};

/// A line over an image, from point to point, in the units of its axes.
struct PlotLine {
  struct Point {
    double across = 0;
    double down = 0;
  };
  std::vector<Point> points;
  Color color;
  bool isDashed = false;
  std::string label;  ///< at its last point, above it; may be empty
};

struct ImagePlot {
  std::string title;
  std::vector<std::string> notes;     ///< lines below the title
  PlotAxis across;                    ///< left to right
  PlotAxis down;                      ///< top to bottom
  std::optional<PlotAxis> downAgain;  ///< the same cells in another unit, at the right side
  std::vector<Tick> downMarks;        ///< instead of these: places on `down`, their text in a unit
                                      ///< that does not rise evenly with it
  std::string downMarksTitle;         ///< "Depth (mm)"
  bool sameScale = false;             ///< a length is as long across as down
  std::vector<std::uint8_t> codes;    ///< down.quantity rows of across.quantity codes
  std::vector<std::uint8_t> striped;  ///< 1 for cells that are drawn striped, else 0; may be empty
  std::vector<std::uint8_t> unseen;   ///< 1 for cells that show nothing, else 0; may be empty
  std::vector<PlotLine> lines;
  ColorScale scale;
  struct Cell {
    std::size_t across;
    std::size_t down;
  };
  std::optional<Cell> marked;  ///< a cell that small triangles outside the image point at
};

/// A drawn plot, and where in it the image lies.
struct PlotPicture {
  Canvas canvas;
  Rect image;
};

/// Makes a plot of two axes in millimetres true to scale, unless it would be a strip too thin to be
/// read, which a note says then.
void SetProportion(ImagePlot& plot);

/// The image's size in pixels. Cells are drawn as whole pixels where they fit; with `sameScale`, as
/// near to the true proportion as whole pixels allow.
[[nodiscard]] Rect ImageSize(const PlotAxis& across, const PlotAxis& down, bool sameScale);

/// Fits codes to another size. A cell never vanishes: where several fall on one pixel, the
/// strongest is shown, never a mean.
/// @param codes    rows of `columns` codes
/// @param isSigned the strongest code is the one farthest from the middle
[[nodiscard]] std::vector<std::uint8_t> Resample(const std::vector<std::uint8_t>& codes,
                                                 std::size_t columns,
                                                 std::size_t newColumns,
                                                 std::size_t newRows,
                                                 bool isSigned);

/// REQUIRES: quantities are at least 1 and `codes` has as many as they say.
[[nodiscard]] PlotPicture Draw(const ImagePlot& plot, const Font& font);

}  // namespace utdata::program
