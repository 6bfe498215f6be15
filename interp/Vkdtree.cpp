#include "interp/Vkdtree.h"

#include <cmath>
#include <string>
#include <utility>

#include "support/VCppLib.h"
#include "support/VStr.h"

namespace VCppLib {

using VStr::toString;

namespace {

double squaredDist(const kd_node_t* a, const double* q, int32_t dim) {
  double d = 0;
  for (int32_t k = 0; k < dim; ++k) {
    const double t = a->x[k] - q[k];
    d += t * t;
  }
  return d;
}

// Swaps the point data of two nodes; the links are not set while the tree is built.
void swapPoint(kd_node_t* a, kd_node_t* b) {
  std::swap(a->x, b->x);
  std::swap(a->idx, b->idx);
}

}  // namespace

Vkdtree::Vkdtree(double* x, double* y, int32_t n) { build(x, y, nullptr, n, 2); }

Vkdtree::Vkdtree(double* x, double* y, double* z, int32_t n, double zScale_) : zScale(zScale_) {
  build(x, y, z, n, 3);
}

Vkdtree::~Vkdtree() { delete[] nodes; }

void Vkdtree::build(double* x, double* y, double* z, int32_t n, int32_t dim) {
  if (n < 0) throw VException("Vkdtree: the point count n = " + toString(n) + " is negative.");
  if (n > 0 && (x == nullptr || y == nullptr || (dim == 3 && z == nullptr)))
    throw VException("Vkdtree: a coordinate array is null while n = " + toString(n) + ".");
  nodes = new kd_node_t[n > 0 ? n : 1]();
  for (int32_t i = 0; i < n; ++i) {
    kd_node_t& nd = nodes[i];
    nd.x[0] = x[i];
    nd.x[1] = y[i];
    nd.x[2] = dim == 3 ? z[i] * zScale : 0.0;
    nd.idx = i;
    // A NaN compares false both ways, so the median selection would never settle on it.
    if (std::isnan(nd.x[0]) || std::isnan(nd.x[1]) || std::isnan(nd.x[2])) {
      delete[] nodes;
      nodes = nullptr;
      throw VException("Vkdtree: point " + toString(i) + " has a coordinate that is not a number (NaN).");
    }
  }
  root = makeTree(nodes, n, 0, dim);
}

kd_node_t* Vkdtree::findMedian(kd_node_t* start, kd_node_t* end, int32_t axis) {
  if (end <= start) return nullptr;
  if (end == start + 1) return start;
  kd_node_t* const md = start + (end - start) / 2;
  for (;;) {
    const double pivot = md->x[axis];
    swapPoint(md, end - 1);
    kd_node_t* store = start;
    for (kd_node_t* p = start; p < end; ++p) {
      if (p->x[axis] < pivot) {
        if (p != store) swapPoint(p, store);
        ++store;
      }
    }
    swapPoint(store, end - 1);
    // A duplicate of the median value ends the selection.
    if (store->x[axis] == md->x[axis]) return md;
    if (store > md)
      end = store;
    else
      start = store;
  }
}

kd_node_t* Vkdtree::makeTree(kd_node_t* start, int32_t length, int32_t axis, int32_t dim) {
  if (length <= 0) return nullptr;
  kd_node_t* const end = start + length;
  kd_node_t* md = findMedian(start, end, axis);
  const int32_t next = (axis + 1) % dim;
  md->left = makeTree(start, static_cast<int32_t>(md - start), next, dim);
  md->right = makeTree(md + 1, static_cast<int32_t>(end - (md + 1)), next, dim);
  return md;
}

void Vkdtree::nearestK(kd_node_t* node, const double* query, int32_t axis, int32_t dim, int32_t k) {
  if (k < 1) throw VException("Vkdtree::nearestK: k = " + toString(k) + " is below 1.");
  if (node == nullptr) return;
  const double d = squaredDist(node, query, dim);
  const double dx = node->x[axis] - query[axis];
  ++visited;
  if (static_cast<int32_t>(heap.size()) < k || heap.top().first > d) {
    heap.push({d, node});
    if (static_cast<int32_t>(heap.size()) > k) heap.pop();
  }
  if (d == 0) return;  // an exact hit ends the descent at this node
  const int32_t next = axis + 1 == dim ? 0 : axis + 1;
  nearestK(dx > 0 ? node->left : node->right, query, next, dim, k);
  // Made whether or not the heap is full: the defined behaviour of this search.
  if (dx * dx >= heap.top().first) return;
  nearestK(dx > 0 ? node->right : node->left, query, next, dim, k);
}

void Vkdtree::nearestExact(kd_node_t* node, const double* query, int32_t axis, int32_t dim, kd_node_t*& best,
                           double& bestDist) {
  if (node == nullptr) return;
  const double d = squaredDist(node, query, dim);
  const double dx = node->x[axis] - query[axis];
  ++visited;
  if (best == nullptr || d < bestDist) {
    best = node;
    bestDist = d;
  }
  if (bestDist == 0) return;
  const int32_t next = axis + 1 == dim ? 0 : axis + 1;
  nearestExact(dx > 0 ? node->left : node->right, query, next, dim, best, bestDist);
  if (dx * dx >= bestDist) return;
  nearestExact(dx > 0 ? node->right : node->left, query, next, dim, best, bestDist);
}

int32_t Vkdtree::nearest(double x, double y) {
  // Without points the heap stays empty and there is no top to read.
  if (root == nullptr)
    throw VException("Vkdtree::nearest: the tree holds no points, so there is no nearest point.");
  const double q[3] = {x, y, 0.0};
  visited = 0;
  nearestK(root, q, 0, 2, 1);
  return heap.top().second->idx;
}

void Vkdtree::popAll(int32_t* out) {
  for (int32_t i = 0; !heap.empty(); ++i) {
    out[i] = heap.top().second->idx;
    heap.pop();
  }
}

// A pair that `nearest` left in the heap is dropped first, so that the three answers belong to
// this query alone. Popping keeps the heap's storage for the next query.
void Vkdtree::beginNearest3(const int32_t* out) {
  if (out == nullptr) throw VException("Vkdtree::nearest3: the output array out is null.");
  while (!heap.empty()) heap.pop();
  visited = 0;
}

void Vkdtree::nearest3(double x, double y, int32_t* out) {
  const double q[3] = {x, y, 0.0};
  beginNearest3(out);
  nearestK(root, q, 0, 2, 3);
  popAll(out);
}

void Vkdtree::nearest3(double x, double y, double z, int32_t* out) {
  const double q[3] = {x, y, z * zScale};
  beginNearest3(out);
  nearestK(root, q, 0, 3, 3);
  popAll(out);
}

}  // namespace VCppLib
