#include "support/VGeom.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numbers>
#include <utility>

namespace VCppLib {

// No elements still make a new (empty) array, as the caller expects an array to delete.
double* floatArr2doubleArr(const float* a, int32_t n) {
  if (n < 0 || (a == nullptr && n > 0)) return nullptr;
  double* out = new double[n];
  for (int32_t i = 0; i < n; i++) out[i] = a[i];
  return out;
}

float* doubleArr2floatArr(const double* a, int32_t n) {
  if (n < 0 || (a == nullptr && n > 0)) return nullptr;
  float* out = new float[n];
  for (int32_t i = 0; i < n; i++) out[i] = static_cast<float>(a[i]);
  return out;
}

double polygonArea(const double* x, const double* y, int32_t n) {
  if (n < 1) return 0.0;
  double sum = 0.0;
  for (int32_t i = 0; i < n; i++) {
    int32_t j = (i + 1 == n) ? 0 : i + 1;
    sum += (y[i] - y[j]) * (x[j] + x[i]);
  }
  return 0.5 * std::fabs(sum);
}

bool pointInPolygon(int32_t n, const double* x, const double* y, double px, double py) {
  bool inside = false;
  for (int32_t i = 0, j = n - 1; i < n; j = i++) {
    // The division is safe: the two y lie on different sides of py, so they differ.
    if ((y[i] > py) != (y[j] > py) && (x[j] - x[i]) * (py - y[i]) / (y[j] - y[i]) + x[i] > px) {
      inside = !inside;
    }
  }
  return inside;
}

// Recursion on the left part, a loop on the right part, so the stack grows only with the left parts.
template <typename K>
static void quickSortPaired(K* keys, int32_t* payload, int32_t lo, int32_t hi) {
  while (lo < hi) {
    const K pivot = keys[(static_cast<int64_t>(lo) + hi) / 2];
    int32_t i = lo, j = hi;
    while (i <= j) {
      while (keys[i] < pivot) i++;
      while (keys[j] > pivot) j--;
      if (i <= j) {
        std::swap(keys[i], keys[j]);
        if (payload != nullptr) std::swap(payload[i], payload[j]);
        i++;
        j--;
      }
    }
    if (lo < j) quickSortPaired(keys, payload, lo, j);
    lo = i;
  }
}

void sortPaired(double*& keys, int32_t*& payload, int32_t lo, int32_t hi) {
  if (keys != nullptr && lo >= 0) quickSortPaired(keys, payload, lo, hi);
}

void sortPaired(int32_t*& keys, int32_t*& payload, int32_t lo, int32_t hi) {
  if (keys != nullptr && lo >= 0) quickSortPaired(keys, payload, lo, hi);
}

// True when the direction (dx, dy) is the reference direction itself (degrees). The rounded
// rad2deg is a little too large, so such a point would come out just below 360 instead of at 0,
// and a point due north with refAngle 90 would sort last instead of first.
static bool atReference(double dx, double dy, double refAngle) {
  return std::fabs(std::remainder(refAngle - std::atan2(dy, dx) * (180.0 / std::numbers::pi), 360.0)) < 1e-12;
}

int32_t* sortAroundPoint(const double* x, const double* y, int32_t n, double cx, double cy, double refAngle,
                         bool clockwise) {
  if (n < 0) return nullptr;
  if (n == 0) return new int32_t[0];
  double* keys = new double[n];
  int32_t* order = new int32_t[n];
  for (int32_t i = 0; i < n; i++) {
    double a = refAngle - std::atan2(y[i] - cy, x[i] - cx) * rad2deg;
    if (a < 0) a += 360.0;
    if (a >= 360.0) a -= 360.0;
    if (atReference(x[i] - cx, y[i] - cy, refAngle)) a = 0.0;
    keys[i] = clockwise ? a : -a;
    order[i] = i;
  }
  sortPaired(keys, order, 0, n - 1);
  delete[] keys;
  return order;
}

int32_t* sortAroundPoint(const double* x, const double* y, int32_t n, double refAngle, bool clockwise) {
  double cx, cy;
  meanPoint(x, y, n, cx, cy);
  return sortAroundPoint(x, y, n, cx, cy, refAngle, clockwise);
}

int32_t* sortAroundPointInPlace(double* x, double* y, int32_t n, double cx, double cy, double refAngle,
                                bool clockwise) {
  int32_t* order = sortAroundPoint(x, y, n, cx, cy, refAngle, clockwise);
  if (order == nullptr) return nullptr;
  std::vector<double> ox(x, x + n), oy(y, y + n);
  for (int32_t i = 0; i < n; i++) {
    x[i] = ox[order[i]];
    y[i] = oy[order[i]];
  }
  return order;
}

int32_t* sortAroundPointInPlace(double* x, double* y, int32_t n, double refAngle, bool clockwise) {
  double cx, cy;
  meanPoint(x, y, n, cx, cy);
  return sortAroundPointInPlace(x, y, n, cx, cy, refAngle, clockwise);
}

static bool between(double v, double a, double b) { return std::min(a, b) <= v && v <= std::max(a, b); }

int32_t intersectSegments(double x1, double y1, double x2, double y2, double x3, double y3, double x4,
                          double y4, double& px, double& py, double tol) {
  double den = (y3 - y4) * (x1 - x2) - (x3 - x4) * (y1 - y2);
  if (den == 0.0) return -2;
  double a = x1 * y2 - y1 * x2, b = x3 * y4 - y3 * x4;
  px = (a * (x3 - x4) - b * (x1 - x2)) / den;
  py = (a * (y3 - y4) - b * (y1 - y2)) / den;
  // The first segment's x test is asymmetric (fixed 1e-10 at x1, tol at x2): callers rely on it.
  if (!between(px, x1, x2) && !(std::fabs(px - x1) < 1e-10 && std::fabs(px - x2) <= tol)) return -1;
  if (!between(px, x3, x4) && !(std::fabs(px - x3) <= tol && std::fabs(px - x4) <= tol)) return -1;
  if (!between(py, y1, y2) && !(std::fabs(py - y1) <= tol && std::fabs(py - y2) <= tol)) return -1;
  if (!between(py, y3, y4) && !(std::fabs(py - y3) <= tol && std::fabs(py - y4) <= tol)) return -1;
  return 0;
}

static bool betweenF(float v, float a, float b) { return std::min(a, b) <= v && v <= std::max(a, b); }

int32_t intersectSegmentsF(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4,
                           float& px, float& py) {
  float den = (y3 - y4) * (x1 - x2) - (x3 - x4) * (y1 - y2);
  if (den == 0.0f) return -2;
  float a = x1 * y2 - y1 * x2, b = x3 * y4 - y3 * x4;
  px = (a * (x3 - x4) - b * (x1 - x2)) / den;
  py = (a * (y3 - y4) - b * (y1 - y2)) / den;
  if (!betweenF(px, x1, x2) || !betweenF(px, x3, x4) || !betweenF(py, y1, y2) || !betweenF(py, y3, y4)) {
    return -1;
  }
  return 0;
}

double angleBetweenLineSegments(double ax1, double ay1, double ax2, double ay2, double bx1, double by1,
                                double bx2, double by2) {
  double ux = ax2 - ax1, uy = ay2 - ay1, vx = bx2 - bx1, vy = by2 - by1;
  double c = (ux * vx + uy * vy) / (std::sqrt(ux * ux + uy * uy) * std::sqrt(vx * vx + vy * vy));
  // Rounding can put the cosine of (anti)parallel segments just beyond 1; acos would give NaN.
  if (c > 1.0) c = 1.0;
  if (c < -1.0) c = -1.0;
  return std::acos(c);
}

double angleAtPoint(double ax, double ay, double px, double py, double bx, double by) {
  return angleBetweenLineSegments(px, py, ax, ay, px, py, bx, by);
}

void pointOnLine(double x0, double y0, double x1, double y1, double d, double& ox, double& oy,
                 bool isFraction) {
  double f = isFraction ? d : d / std::sqrt((x1 - x0) * (x1 - x0) + (y1 - y0) * (y1 - y0));
  ox = (1 - f) * x0 + f * x1;
  oy = (1 - f) * y0 + f * y1;
}

void resampleLine(const double* x, const double* y, int32_t n, int32_t m, double*& ox, double*& oy) {
  if (n < 1 || m < 1 || ox == nullptr || oy == nullptr) return;
  std::vector<double> cum(n, 0.0);  // length along the line at each input point
  for (int32_t i = 1; i < n; i++) cum[i] = cum[i - 1] + std::hypot(x[i] - x[i - 1], y[i] - y[i - 1]);
  ox[0] = x[0];
  oy[0] = y[0];
  if (m == 1) return;
  double step = cum[n - 1] / (m - 1);
  int32_t s = 1;  // the segment from point s-1 to point s
  for (int32_t k = 1; k < m; k++) {
    double target = k * step;
    while (s < n && cum[s] < target) s++;
    if (s >= n) {  // rounding left the last target just beyond the end
      ox[k] = x[n - 1];
      oy[k] = y[n - 1];
      continue;
    }
    double segLen = cum[s] - cum[s - 1];
    double f = segLen > 0 ? (target - cum[s - 1]) / segLen : 0.0;
    ox[k] = x[s - 1] + f * (x[s] - x[s - 1]);
    oy[k] = y[s - 1] + f * (y[s] - y[s - 1]);
  }
}

void lineRibbon(const double* x, const double* y, int32_t n, double*& ox, double*& oy, int32_t& nNodes,
                int32_t& nQuads, int32_t*& quads, int32_t across, double dist) {
  ox = oy = nullptr;
  quads = nullptr;
  nNodes = nQuads = 0;
  // A single point has no direction; counts beyond 32 bits cannot be indexed.
  if (n < 2 || across < 0) return;
  int64_t nodes64 = (static_cast<int64_t>(across) + 1) * n;
  int64_t quads64 = static_cast<int64_t>(n - 1) * across;
  if (nodes64 > std::numeric_limits<int32_t>::max() || quads64 * 4 > std::numeric_limits<int32_t>::max())
    return;
  if (dist < 0) {
    double sum = 0.0;
    for (int32_t i = 1; i < n; i++) sum += std::hypot(x[i] - x[i - 1], y[i] - y[i - 1]);
    dist = sum * 0.5 / (n - 1);
  }
  nNodes = static_cast<int32_t>(nodes64);
  nQuads = static_cast<int32_t>(quads64);
  ox = new double[nNodes];
  oy = new double[nNodes];
  quads = new int32_t[4 * static_cast<int64_t>(nQuads)];
  for (int32_t i = 0; i < n; i++) {
    int32_t prev = i == 0 ? 0 : i - 1, next = i == n - 1 ? n - 1 : i + 1;
    double dyDown = y[prev] - y[next], dxAlong = x[next] - x[prev];
    double len = std::sqrt(dyDown * dyDown + dxAlong * dxAlong);
    for (int32_t j = 0; j <= across; j++) {
      int32_t k = i * (across + 1) + j;
      if (len == 0) {  // repeated points: no direction, the row collapses onto the point
        ox[k] = x[i];
        oy[k] = y[i];
        continue;
      }
      pointOnLine(x[i], y[i], x[i] + dyDown / len, y[i] + dxAlong / len, j * dist - across * dist * 0.5,
                  ox[k], oy[k], false);
    }
  }
  int32_t q = 0;
  for (int32_t s = 0; s < n - 1; s++) {
    for (int32_t c = 0; c < across; c++) {
      int32_t a = s * (across + 1) + c + 1;
      quads[q++] = a - 1;
      quads[q++] = a + across;
      quads[q++] = a + across + 1;
      quads[q++] = a;
    }
  }
}

bool xAxisCrossing(double x1, double y1, double x2, double y2, double& x) {
  if (y1 == y2) return false;
  x = x1 - y1 * (x2 - x1) / (y2 - y1);
  return true;
}

int32_t sideOfLine(double x1, double y1, double x2, double y2, double px, double py) {
  double cross = (x2 - x1) * (py - y1) - (y2 - y1) * (px - x1);
  return cross > 0 ? 1 : (cross < 0 ? -1 : 0);
}

double directionAngle(double x1, double y1, double x2, double y2, double refAngle, bool inDegrees) {
  double full = inDegrees ? 360.0 : 2 * std::numbers::pi;  // radians need no conversion
  double dir = std::atan2(y2 - y1, x2 - x1);
  if (atReference(x2 - x1, y2 - y1, inDegrees ? refAngle : refAngle * (180.0 / std::numbers::pi))) return 0.0;
  double a = std::fmod(refAngle - (inDegrees ? dir * rad2deg : dir), full);
  if (a < 0) a += full;
  return a;
}

void unitNormal(double x1, double y1, double x2, double y2, double& nx, double& ny) {
  double len = std::hypot(x2 - x1, y2 - y1);
  if (len == 0) {
    nx = ny = 0.0;
    return;
  }
  nx = (y1 - y2) / len;
  ny = (x2 - x1) / len;
}

template <typename T>
static void circumcentreT(T x1, T y1, T x2, T y2, T x3, T y3, T& cx, T& cy) {
  T A = y2 - y3, B = y3 - y1, C = y1 - y2;
  T D = 2 * (A * x1 + B * x2 + C * x3);
  T s1 = x1 * x1 + y1 * y1, s2 = x2 * x2 + y2 * y2, s3 = x3 * x3 + y3 * y3;
  cx = (A * s1 + B * s2 + C * s3) / D;
  cy = ((x1 - x3) * s2 + (x2 - x1) * s3 + (x3 - x2) * s1) / D;
}

void circumcentre(double x1, double y1, double x2, double y2, double x3, double y3, double& cx, double& cy) {
  circumcentreT(x1, y1, x2, y2, x3, y3, cx, cy);
}

void circumcentreF(float x1, float y1, float x2, float y2, float x3, float y3, float& cx, float& cy) {
  circumcentreT(x1, y1, x2, y2, x3, y3, cx, cy);
}

bool parabola3(double x1, double y1, double x2, double y2, double x3, double y3, double& a, double& b,
               double& c) {
  if (x1 == x2 || x1 == x3 || x2 == x3) return false;
  double d1 = (y2 - y1) / (x2 - x1), d2 = (y3 - y2) / (x3 - x2);
  a = (d2 - d1) / (x3 - x1);
  b = d1 - a * (x1 + x2);
  c = y1 - a * x1 * x1 - b * x1;
  return true;
}

void meanPoint(const double* x, const double* y, int32_t n, double& mx, double& my) {
  mx = my = 0.0;
  if (n < 1) return;
  for (int32_t i = 0; i < n; i++) {
    mx += x[i];
    my += y[i];
  }
  mx /= n;
  my /= n;
}

double randomInRange(double lo, double hi) {
  const double r = RAND_MAX + 1.0;
  double u = std::rand();
  for (int k = 0; k < 3; k++) u = u * r + std::rand();
  u /= r * r * r * r;
  if (u >= 1.0) u = std::nextafter(1.0, 0.0);  // the sum can round up to exactly 1
  return lo + u * (hi - lo);
}

int32_t utmZone(double lon, double lat) {
  if (!std::isfinite(lon)) return 0;
  double l = std::fmod(lon + 180.0, 360.0);
  if (l < 0) l += 360.0;
  int32_t z = static_cast<int32_t>(std::floor(l / 6.0)) + 1;
  if (z > 60) z = 60;
  return lat < 0 ? -z : z;
}

static constexpr double earthRadius = 6378137.0;

void metres2Degrees(double metres, double lat, double& dLon, double& dLat) {
  dLat = metres / (earthRadius * deg2rad);
  dLon = dLat / std::cos(lat * deg2rad);
}

double greatCircleDistance(double lon1, double lat1, double lon2, double lat2) {
  // The atan2 form of the central angle is accurate for near and for nearly antipodal points.
  double p1 = lat1 * deg2rad, p2 = lat2 * deg2rad, dl = (lon2 - lon1) * deg2rad;
  double a = std::cos(p2) * std::sin(dl);
  double b = std::cos(p1) * std::sin(p2) - std::sin(p1) * std::cos(p2) * std::cos(dl);
  double c = std::sin(p1) * std::sin(p2) + std::cos(p1) * std::cos(p2) * std::cos(dl);
  return earthRadius * std::atan2(std::sqrt(a * a + b * b), c);
}

void idwPointsToPoints(const double* xs, const double* ys, const double* vs, int32_t n, const double* xt,
                       const double* yt, double* vt, int32_t m, double power, double radius) {
  for (int32_t t = 0; t < m; t++) {
    double sumW = 0.0, sumWV = 0.0;
    bool onSource = false;
    for (int32_t s = 0; s < n; s++) {
      double d = std::hypot(xs[s] - xt[t], ys[s] - yt[t]);
      if (d == 0) {
        vt[t] = vs[s];
        onSource = true;
        break;
      }
      if (radius > 0 && d > radius) continue;
      double w = 1.0 / std::pow(d, power);
      sumW += w;
      sumWV += w * vs[s];
    }
    if (!onSource) vt[t] = sumW > 0 ? sumWV / sumW : idwMissing;
  }
}

std::vector<std::vector<int32_t>> indexCombinations(const std::vector<int32_t>& counts) {
  std::vector<std::vector<int32_t>> out;
  if (counts.empty()) return out;
  for (int32_t c : counts) {
    if (c < 1) return out;
  }
  std::vector<int32_t> cur(counts.size(), 0);
  while (true) {
    out.push_back(cur);
    size_t k = counts.size();
    while (k > 0) {
      k--;
      if (++cur[k] < counts[k]) break;
      cur[k] = 0;
      if (k == 0) return out;
    }
  }
}

// ---- UTM: the transverse Mercator series in its published form (meridian arc to sin 6 lat,
// easting to A^5, northing to A^6), on WGS84 with the rounded constants below.
static constexpr double utmA = 6378137.0;
static constexpr double utmE2 = 0.00669438;             // first eccentricity squared
static constexpr double utmEp2 = 0.006739496752268451;  // second eccentricity squared
static constexpr double utmK0 = 0.9996;
static constexpr double utmOneMinusE2 = 0.99330562;
static constexpr double utmAOneMinusE2 = 6335439.32722994;  // a (1 - e^2)
static constexpr double utmRectRadius = 6367449.145945056;  // a (1 - e^2/4 - 3e^4/64 - 5e^6/256)

static double centralMeridian(int32_t zone) { return std::abs(static_cast<double>(zone)) * 6.0 - 183.0; }

void latLon2UTM(double lon, double lat, int32_t zone, double& x, double& y) {
  // Whole turns of (lon + 180) / 360, truncated, are taken off.
  lon -= std::trunc((lon + 180.0) / 360.0) * 360.0;
  double phi = lat * deg2rad;
  double sinP = std::sin(phi), cosP = std::cos(phi), tanP = std::tan(phi);
  double N = utmA / std::sqrt(1 - utmE2 * sinP * sinP);
  double T = tanP * tanP;
  double C = utmEp2 * cosP * cosP;
  double A = cosP * (lon * deg2rad - centralMeridian(zone) * deg2rad);
  double M = utmA * (0.9983242984503243 * phi - 0.002514607064228144 * std::sin(2 * phi) +
                     2.639046602129982e-6 * std::sin(4 * phi) - 3.418046101696858e-9 * std::sin(6 * phi));
  double A2 = A * A, A3 = A2 * A, A4 = A3 * A, A5 = A4 * A, A6 = A5 * A;
  x = utmK0 * N *
          (A + (1 - T + C) * A3 / 6 + (5 - 18 * T + T * T + 72 * C - 0.39089081163157013) * A5 / 120) +
      500000.0;
  y = utmK0 * (M + N * tanP *
                       (A2 / 2 + (5 - T + 9 * C + 4 * C * C) * A4 / 24 +
                        (61 - 58 * T + T * T + 600 * C - 2.2240339282485886) * A6 / 720));
  if (lat < 0) y += 10000000.0;
}

void UTM2latLon(double x, double y, int32_t zone, double& lon, double& lat) {
  double sq = std::sqrt(utmOneMinusE2);
  double e1 = (1 - sq) / (1 + sq);
  x -= 500000.0;
  if (zone < 0) y -= 10000000.0;
  double mu = y / utmK0 / utmRectRadius;
  double e1_2 = e1 * e1, e1_3 = e1_2 * e1, e1_4 = e1_3 * e1;
  double phi1 = mu + (3 * e1 / 2 - 27 * e1_3 / 32) * std::sin(2 * mu) +
                (21 * e1_2 / 16 - 55 * e1_4 / 32) * std::sin(4 * mu) + (151 * e1_3 / 96) * std::sin(6 * mu);
  double sinP = std::sin(phi1), cosP = std::cos(phi1), tanP = std::tan(phi1);
  double w = 1 - utmE2 * sinP * sinP;
  double N1 = utmA / std::sqrt(w);
  double T1 = tanP * tanP;
  double C1 = utmEp2 * cosP * cosP;
  double R1 = utmAOneMinusE2 / std::pow(w, 1.5);
  double D = x / (N1 * utmK0);
  double D2 = D * D, D3 = D2 * D, D4 = D3 * D, D5 = D4 * D, D6 = D5 * D;
  lat = phi1 -
        (N1 * tanP / R1) * (D2 / 2 - (5 + 3 * T1 + 10 * C1 - 4 * C1 * C1 - 9 * utmEp2) * D4 / 24 +
                            (61 + 90 * T1 + 298 * C1 + 45 * T1 * T1 - 252 * utmEp2 - 3 * C1 * C1) * D6 / 720);
  lat *= rad2deg;
  double dl = (D - (1 + 2 * T1 + C1) * D3 / 6 +
               (5 - 2 * C1 + 28 * T1 - 3 * C1 * C1 + 8 * utmEp2 + 24 * T1 * T1) * D5 / 120) /
              cosP;
  lon = centralMeridian(zone) + dl * rad2deg;
}

}  // namespace VCppLib
