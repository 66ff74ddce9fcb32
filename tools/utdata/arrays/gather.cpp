#include "arrays/gather.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "interfaces/os.h"
#include "terminal/failure.h"
#include "terminal/text.h"

namespace utdata::program {
namespace {

constexpr std::uint64_t bufferSize = std::uint64_t{32} << 20U;  ///< bytes read at a time

/// The array as its file has it: `outer` matrices of `samples` x `inner` elements. The scan axes
/// outside the sample axis make up `outer`, those inside it `inner`, so that outer * inner is the
/// number of cells.
struct Matrices {
  std::uint64_t outer = 1;
  std::uint64_t samples = 1;
  std::uint64_t inner = 1;
  std::uint64_t rows = 1;
  std::uint64_t columns = 1;
  bool rowFirst = true;  ///< of the scan axes, the row axis is the outer one in the file

  explicit Matrices(const ArrayLayout& layout) {
    bool afterSample = false;
    for (std::size_t index = 0; index < layout.axes.size(); ++index) {
      if (layout.axes[index] == ArrayAxis::Sample) {
        samples = layout.shape[index];
        afterSample = true;
      } else {
        (afterSample ? inner : outer) *= layout.shape[index];
      }
    }
    rows = layout.Quantity(ArrayAxis::Row);
    columns = layout.Quantity(ArrayAxis::Column);
    const auto rowAt = std::find(layout.axes.begin(), layout.axes.end(), ArrayAxis::Row);
    rowFirst = std::find(rowAt, layout.axes.end(), ArrayAxis::Column) != layout.axes.end();
  }

  /// The row-major index of the cell that is the n-th in the file.
  [[nodiscard]] std::uint64_t Cell(std::uint64_t n) const {
    return rowFirst ? n : n % rows * columns + n / rows;
  }
};

/// Elements of samples x width, as read; they belong to the cells from the `firstCell`-th of the
/// file on.
template <class Element>
void Transpose(std::span<const Element> matrix,
               std::uint64_t width,
               std::uint64_t firstCell,
               const Matrices& array,
               Element* gathered) {
  constexpr std::uint64_t tile = 32;  // tiles of both sides stay in the first-level cache
  for (std::uint64_t cell0 = 0; cell0 < width; cell0 += tile) {
    const std::uint64_t cellEnd = std::min(cell0 + tile, width);
    for (std::uint64_t sample0 = 0; sample0 < array.samples; sample0 += tile) {
      const std::uint64_t sampleEnd = std::min(sample0 + tile, array.samples);
      for (std::uint64_t cell = cell0; cell < cellEnd; ++cell) {
        Element* ascan = gathered + array.Cell(firstCell + cell) * array.samples;
        for (std::uint64_t sample = sample0; sample < sampleEnd; ++sample)
          ascan[sample] = matrix[sample * width + cell];
      }
    }
  }
}

/// Reads an array piece by piece and puts each piece in its place.
template <class Element>
class Gatherer {
 public:
  Gatherer(ArraySource& source,
           const ArrayLayout& layout,
           const GatherProgress& progress,
           Element* gathered)
      : m_source(source),
        m_array(layout),
        m_swap(sizeof(Element) == 2 &&
               layout.bigEndian != (std::endian::native == std::endian::big)),
        m_progress(progress),
        m_gathered(gathered),
        m_total(m_array.outer * m_array.samples * m_array.inner * sizeof(Element)) {}

  void Run() {
    const std::uint64_t matrix = m_array.samples * m_array.inner;
    const std::uint64_t fitting = bufferSize / sizeof(Element) / matrix;
    if (fitting == 0) return RunByStrips();
    for (std::uint64_t first = 0; first < m_array.outer; first += fitting) {
      const std::uint64_t quantity = std::min(fitting, m_array.outer - first);
      m_buffer.resize(quantity * matrix);
      Read(first * matrix, m_buffer);
      for (std::uint64_t index = 0; index < quantity; ++index)
        Place(std::span<const Element>(m_buffer).subspan(index * matrix, matrix),
              m_array.inner,
              (first + index) * m_array.inner);
      Report(quantity * matrix);
    }
  }

 private:
  /// For matrices larger than the buffer: some of a matrix's columns at a time.
  void RunByStrips() {
    const std::uint64_t strip =
        std::clamp<std::uint64_t>(bufferSize / sizeof(Element) / m_array.samples, 1, m_array.inner);
    for (std::uint64_t outer = 0; outer < m_array.outer; ++outer) {
      for (std::uint64_t first = 0; first < m_array.inner; first += strip) {
        const std::uint64_t width = std::min(strip, m_array.inner - first);
        m_buffer.resize(m_array.samples * width);
        for (std::uint64_t sample = 0; sample < m_array.samples; ++sample) {
          const std::uint64_t from = (outer * m_array.samples + sample) * m_array.inner + first;
          Read(from, std::span<Element>(m_buffer).subspan(sample * width, width));
        }
        Place(m_buffer, width, outer * m_array.inner + first);
        Report(m_buffer.size());
      }
    }
  }

