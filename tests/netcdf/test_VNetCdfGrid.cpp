// CF-like time variables, band-grid detection and regular grids of VNetCdf.
#include <netcdf.h>

#include <cstring>
#include <memory>
#include <stdexcept>

#include "netcdf/VNetCdf.h"
#include "testutil/thTestUtil.h"

using VCppLib::VNetCdf;

namespace {

// One record variable per units text; ids follow the order of `units`.
std::string timeCdl(const std::vector<std::pair<std::string, std::string>>& vars) {
  std::string cdl = "netcdf t {\ndimensions:\n time = UNLIMITED ;\n two = 2 ;\nvariables:\n";
  std::string data;
  for (const auto& [decl, values] : vars) {
    cdl += " " + decl + "\n";
    data += " " + values + "\n";
  }
  return cdl + "data:\n" + data + "}\n";
}

struct TimeFile {
  thTest::TempDir dir;
  std::string path = dir.file("time.nc");
  explicit TimeFile(const std::vector<std::pair<std::string, std::string>>& vars) {
    thTest::ncgen(timeCdl(vars), path);
  }
};

const int64_t since1900 = -2208988800LL;  // 70 years with 17 leap days: 25567 days
const int64_t since1980 = 315532800LL;    // 3652 days
const int64_t since2000 = 946684800LL;    // 10957 days

}  // namespace

TEST(VNetCdfTime, UnitsAndReferences) {
  TimeFile f({
      {"double tmin(time) ; tmin:units = \"minutes since 1900-01-01 00:00:00\" ;", "tmin = 60, 0 ;"},
      {"int th(time) ; th:units = \"hours since 1970-01-01\" ;", "th = 1, 24 ;"},
      {"float ts(time) ; ts:units = \"seconds since 1970-1-1 00:00:00\" ;", "ts = 0.5, -0.5 ;"},
      {"short tup(time) ; tup:units = \"HOURS since 1970-01-01 00:00:00\" ;", "tup = 2, -2 ;"},
      {"double tsecs(time) ; tsecs:units = \"secs since 2000-01-01 00:00:00\" ;", "tsecs = 10, 11 ;"},
      {"double tutc(time) ; tutc:units = \"seconds since 1970-01-01 00:00:00 UTC\" ;", "tutc = 5, 6 ;"},
      {"double t80(time) ; t80:units = \"minutes since 1980-01-01 00:00:00\" ;", "t80 = 1.5, -1 ;"},
      {"int64 tl(time) ; tl:units = \"hours since 1970-01-1 00:00:00\" ;", "tl = 3, 4 ;"},
      {"double t1900h(time) ; t1900h:units = \"hours since 1900-1-1 00:00:00\" ;", "t1900h = 1, 0 ;"},
  });
  VNetCdf nc(f.path, false);
  using V = std::vector<int64_t>;
  // the 1900 reference is a constant: the date-time arithmetic would give one day less
  EXPECT_EQ(nc.getTimeVarValues(0, ""), (V{since1900 + 3600, since1900}));
  EXPECT_EQ(nc.getTimeVarValues(1, ""), (V{3600, 86400}));
  EXPECT_EQ(nc.getTimeVarValues(2, ""), (V{0, 0}));  // truncated after the base is added
  EXPECT_EQ(nc.getTimeVarValues(3, ""), (V{7200, -7200}));
  EXPECT_EQ(nc.getTimeVarValues(4, ""), (V{since2000 + 10, since2000 + 11}));
  EXPECT_EQ(nc.getTimeVarValues(5, ""), (V{5, 6}));
  EXPECT_EQ(nc.getTimeVarValues(6, ""), (V{since1980 + 90, since1980 - 60}));
  EXPECT_EQ(nc.getTimeVarValues(7, ""), (V{3 * 3600, 4 * 3600}));
  EXPECT_EQ(nc.getTimeVarValues(8, ""), (V{since1900 + 3600, since1900}));
  // the first record variable with units when none is named; units given override the attribute
  EXPECT_EQ(nc.getTimeVarValues(-1, ""), (V{since1900 + 3600, since1900}));
  EXPECT_EQ(nc.getTimeVarValues(1, "seconds since 1970-01-02"), (V{86401, 86424}));
}

