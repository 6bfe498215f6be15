#include "support/VGeom.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <memory>
#include <numeric>
#include <tuple>

#include "testutil/thTestUtil.h"

using namespace VCppLib;
using thTest::arr;

namespace {
const double pi = std::acos(-1.0);
}  // namespace

TEST(VGeom, ArrayConversions) {
  float f[3] = {1.5f, -2.25f, 1e-30f};
  std::unique_ptr<double[]> d(floatArr2doubleArr(f, 3)), none(floatArr2doubleArr(f, 0));
  std::unique_ptr<float[]> back(doubleArr2floatArr(d.get(), 3)), noneF(doubleArr2floatArr(nullptr, 0));
  EXPECT_EQ(arr(d.get(), 3), (std::vector<double>{1.5, -2.25, static_cast<double>(1e-30f)}));
  EXPECT_EQ(arr(back.get(), 3), arr(f, 3));
  // No elements: still a new array for the caller to delete; a negative count gives none.
  EXPECT_TRUE(none && noneF && !doubleArr2floatArr(nullptr, 3) && !floatArr2doubleArr(f, -1));
}

TEST(VGeom, PolygonAreaAndPointInPolygon) {
  double x[4] = {0, 1, 1, 0}, y[4] = {0, 0, 1, 1}, tx[3] = {0, 4, 0}, ty[3] = {0, 0, 3};
  // A concave U: the notch between the two arms is outside.
  double ux[8] = {0, 3, 3, 2, 2, 1, 1, 0}, uy[8] = {0, 0, 3, 3, 1, 1, 3, 3};
  // the unit square both ways round, a 4 x 3 right triangle, the U (a 3 x 3 square less its 1 x 2 notch)
  EXPECT_EQ((std::vector<double>{polygonArea(x, y, 4), polygonArea(y, x, 4), polygonArea(tx, ty, 3),
                                 polygonArea(ux, uy, 8), polygonArea(x, y, 0)}),
            (std::vector<double>{1, 1, 6, 7, 0}));
  // Left and lower edges of the square are inside, right and upper edges outside; n = 8 is the U.
  const std::tuple<int32_t, double, double, bool> points[] = {
      {4, 0.5, 0.5, true},  {4, 0.0, 0.5, true},  {4, 1.0, 0.5, false},
      {4, 0.5, 0.0, true},  {4, 0.5, 1.0, false}, {4, 2.0, 0.5, false},
      {0, 0.5, 0.5, false}, {8, 1.5, 2.0, false}, {8, 0.5, 2.0, true}};
  for (auto [n, px, py, in] : points)
    EXPECT_EQ(pointInPolygon(n, n == 8 ? ux : x, n == 8 ? uy : y, px, py), in) << n << " " << px << " " << py;
}

