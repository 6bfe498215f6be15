// Vkdtree: nearest points among a fixed set of 2-D or 3-D points.
//
// The tree is built once over n points given as coordinate arrays; a point keeps its position in
// those arrays as `idx`. All nodes live in one heap array `nodes`, owned by the tree; the links
// `left`/`right` and `root` point into it. The coordinate arrays are copied: the caller keeps
// ownership of them and may free them after construction.
//
// Queries leave state in the tree (`heap`, `visited`), so a tree belongs to one caller at a time.
// `nearest` deliberately keeps its answer in `heap`: the pair of the previous `nearest` query is the
// first candidate of the next one, with the squared distance measured then. A later query thus
// replaces that answer only by a node closer to its own point than that old distance. Callers that
// want the plain nearest point of every query use `nearestExact` (or `nearest3`, which starts and
// ends with an empty heap).
#pragma once

#include <cstdint>
#include <queue>
#include <utility>
#include <vector>

namespace VCppLib {

// One point of the tree.
struct kd_node_t {
  double x[3];       // coordinates; a 2-D tree leaves x[2] at 0 and never reads it
  kd_node_t* left;   // subtree with smaller coordinate on this node's axis
  kd_node_t* right;  // subtree with larger coordinate
  int32_t idx;       // the point's number in the arrays given at construction
};

// A candidate of a k-nearest query: squared distance and node.
using kdCandidate = std::pair<double, kd_node_t*>;

// Orders candidates by squared distance alone so that the worst (largest) one is on top.
struct LargestOnTop {
  bool operator()(const kdCandidate& a, const kdCandidate& b) const { return a.first < b.first; }
};

class Vkdtree {
 public:
  double zScale = 1.0;         // factor on z in a 3-D tree; 1.0 in a 2-D tree
  int32_t visited = 0;         // nodes looked at in the last query (reset by nearest/nearest3)
  kd_node_t* nodes = nullptr;  // [point] all nodes, one allocation, owned
  kd_node_t* root = nullptr;   // null for a tree of no points
  // Candidates of a k-nearest query, worst on top. Made once with the tree; emptied by nearest3,
  // kept by nearest (see above).
  std::priority_queue<kdCandidate, std::vector<kdCandidate>, LargestOnTop> heap;

  // 2-D tree over (x[i], y[i]), i = 0..n-1. n = 0 gives a tree without points (root null).
  // Raises VException for n < 0, for null arrays with n > 0 and for a coordinate that is NaN.
  Vkdtree(double* x, double* y, int32_t n);
  // 3-D tree; the stored z is z[i]*zScale.
  Vkdtree(double* x, double* y, double* z, int32_t n, double zScale);
  ~Vkdtree();
  Vkdtree(const Vkdtree&) = delete;
  Vkdtree& operator=(const Vkdtree&) = delete;

  // `idx` of the node on top of `heap` after a k = 1 search of a 2-D tree. The pair stays in
  // `heap` (carry-over, see above). Raises VException on a tree of no points.
  int32_t nearest(double x, double y);
  // The three nearest points of a 2-D tree, written to out[0..] in the order in which the heap
  // empties: farthest first, nearest last. Fewer than three are written when the tree holds fewer
  // points or when a query point hits a point exactly (the search ends there, the hit comes last);
  // the rest of out is left as it was. Returns nothing; the heap is empty afterwards.
  void nearest3(double x, double y, int32_t* out);
  // The same in 3-D; z is multiplied by zScale.
  void nearest3(double x, double y, double z, int32_t* out);

  // Plain single nearest search of the subtree `node` for the point query[0..dim-1]; axis is the
  // splitting axis of `node` (0 at the root). Start with best = nullptr; on return best is the
  // nearest node found and bestDist its squared distance. Counts `visited` without resetting it.
  void nearestExact(kd_node_t* node, const double* query, int32_t axis, int32_t dim, kd_node_t*& best,
                    double& bestDist);
  // k-nearest search of the subtree `node` into `heap` (which it doesn't empty first). An exact
  // hit ends the descent below that node, and the far side is skipped when dx^2 >= the heap's top
  // distance even while the heap holds fewer than k pairs. Raises VException for k < 1.
  void nearestK(kd_node_t* node, const double* query, int32_t axis, int32_t dim, int32_t k);

  // Build steps. makeTree links the `length` nodes from `start` into a subtree split on `axis`
  // and returns its root (null for length 0). findMedian rearranges [start, end) in place by
  // quickselect on `axis` and returns the node at the midpoint (null for an empty range).
  kd_node_t* makeTree(kd_node_t* start, int32_t length, int32_t axis, int32_t dim);
  kd_node_t* findMedian(kd_node_t* start, kd_node_t* end, int32_t axis);

 private:
  void build(double* x, double* y, double* z, int32_t n, int32_t dim);
  void popAll(int32_t* out);
  void beginNearest3(const int32_t* out);
};

}  // namespace VCppLib
