// k-d tree speed: build over 1,000,000 random 2-D points and 100,000 nearest-point queries, against
// scipy's cKDTree (build + query with k = 1) run through python3 in the same run on the same data.
//
// The queries use nearestExact, the plain single nearest search that starts afresh at each query:
// `nearest` carries its previous answer into the next query, so over random query points it would
// mostly return an old answer and time a different (shorter) search. nearest3 is timed as well
// and reported against the same k = 1 baseline, for information. The library's answers are checked
// against scipy's indices. Times are CPU times of the process (both sides run single-threaded).
// Without python3 or scipy (scripts/setup-bench.sh installs them) the comparison is skipped.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "benchModel.h"
#include "interp/Vkdtree.h"

using namespace VCppLib;

namespace {

using bench::bestSeconds;
using bench::cpuSeconds;

constexpr int32_t kPoints = 1000000, kQueries = 100000, kRepeats = 3;

// Reads the float64 points and queries, times the build and the k = 1 query (best of the
// repeats, process CPU time), prints "build S" and "query S" and writes the indices as int32.
const char* kScript = R"PY(
import sys, time
try:
    import numpy as np
    from scipy.spatial import cKDTree
except Exception as e:
    print("missing: %s" % e)
    sys.exit(3)
data, out, n, m, reps = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4]), int(sys.argv[5])
a = np.fromfile(data, dtype=np.float64)
pts = a[:2 * n].reshape(n, 2)
qs = a[2 * n:].reshape(m, 2)
best_build = best_query = 1e300
for r in range(reps):
    t0 = time.process_time()
    tree = cKDTree(pts)
    t1 = time.process_time()
    d, idx = tree.query(qs, k=1)
    t2 = time.process_time()
    best_build = min(best_build, t1 - t0)
    best_query = min(best_query, t2 - t1)
idx.astype(np.int32).tofile(out)
print("build %.6f" % best_build)
print("query %.6f" % best_query)
)PY";

struct Baseline {
  bool ok = false;
  std::string why;
  double build = 0, query = 0;
  std::vector<int32_t> idx;
};

// Runs the script with one interpreter; true when it gave its times (b filled), false with the
// reason in b.why otherwise.
bool runPython(const std::string& python, const std::string& dir, Baseline& b) {
  const std::string cmd = python + " " + dir + "/kd.py " + dir + "/data.bin " + dir + "/idx.bin " +
                          std::to_string(kPoints) + " " + std::to_string(kQueries) + " " +
                          std::to_string(kRepeats) + " 2>&1";
  FILE* p = popen(cmd.c_str(), "r");
  if (p == nullptr) {
    b.why += (b.why.empty() ? "" : "; ") + python + " could not be started";
    return false;
  }
  std::string text;
  char buf[512];
  while (fgets(buf, sizeof buf, p)) text += buf;
  const int status = pclose(p);
  if (status != 0 || std::sscanf(text.c_str(), "build %lf query %lf", &b.build, &b.query) != 2) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    b.why += (b.why.empty() ? "" : "; ") + python + ": " +
             (text.empty() ? "did not run (status " + std::to_string(status) + ")" : text);
    return false;
  }
  b.idx.resize(kQueries);
  std::ifstream(dir + "/idx.bin", std::ios::binary)
      .read(reinterpret_cast<char*>(b.idx.data()), kQueries * sizeof(int32_t));
  b.ok = true;
  return true;
}

Baseline runScipy(const std::vector<double>& pts, const std::vector<double>& qs) {
  Baseline b;
  char tmpl[] = "/tmp/bench_kdtree.XXXXXX";
  if (mkdtemp(tmpl) == nullptr) {
    b.why = "no temporary folder could be made";
    return b;
  }
  const std::string dir = tmpl;
  std::ofstream(dir + "/kd.py") << kScript;
  {
    std::ofstream f(dir + "/data.bin", std::ios::binary);
    f.write(reinterpret_cast<const char*>(pts.data()), pts.size() * sizeof(double));
    f.write(reinterpret_cast<const char*>(qs.data()), qs.size() * sizeof(double));
  }
  // Debian's python3-scipy lives with /usr/bin/python3, which another python3 on PATH may hide.
  for (const char* python : {"/usr/bin/python3", "python3"}) {
    if (runPython(python, dir, b)) break;
  }
  std::filesystem::remove_all(dir);
  return b;
}

}  // namespace

int main() {
  std::mt19937_64 gen(20240601);
  std::uniform_real_distribution<double> u(0, 1000);
  std::vector<double> pts(2 * static_cast<size_t>(kPoints)), qs(2 * static_cast<size_t>(kQueries));
  for (double& v : pts) v = u(gen);
  for (double& v : qs) v = u(gen);
  std::vector<double> x(kPoints), y(kPoints);
  for (int32_t i = 0; i < kPoints; ++i) x[i] = pts[2 * i], y[i] = pts[2 * i + 1];

  std::vector<std::unique_ptr<Vkdtree>> trees;  // freed after the timing
  const double build =
      bestSeconds(kRepeats, [&] { trees.push_back(std::make_unique<Vkdtree>(x.data(), y.data(), kPoints)); });
  Vkdtree* tree = trees.back().get();
  std::vector<int32_t> found(kQueries), out3(3);
  const double query = bestSeconds(kRepeats, [&] {
    for (int32_t q = 0; q < kQueries; ++q) {
      kd_node_t* best = nullptr;
      double bestDist = 0;
      tree->nearestExact(tree->root, &qs[2 * q], 0, 2, best, bestDist);
      found[q] = best->idx;
    }
  });
  int64_t sink = 0;
  const double query3 = bestSeconds(kRepeats, [&] {
    for (int32_t q = 0; q < kQueries; ++q) {
      tree->nearest3(qs[2 * q], qs[2 * q + 1], out3.data());
      sink += out3[2];
    }
  });
  trees.clear();

  std::printf("Vkdtree, %d points, %d queries (CPU seconds, best of %d)\n", kPoints, kQueries, kRepeats);
  std::printf("  build                      %8.3f s\n", build);
  std::printf("  nearestExact queries       %8.3f s\n", query);
  std::printf("  nearest3 queries           %8.3f s   (checksum %lld)\n", query3,
              static_cast<long long>(sink));
  const Baseline b = runScipy(pts, qs);
  if (!b.ok) {
    std::printf("scipy comparison skipped: %s\n", b.why.c_str());
    std::printf("  (scripts/setup-bench.sh installs python3-scipy)\n");
    return 0;
  }
  int32_t differ = 0;
  for (int32_t q = 0; q < kQueries; ++q) differ += found[q] != b.idx[q];
  std::printf("scipy cKDTree, same data\n");
  std::printf("  build                      %8.3f s   ratio %5.2f\n", b.build, build / b.build);
  std::printf("  query k=1                  %8.3f s   ratio %5.2f (nearestExact), %5.2f (nearest3)\n",
              b.query, query / b.query, query3 / b.query);
  const double ratio = (build + query) / (b.build + b.query);
  std::printf("build + nearestExact queries: ratio %.2f (target <= 1.5) %s\n", ratio,
              ratio <= 1.5 ? "met" : "NOT MET");
  std::printf("answers differing from scipy's: %d of %d\n", differ, kQueries);
  return 0;
}