  void Read(std::uint64_t firstElement, std::span<Element> elements) {
    m_source.Read(firstElement, std::as_writable_bytes(elements));
    if constexpr (sizeof(Element) == 2) {
      if (!m_swap) return;
      for (Element& value : elements) value = static_cast<Element>(value << 8U | value >> 8U);
    }
  }

  void Place(std::span<const Element> matrix, std::uint64_t width, std::uint64_t firstCell) {
    if (width > 1) return Transpose(matrix, width, firstCell, m_array, m_gathered);
    std::copy(matrix.begin(), matrix.end(), m_gathered + m_array.Cell(firstCell) * m_array.samples);
  }

  void Report(std::uint64_t elements) {
    m_done += elements * sizeof(Element);
    m_progress(m_done, m_total);
  }

  ArraySource& m_source;
  const Matrices m_array;
  const bool m_swap;
  const GatherProgress& m_progress;
  Element* const m_gathered;
  const std::uint64_t m_total;
  std::uint64_t m_done = 0;
  std::vector<Element> m_buffer;
};

class ArrayFile final : public ArraySource {
 public:
  ArrayFile(const std::string& path, const ArrayLayout& layout)
      : m_path(path), m_start(layout.start), m_sampleSize(layout.sampleSize) {
    ThrowOn(os::CurrentFileSystem().Open(ToWide(path), os::OpenMode::Read, m_file));
  }

  void CheckSize(const ArrayLayout& layout, const std::string& remedy) {
    std::uint64_t size = 0;
    ThrowOn(m_file->Size(size));
    std::uint64_t expected = 0;
    const bool fits = layout.Size(expected);
    size -= std::min(size, m_start);
    if (fits && size == expected) return;
    const auto& shape = layout.shape;
    const std::string needed = fits ? std::to_string(expected) : "more than 18446744073709551615";
    throw Failure(m_path,
                  "does not fit the shape",
                  "the file holds " + std::to_string(size) + " bytes" +
                      (m_start > 0 ? " behind its header, " : ", ") + std::to_string(shape[0]) +
                      " x " + std::to_string(shape[1]) + " x " + std::to_string(shape[2]) +
                      " samples of " + std::to_string(layout.sampleSize) + " bytes are " + needed,
                  remedy);
  }

  void Read(std::uint64_t firstElement, std::span<std::byte> bytes) override {
    std::size_t done = 0;
    ThrowOn(m_file->ReadAt(m_start + firstElement * m_sampleSize, bytes, done));
    if (done != bytes.size())
      throw Failure(m_path, "cannot be read", "the file became shorter while it was read");
  }

 private:
  void ThrowOn(os::Error error) const {
    if (error != os::Error::None)
      throw Failure(m_path, "cannot be read", std::string(os::ErrorText(error)));
  }

  std::string m_path;
  std::unique_ptr<os::File> m_file;
  std::uint64_t m_start;
  std::uint64_t m_sampleSize;
};

}  // namespace

std::uint32_t ArrayLayout::Quantity(ArrayAxis axis) const {
  return shape[static_cast<std::size_t>(std::find(axes.begin(), axes.end(), axis) - axes.begin())];
}

bool ArrayLayout::Size(std::uint64_t& bytes) const {
  bytes = sampleSize;
  return std::all_of(shape.begin(), shape.end(), [&](std::uint32_t quantity) {
    return !__builtin_mul_overflow(bytes, std::uint64_t{quantity}, &bytes);
  });
}

std::unique_ptr<ArraySource> OpenArrayFile(const std::string& path,
                                           const ArrayLayout& layout,
                                           const std::string& remedy) {
  auto file = std::make_unique<ArrayFile>(path, layout);
  file->CheckSize(layout, remedy);
  return file;
}

void GatherAScans(ArraySource& source,
                  const ArrayLayout& layout,
                  std::span<std::byte> gathered,
                  const GatherProgress& progress) {
  if (layout.sampleSize == 1)
    Gatherer(source, layout, progress, reinterpret_cast<std::uint8_t*>(gathered.data())).Run();
  else
    Gatherer(source, layout, progress, reinterpret_cast<std::uint16_t*>(gathered.data())).Run();
}

}  // namespace utdata::program
