// Mesh editing and the optimisers on small meshes worked out by hand (numbering after each edit,
// Voronoi points, moves, messages), and invariants of random edit and optimiser runs on jittered
// mixed meshes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thMesh2D;
using V = std::vector<int>;
using D = std::vector<double>;
using thTest::arr;

namespace {

thMesh2D grid(int nx, int ny, bool tri = false, int west = 0) {
  thMesh2D m;
  m.readMeshText(thTest::gridMeshText(nx, ny, 1, 1, tri, west));
  return m;
}

// A mixed mesh: nx by ny unit quadrilaterals and, east of them, as many cells split into
// triangles, joined by mergeMesh; inner nodes moved at random by up to 0.2, Voronoi points afresh.
std::unique_ptr<thMesh2D> mixedMesh(int nx, int ny, unsigned seed) {
  thMesh2D q = grid(nx, ny), t;
  t.readMeshText(thTest::gridMeshText(nx, ny, 1, 1, true, 0, 0, nx));
  std::unique_ptr<thMesh2D> m(q.mergeMesh(t));
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> d(-0.2, 0.2);
  for (int i = 0; i < m->non; i++)
    if (m->nt[i] == 0) m->nxCoor[i] += d(rng), m->nyCoor[i] += d(rng);
  m->hasVoronoi = false;
  m->initMesh();
  return m;
}

}  // namespace

TEST(MeshEdit, RenumberNodes) {
  // the two cases of the step-by-step table, and a list on both sides of its first node; node o
  // of grid(2, 1) lies at (o % 3, o / 3), its elements are 0 1 4 3 and 1 2 5 4
  for (auto [list, want] : {std::pair<V, V>{{3, 1}, {0, 3, 1, 2, 4, 5}},
                            {{1, 3}, {0, 1, 3, 2, 4, 5}},
                            {{3, 1, 5}, {0, 3, 1, 2, 5, 4}}}) {
    thMesh2D m = grid(2, 1);
    const V en = {0, 1, 4, 3, 1, 2, 5, 4};
    EXPECT_EQ(m.editRenumberNodes(static_cast<int>(list.size()), list.data()), 0);
    for (int o = 0; o < 6; o++)
      EXPECT_EQ(D({m.nxCoor[want[o]], m.nyCoor[want[o]]}), D({1.0 * (o % 3), 1.0 * (o / 3)}));
    for (int k = 0; k < 8; k++) EXPECT_EQ(m.en[k], want[en[k]]) << k;
  }
  // nt stays at its positions: the west corners of open boundary 1 (old 0 and 3, now 4 and 2)
  // meet the types 0 and 99 of positions 4 and 2, and the open boundary is gone
  thMesh2D w = grid(2, 2, false, 1);
  ASSERT_EQ(w.tnbe, 2);
  const int32_t list[] = {4, 0}, twice[] = {1, 5, 1};
  w.editRenumberNodes(2, list);
  EXPECT_EQ(V({w.tnbe, w.nBnd, int(w.nxCoor[3]), int(w.nxCoor[4])}), V({0, 0, 1, 0}));
  EXPECT_EQ(w.editRenumberNodes(1, list) + w.editRenumberNodes(0, nullptr), -2);
  EXPECT_VEXCEPTION(
      w.editRenumberNodes(3, twice),
      "editRenumberNodes: node 1 stands twice in the list; a renumbering moves distinct nodes.");
}

