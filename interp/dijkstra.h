// dijkstra: shortest paths with integer distances, over a graph given as an adjacency matrix
// (nodes of a mesh joined along element edges) or over a regular raster with a mask, eight
// neighbours per cell.
//
// Costs are integers so that the queue and the relaxation need no floating point: a length L costs
// trunc(L*scale). An edge of cost 0 (two nodes closer than 1/scale) is not an edge.
//
// Numbering: graph nodes are the mesh's node numbers 0..n-1; raster cell (a, b) (column a of nx,
// row b of ny) is node a + b*nx. The object owns dist, prev, visited and the matrix (adj is a row
// table into one flat n*n block); `mask` stays the caller's.
#pragma once

#include <cstdint>
#include <queue>
#include <string>
#include <utility>
#include <vector>

namespace VCppLib {

class dijkstra {
 public:
  // Queue entries (minus the distance, node): the largest first, so the smallest distance and,
  // among equal distances, the higher node number.
  using queueT = std::priority_queue<std::pair<int32_t, int32_t>>;

  static constexpr int32_t unreached = 999999999;  // dist of a node that no run reached
  static constexpr int32_t maxGraphNodes = 46340;  // largest n whose n*n fits in an int32 count

  int32_t n = 0;               // number of nodes
  int32_t** adj = nullptr;     // graph mode: [n] rows of n edge costs, -1 for no edge
  int32_t* dist = nullptr;     // [node] distance after a run, `unreached` if not reached (-1 before)
  int32_t* prev = nullptr;     // [node] predecessor after a run, -1 for none
  bool gridMode = false;       // raster mode
  int32_t scale = 10000;       // multiplier from real lengths to integer costs
  uint8_t* visited = nullptr;  // [node] 1 once settled
  bool useTarget = false;      // graph mode: run stops when `target` is taken from the queue
  int32_t target = -1;
  int32_t nx = 0, ny = 0;    // raster size
  uint8_t** mask = nullptr;  // raster mode: [ny] rows of nx bytes, non-zero blocks; caller's
  int32_t diagCost = 0, xCost = 0, yCost = 0;  // raster step costs

  dijkstra() = default;
  ~dijkstra();
  dijkstra(const dijkstra&) = delete;
  dijkstra& operator=(const dijkstra&) = delete;

  // Graph of the non nodes (x[i], y[i]) joined along the edges of noe elements: element e has
  // nonpe[e] nodes, stored one element after the other in en. adj[a][b] = adj[b][a] =
  // trunc(length*scale). Memory is quadratic in non. Raises VException for non > maxGraphNodes, a
  // node number outside 0..non-1, a negative count, or an edge too long for an int32 cost.
  void initGraph(int32_t non, double* x, double* y, int32_t noe, int32_t* nonpe, int32_t* en);
  // Raster of nx*ny cells of size dx by dy; mask[b][a] non-zero blocks cell (a, b) (a null mask
  // blocks nothing). Sets scale so that the larger raster side maps to 1e5..1e7 cost units.
  // Raises VException for a size below 1 or whose cell count overflows, and for a non-positive or
  // non-finite extent.
  void initGrid(int32_t nx, int32_t ny, double dx, double dy, uint8_t** mask);

  // Search from `source`; fills dist and prev. A source outside 0..n-1 reaches nothing.
  void run(int32_t source);
  // Nodes from the first step after the last run's source to `target` (last); empty when
  // prev[target] is -1. Raises VException for a target outside 0..n-1.
  std::vector<int32_t> path(int32_t target);
  // path() of raster cell (i, j).
  std::vector<int32_t> pathXY(int32_t i, int32_t j);
  // Runs from cell (i, j) and returns a new table of ny rows of nx values: at [b][a] the distance
  // to cell (a, b) in real units (dist/scale), or 999999999.0 if not reached. The rows point into
  // one block; the caller frees it with `delete[] t[0]; delete[] t;`. Null in graph mode. A cell
  // outside the raster reaches nothing.
  double** distanceField(int32_t i, int32_t j);
  // Appends the nodes of path(node), each after one blank, to text.
  void pathText(int32_t node, std::string& text);

 private:
  void release();
  void allocNodes(int64_t count);
  void checkNode(int32_t node, const char* what) const;
  void relax(int32_t u, int32_t v, int32_t cost, queueT& queue);
  void expandGraph(int32_t u, queueT& queue);
  void expandCell(int32_t u, queueT& queue);
};

}  // namespace VCppLib
