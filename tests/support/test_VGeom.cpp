#include "support/VGeom.h"

#include <cmath>
#include <cstdlib>
#include <memory>

#include "testutil/thTestUtil.h"

using namespace VCppLib;

namespace {
const double pi = std::acos(-1.0);
template <typename T>
std::vector<T> vec(const T* a, int n) { return std::vector<T>(a, a + n); }
}  // namespace

TEST(VGeom, ArrayConversions) {
  float f[3] = {1.5f, -2.25f, 1e-30f};
  std::unique_ptr<double[]> d(floatArr2doubleArr(f, 3));
  EXPECT_EQ(d[0], 1.5);
  EXPECT_EQ(d[1], -2.25);
  EXPECT_EQ(d[2], static_cast<double>(1e-30f));
  std::unique_ptr<float[]> back(doubleArr2floatArr(d.get(), 3));
  EXPECT_EQ(vec(back.get(), 3), vec(f, 3));
  // no elements: still a new array for the caller to delete
  std::unique_ptr<double[]> none(floatArr2doubleArr(f, 0));
  EXPECT_NE(none, nullptr);
  std::unique_ptr<float[]> noneF(doubleArr2floatArr(nullptr, 0));
  EXPECT_NE(noneF, nullptr);
  EXPECT_EQ(doubleArr2floatArr(nullptr, 3), nullptr);
  EXPECT_EQ(floatArr2doubleArr(f, -1), nullptr);
}

TEST(VGeom, PolygonAreaAndPointInPolygon) {
  double x[4] = {0, 1, 1, 0}, y[4] = {0, 0, 1, 1};
  double xr[4] = {0, 0, 1, 1}, yr[4] = {0, 1, 1, 0};
  EXPECT_DOUBLE_EQ(polygonArea(x, y, 4), 1.0);
  EXPECT_DOUBLE_EQ(polygonArea(xr, yr, 4), 1.0);
  double tx[3] = {0, 4, 0}, ty[3] = {0, 0, 3};
  EXPECT_DOUBLE_EQ(polygonArea(tx, ty, 3), 6.0);
  EXPECT_EQ(polygonArea(x, y, 0), 0.0);
  EXPECT_TRUE(pointInPolygon(4, x, y, 0.5, 0.5));
  EXPECT_TRUE(pointInPolygon(4, x, y, 0.0, 0.5));   // left edge: inside
  EXPECT_FALSE(pointInPolygon(4, x, y, 1.0, 0.5));  // right edge: outside
  EXPECT_TRUE(pointInPolygon(4, x, y, 0.5, 0.0));   // lower edge: inside
  EXPECT_FALSE(pointInPolygon(4, x, y, 0.5, 1.0));  // upper edge: outside
  EXPECT_FALSE(pointInPolygon(4, x, y, 2.0, 0.5));
  EXPECT_FALSE(pointInPolygon(0, x, y, 0.5, 0.5));
  // A concave polygon: the notch between the two arms is outside.
  double ux[8] = {0, 3, 3, 2, 2, 1, 1, 0}, uy[8] = {0, 0, 3, 3, 1, 1, 3, 3};
  EXPECT_FALSE(pointInPolygon(8, ux, uy, 1.5, 2.0));
  EXPECT_TRUE(pointInPolygon(8, ux, uy, 0.5, 2.0));
  EXPECT_DOUBLE_EQ(polygonArea(ux, uy, 8), 7.0);
}

