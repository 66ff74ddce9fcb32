#include "pictures/plot.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace utdata::program {
namespace {

constexpr Color paper = {255, 255, 255};
constexpr Color ink = {32, 32, 36};
constexpr Color paleInk = {96, 98, 106};
constexpr Color pointer = {214, 40, 40};

constexpr int titleSize = 19;
constexpr int noteSize = 14;
constexpr int axisSize = 14;
constexpr int tickSize = 13;
constexpr int tickLength = 6;
constexpr int minorTickLength = 3;
constexpr int gap = 8;      // between things that belong together
constexpr int margin = 18;  // around everything
constexpr int barWidth = 18;
constexpr int lowestBar = 180;
constexpr int digitHeight = 10;  // of a digit at tickSize

enum class Side { Bottom, Left, Right };

std::string WithUnit(const PlotAxis& axis) {
  return axis.unit.empty() ? axis.title : axis.title + " (" + axis.unit + ")";
}

/// One scale beside an area: where a value lies along it, and its ticks and title.
class Scale {
 public:
  Scale(const Font& font, Side side, double from, double to) : m_font(font), m_side(side), m_from(from), m_to(to) {}

  /// Round ticks, as many as a side of `length` pixels has room for.
  void Mark(int length) {
    const int room = m_side == Side::Bottom ? 90 : 48;
    m_ticks = RoundTicks(m_from, m_to, std::clamp(length / room + 1, 3, 14));
  }
  /// The given ticks, as far as a side of `length` pixels has room: the first of two that are too near each other stays.
  void Mark(const std::vector<Tick>& ticks, int length) {
    const Rect area = {0, 0, length, length};
    for (const Tick& tick : ticks)
      if (m_ticks.major.empty() ||
          std::abs(Place(area, tick.value) - Place(area, m_ticks.major.back().value)) > tickSize)
        m_ticks.major.push_back(tick);
  }

  /// Pixels that the ticks and their labels take outwards.
  [[nodiscard]] int Depth() const {
    if (m_side == Side::Bottom) return tickLength + gap / 2 + tickSize;
    int widest = 0;
    for (const Tick& tick : m_ticks.major) widest = std::max(widest, m_font.Width(tick.label, tickSize));
    return tickLength + gap / 2 + widest;
  }

  void Draw(Canvas& canvas, const Rect& area) const {
    for (const double value : m_ticks.minor) DrawMark(canvas, area, Place(area, value), minorTickLength, paleInk);
    for (const Tick& tick : m_ticks.major) {
      const int place = Place(area, tick.value);
      DrawMark(canvas, area, place, tickLength, ink);
      DrawLabel(canvas, area, place, tick.label);
    }
  }

  /// The pixel along the side where a value lies, or the nearest; the first when the side has no extent.
  [[nodiscard]] int Place(const Rect& area, double value) const {
    const int start = m_side == Side::Bottom ? area.left : area.top;
    const int length = m_side == Side::Bottom ? area.width : area.height;
    const double along = (value - m_from) / (m_to - m_from) * length;
    return start + (along >= 0 ? static_cast<int>(std::min(along, length - 1.0)) : 0);
  }

 private:
  void DrawMark(Canvas& canvas, const Rect& area, int place, int length, Color color) const {
    switch (m_side) {
      case Side::Bottom:
        canvas.Fill({place, area.Bottom() + 1, 1, length}, color);
        break;
      case Side::Left:
        canvas.Fill({area.left - 1 - length, place, length, 1}, color);
        break;
      case Side::Right:
        canvas.Fill({area.Right() + 1, place, length, 1}, color);
        break;
    }
  }

  void DrawLabel(Canvas& canvas, const Rect& area, int place, const std::string& label) const {
    constexpr int away = 1 + tickLength + gap / 2;
    TextStyle style = {tickSize, ink, Anchor::Middle, false};
    Point base = {place, area.Bottom() + away + digitHeight};
    if (m_side != Side::Bottom) {
      style.anchor = m_side == Side::Left ? Anchor::End : Anchor::Start;
      base = {m_side == Side::Left ? area.left - away : area.Right() + away, place + digitHeight / 2};
    }
    m_font.Draw(canvas, base, label, style);
  }

