#include "tests/fuzz/inspection/plan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <string_view>
#include <utility>

#include "interfaces/kvtiff19_catalogue.h"
#include "platform/kvtiff19/format.h"

namespace utdata::fuzz {
namespace {

using SCFile::FieldInfo;
using SCFile::FieldKind;
using SCFile::GroupTypeInfo;

constexpr std::uint16_t codeDefectTable = 10045;
constexpr std::uint16_t codeDefect = 10044;

/// A number as it is stored in an item of a value type; what it cannot hold becomes another one.
std::string Stored(std::uint8_t type, double value) {
  const auto whole = [&](auto least) {
    using Number = decltype(least);
    const double kept = std::clamp(std::isnan(value) ? 0 : value,
                                   static_cast<double>(std::numeric_limits<Number>::lowest()),
                                   static_cast<double>(std::numeric_limits<Number>::max() / 2));
    const auto number = static_cast<Number>(kept);
    std::string bytes(sizeof number, '\0');
    kvtiff19::Store(reinterpret_cast<std::byte*>(bytes.data()), number);
    return bytes;
  };
  switch (type) {
    case SCFile::value_UInt32: {
      const double kept = std::clamp(std::isnan(value) ? 0 : value, 0.0, 4294967295.0);
      std::string bytes(4, '\0');
      kvtiff19::Store(reinterpret_cast<std::byte*>(bytes.data()), static_cast<std::uint32_t>(kept));
      return bytes;
    }
    case SCFile::value_Int32:
      return whole(std::int32_t{});
    case SCFile::value_Int64:
      return whole(std::int64_t{});
    case SCFile::value_Float: {
      std::string bytes(4, '\0');
      constexpr double most = std::numeric_limits<float>::max();
      const double kept = std::isfinite(value) ? std::clamp(value, -most, most) : value;
      kvtiff19::Store(reinterpret_cast<std::byte*>(bytes.data()), static_cast<float>(kept));
      return bytes;
    }
    case SCFile::value_Double: {
      std::string bytes(8, '\0');
      kvtiff19::Store(reinterpret_cast<std::byte*>(bytes.data()), value);
      return bytes;
    }
    default:
      return std::string(kvtiff19::ElementSize(type), '\1');
  }
}

PlannedItem NumberItem(const FieldInfo& field, double value) {
  return {field.code, field.valueType, 1, Stored(field.valueType, value)};
}

/// Letters of one to four bytes.
std::string TextOf(std::uint32_t seed, std::size_t length) {
  constexpr std::array<std::string_view, 6> letters = {
      "a", "7", " ", "\xC3\xA9", "\xE6\xBA\xB6", "\xF0\x9F\x94\x8A"};
  std::string text;
  for (std::size_t at = 0; at < length; ++at, seed = std::rotr(seed, 3))
    text += letters[seed % letters.size()];
  return text;
}

/// A value within the range of a number field, from 0 (its lower end) to 1, in stored units.
double Within(const FieldInfo& field, double part) {
  if (field.kind == FieldKind::Choice)
    return field
        .choices[static_cast<std::size_t>(part * static_cast<double>(field.choices.size() - 1))]
        .value;
  const double shown = field.minimum + part * (field.maximum - field.minimum);
  return shown * field.unit.scale;
}

/// What a field may hold, and what it may not: `choice` picks the kind of value.
double NumberOf(const FieldInfo& field, std::uint8_t choice, std::uint32_t value) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  switch (choice % 16) {
    case 0:
    case 1:
    case 2:
      return value % 16;
    case 3:
      return std::bit_cast<float>(value);
    case 4:
      return value;
    case 5:
      return static_cast<std::int32_t>(value);
    case 6:
      return std::array{0.0,
                        -0.0,
                        -1.0,
                        infinity,
                        -infinity,
                        std::nan(""),
                        4294967295.0,
                        2147483648.0}[value % 8];
    case 7:
      return 1.0 / (1 + value % 1000);
    case 8:
      return 1e-9 * value;
    default:
      return Within(field, static_cast<double>(value) / 4294967295.0);
  }
}

/// An item of a field that is as its type asks for.
PlannedItem RightItem(const FieldInfo& field, std::uint8_t choice, std::uint32_t value) {
  PlannedItem item{field.code, field.valueType, 0, {}};
  if (field.kind == FieldKind::Text) {
    constexpr std::uint32_t mostBytes = 4;  // of a letter
    item.data = TextOf(value, std::min(choice % 40U, field.maxCount / mostBytes));
    item.count = static_cast<std::uint32_t>(item.data.size());
    return item;
  }
  if (field.kind != FieldKind::Numbers) return NumberItem(field, NumberOf(field, choice, value));
  item.count = std::clamp<std::uint32_t>(
      choice % 8 * field.multipleOf, field.minCount, std::min(field.maxCount, 64U));
  for (std::uint32_t at = 0; at < item.count; ++at)
    item.data += Stored(field.valueType, NumberOf(field, choice, value + at));
  return item;
}

/// Samples of the data group that is being described.
struct Shape {
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  std::uint32_t samples = 0;
  std::uint32_t sampleSize = 1;
  bool isIndexed = false;
};

/// A number for each place of the samples.
std::uint8_t SampleByte(std::uint8_t pattern, std::uint32_t seed, std::size_t at) {
  switch (pattern % 4) {
    case 0:
      return static_cast<std::uint8_t>(seed);
    case 1:
      return static_cast<std::uint8_t>(at * (seed | 1U));
    case 2:
      return static_cast<std::uint8_t>((at + 1) * (seed | 1U) * 2654435761U >> 24U);
    default:
      return at % (1 + seed % 97) == 0 ? 0xFF : 0x80;
  }
}

class Parser {
 public:
  Plan Parse(std::span<const Instruction> instructions) {
    m_plan.files.push_back({});
    for (const Instruction& instruction : instructions) Do(instruction);
    CloseAll();
    return std::move(m_plan);
  }

