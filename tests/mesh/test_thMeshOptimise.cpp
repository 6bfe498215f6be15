// The optimisers on small meshes worked out by hand, and on random jittered mixed meshes: boundary
// nodes stay, and no element turns over.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thMesh2D;
using V = std::vector<int>;
using D = std::vector<double>;

namespace thTestEdit {
std::unique_ptr<thMesh2D> mixedMesh(int nx, int ny, unsigned seed);  // test_thMeshEdit.cpp
}

TEST(MeshOptimise, RemoveNodesOfFourTriangles) {
  // a square of four triangles around (1,1): the neighbours clockwise from the x axis are
  // q0..q3 = 1, 0, 3, 2 with 3 faces each; the tie puts the diagonal between q1 and q3
  thMesh2D m;
  m.readMeshText("5 4\n0 0\n2 0\n2 2\n0 2\n1 1\n0 1 4\n1 2 4\n2 3 4\n3 0 4\n");
  EXPECT_EQ(m.optimRemNodesWith4TriElems(), 1);
  EXPECT_EQ(V({m.non, m.noe}), V({4, 2}));
  EXPECT_EQ(V(m.en, m.en + 6), V({0, 3, 2, 2, 1, 0}));  // clockwise, as the sort gives them
  // each new triangle has its node mean as Voronoi point
  EXPECT_TRUE(thTest::near({m.eVoronoiX[0] * 3, m.eVoronoiX[1] * 3}, {2, 4}, 1e-14));
  EXPECT_EQ(m.optimRemNodesWith4TriElems(), 0);

  // a triangle at corner 1 gives it 5 faces: q0+q2 = 8 > 6, so the diagonal joins 1 and 3
  m.readMeshText("7 5\n0 0\n2 0\n2 2\n0 2\n1 1\n3 -1\n3 0\n0 1 4\n1 2 4\n2 3 4\n3 0 4\n1 5 6\n");
  EXPECT_EQ(m.optimRemNodesWith4TriElems(), 1);
  EXPECT_EQ(V(m.en, m.en + 9), V({1, 4, 5, 1, 0, 3, 3, 2, 1}));

  thMesh2D q;
  q.readMeshText(thTest::gridMeshText(2, 2));  // its inner node has 4 faces but quadrilaterals
  const int32_t* en = q.en;
  EXPECT_EQ(q.optimRemNodesWith4TriElems(), 0);
  EXPECT_EQ(q.en, en);
}

TEST(MeshOptimise, Movers) {
  // columns at x 0, 1, 3. The area sums of the elements that nodeInfo lists (at a rim node
  // those that it reaches first through the inner faces): 6 at (1,1); 1 at its neighbours
  // (1,0), (0,1), and 2 at (3,1), (1,2); the range is 6-1 = 5. With factor 0.5,
  // w = (2-6) 0.5 / 5 = -0.4: away from (3,1), to (0.2, 1).
  thMesh2D m;
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
  thMesh2D g;
  g.readMeshText(thTest::gridMeshText(4, 4));
  g.optimDrawNodesTowardNode(12, -1, 1, 1, false);
  EXPECT_EQ(D({g.nxCoor[7], g.nyCoor[7]}), D({2, 1}));
  g.optimDrawNodesTowardNode(12, 2, 1, 1, false);
  EXPECT_EQ(D({g.nxCoor[7], g.nyCoor[7], g.nxCoor[12]}), D({2, 1.5, 2}));
  EXPECT_NEAR(g.nxCoor[6], 1 + (2 - std::sqrt(2.0)) / 2, 1e-15);
  EXPECT_VEXCEPTION(g.optimDrawNodesTowardNode(25, 2, 1, 1, false),
                    "optimDrawNodesTowardNode: node 25 does not exist; the mesh has nodes 0 to 24.");
}

TEST(MeshOptimise, InvariantsOnRandomMeshes) {
  for (unsigned seed = 1; seed <= 4; seed++) {
    std::unique_ptr<thMesh2D> m = thTestEdit::mixedMesh(6, 5, seed);
    const D x(m->nxCoor, m->nxCoor + m->non), y(m->nyCoor, m->nyCoor + m->non);
    const std::vector<int32_t> nt(m->nt, m->nt + m->non);
    m->optimCenterNodes(3, seed % 2 == 0);
    m->optimMoveNodesTowardLargeElems(0.3, false);
    m->optimDrawNodesTowardNode(m->non / 2, -1, 2, 0.5, seed % 2 == 1);
    m->initMesh();
    for (int i = 0; i < m->non; i++)
      if (nt[i] != 0) {
        EXPECT_EQ(D({m->nxCoor[i], m->nyCoor[i]}), D({x[i], y[i]}));
      }
    for (int e = 0; e < m->noe; e++) {  // counter-clockwise elements stay so
      double s = 0;
      for (int i = 0, n = m->nonpe[e]; i < n; i++) {
        const int a = m->en[m->eni[e] + i], b = m->en[m->eni[e] + (i + 1) % n];
        s += m->nxCoor[a] * m->nyCoor[b] - m->nxCoor[b] * m->nyCoor[a];
      }
      EXPECT_GT(s, 0) << "seed " << seed << " element " << e;
    }
    const int removed = m->optimRemNodesWith4TriElems();
    for (int e = 0; e < m->noe; e++) EXPECT_GT(m->eArea[e], 0);
    EXPECT_GE(removed, 0);
  }
}
