// initMesh on small meshes worked out by hand: faces, sides, element face lists, boundaries,
// node types, areas, Voronoi points, normals and distances.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thMesh2D;

namespace {

template <typename T>
std::vector<T> arr(const T* p, int n) {
  return std::vector<T>(p, p + n);
}

std::vector<int> ints(std::initializer_list<int> v) { return std::vector<int>(v); }

// The exact right angle as the mesh measures it: the degree factor is the rounded 57.29578.
const double rightAngleResidue = std::fabs(90.0 - std::acos(0.0) * 57.29578);

}  // namespace

TEST(MeshInit, SingleAcuteTriangle) {
  thMesh2D m;
  m.readMeshText("3 1\n0 0 0\n4 0 0\n1 3 0\n0 1 2\n");
  EXPECT_EQ(m.nvf, 3);
  EXPECT_EQ(m.nivf, 0);
  EXPECT_EQ(m.tnbe, 0);
  EXPECT_EQ(m.nBnd, 0);
  EXPECT_EQ(arr(m.vft, 3), ints({99, 99, 99}));
  EXPECT_EQ(arr(m.nt, 3), ints({99, 99, 99}));
  // closed faces keep the element's own node order
  EXPECT_EQ(arr(m.vfn, 6), ints({0, 1, 1, 2, 2, 0}));
  EXPECT_EQ(arr(m.vfe, 6), ints({0, -99, 0, -99, 0, -99}));
  // three equal keys: the quicksort swaps the outer two
  EXPECT_EQ(arr(m.evf, 3), ints({2, 1, 0}));
  EXPECT_EQ(arr(m.evfNbr, 3), ints({-99, -99, -99}));
  for (int k = 0; k < 3; k++) EXPECT_EQ(m.evfSign[k], 0);
  EXPECT_EQ(m.nivfpe[0], 0);
  EXPECT_EQ(m.nbvfpe[0], 0);
  EXPECT_DOUBLE_EQ(m.eArea[0], 6.0);
  EXPECT_DOUBLE_EQ(m.eAreaInv[0], 1.0 / 6.0);
  EXPECT_DOUBLE_EQ(m.exCoor[0], 5.0 / 3.0);
  EXPECT_DOUBLE_EQ(m.eyCoor[0], 1.0);
  EXPECT_DOUBLE_EQ(m.totArea, 6.0);
  EXPECT_DOUBLE_EQ(m.meanElemSize, std::sqrt(6.0));
  // circumcentre: x = 2 on the bisector of the base; 4 + y^2 = 1 + (y-3)^2 gives y = 1
  EXPECT_NEAR(m.eVoronoiX[0], 2.0, 1e-12);
  EXPECT_NEAR(m.eVoronoiY[0], 1.0, 1e-12);
  EXPECT_TRUE(m.eIsAcute[0]);
  EXPECT_TRUE(m.isOrthogonal);
  EXPECT_TRUE(m.hasVoronoi);
  EXPECT_NE(*m.initFlag, 0);
  // face 0: (0,0)-(4,0), foot (2,0); face 1: (4,0)-(1,3), foot (2.5,1.5); face 2: (1,3)-(0,0), foot (0.5,1.5)
  EXPECT_NEAR(m.vfxNormL[0], 0.0, 1e-12);
  EXPECT_NEAR(m.vfyNormL[0], -1.0, 1e-12);
  EXPECT_NEAR(m.vfxNormL[1], std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(m.vfyNormL[1], std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(m.vfxNormL[2], -1.5 / std::sqrt(2.5), 1e-12);
  EXPECT_NEAR(m.vfyNormL[2], 0.5 / std::sqrt(2.5), 1e-12);
  EXPECT_DOUBLE_EQ(m.vfl[0], 4.0);
  EXPECT_DOUBLE_EQ(m.vfl[1], std::sqrt(18.0));
  EXPECT_DOUBLE_EQ(m.vfl[2], std::sqrt(10.0));
  EXPECT_DOUBLE_EQ(m.vfdx[1], -3.0);
  EXPECT_DOUBLE_EQ(m.vfdy[1], 3.0);
  EXPECT_DOUBLE_EQ(m.vfxCoor[1], 2.5);
  EXPECT_DOUBLE_EQ(m.vfyCoor[1], 1.5);
  const double off[3] = {1.0, std::sqrt(0.5), std::sqrt(2.5)};
  const double offX[3] = {0.0, 0.5, 1.5}, offY[3] = {1.0, 0.5, 0.5};
  for (int f = 0; f < 3; f++) {
    EXPECT_NEAR(m.vfeDist[2 * f], off[f], 1e-12);
    EXPECT_NEAR(m.vfeDist[2 * f + 1], off[f], 1e-12);
    EXPECT_NEAR(m.vfDist[f], 2 * off[f], 1e-12);
    EXPECT_NEAR(m.vfDistInv[f], 0.5 / off[f], 1e-12);
    EXPECT_NEAR(m.vfDistX[f], 2 * offX[f], 1e-12);
    EXPECT_NEAR(m.vfDistY[f], 2 * offY[f], 1e-12);
  }
  // evf is [2, 1, 0]
  EXPECT_NEAR(m.evfDist[0], off[2], 1e-12);
  EXPECT_NEAR(m.evfDist[2], off[0], 1e-12);
  EXPECT_EQ(m.utmZone, 32);
  EXPECT_FALSE(m.isLonLat);
  EXPECT_EQ(m.nxUTM, m.nxCoor);  // the same array, not a copy
}

TEST(MeshInit, RightTriangleAndStrayNodes) {
  thMesh2D m;
  // node 3 is in no element: 0 becomes 99; node 4 keeps its 5
  m.readMeshText("5 1\n0 0 0\n4 0 0\n0 3 0\n9 9 0\n8 8 5\n0 1 2\n");
  EXPECT_DOUBLE_EQ(m.eVoronoiX[0], 4.0 / 3.0);
  EXPECT_DOUBLE_EQ(m.eVoronoiY[0], 1.0);
  EXPECT_FALSE(m.eIsAcute[0]);
  EXPECT_FALSE(m.isOrthogonal);
  EXPECT_EQ(m.nt[3], 99);
  EXPECT_EQ(m.nt[4], 5);
  EXPECT_DOUBLE_EQ(m.xMean, 21.0 / 5.0);
  EXPECT_DOUBLE_EQ(m.yMean, 20.0 / 5.0);
}

TEST(MeshInit, TwoTrianglesShareOneInnerFace) {
  thMesh2D m;
  // a kite: element 0 above the x axis, element 1 below it
  m.readMeshText("4 2\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n");
  EXPECT_EQ(m.nvf, 5);
  EXPECT_EQ(m.nivf, 1);
  EXPECT_EQ(arr(m.vft, 5), ints({0, 99, 99, 99, 99}));
  EXPECT_EQ(arr(m.vfe, 10), ints({0, 1, 0, -99, 0, -99, 1, -99, 1, -99}));
  // the inner face runs against element 0's node order: 1 -> 0
  EXPECT_EQ(arr(m.vfn, 10), ints({1, 0, 1, 2, 2, 0, 0, 3, 3, 1}));
  EXPECT_EQ(arr(m.evf, 6), ints({0, 2, 1, 0, 4, 3}));
  EXPECT_EQ(arr(m.evfNbr, 6), ints({1, -99, -99, 0, -99, -99}));
  EXPECT_EQ(m.evfSign[0], 1);
  EXPECT_EQ(m.evfSign[3], -1);
  EXPECT_EQ(m.evfSign[1], 0);
  EXPECT_EQ(arr(m.nivfpe, 2), ints({1, 1}));
  EXPECT_EQ(arr(m.nt, 4), ints({99, 99, 99, 99}));  // closed faces come after the inner one
  // circumcentres (2, 5/6) and (2, -5/6)
  EXPECT_NEAR(m.eVoronoiY[0], 5.0 / 6.0, 1e-12);
  EXPECT_NEAR(m.eVoronoiY[1], -5.0 / 6.0, 1e-12);
  EXPECT_NEAR(m.vfxNormL[0], 0.0, 1e-12);
  EXPECT_NEAR(m.vfyNormL[0], -1.0, 1e-12);
  EXPECT_NEAR(m.vfDist[0], 5.0 / 3.0, 1e-12);
  EXPECT_NEAR(m.vfeDist[0], 5.0 / 6.0, 1e-12);
  EXPECT_NEAR(m.vfeDist[1], 5.0 / 6.0, 1e-12);
  EXPECT_NEAR(m.vfDistX[0], 0.0, 1e-12);
  EXPECT_NEAR(m.vfDistY[0], 5.0 / 3.0, 1e-12);
  EXPECT_NEAR(m.anglesVF[0], rightAngleResidue, 1e-12);
  EXPECT_TRUE(m.isOrthogonal);
  EXPECT_DOUBLE_EQ(m.totArea, 12.0);
  EXPECT_DOUBLE_EQ(m.areaCenterX, 2.0);
  EXPECT_DOUBLE_EQ(m.areaCenterY, 0.0);
  EXPECT_DOUBLE_EQ(m.meanElemSize, std::sqrt(6.0));

  m.initElemNbrs();
  EXPECT_EQ(arr(m.eNbrNo, 2), ints({1, 1}));
  EXPECT_EQ(arr(m.eNbrIdx, 2), ints({0, 1}));
  EXPECT_EQ(arr(m.eNbr, 2), ints({1, 0}));
  EXPECT_EQ(arr(m.eNbrVf, 2), ints({0, 0}));
}

TEST(MeshInit, UnitSquareGrid) {
  thMesh2D m;
  m.readMeshText(thTest::gridMeshText(2, 2));
  EXPECT_EQ(m.nvf, 12);
  EXPECT_EQ(m.nivf, 4);
  EXPECT_EQ(m.nevf, 16);
  // inner faces in order of discovery: {1,4}, {3,4}, {4,5}, {4,7}
  EXPECT_EQ(arr(m.vfn, 8), ints({4, 1, 3, 4, 4, 5, 7, 4}));
  EXPECT_EQ(arr(m.vfe, 8), ints({0, 1, 0, 2, 1, 3, 2, 3}));
  // closed faces in order of discovery
  EXPECT_EQ(arr(m.vfn + 8, 16), ints({0, 1, 3, 0, 1, 2, 2, 5, 7, 6, 6, 3, 5, 8, 8, 7}));
  EXPECT_EQ(arr(m.evf, 4), ints({1, 0, 5, 4}));
  EXPECT_EQ(arr(m.nt, 9), ints({99, 99, 99, 99, 0, 99, 99, 99, 99}));
  // unit normals from the lower to the higher element
  EXPECT_NEAR(m.vfxNormL[0], 1.0, 1e-12);
  EXPECT_NEAR(m.vfyNormL[1], 1.0, 1e-12);
  EXPECT_NEAR(m.vfyNormL[2], 1.0, 1e-12);
  EXPECT_NEAR(m.vfxNormL[3], 1.0, 1e-12);
  for (int f = 0; f < 12; f++) {
    EXPECT_DOUBLE_EQ(m.vfl[f], 1.0);
    EXPECT_NEAR(m.vfDist[f], 1.0, 1e-12);
    EXPECT_NEAR(m.vfeDist[2 * f], 0.5, 1e-12);
    EXPECT_NEAR(m.vfeDist[2 * f + 1], 0.5, 1e-12);
  }
  EXPECT_TRUE(m.isOrthogonal);
  for (int e = 0; e < 4; e++) {
    EXPECT_FALSE(m.eIsAcute[e]);
    EXPECT_DOUBLE_EQ(m.eArea[e], 1.0);
  }
  for (int f = 0; f < 4; f++) EXPECT_NEAR(m.anglesVF[f], rightAngleResidue, 1e-12);
  EXPECT_GT(rightAngleResidue, 7e-7);
  EXPECT_LT(rightAngleResidue, 8e-7);

  // the second run keeps the points and tests them by the 5 degree rule
  double* anglesBefore = m.anglesVF;
  m.initMesh();
  for (int e = 0; e < 4; e++) EXPECT_TRUE(m.eIsAcute[e]);
  EXPECT_TRUE(m.isOrthogonal);
  EXPECT_EQ(m.anglesVF, anglesBefore);  // reused
  EXPECT_EQ(m.nvf, 12);
  EXPECT_EQ(arr(m.nt, 9), ints({99, 99, 99, 99, 0, 99, 99, 99, 99}));

  m.initElemNbrs();
  // element 0's inner faces in evf order: face 1 (to element 2), face 0 (to element 1)
  EXPECT_EQ(arr(m.eNbrNo, 4), ints({2, 2, 2, 2}));
  EXPECT_EQ(arr(m.eNbrIdx, 4), ints({0, 2, 4, 6}));
  EXPECT_EQ(m.eNbr[0], 2);
  EXPECT_EQ(m.eNbr[1], 1);
  EXPECT_EQ(m.eNbrVf[0], 1);
  EXPECT_EQ(m.eNbrVf[1], 0);
}

TEST(MeshInit, OpenBoundariesAndCornerCode) {
  thMesh2D m;
  // three unit quads in a row; top nodes 5, 6 on boundary 2, east node 3 on boundary 3, the
  // north-east corner 7 joins boundaries 2 and 3
  m.readMeshText(
      "8 3\n0 0 0\n1 0 0\n2 0 0\n3 0 3\n0 1 99\n1 1 2\n2 1 2\n3 1 -203\n"
      "0 1 5 4\n1 2 6 5\n2 3 7 6\n");
  EXPECT_EQ(m.nvf, 10);
  EXPECT_EQ(m.nivf, 2);
  EXPECT_EQ(m.tnbe, 3);
  EXPECT_EQ(arr(m.vft, 10), ints({0, 0, 2, 2, 3, 99, 99, 99, 99, 99}));
  // boundary 2 starts at its free end with the domain on the left: 7 -> 6, then 6 -> 5
  EXPECT_EQ(arr(m.vfn, 20), ints({5, 1, 6, 2, 6, 7, 5, 6, 7, 3, 0, 1, 5, 4, 4, 0, 1, 2, 2, 3}));
  EXPECT_EQ(arr(m.vfe, 20), ints({0, 1, 1, 2, 2, 3, 1, 4, 2, 5, 0, -99, 0, -99, 0, -99, 1, -99, 2, -99}));
  EXPECT_EQ(m.nBnd, 2);
  EXPECT_EQ(arr(m.bndId, 2), ints({2, 3}));
  EXPECT_EQ(arr(m.bndNoFaces, 2), ints({2, 1}));
  EXPECT_EQ(arr(m.bndFirst, 2), ints({0, 2}));
  EXPECT_EQ(arr(m.bndElem, 3), ints({2, 1, 2}));
  // node types: open wins over closed, the later boundary over the earlier
  EXPECT_EQ(arr(m.nt, 8), ints({99, 99, 99, 3, 99, 2, 2, 3}));
  // element 2: inner face, then open 2, open 3, closed
  EXPECT_EQ(arr(m.evf + 8, 4), ints({1, 2, 4, 9}));
  EXPECT_EQ(arr(m.evfNbr + 8, 4), ints({1, -2, -3, -99}));
  EXPECT_EQ(m.evfSign[8], -1);
  EXPECT_EQ(m.evfSign[9], 1);
  EXPECT_EQ(m.evfSign[10], 1);
  EXPECT_EQ(m.evfSign[11], 0);
  EXPECT_EQ(m.nivfpe[2], 1);
  EXPECT_EQ(m.nbvfpe[2], 2);
  // outward normals of the open faces; ghost columns mirror their element
  EXPECT_NEAR(m.vfyNormL[2], 1.0, 1e-12);
  EXPECT_NEAR(m.vfxNormL[4], 1.0, 1e-12);
  EXPECT_NEAR(m.vfDist[4], 1.0, 1e-12);
  EXPECT_NEAR(m.vfDistX[4], 1.0, 1e-12);
  EXPECT_NEAR(m.vfDistY[4], 0.0, 1e-12);
}

TEST(MeshInit, FaceTypesFromNodeTypes) {
  // face {0,1} is face 0 whether it is open or closed: the other two are closed
  auto typeOfOnlyOpenFace = [](int ta, int tb) {
    thMesh2D m;
    m.readMeshText("3 1\n0 0 " + std::to_string(ta) + "\n1 0 " + std::to_string(tb) + "\n0 1 99\n0 1 2\n");
    return m.vft[0];
  };
  EXPECT_EQ(typeOfOnlyOpenFace(2, -203), 2);
  EXPECT_EQ(typeOfOnlyOpenFace(-203, 3), 3);
  EXPECT_EQ(typeOfOnlyOpenFace(4, -203), 99);
  EXPECT_EQ(typeOfOnlyOpenFace(2, 3), 99);
  EXPECT_EQ(typeOfOnlyOpenFace(7, 7), 7);
  // types that name no boundary give closed faces
  EXPECT_EQ(typeOfOnlyOpenFace(-203, -203), 99);
  EXPECT_EQ(typeOfOnlyOpenFace(150, 150), 99);
  EXPECT_EQ(typeOfOnlyOpenFace(-5, -5), 99);
  EXPECT_EQ(typeOfOnlyOpenFace(-2147483647 - 1, 0), 99);
}

TEST(MeshInit, OpenRingStartsAtItsFirstFace) {
  thMesh2D m;
  m.readMeshText("4 1\n0 0 1\n1 0 1\n1 1 1\n0 1 1\n0 1 2 3\n");
  EXPECT_EQ(m.nivf, 0);
  EXPECT_EQ(m.tnbe, 4);
  EXPECT_EQ(m.nBnd, 1);
  // walk from node 0 of face {0,1}: {3,0}, {2,3}, {1,2}; each runs against the element
  EXPECT_EQ(arr(m.vfn, 8), ints({1, 0, 0, 3, 3, 2, 2, 1}));
  EXPECT_EQ(arr(m.vfe, 8), ints({0, 1, 0, 2, 0, 3, 0, 4}));
  EXPECT_EQ(arr(m.evf, 4), ints({2, 1, 0, 3}));
  EXPECT_EQ(arr(m.nt, 4), ints({1, 1, 1, 1}));
  // outward normals
  EXPECT_NEAR(m.vfyNormL[0], -1.0, 1e-12);
  EXPECT_NEAR(m.vfxNormL[1], -1.0, 1e-12);
  EXPECT_NEAR(m.vfyNormL[2], 1.0, 1e-12);
  EXPECT_NEAR(m.vfxNormL[3], 1.0, 1e-12);
}

TEST(MeshInit, SeveralChainsOfOneBoundaryNumber) {
  // boundary 1 on the west and on the east side of a strip: two chains. Every face must get
  // a number of its own, each chain walked in order.
  thMesh2D m;
  m.readMeshText(thTest::gridMeshText(3, 2, 1.0, 1.0, false, 1, 1));
  ASSERT_EQ(m.tnbe, 4);
  std::vector<int> seen(m.nvf, 0);
  for (int e = 0; e < m.noe; e++)
    for (int i = 0; i < m.nonpe[e]; i++) seen[m.evf[m.eni[e] + i]]++;
  for (int f = 0; f < m.nvf; f++) EXPECT_GE(seen[f], 1) << "face " << f << " has no element";
  for (int i = 0; i < 4; i += 2) {
    const int f = m.nivf + i;
    // consecutive faces of a chain share a node
    const bool joined = m.vfn[2 * f] == m.vfn[2 * f + 2] || m.vfn[2 * f] == m.vfn[2 * f + 3] ||
                        m.vfn[2 * f + 1] == m.vfn[2 * f + 2] || m.vfn[2 * f + 1] == m.vfn[2 * f + 3];
    EXPECT_TRUE(joined);
  }
  EXPECT_EQ(m.nBnd, 1);
  EXPECT_EQ(m.bndNoFaces[0], 4);
}

TEST(MeshInit, MixedTrianglesAndQuadrilaterals) {
  thMesh2D m;
  m.readMeshText("5 2\n0 0\n1 0\n1 1\n0 1\n2 0.5\n0 1 2 3\n1 4 2\n");
  EXPECT_EQ(m.nvf, 6);
  EXPECT_EQ(m.nivf, 1);
  // the triangle's circumcentre: (x-1)^2 + 0.25 = (2-x)^2 gives x = 1.375
  EXPECT_NEAR(m.eVoronoiX[1], 1.375, 1e-12);
  EXPECT_NEAR(m.eVoronoiY[1], 0.5, 1e-12);
  EXPECT_DOUBLE_EQ(m.eVoronoiX[0], 0.5);
  EXPECT_FALSE(m.eIsAcute[0]);
  EXPECT_TRUE(m.eIsAcute[1]);
  EXPECT_TRUE(m.isOrthogonal);
  EXPECT_DOUBLE_EQ(m.eArea[1], 0.5);
  EXPECT_NEAR(m.vfDist[0], 0.875, 1e-12);
  EXPECT_NEAR(m.vfeDist[0], 0.5, 1e-12);
  EXPECT_NEAR(m.vfeDist[1], 0.375, 1e-12);
  EXPECT_NEAR(m.evfDist[m.eni[1]], 0.375, 1e-12);  // the triangle's side of its inner face
  EXPECT_EQ(m.evf[m.eni[1]], 0);
  EXPECT_EQ(m.evfNbr[m.eni[1]], 0);
  EXPECT_DOUBLE_EQ(m.totArea, 1.5);
  EXPECT_DOUBLE_EQ(m.areaCenterX, (0.5 * 1.0 + (4.0 / 3.0) * 0.5) / 1.5);
}

TEST(MeshInit, IslandGivesAnInnerRingOfClosedFaces) {
  // 3x3 unit cells without the middle one
  thMesh2D m;
  m.readMeshText(
      "16 8\n0 0\n1 0\n2 0\n3 0\n0 1\n1 1\n2 1\n3 1\n0 2\n1 2\n2 2\n3 2\n0 3\n1 3\n2 3\n3 3\n"
      "0 1 5 4\n1 2 6 5\n2 3 7 6\n4 5 9 8\n6 7 11 10\n8 9 13 12\n9 10 14 13\n10 11 15 14\n");
  EXPECT_EQ(m.nvf, 24);
  EXPECT_EQ(m.nivf, 8);
  EXPECT_EQ(m.tnbe, 0);
  for (int n : {5, 6, 9, 10}) EXPECT_EQ(m.nt[n], 99);
  EXPECT_TRUE(m.isOrthogonal);
  EXPECT_DOUBLE_EQ(m.totArea, 8.0);
  EXPECT_DOUBLE_EQ(m.areaCenterX, 1.5);
  // island faces point into the island: face {5,6} of element 1 has normal (0, 1)
  bool found = false;
  for (int f = m.nivf; f < m.nvf; f++) {
    const int a = m.vfn[2 * f], b = m.vfn[2 * f + 1];
    if ((a == 5 && b == 6) || (a == 6 && b == 5)) {
      found = true;
      EXPECT_EQ(m.vfe[2 * f], 1);
      EXPECT_NEAR(m.vfyNormL[f], 1.0, 1e-12);
    }
  }
  EXPECT_TRUE(found);
}

TEST(MeshInit, EmptyMesh) {
  thMesh2D m;
  EXPECT_EQ(m.initMesh(), 0);
  EXPECT_TRUE(m.hasVoronoi);
  EXPECT_EQ(m.nvf, 0);
  EXPECT_EQ(m.nivf, 0);
  EXPECT_NE(*m.initFlag, 0);
  EXPECT_EQ(m.toString(), "0 0 0\n");
  thMesh2D raw;  // counts without arrays: the header alone
  raw.non = 3;
  raw.noe = 1;
  EXPECT_EQ(raw.toString(), "3 1 1\n");
  raw.non = raw.noe = 0;
  // nodes without elements
  thMesh2D n;
  n.readMeshText("2 0\n1 2 0\n3 4 7\n");
  EXPECT_EQ(n.nvf, 0);
  EXPECT_EQ(n.nt[0], 0);  // nothing below the element check runs
  EXPECT_DOUBLE_EQ(n.xMean, 2.0);
}

TEST(MeshInit, LonLatMesh) {
  thMesh2D m;
  m.projection = "wgs84 lonlat";
  // near the equator at the central meridian of zone 32; the last face crosses into zone 33
  m.readMeshText("4 2\n9 0\n9.01 0\n9.005 0.01\n15.5 0.01\n0 1 2\n1 3 2\n");
  EXPECT_TRUE(m.isLonLat);
  EXPECT_EQ(m.utmZone, 32);  // mean longitude 10.63
  EXPECT_NE(m.nxUTM, m.nxCoor);
  EXPECT_NEAR(m.nxUTM[0], 500000.0, 1e-6);
  EXPECT_NEAR(m.nyUTM[0], 0.0, 1e-6);
  // the first triangle: base 0.01 degrees, height 0.01 degrees; a degree is about 111 km
  const double deg = 111319.49 * 0.9996;
  EXPECT_NEAR(m.eArea[0], 0.5 * 0.01 * deg * 0.01 * 110574.0 * 0.9996, 0.01 * m.eArea[0]);
  // centres and face midpoints stay in degrees
  EXPECT_NEAR(m.exCoor[0], 9.005, 1e-12);
  EXPECT_NEAR(m.vfxCoor[0], (m.nxCoor[m.vfn[0]] + m.nxCoor[m.vfn[1]]) / 2, 1e-12);
  // face lengths in metres, each face in its own zone: about the great-circle length
  for (int f = 0; f < m.nvf; f++) {
    const int a = m.vfn[2 * f], b = m.vfn[2 * f + 1];
    const double dlon = (m.nxCoor[b] - m.nxCoor[a]) * std::cos(0.005 * std::numbers::pi / 180);
    const double gc = std::hypot(dlon, m.nyCoor[b] - m.nyCoor[a]) * 111195.08;
    EXPECT_NEAR(m.vfl[f], gc, 0.01 * gc) << "face " << f;
    EXPECT_NEAR(std::hypot(m.vfxNormL[f], m.vfyNormL[f]), 1.0, 1e-9);
  }

  thMesh2D s;
  s.projection = "LONLAT";
  s.readMeshText("3 1\n-60 -10\n-59.9 -10\n-59.95 -9.9\n0 1 2\n");
  EXPECT_EQ(s.utmZone, -21);  // floor(120.05/6)+1 = 21, south
  EXPECT_GT(s.nyUTM[0], 8.0e6);

  thMesh2D w;
  w.projection = "LONLAT";
  w.readMeshText("3 1\n175 10\n175.1 10\n175.05 10.1\n0 1 2\n");
  EXPECT_EQ(w.utmZone, 0);  // zone 60 reduced to 0

  thMesh2D u;
  u.projection = "UTM33";
  u.readMeshText("3 1\n0 0\n1 0\n0 1\n0 1 2\n");
  EXPECT_EQ(u.utmZone, 32);
  EXPECT_EQ(u.utmZoneFromProjection(), 33);
  u.projection = "utm-5x";
  EXPECT_EQ(u.utmZoneFromProjection(), -5);
  u.projection = "LONLAT";
  EXPECT_EQ(u.utmZoneFromProjection(), -1);
}

TEST(MeshInit, VoronoiPointOnFace) {
  // element 0's Voronoi point from the file lies on its south face
  const std::string text = "3 1 1\n0 0\n4 0\n1 3\n0 1 2\n2 0\n";
  {
    thMesh2D m;
    EXPECT_VEXCEPTION(m.readMeshText(text), "Voronoi point on face." + thGlobal::errTail);
    EXPECT_EQ(*m.initFlag, 0);
  }
  {
    thMesh2D m;
    m.projection = "LONLAT";
    EXPECT_EQ(m.readMeshText(text), 0);  // the normal becomes NaN instead
    EXPECT_TRUE(std::isnan(m.vfxNormL[m.evf[2]]));
  }
  {
    // a point from the file far off: anglesVF above 5 degrees
    thMesh2D m;
    m.readMeshText("4 2 1\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n3 0.8\n2 -0.8\n");
    EXPECT_FALSE(m.isOrthogonal);
    EXPECT_FALSE(m.eIsAcute[0]);
    EXPECT_FALSE(m.eIsAcute[1]);
    EXPECT_NEAR(m.anglesVF[0], 90.0 - std::atan2(1.6, 1.0) * 57.29578, 1e-9);
  }
}

TEST(MeshInit, ElemNbrsFailWithMinusOne) {
  // element 1's face list made to lack the shared face: element 0's inner face has no second element
  thMesh2D m;
  m.readMeshText("4 2\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n");
  ASSERT_EQ(m.evf[3], 0);
  m.evf[3] = 4;
  bool thrown = false;
  try {
    m.initElemNbrs();
  } catch (int code) {
    thrown = true;
    EXPECT_EQ(code, -1);
  }
  EXPECT_TRUE(thrown);
  EXPECT_EQ(m.eNbrNo, nullptr);
}

TEST(MeshInit, BrokenPrimaryArrays) {
  {
    thMesh2D m;
    m.readMeshText("3 1\n0 0\n1 0\n0 1\n0 1 2\n");
    m.en[2] = 7;  // beyond the nodes
    EXPECT_VEXCEPTION_HAS(m.initMesh(), "refers to node 7");
    m.en[2] = -1;
    EXPECT_VEXCEPTION_HAS(m.initMesh(), "refers to node -1");
    m.en[2] = 2;
    m.nonpe[0] = 60;
    EXPECT_VEXCEPTION_HAS(m.initMesh(), "60 nodes");
    m.nonpe[0] = 3;
    EXPECT_EQ(m.initMesh(), 0);
  }
  {
    thMesh2D m;
    m.noe = -2;
    EXPECT_VEXCEPTION_HAS(m.initMesh(), "negative");
    m.noe = 2;
    EXPECT_VEXCEPTION_HAS(m.initMesh(), "missing");
    m.noe = 0;
  }
}

TEST(MeshInit, ShallowCopiesShareAndCloneOwns) {
  auto* src = new thMesh2D();
  src->readMeshText(thTest::gridMeshText(2, 1));
  {
    thMesh2D copy = *src;  // shares everything
    EXPECT_EQ(copy.nxCoor, src->nxCoor);
    EXPECT_EQ(copy.initFlag.get(), src->initFlag.get());
    thMesh2D assigned;
    assigned = copy;
    EXPECT_EQ(assigned.vfe, src->vfe);
    EXPECT_EQ(assigned.projection, "UTM32");
  }
  // the copies are gone: the first one destroyed freed the arrays and cleared the byte
  EXPECT_EQ(*src->initFlag, 0);
  delete src;  // frees nothing more

  thMesh2D orig;
  orig.readMeshText(thTest::gridMeshText(2, 1, 1.0, 1.0, true));
  orig.initElemNbrs();
  thMesh2D* c = orig.clone();
  EXPECT_NE(c->nxCoor, orig.nxCoor);
  EXPECT_NE(c->en, orig.en);
  EXPECT_NE(c->vfe, orig.vfe);
  EXPECT_NE(c->initFlag.get(), orig.initFlag.get());
  EXPECT_EQ(c->eNbrNo, nullptr);
  EXPECT_EQ(c->nvf, orig.nvf);
  for (int k = 0; k < 2 * orig.nvf; k++) EXPECT_EQ(c->vfe[k], orig.vfe[k]);
  for (int e = 0; e < orig.noe; e++) EXPECT_EQ(c->eVoronoiX[e], orig.eVoronoiX[e]);
  c->nxCoor[0] = 99;
  EXPECT_EQ(orig.nxCoor[0], 0.0);
  delete c;
  EXPECT_NE(*orig.initFlag, 0);
  EXPECT_EQ(orig.vft[0], 0);  // still alive
}

TEST(MeshInit, DefaultMeshAndXml) {
  thMesh2D m;
  EXPECT_EQ(m.defaultMeshText, "4\t1\n0\t0\n1\t0\n1\t1\n0\t1\n0\t1\t2\t3\n");
  EXPECT_EQ(m.projection, "UTM32");
  EXPECT_EQ(m.meshFmt, 0);
  EXPECT_EQ(*m.initFlag, 0);
  EXPECT_EQ(m.initDefaultMesh(), 0);
  EXPECT_EQ(m.noe, 1);
  EXPECT_EQ(m.nvf, 4);
  EXPECT_DOUBLE_EQ(m.totArea, 1.0);
  m.meshFN = "a\\b.mesh";
  EXPECT_EQ(m.meshXml(),
            "<Mesh>\n\t<Filename>a\\b.mesh</Filename>\n\t<Format>EMT</Format>\n\t<Projection>UTM32</Projection>\n"
            "</Mesh>\n");
  m.meshFmt = 1;
  EXPECT_NE(m.meshXml().find("<Format>EMB</Format>"), std::string::npos);
  m.meshFmt = 7;
  EXPECT_VEXCEPTION(m.meshXml(), "fileFmtEnum2str: unsupported fileFmtEnum");
}

TEST(MeshInit, SmallModelFixture) {
  thMesh2D m;
  m.readMeshText(thTest::smallModelMeshText());
  EXPECT_EQ(m.non, 15);
  EXPECT_EQ(m.noe, 8);
  EXPECT_EQ(m.nvf, 22);
  EXPECT_EQ(m.nivf, 10);
  EXPECT_EQ(m.tnbe, 4);
  EXPECT_EQ(arr(m.vft + 10, 4), ints({1, 1, 2, 2}));
  EXPECT_EQ(arr(m.bndElem, 4), ints({4, 0, 3, 7}));  // each walk keeps the domain on its left
  EXPECT_DOUBLE_EQ(m.totArea, 80000.0);
  thMesh2D x;
  x.readMeshText(thTest::smallMixedMeshText());
  EXPECT_EQ(x.noe, 10);
  EXPECT_EQ(x.nvf, 24);
  EXPECT_EQ(x.tnbe, 4);
  EXPECT_FALSE(x.isOrthogonal);  // the split cells are right-angled triangles
}
