// Writing what is whole of a damaged file as a new one.
#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "interfaces/kvtiff19_catalogue.h"
#include "platform/kvtiff19/block.h"
#include "platform/kvtiff19/families/data_table.h"
#include "platform/kvtiff19/guard.h"
#include "platform/kvtiff19/reader.h"
#include "platform/kvtiff19/salvage.h"

namespace utdata::kvtiff19 {
namespace {

constexpr std::uint64_t offsetSize = sizeof(std::uint32_t);

/// Where the samples of a data group's cells stand.
struct CellLayout {
  std::uint64_t cells = 0;
  std::uint64_t columns = 1;
  std::uint64_t vectorBytes = 0;
  std::uint64_t stride = 0;
  bool isIndexed = false;
};

/// Nothing for a record that does not say it, or says more than the block has.
std::optional<CellLayout> LayoutOf(Node& group, std::uint64_t size) {
  CGDataTypeFDD record;
  if (gdata_ReadGroupInfo(&group, &record) != SCFile::status_Ok) return std::nullopt;
  CellLayout layout;
  const std::uint32_t samples =
      gdata_HoldsOneValuePerCell(record.dataClass) ? 1 : record.sampleQuantity;
  layout.columns = record.columnQuantity;
  layout.cells = std::uint64_t{record.columnQuantity} * record.rowQuantity;
  layout.vectorBytes = std::uint64_t{samples} * record.sampleSize;
  layout.stride = std::max<std::uint64_t>(layout.vectorBytes, record.cellSize);
  layout.isIndexed = record.storageMode == kvt_StorIndexed;
  const std::uint64_t bytesOfCell = layout.isIndexed ? offsetSize : layout.stride;
  const bool isKnown = layout.isIndexed || record.storageMode == kvt_StorCells;
  if (!isKnown || layout.cells == 0 || layout.vectorBytes == 0 || layout.cells > size / bytesOfCell)
    return std::nullopt;
  return layout;
}

/// A block as far as it is whole.
struct WholeBytes {
  BlockRef block;
  std::vector<bool> lostChunks;
  std::uint64_t lostBytes = 0;

  [[nodiscard]] bool IsLost(std::uint64_t from, std::uint64_t size) const {
    for (std::uint64_t chunk = from / block.chunk; chunk * block.chunk < from + size; ++chunk)
      if (lostChunks[static_cast<std::size_t>(chunk)]) return true;
    return false;
  }
};

class Rescuer {
 public:
  Rescuer(OpenFile& from, Node& to, SCFile::RescueFindings& findings)
      : m_from(from), m_to(to), m_findings(findings) {}

  int Copy(const std::map<std::uint64_t, Node*>& tops) {
    std::uint64_t next = 0;
    for (const auto& [ordinal, top] : tops) {
      m_isComplete = m_isComplete && ordinal == next++;
      m_place = "top group " + std::to_string(ordinal);
      Node* copy = nullptr;
      if (const int status = AddPending(m_to, top->typeCode, std::string(top->name), copy))
        return status;
      if (const int status = CopyItems(*top, *copy, m_place)) return status;
    }
    return SCFile::status_Ok;
  }

 private:
  int CopyItems(const Node& group, Node& copy, const std::string& place) {
    StoredItem item;
    for (ItemWalk walk(group); walk.Next(item);) {
      const int status = item.type == 0 ? CopyGroup(group, item, copy, place)
                         : item.type == SCFile::value_Block
                             ? CopyBlock(item, copy, place)
                             : AppendStored(copy, item.code, item.type, item.count, item.data);
      if (status != SCFile::status_Ok) return status;
    }
    return SCFile::status_Ok;
  }

  int CopyGroup(const Node& parent,
                const StoredItem& item,
                Node& target,
                const std::string& place) {
    Node& child = m_from.AddGroup(const_cast<Node&>(parent), NodeState::Committed, item.code);
    ViewBody(child, item.data);
    child.rulesHold = true;
    const std::string name = NameOf(child) + " of " + place;
    if (parent.depth == 1 && !IsPlaced(child)) {
      m_findings.lost.push_back(name + ", since the group that it modifies is lost");
      return SCFile::status_Ok;
    }
    const SCFile::GroupTypeInfo* type = SCFile::file_GroupType(item.code);
    const bool hasSamples = type && type->key == "data";
    if (hasSamples) return CopyDataGroup(child, target, name);
    Node* copy = nullptr;
    if (const int status = AddPending(target, item.code, std::string(child.name), copy))
      return status;
    return CopyItems(child, *copy, name);
  }

