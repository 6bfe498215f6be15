// Meshes for the model tests, built from node and element lists through initMesh.
#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "mesh/thMesh2D.h"

namespace modelTest {

// Fills the primary arrays of a mesh (metres) and runs initMesh.
inline void buildMesh(thalmod::thMesh2D& m, const std::vector<double>& x, const std::vector<double>& y,
                      const std::vector<int32_t>& types, const std::vector<std::vector<int32_t>>& elems) {
  m.projection = "UTM32";
  m.non = static_cast<int32_t>(x.size());
  m.nxCoor = new double[m.non];
  m.nyCoor = new double[m.non];
  m.nt = new int32_t[m.non];
  std::copy(x.begin(), x.end(), m.nxCoor);
  std::copy(y.begin(), y.end(), m.nyCoor);
  std::copy(types.begin(), types.end(), m.nt);
  m.noe = static_cast<int32_t>(elems.size());
  m.nonpe = new int32_t[m.noe];
  std::vector<int32_t> en;
  for (int32_t e = 0; e < m.noe; e++) {
    m.nonpe[e] = static_cast<int32_t>(elems[e].size());
    en.insert(en.end(), elems[e].begin(), elems[e].end());
  }
  m.en = new int32_t[en.size()];
  std::copy(en.begin(), en.end(), m.en);
  m.initMesh();
}

// Three unit squares in a row:
//   4---5---6---7
//   | 0 | 1 | 2 |
//   0---1---2---3
// The right end (nodes 3, 7) is open boundary 1 when openRight, the left end (nodes 0, 4) open
// boundary 2 when openLeft; all other outer faces are closed. Inner faces: 0 = (1,5) between
// elements 0 and 1, 1 = (2,6) between elements 1 and 2; then the open faces, right before left.
inline void stripMesh(thalmod::thMesh2D& m, bool openRight, bool openLeft) {
  std::vector<int32_t> t(8, 0);
  if (openRight) t[3] = t[7] = 1;
  if (openLeft) t[0] = t[4] = 2;
  buildMesh(m, {0, 1, 2, 3, 0, 1, 2, 3}, {0, 0, 0, 0, 1, 1, 1, 1}, t,
            {{0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}});
}

// A grid of nx by ny cells, each a square or two triangles, with the right side open boundary 1
// and, if asked, the left side open boundary 2.
inline void gridMesh(thalmod::thMesh2D& m, int32_t nx, int32_t ny, std::mt19937& rng, bool openLeft) {
  std::vector<double> x, y;
  std::vector<int32_t> t;
  for (int32_t j = 0; j <= ny; j++) {
    for (int32_t i = 0; i <= nx; i++) {
      x.push_back(i * 10.0);
      y.push_back(j * 10.0);
      t.push_back(i == nx ? 1 : (i == 0 && openLeft ? 2 : 0));
    }
  }
  auto node = [nx](int32_t i, int32_t j) { return j * (nx + 1) + i; };
  std::vector<std::vector<int32_t>> elems;
  std::bernoulli_distribution split(0.4);
  for (int32_t j = 0; j < ny; j++) {
    for (int32_t i = 0; i < nx; i++) {
      int32_t a = node(i, j), b = node(i + 1, j), c = node(i + 1, j + 1), d = node(i, j + 1);
      if (split(rng)) {
        elems.push_back({a, b, c});
        elems.push_back({a, c, d});
      } else {
        elems.push_back({a, b, c, d});
      }
    }
  }
  buildMesh(m, x, y, t, elems);
}

}  // namespace modelTest
