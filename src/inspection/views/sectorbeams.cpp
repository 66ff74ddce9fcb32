#include "src/inspection/views/sectorbeams.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "src/inspection/state.h"
#include "utdata/failure.h"

namespace utdata {
namespace {

constexpr const char* noView = "cannot be shown in the part";
constexpr double radian = std::numbers::pi / 180;
constexpr double sameAngle = 1e-3;          // degrees
constexpr double samePlace = 1e-2;          // mm
constexpr double steepest = 89.9 * radian;  // of the sides of a wedge

std::string Degrees(double angle) {
  std::string text = std::to_string(angle);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text + "°";
}

[[noreturn]] void RefuseView(const DataGroup& group, const std::string& why) {
  throw Error(group.Name(), noView, why);
}

double PlaceOn(const AxisScale& axis, std::uint32_t index) {
  return axis.symbol == "mm" ? axis.At(index) : 0;
}

/// The outside radius of a round part, mm; 0 for a flat one.
double RadiusOf(const DataGroup& group) {
  const CRDataTypeDD& record = group.Descriptor();
  if (record.inspectionGeometry == gdata_GeometryFlat) return 0;
  if (record.geometryKind == 18 || record.geometryKind == 19)
    RefuseView(group, "its probes are on the inner surface of a round part");
  const bool isKnown = group.Stored().inspectionRadius > 0 ||
                       group.Taken().inspectionRadius != record.inspectionRadius;
  if (!isKnown) RefuseView(group, "the part is round, and its radius is not known");
  const double radius = double{record.inspectionRadius} * millimetre;
  const double thickness = double{group.Item().idata3_GetPartThickness()} * millimetre;
  if (thickness > radius)
    RefuseView(group, "the outside radius of the part is below the thickness of its wall");
  return radius;
}

AxisScale PathsOf(const DataGroup& group) {
  const std::optional<AxisScale> paths = group.HalfPaths();
  if (!paths) RefuseView(group, "its sound speed is not known, or its samples count no time");
  const double last = paths->At(paths->quantity);
  if (paths->quantity == 0 || !(paths->step > 0) || !std::isfinite(last) || last <= 0)
    RefuseView(group, "no sample lies behind its index point");
  return *paths;
}

/// The plane that skewed beams lie in: its direction on the surface.
class Plane {
 public:
  explicit Plane(double skew) : m_skew(std::fmod(skew, 180)) {
    const auto isNear = [&](double angle) { return std::abs(m_skew - angle) < sameAngle; };
    if (isNear(180)) m_skew = 0;
    if (isNear(0) || isNear(180)) m_across = SectorAcross::Columns;
    if (isNear(90)) m_across = SectorAcross::Rows;
  }

  /// Whether a beam lies in it, one way or the other.
  [[nodiscard]] bool Holds(double skew) const {
    return std::abs(std::remainder(skew - m_skew, 180)) < sameAngle;
  }
  /// Whether a beam leads towards rising positions.
  [[nodiscard]] bool IsForward(double skew) const {
    return std::abs(std::remainder(skew - m_skew, 360)) < 90;
  }
  /// The part of an offset along the plane, and that across it.
  [[nodiscard]] ScanOffset PartsOf(const ScanOffset& offset) const {
    const ScanOffset along = TurnedBySkew(1, m_skew);
    return {offset.column * along.column + offset.row * along.row,
            offset.row * along.column - offset.column * along.row};
  }
  [[nodiscard]] SectorAcross Across() const { return m_across; }

 private:
  double m_skew;
  SectorAcross m_across = SectorAcross::ScanPosition;
};

double SignedGap(double first, double second, double least) {
  return second - first > least ? second - first : 0;
}

/// The border between a beam and its neighbour: half way, but no more than half a usual step away.
/// Where a beam is missing, nothing is shown.
/// @param gap from the one to the other; 0 without a neighbour
struct HalfWay {
  HalfWay(double gap, double usual)
      : isMissing(!(gap > 0 && gap <= 1.5 * usual)), distance((isMissing ? usual : gap) / 2) {}

