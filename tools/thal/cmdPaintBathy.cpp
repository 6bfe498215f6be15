// thal paint-bathy: a gridded bathymetry raster (NetCDF: x and y coordinate variables, then the
// depth on the grid) as a PNG map with a legend.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <iostream>

#include "facade/miscWrapper.h"
#include "thalCommands.h"
#include "thalImage.h"
#include "thalMap.h"
#include "thalResult.h"

namespace thTool {

namespace {

const char* bathyUsage =
    "thal paint-bathy FILE.nc [--size WxH] [--range MIN:MAX] [--palette NAME] -o OUT.png";

// The raster as the painter reads it, so that the colour range and the land mask fit the picture.
thWrapper::bathyGrid readRaster(const std::string& path) {
  checkReadable(path);
  thWrapper::bathyGrid g;
  try {
    g = thWrapper::miscWrapper::readNetCdfBathy(path);
  } catch (const VCppLib::VException& e) {
    throw ToolError("Cannot read the bathymetry '" + path + "': " + e.message);
  }
  if (g.nx < 2 || g.ny < 2 || !(g.dx != 0 && g.dy != 0 && std::isfinite(g.dx) && std::isfinite(g.dy)))
    throw ToolError("'" + path + "' is not a gridded bathymetry: its coordinates do not advance.");
  return g;
}

// Pixels whose grid cell holds no depth at all, and pixels beyond the grid, are land. The
// painter samples at each pixel's lower left corner, by the same arithmetic as here. `bytes`
// holds the painted colours; zmin and scale are the painter's colour scale.
Image landMasked(const thWrapper::bathyGrid& g, const MapFrame& f, const std::vector<uint8_t>& bytes,
                 const std::vector<int32_t>& colours, double zmin, double scale) {
  Image img(f.nx, f.ny + legendHeight, legendBackground);
  const double* v = g.depths.data();
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
        if (std::isfinite(v[k]) || std::isfinite(v[k + 1]) || std::isfinite(v[k + g.nx + 1]))
          std::memcpy(&c, &bytes[(static_cast<size_t>(row) * f.nx + col) * 4], 4);
        // A corner that falls exactly on a grid point has an infinite weight there, and the
        // painter's value is not a number: the grid point's own depth is the value.
        if (std::isfinite(v[k]) && x - (g.x0 + gi * g.dx) == 0 && y - (g.y0 + gj * g.dy) == 0) {
          const double index = std::trunc(v[k] * scale - zmin);
          const int32_t step = !(index > 0)          ? 0
                               : index < colourSteps ? static_cast<int32_t>(index)
                                                     : colourSteps - 1;
          c = static_cast<uint32_t>(colours[step]);
        }
      }
      img.at(col, row) = c;
    }
  }
  return img;
}

}  // namespace

int cmdPaintBathy(const Args& args) {
  args.expectPositional(1, bathyUsage);
  const std::string path = args.positional[0];
  const std::string outPath = args.required("-o");
  const thWrapper::bathyGrid g = readRaster(path);
  double lo, hi;
  colourRange(args, g.depths, "The bathymetry '" + path + "' holds no values.", lo, hi);

  int w = 0, h = 0;
  mapSize(args, w, h);
  double x0 = g.x0, x1 = g.x0 + (g.nx - 1) * g.dx, y0 = g.y0, y1 = g.y0 + (g.ny - 1) * g.dy;
  const MapFrame f =
      fitFrame(std::min(x0, x1), std::max(x0, x1), std::min(y0, y1), std::max(y0, y1), w, h, 0.0);
  const std::vector<int32_t> colours = colourTable(args.get("--palette", "deep"));

  // The painter takes a colour index of value*scale - zmin, subtracting zmin in colour steps; a
  // scale moved by zmin*scale gives the index (value - lo)*scale that the legend shows.
  const double scale = colourSteps / (hi - lo);
  const double zmin = lo * scale, zmax = zmin + (hi - lo);
  std::vector<uint8_t> bytes(static_cast<size_t>(f.nx) * f.ny * 4);
  thWrapper::miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bytes, f.nx, f.ny, colourSteps, f.xmin,
                                                           f.xmax, f.ymin, f.ymax, zmin, zmax, colours, 2.0);
  Image img = landMasked(g, f, bytes, colours, zmin, scale);
  drawLegend(img, colours, lo, hi);
  writePng(outPath, img);
  std::cout << "Wrote " << outPath << " (" << img.width << "x" << img.height << " pixels): bathymetry of "
            << g.nx << "x" << g.ny << " grid points, colours from " << legendNumber(lo) << " to "
            << legendNumber(hi) << ".\n";
  return 0;
}

}  // namespace thTool
