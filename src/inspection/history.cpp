#include "utdata/history.h"

#include <deque>
#include <tuple>
#include <utility>

#include "src/container/matching.h"
#include "src/inspection/fieldchange.h"

namespace utdata {
namespace {

using container::Hold;
using container::Matching;

/// The groups of one type so far.
template <class Descriptor>
struct Known {
  using Type = Descriptor;
  using Held = decltype(Hold(std::declval<Descriptor*>()));

  CList<Descriptor*> list;
  std::deque<Held> held;
  Matching<Descriptor> matching{list};
};

class History {
 public:
  void Read(SCFile::GroupHandle file) {
    m_file = ToUtf8(SCFile::file_Path(file));
    m_write = 0;
    ForEachGroup(file, [this](std::uint32_t, SCFile::GroupHandle written) {
      ++m_write;
      ForEachGroup(written, [this](std::uint32_t code, SCFile::GroupHandle group) {
        std::apply([&](auto&... known) { (ReadAs(known, code, group), ...); }, m_known);
      });
    });
    m_isFirstFile = false;
  }

  std::vector<HistoryEvent> events;

 private:
  template <class Visit>
  void ForEachGroup(SCFile::GroupHandle parent, Visit visit) {
    for (std::uint32_t index = 0; index < SCFile::file_ItemNbrGet(parent); ++index) {
      std::uint32_t code = 0, kind = 0, key = 0;
      Require(SCFile::file_ItemInfo(parent, index, &code, &kind, nullptr, &key, nullptr, 0));
      if (kind != SCFile::kind_Group) continue;
      SCFile::GroupHandle group = nullptr;
      Require(SCFile::file_GroupOpen(parent, &group, key));
      visit(code, group);
    }
  }

  template <class Descriptor>
  void ReadAs(Known<Descriptor>& known, std::uint32_t code, SCFile::GroupHandle group) {
    const auto& type = container::typeOf<Descriptor>;
    const bool isModification = code == type.modifierCode && type.HasModifierCode();
    if (code != type.primaryCode && !(isModification && type.isModified)) return;
    auto read = Hold(SCFile::Family<Descriptor>::Allocate(1, L""));
    if (!read) throw std::bad_alloc();
    Require(SCFile::Family<Descriptor>::Read(group, read.get(), isModification));
    Descriptor* const before = known.matching.Find(*read);
    const bool isOriginal = !before && !isModification && m_isFirstFile && m_write == 1;
    std::vector<FieldChange> changes;
    const std::string name = isOriginal ? "" : Fields(*read).Name();
    if (before) {
      const Descriptor was = *before;
      known.matching.ChangeMatch(*read, [&](Descriptor* changed) {
        Require(container::ReadModification(group, changed));
      });
      AddChanges(name, Fields(was), Fields(*before), changes);
    } else {
      known.matching.Add(read.get());
      known.held.push_back(std::move(read));
    }
    if (!isOriginal && (!before || !changes.empty()))
      events.push_back({m_file, m_write, name, std::move(changes)});
  }

  void Require(int status) const {
    if (status != SCFile::status_Ok) throw Error::OfFileLayer(status, m_file, "cannot be read");
  }

  template <class... Descriptor>
  static std::tuple<Known<Descriptor>...> KnownOf(
      const std::tuple<SCFile::GroupType<Descriptor>...>&);

  decltype(KnownOf(SCFile::groupTypes)) m_known;
  std::string m_file;
  std::size_t m_write = 0;
  bool m_isFirstFile = true;
};

}  // namespace

std::vector<HistoryEvent> HistoryOf(const Inspection& inspection) {
  History history;
  for (const SCFile::FileHandle file : inspection.Descriptor().files) history.Read(file);
  return std::move(history.events);
}

}  // namespace utdata
