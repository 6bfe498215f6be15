// Bathymetry bitmaps from small NetCDF rasters made with ncgen; colours worked out by hand.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "facade/miscWrapper.h"
#include "testutil/thTestUtil.h"

using thWrapper::miscWrapper;

namespace {

constexpr int32_t kBlack = static_cast<int32_t>(0xFF000000u);
constexpr int32_t kDark = static_cast<int32_t>(0xFF555555u);  // black..white in 4 steps
constexpr int32_t kLight = static_cast<int32_t>(0xFFAAAAAAu);
constexpr int32_t kWhite = -1;
const std::vector<int32_t> kBW = {kBlack, kWhite};

// x = variable 0, y = variable 1, depths = variable 2 (y by x). The 1e6 is the upper left corner
// of a cell, which the sampling never reads.
const char* kPlainCdl = R"(netcdf bathy {
dimensions:
  x = 3 ;
  y = 3 ;
variables:
  double x(x) ;
  double y(y) ;
  float z(y, x) ;
data:
  x = 0, 1, 2 ;
  y = 0, 1, 2 ;
  z = 0, 0, 0, 68, 68, 0, 1000000, 0, 68 ;
}
)";

// A scalar first, then longitude (1), latitude (2) and the elevations over (lat, lon).
const char* kGebcoCdl = R"(netcdf gebco {
dimensions:
  lon = 3 ;
  lat = 3 ;
variables:
  int crs ;
  double lon(lon) ;
  double lat(lat) ;
  short elevation(lat, lon) ;
data:
  crs = 0 ;
  lon = 10, 10.5, 11 ;
  lat = 50, 51, 52 ;
  elevation = -100, -200, -300, -400, -500, -600, -700, -800, -900 ;
}
)";

std::vector<int32_t> colours(const std::vector<uint8_t>& bytes) {
  std::vector<int32_t> out(bytes.size() / 4);
  std::memcpy(out.data(), bytes.data(), out.size() * 4);
  return out;
}

// The gebco raster on 2x2 pixels at x 10.1, 10.6 and y 50.2, 51.2, with p = 0 (all weights 1):
// (v1 + v2 + 2*v3)/4 gives -325, -425 (bottom row) and -625, -725. With scale 4/400 and zmin -8
// the index is value/100 + 8: 4.75 (beyond: entry ncolors-1 = 1), 3.75, 1.75, 0.75.
int32_t paintGebco(const std::string& path, std::vector<uint8_t>& bytes) {
  return miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bytes, 2, 2, 4, 10.1, 11.1, 50.2,
                                                       52.2, -8.0, 392.0, kBW, 0.0);
}
const std::vector<int32_t> kGebcoWant = {kDark, kBlack, kDark, kWhite};

}  // namespace

TEST(miscWrapper, PlainRasterBothForms) {
  thTest::TempDir dir;
  const std::string path = dir.file("bathy.nc");
  thTest::ncgen(kPlainCdl, path);
  // Sampled at (0.25, 0.25) in each cell with p = 2: weights 45 : 9 : 5 : 9, the last on the upper
  // right value, so (45*ll + 9*lr + 14*ur)/68 = 14, 0 (bottom row) and 54, 59 (top row).
  std::vector<uint8_t> bytes(16, 0);
  EXPECT_EQ(miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bytes, 2, 2, 0.25, 2.25, 0.25,
                                                          2.25, {10, 20, 56}, kBW, 2.0),
            0);
  EXPECT_EQ(colours(bytes), (std::vector<int32_t>{kLight, kWhite, kDark, kBlack}));
  // Scale of 3 steps over 0..60: index = value*0.05, so 2.7, 2.95, 0.7, 0.
  const std::vector<int32_t> grey3 = {kBlack, kWhite};
  miscWrapper m;  // the operations are static, an object serves as well
  EXPECT_EQ(m.readNetCdfBathyAndInterpOnBitmap(path, bytes, 2, 2, 3, 0.25, 2.25, 0.25, 2.25, 0.0,
                                               60.0, grey3, 2.0),
            0);
  EXPECT_EQ(colours(bytes), (std::vector<int32_t>{kWhite, kWhite, kBlack, kBlack}));
  // Bytes beyond the picture are left alone; pixels outside the grid are -1.
  std::vector<uint8_t> roomy(4 * 3 + 2, 7);
  miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, roomy, 3, 1, 3, 0.5, 3.5, 0.5, 1.5, 0.0,
                                                60.0, grey3, 2.0);
  EXPECT_EQ(colours(roomy)[2], -1);  // x = 2.5 lies beyond the last cell
  EXPECT_EQ(roomy[12], 7);
  EXPECT_EQ(roomy[13], 7);
}

