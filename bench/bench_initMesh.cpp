// initMesh on a triangle mesh of 1,000,000 elements, timed against a plain pass over the same
// elements that computes each element's area (the baseline, measured in the same run). Also
// prints the time per element at a quarter of the size, to show that initMesh is linear, and
// the peak resident size per element.
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"

namespace {

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point a, Clock::time_point b) {
  return std::chrono::duration<double>(b - a).count();
}

// A jittered grid of nx by ny cells, each split into two triangles: 2 nx ny elements.
void fillMesh(thalmod::thMesh2D& m, int32_t nx, int32_t ny) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> jit(-0.2, 0.2);
  m.non = (nx + 1) * (ny + 1);
  m.noe = 2 * nx * ny;
  m.nxCoor = new double[m.non];
  m.nyCoor = new double[m.non];
  m.nt = new int32_t[m.non];
  for (int32_t j = 0; j <= ny; j++) {
    for (int32_t i = 0; i <= nx; i++) {
      const int32_t n = j * (nx + 1) + i;
      const bool rim = i == 0 || j == 0 || i == nx || j == ny;
      m.nxCoor[n] = 100.0 * (i + (rim ? 0 : jit(rng)));
      m.nyCoor[n] = 100.0 * (j + (rim ? 0 : jit(rng)));
      m.nt[n] = i == 0 ? 1 : 0;  // an open boundary along the west side
    }
  }
  m.nonpe = new int32_t[m.noe];
  m.en = new int32_t[3 * static_cast<int64_t>(m.noe)];
  int64_t k = 0;
  for (int32_t j = 0; j < ny; j++) {
    for (int32_t i = 0; i < nx; i++) {
      const int32_t a = j * (nx + 1) + i, b = a + 1, c = b + nx + 1, d = a + nx + 1;
      const int32_t tri[6] = {a, b, c, a, c, d};
      for (int32_t t : tri) m.en[k++] = t;
    }
  }
  std::fill(m.nonpe, m.nonpe + m.noe, 3);
}

double baselineAreas(const thalmod::thMesh2D& m) {
  double best = 1e30, sink = 0;
  for (int rep = 0; rep < 5; rep++) {
    const auto t0 = Clock::now();
    double sum = 0;
    int64_t k = 0;
    for (int32_t e = 0; e < m.noe; e++) {
      double x[3], y[3];
      for (int32_t i = 0; i < m.nonpe[e]; i++, k++) {
        x[i] = m.nxCoor[m.en[k]];
        y[i] = m.nyCoor[m.en[k]];
      }
      sum += VCppLib::polygonArea(x, y, m.nonpe[e]);
    }
    const auto t1 = Clock::now();
    sink += sum;
    best = std::min(best, seconds(t0, t1));
  }
  if (sink == 0) std::printf("(empty mesh)\n");
  return best;
}

double timeInitMesh(int32_t nx, int32_t ny, double& baseline) {
  thalmod::thMesh2D m;
  fillMesh(m, nx, ny);
  baseline = baselineAreas(m);
  const auto t0 = Clock::now();
  m.initMesh();
  const auto t1 = Clock::now();
  return seconds(t0, t1);
}

}  // namespace

int main() {
  double baseSmall = 0, baseLarge = 0;
  const double small = timeInitMesh(250, 500, baseSmall);   // 250,000 elements
  const double large = timeInitMesh(500, 1000, baseLarge);  // 1,000,000 elements
  rusage ru{};
  getrusage(RUSAGE_SELF, &ru);
  std::printf("initMesh, 1,000,000 triangles: %.3f s; baseline (element areas) %.4f s; ratio %.1f\n", large,
              baseLarge, large / baseLarge);
  std::printf(
      "initMesh, 250,000 triangles: ratio %.1f; time per element, large/small: %.2f (1.0 is linear)\n",
      small / baseSmall, (large / 1.0e6) / (small / 2.5e5));
  std::printf("peak resident size: %.1f MB, %.0f bytes per element\n", ru.ru_maxrss / 1024.0,
              ru.ru_maxrss * 1024.0 / 1.0e6);
  return 0;
}
