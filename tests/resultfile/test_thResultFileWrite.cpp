// Writing NC result files through the library, reading them back, and the schema that ncdump sees.

#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::SmallModel;

namespace {

template <typename T>
T* arr(const std::vector<T>& v) {
  T* a = new T[v.size()];
  std::copy(v.begin(), v.end(), a);
  return a;
}

// The small model, built in memory the way a running model sets itself up.
void buildSmallModel(thModelInfo& mi) {
  thMesh2D& m = mi.mesh2d;
  m.projection = "UTM32";
  m.non = SmallModel::non;
  m.nxCoor = arr(SmallModel::x);
  m.nyCoor = arr(SmallModel::y);
  m.nt = arr(SmallModel::nodeType);
  m.noe = SmallModel::noe;
  m.nonpe = arr(SmallModel::nonpe);
  m.en = arr(SmallModel::en);
  m.initMesh();
  mi.nol = SmallModel::nol;
  mi.dz = arr(SmallModel::dz);
  mi.elemBathy = arr(SmallModel::bathy);
  mi.initCells();
  mi.startDT = SmallModel::startDT;
  mi.dt = 3600.0;
  mi.flavor = 3;
}

// Values of item i at timestep t, index k.
float value(int i, int t, int k) { return static_cast<float>(1000 * i + 100 * t + k) + 0.5f; }

}  // namespace

