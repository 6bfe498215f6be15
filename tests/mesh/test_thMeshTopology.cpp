// The topology of a few hundred random meshes against an independent count: jittered grids,
// split into triangles or kept as quadrilaterals, with shuffled node and element numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "mesh/thMesh2D.h"

using thalmod::thMesh2D;

namespace {

struct RandomMesh {
  int nx = 0, ny = 0;
  std::vector<double> x, y;
  std::vector<int> type;       // input node type
  std::vector<int> col;        // grid column of each node (to know the west and east sides)
  std::vector<std::vector<int>> elems;
  std::string text;
};

RandomMesh makeMesh(std::mt19937& rng, bool open) {
  std::uniform_int_distribution<int> size(1, 6), coin(0, 1), rot(0, 3);
  std::uniform_real_distribution<double> jit(-0.2, 0.2);  // cells stay convex
  RandomMesh r;
  r.nx = size(rng);
  r.ny = size(rng);
  const int non = (r.nx + 1) * (r.ny + 1);
  std::vector<int> perm(non);
  for (int i = 0; i < non; i++) perm[i] = i;
  std::shuffle(perm.begin(), perm.end(), rng);
  r.x.resize(non);
  r.y.resize(non);
  r.type.resize(non);
  r.col.resize(non);
  for (int j = 0; j <= r.ny; j++) {
    for (int i = 0; i <= r.nx; i++) {
      const int n = perm[j * (r.nx + 1) + i];
      const bool rim = i == 0 || j == 0 || i == r.nx || j == r.ny;
      r.x[n] = i + (rim ? 0 : jit(rng));
      r.y[n] = j + (rim ? 0 : jit(rng));
      r.col[n] = i;
      r.type[n] = 0;
      if (open && i == 0) r.type[n] = 1;
      if (open && i == r.nx) r.type[n] = 2;
    }
  }
  auto node = [&](int i, int j) { return perm[j * (r.nx + 1) + i]; };
  for (int j = 0; j < r.ny; j++) {
    for (int i = 0; i < r.nx; i++) {
      const int a = node(i, j), b = node(i + 1, j), c = node(i + 1, j + 1), d = node(i, j + 1);
      switch (rot(rng)) {
        case 0: r.elems.push_back({a, b, c, d}); break;
        case 1: r.elems.push_back({a, b, c}); r.elems.push_back({a, c, d}); break;
        default: r.elems.push_back({a, b, d}); r.elems.push_back({b, c, d}); break;
      }
    }
  }
  std::shuffle(r.elems.begin(), r.elems.end(), rng);
  for (auto& e : r.elems) std::rotate(e.begin(), e.begin() + rng() % e.size(), e.end());
  std::ostringstream ss;
  ss.precision(17);
  ss << non << " " << r.elems.size() << "\n";
  for (int n = 0; n < non; n++) ss << r.x[n] << " " << r.y[n] << " " << r.type[n] << "\n";
  for (auto& e : r.elems) {
    for (int n : e) ss << n << " ";
    ss << "\n";
  }
  r.text = ss.str();
  return r;
}

using Edge = std::pair<int, int>;
Edge edge(int a, int b) { return {std::min(a, b), std::max(a, b)}; }

// true when b follows a in the element's node ring
bool follows(const std::vector<int>& e, int a, int b) {
  for (size_t i = 0; i < e.size(); i++)
    if (e[i] == a) return e[(i + 1) % e.size()] == b;
  return false;
}

void checkMesh(const RandomMesh& r, const thMesh2D& m) {
  const int noe = static_cast<int>(r.elems.size());
  std::map<Edge, std::vector<int>> edges;  // elements of each edge, ascending
  for (int e = 0; e < noe; e++) {
    const auto& el = r.elems[e];
    for (size_t i = 0; i < el.size(); i++) edges[edge(el[i], el[(i + 1) % el.size()])].push_back(e);
  }
  int inner = 0;
  for (auto& [k, v] : edges) {
    ASSERT_LE(v.size(), 2u);
    inner += v.size() == 2;
  }
  ASSERT_EQ(m.nvf, static_cast<int>(edges.size()));
  ASSERT_EQ(m.nivf, inner);
  EXPECT_EQ(m.non - m.nvf + m.noe, 1);  // Euler for a disc

  // each element's faces are its own edges
  std::vector<int> uses(m.nvf, 0);
  for (int e = 0; e < noe; e++) {
    std::set<Edge> own, listed;
    const auto& el = r.elems[e];
    for (size_t i = 0; i < el.size(); i++) own.insert(edge(el[i], el[(i + 1) % el.size()]));
    int prevType = -1;
    for (int i = 0; i < m.nonpe[e]; i++) {
      const int k = m.eni[e] + i, f = m.evf[k];
      ASSERT_GE(f, 0);
      ASSERT_LT(f, m.nvf);
      uses[f]++;
      listed.insert(edge(m.vfn[2 * f], m.vfn[2 * f + 1]));
      EXPECT_GE(m.vft[f], prevType);  // sorted by type
      prevType = m.vft[f];
      EXPECT_EQ(i < m.nivfpe[e], m.vft[f] == 0);
      const int across = m.vfe[2 * f] == e ? m.vfe[2 * f + 1] : m.vfe[2 * f];
      EXPECT_EQ(m.evfNbr[k], m.vft[f] == 0 ? across : -m.vft[f]);
    }
    EXPECT_EQ(own, listed);
  }

  // sides, types, orientation, order
  int lastType = 0;
  for (int f = 0; f < m.nvf; f++) {
    const int a = m.vfn[2 * f], b = m.vfn[2 * f + 1];
    const auto& els = edges.at(edge(a, b));
    EXPECT_EQ(uses[f], static_cast<int>(els.size()));
    int expectType = 0;
    if (els.size() == 1) {
      expectType = 99;
      if (r.col[a] == 0 && r.col[b] == 0 && r.type[a] == 1) expectType = 1;
      if (r.col[a] == r.nx && r.col[b] == r.nx && r.type[a] == 2) expectType = 2;
    }
    EXPECT_EQ(m.vft[f], expectType);
    EXPECT_GE(m.vft[f], lastType);  // inner, then open by number, then closed
    lastType = m.vft[f];
    EXPECT_EQ(m.vfe[2 * f], els[0]);
    if (expectType == 0) {
      EXPECT_EQ(m.vfe[2 * f + 1], els[1]);
    } else if (expectType == 99) {
      EXPECT_EQ(m.vfe[2 * f + 1], -99);
    } else {
      EXPECT_EQ(m.vfe[2 * f + 1], noe + f - m.nivf);
    }
    const auto& el = r.elems[els[0]];
    if (expectType == 99) {
      EXPECT_TRUE(follows(el, a, b));
    } else {
      EXPECT_TRUE(follows(el, b, a));  // against the first element: it lies on the right
    }
    // the normal leaves the first side
    const double nx = m.vfxNormL[f], ny = m.vfyNormL[f];
    EXPECT_NEAR(std::hypot(nx, ny), 1.0, 1e-12);
    if (expectType == 0) {
      EXPECT_GT(nx * (m.exCoor[els[1]] - m.exCoor[els[0]]) + ny * (m.eyCoor[els[1]] - m.eyCoor[els[0]]), 0);
      EXPECT_NEAR(m.vfeDist[2 * f] + m.vfeDist[2 * f + 1], m.vfDist[f], 1e-12);
    } else {
      EXPECT_GT(nx * (m.vfxCoor[f] - m.exCoor[els[0]]) + ny * (m.vfyCoor[f] - m.eyCoor[els[0]]), 0);
      EXPECT_NEAR(m.vfeDist[2 * f], m.vfeDist[2 * f + 1], 1e-12);
    }
    EXPECT_NEAR(m.vfl[f], std::hypot(r.x[b] - r.x[a], r.y[b] - r.y[a]), 1e-12);
  }

  // open boundaries are chains along the boundary, started with the domain on the left
  int openFaces = 0;
  for (int i = 0; i < m.nBnd; i++) {
    const int first = m.nivf + m.bndFirst[i], n = m.bndNoFaces[i];
    openFaces += n;
    EXPECT_EQ(n, r.ny);
    for (int k = 0; k + 1 < n; k++) {
      const int f = first + k, g = f + 1;
      const bool joined = m.vfn[2 * f] == m.vfn[2 * g] || m.vfn[2 * f] == m.vfn[2 * g + 1] ||
                          m.vfn[2 * f + 1] == m.vfn[2 * g] || m.vfn[2 * f + 1] == m.vfn[2 * g + 1];
      EXPECT_TRUE(joined);
    }
    // the west boundary (1) runs south, the east boundary (2) north
    const int f0 = first, fl = first + n - 1;
    const double y0 = std::max(r.y[m.vfn[2 * f0]], r.y[m.vfn[2 * f0 + 1]]);
    const double yl = std::max(r.y[m.vfn[2 * fl]], r.y[m.vfn[2 * fl + 1]]);
    if (n > 1) {
      EXPECT_EQ(m.bndId[i] == 1, y0 > yl);
    }
  }
  EXPECT_EQ(openFaces, m.tnbe);

  // node types
  for (int n = 0; n < m.non; n++) {
    int expect = 0;
    for (auto& [k, v] : edges) {
      if (k.first != n && k.second != n) continue;
      if (v.size() == 1 && expect == 0) expect = 99;
    }
    if (r.type[n] != 0 && (r.col[n] == 0 || r.col[n] == r.nx)) expect = r.type[n];
    EXPECT_EQ(m.nt[n], expect) << "node " << n;
  }

  double area = 0;
  for (int e = 0; e < noe; e++) area += m.eArea[e];
  EXPECT_NEAR(area, r.nx * r.ny, 1e-9 * r.nx * r.ny);
}

}  // namespace

TEST(MeshTopology, RandomMeshesAgainstIndependentCount) {
  std::mt19937 rng(20240611);
  for (int trial = 0; trial < 300; trial++) {
    const bool open = trial % 2 == 1;
    RandomMesh r = makeMesh(rng, open);
    thMesh2D m;
    ASSERT_EQ(m.readMeshText(r.text), 0) << r.text;
    SCOPED_TRACE("trial " + std::to_string(trial) + "\n" + r.text);
    checkMesh(r, m);
    m.initElemNbrs();
    for (int e = 0; e < m.noe; e++) {
      ASSERT_EQ(m.eNbrNo[e], m.nivfpe[e]);
      for (int k = 0; k < m.eNbrNo[e]; k++) {
        const int f = m.eNbrVf[m.eNbrIdx[e] + k];
        const int other = m.vfe[2 * f] == e ? m.vfe[2 * f + 1] : m.vfe[2 * f];
        EXPECT_EQ(m.eNbr[m.eNbrIdx[e] + k], other);
      }
    }
    // a second run gives the same topology
    m.initMesh();
    checkMesh(r, m);
    if (::testing::Test::HasFailure()) break;
  }
}
