// The element that holds a point: a linear scan by the crossing rule.
#include <gtest/gtest.h>

#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"

namespace {

using thalmod::thMesh2D;

// The unit square as two triangles split along the diagonal from (0,0) to (1,1).
void unitSquare(thMesh2D& m, bool upperFirst) {
  const std::vector<int32_t> lower = {0, 1, 2}, upper = {0, 2, 3};
  thTest::buildMesh(m, {0, 1, 1, 0}, {0, 0, 1, 1}, {0, 0, 0, 0},
                    upperFirst ? std::vector{upper, lower} : std::vector{lower, upper});
}

TEST(PointElem, PointsInsideOutsideAndOnFaces) {
  thMesh2D m, u;
  unitSquare(m, false);
  unitSquare(u, true);
  // On the shared diagonal the crossing rule counts the point in the lower triangle only, whatever
  // the element order; the rule's edges are half-open: the left edge of the square is in, the
  // right edge is out.
  const struct {
    double x, y;
    int32_t lowerFirst, upperFirst;
  } cases[] = {{0.7, 0.2, 0, 1},   {0.2, 0.7, 1, 0}, {2.0, 0.5, -1, -1}, {0.5, -0.1, -1, -1},
               {0.5, 1.5, -1, -1}, {0.5, 0.5, 0, 1}, {0.0, 0.5, 1, 0},   {1.0, 0.5, -1, -1}};
  for (const auto& c : cases) {
    EXPECT_EQ(m.pointElem(c.x, c.y), c.lowerFirst) << c.x << " " << c.y;
    EXPECT_EQ(u.pointElem(c.x, c.y), c.upperFirst) << c.x << " " << c.y;
  }
}

TEST(PointElem, MixedLonLatAndEmptyMeshes) {
  // Two quadrilaterals and two triangles over a 3 x 1 strip: every centre finds its element.
  thMesh2D m, l, empty, none;
  thTest::buildMesh(m, {0, 1, 2, 3, 0, 1, 2, 3}, {0, 0, 0, 0, 1, 1, 1, 1}, std::vector<int32_t>(8, 0),
                    {{0, 1, 5, 4}, {1, 2, 6}, {1, 6, 5}, {2, 3, 7, 6}});
  for (int32_t e = 0; e < m.noe; ++e) EXPECT_EQ(m.pointElem(m.exCoor[e], m.eyCoor[e]), e) << "element " << e;
  EXPECT_EQ(m.pointElem(1.9, 0.2), 1);
  EXPECT_EQ(m.pointElem(1.1, 0.8), 2);
  // A lon/lat mesh is searched in degrees.
  l.projection = "LONLAT";
  l.readMeshText("4 1\n10 60\n10.1 60\n10.1 60.1\n10 60.1\n0 1 2 3\n");
  ASSERT_TRUE(l.isLonLat);
  EXPECT_EQ(l.pointElem(10.05, 60.05), 0);
  EXPECT_EQ(l.pointElem(10.15, 60.05), -1);
  // Meshes without elements, initialised or never, hold no point.
  EXPECT_EQ(empty.pointElem(0, 0), -1);
  thTest::buildMesh(none, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}, {});
  EXPECT_EQ(none.pointElem(0.1, 0.1), -1);
}

}  // namespace
