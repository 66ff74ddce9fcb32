// Which chunks of a sample table are as they were written.
#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "interfaces/kvtiff19.h"

namespace utdata {

/// Checks each chunk of a table when its bytes are first asked for, and remembers the answer. Any
/// number of threads; none waits for another, at worst two check the same chunk.
class ChunkCheck {
 public:
  /// @param table the block's first byte, mapped or in memory. Nobody may change a chunk that was
  ///   not asked for yet.
  ChunkCheck(SCFile::BlockChunks chunks, const std::byte* table);

  /// Whether every chunk of a range is whole. REQUIRES: the range lies in the table.
  [[nodiscard]] bool IsWhole(std::uint64_t from, std::uint64_t size) {
    if (size == 0) return true;
    const std::uint64_t last = (from + size - 1) >> m_shift;
    for (std::uint64_t chunk = from >> m_shift; chunk <= last; ++chunk)
      if (m_states[chunk].load(std::memory_order_relaxed) != State::Whole && !Check(chunk))
        return false;
    return true;
  }

  [[nodiscard]] std::uint64_t Size() const { return m_chunks.size; }  ///< bytes of the table
  [[nodiscard]] std::uint64_t ChunkSize() const { return m_chunks.chunk; }
  [[nodiscard]] std::uint64_t Quantity() const { return m_chunks.checksums.size(); }
  /// Whether a chunk was asked for and found damaged.
  [[nodiscard]] bool IsKnownDamaged(std::uint64_t chunk) const {
    return m_states[chunk].load(std::memory_order_relaxed) == State::Damaged;
  }

 private:
  enum class State : std::uint8_t { Unknown, Whole, Damaged };

  bool Check(std::uint64_t chunk);

  SCFile::BlockChunks m_chunks;
  const std::byte* m_table;
  int m_shift;  ///< of an offset, for its chunk
  std::unique_ptr<std::atomic<State>[]> m_states;
};

}  // namespace utdata
