// The acquisition data model: what an acquisition hands to the writer of acquisition files, and how
// large its file becomes.
//
// Descriptions are plain values. No lock: one thread at a time, or several that only read.
#pragma once

#include <Eigen/Geometry>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "export.h"

namespace Aurelis {

/// Positions at equal distances, along one direction or in time.
class Axis {
 public:
  /// @param discreteSize number of positions; a negative one counts as 0
  /// @param resolution   distance between neighbours, in metres or seconds
  /// @param offset       of the first position, in the same unit
  explicit Axis(std::int32_t discreteSize = 0, double resolution = 1, double offset = 0)
      : m_discreteSize(discreteSize < 0 ? 0 : discreteSize),
        m_resolution(resolution),
        m_offset(offset) {}

  [[nodiscard]] std::int32_t DiscreteSize() const { return m_discreteSize; }
  [[nodiscard]] double Resolution() const { return m_resolution; }
  [[nodiscard]] double Offset() const { return m_offset; }

 private:
  std::int32_t m_discreteSize;
  double m_resolution;
  double m_offset;
};

/// A rectangle of the inspected surface in cells of the acquisition grid.
class Patch {
 public:
  using Box = Eigen::AlignedBox<int, 2>;

  /// @param grid its corners are the first and last cell in each dimension, both inside; of any
  ///   sign
  explicit Patch(const Box& grid = Box()) : m_grid(grid) {}

  [[nodiscard]] const Box& Grid() const { return m_grid; }
  /// Cells along a dimension (0 or 1): last - first + 1; 0 for an empty box.
  [[nodiscard]] std::uint64_t CellQuantity(int dimension) const {
    const std::int64_t cells =
        std::int64_t{m_grid.max()[dimension]} - std::int64_t{m_grid.min()[dimension]} + 1;
    return cells > 0 ? static_cast<std::uint64_t>(cells) : 0;
  }

 private:
  Box m_grid;
};

namespace Ultrasound {

/// How the A-scans of a patch are sampled and stored.
class AscanDataDescriptor {
 public:
  /// @param storageBytes   1 or 2 bytes a stored sample
  /// @param ultrasoundAxis samples of an A-scan, in seconds
  explicit AscanDataDescriptor(std::int32_t storageBytes = 1, const Axis& ultrasoundAxis = Axis())
      : m_storageBytes(storageBytes), m_ultrasoundAxis(ultrasoundAxis) {}

  [[nodiscard]] std::int32_t AscanStorageDataBytes() const { return m_storageBytes; }
  [[nodiscard]] const Axis& UltrasoundAxis() const { return m_ultrasoundAxis; }

 private:
  std::int32_t m_storageBytes;
  Axis m_ultrasoundAxis;
};

/// Which gate the C-scans of a patch belong to.
class CscanDataDescriptor {
 public:
  explicit CscanDataDescriptor(std::uint32_t gate = 0) : m_gate(gate) {}
  [[nodiscard]] std::uint32_t Gate() const { return m_gate; }

 private:
  std::uint32_t m_gate;
};

/// What a gate found in one cell.
template <class Amplitude, class Position>
struct _CscanData {
  Amplitude amplitude{};  ///< the largest in the gate, in sample values
  Position position{};    ///< where, as a sample index
};

/// The data of one patch, cell by cell. Implemented by the acquisition.
template <class DataDescriptor, class Cell>
class IPatchBuffer {
 public:
  virtual ~IPatchBuffer() = default;
  [[nodiscard]] virtual const DataDescriptor& GetDescriptor() const = 0;
  [[nodiscard]] virtual const Aurelis::Patch& GetPatch() const = 0;
  /// The record of a cell. Indices count from 0 wherever the grid's corners are; the reference
  /// holds until the buffer changes.
  [[nodiscard]] virtual const Cell& GetCell(std::uint32_t first, std::uint32_t second) const = 0;
};

}  // namespace Ultrasound

/// What an acquisition will record, and so how large its data file becomes.
class UTDATA_API MemoryData {
 public:
  /// Bytes at the start of every acquisition file, before the first block.
  static constexpr std::uint64_t fileHeaderSize = 2048;

  MemoryData() = default;
  MemoryData(const MemoryData&) = default;
  MemoryData& operator=(const MemoryData&) = default;
  virtual ~MemoryData();