 private:
  void Do(const Instruction& is) {
    switch (static_cast<Operation>(is.operation % operationCount)) {
      case Operation::File:
        return AddFile(is);
      case Operation::Write:
        return AddWrite(is);
      case Operation::Group:
        return AddGroup(is);
      case Operation::Shape:
        return AddShape(is);
      case Operation::Samples:
        return AddSamples(is);
      case Operation::Field:
        return AddField(is);
      case Operation::Item:
        return AddItem(is);
      case Operation::Nest:
        return Nest(is);
      case Operation::Defect:
        return AddDefect(is);
      case Operation::Damage:
        m_plan.damage =
            PlannedDamage{is.a,
                          static_cast<PlannedDamage::Kind>(is.b % 8 < 6 ? 0 : is.b % 8 - 5),
                          is.b / 8 % 2 == 0,
                          is.value,
                          static_cast<std::uint8_t>(is.c == 0 ? 1 : is.c)};
        return;
      case Operation::Edit:
        m_plan.steps.emplace_back(PlannedEdit{is.a, is.b, is.c, is.value});
        return;
      case Operation::Gate:
        m_plan.steps.emplace_back(
            PlannedGate{is.a % 4U,
                        is.b % 8U,
                        (is.value & 0xFF) * 1e-8,
                        (is.value >> 8 & 0xFF) * 1e-8,
                        is.c % 2 == 0 ? std::optional<double>(is.c / 2) : std::nullopt});
        return;
      case Operation::Save:
        m_plan.steps.emplace_back(
            PlannedSave{static_cast<SaveKind>(is.a % 3), TextOf(is.value, is.b % 8)});
        return;
    }
  }

  // ---- the tree

  PlannedFile& File() { return m_plan.files.back(); }

  void Open(PlannedGroup group) { m_open.push_back(std::move(group)); }
  void Close() {
    PlannedGroup closed = std::move(m_open.back());
    m_open.pop_back();
    if (m_open.empty())
      File().writes.push_back(std::move(closed));
    else
      m_open.back().parts.emplace_back(std::move(closed));
  }
  void CloseTo(std::size_t depth) {
    while (m_open.size() > depth) Close();
    if (depth < 2) m_type = nullptr;
  }
  void CloseAll() { CloseTo(0); }

  /// The group that takes items; there is always one in a top group.
  PlannedGroup& Current() {
    if (m_open.empty()) Open({0, "FC", {}});
    return m_open.back();
  }

  // ---- instructions