TEST(MeshEdit, DeleteAndAddNodesAndElements) {
  // node 1 of the triangles [0 1 4] [0 4 3] [1 2 5] [1 5 4] holds three of them
  thMesh2D t = grid(2, 1, true), q = grid(2, 1), b = grid(3, 1), u, m = grid(2, 1), w = grid(4, 1), s;
  const double v1 = t.eVoronoiX[1];
  EXPECT_EQ(t.editDelNode(1, true), 0);
  EXPECT_TRUE(t.non == 5 && t.noe == 1 && arr(t.en, 3) == V({0, 3, 2}) && t.eVoronoiX[0] == v1);
  EXPECT_VEXCEPTION(t.editDelNode(5, true), "editDelNode: node 5 does not exist; the mesh has nodes 0 to 4.");

  // without initMesh: the derived arrays are gone, eni is current, and additions may follow
  EXPECT_EQ(q.editDelElem(0, false), 0);
  EXPECT_EQ(V({q.non, q.noe, q.nvf, q.nevf, q.eni[0]}), V({6, 1, 0, 4, 0}));
  EXPECT_TRUE(q.vfn == nullptr && arr(q.en, 4) == V({1, 2, 5, 4}));
  const int32_t tris[] = {0, 1, 4, 0, 4, 3};
  q.editAddElem(3, tris, false);
  q.editAddElem(3, tris + 3, true);
  EXPECT_EQ(V({q.noe, q.nvf, q.nivf, q.en[4], q.en[7]}), V({3, 8, 2, 0, 0}));
  EXPECT_VEXCEPTION_HAS(q.editDelElem(-1, true), "element -1 does not exist; the mesh has elements 0 to 2.");

  // bulk: element 0 of three quadrilaterals with its two nodes 0 and 4 (listed twice)
  const int32_t e[] = {0, 0}, n[] = {4, 0}, used[] = {1};
  EXPECT_EQ(b.editDelNodesElems(2, e, 2, n), 0);
  EXPECT_TRUE(b.non == 6 && b.noe == 2 && arr(b.en, 8) == V({0, 1, 4, 3, 1, 2, 5, 4}));
  EXPECT_EQ(D({b.eVoronoiX[0], b.eVoronoiX[1]}), D({1.5, 2.5}));
  EXPECT_VEXCEPTION(b.editDelNodesElems(0, nullptr, 1, used),
                    "editDelNodesElems: element 0 is kept but uses node 1, which is to be deleted; list the "
                    "element for deletion as well.");
  EXPECT_VEXCEPTION(b.editDelNodesElems(2, nullptr, 0, nullptr),
                    "editDelNodesElems: the list of 2 elements is missing.");
  EXPECT_EQ(V({b.non, b.noe, b.en[0]}), V({6, 2, 0}));

  u.readMeshText("5 1\n0 0\n9 9\n1 0\n7 7\n0 1\n0 2 4\n");
  EXPECT_EQ(u.editDelUnusedNodes(), 0);
  EXPECT_TRUE(V({u.non, u.en[0], u.en[1], u.en[2]}) == V({3, 0, 1, 2}) && arr(u.nxCoor, 3) == D({0, 1, 0}));

  // a triangle east of two unit squares: its Voronoi point is its node mean (7/3, 1/3), and the
  // 5 degree test fails it and its neighbour across x = 2 (about 11.3 degrees off)
  const int32_t tri[] = {2, 6, 5}, far[] = {0, 1, 9};
  m.editAddNode(3, 0, 0, false);
  m.editAddElem(3, tri, true);
  EXPECT_TRUE(thTest::near({m.eVoronoiX[2], m.eVoronoiY[2]}, {7.0 / 3, 1.0 / 3}, 1e-15));
  EXPECT_EQ(arr(m.eIsAcute, 3), std::vector<bool>({true, false, false}));
  EXPECT_VEXCEPTION_HAS(m.editAddElem(3, far, true), "refers to node 9");  // worded as the bulk addition's
  EXPECT_EQ(V({m.non, m.noe}), V({7, 3}));

  // bulk, base 0: nodes 0..4 of the added set follow the 10 nodes; both new triangles get the
  // mean of the first three entries, nodes 10, 11, 12: (31/3, 1/3)
  const double x[] = {10, 11, 10, 12, 12}, y[] = {0, 0, 1, 0, 1};
  int32_t elems[] = {0, 1, 2, 1, 3, 4}, bad[] = {0, 0, 7};
  EXPECT_EQ(w.editAddNodesElems(5, x, y, 2, elems, 0, 3, 0), 0);
  EXPECT_EQ(arr(elems, 6), V({10, 11, 12, 11, 13, 14}));  // in the caller's array
  EXPECT_EQ(V({w.non, w.noe, w.en[16], w.en[21]}), V({15, 6, 10, 14}));
  for (int k : {4, 5}) EXPECT_TRUE(std::hypot(w.eVoronoiX[k] - 31.0 / 3, w.eVoronoiY[k] - 1.0 / 3) < 1e-14);
  EXPECT_VEXCEPTION(
      w.editAddNodesElems(1, x, y, 1, bad, 0, 3, 0),
      "editAddNodesElems: a new element refers to node 22, but the mesh has 16 nodes with the new ones.");
  EXPECT_EQ(V({bad[2], w.non}), V({7, 15}));

  // a band of 2 by 2 quadrilaterals along (0,0)-(10,0): node (i,k) = 3i+k, 1 apart across
  const double lx[] = {0, 10}, ly[] = {0, 0};
  EXPECT_EQ(s.editAddSquareSection(lx, ly, 2, 3, 2, 1.0), 0);
  EXPECT_EQ(V({s.non, s.noe, s.nivf, s.en[0], s.en[1], s.en[2], s.en[3]}), V({9, 4, 4, 0, 3, 4, 1}));
  EXPECT_EQ(D({s.nxCoor[5], s.nyCoor[5]}), D({5, 1}));
  EXPECT_VEXCEPTION(s.editAddSquareSection(lx, ly, 2, 3, -1, 1.0),
                    "editAddSquareSection: the band needs at least 1 cell across, not -1.");
}

