// Painting on bitmaps: every expected colour below was worked out by hand from the painting rules.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "interp/VDraw.h"
#include "testutil/thTestUtil.h"

using namespace VCppLib;
using VI = std::vector<int32_t>;
using VD = std::vector<double>;

namespace {

// Black, white and the ramps between them: grey in 3 steps, dark and light in 4 (the painters'
// tests check these two ramps through the colours they paint); U is a pixel that the painter left
// alone.
constexpr int32_t B = static_cast<int32_t>(0xFF000000u), W = -1, G = static_cast<int32_t>(0xFF7F7F7Fu);
constexpr int32_t D = static_cast<int32_t>(0xFF555555u), L = static_cast<int32_t>(0xFFAAAAAAu),
                  U = 0x12345678;
const VI kBW = {B, W};

VI ramp(const VI& cols, int32_t n) {
  std::unique_ptr<int32_t[]> p(VDraw::colourRamp(cols.data(), static_cast<int32_t>(cols.size()), n));
  return VI(p.get(), p.get() + n);
}

VCartGrid makeGrid(VD& data, int32_t nx, int32_t ny, double x0, double y0, double d) {
  VCartGrid g;
  g.x0 = x0, g.y0 = y0, g.dx = g.dy = d, g.nx = nx, g.ny = ny, g.data = data.data();
  return g;
}

// The bitmaps that the painters make from a bitmap of untouched pixels; e is xmin, xmax, ymin, ymax.
VI byBreaks(const VCartGrid& g, int32_t nx, int32_t ny, const VD& e, const VD& brk, double p) {
  VI bmp(static_cast<size_t>(nx) * ny, U);
  int32_t* b = bmp.data();
  EXPECT_EQ(VDraw::interpOnBitmap(g, b, nx, ny, e[0], e[1], e[2], e[3], brk.data(),
                                  static_cast<int32_t>(brk.size()), kBW.data(), 2, p),
            0);
  return bmp;
}
VI byScale(const VCartGrid& g, int32_t nx, int32_t ny, int32_t nz, const VD& e, double zmin, double zmax,
           double p, const VI& cols = kBW) {
  VI bmp(static_cast<size_t>(nx) * ny, U);
  int32_t* b = bmp.data();
  EXPECT_EQ(VDraw::interpOnBitmap(g, b, nx, ny, nz, e[0], e[1], e[2], e[3], zmin, zmax, cols.data(),
                                  static_cast<int32_t>(cols.size()), p),
            0);
  return bmp;
}
// Points on a 4x4 bitmap over [0,4]x[0,4] (one map unit per pixel), palette black, grey, white for
// the values 0, 1, 2 (zmin 0, zmax 3, nz 3).
VI byPoints(const VD& x, const VD& y, const VD& v, double r) {
  VI bmp(16, U);
  int32_t* b = bmp.data();
  EXPECT_EQ(VDraw::interpPointsOnBitmap(x.data(), y.data(), v.data(), static_cast<int32_t>(x.size()), b, 4, 4,
                                        3, 0, 4, 0, 4, 0, 3, kBW.data(), 2, r),
            0);
  return bmp;
}

}  // namespace

