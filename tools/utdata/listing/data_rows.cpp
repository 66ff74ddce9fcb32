#include "listing/data_rows.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>

#include "terminal/output.h"
#include "terminal/progress.h"
#include "utdata/rdata.h"

namespace utdata::program {
namespace {

using Json = nlohmann::ordered_json;

Json IndexOf(const std::optional<DataGroup>& group) {
  return group ? Json(group->Index()) : Json();
}

Json AxisJson(std::uint32_t quantity, float resolution, float offset) {
  return {{"quantity", quantity},
          {"resolution", JsonNumber(resolution)},
          {"offset", JsonNumber(offset)}};
}

/// Sample values of 16 bits and less are whole numbers; they are shown as such.
Json SampleValueJson(float value) {
  constexpr float largestWhole = 1e15F;
  if (value == std::trunc(value) && std::abs(value) < largestWhole)
    return static_cast<std::int64_t>(value);
  return JsonNumber(value);
}

std::vector<std::size_t> ElementRows(const DataGroup& master) {
  std::vector<std::size_t> rows;
  for (const DataGroup& element : master.Elements()) rows.push_back(element.Index());
  return rows;
}

/// "0 to 80, 83": numbers that rise, with those that follow each other put together.
std::string RunsText(const std::vector<std::size_t>& numbers) {
  std::string text;
  for (std::size_t at = 0; at < numbers.size();) {
    std::size_t end = at + 1;
    while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
    const bool isRun = end - at > 2;
    if (!isRun) end = at + 1;
    text += (text.empty() ? "" : ", ") + std::to_string(numbers[at]);
    if (isRun) text += " to " + std::to_string(numbers[end - 1]);
    at = end;
  }
  return text;
}

}  // namespace

Json DataGroupJson(const DataGroup& group) {
  const CGDataTypeFDD& stored = group.Stored();
  return {
      {"label", group.Label()},
      {"id_label", group.IdLabel()},
      {"class", group.Class()},
      {"master", group.IsMaster()},
      {"channel", stored.channelId},
      {"sub_channel", stored.subChannelId},
      {"gate", stored.gateId},
      {"patch", stored.GetPatchID()},
      {"bookmark", static_cast<std::uint32_t>(group.Descriptor().GetDataBookmarkType())},
      {"probe_angle", JsonNumber(stored.probeAngle)},
      {"probe_skew", JsonNumber(stored.probeSkew)},
      {"tofd", group.IsTofd()},
      {"probe_separation", JsonNumber(stored.probeSeparation)},
      {"type", group.TypeName()},
      {"rectified", stored.GetDataRectification() != gdata_RectifNone},
      {"columns", AxisJson(stored.columnQuantity, stored.columnResolution, stored.columnOffset)},
      {"rows", AxisJson(stored.rowQuantity, stored.rowResolution, stored.rowOffset)},
      {"samples", AxisJson(stored.sampleQuantity, stored.sampleResolution, stored.sampleOffset)},
      {"minimum", SampleValueJson(stored.dataMinimum)},
      {"maximum", SampleValueJson(stored.dataMaximum)},
      {"sample_bytes", stored.sampleSize},
      {"table_bytes", stored.samples.size},
  };
}

Json DataRowJson(const DataGroup& group) {
  Json json = DataGroupJson(group);
  json["item"] = group.IsListed();
  json["matched"] = IndexOf(group.Matched());
  json["meridio"] = IndexOf(group.MeridioAmplitudes());
  json["master_number"] = IndexOf(group.Master());
  return json;
}

Json MastersJson(const Inspection& inspection) {
  Json result = Json::array();
  for (const DataGroup& master : inspection.Masters()) {
    const CRDataTypeDD& descriptor = master.Descriptor();
    result.push_back({{"label", master.Label()},
                      {"id_label", master.IdLabel()},
                      {"class", master.Class()},
                      {"master", true},
                      {"channel", descriptor.channelId},
                      {"gate", descriptor.gateId},
                      {"patch", descriptor.GetPatchID()},
                      {"bookmark", static_cast<std::uint32_t>(descriptor.GetDataBookmarkType())},
                      {"elements", ElementRows(master)},
                      {"matched", IndexOf(master.Matched())}});
  }
  return result;
}

std::string MastersText(const Inspection& inspection) {
  const auto masters = inspection.Masters();
  if (masters.empty()) return {};
  TextTable table({"master", "label", "class", "bookmark", "gathers rows", "matches"});
  for (const DataGroup& master : masters) {
    const auto matched = master.Matched();
    table.Add({std::to_string(master.Index()),
               master.Label(),
               master.ClassName(),
               master.BookmarkName(),
               RunsText(ElementRows(master)),
               matched ? "master " + std::to_string(matched->Index()) : "-"});
  }
  return table.Text();
}

std::string MatchText(const DataGroup& group) {
  if (!group.IsListed()) return "no item";
  if (const auto matched = group.Matched()) return "row " + std::to_string(matched->Index());
  if (const auto amplitudes = group.MeridioAmplitudes())
    return "row " + std::to_string(amplitudes->Index()) + " (Meridio)";
  return "-";
}

std::string SamplesHash(const DataGroup& group, bool quiet) {
  if (!group.HasTable()) return {};
  const std::uint64_t quantity = group.Stored().samples.size;
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                        EVP_MD_CTX_free);
  if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1)
    throw std::bad_alloc();
  Progress progress("hashing " + group.Label(), quiet);
  constexpr std::uint64_t piece = std::uint64_t{4} << 20U;
  for (std::uint64_t at = 0; at < quantity; at += piece) {
    const std::uint64_t size = std::min(piece, quantity - at);
    const std::span<const std::byte> samples = group.Table(at, size);
    if (EVP_DigestUpdate(context.get(), samples.data(), samples.size()) != 1)
      throw std::bad_alloc();
    progress.At(at + size, quantity);
  }
  std::array<unsigned char, 32> digest{};
  if (EVP_DigestFinal_ex(context.get(), digest.data(), nullptr) != 1) throw std::bad_alloc();
  std::string text;
  constexpr const char* digits = "0123456789abcdef";
  for (const unsigned char byte : digest) text += {digits[byte >> 4U], digits[byte & 0xFU]};
  return text;
}

}  // namespace utdata::program