TEST(MeshEdit, AddMeshMergeMesh) {
  // two unit squares sharing the side x = 1: added, the nodes stay double and the side is two
  // closed faces; merged, the side is one inner face
  thMesh2D a = grid(1, 1), b, l = grid(1, 1);
  b.readMeshText(thTest::gridMeshText(1, 1, 1, 1, false, 0, 0, 1.0));
  a.projection = b.projection = "utm33";
  std::unique_ptr<thMesh2D> m(a.mergeMesh(b));
  EXPECT_EQ(V({m->non, m->noe, m->nivf, m->nvf, a.non, a.noe}), V({6, 2, 1, 7, 4, 1}));
  EXPECT_TRUE(arr(m->en + 4, 4) == V({1, 4, 5, 3}) && m->projection == "UTM32");  // a new mesh's default
  EXPECT_EQ(D({m->eVoronoiX[0], m->eVoronoiX[1]}), D({0.5, 1.5}));
  EXPECT_EQ(a.editAddMesh(b), 0);
  EXPECT_EQ(V({a.non, a.noe, a.nivf, a.nvf, b.non, b.vft[3]}), V({8, 2, 0, 8, 4, 99}));  // b keeps its arrays
  // a mesh given to itself is only detached from its group: its arrays stay
  EXPECT_TRUE(a.editAddMesh(a) == 0 && a.non == 16 && a.noe == 4);
  EXPECT_VEXCEPTION_HAS(delete m->mergeMesh(*m), "Voronoi point on face.");  // each element twice
  EXPECT_EQ(V({m->non, m->noe, m->en[7]}), V({6, 2, 3}));
  // all added elements of one node count share one Voronoi point: two neighbours cannot
  EXPECT_VEXCEPTION_HAS(a.editAddMesh(grid(2, 1)), "Voronoi point on face.");
  l.projection = "LONLAT";
  EXPECT_VEXCEPTION(delete a.mergeMesh(l),
                    "mergeMesh: the meshes are in different projections (utm33 and LONLAT); "
                    "bring one into the other's with toLonLat or toUTM first.");
}

TEST(MeshEdit, VoronoiAndProjections) {
  thMesh2D m = grid(2, 1), u, p = grid(1, 1);
  EXPECT_VEXCEPTION(m.updateVoronoiCoor(0, 0, 0, true), "Not implemented.");
  // the face x = 1 runs (1,1) to (1,0) against element 0; the Voronoi line (0.5,0) to (1.5,0.5)
  EXPECT_EQ(m.updateVoronoiCoor(0, 0.5, 0.0, false), 0);
  EXPECT_NEAR(m.anglesVF[0], std::acos(-1 / std::sqrt(5.0)), 1e-15);
  EXPECT_THROW(m.updateVoronoiCoor(2, 0, 0, false), VCppLib::VException);  // worded as editDelElem's

  // UTM 32 at its central meridian (x 500000 is 9 degrees east) and back
  u.readMeshText(thTest::gridMeshText(2, 2, 1000, 1000, true, 0, 0, 499000, 6700000));
  const D x = arr(u.nxCoor, 9), y = arr(u.nyCoor, 9), vx = arr(u.eVoronoiX, 8);
  // the Voronoi points are not converted
  EXPECT_TRUE(u.toLonLat() == 0 && u.isLonLat && u.projection == "LONLAT" && arr(u.eVoronoiX, 8) == vx);
  EXPECT_NEAR(u.nxCoor[1], 9.0, 1e-9);
  EXPECT_EQ(u.toLonLat(), 0);  // already in degrees: nothing to do
  EXPECT_TRUE(u.toUTM(32) == 0 && u.projection == "UTM32");
  // the library's pair of UTM series agrees to about a metre here
  for (int i = 0; i < 9; i++) EXPECT_NEAR(std::hypot(u.nxCoor[i] - x[i], u.nyCoor[i] - y[i]), 0, 1.0);
  EXPECT_EQ(u.toUTM(40), 0);  // not longitude and latitude: nothing to do
  u.toLonLat();
  EXPECT_VEXCEPTION(u.toUTM(61),
                    "toUTM: 61 is no UTM zone; a zone is 1 to 60, negative south of the equator.");
  EXPECT_VEXCEPTION_HAS(u.toUTM(40),
                        "lies outside the range of UTM zone 40 (longitudes 37 to 77, latitudes 0 to 84).");
  EXPECT_NEAR(u.nxCoor[1], 9.0, 1e-9);
  p.projection = "mercator";
  EXPECT_VEXCEPTION_HAS(p.toLonLat(), "toLonLat: the projection 'mercator' names no UTM zone");
}

