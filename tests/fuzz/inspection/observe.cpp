#include "tests/fuzz/inspection/observe.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "platform/kvtiff19/format.h"
#include "utdata/edits.h"
#include "utdata/grouplists.h"
#include "utdata/history.h"
#include "utdata/idata.h"
#include "utdata/rdata.h"
#include "utdata/readout.h"
#include "utdata/samples.h"

namespace utdata::fuzz {
namespace {

template <class Number>
void AddBits(std::string& text, Number number) {
  std::array<char, sizeof number> bytes;
  std::memcpy(bytes.data(), &number, sizeof number);
  text.append(bytes.data(), bytes.size());
}

std::string Hex(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4U];
    text += "0123456789abcdef"[static_cast<unsigned char>(byte) & 15U];
  }
  return text;
}

std::string ValueOf(const SCFile::FieldInfo& field, const void* record) {
  std::string value;
  if (field.access.number) AddBits(value, field.access.number(record));
  if (field.access.text) value = ToUtf8(field.access.text(record));
  if (field.access.numbers)
    for (const double number : field.access.numbers(record)) AddBits(value, number);
  return value;
}

void AddFields(SeenFields& seen,
               std::uint32_t group,
               const SCFile::GroupTypeInfo& type,
               const void* record) {
  for (const SCFile::FieldInfo& field : type.fields)
    seen.push_back({group, &field, ValueOf(field, record)});
}

std::string ValueOf(const stDefectExtern& defect) {
  std::string value;
  for (const double number : defect.values) AddBits(value, number);
  for (const std::uint32_t number : defect.numbers) AddBits(value, number);
  value += ToUtf8(defect.firstText) + '|' + ToUtf8(defect.secondText);
  for (const stDefectSubEntry& entry : defect.subEntries) {
    AddBits(value, entry.number);
    value += ToUtf8(entry.firstText) + '|' + ToUtf8(entry.secondText);
  }
  return value;
}

// ---- data groups

/// A line of parts with blanks between them.
class Line {
 public:
  Line& operator<<(const std::string& part) {
    m_text += part + ' ';
    return *this;
  }
  Line& operator<<(double number) {
    std::string bits;
    AddBits(bits, number);
    return *this << Hex(bits);
  }
  Line& operator<<(const AxisScale& axis) {
    return *this << axis.symbol << axis.first << axis.step << std::to_string(axis.quantity);
  }
  Line& operator<<(const std::optional<AxisScale>& axis) {
    return axis ? *this << *axis : *this << "none";
  }
  Line& operator<<(std::span<const std::uint8_t> bytes) {
    return *this << std::to_string(kvtiff19::Checksum(std::as_bytes(bytes)));
  }
  template <class Number>
  requires std::is_integral_v<Number> Line& operator<<(Number number) {
    return *this << std::to_string(number);
  }
  [[nodiscard]] const std::string& Text() const { return m_text; }

 private:
  std::string m_text;
};

std::string Describe(const DataGroup& group) {
  Line line;
  line << group.Label() << group.Caption() << group.IdLabel() << group.ClassName()
       << group.TypeName() << group.BookmarkName() << group.IsMaster() << group.HasTable()
       << group.IsTofd();
  line << group.Columns() << group.Rows() << group.Times() << group.HalfPaths() << group.Depths();
  line << group.Amplitudes().above << group.Amplitudes().below;
  line << group.Elements().size() << group.Gates().size();
  return line.Text();
}

std::string PartnersOf(const DataGroup& group) {
  Line line;
  line << group.IsListed();
  for (const auto& other : {group.Matched(), group.Master(), group.MeridioAmplitudes()})
    line << (other ? static_cast<std::int64_t>(other->Index()) : -1);
  return line.Text();
}

void AddReadOut(Line& line, const DataGroup& group, std::uint64_t cell, std::uint32_t sample) {
  const auto row = static_cast<std::uint32_t>(cell / group.ColumnQuantity());
  const ReadOut at =
      group.ReadOut(row, static_cast<std::uint32_t>(cell % group.ColumnQuantity()), sample);
  for (const AxisValue* value :
       {&at.column, &at.row, &at.time, &at.halfPath, &at.depth, &at.tofdDepth})
    line << value->In(unit_Millimetre) << value->In(unit_Inch) << value->In(unit_Microsecond)
         << value->Text(unit_Millimetre);
  line << at.value << at.percent << at.decibels
       << group.AmplitudeText(at.percent, unit_DataDecibel);
}

