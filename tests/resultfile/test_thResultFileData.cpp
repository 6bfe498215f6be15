// Item data, layers, profiles and time series of NC files, checked against the hand-made small
// model; series also across the physical "^" files of a logical file.

#include <netcdf.h>

#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::SmallModel;
using thTest::SmallModelOptions;
using thTest::take;
using VF = std::vector<float>;
using VD = std::vector<double>;

namespace {

const double delD = -1.0000000031710769e-30;  // delVal widened
const float D = delVal;

struct SmallFile {
  thTest::TempDir dir;
  std::string fn = dir.file("small.nc");
  SmallFile() { thTest::writeSmallModelNc(fn); }
};

// The values of a series read (layer >= 0) or of a profile series of item 0 (layer -1), after
// checking their count.
VD series(thResultFile& rf, int item, int elem, int layer, int from, int to, int expectCount) {
  double* d = nullptr;
  int32_t n = layer >= 0 ? rf.readTimeSeries(item, elem, layer, &d, from, to)
                         : rf.readTimeSeriesProfile(0, elem, &d, from, to);
  EXPECT_EQ(n, expectCount);
  return take(d, n);
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

TEST(ResultFileData, WholeItemsAndElementLists) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  for (int t = 0; t < 3; ++t) {
    float temp[9];
    EXPECT_EQ(rf.readItemData(0, t, temp), 0);
    for (int c = 0; c < 9; ++c) EXPECT_EQ(temp[c], SmallModel::temp(t, c)) << t << " " << c;
    double elev[4];
    EXPECT_EQ(rf.readItemData(1, t, elev), 0);
    for (int e = 0; e < 4; ++e) EXPECT_EQ(elev[e], t + 0.5 * e);
  }
  double temp1[9];
  rf.readItemData(0, 1, temp1);
  EXPECT_EQ(temp1[1], delD);  // the deleted value widens to float64
  EXPECT_EQ(temp1[3], 103.25);

  // a timestep beyond the file is no failure: the library's status, the buffer untouched
  float buf[9] = {7};
  double dbuf[9] = {7};
  EXPECT_EQ(std::vector<int>(
                {rf.readItemData(0, 3, buf), rf.readItemData(0, -1, buf), rf.readItemData(1, 3, dbuf)}),
            std::vector<int>(3, NC_EINVALCOORDS));
  EXPECT_TRUE(buf[0] == 7 && dbuf[0] == 7);
  // an item out of range: a sentence naming the file
  EXPECT_VEXCEPTION(rf.readItemData(2, 0, buf),
                    "thResultFile::readItemData: item number 2 is out of range; '" + f.fn + "' has 2 items.");

  // z-layers: the columns of e3 and e1 in list order; the negative entry leaves no gap
  int32_t en[] = {3, -1, 1};
  double* d = nullptr;
  ASSERT_EQ(rf.readItemData(0, 0, en, 3, &d), 5);
  EXPECT_EQ(take(d, 5), (VD{6.25, 7.25, 8.25, 3.25, 4.25}));
  ASSERT_EQ(rf.readItemData(0, 0, en, 0, &d), 0);  // an empty list still gets a buffer
  delete[] d;
  // a failed read (timestep 5 of 3) still hands over the buffer and the count, with zeros
  ASSERT_EQ(rf.readItemData(0, 5, en, 3, &d), 5);
  EXPECT_EQ(take(d, 5), VD(5, 0.0));
  EXPECT_VEXCEPTION_HAS(rf.readItemData(1, 0, en, 3, &d), "has no column in item 'elev'");
  // sigma arithmetic: every element owns nol values; a negative entry gives nol deleted values
  rf.mInfo.layerType = 1;
  int32_t sen[] = {0, -1, 2};
  ASSERT_EQ(rf.readItemData(0, 0, sen, 3, &d), 9);
  EXPECT_EQ(take(d, 9), (VD{0.25, 1.25, 2.25, delD, delD, delD, 6.25, 7.25, 8.25}));
  int32_t sbeyond[] = {3};  // would need values 9 to 11 of an item of 9
  EXPECT_VEXCEPTION_HAS(rf.readItemData(0, 0, sbeyond, 1, &d), "element 3 of the list has no column");
}

TEST(ResultFileData, SequentialReading) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  double buf[9];
  double* p = buf;
  // items 0, 1, 0 read timesteps 0, 0, 1; the same item twice in a row advances one step
  const int items[] = {0, 1, 0, 0};
  const int64_t when[] = {0, 0, 3600, 7200};
  const double at3[] = {3.25, 1.5, 103.25, 203.25};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(rf.readNextItemData(items[i], &p), SmallModel::startDT + when[i]) << i;
    EXPECT_EQ(buf[3], at3[i]) << i;
  }
  EXPECT_EQ(rf.curTimestep, 2);
  // past the end: the date goes on, the buffer keeps what it held
  buf[0] = 42;
  EXPECT_EQ(rf.readNextItemData(0, &p), SmallModel::startDT + 10800);
  EXPECT_EQ(buf[0], 42);
  rf.readHeader();  // a new header read starts over
  EXPECT_EQ(rf.readNextItemData(1, &p), SmallModel::startDT);
  EXPECT_EQ(buf[3], 1.5);
}