TEST(VGeom, SortPairedAndAroundPoint) {
  // Orders of equal keys worked through by hand: the quicksort's own.
  double k1[3] = {1, 1, 1}, *kp = k1;
  int32_t p1[3] = {0, 1, 2}, k2[4] = {2, 1, 2, 1}, p2[4] = {0, 1, 2, 3}, *ik = k2, *pp = p1, *pp2 = p2;
  sortPaired(kp, pp, 0, 2);
  sortPaired(ik, pp2, 0, 3);
  using V = std::vector<int32_t>;
  EXPECT_EQ((std::vector<V>{arr(p1, 3), arr(k2, 4), arr(p2, 4)}),
            (std::vector<V>{{2, 1, 0}, {1, 1, 2, 2}, {3, 1, 0, 2}}));
  // A larger set, a part of it only: ascending, each payload still with its key, nothing outside moved.
  std::srand(7);
  std::vector<double> keys(1000);
  std::vector<int32_t> pay(1000);
  for (int i = 0; i < 1000; i++) keys[i] = std::rand() % 50, pay[i] = i;
  const std::vector<double> orig = keys;
  kp = keys.data();
  pp = pay.data();
  sortPaired(kp, pp, 100, 999);
  EXPECT_TRUE(std::is_sorted(keys.begin() + 100, keys.end()));
  for (int i = 0; i < 1000; i++) ASSERT_TRUE(keys[i] == orig[pay[i]] && (i >= 100 || pay[i] == i)) << i;
  kp = k1;
  pp = nullptr;  // keys alone
  sortPaired(kp, pp, 0, 2);
  sortPaired(kp, pp, 2, 1);  // an empty range does nothing

  // Around a point: east, south, west, north of the origin.
  double x[4] = {1, 0, -1, 0}, y[4] = {0, -1, 0, 1};
  auto order = thTest::take<int32_t>;
  using V = std::vector<int32_t>;
  EXPECT_EQ(order(sortAroundPoint(x, y, 4, 0.0, 0.0, 90.0, true), 4), (V{3, 0, 1, 2}));  // north, clockwise
  EXPECT_EQ(order(sortAroundPoint(x, y, 4, 0.0, 0.0, 0.0, false), 4), (V{3, 2, 1, 0}));  // ccw past +x
  // Counter-clockwise from north: the point due north comes last, at -0.
  EXPECT_EQ(order(sortAroundPoint(x, y, 4, 0.0, 0.0, 90.0, false), 4), (V{2, 1, 0, 3}));
  // Around the mean: shifting every point keeps the order.
  double xs[4] = {11, 10, 9, 10}, ys[4] = {-5, -6, -5, -4};
  EXPECT_EQ(order(sortAroundPoint(xs, ys, 4, 90.0, true), 4), (V{3, 0, 1, 2}));
  EXPECT_EQ(order(sortAroundPointInPlace(xs, ys, 4, 90.0, true), 4), (V{3, 0, 1, 2}));
  EXPECT_EQ(arr(xs, 4), (std::vector<double>{10, 11, 10, 9}));
  EXPECT_EQ(arr(ys, 4), (std::vector<double>{-4, -5, -6, -5}));
  // A point a little west of north comes last clockwise.
  double wx[2] = {0, -0.001}, wy[2] = {1, 1};
  EXPECT_EQ(order(sortAroundPoint(wx, wy, 2, 0.0, 0.0, 90.0, true), 2), (V{0, 1}));
  // no points: an empty array, not null
  std::unique_ptr<int32_t[]> empty(sortAroundPoint(x, y, 0, 0.0, 0.0, 0.0, true)),
      emptyIn(sortAroundPointInPlace(nullptr, nullptr, 0, 90.0, true));
  EXPECT_TRUE(empty && emptyIn);
  EXPECT_EQ(sortAroundPoint(x, y, -1, 0.0, 0.0, 0.0, true), nullptr);
}

