#include "report/views.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "report/packing.h"
#include "terminal/failure.h"
#include "terminal/progress.h"
#include "terminal/quantity.h"
#include "terminal/text.h"
#include "utdata/dac.h"
#include "utdata/gating.h"
#include "utdata/samples.h"
#include "utdata/views.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

bool IsCScan(const DataGroup& group) {
  return group.Class() == gdata_CScanAmplitude || group.Class() == gdata_CScanPosition;
}

bool HaveSameCells(const DataGroup& a, const DataGroup& b) {
  return a.Stored().channelId == b.Stored().channelId &&
         a.Stored().subChannelId == b.Stored().subChannelId &&
         a.Stored().GetPatchID() == b.Stored().GetPatchID() && a.RowQuantity() == b.RowQuantity() &&
         a.ColumnQuantity() == b.ColumnQuantity();
}

/// Percent of full scale of one step of the samples, on either side of zero.
Json AmplitudeJson(const DataGroup& group) {
  const AmplitudeScale scale = group.Amplitudes();
  return {{"above", scale.above}, {"below", scale.below}};
}

/// Numbers rounded to a micrometre; null where there is none.
Json TableJson(const std::vector<double>& values) {
  Json table = Json::array();
  for (const double value : values)
    table.push_back(std::isfinite(value) ? Json(std::round(value * 1e3) / 1e3) : Json());
  return table;
}

class ViewMaker {
 public:
  ViewMaker(const Inspection& inspection, std::uint64_t sampleLimit, bool quiet)
      : m_groups(inspection.Data()), m_room(sampleLimit), m_limit(sampleLimit), m_quiet(quiet) {}

  ReportViews Make() {
    std::vector<bool> isLayer(m_groups.size());
    for (std::size_t index = 0; index < m_groups.size(); ++index) {
      if (!m_groups[index].HasAScans()) continue;
      Try([&] { AddAScans(index, isLayer); });
    }
    for (std::size_t index = 0; index < m_groups.size(); ++index) {
      const DataGroup& group = m_groups[index];
      if (isLayer[index] || group.HasAScans()) continue;
      if (IsCScan(group))
        Try([&] { AddCScan(index); });
      else
        m_made.missing.push_back(Title(index) + ": " + group.ClassName() + " data is not drawn");
    }
    return std::move(m_made);
  }

 private:
  [[nodiscard]] std::string Title(std::size_t index) const {
    return "data group " + std::to_string(index) + " (" + m_groups[index].Caption() + ")";
  }

  /// The page names a group that cannot be shown, and shows the others. Damage ends the report.
  template <class Job>
  void Try(Job&& job) {
    try {
      job();
    } catch (const Failure& failure) {
      if (failure.Status() == SCFile::status_Damaged) throw;
      m_made.missing.push_back(LineOf(failure));
    }
  }

  static Json Frame(const DataGroup& group) {
    return {{"label", group.Caption()},
            {"kind", group.ClassName()},
            {"group", group.Index()},
            {"channel", group.Stored().channelId},
            {"columns", AxisJson(group.Columns(), "column")},
            {"rows", AxisJson(group.Rows(), "row")},
            {"layers", Json::array()}};
  }

  /// The cells with damaged samples, as runs: the first, and how many.
  static Json DamagedJson(const Samples& samples) {
    Json runs = Json::array();
    std::uint64_t last = 0;
    for (std::uint64_t cell = 0; cell < samples.CellQuantity(); ++cell) {
      if (!samples.IsDamaged(cell)) continue;
      if (!runs.empty() && last + 1 == cell)
        runs.back()[1] = runs.back()[1].get<std::uint64_t>() + 1;
      else
        runs.push_back({cell, 1});
      last = cell;
    }
    return runs;
  }

  Json Layer(const DataGroup& group) {
    const Samples samples = group.Samples();
    const Peaks peaks = samples.FindPeaks(group.AllCells(), Watching(m_quiet));
    const std::vector<std::uint16_t> values(peaks.values.begin(), peaks.values.end());
    const bool hasPositions = group.HoldsPositions();
    Json layer = {
        {"label",
         group.HasAScans() ? "largest amplitude" : group.ClassName() + " " + group.Caption()},
        {"values", m_made.Pack(values, m_quiet)},
        {"signed", samples.IsSigned()},
        {"strongest", peaks.strongest.cell}};
    if (Json damaged = DamagedJson(samples); !damaged.empty())
      layer["damaged"] = std::move(damaged);
    if (!group.HasAScans()) layer["gate"] = group.Stored().gateId;
    if (!hasPositions) layer["amplitude"] = AmplitudeJson(group);
    if (hasPositions) layer["position"] = AxisJson(group.Times(), "value");
    if (hasPositions) layer["noEcho"] = noEchoPosition;
    if (const auto path = group.HalfPaths(); hasPositions && path)
      layer["path"] = AxisJson(*path, "value");
    return layer;
  }

  /// Depths of samples: along the first leg, of TOFD data those of a diffracting tip or none.
  void AddDepths(Json& view, std::size_t number) {
    const DataGroup& group = m_groups[number];
    if (!group.IsTofd()) {
      if (const auto depth = group.Depths()) view["depth"] = AxisJson(*depth, "sample");
    } else if (const std::string why = WhyNoTofdScale(group); why.empty()) {
      view["tofdDepths"] = TableJson(group.TofdDepths());
    } else {
      m_made.missing.push_back(Title(number) + ": no depths: " + why);
    }
  }

