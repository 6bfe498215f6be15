// The element that holds a point and the elements crossed by a straight line, hand-worked; the
// indexed point and line searches against the plain scans; the index across initMesh and copies.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <tuple>
#include <vector>

#include "mesh/thMesh2D.h"
#include "mesh/thMeshIndex.h"
#include "testutil/thMeshFixtures.h"

namespace {

using thalmod::thMesh2D;

// The count, elements and distances of the stretches of a line.
using Stretches = std::tuple<int32_t, std::vector<int32_t>, std::vector<double>>;

Stretches line(const thMesh2D& m, double x0, double y0, double x1, double y1, bool scan = false) {
  int32_t* ise = nullptr;
  double* isd = nullptr;
  const int32_t k = scan ? m.lineIntersectionsScan(x0, y0, x1, y1, ise, isd)
                         : m.lineIntersections(x0, y0, x1, y1, ise, isd);
  EXPECT_TRUE(k > 0 || ise == nullptr);  // -1 leaves the outputs untouched
  return {k, thTest::take(ise, k), thTest::take(isd, k)};
}

TEST(LineIntersections, HandWorkedStretches) {
  // Two unit squares side by side; face 0 is the inner face x = 1, every rim face is closed.
  thMesh2D m, g;
  m.readMeshText(thTest::gridMeshText(2, 1));
  const std::vector<std::pair<std::vector<double>, Stretches>> cases = {
      {{0.5, 0.5, 1.5, 0.5}, {2, {0, 1}, {0.5, 1.0}}},         // across the inner face
      {{-1, 0.5, 3, 0.5}, {4, {-1, 0, 1, -1}, {1, 2, 3, 4}}},  // through and out: land beyond is -1
      {{1.5, 0.5, 1.5, 2.0}, {2, {-1, 1}, {0.5, 1.5}}},        // a boundary face first: read as from outside
      {{5, 5, 6, 6}, {-1, {}, {}}},                            // no face, no element
  };
  for (const auto& [c, want] : cases) EXPECT_EQ(line(m, c[0], c[1], c[2], c[3]), want) << c[0] << "," << c[1];
  // Through the centre node of a 2 x 2 grid: its four faces cross at one distance, in the
  // quicksort's order.
  g.readMeshText(thTest::gridMeshText(2, 2));
  const auto [k, ise, isd] = line(g, 0.5, 0.5, 1.5, 1.5);
  ASSERT_EQ(k, 5);
  EXPECT_EQ(ise[0], 0);
  for (int32_t i = 0; i < 5; i++) EXPECT_DOUBLE_EQ(isd[i], std::sqrt(i < 4 ? 0.5 : 2.0));
}

// The crossing rule: on the shared diagonal of the unit square split into two triangles a point
// counts in the lower triangle only, whatever the element order; the rule's edges are half-open:
// the left edge of the square is in, the right edge is out.
TEST(PointElem, CrossingRuleAndIndexAcrossInitMeshAndCopies) {
  thMesh2D m, u, mixed, l, empty, none;
  const std::vector<int32_t> lower = {0, 1, 2}, upper = {0, 2, 3};
  thTest::buildMesh(m, {0, 1, 1, 0}, {0, 0, 1, 1}, {0, 0, 0, 0}, {lower, upper});
  thTest::buildMesh(u, {0, 1, 1, 0}, {0, 0, 1, 1}, {0, 0, 0, 0}, {upper, lower});
  const struct {
    double x, y;
    int32_t lowerFirst, upperFirst;
  } cases[] = {{0.7, 0.2, 0, 1},   {0.2, 0.7, 1, 0}, {2.0, 0.5, -1, -1}, {0.5, -0.1, -1, -1},
               {0.5, 1.5, -1, -1}, {0.5, 0.5, 0, 1}, {0.0, 0.5, 1, 0},   {1.0, 0.5, -1, -1}};
  for (const auto& c : cases)
    EXPECT_TRUE(m.pointElem(c.x, c.y) == c.lowerFirst && u.pointElem(c.x, c.y) == c.upperFirst)
        << c.x << " " << c.y;
  // Two quadrilaterals and two triangles over a 3 x 1 strip: every centre finds its element.
  thTest::buildMesh(mixed, {0, 1, 2, 3, 0, 1, 2, 3}, {0, 0, 0, 0, 1, 1, 1, 1}, std::vector<int32_t>(8, 0),
                    {{0, 1, 5, 4}, {1, 2, 6}, {1, 6, 5}, {2, 3, 7, 6}});
  for (int32_t e = 0; e < mixed.noe; ++e) EXPECT_EQ(mixed.pointElem(mixed.exCoor[e], mixed.eyCoor[e]), e);
  // A lon/lat mesh is searched in degrees; meshes without elements, initialised or never, hold no point.
  l.projection = "LONLAT";
  l.readMeshText("4 1\n10 60\n10.1 60\n10.1 60.1\n10 60.1\n0 1 2 3\n");
  EXPECT_TRUE(l.isLonLat && l.pointElem(10.05, 60.05) == 0 && l.pointElem(10.15, 60.05) == -1);
  thTest::buildMesh(none, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}, {});
  EXPECT_TRUE(empty.pointElem(0, 0) == -1 && none.pointElem(0.1, 0.1) == -1);

