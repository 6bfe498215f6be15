// Bathymetry bitmap: a gridded NetCDF raster through VNetCdf::getGrid onto a bitmap through VDraw.
#include "facade/miscWrapper.h"

#include <cstring>
#include <limits>

#include "interp/VCartGrid.h"
#include "interp/VDraw.h"
#include "netcdf/VNetCdf.h"
#include "support/VCppLib.h"
#include "support/VStr.h"

using VCppLib::VCartGrid;
using VCppLib::VException;
using VCppLib::VNetCdf;

namespace thWrapper {

namespace {

const char* const fnName = "miscWrapper::readNetCdfBathyAndInterpOnBitmap";

int64_t pixelCount(int32_t nx, int32_t ny) { return nx > 0 && ny > 0 ? int64_t{nx} * ny : 0; }

void checkBitmapBytes(const std::vector<uint8_t>& bitmap, int32_t nx, int32_t ny) {
  const int64_t need = 4 * pixelCount(nx, ny);
  if (static_cast<int64_t>(bitmap.size()) < need)
    throw VException(std::string(fnName) + ": the bitmap of " + std::to_string(bitmap.size()) +
                     " bytes is too small for " + std::to_string(nx) + " x " + std::to_string(ny) +
                     " pixels, which need " + std::to_string(need) + " bytes.");
}

int32_t arrayLength(size_t n, const char* what) {
  if (n > static_cast<size_t>(std::numeric_limits<int32_t>::max()))
    throw VException(std::string(fnName) + ": the " + what + " array is too long.");
  return static_cast<int32_t>(n);
}

// Number of values of a variable, from the lengths of its dimensions, in 64 bits.
int64_t valueCount(const VNetCdf& nc, int32_t var) {
  int64_t n = 1;
  for (int32_t d : nc.varDimIds[var]) n *= d >= 0 && d < nc.ndims ? nc.dimLen[d] : 0;
  return n;
}

// The variable that holds the depths. In a file whose name says "gebco", variable 2 is already
// the y axis, so the depths are found by their shape instead: the first 2-D variable over the
// dimensions of y and x, in that order. Otherwise it is variable 2.
int32_t depthVariable(const VNetCdf& nc, bool gebco, int32_t xVar, int32_t yVar) {
  if (!gebco) {
    if (nc.nvars <= 2)
      throw VException("The file '" + nc.fileName +
                       "' has no variable number 2 to read the bathymetry from.");
    return 2;
  }
  const int32_t xDim = nc.varDimIds[xVar][0], yDim = nc.varDimIds[yVar][0];
  for (int32_t v = 0; v < nc.nvars; ++v)
    if (nc.varDimIds[v] == std::vector<int32_t>{yDim, xDim}) return v;
  throw VException("The file '" + nc.fileName + "' has no variable over the dimensions of '" +
                   nc.varNames[yVar] + "' and '" + nc.varNames[xVar] + "' to read the bathymetry from.");
}

// Opens the file, builds the grid from its axes and reads the depths into `depths`, which the
// grid points at. Missing values stay not-a-number.
VCartGrid readBathymetry(VNetCdf& nc, const std::string& filename, std::vector<double>& depths) {
  const bool gebco = VCppLib::VStr::toLower(filename).find("gebco") != std::string::npos;
  const int32_t xVar = gebco ? 1 : 0, yVar = gebco ? 2 : 1;
  VCartGrid grid = nc.getGrid(xVar, yVar, -1);
  const int32_t zVar = depthVariable(nc, gebco, xVar, yVar);
  const int64_t cells = int64_t{grid.nx} * grid.ny;
  if (valueCount(nc, zVar) != cells)
    throw VException("The variable '" + nc.varNames[zVar] + "' of file '" + nc.fileName + "' has " +
                     std::to_string(valueCount(nc, zVar)) + " values, but its grid of " +
                     std::to_string(grid.nx) + " x " + std::to_string(grid.ny) + " needs " +
                     std::to_string(cells) + ".");
  nc.checkVarFitsFile(zVar, "readNetCdfBathyAndInterpOnBitmap");  // a damaged header must not size it
  depths.assign(static_cast<size_t>(cells), std::numeric_limits<double>::quiet_NaN());
  double* data = depths.data();
  nc.getAllDataIntoGivenType<double>(zVar, data);
  grid.data = depths.data();
  return grid;
}

// Paints into a temporary array of colours and hands its bytes to the caller's bitmap.
template <class Paint>
int32_t paintInto(std::vector<uint8_t>& bitmap, int32_t nx, int32_t ny, Paint paint) {
  std::vector<int32_t> pixels(static_cast<size_t>(pixelCount(nx, ny)));
  int32_t* bmp = pixels.data();
  const int32_t result = paint(bmp);
  if (!pixels.empty()) std::memcpy(bitmap.data(), pixels.data(), pixels.size() * sizeof(int32_t));
  return result;
}

}  // namespace

bathyGrid miscWrapper::readNetCdfBathy(std::string filename) {
  VNetCdf nc(filename, false);
  bathyGrid b;
  const VCartGrid grid = readBathymetry(nc, filename, b.depths);
  b.x0 = grid.x0;
  b.y0 = grid.y0;
  b.dx = grid.dx;
  b.dy = grid.dy;
  b.nx = grid.nx;
  b.ny = grid.ny;
  return b;
}

int32_t miscWrapper::readNetCdfBathyAndInterpOnBitmap(std::string filename, std::vector<uint8_t>& bitmap,
                                                      int32_t nx, int32_t ny, double xmin, double xmax,
                                                      double ymin, double ymax,
                                                      const std::vector<double>& brkArr,
                                                      const std::vector<int32_t>& colArr, double p) {
  checkBitmapBytes(bitmap, nx, ny);
  const int32_t nbrk = arrayLength(brkArr.size(), "break");
  const int32_t ncolors = arrayLength(colArr.size(), "colour");
  VNetCdf nc(filename, false);
  std::vector<double> depths;
  const VCartGrid grid = readBathymetry(nc, filename, depths);
  return paintInto(bitmap, nx, ny, [&](int32_t*& bmp) {
    return VCppLib::VDraw::interpOnBitmap(grid, bmp, nx, ny, xmin, xmax, ymin, ymax, brkArr.data(), nbrk,
                                          colArr.data(), ncolors, p);
  });
}

int32_t miscWrapper::readNetCdfBathyAndInterpOnBitmap(std::string filename, std::vector<uint8_t>& bitmap,
                                                      int32_t nx, int32_t ny, int32_t nz, double xmin,
                                                      double xmax, double ymin, double ymax, double zmin,
                                                      double zmax, const std::vector<int32_t>& colArr,
                                                      double p) {
  checkBitmapBytes(bitmap, nx, ny);
  const int32_t ncolors = arrayLength(colArr.size(), "colour");
  VNetCdf nc(filename, false);
  std::vector<double> depths;
  const VCartGrid grid = readBathymetry(nc, filename, depths);
  return paintInto(bitmap, nx, ny, [&](int32_t*& bmp) {
    return VCppLib::VDraw::interpOnBitmap(grid, bmp, nx, ny, nz, xmin, xmax, ymin, ymax, zmin, zmax,
                                          colArr.data(), ncolors, p);
  });
}

}  // namespace thWrapper
