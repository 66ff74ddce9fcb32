#include "bench/channels.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace utdata::bench {

Row ToRow(const Channel& channel) {
  Row row{};
  std::size_t at = 0;
  for (auto member : kWholes) row.whole[at++] = channel.*member;
  for (auto member : kFlags) row.whole[at++] = static_cast<std::uint32_t>(channel.*member);
  row.whole[at++] = channel.waveMode;
  row.whole[at] = channel.rectification;
  for (std::size_t n = 0; n < Row::reals; ++n) row.real[n] = channel.*kReals[n];
  for (std::size_t n = 0; n < Row::texts; ++n) {
    const std::wstring& text = channel.*kTexts[n];
    std::transform(
        text.begin(), text.end(), row.text[n], [](wchar_t c) { return static_cast<char>(c); });
  }
  return row;
}

std::unique_ptr<Channel> FromRow(const Row& row) {
  auto channel = std::make_unique<Channel>();
  std::size_t at = 0;
  for (auto member : kWholes) (*channel).*member = row.whole[at++];
  for (auto member : kFlags) (*channel).*member = static_cast<std::int32_t>(row.whole[at++]);
  channel->waveMode = static_cast<gdata_enumWaveMode>(row.whole[at++]);
  channel->rectification = static_cast<gdata_enumRectif>(row.whole[at]);
  for (std::size_t n = 0; n < Row::reals; ++n) (*channel).*kReals[n] = row.real[n];
  for (std::size_t n = 0; n < Row::texts; ++n) {
    ((*channel).*kTexts[n]).assign(row.text[n], row.text[n] + std::strlen(row.text[n]));
  }
  return channel;
}

Channel MakeChannel(std::uint32_t n) {
  Channel channel;
  std::uint32_t value = n;
  for (auto member : kWholes) channel.*member = value++;
  for (auto member : kFlags) channel.*member = static_cast<std::int32_t>(value++ % 2);
  channel.waveMode = static_cast<gdata_enumWaveMode>(n % 3);
  channel.rectification = static_cast<gdata_enumRectif>(n % 4);
  for (auto member : kReals) channel.*member = static_cast<float>(value++) * 0.37f;
  channel.name = L"Channel " + std::to_wstring(n);
  channel.comment = L"calibrated on block " + std::to_wstring(n % 10);
  return channel;
}

std::vector<Channel> Channels() {
  std::vector<Channel> channels;
  for (std::uint32_t n = 0; n < kGroups; ++n) channels.push_back(MakeChannel(n));
  return channels;
}

std::vector<Row> Rows() {
  std::vector<Row> rows;
  for (const Channel& channel : Channels()) rows.push_back(ToRow(channel));
  return rows;
}

bool IsTheLoad(const std::vector<std::unique_ptr<Channel>>& loaded) {
  if (loaded.size() != kGroups) return false;
  for (std::uint32_t n = 0; n < kGroups; ++n) {
    if (!(*loaded[n] == MakeChannel(n))) return false;
  }
  return true;
}

void PerGroup(benchmark::State& state) {
  state.counters["per_group"] = benchmark::Counter(
      static_cast<double>(kGroups),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

Workplace::Workplace()
    : m_folder(std::filesystem::current_path() / ("utdata-bench-" + std::to_string(getpid()))) {
  std::filesystem::remove_all(m_folder);
  std::filesystem::create_directory(m_folder);
}

Workplace::~Workplace() {
  std::error_code ignored;  // the folder may be gone already
  std::filesystem::remove_all(m_folder, ignored);
}

}  // namespace utdata::bench
