#include "pictures/scale.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace utdata::program {
namespace {

constexpr int minorTickLength = 3;
constexpr int digitHeight = 10;  // of a digit at tickSize

/// The lines of a text: it breaks at blanks.
std::vector<std::string> Wrapped(const Font& font, const std::string& text, int size, int width) {
  std::vector<std::string> lines = {""};
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    const std::string word = text.substr(begin, end - begin);
    std::string& line = lines.back();
    if (line.empty())
      line = word;
    else if (font.Width(line + " " + word, size) <= width)
      line += " " + word;
    else
      lines.push_back(word);
    begin = end + 1;
  }
  return lines;
}

}  // namespace

void Scale::Mark(int length) {
  const int room = IsLevel() ? 70 : 48;
  m_ticks = RoundTicks(m_from, m_to, std::clamp(length / room + 1, 3, 14));
}

void Scale::Mark(const std::vector<Tick>& ticks, int length) {
  const Rect area = {0, 0, length, length};
  for (const Tick& tick : ticks)
    if (m_ticks.major.empty() ||
        std::abs(Place(area, tick.value) - Place(area, m_ticks.major.back().value)) > tickSize)
      m_ticks.major.push_back(tick);
}

int Scale::Depth() const {
  if (IsLevel()) return tickLength + gap / 2 + tickSize;
  int widest = 0;
  for (const Tick& tick : m_ticks.major)
    widest = std::max(widest, m_font.Width(tick.label, tickSize));
  return tickLength + gap / 2 + widest;
}

void Scale::Draw(Canvas& canvas, const Rect& area) const {
  for (const double value : m_ticks.minor)
    DrawMark(canvas, area, Place(area, value), minorTickLength, paleInk);
  for (const Tick& tick : m_ticks.major) {
    const int place = Place(area, tick.value);
    DrawMark(canvas, area, place, tickLength, ink);
    DrawLabel(canvas, area, place, tick.label);
  }
}

int Scale::Place(const Rect& area, double value) const {
  const int start = IsLevel() ? area.left : area.top;
  const int length = IsLevel() ? area.width : area.height;
  const double along = (value - m_from) / (m_to - m_from) * length;
  return start + (along >= 0 ? static_cast<int>(std::min(along, length - 1.0)) : 0);
}

void Scale::DrawMark(Canvas& canvas, const Rect& area, int place, int length, Color color) const {
  switch (m_side) {
    case Side::Top:
      canvas.Fill({place, area.top - 1 - length, 1, length}, color);
      break;
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

void Scale::DrawLabel(Canvas& canvas, const Rect& area, int place, const std::string& label) const {
  TextStyle style = {tickSize, ink, Anchor::Middle, false};
  Point base = {
      place,
      m_side == Side::Top ? area.top - labelDistance : area.Bottom() + labelDistance + digitHeight};
  if (!IsLevel()) {
    style.anchor = m_side == Side::Left ? Anchor::End : Anchor::Start;
    base = {m_side == Side::Left ? area.left - labelDistance : area.Right() + labelDistance,
            place + digitHeight / 2};
  }
  m_font.Draw(canvas, base, label, style);
}

Head::Head(const Font& font,
           const std::string& title,
           const std::vector<std::string>& notes,
           int width)
    : m_font(font), m_title(Wrapped(font, title, titleSize, width)) {
  for (const std::string& note : notes)
    for (std::string& line : Wrapped(font, note, noteSize, width))
      m_notes.push_back(std::move(line));
}

int Head::Height() const {
  return margin + static_cast<int>(m_title.size()) * (titleSize + 5) - 5 +
         static_cast<int>(m_notes.size()) * (noteSize + 5) + 2 * gap;
}

int Head::Width() const {
  int widest = 0;
  for (const std::string& line : m_title) widest = std::max(widest, m_font.Width(line, titleSize));
  for (const std::string& line : m_notes) widest = std::max(widest, m_font.Width(line, noteSize));
  return widest;
}

void Head::Draw(Canvas& canvas, int left) const {
  int baseline = margin - 9;
  for (const std::string& line : m_title) {
    baseline += titleSize + 5;
    m_font.Draw(canvas, {left, baseline}, line, {titleSize, ink, Anchor::Start, false});
  }
  for (const std::string& line : m_notes) {
    baseline += noteSize + 5;
    m_font.Draw(canvas, {left, baseline}, line, {noteSize, paleInk, Anchor::Start, false});
  }
}

void DrawUpwards(Canvas& canvas,
                 const Font& font,
                 int baseline,
                 const Rect& area,
                 const std::string& title) {
  const int length = font.Width(title, axisSize);
  // One that is longer than the picture begins below the head, and is cut off.
  const int lowest = canvas.Height() - length / 2;
  const int middle = std::max(std::min(area.top + area.height / 2, lowest), area.top + length / 2);
  font.Draw(canvas, {baseline, middle}, title, {axisSize, ink, Anchor::Middle, true});
}

}  // namespace utdata::program
