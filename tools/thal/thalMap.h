// The geometry of a painted map: which part of the world the pixels show, and which pixels lie
// in the water.
#pragma once

#include <cstdint>
#include <vector>

namespace thTool {

// A map of nx by ny pixels over [xmin, xmax) x [ymin, ymax), the pixels square.
struct MapFrame {
  int32_t nx = 0, ny = 0;
  double xmin = 0, xmax = 0, ymin = 0, ymax = 0;
  double pixelSize() const { return (xmax - xmin) / nx; }
  double pixelX(int32_t column) const { return xmin + (column + 0.5) * pixelSize(); }
  // Row 0 is the top row of the picture.
  double pixelY(int32_t row) const { return ymax - (row + 0.5) * (ymax - ymin) / ny; }
};

// A frame around the box with a small margin. `width`/`height` <= 0 means "work it out": with a
// width alone the height follows the box's shape; with both, the box is widened in one direction
// so that pixels stay square.
MapFrame fitFrame(double x0, double x1, double y0, double y1, int32_t width, int32_t height, double margin);

// For every pixel (row 0 at the top) the polygon that holds its centre, or -1. Polygons are given
// as in a mesh: `nonpe` corners each, their coordinates one after the other in `px`, `py`.
std::vector<int32_t> polygonsOnPixels(const MapFrame& f, int32_t n, const int32_t* nonpe, const double* px,
                                      const double* py);

}  // namespace thTool
