// Painting on bitmaps: bitmap layout in VDraw.h.
//
// Both painters keep the arithmetic of each pixel exactly as the colour rules define it (order of
// sums, truncations, which corner is read), because users compare the pictures of one version with
// those of the next pixel by pixel. The speed comes from the order of the work only: what depends
// on a column or on a row alone is computed once, and the point painter spreads each point of a
// column's range over the pixel rows within its radius instead of testing every point for every
// pixel, which hands each pixel the same terms in the same order.
#include "interp/VDraw.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/VCppLib.h"
#include "support/VMsg.h"

namespace VCppLib::VDraw {

namespace {

// A bitmap of nx by ny pixels: sizes may be 0 (nothing to paint), never negative.
void checkBitmap(const char* fn, int32_t* bitmap, int32_t nx, int32_t ny) {
  if (nx < 0 || ny < 0)
    throw VException(std::string(fn) + ": the bitmap size " + std::to_string(nx) + " x " +
                     std::to_string(ny) + " is negative.");
  if (bitmap == nullptr && nx > 0 && ny > 0) throw VException(std::string(fn) + ": the bitmap is null.");
}

// scale = nz/(zmax-zmin) would be infinite or not a number and end up as a colour index.
void checkScale(const char* fn, double zmin, double zmax) {
  if (!(zmax != zmin))
    throw VException(msg(fn, ": the colour scale from zmin = ", fullPrecision{zmin},
                         " to zmax = ", fullPrecision{zmax}, " is empty."));
}

using Palette = std::unique_ptr<int32_t[]>;

Palette ramp(const int32_t* colArr, int32_t ncolors, int32_t n) {
  return Palette(colourRamp(colArr, ncolors, n));
}

// ---------------------------------------------------------------------------------------------
// Grid sampling

// Cell of each pixel column (-1 outside the grid) and the squared offsets from the pixel's corner
// to the cell's low and high grid lines; the same serves the pixel rows.
struct Axis {
  std::vector<int32_t> cell;
  std::vector<double> sqLow, sqHigh;
};

Axis gridAxis(int32_t n, double lo, double hi, double origin, double step, int32_t lines) {
  Axis a;
  a.cell.assign(n, -1);
  a.sqLow.resize(n);
  a.sqHigh.resize(n);
  for (int32_t i = 0; i < n; ++i) {
    const double c = lo + i * (hi - lo) / n;  // the pixel's lower left corner: hi is never reached
    const double f = std::floor((c - origin) / step);
    // A cell needs its upper neighbour too, so the last grid line is outside; so is NaN.
    if (!(f >= 0 && f < static_cast<double>(lines) - 1)) continue;
    const int32_t gi = static_cast<int32_t>(f);
    const double c1 = origin + gi * step;
    const double c2 = c1 + step;
    a.cell[i] = gi;
    a.sqLow[i] = (c - c1) * (c - c1);
    a.sqHigh[i] = (c - c2) * (c - c2);
  }
  return a;
}

// Paints every pixel of the bitmap with colour(value) of the grid sampled at its lower left
// corner, or -1 outside the grid. power(dist) is dist^p. Pixels are independent, so rows are
// walked in memory order.
template <class Colour, class Power>
void sampleGrid(const VCartGrid& g, int32_t* bitmap, int32_t nx, int32_t ny, const Axis& ax, const Axis& ay,
                Colour colour, Power power) {
  const int64_t gnx = g.nx;
  for (int32_t j = 0; j < ny; ++j) {
    int32_t* row = bitmap + static_cast<int64_t>(ny - 1 - j) * nx;
    const int32_t gj = ay.cell[j];
    if (gj < 0) {
      std::fill(row, row + nx, -1);
      continue;
    }
    const double syLow = ay.sqLow[j], syHigh = ay.sqHigh[j];
    const double* lowRow = g.data + gj * gnx;
    const double* highRow = lowRow + gnx;
    for (int32_t i = 0; i < nx; ++i) {
      const int32_t gi = ax.cell[i];
      if (gi < 0) {
        row[i] = -1;
        continue;
      }
      const double sxLow = ax.sqLow[i], sxHigh = ax.sqHigh[i];
      // The four terms: lower left, lower right, upper right, and upper right's value again
      // weighted at the upper left corner; the upper left value itself is never read.
      const double v1 = lowRow[gi], v2 = lowRow[gi + 1], v3 = highRow[gi + 1];
      auto weight = [&](double val, double sq) { return std::isnan(val) ? 0.0 : 1.0 / power(std::sqrt(sq)); };
      auto value = [](double val) { return std::isnan(val) ? 0.0 : val; };
      const double w1 = weight(v1, sxLow + syLow);
      const double w2 = weight(v2, sxHigh + syLow);
      const double w3 = weight(v3, sxHigh + syHigh);
      const double w4 = weight(v3, sxLow + syHigh);
      const double sum = w1 * value(v1) + w2 * value(v2) + w3 * value(v3) + w4 * value(v3);
      const double wsum = w1 + w2 + w3 + w4;
      row[i] = colour(sum / wsum);
    }
  }
}

template <class Colour>
void sampleGrid(const VCartGrid& g, int32_t* bitmap, int32_t nx, int32_t ny, double xmin, double xmax,
                double ymin, double ymax, double p, Colour colour) {
  if (nx <= 0 || ny <= 0) return;
  if (g.nx >= 2 && g.ny >= 2 && g.data == nullptr)
    throw VException("VDraw::interpOnBitmap: the grid of " + std::to_string(g.nx) + " x " +
                     std::to_string(g.ny) + " values has no data.");
  const Axis ax = gridAxis(nx, xmin, xmax, g.x0, g.dx, g.nx);
  const Axis ay = gridAxis(ny, ymin, ymax, g.y0, g.dy, g.ny);
  // The common powers without pow(): d*d and d are dist^2 and dist^1 correctly rounded, and
  // dist^0 is 1 for any dist, as pow() has it.
  if (p == 2)
    sampleGrid(g, bitmap, nx, ny, ax, ay, colour, [](double d) { return d * d; });
  else if (p == 1)
    sampleGrid(g, bitmap, nx, ny, ax, ay, colour, [](double d) { return d; });
  else if (p == 0)
    sampleGrid(g, bitmap, nx, ny, ax, ay, colour, [](double) { return 1.0; });
  else
    sampleGrid(g, bitmap, nx, ny, ax, ay, colour, [p](double d) { return std::pow(d, p); });
}

// ---------------------------------------------------------------------------------------------
// Scattered points

struct PixelPoint {
  int32_t ix, iy;  // pixel column and row, possibly outside the picture
  double v;
};

// Truncation toward zero that cannot overflow; not-a-number gives the lowest value.
int32_t truncToInt32(double d) {
  if (!(d > -2147483648.0)) return std::numeric_limits<int32_t>::min();
  if (d >= 2147483647.0) return std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(d);
}

// Sorts the records by column, then row, then their given order. Pixel numbers span little more
// than the bitmap, so two stable counting passes (row, then column) do it in linear time; a span
// far beyond the number of records falls back to a comparison sort.
void sortPixelPoints(std::vector<PixelPoint>& recs) {
  int32_t minX = recs[0].ix, maxX = minX, minY = recs[0].iy, maxY = minY;
  for (const PixelPoint& r : recs) {
    minX = std::min(minX, r.ix);
    maxX = std::max(maxX, r.ix);
    minY = std::min(minY, r.iy);
    maxY = std::max(maxY, r.iy);
  }
  const int64_t spanX = int64_t{maxX} - minX + 1, spanY = int64_t{maxY} - minY + 1;
  const int64_t limit = 4 * static_cast<int64_t>(recs.size()) + (int64_t{1} << 16);
  if (spanX > limit || spanY > limit) {
    std::stable_sort(recs.begin(), recs.end(), [](const PixelPoint& a, const PixelPoint& b) {
      return a.ix != b.ix ? a.ix < b.ix : a.iy < b.iy;
    });
    return;
  }
  std::vector<PixelPoint> tmp(recs.size());
  std::vector<size_t> start(static_cast<size_t>(std::max(spanX, spanY)) + 1);
  auto pass = [&](const std::vector<PixelPoint>& from, std::vector<PixelPoint>& to, int64_t span, auto key) {
    std::fill(start.begin(), start.begin() + span + 1, 0);
    for (const PixelPoint& r : from) ++start[key(r) + 1];
    for (int64_t k = 0; k < span; ++k) start[k + 1] += start[k];
    for (const PixelPoint& r : from) to[start[key(r)]++] = r;
  };
  pass(recs, tmp, spanY, [minY](const PixelPoint& r) { return int64_t{r.iy} - minY; });
  pass(tmp, recs, spanX, [minX](const PixelPoint& r) { return int64_t{r.ix} - minX; });
}

// sum[t] += v/dd[t] and weight[t] += inv[t] for t < n. The rows are independent, so they go two
// at a time; each lane is the same correctly rounded division and sum as one at a time.
void spread(double v, const double* dd, const double* inv, double* sum, double* weight, int64_t n) {
  using pair = double __attribute__((vector_size(16)));
  const pair vv = {v, v};
  int64_t t = 0;
  for (; t + 2 <= n; t += 2) {
    pair d, w, s, g;
    std::memcpy(&d, dd + t, sizeof d);
    std::memcpy(&w, inv + t, sizeof w);
    std::memcpy(&s, sum + t, sizeof s);
    std::memcpy(&g, weight + t, sizeof g);
    s += vv / d;
    g += w;
    std::memcpy(sum + t, &s, sizeof s);
    std::memcpy(weight + t, &g, sizeof g);
  }
  for (; t < n; ++t) {
    sum[t] += v / dd[t];
    weight[t] += inv[t];
  }
}

// The map of the point painter: its rectangle, the search radius r in map units and the pixels
// per map unit.
struct PointFrame {
  double xmin, xmax, ymin, ymax, r, sx, sy;
};

// The records of the points up to r outside the picture, which take part with pixel numbers
// outside it.
std::vector<PixelPoint> pixelPoints(const double* x, const double* y, const double* v, int32_t n,
                                    const PointFrame& f) {
  std::vector<PixelPoint> recs;
  recs.reserve(n);
  for (int32_t k = 0; k < n; ++k) {
    if (f.xmin - f.r <= x[k] && x[k] <= f.xmax + f.r && f.ymin - f.r <= y[k] && y[k] <= f.ymax + f.r)
      recs.push_back({truncToInt32((x[k] - f.xmin) * f.sx), truncToInt32((y[k] - f.ymin) * f.sy), v[k]});
  }
  return recs;
}

// Pixel numbers and radii are 32-bit; beyond 2^30 pixels the sums of the sweep would overflow.
void checkPixelRadius(const char* fn, const PointFrame& f, int32_t nx, int32_t ny) {
  constexpr double maxPixels = 1073741824.0;
  if (std::fabs(f.sx * f.r) < maxPixels && std::fabs(f.sy * f.r) < maxPixels && nx < maxPixels &&
      ny < maxPixels)
    return;
  throw VException(msg(fn, ": the map extent x from ", fullPrecision{f.xmin}, " to ", fullPrecision{f.xmax},
                       ", y from ", fullPrecision{f.ymin}, " to ", fullPrecision{f.ymax},
                       " and the search radius ", fullPrecision{f.r}, " give no usable pixel radius for a ",
                       nx, " x ", ny, " bitmap."));
}

// The radius in pixels that a point reaches, (rx + ry) / 2, and d^2 (as d*d of d = sqrt(s)) and
// 1/d^2 tabulated for the integer squared distances s within it. For radius < 2^26, sqrt(s) <=
// radius exactly when s <= radius^2. A radius beyond the table's size computes each distance.
struct DistanceTable {
  int64_t radius = 0;
  int64_t radius2 = -1;  // radius^2, -1 when no point reaches beyond its own pixel
  std::vector<double> dd, invDd;
  bool tabled() const { return !dd.empty(); }
};

DistanceTable distanceTable(int64_t rx, int64_t ry) {
  constexpr int64_t maxTable = 512;
  DistanceTable t;
  t.radius = (rx + ry) / 2;
  if (t.radius > 0) t.radius2 = t.radius * t.radius;
  if (t.radius > 0 && t.radius <= maxTable) {
    t.dd.resize(t.radius2 + 1);
    t.invDd.resize(t.radius2 + 1);
    for (int64_t s = 1; s <= t.radius2; ++s) {
      const double d = std::sqrt(static_cast<double>(s));
      t.dd[s] = d * d;
      t.invDd[s] = 1 / t.dd[s];
    }
  }
  return t;
}

// The sums of v/d^2 and of 1/d^2 of one pixel column, by pixel row, and the d^2 and 1/d^2 of the
// run of records being spread, by row offset + half.
struct ColumnSums {
  std::vector<double> sum, weight;
  std::vector<double> runDd, runInv;
};

// The rows of column i within the radius of a run at column distance ddx: half the row window,
// or -1 when the run reaches none.
int64_t runHalfHeight(int64_t ddx, int64_t ry, const DistanceTable& t) {
  if (!(t.radius > 0 && ddx * ddx <= t.radius2)) return -1;
  if (!t.tabled()) return ry;
  const int64_t room = t.radius2 - ddx * ddx;
  int64_t h = static_cast<int64_t>(std::sqrt(static_cast<double>(room)));
  while (h * h > room) --h;
  while ((h + 1) * (h + 1) <= room) ++h;
  return std::min(ry, h);
}

// Spreads the run recs[begin..end), the records of one pixel column, over the rows of column i
// that each of them reaches, in record order.
void spreadRun(const std::vector<PixelPoint>& recs, size_t begin, size_t end, int32_t i, int64_t ry,
               const DistanceTable& t, ColumnSums& c) {
  const int64_t ddx = recs[begin].ix - int64_t{i};
  const int64_t half = runHalfHeight(ddx, ry, t);
  if (half < 0) return;
  const int64_t dx2 = ddx * ddx;
  if (t.tabled()) {
    c.runDd.resize(2 * half + 1);
    c.runInv.resize(2 * half + 1);
    for (int64_t o = -half; o <= half; ++o) {
      c.runDd[o + half] = t.dd[dx2 + o * o];
      c.runInv[o + half] = t.invDd[dx2 + o * o];
    }
    // The point's own pixel: its term is replaced by the point itself, any finite value will do.
    if (ddx == 0) c.runDd[half] = 1;
  }
  const int64_t ny = static_cast<int64_t>(c.sum.size());
  for (size_t k = begin; k < end; ++k) {
    const int64_t iy = recs[k].iy;
    const double value = recs[k].v;
    const int64_t jlo = std::max<int64_t>(0, iy - half);
    const int64_t jhi = std::min<int64_t>(ny - 1, iy + half);
    if (jlo > jhi) continue;
    if (t.tabled()) {
      // d^2 depends on the row offset squared, so it is read forward from jlo - iy.
      spread(value, c.runDd.data() + (jlo - iy + half), c.runInv.data() + (jlo - iy + half),
             c.sum.data() + jlo, c.weight.data() + jlo, jhi - jlo + 1);
      continue;
    }
    for (int64_t j = jlo; j <= jhi; ++j) {
      const int64_t sq = dx2 + (iy - j) * (iy - j);
      if (sq == 0) continue;  // the point's own pixel, decided apart
      const double d = std::sqrt(static_cast<double>(sq));
      if (!(d <= static_cast<double>(t.radius))) continue;
      c.sum[j] += value / (d * d);
      c.weight[j] += 1 / (d * d);
    }
  }
}

// Gathers the terms of column i from the records lo..hi (inclusive), run by run, so that every
// pixel receives its terms in record order, as a walk of the records per pixel would. Returns
// the run of records on column i itself, empty when there is none.
std::pair<size_t, size_t> gatherColumn(const std::vector<PixelPoint>& recs, size_t lo, size_t hi, int32_t i,
                                       int64_t ry, const DistanceTable& t, ColumnSums& c) {
  std::fill(c.sum.begin(), c.sum.end(), 0.0);
  std::fill(c.weight.begin(), c.weight.end(), 0.0);
  std::pair<size_t, size_t> own{0, 0};
  for (size_t k = lo; k <= hi;) {
    size_t e = k + 1;
    while (e <= hi && recs[e].ix == recs[k].ix) ++e;
    if (recs[k].ix == i) own = {k, e};
    spreadRun(recs, k, e, i, ry, t, c);
    k = e;
  }
  return own;
}

// The first point on a pixel itself decides alone, whatever was gathered there. Without a row
// window (ry < 0) no point is looked at.
void placeOwnPoints(const std::vector<PixelPoint>& recs, std::pair<size_t, size_t> own, int64_t ry,
                    ColumnSums& c) {
  if (ry < 0) return;
  const int64_t ny = static_cast<int64_t>(c.sum.size());
  for (size_t k = own.first; k < own.second; ++k) {
    const int32_t iy = recs[k].iy;
    if (iy < 0 || iy >= ny || (k > own.first && recs[k - 1].iy == iy)) continue;
    c.sum[iy] = recs[k].v;
    c.weight[iy] = 1.0;
  }
}

// The colour scale of the point painter: nz palette entries from zmin on, sz entries per unit.
struct PointScale {
  const int32_t* pal;
  int32_t nz;
  double zmin, sz;
};

// Colours the pixels of column i that gathered a weight; the others keep their colour.
void paintColumn(const ColumnSums& c, int32_t i, int32_t* bitmap, int32_t nx, const PointScale& s) {
  const int32_t ny = static_cast<int32_t>(c.sum.size());
  for (int32_t j = 0; j < ny; ++j) {
    const double weight = c.weight[j];
    if (!(weight > 0)) continue;
    const double q = (c.sum[j] / weight - s.zmin) * s.sz;
    int32_t colour;
    if (q < 0)
      colour = s.pal[0];
    else if (q > s.nz - 1)
      colour = s.pal[s.nz - 1];
    else if (std::isnan(q))
      colour = s.pal[0];  // a point value that is not a number: the bottom of the scale
    else
      colour = s.pal[static_cast<int32_t>(q + 0.5)];
    bitmap[static_cast<int64_t>(ny - 1 - j) * nx + i] = colour;
  }
}
}  // namespace

int32_t* colourRamp(const int32_t* colArr, int32_t ncolors, int32_t n) {
  if (ncolors < 2)
    throw VException("VDraw::colourRamp: a colour ramp needs at least 2 colours, but " +
                     std::to_string(ncolors) + " were given.");
  if (colArr == nullptr) throw VException("VDraw::colourRamp: the colour array is null.");
  if (n < 2)
    throw VException("VDraw::colourRamp: a colour ramp needs at least 2 steps, but " + std::to_string(n) +
                     " were asked for.");
  auto out = std::make_unique<int32_t[]>(n);
  const int64_t nc1 = ncolors - 1, n1 = n - 1;
  for (int32_t i = 0; i < n; ++i) {
    const int64_t s = nc1 * i / n1;
    const double a = static_cast<double>(s) / nc1 * n1;
    const double b = static_cast<double>(s + 1) / nc1 * n1;
    const double t = (i - a) / (b - a);
    const auto c0 = static_cast<uint32_t>(colArr[s]);
    // At the last step s is the last colour and t is 0: the colour after it adds nothing.
    const uint32_t c1 = s + 1 < ncolors ? static_cast<uint32_t>(colArr[s + 1]) : 0u;
    uint32_t rgb = 0;
    for (int shift = 16; shift >= 0; shift -= 8) {
      const double ch = ((c1 >> shift) & 0xFFu) * t + ((c0 >> shift) & 0xFFu) * (1 - t);
      rgb += (static_cast<uint32_t>(static_cast<int32_t>(ch)) & 0xFFu) << shift;
    }
    out[i] = static_cast<int32_t>(0xFF000000u + rgb);
  }
  return out.release();
}

int32_t interpOnBitmap(VCartGrid grid, int32_t*& bitmap, int32_t nx, int32_t ny, int32_t nz, double xmin,
                       double xmax, double ymin, double ymax, double zmin, double zmax, const int32_t* colArr,
                       int32_t ncolors, double p) {
  const char* fn = "VDraw::interpOnBitmap";
  checkBitmap(fn, bitmap, nx, ny);
  const Palette palette = ramp(colArr, ncolors, nz);
  // No check of zmax > zmin here: an empty or reversed scale makes the index infinite or not a
  // number, and the comparisons below send those to the first or the last colour.
  const double scale = nz / (zmax - zmin);
  // A value beyond the scale takes entry ncolors-1. With more colours than steps that entry does
  // not exist, and the last step stands in for it.
  const int32_t beyond = ncolors - 1 < nz ? ncolors - 1 : nz - 1;
  const int32_t* pal = palette.get();
  sampleGrid(grid, bitmap, nx, ny, xmin, xmax, ymin, ymax, p, [&](double value) {
    // zmin is subtracted after scaling, in colour steps.
    const double index = std::trunc(value * scale - zmin);
    if (!(index > 0)) return pal[0];  // negative or not a number
    return index < nz ? pal[static_cast<int32_t>(index)] : pal[beyond];
  });
  return 0;
}

int32_t interpOnBitmap(VCartGrid grid, int32_t*& bitmap, int32_t nx, int32_t ny, double xmin, double xmax,
                       double ymin, double ymax, const double* brkArr, int32_t nbrk, const int32_t* colArr,
                       int32_t ncolors, double p) {
  const char* fn = "VDraw::interpOnBitmap";
  checkBitmap(fn, bitmap, nx, ny);
  if (nbrk < 1)
    throw VException(std::string(fn) + ": at least one break value is needed, but " + std::to_string(nbrk) +
                     " were given.");
  if (brkArr == nullptr) throw VException(std::string(fn) + ": the break array is null.");
  const Palette palette = ramp(colArr, ncolors, nbrk + 1);
  const int32_t* pal = palette.get();
  sampleGrid(grid, bitmap, nx, ny, xmin, xmax, ymin, ymax, p, [&](double value) {
    if (value < brkArr[0]) return pal[0];
    if (value > brkArr[nbrk - 1]) return pal[nbrk];
    // The first class from 1 on whose upper break is not below the value; every comparison with
    // not-a-number fails, so such a value lands in class 1.
    int32_t c = 1;
    while (c < nbrk && value > brkArr[c]) ++c;
    return pal[c];
  });
  return 0;
}

int32_t interpPointsOnBitmap(const double* x, const double* y, const double* v, int32_t n, int32_t*& bitmap,
                             int32_t nx, int32_t ny, int32_t nz, double xmin, double xmax, double ymin,
                             double ymax, double zmin, double zmax, const int32_t* colArr, int32_t ncolors,
                             double r) {
  const char* fn = "VDraw::interpPointsOnBitmap";
  checkBitmap(fn, bitmap, nx, ny);
  if (n < 0) throw VException(msg(fn, ": the number of points ", n, " is negative."));
  if (n > 0 && (x == nullptr || y == nullptr || v == nullptr))
    throw VException(std::string(fn) + ": an array of point coordinates or values is null.");
  const Palette palette = ramp(colArr, ncolors, nz);
  checkScale(fn, zmin, zmax);

  if (r < 0) r = 2 * ((xmax - xmin) + (ymax - ymin)) / std::sqrt(static_cast<double>(n));
  const PointFrame frame{xmin, xmax, ymin, ymax, r, nx / (xmax - xmin), ny / (ymax - ymin)};
  std::vector<PixelPoint> recs = pixelPoints(x, y, v, n, frame);
  if (recs.empty()) return 0;
  checkPixelRadius(fn, frame, nx, ny);
  // Sorted by column; within a column by row and then by the points' order, so that two points
  // on one pixel always give the value of the first one given.
  sortPixelPoints(recs);

  const int64_t rx = static_cast<int64_t>(frame.sx * r), ry = static_cast<int64_t>(frame.sy * r);
  const DistanceTable table = distanceTable(rx, ry);
  const PointScale scale{palette.get(), nz, zmin, nz / (zmax - zmin)};
  ColumnSums sums{std::vector<double>(ny), std::vector<double>(ny), {}, {}};
  const size_t m = recs.size();
  size_t lo = 0, hi = 0;
  for (int32_t i = 0; i < nx; ++i) {
    while (hi < m - 1 && recs[hi].ix <= i + rx) ++hi;
    while (lo < m - 1 && recs[lo].ix < i - rx) ++lo;
    // The range lo..hi (inclusive) only moves forward; the last record stops both indices.
    if (hi <= lo) continue;
    placeOwnPoints(recs, gatherColumn(recs, lo, hi, i, ry, table, sums), ry, sums);
    paintColumn(sums, i, bitmap, nx, scale);
  }
  return 0;
}

}  // namespace VCppLib::VDraw
