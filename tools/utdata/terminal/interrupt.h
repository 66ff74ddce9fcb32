// Ctrl-C while a file is being made: the program ends in order, and nothing half-written stays.
#pragma once

#include <string>

namespace utdata::program {

/// While one exists, an interrupt or a termination request only sets a flag, which
/// ThrowIfInterrupted answers to. The former behaviour comes back with its end. One at a time.
class InterruptScope {
 public:
  InterruptScope();
  ~InterruptScope();
  InterruptScope(const InterruptScope&) = delete;
  InterruptScope& operator=(const InterruptScope&) = delete;
};

/// Throws Interrupted when the user has asked to stop.
void ThrowIfInterrupted();

/// While one exists inside an InterruptScope, an interrupt takes the unfinished form of a file away
/// and ends the program at once: for calls that cannot be asked to stop. One at a time.
class UnfinishedFileScope {
 public:
  /// @param path the file as it will be called; it is written beside that name, with ".part" added
  explicit UnfinishedFileScope(const std::string& path);
  ~UnfinishedFileScope();
  UnfinishedFileScope(const UnfinishedFileScope&) = delete;
  UnfinishedFileScope& operator=(const UnfinishedFileScope&) = delete;

 private:
  std::string m_unfinished;
};

/// The exit status of an interrupted program.
inline constexpr int interruptedStatus = 130;

}  // namespace utdata::program
