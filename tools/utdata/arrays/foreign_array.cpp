#include "arrays/foreign_array.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <limits>
#include <new>
#include <span>
#include <utility>

#include "arrays/description.h"
#include "arrays/hdf5_file.h"
#include "arrays/input_file.h"
#include "arrays/npy.h"
#include "terminal/failure.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

bool EndsWith(std::string text, std::string_view ending) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) {
    return std::tolower(letter);
  });
  return text.ends_with(ending);
}

bool IsHdf5Name(const std::string& file) {
  return EndsWith(file, ".h5") || EndsWith(file, ".hdf5");
}

/// The text of the file that an export leaves beside an array; empty when there is none.
std::string Beside(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return {};
  const InputFile file(path);
  if (file.Size() > largestDescription) return {};
  std::string text(file.Size(), 0);
  static_cast<void>(file.Read(0, std::as_writable_bytes(std::span(text))));
  return text;
}

ForeignArray ReadNpy(const std::string& path) {
  NpyHeader header = ReadNpyHeader(path);
  const std::string beside = DescriptionPath(path);
  return {header.type,
          header.bigEndian,
          header.fortranOrder,
          header.size,
          std::move(header.shape),
          Beside(beside),
          beside};
}

class ArrayFile final : public ArraySource {
 public:
  /// Refuses a file that holds more or less than the layout.
  /// @param remedy what to check when it does not fit
  ArrayFile(const std::string& path, const ArrayLayout& layout, const std::string& remedy)
      : m_file(path), m_start(layout.start), m_sampleSize(layout.sampleSize) {
    std::uint64_t size = m_file.Size();
    std::uint64_t expected = 0;
    const bool fits = layout.Size(expected);
    size -= std::min(size, m_start);
    if (fits && size == expected) return;
    std::string shape;
    for (const std::uint32_t quantity : layout.shape)
      if (!shape.empty() || quantity != 1)
        shape += (shape.empty() ? "" : " x ") + std::to_string(quantity);
    if (shape.empty()) shape = "1";
    const std::string needed = fits ? std::to_string(expected) : "more than 18446744073709551615";
    throw Failure(path,
                  "does not fit the shape",
                  "the file holds " + std::to_string(size) + " bytes" +
                      (m_start > 0 ? " behind its header, " : ", ") + shape + " samples of " +
                      std::to_string(layout.sampleSize) + " bytes are " + needed,
                  remedy);
  }

  void Read(std::uint64_t firstElement, std::span<std::byte> bytes) override {
    if (!m_file.Read(m_start + firstElement * m_sampleSize, bytes))
      throw Failure(m_file.Path(), "cannot be read", "the file became shorter while it was read");
  }

 private:
  InputFile m_file;
  std::uint64_t m_start;
  std::uint64_t m_sampleSize;
};

}  // namespace

std::string DescriptionPath(const std::string& path) {
  return std::filesystem::path(path).replace_extension(".json").string();
}

ArrayName::ArrayName(std::string given) : text(std::move(given)), file(text) {
  if (EndsWith(text, ".npy")) format = ArrayFormat::Npy;
  if (IsHdf5Name(text)) format = ArrayFormat::Hdf5;
  for (std::size_t at = text.find(":/"); at != std::string::npos; at = text.find(":/", at + 1)) {
    std::error_code ignored;
    const std::string before = text.substr(0, at);
    if (!IsHdf5Name(before) && !std::filesystem::is_regular_file(before, ignored)) continue;
    format = ArrayFormat::Hdf5;
    file = before;
    dataSet = text.substr(at + 1);
    return;
  }
}

ForeignArray ReadHeader(const ArrayName& name) {
  if (name.format == ArrayFormat::Npy) return ReadNpy(name.file);
  if (name.dataSet.empty())
    throw Failure(name.file,
                  "cannot be imported",
                  "an HDF5 file may hold several data sets",
                  "name one, as in " + name.file + ":/samples");
  return ReadHdf5Header(name.file, name.dataSet);
}

ArrayLayout LayoutOf(const ForeignArray& array,
                     const std::vector<ArrayAxis>& axes,
                     const std::string& name) {
  ArrayLayout layout;
  layout.shape.fill(1);
  std::size_t place = layout.axes.size() - axes.size();
  std::size_t missing = 0;
  for (const ArrayAxis axis :
       {ArrayAxis::Beam, ArrayAxis::Sample, ArrayAxis::Row, ArrayAxis::Column})
    if (std::find(axes.begin(), axes.end(), axis) == axes.end()) layout.axes[missing++] = axis;
  for (std::size_t index = 0; index < axes.size(); ++index, ++place) {
    const std::size_t from = array.fortranOrder ? axes.size() - 1 - index : index;
    const std::uint64_t quantity = array.shape[from];
    if (quantity == 0 || quantity > std::numeric_limits<std::uint32_t>::max())
      throw Failure(
          name, "cannot be imported", "an axis has " + std::to_string(quantity) + " elements");
    layout.shape[place] = static_cast<std::uint32_t>(quantity);
    layout.axes[place] = axes[from];
  }
  layout.sampleSize = array.type->size;
  layout.bigEndian = array.bigEndian;
  layout.start = array.start;
  return layout;
}

SampleMemory GatherArray(const ArrayName& name,
                         const ArrayLayout& layout,
                         const GatherProgress& progress) {
  if (name.format == ArrayFormat::Hdf5)
    return GatherHdf5(name.file, name.dataSet, layout, progress);
  const bool isRaw = name.format == ArrayFormat::Raw;
  ArrayFile source(name.file, layout, isRaw ? "check --shape and --dtype" : "write it again whole");
  std::uint64_t size = 0;
  if (!layout.Size(size)) throw std::bad_alloc();
  SampleMemory gathered(new std::byte[size], [](std::byte* samples) { delete[] samples; });
  GatherAScans(source, layout, {gathered.get(), size}, progress);
  return gathered;
}

}  // namespace utdata::program