TEST(VDraw, ColourRamp) {
  // Channels are interpolated separately and truncated: (0x10+0x30)/2, (0x20+0x50)/2, (0x30+0x70)/2;
  // red, green, blue over 5 steps mix to 127 half-way. The alpha byte of the given colours is
  // ignored. With more colours than steps the ramp takes the first and the last. Black, white,
  // black, white over 6 steps shows the rounding of a = s/(ncolors-1)*(n-1) = 1/3*5 at step 2:
  // t = 0.2000000000000001, so white weighs 203.99999999999997, truncated to 0xCB.
  struct R {
    VI cols;
    int32_t n;
    VI want;
  };
  const auto c = [](uint32_t v) { return static_cast<int32_t>(v); };
  for (const R& r :
       {R{{0x00FF0000, 0x000000FF}, 2, {c(0xFFFF0000u), c(0xFF0000FFu)}},
        R{{c(0xFF102030u), c(0xFF305070u)}, 3, {c(0xFF102030u), c(0xFF203850u), c(0xFF305070u)}},
        R{{0xFF0000, 0x00FF00, 0x0000FF},
          5,
          {c(0xFFFF0000u), c(0xFF7F7F00u), c(0xFF00FF00u), c(0xFF007F7Fu), c(0xFF0000FFu)}},
        R{{0x111111, 0x222222, 0x333333, 0x444444}, 2, {c(0xFF111111u), c(0xFF444444u)}},
        R{{B, W, B, W}, 6, {B, c(0xFF999999u), c(0xFFCBCBCBu), c(0xFF323232u), c(0xFF666666u), W}}})
    EXPECT_EQ(ramp(r.cols, r.n), r.want) << r.n;
  EXPECT_VEXCEPTION_HAS(ramp({B}, 3), "at least 2 colours");
  EXPECT_VEXCEPTION_HAS(ramp(kBW, -4), "at least 2 steps");
  EXPECT_VEXCEPTION_HAS(VDraw::colourRamp(nullptr, 2, 3), "colour array is null");
}

