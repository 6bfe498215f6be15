// thal paint: one layer of an item at one timestep, as a PNG map with a legend.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

#include "interp/VDraw.h"
#include "thalCommands.h"
#include "thalImage.h"
#include "thalMap.h"
#include "thalResult.h"

namespace thTool {

namespace {

const char* paintUsage =
    "thal paint FILE --item NAME --time T [--layer L] [--size WxH] [--range MIN:MAX] "
    "[--palette NAME] -o OUT.png";

constexpr int32_t colourSteps = 256;
constexpr uint32_t seabedColour = 0xFFA89F8E;  // water columns that do not reach the layer

bool hasValue(double v) { return std::isfinite(v) && v != static_cast<double>(delVal); }

// The typical size of an element in the mesh's own units (metres or degrees).
double meanElementSpan(const thalmod::thMesh2D& g) {
  double sum = 0;
  int64_t first = 0;
  for (int32_t e = 0; e < g.noe; first += g.nonpe[e], ++e) {
    double a = 0;
    for (int32_t i = 0, j = g.nonpe[e] - 1; i < g.nonpe[e]; j = i++)
      a += g.enxCoor[first + j] * g.enyCoor[first + i] - g.enxCoor[first + i] * g.enyCoor[first + j];
    sum += std::fabs(0.5 * a);
  }
  return g.noe > 0 ? std::sqrt(sum / g.noe) : 0.0;
}

// The full colour table of the picture, so that the map and its legend use the same colours.
std::vector<int32_t> colourTable(const std::string& palette) {
  std::vector<int32_t> controls = paletteControls(palette);
  std::unique_ptr<int32_t[]> ramp(
      VCppLib::VDraw::colourRamp(controls.data(), static_cast<int32_t>(controls.size()), colourSteps));
  return std::vector<int32_t>(ramp.get(), ramp.get() + colourSteps);
}

}  // namespace

void mapSize(const Args& args, int& w, int& h) {
  w = 800;
  h = 0;
  if (args.has("--size")) {
    parseSize(args.required("--size"), w, h);
    if (h < legendHeight + 8)
      throw ToolError("The picture must be at least " + std::to_string(legendHeight + 8) +
                      " pixels high, to hold the map and its legend.");
    h -= legendHeight;
  }
}

namespace {

MapFrame frameOfMesh(const thalmod::thMesh2D& g, const Args& args) {
  int w = 0, h = 0;
  mapSize(args, w, h);
  auto [xLo, xHi] = std::minmax_element(g.nxCoor, g.nxCoor + g.non);
  auto [yLo, yHi] = std::minmax_element(g.nyCoor, g.nyCoor + g.non);
  return fitFrame(*xLo, *xHi, *yLo, *yHi, w, h, 0.03);
}

std::string layerText(int32_t layer) {
  if (layer == -1) return "bottom cells";
  if (layer >= 999) return "top cells";
  return "layer " + std::to_string(layer);
}

}  // namespace

int cmdPaint(const Args& args) {
  args.expectPositional(1, paintUsage);
  const std::string outPath = args.required("-o");
  auto rf = openResult(args.positional[0]);
  thalmod::thMesh2D& g = rf->mInfo.mesh2d;
  if (g.noe < 1 || g.non < 1) throw ToolError("'" + rf->filename + "' has no mesh to paint on.");
  const int32_t item = findItem(*rf, args.required("--item"));
  const std::string& itemName = rf->itemNameVec[item];
  const ItemKind kind = itemKind(*rf, item);
  if (kind == ItemKind::vector)
    throw ToolError("Item '" + itemName + "' is a plain vector, not a field on the mesh; only 3-D and 2-D items can be painted.");
  const int32_t ts = parseTime(*rf, args.required("--time"));
  const int32_t layer = kind == ItemKind::item3D ? parsePaintLayer(*rf, args.get("--layer", "top")) : 999;
  std::vector<int32_t> colours = colourTable(args.get("--palette", "turbo"));
  const MapFrame frame = frameOfMesh(g, args);

  const std::string what = "item '" + itemName + "' at timestep " + std::to_string(ts);
  double* raw = nullptr;
  int32_t got = 0;
  try {
    got = rf->readLayer(item, ts, layer, &raw);
  } catch (const VCppLib::VException& e) {
    readFailed(*rf, what, e.message);
  }
  std::unique_ptr<double[]> values(raw);
  if (got != g.noe || !values)
    throw ToolError("Cannot read " + what + " of '" + rf->filename + "'.");

  std::vector<double> px, py, pv;  // the elements that have a value in this layer
  for (int32_t e = 0; e < g.noe; ++e)
    if (hasValue(values[e])) {
      px.push_back(g.exCoor[e]);
      py.push_back(g.eyCoor[e]);
      pv.push_back(values[e]);
    }
  if (pv.empty())
    throw ToolError("Item '" + itemName + "' has no values in " + layerText(layer) + " at timestep " + std::to_string(ts) + ".");
  double lo, hi;
  if (args.has("--range")) {
    parseRange(args.required("--range"), lo, hi);
  } else {
    auto [mn, mx] = std::minmax_element(pv.begin(), pv.end());
    lo = *mn;
    hi = *mx;
    if (!(lo < hi)) {  // a uniform field still needs a scale
      lo -= 0.5;
      hi += 0.5;
    }
  }

  std::vector<int32_t> bitmap(static_cast<size_t>(frame.nx) * frame.ny, static_cast<int32_t>(landColour));
  int32_t* bm = bitmap.data();
  // The search radius: two element sizes, and never under two pixels, so that no pixel inside
  // the mesh is left without a value.
  const double r = std::max(2.0 * meanElementSpan(g), 2.0 * frame.pixelSize());
  // The layer read once is painted from the element centres, as the library's layer painter does.
  // Columns that do not reach the layer hold the deleted value, which would be spread into their
  // neighbours as a value near 0: only the elements with a value are painted.
  VCppLib::VDraw::interpPointsOnBitmap(px.data(), py.data(), pv.data(), static_cast<int32_t>(pv.size()), bm, frame.nx,
                                       frame.ny, colourSteps, frame.xmin, frame.xmax, frame.ymin, frame.ymax, lo, hi,
                                       colours.data(), colourSteps, r);

  const std::vector<int32_t> owner = polygonsOnPixels(frame, g.noe, g.nonpe, g.enxCoor, g.enyCoor);
  Image img(frame.nx, frame.ny + legendHeight, legendBackground);
  for (int32_t row = 0; row < frame.ny; ++row)
    for (int32_t col = 0; col < frame.nx; ++col) {
      size_t k = static_cast<size_t>(row) * frame.nx + col;
      int32_t e = owner[k];
      img.at(col, row) = e < 0 ? landColour : !hasValue(values[e]) ? seabedColour : static_cast<uint32_t>(bitmap[k]);
    }
  drawLegend(img, colours, lo, hi);
  writePng(outPath, img);

  std::cout << "Wrote " << outPath << " (" << img.width << "x" << img.height << " pixels): " << itemName;
  if (kind == ItemKind::item3D) std::cout << ", " << layerText(layer);
  std::cout << ", " << rf->mInfo.ts2StrDT(ts) << ", colours from " << legendNumber(lo) << " to "
            << legendNumber(hi) << ".\n";
  return 0;
}

}  // namespace thTool
