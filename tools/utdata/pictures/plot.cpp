#include "pictures/plot.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "pictures/scale.h"

namespace utdata::program {
namespace {

constexpr int barWidth = 18;
constexpr int lowestBar = 180;
constexpr int narrowestHead = 560;

/// Everything that is drawn, sized before it is placed.
class Layout {
 public:
  Layout(const ImagePlot& plot, const Font& font)
      : m_plot(plot),
        m_font(font),
        m_image(ImageSize(plot.across, plot.down, plot.sameScale)),
        m_barHeight(std::max(m_image.height, lowestBar)),
        m_across(font, Side::Bottom, plot.across, m_image.width),
        m_down(font, Side::Left, plot.down, m_image.height),
        m_values(font, Side::Right, plot.scale.high, plot.scale.low),
        m_marks(font, Side::Left, plot.scale.high, plot.scale.low) {
    if (plot.downAgain) m_downAgain.emplace(font, Side::Right, *plot.downAgain, m_image.height);
    if (!plot.downMarks.empty()) {
      m_downAgain.emplace(font, Side::Right, plot.down.From(), plot.down.To());
      m_downAgain->Mark(plot.downMarks, m_image.height);
    }
    m_values.Mark(m_barHeight);
    m_marks.Mark(plot.scale.marks, m_barHeight);
    Place();
  }

  PlotPicture Draw() const {
    Canvas canvas(m_width, m_height, paper);
    DrawTexts(canvas);
    DrawImage(canvas);
    DrawBar(canvas);
    return {std::move(canvas), m_image};
  }

 private:
  void Place() {
    m_image.left = margin + axisSize + gap + m_down.Depth();
    m_bar = {m_image.Right(), 0, barWidth, m_barHeight};
    if (m_downAgain) m_bar.left += m_downAgain->Depth() + gap + axisSize;
    m_bar.left += 3 * gap + m_marks.Depth();
    m_width = m_bar.Right() + m_values.Depth() + gap + axisSize + margin;
    m_head.emplace(m_font,
                   m_plot.title,
                   m_plot.notes,
                   std::max(m_width - m_image.left - margin, narrowestHead));
    m_width = std::max(m_width, m_image.left + m_head->Width() + margin);
    m_image.top = m_bar.top = m_head->Height();
    m_height = m_image.top +
               std::max(m_image.height + m_across.Depth() + gap + axisSize, m_barHeight) + margin;
  }

  void DrawTexts(Canvas& canvas) const {
    m_head->Draw(canvas, m_image.left);
    const TextStyle axisStyle = {axisSize, ink, Anchor::Middle, false};
    m_font.Draw(canvas,
                {m_image.left + m_image.width / 2,
                 m_image.Bottom() + m_across.Depth() + gap + axisSize - 2},
                m_plot.across.Caption(),
                axisStyle);
    DrawUpwards(
        canvas, m_font, m_image.left - m_down.Depth() - gap, m_image, m_plot.down.Caption());
    if (m_downAgain)
      DrawUpwards(canvas,
                  m_font,
                  m_image.Right() + m_downAgain->Depth() + gap + axisSize - 2,
                  m_image,
                  m_plot.downMarks.empty() ? m_plot.downAgain->Caption() : m_plot.downMarksTitle);
  }

  void DrawImage(Canvas& canvas) const {
    const std::vector<std::uint8_t> codes = Resample(m_plot.codes,
                                                     m_plot.across.quantity,
                                                     static_cast<std::size_t>(m_image.width),
                                                     static_cast<std::size_t>(m_image.height),
                                                     m_plot.scale.isSigned);
    std::size_t index = 0;
    for (int y = m_image.top; y < m_image.Bottom(); ++y)
      for (int x = m_image.left; x < m_image.Right(); ++x)
        canvas.Set({x, y}, (*m_plot.scale.colors)[codes[index++]]);
    if (!m_plot.unseen.empty()) DrawUnseen(canvas);
    if (!m_plot.striped.empty()) DrawStripes(canvas);
    for (const PlotLine& line : m_plot.lines) DrawLine(canvas, line);
    canvas.Outline(m_image, ink);
    m_across.Draw(canvas, m_image);
    m_down.Draw(canvas, m_image);
    if (m_downAgain) m_downAgain->Draw(canvas, m_image);
    if (m_plot.marked) DrawPointers(canvas, *m_plot.marked);
  }

  /// Calls `draw` with each pixel of the image, and whether `cells` has 1 there. Where several
  /// cells fall on one pixel, one of them does.
  template <class DrawPixel>
  void ForPixels(const std::vector<std::uint8_t>& cells, const DrawPixel& draw) const {
    const std::vector<std::uint8_t> marked = Resample(cells,
                                                      m_plot.across.quantity,
                                                      static_cast<std::size_t>(m_image.width),
                                                      static_cast<std::size_t>(m_image.height),
                                                      false);
    std::size_t index = 0;
    for (int y = m_image.top; y < m_image.Bottom(); ++y)
      for (int x = m_image.left; x < m_image.Right(); ++x) draw(Point{x, y}, marked[index++] != 0);
  }

  /// Where several cells fall on one pixel, it is seen when one of them is.
  void DrawUnseen(Canvas& canvas) const {
    constexpr Color unseen = {222, 225, 230};
    std::vector<std::uint8_t> seen = m_plot.unseen;
    for (std::uint8_t& cell : seen) cell = cell == 0 ? 1 : 0;
    ForPixels(seen, [&](Point at, bool isSeen) {
      if (!isSeen) canvas.Set(at, unseen);
    });
  }