// A 3x3 grid of unit cells sampled at (0.25, 0.25) inside each cell with p = 2. The squared
// distances to the lower left, lower right, upper right and upper left corners are 1/8, 5/8, 9/8
// and 5/8, so the weights are in the ratio 45 : 9 : 5 : 9, and the upper left term carries the
// upper right value: v = (45*lowerLeft + 9*lowerRight + 14*upperRight) / 68. The pixel values are
// 14, 0 (bottom row) and 54, 59; the 1e6 is the upper left corner of a cell: never read.
TEST(VDraw, GridSamplingAndBadInput) {
  VD data = {0, 0, 0, 68, 68, 0, 1e6, 0, 68};
  const VCartGrid g = makeGrid(data, 3, 3, 0, 0, 1);
  const VD quarter = {0.25, 2.25, 0.25, 2.25}, centre = {0.5, 2.5, 0.5, 2.5}, one = {0.5, 1.5, 0.5, 1.5};
  EXPECT_EQ(byBreaks(g, 2, 2, quarter, {10, 20, 56}, 2.0), (VI{L, W, D, B}));  // top row first
  // Scale of 3 steps over 60: index = value*0.05 - zmin, so zmin is subtracted after scaling:
  // zmin 0 gives 2.7, 2.95, 0.7, 0; zmin 1 gives 1.7, 1.95, -0.3 (0), -1 (0); zmin -1 puts 54 and 59
  // beyond the 3 steps, where they take entry ncolors-1 = 1, the grey, not the last step.
  EXPECT_EQ(byScale(g, 2, 2, 3, quarter, 0.0, 60.0, 2.0), (VI{W, W, B, B}));
  EXPECT_EQ(byScale(g, 2, 2, 3, quarter, 1.0, 61.0, 2.0), (VI{G, G, B, B}));
  EXPECT_EQ(byScale(g, 2, 2, 3, quarter, -1.0, 59.0, 2.0), VI(4, G));
  // With more colours than steps the last step stands for the missing entry ncolors-1.
  EXPECT_EQ(byScale(g, 2, 2, 2, quarter, 0.0, 2.0, 2.0, {B, B, W, W}), (VI{W, W, W, B}));

  // Breaks against a flat 10 (p = 0: all weights 1). Equal to the first or the last break: class 1;
  // 10 > 5 and 10 <= 10: class 2 of 0..3. Breaks that do not ascend are taken as they stand: 10
  // is above the last break 5, and 3 finds 20 first and lands in class 1.
  VD ten(9, 10.0), three(9, 3.0);
  const VCartGrid flat = makeGrid(ten, 3, 3, 0, 0, 1), low = makeGrid(three, 3, 3, 0, 0, 1);
  EXPECT_EQ(byBreaks(flat, 2, 2, centre, {10, 20}, 0.0), VI(4, G));
  EXPECT_EQ(byBreaks(flat, 2, 2, centre, {5, 10}, 0.0), VI(4, G));
  EXPECT_EQ(byBreaks(flat, 2, 2, centre, {0, 5, 10}, 0.0), VI(4, L));
  EXPECT_EQ(byBreaks(flat, 2, 2, centre, {0, 20, 5}, 0.0), VI(4, W));
  EXPECT_EQ(byBreaks(low, 2, 2, centre, {0, 20, 5}, 0.0), VI(4, D));
  EXPECT_EQ(byBreaks(low, 1, 1, one, {3}, 0.0), VI{W});  // a single break, equal: class 1 of 0..1

  // One missing corner drops out: (10 + 20 + 20)/3 = 16.67 at the centre of the cell. All four
  // missing: no weight at all, not a number, which is palette[0] on a scale and class 1 by breaks.
  // A pixel exactly on a grid node has an infinite weight there: not a number as well.
  VD oneNaN = {NAN, 10, 999, 20}, allNaN(4, NAN), nodes = {5, 6, 7, 8};
  EXPECT_EQ(byBreaks(makeGrid(oneNaN, 2, 2, 0, 0, 1), 1, 1, one, {15, 16}, 2.0), VI{W});
  EXPECT_EQ(byScale(makeGrid(allNaN, 2, 2, 0, 0, 1), 1, 1, 3, one, 0.0, 3.0, 2.0), VI{B});
  EXPECT_EQ(byBreaks(makeGrid(allNaN, 2, 2, 0, 0, 1), 1, 1, one, {15, 16}, 2.0), VI{G});
  EXPECT_EQ(byScale(makeGrid(nodes, 2, 2, 0, 0, 1), 1, 1, 3, {0, 1, 0, 1}, -100.0, 100.0, 2.0), VI{B});

  // Outside: a 3x2 grid from (10, 20) with spacing 2 has cells at x in [10, 14), y in [20, 22).
  // Pixel corners x = 8, 10, 12, 14, 16 and y = 19, 21, 23; inside, value 1 is index 1, grey.
  // The grid is painted through a move, which hands over every field and empties the name.
  VD six(6, 1.0);
  VCartGrid named = makeGrid(six, 3, 2, 10, 20, 2);
  named.name = "depth";
  const VCartGrid g32 = std::move(named);
  EXPECT_TRUE(g32.name == "depth" && named.name.empty());  // NOLINT: the moved-from grid keeps no name
  EXPECT_EQ(byScale(g32, 5, 3, 3, {8, 18, 19, 25}, 0.0, 3.0, 1.0),
            (VI{W, W, W, W, W, W, G, G, W, W, W, W, W, W, W}));
  // A grid of one column has no cell at all, and its data are never read; a not-a-number extent
  // puts every pixel outside.
  VCartGrid thin;
  thin.nx = 1, thin.ny = 5, thin.dx = thin.dy = 1;
  EXPECT_EQ(byScale(thin, 1, 1, 3, {0, 1, 0, 1}, 0.0, 3.0, 1.0), VI{W});
  EXPECT_EQ(byScale(g32, 1, 1, 3, {NAN, 18, 19, 25}, 0.0, 3.0, 1.0), VI{W});

  // zmin = zmax = 2: scale +inf. The flat 10 gives +inf, entry ncolors-1 (grey); the corner pixel
  // (0,0) samples not a number, which gives the first colour, and so does -1, which gives -inf.
  VD minus(9, -1.0);
  EXPECT_EQ(byScale(flat, 2, 2, 3, {0, 1, 0, 1}, 2.0, 2.0, 2.0), (VI{G, G, B, G}));
  EXPECT_EQ(byScale(makeGrid(minus, 3, 3, 0, 0, 1), 1, 1, 3, one, 2.0, 2.0, 2.0), VI{B});

  // Bad input.
  VCartGrid empty = g;
  empty.data = nullptr;
  VI bmp(4, U);
  int32_t *b = bmp.data(), *none = nullptr;
  const double brk[2] = {0, 1};
  auto scale = [&](const VCartGrid& grid, int32_t*& to, int32_t nx) {
    return VDraw::interpOnBitmap(grid, to, nx, 2, 3, 0.0, 1.0, 0.0, 1.0, 2.0, 3.0, kBW.data(), 2, 2.0);
  };
  auto breaks = [&](int32_t ny, const double* br, int32_t nbrk) {
    return VDraw::interpOnBitmap(g, b, 2, ny, 0.0, 1.0, 0.0, 1.0, br, nbrk, kBW.data(), 2, 2.0);
  };
  EXPECT_VEXCEPTION_HAS(breaks(-1, brk, 2), "bitmap size 2 x -1 is negative");
  EXPECT_VEXCEPTION_HAS(breaks(2, brk, 0), "at least one break value");
  EXPECT_VEXCEPTION_HAS(breaks(2, nullptr, 2), "break array is null");
  EXPECT_VEXCEPTION_HAS(scale(g, none, 2), "bitmap is null");
  EXPECT_VEXCEPTION_HAS(scale(empty, b, 2), "the grid of 3 x 3 values has no data");
  EXPECT_EQ(scale(g, none, 0), 0);  // an empty bitmap is painted without complaint
  EXPECT_EQ(bmp, VI(4, U));         // and the refused calls wrote nothing
}

