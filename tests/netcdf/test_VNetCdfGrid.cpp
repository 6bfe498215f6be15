// CF-like time variables, band-grid detection and regular grids of VNetCdf.
#include <netcdf.h>

#include <memory>
#include <stdexcept>
#include <tuple>

#include "netcdf/VNetCdf.h"
#include "testutil/thTestUtil.h"

using VCppLib::VNetCdf;

namespace {

const int64_t since1900 = -2208988800LL;  // 70 years with 17 leap days: 25567 days
const int64_t since1980 = 315532800LL;    // 3652 days
const int64_t since2000 = 946684800LL;    // 10957 days

}  // namespace

TEST(VNetCdfTime, UnitsReferencesAndRefusals) {
  using V = std::vector<int64_t>;
  // type, units, values, long date-times
  const std::tuple<const char*, const char*, const char*, V> cases[] = {
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
  // One record variable per case, then from id n on the refused ones: days, two dimensions, no units,
  // NaN, beyond the range of a long date-time, byte.
  const int32_t n = static_cast<int32_t>(std::size(cases));
  std::string decls, data;
  for (int32_t i = 0; i < n; ++i) {
    const std::string v = "t" + std::to_string(i);
    const auto& [type, units, values, want] = cases[i];
    decls += std::string(" ") + type + " " + v + "(time) ; " + v + ":units = \"" + units + "\" ;\n";
    data += " " + v + " = " + values + " ;\n";
  }
  const std::string hours = ":units = \"hours since 1970-01-01\" ;\n";
  decls +=
      " double d(time) ; d:units = \"days since 1970-01-01 00:00:00\" ;\n double grid(time, two) ; grid" +
      hours + " double nounits(time) ;\n double tnan(time) ; tnan" + hours + " double huge(time) ; huge" +
      hours + " byte b(time) ; b" + hours;
  data +=
      " d = 1, 2 ;\n grid = 1, 2, 3, 4 ;\n nounits = 1, 2 ;\n tnan = 1, NaN ;\n huge = 1, 1e30 ;\n"
      " b = 1, 2 ;\n}\n";
  thTest::TempDir dir;
  const std::string path = dir.file("time.nc");
  thTest::ncgen(
      "netcdf t {\ndimensions:\n time = UNLIMITED ;\n two = 2 ;\nvariables:\n" + decls + "data:\n" + data,
      path);
  VNetCdf nc(path, false);
  for (int32_t i = 0; i < n; ++i)
    EXPECT_EQ(nc.getTimeVarValues(i, ""), std::get<3>(cases[i])) << std::get<1>(cases[i]);
  // the first record variable with units when none is named; units given override the attribute
  EXPECT_EQ(nc.getTimeVarValues(-1, ""), (V{since1900 + 3600, since1900}));
  EXPECT_EQ(nc.getTimeVarValues(1, "seconds since 1970-01-02"), (V{86401, 86424}));

  const std::pair<int32_t, std::string> refused[] = {
      {n, "Unsupported time unit in " + path},
      {n + 1, "'grid' variable has more than one dimension in " + path},
      {n + 2, "Could not find 'units' attribute of time var in " + path},
      {n + 4, "Value 1e+30 at position 1 of time variable 'huge' in " + path + " is not a valid time."},
      {n + 5, "Unsupported nc type: 1"}};
  for (const auto& [v, msg] : refused) EXPECT_VEXCEPTION(nc.getTimeVarValues(v, ""), msg);
  EXPECT_THROW(nc.getTimeVarValues(n + 3, ""), VCppLib::VException);  // NaN, as 1e30 hours
  EXPECT_VEXCEPTION(nc.getTimeVarValues(n, "hours SINCE 1970-01-01"),
                    "Could not parse time unit in netcdf file.");
  EXPECT_VEXCEPTION(nc.getTimeVarValues(n + 2, "hours since 19x0-01-01 00:00:00"),
                    "Invalid date: 19x0-01-01 00:00:00");
  EXPECT_VEXCEPTION_HAS(nc.getTimeVarValues(n + 6, ""), "out of range");
  // reference texts too short for the month or the day: the string library's own error
  for (const char* units : {"hours since 1970", "hours since 1970-1", "hours since "}) {
    try {
      nc.getTimeVarValues(n + 2, units);
      ADD_FAILURE() << units;
    } catch (const std::out_of_range& e) {
      EXPECT_STREQ(e.what(), "invalid string position") << units;
    }
  }
  // the object stays usable
  EXPECT_EQ(nc.getTimeVarValues(n + 2, "hours since 1970-01-01"), (V{3600, 7200}));
}

TEST(VNetCdfGrid, BathymetryRasterAndBandGrid) {
  thTest::TempDir dir;
  std::string path = dir.file("bathy.nc");
  thTest::ncgen(
      "netcdf b {\ndimensions:\n lon = 4 ;\n lat = 3 ;\n depth = 2 ;\n one = 1 ;\nvariables:\n"
      " double lon(lon) ;\n  lon:units = \"degrees_east\" ;\n float lat(lat) ;\n"
      " float elevation(lat, lon) ;\n double depth(depth) ;\n int single(one) ;\n"
      "data:\n lon = 10, 10.5, 11, 11.5 ;\n lat = 50, 49.5, 49 ;\n depth = -5, -10 ;\n single = 3 ;\n}\n",
      path);
  VNetCdf nc(path, false);
  EXPECT_FALSE(nc.isBandGrid());
  // no record variable: a fixed one with units is not taken for the time
  EXPECT_VEXCEPTION(nc.getTimeVarValues(-1, ""), "Could not find time var in " + path);
  VCppLib::VCartGrid g = nc.getGrid(0, 1, -1);
  // the latitudes descend
  EXPECT_EQ((std::vector<double>{double(g.nx), double(g.ny), double(g.nz), g.x0, g.dx, g.y0, g.dy}),
            (std::vector<double>{4, 3, 1, 10, 0.5, 50, -0.5}));
  EXPECT_TRUE(g.data == nullptr && g.z == nullptr && g.name.empty());
  VCppLib::VCartGrid gz = nc.getGrid(0, 1, 3), g1 = nc.getGrid(0, 1, 4);  // the second: one value
  std::unique_ptr<double[]> z(gz.z), z1(g1.z);
  EXPECT_EQ(std::vector<double>({double(gz.nz), gz.z[0], gz.z[1], double(g1.nz), g1.z[0]}),
            (std::vector<double>{2, -5, -10, 1, 3}));

  EXPECT_VEXCEPTION(nc.getGrid(2, 1, -1), "Invalid number of dimenstions for given x or y variable");
  EXPECT_VEXCEPTION(nc.getGrid(0, 1, 2), "Invalid number of dimenstions for given z variable");
  EXPECT_VEXCEPTION(nc.getGrid(0, 4, -1), "VNetCdf::getGrid: coordinate variable 'single' in '" + path +
                                              "' has fewer than two points.");
  EXPECT_VEXCEPTION_HAS(nc.getGrid(0, 9, -1), "variable id 9 is out of range");

  // a band grid needs the transverse_mercator variable as well
  std::string band = dir.file("band.nc"), partial = dir.file("partial.nc");
  const std::string grid =
      "netcdf g {\ndimensions:\n x = 2 ;\n y = 2 ;\nvariables:\n double x(x) ;\n double y(y) ;\n";
  thTest::ncgen(grid + " float Band1(y, x) ;\n char transverse_mercator ;\n}\n", band);
  thTest::ncgen(grid + " float Band1(y, x) ;\n}\n", partial);
  EXPECT_TRUE(VNetCdf(band, false).isBandGrid());
  EXPECT_FALSE(VNetCdf(partial, false).isBandGrid());
}
