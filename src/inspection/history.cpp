#include "utdata/history.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <deque>
#include <tuple>
#include <type_traits>
#include <utility>

#include "src/container/defects.h"
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
    std::uint64_t write = 0;
    ForEachGroup(file, [&](std::uint32_t, SCFile::GroupHandle written) {
      WriteEvent event = SignatureOf(written);
      event.file = m_file;
      event.write = ++write;
      m_groups.clear();
      ForEachGroup(written, [this](std::uint32_t code, SCFile::GroupHandle group) {
        if (code == container::codeDefectTable) {
          const bool isNew = !std::exchange(m_hasDefects, true);
          if (!events.empty()) m_groups.push_back({"defect table", isNew, {}});
        }
        std::apply([&](auto&... known) { (ReadAs(known, code, group), ...); }, m_known);
      });
      event.groups = std::move(m_groups);
      events.push_back(std::move(event));
    });
  }

  std::vector<WriteEvent> events;

 private:
  WriteEvent SignatureOf(SCFile::GroupHandle written) const {
    SCFile::WriteSignature signature;
    Require(SCFile::file_ReadSignature(written, &signature));
    WriteEvent event;
    event.when = signature.when;
    event.program = ToUtf8(signature.by.program);
    event.version = ToUtf8(signature.by.version);
    event.author = ToUtf8(signature.by.author);
    event.reason = ToUtf8(signature.by.reason);
    return event;
  }

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
    // What has no modifier code is written whole again.
    if ((isModification || !type.HasModifierCode()) && Change(known, *read, group)) return;
    if (!events.empty()) m_groups.push_back({Fields(*read).Name(), true, {}});
    known.matching.Add(read.get());
    known.held.push_back(std::move(read));
  }

  /// Changes the group so far that `modification` means; false when there is none.
  template <class Descriptor>
  bool Change(Known<Descriptor>& known, const Descriptor& modification, SCFile::GroupHandle group) {
    const auto change = [&](Descriptor* changed) {
      const Descriptor was = *changed;
      Require(container::ReadModification(group, changed));
      GroupEvent event{Fields(*changed).Name(), false, {}};
      AddChanges(event.group, Fields(was), Fields(*changed), event.changes);
      bool isWritten = !event.changes.empty();
      if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>)
        isWritten = isWritten || was.samples.group != changed->samples.group;
      if (isWritten && !events.empty()) m_groups.push_back(std::move(event));
    };
    return known.matching.ChangeMatch(modification, change) != nullptr;
  }

  void Require(int status) const {
    if (status != SCFile::status_Ok) throw Error::OfFileLayer(status, m_file, "cannot be read");
  }

  template <class... Descriptor>
  static std::tuple<Known<Descriptor>...> KnownOf(
      const std::tuple<SCFile::GroupType<Descriptor>...>&);

  decltype(KnownOf(SCFile::groupTypes)) m_known;
  std::string m_file;
  std::vector<GroupEvent> m_groups;  ///< of the write that is being read
  bool m_hasDefects = false;
};

}  // namespace

std::vector<WriteEvent> HistoryOf(const Inspection& inspection) {
  History history;
  for (const SCFile::FileHandle file : inspection.Descriptor().files) history.Read(file);
  return std::move(history.events);
}

std::string TimeText(std::int64_t microseconds) {
  using namespace std::chrono;
  constexpr auto first = sys_days(year(1) / 1 / 1).time_since_epoch();
  constexpr auto last = sys_days(year(10000) / 1 / 1).time_since_epoch();
  if (microseconds < duration_cast<std::chrono::microseconds>(first).count() ||
      microseconds >= duration_cast<std::chrono::microseconds>(last).count())
    return "an impossible time";
  const sys_time<std::chrono::microseconds> time{std::chrono::microseconds(microseconds)};
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(floor<seconds>(time - day));
  std::array<char, 64> text{};
  std::snprintf(text.data(),
                text.size(),
                "%04d-%02u-%02u %02d:%02d:%02d UTC",
                static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
}

}  // namespace utdata
