// What an input of the fuzzer describes: the files of an inspection as trees of groups, damage to
// one of them, and what is then done with the inspection.
//
// An input is a list of instructions of eight bytes, so that any bytes are a plan and a mutation of
// an input is one of its plan. What the instructions say is mostly what an inspection may hold, so
// that most plans get past loading; each has values that make it wrong.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace utdata::fuzz {

enum class Operation : std::uint8_t {
  File,     ///< a companion; the first one is not needed, since the base is there
  Write,    ///< a top group
  Group,    ///< a group of a known type with its keys
  Shape,    ///< the layout of the data group
  Samples,  ///< its samples
  Field,    ///< an item of a known field
  Item,     ///< an item of any code
  Nest,     ///< a group in the group
  Defect,   ///< a record of the defect table
  Damage,   ///< bytes of a file that are changed after all checksums were made
  Edit,     ///< a field that is changed once the inspection is open
  Gate,     ///< A-scans that are gated
  Save      ///< a save, and the end of what belongs to it
};
inline constexpr std::uint8_t operationCount = 13;

struct Instruction {
  std::uint8_t operation = 0;  ///< modulo operationCount
  std::uint8_t a = 0;
  std::uint8_t b = 0;
  std::uint8_t c = 0;
  std::uint32_t value = 0;
};
inline constexpr std::size_t instructionSize = 8;
inline constexpr std::size_t mostInstructions = 64;

/// What is left behind the last whole instruction does not count, nor what is too much.
[[nodiscard]] std::vector<Instruction> Decode(std::span<const std::uint8_t> input);
/// @return the bytes, as many instructions as fit in `output`
std::size_t Encode(std::span<const Instruction> instructions, std::span<std::uint8_t> output);

// ---- the files

struct PlannedGroup;

struct PlannedItem {
  std::uint16_t code = 0;
  std::uint8_t type = 0;
  std::uint32_t count = 0;
  std::string data;
};

struct PlannedBlock {
  std::uint16_t code = 0;
  std::string bytes;
  std::uint64_t chunk = 0;
};

struct PlannedGroup {
  std::uint16_t code = 0;
  std::string name;
  std::vector<std::variant<PlannedItem, PlannedBlock, PlannedGroup>> parts;
};

/// What a companion says that is not so.
enum class OriginFault : std::uint8_t { None, OtherBase, OtherNumber, OtherPredecessor, OldState };

struct PlannedFile {
  std::uint32_t number = 0;  ///< of its name; 0 is the base
  OriginFault fault = OriginFault::None;
  std::vector<PlannedGroup> writes;
};

// ---- what is done with them

struct PlannedDamage {
  enum class Kind : std::uint8_t { Change, Cut, Tail };

  std::size_t file = 0;  ///< modulo the files
  Kind kind = Kind::Change;
  bool isInData = false;    ///< not in one of the first three pages
  std::uint32_t place = 0;  ///< modulo the bytes
  std::uint8_t change = 1;  ///< not 0
};

struct PlannedEdit {
  std::uint8_t type = 0;  ///< each modulo what there is
  std::uint8_t group = 0;
  std::uint8_t field = 0;
  std::uint32_t value = 0;
};

struct PlannedGate {
  std::uint32_t channel = 0;
  std::uint32_t gate = 0;
  double start = 0;  ///< s
  double width = 0;  ///< s
  std::optional<double> threshold;
};

enum class SaveKind : std::uint8_t { Companion, Appended, New };

struct PlannedSave {
  SaveKind kind = SaveKind::Companion;
  std::string author;
};

using PlannedStep = std::variant<PlannedEdit, PlannedGate, PlannedSave>;

struct Plan {
  std::vector<PlannedFile> files;
  std::optional<PlannedDamage> damage;
  std::vector<PlannedStep> steps;
  bool isSound = true;        ///< nothing in the files is wrong on purpose
  bool hasTwins = false;      ///< groups that a modification may not tell from each other
  bool hasDataTwins = false;  ///< data groups of equal ids: told from each other, or not saved
  /// A checksum of the plan. What takes long is done for some values of it, so that it stays rare
  /// whatever plans the fuzzer prefers.
  std::uint64_t lot = 0;
};

[[nodiscard]] Plan ParsePlan(std::span<const Instruction> instructions);

}  // namespace utdata::fuzz
