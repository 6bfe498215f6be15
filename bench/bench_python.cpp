// The Python module against netCDF4-python + numpy: writes a run of 1,000,000 quadrilaterals with
// 20 layers (about 10 million cells) and 6 timesteps into /tmp through the library's writer, then
// runs bench_python.py on it with /usr/bin/python3 and the module of this build, and removes it.
// The script prints the ratios (and says so when the Python packages are missing).
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "benchModel.h"
#include "resultfile/thResultFile.h"

int main() {
  const int n = 1000, nt = 6;
  const std::string fn = "/tmp/bench_python_" + std::to_string(getpid()) + ".nc";
  {
    thalmod::thResultFile w(fn, thalmod::NC);
    bench::buildModel(w.mInfo, n);
    bench::writeTempElevRun(w, nt);
  }
  const std::string cmd = std::string("PYTHONPATH='") + BENCH_PYTHON_PATH + "' /usr/bin/python3 '" +
                          BENCH_PYTHON_SCRIPT + "' '" + fn + "' temp";
  std::fflush(stdout);
  const int rc = std::system(cmd.c_str());
  std::remove(fn.c_str());
  return rc == 0 ? 0 : 1;
}
