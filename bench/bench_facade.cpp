// The facade against the native calls it wraps, and the interpolators against what they rest on,
// in the same run.
//
// A model of 1,000,000 quadrilaterals with 20 layers is written as an EMB file into /tmp (a few
// timesteps of a 3-D item "temp"); then, best of several rounds, library and baseline taking turns
// on warm pages:
//   - the facade's readLayer, readTimeSeries and extractSectionCart against the native thResultFile
//     call each wraps, on the same file (target: ratio <= 1.1, the facade adding one copy);
//   - VInterpol::init2D for 100,000 targets from 1,000,000 scattered points against a Vkdtree over
//     the points plus one nearest3 query per target (target: ratio <= 2);
//   - gaussSolve on dense systems of growing size, and the size n at which one solve takes a
//     second by its n^3 growth.
// Prints; asserts nothing. The file is removed at the end.

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "benchModel.h"
#include "facade/thResultFileWrapper.h"
#include "interp/VInterpol.h"
#include "interp/Vkdtree.h"
#include "resultfile/thResultFile.h"

using bench::best;
using bench::report;
using bench::seconds;

namespace {

void writeRun(const std::string& fn, int n, int nt) {
  thalmod::thResultFile w(fn, thalmod::EMB);
  bench::buildModel(w.mInfo, n);
  w.mInfo.nt = nt;
  w.addItem("temp", w.mInfo.cells);
  w.writeHeader();
  std::vector<float> v(w.mInfo.cells);
  for (int t = 0; t < nt; ++t) {
    for (size_t c = 0; c < v.size(); ++c) v[c] = 10.0f + 0.001f * static_cast<float>(c % 5000) + t;
    w.writeItemData(v.data(), w.mInfo.cells);
  }
  w.closeFile(nt);
}

void facadeReads(const std::string& fn) {
  thWrapper::thResultFileWrapper fw;
  fw.filename(fn);
  fw.readHeader();
  thalmod::thResultFile native(fn, -1);
  int32_t elem = native.mInfo.mesh2d.noe / 2, top = native.mInfo.nol - 1;
  fw.readLayer(0, 0, 999);  // warm pages
  report("readLayer (top cells)",
         best(
             5, [&] { fw.readLayer(0, 1, 999); },
             [&] {
               double* d = nullptr;
               native.readLayer(0, 1, 999, &d);
               delete[] d;
             }),
         1.1, "native");
  report("readTimeSeries (one surface cell)",
         best(
             5, [&] { fw.readTimeSeries(0, elem, top); },
             [&] {
               double* d = nullptr;
               native.readTimeSeries(0, elem, top, &d, 0, native.mInfo.nt);
               delete[] d;
             }),
         1.1, "native");
  std::vector<double> x = {100, 9000}, y = {100, 8000}, z = {1, 5, 10, 20}, d, v, xc, yc;
  report("extractSectionCart (100 m steps, 4 depths)",
         best(
             5, [&] { fw.extractSectionCart(0, 1, x, y, z, 100, d, v, xc, yc); },
             [&] {
               double *pd, *pv, *px, *py;
               int32_t nd, nv;
               native.extractSectionCart(0, 1, x.data(), y.data(), 2, z.data(), 4, 100, &pd, &nd, &pv, &nv,
                                         &px, &py);
               thalmod::thResultFile::extractSectionCartFreeMem(pd, pv, px, py);
             }),
         1.1, "native");
}

void interpolators() {
  const int n = 1000000, nt = 100000;
  std::vector<double> x(n), y(n), tx(nt), ty(nt);
  uint64_t seed = 99;
  auto rnd = [&seed] {
    seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(seed >> 11) / 9007199254740992.0;
  };
  for (int i = 0; i < n; ++i) x[i] = 1e4 * rnd(), y[i] = 1e4 * rnd();
  for (int i = 0; i < nt; ++i) tx[i] = 1e4 * rnd(), ty[i] = 1e4 * rnd();
  report("VInterpol::init2D, 100000 targets of 1e6",
         best(
             3,
             [&] {
               VCppLib::VInterpol vi;
               vi.init2D(x.data(), y.data(), n, tx.data(), ty.data(), nt, VCppLib::vinterpolIDW);
             },
             [&] {
               VCppLib::Vkdtree tree(x.data(), y.data(), n);
               int32_t out[3];
               for (int i = 0; i < nt; ++i) tree.nearest3(tx[i], ty[i], out);
             }),
         2.0, "k-d tree");
  double secs = 0;
  int size = 100;
  for (; size <= 1600 && secs < 0.5; size *= 2) {
    std::vector<double> block(static_cast<size_t>(size) * size), b(size, 1.0);
    std::vector<double*> A(size);
    for (int i = 0; i < size; ++i) {
      A[i] = block.data() + static_cast<size_t>(i) * size;
      for (int j = 0; j < size; ++j) A[i][j] = i == j ? size : 1.0 / (1 + std::abs(i - j));
    }
    secs = seconds([&] { VCppLib::gaussSolve(A.data(), b.data(), size); });
    std::printf("gaussSolve n = %5d: %8.4f s\n", size, secs);
  }
  size /= 2;
  std::printf("gaussSolve: one solve takes a second at n = %.0f (n^3 growth from the last size)\n",
              size * std::cbrt(1.0 / secs));
}

}  // namespace

int main() {
  std::string fn = "/tmp/bench_facade_" + std::to_string(getpid()) + ".emb";
  writeRun(fn, 1000, 3);
  facadeReads(fn);
  std::remove(fn.c_str());
  interpolators();
  return 0;
}
