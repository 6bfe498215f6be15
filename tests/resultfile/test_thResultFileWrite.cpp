// Writing NC result files through the library, reading them back, and the schema that ncdump sees;
// the failures of writing.

#include <tuple>
#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::buildSmallModel;
using thTest::SmallModel;

namespace {

// Values of item i at timestep t, index k.
float value(int i, int t, int k) { return static_cast<float>(1000 * i + 100 * t + k) + 0.5f; }

// Checks that the texts stand in `text` in the order given, group after group.
void expectInOrder(const std::string& text, const std::vector<std::vector<std::string>>& groups) {
  size_t at = 0;
  for (const auto& group : groups)
    for (const std::string& p : group) {
      size_t found = text.find(p, at);
      EXPECT_NE(found, std::string::npos) << "missing or out of order: " << p;
      if (found != std::string::npos) at = found + p.size();
    }
}

}  // namespace

TEST(ResultFileWrite, RoundTrip) {
  thTest::TempDir dir;
  std::string fn = dir.file("w.nc");
  // second dimensions: cells, elems, UPntsDim (8 = U-points), ABMDim, the earlier ABMDim again
  // (same length), dcpSrcDim, the item's own, cells
  const std::vector<std::pair<std::string, int>> items = {{"temp", 9},    {"elev", 4}, {"uflux", 8},
                                                          {"abmFish", 5}, {"misc", 5}, {"hddcp_srcFlux", 6},
                                                          {"other", 12},  {"salt", 9}};
  thResultFile w(fn, NC);  // nothing there yet: nothing is read
  buildSmallModel(w.mInfo);
  // header fields that no fresh object has, so that a field left unwritten or unread shows (layer
  // type 2 is no kind of its own, but sigma, 1, cannot be read back)
  w.mInfo.layerType = 2;
  w.mInfo.flavor = 5;
  w.mInfo.topDepth = 2.5;
  w.mInfo.modelType = 12;
  w.mInfo.mesh2d.projection = "UTM33";
  w.writeVersion = 6;
  for (auto& [name, len] : items) w.addItem(name, len);
  ASSERT_EQ(w.writeHeader(), 0);
  EXPECT_GT(w.fileTime, 1600000000);
  for (int t = 0; t < 3; ++t)
    for (int i = 0; i < 8; ++i) {
      std::vector<float> v(items[i].second);
      for (int k = 0; k < items[i].second; ++k) v[k] = value(i, t, k);
      std::vector<double> v64(v.begin(), v.end());  // the odd items as float64, narrowed on the way
      i % 2 == 0 ? w.writeItemData(v.data(), items[i].second) : w.writeItemData(v64.data(), items[i].second);
    }
  w.closeFile(3);
  EXPECT_EQ(w.nc->ncid, -1);

  // the schema as ncdump sees it: dimensions, fixed variables, items, attributes, each in the order
  // of writing
  expectInOrder(
      thTest::ncdump(fn, "-hs"),
      {{"time = UNLIMITED ; // (3 currently)", "nodes = 8 ;", "elems = 4 ;", "cells = 9 ;", "layers = 3 ;",
        "totNoElemNodes = 14 ;", "UPntsDim = 8 ;", "ABMDim = 5 ;", "dcpSrcDim = 6 ;", "otherDim = 12 ;"},
       {"int64 time(time) ;", "time:long_name = \"Time (seconds since 1970-01-01)\" ;",
        "time:standard_name = \"time\" ;", "time:units = \"seconds since 1970-01-01 00:00:00\" ;",
        "double nodeXCoor(nodes) ;", "nodeXCoor:_DeflateLevel = 2 ;", "double nodeYCoor(nodes) ;",
        "int nodeType(nodes) ;", "int noElemNodes(elems) ;", "double voronoiX(elems) ;",
        "double voronoiY(elems) ;", "double elemBathy(elems) ;", "int elemBottomLayerIdx(elems) ;",
        "int elemlayers(elems) ;", "int connectivity(totNoElemNodes) ;", "double layerThickness(layers) ;"},
       {"float temp(time, cells) ;", "temp:_Shuffle = \"true\" ;", "temp:_DeflateLevel = 2 ;",
        "float elev(time, elems) ;", "float uflux(time, UPntsDim) ;", "float abmFish(time, ABMDim) ;",
        "float misc(time, ABMDim) ;", "float hddcp_srcFlux(time, dcpSrcDim) ;",
        "float other(time, otherDim) ;", "float salt(time, cells) ;"},
       {":fileType = \"Thalmod unstructured data file\" ;", ":version = 6 ;", ":layerType = 2 ;",
        ":flavor = 5 ;", ":topDepth = 2.5 ;", ":modeltype = 12 ;", ":projection = \"UTM33\" ;",
        ":nItem = 8 ;"}});
  // and back through the reader: the header fields, the time axis, the layer counts and the items
  thResultFile r(fn, -1);
  const thModelInfo& mi = r.mInfo;
  EXPECT_EQ(std::vector<double>({double(r.fileVersion), double(mi.layerType), double(mi.flavor), mi.topDepth,
                                 double(mi.modelType), double(mi.nt), double(mi.startDT), mi.dt}),
            std::vector<double>({6, 2, 5, 2.5, 12, 3, double(SmallModel::startDT), 3600}));
  EXPECT_EQ(mi.mesh2d.projection, "UTM33");
  EXPECT_EQ(thTest::arr(mi.enol, 4), SmallModel::enol);
  EXPECT_EQ(thTest::arr(mi.botlayerIdx, 4), SmallModel::botlayerIdx);
  // the triangles are right-angled: their centres stand in for the Voronoi points
  EXPECT_NEAR(mi.mesh2d.eVoronoiX[2], 800.0 / 3, 1e-9);
  EXPECT_NEAR(mi.mesh2d.eVoronoiY[3], 200.0 / 3, 1e-9);
  ASSERT_EQ(r.itemNameVec.size(), items.size());
  for (int i = 0; i < 8; ++i) {
    EXPECT_TRUE(r.itemNameVec[i] == items[i].first && r.itemLengthVec[i] == items[i].second) << i;
    for (int t = 0; t < 3; ++t) {
      std::vector<float> v(12);
      ASSERT_EQ(r.readItemData(i, t, v.data()), 0);
      for (int k = 0; k < items[i].second; ++k) EXPECT_EQ(v[k], value(i, t, k)) << i << " " << t << " " << k;
    }
  }
  // the sigma arithmetic of a layer at a depth on the item of 12 = nol x noe values; with the top at
  // 2.5 the upper edges are at 9.5, 4.5 and 2.5: depth 5 is in layer 1, so element e takes value
  // 1 + 3e; depth 10 is in layer 0, which gives delVal
  r.mInfo.layerType = 1;
  double at[4];
  EXPECT_EQ(r.readLayerAtDepth(6, 2, 5.0, at), 0);
  for (int e = 0; e < 4; ++e) EXPECT_EQ(at[e], value(6, 2, 1 + 3 * e)) << e;
  EXPECT_EQ(r.readLayerAtDepth(6, 2, 10.0, at), 0);
  for (int e = 0; e < 4; ++e) EXPECT_EQ(at[e], static_cast<double>(delVal)) << e;
  EXPECT_VEXCEPTION_HAS(r.readLayerAtDepth(0, 2, 5.0, at), "fewer than the 12 of a sigma layout");
}

