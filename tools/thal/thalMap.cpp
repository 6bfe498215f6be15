#include "thalMap.h"

#include <algorithm>
#include <cmath>

namespace thTool {

MapFrame fitFrame(double x0, double x1, double y0, double y1, int32_t width, int32_t height, double margin) {
  double sx = std::max(x1 - x0, 0.0), sy = std::max(y1 - y0, 0.0);
  if (sx == 0 && sy == 0) sx = sy = 1.0;  // a single point still gets a picture around it
  if (sx == 0) sx = sy;
  if (sy == 0) sy = sx;
  double cx = 0.5 * (x0 + x1), cy = 0.5 * (y0 + y1);
  double pad = margin * std::max(sx, sy);
  sx += 2 * pad;
  sy += 2 * pad;
  if (height <= 0) {
    height = static_cast<int32_t>(std::lround(width * sy / sx));
    height = std::clamp(height, 1, 10000);
  }
  double aspect = static_cast<double>(width) / height;
  if (sx / sy > aspect)
    sy = sx / aspect;
  else
    sx = sy * aspect;
  MapFrame f;
  f.nx = width;
  f.ny = height;
  f.xmin = cx - 0.5 * sx;
  f.xmax = cx + 0.5 * sx;
  f.ymin = cy - 0.5 * sy;
  f.ymax = cy + 0.5 * sy;
  return f;
}

namespace {

// The crossing rule of the mesh's point search, so that a pixel and a point query agree.
bool insidePolygon(int32_t n, const double* x, const double* y, double px, double py) {
  bool inside = false;
  for (int32_t i = 0, j = n - 1; i < n; j = i++)
    if ((y[i] > py) != (y[j] > py) && (x[j] - x[i]) * (py - y[i]) / (y[j] - y[i]) + x[i] > px)
      inside = !inside;
  return inside;
}

}  // namespace

std::vector<int32_t> polygonsOnPixels(const MapFrame& f, int32_t n, const int32_t* nonpe, const double* px,
                                      const double* py) {
  std::vector<int32_t> owner(static_cast<size_t>(f.nx) * f.ny, -1);
  const double psx = (f.xmax - f.xmin) / f.nx, psy = (f.ymax - f.ymin) / f.ny;
  int64_t first = 0;
  for (int32_t e = 0; e < n; first += nonpe[e], ++e) {
    if (nonpe[e] < 3) continue;
    const double* x = px + first;
    const double* y = py + first;
    auto [xLo, xHi] = std::minmax_element(x, x + nonpe[e]);
    auto [yLo, yHi] = std::minmax_element(y, y + nonpe[e]);
    // Pixel columns and rows whose centres can lie in the polygon's box, clipped to the map.
    double c0 = std::ceil((*xLo - f.xmin) / psx - 0.5), c1 = std::floor((*xHi - f.xmin) / psx - 0.5);
    double r0 = std::ceil((f.ymax - *yHi) / psy - 0.5), r1 = std::floor((f.ymax - *yLo) / psy - 0.5);
    if (!(c1 >= 0 && r1 >= 0 && c0 < f.nx && r0 < f.ny)) continue;  // also drops NaN corners
    int32_t cFrom = static_cast<int32_t>(std::max(c0, 0.0)),
            cTo = static_cast<int32_t>(std::min(c1, f.nx - 1.0));
    int32_t rFrom = static_cast<int32_t>(std::max(r0, 0.0)),
            rTo = static_cast<int32_t>(std::min(r1, f.ny - 1.0));
    for (int32_t r = rFrom; r <= rTo; ++r)
      for (int32_t c = cFrom; c <= cTo; ++c) {
        int32_t& o = owner[static_cast<size_t>(r) * f.nx + c];
        if (o < 0 && insidePolygon(nonpe[e], x, y, f.pixelX(c), f.pixelY(r))) o = e;
      }
  }
  return owner;
}

}  // namespace thTool