  void AddFile(const Instruction& is) {
    constexpr std::size_t mostFiles = 4;
    CloseAll();
    if (m_plan.files.size() == mostFiles) return;
    PlannedFile file;
    file.number = File().number + 1 + (is.a % 16 == 15 ? 1 : 0);
    file.fault = static_cast<OriginFault>(is.b % 16 < 12 ? 0 : is.b % 16 - 11);
    if (file.number != File().number + 1 || file.fault != OriginFault::None) m_plan.isSound = false;
    m_plan.files.push_back(std::move(file));
  }

  void AddWrite(const Instruction& is) {
    CloseAll();
    const bool isOdd = is.a % 16 == 15;
    Open(
        {static_cast<std::uint16_t>(isOdd ? is.value : 0), isOdd ? TextOf(is.value, 3) : "FC", {}});
    if (isOdd) m_plan.isSound = false;
    if (is.b % 4 == 0) return;
    Current().parts.emplace_back(PlannedItem{
        SCFile::sign_When, SCFile::value_Int64, 1, Stored(SCFile::value_Int64, 1e9 * is.value)});
    for (std::uint16_t code = SCFile::sign_Program; code <= SCFile::sign_Reason; ++code)
      if (is.b >> code & 1U) AddText(code, TextOf(is.value + code, is.c % 16));
  }

  void AddText(std::uint16_t code, const std::string& text) {
    Current().parts.emplace_back(
        PlannedItem{code, SCFile::value_Text, static_cast<std::uint32_t>(text.size()), text});
  }

  void AddGroup(const Instruction& is) {
    const auto types = SCFile::file_GroupTypes();
    // Data groups and their neighbours are what most of the library is about.
    const std::size_t place = is.a < 96 ? is.a % 6 : is.a % types.size();
    const GroupTypeInfo& type = types[place];
    CloseTo(1);
    static_cast<void>(Current());
    const bool isModification = is.b % 4 == 0;
    Open({isModification ? type.modifierCode : type.primaryCode,
          is.b / 4 % 8 == 0 ? "" : "a name",
          {}});
    m_type = &type;
    m_shape = {};
    std::vector<double> keys = {static_cast<double>(place)};
    std::uint32_t ids = is.value;
    for (const FieldInfo& field : type.fields) {
      if (field.IsKey()) {
        const std::uint32_t nibble = ids & 0xF;
        ids >>= 4;
        Put(NumberItem(field, KeyOf(field, nibble)));
        if (field.role != SCFile::FieldRole::Kind) keys.push_back(KeyOf(field, nibble));
      } else if (is.c % 4 == 1 && field.kind != FieldKind::Block) {
        Put(RightItem(field, 12, is.value * field.code));
      }
    }
    if (!m_known.insert(std::move(keys)).second && !isModification)
      (IsData() ? m_plan.hasDataTwins : m_plan.hasTwins) = true;
  }

  /// All ones is no id: it stands for any.
  static double KeyOf(const FieldInfo& field, std::uint32_t nibble) {
    if (field.kind == FieldKind::Choice) return field.choices[nibble % field.choices.size()].value;
    if (nibble == 15) return 1e9;
    return nibble == 14 ? 2000 : nibble % 5;
  }

  /// Appends an item, or puts it in the place of the one with the same code.
  void Put(PlannedItem item) {
    for (auto& part : Current().parts)
      if (auto* known = std::get_if<PlannedItem>(&part); known && known->code == item.code) {
        *known = std::move(item);
        return;
      }
    Current().parts.emplace_back(std::move(item));
  }

  void PutNumber(std::string_view key, double value) {
    if (const FieldInfo* field = m_type->Find(key)) Put(NumberItem(*field, value));
  }

  [[nodiscard]] bool IsData() const {
    return m_type && m_type->key == "data" && m_open.size() == 2;
  }