TEST(VGeom, SortPairedKeepsTheQuicksortOrderOfEqualKeys) {
  double k1[3] = {1, 1, 1};
  int32_t p1[3] = {0, 1, 2};
  double* kp = k1;
  int32_t* pp = p1;
  sortPaired(kp, pp, 0, 2);
  EXPECT_EQ(vec(p1, 3), (std::vector<int32_t>{2, 1, 0}));  // worked through by hand
  int32_t k2[4] = {2, 1, 2, 1}, p2[4] = {0, 1, 2, 3};
  int32_t* ik = k2;
  pp = p2;
  sortPaired(ik, pp, 0, 3);
  EXPECT_EQ(vec(k2, 4), (std::vector<int32_t>{1, 1, 2, 2}));
  EXPECT_EQ(vec(p2, 4), (std::vector<int32_t>{3, 1, 0, 2}));
  // A larger set: ascending, each payload still with its key; a part of the array only.
  std::srand(7);
  const int n = 1000;
  std::vector<double> keys(n), orig;
  std::vector<int32_t> pay(n);
  for (int i = 0; i < n; i++) {
    keys[i] = std::rand() % 50;
    pay[i] = i;
  }
  orig = keys;
  kp = keys.data();
  pp = pay.data();
  sortPaired(kp, pp, 100, n - 1);
  for (int i = 0; i < 100; i++) EXPECT_EQ(pay[i], i);
  for (int i = 100; i < n; i++) {
    EXPECT_EQ(keys[i], orig[pay[i]]);
    if (i > 100) {
      EXPECT_LE(keys[i - 1], keys[i]);
    }
  }
  kp = k1;
  pp = nullptr;  // keys alone
  sortPaired(kp, pp, 0, 2);
  sortPaired(kp, pp, 2, 1);  // an empty range does nothing
}

TEST(VGeom, SortAroundPoint) {
  // East, south, west, north of the origin.
  double x[4] = {1, 0, -1, 0}, y[4] = {0, -1, 0, 1};
  std::unique_ptr<int32_t[]> o(sortAroundPoint(x, y, 4, 0.0, 0.0, 90.0, true));
  EXPECT_EQ(vec(o.get(), 4), (std::vector<int32_t>{3, 0, 1, 2}));  // north first, then clockwise
  o.reset(sortAroundPoint(x, y, 4, 0.0, 0.0, 0.0, false));
  EXPECT_EQ(vec(o.get(), 4), (std::vector<int32_t>{3, 2, 1, 0}));  // counter-clockwise past +x
  // Around the mean: shifting every point keeps the order.
  double xs[4], ys[4];
  for (int i = 0; i < 4; i++) {
    xs[i] = x[i] + 10;
    ys[i] = y[i] - 5;
  }
  o.reset(sortAroundPoint(xs, ys, 4, 90.0, true));
  EXPECT_EQ(vec(o.get(), 4), (std::vector<int32_t>{3, 0, 1, 2}));
  o.reset(sortAroundPointInPlace(xs, ys, 4, 90.0, true));
  EXPECT_EQ(vec(xs, 4), (std::vector<double>{10, 11, 10, 9}));
  EXPECT_EQ(vec(ys, 4), (std::vector<double>{-4, -5, -6, -5}));
  // Counter-clockwise from north: the point due north comes last, at -0 (west, south, east, north).
  o.reset(sortAroundPoint(x, y, 4, 0.0, 0.0, 90.0, false));
  EXPECT_EQ(vec(o.get(), 4), (std::vector<int32_t>{2, 1, 0, 3}));
  // A point a little west of north comes last clockwise.
  double wx[2] = {0, -0.001}, wy[2] = {1, 1};
  o.reset(sortAroundPoint(wx, wy, 2, 0.0, 0.0, 90.0, true));
  EXPECT_EQ(vec(o.get(), 2), (std::vector<int32_t>{0, 1}));
  o.reset(sortAroundPoint(x, y, 0, 0.0, 0.0, 0.0, true));  // an empty array, not null
  EXPECT_NE(o, nullptr);
  o.reset(sortAroundPointInPlace(nullptr, nullptr, 0, 90.0, true));
  EXPECT_NE(o, nullptr);
  EXPECT_EQ(sortAroundPoint(x, y, -1, 0.0, 0.0, 0.0, true), nullptr);
}

