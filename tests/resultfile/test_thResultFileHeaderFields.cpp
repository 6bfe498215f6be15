// Header fields that differ from the defaults survive writing and reading in NC and EMB; the report
// at level 10 carries the model's own report; an NC header that claims more timesteps than its
// file can hold is refused.
#include <netcdf.h>

#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;

TEST(ResultFileHeaderFields, NonDefaultValuesRoundTrip) {
  thTest::TempDir dir;
  for (const char* name : {"h.nc", "h.emb"}) {
    const std::string fn = dir.file(name);
    const bool nc = std::string(name) == "h.nc";
    {
      thResultFile w(fn, nc ? NC : EMB);
      thTest::buildSmallModel(w.mInfo);
      // none of these is a default of a fresh object, so a field left unread shows (layer type 2
      // is no kind of its own, but sigma, 1, cannot be read back)
      w.mInfo.layerType = 2;
      w.mInfo.flavor = 5;
      w.mInfo.topDepth = 2.5;
      w.mInfo.modelType = 12;
      w.mInfo.mesh2d.projection = "UTM33";
      if (nc) w.writeVersion = 6;  // an EMB file is written in the layout of version 8 only
      w.addItem("elev", 4);
      ASSERT_EQ(w.writeHeader(), 0);
      std::vector<float> v = {1, 2, 3, 4};
      w.writeItemData(v.data(), 4);
      w.closeFile(1);
    }
    thResultFile r(fn, -1);
    const thModelInfo& mi = r.mInfo;
    EXPECT_EQ(std::vector<double>({double(r.fileVersion), double(mi.layerType), double(mi.flavor),
                                   mi.topDepth, double(mi.modelType)}),
              std::vector<double>({nc ? 6.0 : 8.0, 2, 5, 2.5, 12}))
        << name;
    EXPECT_EQ(mi.mesh2d.projection, "UTM33") << name;
  }
}

TEST(ResultFileHeaderFields, ReportAtLevelTenHoldsTheModelReport) {
  thTest::TempDir dir;
  thTest::writeSmallModelNc(dir.file("s.nc"));
  thResultFile s(dir.file("s.nc"), NC);
  const std::string shortReport = s.toString(9), full = s.toString(10);
  ASSERT_EQ(full.substr(0, shortReport.size()), shortReport);
  // by hand: 4 elements, 8 nodes, 3 layers, 9 cells, 3 timesteps (the small model)
  const std::string model = full.substr(shortReport.size());
  for (const char* line : {"Mesh has 4 elements and 8 nodes.\n", "No. Layers:\t3\n", "No. timesteps:\t3\n",
                           "No. Computational cells: 9\n", "Projection:\tUTM32\n"})
    EXPECT_NE(model.find(line), std::string::npos) << line;
}

TEST(ResultFileHeaderFields, TimestepsBeyondTheFileAreRefused) {
  // One value written at record 50,331,650 gives the time axis, and the items along it, 50,331,651
  // entries in a file of a few kilobytes: HDF5 stores only the chunk written. The first item is met
  // first.
  thTest::TempDir dir;
  const std::string fn = dir.file("long.nc");
  thTest::writeSmallModelNc(fn);
  int id = 0, var = 0;
  ASSERT_EQ(nc_open(fn.c_str(), NC_WRITE, &id), NC_NOERR);
  nc_inq_varid(id, "time", &var);
  const long long t = 1262304000;
  const size_t at = 50331650;
  nc_put_var1_longlong(id, var, &at, &t);
  ASSERT_EQ(nc_close(id), NC_NOERR);
  EXPECT_VEXCEPTION(thResultFile(fn, NC),
                    "thResultFile::readHeader: '" + fn +
                        "' is not a result file: "
                        "the variable 'temp' declares more values than the file's size can hold.");
}