TEST(ResultFileData, LayerCodes) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  struct Row {
    int item, t, layer;
    VF expect;
  };
  const Row rows[] = {
      {0, 0, 0, {0.25f, D, D, 6.25f}},
      {0, 0, 1, {1.25f, 3.25f, D, 7.25f}},
      {0, 0, 2, {2.25f, 4.25f, 5.25f, 8.25f}},
      {0, 0, -1, {0.25f, 3.25f, 5.25f, 6.25f}},  // the bottom cells
      {0, 0, -2, {D, D, D, D}},
      // 999 and up: the top-most value; the two deleted upper cells of e0 at t 1 are skipped,
      // the all-deleted column of e3 at t 2 gives delVal
      {0, 1, 999, {100.25f, 104.25f, 105.25f, 107.25f}},
      {0, 2, 1000, {202.25f, 203.25f, 205.25f, D}},
      {1, 2, 0, {2.0f, 2.5f, 3.0f, 3.5f}},  // a 2-D item: the layer does not matter
      {1, 2, 998, {2.0f, 2.5f, 3.0f, 3.5f}},
  };
  for (const Row& r : rows) {
    VF v(4, 42.0f);
    float* p = v.data();
    EXPECT_EQ(rf.readLayer(r.item, r.t, r.layer, &p), 4);
    EXPECT_EQ(v, r.expect) << r.item << " " << r.t << " " << r.layer;
  }
  // above the surface, below 999: refused instead of read past the columns
  VF buf(4, 42.0f);
  float* p = buf.data();
  EXPECT_VEXCEPTION_HAS(rf.readLayer(0, 0, 998, &p), "layer 998 does not exist in '" + f.fn + "'");
  // a timestep beyond the file: -1 for a 3-D item, noe for a 2-D one, the buffer untouched
  EXPECT_EQ(rf.readLayer(0, 5, 0, &p) + 10 * rf.readLayer(1, 5, 0, &p), -1 + 10 * 4);
  EXPECT_EQ(buf, VF(4, 42.0f));

  // the float64 form makes its own array
  double* d = nullptr;
  ASSERT_EQ(rf.readLayer(0, 1, 1, &d), 4);
  EXPECT_EQ(take(d, 4), (VD{delD, 103.25, delD, 107.25}));
  EXPECT_EQ(rf.readLayer(0, 3, 1, &d), -1);
  delete[] d;

  rf.mInfo.layerType = 1;  // sigma set after the header was read
  EXPECT_VEXCEPTION(rf.readLayer(0, 0, 0, &p), "Not implemented.");
  rf.mInfo.layerType = 7;  // neither: the buffer stays as it was
  EXPECT_EQ(rf.readLayer(0, 0, 0, &p), 4);
  EXPECT_EQ(buf, VF(4, 42.0f));
}