TEST(miscWrapper, GebcoInThePathSelectsTheOtherAxes) {
  thTest::TempDir dir;
  for (const std::string name : {"GEBCO_2014.nc", "gebco.nc", "my_Gebco_map.NC"}) {
    const std::string path = dir.file(name);
    thTest::ncgen(kGebcoCdl, path);
    std::vector<uint8_t> bytes(16, 0);
    EXPECT_EQ(paintGebco(path, bytes), 0) << name;
    EXPECT_EQ(colours(bytes), kGebcoWant) << name;
  }
  // The whole path counts: a folder of that name selects the same axes.
  ASSERT_EQ(thTest::runCommand("mkdir '" + dir.file("Gebco_tiles") + "'"), 0);
  const std::string inFolder = dir.file("Gebco_tiles/bathy.nc");
  thTest::ncgen(kGebcoCdl, inFolder);
  std::vector<uint8_t> bytes(16, 0);
  paintGebco(inFolder, bytes);
  EXPECT_EQ(colours(bytes), kGebcoWant);
  // Without the word, variables 0 and 1 are the axes: the scalar is no axis.
  const std::string plainName = dir.file("bathy.nc");
  thTest::ncgen(kGebcoCdl, plainName);
  EXPECT_VEXCEPTION(paintGebco(plainName, bytes),
                    "Invalid number of dimenstions for given x or y variable");
  // And a plain raster under a gebco name: variable 2 is the 2-D depth field, no axis.
  const std::string wrongLayout = dir.file("gebco_plain.nc");
  thTest::ncgen(kPlainCdl, wrongLayout);
  EXPECT_VEXCEPTION(paintGebco(wrongLayout, bytes),
                    "Invalid number of dimenstions for given x or y variable");
}

