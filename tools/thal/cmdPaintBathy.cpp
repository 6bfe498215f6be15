// thal paint-bathy: a gridded bathymetry raster (NetCDF: x and y coordinate variables, then the
// depth on the grid) as a PNG map with a legend.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <iostream>
#include <limits>
#include <memory>

#include "facade/miscWrapper.h"
#include "interp/VDraw.h"
#include "netcdf/VNetCdf.h"
#include "support/VStr.h"
#include "thalCommands.h"
#include "thalImage.h"
#include "thalMap.h"
#include "thalResult.h"

namespace thTool {

namespace {

const char* bathyUsage = "thal paint-bathy FILE.nc [--size WxH] [--range MIN:MAX] [--palette NAME] -o OUT.png";
constexpr int32_t colourSteps = 256;

// The raster as the painter will read it: the same variables, so that the colour range and the
// land mask fit the picture.
struct Raster {
  VCppLib::VCartGrid grid;
  std::vector<double> values;  // indexed by row * nx + column, row 0 at y0
};

Raster readRaster(const std::string& path) {
  VCppLib::VNetCdf nc(path, false);
  // Files named after GEBCO carry a leading variable before their coordinates, and their depths
  // are the first field over the two axes.
  const bool gebco = VCppLib::VStr::toLower(path).find("gebco") != std::string::npos;
  const int32_t xVar = gebco ? 1 : 0, yVar = gebco ? 2 : 1;
  const std::string notGrid = "'" + path + "' is not a gridded bathymetry: ";
  if (nc.nvars < 3)
    throw ToolError(notGrid + "it needs x and y coordinate variables and a depth variable.");
  for (int32_t v : {xVar, yVar})
    if (nc.varNdims[v] != 1 || nc.getVarLen(v, false) < 2)
      throw ToolError(notGrid + "variable '" + nc.varNames[v] + "' is not a coordinate axis of two or more values.");
  int32_t zVar = 2;
  if (gebco) {
    const std::vector<int32_t> axes = {nc.varDimIds[yVar][0], nc.varDimIds[xVar][0]};
    zVar = -1;
    for (int32_t v = 0; v < nc.nvars && zVar < 0; ++v)
      if (nc.varDimIds[v] == axes) zVar = v;
    if (zVar < 0) throw ToolError(notGrid + "no variable lies over its two axes.");
  }
  Raster r;
  r.grid = nc.getGrid(xVar, yVar, -1);
  const int64_t n = static_cast<int64_t>(r.grid.nx) * r.grid.ny;
  if (nc.getVarLen(zVar, false) != n)
    throw ToolError(notGrid + "variable '" + nc.varNames[zVar] + "' does not hold one value per grid point.");
  if (!(r.grid.dx != 0 && r.grid.dy != 0 && std::isfinite(r.grid.dx) && std::isfinite(r.grid.dy)))
    throw ToolError(notGrid + "its coordinates do not advance.");
  r.values.assign(static_cast<size_t>(n), std::numeric_limits<double>::quiet_NaN());
  double* data = r.values.data();  // filled in place
  nc.getAllDataIntoGivenType<double>(zVar, data);
  return r;
}

}  // namespace

int cmdPaintBathy(const Args& args) {
  args.expectPositional(1, bathyUsage);
  const std::string path = args.positional[0];
  const std::string outPath = args.required("-o");
  checkReadable(path);
  Raster raster;
  try {
    raster = readRaster(path);
  } catch (const VCppLib::VException& e) {
    throw ToolError("Cannot read the bathymetry '" + path + "': " + e.message);
  }
  const VCppLib::VCartGrid& g = raster.grid;

  double lo, hi;
  if (args.has("--range")) {
    parseRange(args.required("--range"), lo, hi);
  } else {
    lo = INFINITY;
    hi = -INFINITY;
    for (double v : raster.values)
      if (std::isfinite(v)) {
        lo = std::min(lo, v);
        hi = std::max(hi, v);
      }
    if (!(lo <= hi)) throw ToolError("The bathymetry '" + path + "' holds no values.");
    if (!(lo < hi)) {
      lo -= 0.5;
      hi += 0.5;
    }
  }

  int w = 0, h = 0;
  mapSize(args, w, h);
  double x0 = g.x0, x1 = g.x0 + (g.nx - 1) * g.dx, y0 = g.y0, y1 = g.y0 + (g.ny - 1) * g.dy;
  const MapFrame f = fitFrame(std::min(x0, x1), std::max(x0, x1), std::min(y0, y1), std::max(y0, y1), w, h, 0.0);

  std::vector<int32_t> controls = paletteControls(args.get("--palette", "deep"));
  std::unique_ptr<int32_t[]> ramp(
      VCppLib::VDraw::colourRamp(controls.data(), static_cast<int32_t>(controls.size()), colourSteps));
  std::vector<int32_t> colours(ramp.get(), ramp.get() + colourSteps);

  // The painter takes a colour index of value*scale - zmin, subtracting zmin in colour steps; a
  // scale moved by zmin*scale gives the index (value - lo)*scale that the legend shows.
  const double scale = colourSteps / (hi - lo);
  const double zmin = lo * scale, zmax = zmin + (hi - lo);
  std::vector<uint8_t> bytes(static_cast<size_t>(f.nx) * f.ny * 4);
  thWrapper::miscWrapper painter;
  painter.readNetCdfBathyAndInterpOnBitmap(path, bytes, f.nx, f.ny, colourSteps, f.xmin, f.xmax, f.ymin, f.ymax,
                                           zmin, zmax, colours, 2.0);

  // Pixels whose grid cell holds no depth at all, and pixels beyond the grid, are land. The
  // painter samples at each pixel's lower left corner, by the same arithmetic as here.
  Image img(f.nx, f.ny + legendHeight, legendBackground);
  for (int32_t row = 0; row < f.ny; ++row) {
    const int32_t j = f.ny - 1 - row;
    const double y = f.ymin + j * (f.ymax - f.ymin) / f.ny;
    const double gj = std::floor((y - g.y0) / g.dy);
    for (int32_t col = 0; col < f.nx; ++col) {
      const double x = f.xmin + col * (f.xmax - f.xmin) / f.nx;
      const double gi = std::floor((x - g.x0) / g.dx);
      uint32_t c = landColour;
      if (gi >= 0 && gi < g.nx - 1 && gj >= 0 && gj < g.ny - 1) {
        const size_t k = static_cast<size_t>(gj) * g.nx + static_cast<size_t>(gi);
        const double* v = raster.values.data();
        if (std::isfinite(v[k]) || std::isfinite(v[k + 1]) || std::isfinite(v[k + g.nx + 1]))
          std::memcpy(&c, &bytes[(static_cast<size_t>(row) * f.nx + col) * 4], 4);
        // A corner that falls exactly on a grid point has an infinite weight there, and the
        // painter's value is not a number: the grid point's own depth is the value.
        if (std::isfinite(v[k]) && x - (g.x0 + gi * g.dx) == 0 && y - (g.y0 + gj * g.dy) == 0) {
          const double index = std::trunc(v[k] * scale - zmin);
          c = static_cast<uint32_t>(colours[!(index > 0) ? 0 : index < colourSteps ? static_cast<int32_t>(index) : colourSteps - 1]);
        }
      }
      img.at(col, row) = c;
    }
  }
  drawLegend(img, colours, lo, hi);
  writePng(outPath, img);
  std::cout << "Wrote " << outPath << " (" << img.width << "x" << img.height << " pixels): bathymetry of "
            << g.nx << "x" << g.ny << " grid points, colours from " << legendNumber(lo) << " to "
            << legendNumber(hi) << ".\n";
  return 0;
}

}  // namespace thTool