  static std::string NameOf(const Node& group) {
    const SCFile::GroupTypeInfo* type = SCFile::file_GroupType(group.typeCode);
    if (!type) return "a group of type " + std::to_string(group.typeCode);
    std::string name = IsModification(*type, group) ? "a modification of a " : "a ";
    name += type->name;
    CGDataTypeFDD record;
    if (type->key == "data" &&
        gdata_ReadGroupInfo(const_cast<Node*>(&group), &record) == SCFile::status_Ok)
      name += " (class " + std::to_string(record.dataClass) + ", channel " +
              std::to_string(record.channelId) + ", sub-channel " +
              std::to_string(record.subChannelId) + ", gate " + std::to_string(record.gateId) + ")";
    return name;
  }

  static bool IsModification(const SCFile::GroupTypeInfo& type, const Node& group) {
    return type.HasModifierCode() && group.typeCode == type.modifierCode;
  }

  /// The type of a group and what tells it from others of that type.
  static std::string KeyOf(const SCFile::GroupTypeInfo& type, const Node& group) {
    std::string key(type.key);
    StoredItem item;
    for (ItemWalk walk(group); walk.Next(item);) {
      const SCFile::FieldInfo* field = type.Find(std::uint32_t{item.code});
      if (!field || !field->IsKey()) continue;
      key += ' ' + std::to_string(item.code) + ' ';
      key.append(reinterpret_cast<const char*>(item.data.data()), item.data.size());
    }
    return key;
  }

  /// Whether a group is no modification, or the group that it modifies is here. As long as no group
  /// is missing all are.
  bool IsPlaced(const Node& group) {
    const SCFile::GroupTypeInfo* type = SCFile::file_GroupType(group.typeCode);
    if (!type) return true;
    std::string key = KeyOf(*type, group);
    if (!m_isComplete && IsModification(*type, group) && !m_known.contains(key)) return false;
    m_known.insert(std::move(key));
    return true;
  }

  /// Leaves a data group out, and with it what modifies it.
  int LeaveOut(const Node& group, const std::string& name) {
    m_findings.lost.push_back(name +
                              ": its samples are damaged, and it cannot be said of which cells");
    m_known.erase(KeyOf(*SCFile::file_GroupType(group.typeCode), group));
    m_isComplete = false;
    return SCFile::status_Ok;
  }

  int ReadChunks(const StoredItem& item, WholeBytes& bytes) {
    bytes.block = DecodeBlockRef(item.data.data());
    std::vector<std::uint64_t> checksums;
    if (ReadChecksums(m_from, bytes.block, checksums) != SCFile::status_Ok) checksums.clear();
    std::vector<std::byte> chunk;
    for (std::uint64_t from = 0; from < bytes.block.size; from += bytes.block.chunk) {
      chunk.resize(static_cast<std::size_t>(std::min(bytes.block.chunk, bytes.block.size - from)));
      const auto index = static_cast<std::size_t>(from / bytes.block.chunk);
      const bool isWhole =
          index < checksums.size() &&
          ReadWhole(m_from, bytes.block.offset + from, chunk) == SCFile::status_Ok &&
          Checksum(chunk) == checksums[index];
      if (!isWhole && checksums.empty()) {
        bytes.lostChunks.assign(static_cast<std::size_t>(bytes.block.ChunkCount()), true);
        bytes.lostBytes = bytes.block.size;
        break;
      }
      bytes.lostChunks.push_back(!isWhole);
      if (!isWhole) bytes.lostBytes += chunk.size();
    }
    return SCFile::status_Ok;
  }

  int Append(Node& copy, std::uint16_t code, Bytes data) {
    BlockRef block;
    if (const int status = WriteBlock(*copy.file, data, block)) return status;
    return AppendStored(copy, code, SCFile::value_Block, 1, EncodeBlockRef(block));
  }

  int AppendWhole(Node& copy, std::uint16_t code, const BlockRef& block) {
    void* view = nullptr;
    if (const int status = MapBlock(m_from, block, &view)) return FailWrite(copy, status);
    const int status = Append(
        copy, code, {static_cast<const std::byte*>(view), static_cast<std::size_t>(block.size)});
    return UnmapBlock(m_from, view) ? status : FailWrite(copy, SCFile::status_BadArgument);
  }

