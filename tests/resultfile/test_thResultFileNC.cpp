// Reading the header of NC result files: the small hand-made model, its edge cases, files that are
// not result files, and the light open (the same columns and reads as the full header read, and the
// same tables once they are asked for).

#include <netcdf.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <memory>

#include "resultfile/thResultFile.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::arr;
using thTest::SmallModel;
using thTest::SmallModelOptions;
using thTest::take;

namespace {

// The open file descriptors of the process (one of them the listing's own).
int openFileCount() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

// The CDL of the small model with one piece of text replaced.
std::string cdlWith(const std::string& from, const std::string& to, const SmallModelOptions& opt = {}) {
  std::string cdl = thTest::smallModelCdl(opt);
  size_t p = cdl.find(from);
  EXPECT_NE(p, std::string::npos) << from;
  if (p != std::string::npos) cdl.replace(p, from.size(), to);
  return cdl;
}

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
  for (auto f : {&M::cellVol, &M::cellDepth}) EXPECT_EQ(arr(a.*f, a.cells), arr(b.*f, a.cells));
}

}  // namespace

TEST(ResultFileNC, HeaderOfTheSmallModelAndEdgeCases) {
  thTest::TempDir dir;
  // the format comes from the extension, the header is read at once
  thResultFile rf(thTest::smallModelNc(dir.file("small.nc")), -1);
  EXPECT_TRUE(rf.format == NC && rf.fileVersion == 8);
  EXPECT_GT(rf.fileTime, 1600000000);  // the file's modification time, now
  // a second read of the header gives the same, not twice the items
  for (int pass = 0; pass < 2; ++pass) {
    ASSERT_TRUE(pass == 0 || rf.readHeader() == 0);
    const thModelInfo& mi = rf.mInfo;
    const thMesh2D& m = mi.mesh2d;
    // dt = (7200 - 0) / 2: the middle step of 1000 does not count
    EXPECT_EQ(std::vector<int64_t>({mi.nt, mi.startDT, int64_t(mi.dt), mi.flavor, mi.nol, mi.cells}),
              (std::vector<int64_t>{3, SmallModel::startDT, 3600, 3, 3, 9}));
    ASSERT_TRUE(m.projection == "UTM32" && m.noe == 4 && m.non == 8 && mi.nol == 3);
    EXPECT_EQ(arr(mi.ebli, 4), SmallModel::ebli);
    EXPECT_EQ(arr(mi.enol, 4), SmallModel::enol);
    EXPECT_EQ(arr(mi.elemBathy, 4), SmallModel::bathy);
    EXPECT_EQ(arr(m.eVoronoiX, 4), SmallModel::vorX);  // the file's points are kept
    EXPECT_EQ(arr(m.eVoronoiY, 4), SmallModel::vorY);
    EXPECT_EQ(arr(mi.layerDepth, 3), SmallModel::layerDepth);
    // initMesh ran before initCells: 3 inner faces, the open face n0-n4 of e0, 11 faces in all, a
    // ghost column (cell 9) behind the open face, and 8 U-points: faces e0|e1 and e1|e3 from layer
    // 1 (2 each), e2|e3 from layer 2 (1), the open face 3
    EXPECT_EQ((std::vector<int>{m.nivf, m.tnbe, m.nvf, m.bndElem[0], mi.botlayerIdx[4], mi.totNoUPnts}),
              (std::vector<int>{3, 1, 11, 0, 9, 8}));
    ASSERT_EQ(rf.itemNameVec, (std::vector<std::string>{"temp", "elev"}));
    EXPECT_EQ(rf.itemLengthVec, (std::vector<int32_t>{9, 4}));
  }

  // edge cases
  auto open = [&](const std::string& name, const SmallModelOptions& opt) {
    return std::make_unique<thResultFile>(thTest::smallModelNc(dir.file(name), opt), NC);
  };
  // one timestep: dt 1.0 whatever the time; no "topDepth": the field keeps its value
  thResultFile one("", -1);
  one.filename = thTest::smallModelNc(dir.file("one.nc"), {.topDepthAtt = false, .times = {5000}});
  one.format = NC;
  one.mInfo.topDepth = 0.5;
  ASSERT_EQ(one.readHeader(), 0);
  const thModelInfo& mi = one.mInfo;  // the layers hang from the kept top depth
  EXPECT_TRUE(mi.nt == 1 && mi.startDT == 5000 && mi.dt == 1.0 && mi.topDepth == 0.5);
  EXPECT_DOUBLE_EQ(mi.layerDepth[2], 1.5);
  // steps 0, 3600, 7200 and no "elemlayers": the layers come from the sea bed
  auto noEnol = open("noenol.nc", {.elemLayers = false, .times = {0, 3600, 7200}});
  EXPECT_TRUE(noEnol->mInfo.startDT == 0 && noEnol->mInfo.dt == 3600.0 && noEnol->mInfo.topDepth == 0.0);
  EXPECT_EQ(arr(noEnol->mInfo.ebli, 4), SmallModel::ebli);
  // "elemlayers" rules over the sea bed: e3 with 2 layers instead of 3; the item keeps its own length
  thTest::ncgen(cdlWith("elemlayers = 3, 2, 1, 3", "elemlayers = 3, 2, 1, 2"), dir.file("enol.nc"));
  thResultFile enol(dir.file("enol.nc"), NC);
  EXPECT_TRUE(enol.mInfo.ebli[3] == 1 && enol.mInfo.cells == 8 && enol.itemLengthVec[0] == 9);
  auto noItems = open("noitems.nc", {.items = false});  // "nItem" 0: no items and no failure
  EXPECT_TRUE(noItems->itemNameVec.empty() && noItems->itemLengthVec.empty());
  auto empty = open("empty.nc", {.times = {}});  // no timesteps: the axis keeps its start, dt 1
  EXPECT_TRUE(empty->mInfo.nt == 0 && empty->mInfo.startDT == 0 && empty->mInfo.dt == 1.0);
  // a time axis over nearly all of int64: its ends are 2^64 - 2 apart, the step (2^64 - 2) / 2 is
  // 2^63 as the nearest float64, not a wrapped difference
  auto huge = open("huge.nc", {.times = {-9223372036854775807LL, 0, 9223372036854775807LL}});
  EXPECT_EQ(huge->mInfo.startDT, -9223372036854775807LL);
  EXPECT_DOUBLE_EQ(huge->mInfo.dt, std::ldexp(1.0, 63));
  EXPECT_VEXCEPTION(open("sigma.nc", {.layerType = 1}), "Sigma layers no longer supported.");
}

