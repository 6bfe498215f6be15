// CF-like time variables, band-grid detection and regular grids of VNetCdf.
#include <netcdf.h>

#include <cstring>
#include <memory>
#include <stdexcept>

#include "netcdf/VNetCdf.h"
#include "testutil/thTestUtil.h"

using VCppLib::VNetCdf;

namespace {

// A file with one record variable per (declaration, data) entry; ids follow the order given.
struct TimeFile {
  thTest::TempDir dir;
  std::string path = dir.file("time.nc");
  explicit TimeFile(const std::vector<std::pair<std::string, std::string>>& vars) {
    std::string decls, data;
    for (const auto& [decl, values] : vars) decls += " " + decl + "\n", data += " " + values + "\n";
    thTest::ncgen("netcdf t {\ndimensions:\n time = UNLIMITED ;\n two = 2 ;\nvariables:\n" + decls +
                      "data:\n" + data + "}\n",
                  path);
  }
};

const int64_t since1900 = -2208988800LL;  // 70 years with 17 leap days: 25567 days
const int64_t since1980 = 315532800LL;    // 3652 days
const int64_t since2000 = 946684800LL;    // 10957 days

}  // namespace

TEST(VNetCdfTime, UnitsAndReferences) {
  using V = std::vector<int64_t>;
  const struct {
    const char *type, *units, *values;
    V want;
  } cases[] = {
      // the 1900 reference is a constant: the date-time arithmetic would give one day less
      {"double", "minutes since 1900-01-01 00:00:00", "60, 0", {since1900 + 3600, since1900}},
      {"int", "hours since 1970-01-01", "1, 24", {3600, 86400}},
      {"float", "seconds since 1970-1-1 00:00:00", "0.5, -0.5", {0, 0}},  // truncated after adding the base
      {"short", "HOURS since 1970-01-01 00:00:00", "2, -2", {7200, -7200}},
      {"double", "secs since 2000-01-01 00:00:00", "10, 11", {since2000 + 10, since2000 + 11}},
      {"double", "seconds since 1970-01-01 00:00:00 UTC", "5, 6", {5, 6}},
      {"double", "minutes since 1980-01-01 00:00:00", "1.5, -1", {since1980 + 90, since1980 - 60}},
      {"int64", "hours since 1970-01-1 00:00:00", "3, 4", {3 * 3600, 4 * 3600}},
      {"double", "hours since 1900-1-1 00:00:00", "1, 0", {since1900 + 3600, since1900}}};
  std::vector<std::pair<std::string, std::string>> vars;
  for (const auto& c : cases) {
    std::string v = "t" + std::to_string(vars.size());
    vars.push_back({c.type + (" " + v) + "(time) ; " + v + ":units = \"" + c.units + "\" ;",
                    v + " = " + c.values + " ;"});
  }
  TimeFile f(vars);
  VNetCdf nc(f.path, false);
  for (int32_t i = 0; i < static_cast<int32_t>(vars.size()); ++i)
    EXPECT_EQ(nc.getTimeVarValues(i, ""), cases[i].want) << cases[i].units;
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
  EXPECT_VEXCEPTION(nc.getTimeVarValues(1, ""), "'grid' variable has more than one dimension in " + f.path);
  EXPECT_VEXCEPTION(nc.getTimeVarValues(2, ""), "Could not find 'units' attribute of time var in " + f.path);
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
  TimeFile f({{"double t(time) ;", ""}, {"double u(two) ; u:units = \"hours since 1970-01-01\" ;", ""}});
  VNetCdf nc(f.path, false);
  EXPECT_VEXCEPTION(nc.getTimeVarValues(-1, ""), "Could not find time var in " + f.path);
  EXPECT_TRUE(nc.getTimeVarValues(0, "hours since 1970-01-01").empty());  // no records yet
}

TEST(VNetCdfGrid, BathymetryRasterAndBandGrid) {
  thTest::TempDir dir;
  std::string path = dir.file("bathy.nc");
  thTest::ncgen(
      "netcdf b {\ndimensions:\n lon = 4 ;\n lat = 3 ;\n depth = 2 ;\n one = 1 ;\n"
      "variables:\n double lon(lon) ;\n float lat(lat) ;\n float elevation(lat, lon) ;\n"
      " double depth(depth) ;\n int single(one) ;\n"
      "data:\n lon = 10, 10.5, 11, 11.5 ;\n lat = 50, 49.5, 49 ;\n"
      " elevation = 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12 ;\n depth = -5, -10 ;\n"
      " single = 3 ;\n}\n",
      path);
  VNetCdf nc(path, false);
  EXPECT_FALSE(nc.isBandGrid());
  VCppLib::VCartGrid g = nc.getGrid(0, 1, -1);
  EXPECT_EQ(std::vector<int32_t>({g.nx, g.ny, g.nz}), (std::vector<int32_t>{4, 3, 1}));
  EXPECT_EQ(std::vector<double>({g.x0, g.dx, g.y0, g.dy}),
            (std::vector<double>{10, 0.5, 50, -0.5}));  // descending
  EXPECT_TRUE(g.data == nullptr && g.z == nullptr && g.name.empty());
  // as the bathymetry painter reads it: the caller allocates and fills the data
  std::unique_ptr<double[]> data(new double[g.nx * g.ny]);
  g.data = data.get();
  nc.getAllDataIntoGivenType<double>(2, g.data);
  EXPECT_EQ(g.data[2 * 4 + 3], 12.0);                                     // row 2, column 3
  VCppLib::VCartGrid gz = nc.getGrid(0, 1, 3), g1 = nc.getGrid(0, 1, 4);  // the second: one value
  std::unique_ptr<double[]> z(gz.z), z1(g1.z);
  EXPECT_EQ(std::vector<double>({double(gz.nz), gz.z[0], gz.z[1], double(g1.nz), g1.z[0]}),
            (std::vector<double>{2, -5, -10, 1, 3}));

  EXPECT_VEXCEPTION(nc.getGrid(2, 1, -1), "Invalid number of dimenstions for given x or y variable");
  EXPECT_VEXCEPTION(nc.getGrid(0, 1, 2), "Invalid number of dimenstions for given z variable");
  EXPECT_VEXCEPTION(nc.getGrid(0, 4, -1), "VNetCdf::getGrid: coordinate variable 'single' in '" + path +
                                              "' has fewer than two points.");
  EXPECT_VEXCEPTION_HAS(nc.getGrid(0, 9, -1), "variable id 9 is out of range");

  std::string band = dir.file("band.nc"), partial = dir.file("partial.nc");
  thTest::ncgen(
      "netcdf g {\ndimensions:\n x = 2 ;\n y = 2 ;\nvariables:\n char transverse_mercator ;\n"
      " double x(x) ;\n double y(y) ;\n float Band1(y, x) ;\n}\n",
      band);
  thTest::ncgen("netcdf g {\ndimensions:\n x = 2 ;\n y = 2 ;\nvariables:\n float Band1(y, x) ;\n}\n",
                partial);
  EXPECT_TRUE(VNetCdf(band, false).isBandGrid());
  EXPECT_FALSE(VNetCdf(partial, false).isBandGrid());
}
