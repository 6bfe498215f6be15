// Reading the header of NC result files: the small hand-made model, its edge cases, and files
// that are not result files.

#include <dirent.h>

#include <cstring>

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
  EXPECT_GT(rf.fileTime, 1600000000);  // the file's modification time, now
  const thModelInfo& mi = rf.mInfo;
  const thMesh2D& m = mi.mesh2d;
  EXPECT_EQ(mi.nt, 3);
  EXPECT_EQ(mi.startDT, SmallModel::startDT);
  EXPECT_DOUBLE_EQ(mi.dt, 3600.0);  // (7200 - 0) / 2: the middle step of 1000 does not count
  EXPECT_EQ(mi.flavor, 3);
  EXPECT_EQ(mi.layerType, 0);
  EXPECT_EQ(mi.modelType, 0);
  EXPECT_EQ(m.projection, "UTM32");
  ASSERT_EQ(m.noe, 4);
  ASSERT_EQ(m.non, 8);
  ASSERT_EQ(mi.nol, 3);
  EXPECT_EQ(mi.cells, 9);
  for (int e = 0; e < 4; ++e) {
    EXPECT_EQ(mi.ebli[e], SmallModel::ebli[e]) << e;
    EXPECT_EQ(mi.botlayerIdx[e], SmallModel::botlayerIdx[e]) << e;
    EXPECT_EQ(mi.enol[e], SmallModel::enol[e]) << e;
    EXPECT_DOUBLE_EQ(mi.elemBathy[e], SmallModel::bathy[e]) << e;
    EXPECT_DOUBLE_EQ(m.eVoronoiX[e], SmallModel::vorX[e]) << e;  // the file's points are kept
    EXPECT_DOUBLE_EQ(m.eVoronoiY[e], SmallModel::vorY[e]) << e;
  }
  for (int l = 0; l < 3; ++l) EXPECT_DOUBLE_EQ(mi.layerDepth[l], SmallModel::layerDepth[l]) << l;
  // the mesh: 3 inner faces, the open face n0-n4 of e0, 7 closed faces
  EXPECT_EQ(m.nivf, 3);
  EXPECT_EQ(m.tnbe, 1);
  EXPECT_EQ(m.nvf, 11);
  EXPECT_EQ(m.bndElem[0], 0);
  EXPECT_EQ(mi.botlayerIdx[4], 9);  // the ghost column behind the open face
  // U-points: faces e0|e1 and e1|e3 from layer 1 (2 each), e2|e3 from layer 2 (1), open face 3
  EXPECT_EQ(mi.totNoUPnts, 8);
  ASSERT_EQ(rf.itemNameVec, (std::vector<std::string>{"temp", "elev"}));
  EXPECT_EQ(rf.itemLengthVec, (std::vector<int32_t>{9, 4}));
  EXPECT_EQ(rf.ncVarIds, (std::vector<int32_t>{12, 13}));  // the last two of 14 variables
  EXPECT_EQ(rf.getItemNo("elev"), 1);
  EXPECT_EQ(rf.getItemNo("salt"), 2);  // not there: the number of items
  EXPECT_EQ(rf.getItemOffset(2), 13);

  // A second read through the same object gives the same model and items, not twice the items.
  EXPECT_EQ(rf.readHeader(), 0);
  EXPECT_EQ(rf.itemNameVec.size(), 2u);
  EXPECT_EQ(rf.ncVarIds, (std::vector<int32_t>{12, 13}));
  EXPECT_EQ(rf.mInfo.cells, 9);
  EXPECT_EQ(rf.mInfo.mesh2d.nvf, 11);
}

