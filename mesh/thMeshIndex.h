// Spatial indexes behind the point and line queries of thMesh2D, and the holder of the caches that
// the queries build on first use (k-d tree, shortest path graph, indexes).
//
// thBoxGrid is a uniform grid of buckets over axis-aligned boxes (element or face extents). Each
// box is filed, by number, in every cell its closed extent touches, so that a cell lists in
// ascending order every box that can hold a point of that cell. The cell of a coordinate is
// floor((v - origin) * inverse cell size), clamped to the grid: monotone in v, so a point inside
// a box always falls in a cell in which the box is filed. Queries that scan the candidates in
// ascending order therefore meet the same first element as a scan of all boxes would.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace VCppLib {
class Vkdtree;
class dijkstra;
}  // namespace VCppLib

namespace thalmod {

class thMesh2D;

class thBoxGrid {
 public:
  double gx0 = 0, gy0 = 0, gx1 = 0, gy1 = 0;  // union of the boxes
  double cellW = 0, cellH = 0;                // cell size
  double invW = 0, invH = 0;                  // cells per unit; 0 along a flat extent
  int32_t nx = 0, ny = 0;                     // cells across and up; 0 for an empty grid
  std::vector<int32_t> cellStart;             // [cell] first entry in items; nx*ny+1 entries
  std::vector<int32_t> items;                 // box numbers, ascending within each cell

  // Files n boxes [bx0[i], bx1[i]] x [by0[i], by1[i]]. Boxes with bx0 > bx1 (empty) are not
  // filed. Returns false, leaving the grid empty, when a bound is not finite: such a mesh is
  // searched by the plain scans.
  bool build(const std::vector<double>& bx0, const std::vector<double>& by0, const std::vector<double>& bx1,
             const std::vector<double>& by1);

  bool empty() const { return nx == 0; }
  bool contains(double x, double y) const { return x >= gx0 && x <= gx1 && y >= gy0 && y <= gy1; }
  int32_t cellX(double x) const { return clampCell((x - gx0) * invW, nx); }
  int32_t cellY(double y) const { return clampCell((y - gy0) * invH, ny); }
  // Boxes filed in cell (i, j): items[begin..end).
  int32_t begin(int32_t i, int32_t j) const { return cellStart[static_cast<size_t>(j) * nx + i]; }
  int32_t end(int32_t i, int32_t j) const { return cellStart[static_cast<size_t>(j) * nx + i + 1]; }

  // Appends to out, ascending and each once, the boxes filed in the cells that lie within
  // distance margin of the segment (x0,y0)-(x1,y1) (a square neighbourhood: a superset).
  void boxesNearSegment(double x0, double y0, double x1, double y1, double margin,
                        std::vector<int32_t>& out) const;

 private:
  static int32_t clampCell(double v, int32_t n) {
    if (!(v > 0)) return 0;  // also NaN
    if (v >= n - 1) return n - 1;
    return static_cast<int32_t>(v);
  }
  int64_t countEntries(const std::vector<double>& bx0, const std::vector<double>& by0,
                       const std::vector<double>& bx1, const std::vector<double>& by1) const;
};

// Everything the queries of one mesh build on first use. Shallow copies of the mesh share it;
// it goes with the last of them, and initMesh drops it (its data would be stale).
struct thMeshQueryCache {
  std::unique_ptr<VCppLib::Vkdtree> kdTree;  // over exCoor, eyCoor (pointElemNearest)
  std::unique_ptr<VCppLib::dijkstra> dij;    // graph along the mesh edges (shortestPath)
  bool elemGridBuilt = false;                // elemGrid was attempted (it may be empty)
  thBoxGrid elemGrid;                        // element extents (pointElem)
  bool faceGridBuilt = false;
  thBoxGrid faceGrid;     // face extents (lineIntersections)
  double maxFaceLen = 0;  // longest face, mesh coordinates

  thMeshQueryCache();
  ~thMeshQueryCache();
};

// The mesh's cache, made empty on first use.
thMeshQueryCache& queryCacheOf(const thMesh2D& m);

}  // namespace thalmod