/// Everything that a picture of the data group would need.
void AddSamples(Line& line, const DataGroup& group, bool withWideCodes) {
  const bool isWide = group.Descriptor().GetSampleSize() == 2;
  const bool isCorrected = group.Stored().byteSwap != 0 || group.Stored().fileFormat != 0;
  if (isWide && isCorrected && !withWideCodes) return;
  Samples samples = group.Samples();
  const CellRange all = group.AllCells();
  if (all.count == 0 || samples.SamplesPerCell() == 0) return;
  line << samples.IsSigned() << samples.SamplesPerCell();
  const Peaks peaks = samples.FindPeaks(all);
  line << peaks.strongest.cell << peaks.strongest.sample << peaks.strongest.value;
  if (withWideCodes || !isWide) line << samples.Codes(all, samples.CanAmplify() ? 2 : 1);
  const CodeMeaning meaning = MeaningOf(group, samples.Span());
  line << meaning.place << meaning.low << meaning.high;
  for (const double depth : group.TofdDepths()) line << depth;
  AddReadOut(line, group, 0, 0);
  AddReadOut(line, group, all.count - 1, samples.SamplesPerCell() - 1);
}

SeenData SeeData(const DataGroup& group, bool withWideCodes) {
  SeenData seen;
  seen.description = Describe(group);
  seen.partners = PartnersOf(group);
  if (!group.HasTable()) return seen;
  Line line;
  try {
    const std::span<const std::byte> table = group.Table();
    line << std::to_string(table.size()) << std::to_string(kvtiff19::Checksum(table));
    AddSamples(line, group, withWideCodes);
    seen.samples = line.Text();
  } catch (const Error& error) {
    seen.isDamaged = error.Status() == SCFile::status_Damaged;
    seen.samples = line.Text() + error.What() + ": " + error.Why();
  }
  return seen;
}

std::string LineOf(const WriteEvent& event) {
  Line line;
  line << event.file.substr(event.file.find_last_of('/') + 1) << event.write
       << event.when.value_or(-1) << event.program << event.version << event.author << event.reason;
  for (const GroupEvent& group : event.groups) {
    line << ";" << group.group << (group.isAdded ? "added" : "changed");
    for (const FieldChange& change : group.changes)
      line << std::string(change.field->key) << change.shownBefore << "->" << change.shownAfter;
  }
  return line.Text();
}

template <class Seen, class Show>
std::string FirstDifference(const std::vector<Seen>& a, const std::vector<Seen>& b, Show show) {
  for (std::size_t at = 0; at < std::max(a.size(), b.size()); ++at) {
    if (at < a.size() && at < b.size() && a[at] == b[at]) continue;
    return std::to_string(at) + ":\n  " + (at < a.size() ? show(a[at]) : "nothing") + "\n  " +
           (at < b.size() ? show(b[at]) : "nothing");
  }
  return {};
}

}  // namespace

SeenFields SeeGroups(const Inspection& inspection) {
  SeenFields seen;
  std::uint32_t count = 0;
  VisitGroupLists(inspection.Descriptor(),
                  [&]<class Group>(std::string_view, const CList<Group*>& list) {
                    for (const Group* group : list) {
                      if constexpr (std::is_same_v<Group, stDefectExtern>)
                        seen.push_back({count, nullptr, ValueOf(*group)});
                      else
                        AddFields(seen, count, SCFile::file_GroupTypeOf<Group>(), group);
                      ++count;
                    }
                  });
  return seen;
}

SeenFields SeeItems(Inspection& inspection) {
  SeenFields seen;
  std::uint32_t count = 0;
  for (const SCFile::GroupTypeInfo* type : EditableTypes())
    for (const GroupHandle& group : EditableGroups(inspection, *type)) {
      for (const Field& field : group.Values().All()) {
        const SCFile::FieldAccess& access = field.Info().access;
        std::string bits;
        if (access.number) AddBits(bits, field.Number() + 0.0);  // an edit to -0 is none of 0
        if (access.text) bits = field.Text();
        if (access.numbers)
          for (const double number : field.Numbers()) AddBits(bits, number);
        seen.push_back({count, &field.Info(), std::move(bits)});
      }
      ++count;
    }
  return seen;
}

std::vector<std::string> SeeHistory(const Inspection& inspection) {
  std::vector<std::string> lines;
  for (const WriteEvent& event : HistoryOf(inspection)) lines.push_back(LineOf(event));
  return lines;
}

Observation Observe(Inspection& inspection, const Thoroughness& with) {
  Observation seen{SeeGroups(inspection), SeeItems(inspection), {}, {}, {}};
  if (with.history) seen.history = SeeHistory(inspection);
  for (const DataGroup& group : inspection.Data())
    seen.data.push_back(SeeData(group, with.wideCodes));
  for (const DataGroup& master : inspection.Masters()) seen.masters.push_back(Describe(master));
  return seen;
}

std::string Difference(const SeenFields& a, const SeenFields& b) {
  return FirstDifference(a, b, [](const SeenField& seen) {
    const std::string key = seen.field ? std::string(seen.field->key) : "defect";
    return "group " + std::to_string(seen.group) + " " + key + " " + Hex(seen.value);
  });
}

std::string Difference(const std::vector<SeenData>& a, const std::vector<SeenData>& b) {
  return FirstDifference(a, b, [](const SeenData& seen) {
    return seen.description + "| " + seen.partners + "| " + seen.samples;
  });
}

std::string Difference(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  return FirstDifference(a, b, [](const std::string& line) { return line; });
}

}  // namespace utdata::fuzz
