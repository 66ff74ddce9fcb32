// What the operations of utdata::Inspection and its neighbours throw when a job cannot be done.
#pragma once

#include <stdexcept>
#include <string>

#include "interfaces/export.h"

namespace utdata {

/// A job that cannot be done: with which file, what failed, why, and what helps. Texts are UTF-8;
/// what() is "FILE: WHAT: WHY".
class UTDATA_API Error : public std::runtime_error {
 public:
  /// @param file   the file, or the file and the part of it, as the caller named it; may be empty
  /// @param what   what failed ("cannot be read")
  /// @param why    the reason
  /// @param remedy what to do about it; empty where there is nothing to do
  /// @param status of the file-format layer, where the failure came from there
  Error(std::string file,
        std::string what,
        std::string why,
        std::string remedy = {},
        int status = 0);
  Error(const Error&);
  Error& operator=(const Error&);
  ~Error() override;

  [[nodiscard]] const std::string& File() const noexcept;
  [[nodiscard]] const std::string& What() const noexcept;
  [[nodiscard]] const std::string& Why() const noexcept;
  [[nodiscard]] const std::string& Remedy() const noexcept;
  /// SCFile::status_Ok when the failure is none of the file-format layer's.
  [[nodiscard]] int Status() const noexcept;

  /// The failure that the file-format layer reported last on this thread.
  [[nodiscard]] static Error OfFileLayer(int status, const std::string& file, std::string what);

 private:
  std::string m_file;
  std::string m_what;
  std::string m_why;
  std::string m_remedy;
  int m_status;
};

/// The wide form of well-formed UTF-8 without U+0000. Throws Error when it is anything else.
[[nodiscard]] UTDATA_API std::wstring ToWide(const std::string& utf8);

/// The UTF-8 form of a wide text; what is not a character becomes U+FFFD.
[[nodiscard]] UTDATA_API std::string ToUtf8(const std::wstring& text);

}  // namespace utdata