TEST(VGeom, SegmentsAnglesNormalsCentres) {
  double px = 0, py = 0;
  EXPECT_TRUE(intersectSegments(0, 0, 2, 2, 0, 2, 2, 0, px, py, 1e-10) == 0 && px == 1 && py == 1);
  EXPECT_EQ(intersectSegments(0, 0, 2, 0, 1, 0, 3, 0, px, py, 1e-10), -2);  // overlapping, parallel
  EXPECT_EQ(intersectSegments(0, 0, 1, 1, 3, 0, 2, 1, px, py, 1e-10), -1);  // lines cross at (1.5, 1.5)
  EXPECT_TRUE(intersectSegments(0, 0, 1, 1, 1, 1, 2, 0, px, py, 0.0) == 0 && px == 1);  // touching ends count
  // Tolerance: just beyond the end of the first segment (a short one) is accepted only near x1.
  EXPECT_EQ(intersectSegments(0, 0, 1e-5, 1e-5, -1, -5e-11, 1, -5e-11, px, py, 1e-3), 0);
  EXPECT_EQ(intersectSegments(1e-5, 1e-5, 0, 0, -1, -5e-11, 1, -5e-11, px, py, 1e-3), -1);
  float fx = 0, fy = 0;
  EXPECT_TRUE(intersectSegmentsF(0, 0, 2, 2, 0, 2, 2, 0, fx, fy) == 0 && fx == 1 && fy == 1);
  EXPECT_EQ(intersectSegmentsF(0, 0, 1, 0, 0, 1, 1, 1, fx, fy), -2);
  EXPECT_EQ(intersectSegmentsF(0, 0, 1, 1, 3, 0, 2, 1, fx, fy), -1);

  // right, none, straight; at (1, 1) between (2, 0) and (0, 0): right; a segment without length: none
  EXPECT_TRUE(thTest::near(
      {angleBetweenLineSegments(0, 0, 1, 0, 5, 5, 5, 7), angleBetweenLineSegments(0, 0, 1, 1, 0, 0, 3, 3),
       angleBetweenLineSegments(0, 0, 1, 1, 0, 0, -3, -3), angleAtPoint(2, 0, 1, 1, 0, 0)},
      {pi / 2, 0, pi, pi / 2}, 1e-15));
  EXPECT_TRUE(std::isnan(angleBetweenLineSegments(0, 0, 0, 0, 0, 0, 1, 0)));
  // against a reference angle, in degrees and in radians
  EXPECT_TRUE(thTest::near({directionAngle(0, 0, 0, 1, 90, true), directionAngle(0, 0, 1, 0, 90, true),
                            directionAngle(0, 0, 1, 0, pi / 2, false), directionAngle(0, 0, 0, -1, 0, false)},
                           {0, 90, pi / 2, pi / 2}, 1e-12));
  EXPECT_NEAR(directionAngle(0, 0, -1, 0, 90, true), 270.0, 1e-4);  // 180 x 57.29578 is not exactly 180
  EXPECT_EQ((std::vector<int32_t>{sideOfLine(0, 0, 1, 0, 0.5, 1), sideOfLine(0, 0, 1, 0, 0.5, -1),
                                  sideOfLine(0, 0, 1, 0, 2, 0)}),
            (std::vector<int32_t>{1, -1, 0}));
  double a, b, x[3] = {1, 2, 6}, y[3] = {0, 3, 3};
  using P = std::vector<double>;
  using F = std::function<void()>;
  const std::pair<F, P> pairs[] = {
      {[&] { pointOnLine(0, 0, 3, 4, 2.5, a, b, false); }, {1.5, 2.0}},
      {[&] { pointOnLine(0, 0, 3, 4, 0.25, a, b, true); }, {0.75, 1.0}},
      {[&] { unitNormal(0, 0, 2, 0, a, b); }, {0.0, 1.0}},
      {[&] { unitNormal(0, 0, 3, 4, a, b); }, {-0.8, 0.6}},
      {[&] { unitNormal(1, 1, 1, 1, a, b); }, {0.0, 0.0}},
      {[&] { circumcentre(0, 0, 2, 0, 0, 2, a, b); }, {1.0, 1.0}},
      {[&] { circumcentre(0, 0, 4, 0, 1, 3, a, b); }, {2.0, 1.0}},  // bisector x = 2, equal distance: y = 1
      {[&] { meanPoint(x, y, 3, a, b); }, {3.0, 2.0}},
      {[&] { meanPoint(x, y, 0, a, b); }, {0.0, 0.0}}};
  for (size_t i = 0; i < std::size(pairs); i++) {
    pairs[i].first();
    EXPECT_EQ((P{a, b}), pairs[i].second) << i;
  }
  EXPECT_TRUE(xAxisCrossing(1, 1, 3, -1, a) && a == 2.0);
  EXPECT_FALSE(xAxisCrossing(0, 1, 5, 1, a));
  circumcentreF(0, 0, 4, 0, 1, 3, fx, fy);
  EXPECT_EQ(std::vector<float>({fx, fy}), (std::vector<float>{2, 1}));
  double c;
  EXPECT_TRUE(parabola3(0, 1, 1, 2, 2, 5, a, b, c) && (P{a, b, c} == P{1, 0, 1}));  // y = x^2 + 1
  // (x + 1)(x - 3) = x^2 - 2x - 3
  EXPECT_TRUE(parabola3(-1, 0, 3, 0, 1, -4, a, b, c) && (P{a, b, c} == P{1, -2, -3}));
  EXPECT_FALSE(parabola3(1, 0, 1, 1, 2, 2, a, b, c));
}