TEST(VGeom, IntersectSegments) {
  double px = 0, py = 0;
  EXPECT_EQ(intersectSegments(0, 0, 2, 2, 0, 2, 2, 0, px, py, 1e-10), 0);
  EXPECT_DOUBLE_EQ(px, 1.0);
  EXPECT_DOUBLE_EQ(py, 1.0);
  EXPECT_EQ(intersectSegments(0, 0, 2, 0, 1, 0, 3, 0, px, py, 1e-10), -2);  // overlapping, parallel
  EXPECT_EQ(intersectSegments(0, 0, 1, 1, 3, 0, 2, 1, px, py, 1e-10), -1);  // lines cross at (1.5, 1.5)
  EXPECT_EQ(intersectSegments(0, 0, 1, 1, 1, 1, 2, 0, px, py, 0.0), 0);     // touching ends count
  EXPECT_DOUBLE_EQ(px, 1.0);
  // Tolerance: just beyond the end of the first segment (a short one) is accepted only near x1.
  EXPECT_EQ(intersectSegments(0, 0, 1e-5, 1e-5, -1, -5e-11, 1, -5e-11, px, py, 1e-3), 0);
  EXPECT_EQ(intersectSegments(1e-5, 1e-5, 0, 0, -1, -5e-11, 1, -5e-11, px, py, 1e-3), -1);
  float fx = 0, fy = 0;
  EXPECT_EQ(intersectSegmentsF(0, 0, 2, 2, 0, 2, 2, 0, fx, fy), 0);
  EXPECT_FLOAT_EQ(fx, 1.0f);
  EXPECT_FLOAT_EQ(fy, 1.0f);
  EXPECT_EQ(intersectSegmentsF(0, 0, 1, 0, 0, 1, 1, 1, fx, fy), -2);
  EXPECT_EQ(intersectSegmentsF(0, 0, 1, 1, 3, 0, 2, 1, fx, fy), -1);
}

TEST(VGeom, AnglesPointsOnLinesAndNormals) {
  EXPECT_DOUBLE_EQ(angleBetweenLineSegments(0, 0, 1, 0, 5, 5, 5, 7), pi / 2);
  EXPECT_DOUBLE_EQ(angleBetweenLineSegments(0, 0, 1, 1, 0, 0, 3, 3), 0.0);
  EXPECT_DOUBLE_EQ(angleBetweenLineSegments(0, 0, 1, 1, 0, 0, -3, -3), pi);
  EXPECT_TRUE(std::isnan(angleBetweenLineSegments(0, 0, 0, 0, 0, 0, 1, 0)));
  EXPECT_DOUBLE_EQ(angleAtPoint(1, 0, 0, 0, 0, 1), pi / 2);
  EXPECT_NEAR(angleAtPoint(2, 0, 1, 1, 0, 0), pi / 2, 1e-15);
  double ox, oy;
  pointOnLine(0, 0, 3, 4, 2.5, ox, oy, false);
  EXPECT_DOUBLE_EQ(ox, 1.5);
  EXPECT_DOUBLE_EQ(oy, 2.0);
  pointOnLine(0, 0, 3, 4, 0.25, ox, oy, true);
  EXPECT_DOUBLE_EQ(ox, 0.75);
  EXPECT_DOUBLE_EQ(oy, 1.0);
  double x = 0;
  EXPECT_TRUE(xAxisCrossing(1, 1, 3, -1, x));
  EXPECT_DOUBLE_EQ(x, 2.0);
  EXPECT_FALSE(xAxisCrossing(0, 1, 5, 1, x));
  EXPECT_EQ(sideOfLine(0, 0, 1, 0, 0.5, 1), 1);
  EXPECT_EQ(sideOfLine(0, 0, 1, 0, 0.5, -1), -1);
  EXPECT_EQ(sideOfLine(0, 0, 1, 0, 2, 0), 0);
  EXPECT_DOUBLE_EQ(directionAngle(0, 0, 0, 1, 90, true), 0.0);
  EXPECT_NEAR(directionAngle(0, 0, 1, 0, 90, true), 90.0, 1e-12);
  EXPECT_NEAR(directionAngle(0, 0, -1, 0, 90, true), 270.0, 1e-4);  // 180 x 57.29578 is not exactly 180
  EXPECT_NEAR(directionAngle(0, 0, 1, 0, pi / 2, false), pi / 2, 1e-12);
  EXPECT_NEAR(directionAngle(0, 0, 0, -1, 0, false), pi / 2, 1e-12);
  double nx, ny;
  unitNormal(0, 0, 2, 0, nx, ny);
  EXPECT_DOUBLE_EQ(nx, 0.0);
  EXPECT_DOUBLE_EQ(ny, 1.0);
  unitNormal(0, 0, 3, 4, nx, ny);
  EXPECT_DOUBLE_EQ(nx, -0.8);
  EXPECT_DOUBLE_EQ(ny, 0.6);
  unitNormal(1, 1, 1, 1, nx, ny);
  EXPECT_EQ(nx, 0.0);
  EXPECT_EQ(ny, 0.0);
}

