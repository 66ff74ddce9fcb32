// Scales beside an area of a picture, and what all plots are drawn with: inks, sizes of texts,
// distances.
#pragma once

#include <string>
#include <vector>

#include "pictures/font.h"
#include "pictures/picture.h"
#include "pictures/ticks.h"

namespace utdata::program {

inline constexpr Color paper = {255, 255, 255};
inline constexpr Color ink = {32, 32, 36};
inline constexpr Color paleInk = {96, 98, 106};
inline constexpr Color pointer = {214, 40, 40};

inline constexpr int titleSize = 19;
inline constexpr int noteSize = 14;
inline constexpr int axisSize = 14;
inline constexpr int tickSize = 13;
inline constexpr int tickLength = 6;
inline constexpr int gap = 8;      // between things that belong together
inline constexpr int margin = 18;  // around everything
inline constexpr int labelDistance = 1 + tickLength + gap / 2;  // of a tick's label from its area

/// Evenly spaced cells along one side of an image, in the unit that is shown.
struct PlotAxis {
  std::string title;         ///< "Scan position"
  std::string unit;          ///< "mm"; empty for plain numbers
  double first = 0;          ///< value at the middle of the first cell
  double step = 1;           ///< from one cell to the next; may be negative
  std::size_t quantity = 1;  ///< cells

  [[nodiscard]] double At(double cell) const { return first + cell * step; }
  [[nodiscard]] double From() const { return At(-0.5); }  ///< the first cell's outer edge
  [[nodiscard]] double To() const {
    return At(static_cast<double>(quantity) - 0.5);
  }  ///< the last cell's outer edge
  [[nodiscard]] std::string Caption() const {
    return unit.empty() ? title : title + " (" + unit + ")";
  }
};

enum class Side { Top, Bottom, Left, Right };

/// One scale beside an area: where a value lies along it, and its ticks. The font must outlive it.
class Scale {
 public:
  Scale(const Font& font, Side side, double from, double to)
      : m_font(font), m_side(side), m_from(from), m_to(to) {}
  /// The scale of an axis with round ticks for a side of `length` pixels.
  Scale(const Font& font, Side side, const PlotAxis& axis, int length)
      : Scale(font, side, axis.From(), axis.To()) {
    Mark(length);
  }

  /// Round ticks, as many as fit a side of `length` pixels.
  void Mark(int length);
  /// The given ticks, as far as they fit a side of `length` pixels: the first of two that are too
  /// near each other stays.
  void Mark(const std::vector<Tick>& ticks, int length);

  /// Pixels that the ticks and their labels take outwards.
  [[nodiscard]] int Depth() const;
  void Draw(Canvas& canvas, const Rect& area) const;
  /// The pixel along the side where a value lies, or the nearest; the first when the side has no
  /// extent.
  [[nodiscard]] int Place(const Rect& area, double value) const;
  [[nodiscard]] const Ticks& Marks() const { return m_ticks; }

 private:
  [[nodiscard]] bool IsLevel() const { return m_side == Side::Top || m_side == Side::Bottom; }
  void DrawMark(Canvas& canvas, const Rect& area, int place, int length, Color color) const;
  void DrawLabel(Canvas& canvas, const Rect& area, int place, const std::string& label) const;

  const Font& m_font;
  Side m_side;
  double m_from;
  double m_to;
  Ticks m_ticks;
};

/// A title with notes below it, at the top of a picture. What is too long goes on in the next line.
class Head {
 public:
  /// @param width pixels of a line; a word that is longer alone goes beyond
  Head(const Font& font,
       const std::string& title,
       const std::vector<std::string>& notes,
       int width);

  [[nodiscard]] int Height() const;  ///< pixels from the top to what stands below it
  [[nodiscard]] int Width() const;   ///< pixels of the longest line
  void Draw(Canvas& canvas, int left) const;

 private:
  const Font& m_font;
  std::vector<std::string> m_title;
  std::vector<std::string> m_notes;
};
/// Draws a turned title beside an area; one that is longer than the area keeps below the head.
void DrawUpwards(Canvas& canvas,
                 const Font& font,
                 int baseline,
                 const Rect& area,
                 const std::string& title);

}  // namespace utdata::program
