#include "utdata/arrays.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

#include "utdata/failure.h"
#include "utdata/rdata.h"

namespace utdata {
namespace {

constexpr const char* cannotBeExported = "cannot be exported";

// The base units first, in the order of their numbers.
constexpr ArrayUnit arrayUnits[] = {{"", kvt_UnitNone, 1},
                                    {"s", kvt_UnitSecond, 1},
                                    {"m", kvt_UnitMetre, 1},
                                    {"degree", kvt_UnitDegree, 1},
                                    {"%", kvt_UnitPercent, 1},
                                    {"dB", kvt_UnitDecibel, 1},
                                    {"V", kvt_UnitVolt, 1},
                                    {"us", kvt_UnitSecond, 1e6},
                                    {"ns", kvt_UnitSecond, 1e9},
                                    {"mm", kvt_UnitMetre, 1e3},
                                    {"in", kvt_UnitMetre, 1 / 0.0254}};

const char* SampleLabel(kvt_enumUnits units) {
  if (units == kvt_UnitSecond) return "two-way time of flight";
  return units == kvt_UnitMetre ? "half sound path" : "sample";
}

/// A scan axis; one without a step counts its indices.
DescribedAxis ScanAxisOf(const char* name,
                         const char* label,
                         kvt_enumUnits units,
                         float first,
                         float step,
                         std::uint32_t quantity) {
  if (step == 0 && quantity > 1) return {name, name, "", 0, 1, quantity};
  return {name, label, ArrayUnitOf(units).name, Shortest(first), Shortest(step), quantity};
}

std::vector<DescribedAxis> AxesOf(const DataGroup& data) {
  const CGDataTypeFDD& group = data.Stored();
  std::vector<DescribedAxis> axes = {ScanAxisOf("row",
                                                "row position",
                                                group.rowUnits,
                                                group.rowOffset,
                                                group.rowResolution,
                                                group.rowQuantity),
                                     ScanAxisOf("column",
                                                "column position",
                                                group.columnUnits,
                                                group.columnOffset,
                                                group.columnResolution,
                                                group.columnQuantity)};
  if (!data.IsCScan())
    axes.push_back({"sample",
                    SampleLabel(group.sampleUnits),
                    ArrayUnitOf(group.sampleUnits).name,
                    Shortest(group.sampleOffset),
                    Shortest(group.sampleResolution),
                    group.sampleQuantity});
  return axes;
}

bool IsSwapped(const DataGroup& group, const SampleType& type) {
  return type.size == 2 &&
         (group.Descriptor().IsSwapNeeded() != 0) != (std::endian::native == std::endian::big);
}

/// The number of an array's element that stands for no amplitude.
std::int32_t SilentNumber(const DataGroup& group, const SampleType& type) {
  std::uint16_t bits = group.SilentSample();
  if (group.Descriptor().IsSwapNeeded() != 0 && type.size == 2)
    bits = static_cast<std::uint16_t>(bits << 8U | bits >> 8U);
  if (!type.isSigned) return bits;
  return type.size == 1 ? static_cast<std::int8_t>(bits) : static_cast<std::int16_t>(bits);
}

/// Whether elements are not what is stored but their values: signed samples that are stored around
/// the middle of the unsigned range, of which no scale and offset make values.
bool AreValues(const DataGroup& group, const SampleType& type) {
  return type.isSigned && SilentNumber(group, type) != 0;
}

/// Makes values of little-endian elements that are stored so.
void TurnHighestBits(const SampleType& type, std::span<std::byte> elements) {
  for (std::size_t at = type.size - 1; at < elements.size(); at += type.size)
    elements[at] ^= std::byte{0x80};
}

DescribedValues ValuesOf(const DataGroup& group, const SampleType& type) {
  const CGDataTypeFDD& record = group.Stored();
  DescribedValues values = {group.ClassName(),
                            std::string(ArrayUnitOf(record.GetDataUnits()).name),
                            Shortest(record.dataResolution),
                            Shortest(record.dataOffset)};
  const double percentOfStep = group.Amplitudes().above;
  if (std::isfinite(percentOfStep) && record.GetDataScale() == gdata_ScaleLinear) {
    if (group.HoldsAmplitudes()) {
      values.unit = "%";
      values.scale = percentOfStep;
      values.offset = 0;
    } else if (group.Class() == gdata_AnalogScaled) {  // in its own scale from 0 to 100 %
      values.scale *= percentOfStep;
    }
  }
  if (const std::int32_t silent = SilentNumber(group, type); silent != 0 && !type.isSigned)
    values.offset -= silent * values.scale;
  return values;
}

/// Turns the two bytes of each sample round.
void SwapBytes(std::span<const std::byte> from, std::vector<std::byte>& to) {
  to.resize(from.size());
  for (std::size_t at = 0; at + 1 < from.size(); at += 2) {
    to[at] = from[at + 1];
    to[at + 1] = from[at];
  }
}

std::span<const std::byte> CellOf(const DataGroup& group,
                                  const SampleType& type,
                                  std::uint64_t cell) {
  const auto row = static_cast<std::uint32_t>(cell / group.ColumnQuantity());
  const auto column = static_cast<std::uint32_t>(cell % group.ColumnQuantity());
  if (type.size == 1) return std::as_bytes(group.AScan<std::uint8_t>(row, column));
  return std::as_bytes(group.AScan<std::uint16_t>(row, column));
}

void CheckSamples(const DescribedArray& array, const DataGroup& group) {
  for (const DescribedAxis& axis : array.axes)
    if (axis.quantity == 0) throw Error(group.Name(), cannotBeExported, "the data group is empty");
  if (!group.HasTable())
    throw Error(group.Name(), cannotBeExported, "the data group has no samples");
  static_cast<void>(CellOf(group, *array.type, group.AllCells().count - 1));
}

/// Puts cells one behind the other; those without samples hold the one that stands for no
/// amplitude.
class CellPacker {
 public:
  CellPacker(const DataGroup& group, const SampleType& type)
      : m_group(group), m_type(type), m_empty(std::size_t{group.SampleQuantity()} * type.size) {
    const std::uint16_t wide = group.SilentSample();
    const auto narrow = static_cast<std::uint8_t>(wide);
    const auto silent =
        type.size == 1 ? std::as_bytes(std::span(&narrow, 1)) : std::as_bytes(std::span(&wide, 1));
    for (std::size_t at = 0; at < m_empty.size(); ++at) m_empty[at] = silent[at % silent.size()];
  }

