#include "testutil/thMeshFixtures.h"

#include <sstream>

namespace thTest {

namespace {

int32_t rimType(int32_t i, int32_t j, int32_t nx, int32_t ny, int32_t westType, int32_t eastType) {
  const bool rim = i == 0 || j == 0 || i == nx || j == ny;
  if (!rim) return 0;
  if (i == 0 && westType != 0) return westType;
  if (i == nx && eastType != 0) return eastType;
  return 99;
}

std::string gridText(int32_t nx, int32_t ny, double dx, double dy, int32_t westType, int32_t eastType,
                     double x0, double y0, int32_t splitFromCell, bool splitAll) {
  std::ostringstream ss;
  ss.precision(17);
  const int32_t non = (nx + 1) * (ny + 1);
  int32_t noe = 0;
  for (int32_t c = 0; c < nx * ny; c++) noe += (splitAll || c >= splitFromCell) ? 2 : 1;
  ss << non << "\t" << noe << "\n";
  for (int32_t j = 0; j <= ny; j++)
    for (int32_t i = 0; i <= nx; i++)
      ss << x0 + i * dx << "\t" << y0 + j * dy << "\t" << rimType(i, j, nx, ny, westType, eastType) << "\n";
  for (int32_t j = 0; j < ny; j++) {
    for (int32_t i = 0; i < nx; i++) {
      const int32_t a = j * (nx + 1) + i, b = a + 1, c = b + nx + 1, d = a + nx + 1;
      if (splitAll || j * nx + i >= splitFromCell)
        ss << a << "\t" << b << "\t" << c << "\n" << a << "\t" << c << "\t" << d << "\n";
      else
        ss << a << "\t" << b << "\t" << c << "\t" << d << "\n";
    }
  }
  return ss.str();
}

}  // namespace

std::string gridMeshText(int32_t nx, int32_t ny, double dx, double dy, bool triangles, int32_t westType,
                         int32_t eastType, double x0, double y0) {
  return gridText(nx, ny, dx, dy, westType, eastType, x0, y0, nx * ny, triangles);
}

std::string smallModelMeshText() { return gridText(4, 2, 100.0, 100.0, 1, 2, 0.0, 0.0, 8, false); }

std::string smallMixedMeshText() { return gridText(4, 2, 100.0, 100.0, 1, 2, 0.0, 0.0, 6, false); }

}  // namespace thTest