// Random edit sequences: every element's nodes exist, and the faces that initMesh rebuilds are
// those of a fresh mesh read from the same primary arrays. The optimisers keep the boundary nodes
// in place and turn no element over.
TEST(MeshEdit, InvariantsOfRandomEditsAndOptimisers) {
  for (unsigned seed = 1; seed <= 4; seed++) {
    std::unique_ptr<thMesh2D> m = mixedMesh(4, 3, seed), o = mixedMesh(6, 5, seed);
    std::mt19937 rng(seed);
    auto pick = [&rng](int n) { return static_cast<int32_t>(rng() % n); };
    for (int step = 0; step < 12; step++) {
      const int32_t e[] = {pick(m->noe), pick(m->noe)}, l[] = {pick(m->non), (pick(m->non) + 1) % m->non};
      const int32_t t[] = {0, 1, m->non};  // with the node that step 4 adds
      switch (step % 6) {
        case 0:
          m->editDelElem(e[0], false);
          m->editDelNode(l[0], true);
          break;
        case 1: m->editDelNodesElems(2, e, 0, nullptr); break;
        case 2: m->editDelUnusedNodes(); break;
        case 3:
          if (l[0] != l[1]) m->editRenumberNodes(2, l);
          break;
        case 4:
          m->editAddNode(0.5, -0.5 - step, 0, false);
          m->editAddElem(3, t, true);
          break;
        default: m->optimCenterNodes(1, false); m->initMesh();
      }
      for (int64_t k = 0; k < m->nevf; k++) ASSERT_TRUE(m->en[k] >= 0 && m->en[k] < m->non);
      thMesh2D f;
      f.readMeshText(m->toString());
      ASSERT_EQ(V({f.non, f.noe, f.nvf, f.nivf, f.tnbe}), V({m->non, m->noe, m->nvf, m->nivf, m->tnbe}));
      EXPECT_EQ(arr(f.vfn, 2 * f.nvf), arr(m->vfn, 2 * m->nvf));
      EXPECT_EQ(arr(f.vfe, 2 * f.nvf), arr(m->vfe, 2 * m->nvf));
      EXPECT_EQ(arr(f.evf, f.nevf), arr(m->evf, m->nevf));
      EXPECT_EQ(arr(f.nt, f.non), arr(m->nt, m->non));
    }
    const D x = arr(o->nxCoor, o->non), y = arr(o->nyCoor, o->non);
    const V nt = arr(o->nt, o->non);
    o->optimCenterNodes(3, seed % 2 == 0);
    o->optimMoveNodesTowardLargeElems(0.3, false);
    o->optimDrawNodesTowardNode(o->non / 2, -1, 2, 0.5, seed % 2 == 1);
    o->initMesh();
    for (int i = 0; i < o->non; i++)  // boundary nodes stay
      EXPECT_TRUE(nt[i] == 0 || (o->nxCoor[i] == x[i] && o->nyCoor[i] == y[i])) << i;
    for (int e = 0; e < o->noe; e++) {  // counter-clockwise elements stay so
      double s = 0;
      for (int i = 0, n = o->nonpe[e]; i < n; i++) {
        const int a = o->en[o->eni[e] + i], b = o->en[o->eni[e] + (i + 1) % n];
        s += o->nxCoor[a] * o->nyCoor[b] - o->nxCoor[b] * o->nyCoor[a];
      }
      EXPECT_GT(s, 0) << "seed " << seed << " element " << e;
    }
    EXPECT_GE(o->optimRemNodesWith4TriElems(), 0);
    for (int e = 0; e < o->noe; e++) EXPECT_GT(o->eArea[e], 0);
  }
}