  /// Announces `blocks` A-scan blocks of a patch.
  void AddAscanBlocks(const Patch& patch,
                      const Ultrasound::AscanDataDescriptor& descriptor,
                      std::uint64_t blocks = 1);
  /// Announces `blocks` C-scan blocks of a patch; each field of the records that is saved is a
  /// block.
  void AddCscanBlocks(const Patch& patch, std::uint64_t blocks = 1);

  /// Bytes of the file that holds everything announced, in any order, with an A-scan in every cell:
  /// the header area, and each block with its index table and padding. The largest number when that
  /// is more than 64 bits hold.
  [[nodiscard]] virtual std::uint64_t EstimateDataFileSize() const;

 private:
  std::uint64_t m_blockBytes = 0;
};

}  // namespace Aurelis

namespace Instrumentation {

/// One A-scan as the instrument delivers it.
class UTDATA_API IAscan {
 public:
  virtual ~IAscan();
  /// The samples, one in 4 bytes; as many as the descriptor of the buffer that holds the A-scan
  /// says.
  [[nodiscard]] virtual const std::int32_t* GetSamples() const = 0;
};

}  // namespace Instrumentation

// -------------------------------------------------------------------------------------------------
// in memory

namespace utdata {

using CscanRecord = Aurelis::Ultrasound::_CscanData<int, int>;
using AscanPatchBuffer =
    Aurelis::Ultrasound::IPatchBuffer<Aurelis::Ultrasound::AscanDataDescriptor,
                                      std::shared_ptr<Instrumentation::IAscan>>;
using CscanPatchBuffer =
    Aurelis::Ultrasound::IPatchBuffer<Aurelis::Ultrasound::CscanDataDescriptor, CscanRecord>;

/// An A-scan that owns its samples.
class UTDATA_API MemoryAscan final : public Instrumentation::IAscan {
 public:
  explicit MemoryAscan(std::vector<std::int32_t> samples) : m_samples(std::move(samples)) {}
  [[nodiscard]] const std::int32_t* GetSamples() const override { return m_samples.data(); }
  [[nodiscard]] std::size_t SampleQuantity() const { return m_samples.size(); }

 private:
  std::vector<std::int32_t> m_samples;
};

/// A patch buffer that keeps a record for every cell. REQUIRES: the patch has fewer cells than
/// memory holds.
template <class DataDescriptor, class Cell>
class MemoryPatchBuffer : public Aurelis::Ultrasound::IPatchBuffer<DataDescriptor, Cell> {
 public:
  MemoryPatchBuffer(const DataDescriptor& descriptor, const Aurelis::Patch& patch)
      : m_descriptor(descriptor),
        m_patch(patch),
        m_columns(static_cast<std::size_t>(patch.CellQuantity(0))),
        m_cells(m_columns * static_cast<std::size_t>(patch.CellQuantity(1))) {}

  [[nodiscard]] const DataDescriptor& GetDescriptor() const override { return m_descriptor; }
  [[nodiscard]] const Aurelis::Patch& GetPatch() const override { return m_patch; }
  [[nodiscard]] const Cell& GetCell(std::uint32_t first, std::uint32_t second) const override {
    return m_cells[second * m_columns + first];
  }
  /// REQUIRES: first and second are below the patch's cell quantities.
  [[nodiscard]] Cell& Record(std::uint32_t first, std::uint32_t second) {
    return m_cells[second * m_columns + first];
  }

 private:
  DataDescriptor m_descriptor;
  Aurelis::Patch m_patch;
  std::size_t m_columns;
  std::vector<Cell> m_cells;
};

/// The A-scans of a patch in memory; cells are empty until they are set.
class UTDATA_API MemoryAscanPatchBuffer final
    : public MemoryPatchBuffer<Aurelis::Ultrasound::AscanDataDescriptor,
                               std::shared_ptr<Instrumentation::IAscan>> {
 public:
  using MemoryPatchBuffer::MemoryPatchBuffer;
  /// Puts an A-scan into a cell.
  /// @return false, and nothing changes, when it has not the number of samples that the descriptor
  ///   says or there is no such cell
  bool SetAscan(std::uint32_t first, std::uint32_t second, std::vector<std::int32_t> samples);
  /// Empties a cell. REQUIRES: first and second are below the patch's cell quantities.
  void ClearAscan(std::uint32_t first, std::uint32_t second) { Record(first, second).reset(); }
};

/// The C-scan records of a patch in memory, all zero at first.
using MemoryCscanPatchBuffer =
    MemoryPatchBuffer<Aurelis::Ultrasound::CscanDataDescriptor, CscanRecord>;

}  // namespace utdata
