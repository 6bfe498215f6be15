// The result file facade and the model and mesh views it hands out, over the small hand-made NC
// run: each read against the values worked out by hand for that run, each default once, the "no
// result" forms and the ownership of what the library allocates (checked by the sanitizer build).
#include <cstring>
#include <vector>

#include "facade/thResultFileWrapper.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using thTest::SmallModel;
using thWrapper::thResultFileWrapper;
using VD = std::vector<double>;
using VI = std::vector<int32_t>;

namespace {

VD temps(int t, std::vector<int> cells) {
  VD v;
  for (int c : cells) v.push_back(SmallModel::temp(t, c));
  return v;
}

// The small run, written for each test and opened through the facade.
class SmallRunFacade : public ::testing::Test {
 protected:
  void SetUp() override {
    thTest::writeSmallModelNc(fn);
    w.filename(fn);
    ASSERT_EQ(w.readHeader(), 0);
  }
  thTest::TempDir dir;
  const std::string fn = dir.file("run.nc");
  thResultFileWrapper w;
};

}  // namespace

TEST_F(SmallRunFacade, NameFormatHeaderAndItems) {
  thResultFileWrapper fresh;
  EXPECT_TRUE(fresh.items().empty() && fresh.format() == -1 && thResultFileWrapper::delVal() == -1e-30f);
  EXPECT_EQ(thResultFileWrapper::longDT2StrDT(thResultFileWrapper::strDT2LongDT("2010-01-01 01:00:00")),
            "2010-01-01 01:00:00");
  fresh.filename(dir.file("missing.nc"));
  EXPECT_EQ(fresh.format() + fresh.readHeader(), -2);
  ASSERT_TRUE(fresh.mInfo);  // made even when nothing was read
  EXPECT_TRUE(w.format() == 10 && w.mInfo->nol() == 3 && w.fileVersion() == 8 && w.totNoTimesteps() == 3);
  EXPECT_EQ(w.items(), (std::vector<std::string>{"temp", "elev"}));
  EXPECT_EQ(w.itemLengths(), (VI{9, 4}));
  EXPECT_NE(w.toString(0).find("Format:\tNC"), std::string::npos);
  std::vector<uint8_t> bmd(4 * 300);
  w.test(bmd, 9, 0, 0x01020304);  // pixel (9 + 20) * 10
  int32_t px;
  std::memcpy(&px, bmd.data() + 4 * 290, 4);
  EXPECT_EQ(px, 0x01020304);
  EXPECT_VEXCEPTION_HAS(w.test(bmd, 20, 0, 1), "outside the bitmap");
  w.Dispose();
  EXPECT_VEXCEPTION_HAS(w.items(), "disposed");
}

TEST_F(SmallRunFacade, ReadsGiveTheRunsValues) {
  // top cells at t 0: e0 cell 2, e1 cell 4, e2 cell 5, e3 cell 8
  EXPECT_EQ(w.readLayer(0, 0, 999), temps(0, {2, 4, 5, 8}));
  // columns of elements 3 and 1; the negative entry leaves no gap
  EXPECT_EQ(w.readItemData(0, 1, {3, -1, 1}), temps(1, {6, 7, 8, 3, 4}));
  EXPECT_EQ(w.readItemData(1, 2), (VD{2, 2.5, 3, 3.5}));
  EXPECT_EQ(w.readTimeSeries(1, 2, 2), (VD{1, 2, 3}));               // to -1: the file's nt
  EXPECT_EQ(w.readTimeSeries(0, 1, 1, 1, 3), (VD{103.25, 203.25}));  // cell 3 at t 1, 2
  VD dd, v, xc, yc;
  EXPECT_VEXCEPTION(w.readProfile(0, 0, 0, dd, v), "Not implemented.");
  // two sample points 100 apart in e0 and e1; depth 0.5 lies in the top layer of both
  EXPECT_EQ(w.extractSectionCart(0, 0, {10, 160}, {50, 50}, {0.5}, 100, dd, v, xc, yc), 0);
  EXPECT_EQ(dd, (VD{0, 100}));
  EXPECT_EQ(v, temps(0, {2, 4}));
  EXPECT_EQ(xc, (VD{10, 110}));
  std::vector<uint8_t> bitmap(4 * 4 * 3);
  EXPECT_EQ(w.readLayerAndInterpOnBitmap(1, 0, 0, bitmap, 4, 3, 10, 0, 300, 0, 100, 0, 2, {-1, 0}, -1, 2), 0);
  bitmap.resize(40);
  EXPECT_VEXCEPTION_HAS(
      w.readLayerAndInterpOnBitmap(1, 0, 0, bitmap, 4, 3, 10, 0, 300, 0, 100, 0, 2, {-1, 0}, -1, 2),
      "fewer than the 48 needed");
  EXPECT_VEXCEPTION_HAS(w.readItemData(5, 0), "item number 5 is out of range");
}