  static int FailWrite(Node& copy, int status) {
    MarkFailed(copy, status);
    return status;
  }

  /// The bytes of a block behind `before` others; zeros where they are lost.
  int ReadWholeBytes(const WholeBytes& bytes, std::size_t before, std::vector<std::byte>& read) {
    read.resize(before + static_cast<std::size_t>(bytes.block.size));
    for (std::size_t chunk = 0; chunk < bytes.lostChunks.size(); ++chunk) {
      if (bytes.lostChunks[chunk]) continue;
      const std::uint64_t from = chunk * bytes.block.chunk;
      const auto size =
          static_cast<std::size_t>(std::min(bytes.block.chunk, bytes.block.size - from));
      const std::span<std::byte> part(read.data() + before + static_cast<std::size_t>(from), size);
      if (const int status = ReadWhole(m_from, bytes.block.offset + from, part)) return status;
    }
    return SCFile::status_Ok;
  }

  int CopyBlock(const StoredItem& item, Node& copy, const std::string& place) {
    WholeBytes bytes;
    if (const int status = ReadChunks(item, bytes)) return FailWrite(copy, status);
    if (bytes.lostBytes == 0) return AppendWhole(copy, item.code, bytes.block);
    // Nothing is left that memory would be worth: a hole claims any size at no cost.
    if (bytes.lostBytes == bytes.block.size) {
      m_findings.lost.push_back("the block of " + place);
      return SCFile::status_Ok;
    }
    m_findings.lost.push_back(std::to_string(bytes.lostBytes) + " bytes of the block of " + place +
                              ", which are zero now");
    std::vector<std::byte> read;
    if (const int status = ReadWholeBytes(bytes, 0, read)) return FailWrite(copy, status);
    return Append(copy, item.code, read);
  }

  int CopyDataGroup(Node& group, Node& target, const std::string& name) {
    StoredItem item;
    StoredItem samples = {};
    for (ItemWalk walk(group); walk.Next(item);)
      if (item.code == sampleBlockCode && item.type == SCFile::value_Block) samples = item;
    WholeBytes bytes;
    if (samples.type != 0)
      if (const int status = ReadChunks(samples, bytes)) return FailWrite(target, status);
    std::optional<CellLayout> layout;
    if (bytes.lostBytes > 0) {
      const bool isModification = IsModification(*SCFile::file_GroupType(group.typeCode), group);
      if (!isModification) layout = LayoutOf(group, bytes.block.size);
      const std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
      const std::uint64_t before = layout && !layout->isIndexed ? layout->cells * offsetSize : 0;
      if (!layout || bytes.block.size > most - std::min(most, before)) return LeaveOut(group, name);
    }
    Node* copy = nullptr;
    if (const int status = AddPending(target, group.typeCode, std::string(group.name), copy))
      return status;
    bool hasMode = false;
    for (ItemWalk walk(group); walk.Next(item);) {
      int status = SCFile::status_Ok;
      hasMode = hasMode || item.code == storageModeCode;
      if (layout && item.code == sampleBlockCode)
        status = AppendCells(*copy, bytes, *layout, name);
      else if (layout && item.code == storageModeCode)
        status = AppendIndexed(*copy, item.code);
      else if (item.type == SCFile::value_Block)
        status = CopyBlock(item, *copy, name);
      else if (item.type == 0)
        status = CopyGroup(group, item, *copy, name);
      else
        status = AppendStored(*copy, item.code, item.type, item.count, item.data);
      if (status != SCFile::status_Ok) return status;
    }
    return layout && !hasMode ? AppendIndexed(*copy, storageModeCode)
                              : static_cast<int>(SCFile::status_Ok);
  }

  static int AppendIndexed(Node& copy, std::uint16_t code) {
    std::array<std::byte, sizeof(std::uint32_t)> mode;
    Store(mode.data(), std::uint32_t{kvt_StorIndexed});
    return AppendStored(copy, code, SCFile::value_UInt32, 1, mode);
  }

