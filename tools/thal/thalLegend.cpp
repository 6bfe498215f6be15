// The legend strip under a painted map, and the tiny font that writes its numbers.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "thalImage.h"

namespace thTool {

namespace {

// Glyphs of 3x5 pixels: five rows, top first, three bits a row, the high bit on the left.
struct Glyph {
  char c;
  unsigned char rows[5];
};

constexpr Glyph glyphs[] = {
    {'0', {7, 5, 5, 5, 7}}, {'1', {2, 6, 2, 2, 7}}, {'2', {7, 1, 7, 4, 7}}, {'3', {7, 1, 7, 1, 7}},
    {'4', {5, 5, 7, 1, 1}}, {'5', {7, 4, 7, 1, 7}}, {'6', {7, 4, 7, 5, 7}}, {'7', {7, 1, 1, 1, 1}},
    {'8', {7, 5, 7, 5, 7}}, {'9', {7, 5, 7, 1, 7}}, {'-', {0, 0, 7, 0, 0}}, {'+', {0, 2, 7, 2, 0}},
    {'.', {0, 0, 0, 0, 2}}, {'e', {0, 7, 7, 4, 7}}, {':', {0, 2, 0, 2, 0}}, {' ', {0, 0, 0, 0, 0}},
};

const Glyph* findGlyph(char c) {
  for (const Glyph& g : glyphs)
    if (g.c == c) return &g;
  return nullptr;
}

constexpr int glyphAdvance = 4;  // three columns and one blank
constexpr int barMargin = 8;
constexpr int barTop = 4;
constexpr int barHeight = 12;
constexpr int labelTop = barTop + barHeight + 5;
constexpr int fontScale = 2;
constexpr uint32_t frameColour = 0xFF404040;

}  // namespace

int textWidth(const std::string& text, int scale) {
  if (text.empty()) return 0;
  return (static_cast<int>(text.size()) * glyphAdvance - 1) * scale;
}

int drawText(Image& img, int x, int y, const std::string& text, int scale, uint32_t colour) {
  int pen = x;
  for (char c : text) {
    if (const Glyph* g = findGlyph(c)) {
      for (int r = 0; r < 5; ++r)
        for (int col = 0; col < 3; ++col)
          if (g->rows[r] & (4 >> col)) img.fillRect(pen + col * scale, y + r * scale, scale, scale, colour);
    }
    pen += glyphAdvance * scale;
  }
  return textWidth(text, scale);
}

std::string legendNumber(double v, int digits) {
  if (v == 0.0 || std::fabs(v) < 1e-300) return "0";
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*g", digits, v);
  return buf;
}

int legendBarLeft(int width) { return width > 4 * barMargin ? barMargin : 0; }
int legendBarRight(int width) { return width > 4 * barMargin ? width - barMargin : width; }

void drawLegend(Image& img, const std::vector<int32_t>& colours, double lo, double hi) {
  int top = img.height - legendHeight;
  if (top < 0 || colours.empty()) return;
  img.fillRect(0, top, img.width, legendHeight, legendBackground);

  int left = legendBarLeft(img.width), right = legendBarRight(img.width);
  int n = static_cast<int>(colours.size());
  for (int c = left; c < right; ++c) {
    // The colour of the value at the middle of this pixel column.
    double f = (c - left + 0.5) / (right - left);
    int k = std::min(n - 1, static_cast<int>(f * n));
    img.fillRect(c, top + barTop, 1, barHeight, 0xFF000000u | static_cast<uint32_t>(colours[k]));
  }
  if (left > 0) {
    img.fillRect(left - 1, top + barTop - 1, right - left + 2, 1, frameColour);
    img.fillRect(left - 1, top + barTop + barHeight, right - left + 2, 1, frameColour);
    img.fillRect(left - 1, top + barTop, 1, barHeight, frameColour);
    img.fillRect(right, top + barTop, 1, barHeight, frameColour);
  }

  std::string loText = legendNumber(lo), hiText = legendNumber(hi);
  std::string midText = legendNumber(0.5 * (lo + hi));
  int loW = textWidth(loText, fontScale), hiW = textWidth(hiText, fontScale);
  int midW = textWidth(midText, fontScale);
  int y = top + labelTop;
  if (loW + hiW + 3 * fontScale * glyphAdvance > right - left) return;  // no room for words
  drawText(img, left, y, loText, fontScale, textColour);
  drawText(img, right - hiW, y, hiText, fontScale, textColour);
  int mid = (left + right) / 2;
  if (mid - midW / 2 > left + loW + 2 * fontScale * glyphAdvance &&
      mid + midW / 2 < right - hiW - 2 * fontScale * glyphAdvance) {
    drawText(img, mid - midW / 2, y, midText, fontScale, textColour);
    img.fillRect(mid, top + barTop + barHeight, 1, 3, frameColour);
  }
}

}  // namespace thTool