TEST(MeshOptimise, RemoveNodesOfFourTrianglesAndMovers) {
  // a square of four triangles around (1,1): the neighbours clockwise from the x axis are
  // q0..q3 = 1, 0, 3, 2 with 3 faces each; the tie puts the diagonal between q1 and q3
  thMesh2D m, q = grid(2, 2), g = grid(4, 4);  // q's inner node has 4 faces but quadrilaterals
  m.readMeshText("5 4\n0 0\n2 0\n2 2\n0 2\n1 1\n0 1 4\n1 2 4\n2 3 4\n3 0 4\n");
  EXPECT_EQ(m.optimRemNodesWith4TriElems(), 1);
  EXPECT_TRUE(m.non == 4 && m.noe == 2 && arr(m.en, 6) == V({0, 3, 2, 2, 1, 0}));  // clockwise, as sorted
  // each new triangle has its node mean as Voronoi point
  EXPECT_TRUE(thTest::near({m.eVoronoiX[0] * 3, m.eVoronoiX[1] * 3}, {2, 4}, 1e-14));
  EXPECT_EQ(m.optimRemNodesWith4TriElems(), 0);

  // a triangle at corner 1 gives it 5 faces: q0+q2 = 8 > 6, so the diagonal joins 1 and 3
  m.readMeshText("7 5\n0 0\n2 0\n2 2\n0 2\n1 1\n3 -1\n3 0\n0 1 4\n1 2 4\n2 3 4\n3 0 4\n1 5 6\n");
  EXPECT_EQ(m.optimRemNodesWith4TriElems(), 1);
  EXPECT_EQ(arr(m.en, 9), V({1, 4, 5, 1, 0, 3, 3, 2, 1}));
  const int32_t* en = q.en;
  EXPECT_TRUE(q.optimRemNodesWith4TriElems() == 0 && q.en == en);

  // columns at x 0, 1, 3. The area sums of the elements that nodeInfo lists (at a rim node
  // those that it reaches first through the inner faces): 6 at (1,1); 1 at its neighbours
  // (1,0), (0,1), and 2 at (3,1), (1,2); the range is 6-1 = 5. With factor 0.5,
  // w = (2-6) 0.5 / 5 = -0.4: away from (3,1), to (0.2, 1).
  m.readMeshText("9 4\n0 0\n1 0\n3 0\n0 1\n1 1\n3 1\n0 2\n1 2\n3 2\n0 1 4 3\n1 2 5 4\n3 4 7 6\n4 5 8 7\n");
  m.optimMoveNodesTowardLargeElems(0, false);
  EXPECT_EQ(D({m.nxCoor[4], m.nyCoor[4]}), D({1, 1}));
  m.optimMoveNodesTowardLargeElems(0.5, false);
  m.optimCenterNodes(0, false);  // no passes: nothing moves
  EXPECT_TRUE(thTest::near({m.nxCoor[4], m.nyCoor[4]}, {0.2, 1}, 1e-15));
  m.optimCenterNodes(2, false);  // the mean of (1,0), (0,1), (3,1), (1,2); the rim stays
  EXPECT_EQ(D({m.nxCoor[4], m.nyCoor[4], m.nxCoor[3], m.nxCoor[5]}), D({1.25, 1, 0, 3}));
  EXPECT_EQ(m.enxCoor[m.eni[0] + 2], 1);  // stale until initMesh
  m.optimCenterNodes(1, true);            // quadrilaterals only: nothing moves
  EXPECT_EQ(m.nxCoor[4], 1.25);

  // drawn toward the centre (2,2) of a 4x4 grid within r = 2: (2,1) at d = r/2 goes half way,
  // (1,1) by w = 2-sqrt(2) over 2; with r < 0 (0.4 here) nothing is near enough
  g.optimDrawNodesTowardNode(12, -1, 1, 1, false);
  EXPECT_EQ(D({g.nxCoor[7], g.nyCoor[7]}), D({2, 1}));
  g.optimDrawNodesTowardNode(12, 2, 1, 1, false);
  EXPECT_EQ(D({g.nxCoor[7], g.nyCoor[7], g.nxCoor[12]}), D({2, 1.5, 2}));
  EXPECT_NEAR(g.nxCoor[6], 1 + (2 - std::sqrt(2.0)) / 2, 1e-15);
  EXPECT_THROW(g.optimDrawNodesTowardNode(25, 2, 1, 1, false),
               VCppLib::VException);  // worded as editDelNode's
}
