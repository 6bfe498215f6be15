// Queries around nodes, along the outer ring, of angles, distances and paths; sections across a
// mesh, domains cut out of it and meshes made from parts of it; all on hand-worked meshes.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <numeric>
#include <set>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

namespace {

using thalmod::thMesh2D;
using V = std::vector<int32_t>;
using D = std::vector<double>;

// An L of three unit squares (the north-east cell of a 2 x 2 grid missing), west side open
// (boundary 1). Worked out by hand: inner faces 0 (4,1) and 1 (3,4); open faces 2 (3,6), 3 (0,3);
// closed 4 (0,1), 5 (1,2), 6 (2,5), 7 (5,4), 8 (4,7), 9 (7,6).
const char* lText =
    "8 3\n0 0 1\n1 0 99\n2 0 99\n0 1 1\n1 1 0\n2 1 99\n0 2 1\n1 2 99\n0 1 4 3\n1 2 5 4\n3 4 7 6\n";

// Two triangles over the unit square: element 0 (0,1,3) below the diagonal, 1 (0,3,2) above it;
// faces 0 (0,3) inner, 1 (0,1), 2 (1,3), 3 (3,2), 4 (2,0).
thMesh2D mesh(const std::string& text) {
  thMesh2D m;
  m.readMeshText(text);
  return m;
}

thMesh2D twoTriangles() { return mesh(thTest::gridMeshText(1, 1, 1.0, 1.0, true)); }

using thTest::take;

TEST(MeshQuery, NodeFacesElementsNeighboursAndInfo) {
  thMesh2D t = twoTriangles(), l = mesh(lText), m;
  std::vector<int32_t>*vf = t.nodevf(), *lf = l.nodevf();
  EXPECT_EQ(vf[0], (V{0, 4, 1}));  // counter-clockwise from just past east: NE, N, then E last
  EXPECT_TRUE(vf[3] == (V{3, 0, 2}) && lf[4] == (V{8, 1, 0, 7}) && lf[3] == (V{2, 3, 1}));
  delete[] vf, delete[] lf;
  std::vector<int32_t>*ne = t.nodeElems(true), *nu = t.nodeElems(false);
  EXPECT_TRUE(ne[0] == (V{1, 0}) && ne[1] == V{0});  // about the mean of the centres: north-west first
  EXPECT_EQ(std::set<int32_t>(nu[3].begin(), nu[3].end()), (std::set<int32_t>{0, 1}));  // quicksort's order
  delete[] ne, delete[] nu;
  int32_t *cnt = nullptr, *idx = nullptr, *nn = nullptr, *nb = nullptr, *el = nullptr;
  bool* tri = nullptr;
  ASSERT_EQ(t.nodeNeighbors(cnt, idx, nn), 10);
  EXPECT_TRUE(take(cnt, 4) == (V{3, 2, 2, 3}) && take(idx, 4) == (V{0, 3, 5, 7}));
  EXPECT_EQ(take(nn, 10), (V{3, 2, 1, 3, 0, 0, 3, 2, 0, 1}));
  // nodeInfo keeps the slots of boundary faces as no element
  ASSERT_EQ(t.nodeInfo(cnt, nb, el, tri), 10);
  EXPECT_EQ(take(cnt, 4), (V{3, 2, 2, 3}));
  EXPECT_EQ(take(nb, 10), (V{3, 1, 2, 0, 3, 3, 0, 0, 1, 2}));  // faces in number order per node
  EXPECT_EQ(take(el, 10), (V{1, -1, -1, 0, -1, 1, -1, 0, -1, -1}));
  EXPECT_EQ(take(tri, 4), (std::vector<bool>{false, false, false, false}));
  // The centre node of a 2 x 2 grid: its elements each once (six of the eight triangles touch it).
  for (bool triangles : {true, false}) {
    m.readMeshText(thTest::gridMeshText(2, 2, 1.0, 1.0, triangles));
    const int32_t n = m.nodeInfo(cnt, nb, el, tri);
    const int32_t off = std::accumulate(cnt, cnt + 4, 0);
    const std::set<int32_t> got(el + off, el + off + cnt[4]);
    EXPECT_EQ(got, triangles ? (std::set<int32_t>{0, 1, 3, 4, 6, 7}) : (std::set<int32_t>{0, 1, 2, 3}));
    EXPECT_TRUE(got.size() == size_t(cnt[4]) && tri[4] == triangles && n == 2 * m.nvf);
    delete[] cnt, delete[] nb, delete[] el, delete[] tri;
  }
}

TEST(MeshQuery, CircumferenceDomainNearestElementAndBrokenRings) {
  const std::string tail = thGlobal::errTail;
  thMesh2D l = mesh(lText), t = twoTriangles(), cut = twoTriangles(), longWalk = twoTriangles(), far, holed;
  EXPECT_EQ(l.circumferenceFaces(), (V{2, 3, 4, 5, 6, 7, 8, 9}));
  int32_t* nodes = nullptr;
  int32_t k = l.circumferenceNodes(nodes);
  EXPECT_EQ(take(nodes, k), (V{6, 3, 0, 1, 2, 5, 4, 7}));
  EXPECT_TRUE(l.pointInDomain(0.5, 1.5) && !l.pointInDomain(1.5, 1.5));  // the missing cell
  EXPECT_EQ(t.circumferenceFaces(), (V{4, 1, 2, 3}));
  k = t.circumferenceNodes(nodes);
  EXPECT_EQ(take(nodes, k), (V{2, 0, 1, 3}));
  EXPECT_EQ(mesh("3 1\n0 0 0\n1 0 0\n0 1 0\n0 1 2\n").circumferenceNodes(nodes), 3);
  delete[] nodes;
  double *x = nullptr, *y = nullptr;
  EXPECT_EQ(l.gridPoints(0.5, 0.5, x, y), 12);  // 16 points of the square less the 4 of the missing cell
  EXPECT_TRUE(x[0] == 0.25 && y[11] == 1.75);
  delete[] x, delete[] y;
  EXPECT_VEXCEPTION_HAS(l.gridPoints(0.0, 1.0, x, y), "dx and dy");

  far.readMeshText("4 1\n0 0 0\n1 0 0\n0 1 0\n5 5 0\n0 1 2\n");  // the highest node is in no element
  EXPECT_VEXCEPTION(
      far.circumferenceFaces(),
      "Could not determine first face in cirmumference faces - something wrong with mesh. " + tail);
  cut.vft[1] = 0;  // the ring is broken at node 0
  EXPECT_VEXCEPTION(cut.circumferenceFaces(),
                    "Could not determine cirmumference faces - something wrong with mesh. " + tail);
  longWalk.nivf = 2;  // fewer boundary faces than the walk meets
  EXPECT_VEXCEPTION_HAS(longWalk.circumferenceFaces(), "mesh. A node with more than 2 bnd faces ?");

  // A 3 x 3 grid without its centre cell: elements 0..7 row by row.
  holed.readMeshText(thTest::gridMeshText(3, 3));
  holed.editDelElem(4, true);
  EXPECT_TRUE(holed.pointInDomain(1.5, 1.2) && holed.pointElem(1.5, 1.2) == -1);
  // centre (1.5, 0.5) is nearest; inside element 5 no tree is asked; the tree finds centre (0.5, 2.5)
  // 0.02 away, and then no centre is closer than 0.02: the answer carries over
  EXPECT_EQ(V({holed.pointElemNearest(1.5, 1.2, 0), holed.pointElemNearest(0.6, 2.4, 0),
               holed.pointElemNearest(0.6, 2.4, 1), holed.pointElemNearest(2.0, 0.1, 1)}),
            V({1, 5, 5, 5}));
}

TEST(MeshQuery, BoundariesOrientationAnglesDistances) {
  thMesh2D m = mesh(thTest::smallModelMeshText()), l = mesh(lText), t = twoTriangles(), eq;
  for (auto [f, k] : {std::pair{9, -1}, {10, 0}, {11, 0}, {12, 1}, {13, 1}, {14, -1}})
    EXPECT_EQ(m.faceBoundary(f), k) << f;
  EXPECT_EQ(V({m.boundaryIndex(2), m.boundaryIndex(3)}), V({1, -1}));
  // By face: +1 where the face runs with the element's node order.
  const std::map<int32_t, int32_t> want[3] = {{{0, -1}, {1, -1}, {3, -1}, {4, 1}},
                                              {{0, 1}, {5, 1}, {6, 1}, {7, 1}},
                                              {{1, 1}, {2, -1}, {8, 1}, {9, 1}}};
  const V o = take(l.evfOrientation(), l.nevf);
  for (int32_t e = 0; e < 3; e++)
    for (int32_t i = 0; i < 4; i++) EXPECT_EQ(o[4 * e + i], want[e].at(l.evf[4 * e + i])) << e << " " << i;
  EXPECT_EQ(take(l.elemDistances(1), 3), (std::vector<double>{1.0, 0.0, std::sqrt(2.0)}));
  const double q = std::atan(1.0), r = 2 * q;  // corners of 45 and 90 degrees
  EXPECT_TRUE(thTest::near(take(t.anglesElem(), 6), {q, r, q, q, q, r}));
  EXPECT_TRUE(thTest::near(take(t.anglesMaxPerElem(), 2), {r, r}));
  EXPECT_EQ(take(t.anglesVFMaxPerElem(), 2)[1], t.anglesVF[0]);
  eq.readMeshText("3 1\n0 0 0\n1 0 0\n0.5 0.8660254037844386 0\n0 1 2\n");
  EXPECT_NEAR(take(eq.anglesMaxPerElem(), 1)[0], 1.047, 1e-3);
  EXPECT_EQ(take(eq.anglesVFMaxPerElem(), 1)[0], 0.0);  // no inner face
}

TEST(MeshQuery, DegreesAndPaths) {
  thMesh2D u = mesh(thTest::gridMeshText(1, 1, 100.0, 100.0, false, 0, 0, 500000.0, 6700000.0)), g,
           l = mesh(lText);
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
  auto path = [&](int32_t a, int32_t b) {
    int32_t* p = nullptr;
    const int32_t n = l.shortestPath(a, b, p);
    return take(p, n);
  };
  // Three routes of three edges; the search settles the higher of equal nodes first.
  EXPECT_TRUE(path(0, 5) == (V{0, 3, 4, 5}) && path(2, 2) == V{2});
  EXPECT_VEXCEPTION(path(0, 8), "The end node 8 lies outside 0 to 7.");
}

TEST(MeshSection, SectionsAndPartMeshes) {
  // m: three unit squares west to east, elements 0, 1, 2, the rim closed; b: open boundary 1 at x = 0,
  // y from 0 to 200
  thMesh2D m = mesh(thTest::gridMeshText(3, 1)), b = mesh(thTest::smallModelMeshText());
  struct Case {
    D x, y;
    V e;
    D d;
  } cases[] = {
      {{0.2, 0.7}, {0.5, 0.5}, {0}, {0.5}},                          // inside one element
      {{-1, 1.5}, {0.5, 0.5}, {-1, 0, 1}, {1, 2, 2.5}},              // from outside in
      {{0.5, 1.5, 2.5}, {0.5, 0.5, 0.5}, {0, 1, 2}, {0.5, 1.5, 2}},  // lines meet inside element 1
      {{0.5, 1.5, 1.5}, {0.5, 0.5, 0.9}, {0, 1}, {0.5, 1.4}},        // a bend inside element 1
      {{-2, -1, 0.5}, {0.5, 0.5, 0.5}, {-1, 0}, {2, 2.5}},  // a line wholly outside: one stretch as long
      {{0.5}, {0.5}, {}, {}},                               // fewer than two points
  };
  int32_t* ise = nullptr;
  double* isd = nullptr;
  for (Case& c : cases) {
    const int32_t k =
        m.sectionIntersections(c.x.data(), c.y.data(), static_cast<int32_t>(c.x.size()), ise, isd);
    EXPECT_EQ(thTest::take(ise, k), c.e) << "section from x = " << c.x[0];
    EXPECT_TRUE(thTest::near(thTest::take(isd, k), c.d)) << "section from x = " << c.x[0];
  }
  // Meeting exactly on the face x = 1: the first line ends in the stretch behind its end point
  // (-1, sorted after the face at the same distance), the second begins in element 1.
  const double x[] = {0.5, 1, 1.5}, y[] = {0.5, 0.5, 0.5};
  EXPECT_VEXCEPTION(m.sectionIntersections(x, y, 3, ise, isd),
                    "line end elem != next line start elem in section. Not implemented.");

  // meshes made from parts of one
  b.projection = "UTM33";
  std::unique_ptr<thMesh2D> s(b.boundaryStripMesh(0));
  // 3 points along the boundary, 1 cell across, half the mean segment (50 m) wide, all closed
  ASSERT_TRUE(s->projection == "UTM33" && s->noe == 2);
  EXPECT_EQ(std::multiset<double>(s->nxCoor, s->nxCoor + 6),
            (std::multiset<double>{-25, -25, -25, 25, 25, 25}));
  EXPECT_EQ(std::multiset<double>(s->nyCoor, s->nyCoor + 6),
            (std::multiset<double>{0, 0, 100, 100, 200, 200}));
  EXPECT_EQ(V(s->nt, s->nt + 6), V(6, 99));
  EXPECT_TRUE(thTest::near(thTest::arr(s->eArea, 2), {5000, 5000}, 1e-9));
  EXPECT_VEXCEPTION_HAS(b.boundaryStripMesh(2), "no open boundary of index 2");

  const int32_t elems[] = {1, 0}, bad[] = {3};
  std::unique_ptr<thMesh2D> sub(m.subMesh(2, elems));
  // element 1 (nodes 1 2 6 5) numbers its nodes 0..3; element 0 (0 1 5 4) adds 0 and 4 as 4, 5
  EXPECT_EQ(V(sub->en, sub->en + sub->nevf), (V{0, 1, 2, 3, 4, 0, 3, 5}));
  EXPECT_EQ(D(sub->nxCoor, sub->nxCoor + sub->non), (D{1, 2, 2, 1, 0, 0}));
  EXPECT_TRUE(D(sub->eVoronoiX, sub->eVoronoiX + 2) == (D{1.5, 0.5}) && sub->nivf == 1);
  EXPECT_VEXCEPTION_HAS(m.subMesh(1, bad), "element 3 is not in the mesh");
}

std::vector<V> chop(thMesh2D& m, std::vector<V> secs) {
  std::vector<const int32_t*> p;
  V len;
  for (V& s : secs) {
    p.push_back(s.data());
    len.push_back(static_cast<int32_t>(s.size()));
  }
  int32_t* lens = nullptr;
  int32_t** d = m.chopDomian(p.data(), static_cast<int32_t>(secs.size()), len.data(), lens);
  std::vector<V> out;
  for (size_t i = 0; i <= secs.size(); ++i) out.push_back(thTest::take(d[i], lens[i]));
  delete[] d;
  delete[] lens;
  return out;
}

TEST(ChopDomian, SectionsOfNodesCutTheMeshIntoDomains) {
  // 4 x 1 unit squares: nodes 0..4 at y = 0, 5..9 at y = 1; in g 3 x 2, node 5 = (1, 1) lies inside
  thMesh2D m = mesh(thTest::gridMeshText(4, 1)), g = mesh(thTest::gridMeshText(3, 2));
  // The ring starts at node 5 down the west side: the first domain lies west of the first section
  // met, the next between the sections, the last east of them.
  EXPECT_EQ(chop(m, {}), (std::vector<V>{{0, 1, 2, 3}}));
  EXPECT_EQ(chop(m, {{1, 6}}), (std::vector<V>{{0}, {1, 2, 3}}));
  EXPECT_EQ(chop(m, {{8, 3}, {1, 6}}), (std::vector<V>{{0}, {1, 2}, {3}}));
  EXPECT_VEXCEPTION(chop(g, {{1, 5}}), "thMesh2D::chopDomian: section does not end on cirumference.");
}

}  // namespace
