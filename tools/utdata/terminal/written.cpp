#include "terminal/written.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace utdata::program {
namespace {

constexpr std::string_view opening = "; ";
constexpr std::string_view ending = " is written";
std::array<char, 8192> note{};  ///< ends with a zero, whenever a signal handler reads it

}  // namespace

void NoteWritten(std::string_view path) noexcept {
  char* at = std::find(note.begin(), note.end(), '\0');
  const auto room = static_cast<std::size_t>(std::distance(at, note.data() + note.size()));
  if (room <= opening.size() + path.size() + ending.size()) return;
  for (const std::string_view part : {opening.substr(1), path, ending})
    for (const char letter : part) *++at = static_cast<unsigned char>(letter) < ' ' ? '?' : letter;
  // The first letter comes last: the note grows in one step.
  const std::size_t added = opening.size() + path.size() + ending.size();
  *(at + 1 - static_cast<std::ptrdiff_t>(added)) = opening.front();
}

const char* WrittenNote() noexcept { return note.data(); }

}  // namespace utdata::program