TEST(ResultFileNC, FilesThatAreNotResultFiles) {
  thTest::TempDir dir;
  std::string noLayers = thTest::smallModelCdl();
  for (size_t p; (p = noLayers.find("layers")) != std::string::npos;) noLayers.replace(p, 6, "strata");
  std::string noVorX = cdlWith("  double voronoiX(elems) ;\n", "");
  noVorX.erase(noVorX.find("  voronoiX = "), noVorX.find("  voronoiY = ") - noVorX.find("  voronoiX = "));
  const std::pair<std::string, std::string> cases[] = {
      {"netcdf x {\ndimensions:\n  x = 3 ;\nvariables:\n  int v(x) ;\ndata:\n  v = 1, 2, 3 ;\n}\n",
       "the dimension 'time' is missing"},
      {noLayers, "the dimension 'layers' is missing"},
      {noVorX, "the variable 'voronoiX' is missing"},
      {cdlWith("int nodeType(nodes)", "double nodeType(nodes)"),
       "the variable 'nodeType' is of double, not of int"},
      {cdlWith("double elemBathy(elems)", "double elemBathy(nodes)"),
       "the variable 'elemBathy' is not laid out along the dimension 'elems'"},
      {cdlWith(":nItem = 2", ":nItem = 20"), "'nItem' is 20 but the file has 14 variables"},
      {cdlWith("  :nItem = 2 ;\n", ""), "the attribute 'nItem' is missing"},
      // three items reach back into the fixed variables
      {cdlWith(":nItem = 2", ":nItem = 3"),
       "the item variable 'layerThickness' is not laid out along (time, values)"},
      {cdlWith("  float elev(time, elems) ;\n", "  char elev(time, elems) ;\n"),
       "the item variable 'elev' is of another type, not of a number type that items are read as"},
      {cdlWith("connectivity = 0, 1, 5, 4", "connectivity = 0, 1, -3, 4"),
       "'connectivity' names node -3 but there are 8 nodes"},
      {cdlWith("noElemNodes = 4, 4, 3, 3", "noElemNodes = 4, 4, 3, 2"),
       "element 3 has 2 nodes (3 to 50 are possible)"},
      {cdlWith("noElemNodes = 4, 4, 3, 3", "noElemNodes = 4, 4, 4, 3"),
       "the elements have 15 nodes together but 'connectivity' holds 14"},
      {cdlWith("nodeType = 1, 99", "nodeType = 1, 100"), "node 1 has the type 100"},
      {cdlWith("elemlayers = 3, 2, 1, 3", "elemlayers = 3, 2, 1, 4"),
       "element 3 has 4 layers but the model has 3"},
  };
  const std::string fn = dir.file("bad.nc");
  for (const auto& [cdl, why] : cases) {
    thTest::ncgen(cdl, fn);
    EXPECT_VEXCEPTION(thResultFile(fn, NC),
                      "thResultFile::readHeader: '" + fn + "' is not a result file: " + why + ".");
  }
}