TEST(miscWrapper, BadInput) {
  thTest::TempDir dir;
  const std::string path = dir.file("bathy.nc");
  thTest::ncgen(kPlainCdl, path);
  std::vector<uint8_t> small(15, 0);
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(
                            path, small, 2, 2, 3, 0, 2, 0, 2, 0, 60, kBW, 2.0),
                        "the bitmap of 15 bytes is too small for 2 x 2 pixels, which need 16");
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(
                            path, small, 2, 2, 0, 2, 0, 2, {1, 2}, kBW, 2.0),
                        "too small");
  EXPECT_EQ(small, std::vector<uint8_t>(15, 0));
  std::vector<uint8_t> bytes(16, 0);
  EXPECT_VEXCEPTION(miscWrapper::readNetCdfBathyAndInterpOnBitmap(
                        dir.file("none.nc"), bytes, 2, 2, 3, 0, 2, 0, 2, 0, 60, kBW, 2.0),
                    "No such file: '" + dir.file("none.nc") + "'");
  // Arguments that the painter refuses reach the caller as its VException.
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(
                            path, bytes, 2, -2, 3, 0, 2, 0, 2, 0, 60, kBW, 2.0),
                        "is negative");
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(
                            path, bytes, 2, 2, 1, 0, 2, 0, 2, 0, 60, kBW, 2.0),
                        "at least 2 steps");
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(
                            path, bytes, 2, 2, 3, 0, 2, 0, 2, 0, 60, {kBlack}, 2.0),
                        "at least 2 colours");
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(
                            path, bytes, 2, 2, 3, 0, 2, 0, 2, 5, 5, kBW, 2.0),
                        "is empty");
  EXPECT_VEXCEPTION_HAS(
      miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bytes, 2, 2, 0, 2, 0, 2, {}, kBW, 2.0),
      "at least one break value");
  EXPECT_EQ(bytes, std::vector<uint8_t>(16, 0));
  // An empty bitmap is fine.
  std::vector<uint8_t> none;
  EXPECT_EQ(miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, none, 0, 0, 3, 0, 2, 0, 2, 0, 60,
                                                          kBW, 2.0),
            0);

  // Depths that do not fill the grid, an axis of one value, and a gebco file without depths.
  const std::string shortZ = dir.file("short.nc");
  thTest::ncgen(R"(netcdf s { dimensions: x = 3 ; y = 3 ;
variables: double x(x) ; double y(y) ; float z(x) ;
data: x = 0, 1, 2 ; y = 0, 1, 2 ; z = 1, 2, 3 ; })",
                shortZ);
  EXPECT_VEXCEPTION(miscWrapper::readNetCdfBathyAndInterpOnBitmap(shortZ, bytes, 2, 2, 3, 0, 2, 0,
                                                                  2, 0, 60, kBW, 2.0),
                    "The variable 'z' of file '" + shortZ +
                        "' has 3 values, but its grid of 3 x 3 needs 9.");
  const std::string twoVars = dir.file("two.nc");
  thTest::ncgen(R"(netcdf t { dimensions: x = 3 ; y = 3 ;
variables: double x(x) ; double y(y) ;
data: x = 0, 1, 2 ; y = 0, 1, 2 ; })",
                twoVars);
  EXPECT_VEXCEPTION(miscWrapper::readNetCdfBathyAndInterpOnBitmap(twoVars, bytes, 2, 2, 3, 0, 2,
                                                                  0, 2, 0, 60, kBW, 2.0),
                    "The file '" + twoVars +
                        "' has no variable number 2 to read the bathymetry from.");
  const std::string onePoint = dir.file("one.nc");
  thTest::ncgen(R"(netcdf o { dimensions: x = 1 ; y = 3 ;
variables: double x(x) ; double y(y) ; float z(y, x) ;
data: x = 0 ; y = 0, 1, 2 ; z = 1, 2, 3 ; })",
                onePoint);
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(onePoint, bytes, 2, 2, 3, 0,
                                                                      2, 0, 2, 0, 60, kBW, 2.0),
                        "fewer than two points");
  const std::string noDepth = dir.file("gebco_axes.nc");
  thTest::ncgen(R"(netcdf g { dimensions: lon = 3 ; lat = 3 ;
variables: int crs ; double lon(lon) ; double lat(lat) ; short e(lon, lat) ;
data: crs = 0 ; lon = 0, 1, 2 ; lat = 0, 1, 2 ; })",
                noDepth);
  EXPECT_VEXCEPTION(paintGebco(noDepth, bytes),
                    "The file '" + noDepth +
                        "' has no variable over the dimensions of 'lat' and 'lon' to read the "
                        "bathymetry from.");

  // Files that are not NetCDF at all, empty or cut short fail with the library's message.
  const std::string garbage = dir.file("garbage.nc");
  thTest::writeText(garbage, "this is no raster, just text that goes on for a while.\n");
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(garbage, bytes, 2, 2, 3, 0,
                                                                      2, 0, 2, 0, 60, kBW, 2.0),
                        "NetCDF");
  const std::string empty = dir.file("empty.nc");
  thTest::writeText(empty, "");
  EXPECT_VEXCEPTION_HAS(miscWrapper::readNetCdfBathyAndInterpOnBitmap(empty, bytes, 2, 2, 3, 0, 2,
                                                                      0, 2, 0, 60, kBW, 2.0),
                        "NetCDF");
  const std::string cut = dir.file("cut.nc");
  thTest::ncgen(kPlainCdl, cut);
  thTest::truncateFile(cut, 600);
  bool thrown = false;
  try {
    miscWrapper::readNetCdfBathyAndInterpOnBitmap(cut, bytes, 2, 2, 3, 0, 2, 0, 2, 0, 60, kBW, 2.0);
  } catch (const VCppLib::VException&) {
    thrown = true;
  }
  EXPECT_TRUE(thrown);
}