  std::span<const std::byte> Pack(std::uint64_t first, std::uint64_t count) {
    m_packed.clear();
    for (std::uint64_t cell = first; cell < first + count; ++cell) {
      std::span<const std::byte> samples = CellOf(m_group, m_type, cell);
      if (samples.empty()) samples = m_empty;
      m_packed.insert(m_packed.end(), samples.begin(), samples.end());
    }
    return m_packed;
  }

 private:
  const DataGroup& m_group;
  const SampleType& m_type;
  std::vector<std::byte> m_empty;
  std::vector<std::byte> m_packed;
};

constexpr std::uint64_t bufferSize = std::uint64_t{32} << 20U;  ///< bytes read at a time

/// The array as its file has it: `outer` matrices of `samples` x `inner` elements. The axes of
/// beams and cells outside the sample axis make up `outer`, those inside it `inner`, so that
/// outer * inner is the number of A-scans.
struct Matrices {
  std::uint64_t outer = 1;
  std::uint64_t samples = 1;
  std::uint64_t inner = 1;

  explicit Matrices(const ArrayLayout& layout) {
    // The place of an A-scan among all grows by this from one index of an axis to the next.
    const std::uint64_t columns = layout.Quantity(ArrayAxis::Column);
    const std::uint64_t cells = columns * layout.Quantity(ArrayAxis::Row);
    bool afterSample = false;
    for (std::size_t index = 0; index < layout.axes.size(); ++index) {
      const ArrayAxis axis = layout.axes[index];
      const std::uint64_t quantity = layout.shape[index];
      if (axis == ArrayAxis::Sample) {
        samples = quantity;
        afterSample = true;
        continue;
      }
      (afterSample ? inner : outer) *= quantity;
      if (quantity == 1) continue;
      m_axes[m_axisQuantity++] = {quantity,
                                  axis == ArrayAxis::Beam  ? cells
                                  : axis == ArrayAxis::Row ? columns
                                                           : 1};
    }
    std::uint64_t following = 1;
    for (std::size_t axis = m_axisQuantity; axis-- > 0; following *= m_axes[axis].quantity)
      m_isInOrder = m_isInOrder && m_axes[axis].step == following;
  }

