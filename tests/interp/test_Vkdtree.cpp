// k-d tree: hand-worked small trees, and oracles against a brute-force scan of random points.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

#include "interp/Vkdtree.h"
#include "testutil/thTestUtil.h"

using namespace VCppLib;
using VI = std::vector<int32_t>;
using VD = std::vector<double>;

namespace {

VI nearest3Of(Vkdtree& t, double x, double y) {
  VI out = {-7, -7, -7};
  t.nearest3(x, y, out.data());
  return out;
}

}  // namespace

// Points on a line at x = 0, 1, 3, 6: the root is (3,0) (idx 2), its left child (0,0) (idx 0),
// with (1,0) below it; (6,0) is on the right. In 3-D, z = 0.3 is stored as 3 with zScale 10, so
// (0,0,0.3) is the farthest of the three.
TEST(Vkdtree, NearestOrderExactHitCarryOverAndScaledZ) {
  VD x = {0, 1, 3, 6}, y = {0, 0, 0, 0}, x3 = {0, 1, 0}, z = {0, 0, 0.3};
  Vkdtree t(x.data(), y.data(), 4);
  EXPECT_EQ(t.root->idx, 2);
  EXPECT_EQ(nearest3Of(t, 0.4, 0), (VI{2, 1, 0}));  // farthest first
  EXPECT_TRUE(t.heap.empty());
  EXPECT_EQ(nearest3Of(t, 1, 0), (VI{2, 0, 1}));    // hit last
  EXPECT_EQ(nearest3Of(t, 3, 0), (VI{2, -7, -7}));  // hit on the root ends the search
  // nearest keeps its pair: a later query gets a new answer only when closer than the old distance
  // (0.01 from (0.1, 0)). nearest3 starts afresh; from (5.5, 0) it takes (3,0) and (6,0), and
  // 2.5^2 reaches the top of its heap, so the left side is skipped.
  EXPECT_EQ((VI{t.nearest(0.1, 0), t.nearest(5.5, 0), t.nearest(6, 0)}), (VI{0, 0, 3}));
  EXPECT_EQ(nearest3Of(t, 5.5, 0), (VI{2, 3, -7}));
  Vkdtree t3(x3.data(), y.data(), z.data(), 3, 10.0);
  VI out(3);
  t3.nearest3(0.1, 0, 0.05, out.data());
  EXPECT_EQ(out, (VI{2, 1, 0}));
}

TEST(Vkdtree, FewPointsAndDuplicates) {
  VD x = {2}, y = {3};
  Vkdtree none(x.data(), y.data(), 0), one(x.data(), y.data(), 1);
  EXPECT_VEXCEPTION(none.nearest(0, 0),
                    "Vkdtree::nearest: the tree holds no points, so there is no nearest point.");
  EXPECT_EQ(nearest3Of(none, 0, 0), (VI{-7, -7, -7}));
  EXPECT_TRUE(one.nearest(50, 50) == 0 && nearest3Of(one, 50, 50) == (VI{0, -7, -7}));
  EXPECT_VEXCEPTION(Vkdtree(x.data(), y.data(), -1), "Vkdtree: the point count n = -1 is negative.");
  VD nanX = {1, NAN};
  EXPECT_VEXCEPTION(Vkdtree(nanX.data(), nanX.data(), 2),
                    "Vkdtree: point 1 has a coordinate that is not a number (NaN).");
  // 20 copies of one point and one other point: the selection ends and all are findable.
  VD dx(21, 1.0), dy(21, 1.0);
  dx[20] = dy[20] = 5;
  Vkdtree dup(dx.data(), dy.data(), 21);
  EXPECT_LT(dup.nearest(1, 1), 20);
  EXPECT_EQ(nearest3Of(dup, 4, 4.5)[2], 20);
}

// nearestExact is the plain nearest point. nearest3 on a fresh heap: its last entry is a true
// nearest, its order runs from far to near, and its k-th distance is never below the true k-th
// (the early stop may keep a farther candidate, never a nearer one than exists). nearest follows
// the carry-over rule worked out from the brute-force nearest.
TEST(Vkdtree, OracleAgainstBruteForce) {
  std::mt19937 gen(11);
  std::uniform_real_distribution<double> u(0, 100);
  const int32_t n = 1000;
  VD x(n), y(n);
  for (int32_t i = 0; i < n; ++i) x[i] = u(gen), y[i] = u(gen);
  Vkdtree t(x.data(), y.data(), n), carry(x.data(), y.data(), n);
  auto d2 = [&](int32_t i, double qx, double qy) {
    return (x[i] - qx) * (x[i] - qx) + (y[i] - qy) * (y[i] - qy);
  };
  int32_t carriedIdx = -1;
  double carriedDist = 0;
  for (int q = 0; q < 300; ++q) {
    const double qx = u(gen), qy = u(gen);
    VI order(n);
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&](int32_t a, int32_t b) { return d2(a, qx, qy) < d2(b, qx, qy); });
    kd_node_t* best = nullptr;
    double bestDist = 0;
    t.nearestExact(t.root, VD{qx, qy}.data(), 0, 2, best, bestDist);
    EXPECT_EQ(best->idx, order[0]);
    const VI out = nearest3Of(t, qx, qy);
    EXPECT_EQ(out[2], order[0]);
    for (int k = 0; k < 3; ++k) EXPECT_GE(d2(out[k], qx, qy), d2(order[2 - k], qx, qy));
    EXPECT_TRUE(d2(out[0], qx, qy) > d2(out[1], qx, qy) && d2(out[1], qx, qy) > d2(out[2], qx, qy));
    if (carriedIdx < 0 || d2(order[0], qx, qy) < carriedDist)
      carriedIdx = order[0], carriedDist = d2(order[0], qx, qy);
    EXPECT_EQ(carry.nearest(qx, qy), carriedIdx);
  }
}