TEST(VGeom, ResampleLineAndRibbon) {
  double x[3] = {0, 1, 1}, y[3] = {0, 0, 1}, ox[5], oy[5], *px = ox, *py = oy;
  resampleLine(x, y, 3, 2, px, py);  // the two end points
  EXPECT_EQ(std::vector<double>({ox[0], oy[0], ox[1], oy[1]}), (std::vector<double>{0, 0, 1, 1}));
  resampleLine(x, y, 3, 5, px, py);
  EXPECT_EQ(arr(ox, 5), (std::vector<double>{0, 0.5, 1, 1, 1}));
  EXPECT_EQ(arr(oy, 5), (std::vector<double>{0, 0, 0, 0.5, 1}));

  double rx[3] = {0, 1, 2}, ry[3] = {0, 0, 0}, *nx = nullptr, *ny = nullptr;
  int32_t nNodes = -1, nQuads = -1, *quads = nullptr;
  auto release = [&] { delete[] nx, delete[] ny, delete[] quads; };
  lineRibbon(rx, ry, 3, nx, ny, nNodes, nQuads, quads, 2, 1.0);
  ASSERT_TRUE(nNodes == 9 && nQuads == 4);
  // Each point carries a row across the line, from the right side (-1) to the left (+1).
  EXPECT_TRUE(thTest::near(arr(nx, 9), {0, 0, 0, 1, 1, 1, 2, 2, 2}, 1e-15));
  EXPECT_TRUE(thTest::near(arr(ny, 9), {-1, 0, 1, -1, 0, 1, -1, 0, 1}, 1e-15));
  EXPECT_EQ(arr(quads, 16), (std::vector<int32_t>{0, 3, 4, 1, 1, 4, 5, 2, 3, 6, 7, 4, 4, 7, 8, 5}));
  release();
  lineRibbon(rx, ry, 3, nx, ny, nNodes, nQuads, quads, 1, -1.0);  // half the mean segment length
  ASSERT_EQ(nNodes, 6);
  EXPECT_TRUE(thTest::near(arr(ny, 2), {-0.25, 0.25}, 1e-15));
  release();
  lineRibbon(rx, ry, 1, nx, ny, nNodes, nQuads, quads, 1, 1.0);  // one point has no direction
  EXPECT_EQ(nNodes, 0);
  EXPECT_EQ(nx, nullptr);
}

