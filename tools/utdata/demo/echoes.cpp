#include "demo/echoes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace utdata::program {

Pulse::Pulse(double frequency, double bandwidth)
    : m_angularFrequency(2 * std::numbers::pi * frequency),
      m_sigma(std::sqrt(halvingExponent / 2) / (std::numbers::pi * frequency * bandwidth / 200)) {}

double Pulse::At(double time) const {
  const double ratio = time / m_sigma;
  return std::cos(m_angularFrequency * time) * std::exp(-ratio * ratio / 2);
}

void EchoTrain::Add(const Pulse& pulse, double time, double amplitude) const {
  time -= start;
  const double last = static_cast<double>(samples.size()) - 1;
  const double from = std::max(0.0, std::ceil((time - pulse.HalfLength()) / sampleStep));
  const double to = std::min(last, std::floor((time + pulse.HalfLength()) / sampleStep));
  for (double sample = from; sample <= to; ++sample)
    samples[static_cast<std::size_t>(sample)] += amplitude * pulse.At(sample * sampleStep - time);
}

GrainNoise::GrainNoise(const Pulse& pulse, double sampleStep, double level, std::uint64_t seed)
    : m_random(seed) {
  const auto reach = static_cast<int>(pulse.HalfLength() / sampleStep);
  double energy = 0;
  for (int sample = -reach; sample <= reach; ++sample) {
    m_shape.push_back(pulse.At(sample * sampleStep));
    energy += m_shape.back() * m_shape.back();
  }
  for (double& value : m_shape) value *= level / std::sqrt(energy);
}

void GrainNoise::AddTo(std::span<double> samples) {
  m_grains.resize(samples.size() + m_shape.size());
  for (double& grain : m_grains) grain = Grain();
  for (std::size_t sample = 0; sample < samples.size(); ++sample)
    for (std::size_t index = 0; index < m_shape.size(); ++index)
      samples[sample] += m_grains[sample + index] * m_shape[index];
}

/// Nearly normal, of variance 1: the sum of four uniform numbers, the same on every machine.
double GrainNoise::Grain() {
  double sum = -2;
  for (int term = 0; term < 4; ++term) sum += static_cast<double>(m_random() >> 11U) * 0x1p-53;
  return sum * std::sqrt(3.0);
}

double BeamFactor(double angle, double halfAngle) {
  const double part = angle / halfAngle;
  return std::exp(-halvingExponent * part * part);
}

std::int16_t Digitise(double value) {
  constexpr double fullScale = simulatedFullScale;
  return static_cast<std::int16_t>(std::lround(std::clamp(value, -1.0, 1.0) * fullScale));
}

}  // namespace utdata::program