TEST(ResultFileWrite, RoundTrip) {
  thTest::TempDir dir;
  std::string fn = dir.file("w.nc");
  {
    thResultFile w(fn, NC);  // nothing there yet: nothing is read
    buildSmallModel(w.mInfo);
    EXPECT_EQ(w.mInfo.cells, 9);
    EXPECT_EQ(w.mInfo.totNoUPnts, 8);
    // second dimensions: cells, elems, UPntsDim (8 = U-points), ABMDim, the earlier ABMDim again
    // (same length), dcpSrcDim, the item's own, cells
    const std::vector<std::pair<std::string, int>> items = {
        {"temp", 9}, {"elev", 4}, {"uflux", 8}, {"abmFish", 5}, {"misc", 5}, {"hddcp_srcFlux", 6},
        {"other", 7}, {"salt", 9}};
    for (auto& [name, len] : items) w.addItem(name, len);
    ASSERT_EQ(w.writeHeader(), 0);
    EXPECT_GT(w.fileTime, 1600000000);
    EXPECT_EQ(w.maxItemLength, 9);
    for (int t = 0; t < 3; ++t)
      for (int i = 0; i < 8; ++i) {
        int len = items[i].second;
        if (i % 2 == 0) {
          std::vector<float> v(len);
          for (int k = 0; k < len; ++k) v[k] = value(i, t, k);
          w.writeItemData(v.data(), len);
        } else {
          std::vector<double> v(len);
          for (int k = 0; k < len; ++k) v[k] = value(i, t, k);
          w.writeItemData(v.data(), len);  // narrowed on the way
        }
      }
    EXPECT_EQ(w.writeTimestep, 3);
    EXPECT_EQ(w.writeItem, 0);
    w.closeFile(3);
    EXPECT_EQ(w.nc->ncid, -1);
    float more[9] = {};
    EXPECT_VEXCEPTION_HAS(w.writeItemData(more, 9), "is not open for writing");
  }

  // the schema as ncdump sees it
  std::string h = thTest::ncdump(fn, "-hs");
  auto before = [&](const std::string& a, const std::string& b) {
    size_t pa = h.find(a), pb = h.find(b);
    EXPECT_NE(pa, std::string::npos) << a;
    EXPECT_NE(pb, std::string::npos) << b;
    EXPECT_LT(pa, pb) << a << " before " << b;
  };
  before("time = UNLIMITED ; // (3 currently)", "nodes = 8 ;");
  before("nodes = 8 ;", "elems = 4 ;");
  before("elems = 4 ;", "cells = 9 ;");
  before("cells = 9 ;", "layers = 3 ;");
  before("layers = 3 ;", "totNoElemNodes = 14 ;");
  before("totNoElemNodes = 14 ;", "UPntsDim = 8 ;");
  before("UPntsDim = 8 ;", "ABMDim = 5 ;");
  before("ABMDim = 5 ;", "dcpSrcDim = 6 ;");
  before("dcpSrcDim = 6 ;", "otherDim = 7 ;");
  before("int64 time(time) ;", "double nodeXCoor(nodes) ;");
  before("double nodeXCoor(nodes) ;", "double nodeYCoor(nodes) ;");
  before("double nodeYCoor(nodes) ;", "int nodeType(nodes) ;");
  before("int nodeType(nodes) ;", "int noElemNodes(elems) ;");
  before("int noElemNodes(elems) ;", "double voronoiX(elems) ;");
  before("double voronoiY(elems) ;", "double elemBathy(elems) ;");
  before("double elemBathy(elems) ;", "int elemBottomLayerIdx(elems) ;");
  before("int elemBottomLayerIdx(elems) ;", "int elemlayers(elems) ;");
  before("int elemlayers(elems) ;", "int connectivity(totNoElemNodes) ;");
  before("int connectivity(totNoElemNodes) ;", "double layerThickness(layers) ;");
  before("double layerThickness(layers) ;", "float temp(time, cells) ;");
  before("float temp(time, cells) ;", "float elev(time, elems) ;");
  before("float elev(time, elems) ;", "float uflux(time, UPntsDim) ;");
  before("float uflux(time, UPntsDim) ;", "float abmFish(time, ABMDim) ;");
  before("float abmFish(time, ABMDim) ;", "float misc(time, ABMDim) ;");
  before("float misc(time, ABMDim) ;", "float hddcp_srcFlux(time, dcpSrcDim) ;");
  before("float hddcp_srcFlux(time, dcpSrcDim) ;", "float other(time, otherDim) ;");
  before("float other(time, otherDim) ;", "float salt(time, cells) ;");
  before("time:long_name = \"Time (seconds since 1970-01-01)\" ;", "time:standard_name = \"time\" ;");
  before("time:standard_name = \"time\" ;", "time:units = \"seconds since 1970-01-01 00:00:00\" ;");
  before(":fileType = \"Thalmod unstructured data file\" ;", ":version = 8 ;");
  before(":version = 8 ;", ":layerType = 0 ;");
  before(":layerType = 0 ;", ":flavor = 3 ;");
  before(":flavor = 3 ;", ":topDepth = 0. ;");
  before(":topDepth = 0. ;", ":modeltype = 0 ;");
  before(":modeltype = 0 ;", ":projection = \"UTM32\" ;");
  before(":projection = \"UTM32\" ;", ":nItem = 8 ;");
  EXPECT_NE(h.find("temp:_DeflateLevel = 2 ;"), std::string::npos);
  EXPECT_NE(h.find("temp:_Shuffle = \"true\" ;"), std::string::npos);
  EXPECT_NE(h.find("nodeXCoor:_DeflateLevel = 2 ;"), std::string::npos);
  std::string data = thTest::ncdump(fn, "-v time,elemBottomLayerIdx,elemlayers");
  EXPECT_NE(data.find("time = 1262304000, 1262307600, 1262311200 ;"), std::string::npos) << data;
  EXPECT_NE(data.find("elemBottomLayerIdx = 0, 1, 2, 0 ;"), std::string::npos) << data;
  EXPECT_NE(data.find("elemlayers = 3, 2, 1, 3 ;"), std::string::npos) << data;

  // and back through the reader
  thResultFile r(fn, -1);
  EXPECT_EQ(r.mInfo.nt, 3);
  EXPECT_EQ(r.mInfo.startDT, SmallModel::startDT);
  EXPECT_DOUBLE_EQ(r.mInfo.dt, 3600.0);
  EXPECT_EQ(r.mInfo.flavor, 3);
  EXPECT_EQ(r.mInfo.cells, 9);
  EXPECT_EQ(r.mInfo.mesh2d.nvf, 11);
  for (int e = 0; e < 4; ++e) EXPECT_EQ(r.mInfo.botlayerIdx[e], SmallModel::botlayerIdx[e]);
  // the triangles are right-angled: their centres stand in for the Voronoi points
  EXPECT_NEAR(r.mInfo.mesh2d.eVoronoiX[2], 800.0 / 3, 1e-9);
  EXPECT_NEAR(r.mInfo.mesh2d.eVoronoiY[3], 200.0 / 3, 1e-9);
  EXPECT_EQ(r.itemNameVec,
            (std::vector<std::string>{"temp", "elev", "uflux", "abmFish", "misc", "hddcp_srcFlux", "other", "salt"}));
  EXPECT_EQ(r.itemLengthVec, (std::vector<int32_t>{9, 4, 8, 5, 5, 6, 7, 9}));
  for (int i = 0; i < 8; ++i)
    for (int t = 0; t < 3; ++t) {
      std::vector<float> v(9);
      ASSERT_EQ(r.readItemData(i, t, v.data()), 0);
      for (int k = 0; k < r.itemLengthVec[i]; ++k) EXPECT_EQ(v[k], value(i, t, k)) << i << " " << t << " " << k;
    }
  // a layer and a series of the written temperature: layer 1 of e1 is cell 3
  float lay[4];
  float* lp = lay;
  r.readLayer(0, 2, 1, &lp);
  EXPECT_EQ(lay[1], value(0, 2, 3));
  EXPECT_EQ(lay[2], delVal);
  double* s = nullptr;
  ASSERT_EQ(r.readTimeSeries(7, 1, 1, &s, 0, -1), 3);
  EXPECT_EQ(s[2], value(7, 2, 3));
  delete[] s;
}

