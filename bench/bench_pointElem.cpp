// pointElem on a mesh of about 1,000,000 triangles: the bucket index (its build included) and
// 100,000 random queries, against
//  - the plain scan over all elements, on a sample of the queries (time per query), and
//  - matplotlib's TrapezoidMapTriFinder (Triangulation + finder build, then the same queries)
//    run through python3 in the same run on the same data.
// lineIntersections is timed the same way, on 1,000 random lines (face index against the scan of
// every face). The index's answers are checked against the scan's on the samples. Times are CPU times of the
// process, best of the repeats. Without python3-matplotlib (scripts/setup-bench.sh installs it)
// that comparison is skipped.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "benchModel.h"
#include "mesh/thMesh2D.h"

namespace {

using bench::bestSeconds;
using bench::cpuSeconds;

constexpr int32_t kQueries = 100000, kScanSample = 200, kRepeats = 2;

// The benchmark model's jittered grid of quadrilaterals, each split into two triangles.
void triangleMesh(thalmod::thMesh2D& t, int cells) {
  thalmod::thModelInfo mi;
  bench::buildModel(mi, cells);
  const thalmod::thMesh2D& q = mi.mesh2d;
  t.non = q.non;
  t.nxCoor = new double[q.non];
  t.nyCoor = new double[q.non];
  t.nt = new int32_t[q.non];
  std::copy(q.nxCoor, q.nxCoor + q.non, t.nxCoor);
  std::copy(q.nyCoor, q.nyCoor + q.non, t.nyCoor);
  std::copy(q.nt, q.nt + q.non, t.nt);
  t.noe = 2 * q.noe;
  t.nonpe = new int32_t[t.noe];
  t.en = new int32_t[3 * static_cast<int64_t>(t.noe)];
  std::fill(t.nonpe, t.nonpe + t.noe, 3);
  for (int64_t e = 0; e < q.noe; e++) {
    const int32_t* n = q.en + 4 * e;
    const int32_t tri[6] = {n[0], n[1], n[2], n[0], n[2], n[3]};
    std::copy(tri, tri + 6, t.en + 6 * e);
  }
  t.initMesh();
}

// Reads nodes, triangles and queries; prints the best "build S" (Triangulation and finder) and
// "query S" of the repeats, and writes the found triangles as int32.
const char* kScript = R"PY(
import sys, time
try:
    import numpy as np
    import matplotlib.tri as mtri
except Exception as e:
    print("missing: %s" % e)
    sys.exit(3)
d, non, noe, m, reps = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4]), int(sys.argv[5])
xy = np.fromfile(d + "/nodes.bin", dtype=np.float64).reshape(2, non)
tris = np.fromfile(d + "/tris.bin", dtype=np.int32).reshape(noe, 3)
q = np.fromfile(d + "/queries.bin", dtype=np.float64).reshape(2, m)
best_build = best_query = 1e300
for r in range(reps):
    t0 = time.process_time()
    finder = mtri.Triangulation(xy[0], xy[1], tris).get_trifinder()
    t1 = time.process_time()
    found = finder(q[0], q[1])
    t2 = time.process_time()
    best_build, best_query = min(best_build, t1 - t0), min(best_query, t2 - t1)
np.asarray(found, dtype=np.int32).tofile(d + "/found.bin")
print("build %.6f query %.6f" % (best_build, best_query))
)PY";

struct Baseline {
  bool ok = false;
  std::string why;
  double build = 0, query = 0;
  std::vector<int32_t> found;
};

Baseline runMatplotlib(const thalmod::thMesh2D& m, const std::vector<double>& qx,
                       const std::vector<double>& qy) {
  Baseline b;
  char tmpl[] = "/tmp/bench_pointElem.XXXXXX";
  if (mkdtemp(tmpl) == nullptr) {
    b.why = "no temporary folder could be made";
    return b;
  }
  const std::string dir = tmpl;
  std::ofstream(dir + "/finder.py") << kScript;
  auto put = [](std::ofstream& f, const auto* p, size_t n) {
    f.write(reinterpret_cast<const char*>(p), n * sizeof(*p));
  };
  {
    std::ofstream f(dir + "/nodes.bin", std::ios::binary);
    put(f, m.nxCoor, m.non);
    put(f, m.nyCoor, m.non);
    std::ofstream t(dir + "/tris.bin", std::ios::binary);
    put(t, m.en, static_cast<size_t>(m.nevf));
    std::ofstream q(dir + "/queries.bin", std::ios::binary);
    put(q, qx.data(), qx.size());
    put(q, qy.data(), qy.size());
  }
  // Debian's python3-matplotlib lives with /usr/bin/python3, which another python3 on PATH may hide.
  for (const char* python : {"/usr/bin/python3", "python3"}) {
    const std::string cmd = std::string(python) + " " + dir + "/finder.py " + dir + " " +
                            std::to_string(m.non) + " " + std::to_string(m.noe) + " " +
                            std::to_string(kQueries) + " " + std::to_string(kRepeats) + " 2>&1";
    FILE* p = popen(cmd.c_str(), "r");
    std::string text;
    char buf[512];
    while (p != nullptr && fgets(buf, sizeof buf, p)) text += buf;
    const int status = p != nullptr ? pclose(p) : -1;
    if (status == 0 && std::sscanf(text.c_str(), "build %lf query %lf", &b.build, &b.query) == 2) {
      b.found.resize(kQueries);
      std::ifstream(dir + "/found.bin", std::ios::binary)
          .read(reinterpret_cast<char*>(b.found.data()), kQueries * 4);
      b.ok = true;
      break;
    }
    while (!text.empty() && text.back() == '\n') text.pop_back();
    b.why += (b.why.empty() ? "" : "; ") + std::string(python) + ": " + (text.empty() ? "did not run" : text);
  }
  std::filesystem::remove_all(dir);
  return b;
}

