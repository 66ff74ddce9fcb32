// Sub-channel numbers through any course of a host's work: whatever is numbered, changed, added,
// appended, put into a companion or saved elsewhere comes back with the content and the number that
// it had in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>

#include "tests/src/container/inspection.h"
#include "tests/support/effort.h"

namespace utdata::test {
namespace {

/// A sub-channel or data group as a host sees it. `mark` distinguishes it from all others.
struct Beam {
  bool isData = false;
  std::uint32_t mark = 0;
  std::uint32_t channel = 0;
  std::uint32_t id = 0;  ///< in memory
  std::uint32_t gate = 0;
  float value = 0;
  std::wstring name;

  [[nodiscard]] auto Key() const { return std::tuple(isData, channel, id, gate); }
};

CGSubchanTypeDescr SubChannelOf(const Beam& beam) {
  CGSubchanTypeDescr record;
  record.channelId = beam.channel;
  record.subChannelId = beam.id;
  record.firstElement = beam.mark;
  record.gainOffset = beam.value;
  return record;
}

CGDataTypeFDD DataOf(const Beam& beam) {
  CGDataTypeFDD record;
  record.dataClass = beam.gate == 0 ? gdata_AScan : gdata_CScanAmplitude;
  record.channelId = beam.channel;
  record.subChannelId = beam.id;
  record.gateId = beam.gate;
  record.compressionBits = beam.mark;
  record.dataMaximum = beam.value;
  beam.name.copy(record.subChannelName, CGDataTypeFDD::nameSize - 1);
  record.SetDataBookmarkType(bookmark_Single);
  return record;
}

Beam BeamOf(const CGSubchanTypeDescr& record) {
  return {
      false, record.firstElement, record.channelId, record.subChannelId, 0, record.gainOffset, L""};
}

Beam BeamOf(const CGDataTypeFDD& record) {
  return {true,
          record.compressionBits,
          record.channelId,
          record.subChannelId,
          record.gateId,
          record.dataMaximum,
          record.subChannelName};
}

std::map<std::uint32_t, Beam> BeamsOf(const CFContTypeFileDescr& inspection) {
  std::map<std::uint32_t, Beam> beams;
  const auto take = [&](const auto& list) {
    for (const auto* record : list) {
      const Beam beam = BeamOf(*record);
      EXPECT_TRUE(beams.emplace(beam.mark, beam).second) << "mark " << beam.mark << " twice";
    }
  };
  take(inspection.subChannels);
  take(inspection.data);
  return beams;
}

std::string Text(const Beam& beam) {
  return std::string(beam.isData ? "data " : "sub-channel ") + std::to_string(beam.mark) +
         " of channel " + std::to_string(beam.channel) + ", number " + std::to_string(beam.id) +
         ", gate " + std::to_string(beam.gate) + ", value " + std::to_string(beam.value) +
         (beam.name.empty() ? "" : ", named");
}

std::string Text(const std::map<std::uint32_t, Beam>& beams) {
  std::string text;
  for (const auto& [mark, beam] : beams) text += Text(beam) + "\n";
  return text;
}

/// How a host opens an inspection.
enum class Opening { Raw, NumberLast, NumberTwice, NumberFirst };

/// One inspection, the host that works on it, and what the host knows of it.
class Course {
 public:
  Course(unsigned seed, const ScratchDirectory& scratch)
      : m_engine(seed), m_scratch(scratch), m_path(scratch.File(L"0.fpd")) {
    MakeBase();
  }

  /// False as soon as something is not as the host left it.
  bool Run(int sessions) {
    for (int session = 0; session < sessions && !::testing::Test::HasFailure(); ++session) {
      Open();
      for (unsigned writes = Draw(3); writes > 0 && !::testing::Test::HasFailure(); --writes)
        Write();
    }
    if (!::testing::Test::HasFailure()) Open();
    return !::testing::Test::HasFailure();
  }

  [[nodiscard]] const std::string& Log() const { return m_log; }

 private:
  std::uint32_t Draw(std::uint32_t below) { return static_cast<std::uint32_t>(m_engine() % below); }

