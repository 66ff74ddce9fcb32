// A picture in memory, and its PNG form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace utdata::program {

struct Color {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  friend bool operator==(const Color&, const Color&) = default;
};

struct Point {
  int x = 0;  ///< pixels from the left
  int y = 0;  ///< pixels from the top
};

struct Rect {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  [[nodiscard]] int Right() const { return left + width; }   ///< the first column behind it
  [[nodiscard]] int Bottom() const { return top + height; }  ///< the first row below it
};

/// Pixels of three 8-bit colours, row by row from the top. What is drawn outside is cut off. Used
/// by one thread.
class Canvas {
 public:
  /// REQUIRES: width and height are positive.
  Canvas(int width, int height, Color background);

  [[nodiscard]] int Width() const { return m_width; }
  [[nodiscard]] int Height() const { return m_height; }

  void Set(Point at, Color color) { Blend(at, color, 255); }
  /// Covers `coverage` of 255 parts of a pixel.
  void Blend(Point at, Color color, unsigned coverage);
  void Fill(const Rect& area, Color color);
  /// A line of one pixel just outside `area`.
  void Outline(const Rect& area, Color color);

  /// The picture as the bytes of a PNG file, 8-bit RGB. Throws std::bad_alloc.
  [[nodiscard]] std::vector<std::byte> Png() const;

 private:
  int m_width;
  int m_height;
  std::vector<Color> m_pixels;
};

}  // namespace utdata::program
