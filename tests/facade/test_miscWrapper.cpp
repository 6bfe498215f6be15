// Bathymetry bitmaps and grids from small NetCDF rasters made with ncgen; colours worked out by hand.
#include <cstring>

#include "facade/miscWrapper.h"
#include "testutil/thTestUtil.h"

using thWrapper::miscWrapper;
using VI = std::vector<int32_t>;
using Bytes = std::vector<uint8_t>;

namespace {

constexpr int32_t B = static_cast<int32_t>(0xFF000000u), W = -1;
constexpr int32_t D = static_cast<int32_t>(0xFF555555u), L = static_cast<int32_t>(0xFFAAAAAAu);  // 4 steps
const VI kBW = {B, W};

// x = variable 0, y = variable 1, depths = variable 2 (y by x). The 1e6 is the upper left corner
// of a cell, which the sampling never reads.
const char* kPlainCdl = R"(netcdf bathy { dimensions: x = 3 ; y = 3 ;
variables: double x(x) ; double y(y) ; float z(y, x) ;
data: x = 0, 1, 2 ; y = 0, 1, 2 ; z = 0, 0, 0, 68, 68, 0, 1000000, 0, 68 ; })";

// A scalar first, then longitude (1), latitude (2) and the elevations over (lat, lon).
const char* kGebcoCdl = R"(netcdf gebco { dimensions: lon = 3 ; lat = 3 ;
variables: int crs ; double lon(lon) ; double lat(lat) ; short elevation(lat, lon) ;
data: crs = 0 ; lon = 10, 10.5, 11 ; lat = 50, 51, 52 ;
  elevation = -100, -200, -300, -400, -500, -600, -700, -800, -900 ; })";

VI colours(const Bytes& bytes) {
  VI out(bytes.size() / 4);
  std::memcpy(out.data(), bytes.data(), out.size() * 4);
  return out;
}

// A scale of 3 steps over 0..60 on 2x2 pixels of [0,2]x[0,2].
int32_t paint3(const std::string& path, Bytes& bytes, int32_t nz = 3) {
  return miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bytes, 2, 2, nz, 0, 2, 0, 2, 0, 60, kBW, 2.0);
}

// The gebco raster on 2x2 pixels at x 10.1, 10.6 and y 50.2, 51.2, with p = 0 (all weights 1):
// (v1 + v2 + 2*v3)/4 gives -325, -425 (bottom row) and -625, -725. With scale 4/400 and zmin -8
// the index is value/100 + 8: 4.75 (beyond: entry ncolors-1 = 1), 3.75, 1.75, 0.75.
int32_t paintGebco(const std::string& path, Bytes& bytes) {
  return miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bytes, 2, 2, 4, 10.1, 11.1, 50.2, 52.2, -8.0,
                                                       392.0, kBW, 0.0);
}

}  // namespace

TEST(miscWrapper, PlainRasterBothFormsAndTheGrid) {
  thTest::TempDir dir;
  const std::string path = dir.file("bathy.nc");
  thTest::ncgen(kPlainCdl, path);
  // Sampled at (0.25, 0.25) in each cell with p = 2: weights 45 : 9 : 5 : 9, the last on the upper
  // right value, so (45*ll + 9*lr + 14*ur)/68 = 14, 0 (bottom row) and 54, 59 (top row). The two
  // bytes beyond the picture are left alone.
  Bytes bytes(18, 7);
  EXPECT_EQ(miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bytes, 2, 2, 0.25, 2.25, 0.25, 2.25,
                                                          {10, 20, 56}, kBW, 2.0),
            0);
  EXPECT_EQ(colours(bytes), (VI{L, W, D, B}));
  EXPECT_TRUE(bytes[16] == 7 && bytes[17] == 7);
  // Scale of 3 steps over 0..60: index = value*0.05, so 2.7, 2.95, 0.7, 0.
  EXPECT_EQ(miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bytes, 2, 2, 3, 0.25, 2.25, 0.25, 2.25, 0.0,
                                                          60.0, kBW, 2.0),
            0);
  EXPECT_EQ(colours(bytes), (VI{W, W, B, B}));
  // The grid alone, from a raster of 3 x 2 values.
  thTest::ncgen(
      "netcdf b { dimensions: x = 3 ; y = 2 ; variables: double x(x) ; double y(y) ; "
      "float z(y, x) ; data: x = 10, 20, 30 ; y = 5, 7 ; z = 1, 2, 3, 4, 5, 6 ; }",
      dir.file("b.nc"));
  const thWrapper::bathyGrid b = miscWrapper::readNetCdfBathy(dir.file("b.nc"));
  EXPECT_TRUE(b.x0 == 10 && b.dx == 10 && b.y0 == 5 && b.dy == 2 && b.nx == 3 && b.ny == 2);
  EXPECT_EQ(b.depths, (std::vector<double>{1, 2, 3, 4, 5, 6}));
}