// The model description: properties, copies of the arrays, the mesh view and the vertical section
// mesh, which the returned wrapper owns.
TEST_F(SmallRunFacade, ModelAndMeshViews) {
  thWrapper::thModelInfoWrapper& mi = *w.mInfo;
  EXPECT_TRUE(mi.isInit() && mi.cells() == 9);
  EXPECT_TRUE(mi.startDT() == SmallModel::startDT && mi.dt() == 3600.0 && mi.nt() == 3);
  EXPECT_EQ(mi.ebli(), (VI{0, 1, 2, 0}));
  EXPECT_EQ(mi.botlayerIdx(), (VI{0, 3, 5, 6}));
  EXPECT_TRUE(mi.dz() == SmallModel::dz && mi.layerDepth() == SmallModel::layerDepth &&
              mi.elemBathy() == SmallModel::bathy);
  // Full cells at layerDepth; a partial bottom cell at the middle of what lies above the sea bed.
  EXPECT_EQ(mi.cellDepth(), (VD{11, 4.5, 1, 3.5, 1, 0.75, 8.5, 4.5, 1}));
  EXPECT_EQ(mi.ts2StrDT(1), "2010-01-01 01:00:00");
  EXPECT_EQ(mi.findTimestep(SmallModel::startDT + 5000), 1);     // nearest
  EXPECT_EQ(mi.findTimestep(SmallModel::startDT + 5000, 2), 2);  // ceil
  // one U-point face list per face, nol - fbli entries each
  std::vector<VD> fdz = mi.fdz();
  VI fbli = mi.fbli();
  ASSERT_EQ(fdz.size(), static_cast<size_t>(mi.totNoUvf()));
  for (size_t f = 0; f < fdz.size(); ++f) EXPECT_EQ(fdz[f].size(), static_cast<size_t>(3 - fbli[f]));
  const thWrapper::thMesh2DWrapper& g = mi.mesh2d;
  EXPECT_EQ(g.enxCoor(), (VD{0, 100, 100, 0, 100, 200, 200, 100, 200, 300, 300, 200, 300, 200}));
  EXPECT_EQ(g.enyCoor(), (VD{0, 0, 100, 100, 0, 0, 100, 100, 0, 0, 100, 0, 100, 100}));
  EXPECT_TRUE(g.noe() == 4 && g.bndId() == VI{1} && g.bndNoFaces() == VI{1});
  // e1 alone: 2 cells, nodes on levels 1..3 of both columns
  thWrapper::thMesh2DWrapper v = mi.ise2VMesh({1}, {100});
  EXPECT_TRUE(v.noe() == 2 && v.non() == 6);
  EXPECT_VEXCEPTION_HAS(mi.ise2VMesh({1, 2}, {100}), "isd");
  EXPECT_VEXCEPTION_HAS(mi.updateDZf({0, 0}, {}), "fewer than the 4 needed");
}

TEST_F(SmallRunFacade, TextTableSamples) {
  const std::string obs = dir.file("obs.text0d");
  thTest::writeText(obs, "DateTime\tT\tQ\n2010-01-01 00:00:00\t1.5\t1\n2010-01-02 00:00:00\t2.5\t0\n");
  w.filename(obs);
  w.readHeader();
  std::vector<int64_t> t;
  VD d;
  ASSERT_EQ(w.readTimeSeriesUET(0, t, d), 0);
  EXPECT_EQ(d, (VD{1.5, 2.5}));
  ASSERT_EQ(w.readTimeSeriesUET(0, -1, 2147483647, t, d, 1, 0.5, 2), 0);  // quality 1 only
  EXPECT_EQ(d, (VD{1.5}));
  EXPECT_EQ(w.readTimeSeriesUET(0, 0, 10, t, d), -1);  // nothing selected: untouched
  EXPECT_EQ(d, (VD{1.5}));
}