  void MakeBase() {
    const Inspection base = MakeInspection(m_path);
    const bool named = Draw(2) == 0;
    const bool cleared = Draw(3) == 0;
    const std::uint32_t channels = 1 + Draw(3);
    std::uint32_t mark = 1;
    for (std::uint32_t channel = 1; channel <= channels; ++channel) {
      AddChannel(*base, channel);
      const std::uint32_t first = Draw(2), step = 1 + Draw(2);
      const std::uint32_t dataFrom = first == 0 ? Draw(2) : 0;
      const std::uint32_t beams = cleared ? 1 : Draw(4);
      for (std::uint32_t beam = 0; beam < beams; ++beam) {
        const std::uint32_t id = first + beam * step;
        Add(base->subChannels, SubChannelOf({false, mark++, channel, id, 0, 0, L""}));
        const std::wstring name = named ? L"beam" : L"";
        Add(base->data, DataOf({true, mark++, channel, id + dataFrom, 0, 0, name}));
        if (!cleared && Draw(2))
          Add(base->data, DataOf({true, mark++, channel, id + dataFrom, 1, 0, name}));
      }
      if (cleared && Draw(2))
        Add(base->subChannels, SubChannelOf({false, mark++, channel, 5, 0, 0, L""}));
      if (beams == 0 || (named && Draw(2)))
        Add(base->data, DataOf({true, mark++, channel, 0, 2, 0, L""}));
    }
    m_channels = channels;
    m_nextMark = mark;
    m_beams = BeamsOf(*base);
    EXPECT_EQ(WriteWholeFile(*base), 0);
    m_log = "base:\n" + Text(m_beams);
  }

  static void AddChannel(CFContTypeFileDescr& inspection, std::uint32_t id) {
    CGChanTypeDescr channel;
    channel.channelId = id;
    Add(inspection.channels, channel);
  }

  void Open() {
    const auto opening = static_cast<Opening>(Draw(4));
    m_log += "open " + std::to_string(static_cast<int>(opening)) + "\n";
    m_loaded = Load(m_path);
    ASSERT_TRUE(m_loaded) << SCFile::file_LastError();
    CFCont container;
    if (opening >= Opening::NumberTwice) container.UpdateSubChannelList(m_loaded.get());
    CFContTypeFileDescr* const descriptor = m_loaded.release();
    ASSERT_EQ(container.FileUpdate(m_path.c_str(), descriptor, readAll, nullptr, nullptr), 0);
    m_loaded.reset(descriptor);
    m_isRaw = opening == Opening::Raw;
    if (opening == Opening::NumberLast || opening == Opening::NumberTwice)
      container.UpdateSubChannelList(m_loaded.get());
    Compare();
  }

  /// Compares what was loaded with what the host left. Ids of either kind are known once they were
  /// seen; a host that does not number may change how the next one counts.
  void Compare() {
    std::map<std::uint32_t, Beam> found = BeamsOf(*m_loaded);
    auto& ids = m_isRaw ? m_rawIds : m_numbers;
    std::map<std::uint32_t, Beam> expected = m_beams;
    for (auto& [mark, beam] : expected) {
      if (const auto known = ids.find(mark); known != ids.end())
        beam.id = known->second;
      else if (found.contains(mark))
        beam.id = found[mark].id;
    }
    EXPECT_EQ(Text(found), Text(expected)) << m_log;
    m_beams = found;
    for (const auto& [mark, beam] : found) ids[mark] = beam.id;
  }

  /// A record to be changed: as it is loaded, or as the host keeps it.
  template <class Record>
  std::optional<Record> CopyOf(const CList<Record*>& list, const Beam& beam) {
    for (const Record* record : list)
      if (BeamOf(*record).mark == beam.mark) return *record;
    return std::nullopt;
  }

  void Write() {
    const Inspection changes = MakeInspection();
    std::map<std::uint32_t, Beam> after = m_beams;
    for (unsigned edits = Draw(4); edits > 0; --edits) Edit(after, *changes);
    for (unsigned additions = Draw(3); additions > 0; --additions) AddBeam(after, *changes);
    if (Draw(6) == 0) AddChannel(*changes, ++m_channels);
    const std::uint32_t form = Draw(8);
    m_log += "write " + std::to_string(form) + "\n";
    if (form == 0) {
      SaveElsewhere(*changes);
    } else {
      const int newFile = form < 4 ? 1 : 0;
      SCFile::FileHandle file = nullptr;
      ASSERT_EQ(
          CFCont().FileWrite(
              m_loaded.get(), changes.get(), newFile, nullptr, &file, static_cast<int>(Draw(2))),
          0)
          << SCFile::file_LastError();
    }
    if (m_isRaw && (!changes->data.IsEmpty() || !changes->subChannels.IsEmpty() ||
                    !changes->channels.IsEmpty()))
      m_numbers.clear();
    m_beams = after;
    auto& ids = m_isRaw ? m_rawIds : m_numbers;
    for (const auto& [mark, beam] : m_beams) ids[mark] = beam.id;
    if (form == 0) return Open();
    for (const auto& [mark, beam] : BeamsOf(*m_loaded)) EXPECT_EQ(Text(beam), Text(m_beams[mark]));
    if (Draw(3) == 0 && !m_isRaw) {
      CFCont().UpdateSubChannelList(m_loaded.get());
      for (const auto& [mark, beam] : BeamsOf(*m_loaded))
        EXPECT_EQ(Text(beam), Text(m_beams[mark])) << "numbered again\n" << m_log;
    }
  }