TEST(ResultFileWrite, NamedItemsBuffersAndFailures) {
  thTest::TempDir dir;
  // writeHeader(n) names the items "0".."n-1"; without lengths every item is one per cell
  thResultFile w(dir.file("n.nc"), NC);
  buildSmallModel(w.mInfo);
  ASSERT_EQ(w.writeHeader(2), 0);
  EXPECT_EQ(w.itemNameVec, (std::vector<std::string>{"0", "1"}));
  EXPECT_TRUE(w.itemLengthVec == (std::vector<int32_t>{9, 9}) && w.maxItemLength == 0);
  double v[20];
  for (int k = 0; k < 20; ++k) v[k] = k + 0.25;
  w.writeItemData(v, 9);  // the float buffer still holds a whole item
  EXPECT_VEXCEPTION_HAS(w.writeItemData(v, 3),
                        "item '1' of '" + dir.file("n.nc") + "' takes 9 values, not 3.");
  EXPECT_VEXCEPTION_HAS(w.writeItemData(v, 10), "10 values are more than the longest item");
  w.closeFile(0);
  // the number of timesteps of an NC file is its time axis: setNoTimesteps only sets nt
  EXPECT_EQ(w.setNoTimesteps(5) + w.mInfo.nt, 5);
  // a second file through the same object with a longer item: the float buffer grows with it
  w.filename = dir.file("n2.nc");
  w.itemNameVec = {"big"};
  w.itemLengthVec = {20};
  ASSERT_EQ(w.writeHeader(), 0);
  w.writeItemData(v, 20);
  w.closeFile(1);
  thResultFile r(dir.file("n.nc"), NC), r2(dir.file("n2.nc"), NC);
  EXPECT_EQ(r.mInfo.nt, 1);  // the record of the first item makes the time axis one long
  float back[20];
  ASSERT_EQ(r2.readItemData(0, 0, back), 0);
  for (int k = 0; k < 20; ++k) EXPECT_EQ(back[k], k + 0.25f) << k;
  // Each failure comes before anything is written, except the taken name, which comes last; c.nc
  // gets a model that was never set up.
  const std::string a = dir.file("a.nc"), c = dir.file("c.nc"), wh = "thResultFile::writeHeader";
  // file, format, item names and lengths, a part of the message
  using Bad = std::tuple<std::string, int32_t, std::vector<std::string>, std::vector<int32_t>, std::string>;
  const Bad bad[] = {
      {a, NC, {}, {}, wh + ": itemNameVec is empty."},
      {a, NC, {"temp", "salt"}, {9}, wh + ": itemNameVec.Size()!=itemLengthVec.size()."},
      {a, NC, {"temp", "salt"}, {9, 0}, "item 'salt' of '" + a + "' has the length 0"},
      {dir.file("nope/b.nc"), NC, {"temp"}, {9}, "No such folder: '" + dir.file("nope") + "'"},
      {dir.file("b.text0d"), TEXT0D, {"temp"}, {9}, wh + " undefined format."},
      {c, NC, {"temp"}, {9}, "the model of '" + c + "' is not set up"},
      {a, NC, {"temp", "temp"}, {9, 9}, "the name of item 'temp' is taken by another variable of '" + a}};
  for (const auto& [file, format, names, lengths, part] : bad) {
    thResultFile bw(file, format);
    if (file != c) buildSmallModel(bw.mInfo);
    bw.itemNameVec = names;
    bw.itemLengthVec = lengths;
    EXPECT_VEXCEPTION_HAS(bw.writeHeader(), part);
  }
}
