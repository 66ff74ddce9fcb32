#include "utdata/inspection.h"

#include <cmath>
#include <filesystem>
#include <memory>
#include <new>
#include <utility>

#include "interfaces/os.h"
#include "src/container/companions.h"
#include "src/container/subchannels.h"
#include "src/inspection/companionwarnings.h"
#include "src/inspection/groupitems.h"
#include "utdata/grouplists.h"

namespace utdata {
namespace {

constexpr const char* cannotBeWritten = "cannot be written";

bool Exists(const std::wstring& path) { return os::CurrentFileSystem().Exists(path); }

// How many groups of one list an inspection has: of the types that a file set holds, the items
// there; of the others, the groups of the descriptor.

std::size_t Count(InspectionState& state, const CList<CGDataTypeFDD*>&) {
  CIDataLst found;
  return state.set.fset_GetIDataLst(&found);
}
std::size_t Count(InspectionState& state, const CList<CGWeldScanPlanDescr*>&) {
  return state.set.fset_GetGWeldScanPlanList().size();
}
std::size_t Count(InspectionState& state, const CList<CGWeldFillDescr*>&) {
  return state.set.fset_GetGWeldFillList().size();
}
template <class Descriptor>
std::size_t Count(InspectionState& state, const CList<Descriptor*>& list) {
  // The specimen, not the file set, holds the material.
  if constexpr (requires { GroupItems<Descriptor>::List(state, fset_All); } &&
                !std::is_same_v<Descriptor, CGSpecmatTypeDescr>)
    return GroupItems<Descriptor>::List(state, fset_All).size();
  return static_cast<std::size_t>(list.GetCount());
}

/// Why a file that did not load cannot be opened: FileLoad has no status.
int StatusOfOpening(const std::wstring& path) {
  SCFile::FileHandle file = nullptr;
  const int status = SCFile::file_OpenReadOnly(path.c_str(), &file);
  if (status == SCFile::status_Ok) SCFile::file_Close(file);
  return status;
}

std::unique_ptr<InspectionState> Load(const std::string& path, const OpenOptions& options) {
  CFCont container;
  const std::wstring widePath = ToWide(path);
  OwnedGroups loaded(container.FileLoad(widePath.c_str(), nullptr, nullptr));
  if (!loaded) throw Error::OfFileLayer(StatusOfOpening(widePath), path, "cannot be loaded");
  std::vector<CompanionFault> faults;
  CFContTypeFileDescr* const base = loaded.release();  // a failed update deletes it
  if (container.UpdateFromCompanions(base, nullptr, faults) != 0)
    throw Error::OfFileLayer(SCFile::status_Ok, path, "a companion cannot be read");
  loaded.reset(base);
  // Without sub-channels' descriptors, numbering would take each data group for a whole channel's.
  if (!base->subChannels.IsEmpty()) {
    container.UpdateSubChannelList(base);
    if (!base->IsNumbered()) throw std::bad_alloc();
  }
  auto state = std::make_unique<InspectionState>(path, std::move(loaded), options);
  for (const CompanionFault& fault : faults) state->companionProblems.push_back(ProblemOf(fault));
  return state;
}

std::string LastFile(const InspectionState& state) {
  return ToUtf8(SCFile::file_Path(state.descriptor->files.GetTail()));
}

void WarnOfCompanions(InspectionState& state) {
  const CFContTypeFileDescr& groups = *state.descriptor;
  const SCFile::FileOrigin origin = SCFile::file_Origin(groups.files.GetHead());
  if (!origin.IsCompanion())
    for (CompanionProblem& lost : FindLostCompanions(
             groups.path, origin.identity, static_cast<std::size_t>(groups.files.GetCount()) - 1))
      state.companionProblems.push_back(std::move(lost));
  for (const CompanionProblem& problem : state.companionProblems)
    state.warnings.push_back(problem.Line());
}

/// Changes go behind everything that was changed before: what was not read would stand between, or
/// behind them.
void CheckNothingIsLeftOut(const InspectionState& state, const char* what, bool isAppended) {
  const CFContTypeFileDescr& groups = *state.descriptor;
  if (!groups.files.IsEmpty() && SCFile::file_Origin(groups.files.GetHead()).IsCompanion())
    throw Error(state.path,
                what,
                "it is " + DescribeCompanion(state.path) + ", opened alone",
                "open its base");
  for (const CompanionProblem& problem : state.companionProblems)
    if (!problem.isRead && !(isAppended && problem.isForeign))
      throw Error(state.path, what, problem.Line(), "bring it in order, or move it away");
}

/// What follows an item that could not be read is not in memory; FileWrite refuses such a table.
void WarnOfLostDefects(InspectionState& state) {
  for (const ShortenedDefect& defect : ShortenedDefects(*state.descriptor))
    state.warnings.push_back(state.path + ": defect record " + std::to_string(defect.place) +
                             " is cut short: " + defect.reason);
}

/// The record of a data group with the ids of another; null when there is none.
const CGDataTypeFDD* FindWritten(const CFContTypeFileDescr& groups, const CGDataTypeFDD& record) {
  for (const CGDataTypeFDD* group : groups.data)
    if (group->dataClass == record.dataClass && group->channelId == record.channelId &&
        group->subChannelId == record.subChannelId && group->gateId == record.gateId &&
        group->GetPatchID() == record.GetPatchID() &&
        group->GetDataBookmarkType() == record.GetDataBookmarkType())
      return group;
  return nullptr;
}

/// After a save: the items are as the files say, and what was added stands in a file. Takes no
/// memory: the save is done.
void Settle(InspectionState& state, Changes& changes) noexcept {
  for (DataRow& row : state.rows) {
    if (row.added)
      if (const CGDataTypeFDD* written = FindWritten(*state.descriptor, *row.added))
        row.stored = written;
    row.taken = *row.item->idata1_GetGInfoRef();
    row.item->idata3_ClearModified();
    row.item->idata3_ClearNew();
  }
  state.saved.merge(changes.newItems);
  state.set.fset_ClearModified();
  state.set.fset_ClearNew();
  if (CISpecMat* material = state.specimen.spec_SpecMatGet(spec_Modified))
    material->ismat1_ModifClear();
}

/// While it stands, loaded records that share their ids in the file have the bookmark types that
/// their items were given: these tell them from each other, and a file may not hold them yet.
class BookmarksOfItems {
 public:
  explicit BookmarksOfItems(const InspectionState& state) {
    using namespace container;
    const auto key = [](const CGDataTypeFDD& record) {
      return KeyUnder(record, StoredIdOf(record));
    };
    std::map<const CGDataTypeFDD*, const DataRow*> rows;
    for (const DataRow& row : state.rows) rows.emplace(row.stored, &row);
    std::map<Key, std::size_t> quantity;
    for (const CGDataTypeFDD* record : state.descriptor->data) ++quantity[key(*record)];
    for (CGDataTypeFDD* record : state.descriptor->data) {
      const auto row = rows.find(record);
      if (row == rows.end() || record->GetDataBookmarkType() != bookmark_None ||
          quantity[key(*record)] < 2)
        continue;
      m_given.push_back(record);
      record->SetDataBookmarkType(row->second->taken.GetDataBookmarkType());
    }
  }
  BookmarksOfItems(const BookmarksOfItems&) = delete;
  BookmarksOfItems& operator=(const BookmarksOfItems&) = delete;
  ~BookmarksOfItems() {
    for (CGDataTypeFDD* record : m_given)
      record->SetDataBookmarkType(static_cast<eDataBookmarkType>(record->stored.bookmark));
  }