TEST(ResultFileData, LayerAtDepthProfilesAndBitmaps) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  double data[4] = {1, 2, 3, 4};
  // upper edges 7, 2, 0: depth 5 lies in layer 1, depth 0 in none
  // the values are dropped; the read of a missing timestep fails
  EXPECT_EQ(
      std::vector<int64_t>({rf.readLayerAtDepth(0, 0, 5.0, data), rf.readLayerAtDepth(0, 0, 0.0, data),
                            rf.readLayerAtDepth(0, 0, 0.5, data), rf.readLayerAtDepth(0, 4, 0.5, data)}),
      (std::vector<int64_t>{4, -1, 4, -1}));
  EXPECT_EQ(data[0], 1);

  // profiles are indexed by absolute layer; below the sea bed the deleted value
  struct Row {
    int t, elem;
    VF expect;
  };
  const Row rows[] = {{0, 1, {D, 3.25f, 4.25f}},
                      {2, 3, {D, D, D}},  // a deleted column reads as it stands
                      {1, 0, {100.25f, D, D}},
                      {3, 1, {D, 9, 9}}};  // a timestep beyond the file: the rest stays
  for (const Row& r : rows) {
    VF prof(3, 9.0f);
    EXPECT_EQ(rf.readProfile(0, r.t, r.elem, prof.data()), 0);
    EXPECT_EQ(prof, r.expect) << r.t << " " << r.elem;
  }
  float prof[3];
  EXPECT_VEXCEPTION_HAS(rf.readProfile(0, 0, 4, prof), "element number 4 is out of range");

  // a layer on a bitmap: 30 x 10 pixels over the mesh, each element's value at its centre
  std::vector<int32_t> bitmap(300, 0x12345678);
  int32_t* bm = bitmap.data();
  int32_t cols[] = {static_cast<int32_t>(0xFF000000), static_cast<int32_t>(0xFFFFFFFF)};  // black to white
  ASSERT_EQ(rf.readLayerAndInterpOnBitmap(1, 0, 2, &bm, 30, 10, 256, 0, 300, 0, 100, 0, 1.5, cols, 2, 15, 2),
            0);
  // the pixel (5, 5) holds e0's centre (50, 50): value 0, black; (15, 5) e1's (150, 50): value 0.5
  auto px = [&](int i, int j) { return static_cast<uint32_t>(bitmap[(10 - 1 - j) * 30 + i]); };
  EXPECT_EQ(px(5, 5), 0xFF000000u);
  EXPECT_NEAR(px(15, 5) & 0xFF, 255.0 / 3, 2);
  EXPECT_EQ(px(0, 9), 0x12345678u);  // no element centre within reach: left as it was
  EXPECT_VEXCEPTION_HAS(
      rf.readLayerAndInterpOnBitmap(1, 0, 2, nullptr, 30, 10, 256, 0, 300, 0, 100, 0, 1.5, cols, 2, 15, 2),
      "no bitmap");
}

