// Why a job cannot be done, told to the user in one line.
#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace utdata::program {

/// "FILE: WHAT: WHY; ADVICE" in printable UTF-8 on one line; ends the program with exit status 1.
class Failure : public std::exception {
 public:
  /// @param file   as the user named it
  /// @param what   what failed ("cannot be read")
  /// @param why    the reason
  /// @param advice what to do about it, empty where there is nothing to do
  Failure(std::string_view file,
          std::string_view what,
          std::string_view why,
          std::string_view advice = {});

  /// The failure that the file-format layer told last on this thread, with advice that fits its
  /// status.
  [[nodiscard]] static Failure OfLibrary(int status, std::string_view file, std::string_view what);

  /// What a user can do about a status of the file-format layer; empty where there is nothing to
  /// say.
  [[nodiscard]] static std::string_view AdviceFor(int status);

  [[nodiscard]] const char* what() const noexcept override { return m_line.c_str(); }

 private:
  std::string m_line;
};

/// The user stopped the program while it was making something.
class Interrupted : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override {
    return "interrupted; nothing was written";
  }
};

}  // namespace utdata::program