  bool isMissing;
  double distance;
};

double UsualStep(std::vector<double> gaps) {
  std::erase(gaps, 0.0);
  if (gaps.empty()) return 0;
  const auto middle = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2);
  std::nth_element(gaps.begin(), middle, gaps.end());
  return *middle;
}

void CheckDirections(const std::vector<SectorBeam>& beams, bool haveAngles) {
  for (std::size_t index = 1; index < beams.size(); ++index) {
    const SectorBeam& before = beams[index - 1];
    const SectorBeam& beam = beams[index];
    const bool sameDirection = beam.direction - before.direction < sameAngle;
    if (haveAngles && sameDirection && beam.index - before.index > samePlace)
      RefuseView(beam.group,
                 "beams of " + Degrees(beam.refractedAngle) +
                     " start at several index points, and cross the others");
  }
}

}  // namespace

SectorLine::Point SectorRay::At(double path) const {
  return {across + path * std::sin(angle), down + path * std::cos(angle)};
}

SectorBeam BeamOf(const DataGroup& group) {
  const CIData& item = group.Item();
  SectorBeam beam{.group = group, .halfPaths = PathsOf(group)};
  beam.refractedAngle = double{item.idata3_GetProbeAngle()};
  beam.skew = double{item.idata3_GetProbeSkew()};
  if (!(std::abs(beam.refractedAngle) < 90))
    RefuseView(group, "its refracted angle is not between -90° and 90°");
  const double thickness = double{item.idata3_GetPartThickness()} * millimetre;
  beam.thickness = std::isfinite(thickness) && thickness > 0 ? thickness : 0;
  beam.outsideRadius = RadiusOf(group);
  return beam;
}

ScanOffset IndexOffsetOf(const DataGroup& group) {
  CFSet& set = DataGroupInside::State(group).set;
  const CRDataTypeDD& record = group.Descriptor();
  if (const CISubChan* beam =
          set.fset_GetISubChan(fset_All, record.GetSubChannelID(), record.GetChannelID()))
    return {double{beam->ischa1_GetInfoRef()->indexOffset} * millimetre,
            double{beam->ischa1_GetInfoRef()->scanOffset} * millimetre};
  if (const CIChan* channel = set.fset_GetIChan(fset_All, record.GetChannelID()))
    return {double{channel->ichan1_GetInfoRef()->indexOffset} * millimetre,
            double{channel->ichan1_GetInfoRef()->scanOffset} * millimetre};
  return {};
}

std::optional<BeamPoint> PointOf(const SectorBeam& beam, double halfPath) {
  if (beam.outsideRadius > 0)
    return CurvedPart(beam.outsideRadius, beam.thickness).PointAt(halfPath, beam.refractedAngle);
  return FlatPart(beam.thickness).PointAt(halfPath, beam.refractedAngle);
}

std::vector<DataGroup> BeamGroupsOf(const DataGroup& group) {
  const std::optional<DataGroup> master = group.IsMaster() ? group : group.Master();
  if (!group.HasAScans()) RefuseView(group, "it holds no A-scans");
  if (!master)
    RefuseView(group, "it is no beam of a channel with several: the file has no sub-channels");
  std::vector<DataGroup> beams = master->Elements();
  if (beams.size() < 2)
    RefuseView(group, "its channel has one beam, and a sector needs two at least");
  if (group.IsTofd()) RefuseView(group, "time-of-flight diffraction data have no beams");
  return beams;
}

SectorBeams PlaceBeams(const std::vector<DataGroup>& groups,
                       std::uint32_t row,
                       std::uint32_t column) {
  SectorBeams placed;
  for (const DataGroup& group : groups) placed.beams.push_back(BeamOf(group));
  const Plane plane(placed.beams.front().skew);
  const bool isRound = placed.beams.front().outsideRadius > 0;
  placed.acrossOf = isRound ? SectorAcross::ScanPosition : plane.Across();
  const bool fromScan = placed.acrossOf == SectorAcross::ScanPosition;
  double aside = 0;
  for (SectorBeam& beam : placed.beams) {
    if (!plane.Holds(beam.skew))
      RefuseView(beam.group,
                 "its beams do not lie in one plane: their skews are " +
                     Degrees(placed.beams.front().skew) + " and " + Degrees(beam.skew));
    if (beam.outsideRadius != placed.beams.front().outsideRadius)
      RefuseView(beam.group, "its beams see parts of different radius");
    ScanOffset offset = IndexOffsetOf(beam.group);
    const ScanOffset cell = {PlaceOn(beam.group.Columns(), column),
                             PlaceOn(beam.group.Rows(), row)};
    const ScanOffset first = {PlaceOn(groups.front().Columns(), column),
                              PlaceOn(groups.front().Rows(), row)};
    offset.column += fromScan ? cell.column - first.column : cell.column;
    offset.row += fromScan ? cell.row - first.row : cell.row;
    const ScanOffset parts = plane.PartsOf(offset);
    beam.index = parts.column;
    beam.direction = plane.IsForward(beam.skew) ? beam.refractedAngle : -beam.refractedAngle;
    if (&beam == &placed.beams.front()) aside = parts.row;
    if (std::abs(parts.row - aside) > samePlace)
      RefuseView(beam.group, "its beams do not lie in one plane: their index points are aside");
  }
  const auto key = [](const SectorBeam& beam) {
    const SectorRay ray = RayOf(beam);
    return std::pair(std::lround(ray.angle / (sameAngle * radian)), ray.across);
  };
  std::stable_sort(placed.beams.begin(),
                   placed.beams.end(),
                   [&](const SectorBeam& a, const SectorBeam& b) { return key(a) < key(b); });
  return placed;
}

