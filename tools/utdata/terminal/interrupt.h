// Ctrl-C while a file is being made, or a file that is cut while it is read: the program ends in
// order, and nothing half-written stays.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace utdata::program {

/// While one exists, an interrupt or a termination request only sets a flag, which
/// ThrowIfInterrupted checks. Its end restores the handlers before it. One at a time.
class InterruptScope {
 public:
  InterruptScope();
  ~InterruptScope();
  InterruptScope(const InterruptScope&) = delete;
  InterruptScope& operator=(const InterruptScope&) = delete;
};

/// Throws Interrupted when the user has asked to stop.
void ThrowIfInterrupted();

/// "; weld.A01 is written" or "; nothing was written", behind the reason why the program ends.
[[nodiscard]] std::string_view WhatWasWritten() noexcept;

/// From now on memory that runs out where nobody can answer for it, as in a destructor, ends the
/// program as a failed job: with a message and exit status 1, without what is left at the
/// LeftoverScopes.
void EndInOrderWithoutMemory();

/// From now on a file that is cut short by another while it is read as memory ends the program with
/// a message and exit status 1, and takes away what is left at the LeftoverScopes.
void EndWhenAFileIsCut();

/// While one exists, a program that has to end at once takes a file away first. Eight at a time;
/// one more has no effect.
class LeftoverScope {
 public:
  explicit LeftoverScope(std::string path);
  ~LeftoverScope();
  LeftoverScope(const LeftoverScope&) = delete;
  LeftoverScope& operator=(const LeftoverScope&) = delete;

 private:
  std::string m_path;
  std::size_t m_place;
};

/// While one exists inside an InterruptScope, an interrupt takes the unfinished form of a file
/// away, unless that was there before, and ends the program at once: for calls that cannot be asked
/// to stop. One at a time.
class UnfinishedFileScope {
 public:
  /// @param path the file as it will be called; it is written beside that name, with ".part" added
  explicit UnfinishedFileScope(const std::string& path);
  ~UnfinishedFileScope();
  UnfinishedFileScope(const UnfinishedFileScope&) = delete;
  UnfinishedFileScope& operator=(const UnfinishedFileScope&) = delete;

 private:
  std::optional<LeftoverScope> m_unfinished;
};

/// The exit status of an interrupted program.
inline constexpr int interruptedStatus = 130;

}  // namespace utdata::program
