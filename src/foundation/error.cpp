// Assertion and warning texts, composed and handed to the framework.
#include "utdata/error.h"

#include <new>
#include <string>

#include "interfaces/framework.h"

namespace {

/// "HEADLINE\nFILE<between>LINE".
std::wstring Compose(std::wstring headline,
                     const char* file,
                     const wchar_t* between,
                     std::uint32_t line) {
  return std::move(headline) + L'\n' + utdata::WideFromNarrow(file) + between +
         std::to_wstring(line);
}

}  // namespace

void err_Assert(const void* expression, const void* file, std::uint32_t line) {
  std::wstring text;
  try {
    text = Compose(utdata::WideFromNarrow(static_cast<const char*>(expression)),
                   static_cast<const char*>(file),
                   L", ligne ",
                   line);
  } catch (const std::bad_alloc&) {
    // The report without its text still says that a condition does not hold.
  }
  utdata::ReportAssertion(__FILE__, __LINE__, text);
}

void err_Warning(const wchar_t* message, const char* file, std::uint32_t line) {
  try {
    utdata::DebugTrace(Compose(message ? message : L"", file, L" - ", line));
  } catch (const std::bad_alloc&) {
    utdata::DebugTrace(L"warning lost for lack of memory");
  }
}
