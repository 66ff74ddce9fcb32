// The page of a report within the program: its files, put there when the program is built.
#pragma once

#include <string_view>

namespace utdata::program {

[[nodiscard]] std::string_view PageText();   ///< HTML, with marks where the rest goes
[[nodiscard]] std::string_view StyleText();  ///< CSS
[[nodiscard]] std::string_view PlotsText();  ///< JavaScript: colours, axes, images and curves
[[nodiscard]] std::string_view
ViewsText();  ///< JavaScript: the views with their units and read-outs
[[nodiscard]] std::string_view SectorText();  ///< JavaScript: the sector scan over the views
[[nodiscard]] std::string_view
ProjectionText();  ///< JavaScript: top, side and end views over the views
[[nodiscard]] std::string_view
CursorText();  ///< JavaScript: how the cursor moves, the choices, and the tables

}  // namespace utdata::program