TEST(VGeom, GeodesyIdwCombinationsRandom) {
  const std::tuple<double, double, int32_t> zones[] = {
      {9.5, 45.3, 32},  {147.2, -45.3, -55}, {-180.0, 0.0, 1},      {180.0, 10.0, 1},
      {179.9, 1.0, 60}, {-3.0, 0.0, 30},     {std::nan(""), 0.0, 0}};
  for (auto [lon, lat, zone] : zones) EXPECT_EQ(utmZone(lon, lat), zone) << lon << " " << lat;
  double dLon, dLat;
  metres2Degrees(6378137.0 * 0.01745329, 60.0, dLon, dLat);
  EXPECT_TRUE(thTest::near({dLon, dLat}, {2.0, 1.0}, 1e-5));  // 1 / cos 60
  // A quarter of a meridian and half a turn along the equator: radius times angle.
  EXPECT_TRUE(thTest::near({greatCircleDistance(0, 0, 0, 90), greatCircleDistance(0, 0, 180, 0)},
                           {6378137.0 * 90 * 0.01745329, 6378137.0 * 180 * 0.01745329}, 1e-6));
  EXPECT_EQ(greatCircleDistance(5, 5, 5, 5), 0.0);

  double xs[2] = {0, 2}, ys[2] = {0, 0}, vs[2] = {1, 3};
  double xt[4] = {1, 0, 0.5, 10}, yt[4] = {0, 0, 0, 0}, vt[4];
  idwPointsToPoints(xs, ys, vs, 2, xt, yt, vt, 4);
  EXPECT_TRUE(thTest::near(arr(vt, 3), {2.0, 1.0, 1.2}));  // midway; on a source; weights 4 and 1/2.25
  idwPointsToPoints(xs, ys, vs, 2, xt, yt, vt, 4, 2.0, 3.0);
  EXPECT_EQ(vt[3], -1e-37);  // nothing within reach
  idwPointsToPoints(xs, ys, vs, 0, xt, yt, vt, 1);
  EXPECT_EQ(vt[0], idwMissing);

  using C = std::vector<std::vector<int32_t>>;
  EXPECT_EQ(indexCombinations({2, 3}), (C{{0, 0}, {0, 1}, {0, 2}, {1, 0}, {1, 1}, {1, 2}}));
  EXPECT_EQ(indexCombinations({1}), (C{{0}}));
  EXPECT_TRUE(indexCombinations({}).empty() && indexCombinations({2, 0}).empty());

  std::srand(1);
  std::vector<double> r(2000);
  for (double& v : r) v = randomInRange(2.0, 3.0);
  EXPECT_TRUE(*std::min_element(r.begin(), r.end()) >= 2.0 && *std::max_element(r.begin(), r.end()) < 3.0);
  EXPECT_NEAR(std::accumulate(r.begin(), r.end(), 0.0) / 2000, 2.5, 0.03);
}

// Reference values from PROJ (cs2cs +proj=longlat +datum=WGS84 +to +proj=utm +zone=Z [+south]).
// The series converts degrees with the rounded 0.01745329, which is 1.44e-7 relative below pi/180:
// that moves the northing by up to about a metre at high latitudes (PROJ's two answers below lie
// within 1.2 m of each other). So each point is checked against PROJ fed with the position that the
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

TEST(VGeom, UTMAgainstProj) {
  // PROJ's easting and northing of (lon, lat) come back from UTM2latLon as lon and lat scaled by
  // 57.29578 / (180/pi) = 1 + 8.5e-9 about the central meridian: within 1e-8 degrees (1 mm).
  const double s = 57.29578 / (180.0 / pi);
  for (const UtmRef& r : utmRefs) {
    double x, y, lon, lat, lon0 = std::abs(r.zone) * 6 - 183;
    latLon2UTM(r.lon, r.lat, r.zone, x, y);
    EXPECT_TRUE(thTest::near({x, y}, {r.xEff, r.yEff}, 0.002)) << r.lon << " " << r.lat;
    UTM2latLon(r.x, r.y, r.zone, lon, lat);
    EXPECT_TRUE(thTest::near({lon, lat}, {lon0 + (r.lon - lon0) * s, r.lat * s}, 1e-8)) << r.lon;
  }
  double x, y, x2, y2;
  latLon2UTM(9.0, 0.0, 32, x, y);
  EXPECT_TRUE(thTest::near({x, y}, {500000.0, 0.0}, 1e-9));
  latLon2UTM(9.0, -1e-6, 32, x, y);  // just south: just below the false northing
  EXPECT_TRUE(y < 1e7 && y > 1e7 - 1.0) << y;
  latLon2UTM(369.5, 45.3, 32, x2, y2);  // whole turns are taken off
  latLon2UTM(9.5, 45.3, -32, x, y);     // the zone's sign does not matter here
  EXPECT_TRUE(thTest::near({x2, y2}, {x, y}, 1e-6));
}
