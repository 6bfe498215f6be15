#include "testutil/thMeshFixtures.h"

#include <algorithm>
#include <functional>
#include <sstream>

namespace thTest {

namespace {

// The grid of gridMeshText; split(cell) tells whether a cell is two triangles.
std::string gridText(int32_t nx, int32_t ny, double dx, double dy, int32_t westType, int32_t eastType,
                     double x0, double y0, const std::function<bool(int32_t)>& split) {
  std::ostringstream nodes, elems;
  nodes.precision(17);
  for (int32_t j = 0; j <= ny; j++) {
    for (int32_t i = 0; i <= nx; i++) {
      int32_t type = i == 0 || j == 0 || i == nx || j == ny ? 99 : 0;
      if (i == 0 && westType != 0) type = westType;
      if (i == nx && eastType != 0) type = eastType;
      nodes << x0 + i * dx << "\t" << y0 + j * dy << "\t" << type << "\n";
    }
  }
  for (int32_t j = 0; j < ny; j++) {
    for (int32_t i = 0; i < nx; i++) {
      const int32_t a = j * (nx + 1) + i, b = a + 1, c = b + nx + 1, d = a + nx + 1;
      if (split(j * nx + i))
        elems << a << "\t" << b << "\t" << c << "\n" << a << "\t" << c << "\t" << d << "\n";
      else
        elems << a << "\t" << b << "\t" << c << "\t" << d << "\n";
    }
  }
  const std::string e = elems.str();  // one element a line
  return std::to_string((nx + 1) * (ny + 1)) + "\t" + std::to_string(std::count(e.begin(), e.end(), '\n')) +
         "\n" + nodes.str() + e;
}

}  // namespace

std::string gridMeshText(int32_t nx, int32_t ny, double dx, double dy, bool triangles, int32_t westType,
                         int32_t eastType, double x0, double y0) {
  return gridText(nx, ny, dx, dy, westType, eastType, x0, y0, [triangles](int32_t) { return triangles; });
}

std::string smallModelMeshText() { return gridMeshText(4, 2, 100, 100, false, 1, 2); }

std::string smallMixedMeshText() {
  return gridText(4, 2, 100, 100, 1, 2, 0, 0, [](int32_t c) { return c >= 6; });
}

void gridMesh(thalmod::thMesh2D& m, int32_t nx, int32_t ny, std::mt19937& rng, bool openLeft) {
  std::bernoulli_distribution split(0.4);
  m.readMeshText(
      gridText(nx, ny, 10.0, 10.0, openLeft ? 2 : 0, 1, 0.0, 0.0, [&](int32_t) { return split(rng); }));
}

}  // namespace thTest
