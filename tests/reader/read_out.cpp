// What inspections say, for comparison with another reader: a path a line on standard input, a JSON
// object a line on standard output.
//
// Of each inspection, its companions read: files, warnings, the records of every group type with
// all their fields, and of each data group its axes, what some positions read out, and the scale
// and offset of an exported array.
#include <iostream>
#include <nlohmann/json.hpp>
#include <set>

#include "utdata/arrays.h"
#include "utdata/failure.h"
#include "utdata/fields.h"
#include "utdata/grouplists.h"
#include "utdata/inspection.h"
#include "utdata/rdata.h"
#include "utdata/readout.h"
#include "utdata/samples.h"

namespace {

using nlohmann::json;
using utdata::DataGroup;

constexpr std::size_t mostGroups = 40;  ///< of which positions are read out

json ValueOf(const utdata::Field& field) {
  if (field.Info().access.number) return field.Number();
  if (field.Info().access.text) return field.Text();
  return field.Numbers();
}

template <class Descriptor>
json RecordsIn(const CList<Descriptor*>& list) {
  json records = json::array();
  for (const Descriptor* descriptor : list) {
    json record = json::object();
    for (const utdata::Field& field : utdata::Fields(*descriptor).All())
      record[field.Key()] = ValueOf(field);
    records.push_back(record);
  }
  return records;
}

json RecordsIn(const CList<stDefectExtern*>& list) {
  json records = json::array();
  for (const stDefectExtern* defect : list) {
    json entries = json::array();
    for (const stDefectSubEntry& entry : defect->subEntries)
      entries.push_back(
          {entry.number, utdata::ToUtf8(entry.firstText), utdata::ToUtf8(entry.secondText)});
    records.push_back(
        {{"values", defect->values},
         {"texts", {utdata::ToUtf8(defect->firstText), utdata::ToUtf8(defect->secondText)}},
         {"numbers", defect->numbers},
         {"subEntries", entries}});
  }
  return records;
}

/// Nothing of an axis that counts indices.
json AxisOf(const utdata::AxisScale& axis) {
  return axis.symbol.empty() ? json() : json{axis.symbol, axis.first, axis.step};
}

/// The first, the last, the middle one and one more of some indices.
std::set<std::uint32_t> SomeOf(std::uint32_t quantity) {
  return {0, quantity / 3, quantity / 2, quantity - 1};
}

json ReadOutOf(const DataGroup& group, std::uint32_t row, std::uint32_t column, std::uint32_t at) {
  const utdata::ReadOut read = group.ReadOut(row, column, at);
  const auto in = [](const utdata::AxisValue& value, unit_enumDataUnit unit) {
    return value.IsKnown() ? json(value.In(unit)) : json();
  };
  return {{"at", {row, column, at}},
          {"value", read.value},
          {"percent", read.percent},
          {"decibels", read.decibels},
          {"time", in(read.time, unit_Microsecond)},
          {"halfPath", in(read.halfPath, unit_Millimetre)},
          {"depth", in(read.depth, unit_Millimetre)},
          {"tofdDepth", in(read.tofdDepth, unit_Millimetre)}};
}

/// Along a diagonal of the cells, and in each along the samples.
json ReadOutsOf(const DataGroup& group) {
  json readOuts = json::array();
  const auto rows = SomeOf(group.RowQuantity());
  const auto columns = SomeOf(group.ColumnQuantity());
  auto row = rows.begin();
  for (const std::uint32_t column : columns) {
    if (row == rows.end()) --row;
    for (const std::uint32_t sample : SomeOf(group.SampleQuantity()))
      readOuts.push_back(ReadOutOf(group, *row, column, sample));
    ++row;
  }
  return readOuts;
}

json DescribeData(const DataGroup& group, bool withReadOuts) {
  json data = {{"class", group.Class()},
               {"bookmark", group.Descriptor().GetDataBookmarkType()},
               {"minimum", group.Descriptor().GetDataMin()},
               {"maximum", group.Descriptor().GetDataMax()},
               {"columns", AxisOf(group.Columns())},
               {"rows", AxisOf(group.Rows())}};
  if (group.HasAScans() || group.HoldsPositions()) {
    data["times"] = AxisOf(group.Times());
    const auto paths = group.HalfPaths();
    data["halfPaths"] = paths ? AxisOf(*paths) : json();
    const auto depths = group.Depths();
    data["depths"] = depths ? AxisOf(*depths) : json();
  }
  if (!withReadOuts || !group.HasTable()) return data;
  try {
    data["readOuts"] = ReadOutsOf(group);
  } catch (const utdata::Error& failure) {
    data["refused"] = failure.Why();
    return data;
  }
  try {
    const utdata::DescribedValues exported = utdata::DescribeArray(group).values;
    data["exported"] = {exported.scale, exported.offset};
  } catch (const utdata::Error&) {  // of another size than its type
    data["exported"] = json();
  }
  return data;
}

json Describe(const std::string& path) {
  const auto inspection = utdata::Inspection::Open(path);
  json records = json::object();
  utdata::VisitGroupLists(inspection.Descriptor(), [&](std::string_view key, const auto& list) {
    records[std::string(key)] = RecordsIn(list);
  });
  json data = json::array();
  for (const DataGroup& group : inspection.Data())
    data.push_back(DescribeData(group, data.size() < mostGroups));
  return {{"files", inspection.Files()},
          {"warnings", inspection.Warnings()},
          {"records", records},
          {"data", data}};
}

}  // namespace

int main() {
  for (std::string path; std::getline(std::cin, path);) {
    json said;
    try {
      said = Describe(path);
    } catch (const utdata::Error& failure) {
      said = {{"refused", failure.what()}};
    }
    std::cout << said.dump(-1, ' ', false, json::error_handler_t::replace) << std::endl;
  }
}
