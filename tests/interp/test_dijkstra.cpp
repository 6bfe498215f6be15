// Shortest paths: distances and paths of a small mesh graph and a small raster, worked out by hand.
#include <string>
#include <vector>

#include "interp/dijkstra.h"
#include "testutil/thTestUtil.h"

using namespace VCppLib;
using VI = std::vector<int32_t>;

// Unit square 0 (0,0), 1 (1,0), 2 (1,1), 3 (0,1) as triangles (0,1,2), (0,2,3); node 4 is in no
// element; node 5 lies on node 3 and joins triangle (2,3,5): its edge to 3 costs 0 and is no edge.
// Then the quad 0-1-2-3: node 2 is 20000 away through 1 or 3; among equal distances the higher
// node (3) leaves the queue first, so it becomes the predecessor.
TEST(dijkstra, GraphDistancesAndPaths) {
  std::vector<double> x = {0, 1, 1, 0, 7, 0}, y = {0, 0, 1, 1, 7, 1};
  VI nonpe = {3, 3, 3}, en = {0, 1, 2, 0, 2, 3, 2, 3, 5}, four = {4}, quad = {0, 1, 2, 3};
  dijkstra d;
  d.initGraph(6, x.data(), y.data(), 3, nonpe.data(), en.data());
  d.run(0);
  EXPECT_EQ(VI(d.dist, d.dist + 6), (VI{0, 10000, 14142, 10000, 999999999, 24142}));
  EXPECT_EQ(d.path(5), (VI{2, 5}));
  EXPECT_TRUE(d.path(0).empty() && d.path(4).empty());
  std::string text = "path:";
  d.pathText(5, text);
  EXPECT_EQ(text, "path: 2 5");
  d.run(6);  // a source outside reaches nothing
  EXPECT_EQ(d.dist[0], 999999999);
  EXPECT_EQ(d.distanceField(0, 0), nullptr);

  d.initGraph(4, x.data(), y.data(), 1, four.data(), quad.data());
  d.run(0);
  EXPECT_EQ(d.path(2), (VI{3, 2}));
  d.useTarget = true, d.target = 3;  // stops when 3 leaves the queue, before 2 is reached
  d.run(0);
  EXPECT_TRUE(d.dist[3] == 10000 && d.dist[2] == 999999999);

  dijkstra bad;
  VI two = {2}, outside = {0, 2};
  EXPECT_VEXCEPTION(bad.initGraph(2, x.data(), y.data(), 1, two.data(), outside.data()),
                    "dijkstra::initGraph: en holds node 2 in element 0, outside the nodes 0..1.");
  EXPECT_VEXCEPTION(bad.initGraph(46341, x.data(), y.data(), 0, nullptr, nullptr),
                    "dijkstra::initGraph: non = 46341 is outside 0..46340; the graph keeps a non x "
                    "non matrix, and at most 46340 nodes keep its entries within 2147483647.");
  EXPECT_EQ(bad.n, 0);
  EXPECT_VEXCEPTION(bad.path(0), "dijkstra::path: target = 0 is outside the search, which has no nodes yet.");
}

// Raster of 3 x 2 cells of 2 by 1: extent 6 gives scale 1e6, steps 2e6 (x), 1e6 (y) and
// trunc(sqrt(5)*1e6) = 2236067 (diagonal). Cell (1,0) is blocked. The scale follows the extent.
TEST(dijkstra, RasterDistancesPathsFieldAndScale) {
  uint8_t row0[3] = {0, 1, 0}, row1[3] = {0, 0, 0};
  uint8_t* mask[2] = {row0, row1};
  dijkstra d;
  d.initGrid(3, 2, 2.0, 1.0, mask);
  EXPECT_EQ(VI({d.scale, d.xCost, d.yCost, d.diagCost}), (VI{1000000, 2000000, 1000000, 2236067}));
  double** f = d.distanceField(0, 0);
  EXPECT_EQ(std::vector<double>(f[0], f[0] + 3), (std::vector<double>{0, 999999999.0, 4.472134}));
  EXPECT_EQ(std::vector<double>(f[1], f[1] + 3), (std::vector<double>{1, 2.236067, 4.236067}));
  delete[] f[0];
  delete[] f;
  EXPECT_EQ(d.pathXY(2, 0), (VI{4, 2}));  // over the blocked cell diagonally
  EXPECT_VEXCEPTION(d.pathXY(3, 0),
                    "dijkstra::pathXY: cell i = 3, j = 0 lies outside the raster of 3 by 2 cells.");
  row0[0] = 1;  // a blocked source is not expanded
  d.run(0);
  EXPECT_EQ(d.dist[3], 999999999);

  struct Case {
    int32_t nx, ny;
    double dx, dy;
    int32_t scale;
  };
  for (const Case& c :
       {Case{10, 1, 0.005, 0.005, 10000000}, Case{1000, 10, 1.2345, 1, 1000}, Case{1, 1, 1e8, 1, 1}}) {
    d.initGrid(c.nx, c.ny, c.dx, c.dy, nullptr);
    EXPECT_EQ(d.scale, c.scale) << c.nx;
  }
  EXPECT_VEXCEPTION(d.initGrid(1, 1, 0.0001, 0.0001, nullptr),
                    "dijkstra::initGrid: the raster extent 0.0001 cannot be scaled to integer "
                    "costs; it must lie above 0.0001 and be finite.");
}
