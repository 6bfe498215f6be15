// thal paint: one layer of an item at one timestep, as a PNG map with a legend.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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

constexpr uint32_t seabedColour = 0xFFA89F8E;  // water columns that do not reach the layer

// The typical size of an element in the mesh's own units (metres or degrees).
double meanElementSpan(const thWrapper::thMesh2DWrapper& g) {
  const std::vector<int32_t> nonpe = g.nonpe();
  const std::vector<double> ex = g.enxCoor(), ey = g.enyCoor();
  double sum = 0;
  size_t first = 0;
  for (int32_t n : nonpe) {
    double a = 0;
    for (int32_t i = 0, j = n - 1; i < n; j = i++)
      a += ex[first + j] * ey[first + i] - ex[first + i] * ey[first + j];
    sum += std::fabs(0.5 * a);
    first += n;
  }
  return nonpe.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(nonpe.size()));
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

MapFrame frameOfMesh(const thWrapper::thMesh2DWrapper& g, const Args& args) {
  int w = 0, h = 0;
  mapSize(args, w, h);
  const std::vector<double> nx = g.nxCoor(), ny = g.nyCoor();
  auto [xLo, xHi] = std::minmax_element(nx.begin(), nx.end());
  auto [yLo, yHi] = std::minmax_element(ny.begin(), ny.end());
  return fitFrame(*xLo, *xHi, *yLo, *yHi, w, h, 0.03);
}

std::string layerText(int32_t layer) {
  if (layer == -1) return "bottom cells";
  if (layer >= 999) return "top cells";
  return "layer " + std::to_string(layer);
}

// The map of the layer's values: only the elements with a value are painted, from their centres.
// The facade's layer painter would spread the deleted value of the columns that do not reach the
// layer into their neighbours as a value near 0, so the tool paints with the library's painter.
std::vector<int32_t> paintLayer(const thWrapper::thMesh2DWrapper& g, const std::vector<double>& values,
                                const MapFrame& frame, const std::vector<int32_t>& colours, double lo,
                                double hi) {
  const std::vector<double> ex = g.exCoor(), ey = g.eyCoor();
  std::vector<double> px, py, pv;
  for (size_t e = 0; e < values.size(); ++e)
    if (hasValue(values[e])) {
      px.push_back(ex[e]);
      py.push_back(ey[e]);
      pv.push_back(values[e]);
    }
  std::vector<int32_t> bitmap(static_cast<size_t>(frame.nx) * frame.ny, static_cast<int32_t>(landColour));
  int32_t* bm = bitmap.data();
  // The search radius: two element sizes, and never under two pixels, so that no pixel inside
  // the mesh is left without a value.
  const double r = std::max(2.0 * meanElementSpan(g), 2.0 * frame.pixelSize());
  VCppLib::VDraw::interpPointsOnBitmap(px.data(), py.data(), pv.data(), static_cast<int32_t>(pv.size()), bm,
                                       frame.nx, frame.ny, colourSteps, frame.xmin, frame.xmax, frame.ymin,
                                       frame.ymax, lo, hi, colours.data(), colourSteps, r);
  return bitmap;
}

}  // namespace

int cmdPaint(const Args& args) {
  args.expectPositional(1, paintUsage);
  const std::string outPath = args.required("-o");
  auto rf = openResult(args.positional[0]);
  const thWrapper::thMesh2DWrapper& g = rf->mInfo->mesh2d;
  if (g.noe() < 1 || g.non() < 1) throw ToolError("'" + rf->filename() + "' has no mesh to paint on.");
  const int32_t item = findItem(*rf, args.required("--item"));
  const std::string itemName = rf->items()[item];
  const ItemKind kind = itemKind(*rf, item);
  if (kind == ItemKind::vector)
    throw ToolError("Item '" + itemName +
                    "' is a plain vector, not a field on the mesh; only 3-D and 2-D items can be painted.");
  const int32_t ts = parseTime(*rf, args.required("--time"));
  const int32_t layer = kind == ItemKind::item3D ? parsePaintLayer(*rf, args.get("--layer", "top")) : 999;
  const std::vector<int32_t> colours = colourTable(args.get("--palette", "turbo"));
  const MapFrame frame = frameOfMesh(g, args);

  const std::string what = "item '" + itemName + "' at timestep " + std::to_string(ts);
  std::optional<std::vector<double>> read;
  try {
    read = rf->readLayer(item, ts, layer);
  } catch (const VCppLib::VException& e) {
    readFailed(*rf, what, e.message);
  }
  if (!read || static_cast<int32_t>(read->size()) != g.noe())
    throw ToolError("Cannot read " + what + " of '" + rf->filename() + "'.");
  const std::vector<double>& values = *read;
  if (std::none_of(values.begin(), values.end(), hasValue))
    throw ToolError("Item '" + itemName + "' has no values in " + layerText(layer) + " at timestep " +
                    std::to_string(ts) + ".");
  double lo, hi;
  colourRange(args, values, "", lo, hi);
  const std::vector<int32_t> bitmap = paintLayer(g, values, frame, colours, lo, hi);

  const std::vector<int32_t> nonpe = g.nonpe();
  const std::vector<double> ex = g.enxCoor(), ey = g.enyCoor();
  const std::vector<int32_t> owner = polygonsOnPixels(frame, g.noe(), nonpe.data(), ex.data(), ey.data());
  Image img(frame.nx, frame.ny + legendHeight, legendBackground);
  for (int32_t row = 0; row < frame.ny; ++row)
    for (int32_t col = 0; col < frame.nx; ++col) {
      size_t k = static_cast<size_t>(row) * frame.nx + col;
      int32_t e = owner[k];
      img.at(col, row) = e < 0                  ? landColour
                         : !hasValue(values[e]) ? seabedColour
                                                : static_cast<uint32_t>(bitmap[k]);
    }
  drawLegend(img, colours, lo, hi);
  writePng(outPath, img);

  std::cout << "Wrote " << outPath << " (" << img.width << "x" << img.height << " pixels): " << itemName;
  if (kind == ItemKind::item3D) std::cout << ", " << layerText(layer);
  std::cout << ", " << rf->mInfo->ts2StrDT(ts) << ", colours from " << legendNumber(lo) << " to "
            << legendNumber(hi) << ".\n";
  return 0;
}

}  // namespace thTool
