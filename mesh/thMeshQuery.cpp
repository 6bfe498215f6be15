// Point and line queries of an initialised mesh, and the caches they build on first use.
#include <cmath>
#include <limits>
#include <vector>

#include "interp/Vkdtree.h"
#include "mesh/thMesh2D.h"
#include "mesh/thMeshIndex.h"
#include "support/VGeom.h"

namespace thalmod {

namespace {

constexpr double eps = std::numeric_limits<double>::epsilon();
constexpr double lineTol = 1e-10;  // tolerance of the face crossings of a line

bool hasElementNodes(const thMesh2D& m) {
  return m.noe > 0 && m.nonpe != nullptr && m.eni != nullptr && m.enxCoor != nullptr && m.enyCoor != nullptr;
}

bool hasFaces(const thMesh2D& m) {
  return m.nvf > 0 && m.vfn != nullptr && m.vfe != nullptr && m.nxCoor != nullptr && m.nyCoor != nullptr;
}

// The crossing rule on element e: for each corner i with j the corner before it, an edge that
// spans y flips the answer when its crossing lies right of x.
bool elemHolds(const thMesh2D& m, int32_t e, double x, double y) {
  const int32_t n = m.nonpe[e];
  const double* ex = m.enxCoor + m.eni[e];
  const double* ey = m.enyCoor + m.eni[e];
  bool inside = false;
  for (int32_t i = 0, j = n - 1; i < n; j = i++) {
    if ((ey[i] > y) != (ey[j] > y) && (ex[j] - ex[i]) * (y - ey[i]) / (ey[j] - ey[i]) + ex[i] > x)
      inside = !inside;
  }
  return inside;
}

// Rounding slack of coordinates of magnitude up to a: the crossing abscissa of the rule above
// may stray from an edge's x range by a few units in the last place.
double slack(double a) { return 16 * eps * a + 1e-300; }

// Element extents, filed on first use. Null when the mesh cannot be indexed (non-finite nodes);
// pointElem then scans.
const thBoxGrid* elemGridOf(const thMesh2D& m) {
  thMeshQueryCache& c = queryCacheOf(m);
  if (!c.elemGridBuilt) {
    const size_t n = static_cast<size_t>(m.noe);
    // The rule holds a point only in [min y, max y) of an element's corners, and in its x range
    // up to rounding: boxes padded by that in x cover every point an element can hold.
    std::vector<double> bx0(n, 1.0), bx1(n, 0.0), by0(n, 0.0), by1(n, 0.0);
    for (size_t e = 0; e < n; e++) {
      const int32_t k = m.nonpe[e];
      if (k < 1) continue;
      const double* ex = m.enxCoor + m.eni[e];
      const double* ey = m.enyCoor + m.eni[e];
      double x0 = ex[0], x1 = ex[0], y0 = ey[0], y1 = ey[0];
      for (int32_t i = 1; i < k; i++) {
        x0 = std::fmin(x0, ex[i]);
        x1 = std::fmax(x1, ex[i]);
        y0 = std::fmin(y0, ey[i]);
        y1 = std::fmax(y1, ey[i]);
      }
      const double pad = slack(std::fmax(std::fabs(x0), std::fabs(x1)));
      bx0[e] = x0 - pad;
      bx1[e] = x1 + pad;
      by0[e] = y0;
      by1[e] = y1;
      // fmin/fmax skip NaN: an element with a NaN corner must make the grid refuse the mesh.
      for (int32_t i = 0; i < k; i++)
        if (std::isnan(ex[i]) || std::isnan(ey[i])) bx0[e] = NAN;
    }
    c.elemGrid.build(bx0, by0, bx1, by1);
    c.elemGridBuilt = true;
  }
  return c.elemGrid.empty() ? nullptr : &c.elemGrid;
}

// Face extents, filed on first use, padded by the crossing tolerance.
const thBoxGrid* faceGridOf(const thMesh2D& m) {
  thMeshQueryCache& c = queryCacheOf(m);
  if (!c.faceGridBuilt) {
    const size_t n = static_cast<size_t>(m.nvf);
    std::vector<double> bx0(n), bx1(n), by0(n), by1(n);
    double maxLen = 0;
    for (size_t f = 0; f < n; f++) {
      const int32_t a = m.vfn[2 * f], b = m.vfn[2 * f + 1];
      const double xa = m.nxCoor[a], ya = m.nyCoor[a], xb = m.nxCoor[b], yb = m.nyCoor[b];
      const double pad = 2 * lineTol + slack(std::fmax(std::fmax(std::fabs(xa), std::fabs(xb)),
                                                       std::fmax(std::fabs(ya), std::fabs(yb))));
      bx0[f] = std::min(xa, xb) - pad;
      bx1[f] = std::max(xa, xb) + pad;
      by0[f] = std::min(ya, yb) - pad;
      by1[f] = std::max(ya, yb) + pad;
      if (std::isnan(xa + ya + xb + yb)) bx0[f] = NAN;
      maxLen = std::fmax(maxLen, std::hypot(xb - xa, yb - ya));
    }
    c.maxFaceLen = maxLen;
    c.faceGrid.build(bx0, by0, bx1, by1);
    c.faceGridBuilt = true;
  }
  return c.faceGrid.empty() ? nullptr : &c.faceGrid;
}

struct LineHits {
  std::vector<int32_t> ids;
  std::vector<double> x, y;
};

void testFace(const thMesh2D& m, int32_t f, double x0, double y0, double x1, double y1, LineHits& h) {
  const int32_t a = m.vfn[2 * f], b = m.vfn[2 * f + 1];
  double px = 0, py = 0;
  if (VCppLib::intersectSegments(x0, y0, x1, y1, m.nxCoor[a], m.nyCoor[a], m.nxCoor[b], m.nyCoor[b], px, py,
                                 lineTol) == 0) {
    h.ids.push_back(f);
    h.x.push_back(px);
    h.y.push_back(py);
  }
}

// Turns the face crossings (in face order) into stretches: elements and end distances.
int32_t lineStretches(const thMesh2D& m, LineHits& h, double x0, double y0, double x1, double y1,
                      int32_t*& ise, double*& isd) {
  h.ids.push_back(-1);
  h.x.push_back(x0);
  h.y.push_back(y0);
  h.ids.push_back(-2);
  h.x.push_back(x1);
  h.y.push_back(y1);
  const int32_t mm = static_cast<int32_t>(h.ids.size());
  if (mm == 2) {
    const int32_t e = m.pointElem(x0, y0);
    if (e < 0) return -1;
    ise = new int32_t[1]{e};
    isd = new double[1]{std::sqrt((x1 - x0) * (x1 - x0) + (y1 - y0) * (y1 - y0))};
    return 1;
  }
  std::vector<double> dist(static_cast<size_t>(mm));
  for (int32_t i = 0; i < mm; i++)
    dist[i] = std::sqrt((h.x[i] - x0) * (h.x[i] - x0) + (h.y[i] - y0) * (h.y[i] - y0));
  double* d = dist.data();
  int32_t* ids = h.ids.data();
  VCppLib::sortPaired(d, ids, 0, mm - 1);
  ise = new int32_t[mm - 1];
  isd = new double[mm - 1];
  // A first crossing on a boundary face means the line starts outside.
  ise[0] = ids[1] >= m.nivf ? -1 : m.pointElem(x0, y0);
  isd[0] = d[1];
  for (int32_t i = 1; i <= mm - 2; i++) {
    isd[i] = d[i + 1];
    if (ids[i] < 0) {
      ise[i] = -1;
      continue;
    }
    const int32_t f = ids[i];
    int32_t side = m.vfe[2 * f];
    if (side == ise[i - 1] || (side < 0 && ise[i - 1] < 0)) side = m.vfe[2 * f + 1];
    // A ghost column or land beyond a boundary face is outside.
    ise[i] = (side < 0 || side > m.noe - 1) ? -1 : side;
  }
  return mm - 1;
}

}  // namespace

int32_t thMesh2D::pointElemScan(double x, double y) const {
  if (!hasElementNodes(*this)) return -1;
  for (int32_t e = 0; e < noe; ++e)
    if (nonpe[e] > 0 && elemHolds(*this, e, x, y)) return e;
  return -1;
}

// Only the elements filed in the point's cell can hold it; they are tried in ascending order, so
// that a point on a shared face or node gets the same element as the plain scan.
int32_t thMesh2D::pointElem(double x, double y) const {
  if (!hasElementNodes(*this)) return -1;
  const thBoxGrid* g = std::isfinite(x) && std::isfinite(y) ? elemGridOf(*this) : nullptr;
  if (g == nullptr) return pointElemScan(x, y);
  if (!g->contains(x, y)) return -1;
  const int32_t i = g->cellX(x), j = g->cellY(y);
  for (int32_t k = g->begin(i, j), k1 = g->end(i, j); k < k1; k++)
    if (elemHolds(*this, g->items[k], x, y)) return g->items[k];
  return -1;
}

int32_t thMesh2D::lineIntersectionsScan(double x0, double y0, double x1, double y1, int32_t*& ise,
                                        double*& isd) const {
  LineHits h;
  if (hasFaces(*this))
    for (int32_t f = 0; f < nvf; f++) testFace(*this, f, x0, y0, x1, y1, h);
  return lineStretches(*this, h, x0, y0, x1, y1, ise, isd);
}

// The faces tested are those filed in the cells near the line; they are tested in face order, so
// the crossings and their sort are those of the plain scan.
int32_t thMesh2D::lineIntersections(double x0, double y0, double x1, double y1, int32_t*& ise,
                                    double*& isd) const {
  const bool finite = std::isfinite(x0) && std::isfinite(y0) && std::isfinite(x1) && std::isfinite(y1);
  const thBoxGrid* g = finite && hasFaces(*this) ? faceGridOf(*this) : nullptr;
  if (g == nullptr) return lineIntersectionsScan(x0, y0, x1, y1, ise, isd);
  LineHits h;
  const double len = std::hypot(x1 - x0, y1 - y0);
  // A line of no length is parallel to every face: no crossing.
  if (len > 0) {
    // How far a computed crossing may lie from the line: rounding of the line constants over the
    // line's length, and of the coordinates, with a generous factor. Only a face parallel to the
    // line to within rounding, whose "crossing" is noise, could land farther away.
    const double c =
        std::fmax(std::fmax(std::fmax(std::fabs(x0), std::fabs(x1)), std::fmax(std::fabs(y0), std::fabs(y1))),
                  std::fmax(std::fmax(std::fabs(g->gx0), std::fabs(g->gx1)),
                            std::fmax(std::fabs(g->gy0), std::fabs(g->gy1))));
    const double cell = std::fmax(g->cellW, g->cellH);
    const double ratio = cell > 0 ? queryCache->maxFaceLen / cell : 1.0;
    const double margin = 64 * eps * (c * c / len + c * (2 + ratio)) + 4 * lineTol + 0.01 * cell;
    std::vector<int32_t> cand;
    g->boxesNearSegment(x0, y0, x1, y1, margin, cand);
    for (int32_t f : cand) testFace(*this, f, x0, y0, x1, y1, h);
  }
  return lineStretches(*this, h, x0, y0, x1, y1, ise, isd);
}

int32_t thMesh2D::pointElemNearest(double x, double y, int32_t forceNearest) {
  if (forceNearest == 0 && pointInDomain(x, y)) {
    const int32_t e = pointElem(x, y);
    if (e >= 0) return e;
  }
  thMeshQueryCache& c = queryCacheOf(*this);
  if (!c.kdTree) c.kdTree = std::make_unique<VCppLib::Vkdtree>(exCoor, eyCoor, noe);
  kdTree = c.kdTree.get();
  return kdTree->nearest(x, y);
}

void thMesh2D::dropQueryCaches() {
  queryCache.reset();
  kdTree = nullptr;
  dij = nullptr;
  dijInit = false;
}

}  // namespace thalmod
