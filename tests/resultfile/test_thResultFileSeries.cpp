// Time series within one NC file and across the physical "^" files of a logical file.

#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::SmallModel;
using thTest::SmallModelOptions;

namespace {

const double delD = -1.0000000031710769e-30;

std::vector<double> series(thResultFile& rf, int item, int elem, int layer, int from, int to, int expectCount) {
  double* d = nullptr;
  int32_t n = rf.readTimeSeries(item, elem, layer, &d, from, to);
  EXPECT_EQ(n, expectCount);
  std::vector<double> v(d, d + (n > 0 ? n : 0));
  delete[] d;
  return v;
}

std::vector<double> profile(thResultFile& rf, int elem, int from, int to, int expectCount) {
  double* d = nullptr;
  int32_t n = rf.readTimeSeriesProfile(0, elem, &d, from, to);
  EXPECT_EQ(n, expectCount);
  std::vector<double> v(d, d + (n > 0 ? n : 0));
  delete[] d;
  return v;
}

// run.nc with timesteps 0-2, run^1.nc with 3-5, run^2.nc with 6-7 (the last file holds fewer).
struct ThreeFiles {
  thTest::TempDir dir;
  std::string fn = dir.file("run.nc");
  ThreeFiles() {
    for (int f = 0; f < 3; ++f) {
      SmallModelOptions opt;
      opt.firstStep = 3 * f;
      opt.times.clear();
      for (int t = 0; t < (f < 2 ? 3 : 2); ++t) opt.times.push_back(SmallModel::startDT + 3600 * (3 * f + t));
      thTest::writeSmallModelNc(dir.file(f == 0 ? "run.nc" : "run^" + std::to_string(f) + ".nc"), opt);
    }
  }
};

}  // namespace

TEST(ResultFileSeries, WithinOneFile) {
  thTest::TempDir dir;
  std::string fn = dir.file("small.nc");
  thTest::writeSmallModelNc(fn);
  thResultFile rf(fn, NC);
  // cell 7 (e3, layer 1) over all timesteps; the end of the range is not part of it
  EXPECT_EQ(series(rf, 0, 3, 1, 0, 3, 3), (std::vector<double>{7.25, 107.25, delD}));
  EXPECT_EQ(series(rf, 0, 3, 1, 1, 2, 1), (std::vector<double>{107.25}));
  EXPECT_EQ(series(rf, 0, 3, 1, 0, -1, 3).size(), 3u);  // to the end
  EXPECT_TRUE(series(rf, 0, 3, 1, 2, 2, 0).empty());    // an empty range is no failure
  // a 2-D item by element, at any layer from the element's bottom up
  EXPECT_EQ(series(rf, 1, 2, 2, 0, 3, 3), (std::vector<double>{1.0, 2.0, 3.0}));
  double* d = nullptr;
  EXPECT_VEXCEPTION(rf.readTimeSeries(1, 2, 0, &d, 0, 3),
                    "Layer 0 is below bottom. There are 1 layers in element 2, numbered (bottom) 2 to 2 (surface).");
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 1, 0, &d, 0, 3),
                    "Layer 0 is below bottom. There are 2 layers in element 1, numbered (bottom) 1 to 2 (surface).");
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 3, 1, &d, 3, 2), "timeStepFrom>timeStepTo");
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 3, 1, &d, 0, 4), "Invalid timeStepTo");
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 3, 3, &d, 0, 3), "layer 3 lies above the surface layer 2");
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 4, 1, &d, 0, 3), "element number 4 is out of range");
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 3, 1, &d, -1, 3), "timeStepFrom -1 is negative");
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(2, 3, 1, &d, 0, 3), "item number 2 is out of range");
  EXPECT_EQ(d, nullptr);

  // whole columns, timestep after timestep, each from the bottom cell up
  EXPECT_EQ(profile(rf, 1, 0, 3, 6), (std::vector<double>{3.25, 4.25, 103.25, 104.25, 203.25, delD}));
  EXPECT_EQ(profile(rf, 0, 2, -1, 3), (std::vector<double>{200.25, 201.25, 202.25}));
  EXPECT_VEXCEPTION(rf.readTimeSeriesProfile(1, 0, &d, 0, 3),
                    "readTimeSeriesProfile only supports 3D items. Use readTimeSeries for 2D items.");
  EXPECT_VEXCEPTION(rf.readTimeSeriesProfile(0, 0, &d, 3, 1), "timeStepFrom>timeStepTo");
  EXPECT_VEXCEPTION(rf.readTimeSeriesUET(0, nullptr, nullptr, 0, 0, -1, 0, 0),
                    "thResultFile::readTimeSeries unsuppored format.");
}

