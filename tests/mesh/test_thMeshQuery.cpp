// Queries around nodes, along the outer ring, of angles, distances and paths, on hand-worked meshes.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

namespace {

using thalmod::thMesh2D;
using V = std::vector<int32_t>;

// An L of three unit squares (the north-east cell of a 2 x 2 grid missing), west side open
// (boundary 1). Worked out by hand: inner faces 0 (4,1) and 1 (3,4); open faces 2 (3,6), 3 (0,3);
// closed 4 (0,1), 5 (1,2), 6 (2,5), 7 (5,4), 8 (4,7), 9 (7,6).
const char* lText =
    "8 3\n0 0 1\n1 0 99\n2 0 99\n0 1 1\n1 1 0\n2 1 99\n0 2 1\n1 2 99\n0 1 4 3\n1 2 5 4\n3 4 7 6\n";

// Two triangles over the unit square: element 0 (0,1,3) below the diagonal, 1 (0,3,2) above it;
// faces 0 (0,3) inner, 1 (0,1), 2 (1,3), 3 (3,2), 4 (2,0).
void twoTriangles(thMesh2D& m) { m.readMeshText(thTest::gridMeshText(1, 1, 1.0, 1.0, true)); }

using thTest::take;

TEST(MeshQuery, NodeFacesElementsAndNeighbours) {
  thMesh2D t, l;
  twoTriangles(t);
  l.readMeshText(lText);
  ASSERT_EQ(V(l.vfn, l.vfn + 6), (V{4, 1, 3, 4, 3, 6}));  // the hand-worked numbering holds
  std::vector<int32_t>*vf = t.nodevf(), *lf = l.nodevf();
  EXPECT_EQ(vf[0], (V{0, 4, 1}));  // counter-clockwise from just past east: NE, N, then E last
  EXPECT_TRUE(vf[3] == (V{3, 0, 2}) && lf[4] == (V{8, 1, 0, 7}) && lf[3] == (V{2, 3, 1}));
  delete[] vf, delete[] lf;
  std::vector<int32_t>*ne = t.nodeElems(true), *nu = t.nodeElems(false);
  EXPECT_TRUE(ne[0] == (V{1, 0}) && ne[1] == V{0});  // about the mean of the centres: north-west first
  EXPECT_EQ(std::set<int32_t>(nu[3].begin(), nu[3].end()), (std::set<int32_t>{0, 1}));  // quicksort's order
  delete[] ne, delete[] nu;
  int32_t *cnt = nullptr, *idx = nullptr, *nn = nullptr;
  ASSERT_EQ(t.nodeNeighbors(cnt, idx, nn), 10);
  EXPECT_TRUE(take(cnt, 4) == (V{3, 2, 2, 3}) && take(idx, 4) == (V{0, 3, 5, 7}));
  EXPECT_EQ(take(nn, 10), (V{3, 2, 1, 3, 0, 0, 3, 2, 0, 1}));
}

TEST(MeshQuery, NodeInfoKeepsBoundarySlotsAsNoElement) {
  thMesh2D t;
  twoTriangles(t);
  int32_t *cnt = nullptr, *nb = nullptr, *el = nullptr;
  bool* tri = nullptr;
  ASSERT_EQ(t.nodeInfo(cnt, nb, el, tri), 10);
  EXPECT_EQ(take(cnt, 4), (V{3, 2, 2, 3}));
  EXPECT_EQ(take(nb, 10), (V{3, 1, 2, 0, 3, 3, 0, 0, 1, 2}));  // faces in number order per node
  EXPECT_EQ(take(el, 10), (V{1, -1, -1, 0, -1, 1, -1, 0, -1, -1}));
  EXPECT_EQ(take(tri, 4), (std::vector<bool>{false, false, false, false}));
  // The centre node of a 2 x 2 grid: its elements each once (six of the eight triangles touch it).
  for (bool triangles : {true, false}) {
    thMesh2D m;
    m.readMeshText(thTest::gridMeshText(2, 2, 1.0, 1.0, triangles));
    const int32_t n = m.nodeInfo(cnt, nb, el, tri);
    int32_t off = 0;
    for (int32_t k = 0; k < 4; k++) off += cnt[k];
    const std::set<int32_t> got(el + off, el + off + cnt[4]);
    EXPECT_EQ(got, triangles ? (std::set<int32_t>{0, 1, 3, 4, 6, 7}) : (std::set<int32_t>{0, 1, 2, 3}));
    EXPECT_TRUE(got.size() == size_t(cnt[4]) && tri[4] == triangles && n == 2 * m.nvf);
    delete[] cnt, delete[] nb, delete[] el, delete[] tri;
  }
}

TEST(MeshQuery, CircumferenceAndDomain) {
  thMesh2D l, t, one;
  l.readMeshText(lText);
  EXPECT_EQ(l.circumferenceFaces(), (V{2, 3, 4, 5, 6, 7, 8, 9}));
  int32_t* nodes = nullptr;
  int32_t k = l.circumferenceNodes(nodes);
  EXPECT_EQ(take(nodes, k), (V{6, 3, 0, 1, 2, 5, 4, 7}));
  EXPECT_TRUE(l.pointInDomain(0.5, 1.5) && !l.pointInDomain(1.5, 1.5));  // the missing cell
  twoTriangles(t);
  EXPECT_EQ(t.circumferenceFaces(), (V{4, 1, 2, 3}));
  k = t.circumferenceNodes(nodes);
  EXPECT_EQ(take(nodes, k), (V{2, 0, 1, 3}));
  one.readMeshText("3 1\n0 0 0\n1 0 0\n0 1 0\n0 1 2\n");
  EXPECT_EQ(one.circumferenceNodes(nodes), 3);
  delete[] nodes;
  double *x = nullptr, *y = nullptr;
  EXPECT_EQ(l.gridPoints(0.5, 0.5, x, y), 12);  // 16 points of the square less the 4 of the missing cell
  EXPECT_TRUE(x[0] == 0.25 && y[11] == 1.75);
  delete[] x, delete[] y;
  EXPECT_VEXCEPTION_HAS(l.gridPoints(0.0, 1.0, x, y), "dx and dy");
}

TEST(MeshQuery, CircumferenceFailures) {
  const std::string tail = thGlobal::errTail;
  thMesh2D far, cut, longWalk;
  far.readMeshText("4 1\n0 0 0\n1 0 0\n0 1 0\n5 5 0\n0 1 2\n");  // the highest node is in no element
  EXPECT_VEXCEPTION(
      far.circumferenceFaces(),
      "Could not determine first face in cirmumference faces - something wrong with mesh. " + tail);
  twoTriangles(cut);
  cut.vft[1] = 0;  // the ring is broken at node 0
  EXPECT_VEXCEPTION(cut.circumferenceFaces(),
                    "Could not determine cirmumference faces - something wrong with mesh. " + tail);
  twoTriangles(longWalk);
  longWalk.nivf = 2;  // fewer boundary faces than the walk meets
  EXPECT_VEXCEPTION(longWalk.circumferenceFaces(),
                    "Could not determine cirmumference faces - something wrong with mesh. A node with more "
                    "than 2 bnd faces ?" +
                        tail);
}

TEST(MeshQuery, IslandsNearestElementAndItsCarriedAnswer) {
  // A 3 x 3 grid without its centre cell: elements 0..7 row by row.
  std::string text = "16 8\n";
  for (int32_t k = 0; k < 16; k++) text += std::to_string(k % 4) + " " + std::to_string(k / 4) + " 0\n";
  for (int32_t c = 0, a = 0; c < 9; c++, a = (c / 3) * 4 + c % 3)
    if (c != 4)
      text += std::to_string(a) + " " + std::to_string(a + 1) + " " + std::to_string(a + 5) + " " +
              std::to_string(a + 4) + "\n";
  thMesh2D m;
  m.readMeshText(text);
  EXPECT_TRUE(m.pointInDomain(1.5, 1.2) && m.pointElem(1.5, 1.2) == -1);
  // centre (1.5, 0.5) is nearest; inside element 5 no tree is asked; the tree finds centre (0.5, 2.5)
  // 0.02 away, and then no centre is closer than 0.02: the answer carries over
  EXPECT_EQ(V({m.pointElemNearest(1.5, 1.2, 0), m.pointElemNearest(0.6, 2.4, 0),
               m.pointElemNearest(0.6, 2.4, 1), m.pointElemNearest(2.0, 0.1, 1)}),
            V({1, 5, 5, 5}));
}

TEST(MeshQuery, BoundariesOrientationAnglesDistances) {
  thMesh2D m, l, t;
  m.readMeshText(thTest::smallModelMeshText());
  const std::vector<std::pair<int32_t, int32_t>> faces = {{9, -1}, {10, 0}, {11, 0},
                                                          {12, 1}, {13, 1}, {14, -1}};
  for (auto [f, k] : faces) EXPECT_EQ(m.faceBoundary(f), k) << f;
  EXPECT_EQ(V({m.boundaryIndex(2), m.boundaryIndex(3)}), V({1, -1}));
  l.readMeshText(lText);
  // By face: +1 where the face runs with the element's node order.
  const std::map<int32_t, int32_t> want[3] = {{{0, -1}, {1, -1}, {3, -1}, {4, 1}},
                                              {{0, 1}, {5, 1}, {6, 1}, {7, 1}},
                                              {{1, 1}, {2, -1}, {8, 1}, {9, 1}}};
  const V o = take(l.evfOrientation(), l.nevf);
  for (int32_t e = 0; e < 3; e++)
    for (int32_t i = 0; i < 4; i++) EXPECT_EQ(o[4 * e + i], want[e].at(l.evf[4 * e + i])) << e << " " << i;
  EXPECT_EQ(take(l.elemDistances(1), 3), (std::vector<double>{1.0, 0.0, std::sqrt(2.0)}));
  twoTriangles(t);
  const double q = std::atan(1.0), r = 2 * q;  // corners of 45 and 90 degrees
  const std::vector<double> corners = take(t.anglesElem(), 6), wantA = {q, r, q, q, q, r};
  for (int32_t i = 0; i < 6; i++) EXPECT_NEAR(corners[i], wantA[i], 1e-12) << i;
  for (double a : take(t.anglesMaxPerElem(), 2)) EXPECT_NEAR(a, r, 1e-12);
  EXPECT_EQ(take(t.anglesVFMaxPerElem(), 2)[1], t.anglesVF[0]);
  thMesh2D eq;
  eq.readMeshText("3 1\n0 0 0\n1 0 0\n0.5 0.8660254037844386 0\n0 1 2\n");
  EXPECT_NEAR(take(eq.anglesMaxPerElem(), 1)[0], 1.047, 1e-3);
  EXPECT_EQ(take(eq.anglesVFMaxPerElem(), 1)[0], 0.0);  // no inner face
}

TEST(MeshQuery, DegreesAndPaths) {
  thMesh2D u, g, l;
  u.readMeshText(thTest::gridMeshText(1, 1, 100.0, 100.0, false, 0, 0, 500000.0, 6700000.0));
  double *x = nullptr, *y = nullptr;
  EXPECT_EQ(u.faceCoorsLonLat(x, y), 0);
  for (int32_t f = 0; f < u.nvf; f++)  // x = 500000 is the central meridian of zone 32, 9 degrees east
    EXPECT_TRUE(u.vfxCoor[f] != 500000.0 || std::fabs(x[f] - 9.0) < 1e-9) << f;
  delete[] x, delete[] y;
  EXPECT_EQ(u.meanElemSizeDeg(), u.meanElemSize);  // not in degrees: as it stands
  g.projection = "LONLAT";
  g.readMeshText(thTest::gridMeshText(2, 1, 0.01, 0.01, false, 0, 0, 10.0, 60.0));
  // A degree of latitude is about 111.4 km at 60 degrees north; distances are in metres, close to
  // the great circle.
  EXPECT_NEAR(g.meanElemSizeDeg(), g.meanElemSize / 111400.0, 2e-5);
  const double gc = VCppLib::greatCircleDistance(g.exCoor[0], g.eyCoor[0], g.exCoor[1], g.eyCoor[1]);
  EXPECT_NEAR(take(g.elemDistances(0), 2)[1], gc, gc * 5e-3);
  l.readMeshText(lText);
  auto path = [&](int32_t a, int32_t b) {
    int32_t* p = nullptr;
    const int32_t n = l.shortestPath(a, b, p);
    return take(p, n);
  };
  // Three routes of three edges; the search settles the higher of equal nodes first.
  EXPECT_TRUE(path(0, 5) == (V{0, 3, 4, 5}) && path(2, 2) == V{2});
  EXPECT_VEXCEPTION(path(0, 8), "The end node 8 lies outside 0 to 7.");
}

}  // namespace
