// Section reads on the small model (thResultFixtures.h): temp(0, c) = c + 0.25 at timestep 0;
// sea beds 15, 5, 1.5, 10 m; layer centres at 12, 4.5 and 1 m, upper edges at 7, 2 and 0 m.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

namespace {

using thalmod::thResultFile;
using V = std::vector<double>;
constexpr double del = delVal;

struct Cart {
  V d, v, x, y;
};

Cart cart(thResultFile& rf, V x, V y, V z, double dist) {
  double *d, *v, *xC, *yC;
  int32_t noD = 0, noV = 0;
  EXPECT_EQ(rf.extractSectionCart(0, 0, x.data(), y.data(), static_cast<int32_t>(x.size()), z.data(),
                                  static_cast<int32_t>(z.size()), dist, &d, &noD, &v, &noV, &xC, &yC),
            0);
  Cart c{{d, d + noD}, {v, v + noV}, {xC, xC + noD}, {yC, yC + noD}};
  thResultFile::extractSectionCartFreeMem(d, v, xC, yC);
  return c;
}

struct SectionRead : ::testing::Test {
  void SetUp() override {
    thTest::writeSmallModelNc(dir.file("small.nc"));
    rf = std::make_unique<thResultFile>(dir.file("small.nc"));
  }
  thTest::TempDir dir;
  std::unique_ptr<thResultFile> rf;
};

TEST_F(SectionRead, CartesianPointsCarryOverBends) {
  // 10 m at steps of 3: 0, 3, 6, 9, the rest lost; then up a bend with 1 m carried: 52, 55, 58
  Cart c = cart(*rf, {0, 10}, {50, 50}, {}, 3);
  EXPECT_TRUE(c.x == c.d && c.d == (V{0, 3, 6, 9}));
  c = cart(*rf, {0, 10, 10}, {50, 50, 60}, {}, 3);
  EXPECT_TRUE(c.x == (V{0, 3, 6, 9, 10, 10, 10}) && c.y == (V{50, 50, 50, 50, 52, 55, 58}));
  EXPECT_EQ(c.d, (V{0, 3, 6, 9, 12, 15, 18}));
  EXPECT_EQ(cart(*rf, {5}, {5}, {}, 3).x, V{5});  // one point: the start alone
  EXPECT_VEXCEPTION_HAS(cart(*rf, {0, 10}, {0, 0}, {}, 0), "must be a positive number");
}

TEST_F(SectionRead, CartesianValuesByDepth) {
  // The cell is l + e*nol - ebli[e]: every column is taken to own nol = 3 cells.
  const V z = {-1, 0, 1.5, 3, 7, 15, 16};
  struct {
    double x, y;
    V v;
  } cases[] = {
      // a negative depth takes the bottom layer; 7 lies on layer 0's upper edge; 15 is the sea bed
      {50, 50, {0.25, 2.25, 2.25, 1.25, 0.25, 0.25, del}},
      {150, 50, {3.25, 4.25, 4.25, 3.25, del, del, del}},  // sea bed at 5 m: layers 1 and 2
      {270, 30, {6.25, 6.25, 6.25, del, del, del, del}},   // e2, layer 2 only: from 2*3 + 2 - 2 = 6
      {220, 80, {del, del, del, del, del, del, del}},      // e3 from 3*3 = 9: beyond the 9 cells
      {500, 50, {del, del, del, del, del, del, del}},      // outside the mesh
  };
  for (const auto& k : cases) EXPECT_EQ(cart(*rf, {k.x}, {k.y}, z, 1).v, k.v) << "point " << k.x;
}

TEST_F(SectionRead, LayerSectionsAtPointsAndAlongALine) {
  // e0: all three layer centres above its 15 m; e1: 4.5 and 1; outside: skipped, the distance
  // walked goes on; e3: 4.5 and 1, cells 7 and 8.
  const V x = {50, 150, 500, 220}, y = {50, 50, 50, 80};
  const double d3 = 450 + std::sqrt(280.0 * 280.0 + 30.0 * 30.0);
  for (int32_t columns : {1000, 0}) {  // columns read one by one, or the whole item
    rf->sectionColumnReads = columns;
    double *d, *z, *v;
    int32_t n = 0;
    ASSERT_EQ(rf->extractSectionLayers(0, 0, x.data(), y.data(), 4, &d, &z, &v, &n), 0);
    EXPECT_EQ(V(d, d + n), (V{0, 0, 0, 100, 100, d3, d3}));
    EXPECT_EQ(V(z, z + n), (V{12, 4.5, 1, 4.5, 1, 4.5, 1}));
    EXPECT_EQ(V(v, v + n), (V{0.25, 1.25, 2.25, 3.25, 4.25, 7.25, 8.25}));
    thResultFile::extractSectionLayersFreeMem(d, z, v);
  }
  // 100 m at most 40 apart: ceil(2.5) = 3 steps, 4 points, in e0, e0, e1, e1 (3, 3, 2, 2 layers)
  double *d, *z, *v;
  int32_t n = 0;
  rf->extractSectionLayers(0, 0, 50, 50, 150, 50, 40, &d, &z, &v, &n);
  const V want = {0, 0, 0, 100.0 / 3, 100.0 / 3, 100.0 / 3, 200.0 / 3, 200.0 / 3, 100, 100};
  ASSERT_EQ(n, 10);
  for (int32_t i = 0; i < n; ++i) EXPECT_NEAR(d[i], want[i], 1e-12);
  thResultFile::extractSectionLayersFreeMem(d, z, v);
}

}  // namespace
