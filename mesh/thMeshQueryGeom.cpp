// Distances, angles, coordinates, grid points and paths of an initialised mesh.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "interp/dijkstra.h"
#include "mesh/thMesh2D.h"
#include "mesh/thMeshIndex.h"
#include "mesh/thMeshUtil.h"
#include "support/VGeom.h"
#include "support/VStr.h"

namespace thalmod {

namespace {

void checkRange(int32_t v, int32_t n, const std::string& what) {
  if (v < 0 || v >= n)
    throw VCppLib::VException("The " + what + " " + VCppLib::VStr::toString(v) + " lies outside 0 to " +
                              VCppLib::VStr::toString(n - 1) + ".");
}

}  // namespace

double* thMesh2D::elemDistances(int32_t e) const {
  checkRange(e, noe, "element");
  auto* d = new double[noe];
  const double x0 = exCoor[e], y0 = eyCoor[e];
  for (int32_t i = 0; i < noe; i++) {
    if (!isLonLat) {
      d[i] = std::sqrt((exCoor[i] - x0) * (exCoor[i] - x0) + (eyCoor[i] - y0) * (eyCoor[i] - y0));
      continue;
    }
    // Each pair in the UTM zone of its mean position.
    const int32_t zone = meshutil::utmZoneOf((exCoor[i] + x0) / 2, (eyCoor[i] + y0) / 2);
    double ax = 0, ay = 0, bx = 0, by = 0;
    VCppLib::latLon2UTM(x0, y0, zone, ax, ay);
    VCppLib::latLon2UTM(exCoor[i], eyCoor[i], zone, bx, by);
    d[i] = std::sqrt((bx - ax) * (bx - ax) + (by - ay) * (by - ay));
  }
  return d;
}

double* thMesh2D::anglesElem() const {
  auto* a = new double[std::max(nevf, 0)];
  for (int32_t e = 0; e < noe && nevf > 0; e++) {
    const int32_t n = nonpe[e], k0 = eni[e];
    for (int32_t i = 0; i < n; i++) {
      const int32_t p = en[k0 + (i + n - 1) % n], c = en[k0 + i], q = en[k0 + (i + 1) % n];
      a[k0 + i] = VCppLib::angleBetweenLineSegments(nxCoor[c], nyCoor[c], nxCoor[p], nyCoor[p], nxCoor[c],
                                                    nyCoor[c], nxCoor[q], nyCoor[q]);
    }
  }
  return a;
}

double* thMesh2D::anglesMaxPerElem() const {
  std::unique_ptr<double[]> a(anglesElem());
  auto* mx = new double[std::max(noe, 0)];
  for (int32_t e = 0; e < noe; e++) {
    mx[e] = 0;
    for (int32_t i = 0; i < nonpe[e]; i++) mx[e] = std::max(mx[e], a[eni[e] + i]);
  }
  return mx;
}

double* thMesh2D::anglesVFMaxPerElem() const {
  auto* mx = new double[std::max(noe, 0)];
  for (int32_t e = 0; e < noe; e++) {
    mx[e] = 0;
    for (int32_t i = 0; anglesVF != nullptr && i < nivfpe[e]; i++)
      mx[e] = std::max(mx[e], anglesVF[evf[eni[e] + i]]);
  }
  return mx;
}

int32_t thMesh2D::faceCoorsLonLat(double*& x, double*& y) const {
  x = new double[std::max(nvf, 0)];
  y = new double[std::max(nvf, 0)];
  for (int32_t f = 0; f < nvf; f++) {
    if (isLonLat) {
      x[f] = vfxCoor[f];
      y[f] = vfyCoor[f];
    } else {
      VCppLib::UTM2latLon(vfxCoor[f], vfyCoor[f], utmZone, x[f], y[f]);
    }
  }
  return 0;
}

double thMesh2D::meanElemSizeDeg() const {
  if (!isLonLat) return meanElemSize;
  double ux = 0, uy = 0, lon = 0, lat = 0;
  VCppLib::latLon2UTM(xMean, yMean, utmZone, ux, uy);
  VCppLib::UTM2latLon(ux, uy + meanElemSize, utmZone, lon, lat);
  return std::sqrt((lon - xMean) * (lon - xMean) + (lat - yMean) * (lat - yMean));
}

int32_t thMesh2D::gridPoints(double dx, double dy, double*& x, double*& y) {
  if (!(dx > 0) || !(dy > 0) || !std::isfinite(dx) || !std::isfinite(dy))
    throw VCppLib::VException("The grid spacings dx and dy of gridPoints must be positive numbers.");
  initCircumference();
  // Refused before looping: a spacing far below the extent would make more points than an array holds.
  if ((xMax - xMin) / dx * ((yMax - yMin) / dy) > std::numeric_limits<int32_t>::max())
    throw VCppLib::VException("The grid spacings dx and dy of gridPoints are too small for the mesh extent.");
  std::vector<double> px, py;
  for (double gy = yMin + dy / 2; gy < yMax; gy += dy) {
    for (double gx = xMin + dx / 2; gx < xMax; gx += dx) {
      if (gx < xMin || gx > xMax || gy < yMin || gy > yMax) continue;
      if (!VCppLib::pointInPolygon(nCircum, circumX, circumY, gx, gy) || pointElem(gx, gy) < 0) continue;
      px.push_back(gx);
      py.push_back(gy);
    }
  }
  const int32_t n = static_cast<int32_t>(px.size());
  x = new double[n];
  y = new double[n];
  std::copy(px.begin(), px.end(), x);
  std::copy(py.begin(), py.end(), y);
  return n;
}

int32_t* thMesh2D::evfOrientation() const {
  auto* o = new int32_t[std::max(nevf, 0)];
  for (int32_t e = 0; e < noe && nevf > 0; e++) {
    const int32_t n = nonpe[e], k0 = eni[e];
    for (int32_t i = 0; i < n; i++) {
      const int32_t f = evf[k0 + i];
      const int32_t* at = std::find(en + k0, en + k0 + n, vfn[2 * f]);
      const bool follows = at != en + k0 + n && en[k0 + (at - (en + k0) + 1) % n] == vfn[2 * f + 1];
      o[k0 + i] = follows ? 1 : -1;
    }
  }
  return o;
}

int32_t thMesh2D::shortestPath(int32_t from, int32_t to, int32_t*& path) {
  checkRange(from, non, "start node");
  checkRange(to, non, "end node");
  thMeshQueryCache& c = queryCacheOf(*this);
  if (!c.dij) {
    auto g = std::make_unique<VCppLib::dijkstra>();
    g->initGraph(non, nxCoor, nyCoor, noe, nonpe, en);
    c.dij = std::move(g);
  }
  dij = c.dij.get();
  dijInit = true;
  dij->run(from);
  const std::vector<int32_t> p = dij->path(to);
  const int32_t n = static_cast<int32_t>(p.size()) + 1;
  path = new int32_t[n];
  path[0] = from;
  std::copy(p.begin(), p.end(), path + 1);
  return n;
}

}  // namespace thalmod
