#include "interp/dijkstra.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

#include "support/VCppLib.h"
#include "support/VStr.h"

namespace VCppLib {

using VStr::toString;

namespace {

// trunc(len*scale) as an int32 cost; a product outside int32 (or NaN) cannot be a cost.
int32_t toCost(double len, int32_t scale, const std::string& what) {
  const double c = len * scale;
  if (!(c > -2147483649.0 && c < 2147483648.0))
    throw VException("dijkstra: the length " + toString(len) + " of " + what + " times scale " +
                     toString(scale) + " does not fit an integer cost (it must stay below 2147483648).");
  return static_cast<int32_t>(c);
}

// The eight raster neighbours (da, db) in the order in which a cell is expanded.
constexpr int32_t kNbrA[8] = {-1, 0, 1, -1, 1, -1, 0, 1};
constexpr int32_t kNbrB[8] = {-1, -1, -1, 0, 0, 1, 1, 1};

}  // namespace

dijkstra::~dijkstra() { release(); }

void dijkstra::release() {
  if (adj != nullptr) delete[] adj[0];  // the flat matrix; adj[0] always points at its start
  delete[] adj;
  delete[] dist;
  delete[] prev;
  delete[] visited;
  adj = nullptr;
  dist = prev = nullptr;
  visited = nullptr;
  n = 0;
}

// Fresh per-node arrays for count nodes, all bytes set (-1) until a run fills them; the caller
// has released the old ones.
void dijkstra::allocNodes(int64_t count) {
  n = static_cast<int32_t>(count);
  const size_t m = count > 0 ? static_cast<size_t>(count) : 1;
  dist = new int32_t[m];
  prev = new int32_t[m];
  visited = new uint8_t[m];
  std::fill(dist, dist + m, -1);
  std::fill(prev, prev + m, -1);
  std::memset(visited, 0xFF, m);
}

void dijkstra::initGraph(int32_t non, double* x, double* y, int32_t noe, int32_t* nonpe, int32_t* en) {
  if (non < 0 || non > maxGraphNodes)
    throw VException("dijkstra::initGraph: non = " + toString(non) + " is outside 0.." +
                     toString(maxGraphNodes) + "; the graph keeps a non x non matrix, and at most " +
                     toString(maxGraphNodes) + " nodes keep its entries within 2147483647.");
  if (noe < 0) throw VException("dijkstra::initGraph: noe = " + toString(noe) + " is negative.");
  if ((non > 0 && (x == nullptr || y == nullptr)) || (noe > 0 && (nonpe == nullptr || en == nullptr)))
    throw VException("dijkstra::initGraph: a coordinate or element array is null.");
  const size_t nn = static_cast<size_t>(non) * static_cast<size_t>(non);
  std::unique_ptr<int32_t[]> block;
  std::unique_ptr<int32_t*[]> rows;
  try {
    block.reset(new int32_t[nn > 0 ? nn : 1]);
    rows.reset(new int32_t*[non > 0 ? non : 1]);
  } catch (const std::bad_alloc&) {
    throw VException("dijkstra::initGraph: there is not enough memory for the matrix of " + toString(non) +
                     " x " + toString(non) + " edge costs.");
  }
  std::fill(block.get(), block.get() + nn, -1);
  rows[0] = block.get();
  for (int32_t i = 1; i < non; ++i) rows[i] = block.get() + static_cast<size_t>(i) * non;
  int64_t off = 0;
  for (int32_t e = 0; e < noe; ++e) {
    const int32_t cnt = nonpe[e];
    if (cnt < 0)
      throw VException("dijkstra::initGraph: nonpe[" + toString(e) + "] = " + toString(cnt) +
                       " is negative.");
    for (int32_t k = 0; k < cnt; ++k) {
      int32_t a = en[off + k], b = en[off + (k + 1) % cnt];
      for (int32_t v : {a, b}) {
        if (v < 0 || v >= non)
          throw VException("dijkstra::initGraph: en holds node " + toString(v) + " in element " +
                           toString(e) + ", outside the nodes 0.." + toString(non - 1) + ".");
      }
      if (a > b) std::swap(a, b);
      const double len = std::sqrt((x[b] - x[a]) * (x[b] - x[a]) + (y[b] - y[a]) * (y[b] - y[a]));
      rows[a][b] = toCost(len, scale, "the edge " + toString(a) + "-" + toString(b));
    }
    off += cnt;
  }
  for (int32_t a = 0; a < non; ++a)
    for (int32_t b = a + 1; b < non; ++b) rows[b][a] = rows[a][b];
  release();
  allocNodes(non);
  block.release();
  adj = rows.release();
  gridMode = false;
}

void dijkstra::initGrid(int32_t nx_, int32_t ny_, double dx, double dy, uint8_t** mask_) {
  const int64_t cells = static_cast<int64_t>(nx_) * ny_;
  if (nx_ < 1 || ny_ < 1 || cells > 2147483647)
    throw VException("dijkstra::initGrid: a raster of nx = " + toString(nx_) + " by ny = " + toString(ny_) +
                     " cells is outside 1..2147483647 cells.");
  if (!(dx > 0 && dy > 0 && std::isfinite(dx) && std::isfinite(dy)))
    throw VException("dijkstra::initGrid: the cell size dx = " + toString(dx) + ", dy = " + toString(dy) +
                     " must be positive and finite.");
  const double extent = std::max(ny_ * dy, nx_ * dx);
  // The larger side maps to 1e6..1e7 cost units; below 0.0001 the factor would overflow int32.
  const double e = 6 - std::trunc(std::log10(extent));
  if (!std::isfinite(extent) || e > 9)
    throw VException("dijkstra::initGrid: the raster extent " + toString(extent) +
                     " cannot be scaled to integer costs; it must lie above 0.0001 and be finite.");
  const int32_t newScale = std::max(static_cast<int32_t>(std::trunc(std::pow(10.0, e))), 1);
  const int32_t newDiag = toCost(std::sqrt(dx * dx + dy * dy), newScale, "a diagonal step");
  const int32_t newX = toCost(dx, newScale, "a step in x");
  const int32_t newY = toCost(dy, newScale, "a step in y");
  release();
  allocNodes(cells);
  nx = nx_;
  ny = ny_;
  mask = mask_;
  scale = newScale;
  diagCost = newDiag;
  xCost = newX;
  yCost = newY;
  gridMode = true;
}

// Distances stay below `unreached`: the sum is formed in 64 bits, so a path longer than that is
// simply not an improvement and its node stays unreached, instead of overflowing.
void dijkstra::relax(int32_t u, int32_t v, int32_t cost, queueT& queue) {
  const int64_t d = static_cast<int64_t>(dist[u]) + cost;
  if (d < dist[v]) {
    dist[v] = static_cast<int32_t>(d);
    prev[v] = u;
    queue.push({-dist[v], v});
  }
}

void dijkstra::expandGraph(int32_t u, queueT& queue) {
  const int32_t* row = adj[u];
  for (int32_t v = 0; v < n; ++v)
    if (!visited[v] && row[v] > 0) relax(u, v, row[v], queue);
}

void dijkstra::expandCell(int32_t u, queueT& queue) {
  const int32_t a = u % nx, b = u / nx;
  if (mask != nullptr && mask[b][a] != 0) return;  // a blocked cell is not expanded
  const int32_t costs[8] = {diagCost, yCost, diagCost, xCost, xCost, diagCost, yCost, diagCost};
  for (int k = 0; k < 8; ++k) {
    const int32_t na = a + kNbrA[k], nb = b + kNbrB[k];
    if (na < 0 || na >= nx || nb < 0 || nb >= ny) continue;
    if (mask != nullptr && mask[nb][na] != 0) continue;
    const int32_t v = na + nb * nx;
    if (!visited[v]) relax(u, v, costs[k], queue);
  }
}

void dijkstra::run(int32_t source) {
  for (int32_t i = 0; i < n; ++i) {
    dist[i] = unreached;
    prev[i] = -1;
    visited[i] = 0;
  }
  if (source >= n || source < 0) return;  // a source outside reaches nothing
  queueT queue;
  dist[source] = 0;
  queue.push({0, source});
  while (!queue.empty()) {
    const int32_t u = queue.top().second;
    queue.pop();
    if (!gridMode && useTarget && u == target) return;
    if (visited[u]) continue;  // a stale entry: the node was settled through a shorter one
    visited[u] = 1;
    if (gridMode)
      expandCell(u, queue);
    else
      expandGraph(u, queue);
  }
}

void dijkstra::checkNode(int32_t node, const char* what) const {
  if (node < 0 || node >= n)
    throw VException(
        std::string("dijkstra::") + what + " = " + toString(node) + " is outside " +
        (n > 0 ? "the nodes 0.." + toString(n - 1) + "." : "the search, which has no nodes yet."));
}

// Walks prev back from target (the node whose prev is -1 stays out) and turns the list round.
// A loop instead of recursion: a raster path can be far longer than the stack allows.
std::vector<int32_t> dijkstra::path(int32_t target_) {
  checkNode(target_, "path: target");
  std::vector<int32_t> out;
  for (int32_t v = target_; prev[v] != -1; v = prev[v]) {
    out.push_back(v);
    if (static_cast<int32_t>(out.size()) > n)
      throw VException("dijkstra::path: the predecessors form a loop; run the search again.");
  }
  std::reverse(out.begin(), out.end());
  return out;
}

std::vector<int32_t> dijkstra::pathXY(int32_t i, int32_t j) {
  if (i < 0 || i >= nx || j < 0 || j >= ny)
    throw VException("dijkstra::pathXY: cell i = " + toString(i) + ", j = " + toString(j) +
                     " lies outside the raster of " + toString(nx) + " by " + toString(ny) + " cells.");
  return path(i + j * nx);
}

double** dijkstra::distanceField(int32_t i, int32_t j) {
  if (!gridMode) return nullptr;
  run(i >= 0 && i < nx && j >= 0 && j < ny ? i + j * nx : -1);
  const size_t w = static_cast<size_t>(nx);
  auto** table = new double*[ny];
  table[0] = new double[w * ny];
  for (int32_t b = 0; b < ny; ++b) {
    table[b] = table[0] + b * w;
    for (int32_t a = 0; a < nx; ++a) {
      const int32_t d = dist[a + b * w];
      table[b][a] = d == unreached ? 999999999.0 : static_cast<double>(d) / scale;
    }
  }
  return table;
}

void dijkstra::pathText(int32_t node, std::string& text) {
  checkNode(node, "pathText: node");
  for (int32_t v : path(node)) text += " " + toString(v);
}

}  // namespace VCppLib
