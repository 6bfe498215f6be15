// Item data, layers and profiles of NC files, checked against the hand-made small model.

#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::SmallModel;

namespace {

const double delD = -1.0000000031710769e-30;  // delVal widened

struct SmallFile {
  thTest::TempDir dir;
  std::string fn = dir.file("small.nc");
  SmallFile() { thTest::writeSmallModelNc(fn); }
};

std::vector<float> layer(thResultFile& rf, int item, int t, int l) {
  std::vector<float> v(4, 42.0f);
  float* p = v.data();
  EXPECT_EQ(rf.readLayer(item, t, l, &p), 4);
  return v;
}

}  // namespace

TEST(ResultFileData, WholeItems) {
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

  // out of range: a sentence naming the file, the buffer untouched
  float buf[9] = {7};
  EXPECT_VEXCEPTION(rf.readItemData(0, 3, buf), "thResultFile::readItemData: timestep 3 is out of range; '" +
                                                    f.fn + "' holds 3 timesteps.");
  EXPECT_VEXCEPTION_HAS(rf.readItemData(0, -1, buf), "timestep -1 is out of range");
  EXPECT_VEXCEPTION(rf.readItemData(2, 0, buf), "thResultFile::readItemData: item number 2 is out of range; '" +
                                                    f.fn + "' has 2 items.");
  EXPECT_VEXCEPTION_HAS(rf.readItemData(-1, 0, buf), "item number -1 is out of range");
  EXPECT_EQ(buf[0], 7);
}

TEST(ResultFileData, ElementLists) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  // z-layers: the columns of e3 and e1 in list order; the negative entry leaves no gap
  int32_t en[] = {3, -1, 1};
  double* d = nullptr;
  ASSERT_EQ(rf.readItemData(0, 0, en, 3, &d), 5);
  EXPECT_EQ(std::vector<double>(d, d + 5), (std::vector<double>{6.25, 7.25, 8.25, 3.25, 4.25}));
  delete[] d;
  ASSERT_EQ(rf.readItemData(0, 0, en, 0, &d), 0);  // an empty list still gets a buffer
  delete[] d;
  int32_t beyond[] = {4};
  EXPECT_VEXCEPTION_HAS(rf.readItemData(0, 0, beyond, 1, &d), "element 4 of the list has no column");
  EXPECT_VEXCEPTION_HAS(rf.readItemData(1, 0, en, 3, &d), "has no column in item 'elev'");

  // sigma arithmetic: every element owns nol values; a negative entry gives nol deleted values
  rf.mInfo.layerType = 1;
  int32_t sen[] = {0, -1, 2};
  ASSERT_EQ(rf.readItemData(0, 0, sen, 3, &d), 9);
  EXPECT_EQ(std::vector<double>(d, d + 9),
            (std::vector<double>{0.25, 1.25, 2.25, delD, delD, delD, 6.25, 7.25, 8.25}));
  delete[] d;
  int32_t sbeyond[] = {3};  // would need values 9 to 11 of an item of 9
  EXPECT_VEXCEPTION_HAS(rf.readItemData(0, 0, sbeyond, 1, &d), "element 3 of the list has no column");
}

TEST(ResultFileData, SequentialReading) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  double buf[9];
  double* p = buf;
  // items 0, 1, 0 read timesteps 0, 0, 1
  EXPECT_EQ(rf.readNextItemData(0, &p), SmallModel::startDT);
  EXPECT_EQ(buf[3], 3.25);
  EXPECT_EQ(rf.readNextItemData(1, &p), SmallModel::startDT);
  EXPECT_EQ(buf[3], 1.5);
  EXPECT_EQ(rf.readNextItemData(0, &p), SmallModel::startDT + 3600);
  EXPECT_EQ(buf[3], 103.25);
  EXPECT_EQ(rf.curTimestep, 1);
  // the same item twice in a row advances time by one step
  EXPECT_EQ(rf.readNextItemData(0, &p), SmallModel::startDT + 7200);
  EXPECT_EQ(buf[0], 200.25);
  // past the end
  EXPECT_VEXCEPTION_HAS(rf.readNextItemData(0, &p), "timestep 3 is out of range");
  EXPECT_VEXCEPTION_HAS(rf.readNextItemData(5, &p), "item number 5 is out of range");
  // a new header read starts over
  rf.readHeader();
  EXPECT_EQ(rf.readNextItemData(1, &p), SmallModel::startDT);
  // text blocks belong to the text tables
  double** rows = nullptr;
  int32_t lines = 0;
  EXPECT_VEXCEPTION(rf.readNextTimestep(&rows, &lines), "thResultFile::readItemData undefined format.");
  rf.freeTimestepData(rows);  // nothing to do for NC
}