TEST(VNetCdfTime, RefusedUnits) {
  TimeFile f({
      {"double t(time) ; t:units = \"days since 1970-01-01 00:00:00\" ;", "t = 1, 2 ;"},
      {"double grid(time, two) ; grid:units = \"hours since 1970-01-01\" ;", "grid = 1, 2, 3, 4 ;"},
      {"double nounits(time) ;", "nounits = 1, 2 ;"},
      {"double tnan(time) ; tnan:units = \"hours since 1970-01-01\" ;", "tnan = 1, NaN ;"},
      {"double huge(time) ; huge:units = \"hours since 1970-01-01\" ;", "huge = 1, 1e30 ;"},
      {"byte b(time) ; b:units = \"hours since 1970-01-01\" ;", "b = 1, 2 ;"},
  });
  VNetCdf nc(f.path, false);
  EXPECT_VEXCEPTION(nc.getTimeVarValues(0, ""), "Unsupported time unit in " + f.path);
  EXPECT_VEXCEPTION(nc.getTimeVarValues(0, "hours SINCE 1970-01-01"),
                    "Could not parse time unit in netcdf file.");
  EXPECT_VEXCEPTION(nc.getTimeVarValues(0, "weeks since 1970-01-01"),
                    "Unsupported time unit in " + f.path);
  EXPECT_VEXCEPTION(nc.getTimeVarValues(1, ""),
                    "'grid' variable has more than one dimension in " + f.path);
  EXPECT_VEXCEPTION(nc.getTimeVarValues(2, ""),
                    "Could not find 'units' attribute of time var in " + f.path);
  EXPECT_VEXCEPTION(nc.getTimeVarValues(2, "hours since 1970-1-1"), "Invalid date: 1970-01-1");
  EXPECT_VEXCEPTION(nc.getTimeVarValues(2, "hours since 19x0-01-01 00:00:00"),
                    "Invalid date: 19x0-01-01 00:00:00");
  EXPECT_VEXCEPTION_HAS(nc.getTimeVarValues(3, ""), "of time variable 'tnan'");
  EXPECT_VEXCEPTION_HAS(nc.getTimeVarValues(4, ""), "is not a valid time");
  EXPECT_VEXCEPTION(nc.getTimeVarValues(5, ""), "Unsupported nc type: 1");
  EXPECT_VEXCEPTION_HAS(nc.getTimeVarValues(6, ""), "out of range");
  // reference texts too short for the month or the day: the string library's own error
  for (const char* units : {"hours since 1970", "hours since 1970-1", "hours since "}) {
    try {
      nc.getTimeVarValues(2, units);
      ADD_FAILURE() << units;
    } catch (const std::out_of_range& e) {
      EXPECT_STREQ(e.what(), "invalid string position") << units;
    }
  }
  // the object stays usable
  EXPECT_EQ(nc.getTimeVarValues(2, "hours since 1970-01-01"), (std::vector<int64_t>{3600, 7200}));
}

TEST(VNetCdfTime, NoTimeVariable) {
  thTest::TempDir dir;
  std::string path = dir.file("notime.nc");
  thTest::ncgen("netcdf n {\ndimensions:\n time = UNLIMITED ;\n x = 2 ;\nvariables:\n"
                " double t(time) ;\n double u(x) ; u:units = \"hours since 1970-01-01\" ;\n}\n",
                path);
  VNetCdf nc(path, false);
  EXPECT_VEXCEPTION(nc.getTimeVarValues(-1, ""), "Could not find time var in " + path);
  EXPECT_TRUE(nc.getTimeVarValues(0, "hours since 1970-01-01").empty());  // no records yet
}

