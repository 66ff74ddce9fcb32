// A curve as a picture: values over an axis, with a grid, and the windows of gates at their levels.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "pictures/font.h"
#include "pictures/picture.h"
#include "pictures/plot.h"
#include "pictures/scale.h"

namespace utdata::program {

/// A gate in the picture: a bar at its level, from its start to its end.
struct GateBar {
  double from = 0;   ///< in the unit of the axis across
  double to = 0;     ///< the same
  double level = 0;  ///< in the unit of the values
  Color color;
  std::string label;
};

struct LinePlot {
  std::string title;
  std::vector<std::string> notes;       ///< lines below the title
  PlotAxis across;                      ///< left to right
  std::optional<PlotAxis> acrossAgain;  ///< the same in another unit, above the picture
  std::vector<double> values;           ///< one for each cell across
  std::string valueTitle;               ///< "Amplitude, of full scale (%)"
  double low = 0;                       ///< value at the lower edge
  double high = 100;                    ///< value at the upper edge
  std::vector<Tick>
      marks;  ///< at the right side: their place as a value, their text in another unit
  std::string marksTitle;  ///< "dB"
  std::vector<GateBar> gates;
  std::vector<double> reference;  ///< a second curve, one value for each cell; NaN interrupts it
  std::string referenceLabel;
  std::optional<std::size_t> marked;  ///< a cell at whose value a small triangle points
};

/// The curve joins the values; where several fall on one pixel it spans all of them. What lies
/// beyond an edge is drawn at the edge. REQUIRES: as many values as cells across, at least 1; low <
/// high.
[[nodiscard]] PlotPicture Draw(const LinePlot& plot, const Font& font);

}  // namespace utdata::program
