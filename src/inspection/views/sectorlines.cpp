// What is drawn over a sector scan: the walls that end its legs, and the weld.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "src/inspection/state.h"
#include "src/inspection/views/sectorbeams.h"
#include "utdata/fcont.h"

namespace utdata {
namespace {

using Line = std::vector<SectorLine::Point>;

/// The thickness that all beams agree on, mm; 0 where they do not, or it is not known.
double CommonThickness(const SectorLayout& view, std::vector<std::string>& remarks) {
  const auto [thinnest, thickest] = std::minmax_element(
      view.beams.begin(), view.beams.end(), [](const SectorBeam& a, const SectorBeam& b) {
        return a.thickness < b.thickness;
      });
  if (thickest->thickness == 0)
    remarks.emplace_back("The thickness is not known: no back wall, all echoes in the first leg");
  else if (thinnest->thickness != thickest->thickness)
    remarks.emplace_back("The beams have different thicknesses: no back wall is drawn");
  return thinnest->thickness == thickest->thickness ? thickest->thickness : 0;
}

/// A wall of a round part, as far as the view reaches.
Line Arc(double radius, double outsideRadius, const SectorLayout& view) {
  constexpr int points = 181;
  const double left = view.across.At(-0.5), right = view.across.At(view.across.quantity - 0.5);
  const double turn = std::asin(std::min(1.0, std::max(-left, right) / radius));
  Line line;
  for (int index = 0; index < points; ++index) {
    const double angle = turn * (2.0 * index / (points - 1) - 1);
    const SectorLine::Point point = {radius * std::sin(angle),
                                     outsideRadius - radius * std::cos(angle)};
    if (point.across >= left && point.across <= right) line.push_back(point);
  }
  return line;
}

/// A depth in a leg, in the unfolded view.
double Unfolded(double depth, std::uint32_t leg, double thickness) {
  return leg % 2 == 0 ? leg * thickness - depth : (leg - 1) * thickness + depth;
}

void AddWeld(std::vector<SectorLine>& lines,
             const CGWeldTypeDescr& weld,
             double thickness,
             std::uint32_t legs) {
  for (const Line& outline : WeldOutline(weld, thickness))
    for (std::uint32_t leg = 1; leg <= legs; ++leg) {
      SectorLine line{SectorLine::Kind::Weld, outline, leg};
      for (SectorLine::Point& point : line.points)
        point.down = thickness > 0 ? Unfolded(point.down, leg, thickness) : point.down;
      lines.push_back(std::move(line));
    }
}

/// The right half of a preparation from the surface down: distance from the centre line over depth.
Line HalfPreparation(const CGWeldTypeDescr& weld, double thickness, bool isBevelled) {
  enum : std::uint32_t { single = 1, doubled = 2, roundSingle = 3, roundHalf = 4, doubledHalf = 5 };
  const double gap = double{weld.rootGap} * millimetre / 2;
  const double face = std::clamp(double{weld.rootFace} * millimetre, 0.0, thickness);
  const double slope =
      std::tan(std::clamp(double{weld.bevelAngle}, 0.0, 80.0) * std::numbers::pi / 180);
  if (!isBevelled || weld.preparation == 0 || weld.preparation > doubledHalf)
    return {{gap, 0}, {gap, thickness}};
  if (weld.preparation == doubled || weld.preparation == doubledHalf) {
    const double bevel = (thickness - face) / 2;
    const double wide = gap + bevel * slope;
    return {{wide, 0}, {gap, bevel}, {gap, bevel + face}, {wide, thickness}};
  }
  const double bottom = thickness - face;  // of the bevel
  if (weld.preparation == single)
    return {{gap + bottom * slope, 0}, {gap, bottom}, {gap, thickness}};
  // From the root face an arc of the root radius, up to where it touches the slope of the bevel.
  const double angle = std::atan(slope);
  const double radius =
      std::min(double{weld.rootRadius} * millimetre, bottom / std::max(1e-9, 1 - std::sin(angle)));
  const SectorLine::Point centre = {gap, bottom - radius};
  const SectorLine::Point touch = {centre.across + radius * std::cos(angle),
                                   centre.down + radius * std::sin(angle)};
  Line line = {{touch.across + touch.down * slope, 0}};
  constexpr int points = 12;
  for (int index = 0; index <= points; ++index) {
    const double turn = angle + (std::numbers::pi / 2 - angle) * index / points;
    line.push_back(
        {centre.across + radius * std::cos(turn), centre.down + radius * std::sin(turn)});
  }
  line.push_back({gap, thickness});
  return line;
}

/// A cap: a flat arch of a width over a wall, `height` outwards.
Line Cap(double centre, double width, double wall, double height) {
  Line line;
  constexpr int points = 16;
  for (int index = 0; index <= points; ++index) {
    const double place = 2.0 * index / points - 1;
    line.push_back({centre + place * width / 2, wall + height * (1 - place * place)});
  }
  return line;
}

}  // namespace

std::vector<Line> WeldOutline(const CGWeldTypeDescr& weld, double thickness) {
  constexpr std::uint32_t roundHalf = 4, doubledHalf = 5;
  if (!(thickness > 0)) thickness = double{weld.thickness} * millimetre;
  if (!(thickness > 0) || !std::isfinite(thickness)) return {};
  const double centre = double{weld.centerPosition} * millimetre;
  const bool isOneSided =
      weld.symmetric == 0 || weld.preparation == roundHalf || weld.preparation == doubledHalf;
  std::vector<Line> outline;
  for (const double side : {-1.0, 1.0}) {
    Line line = HalfPreparation(weld, thickness, side > 0 || !isOneSided);
    for (SectorLine::Point& point : line) point.across = centre + side * point.across;
    outline.push_back(std::move(line));
  }
  if (weld.capWidth > 0)
    outline.push_back(
        Cap(centre, double{weld.capWidth} * millimetre, 0, -double{weld.capHeight} * millimetre));
  if (weld.rootWidth > 0)
    outline.push_back(Cap(centre,
                          double{weld.rootWidth} * millimetre,
                          thickness,
                          double{weld.rootHeight} * millimetre));
  return outline;
}

std::vector<SectorLine> LinesOver(const SectorLayout& view, std::vector<std::string>& remarks) {
  std::vector<SectorLine> lines;
  const double thickness = CommonThickness(view, remarks);
  const double radius = view.beams.front().outsideRadius;
  if (radius > 0) {
    lines.push_back({SectorLine::Kind::Surface, Arc(radius, radius, view), 0});
    if (thickness > 0 && thickness < radius)
      lines.push_back({SectorLine::Kind::BackWall, Arc(radius - thickness, radius, view), 1});
    return lines;
  }
  const double left = view.across.At(-0.5), right = view.across.At(view.across.quantity - 0.5);
  const double bottom = view.down.At(view.down.quantity - 0.5);
  std::uint32_t legs = 1;
  constexpr std::uint32_t most = 40;  // more would hide the picture
  for (; thickness > 0 && legs * thickness < bottom && legs < most; ++legs)
    lines.push_back({legs % 2 == 0 ? SectorLine::Kind::Surface : SectorLine::Kind::BackWall,
                     {{left, legs * thickness}, {right, legs * thickness}},
                     legs});
  if (view.acrossOf == SectorAcross::Columns)
    for (const CGWeldTypeDescr* weld :
         DataGroupInside::State(view.beams.front().group).descriptor->welds)
      AddWeld(lines, *weld, thickness, legs);
  return lines;
}

}  // namespace utdata
