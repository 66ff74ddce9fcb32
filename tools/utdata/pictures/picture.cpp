#include "pictures/picture.h"

#include <png.h>

#include <algorithm>
#include <new>

namespace utdata::program {
namespace {

std::uint8_t Mix(std::uint8_t below, std::uint8_t above, unsigned coverage) {
  return static_cast<std::uint8_t>((below * (255U - coverage) + above * coverage + 127U) / 255U);
}

}  // namespace

static_assert(sizeof(Color) == 3, "rows of colours are rows of a PNG file");

Canvas::Canvas(int width, int height, Color background)
    : m_width(width),
      m_height(height),
      m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), background) {}

void Canvas::Blend(Point at, Color color, unsigned coverage) {
  if (at.x < 0 || at.y < 0 || at.x >= m_width || at.y >= m_height) return;
  Color& pixel = m_pixels[static_cast<std::size_t>(at.y) * static_cast<std::size_t>(m_width) +
                          static_cast<std::size_t>(at.x)];
  pixel = {Mix(pixel.red, color.red, coverage),
           Mix(pixel.green, color.green, coverage),
           Mix(pixel.blue, color.blue, coverage)};
}

void Canvas::Fill(const Rect& area, Color color) {
  const int bottom = std::min(area.Bottom(), m_height);
  const int right = std::min(area.Right(), m_width);
  for (int y = std::max(area.top, 0); y < bottom; ++y)
    for (int x = std::max(area.left, 0); x < right; ++x) Set({x, y}, color);
}

void Canvas::Outline(const Rect& area, Color color) {
  Fill({area.left - 1, area.top - 1, area.width + 2, 1}, color);
  Fill({area.left - 1, area.Bottom(), area.width + 2, 1}, color);
  Fill({area.left - 1, area.top, 1, area.height}, color);
  Fill({area.Right(), area.top, 1, area.height}, color);
}

std::vector<std::byte> Canvas::Png() const {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(m_width);
  image.height = static_cast<png_uint_32>(m_height);
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::vector<std::byte> bytes(size);
  const png_int_32 rowStride = m_width * 3;
  const bool written =
      png_image_write_to_memory(
          &image, bytes.data(), &size, 0, m_pixels.data(), rowStride, nullptr) != 0;
  png_image_free(&image);
  if (!written)
    throw std::bad_alloc();  // the size is enough for any picture: only memory can be missing
  bytes.resize(size);
  return bytes;
}

}  // namespace utdata::program
