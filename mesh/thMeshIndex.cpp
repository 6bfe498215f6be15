// The bucket grid over boxes, and the cache holder of the mesh queries.
#include "mesh/thMeshIndex.h"

#include <algorithm>
#include <cmath>

#include "interp/Vkdtree.h"
#include "interp/dijkstra.h"
#include "mesh/thMesh2D.h"

namespace thalmod {

thMeshQueryCache::thMeshQueryCache() = default;
thMeshQueryCache::~thMeshQueryCache() = default;

thMeshQueryCache& queryCacheOf(const thMesh2D& m) {
  if (!m.queryCache) m.queryCache = std::make_shared<thMeshQueryCache>();
  return *m.queryCache;
}

namespace {

// Cells per filed box aimed at, and the most entries a grid may hold per filed box before it is
// made coarser (a few huge boxes over a fine grid would otherwise fill memory).
constexpr double cellsPerBox = 2.0;
constexpr int64_t maxEntriesPerBox = 16;
constexpr int64_t maxEntries = int64_t(1) << 30;  // items are counted in int32

bool filed(const std::vector<double>& bx0, const std::vector<double>& bx1, size_t i) {
  return bx0[i] <= bx1[i];
}

}  // namespace

int64_t thBoxGrid::countEntries(const std::vector<double>& bx0, const std::vector<double>& by0,
                                const std::vector<double>& bx1, const std::vector<double>& by1) const {
  int64_t total = 0;
  for (size_t i = 0; i < bx0.size(); i++) {
    if (!filed(bx0, bx1, i)) continue;
    total += int64_t(cellX(bx1[i]) - cellX(bx0[i]) + 1) * (cellY(by1[i]) - cellY(by0[i]) + 1);
  }
  return total;
}

bool thBoxGrid::build(const std::vector<double>& bx0, const std::vector<double>& by0,
                      const std::vector<double>& bx1, const std::vector<double>& by1) {
  *this = thBoxGrid();
  const size_t n = bx0.size();
  int64_t m = 0;
  double sumW = 0, sumH = 0;
  for (size_t i = 0; i < n; i++) {
    if (!(std::isfinite(bx0[i]) && std::isfinite(bx1[i]) && std::isfinite(by0[i]) && std::isfinite(by1[i])))
      return false;
    if (!filed(bx0, bx1, i)) continue;
    if (m == 0) {
      gx0 = bx0[i];
      gx1 = bx1[i];
      gy0 = by0[i];
      gy1 = by1[i];
    }
    gx0 = std::min(gx0, bx0[i]);
    gx1 = std::max(gx1, bx1[i]);
    gy0 = std::min(gy0, by0[i]);
    gy1 = std::max(gy1, by1[i]);
    sumW += bx1[i] - bx0[i];
    sumH += by1[i] - by0[i];
    m++;
  }
  if (m == 0) return false;

  // Cells about the size of a mean box, at most cellsPerBox cells per box.
  const double w = gx1 - gx0, h = gy1 - gy0, maxCells = cellsPerBox * double(m) + 16.0;
  auto across = [&](double extent, double meanSize) {
    if (!(extent > 0)) return 1.0;
    return meanSize > 0 ? extent / meanSize : std::sqrt(double(m));
  };
  double fx = std::clamp(across(w, sumW / double(m)), 1.0, maxCells);
  double fy = std::clamp(across(h, sumH / double(m)), 1.0, maxCells);
  if (fx * fy > maxCells) {
    const double shrink = std::sqrt(fx * fy / maxCells);
    fx = std::max(1.0, fx / shrink);
    fy = std::max(1.0, std::min(fy / shrink, maxCells / fx));
  }
  nx = static_cast<int32_t>(fx);
  ny = static_cast<int32_t>(fy);
  const int64_t cap = std::min(maxEntriesPerBox * m + int64_t(maxCells), maxEntries);
  for (;;) {
    invW = w > 0 ? nx / w : 0.0;
    invH = h > 0 ? ny / h : 0.0;
    if ((nx == 1 && ny == 1) || countEntries(bx0, by0, bx1, by1) <= cap) break;
    nx = std::max(1, nx / 2);
    ny = std::max(1, ny / 2);
  }
  cellW = w / nx;
  cellH = h / ny;

  // Counting sort of the entries by cell, in box order: each cell lists its boxes ascending.
  const size_t cells = size_t(nx) * size_t(ny);
  cellStart.assign(cells + 1, 0);
  for (size_t i = 0; i < n; i++) {
    if (!filed(bx0, bx1, i)) continue;
    for (int32_t j = cellY(by0[i]); j <= cellY(by1[i]); j++)
      for (int32_t c = cellX(bx0[i]); c <= cellX(bx1[i]); c++) cellStart[size_t(j) * nx + c + 1]++;
  }
  for (size_t c = 0; c < cells; c++) cellStart[c + 1] += cellStart[c];
  items.resize(static_cast<size_t>(cellStart[cells]));
  std::vector<int32_t> next(cellStart.begin(), cellStart.end() - 1);
  for (size_t i = 0; i < n; i++) {
    if (!filed(bx0, bx1, i)) continue;
    for (int32_t j = cellY(by0[i]); j <= cellY(by1[i]); j++)
      for (int32_t c = cellX(bx0[i]); c <= cellX(bx1[i]); c++)
        items[static_cast<size_t>(next[size_t(j) * nx + c]++)] = static_cast<int32_t>(i);
  }
  return true;
}

void thBoxGrid::boxesNearSegment(double x0, double y0, double x1, double y1, double margin,
                                 std::vector<int32_t>& out) const {
  if (empty()) return;
  const size_t first = out.size();
  const double lx0 = std::min(x0, x1) - margin, lx1 = std::max(x0, x1) + margin;
  const double ly0 = std::min(y0, y1) - margin, ly1 = std::max(y0, y1) + margin;
  if (lx1 < gx0 || lx0 > gx1 || ly1 < gy0 || ly0 > gy1) return;
  const double dx = x1 - x0, dy = y1 - y0;
  const double inf = HUGE_VAL;
  for (int32_t j = cellY(ly0), j1 = cellY(ly1); j <= j1; j++) {
    // The band of this row of cells, widened by the margin; the outer rows also hold what lies
    // beyond the grid.
    const double ya = j == 0 ? -inf : gy0 + j * cellH - margin;
    const double yb = j == ny - 1 ? inf : gy0 + (j + 1) * cellH + margin;
    double xa = std::min(x0, x1), xb = std::max(x0, x1);
    if (dy != 0) {
      double ta = (ya - y0) / dy, tb = (yb - y0) / dy;
      if (ta > tb) std::swap(ta, tb);
      ta = std::max(ta, 0.0);
      tb = std::min(tb, 1.0);
      if (ta > tb) continue;
      xa = x0 + ta * dx;
      xb = x0 + tb * dx;
      if (xa > xb) std::swap(xa, xb);
    }
    for (int32_t i = cellX(xa - margin), i1 = cellX(xb + margin); i <= i1; i++)
      out.insert(out.end(), items.begin() + begin(i, j), items.begin() + end(i, j));
  }
  std::sort(out.begin() + static_cast<std::ptrdiff_t>(first), out.end());
  out.erase(std::unique(out.begin() + static_cast<std::ptrdiff_t>(first), out.end()), out.end());
}

}  // namespace thalmod
