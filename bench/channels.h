// The load that the container is measured with: channel records of 40 values each, and the same
// values as rows for its peers.
#pragma once

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "interfaces/kvtiff19.h"

namespace utdata::bench {

inline constexpr std::size_t kGroups = 10'000;

using Channel = CGChanTypeDescr;

inline constexpr std::array kWholes = {&Channel::channelId,
                                       &Channel::firstProbeId,
                                       &Channel::secondProbeId,
                                       &Channel::averaging,
                                       &Channel::compression,
                                       &Channel::dacId,
                                       &Channel::color};
inline constexpr std::array kFlags = {&Channel::tofd,
                                      &Channel::dacEnabled,
                                      &Channel::synchronised,
                                      &Channel::enabled};
inline constexpr std::array kReals = {&Channel::gain,
                                      &Channel::referenceGain,
                                      &Channel::rangeStart,
                                      &Channel::range,
                                      &Channel::delay,
                                      &Channel::soundSpeed,
                                      &Channel::refractedAngle,
                                      &Channel::skew,
                                      &Channel::digitizingFrequency,
                                      &Channel::repetitionFrequency,
                                      &Channel::pulseWidth,
                                      &Channel::pulseVoltage,
                                      &Channel::filterLow,
                                      &Channel::filterHigh,
                                      &Channel::smoothing,
                                      &Channel::reject,
                                      &Channel::indexOffset,
                                      &Channel::scanOffset,
                                      &Channel::focalDepth,
                                      &Channel::apertureStart,
                                      &Channel::apertureSize,
                                      &Channel::probeSeparation,
                                      &Channel::synchroLevel,
                                      &Channel::transferCorrection,
                                      &Channel::attenuationCorrection};
inline constexpr std::array kTexts = {&Channel::name, &Channel::comment};

/// A channel's values without the record: 13 whole numbers, 25 reals, 2 texts.
struct Row {
  static constexpr std::size_t wholes = kWholes.size() + kFlags.size() + 2;
  static constexpr std::size_t reals = kReals.size();
  static constexpr std::size_t texts = kTexts.size();
  static constexpr std::size_t textSize = 32;
  static_assert(wholes + reals + texts == 40);

  std::uint32_t whole[wholes];
  float real[reals];
  char text[texts][textSize];
};

/// The values of a channel; its texts must be ASCII and shorter than Row::textSize.
Row ToRow(const Channel& channel);
/// A new channel with a row's values.
std::unique_ptr<Channel> FromRow(const Row& row);

/// The n-th channel of the load.
Channel MakeChannel(std::uint32_t n);
/// The whole load, as records and as rows.
std::vector<Channel> Channels();
std::vector<Row> Rows();
/// Whether `loaded` is the load, in order. A benchmark asks before it reports a time.
bool IsTheLoad(const std::vector<std::unique_ptr<Channel>>& loaded);

/// Reports the time of one of the load's groups beside that of an iteration.
void PerGroup(benchmark::State& state);

/// A folder of its own below the working directory (a real disk, not a memory file system), removed
/// with its content at the end.
class Workplace {
 public:
  Workplace();
  ~Workplace();
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;
  [[nodiscard]] std::filesystem::path File(const char* name) const { return m_folder / name; }

 private:
  std::filesystem::path m_folder;
};

}  // namespace utdata::bench
