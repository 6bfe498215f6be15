// The light open: the same columns and reads as the full header read, and the same tables once
// they are asked for.
#include <cmath>

#include <functional>
#include "resultfile/thResultFile.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::arr;

namespace {

// 8 quadrilaterals of 100 m, open boundaries west and east, 4 layers of 2 m: depths give 1 to 4
// layers, and element 5's bottom cell is 0.1 m, thinner than minBotFrac allows (or dropped with a
// negative minBotFrac). Values: 3-D cell c at step t is 10t + c, 2-D element e is -e - t.
void buildRun(thModelInfo& mi, double minBotFrac) {
  mi.mesh2d.readMeshText(thTest::smallModelMeshText());
  mi.nol = 4;
  mi.dz = new double[4]{2, 2, 2, 2};
  mi.elemBathy = new double[8]{7.5, 1.0, 3.0, 8.0, 5.0, 4.1, 6.0, 2.5};
  mi.minBotFrac = minBotFrac;
  mi.initCells();
}

std::string writeRun(const thTest::TempDir& dir) {
  std::string fn = dir.file("run.nc");
  thResultFile w(fn, NC);
  buildRun(w.mInfo, 0.1);
  w.mInfo.startDT = 1717200000;
  w.mInfo.dt = 3600;
  w.addItem("temp", w.mInfo.cells);
  w.addItem("elev", 8);
  w.writeHeader();
  std::vector<float> t(w.mInfo.cells), h(8);
  for (int32_t s = 0; s < 3; ++s) {
    for (int32_t c = 0; c < w.mInfo.cells; ++c) t[c] = 10.0f * s + c;
    for (int32_t e = 0; e < 8; ++e) h[e] = -1.0f * e - s;
    w.writeItemData(t.data(), w.mInfo.cells);
    w.writeItemData(h.data(), 8);
  }
  w.closeFile(3);
  return fn;
}

template <typename T>
void expectSameRows(T** a, T** b, int32_t rows, const std::function<int32_t(int32_t)>& len,
                    const char* what) {
  ASSERT_TRUE(a != nullptr && b != nullptr) << what;
  for (int32_t r = 0; r < rows; ++r) EXPECT_EQ(arr(a[r], len(r)), arr(b[r], len(r))) << what << " row " << r;
}

// Every column and table of two models of one mesh.
void expectSameModel(const thModelInfo& a, const thModelInfo& b) {
  const thMesh2D& m = a.mesh2d;
  const int32_t cols = m.noe + m.tnbe, all = a.cells + a.totNoBndCells, nol = a.nol;
  EXPECT_EQ(std::vector<int32_t>({a.cells, a.totNoBndCells, a.totNoUvf, a.noUInner, a.noUBnd, a.totNoUPnts}),
            std::vector<int32_t>({b.cells, b.totNoBndCells, b.totNoUvf, b.noUInner, b.noUBnd, b.totNoUPnts}));
  using M = thModelInfo;
  for (auto f : {&M::ebli, &M::etli, &M::botlayerIdx, &M::toplayerIdx})
    EXPECT_EQ(arr(a.*f, cols), arr(b.*f, cols));
  EXPECT_EQ(arr(a.elemBathy, m.noe), arr(b.elemBathy, m.noe));
  EXPECT_EQ(arr(a.enol, m.noe), arr(b.enol, m.noe));
  EXPECT_EQ(arr(a.bndNoCells, m.nBnd), arr(b.bndNoCells, m.nBnd));
  auto elemLen = [&a](int32_t e) { return a.toplayerIdx[e] - a.botlayerIdx[e] + 1; };
  auto faceLen = [&a, nol](int32_t f) { return nol - a.fbli[f]; };
  auto centres = [](std::function<int32_t(int32_t)> n) {
    return [n](int32_t r) { return std::max(n(r) - 1, 1); };
  };
  for (auto f : {&M::edz, &M::edzOld}) expectSameRows(a.*f, b.*f, m.noe, elemLen, "edz");
  expectSameRows(a.edzc, b.edzc, m.noe, centres(elemLen), "edzc");
  for (auto f : {&M::fbli, &M::ftli, &M::fUIdx}) EXPECT_EQ(arr(a.*f, a.totNoUvf), arr(b.*f, a.totNoUvf));
  EXPECT_EQ(arr(a.fLayerOff, 2 * a.totNoUvf), arr(b.fLayerOff, 2 * a.totNoUvf));
  for (auto f : {&M::fdz, &M::fdzOld}) expectSameRows(a.*f, b.*f, a.totNoUvf, faceLen, "fdz");
  expectSameRows(a.fdzc, b.fdzc, a.totNoUvf, centres(faceLen), "fdzc");
  expectSameRows(
      a.evfbli, b.evfbli, m.noe, [&m](int32_t e) { return m.nivfpe[e] + m.nbvfpe[e]; }, "evfbli");
  for (auto f : {&M::cell2elem, &M::cell2layer, &M::cellTop, &M::cellGroup, &M::cellSeq})
    EXPECT_EQ(arr(a.*f, all), arr(b.*f, all));
  EXPECT_EQ(arr(a.cellVol, a.cells), arr(b.cellVol, b.cells));
  EXPECT_EQ(arr(a.cellDepth, a.cells), arr(b.cellDepth, b.cells));
}

}  // namespace