TEST(VGeom, CircumcentreParabolaMeanRandom) {
  double cx, cy;
  circumcentre(0, 0, 2, 0, 0, 2, cx, cy);
  EXPECT_DOUBLE_EQ(cx, 1.0);
  EXPECT_DOUBLE_EQ(cy, 1.0);
  circumcentre(0, 0, 4, 0, 1, 3, cx, cy);  // bisector x = 2, equal distance gives y = 1
  EXPECT_DOUBLE_EQ(cx, 2.0);
  EXPECT_DOUBLE_EQ(cy, 1.0);
  float fx, fy;
  circumcentreF(0, 0, 4, 0, 1, 3, fx, fy);
  EXPECT_FLOAT_EQ(fx, 2.0f);
  EXPECT_FLOAT_EQ(fy, 1.0f);
  double a, b, c;
  EXPECT_TRUE(parabola3(0, 1, 1, 2, 2, 5, a, b, c));  // y = x^2 + 1
  EXPECT_DOUBLE_EQ(a, 1.0);
  EXPECT_DOUBLE_EQ(b, 0.0);
  EXPECT_DOUBLE_EQ(c, 1.0);
  EXPECT_TRUE(parabola3(-1, 0, 3, 0, 1, -4, a, b, c));  // (x+1)(x-3) = x^2 - 2x - 3
  EXPECT_DOUBLE_EQ(a, 1.0);
  EXPECT_DOUBLE_EQ(b, -2.0);
  EXPECT_DOUBLE_EQ(c, -3.0);
  EXPECT_FALSE(parabola3(1, 0, 1, 1, 2, 2, a, b, c));
  double x[3] = {1, 2, 6}, y[3] = {0, 3, 3}, mx, my;
  meanPoint(x, y, 3, mx, my);
  EXPECT_DOUBLE_EQ(mx, 3.0);
  EXPECT_DOUBLE_EQ(my, 2.0);
  meanPoint(x, y, 0, mx, my);
  EXPECT_EQ(mx, 0.0);
  std::srand(1);
  double sum = 0;
  for (int i = 0; i < 2000; i++) {
    double r = randomInRange(2.0, 3.0);
    EXPECT_GE(r, 2.0);
    EXPECT_LT(r, 3.0);
    sum += r;
  }
  EXPECT_NEAR(sum / 2000, 2.5, 0.03);
}

TEST(VGeom, ResampleLineAndRibbon) {
  double x[3] = {0, 1, 1}, y[3] = {0, 0, 1};
  double ox[5], oy[5];
  double* px = ox;
  double* py = oy;
  resampleLine(x, y, 3, 2, px, py);
  EXPECT_EQ(ox[0], 0.0);
  EXPECT_EQ(oy[0], 0.0);
  EXPECT_EQ(ox[1], 1.0);
  EXPECT_EQ(oy[1], 1.0);
  resampleLine(x, y, 3, 5, px, py);
  EXPECT_EQ(vec(ox, 5), (std::vector<double>{0, 0.5, 1, 1, 1}));
  EXPECT_EQ(vec(oy, 5), (std::vector<double>{0, 0, 0, 0.5, 1}));

  double rx[3] = {0, 1, 2}, ry[3] = {0, 0, 0};
  double *nx = nullptr, *ny = nullptr;
  int32_t nNodes = -1, nQuads = -1;
  int32_t* quads = nullptr;
  lineRibbon(rx, ry, 3, nx, ny, nNodes, nQuads, quads, 2, 1.0);
  ASSERT_EQ(nNodes, 9);
  ASSERT_EQ(nQuads, 4);
  // Each point carries a row across the line, from the right side (-1) to the left (+1).
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      EXPECT_NEAR(nx[i * 3 + j], i, 1e-15);
      EXPECT_NEAR(ny[i * 3 + j], j - 1.0, 1e-15);
    }
  }
  EXPECT_EQ(vec(quads, 16), (std::vector<int32_t>{0, 3, 4, 1, 1, 4, 5, 2, 3, 6, 7, 4, 4, 7, 8, 5}));
  delete[] nx;
  delete[] ny;
  delete[] quads;
  lineRibbon(rx, ry, 3, nx, ny, nNodes, nQuads, quads, 1, -1.0);  // half the mean segment length
  ASSERT_EQ(nNodes, 6);
  EXPECT_NEAR(ny[0], -0.25, 1e-15);
  EXPECT_NEAR(ny[1], 0.25, 1e-15);
  delete[] nx;
  delete[] ny;
  delete[] quads;
  lineRibbon(rx, ry, 1, nx, ny, nNodes, nQuads, quads, 1, 1.0);  // one point has no direction
  EXPECT_EQ(nNodes, 0);
  EXPECT_EQ(nx, nullptr);
}

