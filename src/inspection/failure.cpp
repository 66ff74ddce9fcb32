#include "utdata/failure.h"

#include "interfaces/framework.h"
#include "interfaces/kvtiff19.h"

namespace utdata {
namespace {

std::string Line(std::string_view file, std::string_view what, std::string_view why) {
  std::string line;
  for (const std::string_view part : {file, what, why}) {
    if (part.empty()) continue;
    if (!line.empty()) line += ": ";
    line += part;
  }
  return line;
}

}  // namespace

Error::Error(std::string_view file,
             std::string_view what,
             std::string_view why,
             std::string_view remedy,
             int status)
    : std::runtime_error(Line(file, what, why)),
      m_file(file),
      m_what(what),
      m_why(why),
      m_remedy(remedy),
      m_status(status) {}

Error::Error(const Error&) = default;
Error& Error::operator=(const Error&) = default;
Error::~Error() = default;

const std::string& Error::File() const noexcept { return m_file; }
const std::string& Error::What() const noexcept { return m_what; }
const std::string& Error::Why() const noexcept { return m_why; }
const std::string& Error::Remedy() const noexcept { return m_remedy; }
int Error::Status() const noexcept { return m_status; }

Error Error::OfFileLayer(int status, const std::string& file, std::string_view what) {
  std::string why = SCFile::file_LastError();
  if (why.empty()) why = SCFile::file_StatusText(status);
  // The layer begins with the file and with what it tried, which `file` and `what` say already.
  for (const std::string& opening : {file + ": ", std::string("cannot be opened: ")})
    if (why.starts_with(opening)) why.erase(0, opening.size());
  if (status == SCFile::status_NotDurable) what = {};  // nothing failed but what `why` says
  return {file, what, why, {}, status};
}

std::wstring ToWide(std::string_view utf8) {
  std::wstring wide = WideFromNarrow(std::string(utf8).c_str());
  // Only well-formed text comes back as it was.
  if (NarrowFromWide(wide) != utf8)
    throw Error(utf8, "cannot be used", "the text is not valid UTF-8");
  return wide;
}

std::string ToUtf8(std::wstring_view text) { return NarrowFromWide(text); }

}  // namespace utdata