  /// Slanting stripes of a colour that no code has; between them the image is seen.
  void DrawStripes(Canvas& canvas) const {
    constexpr Color stripe = {0, 150, 255};
    constexpr int stripeWidth = 3;
    ForPixels(m_plot.striped, [&](Point at, bool isStriped) {
      if (isStriped && (at.x + at.y) / stripeWidth % 2 == 0) canvas.Set(at, stripe);
    });
  }

  void DrawLine(Canvas& canvas, const PlotLine& line) const {
    constexpr int dash = 6;
    int drawn = 0;
    for (std::size_t index = 1; index < line.points.size(); ++index) {
      const auto [fromX, fromY] = PixelOf(line.points[index - 1]);
      const auto [toX, toY] = PixelOf(line.points[index]);
      const double longest = std::max({std::abs(toX - fromX), std::abs(toY - fromY), 1.0});
      const int steps = static_cast<int>(std::min(longest, 1e5));
      for (int step = 0; step < steps; ++step, ++drawn) {
        const Point at = {static_cast<int>(std::floor(fromX + (toX - fromX) * step / steps)),
                          static_cast<int>(std::floor(fromY + (toY - fromY) * step / steps))};
        if (IsInImage(at) && (!line.isDashed || drawn / dash % 2 == 0)) canvas.Set(at, line.color);
      }
    }
    if (!line.label.empty() && !line.points.empty()) DrawLineLabel(canvas, line);
  }

  /// At the line's end, on paper of its own, so that it is read over any colour.
  void DrawLineLabel(Canvas& canvas, const PlotLine& line) const {
    const int width = m_font.Width(line.label, tickSize);
    const auto [endX, endY] = PixelOf(line.points.back());
    const int right =
        std::max(std::min(static_cast<int>(endX), m_image.Right()), m_image.left + width) - 4;
    const int base = static_cast<int>(endY) - 4;
    if (base - tickSize < m_image.top || base > m_image.Bottom()) return;
    canvas.Fill({right - width - 3, base - tickSize + 1, width + 6, tickSize + 3}, paper);
    m_font.Draw(canvas, {right, base}, line.label, {tickSize, line.color, Anchor::End, false});
  }

  /// The place of a value, in pixels and parts of them.
  [[nodiscard]] std::pair<double, double> PixelOf(const PlotLine::Point& point) const {
    const PlotAxis& across = m_plot.across;
    const PlotAxis& down = m_plot.down;
    const double right = (point.across - across.From()) / (across.To() - across.From());
    const double below = (point.down - down.From()) / (down.To() - down.From());
    return {m_image.left + right * m_image.width, m_image.top + below * m_image.height};
  }
  [[nodiscard]] bool IsInImage(const Point& at) const {
    return at.x >= m_image.left && at.x < m_image.Right() && at.y >= m_image.top &&
           at.y < m_image.Bottom();
  }

  /// Triangles above and left of the image, their points towards the marked cell.
  void DrawPointers(Canvas& canvas, const ImagePlot::Cell& cell) const {
    const int x = m_across.Place(m_image, m_plot.across.At(static_cast<double>(cell.across)));
    const int y = m_down.Place(m_image, m_plot.down.At(static_cast<double>(cell.down)));
    for (int away = 0; away < 7; ++away) {
      const int half = away / 2 + (away > 0 ? 1 : 0);
      canvas.Fill({x - half, m_image.top - 3 - away, 2 * half + 1, 1}, pointer);
      canvas.Fill({m_image.left - 3 - away, y - half, 1, 2 * half + 1}, pointer);
    }
  }

  void DrawBar(Canvas& canvas) const {
    for (int y = 0; y < m_bar.height; ++y) {
      const int code = m_bar.height > 1 ? 255 - y * 255 / (m_bar.height - 1) : 255;
      canvas.Fill({m_bar.left, m_bar.top + y, m_bar.width, 1},
                  (*m_plot.scale.colors)[static_cast<std::size_t>(code)]);
    }
    canvas.Outline(m_bar, ink);
    m_values.Draw(canvas, m_bar);
    m_marks.Draw(canvas, m_bar);
    const int above = m_bar.top - gap;
    const ColorScale& scale = m_plot.scale;
    m_font.Draw(canvas,
                {m_bar.Right() + labelDistance, above},
                scale.unit,
                {tickSize, paleInk, Anchor::Start, false});
    if (!scale.marks.empty())
      m_font.Draw(canvas,
                  {m_bar.left - labelDistance, above},
                  scale.marksUnit,
                  {tickSize, paleInk, Anchor::End, false});
    DrawUpwards(
        canvas, m_font, m_bar.Right() + m_values.Depth() + gap + axisSize - 2, m_bar, scale.title);
  }

  const ImagePlot& m_plot;
  const Font& m_font;
  Rect m_image;
  std::optional<Head> m_head;  ///< once the width is known
  int m_barHeight;
  Scale m_across;
  Scale m_down;
  Scale m_values;
  Scale m_marks;
  std::optional<Scale> m_downAgain;
  Rect m_bar;
  int m_width = 0;
  int m_height = 0;
};

}  // namespace

PlotPicture Draw(const ImagePlot& plot, const Font& font) { return Layout(plot, font).Draw(); }

}  // namespace utdata::program