  // the index is rebuilt by initMesh and shared by copies
  auto* g = new thMesh2D;
  g->readMeshText(thTest::gridMeshText(2, 1));
  EXPECT_EQ(g->pointElem(1.5, 0.5), 1);
  for (int32_t n = 0; n < g->non; n++) g->nxCoor[n] += 10.0;
  g->initMesh();
  EXPECT_TRUE(g->pointElem(11.5, 0.5) == 1 && g->pointElem(1.5, 0.5) == -1);
  thMesh2D copy(*g);  // shares the arrays and the index; builds the k-d tree into the shared cache
  EXPECT_TRUE(copy.pointElemNearest(0, 0, 1) == 0 && copy.kdTree == copy.queryCache->kdTree.get());
  delete g;  // the arrays go with the first; the cache with the last
  EXPECT_NE(copy.queryCache, nullptr);
}

// A 30 x 20 grid of 10 m triangles in UTM-sized coordinates, open on both sides; with jitter its
// inner nodes move by up to 4 m and the mesh is initialised again.
void oracleMesh(thMesh2D& m, bool jitter) {
  m.readMeshText(thTest::gridMeshText(30, 20, 10.0, 10.0, true, 1, 2, 500000.0, 6700000.0));
  std::srand(7);
  if (!jitter) return;
  for (double* c : {m.nxCoor, m.nyCoor})
    for (int32_t n = 0; n < m.non; n++)
      if (m.nt[n] == 0) c[n] += 8.0 * (std::rand() / double(RAND_MAX) - 0.5);
  m.initMesh();
}

// A node, a face midpoint, a point on a face, or anywhere around the mesh.
void oraclePoint(const thMesh2D& m, int32_t kind, double& x, double& y) {
  const double u = std::rand() / double(RAND_MAX), v = std::rand() / double(RAND_MAX);
  const int32_t n = std::rand() % m.non, f = std::rand() % m.nvf, a = m.vfn[2 * f], b = m.vfn[2 * f + 1];
  const double w = kind == 1 ? 0.5 : u;
  x = kind == 0  ? m.nxCoor[n]
      : kind < 3 ? m.nxCoor[a] + w * (m.nxCoor[b] - m.nxCoor[a])
                 : 499950.0 + 400.0 * u;
  y = kind == 0  ? m.nyCoor[n]
      : kind < 3 ? m.nyCoor[a] + w * (m.nyCoor[b] - m.nyCoor[a])
                 : 6699950.0 + 300.0 * v;
}

// The indexed searches must give the scans' answers bit for bit, on nodes and faces too.
TEST(MeshIndex, SearchesEqualTheScans) {
  for (bool jitter : {false, true}) {
    thMesh2D m;
    oracleMesh(m, jitter);
    for (int32_t t = 0; t < 8000; t++) {
      double x0, y0, x1, y1;
      oraclePoint(m, t % 4, x0, y0);
      ASSERT_EQ(m.pointElem(x0, y0), m.pointElemScan(x0, y0)) << t << " " << x0 << " " << y0;
      if (t % 10 != 0) continue;  // a line for every tenth point, all pairs of kinds
      oraclePoint(m, (t / 10) % 4, x0, y0);
      oraclePoint(m, (t / 40) % 4, x1, y1);
      if (t % 500 == 0) y1 = y0;  // along a row of faces
      ASSERT_EQ(line(m, x0, y0, x1, y1), line(m, x0, y0, x1, y1, true)) << t;
    }
  }
}

}  // namespace