  /// Writes samples with an offset for each cell, 0 for those that are lost.
  int AppendCells(Node& copy,
                  const WholeBytes& bytes,
                  const CellLayout& layout,
                  const std::string& name) {
    const std::uint64_t before = layout.isIndexed ? 0 : layout.cells * offsetSize;
    std::vector<std::byte> table;
    if (const int status = ReadWholeBytes(bytes, static_cast<std::size_t>(before), table))
      return FailWrite(copy, status);
    std::uint64_t lost = 0, first = 0, last = 0;
    for (std::uint64_t cell = 0; cell < layout.cells; ++cell) {
      std::byte* const entry = table.data() + static_cast<std::size_t>(cell * offsetSize);
      const bool isNamed = layout.isIndexed && !bytes.IsLost(cell * offsetSize, offsetSize);
      const std::uint64_t at =
          layout.isIndexed ? Load<std::uint32_t>(entry) : before + cell * layout.stride;
      const bool hasNone = isNamed && at == 0;
      const std::uint64_t from = layout.isIndexed ? at : cell * layout.stride;
      const bool isInside =
          from <= bytes.block.size && layout.vectorBytes <= bytes.block.size - from;
      const bool isLost = layout.isIndexed && !isNamed;
      if (isLost || (!hasNone && (!isInside || bytes.IsLost(from, layout.vectorBytes)))) {
        if (lost++ == 0) first = cell;
        last = cell;
        Store(entry, std::uint32_t{0});
      } else {
        Store(entry, static_cast<std::uint32_t>(at));
      }
    }
    const auto placeOf = [&](std::uint64_t cell) {
      return "row " + std::to_string(cell / layout.columns) + ", column " +
             std::to_string(cell % layout.columns);
    };
    if (lost > 0)
      m_findings.lost.push_back("the samples of " + std::to_string(lost) + " of " +
                                std::to_string(layout.cells) + " cells of " + name + ", from " +
                                placeOf(first) + " to " + placeOf(last));
    else
      m_findings.mended.push_back("bytes of the samples of " + name +
                                  ", which belong to no cell, were damaged");
    return Append(copy, sampleBlockCode, table);
  }

  static constexpr std::uint16_t storageModeCode = 44;

  OpenFile& m_from;
  Node& m_to;
  SCFile::RescueFindings& m_findings;
  bool m_isComplete = true;  ///< no group is missing so far
  std::string m_place;
  std::set<std::string> m_known;  ///< the types and key fields of groups that are taken
};

struct CloseUncommitted {
  void operator()(Node* file) const {
    SCFile::file_Discard(file);
    SCFile::file_Close(file);
  }
};

int Rescue(const wchar_t* from, const wchar_t* to, bool replace, SCFile::RescueFindings& findings) {
  OpenFile damaged;
  damaged.file = &damaged;
  damaged.path = from;
  damaged.fileSystem = &os::CurrentFileSystem();
  damaged.readOnly = true;
  if (const os::Error error =
          damaged.fileSystem->Open(damaged.path, os::OpenMode::Read, damaged.handle);
      error != os::Error::None)
    return FailOs(damaged.path, error, "cannot be opened");
  Salvage salvage(damaged, findings);
  if (const int status = salvage.Run()) return status;
  if (salvage.Tops().empty() && !findings.lost.empty())
    return FailAt(damaged, SCFile::status_Damaged, "nothing of an inspection is left in it");
  Node* created = nullptr;
  const int status =
      replace ? SCFile::file_CreateEx(to, &created) : SCFile::file_Create(to, &created);
  if (status != SCFile::status_Ok) return status;
  const std::unique_ptr<Node, CloseUncommitted> output(created);
  // A companion stays the one that it is, for its base and for those behind it.
  if (damaged.origin.IsCompanion()) created->file->origin = damaged.origin;
  if (const int copied = Rescuer(damaged, *created, findings).Copy(salvage.Tops())) return copied;
  return SCFile::file_Commit(created);
}

}  // namespace
}  // namespace utdata::kvtiff19

namespace SCFile {

int file_Rescue(const wchar_t* from, const wchar_t* to, bool replace, RescueFindings* findings) {
  using namespace utdata::kvtiff19;
  if (!from || !to || !findings) return BadCall("no file to rescue, or nowhere to put it");
  return Guarded([&] {
    *findings = {};
    return Rescue(from, to, replace, *findings);
  });
}

}  // namespace SCFile