  void AddShape(const Instruction& is) {
    if (!IsData()) return;
    const bool isWide = is.value & 2U;
    const bool isSigned = is.value & 1U;
    m_shape = {is.a % 9U, is.b % 9U, is.c % 41U, isWide ? 2U : 1U, (is.value >> 2 & 7U) == 7};
    PutNumber("columnQuantity", m_shape.columns);
    PutNumber("rowQuantity", m_shape.rows);
    PutNumber("sampleQuantity", m_shape.samples);
    PutNumber("sampleSize", m_shape.sampleSize);
    PutNumber("cellSize", m_shape.samples * m_shape.sampleSize);
    PutNumber("dataType",
              isWide ? (isSigned ? kvt_Int16 : kvt_UInt16) : (isSigned ? kvt_Int8 : kvt_UInt8));
    PutNumber("storageMode", m_shape.isIndexed ? kvt_StorIndexed : kvt_StorCells);
    PutNumber("byteSwap", is.value >> 5 & 1U);
    PutNumber("rectification", is.value >> 6 & 3U);
    PutNumber("tofd", is.value >> 8 & 1U);
    PutNumber("columnUnits", (is.value >> 9 & 3U) == 0 ? kvt_UnitDegree : kvt_UnitMetre);
    PutNumber("rowUnits", kvt_UnitMetre);
    PutNumber("sampleUnits", kvt_UnitSecond);
    PutNumber("columnResolution", 1e-3);
    PutNumber("rowResolution", 1e-3);
    PutNumber("sampleResolution", 1e-8);
    PutNumber("soundSpeed", 5900);
    PutNumber("probeAngle", is.value >> 11 & 63U);
    PutNumber("probeSeparation", 0.05);
    PutNumber("inspectionRadius", 0.1);
    PutNumber("partThickness", 0.02);
    PutNumber("compressionBits", (is.value >> 17 & 7U) == 7 ? is.value >> 20 & 15U : 0);
    PutNumber("compressionLSBit", (is.value >> 17 & 7U) == 7 ? is.value >> 24 & 7U : 0);
    const double range = isWide ? 65536 : 256;
    PutNumber("dataMinimum", isSigned ? -range / 2 : 0);
    PutNumber("dataMaximum", isSigned ? range / 2 - 1 : range - 1);
  }

  void AddSamples(const Instruction& is) {
    if (!IsData()) return;
    const std::uint16_t code = m_type->fields.back().code;
    const std::uint32_t cells = m_shape.columns * m_shape.rows;
    const std::uint32_t cell = m_shape.samples * m_shape.sampleSize;
    std::string bytes;
    for (std::uint32_t at = 0; m_shape.isIndexed && at < cells; ++at) {
      const bool isEmpty = (is.value >> at % 32 & 1U) != 0;
      bytes += Stored(SCFile::value_UInt32, isEmpty ? 0 : cells * 4 + at * cell);
    }
    std::size_t size = bytes.size() + std::size_t{cells} * cell;
    if (is.b % 8 == 7) size = is.value >> 8 & 0x3FFF;
    for (std::size_t at = bytes.size(); at < size; ++at)
      bytes += static_cast<char>(SampleByte(is.a, is.value, at));
    bytes.resize(size);
    const std::uint64_t chunk = std::uint64_t{4096} << (is.c % 4 == 0 ? 4 : is.c % 4 - 1);
    Current().parts.emplace_back(PlannedBlock{code, std::move(bytes), chunk});
    m_plan.isSound = m_plan.isSound && CountBlocks() == 1;
  }

  std::size_t CountBlocks() {
    return static_cast<std::size_t>(std::ranges::count_if(Current().parts, [](const auto& part) {
      return std::holds_alternative<PlannedBlock>(part);
    }));
  }

  void AddField(const Instruction& is) {
    if (!m_type || m_open.size() != 2) return;
    const FieldInfo& field = m_type->fields[is.a % m_type->fields.size()];
    if (field.kind == FieldKind::Block) return;
    if (field.IsKey()) (IsData() ? m_plan.hasDataTwins : m_plan.hasTwins) = true;
    PlannedItem item = field.IsKey() ? NumberItem(field, KeyOf(field, is.value & 0xF))
                                     : RightItem(field, is.c, is.value);
    const std::uint8_t form = is.b % 32;
    if (form < 29) return Put(std::move(item));
    m_plan.isSound = false;
    if (form == 29) {
      item.type = static_cast<std::uint8_t>(2 + is.value % 11);
      item.data.assign(item.count * kvtiff19::ElementSize(item.type), '\1');
    } else if (form == 30) {
      item.count += 1 + is.value % 3;
      item.data.resize(item.count * kvtiff19::ElementSize(item.type), '\1');
    }
    Current().parts.emplace_back(std::move(item));
  }

