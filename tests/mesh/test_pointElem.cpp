// The element that holds a point: a linear scan by the crossing rule.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"

namespace {

using thalmod::thMesh2D;

// Fills the primary arrays and initialises the mesh.
void makeMesh(thMesh2D& m, std::vector<double> x, std::vector<double> y, std::vector<int32_t> nonpe,
              std::vector<int32_t> en, const std::string& projection = "UTM32") {
  m.projection = projection;
  m.non = static_cast<int32_t>(x.size());
  m.nxCoor = new double[x.size()];
  m.nyCoor = new double[y.size()];
  m.nt = new int32_t[x.size()]();
  std::copy(x.begin(), x.end(), m.nxCoor);
  std::copy(y.begin(), y.end(), m.nyCoor);
  m.noe = static_cast<int32_t>(nonpe.size());
  m.nonpe = new int32_t[nonpe.size()];
  m.en = new int32_t[en.size()];
  std::copy(nonpe.begin(), nonpe.end(), m.nonpe);
  std::copy(en.begin(), en.end(), m.en);
  m.initMesh();
}

// The unit square as two triangles split along the diagonal from (0,0) to (1,1).
void unitSquare(thMesh2D& m, bool upperFirst) {
  std::vector<int32_t> lower = {0, 1, 2}, upper = {0, 2, 3}, en;
  for (const auto& t : upperFirst ? std::vector{upper, lower} : std::vector{lower, upper})
    en.insert(en.end(), t.begin(), t.end());
  makeMesh(m, {0, 1, 1, 0}, {0, 0, 1, 1}, {3, 3}, en);
}

TEST(PointElem, PointsInsideOutsideAndOnFaces) {
  thMesh2D m;
  unitSquare(m, false);
  EXPECT_EQ(m.pointElem(0.7, 0.2), 0);  // below the diagonal
  EXPECT_EQ(m.pointElem(0.2, 0.7), 1);  // above it
  EXPECT_EQ(m.pointElem(2.0, 0.5), -1);
  EXPECT_EQ(m.pointElem(0.5, -0.1), -1);
  EXPECT_EQ(m.pointElem(0.5, 1.5), -1);
  // On the shared diagonal the crossing rule counts the point in the lower triangle only.
  EXPECT_EQ(m.pointElem(0.5, 0.5), 0);
  // The rule's edges are half-open: the left edge of the square is in, the right edge is out.
  EXPECT_EQ(m.pointElem(0.0, 0.5), 1);
  EXPECT_EQ(m.pointElem(1.0, 0.5), -1);
}

TEST(PointElem, SharedFaceFollowsTheRuleNotTheElementOrder) {
  // With the upper triangle first, the diagonal point is still not in it: the scan goes on to
  // the lower triangle, now element 1.
  thMesh2D m;
  unitSquare(m, true);
  EXPECT_EQ(m.pointElem(0.5, 0.5), 1);
  EXPECT_EQ(m.pointElem(0.2, 0.7), 0);
}

TEST(PointElem, EveryCentreFindsItsElementInAMixedMesh) {
  // Two quadrilaterals and two triangles over a 3 x 1 strip.
  thMesh2D m;
  makeMesh(m, {0, 1, 2, 3, 0, 1, 2, 3}, {0, 0, 0, 0, 1, 1, 1, 1}, {4, 3, 3, 4},
           {0, 1, 5, 4, 1, 2, 6, 1, 6, 5, 2, 3, 7, 6});
  for (int32_t e = 0; e < m.noe; ++e) EXPECT_EQ(m.pointElem(m.exCoor[e], m.eyCoor[e]), e) << "element " << e;
  EXPECT_EQ(m.pointElem(2.5, 0.5), 3);
  EXPECT_EQ(m.pointElem(1.9, 0.2), 1);
  EXPECT_EQ(m.pointElem(1.1, 0.8), 2);
}

TEST(PointElem, LonLatMeshesAreSearchedInDegrees) {
  thMesh2D m;
  makeMesh(m, {10.0, 10.1, 10.1, 10.0}, {60.0, 60.0, 60.1, 60.1}, {4}, {0, 1, 2, 3}, "LONLAT");
  ASSERT_TRUE(m.isLonLat);
  EXPECT_EQ(m.pointElem(10.05, 60.05), 0);
  EXPECT_EQ(m.pointElem(10.15, 60.05), -1);
}

TEST(PointElem, MeshesWithoutElementsHoldNoPoint) {
  thMesh2D empty;
  EXPECT_EQ(empty.pointElem(0, 0), -1);  // never initialised
  thMesh2D none;
  makeMesh(none, {0, 1, 0}, {0, 0, 1}, {}, {});
  EXPECT_EQ(none.pointElem(0.1, 0.1), -1);
}

}  // namespace
