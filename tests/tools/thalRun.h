// Running the thal tool as a user would, and the sample run that most of its tests look at.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thTestUtil.h"

namespace thalTest {

struct Result {
  int status = -1;
  std::string out, err;  // standard output and standard error
};

// Runs `thal ARGS` through the shell (ARGS quoted by the caller where needed).
inline Result thal(const std::string& args) {
  thTest::TempDir tmp;
  const std::string errFile = tmp.file("stderr.txt");
  Result r;
  r.status =
      thTest::runCommand("{ " + std::string(THAL_EXE) + " " + args + " 2>'" + errFile + "'; }", &r.out);
  r.err = thTest::readText(errFile);
  return r;
}

inline std::string quoted(const std::string& s) { return "'" + s + "'"; }

// A point as --at takes it, to full precision.
inline std::string point(double x, double y) {
  char buf[80];
  std::snprintf(buf, sizeof buf, "%.17g,%.17g", x, y);
  return buf;
}

inline std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> v;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) v.push_back(line);
  return v;
}

// The sample run, written once per test program run into a folder of its own.
class SampleRun : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir = std::make_unique<thTest::TempDir>();
    Result r = thal("sample " + quoted(dir->path()));
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    native = std::make_unique<thalmod::thResultFile>(run(), -1);
  }
  static void TearDownTestSuite() { dir.reset(); }  // `native` keeps its file open until the program ends
  static std::string run() { return dir->file("fjord.nc"); }
  static std::string raster() { return dir->file("fjord_bathy.nc"); }
  // The run as the library reads it, and the centre of element e as --at takes it.
  static const thalmod::thModelInfo& model() { return native->mInfo; }
  static std::string at(int32_t e) { return point(model().mesh2d.exCoor[e], model().mesh2d.eyCoor[e]); }
  static inline std::unique_ptr<thTest::TempDir> dir;
  static inline std::unique_ptr<thalmod::thResultFile> native;
};

// The fields of the sample as its generator defines them: x is the easting, z the depth, t the
// seconds since 2024-06-01 00:00:00, bed the depth of the sea bed.
inline constexpr double pi = 3.14159265358979323846;
inline double sampleElevation(double x, double t) {
  return 2.2 * (1 + 0.25 * (x - 500000.0) / 24000.0) * std::cos(2 * pi * t / (12.42 * 3600) - 0.7);
}
inline double sampleTemperature(double x, double z, double t, double bed) {
  double u = std::clamp((x - 500000.0) / 24000.0, 0.0, 1.0);
  return 7.0 + 6.5 * std::exp(-z / 12) + 1.5 * u * std::exp(-z / 8) +
         1.0 * std::exp(-bed / 40) * std::exp(-z / 4) +
         0.8 * std::sin(2 * pi * (t / 86400 - 9.0 / 24)) * std::exp(-z / 2);
}

}  // namespace thalTest