TEST(VGeom, GeodesyHelpers) {
  EXPECT_EQ(utmZone(9.5, 45.3), 32);
  EXPECT_EQ(utmZone(147.2, -45.3), -55);
  EXPECT_EQ(utmZone(-180.0, 0.0), 1);
  EXPECT_EQ(utmZone(180.0, 10.0), 1);
  EXPECT_EQ(utmZone(179.9, 1.0), 60);
  EXPECT_EQ(utmZone(-3.0, 0.0), 30);
  EXPECT_EQ(utmZone(std::nan(""), 0.0), 0);
  double dLon, dLat;
  metres2Degrees(6378137.0 * 0.01745329, 60.0, dLon, dLat);
  EXPECT_NEAR(dLat, 1.0, 1e-12);
  EXPECT_NEAR(dLon, 2.0, 1e-5);  // 1 / cos 60
  // A quarter of a meridian and one degree along the equator: radius times angle.
  EXPECT_NEAR(greatCircleDistance(0, 0, 0, 90), 6378137.0 * 90 * 0.01745329, 1e-6);
  EXPECT_NEAR(greatCircleDistance(10, 0, 11, 0), 6378137.0 * 0.01745329, 1e-6);
  EXPECT_NEAR(greatCircleDistance(0, 0, 180, 0), 6378137.0 * 180 * 0.01745329, 1e-6);
  EXPECT_EQ(greatCircleDistance(5, 5, 5, 5), 0.0);
}

TEST(VGeom, InverseDistanceWeighting) {
  double xs[2] = {0, 2}, ys[2] = {0, 0}, vs[2] = {1, 3};
  double xt[4] = {1, 0, 0.5, 10}, yt[4] = {0, 0, 0, 0}, vt[4];
  idwPointsToPoints(xs, ys, vs, 2, xt, yt, vt, 4);
  EXPECT_DOUBLE_EQ(vt[0], 2.0);
  EXPECT_DOUBLE_EQ(vt[1], 1.0);  // on a source
  EXPECT_NEAR(vt[2], 1.2, 1e-12);  // weights 4 and 1/2.25
  idwPointsToPoints(xs, ys, vs, 2, xt, yt, vt, 4, 2.0, 3.0);
  EXPECT_EQ(vt[3], -1e-37);  // nothing within reach
  idwPointsToPoints(xs, ys, vs, 0, xt, yt, vt, 1);
  EXPECT_EQ(vt[0], idwMissing);
}

TEST(VGeom, IndexCombinations) {
  using C = std::vector<std::vector<int32_t>>;
  EXPECT_EQ(indexCombinations({2, 3}), (C{{0, 0}, {0, 1}, {0, 2}, {1, 0}, {1, 1}, {1, 2}}));
  EXPECT_EQ(indexCombinations({1}), (C{{0}}));
  EXPECT_EQ(indexCombinations({}), C{});
  EXPECT_EQ(indexCombinations({2, 0}), C{});
  EXPECT_EQ(indexCombinations({2, 2, 2}).size(), 8u);
}

