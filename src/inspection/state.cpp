#include "src/inspection/state.h"

#include <algorithm>
#include <utility>

#include "interfaces/framework.h"
#include "src/foundation/dataclass.h"

namespace utdata {
namespace {

/// While one exists, reports are dropped: those of a record that its item has normalised are for
/// developers, not for hosts.
class QuietReports {
 public:
  QuietReports() : m_before(SetReportSink([](const Report&) { return ReportAnswer::Continue; })) {}
  ~QuietReports() { SetReportSink(std::move(m_before)); }
  QuietReports(const QuietReports&) = delete;
  QuietReports& operator=(const QuietReports&) = delete;

 private:
  ReportSink m_before;
};

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

void InspectionState::Release::operator()(CFContTypeFileDescr* groups) const {
  DeleteGroups(*groups);
  CFCont().FileClose(groups);
  delete groups;
}

InspectionState::InspectionState(std::string filePath,
                                 CFContTypeFileDescr* loaded,
                                 const OpenOptions& openOptions)
    : path(std::move(filePath)), options(openOptions), descriptor(loaded) {
  FillBaseUnits();
  FillSet();
}

// Items that stand alone go before the volume set that has their units; mapped tables end with
// their file.
InspectionState::~InspectionState() {
  for (DataRow& row : rows)
    if (!row.isListed && row.item) row.item->idata9_DeferDelete();
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
  for (CGPatchTypeDescr* patch : groups.patches) set.fset_AddGPatch(patch, ofTheFile);
  for (CGProbeTypeDescr* probe : groups.probes) set.fset_AddGProbe(probe, ofTheFile);
  for (CGChanTypeDescr* channel : groups.channels) set.fset_AddGChan(channel, ofTheFile);
  for (CGSubchanTypeDescr* subChannel : groups.subChannels)
    set.fset_AddGSubChan(subChannel, ofTheFile);
  for (CGGateTypeDescr* gate : groups.gates) set.fset_AddGGate(gate, ofTheFile);
  for (CGInfoTypeDescr* info : groups.infos) set.fset_AddGInfo(info, ofTheFile);
  for (const CGDataTypeFDD* group : groups.data) AddRow(*group, ofTheFile);
  for (CGSpecmatTypeDescr* material : groups.specimenMaterials)
    specimen.spec_SpecMatAdd(material, ofTheFile);
  AddLatest(groups.weldScanPlans, [this](auto* plan) { set.fset_AddGWeldScanPlan(plan); });
  AddLatest(groups.weldFills, [this](auto* fill) { set.fset_AddGWeldFill(fill); });
}

DataRow& InspectionState::AddRow(const CGDataTypeFDD& stored, int isNew) {
  DataRow& row = rows.emplace_back();
  row.index = rows.size() - 1;
  row.stored = &stored;
  row.taken = stored;
  const QuietReports quiet;
  row.item = set.fset_AddGData(&row.taken, nullptr, &volume, isNew);
  // Some classes are answered with the item that has the ids already.
  row.isListed = row.item && rowOfItem.emplace(row.item, &row).second;
  if (!row.isListed) {
    row.taken = stored;
    row.item = new CIData(&row.taken, nullptr, &volume, isNew, nullptr);
    rowOfItem.emplace(row.item, &row);
  }
  data.emplace_back(*this, row);
  return row;
}

void InspectionState::RemoveLastRow() {
  CIData* const item = rows.back().item;
  rowOfItem.erase(item);
  data.pop_back();
  item->idata9_DeferDelete();
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
      DataRow& row = masterRows.emplace_back();
      row.index = index;
      row.taken = *master->idata1_GetGInfoRef();
      row.stored = &row.taken;
      row.item = master;
      return rowOfItem.emplace(master, &row).first->second;
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
    if (status != SCFile::status_Ok)
      throw Error::OfFileLayer(status, NameOf(row), "its samples cannot be mapped");
  }
  auto* bytes = static_cast<std::byte*>(mapped);
  if (options.tables == SampleTables::InMemory) {
    row.copy = std::make_unique_for_overwrite<std::byte[]>(size);
    bytes = row.copy.get();
  }
  row.chunks = std::make_unique<ChunkCheck>(std::move(chunks), bytes);
  if (row.copy) {
    const auto unmap = [&](const void*) {
      const std::lock_guard lock(m_fileLock);
      SCFile::file_BlockUnmap(SCFile::file_OfGroup(samples.group), mapped);
    };
    const std::unique_ptr<const void, decltype(unmap)> view(mapped, unmap);
    Load(row, static_cast<const std::byte*>(mapped));
  }
  // What the item may change is checked before it gets the table: an old header, and offsets.
  const CRDataTypeDD& layout = *row.item->Descriptor();
  const std::uint64_t cells = std::uint64_t{layout.rowQuantity} * layout.columnQuantity;
  constexpr std::uint64_t offsetSize = sizeof(std::uint32_t);
  static_cast<void>(row.chunks->IsWhole(0, gdata_OldHeaderSize(bytes, size)));
  if (layout.storageMode == kvt_StorIndexed)
    static_cast<void>(row.chunks->IsWhole(0, std::min(cells, size / offsetSize) * offsetSize));
  const QuietReports quiet;  // of a table that its layout does not fit; whoever reads it says so
  row.item->AttachTable(reinterpret_cast<char*>(bytes), true, size);
  if (!row.copy) row.item->SetDiskOrigin();
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
