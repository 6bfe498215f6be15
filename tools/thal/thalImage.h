// Pictures of the thal tool: a bitmap of 32-bit colours, PNG output, palettes and the legend.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace thTool {

// Colours are 0xAARRGGBB, as in the library's bitmaps; rows are stored top row first.
struct Image {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> pixels;  // indexed by row * width + column, row 0 at the top

  Image(int w, int h, uint32_t fill);
  uint32_t& at(int column, int row) { return pixels[static_cast<size_t>(row) * width + column]; }
  uint32_t at(int column, int row) const { return pixels[static_cast<size_t>(row) * width + column]; }
  void fillRect(int x0, int y0, int w, int h, uint32_t colour);  // clipped to the picture
};

inline constexpr uint32_t landColour = 0xFFD8D2C4;  // pixels outside the water
inline constexpr uint32_t legendBackground = 0xFFFFFFFF;
inline constexpr uint32_t textColour = 0xFF202020;

// Writes an 8-bit RGB PNG (the alpha byte is dropped: every colour drawn here is opaque).
// Raises ToolError naming the file when it cannot be written.
void writePng(const std::string& path, const Image& img);

// The control colours of a named palette; ToolError lists the names for an unknown one.
std::vector<int32_t> paletteControls(const std::string& name);
std::string paletteNames();

// Text in a 3x5 pixel font scaled by `scale`; knows digits, '-', '+', '.', 'e', ':' and ' '.
// Characters it does not know are drawn as blanks. Returns the width drawn, in pixels.
int drawText(Image& img, int x, int y, const std::string& text, int scale, uint32_t colour);
int textWidth(const std::string& text, int scale);

// A number in at most `digits` significant digits, as short as it can be ("12.5", "1e-05").
std::string legendNumber(double v, int digits = 4);

// Height in pixels of the legend strip that drawLegend paints at the bottom of a picture.
inline constexpr int legendHeight = 34;

// Paints the legend strip over the bottom `legendHeight` rows: a colour bar running through
// `colours` from `lo` on the left to `hi` on the right, with the two values (and the middle one,
// when there is room) written under it.
void drawLegend(Image& img, const std::vector<int32_t>& colours, double lo, double hi);

// The pixel columns of the colour bar inside a picture `width` wide: [barLeft, barRight).
int legendBarLeft(int width);
int legendBarRight(int width);

}  // namespace thTool
