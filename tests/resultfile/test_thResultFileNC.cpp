// Reading the header of NC result files: the small hand-made model, its edge cases, and files
// that are not result files.

#include <dirent.h>
#include <cmath>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::SmallModel;
using thTest::SmallModelOptions;

namespace {

int openFileCount() {
  int n = 0;
  if (DIR* d = opendir("/proc/self/fd")) {
    while (readdir(d)) ++n;
    closedir(d);
  }
  return n;
}

// The CDL of the small model with one piece of text replaced.
std::string cdlWith(const std::string& from, const std::string& to, const SmallModelOptions& opt = {}) {
  std::string cdl = thTest::smallModelCdl(opt);
  size_t p = cdl.find(from);
  EXPECT_NE(p, std::string::npos) << from;
  if (p != std::string::npos) cdl.replace(p, from.size(), to);
  return cdl;
}

}  // namespace

TEST(ResultFileNC, HeaderOfTheSmallModel) {
  thTest::TempDir dir;
  std::string fn = dir.file("small.nc");
  thTest::writeSmallModelNc(fn);
  thResultFile rf(fn, -1);  // the format comes from the extension, the header is read at once
  EXPECT_EQ(rf.format, NC);
  EXPECT_EQ(rf.fileVersion, 8);
  EXPECT_GT(rf.fileTime, 1600000000);     // the file's modification time, now
  for (int pass = 0; pass < 2; ++pass) {  // a second read gives the same, not twice the items
    if (pass == 1) {
      ASSERT_EQ(rf.readHeader(), 0);
    }
    const thModelInfo& mi = rf.mInfo;
    const thMesh2D& m = mi.mesh2d;
    // dt = (7200 - 0) / 2: the middle step of 1000 does not count
    EXPECT_EQ(std::vector<int64_t>({mi.nt, mi.startDT, int64_t(mi.dt), mi.flavor, mi.nol, mi.cells}),
              (std::vector<int64_t>{3, SmallModel::startDT, 3600, 3, 3, 9}));
    ASSERT_TRUE(m.projection == "UTM32" && m.noe == 4 && m.non == 8 && mi.nol == 3);
    using thTest::arr;
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
    EXPECT_EQ(rf.ncVarIds, (std::vector<int32_t>{12, 13}));  // the last two of 14 variables
  }
}

TEST(ResultFileNC, HeaderEdgeCases) {
  thTest::TempDir dir;
  auto make = [&](const std::string& name, const SmallModelOptions& opt) {
    thTest::writeSmallModelNc(dir.file(name), opt);
    return dir.file(name);
  };
  {
    // one timestep: dt 1.0 whatever the time; no "topDepth": the field keeps its value
    thResultFile rf("", -1);
    rf.filename = make("one.nc", {.topDepthAtt = false, .times = {5000}});
    rf.format = NC;
    rf.mInfo.topDepth = 0.5;
    ASSERT_EQ(rf.readHeader(), 0);
    const thModelInfo& mi = rf.mInfo;  // the layers hang from the kept top depth
    EXPECT_TRUE(mi.nt == 1 && mi.startDT == 5000 && mi.dt == 1.0 && mi.topDepth == 0.5);
    EXPECT_DOUBLE_EQ(mi.layerDepth[2], 1.5);
  }
  {
    // steps 0, 3600, 7200 and no "elemlayers": the layers come from the sea bed
    thResultFile rf(make("noenol.nc", {.elemLayers = false, .times = {0, 3600, 7200}}), NC);
    const thModelInfo& mi = rf.mInfo;
    EXPECT_TRUE(mi.startDT == 0 && mi.dt == 3600.0 && mi.topDepth == 0.0 && mi.cells == 9);
    EXPECT_EQ(thTest::arr(rf.mInfo.ebli, 4), SmallModel::ebli);
  }
  {
    // "elemlayers" rules over the sea bed: e3 with 2 layers instead of 3
    thTest::ncgen(cdlWith("elemlayers = 3, 2, 1, 3", "elemlayers = 3, 2, 1, 2"), dir.file("enol.nc"));
    thResultFile rf(dir.file("enol.nc"), NC);
    // the item's own length, whatever the cells are
    EXPECT_TRUE(rf.mInfo.ebli[3] == 1 && rf.mInfo.cells == 8 && rf.itemLengthVec[0] == 9);
  }
  {
    thResultFile rf(make("noitems.nc", {.items = false}), NC);  // "nItem" 0: no items and no failure
    EXPECT_TRUE(rf.itemNameVec.empty() && rf.itemLengthVec.empty());
    EXPECT_EQ(rf.getItemNo("temp"), 0);
  }
  {
    thResultFile rf(make("empty.nc", {.times = {}}), NC);  // no timesteps: the axis keeps its start, dt 1
    EXPECT_TRUE(rf.mInfo.nt == 0 && rf.mInfo.startDT == 0 && rf.mInfo.dt == 1.0);
  }
  {
    // a time axis over nearly all of int64: its ends are 2^64 - 2 apart, the step (2^64 - 2) / 2 is
    // 2^63 as the nearest float64, not a wrapped difference
    thResultFile rf(make("huge.nc", {.times = {-9223372036854775807LL, 0, 9223372036854775807LL}}), NC);
    EXPECT_EQ(rf.mInfo.startDT, -9223372036854775807LL);
    EXPECT_DOUBLE_EQ(rf.mInfo.dt, std::ldexp(1.0, 63));
  }
  EXPECT_VEXCEPTION(thResultFile(make("sigma.nc", {.layerType = 1}), NC),
                    "Sigma layers no longer supported.");
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
  int n = 0;
  for (const auto& [cdl, why] : cases) {
    std::string fn = dir.file("bad" + std::to_string(n++) + ".nc");
    thTest::ncgen(cdl, fn);
    EXPECT_VEXCEPTION(thResultFile(fn, NC),
                      "thResultFile::readHeader: '" + fn + "' is not a result file: " + why + ".");
  }
}

TEST(ResultFileNC, BrokenFilesAndHandles) {
  thTest::TempDir dir;
  std::string fn = dir.file("small.nc");
  thTest::writeSmallModelNc(fn);
  int before = openFileCount();
  {
    thResultFile rf(fn, NC);
    EXPECT_EQ(openFileCount(), before + 1);  // the NetCDF file stays open for the reads
  }
  EXPECT_EQ(openFileCount(), before);  // and goes with the object

  // empty, garbage and truncated files: a VException, nothing left open
  thTest::writeText(dir.file("empty.nc"), "");
  EXPECT_THROW(thResultFile(dir.file("empty.nc"), NC), VCppLib::VException);
  thTest::writeText(dir.file("garbage.nc"), std::string(5000, 'x'));
  EXPECT_THROW(thResultFile(dir.file("garbage.nc"), NC), VCppLib::VException);
  std::string bytes = thTest::readText(fn);
  for (size_t keep : {size_t(8), bytes.size() / 2, bytes.size() - 100}) {
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
  int n = 0;
  for (const auto& [from, to] : odd) {
    std::string name = dir.file("odd" + std::to_string(n++) + ".nc");
    thTest::ncgen(cdlWith(from, to), name);
    try {
      thResultFile rf(name, NC);
      std::vector<float> v(4);
      float* p = v.data();
      for (int t = 0; t < 3; ++t) rf.readLayer(0, t, 999, &p);
    } catch (const VCppLib::VException&) {
    }
  }
}
