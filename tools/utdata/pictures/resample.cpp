#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "pictures/plot.h"

namespace utdata::program {
namespace {

/// The cells that one pixel shows, `begin` to before `end`.
struct Span {
  std::size_t begin;
  std::size_t end;
};

Span CellsOfPixel(std::size_t pixel, std::size_t pixels, std::size_t cells) {
  if (pixels >= cells) {
    const std::size_t nearest = (2 * pixel + 1) * cells / (2 * pixels);
    return {nearest, nearest + 1};
  }
  return {pixel * cells / pixels, ((pixel + 1) * cells + pixels - 1) / pixels};
}

int Strength(std::uint8_t code, bool isSigned) {
  return isSigned ? std::abs(2 * code - 255) : code;
}

/// As many pixels for a side of `cells` as show each cell by the same whole number of them, up to
/// `most`; `most` when they are more.
int WholePixels(std::size_t cells, int most) {
  const auto limit = static_cast<std::size_t>(most);
  return static_cast<int>(cells > limit ? limit : limit / cells * cells);
}

}  // namespace

void SetProportion(ImagePlot& plot) {
  constexpr double thinnest = 12;
  if (plot.across.unit != "mm" || plot.down.unit != "mm") return;
  const double width = std::abs(plot.across.To() - plot.across.From());
  const double height = std::abs(plot.down.To() - plot.down.From());
  plot.sameScale = std::max(width, height) <= thinnest * std::min(width, height);
  if (!plot.sameScale) plot.notes.emplace_back("Not true to scale");
}

Rect ImageSize(const PlotAxis& across, const PlotAxis& down, bool sameScale) {
  constexpr int widest = 880;
  constexpr int highest = 560;
  const double width = std::abs(across.To() - across.From());
  const double height = std::abs(down.To() - down.From());
  if (!sameScale || !std::isfinite(width) || !std::isfinite(height) || width <= 0 || height <= 0) {
    // Twice as wide where the cells of a pixel become too many to be told apart.
    const bool isLong = across.quantity > std::size_t{2 * widest};
    return {0,
            0,
            WholePixels(across.quantity, isLong ? 2 * widest : widest),
            WholePixels(down.quantity, highest)};
  }
  constexpr double longest = 2 * widest;  // of a strip, so that its short side can be seen
  constexpr double shortest = 140;
  const double fitting = std::min(widest / width, highest / height);
  const double visible =
      std::min(longest / std::max(width, height), shortest / std::min(width, height));
  const double scale = std::max(fitting, visible);
  const auto pixels = [&](double length) {
    return std::max(1, static_cast<int>(std::lround(length * scale)));
  };
  return {0, 0, pixels(width), pixels(height)};
}

std::vector<std::uint8_t> Resample(const std::vector<std::uint8_t>& codes,
                                   std::size_t columns,
                                   std::size_t newColumns,
                                   std::size_t newRows,
                                   bool isSigned) {
  const std::size_t rows = codes.size() / columns;
  const auto stronger = [&](std::uint8_t a, std::uint8_t b) {
    return Strength(a, isSigned) < Strength(b, isSigned);
  };
  std::vector<std::uint8_t> line(columns);
  std::vector<std::uint8_t> fitted;
  fitted.reserve(newColumns * newRows);
  for (std::size_t y = 0; y < newRows; ++y) {
    const Span down = CellsOfPixel(y, newRows, rows);
    std::copy_n(
        codes.begin() + static_cast<std::ptrdiff_t>(down.begin * columns), columns, line.begin());
    for (std::size_t row = down.begin + 1; row < down.end; ++row)
      for (std::size_t column = 0; column < columns; ++column)
        line[column] = std::max(line[column], codes[row * columns + column], stronger);
    for (std::size_t x = 0; x < newColumns; ++x) {
      const Span across = CellsOfPixel(x, newColumns, columns);
      fitted.push_back(*std::max_element(line.begin() + static_cast<std::ptrdiff_t>(across.begin),
                                         line.begin() + static_cast<std::ptrdiff_t>(across.end),
                                         stronger));
    }
  }
  return fitted;
}

}  // namespace utdata::program