TEST(ResultFileNC, BrokenFilesAndHandles) {
  thTest::TempDir dir;
  const std::string fn = thTest::smallModelNc(dir.file("small.nc"));
  int before = openFileCount();
  {
    thResultFile rf(fn, NC);
    EXPECT_EQ(openFileCount(), before + 1);  // the NetCDF file stays open for the reads
  }
  EXPECT_EQ(openFileCount(), before);  // and goes with the object

  // empty, garbage and truncated files: a VException, nothing left open
  thTest::writeText(dir.file("garbage.nc"), std::string(5000, 'x'));
  EXPECT_THROW(thResultFile(dir.file("garbage.nc"), NC), VCppLib::VException);
  std::string bytes = thTest::readText(fn);
  for (size_t keep : {size_t(0), size_t(8), bytes.size() / 2, bytes.size() - 100}) {
    std::string cut = dir.file("cut" + std::to_string(keep) + ".nc");
    thTest::writeText(cut, bytes.substr(0, keep));
    EXPECT_THROW(
        {
          thResultFile rf(cut, NC);
          float buf[9];
          for (int t = 0; t < 3; ++t)  // may fail only through a VException, or a bad status
            if (rf.readItemData(0, t, buf) != 0) throw VCppLib::VException("read failed");
        },
        VCppLib::VException)
        << keep;
  }
  EXPECT_EQ(openFileCount(), before);

  // One value written at record 50,331,650 gives the time axis, and the items along it, 50,331,651
  // entries in a file of a few kilobytes: HDF5 stores only the chunk written. The first item is met
  // first.
  int id = 0, var = 0;
  ASSERT_EQ(nc_open(fn.c_str(), NC_WRITE, &id), NC_NOERR);
  nc_inq_varid(id, "time", &var);
  const long long when = 1262304000;
  const size_t at = 50331650;
  nc_put_var1_longlong(id, var, &at, &when);
  ASSERT_EQ(nc_close(id), NC_NOERR);
  EXPECT_VEXCEPTION_HAS(thResultFile(fn, NC),
                        "the variable 'temp' declares more values than the file's size");

  // meshes that make no sense: the mesh's own failure, or a result; nothing breaks
  thTest::ncgen(cdlWith("voronoiX = 50,", "voronoiX = 0,"), dir.file("onface.nc"));
  EXPECT_VEXCEPTION(thResultFile(dir.file("onface.nc"), NC), "Voronoi point on face." + thGlobal::errTail);
  const std::pair<const char*, const char*> odd[] = {
      {"connectivity = 0, 1, 5, 4", "connectivity = 0, 0, 0, 0"},
      {"connectivity = 0, 1, 5, 4, 1, 2, 6, 5", "connectivity = 0, 1, 5, 4, 0, 1, 5, 4"},
      {"nodeType = 1, 99, 99, 99, 1", "nodeType = -102, -102, 99, 99, -102"},
      {"elemBathy = 15, 5, 1.5, 10", "elemBathy = -15, 1e300, 0, NaN"},
      {"layerThickness = 10, 5, 2", "layerThickness = 0, -5, NaN"},
      {"elemlayers = 3, 2, 1, 3", "elemlayers = -7, 0, 3, 1"}};
  for (const auto& [from, to] : odd) {
    thTest::ncgen(cdlWith(from, to), dir.file("odd.nc"));
    try {
      thResultFile rf(dir.file("odd.nc"), NC);
      float v[4], *p = v;
      for (int t = 0; t < 3; ++t) rf.readLayer(0, t, 999, &p);
    } catch (const VCppLib::VException&) {
    }
  }
}

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
  // every kind of layer pick; the series and profiles read the same columns (the facade reads its
  // series through the light open)
  for (int32_t layer : {-1, 0, 2, 3, 999}) {
    double *a = nullptr, *b = nullptr;
    ASSERT_EQ(light.readLayer(0, 2, layer, &a), full.readLayer(0, 2, layer, &b));
    EXPECT_EQ(take(a, 8), take(b, 8)) << layer;
  }
  // The model's report builds the tables it needs (the volumes) through a const model.
  EXPECT_EQ(light.toString(10), full.toString(10));
  mi.cellTables();
  expectSameModel(mi, full.mInfo);
  // By hand: element 5's bottom cell of 4.2 - 4.0 m over 100 x 100 m.
  EXPECT_NEAR(mi.cellVol[mi.botlayerIdx[5]], 0.2 * 1e4, 1e-9);

  // With the thin bottom cell dropped instead, deferred tables built by a member that needs them.
  thModelInfo dropFull, dropLight;
  buildRun(dropFull, -0.5);
  dropLight.deferTables = true;
  buildRun(dropLight, -0.5);
  ASSERT_TRUE(dropLight.cellVol == nullptr);
  std::vector<double> depth(dropLight.cells, 0.0);  // a dropped cell's entry stays 0, as in the table
  dropLight.fillCellDepths(depth.data());
  EXPECT_EQ(depth, arr(dropFull.cellDepth, dropFull.cells));
  dropLight.updateCellTop();
  expectSameModel(dropLight, dropFull);
  EXPECT_EQ(dropLight.ebli[5], 2);  // the 0.1 m cell in layer 1 went
}