// 1,000 random lines of up to 1,000 m, through the face index and (a sample) through the scan.
void lines(const thalmod::thMesh2D& m, std::mt19937_64& gen) {
  constexpr int32_t kLines = 1000, kSample = 10;
  std::uniform_real_distribution<double> u(0.0, 7070.0), d(-500.0, 500.0);
  std::vector<double> c(4 * kLines);
  for (int32_t i = 0; i < kLines; i++)
    c[4 * i] = u(gen), c[4 * i + 1] = u(gen), c[4 * i + 2] = d(gen), c[4 * i + 3] = d(gen);
  auto run = [&](int32_t i, bool scan, std::vector<int32_t>& ise) {
    int32_t* e = nullptr;
    double* s = nullptr;
    const double x0 = c[4 * i], y0 = c[4 * i + 1], x1 = x0 + c[4 * i + 2], y1 = y0 + c[4 * i + 3];
    const int32_t k =
        scan ? m.lineIntersectionsScan(x0, y0, x1, y1, e, s) : m.lineIntersections(x0, y0, x1, y1, e, s);
    ise.assign(e, e + std::max(k, 0));
    delete[] e;
    delete[] s;
  };
  std::vector<int32_t> a, b;
  int64_t crossed = 0;
  const double t0 = cpuSeconds();
  for (int32_t i = 0; i < kLines; i++) run(i, false, a), crossed += static_cast<int64_t>(a.size());
  const double t1 = cpuSeconds();
  int32_t differ = 0;
  for (int32_t i = 0; i < kSample; i++) run(i, true, a), run(i, false, b), differ += a != b;
  const double scan = (cpuSeconds() - t1) / kSample, index = (t1 - t0) / kLines;
  std::printf(
      "lineIntersections, %d lines (%lld stretches; face index built in the first): %.3f ms per line\n",
      kLines, static_cast<long long>(crossed), index * 1e3);
  std::printf("  plain scan, %d lines: %.1f ms per line; ratio scan/index %.0f; lines differing %d\n",
              kSample, scan * 1e3, scan / index, differ);
}

}  // namespace

int main() {
  thalmod::thMesh2D m;
  triangleMesh(m, 707);  // 999,698 triangles
  // Query points over the extent and a little beyond it (those hold no element).
  std::mt19937_64 gen(20240601);
  std::uniform_real_distribution<double> ux(-50.0, 7120.0), uy(-50.0, 7120.0);
  std::vector<double> qx(kQueries), qy(kQueries);
  for (int32_t i = 0; i < kQueries; i++) qx[i] = ux(gen), qy[i] = uy(gen);

  std::vector<int32_t> found(kQueries);
  double build = 1e300, query = 1e300;
  for (int r = 0; r < kRepeats; r++) {
    m.dropQueryCaches();
    const double t0 = cpuSeconds();
    m.pointElem(qx[0], qy[0]);  // builds the index
    const double t1 = cpuSeconds();
    for (int32_t i = 0; i < kQueries; i++) found[i] = m.pointElem(qx[i], qy[i]);
    const double t2 = cpuSeconds();
    build = std::min(build, t1 - t0);
    query = std::min(query, t2 - t1);
  }
  int32_t differ = 0;
  const double s0 = cpuSeconds();
  for (int32_t i = 0; i < kScanSample; i++) differ += m.pointElemScan(qx[i], qy[i]) != found[i];
  const double scan = (cpuSeconds() - s0) / kScanSample, perQuery = query / kQueries;

  std::printf("pointElem, %d triangles, %d queries (CPU seconds, best of %d)\n", m.noe, kQueries, kRepeats);
  std::printf("  index build                %8.3f s\n", build);
  std::printf("  queries                    %8.3f s   (%.3f us per query)\n", query, perQuery * 1e6);
  std::printf("plain scan, %d of the queries: %.3f ms per query; ratio scan/index per query %.0f\n",
              kScanSample, scan * 1e3, scan / perQuery);
  std::printf("answers differing from the scan's: %d of %d\n", differ, kScanSample);
  lines(m, gen);
  const Baseline b = runMatplotlib(m, qx, qy);
  if (!b.ok) {
    std::printf("matplotlib comparison skipped: %s\n", b.why.c_str());
    std::printf("  (scripts/setup-bench.sh installs python3-matplotlib)\n");
    return 0;
  }
  int32_t other = 0;
  for (int32_t i = 0; i < kQueries; i++) other += b.found[i] != found[i];
  std::printf("matplotlib TrapezoidMapTriFinder, same data\n");
  std::printf("  Triangulation + finder     %8.3f s\n", b.build);
  std::printf("  queries                    %8.3f s\n", b.query);
  const double ratio = (b.build + b.query) / (build + query);
  std::printf("build + queries: matplotlib/index %.1f (target >= 20) %s\n", ratio,
              ratio >= 20 ? "met" : "NOT MET");
  std::printf("answers differing from matplotlib's: %d of %d (points on edges may go either way)\n", other,
              kQueries);
  return 0;
}
