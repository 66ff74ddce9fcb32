// Checking every byte of an inspection file.
#include <algorithm>
#include <memory>

#include "platform/kvtiff19/block.h"
#include "platform/kvtiff19/guard.h"
#include "platform/kvtiff19/reader.h"
#include "platform/kvtiff19/structure.h"
#include "platform/os/path.h"

namespace utdata::kvtiff19 {
namespace {

class Verifier {
 public:
  Verifier(OpenFile& file, std::string* problems, SCFile::VerifyProgress progress, void* context)
      : m_file(file), m_problems(problems), m_progress(progress), m_context(context) {}

  int Run() {
    for (const Node* top : m_file.children) VisitGroup(*top);
    CheckLayout();
    for (const BlockRef& block : m_blocks) m_total += block.size;
    for (const BlockRef& block : m_blocks)
      if (!CheckBlock(block)) break;
    return m_status;
  }

 private:
  void Tell(int status, std::string_view what) { TellLast(FailAt(m_file, status, what)); }

  /// Notes the last failure as a problem.
  void TellLast(int status) {
    if (m_status == SCFile::status_Ok) m_status = status;
    if (!m_problems) return;
    if (!m_problems->empty()) m_problems->push_back('\n');
    m_problems->append(SCFile::file_LastError());
  }

  /// Checks a group and those inside it against their types, and gathers their blocks.
  void VisitGroup(const Node& group) {
    std::string problem;
    if (!CheckRules(group, problem)) Tell(SCFile::status_Damaged, problem);
    StoredItem item;
    for (ItemWalk walk(group); walk.Next(item);) {
      if (item.type == SCFile::value_Block) m_blocks.push_back(DecodeBlockRef(item.data.data()));
      if (item.type != 0) continue;
      Node child;
      child.state = NodeState::Committed;
      child.typeCode = item.code;
      ViewBody(child, item.data);
      VisitGroup(child);
    }
  }

  struct Extent {
    std::uint64_t from;
    std::uint64_t to;
  };

  /// Everything in the data has one owner, and alignment alone leaves gaps: shorter than a page and
  /// a table's alignment, all zeros.
  void CheckLayout() {
    std::vector<Extent> extents;
    for (const Link& link : m_file.segmentsRead)
      extents.push_back({link.offset, link.offset + link.size});
    for (const BlockRef& block : m_blocks) {
      extents.push_back({block.offset, block.offset + block.size});
      extents.push_back({block.tableOffset, block.tableOffset + block.TableSize()});
    }
    std::erase_if(extents, [](const Extent& each) { return each.from == each.to; });
    extents.push_back({m_file.current.end, m_file.current.end});
    std::ranges::sort(extents, {}, &Extent::from);
    std::uint64_t end = dataStart;
    for (const Extent& extent : extents) {
      CheckGap(end, extent.from);
      end = std::max(end, extent.to);
    }
  }

  void CheckGap(std::uint64_t from, std::uint64_t to) {
    if (from == to) return;
    const std::string where =
        "bytes " + std::to_string(std::min(from, to)) + " to " + std::to_string(std::max(from, to));
    if (from > to) return Tell(SCFile::status_Damaged, where + " belong to two owners");
    if (to - from >= pageSize + 8)
      return Tell(SCFile::status_Damaged, where + " belong to nothing");
    std::vector<std::byte> gap(static_cast<std::size_t>(to - from));
    if (const int status = ReadWhole(m_file, from, gap)) return TellLast(status);
    if (!AllZero(gap)) Tell(SCFile::status_Damaged, where + " are padding and not zero");
  }

  /// False when the caller asks to stop.
  bool CheckBlock(const BlockRef& block) {
    TableReader table(m_file, block);
    if (const int status = table.Check()) {
      TellLast(status);
      return Advance(block.size);
    }
    constexpr std::uint64_t atOnce = std::uint64_t{1} << 20;
    const std::uint64_t step = std::max(block.chunk, atOnce);  // a multiple of a chunk
    std::vector<std::byte> bytes;
    std::uint64_t badChunks = 0;
    std::uint64_t firstBad = 0;
    for (std::uint64_t from = 0; from < block.size; from += step) {
      bytes.resize(static_cast<std::size_t>(std::min(step, block.size - from)));
      if (const int status = ReadWhole(m_file, block.offset + from, bytes)) {
        TellLast(status);
        return Advance(block.size - from);
      }
      for (std::uint64_t at = 0; at < bytes.size(); at += block.chunk) {
        const Bytes chunk = Bytes(bytes).subspan(
            static_cast<std::size_t>(at),
            static_cast<std::size_t>(std::min(block.chunk, bytes.size() - at)));
        std::uint64_t checksum = 0;
        if (const int status = table.Next(checksum)) {
          TellLast(status);
          return Advance(block.size - from);
        }
        if (Checksum(chunk) != checksum && badChunks++ == 0) firstBad = block.offset + from + at;
      }
      if (!Advance(bytes.size())) return false;
    }
    if (badChunks > 0)
      Tell(SCFile::status_Damaged,
           "block at byte " + std::to_string(block.offset) + ": the checksums of " +
               std::to_string(badChunks) + " of " + std::to_string(block.ChunkCount()) +
               " chunks do not match, the first at byte " + std::to_string(firstBad));
    return true;
  }

  bool Advance(std::uint64_t bytes) {
    m_done += bytes;
    if (!m_progress || m_progress(m_context, m_done, m_total)) return true;
    Tell(SCFile::status_Stopped, "stopped before all was checked");
    return false;
  }

  OpenFile& m_file;
  std::string* m_problems;
  SCFile::VerifyProgress m_progress;
  void* m_context;
  std::vector<BlockRef> m_blocks;
  std::uint64_t m_done = 0;
  std::uint64_t m_total = 0;
  int m_status = SCFile::status_Ok;
};

}  // namespace
}  // namespace utdata::kvtiff19

namespace SCFile {

int file_Verify(const wchar_t* path, std::string* problem, VerifyProgress progress, void* context) {
  using namespace utdata::kvtiff19;
  return Guarded([&] {
    if (problem) problem->clear();
    FileHandle file = nullptr;
    if (const int status = file_OpenReadOnly(path, &file)) {
      if (problem) *problem = file_LastError();
      return status;
    }
    const std::unique_ptr<OpenFile> open(file->file);
    return Verifier(*open, problem, progress, context).Run();
  });
}

}  // namespace SCFile
