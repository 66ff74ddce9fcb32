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
  TableOf(row);
  const std::lock_guard lock(row.tableLock);
  if (!row.cells)
    row.cells = std::make_unique<CellTable>(*row.item->Descriptor(), row.table, NameOf(row));
  return *row.cells;
}

// The item never frees a table that is called mapped, so that both kinds live as long as the row.
void InspectionState::Attach(DataRow& row) {
  std::uint64_t size = 0;
  const int status = gdata_SamplesMap(row.stored, &row.mapped, &size);
  if (status != SCFile::status_Ok)
    throw Error::OfFileLayer(status, NameOf(row), "its samples cannot be mapped");
  auto* bytes = static_cast<std::byte*>(row.mapped);
  if (options.tables == SampleTables::InMemory) {
    constexpr std::uint64_t piece = std::uint64_t{16} << 20U;
    auto copy = std::make_unique<std::byte[]>(size);
    for (std::uint64_t at = 0; at < size; at += piece) {
      if (options.watch) options.watch("loading samples", at, size);
      std::copy_n(bytes + at, std::min(piece, size - at), copy.get() + at);
    }
    SCFile::file_BlockUnmap(SCFile::file_OfGroup(row.stored->samples.group), row.mapped);
    row.mapped = nullptr;
    row.copy = std::move(copy);
    bytes = row.copy.get();
  }
  const QuietReports quiet;  // of a table that its layout does not fit; whoever reads it says so
  row.item->AttachTable(reinterpret_cast<char*>(bytes), true, size);
  if (options.tables == SampleTables::Mapped) row.item->SetDiskOrigin();
  row.table = {bytes, size};
}

}  // namespace utdata
