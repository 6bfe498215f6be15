// miscWrapper: paints a regular gridded bathymetry, read from a NetCDF file, onto a caller's bitmap,
// as a background map behind a mesh or a result layer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace thWrapper {

// Stateless: both operations are static and may be called on an object as well.
//
// The file holds two 1-D coordinate variables, x (variable 0) and y (variable 1), and the depths
// as variable 2, y by x, row after row. When the lower-cased path contains "gebco" the axes are
// variables 1 and 2 instead, and the depths the first 2-D variable over their dimensions.
// `bitmap` must hold at least 4*nx*ny bytes; it receives nx*ny colours 0xAARRGGBB (in the
// machine's byte order), top row first, -1 outside the grid. The result is that of
// VCppLib::VDraw::interpOnBitmap (0).
// A gridded bathymetry as the painters read it: nx by ny depths, row after row from the row at
// y0, grid point (i, j) at (x0 + i dx, y0 + j dy); missing depths are not a number.
struct bathyGrid {
  double x0 = 0, y0 = 0, dx = 0, dy = 0;
  int32_t nx = 0, ny = 0;
  std::vector<double> depths;
};

class miscWrapper {
 public:
  // The grid and depths that the painters below read from the file, for a caller's own colour
  // range or land mask.
  static bathyGrid readNetCdfBathy(std::string filename);
  // Colours by classes between the ascending break values brkArr.
  static int32_t readNetCdfBathyAndInterpOnBitmap(std::string filename, std::vector<uint8_t>& bitmap,
                                                  int32_t nx, int32_t ny, double xmin, double xmax,
                                                  double ymin, double ymax, const std::vector<double>& brkArr,
                                                  const std::vector<int32_t>& colArr, double p);
  // Colours on a continuous scale of nz steps between zmin and zmax.
  static int32_t readNetCdfBathyAndInterpOnBitmap(std::string filename, std::vector<uint8_t>& bitmap,
                                                  int32_t nx, int32_t ny, int32_t nz, double xmin,
                                                  double xmax, double ymin, double ymax, double zmin,
                                                  double zmax, const std::vector<int32_t>& colArr, double p);
};

}  // namespace thWrapper