// Reference values from PROJ (cs2cs +proj=longlat +datum=WGS84 +to +proj=utm +zone=Z [+south]).
// The series converts degrees with the rounded 0.01745329, which is 1.44e-7 relative below pi/180:
// that moves the northing by up to about a metre at high latitudes. So each point is checked twice:
// against PROJ at the same position (within 1.2 m), and against PROJ fed with the position that the
// rounded constant makes of it, lat x r and lon0 + (lon - lon0) x r with r = 0.01745329 / (pi/180),
// where the series itself must agree within 2 mm (it does to 1 mm even 3 degrees off the central
// meridian and at 70 degrees south).
struct UtmRef {
  double lon, lat;
  int32_t zone;
  double x, y;        // PROJ at (lon, lat)
  double xEff, yEff;  // PROJ at the rounded-constant position
};

static const UtmRef utmRefs[] = {
    {9.5, 45.3, 32, 539201.4559, 5016399.0595, 539201.4548, 5016398.3329},
    {9.0, 45.0, 32, 500000.0000, 4982950.4002, 500000.0000, 4982949.6785},
    {12.0, 60.0, 32, 667294.8211, 6655205.4836, 667294.8407, 6655204.5184},
    {6.2, 52.1, 32, 308225.7654, 5775859.4804, 308225.7608, 5775858.6429},
    {-3.0, 10.0, 30, 500000.0000, 1105412.4913, 500000.0000, 1105412.3317},
    {147.2, -45.3, -55, 515680.5838, 4983703.0703, 515680.5834, 4983703.7969},
    {150.0, -33.9, -56, 222584.0165, 6244878.7571, 222584.0407, 6244879.3012},
    {9.0, -0.001, -32, 500000.0000, 9999889.4700, 500000.0000, 9999889.4700},
    {-70.5, -70.0, -19, 442748.1100, 2233422.5853, 442748.0905, 2233423.7122},
};

TEST(VGeom, LatLon2UTMAgainstProj) {
  for (const UtmRef& r : utmRefs) {
    double x, y;
    latLon2UTM(r.lon, r.lat, r.zone, x, y);
    EXPECT_NEAR(x, r.xEff, 0.002) << r.lon << " " << r.lat;
    EXPECT_NEAR(y, r.yEff, 0.002) << r.lon << " " << r.lat;
    EXPECT_NEAR(x, r.x, 1.2) << r.lon << " " << r.lat;
    EXPECT_NEAR(y, r.y, 1.2) << r.lon << " " << r.lat;
  }
  double x, y;
  latLon2UTM(9.0, 0.0, 32, x, y);
  EXPECT_NEAR(x, 500000.0, 1e-9);
  EXPECT_NEAR(y, 0.0, 1e-9);
  latLon2UTM(9.0, -1e-6, 32, x, y);  // just south: just below the false northing
  EXPECT_LT(y, 1e7);
  EXPECT_GT(y, 1e7 - 1.0);
  double x2, y2;
  latLon2UTM(369.5, 45.3, 32, x2, y2);  // whole turns are taken off
  latLon2UTM(9.5, 45.3, -32, x, y);     // the zone's sign does not matter here
  EXPECT_NEAR(x2, x, 1e-6);
  EXPECT_NEAR(y2, y, 1e-6);
}

TEST(VGeom, UTM2LatLonAgainstProj) {
  // PROJ's easting and northing of (lon, lat) come back as lon and lat scaled by
  // 57.29578 / (180/pi) = 1 + 8.5e-9 about the central meridian: within 1e-8 degrees (1 mm).
  const double s = 57.29578 / (180.0 / std::acos(-1.0));
  for (const UtmRef& r : utmRefs) {
    double lon, lat;
    UTM2latLon(r.x, r.y, r.zone, lon, lat);
    double lon0 = std::abs(r.zone) * 6 - 183;
    EXPECT_NEAR(lat, r.lat * s, 1e-8) << r.lon << " " << r.lat;
    EXPECT_NEAR(lon, lon0 + (r.lon - lon0) * s, 1e-8) << r.lon << " " << r.lat;
  }
  // There and back again loses the product of the two rounded constants, 1.4e-7 relative.
  double x, y, lon, lat;
  latLon2UTM(9.5, 45.3, 32, x, y);
  UTM2latLon(x, y, 32, lon, lat);
  EXPECT_NEAR(lat, 45.3 * 0.01745329 * 57.29578, 1e-8);
  EXPECT_NEAR(lon, 9.0 + 0.5 * 0.01745329 * 57.29578, 1e-8);
}