TEST(miscWrapper, GebcoInThePathSelectsTheOtherAxes) {
  thTest::TempDir dir;
  // The whole path counts: a folder of that name selects the same axes.
  ASSERT_EQ(thTest::runCommand("mkdir '" + dir.file("Gebco_tiles") + "'"), 0);
  for (const std::string name : {"GEBCO_2014.nc", "gebco.nc", "my_Gebco_map.NC", "Gebco_tiles/bathy.nc"}) {
    const std::string path = dir.file(name);
    thTest::ncgen(kGebcoCdl, path);
    Bytes bytes(16, 0);
    EXPECT_EQ(paintGebco(path, bytes), 0) << name;
    EXPECT_EQ(colours(bytes), (VI{D, B, D, W})) << name;
  }
  // Without the word, variables 0 and 1 are the axes: the scalar is no axis. And a plain raster
  // under a gebco name: variable 2 is the 2-D depth field, no axis.
  Bytes bytes(16, 0);
  thTest::ncgen(kGebcoCdl, dir.file("bathy.nc"));
  thTest::ncgen(kPlainCdl, dir.file("gebco_plain.nc"));
  for (const std::string name : {"bathy.nc", "gebco_plain.nc"})
    EXPECT_THROW(paintGebco(dir.file(name), bytes), VCppLib::VException) << name;
}

TEST(miscWrapper, BadInput) {
  thTest::TempDir dir;
  const std::string path = dir.file("bathy.nc");
  thTest::ncgen(kPlainCdl, path);
  Bytes small(15, 0), bytes(16, 0), none;
  EXPECT_VEXCEPTION_HAS(
      miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, small, 2, 2, 0, 2, 0, 2, {1, 2}, kBW, 2.0),
      "the bitmap of 15 bytes is too small for 2 x 2 pixels, which need 16");
  EXPECT_EQ(small, Bytes(15, 0));
  EXPECT_VEXCEPTION(paint3(dir.file("none.nc"), bytes), "No such file: '" + dir.file("none.nc") + "'");
  // Arguments that the painter refuses reach the caller as its VException; an empty bitmap is fine.
  EXPECT_VEXCEPTION_HAS(paint3(path, bytes, 1), "at least 2 steps");
  EXPECT_EQ(bytes, Bytes(16, 0));
  EXPECT_EQ(miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, none, 0, 0, 3, 0, 2, 0, 2, 0, 60, kBW, 2.0),
            0);

  // Depths that do not fill the grid, no variable 2, a gebco file without depths over its axes (an
  // axis of one value: VNetCdfGrid).
  const std::string shortNc = dir.file("short.nc"), two = dir.file("two.nc"),
                    axes = dir.file("gebco_axes.nc");
  const std::string head = "netcdf s { dimensions: x = 3 ; y = 3 ; variables: double x(x) ; double y(y) ; ";
  thTest::ncgen(head + "float z(x) ; data: x = 0, 1, 2 ; y = 0, 1, 2 ; z = 1, 2, 3 ; }", shortNc);
  thTest::ncgen(head + "data: x = 0, 1, 2 ; y = 0, 1, 2 ; }", two);
  thTest::ncgen(
      "netcdf g { dimensions: lon = 3 ; lat = 3 ; variables: int crs ; double lon(lon) ; double lat(lat) ; "
      "short e(lon, lat) ; data: crs = 0 ; lon = 0, 1, 2 ; lat = 0, 1, 2 ; }",
      axes);
  EXPECT_VEXCEPTION(paint3(shortNc, bytes), "The variable 'z' of file '" + shortNc +
                                                "' has 3 values, but its grid of 3 x 3 needs 9.");
  EXPECT_VEXCEPTION(paint3(two, bytes),
                    "The file '" + two + "' has no variable number 2 to read the bathymetry from.");
  EXPECT_VEXCEPTION(paintGebco(axes, bytes),
                    "The file '" + axes +
                        "' has no variable over the dimensions of 'lat' and 'lon' to "
                        "read the bathymetry from.");
  // A file cut short fails as the library fails to open it (its own tests show how, and that files
  // that are no NetCDF at all, or empty, fail too); the caller gets the VException.
  thTest::ncgen(kPlainCdl, dir.file("cut.nc"));
  thTest::truncateFile(dir.file("cut.nc"), 600);
  EXPECT_THROW(paint3(dir.file("cut.nc"), bytes), VCppLib::VException);
}
