#include "report/views.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "document/data_group.h"
#include "report/packing.h"
#include "samples/group_axes.h"
#include "samples/group_samples.h"
#include "terminal/failure.h"
#include "terminal/quantity.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

Json AxisJson(const ShownAxis& axis, const char* plainUnit) {
  return {{"unit", axis.symbol.empty() ? plainUnit : axis.symbol},
          {"plain", axis.symbol.empty()},
          {"first", axis.first},
          {"step", axis.step},
          {"quantity", axis.quantity}};
}

bool IsCScan(const CGDataTypeFDD& group) {
  return PlainClass(group) == gdata_CScanAmplitude || PlainClass(group) == gdata_CScanPosition;
}

bool HaveSameCells(const CGDataTypeFDD& a, const CGDataTypeFDD& b) {
  return a.channelId == b.channelId && a.subChannelId == b.subChannelId &&
         a.GetPatchID() == b.GetPatchID() && a.rowQuantity == b.rowQuantity &&
         a.columnQuantity == b.columnQuantity;
}

std::string Name(const CGDataTypeFDD& group) {
  std::string label = Label(group);
  label.erase(label.find_last_not_of(' ') + 1);
  return label;
}

/// Percent of full scale of one step of the samples, on either side of their zero.
Json AmplitudeJson(const CGDataTypeFDD& group, const GroupAxes& axes) {
  const double zero = ZeroOfSamples(group);
  return {{"zero", zero}, {"above", axes.Percent(zero + 1)}, {"below", -axes.Percent(zero - 1)}};
}

class ViewMaker {
 public:
  ViewMaker(const Document& document, std::uint64_t sampleLimit, bool quiet)
      : m_host(document.GetHost()),
        m_groups(document.Groups().data.begin(), document.Groups().data.end()),
        m_gates(document.Groups().gates.begin(), document.Groups().gates.end()),
        m_room(sampleLimit),
        m_limit(sampleLimit),
        m_quiet(quiet) {}

  ReportViews Make() {
    std::vector<bool> isLayer(m_groups.size());
    for (std::size_t index = 0; index < m_groups.size(); ++index) {
      if (PlainClass(*m_groups[index]) != gdata_AScan) continue;
      Try([&] { AddAScans(index, isLayer); });
    }
    for (std::size_t index = 0; index < m_groups.size(); ++index) {
      const CGDataTypeFDD& group = *m_groups[index];
      if (isLayer[index] || PlainClass(group) == gdata_AScan) continue;
      if (IsCScan(group))
        Try([&] { AddCScan(index); });
      else
        m_made.missing.push_back(Title(index) + ": " + ClassName(group) + " data is not drawn");
    }
    return std::move(m_made);
  }

 private:
  [[nodiscard]] std::string Title(std::size_t index) const {
    return "data group " + std::to_string(index) + " (" + Name(*m_groups[index]) + ")";
  }

  /// A group that cannot be shown is told of in the page, which shows the others.
  template <class Job>
  void Try(Job&& job) {
    try {
      job();
    } catch (const Failure& failure) {
      m_made.missing.push_back(failure.what());
    }
  }

  std::size_t Pack(const std::vector<std::uint16_t>& values) {
    m_made.packed.push_back(PackValues(values, m_quiet));
    return m_made.packed.size() - 1;
  }

  static Json Frame(const CGDataTypeFDD& group, const GroupAxes& axes) {
    return {{"label", Name(group)},
            {"kind", ClassName(group)},
            {"columns", AxisJson(axes.Columns(), "column")},
            {"rows", AxisJson(axes.Rows(), "row")},
            {"layers", Json::array()}};
  }

  Json Layer(const GroupSamples& samples, const CGDataTypeFDD& group, const GroupAxes& axes) {
    const Peaks peaks = samples.FindPeaks(AllCells(group), m_quiet);
    std::vector<std::uint16_t> values(peaks.raw.size());
    std::transform(peaks.raw.begin(), peaks.raw.end(), values.begin(), [&](std::uint16_t raw) {
      return static_cast<std::uint16_t>(samples.ValueOf(raw));
    });
    const bool hasPositions = PlainClass(group) == gdata_CScanPosition;
    Json layer = {{"label",
                   PlainClass(group) == gdata_AScan ? "largest amplitude"
                                                    : ClassName(group) + " " + Name(group)},
                  {"values", Pack(values)},
                  {"signed", IsSigned(group)},
                  {"strongest", peaks.strongest.cell}};
    if (PlainClass(group) != gdata_AScan) layer["gate"] = group.gateId;
    if (!hasPositions) layer["amplitude"] = AmplitudeJson(group, axes);
    if (hasPositions) layer["position"] = AxisJson(axes.Positions(), "value");
    if (const auto path = axes.PositionsOnHalfPath(); hasPositions && path)
      layer["path"] = AxisJson(*path, "value");
    return layer;
  }

