#include "demo/butt_weld.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <utility>

#include "demo/echoes.h"
#include "terminal/progress.h"

namespace utdata::program {
namespace {

constexpr double degree = std::numbers::pi / 180;

/// How much of a flaw the beam sees at a place along the weld.
double PartInBeam(const ButtWeld& weld, const WeldFlaw& flaw, double y) {
  const double beside = std::max({flaw.from - y, y - flaw.to, 0.0});
  return BeamFactor(beside, weld.beamHalfWidth);
}

/// One recorded channel or beam: A-scans along the weld.
template <class AddEchoes>
std::vector<std::int16_t> SimulateRows(const ButtWeld& weld,
                                       std::uint32_t samplesOfRow,
                                       double sampleStep,
                                       double start,
                                       GrainNoise noise,
                                       AddEchoes&& addEchoes) {
  std::vector<std::int16_t> digitised;
  digitised.reserve(std::size_t{weld.rows} * samplesOfRow);
  std::vector<double> samples(samplesOfRow);
  for (std::uint32_t row = 0; row < weld.rows; ++row) {
    std::fill(samples.begin(), samples.end(), 0);
    addEchoes(EchoTrain{samples, sampleStep, start}, row * weld.rowStep);
    noise.AddTo(samples);
    std::transform(samples.begin(), samples.end(), std::back_inserter(digitised), Digitise);
  }
  return digitised;
}

std::vector<std::int16_t> SimulateBeam(const ButtWeld& weld, std::size_t side, std::uint32_t beam) {
  const Pulse pulse(weld.frequency, weld.bandwidth);
  return SimulateRows(
      weld,
      weld.samples,
      weld.sampleStep,
      weld.BeamStartTime(),
      GrainNoise(pulse, weld.sampleStep, weld.noise, weld.seed + side * weld.beams + beam),
      [&](const EchoTrain& train, double y) {
        for (const WeldFlaw& flaw : weld.flaws)
          for (const Sight& sight : SightsOf(weld, flaw, side)) {
            const double part = PartInBeam(weld, flaw, y) *
                                BeamFactor(sight.angle - weld.AngleOf(beam), weld.beamHalfAngle);
            train.Add(pulse, 2 * sight.halfPath / weld.shearSpeed, flaw.amplitudes[side] * part);
          }
      });
}

/// Lateral wave and back wall have opposite phases, as have the upper and the lower tip of a flaw.
std::vector<std::int16_t> SimulateTofd(const ButtWeld& weld) {
  const Pulse pulse(weld.tofdFrequency, weld.bandwidth);
  const auto add = [&](const EchoTrain& train, double x, double depth, double amplitude) {
    train.Add(pulse, 2 * TofdHalfPath(weld, x, depth) / weld.longitudinalSpeed, amplitude);
  };
  return SimulateRows(
      weld,
      weld.tofdSamples,
      weld.tofdStep,
      weld.tofdStart,
      GrainNoise(pulse, weld.tofdStep, weld.noise, weld.seed + weldSides * weld.beams),
      [&](const EchoTrain& train, double y) {
        add(train, weld.centre, 0, 0.3);
        add(train, weld.centre, weld.thickness, -0.8);
        for (const WeldFlaw& flaw : weld.flaws)
          add(train, flaw.x, flaw.depth, flaw.diffracted * PartInBeam(weld, flaw, y));
      });
}

}  // namespace

ButtWeld::ButtWeld() {
  const double lackDepth = 8e-3;
  const double bevel =
      centre - rootGap / 2 - (thickness - rootFace - lackDepth) * std::tan(bevelAngle * degree);
  flaws = {{"crack at the root", centre, thickness, 30e-3, 50e-3, {0.7, 0.7}, 0},
           {"tip of the crack", centre, 17e-3, 30e-3, 50e-3, {0.2, 0.2}, 0.25},
           {"lack of fusion", bevel, lackDepth, 62e-3, 78e-3, {0.6, 0.25}, 0.15}};
  int pore = 0;
  for (const auto& [x, depth, y] : {std::array{51.0, 11.0, 96.0},
                                    std::array{52.5, 13.0, 100.0},
                                    std::array{50.0, 9.0, 104.0},
                                    std::array{53.0, 12.0, 108.0}})
    flaws.push_back({"pore " + std::to_string(++pore),
                     x * 1e-3,
                     depth * 1e-3,
                     y * 1e-3,
                     y * 1e-3,
                     {0.15, 0.15},
                     0.05});
}

std::vector<Sight> SightsOf(const ButtWeld& weld, const WeldFlaw& flaw, std::size_t side) {
  const double distance = std::abs(flaw.x - weld.IndexPoint(side));
  std::vector<Sight> sights;
  double before = 0;
  for (const auto& [leg, down] : {std::pair(1, flaw.depth),
                                  std::pair(2, 2 * weld.thickness - flaw.depth),
                                  std::pair(3, 2 * weld.thickness + flaw.depth)}) {
    // What lies in a wall is met once, where one leg ends and the next begins.
    if (down != before)
      sights.push_back({leg, std::atan2(distance, down) / degree, std::hypot(distance, down)});
    before = down;
  }
  return sights;
}

double TofdHalfPath(const ButtWeld& weld, double x, double depth) {
  const double half = weld.separation / 2, beside = x - weld.centre;
  return (std::hypot(half + beside, depth) + std::hypot(half - beside, depth)) / 2;
}

std::vector<std::vector<std::int16_t>> SimulateWeld(const ButtWeld& weld, bool quiet) {
  std::vector<std::vector<std::int16_t>> recorded;
  Progress progress("simulating", quiet);
  for (std::size_t side = 0; side < weldSides; ++side)
    for (std::uint32_t beam = 0; beam < weld.beams; ++beam) {
      progress.At(recorded.size(), weldSides * weld.beams);
      recorded.push_back(SimulateBeam(weld, side, beam));
    }
  recorded.push_back(SimulateTofd(weld));
  return recorded;
}

}  // namespace utdata::program
