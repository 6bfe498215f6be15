// One measurement of opening a large result file, for bench/side_by_side.py, which runs each in a
// process of its own so that the peak memory is that of the one open:
//   bench_open write FILE   writes the run: 1,000,000 triangles, 20 layers, 24 hourly steps of
//                           "elevation" (2-D) and "temperature" (3-D), NetCDF-4, deflate 2
//   bench_open light FILE   the light open (readHeaderLight)
//   bench_open full FILE    the full header read (readHeader)
// An open prints one line: "seconds S heldMiB H peakMiB P": its wall time, the heap that it holds
// afterwards, and the growth of the peak resident memory over the process before the open.
#include <malloc.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "resultfile/thResultFile.h"

namespace {

double statusMiB(const char* key) {
  std::ifstream in("/proc/self/status");
  std::string line;
  while (std::getline(in, line))
    if (line.rfind(key, 0) == 0) return std::atof(line.c_str() + std::strlen(key)) / 1024.0;
  return 0.0;
}

double heapMiB() {
  struct mallinfo2 mi = mallinfo2();
  return static_cast<double>(mi.uordblks + mi.hblkhd) / (1024.0 * 1024.0);
}

// nx by ny squares of 100 m, each cut into two triangles; a sea bed from 3 to 60 m.
void buildRun(thalmod::thResultFile& w, int32_t nx, int32_t ny) {
  thalmod::thModelInfo& mi = w.mInfo;
  thalmod::thMesh2D& m = mi.mesh2d;
  m.non = (nx + 1) * (ny + 1);
  m.nxCoor = new double[m.non];
  m.nyCoor = new double[m.non];
  m.nt = new int32_t[m.non];
  for (int32_t j = 0; j <= ny; ++j)
    for (int32_t i = 0; i <= nx; ++i) {
      const int32_t k = j * (nx + 1) + i;
      m.nxCoor[k] = 400000.0 + 100.0 * i + ((i % 7) - 3) * (i > 0 && i < nx);
      m.nyCoor[k] = 6600000.0 + 100.0 * j + ((j % 5) - 2) * (j > 0 && j < ny);
      m.nt[k] = i == 0 ? 1 : 0;
    }
  m.noe = 2 * nx * ny;
  m.nonpe = new int32_t[m.noe];
  m.en = new int32_t[3 * static_cast<int64_t>(m.noe)];
  mi.elemBathy = new double[m.noe];
  int64_t at = 0;
  for (int32_t j = 0; j < ny; ++j)
    for (int32_t i = 0; i < nx; ++i) {
      const int32_t a = j * (nx + 1) + i, b = a + 1, c = a + nx + 2, d = a + nx + 1;
      for (int32_t n : {a, b, c, a, c, d}) m.en[at++] = n;
      for (int32_t t = 0; t < 2; ++t) {
        const int32_t e = 2 * (j * nx + i) + t;
        m.nonpe[e] = 3;
        mi.elemBathy[e] = 3.0 + 57.0 * (0.5 + 0.5 * std::sin(i * 0.01) * std::cos(j * 0.013));
      }
    }
  m.initMesh();
  mi.nol = 20;
  mi.dz = new double[20];
  for (int32_t l = 0; l < 20; ++l) mi.dz[l] = 3.0;
  mi.initCells();
  mi.startDT = 1717200000;
  mi.dt = 3600.0;
}

int writeRun(const std::string& fn) {
  thalmod::thResultFile w(fn, thalmod::NC);
  buildRun(w, 1000, 500);
  w.addItem("elevation", w.mInfo.mesh2d.noe);
  w.addItem("temperature", w.mInfo.cells);
  w.writeHeader();
  std::vector<float> h(w.mInfo.mesh2d.noe), t(w.mInfo.cells);
  for (int32_t s = 0; s < 24; ++s) {
    for (size_t e = 0; e < h.size(); ++e) h[e] = static_cast<float>(std::sin(s * 0.26 + e * 1e-5));
    for (size_t c = 0; c < t.size(); ++c) t[c] = static_cast<float>(8.0 + 0.1 * s + (c % 977) * 0.01);
    w.writeItemData(h.data(), static_cast<int32_t>(h.size()));
    w.writeItemData(t.data(), static_cast<int32_t>(t.size()));
  }
  w.closeFile(24);
  std::printf("wrote %s: %d elements, %d cells\n", fn.c_str(), w.mInfo.mesh2d.noe, w.mInfo.cells);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: bench_open write|light|full FILE\n");
    return 2;
  }
  const std::string mode = argv[1], fn = argv[2];
  if (mode == "write") return writeRun(fn);
  const double heap0 = heapMiB(), rss0 = statusMiB("VmRSS:");
  auto t0 = std::chrono::steady_clock::now();
  thalmod::thResultFile rf("", thalmod::NC);
  rf.filename = fn;
  const int32_t rc = mode == "light" ? rf.readHeaderLight() : rf.readHeader();
  const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  if (rc != 0) return 1;
  std::printf("seconds %.4f heldMiB %.1f peakMiB %.1f\n", s, heapMiB() - heap0, statusMiB("VmHWM:") - rss0);
  return 0;
}