TEST(VNetCdfGrid, BathymetryRaster) {
  thTest::TempDir dir;
  std::string path = dir.file("bathy.nc");
  thTest::ncgen("netcdf b {\ndimensions:\n lon = 4 ;\n lat = 3 ;\n depth = 2 ;\n one = 1 ;\n"
                "variables:\n double lon(lon) ;\n float lat(lat) ;\n float elevation(lat, lon) ;\n"
                " double depth(depth) ;\n int single(one) ;\n"
                "data:\n lon = 10, 10.5, 11, 11.5 ;\n lat = 50, 49.5, 49 ;\n"
                " elevation = 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12 ;\n depth = -5, -10 ;\n"
                " single = 3 ;\n}\n", path);
  VNetCdf nc(path, false);
  EXPECT_FALSE(nc.isBandGrid());
  VCppLib::VCartGrid g = nc.getGrid(0, 1, -1);
  EXPECT_EQ(g.nx, 4);
  EXPECT_EQ(g.ny, 3);
  EXPECT_EQ(g.nz, 1);
  EXPECT_EQ(g.x0, 10.0);
  EXPECT_EQ(g.dx, 0.5);
  EXPECT_EQ(g.y0, 50.0);
  EXPECT_EQ(g.dy, -0.5);  // descending axis
  EXPECT_EQ(g.data, nullptr);
  EXPECT_EQ(g.z, nullptr);
  uint64_t bits;
  std::memcpy(&bits, &g.deleteVal, 8);
  EXPECT_EQ(bits, 0xB841039D428A8B8Full);
  EXPECT_TRUE(g.name.empty());

  // as the bathymetry painter reads it: the caller allocates and fills the data
  std::unique_ptr<double[]> data(new double[g.nx * g.ny]);
  g.data = data.get();
  nc.getAllDataIntoGivenType<double>(2, g.data);
  EXPECT_EQ(g.data[2 * 4 + 3], 12.0);  // row 2, column 3

  VCppLib::VCartGrid gz = nc.getGrid(0, 1, 3);
  std::unique_ptr<double[]> z(gz.z);
  EXPECT_EQ(gz.nz, 2);
  EXPECT_EQ(gz.z[0], -5.0);
  EXPECT_EQ(gz.z[1], -10.0);
  VCppLib::VCartGrid g1 = nc.getGrid(0, 1, 4);  // a z variable of one value
  std::unique_ptr<double[]> z1(g1.z);
  EXPECT_EQ(g1.nz, 1);
  EXPECT_EQ(g1.z[0], 3.0);

  EXPECT_VEXCEPTION(nc.getGrid(2, 1, -1), "Invalid number of dimenstions for given x or y variable");
  EXPECT_VEXCEPTION(nc.getGrid(0, 2, -1), "Invalid number of dimenstions for given x or y variable");
  EXPECT_VEXCEPTION(nc.getGrid(0, 1, 2), "Invalid number of dimenstions for given z variable");
  EXPECT_VEXCEPTION(nc.getGrid(0, 4, -1),
                    "VNetCdf::getGrid: coordinate variable 'single' in '" + path +
                        "' has fewer than two points.");
  EXPECT_VEXCEPTION_HAS(nc.getGrid(0, 9, -1), "variable id 9 is out of range");
}

TEST(VNetCdfGrid, BandGridLayout) {
  thTest::TempDir dir;
  std::string path = dir.file("band.nc");
  thTest::ncgen("netcdf g {\ndimensions:\n x = 2 ;\n y = 2 ;\nvariables:\n char transverse_mercator ;\n"
                " double x(x) ;\n double y(y) ;\n float Band1(y, x) ;\n}\n", path);
  VNetCdf nc(path, false);
  EXPECT_TRUE(nc.isBandGrid());
  std::string partial = dir.file("partial.nc");
  thTest::ncgen("netcdf g {\ndimensions:\n x = 2 ;\n y = 2 ;\nvariables:\n float Band1(y, x) ;\n}\n",
                partial);
  EXPECT_FALSE(VNetCdf(partial, false).isBandGrid());
}