  /// The largest amplitudes and, within the limit, the samples; then the C-scans of the same cells.
  void AddAScans(std::size_t number, std::vector<bool>& isLayer) {
    const DataGroup& group = m_groups[number];
    const Samples samples = group.Samples();
    Json view = Frame(group);
    view["samples"] = AxisJson(group.Times(), "sample");
    if (const auto path = group.HalfPaths()) view["path"] = AxisJson(*path, "sample");
    AddDepths(view, number);
    view["amplitude"] = AmplitudeJson(group);
    view["wave"] = group.IsTofd();
    view["signed"] = samples.IsSigned();
    view["gates"] = GatesJson(group);
    if (const auto dac = DacOf(group)) view["dac"] = DacJson(group, *dac);
    if (Json damaged = DamagedJson(samples); !damaged.empty()) view["damaged"] = std::move(damaged);
    view["layers"].push_back(Layer(group));
    view["ascans"] = PackAScans(samples, group);
    for (std::size_t index = 0; index < m_groups.size(); ++index) {
      const DataGroup& cscan = m_groups[index];
      if (isLayer[index] || !IsCScan(cscan) || !HaveSameCells(group, cscan)) continue;
      isLayer[index] = true;
      Try([&] { view["layers"].push_back(Layer(cscan)); });
    }
    m_made.views.push_back(std::move(view));
  }

  void AddCScan(std::size_t number) {
    const DataGroup& group = m_groups[number];
    Json view = Frame(group);
    view["layers"].push_back(Layer(group));
    m_made.views.push_back(std::move(view));
  }

  Json PackAScans(const Samples& samples, const DataGroup& group) {
    const std::uint64_t cells = samples.CellQuantity();
    const std::uint64_t vector = samples.SamplesPerCell();
    if (vector > m_room / 2 / cells) {
      m_made.missing.push_back(
          "A-scans of " + group.Caption() + ": " + Bytes(2 * vector * cells) + " of samples and " +
          Bytes(m_room) + " of the limit of " + Bytes(m_limit) +
          " left; only the largest amplitude of each A-scan is in this report");
      return nullptr;
    }
    m_room -= 2 * vector * cells;
    std::vector<std::uint16_t> all;
    all.reserve(cells * vector);
    for (std::uint64_t cell = 0; cell < cells; ++cell)
      for (const std::int32_t value : samples.Values(cell))
        all.push_back(static_cast<std::uint16_t>(value));
    return m_made.Pack(all, m_quiet);
  }

  /// The gates of the channel that stand still, their ends as places between samples.
  [[nodiscard]] static Json GatesJson(const DataGroup& group) {
    Json gates = Json::array();
    for (const PlacedGate& placed : group.Gates()) {
      if (!placed.isPlaced) continue;
      const CGGateTypeDescr& gate = *placed.gate;
      gates.push_back(
          {{"name", gate.name.empty() ? "gate " + std::to_string(gate.gateId) : ToUtf8(gate.name)},
           {"id", gate.gateId},
           {"from", placed.from},
           {"to", placed.to},
           {"above", gate.positiveLevel},
           {"below", gate.negativeLevel},
           {"polarity", static_cast<std::uint32_t>(gate.polarity)}});
    }
    return gates;
  }

  /// The curve as straight lines in dB over places between samples.
  [[nodiscard]] static Json DacJson(const DataGroup& group, const DacCurve& dac) {
    Json points = Json::array();
    for (const DacCurve::Point& point : dac.Points())
      points.push_back({group.Times().IndexOf(point.time), group.Decibels(point.percent)});
    return {{"name", dac.Name()}, {"points", std::move(points)}};
  }

  const std::vector<DataGroup>& m_groups;
  std::uint64_t m_room;  ///< bytes that A-scans may still take
  std::uint64_t m_limit;
  bool m_quiet;
  ReportViews m_made;
};

}  // namespace

std::size_t ReportViews::Pack(const std::vector<std::uint16_t>& values, bool quiet) {
  packed.push_back(PackValues(values, quiet));
  return packed.size() - 1;
}

std::map<std::size_t, std::size_t> ReportViews::OfAScans() const {
  std::map<std::size_t, std::size_t> found;
  for (std::size_t view = 0; view < views.size(); ++view)
    if (views[view].contains("ascans"))
      found.emplace(views[view]["group"].get<std::size_t>(), view);
  return found;
}

std::map<std::size_t, std::size_t> ReportViews::WithSamples() const {
  std::map<std::size_t, std::size_t> found = OfAScans();
  std::erase_if(found, [&](const auto& view) { return views[view.second]["ascans"].is_null(); });
  return found;
}

Json AxisJson(const AxisScale& axis, const char* plainUnit) {
  return {{"unit", axis.symbol.empty() ? plainUnit : axis.symbol},
          {"plain", axis.symbol.empty()},
          {"first", axis.first},
          {"step", axis.step},
          {"quantity", axis.quantity}};
}

ReportViews MakeViews(const Inspection& inspection, std::uint64_t sampleLimit, bool quiet) {
  return ViewMaker(inspection, sampleLimit, quiet).Make();
}

}  // namespace utdata::program
