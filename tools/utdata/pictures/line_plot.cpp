#include "pictures/line_plot.h"

#include <algorithm>
#include <cmath>

namespace utdata::program {
namespace {

constexpr Color grid = {228, 229, 233};
constexpr Color zeroLine = {168, 170, 178};
constexpr Color curve = {24, 78, 160};
constexpr Color referenceCurve = {138, 63, 176};
constexpr int areaWidth = 880;
constexpr int areaHeight = 400;
constexpr int gateThickness = 3;

/// The pixels of one column that a curve covers.
struct Extent {
  double low;
  double high;
};

/// Everything that is drawn, sized before it is placed.
class LineLayout {
 public:
  LineLayout(const LinePlot& plot, const Font& font)
      : m_plot(plot),
        m_font(font),
        m_area{0, 0, areaWidth, areaHeight},
        m_across(font, Side::Bottom, plot.across, areaWidth),
        m_values(font, Side::Left, plot.high, plot.low),
        m_marks(font, Side::Right, plot.high, plot.low) {
    m_values.Mark(areaHeight);
    m_marks.Mark(plot.marks, areaHeight);
    if (plot.acrossAgain) m_again.emplace(font, Side::Top, *plot.acrossAgain, areaWidth);
    m_area.left = margin + axisSize + gap + m_values.Depth();
    m_width = m_area.Right() + m_marks.Depth() + gap + axisSize + margin;
    m_head.emplace(font, plot.title, plot.notes, m_width - m_area.left - margin);
    m_width = std::max(m_width, m_area.left + m_head->Width() + margin);
    m_area.top = m_head->Height();
    if (m_again) m_area.top += m_again->Depth() + gap + axisSize;
    m_height = m_area.Bottom() + m_across.Depth() + gap + axisSize + margin;
  }

  PlotPicture Draw() const {
    Canvas canvas(m_width, m_height, paper);
    m_head->Draw(canvas, m_area.left);
    DrawGrid(canvas);
    DrawCurve(canvas);
    if (!m_plot.reference.empty()) DrawReference(canvas);
    for (const GateBar& gate : m_plot.gates) DrawGate(canvas, gate);
    canvas.Outline(m_area, ink);
    DrawScales(canvas);
    if (m_plot.marked) DrawPointer(canvas, *m_plot.marked);
    return {std::move(canvas), m_area};
  }

 private:
  void DrawGrid(Canvas& canvas) const {
    for (const Tick& tick : m_across.Marks().major)
      canvas.Fill({m_across.Place(m_area, tick.value), m_area.top, 1, m_area.height}, grid);
    for (const Tick& tick : m_values.Marks().major)
      canvas.Fill({m_area.left, m_values.Place(m_area, tick.value), m_area.width, 1}, grid);
    canvas.Fill({m_area.left, m_values.Place(m_area, 0), m_area.width, 1}, zeroLine);
  }

  /// The value between two cells, where the curve runs straight.
  [[nodiscard]] double ValueAt(double cell) const {
    const auto last = static_cast<double>(m_plot.values.size() - 1);
    const double inside = std::clamp(cell, 0.0, last);
    const auto before = static_cast<std::size_t>(inside);
    const std::size_t after = std::min(before + 1, m_plot.values.size() - 1);
    const double part = inside - std::floor(inside);
    return m_plot.values[before] * (1 - part) + m_plot.values[after] * part;
  }

  /// What the curve covers between two places, in cells.
  [[nodiscard]] Extent Covered(double from, double to) const {
    const double start = ValueAt(from);
    const double end = ValueAt(to);
    Extent extent = {std::min(start, end), std::max(start, end)};
    const auto cells = static_cast<double>(m_plot.values.size());
    for (double cell = std::max(0.0, std::ceil(from)); cell <= to && cell < cells; ++cell) {
      const double value = m_plot.values[static_cast<std::size_t>(cell)];
      extent = {std::min(extent.low, value), std::max(extent.high, value)};
    }
    return extent;
  }

  void DrawCurve(Canvas& canvas) const {
    const double cellsPerPixel = static_cast<double>(m_plot.values.size()) / m_area.width;
    for (int x = 0; x < m_area.width; ++x) {
      const double from = x * cellsPerPixel - 0.5;
      const Extent extent = Covered(from, from + cellsPerPixel);
      const int top = m_values.Place(m_area, extent.high);
      const int bottom = m_values.Place(m_area, extent.low);
      canvas.Fill({m_area.left + x, top, 1, bottom - top + 2}, curve);
    }
  }

