#include "report/sectors.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "report/packing.h"
#include "terminal/failure.h"
#include "utdata/views.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t widest = 440;  // pixels of a page's picture, which it draws larger
constexpr std::uint32_t highest = 280;

/// The step in which the tables of a sector scan hold lengths, mm.
double StepOf(const SectorMap& map) {
  double longest = 0;
  for (const AxisScale& axis : {map.across, map.down})
    longest = std::max({longest, std::abs(axis.first), std::abs(axis.At(axis.quantity))});
  for (const SectorBeam& beam : map.beams)
    longest = std::max(longest, beam.halfPaths.At(beam.halfPaths.quantity));
  return StepFor(longest);
}

/// Whether the numbers of samples and beams fit the tables.
bool Fits(const SectorMap& map) {
  constexpr std::uint32_t end = 0x10000;
  return map.beams.size() < end && std::ranges::all_of(map.beams, [](const SectorBeam& beam) {
           return beam.halfPaths.quantity < end;
         });
}

class SectorMaker {
 public:
  SectorMaker(const SectorMap& map, ReportViews& views, bool quiet)
      : m_map(map), m_views(views), m_quiet(quiet), m_step(StepOf(map)) {}

  Json Make(const DataGroup& master, const std::map<std::size_t, std::size_t>& viewOf) {
    Json sector = {{"label", master.Caption()},
                   {"across", AxisJson(m_map.across)},
                   {"down", AxisJson(m_map.down)},
                   {"moves", Moves()},
                   {"step", m_step},
                   {"beams", Json::array()},
                   {"lines", LinesJson()},
                   {"quantity", m_map.stretches.size()},
                   {"stretches", Stretches()}};
    for (std::size_t beam = 0; beam < m_map.beams.size(); ++beam)
      sector["beams"].push_back({{"view", viewOf.at(m_map.beams[beam].group.Index())},
                                 {"angle", m_map.beams[beam].refractedAngle},
                                 {"places", Places(beam)}});
    return sector;
  }

 private:
  /// With which scan axis the positions across change.
  [[nodiscard]] Json Moves() const {
    switch (m_map.acrossOf) {
      case SectorAcross::Columns:
        return "columns";
      case SectorAcross::Rows:
        return "rows";
      case SectorAcross::ScanPosition:
        break;
    }
    return nullptr;
  }

  [[nodiscard]] Json LinesJson() const {
    Json lines = Json::array();
    for (const SectorLine& line : m_map.lines) {
      Json points = Json::array();
      for (const SectorLine::Point& point : line.points)
        points.push_back({point.across, point.down});
      lines.push_back({{"weld", line.kind == SectorLine::Kind::Weld},
                       {"dashed", line.kind == SectorLine::Kind::Surface},
                       {"points", std::move(points)}});
    }
    return lines;
  }

  /// Columns, rows, beams, first and last samples of the stretches, one table behind the other.
  std::size_t Stretches() {
    std::vector<std::uint16_t> values;
    values.reserve(5 * m_map.stretches.size());
    const auto add = [&](auto number) {
      for (const SectorMap::Stretch& stretch : m_map.stretches)
        values.push_back(static_cast<std::uint16_t>(number(stretch)));
    };
    using Stretch = SectorMap::Stretch;
    add([&](const Stretch& is) { return is.pixel % m_map.across.quantity; });
    add([&](const Stretch& is) { return is.pixel / m_map.across.quantity; });
    add([](const Stretch& is) { return is.beam; });
    add([](const Stretch& is) { return is.first; });
    add([](const Stretch& is) { return is.last; });
    return m_views.Pack(values, m_quiet);
  }

  /// Of each sample of a beam: across and down in the picture, distance from the index point and
  /// depth in the part, in steps, and the leg; 0 before the part.
  std::size_t Places(std::size_t beam) {
    constexpr std::size_t tables = 5;
    const std::size_t quantity = m_map.beams[beam].halfPaths.quantity;
    std::vector<std::uint16_t> values(tables * quantity);
    for (std::uint32_t sample = 0; sample < quantity; ++sample) {
      const auto echo = m_map.PlaceOf(beam, sample);
      if (!echo) continue;
      const std::uint16_t numbers[tables] = {InSteps(echo->across, m_step),
                                             InSteps(echo->down, m_step),
                                             InSteps(echo->point.distance, m_step),
                                             InSteps(echo->point.depth, m_step),
                                             static_cast<std::uint16_t>(echo->point.leg)};
      for (std::size_t table = 0; table < tables; ++table)
        values[table * quantity + sample] = numbers[table];
    }
    return m_views.Pack(values, m_quiet);
  }

  const SectorMap& m_map;
  ReportViews& m_views;
  bool m_quiet;
  double m_step;  ///< mm
};

bool HasBeams(const DataGroup& master) {
  const std::vector<DataGroup> elements = master.Elements();
  return elements.size() > 1 &&
         std::ranges::all_of(elements, [](const DataGroup& is) { return is.HasAScans(); });
}

}  // namespace

nlohmann::ordered_json MakeSectors(const Inspection& inspection, ReportViews& views, bool quiet) {
  Json sectors = Json::array();
  const std::map<std::size_t, std::size_t> viewOf = views.WithSamples();
  for (const DataGroup& master : inspection.Masters()) {
    if (!HasBeams(master)) continue;
    try {
      const SectorMap map =
          MakeSectorMap(master, {.row = 0, .column = 0, .widest = widest, .highest = highest});
      const bool isWhole = Fits(map) && std::ranges::all_of(map.beams, [&](const SectorBeam& beam) {
                             return viewOf.count(beam.group.Index()) != 0;
                           });
      if (isWhole)
        sectors.push_back(SectorMaker(map, views, quiet).Make(master, viewOf));
      else
        views.missing.push_back("sector scan of " + master.Caption() +
                                ": not all of its A-scans are in this report");
    } catch (const Failure& failure) {
      views.missing.push_back(LineOf(failure));
    }
  }
  return sectors;
}

}  // namespace utdata::program