TEST(ResultFileSeries, WithinOneFile) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  // cell 7 (e3, layer 1) over all timesteps; the end of the range is not part of it
  EXPECT_EQ(series(rf, 0, 3, 1, 0, 3, 3), (VD{7.25, 107.25, delD}));
  EXPECT_EQ(series(rf, 0, 3, 1, 1, 2, 1), (VD{107.25}));
  EXPECT_EQ(series(rf, 0, 3, 1, 0, -1, 3).size(), 3u);  // to the end
  EXPECT_TRUE(series(rf, 0, 3, 1, 2, 2, 0).empty());    // an empty range is no failure
  // a 2-D item by element, at any layer from the element's bottom up
  EXPECT_EQ(series(rf, 1, 2, 2, 0, 3, 3), (VD{1.0, 2.0, 3.0}));
  double* d = nullptr;
  EXPECT_VEXCEPTION(
      rf.readTimeSeries(1, 2, 0, &d, 0, 3),
      "Layer 0 is below bottom. There are 1 layers in element 2, numbered (bottom) 2 to 2 (surface).");
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 3, 1, &d, 3, 2), "timeStepFrom>timeStepTo");
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 3, 1, &d, 0, 4), "Invalid timeStepTo");
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 3, 3, &d, 0, 3), "layer 3 lies above the surface layer 2");
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 4, 1, &d, 0, 3), "element number 4 is out of range");
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 3, 1, &d, -1, 3), "timeStepFrom -1 is negative");
  EXPECT_EQ(d, nullptr);

  // whole columns, timestep after timestep, each from the bottom cell up
  EXPECT_EQ(series(rf, 0, 1, -1, 0, 3, 6), (VD{3.25, 4.25, 103.25, 104.25, 203.25, delD}));
  EXPECT_EQ(series(rf, 0, 0, -1, 2, -1, 3), (VD{200.25, 201.25, 202.25}));
  EXPECT_VEXCEPTION(rf.readTimeSeriesProfile(1, 0, &d, 0, 3),
                    "readTimeSeriesProfile only supports 3D items. Use readTimeSeries for 2D items.");
}

TEST(ResultFileSeries, AcrossPhysicalFiles) {
  ThreeFiles files;
  thResultFile rf(files.fn, NC);
  // 2 x 3 + the 2 of the last file
  EXPECT_TRUE(rf.mInfo.nt == 3 && rf.getTotNoTimesteps() == 8 && rf.fileNo == 0);

  // physical files of timesteps
  int32_t t = 4;
  EXPECT_EQ(rf.getFileForTimestep(t), files.dir.file("run^1.nc"));
  EXPECT_TRUE(t == 1 && rf.fileNo == 1);
  t = 2;
  EXPECT_EQ(rf.getFileForTimestep(t), files.fn);  // within the first: fileNo stays
  EXPECT_EQ(rf.fileNo, 1);
  t = 9;
  EXPECT_VEXCEPTION(rf.getFileForTimestep(t),
                    "Not that many timesteps in file (" + files.fn + "). fileNo=3, timestep=0");
  t = -1;
  EXPECT_VEXCEPTION(rf.getFileForTimestep(t),
                    "Negative timestep requested from  (" + files.fn + "). " + thGlobal::errTail);

  // the whole logical file: cell 0 (bottom of e0) of timesteps 0 to 7
  EXPECT_EQ(series(rf, 0, 0, 0, 0, -1, 8),
            (VD{0.25, 100.25, 200.25, 300.25, 400.25, 500.25, 600.25, 700.25}));
  EXPECT_EQ(rf.fileNo, 3);  // the loop leaves fileNo behind the last file
  // a range within nt is now served by the file that fileNo names, which does not exist
  double* d = nullptr;
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 0, 0, &d, 0, 3),
                    "No such file: '" + files.dir.file("run^3.nc") + "'");
  // a range beyond the first file starts over from the first
  EXPECT_EQ(series(rf, 1, 1, 2, 4, 7, 3), (VD{4.5, 5.5, 6.5}));
  EXPECT_EQ(rf.fileNo, 3);
  // a negative end puts fileNo back first, so the first file serves the next short range
  EXPECT_EQ(series(rf, 0, 0, 0, 6, -1, 2), (VD{600.25, 700.25}));
  rf.getTotNoTimesteps();
  EXPECT_EQ(series(rf, 0, 0, 0, 1, 3, 2), (VD{100.25, 200.25}));

  // columns across files: e1 (cells 3, 4) of timesteps 2 to 4
  EXPECT_EQ(series(rf, 0, 1, -1, 2, 5, 6), (VD{203.25, delD, 303.25, 304.25, 403.25, 404.25}));
}

TEST(ResultFileSeries, EmptyFirstFile) {
  thTest::TempDir dir;
  thTest::writeSmallModelNc(dir.file("run.nc"), {.times = {}});
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
