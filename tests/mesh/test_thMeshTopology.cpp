// The topology of a few hundred random meshes against an independent count: jittered grids,
// split into triangles or kept as quadrilaterals, with shuffled node and element numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"

using thalmod::thMesh2D;

namespace {

struct RandomMesh {
  int nx = 0, ny = 0;
  std::vector<double> x, y;
  std::vector<int> type;  // input node type
  std::vector<std::vector<int>> elems;
};

// open: the west side is boundary 1, the east side boundary 2; the rest is closed.
RandomMesh makeMesh(std::mt19937& rng, bool open) {
  std::uniform_int_distribution<int> size(1, 6), rot(0, 3);
  std::uniform_real_distribution<double> jit(-0.2, 0.2);  // cells stay convex
  RandomMesh r{size(rng), size(rng), {}, {}, {}, {}};     // nx, then ny; the arrays are filled below
  const int non = (r.nx + 1) * (r.ny + 1);
  std::vector<int> perm(non);
  std::iota(perm.begin(), perm.end(), 0);
  std::shuffle(perm.begin(), perm.end(), rng);
  r.x = r.y = std::vector<double>(non);
  r.type.resize(non);
  for (int j = 0; j <= r.ny; j++) {
    for (int i = 0; i <= r.nx; i++) {
      const int n = perm[j * (r.nx + 1) + i];
      const bool rim = i == 0 || j == 0 || i == r.nx || j == r.ny;
      r.x[n] = i + (rim ? 0 : jit(rng));
      r.y[n] = j + (rim ? 0 : jit(rng));
      r.type[n] = !open ? 0 : i == 0 ? 1 : i == r.nx ? 2 : 0;
    }
  }
  auto node = [&](int i, int j) { return perm[j * (r.nx + 1) + i]; };
  for (int j = 0; j < r.ny; j++) {
    for (int i = 0; i < r.nx; i++) {
      const int a = node(i, j), b = node(i + 1, j), c = node(i + 1, j + 1), d = node(i, j + 1);
      const int kind = rot(rng);
      if (kind == 0) r.elems.push_back({a, b, c, d});
      if (kind == 1) r.elems.insert(r.elems.end(), {{a, b, c}, {a, c, d}});
      if (kind >= 2) r.elems.insert(r.elems.end(), {{a, b, d}, {b, c, d}});
    }
  }
  std::shuffle(r.elems.begin(), r.elems.end(), rng);
  for (auto& e : r.elems) std::rotate(e.begin(), e.begin() + rng() % e.size(), e.end());
  return r;
}

using Edge = std::pair<int, int>;
Edge edge(int a, int b) { return {std::min(a, b), std::max(a, b)}; }

// b follows a in the element's node ring
bool follows(const std::vector<int>& e, int a, int b) {
  const auto it = std::find(e.begin(), e.end(), a);
  return it != e.end() && e[(it - e.begin() + 1) % e.size()] == b;
}

void checkMesh(const RandomMesh& r, const thMesh2D& m) {
  const int noe = static_cast<int>(r.elems.size());
  std::map<Edge, std::vector<int>> edges;  // elements of each edge, ascending
  std::vector<std::set<Edge>> own(noe);
  for (int e = 0; e < noe; e++) {
    for (size_t i = 0, n = r.elems[e].size(); i < n; i++) {
      const Edge k = edge(r.elems[e][i], r.elems[e][(i + 1) % n]);
      edges[k].push_back(e);
      own[e].insert(k);
    }
  }
  int inner = 0;
  for (auto& [k, v] : edges) inner += v.size() == 2;
  ASSERT_EQ(std::make_pair(m.nvf, m.nivf), std::make_pair(static_cast<int>(edges.size()), inner));
  EXPECT_EQ(m.non - m.nvf + m.noe, 1);  // Euler for a disc

  // each element lists its own edges (so every face has as many elements as its edge), inner
  // faces first and sorted by type, with what lies across
  for (int e = 0; e < noe; e++) {
    std::set<Edge> listed;
    for (int i = 0; i < m.nonpe[e]; i++) {
      const int k = m.eni[e] + i, f = m.evf[k];
      ASSERT_TRUE(f >= 0 && f < m.nvf);
      listed.insert(edge(m.vfn[2 * f], m.vfn[2 * f + 1]));
      EXPECT_TRUE(i == 0 || m.vft[f] >= m.vft[m.evf[k - 1]]);
      EXPECT_EQ(i < m.nivfpe[e], m.vft[f] == 0);
      const int across = m.vfe[2 * f] == e ? m.vfe[2 * f + 1] : m.vfe[2 * f];
      EXPECT_EQ(m.evfNbr[k], m.vft[f] == 0 ? across : -m.vft[f]);
    }
    EXPECT_EQ(own[e], listed);
  }

  // faces: type, order, sides, orientation, normal, distances, length
  for (int f = 0; f < m.nvf; f++) {
    const int a = m.vfn[2 * f], b = m.vfn[2 * f + 1];
    const auto& els = edges.at(edge(a, b));
    // a boundary face between two nodes of one open side is open; two open nodes meet only there
    const int type = els.size() == 2 ? 0 : r.type[a] != 0 && r.type[a] == r.type[b] ? r.type[a] : 99;
    EXPECT_EQ(m.vft[f], type);
    EXPECT_TRUE(f == 0 || m.vft[f] >= m.vft[f - 1]);  // inner, then open by number, then closed
    EXPECT_EQ(m.vfe[2 * f], els[0]);
    EXPECT_EQ(m.vfe[2 * f + 1], type == 0 ? els[1] : type == 99 ? -99 : noe + f - m.nivf);
    // closed faces keep the element's order; the others run against it, the element on the right
    EXPECT_TRUE(type == 99 ? follows(r.elems[els[0]], a, b) : follows(r.elems[els[0]], b, a));
    // the unit normal leaves the first side toward the second (or the face, mirrored by a ghost)
    const double nx = m.vfxNormL[f], ny = m.vfyNormL[f], x0 = m.exCoor[els[0]], y0 = m.eyCoor[els[0]];
    const double x1 = type == 0 ? m.exCoor[els[1]] : m.vfxCoor[f],
                 y1 = type == 0 ? m.eyCoor[els[1]] : m.vfyCoor[f];
    EXPECT_NEAR(std::hypot(nx, ny), 1.0, 1e-12);
    EXPECT_GT(nx * (x1 - x0) + ny * (y1 - y0), 0);
    EXPECT_NEAR(m.vfeDist[2 * f] + m.vfeDist[2 * f + 1], m.vfDist[f], 1e-12);
    EXPECT_TRUE(type == 0 || std::fabs(m.vfeDist[2 * f] - m.vfeDist[2 * f + 1]) < 1e-12);  // a ghost mirrors
    EXPECT_NEAR(m.vfl[f], std::hypot(r.x[b] - r.x[a], r.y[b] - r.y[a]), 1e-12);
  }

  // open boundaries are chains along the boundary, started with the domain on the left: the
  // west boundary (1) runs south, the east boundary (2) north
  for (int i = 0; i < m.nBnd; i++) {
    const int first = m.nivf + m.bndFirst[i], n = m.bndNoFaces[i];
    EXPECT_EQ(n, r.ny);
    for (int f = first; f + 1 < first + n; f++) {
      const std::set<int> s = {m.vfn[2 * f], m.vfn[2 * f + 1], m.vfn[2 * f + 2], m.vfn[2 * f + 3]};
      EXPECT_EQ(s.size(), 3u) << "faces " << f << " and " << f + 1 << " share no node";
    }
    auto top = [&](int f) { return std::max(r.y[m.vfn[2 * f]], r.y[m.vfn[2 * f + 1]]); };
    EXPECT_TRUE(n < 2 || (m.bndId[i] == 1) == (top(first) > top(first + n - 1)));
  }
  EXPECT_EQ(m.tnbe, m.nBnd * r.ny);

  // node types: open boundary, else closed when on a boundary face, else inner
  std::vector<int> nt = r.type;
  for (auto& [k, v] : edges)
    for (int n : {k.first, k.second})
      if (v.size() == 1 && r.type[n] == 0) nt[n] = 99;
  EXPECT_EQ(std::vector<int>(m.nt, m.nt + m.non), nt);
  EXPECT_NEAR(std::accumulate(m.eArea, m.eArea + noe, 0.0), r.nx * r.ny, 1e-9 * r.nx * r.ny);
}

}  // namespace

TEST(MeshTopology, RandomMeshesAgainstIndependentCount) {
  std::mt19937 rng(20240611);
  for (int trial = 0; trial < 300; trial++) {
    RandomMesh r = makeMesh(rng, trial % 2 == 1);
    thMesh2D m;
    thTest::buildMesh(m, r.x, r.y, r.type, r.elems);
    SCOPED_TRACE("trial " + std::to_string(trial) + "\n" + m.toString());
    checkMesh(r, m);
    m.initElemNbrs();
    for (int e = 0; e < m.noe; e++) {
      ASSERT_EQ(m.eNbrNo[e], m.nivfpe[e]);
      for (int k = m.eNbrIdx[e]; k < m.eNbrIdx[e] + m.eNbrNo[e]; k++) {
        const int f = m.eNbrVf[k];
        EXPECT_EQ(m.eNbr[k], m.vfe[2 * f] == e ? m.vfe[2 * f + 1] : m.vfe[2 * f]);
      }
    }
    m.initMesh();  // a second run gives the same topology
    checkMesh(r, m);
    if (::testing::Test::HasFailure()) break;
  }
}
