#include "src/inspection/chunkcheck.h"

#include <utility>

namespace utdata {

ChunkCheck::ChunkCheck(SCFile::BlockChunks chunks, const std::byte* table)
    : m_chunks(std::move(chunks)),
      m_table(table),
      m_shift(std::countr_zero(m_chunks.chunk)),
      m_states(std::make_unique<std::atomic<State>[]>(m_chunks.checksums.size())) {}

bool ChunkCheck::Check(std::uint64_t chunk) {
  if (IsKnownDamaged(chunk)) return false;
  const bool isWhole = SCFile::file_IsChunkWhole(m_chunks, chunk, m_table);
  m_states[chunk].store(isWhole ? State::Whole : State::Damaged, std::memory_order_relaxed);
  return isWhole;
}

}  // namespace utdata
