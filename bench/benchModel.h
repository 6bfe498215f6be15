// What the result-file benchmarks share: the timing of library calls against their baselines, and
// the large model that they write and read.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

#include "model/thModelInfo.h"
#include "resultfile/thResultFile.h"

namespace bench {

inline double seconds(const std::function<void()>& f) {
  auto t0 = std::chrono::steady_clock::now();
  f();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// CPU time of this process, so that other work on a shared machine does not count.
inline double cpuSeconds() {
  timespec ts;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
  return ts.tv_sec + ts.tv_nsec * 1e-9;
}

// The least CPU time of `repeats` runs of f.
template <class F>
double bestSeconds(int repeats, F&& f) {
  double best = 1e300;
  for (int k = 0; k < repeats; ++k) {
    const double t0 = cpuSeconds();
    f();
    best = std::min(best, cpuSeconds() - t0);
  }
  return best;
}

// Best of `rounds` runs of each, baseline and library taking turns.
inline std::pair<double, double> best(int rounds, const std::function<void()>& lib,
                                      const std::function<void()>& base) {
  double l = 1e30, b = 1e30;
  for (int r = 0; r < rounds; ++r) {
    b = std::min(b, seconds(base));
    l = std::min(l, seconds(lib));
  }
  return {l, b};
}

// One line of a measurement: library time, baseline time (named `base`), their ratio and target.
inline void report(const char* what, std::pair<double, double> lb, double target, const char* base) {
  std::printf("%-44s library %8.4f s   %s %8.4f s   ratio %5.2f   (target <= %.2f)\n", what, lb.first, base,
              lb.second, lb.first / lb.second, target);
}

// The model: n x n unit-ish quadrilaterals, open boundary 1 along the left edge, sea bed sloping
// from 1 m to 40 m across the domain, 20 layers of 2 m, hourly timesteps from 2010-01-01.
inline void buildModel(thalmod::thModelInfo& mi, int n) {
  thalmod::thMesh2D& m = mi.mesh2d;
  int nn = n + 1;
  m.non = nn * nn;
  m.nxCoor = new double[m.non];
  m.nyCoor = new double[m.non];
  m.nt = new int32_t[m.non];
  // Coordinates jittered by up to a fifth of the spacing, as a real mesh is irregular (and does
  // not compress into nothing, which would flatter the bare reads).
  uint64_t seed = 12345;
  auto rnd = [&seed] {
    seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(seed >> 11) / 9007199254740992.0 - 0.5;
  };
  for (int j = 0; j < nn; ++j)
    for (int i = 0; i < nn; ++i) {
      int k = j * nn + i;
      bool edge = i == 0 || j == 0 || i == n || j == n;
      m.nxCoor[k] = 10.0 * i + (edge ? 0.0 : 4.0 * rnd());
      m.nyCoor[k] = 10.0 * j + (edge ? 0.0 : 4.0 * rnd());
      m.nt[k] = i == 0 ? 1 : 0;
    }
  m.noe = n * n;
  m.nonpe = new int32_t[m.noe];
  m.en = new int32_t[4 * m.noe];
  mi.elemBathy = new double[m.noe];
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) {
      int e = j * n + i, a = j * nn + i;
      m.nonpe[e] = 4;
      m.en[4 * e] = a;
      m.en[4 * e + 1] = a + 1;
      m.en[4 * e + 2] = a + 1 + nn;
      m.en[4 * e + 3] = a + nn;
      mi.elemBathy[e] = 1.0 + 39.0 * (i + j) / (2.0 * n) + 0.5 * rnd();
    }
  m.initMesh();
  mi.nol = 20;
  mi.dz = new double[20];
  for (int l = 0; l < 20; ++l) mi.dz[l] = 2.0;
  mi.initCells();
  mi.startDT = 1262304000;
  mi.dt = 3600.0;
}

// Writes nt timesteps of a 3-D item "temp" and a 2-D item "elev" with values that vary over cells
// and time, so that compression meets realistic data; w holds the model (buildModel) and a name.
inline void writeTempElevRun(thalmod::thResultFile& w, int nt) {
  const int32_t cells = w.mInfo.cells, noe = w.mInfo.mesh2d.noe;
  w.addItem("temp", cells);
  w.addItem("elev", noe);
  std::vector<float> temp(cells), elev(noe);
  w.writeHeader();
  for (int t = 0; t < nt; ++t) {
    for (int c = 0; c < cells; ++c) temp[c] = 10.0f + 0.001f * (c % 5000) + t;
    for (int e = 0; e < noe; ++e) elev[e] = 0.01f * (e % 300) - t;
    w.writeItemData(temp.data(), cells);
    w.writeItemData(elev.data(), noe);
  }
  w.closeFile(nt);
}

// A mixed mesh of nx by ny cells of 100 m from (x0, y0) in UTM metres, inner nodes jittered by up
// to 20 m: the western half quadrilaterals, the eastern half split into two triangles each along
// alternating diagonals, so that every other inner node there has four triangles. Open boundary 1
// along the west side. With orphanEvery > 0 an unused node follows every orphanEvery-th grid node.
// Primary arrays only; the caller runs initMesh.
inline void buildJitteredMesh(thalmod::thMesh2D& m, int32_t nx, int32_t ny, int32_t orphanEvery = 0,
                              double x0 = 400000.0, double y0 = 6600000.0) {
  const int64_t grid = static_cast<int64_t>(nx + 1) * (ny + 1);
  auto number = [orphanEvery](int64_t g) {
    return static_cast<int32_t>(orphanEvery > 0 ? g + g / orphanEvery : g);
  };
  m.non = number(grid - 1) + 1 + (orphanEvery > 0 && grid % orphanEvery == 0 ? 1 : 0);
  m.nxCoor = new double[m.non];
  m.nyCoor = new double[m.non];
  m.nt = new int32_t[m.non];
  for (int32_t i = 0; i < m.non; ++i) m.nxCoor[i] = x0 - 50.0, m.nyCoor[i] = y0 - 50.0, m.nt[i] = 0;
  uint64_t seed = 987654321;
  auto rnd = [&seed] {
    seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(seed >> 11) / 9007199254740992.0 - 0.5;
  };
  for (int32_t j = 0; j <= ny; ++j)
    for (int32_t i = 0; i <= nx; ++i) {
      const int32_t k = number(static_cast<int64_t>(j) * (nx + 1) + i);
      const bool rim = i == 0 || j == 0 || i == nx || j == ny;
      m.nxCoor[k] = x0 + 100.0 * i + (rim ? 0.0 : 40.0 * rnd());
      m.nyCoor[k] = y0 + 100.0 * j + (rim ? 0.0 : 40.0 * rnd());
      m.nt[k] = i == 0 ? 1 : 0;
    }
  const int32_t half = nx / 2;
  m.noe = ny * half + 2 * ny * (nx - half);
  m.nonpe = new int32_t[m.noe];
  m.en = new int32_t[4 * static_cast<int64_t>(m.noe)];
  int64_t k = 0;
  int32_t e = 0;
  for (int32_t j = 0; j < ny; ++j)
    for (int32_t i = 0; i < nx; ++i) {
      const int64_t g = static_cast<int64_t>(j) * (nx + 1) + i;
      const int32_t a = number(g), b = number(g + 1), c = number(g + nx + 2), d = number(g + nx + 1);
      if (i < half) {
        for (int32_t n : {a, b, c, d}) m.en[k++] = n;
        m.nonpe[e++] = 4;
        continue;
      }
      const int32_t tris[2][6] = {{a, b, c, a, c, d}, {a, b, d, b, c, d}};  // diagonal through even nodes
      for (int32_t n : tris[(i + j) % 2]) m.en[k++] = n;
      m.nonpe[e++] = 3;
      m.nonpe[e++] = 3;
    }
}

}  // namespace bench