TEST(ResultFileSeries, AcrossPhysicalFiles) {
  ThreeFiles files;
  thResultFile rf(files.fn, NC);
  EXPECT_EQ(rf.mInfo.nt, 3);
  EXPECT_EQ(rf.getTotNoTimesteps(), 8);  // 2 x 3 + the 2 of the last file
  EXPECT_EQ(rf.fileNo, 0);

  // physical files of timesteps
  int32_t t = 4;
  EXPECT_EQ(rf.getFileForTimestep(t), files.dir.file("run^1.nc"));
  EXPECT_EQ(t, 1);
  EXPECT_EQ(rf.fileNo, 1);
  t = 2;
  EXPECT_EQ(rf.getFileForTimestep(t), files.fn);  // within the first: fileNo stays
  EXPECT_EQ(rf.fileNo, 1);
  t = 9;
  EXPECT_VEXCEPTION(rf.getFileForTimestep(t), "Not that many timesteps in file (" + files.fn + "). fileNo=3, timestep=0");
  t = -1;
  EXPECT_VEXCEPTION(rf.getFileForTimestep(t),
                    "Negative timestep requested from  (" + files.fn + "). " + thGlobal::errTail);

  // the whole logical file: cell 0 (bottom of e0) of timesteps 0 to 7
  EXPECT_EQ(series(rf, 0, 0, 0, 0, -1, 8),
            (std::vector<double>{0.25, 100.25, 200.25, 300.25, 400.25, 500.25, 600.25, 700.25}));
  EXPECT_EQ(rf.fileNo, 3);  // the loop leaves fileNo behind the last file
  // a range within nt is now served by the file that fileNo names, which does not exist
  double* d = nullptr;
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 0, 0, &d, 0, 3), "No such file: '" + files.dir.file("run^3.nc") + "'");
  // a range beyond the first file starts over from the first
  EXPECT_EQ(series(rf, 1, 1, 2, 4, 7, 3), (std::vector<double>{4.5, 5.5, 6.5}));
  EXPECT_EQ(rf.fileNo, 3);
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 0, 0, &d, 0, 9), "Invalid timeStepTo");
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 0, 0, &d, 7, 5), "timeStepFrom>timeStepTo");
  // a negative end puts fileNo back first, so the first file serves the next short range
  EXPECT_EQ(series(rf, 0, 0, 0, 6, -1, 2), (std::vector<double>{600.25, 700.25}));
  rf.getTotNoTimesteps();
  EXPECT_EQ(series(rf, 0, 0, 0, 1, 3, 2), (std::vector<double>{100.25, 200.25}));

  // columns across files: e1 (cells 3, 4) of timesteps 2 to 4
  EXPECT_EQ(profile(rf, 1, 2, 5, 6), (std::vector<double>{203.25, delD, 303.25, 304.25, 403.25, 404.25}));
}

TEST(ResultFileSeries, EmptyFirstFile) {
  thTest::TempDir dir;
  SmallModelOptions opt;
  opt.times = {};
  thTest::writeSmallModelNc(dir.file("run.nc"), opt);
  thTest::writeSmallModelNc(dir.file("run^1.nc"));
  thResultFile rf(dir.file("run.nc"), NC);
  // with nt 0 every timestep walks the "^" files until one is missing
  int32_t t = 0;
  EXPECT_VEXCEPTION(rf.getFileForTimestep(t),
                    "Not that many timesteps in file (" + dir.file("run.nc") + "). fileNo=2, timestep=0");
  EXPECT_EQ(rf.getTotNoTimesteps(), 3);  // 0 x 1 + the 3 of run^1.nc
  double* d = nullptr;
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 0, 0, &d, 0, 2), "holds no timesteps");
}
