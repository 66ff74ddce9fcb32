#include "report/packing.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

#include "terminal/progress.h"

namespace utdata::program {
namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20U;

std::vector<std::uint8_t> DifferencePlanes(std::span<const std::uint16_t> values) {
  std::vector<std::uint8_t> planes(2 * values.size());
  std::uint16_t before = 0;
  for (std::size_t index = 0; index < values.size(); ++index) {
    const auto difference = static_cast<std::uint16_t>(values[index] - before);
    planes[index] = static_cast<std::uint8_t>(difference & 0xFFU);
    planes[values.size() + index] = static_cast<std::uint8_t>(difference >> 8U);
    before = values[index];
  }
  return planes;
}

struct EndDeflate {
  void operator()(z_stream* stream) const { deflateEnd(stream); }
};

std::vector<std::uint8_t> Compress(std::vector<std::uint8_t>& bytes, bool quiet) {
  z_stream stream = {};
  if (deflateInit(&stream, Z_DEFAULT_COMPRESSION) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, EndDeflate> end(&stream);
  std::vector<std::uint8_t> compressed;
  std::vector<std::uint8_t> room(pieceSize);
  Progress progress("packing samples", quiet);
  std::size_t given = 0;
  do {
    const std::size_t piece = std::min(pieceSize, bytes.size() - given);
    stream.next_in = bytes.data() + given;
    stream.avail_in = static_cast<uInt>(piece);
    given += piece;
    do {
      stream.next_out = room.data();
      stream.avail_out = static_cast<uInt>(room.size());
      deflate(&stream, given == bytes.size() ? Z_FINISH : Z_NO_FLUSH);
      compressed.insert(compressed.end(),
                        room.begin(),
                        room.end() - static_cast<std::ptrdiff_t>(stream.avail_out));
    } while (stream.avail_out == 0);
    progress.At(given, bytes.size());
  } while (given < bytes.size());
  return compressed;
}

std::string Base64(const std::vector<std::uint8_t>& bytes) {
  constexpr const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    std::uint32_t bits = 0;
    for (std::size_t byte = 0; byte < 3; ++byte)
      bits = bits << 8U | (byte < count ? bytes[at + byte] : 0U);
    for (std::size_t digit = 0; digit < 4; ++digit)
      text += digit <= count ? digits[bits >> (18U - 6U * digit) & 0x3FU] : '=';
  }
  return text;
}

}  // namespace

std::string PackValues(std::span<const std::uint16_t> values, bool quiet) {
  std::vector<std::uint8_t> planes = DifferencePlanes(values);
  return Base64(Compress(planes, quiet));
}

std::uint16_t InSteps(double length, double step) {
  const double steps = std::clamp(std::round(length / step), -32768.0, 32767.0);
  return static_cast<std::uint16_t>(static_cast<std::int32_t>(steps));
}

double StepFor(double longest) { return std::max(0.01, longest / 32000); }

}  // namespace utdata::program
