// A section through the samples as a picture: the image between its axes, a title, and a colour bar.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pictures/color_map.h"
#include "pictures/font.h"
#include "pictures/picture.h"
#include "pictures/ticks.h"

namespace utdata::program {

/// Evenly spaced cells along one side of an image, in the unit that is shown.
struct PlotAxis {
  std::string title;         ///< "Scan position"
  std::string unit;          ///< "mm"; empty for plain numbers
  double first = 0;          ///< value at the middle of the first cell
  double step = 1;           ///< from one cell to the next; may be negative
  std::size_t quantity = 1;  ///< cells

  [[nodiscard]] double At(double cell) const { return first + cell * step; }
  [[nodiscard]] double From() const { return At(-0.5); }                               ///< the first cell's outer edge
  [[nodiscard]] double To() const { return At(static_cast<double>(quantity) - 0.5); }  ///< the last cell's outer edge
};

/// What the colours mean: the amplitude at code 0 and at code 255, and how it reads in dB.
struct ColorScale {
  const ColorMap* colors = nullptr;
  bool isSigned = false;       ///< zero lies in the middle of the codes
  double low = 0;              ///< percent of full scale at code 0
  double high = 100;           ///< percent of full scale at code 255
  std::vector<Tick> decibels;  ///< marks on the other side of the bar: their place in percent, their text in dB
};

struct ImagePlot {
  std::string title;
  std::vector<std::string> notes;     ///< lines below the title
  PlotAxis across;                    ///< left to right
  PlotAxis down;                      ///< top to bottom
  std::optional<PlotAxis> downAgain;  ///< the same cells in another unit, at the right side
  bool sameScale = false;             ///< a length is as long across as down
  std::vector<std::uint8_t> codes;    ///< down.quantity rows of across.quantity codes
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

/// The image's size in pixels. Cells are drawn as whole pixels where they fit; with `sameScale`, as near to the true proportion as
/// whole pixels allow.
[[nodiscard]] Rect ImageSize(const PlotAxis& across, const PlotAxis& down, bool sameScale);

/// Fits codes to another size. A cell never vanishes: where several fall on one pixel, the strongest is shown, never a mean.
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
