#include "document/data_group.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <new>
#include <utility>

#include "document/document.h"
#include "terminal/progress.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

constexpr std::array<std::pair<std::uint32_t, const char*>, 16> classNames = {{
    {gdata_AScan, "A-scan"},
    {gdata_CScanAmplitude, "C-scan amplitude"},
    {gdata_CScanPosition, "C-scan position"},
    {gdata_EddyCurrentX, "eddy current X"},
    {gdata_EddyCurrentY, "eddy current Y"},
    {gdata_Analog, "analog"},
    {gdata_AnalogScaled, "analog scaled"},
    {gdata_AnalogCounter, "analog counter"},
    {gdata_AScanMerged, "A-scan merged"},
    {gdata_AScanProcessed, "A-scan processed"},
    {gdata_CScanPositionFirst, "C-scan first position"},
    {gdata_CScanPositionLast, "C-scan last position"},
    {gdata_CScanThickness, "C-scan thickness"},
    {gdata_CScanStatistic, "C-scan statistic"},
    {gdata_CScanAngle, "C-scan angle"},
    {gdata_BeamSimulation, "beam simulation"},
}};

constexpr std::array<const char*, 6> sampleTypeNames = {nullptr, nullptr, "i8", "u8", "i16", "u16"};

std::string ChannelPart(const CGDataTypeFDD& group, bool byName) {
  if (byName && group.channelName[0] != 0) return ToUtf8(group.channelName) + " ";
  const std::string number = std::to_string(group.channelId + 1);
  return std::string(number.size() < 2 ? "C " : "C") + number + " ";
}

std::string GatePart(const CGDataTypeFDD& group, bool byName) {
  if (byName && group.gateName[0] != 0) return ToUtf8(group.gateName) + " ";
  return "G" + std::to_string(group.gateId) + " ";
}

nlohmann::ordered_json AxisJson(std::uint32_t quantity, float resolution, float offset) {
  return {{"quantity", quantity},
          {"resolution", JsonNumber(resolution)},
          {"offset", JsonNumber(offset)}};
}

/// Sample values of 16 bits and less are whole numbers; they are shown as such.
nlohmann::ordered_json SampleValueJson(float value) {
  if (value == std::trunc(value) && std::abs(value) < 1e15F)
    return static_cast<std::int64_t>(value);
  return JsonNumber(value);
}

}  // namespace

void AssignBookmarkType(CGDataTypeFDD& group) {
  constexpr auto unset = static_cast<eDataBookmarkType>(0xFFFFFFFF);
  if (group.GetDataBookmarkType() != bookmark_None && group.GetDataBookmarkType() != unset) return;
  const bool tofd = group.tofd == 1;
  eDataBookmarkType type = tofd ? bookmark_Tofd : bookmark_Single;
  if (IsMaster(group) || group.subChannelId != 0)
    type = tofd ? bookmark_MultiChannelTofd : bookmark_MultiChannel;
  if (group.gateId == couplingGate) type = bookmark_Coupling;
  group.SetDataBookmarkType(type);
}

bool IsMaster(const CGDataTypeFDD& group) {
  return (static_cast<std::uint32_t>(group.dataClass) & gdata_MultiChannelMaster) != 0;
}

std::uint32_t PlainClass(const CGDataTypeFDD& group) {
  return static_cast<std::uint32_t>(group.dataClass) &
         ~static_cast<std::uint32_t>(gdata_MultiChannelMaster);
}

bool HoldsAmplitudes(const CGDataTypeFDD& group) {
  constexpr std::array<std::uint32_t, 4> classes = {
      gdata_AScan, gdata_CScanAmplitude, gdata_AScanMerged, gdata_AScanProcessed};
  return std::find(classes.begin(), classes.end(), PlainClass(group)) != classes.end();
}

std::string Label(const CGDataTypeFDD& group) {
  return ChannelPart(group, true) + GatePart(group, true);
}
std::string IdLabel(const CGDataTypeFDD& group) {
  return ChannelPart(group, false) + GatePart(group, false);
}

std::string ClassName(const CGDataTypeFDD& group) {
  const std::uint32_t plain = PlainClass(group);
  const auto* found = std::find_if(classNames.begin(), classNames.end(), [=](const auto& entry) {
    return entry.first == plain;
  });
  const std::string name =
      found == classNames.end() ? "class " + std::to_string(plain) : found->second;
  return IsMaster(group) ? name + " (all sub-channels)" : name;
}

std::string SampleTypeName(const CGDataTypeFDD& group) {
  const auto type = static_cast<std::uint32_t>(group.GetDataType());
  if (type < sampleTypeNames.size() && sampleTypeNames[type]) return sampleTypeNames[type];
  return "type " + std::to_string(type);
}

std::string SamplesHash(const CGDataTypeFDD& group, bool quiet) {
  if (!group.samples.group) return {};
  const MappedSamples samples(group);
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                        EVP_MD_CTX_free);
  if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1)
    throw std::bad_alloc();
  Progress progress("hashing " + Label(group), quiet);
  constexpr std::uint64_t piece = std::uint64_t{4} << 20U;
  for (std::uint64_t at = 0; at < samples.Size(); at += piece) {
    const std::uint64_t size = std::min(piece, samples.Size() - at);
    if (EVP_DigestUpdate(context.get(), samples.Data() + at, size) != 1) throw std::bad_alloc();
    progress.At(at + size, samples.Size());
  }
  std::array<unsigned char, 32> digest{};
  if (EVP_DigestFinal_ex(context.get(), digest.data(), nullptr) != 1) throw std::bad_alloc();
  std::string text;
  constexpr const char* digits = "0123456789abcdef";
  for (const unsigned char byte : digest) text += {digits[byte >> 4U], digits[byte & 0xFU]};
  return text;
}

nlohmann::ordered_json JsonNumber(float value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  double shortest = value;
  std::from_chars(text.data(), end, shortest);
  return shortest;
}

nlohmann::ordered_json DataGroupJson(const CGDataTypeFDD& group) {
  return {
      {"label", Label(group)},
      {"id_label", IdLabel(group)},
      {"class", PlainClass(group)},
      {"master", IsMaster(group)},
      {"channel", group.channelId},
      {"sub_channel", group.subChannelId},
      {"gate", group.gateId},
      {"patch", group.GetPatchID()},
      {"bookmark", static_cast<std::uint32_t>(group.GetDataBookmarkType())},
      {"type", SampleTypeName(group)},
      {"rectified", group.GetDataRectification() != gdata_RectifNone},
      {"columns", AxisJson(group.columnQuantity, group.columnResolution, group.columnOffset)},
      {"rows", AxisJson(group.rowQuantity, group.rowResolution, group.rowOffset)},
      {"samples", AxisJson(group.sampleQuantity, group.sampleResolution, group.sampleOffset)},
      {"minimum", SampleValueJson(group.dataMinimum)},
      {"maximum", SampleValueJson(group.dataMaximum)},
      {"sample_bytes", group.sampleSize},
      {"table_bytes", group.samples.size},
  };
}

}  // namespace utdata::program