TEST(LightOpen, ReadsAsTheFullOpenAndBuildsTheSameTablesOnUse) {
  thTest::TempDir dir;
  const std::string fn = writeRun(dir);
  thResultFile full(fn, NC), light("", NC);
  light.filename = fn;
  ASSERT_EQ(light.readHeaderLight(), 0);
  thModelInfo& mi = light.mInfo;
  EXPECT_FALSE(mi.deferTables);  // the light open does not make later reads light
  EXPECT_TRUE(mi.edz == nullptr && mi.fdz == nullptr && mi.fbli == nullptr && mi.cellVol == nullptr &&
              mi.cell2elem == nullptr && mi.evfbli == nullptr);
  // Element 5 (4.1 m): bottom layer 1 would be 0.1 m thick, so the sea bed goes down to 4.2 m.
  EXPECT_DOUBLE_EQ(mi.elemBathy[5], 4.2);
  for (int32_t layer : {-1, 0, 2, 3, 999}) {
    double *a = nullptr, *b = nullptr;
    ASSERT_EQ(light.readLayer(0, 2, layer, &a), full.readLayer(0, 2, layer, &b));
    EXPECT_EQ(arr(a, 8), arr(b, 8)) << layer;
    delete[] a;
    delete[] b;
  }
  double *sa = nullptr, *sb = nullptr;
  ASSERT_EQ(light.readTimeSeries(0, 3, 2, &sa, 0, -1), 3);
  full.readTimeSeries(0, 3, 2, &sb, 0, -1);
  EXPECT_EQ(arr(sa, 3), arr(sb, 3));
  delete[] sa;
  delete[] sb;
  float pa[4] = {}, pb[4] = {};
  light.readProfile(0, 1, 0, pa);
  full.readProfile(0, 1, 0, pb);
  EXPECT_EQ(arr(pa, 4), arr(pb, 4));
  std::vector<double> depth(mi.cells, 0.0);  // the depths need no tables
  mi.fillCellDepths(depth.data());
  EXPECT_EQ(depth, arr(full.mInfo.cellDepth, mi.cells));
  // The model's report builds the tables it needs (the volumes) through a const model.
  EXPECT_EQ(light.toString(10), full.toString(10));
  mi.cellTables();
  expectSameModel(mi, full.mInfo);
  // By hand: element 5's bottom cell of 4.2 - 4.0 m over 100 x 100 m.
  EXPECT_NEAR(mi.cellVol[mi.botlayerIdx[5]], 0.2 * 1e4, 1e-9);
}

TEST(LightOpen, DroppedBottomCellsGiveTheSameTables) {
  thModelInfo full, light;
  buildRun(full, -0.5);
  light.deferTables = true;
  buildRun(light, -0.5);
  ASSERT_TRUE(light.cellVol == nullptr);
  std::vector<double> depth(light.cells, 0.0);  // a dropped cell's entry stays 0, as in the table
  light.fillCellDepths(depth.data());
  EXPECT_EQ(depth, arr(full.cellDepth, full.cells));
  light.updateCellTop();  // a member that needs the tables builds them
  expectSameModel(light, full);
  EXPECT_EQ(light.ebli[5], 2);  // the 0.1 m cell in layer 1 went
}
