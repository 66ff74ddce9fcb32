#include "pictures/color_map.h"

#include <cstddef>

namespace utdata::program {
namespace {

template <std::size_t Count>
ColorMap Interpolate(const std::array<Color, Count>& anchors) {
  ColorMap map;
  for (std::size_t code = 0; code < map.size(); ++code) {
    const std::size_t scaled = code * (Count - 1);  // in 255ths of the way from anchor to anchor
    const std::size_t before = scaled < 255 * (Count - 1) ? scaled / 255 : Count - 2;
    const std::size_t part = scaled - before * 255;
    const auto mix = [&](std::uint8_t Color::*channel) {
      return static_cast<std::uint8_t>(
          (anchors[before].*channel * (255 - part) + anchors[before + 1].*channel * part + 127) /
          255);
    };
    map[code] = {mix(&Color::red), mix(&Color::green), mix(&Color::blue)};
  }
  return map;
}

// The inferno map at every eighth of its length; its lightness rises evenly.
constexpr std::array<Color, 9> inferno = {{{0, 0, 4},
                                           {31, 12, 72},
                                           {85, 15, 109},
                                           {136, 34, 106},
                                           {186, 54, 85},
                                           {227, 89, 51},
                                           {249, 140, 10},
                                           {249, 201, 50},
                                           {252, 255, 164}}};

constexpr std::array<Color, 9> rainbow = {{{255, 255, 255},
                                           {120, 180, 255},
                                           {0, 60, 255},
                                           {0, 200, 200},
                                           {0, 190, 0},
                                           {255, 240, 0},
                                           {255, 140, 0},
                                           {255, 0, 0},
                                           {150, 0, 0}}};

constexpr std::array<Color, 2> grey = {{{0, 0, 0}, {255, 255, 255}}};

}  // namespace

const ColorMap& HeatColors() {
  static const ColorMap map = Interpolate(inferno);
  return map;
}

const ColorMap& RainbowColors() {
  static const ColorMap map = Interpolate(rainbow);
  return map;
}

const ColorMap& GreyColors() {
  static const ColorMap map = Interpolate(grey);
  return map;
}

}  // namespace utdata::program