  /// The place of the second curve's value between two cells; nothing where it has none.
  [[nodiscard]] std::optional<int> ReferenceAt(double cell) const {
    const auto last = static_cast<double>(m_plot.reference.size() - 1);
    const double inside = std::clamp(cell, 0.0, last);
    const auto before = static_cast<std::size_t>(inside);
    const double from = m_plot.reference[before];
    const double to = m_plot.reference[std::min(before + 1, m_plot.reference.size() - 1)];
    const double value = from + (to - from) * (inside - std::floor(inside));
    return std::isnan(value) ? std::nullopt : std::optional(m_values.Place(m_area, value));
  }

  /// On both sides of zero where values are.
  void DrawReference(Canvas& canvas) const {
    const double cellsPerPixel = static_cast<double>(m_plot.reference.size()) / m_area.width;
    const int zero = m_values.Place(m_area, 0);
    std::optional<int> before;
    for (int x = 0; x < m_area.width; ++x) {
      const std::optional<int> level = ReferenceAt((x + 0.5) * cellsPerPixel - 0.5);
      if (level) {
        const auto [top, bottom] = std::minmax({*level, before.value_or(*level)});
        canvas.Fill({m_area.left + x, top, 1, bottom - top + 2}, referenceCurve);
        if (m_plot.low < 0)
          canvas.Fill({m_area.left + x, 2 * zero - bottom, 1, bottom - top + 2}, referenceCurve);
        if (!before)
          m_font.Draw(canvas,
                      {m_area.left + x + gap / 2, top - gap / 2 - 2},
                      m_plot.referenceLabel,
                      {tickSize, referenceCurve, Anchor::Start, false});
      }
      before = level;
    }
  }

  void DrawGate(Canvas& canvas, const GateBar& gate) const {
    const int left = m_across.Place(m_area, gate.from);
    const int right = m_across.Place(m_area, gate.to);
    const int level = m_values.Place(m_area, gate.level);
    canvas.Fill({left, level - gateThickness / 2, std::max(right - left, 1), gateThickness},
                gate.color);
    for (const int end : {left, right}) canvas.Fill({end, level - 7, 1, 15}, gate.color);
    const TextStyle style = {tickSize, gate.color, Anchor::Start, false};
    m_font.Draw(canvas, {left + gap / 2, level - gap / 2 - 2}, gate.label, style);
  }

  void DrawScales(Canvas& canvas) const {
    m_across.Draw(canvas, m_area);
    m_values.Draw(canvas, m_area);
    m_marks.Draw(canvas, m_area);
    const TextStyle style = {axisSize, ink, Anchor::Middle, false};
    const int middle = m_area.left + m_area.width / 2;
    const int below = m_area.Bottom() + m_across.Depth() + gap + axisSize - 2;
    m_font.Draw(canvas, {middle, below}, m_plot.across.Caption(), style);
    DrawUpwards(canvas, m_font, m_area.left - m_values.Depth() - gap, m_area, m_plot.valueTitle);
    if (!m_marks.Marks().major.empty())
      DrawUpwards(canvas,
                  m_font,
                  m_area.Right() + m_marks.Depth() + gap + axisSize - 2,
                  m_area,
                  m_plot.marksTitle);
    if (!m_again) return;
    m_again->Draw(canvas, m_area);
    m_font.Draw(canvas,
                {middle, m_area.top - m_again->Depth() - gap},
                m_plot.acrossAgain->Caption(),
                style);
  }

  /// A triangle whose point is at the value of the marked cell.
  void DrawPointer(Canvas& canvas, std::size_t cell) const {
    const int x = m_across.Place(m_area, m_plot.across.At(static_cast<double>(cell)));
    const int y = m_values.Place(m_area, m_plot.values[cell]);
    const bool isAbove = m_plot.values[cell] >= 0;
    for (int away = 0; away < 7; ++away) {
      const int half = away / 2 + (away > 0 ? 1 : 0);
      canvas.Fill({x - half, isAbove ? y - 3 - away : y + 4 + away, 2 * half + 1, 1}, pointer);
    }
  }

  const LinePlot& m_plot;
  const Font& m_font;
  Rect m_area;
  std::optional<Head> m_head;  ///< once the width is known
  Scale m_across;
  Scale m_values;
  Scale m_marks;
  std::optional<Scale> m_again;
  int m_width = 0;
  int m_height = 0;
};

}  // namespace

PlotPicture Draw(const LinePlot& plot, const Font& font) { return LineLayout(plot, font).Draw(); }

}  // namespace utdata::program
