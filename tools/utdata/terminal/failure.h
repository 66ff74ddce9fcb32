// Why a job cannot be done, said to the user in one line.
#pragma once

#include <exception>
#include <string>

#include "utdata/failure.h"

namespace utdata::program {

/// What the program throws is what the library throws; it ends the program with exit status 1.
using Failure = utdata::Error;

/// "FILE: WHAT: WHY; REMEDY" in printable UTF-8 on one line. A failure of the file-format layer
/// that has no remedy of its own gets the one that fits its status.
[[nodiscard]] std::string LineOf(const Failure& failure);

/// The user stopped the program while it was making something.
class Interrupted : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "interrupted"; }
};

}  // namespace utdata::program