// Radius 1: pixel radii 1, distance limit (1+1) div 2 = 1.
TEST(VDraw, PointsByHand) {
  // (0,0) v 0 and (2,0) v 2. The last record stops both indices, so from column 2 on the range is
  // empty and even the pixel under the second point is left alone. Pixel (1,0) has both at
  // distance 1: (0 + 2)/2 = 1, grey. Rows from the top (j = 3) down.
  EXPECT_EQ(byPoints({0.5, 2.5}, {0.5, 0.5}, {0, 2}, 1.0),
            (VI{U, U, U, U, U, U, U, U, B, U, U, U, B, G, U, U}));
  // Values that are not a number paint the bottom of the scale.
  EXPECT_EQ(byPoints({0.5, 2.5}, {0.5, 0.5}, {NAN, NAN}, 1.0),
            (VI{U, U, U, U, U, U, U, U, B, U, U, U, B, B, U, U}));
  // (3,3) v 1, (0,1) v 0, (1,1) v 2. On pixel (1,1) the point there decides alone, throwing away the
  // 0 gathered from (0,1) first. Column 3 is skipped (its range holds the last record only).
  const VI want = {U, U, G, U,  //
                   B, W, U, U,  //
                   B, W, W, U,  //
                   B, W, U, U};
  EXPECT_EQ(byPoints({3.5, 0.5, 1.5}, {3.5, 1.5, 1.5}, {1, 0, 2}, 1.0), want);

  // Radius 1.5: points up to 1.5 outside take part; pixel radius trunc(1.5) = 1, limit 1.
  // A (-1.2, 2.5) -> pixel (-1, 2); C (-0.7, 3.5) -> (0, 3), truncated toward zero; F (2,2); B (4,0).
  // D (-1.6, 0.5) and E (2.5, -1.6) lie too far out: on their pixels (-1,0) and (2,-1) they would
  // colour (0,0) and (2,0). A not-a-number coordinate never takes part.
  EXPECT_EQ(byPoints({-1.6, -1.2, 2.5, -0.7, 4.3, 2.5, NAN}, {0.5, 2.5, -1.6, 3.5, 0.5, 2.5, 1.5},
                     {2, 2, 2, 0, 2, 1, 2}, 1.5),
            (VI{B, B, G, U, G, G, G, G, U, U, G, U, U, U, U, W}));
  // r < 0: 2*((4-0)+(4-0))/sqrt(4) = 8 map units, pixel radii 8, distance limit 8, so both points
  // with coordinates reach every pixel with weights 1/d^2. E.g. (0,2): 2/10 / (1/4 + 1/10) = 0.57
  // -> 1; (1,1): (2/8) / (1/2 + 1/8) = 0.4 -> 0; (1,3): (2/4) / (1/10 + 1/4) = 1.43 -> 1;
  // (2,3): 2 / (1/13 + 1) = 1.86 -> 2.
  EXPECT_EQ(byPoints({NAN, 0.5, 3.5, 1.0}, {1.0, 0.5, 3.5, NAN}, {2, 0, 2, 2}, -1.0),
            (VI{G, G, W, W, G, G, W, W, B, B, G, G, B, B, G, G}));
}