TEST(ResultFileData, LayerCodes) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  const float D = delVal;
  EXPECT_EQ(layer(rf, 0, 0, 0), (std::vector<float>{0.25f, D, D, 6.25f}));
  EXPECT_EQ(layer(rf, 0, 0, 1), (std::vector<float>{1.25f, 3.25f, D, 7.25f}));
  EXPECT_EQ(layer(rf, 0, 0, 2), (std::vector<float>{2.25f, 4.25f, 5.25f, 8.25f}));
  EXPECT_EQ(layer(rf, 0, 0, -1), (std::vector<float>{0.25f, 3.25f, 5.25f, 6.25f}));  // bottom cells
  EXPECT_EQ(layer(rf, 0, 0, -2), (std::vector<float>{D, D, D, D}));
  // 999 and up: the top-most value; the two deleted upper cells of e0 at t 1 are skipped,
  // the all-deleted column of e3 at t 2 gives delVal
  EXPECT_EQ(layer(rf, 0, 1, 999), (std::vector<float>{100.25f, 104.25f, 105.25f, 107.25f}));
  EXPECT_EQ(layer(rf, 0, 2, 1000), (std::vector<float>{202.25f, 203.25f, 205.25f, D}));
  // a 2-D item: the layer does not matter
  EXPECT_EQ(layer(rf, 1, 2, 0), (std::vector<float>{2.0f, 2.5f, 3.0f, 3.5f}));
  EXPECT_EQ(layer(rf, 1, 2, 998), (std::vector<float>{2.0f, 2.5f, 3.0f, 3.5f}));
  // above the surface, below 999: refused instead of read past the columns
  float buf[4];
  float* p = buf;
  EXPECT_VEXCEPTION_HAS(rf.readLayer(0, 0, 3, &p), "layer 3 does not exist in '" + f.fn + "'");
  EXPECT_VEXCEPTION_HAS(rf.readLayer(0, 0, 998, &p), "layer 998 does not exist");
  EXPECT_VEXCEPTION_HAS(rf.readLayer(0, 5, 0, &p), "timestep 5 is out of range");

  // the float64 form makes its own array
  double* d = nullptr;
  ASSERT_EQ(rf.readLayer(0, 1, 1, &d), 4);
  EXPECT_EQ(std::vector<double>(d, d + 4), (std::vector<double>{delD, 103.25, delD, 107.25}));
  delete[] d;

  // sigma set after the header was read
  rf.mInfo.layerType = 1;
  EXPECT_VEXCEPTION(rf.readLayer(0, 0, 0, &p), "Not implemented.");
  rf.mInfo.layerType = 7;  // neither: the buffer stays as it was
  buf[0] = 42;
  EXPECT_EQ(rf.readLayer(0, 0, 0, &p), 4);
  EXPECT_EQ(buf[0], 42);
}

TEST(ResultFileData, LayerAtDepthProfilesAndBitmaps) {
  SmallFile f;
  thResultFile rf(f.fn, NC);
  double data[4] = {1, 2, 3, 4};
  // upper edges 7, 2, 0: depth 5 lies in layer 1, depth 0 in none
  EXPECT_EQ(rf.readLayerAtDepth(0, 0, 5.0, data), 4);
  EXPECT_EQ(data[0], 1);  // the values are dropped
  EXPECT_EQ(rf.readLayerAtDepth(0, 0, 0.0, data), -1);
  EXPECT_EQ(rf.readLayerAtDepth(0, 0, 0.5, data), 4);

  // profiles are indexed by absolute layer; below the sea bed the deleted value
  float prof[3] = {9, 9, 9};
  EXPECT_EQ(rf.readProfile(0, 0, 1, prof), 0);
  EXPECT_EQ(prof[0], delVal);
  EXPECT_EQ(prof[1], 3.25f);
  EXPECT_EQ(prof[2], 4.25f);
  EXPECT_EQ(rf.readProfile(0, 2, 3, prof), 0);
  EXPECT_EQ(prof[0], delVal);  // a deleted column reads as it stands
  EXPECT_EQ(rf.readProfile(0, 1, 0, prof), 0);
  EXPECT_EQ(prof[0], 100.25f);
  EXPECT_VEXCEPTION_HAS(rf.readProfile(0, 0, 4, prof), "element number 4 is out of range");

  // a layer on a bitmap: 30 x 10 pixels over the mesh, each element's value at its centre
  std::vector<int32_t> bitmap(300, 0x12345678);
  int32_t* bm = bitmap.data();
  int32_t cols[] = {static_cast<int32_t>(0xFF000000), static_cast<int32_t>(0xFFFFFFFF)};  // black to white
  ASSERT_EQ(rf.readLayerAndInterpOnBitmap(1, 0, 2, &bm, 30, 10, 256, 0, 300, 0, 100, 0, 1.5, cols, 2, 15, 2), 0);
  // the pixel (5, 5) holds e0's centre (50, 50): value 0, black; (15, 5) e1's (150, 50): value 0.5
  auto px = [&](int i, int j) { return static_cast<uint32_t>(bitmap[(10 - 1 - j) * 30 + i]); };
  EXPECT_EQ(px(5, 5), 0xFF000000u);
  uint32_t grey = px(15, 5) & 0xFF;
  EXPECT_NEAR(grey, 255.0 / 3, 2);
  EXPECT_EQ(px(0, 9), 0x12345678u);  // no element centre within reach: left as it was
  EXPECT_VEXCEPTION_HAS(rf.readLayerAndInterpOnBitmap(1, 0, 2, nullptr, 30, 10, 256, 0, 300, 0, 100, 0, 1.5, cols, 2, 15, 2),
                        "no bitmap");
}
