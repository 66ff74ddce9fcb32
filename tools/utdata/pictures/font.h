// Texts on a canvas, in the one typeface that the program carries within itself.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "pictures/picture.h"

struct FT_LibraryRec_;
struct FT_FaceRec_;

namespace utdata::program {

enum class Anchor { Start, Middle, End };

struct TextStyle {
  int size = 13;  ///< pixels from one line to the next, about
  Color color;
  Anchor anchor = Anchor::Start;
  bool upwards = false;  ///< turned a quarter: reads from below to above
};

/// Used by one thread.
class Font {
 public:
  /// Throws std::bad_alloc, as all that follows does.
  Font();

  /// Pixels that a text takes along its line. Texts are UTF-8; Failure is thrown when one is
  /// malformed.
  [[nodiscard]] int Width(std::string_view text, int size) const;

  /// Draws a text with its start, middle or end at `base`, a point on its baseline.
  void Draw(Canvas& canvas, Point base, std::string_view text, const TextStyle& style) const;

 private:
  struct Memory;
  struct Release {
    void operator()(Memory* memory) const;
    void operator()(FT_LibraryRec_* library) const;
    void operator()(FT_FaceRec_* face) const;
  };

  /// Throws std::bad_alloc when a call of the library failed, or went on without memory.
  void Check(int error) const;

  /// Calls visit(x) for each glyph, rendered in the face's slot, `x` pixels behind the text's
  /// start. Returns the text's width.
  template <class Visitor>
  int ForEachGlyph(std::string_view text, int size, Visitor&& visit) const;

  std::unique_ptr<Memory, Release> m_memory;  // outlives the library
  std::unique_ptr<FT_LibraryRec_, Release> m_library;
  std::unique_ptr<FT_FaceRec_, Release> m_face;
};

}  // namespace utdata::program
