#include "tests/fuzz/inspection/checks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <set>

#include "platform/kvtiff19/format.h"
#include "tests/fuzz/inspection/forge.h"
#include "tests/fuzz/inspection/observe.h"
#include "tests/support/file_snapshot.h"
#include "tests/support/file_system_in_place.h"
#include "tests/support/known_surroundings.h"
#include "utdata/companions.h"
#include "utdata/edits.h"
#include "utdata/gating.h"

namespace utdata::fuzz {
namespace {

void Require(bool condition, const char* what, const std::string& difference = {}) {
  if (condition) return;
  std::fprintf(stderr, "does not hold: %s\n%s\n", what, difference.c_str());
  std::abort();
}

template <class Seen>
void RequireSame(const Seen& a, const Seen& b, const char* what) {
  if (a == b) return;
  Require(false, what, Difference(a, b));
}

bool IsClean(const std::wstring& path) {
  return SCFile::file_Verify(path.c_str(), nullptr) == SCFile::status_Ok;
}

/// A number of a field or of its range as people write it.
std::string TextFor(const SCFile::FieldInfo& field, std::uint32_t value) {
  using SCFile::FieldKind;
  if (field.kind == FieldKind::Text) return std::string(value % 20, 'e');
  if (field.kind == FieldKind::Choice)
    return std::string(field.choices[value % field.choices.size()].name);
  if (value % 4 == 0) return std::to_string(value / 4 % 256);
  const double part = static_cast<double>(value) / 4294967295.0;
  const double number = field.minimum + part * (field.maximum - field.minimum);
  const bool isWhole = field.kind != FieldKind::Quantity;
  return std::to_string(isWhole ? static_cast<double>(static_cast<std::int64_t>(number)) : number);
}

bool IsSameNumber(const SeenField& a, const SeenField& b) {
  if (a.value == b.value) return true;
  if (!a.field->access.number) return false;
  double was = 0, is = 0;
  std::memcpy(&was, a.value.data(), sizeof was);
  std::memcpy(&is, b.value.data(), sizeof is);
  return was == is || (was != was && is != is);
}

class Session {
 public:
  explicit Session(const Plan& plan) : m_plan(plan), m_inPlace(m_disk) {
    m_surroundings.random = 1;
    m_surroundings.now = 1'795'435'200'000'000;
  }

  void Run() {
    m_files = Forge(m_plan.files);
    bool areClean = true;
    for (const ForgedFile& file : m_files) m_disk.Put(file.path, file.bytes);
    for (const ForgedFile& file : m_files) areClean = IsClean(file.path) && areClean;
    Require(areClean || !m_plan.isSound, "what is right is verified");
    std::optional<Inspection> inspection = Open(m_path);
    Require(inspection || !areClean, "what is verified opens");
    if (!inspection) return;
    const Observation whole = Observe(*inspection, {.history = IsThorough()});
    for (const SeenData& data : whole.data)
      Require(!data.isDamaged || !areClean, "samples that were verified are read", data.samples);
    if (m_plan.damage) CheckDamage(*m_plan.damage, whole, areClean);
    Do(*inspection, areClean);
  }

 private:
  [[nodiscard]] static std::optional<Inspection> Open(const std::string& path,
                                                      const OpenOptions& options = {}) {
    try {
      return Inspection::Open(path, options);
    } catch (const Error&) {
      return std::nullopt;
    }
  }

  /// Whether codes of 16 bits are looked at.
  [[nodiscard]] bool WithWideCodes() const { return m_plan.lot % 64 == 0; }
  /// Whether all writes are looked at, and all groups of a rescued file.
  [[nodiscard]] bool IsThorough() const { return m_plan.lot % 8 == 2; }
  /// Whether a rescue may try every value of every byte of a damaged group.
  [[nodiscard]] bool IsLong() const { return m_plan.lot % 512 == 1; }

  // ---- damage