  void Edit(std::map<std::uint32_t, Beam>& after, CFContTypeFileDescr& changes) {
    if (after.empty()) return;
    Beam& beam = std::next(after.begin(), Draw(static_cast<std::uint32_t>(after.size())))->second;
    for (const auto& [mark, other] : BeamsOf(changes))
      if (mark == beam.mark) return;
    beam.value = static_cast<float>(1 + Draw(1000));
    if (beam.isData && Draw(4) == 0) beam.name = beam.name.empty() ? L"renamed" : L"";
    m_log += "edit " + Text(beam) + "\n";
    if (beam.isData) {
      CGDataTypeFDD record = CopyOf(m_loaded->data, beam).value_or(DataOf(beam));
      std::fill(std::begin(record.subChannelName), std::end(record.subChannelName), L'\0');
      beam.name.copy(record.subChannelName, CGDataTypeFDD::nameSize - 1);
      record.dataMaximum = beam.value;
      Add(changes.data, record);
    } else {
      CGSubchanTypeDescr record = CopyOf(m_loaded->subChannels, beam).value_or(SubChannelOf(beam));
      record.gainOffset = beam.value;
      Add(changes.subChannels, record);
    }
  }

  /// Where a host numbers, any number that is free; else the next one.
  void AddBeam(std::map<std::uint32_t, Beam>& after, CFContTypeFileDescr& changes) {
    Beam beam{Draw(2) == 0,
              m_nextMark,
              1 + Draw(m_channels),
              Draw(7),
              0,
              static_cast<float>(1 + Draw(1000)),
              L""};
    if (beam.isData) beam.gate = Draw(4);
    if (beam.isData && Draw(3) == 0) beam.name = L"added";
    for (const auto& [mark, other] : after)
      if (other.Key() == beam.Key()) return;
    ++m_nextMark;
    m_log += "add " + Text(beam) + "\n";
    after[beam.mark] = beam;
    if (beam.isData)
      Add(changes.data, DataOf(beam));
    else
      Add(changes.subChannels, SubChannelOf(beam));
  }

  /// A whole new file of what is loaded, with the changes in place, and of what the host has added.
  void SaveElsewhere(const CFContTypeFileDescr& changes) {
    m_path = m_scratch.File(std::to_wstring(++m_saves) + L".fpd");
    const Inspection whole = MakeInspection(m_path);
    for (const CGChanTypeDescr* channel : m_loaded->channels) Add(whole->channels, *channel);
    for (const CGChanTypeDescr* channel : changes.channels) Add(whole->channels, *channel);
    const auto gather = [&](const auto& from, const auto& changed, auto& to) {
      std::set<std::uint32_t> taken;
      for (const auto* record : changed) taken.insert(BeamOf(*Add(to, *record)).mark);
      for (const auto* record : from)
        if (taken.insert(BeamOf(*record).mark).second) Add(to, *record);
      for (const auto& [mark, beam] : m_beams)
        if (beam.isData == std::is_same_v<decltype(to), CList<CGDataTypeFDD*>&> &&
            taken.insert(mark).second) {
          if constexpr (std::is_same_v<decltype(to), CList<CGDataTypeFDD*>&>)
            Add(to, DataOf(beam));
          else
            Add(to, SubChannelOf(beam));
        }
    };
    gather(m_loaded->subChannels, changes.subChannels, whole->subChannels);
    gather(m_loaded->data, changes.data, whole->data);
    ASSERT_EQ(WriteWholeFile(*whole), 0) << SCFile::file_LastError();
    if (!m_isRaw) m_rawIds.clear();
  }

  std::mt19937 m_engine;
  const ScratchDirectory& m_scratch;
  std::wstring m_path;
  Inspection m_loaded;
  bool m_isRaw = false;
  std::uint32_t m_channels = 0;
  std::uint32_t m_nextMark = 1;
  int m_saves = 0;
  std::map<std::uint32_t, Beam> m_beams;             ///< as the host sees them
  std::map<std::uint32_t, std::uint32_t> m_rawIds;   ///< of hosts that do not number, by mark
  std::map<std::uint32_t, std::uint32_t> m_numbers;  ///< of hosts that do, by mark
  std::string m_log;
};

/// UTDATA_COURSES in the environment says how many courses are run.
TEST(Numbering, ComesBackThroughAnyCourse) {
  const char* const wanted = std::getenv("UTDATA_COURSES");
  const int courses = wanted ? std::stoi(wanted) : Repetitions(300);
  for (int seed = 1; seed <= courses; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const ScratchDirectory scratch;
    Course course(static_cast<unsigned>(seed), scratch);
    ASSERT_TRUE(course.Run(6)) << course.Log();
  }
}

}  // namespace
}  // namespace utdata::test