  [[nodiscard]] static bool IsSigned(const CGDataTypeFDD& group) {
    return group.GetDataType() == kvt_Int8 || group.GetDataType() == kvt_Int16;
  }

  /// The largest amplitudes and, if there is room, the samples; then the C-scans of the same cells.
  void AddAScans(std::size_t number, std::vector<bool>& isLayer) {
    const CGDataTypeFDD& group = *m_groups[number];
    const GroupSamples samples(m_host, group, Title(number));
    const GroupAxes axes(m_host, group);
    Json view = Frame(group, axes);
    view["samples"] = AxisJson(axes.Samples(), "sample");
    if (const auto path = axes.HalfPath()) view["path"] = AxisJson(*path, "sample");
    view["angle"] = std::isfinite(group.probeAngle) ? group.probeAngle : 0.0F;
    view["thickness"] = std::isfinite(group.partThickness) ? group.partThickness * 1e3 : 0.0;
    view["amplitude"] = AmplitudeJson(group, axes);
    view["wave"] = group.tofd == 1;
    view["signed"] = IsSigned(group);
    view["gates"] = GatesJson(group);
    view["layers"].push_back(Layer(samples, group, axes));
    view["ascans"] = PackAScans(samples, group);
    for (std::size_t index = 0; index < m_groups.size(); ++index) {
      const CGDataTypeFDD& cscan = *m_groups[index];
      if (isLayer[index] || !IsCScan(cscan) || !HaveSameCells(group, cscan)) continue;
      isLayer[index] = true;
      Try([&] {
        const GroupSamples values(m_host, cscan, Title(index));
        view["layers"].push_back(Layer(values, cscan, GroupAxes(m_host, cscan)));
      });
    }
    m_made.views.push_back(std::move(view));
  }

  void AddCScan(std::size_t number) {
    const CGDataTypeFDD& group = *m_groups[number];
    const GroupSamples samples(m_host, group, Title(number));
    const GroupAxes axes(m_host, group);
    Json view = Frame(group, axes);
    view["layers"].push_back(Layer(samples, group, axes));
    m_made.views.push_back(std::move(view));
  }

  Json PackAScans(const GroupSamples& samples, const CGDataTypeFDD& group) {
    const std::uint64_t cells = samples.Cells().Cells();
    const std::uint64_t vector = samples.Cells().SamplesPerCell();
    if (vector > m_room / 2 / cells) {
      m_made.missing.push_back(
          "A-scans of " + Name(group) + ": " + Bytes(2 * vector * cells) + " of samples and " +
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
    return Pack(all);
  }

  /// The gates of the channel that stand still, their ends as places between samples.
  [[nodiscard]] Json GatesJson(const CGDataTypeFDD& group) const {
    Json gates = Json::array();
    if (group.sampleUnits != kvt_UnitSecond || !(group.sampleResolution > 0)) return gates;
    for (const CGGateTypeDescr* gate : m_gates) {
      if (gate->channelId != group.channelId || gate->enabled == 0 ||
          gate->reference != ggate_RefInitialPulse)
        continue;
      const double from = (double{gate->start} - group.sampleOffset) / group.sampleResolution;
      const double width = double{gate->width} / group.sampleResolution;
      gates.push_back(
          {{"name",
            gate->name.empty() ? "gate " + std::to_string(gate->gateId) : ToUtf8(gate->name)},
           {"id", gate->gateId},
           {"from", from},
           {"to", from + width},
           {"above", gate->positiveLevel},
           {"below", gate->negativeLevel},
           {"polarity", static_cast<std::uint32_t>(gate->polarity)}});
    }
    return gates;
  }

  Host& m_host;
  std::vector<const CGDataTypeFDD*> m_groups;
  std::vector<const CGGateTypeDescr*> m_gates;
  std::uint64_t m_room;  ///< bytes that A-scans may still take
  std::uint64_t m_limit;
  bool m_quiet;
  ReportViews m_made;
};

}  // namespace

ReportViews MakeViews(const Document& document, std::uint64_t sampleLimit, bool quiet) {
  return ViewMaker(document, sampleLimit, quiet).Make();
}

}  // namespace utdata::program