  const Font& m_font;
  Side m_side;
  double m_from;
  double m_to;
  Ticks m_ticks;
};

Scale AxisScale(const Font& font, Side side, const PlotAxis& axis, int length) {
  Scale scale(font, side, axis.From(), axis.To());
  scale.Mark(length);
  return scale;
}

/// Everything that is drawn, sized before it is placed.
class Layout {
 public:
  Layout(const ImagePlot& plot, const Font& font)
      : m_plot(plot),
        m_font(font),
        m_image(ImageSize(plot.across, plot.down, plot.sameScale)),
        m_barHeight(std::max(m_image.height, lowestBar)),
        m_across(AxisScale(font, Side::Bottom, plot.across, m_image.width)),
        m_down(AxisScale(font, Side::Left, plot.down, m_image.height)),
        m_percent(font, Side::Right, plot.scale.high, plot.scale.low),
        m_decibels(font, Side::Left, plot.scale.high, plot.scale.low) {
    if (plot.downAgain) m_downAgain.emplace(AxisScale(font, Side::Right, *plot.downAgain, m_image.height));
    m_percent.Mark(m_barHeight);
    m_decibels.Mark(plot.scale.decibels, m_barHeight);
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
    const int head = titleSize + static_cast<int>(m_plot.notes.size()) * (noteSize + 5);
    m_image.left = margin + axisSize + gap + m_down.Depth();
    m_image.top = margin + head + 2 * gap;
    m_bar = {m_image.Right(), m_image.top, barWidth, m_barHeight};
    if (m_downAgain) m_bar.left += m_downAgain->Depth() + gap + axisSize;
    m_bar.left += 3 * gap + m_decibels.Depth();
    m_width = m_bar.Right() + m_percent.Depth() + gap + axisSize + margin;
    m_width = std::max(m_width, m_image.left + m_font.Width(m_plot.title, titleSize) + margin);
    for (const std::string& note : m_plot.notes)
      m_width = std::max(m_width, m_image.left + m_font.Width(note, noteSize) + margin);
    m_height = m_image.top + std::max(m_image.height + m_across.Depth() + gap + axisSize, m_barHeight) + margin;
  }

  void DrawTexts(Canvas& canvas) const {
    int baseline = margin + titleSize - 4;
    m_font.Draw(canvas, {m_image.left, baseline}, m_plot.title, {titleSize, ink, Anchor::Start, false});
    for (const std::string& note : m_plot.notes) {
      baseline += noteSize + 5;
      m_font.Draw(canvas, {m_image.left, baseline}, note, {noteSize, paleInk, Anchor::Start, false});
    }
    const TextStyle axisStyle = {axisSize, ink, Anchor::Middle, false};
    m_font.Draw(canvas,
                {m_image.left + m_image.width / 2, m_image.Bottom() + m_across.Depth() + gap + axisSize - 2},
                WithUnit(m_plot.across),
                axisStyle);
    DrawUpwards(canvas, m_image.left - m_down.Depth() - gap, m_image, WithUnit(m_plot.down));
    if (m_downAgain)
      DrawUpwards(
          canvas, m_image.Right() + m_downAgain->Depth() + gap + axisSize - 2, m_image, WithUnit(*m_plot.downAgain));
  }

  /// A turned title beside an area; one that is longer than the area keeps below the head.
  void DrawUpwards(Canvas& canvas, int baseline, const Rect& area, const std::string& title) const {
    const int length = m_font.Width(title, axisSize);
    const int middle =
        std::clamp(area.top + area.height / 2, area.top + length / 2, std::max(area.top, m_height) - length / 2);
    m_font.Draw(canvas, {baseline, middle}, title, {axisSize, ink, Anchor::Middle, true});
  }

  void DrawImage(Canvas& canvas) const {
    const std::vector<std::uint8_t> codes = Resample(m_plot.codes,
                                                     m_plot.across.quantity,
                                                     static_cast<std::size_t>(m_image.width),
                                                     static_cast<std::size_t>(m_image.height),
                                                     m_plot.scale.isSigned);
    std::size_t index = 0;
    for (int y = m_image.top; y < m_image.Bottom(); ++y)
      for (int x = m_image.left; x < m_image.Right(); ++x) canvas.Set({x, y}, (*m_plot.scale.colors)[codes[index++]]);
    canvas.Outline(m_image, ink);
    m_across.Draw(canvas, m_image);
    m_down.Draw(canvas, m_image);
    if (m_downAgain) m_downAgain->Draw(canvas, m_image);
    if (m_plot.marked) DrawPointers(canvas, *m_plot.marked);
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
      canvas.Fill({m_bar.left, m_bar.top + y, m_bar.width, 1}, (*m_plot.scale.colors)[static_cast<std::size_t>(code)]);
    }
    canvas.Outline(m_bar, ink);
    m_percent.Draw(canvas, m_bar);
    m_decibels.Draw(canvas, m_bar);
    const int above = m_bar.top - gap;
    constexpr int away = 1 + tickLength + gap / 2;
    m_font.Draw(canvas, {m_bar.Right() + away, above}, "%", {tickSize, paleInk, Anchor::Start, false});
    if (!m_plot.scale.decibels.empty())
      m_font.Draw(canvas, {m_bar.left - away, above}, "dB", {tickSize, paleInk, Anchor::End, false});
    DrawUpwards(canvas, m_bar.Right() + m_percent.Depth() + gap + axisSize - 2, m_bar, "Amplitude, of full scale");
  }

  const ImagePlot& m_plot;
  const Font& m_font;
  Rect m_image;
  int m_barHeight;
  Scale m_across;
  Scale m_down;
  Scale m_percent;
  Scale m_decibels;
  std::optional<Scale> m_downAgain;
  Rect m_bar;
  int m_width = 0;
  int m_height = 0;
};

}  // namespace

PlotPicture Draw(const ImagePlot& plot, const Font& font) { return Layout(plot, font).Draw(); }

}  // namespace utdata::program