  void CheckDamage(const PlannedDamage& damage, const Observation& whole, bool wereClean) {
    const ForgedFile& file = m_files[damage.file % m_files.size()];
    std::vector<std::byte> bytes = file.bytes;
    const std::size_t place = Damage(bytes, damage);
    m_disk.Put(file.path, std::move(bytes));
    const bool hasTail = damage.kind == PlannedDamage::Kind::Tail;
    Require(hasTail || !IsClean(file.path), "damage is found by the verification");
    if (auto damaged = Open(m_path)) CheckSeen(*damaged, whole, hasTail);
    if (auto damaged = Open(m_path, {.acceptDamage = true}))
      for (const SeenData& data : Observe(*damaged).data)
        Require(!data.isDamaged, "damage that is accepted is not refused", data.samples);
    if (wereClean && (place < kvtiff19::dataStart || hasTail || IsLong())) CheckRescue(file);
    m_disk.Put(file.path, file.bytes);
  }

  /// Damage leaves nothing different: samples that have it are refused, all else is as it was.
  static void CheckSeen(Inspection& damaged, const Observation& whole, bool hasTail) {
    const Observation seen = Observe(damaged, {.history = !whole.history.empty()});
    RequireSame(seen.groups, whole.groups, "damage changes no group");
    RequireSame(seen.items, whole.items, "damage changes no item");
    RequireSame(seen.masters, whole.masters, "damage changes no master");
    RequireSame(seen.history, whole.history, "damage changes no history");
    Require(seen.data.size() == whole.data.size(), "damage changes no data group");
    for (std::size_t at = 0; at < seen.data.size(); ++at) {
      SeenData is = seen.data[at];
      if (is.isDamaged && !hasTail) is.samples = whole.data[at].samples;
      is.isDamaged = whole.data[at].isDamaged;
      RequireSame(std::vector{is}, std::vector{whole.data[at]}, "damaged samples are refused");
    }
  }

  void CheckRescue(const ForgedFile& damaged) {
    const std::string path = std::string(folder) + "rescued.fpd";
    const std::wstring wide = ToWide(path);
    SCFile::RescueFindings findings;
    if (SCFile::file_Rescue(damaged.path.c_str(), wide.c_str(), true, &findings) !=
        SCFile::status_Ok)
      return;
    Require(IsClean(wide), "what is rescued is verified");
    std::optional<Inspection> rescued = Open(path);
    Require(rescued.has_value(), "what is rescued opens");
    static_cast<void>(Observe(*rescued));
    if (!IsThorough() || !findings.lost.empty() || !findings.unchecked.empty()) return;
    m_disk.Put(damaged.path, damaged.bytes);
    Require(test::SnapshotOf(wide) == test::SnapshotOf(damaged.path),
            "a rescue that lost nothing has everything");
  }

  // ---- changes

  void Do(Inspection& inspection, bool areClean) {
    constexpr int mostSaves = 2;
    int saves = 0;
    for (const PlannedStep& step : m_plan.steps) {
      if (const auto* edit = std::get_if<PlannedEdit>(&step)) Do(inspection, *edit);
      if (const auto* gate = std::get_if<PlannedGate>(&step)) Do(inspection, *gate);
      if (const auto* save = std::get_if<PlannedSave>(&step); save && saves++ < mostSaves)
        Do(inspection, *save, areClean);
    }
  }

  void Do(Inspection& inspection, const PlannedEdit& edit) {
    const auto types = EditableTypes();
    const SCFile::GroupTypeInfo& type = *types[edit.type % types.size()];
    const auto groups = EditableGroups(inspection, type);
    if (groups.empty()) return;
    const SCFile::FieldInfo& field = type.fields[edit.field % type.fields.size()];
    const std::pair<std::string, std::string> value = {std::string(field.key),
                                                       TextFor(field, edit.value)};
    const SeenFields before = SeeItems(inspection);
    std::set<const SCFile::FieldInfo*> changed;
    try {
      for (const FieldChange& change : groups[edit.group % groups.size()].Change({&value, 1}))
        changed.insert(change.field);
    } catch (const Error&) {
      RequireSame(before, SeeItems(inspection), "an edit that is refused changes nothing");
      return;
    }
    if (type.key == "info" && !changed.empty()) m_isInfoChanged = true;
    m_isRepairEdited = m_isRepairEdited || !inspection.Warnings().empty();
    const SeenFields after = SeeItems(inspection);
    Require(before.size() == after.size(), "an edit makes no group");
    for (std::size_t at = 0; at < before.size(); ++at)
      if (!IsSameNumber(before[at], after[at]) && !changed.contains(after[at].field))
        RequireSame(before, after, "an edit tells what it changes");
  }