SectorRay RayOf(const SectorBeam& beam) {
  const double angle = beam.direction * radian;
  if (beam.outsideRadius == 0) return {beam.index, 0, angle};
  const double turn = beam.index / beam.outsideRadius;
  return {
      beam.outsideRadius * std::sin(turn), beam.outsideRadius * (1 - std::cos(turn)), angle - turn};
}

double LastPath(const SectorBeam& beam) {
  const double last = beam.halfPaths.At(beam.halfPaths.quantity - 1.0);
  if (beam.outsideRadius == 0) return last;
  return std::min(last, CurvedPart(beam.outsideRadius, beam.thickness).LegEnd(beam.refractedAngle));
}

std::vector<SectorWedge> WedgesOf(const std::vector<SectorBeam>& beams,
                                  std::vector<std::string>& remarks) {
  std::vector<SectorRay> rays;
  for (const SectorBeam& beam : beams) rays.push_back(RayOf(beam));
  std::vector<double> turns(beams.size() + 1), steps(beams.size() + 1);  // before each beam
  std::size_t covered = 0;
  for (std::size_t beam = 1; beam < beams.size(); ++beam) {
    turns[beam] = SignedGap(rays[beam - 1].angle, rays[beam].angle, sameAngle * radian);
    steps[beam] =
        turns[beam] > 0 ? 0 : SignedGap(rays[beam - 1].across, rays[beam].across, samePlace);
    if (turns[beam] == 0 && steps[beam] == 0) ++covered;
  }
  const double turn = UsualStep(turns);
  const double step = turn > 0 ? 0 : UsualStep(steps);
  if (turn == 0 && step == 0)
    RefuseView(beams.front().group,
               "all of its beams have the refracted angle " +
                   Degrees(beams.front().refractedAngle) + " and the same index point");
  CheckDirections(beams, turn > 0);
  if (covered > 0)
    remarks.push_back(std::to_string(covered) + (covered == 1 ? " beam has" : " beams have") +
                      " the angle and index point of another: the stronger echo is shown");

  std::vector<SectorWedge> wedges;
  for (std::size_t beam = 0; beam < beams.size(); ++beam) {
    // Past beams that this one covers, to the next that leads another way.
    std::size_t before = beam, behind = beam + 1;
    while (before > 0 && turns[before] == 0 && steps[before] == 0) --before;
    while (behind < beams.size() && turns[behind] == 0 && steps[behind] == 0) ++behind;
    const auto side = [&](double sign, double turnGap, double stepGap, std::size_t neighbour) {
      SectorRay ray = rays[beam];
      const HalfWay half = turn > 0 ? HalfWay(turnGap, turn) : HalfWay(stepGap, step);
      if (turn == 0) {
        ray.across += sign * half.distance;
        return ray;
      }
      ray.angle = std::clamp(ray.angle + sign * half.distance, -steepest, steepest);
      if (half.isMissing) return ray;
      ray.across = (ray.across + rays[neighbour].across) / 2;
      ray.down = (ray.down + rays[neighbour].down) / 2;
      return ray;
    };
    const SectorWedge wedge = {side(-1, turns[before], steps[before], before - 1),
                               rays[beam],
                               side(1, turns[behind], steps[behind], behind)};
    wedges.push_back(wedge);
  }
  return wedges;
}

}  // namespace utdata
