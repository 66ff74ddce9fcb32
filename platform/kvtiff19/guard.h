// The edge of the interface: no exception crosses it.
#pragma once

#include <exception>

#include "platform/kvtiff19/items.h"
#include "platform/kvtiff19/writer.h"

namespace utdata::kvtiff19 {

/// Runs an operation and turns lack of memory into status_TooLarge. With a file, the failure is
/// that of a write: the next commit fails.
template <class Operation>
int Guarded(Operation operation, OpenFile* written = nullptr) noexcept {
  constexpr const char* what = "out of memory";
  try {
    try {
      return operation();
    } catch (const std::exception&) {  // also std::length_error: more than an address space
      return written ? FailWrite(*written, SCFile::status_TooLarge, what)
                     : Fail(SCFile::status_TooLarge, what);
    }
  } catch (...) {
    return SCFile::status_TooLarge;
  }
}

/// status_BadArgument of a call that names no file.
inline int BadCall(const char* what) { return Fail(SCFile::status_BadArgument, what); }

[[nodiscard]] inline bool IsFile(const Node* node) {
  return node && node->state == NodeState::File;
}
[[nodiscard]] inline bool IsGroup(const Node* node) {
  return node && node->state != NodeState::File;
}

/// Sets what a caller wants to know.
template <class Value>
void Give(Value* target, Value value) {
  if (target) *target = value;
}

}  // namespace utdata::kvtiff19
