// Geometry and fields of the sample fjord. Everything follows from closed formulas, with no
// random numbers, so that the sample is the same on every run.
#include "thalFjord.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace thTool {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr int sections = 121;  // cross-sections from the mouth (0) to the head
constexpr int across = 15;     // nodes on one cross-section, right bank (0) to left bank

// Direction of the axis, radians from east: the fjord winds but never turns back.
double axisAngle(double s) {
  return 0.2 + 0.6 * std::sin(2 * pi * s / 11000.0) + 0.3 * std::sin(2 * pi * s / 5000.0 + 0.5);
}

// Half the width of the fjord at distance s from the mouth; it narrows towards the head.
double halfWidth(double s) {
  double w =
      650.0 + 350.0 * std::sin(2 * pi * s / 7000.0 + 1.0) + 200.0 * std::sin(2 * pi * s / 2300.0 + 2.0);
  double u = s / fjordLength;
  if (u > 0.8) w *= std::max(0.35, 1.0 - (u - 0.8) / 0.2 * 0.65);
  return std::max(300.0, w);
}

// Depth along the axis: a sill behind the mouth, a deep basin, and a shallow head.
double axisDepth(double u) {
  static const double pu[] = {0.0, 0.12, 0.25, 0.45, 0.7, 0.9, 1.0};
  static const double pd[] = {110.0, 45.0, 120.0, 150.0, 110.0, 40.0, 4.0};
  int k = 0;
  while (k < 5 && u > pu[k + 1]) ++k;
  double f = std::clamp((u - pu[k]) / (pu[k + 1] - pu[k]), 0.0, 1.0);
  double w = 0.5 - 0.5 * std::cos(pi * f);  // smooth between the control points
  return pd[k] * (1 - w) + pd[k + 1] * w;
}

double alongFjord(double x) { return std::clamp((x - fjordX0) / fjordLength, 0.0, 1.0); }

}  // namespace

FjordMesh buildFjordMesh() {
  FjordMesh m;
  const double ds = fjordLength / (sections - 1);
  double cx = fjordX0, cy = fjordY0;
  for (int i = 0; i < sections; ++i) {
    double s = i * ds;
    if (i > 0) {  // the axis by the midpoint rule, one section at a time
      double a = axisAngle(s - 0.5 * ds);
      cx += ds * std::cos(a);
      cy += ds * std::sin(a);
    }
    double a = axisAngle(s), w = halfWidth(s);
    for (int j = 0; j < across; ++j) {
      double n = -1.0 + 2.0 * j / (across - 1);  // -1 on the right bank, +1 on the left
      m.x.push_back(cx - n * w * std::sin(a));
      m.y.push_back(cy + n * w * std::cos(a));
      m.nodeType.push_back(i == 0 ? 1 : 0);
      m.nodeDepth.push_back(2.0 + (axisDepth(s / fjordLength) - 2.0) * (1.0 - n * n));
    }
  }
  // Each quadrilateral of two sections and two banks makes two triangles, with alternating
  // diagonals so that the mesh has no preferred direction.
  for (int i = 0; i + 1 < sections; ++i)
    for (int j = 0; j + 1 < across; ++j) {
      int32_t a = i * across + j, b = (i + 1) * across + j, c = b + 1, d = a + 1;
      const int32_t tri[2][3] = {{a, b, c}, {a, c, d}};
      const int32_t alt[2][3] = {{a, b, d}, {b, c, d}};
      const auto& t = ((i + j) % 2 == 0) ? tri : alt;
      for (const auto& e : t) {
        m.nonpe.push_back(3);
        m.en.insert(m.en.end(), e, e + 3);
      }
    }
  return m;
}

std::vector<double> fjordLayerThickness() {
  // Listed from the surface down, stored from the bottom up.
  std::vector<double> dz = {1, 1, 1.5, 1.5, 2, 2, 3, 3, 4, 5, 6, 7, 8, 10, 12, 14, 16, 18, 20, 25};
  std::reverse(dz.begin(), dz.end());
  return dz;
}