 private:
  std::vector<CGDataTypeFDD*> m_given;
};

/// Throws when a text of it is not one.
SCFile::Signature Wide(const Signature& signature) {
  return {ToWide(signature.program),
          ToWide(signature.version),
          ToWide(signature.author),
          ToWide(signature.reason)};
}

/// A save that copies samples has met damaged ones: in a file that was read, not in the new one.
[[noreturn]] void ThrowOfDamagedInput(InspectionState& state) {
  constexpr const char* what = "cannot be copied";
  const Error failure = Error::OfFileLayer(SCFile::status_Damaged, state.path, what);
  for (DataRow& row : state.rows)
    if (const auto damage = state.FirstDamage(row))
      throw Error(state.NameOf(row),
                  what,
                  damage->why,
                  "restore the file from a copy",
                  SCFile::status_Damaged);
  throw failure;
}

void CheckSomething(const InspectionState& state, const Changes& changes) {
  if (changes.isEmpty) throw Error(state.path, cannotBeWritten, "nothing has changed");
}

/// Loading drops modifications of general information.
void CheckInPlace(InspectionState& state) {
  const CIInfo* info = state.set.fset_GetIInfo(fset_Modified);
  if (info && !info->iinfo1_NewGetStatus())
    throw Error(state.path,
                cannotBeWritten,
                "changed general information is part of a whole file only",
                "write everything as a new file");
}

}  // namespace

Inspection::Inspection(std::unique_ptr<InspectionState> state) : m_state(std::move(state)) {}
Inspection::Inspection(Inspection&&) noexcept = default;
Inspection& Inspection::operator=(Inspection&&) noexcept = default;
Inspection::~Inspection() = default;

Inspection Inspection::Open(const std::string& path, const OpenOptions& options) {
  Inspection inspection(Load(path, options));
  WarnOfCompanions(*inspection.m_state);
  WarnOfLostDefects(*inspection.m_state);
  inspection.m_state->WarnOfRepairs();
  return inspection;
}

Inspection Inspection::New(const std::string& path) {
  OwnedGroups groups(new CFContTypeFileDescr);
  if (!groups->SetPath(ToWide(path))) throw Error(path, cannotBeWritten, "the path is too long");
  return Inspection(std::make_unique<InspectionState>(path, std::move(groups), OpenOptions()));
}

const std::string& Inspection::Path() const { return m_state->path; }

std::vector<std::string> Inspection::Files() const {
  std::vector<std::string> paths;
  for (const SCFile::FileHandle file : m_state->descriptor->files)
    paths.push_back(ToUtf8(SCFile::file_Path(file)));
  return paths;
}

const std::vector<std::string>& Inspection::Warnings() const { return m_state->warnings; }

std::vector<DamagedSamples> Inspection::Damage() const { return m_state->FoundDamage(); }

const std::vector<DataGroup>& Inspection::Data() const { return m_state->data; }

DataGroup Inspection::Data(const DataQuery& query) const {
  const auto matches = [](const auto& wanted, std::uint32_t id) {
    return !wanted || *wanted == id;
  };
  std::optional<DataGroup> found;
  for (const DataGroup& group : m_state->data) {
    const CGDataTypeFDD& record = group.Taken();
    if (!matches(query.dataClass, group.Class()) || !matches(query.channel, record.channelId) ||
        !matches(query.subChannel, record.subChannelId) || !matches(query.gate, record.gateId) ||
        !matches(query.patch, record.GetPatchID()))
      continue;
    if (found) throw Error(Path(), "cannot be searched", "several data groups match");
    found = group;
  }
  if (!found) throw Error(Path(), "cannot be searched", "no data group matches");
  return *found;
}

std::vector<DataGroup> Inspection::Masters() const {
  CIDataLst list;
  m_state->set.fset_GetMSCIDataLst(&list);
  std::vector<DataGroup> masters;
  for (const CIData* master : list) masters.emplace_back(*m_state, *m_state->RowOf(master));
  return masters;
}

std::vector<DataGroup> Inspection::DataOfChannel(std::uint32_t channel) const {
  CIDataLst list;
  m_state->set.fset_GetSpecificChannelSortedIDataList(channel, &list);
  std::vector<DataGroup> groups;
  for (const CIData* item : list)
    if (DataRow* row = m_state->RowOf(item)) groups.emplace_back(*m_state, *row);
  return groups;
}

std::map<std::uint32_t, std::vector<DataGroup>> Inspection::DataByChannel() const {
  std::map<std::uint32_t, std::vector<DataGroup>> channels;
  for (const DataGroup& group : m_state->data)
    if (group.IsListed()) channels[group.Descriptor().GetChannelID()];
  for (auto& [channel, groups] : channels) groups = DataOfChannel(channel);
  return channels;
}

std::optional<DataGroup> Inspection::DataOf(const CIData* item) const {
  DataRow* row = m_state->RowOf(item);
  return row ? std::optional(DataGroup(*m_state, *row)) : std::nullopt;
}

DataGroup Inspection::AddData(const CGDataTypeFDD& record, std::span<std::byte> samples) {
  auto added = std::make_unique<CGDataTypeFDD>(record);
  added->dataPointer = samples.empty() ? nullptr : samples.data();
  added->dataSize = samples.size();
  added->samples = {};
  added->SetGroupHandle(nullptr);
  DataRow& row = m_state->AddRow(*added, 1);
  row.added = std::move(added);
  row.table = samples;  // the item took it with the record
  row.added->SetDataBookmarkType(row.taken.GetDataBookmarkType());
  if (!row.isListed) {
    const std::unique_ptr<CGDataTypeFDD> dropped = std::move(row.added);
    m_state->RemoveLastRow();
    throw Error(Path() + ": data group " + std::to_string(m_state->rows.size()),
                "cannot be added",
                "another data group has its ids",
                "give it another channel, sub-channel or gate");
  }
  return {*m_state, row};
}

DataGroup Inspection::AddData(const CGDataTypeFDD& record, std::vector<std::byte> samples) {
  const DataGroup added = AddData(record, std::span(samples));
  m_state->rows.back().samples = std::move(samples);
  return added;
}

std::vector<std::pair<std::string, std::size_t>> Inspection::CountGroups() const {
  std::vector<std::pair<std::string, std::size_t>> counts;
  VisitGroupLists(*m_state->descriptor, [&](std::string_view key, const auto& list) {
    counts.emplace_back(key, Count(*m_state, list));
  });
  return counts;
}

GateHandle Inspection::Gate(std::uint32_t channel, std::uint32_t gate) const {
  CIGate* item = m_state->set.fset_GetIGate(fset_All, gate, channel);
  if (!item)
    throw Error(Path(),
                "cannot be searched",
                "channel " + std::to_string(channel) + " has no gate " + std::to_string(gate));
  return GateHandle(*item);
}

bool Inspection::IsModified() const { return !Changes(*m_state).isEmpty; }

std::string Inspection::SaveCompanion(const Signature& signature) {
  constexpr std::size_t listed = 98;  // the next one would never be read
  const BookmarksOfItems bookmarks(*m_state);
  Changes changes(*m_state);
  CheckSomething(*m_state, changes);
  CheckInPlace(*m_state);
  CFContTypeFileDescr& loaded = *m_state->descriptor;
  constexpr const char* what = "its companion cannot be written";
  CheckNothingIsLeftOut(*m_state, what, false);
  if (container::ListCompanions(loaded.path).size() >= listed)
    throw Error(Path(),
                what,
                "it has 98 companions, and no more are read",
                "write everything as a new file");
  const auto filesBefore = loaded.files.GetCount();
  const int number = static_cast<int>(container::ListCompanions(loaded.path).size()) + 1;
  std::string path = ToUtf8(container::CompanionName(loaded.path, number));
  const SCFile::SigningScope signing(Wide(signature));
  const int status = CFCont().FileWrite(&loaded, &changes.groups, 1, nullptr, nullptr, 0);
  if (status == SCFile::status_NotDurable) Settle(*m_state, changes);  // it is written all the same
  if (status != SCFile::status_Ok) throw Error::OfFileLayer(status, Path(), what);
  if (loaded.files.GetCount() == filesBefore)
    throw Error(Path(),
                what,
                "one before the last companion is missing",
                "bring it back, or move away those behind it");
  Settle(*m_state, changes);
  return path;
}

std::string Inspection::SaveAppended(const Signature& signature) {
  const BookmarksOfItems bookmarks(*m_state);
  Changes changes(*m_state);
  CheckSomething(*m_state, changes);
  CheckInPlace(*m_state);
  CheckNothingIsLeftOut(*m_state, cannotBeWritten, true);
  CFContTypeFileDescr& loaded = *m_state->descriptor;
  std::string path = LastFile(*m_state);
  const SCFile::SigningScope signing(Wide(signature));
  const int status = CFCont().FileWrite(&loaded, &changes.groups, 0, nullptr, nullptr, 0);
  if (status != SCFile::status_Ok) throw Error::OfFileLayer(status, path, cannotBeWritten);
  Settle(*m_state, changes);
  return path;
}

void Inspection::SaveAs(const std::string& path, bool replace, const Signature& signature) {
  for (const std::string& file : Files()) {
    std::error_code ignored;
    if (std::filesystem::equivalent(file, path, ignored))
      throw Error(path, cannotBeWritten, "it is the inspection file itself", "choose another name");
  }
  const Changes changes(*m_state, Changes::Scope::SinceOpening);
  CFContTypeFileDescr copy;
  if (!copy.SetPath(ToWide(path))) throw Error(path, cannotBeWritten, "the path is too long");
  MergeInto(copy, *m_state->descriptor, changes);
  copy.defectTableFlag = copy.defects.IsEmpty() ? 0 : 1;
  SCFile::GroupHandle top = nullptr;
  SCFile::FileHandle file = nullptr;
  const SCFile::SigningScope signing(Wide(signature));
  const int status = CFCont().FileWrite(nullptr, &copy, replace ? 0 : 1, &top, &file, 0);
  // Everything is committed, or nothing is to be.
  const std::unique_ptr<SCFile::Node, decltype(&SCFile::file_Close)> written(file,
                                                                             SCFile::file_Close);
  if (status == SCFile::status_Damaged) ThrowOfDamagedInput(*m_state);
  if (status != SCFile::status_Ok) throw Error::OfFileLayer(status, path, cannotBeWritten);
}

CFSet& Inspection::FileSet() const { return m_state->set; }
CSpec& Inspection::Specimen() const { return m_state->specimen; }
CVolumeSet& Inspection::VolumeSet() const { return m_state->volume; }
CFContTypeFileDescr& Inspection::Descriptor() const { return *m_state->descriptor; }
IGDataSupplier& Inspection::Supplier() const { return *m_state; }

double GateHandle::Start() const { return std::as_const(*m_gate).igate1_GetInfoRef()->start; }
double GateHandle::Width() const { return std::as_const(*m_gate).igate1_GetInfoRef()->width; }
double GateHandle::Level() const {
  return std::as_const(*m_gate).igate1_GetInfoRef()->positiveLevel;
}

void GateHandle::SetStart(double seconds) const {
  if (!std::isfinite(seconds)) throw Error({}, "gate start cannot be set", "it is not a number");
  m_gate->Start(static_cast<float>(seconds));
}

void GateHandle::SetWidth(double seconds) const {
  if (!std::isfinite(seconds) || seconds <= 0)
    throw Error({}, "gate width cannot be set", "it is not above 0");
  m_gate->Width(static_cast<float>(seconds));
}

void GateHandle::SetLevel(double percent) const {
  constexpr double largest = 1000;
  if (!(percent >= 0 && percent <= largest))
    throw Error({}, "gate level cannot be set", "it is not from 0 to 1000 %");
  m_gate->PLevel(static_cast<float>(percent));
  m_gate->NLevel(static_cast<float>(percent));
}

void CheckNewInspection(const std::string& path, bool replace) {
  const std::wstring widePath = ToWide(path);
  if (!replace && Exists(widePath))
    throw Error(path, cannotBeWritten, "the file exists", {}, SCFile::status_Exists);
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  std::error_code ignored;
  if (!folder.empty() && !std::filesystem::is_directory(folder, ignored))
    throw Error(path, cannotBeWritten, "its folder does not exist", "make the folder first");
  if (const auto companions = container::CompanionsBehind(widePath, 0); !companions.empty())
    throw Error(path,
                cannotBeWritten,
                ToUtf8(companions.front()) + " would stand beside it as a companion",
                "move that file away or choose another name");
}

}  // namespace utdata