  /// The place, beams outermost and columns innermost, of the A-scan that is the n-th in the file.
  [[nodiscard]] std::uint64_t Cell(std::uint64_t n) const {
    if (m_isInOrder) return n;
    std::uint64_t cell = 0;
    for (std::size_t axis = m_axisQuantity; axis-- > 0; n /= m_axes[axis].quantity)
      cell += n % m_axes[axis].quantity * m_axes[axis].step;
    return cell;
  }

 private:
  struct Axis {
    std::uint64_t quantity;
    std::uint64_t step;
  };
  std::array<Axis, arrayAxisQuantity> m_axes{};  ///< of beams and cells, outermost first
  std::size_t m_axisQuantity = 0;
  bool m_isInOrder = true;
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

}  // namespace

const ArrayUnit* FindArrayUnit(std::string_view name) {
  const auto* found = std::ranges::find(arrayUnits, name, &ArrayUnit::name);
  return found == std::end(arrayUnits) ? nullptr : found;
}

const ArrayUnit& ArrayUnitOf(kvt_enumUnits base) {
  const auto* found = std::ranges::find(arrayUnits, base, &ArrayUnit::base);
  return found == std::end(arrayUnits) ? arrayUnits[0] : *found;
}

double Shortest(float value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  double shortest = value;
  std::from_chars(text.data(), end, shortest);
  return shortest;
}

std::vector<std::uint64_t> DescribedArray::Shape() const {
  std::vector<std::uint64_t> shape;
  for (const DescribedAxis& axis : axes) shape.push_back(axis.quantity);
  return shape;
}

DescribedArray DescribeArray(const DataGroup& group) {
  const CGDataTypeFDD& record = group.Stored();
  DescribedArray array;
  array.type = FindSampleType(record.GetDataType());
  if (!array.type || array.type->size != record.sampleSize)
    throw Error(
        group.Name(), cannotBeExported, "its samples are not whole numbers of 8 or 16 bits");
  array.axes = AxesOf(group);
  CheckSamples(array, group);
  array.values = ValuesOf(group, *array.type);
  array.label = group.Caption();
  if (record.sampleUnits == kvt_UnitSecond && std::isfinite(record.soundSpeed) &&
      record.soundSpeed > 0)
    array.halfSoundSpeed = Shortest(record.soundSpeed) / 2;
  return array;
}

void ForEachPiece(
    const DescribedArray& array,
    const DataGroup& group,
    const std::function<void(std::span<const std::byte> piece, std::uint64_t total)>& take) {
  constexpr std::uint64_t pieceSize = std::uint64_t{4} << 20U;
  const std::uint64_t cellQuantity = group.AllCells().count;
  const std::uint64_t cellBytes = std::uint64_t{group.SampleQuantity()} * array.type->size;
  const std::uint64_t total = cellQuantity * cellBytes;
  const std::uint64_t cells = std::max<std::uint64_t>(1, pieceSize / cellBytes);
  const bool swap = IsSwapped(group, *array.type);
  CellPacker packer(group, *array.type);
  const bool areValues = AreValues(group, *array.type);
  std::vector<std::byte> changed;
  for (std::uint64_t first = 0; first < cellQuantity; first += cells) {
    std::span<const std::byte> piece = packer.Pack(first, std::min(cells, cellQuantity - first));
    if (swap || areValues) {
      if (swap)
        SwapBytes(piece, changed);
      else
        changed.assign(piece.begin(), piece.end());
      if (areValues) TurnHighestBits(*array.type, changed);
      piece = changed;
    }
    take(piece, total);
  }
}

std::uint32_t ArrayLayout::Quantity(ArrayAxis axis) const {
  return shape[static_cast<std::size_t>(std::find(axes.begin(), axes.end(), axis) - axes.begin())];
}

bool ArrayLayout::Size(std::uint64_t& bytes) const {
  bytes = sampleSize;
  return std::all_of(shape.begin(), shape.end(), [&](std::uint32_t quantity) {
    return !__builtin_mul_overflow(bytes, std::uint64_t{quantity}, &bytes);
  });
}

ArraySource::ArraySource() = default;
ArraySource::~ArraySource() = default;

void GatherAScans(ArraySource& source,
                  const ArrayLayout& layout,
                  std::span<std::byte> gathered,
                  const GatherProgress& progress) {
  if (layout.sampleSize == 1)
    Gatherer(source, layout, progress, reinterpret_cast<std::uint8_t*>(gathered.data())).Run();
  else
    Gatherer(source, layout, progress, reinterpret_cast<std::uint16_t*>(gathered.data())).Run();
}

}  // namespace utdata
