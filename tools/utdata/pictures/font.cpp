#include "pictures/font.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MODULE_H

#include <cstdlib>
#include <new>

#include "pictures/font_data.h"
#include "terminal/text.h"

namespace utdata::program {

/// The library's memory. It takes some failures for a table that a typeface lacks, and draws
/// without it: whether one was met is kept.
struct Font::Memory : FT_MemoryRec_ {
  Memory() : FT_MemoryRec_{&hasFailed, Allocate, Free, Reallocate} {}

  bool hasFailed = false;

 private:
  static void* Noted(FT_Memory memory, void* block, long size) {
    if (!block && size > 0) *static_cast<bool*>(memory->user) = true;
    return block;
  }
  static void* Allocate(FT_Memory memory, long size) {
    return Noted(memory, std::malloc(static_cast<std::size_t>(size)), size);
  }
  static void Free(FT_Memory, void* block) { std::free(block); }
  static void* Reallocate(FT_Memory memory, long, long size, void* block) {
    return Noted(memory, std::realloc(block, static_cast<std::size_t>(size)), size);
  }
};

/// A picture without a part of its texts is no picture. The typeface is the program's own: only
/// memory can be missing, whatever the library calls that.
void Font::Check(int error) const {
  if (error != FT_Err_Ok || m_memory->hasFailed) throw std::bad_alloc();
}

void Font::Release::operator()(Memory* memory) const { delete memory; }
void Font::Release::operator()(FT_LibraryRec_* library) const { FT_Done_Library(library); }
void Font::Release::operator()(FT_FaceRec_* face) const { FT_Done_Face(face); }

Font::Font() : m_memory(new Memory) {
  const std::span<const std::byte> data = FontData();
  FT_Library library = nullptr;
  FT_Face face = nullptr;
  Check(FT_New_Library(m_memory.get(), &library));
  m_library.reset(library);
  FT_Add_Default_Modules(library);
  FT_Set_Default_Properties(library);
  Check(FT_Err_Ok);
  Check(FT_New_Memory_Face(library,
                           reinterpret_cast<const FT_Byte*>(data.data()),
                           static_cast<FT_Long>(data.size()),
                           0,
                           &face));
  m_face.reset(face);
}

template <class Visitor>
int Font::ForEachGlyph(std::string_view text, int size, Visitor&& visit) const {
  Check(FT_Set_Pixel_Sizes(m_face.get(), 0, static_cast<FT_UInt>(size)));
  int x = 0;
  FT_UInt before = 0;
  for (const wchar_t character : ToWide(text)) {
    const FT_UInt glyph = FT_Get_Char_Index(m_face.get(), static_cast<FT_ULong>(character));
    FT_Vector kerning = {};
    if (before != 0)
      Check(FT_Get_Kerning(m_face.get(), before, glyph, FT_KERNING_DEFAULT, &kerning));
    x += static_cast<int>(kerning.x / 64);
    before = glyph;
    Check(FT_Load_Glyph(m_face.get(), glyph, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT));
    visit(x);
    x += static_cast<int>((m_face->glyph->advance.x + 32) / 64);
  }
  return x;
}

int Font::Width(std::string_view text, int size) const {
  return ForEachGlyph(text, size, [](int) {});
}

void Font::Draw(Canvas& canvas, Point base, std::string_view text, const TextStyle& style) const {
  const int width = style.anchor == Anchor::Start ? 0 : Width(text, style.size);
  const int start = style.anchor == Anchor::Middle ? -width / 2 : -width;
  ForEachGlyph(text, style.size, [&](int x) {
    const FT_GlyphSlot glyph = m_face->glyph;
    const FT_Bitmap& bitmap = glyph->bitmap;
    for (int row = 0; row < static_cast<int>(bitmap.rows); ++row) {
      const unsigned char* coverage = bitmap.buffer + row * bitmap.pitch;
      for (int column = 0; column < static_cast<int>(bitmap.width); ++column) {
        const int along = start + x + glyph->bitmap_left + column;
        const int below = row - glyph->bitmap_top;
        const Point at = style.upwards ? Point{base.x + below, base.y - along}
                                       : Point{base.x + along, base.y + below};
        canvas.Blend(at, style.color, coverage[column]);
      }
    }
  });
}

}  // namespace utdata::program
