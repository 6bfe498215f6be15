// Elements crossed by a straight line, hand-worked; the indexed point and line searches against the
// plain scans; the index across initMesh and shallow copies.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "mesh/thMesh2D.h"
#include "mesh/thMeshIndex.h"
#include "testutil/thMeshFixtures.h"

namespace {

using thalmod::thMesh2D;

struct Stretches {
  int32_t k = 0;
  std::vector<int32_t> ise;
  std::vector<double> isd;
  bool operator==(const Stretches&) const = default;
};

Stretches line(const thMesh2D& m, double x0, double y0, double x1, double y1, bool scan = false) {
  int32_t* ise = nullptr;
  double* isd = nullptr;
  Stretches s;
  s.k = scan ? m.lineIntersectionsScan(x0, y0, x1, y1, ise, isd)
             : m.lineIntersections(x0, y0, x1, y1, ise, isd);
  if (s.k > 0) s.ise.assign(ise, ise + s.k), s.isd.assign(isd, isd + s.k);
  EXPECT_TRUE(s.k > 0 || ise == nullptr);  // -1 leaves the outputs untouched
  delete[] ise, delete[] isd;
  return s;
}

TEST(LineIntersections, HandWorkedStretches) {
  // Two unit squares side by side; face 0 is the inner face x = 1, every rim face is closed.
  thMesh2D m, g;
  m.readMeshText(thTest::gridMeshText(2, 1));
  const std::vector<std::pair<std::vector<double>, Stretches>> cases = {
      {{0.5, 0.5, 1.5, 0.5}, {2, {0, 1}, {0.5, 1.0}}},         // across the inner face
      {{-1, 0.5, 0.5, 0.5}, {2, {-1, 0}, {1.0, 1.5}}},         // entering through the west face
      {{-1, 0.5, 3, 0.5}, {4, {-1, 0, 1, -1}, {1, 2, 3, 4}}},  // through and out: land beyond is -1
      {{0.2, 0.2, 0.4, 0.6}, {1, {0}, {std::sqrt(0.2)}}},      // inside one element
      {{1.5, 0.5, 1.5, 2.0}, {2, {-1, 1}, {0.5, 1.5}}},        // a boundary face first: read as from outside
      {{5, 5, 6, 6}, {-1, {}, {}}},                            // no face, no element
  };
  for (const auto& [c, want] : cases) EXPECT_EQ(line(m, c[0], c[1], c[2], c[3]), want) << c[0] << "," << c[1];
  // Through the centre node of a 2 x 2 grid: its four faces cross at one distance, in the
  // quicksort's order.
  g.readMeshText(thTest::gridMeshText(2, 2));
  const Stretches s = line(g, 0.5, 0.5, 1.5, 1.5);
  ASSERT_EQ(s.k, 5);
  EXPECT_EQ(s.ise[0], 0);
  for (int32_t i = 0; i < 5; i++) EXPECT_DOUBLE_EQ(s.isd[i], std::sqrt(i < 4 ? 0.5 : 2.0));
}

// A 30 x 20 grid of 10 m triangles in UTM-sized coordinates, open on both sides; with jitter its
// inner nodes move by up to 4 m and the mesh is initialised again.
void oracleMesh(thMesh2D& m, bool jitter) {
  m.readMeshText(thTest::gridMeshText(30, 20, 10.0, 10.0, true, 1, 2, 500000.0, 6700000.0));
  std::srand(7);
  if (!jitter) return;
  for (int32_t n = 0; n < m.non; n++)
    if (m.nt[n] == 0) {
      m.nxCoor[n] += 8.0 * (std::rand() / double(RAND_MAX) - 0.5);
      m.nyCoor[n] += 8.0 * (std::rand() / double(RAND_MAX) - 0.5);
    }
  m.initMesh();
}

// A node, a face midpoint, a point on a face, or anywhere around the mesh.
void oraclePoint(const thMesh2D& m, int32_t kind, double& x, double& y) {
  const double u = std::rand() / double(RAND_MAX), v = std::rand() / double(RAND_MAX);
  const int32_t n = std::rand() % m.non, f = std::rand() % m.nvf, a = m.vfn[2 * f], b = m.vfn[2 * f + 1];
  if (kind == 0) {
    x = m.nxCoor[n];
    y = m.nyCoor[n];
  } else if (kind == 1) {
    x = m.vfxCoor[f];
    y = m.vfyCoor[f];
  } else if (kind == 2) {
    x = m.nxCoor[a] + u * (m.nxCoor[b] - m.nxCoor[a]);
    y = m.nyCoor[a] + u * (m.nyCoor[b] - m.nyCoor[a]);
  } else {
    x = 499950.0 + 400.0 * u;
    y = 6699950.0 + 300.0 * v;
  }
}

// The indexed searches must give the scans' answers bit for bit, on nodes and faces too.
TEST(MeshIndex, PointElemEqualsTheScan) {
  for (bool jitter : {false, true}) {
    thMesh2D m;
    oracleMesh(m, jitter);
    for (int32_t t = 0; t < 8000; t++) {
      double x, y;
      oraclePoint(m, t % 4, x, y);
      ASSERT_EQ(m.pointElem(x, y), m.pointElemScan(x, y)) << t << " " << x << " " << y;
    }
  }
}

TEST(MeshIndex, LineIntersectionsEqualsTheScan) {
  for (bool jitter : {false, true}) {
    thMesh2D m;
    oracleMesh(m, jitter);
    for (int32_t t = 0; t < 800; t++) {
      double x0, y0, x1, y1;
      oraclePoint(m, t % 4, x0, y0);
      oraclePoint(m, (t / 4) % 4, x1, y1);
      if (t % 50 == 0) y1 = y0;  // along a row of faces
      ASSERT_EQ(line(m, x0, y0, x1, y1), line(m, x0, y0, x1, y1, true)) << t;
    }
  }
}

TEST(MeshIndex, RebuiltByInitMeshAndSharedByCopies) {
  auto* m = new thMesh2D;
  m->readMeshText(thTest::gridMeshText(2, 1));
  EXPECT_EQ(m->pointElem(1.5, 0.5), 1);
  for (int32_t n = 0; n < m->non; n++) m->nxCoor[n] += 10.0;
  m->initMesh();
  EXPECT_TRUE(m->pointElem(11.5, 0.5) == 1 && m->pointElem(1.5, 0.5) == -1);
  thMesh2D copy(*m);  // shares the arrays and the index; builds the k-d tree into the shared cache
  EXPECT_TRUE(copy.pointElemNearest(0, 0, 1) == 0 && copy.kdTree == copy.queryCache->kdTree.get());
  delete m;  // the arrays go with the first; the cache with the last
  EXPECT_NE(copy.queryCache, nullptr);
}

}  // namespace