std::vector<double> fjordElementDepth(const FjordMesh& m) {
  std::vector<double> d(m.nonpe.size());
  size_t k = 0;
  for (size_t e = 0; e < m.nonpe.size(); ++e) {
    double sum = 0;
    for (int32_t i = 0; i < m.nonpe[e]; ++i) sum += m.nodeDepth[m.en[k++]];
    d[e] = sum / m.nonpe[e];
  }
  return d;
}

double fjordElevation(double x, double t) {
  double u = (x - fjordX0) / fjordLength;
  return fjordTideAmplitude * (1.0 + 0.25 * u) * std::cos(2 * pi * t / fjordTidePeriod - fjordTidePhase);
}

double fjordTemperature(double x, double z, double t, double bed) {
  double u = alongFjord(x);
  double day = 0.8 * std::sin(2 * pi * (t / 86400.0 - 9.0 / 24.0)) * std::exp(-z / 2.0);
  double banks = 1.0 * std::exp(-bed / 40.0) * std::exp(-z / 4.0);
  return 7.0 + 6.5 * std::exp(-z / 12.0) + 1.5 * u * std::exp(-z / 8.0) + banks + day;
}

double fjordSalinity(double x, double z, double t) {
  double u = alongFjord(x);
  double fresh = std::exp(-z / 3.0);
  double tide = std::cos(2 * pi * t / fjordTidePeriod - fjordTidePhase);
  return 34.5 - 12.0 * fresh * (0.2 + 0.8 * std::pow(u, 1.5)) + 0.4 * fresh * tide;
}

FjordRaster rasterizeFjord(const FjordMesh& m, double spacing) {
  auto [xLo, xHi] = std::minmax_element(m.x.begin(), m.x.end());
  auto [yLo, yHi] = std::minmax_element(m.y.begin(), m.y.end());
  const double margin = 1000.0;
  double x0 = std::floor((*xLo - margin) / spacing) * spacing;
  double y0 = std::floor((*yLo - margin) / spacing) * spacing;
  int nx = static_cast<int>(std::ceil((*xHi + margin - x0) / spacing)) + 1;
  int ny = static_cast<int>(std::ceil((*yHi + margin - y0) / spacing)) + 1;
  FjordRaster r;
  for (int i = 0; i < nx; ++i) r.x.push_back(x0 + i * spacing);
  for (int j = 0; j < ny; ++j) r.y.push_back(y0 + j * spacing);
  r.depth.assign(static_cast<size_t>(nx) * ny, std::numeric_limits<double>::quiet_NaN());

  // Linear interpolation inside each triangle, at the grid points that it covers.
  for (size_t e = 0; e < m.nonpe.size(); ++e) {
    const int32_t* n = &m.en[3 * e];
    double ax = m.x[n[0]], ay = m.y[n[0]], bx = m.x[n[1]], by = m.y[n[1]], cx = m.x[n[2]], cy = m.y[n[2]];
    double det = (bx - ax) * (cy - ay) - (cx - ax) * (by - ay);
    if (det == 0) continue;
    int i0 = std::max(0, static_cast<int>(std::floor((std::min({ax, bx, cx}) - x0) / spacing)));
    int i1 = std::min(nx - 1, static_cast<int>(std::ceil((std::max({ax, bx, cx}) - x0) / spacing)));
    int j0 = std::max(0, static_cast<int>(std::floor((std::min({ay, by, cy}) - y0) / spacing)));
    int j1 = std::min(ny - 1, static_cast<int>(std::ceil((std::max({ay, by, cy}) - y0) / spacing)));
    for (int j = j0; j <= j1; ++j)
      for (int i = i0; i <= i1; ++i) {
        double px = r.x[i], py = r.y[j];
        double wb = ((px - ax) * (cy - ay) - (cx - ax) * (py - ay)) / det;
        double wc = ((bx - ax) * (py - ay) - (px - ax) * (by - ay)) / det;
        double wa = 1.0 - wb - wc;
        if (wa < 0 || wb < 0 || wc < 0) continue;
        r.depth[static_cast<size_t>(j) * nx + i] =
            wa * m.nodeDepth[n[0]] + wb * m.nodeDepth[n[1]] + wc * m.nodeDepth[n[2]];
      }
  }
  return r;
}

}  // namespace thTool