namespace {
// The sweep written out plainly (records sorted by column, then row, then given order; every
// record of the range tested for every pixel), to hold the painter's faster walk against.
void plainSweep(const VD& x, const VD& y, const VD& v, VI& bmp, int32_t nx, int32_t ny, int32_t nz,
                const VD& e, double zmin, double zmax, const VI& cols, double r) {
  struct Rec {
    int32_t ix, iy;
    double v;
  };
  if (r < 0) r = 2 * ((e[1] - e[0]) + (e[3] - e[2])) / std::sqrt(static_cast<double>(x.size()));
  const double sx = nx / (e[1] - e[0]), sy = ny / (e[3] - e[2]);
  std::vector<Rec> recs;
  for (size_t k = 0; k < x.size(); ++k)
    if (e[0] - r <= x[k] && x[k] <= e[1] + r && e[2] - r <= y[k] && y[k] <= e[3] + r)
      recs.push_back(
          {static_cast<int32_t>((x[k] - e[0]) * sx), static_cast<int32_t>((y[k] - e[2]) * sy), v[k]});
  std::stable_sort(recs.begin(), recs.end(),
                   [](const Rec& a, const Rec& b) { return a.ix != b.ix ? a.ix < b.ix : a.iy < b.iy; });
  if (recs.empty()) return;
  const VI pal = ramp(cols, nz);
  const int32_t rx = static_cast<int32_t>(sx * r), ry = static_cast<int32_t>(sy * r);
  const int32_t m = static_cast<int32_t>(recs.size());
  for (int32_t i = 0, lo = 0, hi = 0; i < nx; ++i) {
    while (hi < m - 1 && recs[hi].ix <= i + rx) ++hi;
    while (lo < m - 1 && recs[lo].ix < i - rx) ++lo;
    for (int32_t j = 0; j < ny && hi > lo; ++j) {
      double sum = 0, w = 0;
      for (int32_t k = lo; k <= hi; ++k) {
        const int32_t dx = recs[k].ix - i, dy = recs[k].iy - j;
        if (dy < -ry || dy > ry) continue;
        if (dx == 0 && dy == 0) {
          sum = recs[k].v;
          w = 1.0;
          break;
        }
        const double d = std::sqrt(static_cast<double>(dx * dx + dy * dy));
        if (d <= (rx + ry) / 2) {
          sum += recs[k].v / (d * d);
          w += 1 / (d * d);
        }
      }
      const double q = (sum / w - zmin) * (nz / (zmax - zmin));
      if (w > 0)
        bmp[(ny - 1 - j) * nx + i] = q < 0 ? pal[0] : q > nz - 1 ? pal[nz - 1] : pal[int32_t(q + 0.5)];
    }
  }
}
}  // namespace

