// Painting speed: scattered points and a large grid onto a full-HD bitmap, against the floor of a
// plain pass that writes every pixel once, measured in the same run.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <random>
#include <vector>

#include "benchModel.h"
#include "interp/VDraw.h"

using namespace VCppLib;

namespace {

using bench::bestSeconds;
using bench::cpuSeconds;

constexpr int32_t kNx = 1920, kNy = 1080;

void report(const char* what, double seconds, double floor) {
  const double pixels = static_cast<double>(kNx) * kNy;
  std::printf("%-46s %9.2f ms %12.3g pixels/s %9.1f x floor\n", what, seconds * 1e3, pixels / seconds,
              seconds / floor);
}

}  // namespace

int main() {
  std::vector<int32_t> bitmap(static_cast<size_t>(kNx) * kNy);
  int32_t* bmp = bitmap.data();
  const int32_t cols[3] = {0x0000FF, 0x00FF00, 0xFF0000};

  // Floor: every pixel written once with a value that the compiler cannot fold away.
  int32_t seed = 1;
  const double floor = bestSeconds(20, [&] {
    for (size_t k = 0; k < bitmap.size(); ++k) bitmap[k] = static_cast<int32_t>(k) ^ seed;
    seed += bitmap[bitmap.size() / 2] & 1;
  });
  report("plain write of every pixel (floor)", floor, floor);

  // 1,000,000 scattered points over the map of 1920 x 1080 units (one unit per pixel).
  const int32_t n = 1000000;
  std::mt19937 gen(7);
  std::uniform_real_distribution<double> ux(0, kNx), uy(0, kNy), uv(0, 100);
  std::vector<double> x(n), y(n), v(n);
  for (int32_t k = 0; k < n; ++k) {
    x[k] = ux(gen);
    y[k] = uy(gen);
    v[k] = uv(gen);
  }
  const double radii[] = {-1.0, 1.0, 3.0};
  const char* names[] = {"points, default radius (6 px)", "points, radius 1 px", "points, radius 3 px"};
  for (int k = 0; k < 3; ++k) {
    const double t = bestSeconds(3, [&] {
      VDraw::interpPointsOnBitmap(x.data(), y.data(), v.data(), n, bmp, kNx, kNy, 64, 0, kNx, 0, kNy, 0, 100,
                                  cols, 3, radii[k]);
    });
    report(names[k], t, floor);
  }

  // A 4000 x 4000 grid under the whole picture.
  const int32_t gn = 4000;
  std::vector<double> data(static_cast<size_t>(gn) * gn);
  for (int32_t j = 0; j < gn; ++j)
    for (int32_t i = 0; i < gn; ++i) data[static_cast<size_t>(j) * gn + i] = (i * 7 + j * 3) % 100;
  VCartGrid grid;
  grid.x0 = -1;
  grid.y0 = -1;
  grid.dx = (kNx + 2.0) / (gn - 1);
  grid.dy = (kNy + 2.0) / (gn - 1);
  grid.nx = gn;
  grid.ny = gn;
  grid.data = data.data();
  const double ps[] = {2.0, 1.5};
  const char* gridNames[] = {"grid 4000x4000, scale of 64 steps, p 2", "grid 4000x4000, scale, p 1.5"};
  for (int k = 0; k < 2; ++k) {
    const double t = bestSeconds(
        3, [&] { VDraw::interpOnBitmap(grid, bmp, kNx, kNy, 64, 0, kNx, 0, kNy, 0, 100, cols, 3, ps[k]); });
    report(gridNames[k], t, floor);
  }
  const double brk[9] = {10, 20, 30, 40, 50, 60, 70, 80, 90};
  const double t = bestSeconds(
      3, [&] { VDraw::interpOnBitmap(grid, bmp, kNx, kNy, 0, kNx, 0, kNy, brk, 9, cols, 3, 2.0); });
  report("grid 4000x4000, 9 breaks, p 2", t, floor);
  return 0;
}
