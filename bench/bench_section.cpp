// A section through a large model against reading the item once, in the same run.
//
// Writes a model of 1,000,000 quadrilaterals with 20 layers (about 10 million cells) and a few
// timesteps of one 3-D item through the library's writers, as NC and as EMB, into /tmp, then
// times a section of 100 points across it: sectionIntersections of the polyline (the elements
// crossed) and extractSectionLayers at its points (their columns, read one by one, at one
// timestep), against readItemData of the whole item at one timestep. Target: the section under
// 10 ms. Each side reads other timesteps than the other, so that neither finds the other's chunks
// in the NetCDF cache. An NC item is stored in a few compressed chunks of millions of values: a
// section across the whole model touches all of them, and inflating them costs about as much as
// the whole read. The first section also builds the mesh's search indexes; it is reported on its
// own. Prints; asserts nothing.

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "benchModel.h"
#include "resultfile/thResultFile.h"

using namespace thalmod;
using bench::seconds;

namespace {

struct Timing {
  double first = 0, cut = 1e30, extract = 1e30, read = 1e30;
};

// The section and the whole-item read on one file; each call reads another timestep.
Timing timeFile(thResultFile& rf, const std::vector<double>& x, const std::vector<double>& y, int nt,
                int& crossed, int& values) {
  const thMesh2D& g = rf.mInfo.mesh2d;
  const int32_t points = static_cast<int32_t>(x.size());
  int t = 0;
  auto cut = [&] {
    int32_t* ise = nullptr;
    double* isd = nullptr;
    crossed = g.sectionIntersections(x.data(), y.data(), points, ise, isd);
    delete[] ise;
    delete[] isd;
  };
  auto extract = [&] {
    double *d = nullptr, *z = nullptr, *v = nullptr;
    rf.extractSectionLayers(0, t++ % nt, x.data(), y.data(), points, &d, &z, &v, &values);
    thResultFile::extractSectionLayersFreeMem(d, z, v);
  };
  std::vector<float> all(rf.mInfo.cells);
  Timing tm;
  tm.first = seconds([&] {
    cut();
    extract();
  });
  for (int r = 0; r < 3; ++r) {
    tm.read = std::min(tm.read, seconds([&] { rf.readItemData(0, t++ % nt, all.data()); }));
    tm.cut = std::min(tm.cut, seconds(cut));
    tm.extract = std::min(tm.extract, seconds(extract));
  }
  return tm;
}

void report(const char* format, const Timing& tm) {
  const double section = tm.cut + tm.extract;
  std::printf("%s:\n", format);
  std::printf("  %-44s %8.2f ms\n", "first section (search indexes built)", tm.first * 1e3);
  std::printf("  %-44s %8.2f ms\n", "sectionIntersections", tm.cut * 1e3);
  std::printf("  %-44s %8.2f ms\n", "extractSectionLayers", tm.extract * 1e3);
  std::printf("  %-44s %8.2f ms   (target < 10 ms)\n", "section, both", section * 1e3);
  std::printf("  %-44s %8.2f ms   section / read = %.3f\n", "readItemData of the whole item", tm.read * 1e3,
              section / tm.read);
}

}  // namespace

int main() {
  const int n = 1000, nt = 6, points = 100;
  const std::string base = "/tmp/bench_section_" + std::to_string(getpid());
  const std::string files[] = {base + ".nc", base + ".emb"};
  {
    thResultFile w(files[0], NC);
    bench::buildModel(w.mInfo, n);
    const int32_t cells = w.mInfo.cells;
    std::printf("model: %d elements, %d layers, %d cells\n", w.mInfo.mesh2d.noe, w.mInfo.nol, cells);
    std::vector<float> temp(cells);
    for (const fileFmtEnum f : {NC, EMB}) {
      thResultFile out(f == NC ? files[0] : files[1], f);
      if (f == EMB) out.mInfo = w.mInfo;  // shares the arrays of the model built once
      thResultFile& o = f == NC ? w : out;
      o.addItem("temp", cells);
      o.writeHeader();
      for (int t = 0; t < nt; ++t) {
        for (int c = 0; c < cells; ++c) temp[c] = 10.0f + 0.001f * (c % 5000) + t;
        o.writeItemData(temp.data(), cells);
      }
      o.closeFile(nt);
    }
  }
  // A zigzag from the south-west corner to the north-east one, inside the 10 km square.
  std::vector<double> x(points), y(points);
  for (int i = 0; i < points; ++i) {
    x[i] = 50.0 + 9900.0 * i / (points - 1);
    y[i] = 50.0 + 9900.0 * i / (points - 1) + (i % 2 ? 300.0 : 0.0);
  }
  for (const std::string& fn : files) {
    thResultFile rf(fn);
    int crossed = 0, values = 0;
    Timing tm = timeFile(rf, x, y, nt, crossed, values);
    std::printf("section of %d points: %d stretches, %d values\n", points, crossed, values);
    report(fn.c_str(), tm);
    std::remove(fn.c_str());
  }
  return 0;
}