TEST(ResultFileNC, HeaderEdgeCases) {
  thTest::TempDir dir;
  {
    // one timestep: dt 1.0 whatever the time; no "topDepth": the field keeps its value
    SmallModelOptions opt;
    opt.times = {5000};
    opt.topDepthAtt = false;
    thTest::writeSmallModelNc(dir.file("one.nc"), opt);
    thResultFile rf("", -1);
    rf.filename = dir.file("one.nc");
    rf.format = NC;
    rf.mInfo.topDepth = 0.5;
    ASSERT_EQ(rf.readHeader(), 0);
    EXPECT_EQ(rf.mInfo.nt, 1);
    EXPECT_EQ(rf.mInfo.startDT, 5000);
    EXPECT_DOUBLE_EQ(rf.mInfo.dt, 1.0);
    EXPECT_DOUBLE_EQ(rf.mInfo.topDepth, 0.5);
    EXPECT_DOUBLE_EQ(rf.mInfo.layerDepth[2], 1.5);  // the layers hang from the kept top depth
  }
  {
    // steps 0, 3600, 7200 and no "elemlayers": the layers come from the sea bed
    SmallModelOptions opt;
    opt.times = {0, 3600, 7200};
    opt.elemLayers = false;
    thTest::writeSmallModelNc(dir.file("noenol.nc"), opt);
    thResultFile rf(dir.file("noenol.nc"), NC);
    EXPECT_EQ(rf.mInfo.startDT, 0);
    EXPECT_DOUBLE_EQ(rf.mInfo.dt, 3600.0);
    EXPECT_DOUBLE_EQ(rf.mInfo.topDepth, 0.0);
    for (int e = 0; e < 4; ++e) EXPECT_EQ(rf.mInfo.ebli[e], SmallModel::ebli[e]);
    EXPECT_EQ(rf.mInfo.cells, 9);
  }
  {
    // "elemlayers" rules over the sea bed: e3 with 2 layers instead of 3
    thTest::ncgen(cdlWith("elemlayers = 3, 2, 1, 3", "elemlayers = 3, 2, 1, 2", SmallModelOptions{}),
                  dir.file("enol.nc"));
    thResultFile rf(dir.file("enol.nc"), NC);
    EXPECT_EQ(rf.mInfo.ebli[3], 1);
    EXPECT_EQ(rf.mInfo.cells, 8);
    EXPECT_EQ(rf.itemLengthVec[0], 9);  // the item's own length, whatever the cells are
  }
  {
    // no items
    SmallModelOptions opt;
    opt.items = false;
    thTest::writeSmallModelNc(dir.file("noitems.nc"), opt);
    thResultFile rf(dir.file("noitems.nc"), NC);
    EXPECT_TRUE(rf.itemNameVec.empty());
    EXPECT_TRUE(rf.itemLengthVec.empty());
    EXPECT_EQ(rf.getItemNo("temp"), 0);
  }
  {
    // no timesteps at all: the time axis keeps its start, dt is 1
    SmallModelOptions opt;
    opt.times = {};
    thTest::writeSmallModelNc(dir.file("empty.nc"), opt);
    thResultFile rf(dir.file("empty.nc"), NC);
    EXPECT_EQ(rf.mInfo.nt, 0);
    EXPECT_EQ(rf.mInfo.startDT, 0);
    EXPECT_DOUBLE_EQ(rf.mInfo.dt, 1.0);
    float buf[9];
    EXPECT_VEXCEPTION_HAS(rf.readItemData(0, 0, buf), "timestep 0 is out of range");
  }
}

TEST(ResultFileNC, SigmaFilesCannotBeOpened) {
  thTest::TempDir dir;
  SmallModelOptions opt;
  opt.layerType = 1;
  thTest::writeSmallModelNc(dir.file("sigma.nc"), opt);
  EXPECT_VEXCEPTION(thResultFile(dir.file("sigma.nc"), NC), "Sigma layers no longer supported.");
}

