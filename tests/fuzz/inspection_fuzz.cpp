// Makes files of inspections from a plan, under checksums that are right, and goes the whole way:
// from bytes to groups, items, samples and codes, and by edits and saves back to bytes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "interfaces/framework.h"
#include "tests/fuzz/inspection/checks.h"
#include "tests/fuzz/inspection/plan.h"

namespace {

using utdata::fuzz::Decode;
using utdata::fuzz::Encode;
using utdata::fuzz::Instruction;

using Instructions = std::vector<Instruction>;
using Dice = std::minstd_rand;

Instruction RandomInstruction(Dice& dice) {
  const auto byte = [&] { return static_cast<std::uint8_t>(dice() >> 8U); };
  return {byte(), byte(), byte(), byte(), static_cast<std::uint32_t>(dice() << 8U ^ dice())};
}

/// Changes one argument: by one, by a bit, or to any other.
void Change(Instruction& is, Dice& dice) {
  const auto changed = [&](auto value) {
    using Number = decltype(value);
    const std::uint32_t kind = dice() >> 4U & 3U;
    if (kind == 0) return static_cast<Number>(value + 1);
    if (kind == 1) return static_cast<Number>(value - 1);
    if (kind == 2) return static_cast<Number>(value ^ 1U << (dice() >> 4U) % (8 * sizeof value));
    return static_cast<Number>(dice() >> 3U);
  };
  switch ((dice() >> 4U) % 8) {
    case 0:
      is.operation = static_cast<std::uint8_t>((dice() >> 4U) % utdata::fuzz::operationCount);
      return;
    case 1:
    case 2:
      is.a = changed(is.a);
      return;
    case 3:
      is.b = changed(is.b);
      return;
    case 4:
      is.c = changed(is.c);
      return;
    default:
      is.value = changed(is.value);
      return;
  }
}

void Mutate(Instructions& plan, Dice& dice) {
  const auto place = [&](std::size_t size) { return (dice() >> 4U) % size; };
  const auto at = [&](std::size_t index) {
    return plan.begin() + static_cast<std::ptrdiff_t>(index);
  };
  if (plan.empty()) return plan.push_back(RandomInstruction(dice));
  switch (place(8)) {
    case 0:
      plan.insert(at(place(plan.size() + 1)), RandomInstruction(dice));
      return;
    case 1:
      plan.erase(at(place(plan.size())));
      return;
    case 2: {
      const Instruction copied = plan[place(plan.size())];
      plan.insert(at(place(plan.size() + 1)), copied);
      return;
    }
    case 3:
      std::swap(plan[place(plan.size())], plan[place(plan.size())]);
      return;
    default:
      return Change(plan[place(plan.size())], dice);
  }
}

}  // namespace

// The names are the fuzzing engine's.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // What loading replaces in a record is reported to developers.
  static const auto former =
      utdata::SetReportSink([](const utdata::Report&) { return utdata::ReportAnswer::Continue; });
  utdata::fuzz::Check(utdata::fuzz::ParsePlan(Decode({data, size})));
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data,
                                               std::size_t size,
                                               std::size_t maxSize,
                                               unsigned seed) {
  Dice dice(seed);
  Instructions plan = Decode({data, size});
  for (std::uint32_t changes = 1 + (dice() >> 4U) % 4; changes > 0; --changes) Mutate(plan, dice);
  return Encode(plan, {data, maxSize});
}

/// The start of one plan and the end of another.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first,
                                                 std::size_t firstSize,
                                                 const std::uint8_t* second,
                                                 std::size_t secondSize,
                                                 std::uint8_t* output,
                                                 std::size_t maxSize,
                                                 unsigned seed) {
  Dice dice(seed);
  Instructions plan = Decode({first, firstSize});
  const Instructions other = Decode({second, secondSize});
  plan.resize((dice() >> 4U) % (plan.size() + 1));
  const auto from = static_cast<std::ptrdiff_t>((dice() >> 4U) % (other.size() + 1));
  plan.insert(plan.end(), other.begin() + from, other.end());
  return Encode(plan, {output, maxSize});
}
