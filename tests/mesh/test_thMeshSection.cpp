// Sections across a mesh, domains cut out of it, and meshes made from parts of it, on small grids
// worked out by hand.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

namespace {

using thalmod::thMesh2D;
using V = std::vector<double>;
using I = std::vector<int32_t>;

TEST(SectionIntersections, StretchesJoinedOverThePolyline) {
  thMesh2D m;  // three unit squares west to east, elements 0, 1, 2; the rim closed
  m.readMeshText(thTest::gridMeshText(3, 1));
  struct Case {
    V x, y;
    I e;
    V d;
  } cases[] = {
      {{0.2, 0.7}, {0.5, 0.5}, {0}, {0.5}},                          // inside one element
      {{-1, 1.5}, {0.5, 0.5}, {-1, 0, 1}, {1, 2, 2.5}},              // from outside in
      {{0.5, 1.5, 2.5}, {0.5, 0.5, 0.5}, {0, 1, 2}, {0.5, 1.5, 2}},  // lines meet inside element 1
      {{0.5, 1.5, 1.5}, {0.5, 0.5, 0.9}, {0, 1}, {0.5, 1.4}},        // a bend inside element 1
      {{-2, -1, 0.5}, {0.5, 0.5, 0.5}, {-1, 0}, {2, 2.5}},  // a line wholly outside: one stretch as long
      {{0.5}, {0.5}, {}, {}},                               // fewer than two points
  };
  for (Case& c : cases) {
    int32_t* ise = nullptr;
    double* isd = nullptr;
    int32_t k = m.sectionIntersections(c.x.data(), c.y.data(), static_cast<int32_t>(c.x.size()), ise, isd);
    EXPECT_EQ(I(ise, ise + k), c.e) << "section from x = " << c.x[0];
    for (int32_t i = 0; i < k && k == static_cast<int32_t>(c.d.size()); ++i)
      EXPECT_NEAR(isd[i], c.d[i], 1e-12);
    delete[] ise;
    delete[] isd;
  }
  // Meeting exactly on the face x = 1: the first line ends in the stretch behind its end point
  // (-1, sorted after the face at the same distance), the second begins in element 1.
  V x{0.5, 1, 1.5}, y{0.5, 0.5, 0.5};
  int32_t* ise = nullptr;
  double* isd = nullptr;  // untouched
  EXPECT_VEXCEPTION(m.sectionIntersections(x.data(), y.data(), 3, ise, isd),
                    "line end elem != next line start elem in section. Not implemented.");
}

std::vector<I> chop(thMesh2D& m, std::vector<I> secs) {
  std::vector<const int32_t*> p;
  I len;
  for (I& s : secs) {
    p.push_back(s.data());
    len.push_back(static_cast<int32_t>(s.size()));
  }
  int32_t* lens = nullptr;
  int32_t** d = m.chopDomian(p.data(), static_cast<int32_t>(secs.size()), len.data(), lens);
  std::vector<I> out;
  for (size_t i = 0; i <= secs.size(); ++i) out.emplace_back(d[i], d[i] + lens[i]), delete[] d[i];
  return delete[] d, delete[] lens, out;
}

TEST(ChopDomian, SectionsOfNodesCutTheMeshIntoDomains) {
  thMesh2D m;  // 4 x 1 unit squares: nodes 0..4 at y = 0, 5..9 at y = 1
  m.readMeshText(thTest::gridMeshText(4, 1));
  // The ring starts at node 5 down the west side: the first domain lies west of the first section
  // met, the next between the sections, the last east of them.
  EXPECT_EQ(chop(m, {}), (std::vector<I>{{0, 1, 2, 3}}));
  EXPECT_EQ(chop(m, {{1, 6}}), (std::vector<I>{{0}, {1, 2, 3}}));
  EXPECT_EQ(chop(m, {{8, 3}, {1, 6}}), (std::vector<I>{{0}, {1, 2}, {3}}));
  thMesh2D g;  // 3 x 2: node 5 = (1, 1) lies inside
  g.readMeshText(thTest::gridMeshText(3, 2));
  EXPECT_VEXCEPTION(chop(g, {{1, 5}}), "thMesh2D::chopDomian: section does not end on cirumference.");
}

TEST(PartMeshes, BoundaryStripAndSubMesh) {
  thMesh2D m;
  m.readMeshText(thTest::smallModelMeshText());  // open boundary 1: x = 0, y from 0 to 200
  m.projection = "UTM33";
  std::unique_ptr<thMesh2D> s(m.boundaryStripMesh(0));
  // 3 points along the boundary, 1 cell across, half the mean segment (50 m) wide, all closed
  ASSERT_TRUE(s->projection == "UTM33" && s->noe == 2);
  EXPECT_EQ(std::multiset<double>(s->nxCoor, s->nxCoor + 6),
            (std::multiset<double>{-25, -25, -25, 25, 25, 25}));
  EXPECT_EQ(std::multiset<double>(s->nyCoor, s->nyCoor + 6),
            (std::multiset<double>{0, 0, 100, 100, 200, 200}));
  EXPECT_EQ(I(s->nt, s->nt + 6), I(6, 99));
  EXPECT_TRUE(thTest::near(thTest::arr(s->eArea, 2), {5000, 5000}, 1e-9));
  EXPECT_VEXCEPTION_HAS(m.boundaryStripMesh(2), "no open boundary of index 2");

  thMesh2D r;
  r.readMeshText(thTest::gridMeshText(3, 1));
  const int32_t elems[] = {1, 0}, bad[] = {3};
  std::unique_ptr<thMesh2D> sub(r.subMesh(2, elems));
  // element 1 (nodes 1 2 6 5) numbers its nodes 0..3; element 0 (0 1 5 4) adds 0 and 4 as 4, 5
  EXPECT_EQ(I(sub->en, sub->en + sub->nevf), (I{0, 1, 2, 3, 4, 0, 3, 5}));
  EXPECT_EQ(V(sub->nxCoor, sub->nxCoor + sub->non), (V{1, 2, 2, 1, 0, 0}));
  EXPECT_TRUE(V(sub->eVoronoiX, sub->eVoronoiX + 2) == (V{1.5, 0.5}) && sub->nivf == 1);
  EXPECT_VEXCEPTION_HAS(r.subMesh(1, bad), "element 3 is not in the mesh");
}

}  // namespace
