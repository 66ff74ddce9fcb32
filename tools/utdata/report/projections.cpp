#include "report/projections.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "report/packing.h"
#include "terminal/failure.h"
#include "terminal/progress.h"
#include "utdata/views.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

/// Pixels of a page's pictures, which it draws larger. They bound what a long scan adds to it.
constexpr ProjectionOptions pageSize = {.widest = 440, .highest = 280, .mostCells = 880};

constexpr std::array<std::pair<const char*, PartView>, 3> partViews = {
    {{"top", PartView::Top}, {"side", PartView::Side}, {"end", PartView::End}}};

/// Where positions on a scan axis start, as the page takes them.
double OriginOf(const AxisScale& axis) { return axis.symbol == "mm" ? axis.first : 0; }

/// Whether some beam does not run straight down. Of those that do, the C-scan is the top view.
bool LeadAside(const std::vector<DataGroup>& channel) {
  return channel.size() > 1 || channel.front().Stored().probeAngle != 0;
}

class ProjectionMaker {
 public:
  ProjectionMaker(ReportViews& views, bool quiet) : m_views(views), m_quiet(quiet) {}

  Json Make(const std::vector<DataGroup>& channel,
            const std::map<std::size_t, std::size_t>& viewOf) {
    Json made = {{"label", channel.front().Caption()}};
    for (const auto& [name, wanted] : partViews) {
      if (wanted == PartView::Top && !LeadAside(channel)) continue;
      const ProjectionView view = MakeProjection(channel, wanted, pageSize, Watching(m_quiet));
      if (!made.contains("beams")) AddBeams(made, view, viewOf);
      made[name] = {{"across", AxisJson(view.across)},
                    {"down", AxisJson(view.down)},
                    {"weld", WeldJson(view)},
                    {"pixels", Pixels(view)}};
    }
    return made;
  }

 private:
  void AddBeams(Json& made,
                const ProjectionView& view,
                const std::map<std::size_t, std::size_t>& viewOf) {
    std::vector<Places> places;
    double longest = 0;
    for (std::size_t beam = 0; beam < view.beams.size(); ++beam) {
      places.push_back(PlacesOf(view, beam));
      for (const auto& place : places.back())
        if (place)
          longest = std::max({longest,
                              std::abs(place->place.column),
                              std::abs(place->place.row),
                              place->point.depth});
    }
    const double step = StepFor(longest);
    made["step"] = step;
    made["remarks"] = view.remarks;
    for (std::size_t beam = 0; beam < view.beams.size(); ++beam)
      made["beams"].push_back({{"view", viewOf.at(view.beams[beam].Index())},
                               {"places", PackPlaces(places[beam], step)}});
  }

  using Places = std::vector<std::optional<ProjectedEcho>>;

  /// From the place of the cell.
  static Places PlacesOf(const ProjectionView& view, std::size_t beam) {
    Places places = view.PlacesOf(beam);
    const double column = OriginOf(view.beams[beam].Columns());
    const double row = OriginOf(view.beams[beam].Rows());
    for (auto& place : places)
      if (place) place->place = {place->place.column - column, place->place.row - row};
    return places;
  }

  /// Of each sample: from its cell along the columns, the same along the rows, depth, in steps, and
  /// the leg; 0 where the beam is not in the part.
  std::size_t PackPlaces(const Places& places, double step) {
    const std::size_t quantity = places.size();
    std::vector<std::uint16_t> values(4 * quantity);
    for (std::size_t sample = 0; sample < quantity; ++sample) {
      if (!places[sample]) continue;
      const ProjectedEcho& echo = *places[sample];
      values[sample] = InSteps(echo.place.column, step);
      values[quantity + sample] = InSteps(echo.place.row, step);
      values[2 * quantity + sample] = InSteps(echo.point.depth, step);
      values[3 * quantity + sample] = static_cast<std::uint16_t>(echo.point.leg);
    }
    return m_views.Pack(values, m_quiet);
  }

  static Json WeldJson(const ProjectionView& view) {
    Json lines = Json::array();
    for (const auto& line : view.weld) {
      Json points = Json::array();
      for (const SectorLine::Point& point : line) points.push_back({point.across, point.down});
      lines.push_back(std::move(points));
    }
    return lines;
  }

  /// Beams counted from 1, 0 for nothing; samples; cells, their low and their high half; values.
  /// One table behind the other.
  std::size_t Pixels(const ProjectionView& view) {
    const std::vector<ProjectedSample> traced = view.Trace(Watching(m_quiet));
    const std::size_t quantity = view.pixels.size();
    std::vector<std::uint16_t> values(5 * quantity);
    for (std::size_t pixel = 0; pixel < quantity; ++pixel) {
      const ProjectionView::Source& source = view.pixels[pixel];
      if (source.beam == ProjectionView::Source::nothing) continue;
      const std::uint64_t cell = traced[pixel].cell;
      values[pixel] = static_cast<std::uint16_t>(source.beam + 1);
      values[quantity + pixel] = static_cast<std::uint16_t>(source.sample);
      values[2 * quantity + pixel] = static_cast<std::uint16_t>(cell & 0xFFFFU);
      values[3 * quantity + pixel] = static_cast<std::uint16_t>(cell >> 16U);
      values[4 * quantity + pixel] = static_cast<std::uint16_t>(traced[pixel].value);
    }
    return m_views.Pack(values, m_quiet);
  }

  ReportViews& m_views;
  bool m_quiet;
};

/// Whether the numbers of beams, samples and cells fit the tables.
bool Fits(const std::vector<DataGroup>& channel) {
  constexpr std::uint64_t end = 0x10000;
  return channel.size() < end && std::ranges::all_of(channel, [](const DataGroup& group) {
           return group.SampleQuantity() <= end && group.AllCells().count <= end * end;
         });
}

/// The beams of each channel, of those that have sound paths.
std::map<std::uint32_t, std::vector<DataGroup>> BeamsOfChannels(const Inspection& inspection) {
  std::map<std::uint32_t, std::vector<DataGroup>> channels;
  for (const DataGroup& group : inspection.Data())
    if (group.HasAScans() && !group.IsTofd() && group.HalfPaths())
      channels[group.Stored().channelId].push_back(group);
  return channels;
}

}  // namespace

nlohmann::ordered_json MakeProjections(const Inspection& inspection,
                                       ReportViews& views,
                                       bool quiet) {
  Json projections = Json::array();
  const std::map<std::size_t, std::size_t> viewOf = views.OfAScans();
  for (const auto& [id, channel] : BeamsOfChannels(inspection)) {
    const bool isWhole = Fits(channel) && std::ranges::all_of(channel, [&](const DataGroup& beam) {
                           return viewOf.contains(beam.Index());
                         });
    if (!isWhole) {
      views.missing.push_back("top, side and end views of " + channel.front().Caption() +
                              ": not all of its beams are in this report");
      continue;
    }
    try {
      projections.push_back(ProjectionMaker(views, quiet).Make(channel, viewOf));
    } catch (const Failure& failure) {
      if (failure.Status() == SCFile::status_Damaged) throw;
      views.missing.push_back("top, side and end views: " + LineOf(failure));
    }
  }
  return projections;
}

}  // namespace utdata::program