TEST(VDraw, PointsSweepMatchesPlainSweep) {
  std::mt19937 gen(12345);
  const VI cols = {0x0000FF, 0x00FF00, 0xFF0000};
  // Square and stretched pixels, radii below, at and above a pixel, the default radius, more
  // points than pixels so that many share a pixel, and a radius of hundreds of pixels.
  struct Case {
    int32_t n, nx, ny;
    VD e;
    double r;
  };
  for (const Case& c : {Case{300, 40, 30, {0, 40, 0, 30}, 2.5}, Case{2000, 37, 23, {0, 10, 5, 9}, 0.6},
                        Case{500, 50, 20, {-5, 5, 0, 2}, 0.35}, Case{4000, 30, 30, {0, 1, 0, 1}, -1},
                        Case{50, 64, 48, {100, 164, 0, 48}, 7.0}, Case{800, 25, 60, {0, 25, 0, 60}, 0.0},
                        Case{200, 20, 20, {0, 20, 0, 20}, 1e-3}, Case{60, 30, 30, {0, 1, 0, 1}, 20.0}}) {
    std::uniform_real_distribution<double> ux(c.e[0] - 2, c.e[1] + 2), uy(c.e[2] - 2, c.e[3] + 2),
        uv(-0.5, 10.5);
    VD x(c.n), y(c.n), v(c.n);
    for (int32_t k = 0; k < c.n; ++k) {  // every seventh point lies exactly on the one before it
      x[k] = k % 7 == 1 ? x[k - 1] : ux(gen);
      y[k] = k % 7 == 1 ? y[k - 1] : uy(gen);
      v[k] = uv(gen);
    }
    VI want(static_cast<size_t>(c.nx) * c.ny, U), got = want;
    plainSweep(x, y, v, want, c.nx, c.ny, 12, c.e, 0, 10, cols, c.r);
    int32_t* b = got.data();
    VDraw::interpPointsOnBitmap(x.data(), y.data(), v.data(), c.n, b, c.nx, c.ny, 12, c.e[0], c.e[1], c.e[2],
                                c.e[3], 0, 10, cols.data(), 3, c.r);
    EXPECT_EQ(got, want) << "n " << c.n << " r " << c.r;
    EXPECT_NE(std::count(got.begin(), got.end(), U), static_cast<long>(got.size()));
  }
}

TEST(VDraw, PointsBadInput) {
  const double x[2] = {0.5, 1.5}, y[2] = {0.5, 0.5}, v[2] = {0, 2};
  VI bmp(4, U);
  int32_t* b = bmp.data();
  auto paint = [&](int32_t n, int32_t nx, double xmax, double zmin, double zmax, double r, bool noX = false) {
    return VDraw::interpPointsOnBitmap(noX ? nullptr : x, y, v, n, b, nx, 2, 3, 0, xmax, 0, 2, zmin, zmax,
                                       kBW.data(), 2, r);
  };
  EXPECT_VEXCEPTION_HAS(paint(-1, 2, 2, 0, 3, 1), "number of points -1 is negative");
  EXPECT_VEXCEPTION_HAS(paint(2, 2, 2, 0, 0, 1), "colour scale from zmin = 0 to zmax = 0");
  // No width: x to pixels is infinite. A radius of more than 2^30 pixels, or an infinite one.
  for (const VD& c : {VD{0, 1}, VD{2, 1e12}, VD{2, INFINITY}})
    EXPECT_VEXCEPTION_HAS(paint(2, 2, c[0], 0, 3, c[1]), "no usable pixel radius");
  EXPECT_VEXCEPTION_HAS(paint(2, 2, 2, 0, 3, 1, true), "is null");
  // Nothing to paint: no points, an empty bitmap, a radius that is not a number.
  EXPECT_EQ(paint(0, 2, 2, 0, 3, -1) + paint(2, 0, 2, 0, 3, 1) + paint(2, 2, 2, 0, 3, NAN) +
                paint(2, 2, 0, 0, 3, NAN),
            0);
  EXPECT_EQ(bmp, VI(4, U));
  // A reversed scale is a scale: (0 - 3) * (3 / -3) = 3 > 2 is the top.
  paint(2, 2, 2, 3, 0, 1.0);
  EXPECT_EQ(bmp[2], W);
}
