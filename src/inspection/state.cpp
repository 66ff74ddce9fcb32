#include "src/inspection/state.h"

#include <algorithm>
#include <new>
#include <utility>

#include "interfaces/framework.h"
#include "src/foundation/dataclass.h"

namespace utdata {
namespace {

/// Calls add with the last descriptor of each identity, in the order of the list: changed ones
/// stand behind what they change.
template <class Descriptor, class Add>
void AddLatest(const CList<Descriptor*>& list, Add add) {
  std::map<SCFile::GroupIdentity::Ids, Descriptor*> latest;
  for (Descriptor* descriptor : list) latest[SCFile::file_Identity(*descriptor).ids] = descriptor;
  for (Descriptor* descriptor : list)
    if (latest[SCFile::file_Identity(*descriptor).ids] == descriptor) add(descriptor);
}

constexpr int ofTheFile = 0;

/// Whether an item of the set has the ids of a record, or no item can have them.
bool HasIds(CFSet& set, const CGDataTypeFDD& record) {
  return IsMaster(record.dataClass) || set.fset_GetIData(fset_All,
                                                         record.GetDataBookmarkType(),
                                                         record.GetPatchID(),
                                                         record.channelId,
                                                         record.subChannelId,
                                                         record.gateId,
                                                         record.dataClass);
}

/// Without memory the set answers null to an addition, and does not have the item.
void CheckAdded(const void* added, const void* isThere = nullptr) {
  if (!added && !isThere) throw std::bad_alloc();
}

/// The cells that a range of a row's table concerns, as far as that can be said before its offsets
/// are checked.
CellTable::CellsInRange CellsIn(const DataRow& row, std::uint64_t from, std::uint64_t size) {
  if (const CellTable* cells = row.readyCells.load(std::memory_order_acquire))
    return cells->CellsIn(from, size);
  const CRDataTypeDD& record = *row.item->Descriptor();
  try {
    return CellTable(record, row.table, {}).CellsIn(from, size);
  } catch (const Error&) {
    const std::uint64_t cells = std::uint64_t{record.rowQuantity} * record.columnQuantity;
    constexpr std::uint64_t offsetSize = sizeof(std::uint32_t);
    const std::uint64_t past = std::min(cells, (from + size) / offsetSize);
    const std::uint64_t first = from / offsetSize;
    if (record.storageMode != kvt_StorIndexed || first >= past) return {};
    return {past - first, first, past - 1};
  }
}

/// "the cells from row 0, column 3 to row 1, column 7 are damaged: bytes 12288 to 16383 of weld.fpd
/// do not match their checksum".
std::string ReasonOf(const DamagedSamples& damage, std::uint32_t columns) {
  const auto place = [&](std::uint64_t cell) {
    return "row " + std::to_string(cell / columns) + ", column " + std::to_string(cell % columns);
  };
  std::string why;
  if (damage.cells == 1) why = "the cell in " + place(damage.firstCell) + " is damaged: ";
  if (damage.cells > 1)
    why = std::to_string(damage.cells) + " cells from " + place(damage.firstCell) + " to " +
          place(damage.lastCell) + " are damaged: ";
  return why + "bytes " + std::to_string(damage.offset) + " to " +
         std::to_string(damage.offset + damage.size - 1) + " of " + damage.file +
         " do not match their checksum";
}

}  // namespace

void ReleaseGroups::operator()(CFContTypeFileDescr* groups) const {
  DeleteGroups(*groups);
  CFCont().FileClose(groups);
  delete groups;
}

InspectionState::InspectionState(std::string filePath,
                                 OwnedGroups loaded,
                                 const OpenOptions& openOptions)
    : path(std::move(filePath)), options(openOptions), descriptor(std::move(loaded)) {
  FillBaseUnits();
  FillSet();
}

void InspectionState::FillBaseUnits() {
  std::vector<kvt_enumAxis> angles;
  if (!descriptor->data.IsEmpty()) {
    const CGDataTypeFDD& first = *descriptor->data.GetHead();
    if (first.columnUnits == kvt_UnitDegree) angles.push_back(kvt_AxisColumn);
    if (first.rowUnits == kvt_UnitDegree) angles.push_back(kvt_AxisRow);
  }
  volume.vol_FillBaseUnits(angles);
}

void InspectionState::FillSet() {
  const CFContTypeFileDescr& groups = *descriptor;
  for (CGPatchTypeDescr* patch : groups.patches)
    CheckAdded(set.fset_AddGPatch(patch, ofTheFile), set.fset_GetIPatch(fset_All, patch->patchId));
  for (CGProbeTypeDescr* probe : groups.probes)
    CheckAdded(set.fset_AddGProbe(probe, ofTheFile), set.fset_GetIProbe(fset_All, probe->probeId));
  for (CGChanTypeDescr* channel : groups.channels)
    CheckAdded(set.fset_AddGChan(channel, ofTheFile),
               set.fset_GetIChan(fset_All, channel->channelId));
  for (CGSubchanTypeDescr* subChannel : groups.subChannels)
    CheckAdded(set.fset_AddGSubChan(subChannel, ofTheFile),
               set.fset_GetISubChan(fset_All, subChannel->subChannelId, subChannel->channelId));
  for (CGGateTypeDescr* gate : groups.gates)
    CheckAdded(set.fset_AddGGate(gate, ofTheFile),
               set.fset_GetIGate(fset_All, gate->gateId, gate->channelId));
  for (CGInfoTypeDescr* info : groups.infos)
    CheckAdded(set.fset_AddGInfo(info, ofTheFile), set.fset_GetIInfo(fset_All));
  for (const CGDataTypeFDD* group : groups.data) AddRow(*group, ofTheFile);
  for (CGSpecmatTypeDescr* material : groups.specimenMaterials)
    CheckAdded(specimen.spec_SpecMatAdd(material, ofTheFile), specimen.spec_SpecMatGet(spec_All));
  AddLatest(groups.weldScanPlans,
            [this](auto* plan) { CheckAdded(set.fset_AddGWeldScanPlan(plan)); });
  AddLatest(groups.weldFills, [this](auto* fill) { CheckAdded(set.fset_AddGWeldFill(fill)); });
}

DataRow& InspectionState::AddRow(const CGDataTypeFDD& stored, int isNew) {
  DataRow& row = rows.emplace_back();
  row.index = rows.size() - 1;
  row.stored = &stored;
  row.taken = stored;
  row.isListed = false;
  const QuietReports quiet;
  try {
    // The places come first: once the set has the item, nothing can fail any more.
    std::map<const CIData*, DataRow*> place{{nullptr, &row}};
    data.emplace_back(*this, row);
    CIData* item = set.fset_AddGData(&row.taken, nullptr, &volume, isNew, &row.isListed);
    if (!row.isListed) {
      // Another group has the ids, or memory has run out: then nobody has them.
      if (!item && !HasIds(set, stored)) throw std::bad_alloc();
      row.taken = stored;
      item = new CIData(&row.taken, nullptr, &volume, isNew, nullptr);
    }
    row.item = item;
    auto node = place.extract(place.begin());
    node.key() = item;
    rowOfItem.insert(std::move(node));
  } catch (...) {
    if (data.size() == rows.size()) data.pop_back();
    rows.pop_back();
    throw;
  }
  return row;
}

void InspectionState::RemoveLastRow() noexcept {
  DataRow& row = rows.back();
  rowOfItem.erase(row.item);
  data.pop_back();
  if (row.isListed) set.RemoveItem(row.item);
  rows.pop_back();
}

DataRow* InspectionState::RowOf(const CIData* item) {
  if (!item) return nullptr;
  if (const auto found = rowOfItem.find(item); found != rowOfItem.end()) return found->second;
  CIDataLst masters;
  set.fset_GetMSCIDataLst(&masters);
  std::size_t index = 0;
  for (CIData* master : masters) {
    if (master == item) {
      DataRow*& place = rowOfItem.emplace(master, nullptr).first->second;
      try {
        place = &masterRows.emplace_back();
      } catch (...) {
        rowOfItem.erase(master);
        throw;
      }
      place->index = index;
      place->taken = *master->idata1_GetGInfoRef();
      place->stored = &place->taken;
      place->item = master;
      return place;
    }
    ++index;
  }
  return nullptr;
}

std::string InspectionState::NameOf(const DataRow& row) const {
  return path + ": data group " + std::to_string(row.index);
}

std::span<const std::byte> InspectionState::TableOf(DataRow& row) {
  const std::unique_lock lock(row.tableLock, options.tableTimeout);
  if (!lock.owns_lock())
    throw Error(NameOf(row), "cannot be read", "its samples are not in memory yet");
  if (row.table.empty()) Attach(row);
  return row.table;
}

const CellTable& InspectionState::CellsOf(DataRow& row) {
  if (const CellTable* ready = row.readyCells.load(std::memory_order_acquire)) return *ready;
  TableOf(row);
  const std::lock_guard lock(row.tableLock);
  if (!row.cells) {
    TableCheck check;
    check.chunks = row.chunks.get();
    check.refuse = [this, &row](std::uint64_t from, std::uint64_t size) {
      Refuse(row, from, size);
    };
    row.cells = std::make_unique<CellTable>(
        *row.item->Descriptor(), row.table, NameOf(row), std::move(check));
    row.readyCells.store(row.cells.get(), std::memory_order_release);
  }
  return *row.cells;
}

// The item never frees a table that is called mapped, so that both kinds live as long as the row.
void InspectionState::Attach(DataRow& row) {
  const gdata_typeSampleRef& samples = row.stored->samples;
  std::uint64_t size = 0;
  SCFile::BlockChunks chunks;
  void* mapped = nullptr;
  {
    const std::lock_guard lock(m_fileLock);
    int status = samples.group ? SCFile::file_BlockChunks(samples.group, samples.item, &chunks)
                               : static_cast<int>(SCFile::status_Ok);
    if (status == SCFile::status_Ok) status = gdata_SamplesMap(row.stored, &mapped, &size);
    if (status == SCFile::status_TooLarge) throw std::bad_alloc();
    if (status != SCFile::status_Ok)
      throw Error::OfFileLayer(status, NameOf(row), "its samples cannot be mapped");
  }
  const auto unmap = [&](const void*) {
    const std::lock_guard lock(m_fileLock);
    SCFile::file_BlockUnmap(SCFile::file_OfGroup(samples.group), mapped);
  };
  std::unique_ptr<const void, decltype(unmap)> view(mapped, unmap);
  auto* bytes = static_cast<std::byte*>(mapped);
  if (options.tables == SampleTables::InMemory) {
    row.copy = std::make_unique_for_overwrite<std::byte[]>(size);
    bytes = row.copy.get();
  }
  row.chunks = std::make_unique<ChunkCheck>(std::move(chunks), bytes);
  if (row.copy) Load(row, static_cast<const std::byte*>(mapped));
  // What the item may change is checked before it gets the table: an old header, and offsets.
  const CRDataTypeDD& layout = *row.item->Descriptor();
  const std::uint64_t cells = std::uint64_t{layout.rowQuantity} * layout.columnQuantity;
  constexpr std::uint64_t offsetSize = sizeof(std::uint32_t);
  static_cast<void>(row.chunks->IsWhole(0, gdata_OldHeaderSize(bytes, size)));
  if (layout.storageMode == kvt_StorIndexed)
    static_cast<void>(row.chunks->IsWhole(0, std::min(cells, size / offsetSize) * offsetSize));
  const QuietReports quiet;  // of a table that its layout does not fit; whoever reads it says so
  row.item->AttachTable(reinterpret_cast<char*>(bytes), true, size);
  if (!row.copy) {
    row.item->SetDiskOrigin();
    view.release();  // it ends with its file
  }
  row.table = {bytes, size};
}

/// Brings a mapped table into memory, and checks each piece as it arrives.
void InspectionState::Load(DataRow& row, const std::byte* mapped) {
  const std::uint64_t size = row.chunks->Size();
  const std::uint64_t piece = std::max(row.chunks->ChunkSize(), std::uint64_t{1} << 20U);
  constexpr std::uint64_t reported = std::uint64_t{16} << 20U;
  for (std::uint64_t at = 0; at < size; at += piece) {
    if (options.watch && at % reported == 0) options.watch("loading samples", at, size);
    const std::uint64_t end = std::min(size, at + piece);
    std::copy(mapped + at, mapped + end, row.copy.get() + at);
    for (std::uint64_t from = at; from < end; from += row.chunks->ChunkSize())
      static_cast<void>(row.chunks->IsWhole(from, 1));
  }
}

void InspectionState::CheckTable(DataRow& row, std::uint64_t from, std::uint64_t size) {
  TableOf(row);
  if (!row.chunks) return;
  bool isWhole = true;
  const std::uint64_t step = row.chunks->ChunkSize();
  for (std::uint64_t at = from; at < from + size; at += step - at % step)
    isWhole = row.chunks->IsWhole(at, 1) && isWhole;
  if (!isWhole) Refuse(row, from, size);
}

void InspectionState::Refuse(DataRow& row, std::uint64_t from, std::uint64_t size) {
  if (options.acceptDamage) return;
  const std::uint64_t step = row.chunks->ChunkSize();
  std::uint64_t chunk = from / step;
  while (!row.chunks->IsKnownDamaged(chunk) && (chunk + 1) * step < from + size) ++chunk;
  throw Error(NameOf(row),
              "cannot be read",
              DamageAt(row, chunk).why,
              "restore the file from a copy, or accept the damage: such cells then count as cells "
              "without samples",
              SCFile::status_Damaged);
}

DamagedSamples InspectionState::DamageAt(DataRow& row, std::uint64_t chunk) {
  const std::uint64_t step = row.chunks->ChunkSize();
  const std::uint64_t from = chunk * step;
  while (chunk + 1 < row.chunks->Quantity() && row.chunks->IsKnownDamaged(chunk + 1)) ++chunk;
  const std::uint64_t size = std::min(row.chunks->Size(), (chunk + 1) * step) - from;
  const gdata_typeSampleRef& samples = row.stored->samples;
  DamagedSamples damage;
  damage.group = row.index;
  damage.file = ToUtf8(SCFile::file_Path(SCFile::file_OfGroup(samples.group)));
  damage.offset = samples.offset + from;
  damage.size = size;
  const CellTable::CellsInRange cells = CellsIn(row, from, size);
  damage.cells = cells.quantity;
  damage.firstCell = cells.first;
  damage.lastCell = cells.last;
  damage.why = ReasonOf(damage, row.item->Descriptor()->columnQuantity);
  return damage;
}

std::vector<DamagedSamples> InspectionState::FoundDamage() {
  std::vector<DamagedSamples> found;
  for (DataRow& row : rows) {
    const std::lock_guard lock(row.tableLock);
    if (!row.chunks) continue;
    for (std::uint64_t chunk = 0; chunk < row.chunks->Quantity(); ++chunk) {
      if (!row.chunks->IsKnownDamaged(chunk)) continue;
      found.push_back(DamageAt(row, chunk));
      while (chunk < row.chunks->Quantity() && row.chunks->IsKnownDamaged(chunk)) ++chunk;
    }
  }
  return found;
}

std::optional<DamagedSamples> InspectionState::FirstDamage(DataRow& row) {
  if (!row.stored->samples.group || row.stored->samples.size == 0) return std::nullopt;
  TableOf(row);
  if (row.chunks)
    for (std::uint64_t chunk = 0; chunk < row.chunks->Quantity(); ++chunk)
      if (!row.chunks->IsWhole(chunk * row.chunks->ChunkSize(), 1)) return DamageAt(row, chunk);
  return std::nullopt;
}

}  // namespace utdata