  /// A code that no field has, or one that numbers a sub-channel.
  void AddItem(const Instruction& is) {
    PlannedItem item;
    const bool isNumber = is.a % 2 == 0;
    if (isNumber) m_plan.hasDataTwins = true;  // two groups may get one number
    item.code = static_cast<std::uint16_t>(isNumber ? 200 : 300 + is.a);
    item.type =
        isNumber ? std::uint8_t{SCFile::value_UInt32} : static_cast<std::uint8_t>(2 + is.b % 11);
    item.count = isNumber ? 1 : is.c % 9;
    item.data = isNumber ? Stored(item.type, is.value % 8)
                         : std::string(item.count * kvtiff19::ElementSize(item.type), '\1');
    PlannedGroup& group = Current();
    if (isNumber)
      group.parts.insert(group.parts.begin(), std::move(item));
    else
      group.parts.emplace_back(std::move(item));
  }

  void Nest(const Instruction& is) {
    constexpr std::size_t deepest = 18;
    if (m_open.size() >= deepest) return;
    static_cast<void>(Current());
    const auto types = SCFile::file_GroupTypes();
    const bool isKnown = is.a % 2 == 0;
    Open({isKnown ? types[is.b % types.size()].primaryCode : static_cast<std::uint16_t>(is.value),
          TextOf(is.value, is.c % 8),
          {}});
    if (m_open.size() > kvtiff19::maxDepth || !isKnown) m_plan.isSound = false;
  }

  void AddDefect(const Instruction& is) {
    const bool isNew = m_open.size() < 2 || m_open[1].code != codeDefectTable;
    CloseTo(isNew ? 1 : 2);
    static_cast<void>(Current());
    if (isNew) Open({codeDefectTable, "", {}});
    m_type = nullptr;
    Open({codeDefect, "Defect", {}});
    constexpr std::array<std::uint8_t, 17> types = {
        0, 11, 11, 11, 11, 11, 11, 12, 12, 7, 7, 12, 12, 7, 7, 11, 11};
    for (std::uint16_t code = 1; code < types.size(); ++code) {
      const bool isSubEntry = code >= 10 && code <= 12;
      if (is.a == code || (isSubEntry && is.b % 2 == 0)) continue;
      if (types[code] == SCFile::value_Text)
        AddText(code, TextOf(is.value + code, is.b % 8));
      else
        Current().parts.emplace_back(
            PlannedItem{code, types[code], 1, Stored(types[code], is.value % 100)});
    }
    if (is.c % 16 == 15) {
      m_plan.isSound = false;
      Current().parts.emplace_back(
          PlannedItem{static_cast<std::uint16_t>(is.value % 17), SCFile::value_Int8, 1, "\1"});
    }
    if (is.a >= 10 && is.a <= 12) m_plan.isSound = false;
    Close();
  }

  Plan m_plan;
  std::vector<PlannedGroup> m_open;
  const GroupTypeInfo* m_type = nullptr;  ///< of the group in the top group, where it is known
  Shape m_shape;
  std::set<std::vector<double>> m_known;  ///< types and ids of groups
};

}  // namespace

std::vector<Instruction> Decode(std::span<const std::uint8_t> input) {
  std::vector<Instruction> instructions;
  for (std::size_t at = 0;
       at + instructionSize <= input.size() && instructions.size() < mostInstructions;
       at += instructionSize)
    instructions.push_back(
        {input[at],
         input[at + 1],
         input[at + 2],
         input[at + 3],
         kvtiff19::Load<std::uint32_t>(reinterpret_cast<const std::byte*>(input.data() + at + 4))});
  return instructions;
}

std::size_t Encode(std::span<const Instruction> instructions, std::span<std::uint8_t> output) {
  std::size_t at = 0;
  for (const Instruction& is : instructions) {
    if (at + instructionSize > output.size()) break;
    output[at] = is.operation;
    output[at + 1] = is.a;
    output[at + 2] = is.b;
    output[at + 3] = is.c;
    kvtiff19::Store(reinterpret_cast<std::byte*>(output.data() + at + 4), is.value);
    at += instructionSize;
  }
  return at;
}

Plan ParsePlan(std::span<const Instruction> instructions) {
  Plan plan = Parser().Parse(instructions);
  static_assert(sizeof(Instruction) == instructionSize);
  plan.lot = kvtiff19::Checksum(std::as_bytes(instructions));
  return plan;
}

}  // namespace utdata::fuzz
