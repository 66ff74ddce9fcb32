#include "utdata/failure.h"

#include <utility>

#include "interfaces/framework.h"
#include "interfaces/kvtiff19.h"

namespace utdata {
namespace {

std::string Line(const std::string& file, const std::string& what, const std::string& why) {
  std::string line;
  for (const std::string& part : {file, what, why}) {
    if (part.empty()) continue;
    if (!line.empty()) line += ": ";
    line += part;
  }
  return line;
}

}  // namespace

Error::Error(std::string file, std::string what, std::string why, std::string remedy, int status)
    : std::runtime_error(Line(file, what, why)),
      m_file(std::move(file)),
      m_what(std::move(what)),
      m_why(std::move(why)),
      m_remedy(std::move(remedy)),
      m_status(status) {}

Error::Error(const Error&) = default;
Error& Error::operator=(const Error&) = default;
Error::~Error() = default;

const std::string& Error::File() const noexcept { return m_file; }
const std::string& Error::What() const noexcept { return m_what; }
const std::string& Error::Why() const noexcept { return m_why; }
const std::string& Error::Remedy() const noexcept { return m_remedy; }
int Error::Status() const noexcept { return m_status; }

Error Error::OfFileLayer(int status, const std::string& file, std::string what) {
  std::string why = SCFile::file_LastError();
  if (why.empty()) why = SCFile::file_StatusText(status);
  // The layer begins with the file and with what it tried, which `file` and `what` say already.
  for (const std::string& opening : {file + ": ", std::string("cannot be opened: ")})
    if (why.starts_with(opening)) why.erase(0, opening.size());
  return {file, std::move(what), std::move(why), {}, status};
}

std::wstring ToWide(const std::string& utf8) {
  std::wstring wide = WideFromNarrow(utf8.c_str());
  // Only well-formed text comes back as it was.
  if (NarrowFromWide(wide) != utf8)
    throw Error(utf8, "cannot be used", "the text is not valid UTF-8");
  return wide;
}

std::string ToUtf8(const std::wstring& text) { return NarrowFromWide(text); }

}  // namespace utdata