  void Do(Inspection& inspection, const PlannedGate& gate) {
    const SeenFields before = SeeItems(inspection);
    try {
      m_isAdded = true;
      static_cast<void>(
          Gate(inspection, {gate.channel, gate.gate, gate.start, gate.width, gate.threshold}));
    } catch (const Error&) {
      RequireSame(before, SeeItems(inspection), "gating that is refused changes nothing");
    }
  }

  void Do(Inspection& inspection, const PlannedSave& save, bool areClean) {
    const SeenFields items = SeeItems(inspection);
    const std::vector<std::string> history = SeeHistory(inspection);
    const bool isModified = inspection.IsModified();
    const bool isNew = save.kind == SaveKind::New;
    const std::string path = isNew ? std::string(folder) + "new.fpd" : m_path;
    ++m_surroundings.now;
    try {
      Save(inspection, save, path);
    } catch (const Error& error) {
      const bool isRefused =
          !isNew && (!isModified || m_isInfoChanged || m_plan.hasTwins || m_plan.hasDataTwins);
      Require(isRefused || !m_plan.isSound, "what is sound can be saved", error.what());
      RequireSame(items, SeeItems(inspection), "a save that is refused changes nothing");
      RequireSame(history, SeeHistory(inspection), "a save that is refused leaves no write");
      return;
    }
    Observation memory = Observe(inspection, {WithWideCodes(), true});
    RequireSame(items, memory.items, "a save changes no item");
    for (const std::string& file : inspection.Files())
      Require(IsClean(ToWide(file)) || !areClean, "what is saved is verified");
    for (SeenData& data : memory.data) data.partners.clear();
    CheckReloaded(path, memory, history.size(), save);
  }

  static void Save(Inspection& inspection, const PlannedSave& save, const std::string& path) {
    const Signature signature = {.author = save.author, .reason = {}, .program = {}, .version = {}};
    switch (save.kind) {
      case SaveKind::Companion:
        static_cast<void>(inspection.SaveCompanion(signature));
        return;
      case SaveKind::Appended:
        static_cast<void>(inspection.SaveAppended(signature));
        return;
      case SaveKind::New:
        inspection.SaveAs(path, true, signature);
        return;
    }
  }

  void CheckReloaded(const std::string& path,
                     const Observation& memory,
                     std::size_t writes,
                     const PlannedSave& save) {
    const bool isNew = save.kind == SaveKind::New;
    std::optional<Inspection> reloaded =
        Open(path, {.tables = isNew ? SampleTables::InMemory : SampleTables::Mapped});
    Require(reloaded.has_value(), "what is saved opens");
    Observation seen = Observe(*reloaded, {WithWideCodes(), true});
    for (SeenData& data : seen.data) data.partners.clear();
    // Of data groups of equal ids others may be the file set's, and a repaired axis has no unit
    // until its step is edited and loaded anew.
    const bool areTold = !m_plan.hasDataTwins && !m_isRepairEdited && (isNew || !m_plan.hasTwins);
    if (areTold) RequireSame(memory.items, seen.items, "items come back");
    if (areTold) RequireSame(memory.data, seen.data, "samples and codes come back");
    if (!isNew && areTold && !m_isAdded)
      RequireSame(memory.groups, seen.groups, "groups come back");
    if (isNew) {
      Require(IsClean(ToWide(path)), "a new file is verified");
      Require(seen.history.size() == 1, "a new file has one write");
      return;
    }
    RequireSame(memory.history, seen.history, "the history comes back");
    Require(seen.history.size() == writes + 1, "the history lists one write more");
    Require(seen.history.back().find(' ' + save.author + ' ') != std::string::npos,
            "a write is signed");
  }

  const Plan& m_plan;
  test::MemoryFileSystem m_disk;
  test::FileSystemInPlace m_inPlace;
  test::KnownSurroundings m_surroundings;
  std::string m_path = std::string(folder) + "weld.fpd";
  std::vector<ForgedFile> m_files;
  bool m_isInfoChanged = false;  ///< which a new file takes only
  bool m_isRepairEdited = false;
  bool m_isAdded = false;  ///< groups that the file descriptor gets by loading only
};

}  // namespace

void Check(const Plan& plan) { Session(plan).Run(); }

}  // namespace utdata::fuzz