TEST(ResultFileNC, FilesThatAreNotResultFiles) {
  thTest::TempDir dir;
  const std::string tail = "' is not a result file: ";
  auto check = [&](const std::string& cdl, const std::string& why) {
    std::string fn = dir.file("bad.nc");
    std::remove(fn.c_str());
    thTest::ncgen(cdl, fn);
    EXPECT_VEXCEPTION(thResultFile(fn, NC), "thResultFile::readHeader: '" + fn + tail + why + ".");
  };
  check("netcdf x {\ndimensions:\n  x = 3 ;\nvariables:\n  int v(x) ;\ndata:\n  v = 1, 2, 3 ;\n}\n",
        "the dimension 'time' is missing");
  std::string noLayers = thTest::smallModelCdl();
  for (size_t p; (p = noLayers.find("layers")) != std::string::npos;) noLayers.replace(p, 6, "strata");
  check(noLayers, "the dimension 'layers' is missing");
  std::string noVorX = cdlWith("  double voronoiX(elems) ;\n", "");
  noVorX.erase(noVorX.find("  voronoiX = "), noVorX.find("  voronoiY = ") - noVorX.find("  voronoiX = "));
  check(noVorX, "the variable 'voronoiX' is missing");
  check(cdlWith("int nodeType(nodes)", "double nodeType(nodes)"),
        "the variable 'nodeType' is of double, not of int");
  check(cdlWith("int64 time(time)", "double time(time)"), "the variable 'time' is of double, not of int64");
  check(cdlWith("double elemBathy(elems)", "double elemBathy(nodes)"),
        "the variable 'elemBathy' is not laid out along the dimension 'elems'");
  check(cdlWith(":nItem = 2", ":nItem = 20"), "'nItem' is 20 but the file has 14 variables");
  check(cdlWith(":nItem = 2", ":nItem = -1"), "'nItem' is -1 but the file has 14 variables");
  check(cdlWith("  :nItem = 2 ;\n", ""), "the attribute 'nItem' is missing");
  // three items reach back into the fixed variables
  check(cdlWith(":nItem = 2", ":nItem = 3"), "the item variable 'layerThickness' is not laid out along (time, values)");
  check(cdlWith("connectivity = 0, 1, 5, 4", "connectivity = 0, 1, 8, 4"),
        "'connectivity' names node 8 but there are 8 nodes");
  check(cdlWith("connectivity = 0, 1, 5, 4", "connectivity = 0, 1, -3, 4"),
        "'connectivity' names node -3 but there are 8 nodes");
  check(cdlWith("noElemNodes = 4, 4, 3, 3", "noElemNodes = 4, 4, 3, 2"),
        "element 3 has 2 nodes (3 to 50 are possible)");
  check(cdlWith("noElemNodes = 4, 4, 3, 3", "noElemNodes = 4, 4, 4, 3"),
        "the elements have 15 nodes together but 'connectivity' holds 14");
  check(cdlWith("nodeType = 1, 99", "nodeType = 1, 100"), "node 1 has the type 100");
  check(cdlWith("elemlayers = 3, 2, 1, 3", "elemlayers = 3, 2, 1, 4"),
        "element 3 has 4 layers but the model has 3");
  check(cdlWith("  float elev(time, elems) ;\n", "  char elev(time, elems) ;\n"),
        "the item variable 'elev' is of another type, not of a number type that items are read as");
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
    thTest::writeText(cut, bytes);
    thTest::truncateFile(cut, keep);
    bool threw = false;
    try {
      thResultFile rf(cut, NC);
      float buf[9];
      for (int t = 0; t < 3; ++t) rf.readItemData(0, t, buf);  // may fail only through a VException
    } catch (const VCppLib::VException&) {
      threw = true;
    }
    EXPECT_TRUE(threw) << keep;
  }
  EXPECT_EQ(openFileCount(), before);
}

TEST(ResultFileNC, MeshesThatMakeNoSense) {
  thTest::TempDir dir;
  std::string fn = dir.file("odd.nc");
  auto readOrThrow = [&](const std::string& cdl) {
    std::remove(fn.c_str());
    thTest::ncgen(cdl, fn);
    try {
      thResultFile rf(fn, NC);
      std::vector<float> v(4);
      float* p = v.data();
      for (int t = 0; t < 3; ++t) rf.readLayer(0, t, 999, &p);
    } catch (const VCppLib::VException&) {
      // a sentence is as good as a result here; what matters is that nothing breaks
    }
  };
  // a Voronoi point on the open boundary face: the mesh's own failure comes through
  std::remove(fn.c_str());
  thTest::ncgen(cdlWith("voronoiX = 50,", "voronoiX = 0,"), fn);
  EXPECT_VEXCEPTION(thResultFile(fn, NC), "Voronoi point on face." + thGlobal::errTail);
  readOrThrow(cdlWith("connectivity = 0, 1, 5, 4", "connectivity = 0, 0, 0, 0"));
  readOrThrow(cdlWith("connectivity = 0, 1, 5, 4, 1, 2, 6, 5", "connectivity = 0, 1, 5, 4, 0, 1, 5, 4"));
  readOrThrow(cdlWith("nodeType = 1, 99, 99, 99, 1", "nodeType = -102, -102, 99, 99, -102"));
  readOrThrow(cdlWith("elemBathy = 15, 5, 1.5, 10", "elemBathy = -15, 1e300, 0, NaN"));
  readOrThrow(cdlWith("layerThickness = 10, 5, 2", "layerThickness = 0, -5, NaN"));
  readOrThrow(cdlWith("elemlayers = 3, 2, 1, 3", "elemlayers = -7, 0, 3, 1"));
}