TEST(ResultFileWrite, NamedItemsAndFailures) {
  thTest::TempDir dir;
  {
    // writeHeader(n) names the items "0".."n-1"; without lengths every item is one per cell
    thResultFile w(dir.file("n.nc"), NC);
    buildSmallModel(w.mInfo);
    ASSERT_EQ(w.writeHeader(2), 0);
    EXPECT_EQ(w.itemNameVec, (std::vector<std::string>{"0", "1"}));
    EXPECT_EQ(w.itemLengthVec, (std::vector<int32_t>{9, 9}));
    EXPECT_EQ(w.maxItemLength, 0);
    double v[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    w.writeItemData(v, 9);  // the float buffer still holds a whole item
    EXPECT_VEXCEPTION_HAS(w.writeItemData(v, 3), "item '1' of '" + dir.file("n.nc") + "' takes 9 values, not 3.");
    EXPECT_VEXCEPTION_HAS(w.writeItemData(v, 10), "10 values are more than the longest item");
    w.closeFile(0);
    thResultFile r(dir.file("n.nc"), NC);
    EXPECT_EQ(r.mInfo.nt, 1);  // the record of the first item makes the time axis one long
  }
  auto fresh = [&](const std::string& name, int32_t fmt) {
    auto w = std::make_unique<thResultFile>(dir.file(name), fmt);
    buildSmallModel(w->mInfo);
    return w;
  };
  {
    auto w = fresh("a.nc", NC);
    EXPECT_VEXCEPTION(w->writeHeader(), "thResultFile::writeHeader: itemNameVec is empty.");
    w->addItem("temp", 9);
    w->itemNameVec.push_back("salt");
    EXPECT_VEXCEPTION(w->writeHeader(), "thResultFile::writeHeader: itemNameVec.Size()!=itemLengthVec.size().");
    w->itemLengthVec.push_back(9);
    w->itemNameVec[1] = "temp";
    EXPECT_VEXCEPTION(w->writeHeader(), "thResultFile::writeHeader: the name of item 'temp' is taken by another variable of '" +
                                            dir.file("a.nc") + "'.");
    w->itemNameVec[1] = "nodeXCoor";
    EXPECT_VEXCEPTION_HAS(w->writeHeader(), "the name of item 'nodeXCoor' is taken");
    w->itemNameVec[1] = "salt";
    w->itemLengthVec[1] = 0;
    EXPECT_VEXCEPTION_HAS(w->writeHeader(), "item 'salt' of '" + dir.file("a.nc") + "' has the length 0");
  }
  {
    auto w = fresh("nope/b.nc", NC);
    w->addItem("temp", 9);
    EXPECT_VEXCEPTION(w->writeHeader(), "No such folder: '" + dir.file("nope") + "'");
    auto t = fresh("b.text0d", TEXT0D);
    t->addItem("temp", 9);
    EXPECT_VEXCEPTION(t->writeHeader(), "thResultFile::writeHeader undefined format.");
    float v[9] = {};
    EXPECT_VEXCEPTION(t->writeItemData(v, 9), "thResultFile::readItemData undefined format.");
    t->closeFile(0);  // nothing to close in that format
  }
  {
    // a model that was never set up
    thResultFile w(dir.file("c.nc"), NC);
    w.addItem("temp", 9);
    EXPECT_VEXCEPTION_HAS(w.writeHeader(), "is not set up; fill the mesh and the layers");
    float v[9] = {};
    EXPECT_VEXCEPTION_HAS(w.writeItemData(v, 9), "is not open for writing; call writeHeader first.");
  }
  {
    // the number of timesteps of an NC file is its time axis: setNoTimesteps only sets nt
    auto w = fresh("d.nc", NC);
    w->addItem("elev", 4);
    w->writeHeader();
    float v[4] = {1, 2, 3, 4};
    w->writeItemData(v, 4);
    w->writeItemData(v, 4);
    w->closeFile(2);
    EXPECT_EQ(w->setNoTimesteps(5), 0);
    EXPECT_EQ(w->mInfo.nt, 5);
    thResultFile r(dir.file("d.nc"), NC);
    EXPECT_EQ(r.mInfo.nt, 2);
    EXPECT_DOUBLE_EQ(r.mInfo.dt, 3600.0);
  }
}
