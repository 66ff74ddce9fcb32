// What an import says of one array: its options, from the command line or from a list of arrays.
#pragma once

#include <CLI/CLI.hpp>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "arrays/foreign_array.h"
#include "utdata/newscan.h"

namespace utdata::program {

inline constexpr std::size_t importQuantityCount = 11;

struct ArrayOptions {
  std::string array;
  std::string shape;
  std::string axes;
  std::string dtype;
  bool bigEndian = false;
  bool rectified = false;
  bool tofd = false;
  std::string angles;  ///< of the beams, or of the one that there is
  std::optional<std::uint32_t> channel;
  std::optional<std::uint32_t> subChannel;
  std::array<std::optional<double>, importQuantityCount>
      quantities;  ///< as given, in the units of the options
  std::string channelName;

  /// Whether the distance of two probes is given.
  [[nodiscard]] bool HasSeparation() const { return quantities.back().has_value(); }
};

void AddArrayOptions(CLI::App& verb, ArrayOptions& options);

/// The arrays that a command line names: the one, or those of the list FILE.json, each with its own
/// options beside those of the command line, and with paths that count from the list's folder.
[[nodiscard]] std::vector<ArrayOptions> ListedArrays(const ArrayOptions& options);

/// Throws a usage error for an option that the array has in itself, or lacks.
void CheckHeaderOptions(const ArrayOptions& options, ArrayFormat format);

/// The shape as it is given.
[[nodiscard]] std::vector<std::uint64_t> ParseShape(const std::string& text);

/// The axes as given, else as described, else, of an array of three axes, row, column, sample.
[[nodiscard]] std::vector<ArrayAxis> ChooseAxes(const ArrayOptions& options,
                                                const ForeignArray& array,
                                                std::vector<ArrayAxis> described);

/// The refracted angles of that many beams. Throws a usage error when there are more or fewer.
[[nodiscard]] std::vector<double> ParseAngles(const std::string& text, std::uint32_t beams);

/// Puts the quantities given into the record. Returns which of the others are nominal, unless the
/// record comes from a description.
/// @param hasSoundSpeed it is known from elsewhere
[[nodiscard]] std::string SetQuantities(const ArrayOptions& options,
                                        bool isDescribed,
                                        bool hasSoundSpeed,
                                        CGDataTypeFDD& record);

}  // namespace utdata::program
