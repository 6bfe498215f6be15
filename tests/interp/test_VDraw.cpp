// Painting on bitmaps: every expected colour below was worked out by hand from the painting rules.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "interp/VDraw.h"
#include "testutil/thPng.h"
#include "testutil/thTestUtil.h"

using namespace VCppLib;

namespace {

constexpr int32_t kBlack = static_cast<int32_t>(0xFF000000u);
constexpr int32_t kGrey = static_cast<int32_t>(0xFF7F7F7Fu);  // middle of black..white in 3 steps
constexpr int32_t kWhite = -1;
constexpr int32_t kDark = static_cast<int32_t>(0xFF555555u);   // black..white in 4 steps
constexpr int32_t kLight = static_cast<int32_t>(0xFFAAAAAAu);
constexpr int32_t kUntouched = 0x12345678;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

const int32_t kBW[2] = {kBlack, kWhite};

// Pixel of column i and row j (row 0 at the smallest y) of a top-row-first bitmap.
int32_t px(const std::vector<int32_t>& bmp, int32_t nx, int32_t ny, int32_t i, int32_t j) {
  return bmp[static_cast<size_t>(ny - 1 - j) * nx + i];
}

VCartGrid makeGrid(std::vector<double>& data, int32_t nx, int32_t ny, double x0, double y0,
                   double dx, double dy) {
  VCartGrid g;
  g.x0 = x0;
  g.y0 = y0;
  g.dx = dx;
  g.dy = dy;
  g.nx = nx;
  g.ny = ny;
  g.data = data.data();
  return g;
}

std::vector<int32_t> ramp(const int32_t* cols, int32_t ncolors, int32_t n) {
  std::unique_ptr<int32_t[]> p(VDraw::colourRamp(cols, ncolors, n));
  return std::vector<int32_t>(p.get(), p.get() + n);
}

}  // namespace

TEST(VCartGrid, RecordDefaultsCopyAndMove) {
  VCartGrid g;
  EXPECT_EQ(g.nz, 1);
  EXPECT_EQ(g.data, nullptr);
  EXPECT_EQ(g.z, nullptr);
  EXPECT_EQ(g.deleteVal, -1e-37);
  EXPECT_EQ(g.start[0], 0);
  EXPECT_EQ(g.count[2], -1);
  std::vector<double> data(4, 0.0);
  g.data = data.data();
  g.name = "depth";
  VCartGrid copy = g;
  copy.data[3] = 7.5;  // a copy shares the values
  EXPECT_EQ(g.data[3], 7.5);
  VCartGrid moved = std::move(g);
  EXPECT_EQ(moved.name, "depth");
  EXPECT_TRUE(g.name.empty());  // NOLINT: the source of a move keeps no name
  EXPECT_EQ(moved.data, data.data());
}

TEST(VDraw, ColourRamp) {
  EXPECT_EQ(ramp(kBW, 2, 3), (std::vector<int32_t>{kBlack, kGrey, kWhite}));
  // The alpha byte of the given colours is ignored: every colour comes out opaque.
  const int32_t noAlpha[2] = {0x00FF0000, 0x000000FF};
  EXPECT_EQ(ramp(noAlpha, 2, 2), (std::vector<int32_t>{static_cast<int32_t>(0xFFFF0000u),
                                                       static_cast<int32_t>(0xFF0000FFu)}));
  // Channels are interpolated separately: (0x10+0x30)/2, (0x20+0x50)/2, (0x30+0x70)/2.
  const int32_t two[2] = {static_cast<int32_t>(0xFF102030u), static_cast<int32_t>(0xFF305070u)};
  EXPECT_EQ(ramp(two, 2, 3)[1], static_cast<int32_t>(0xFF203850u));
  // Red, green, blue over 5 steps: the colours at 0, 2, 4 and half-way mixes truncated to 127.
  const int32_t rgb[3] = {0xFF0000, 0x00FF00, 0x0000FF};
  EXPECT_EQ(ramp(rgb, 3, 5),
            (std::vector<int32_t>{static_cast<int32_t>(0xFFFF0000u),
                                  static_cast<int32_t>(0xFF7F7F00u),
                                  static_cast<int32_t>(0xFF00FF00u),
                                  static_cast<int32_t>(0xFF007F7Fu),
                                  static_cast<int32_t>(0xFF0000FFu)}));
  // Black to white in 4 steps: 255/3 and 2*255/3.
  EXPECT_EQ(ramp(kBW, 2, 4), (std::vector<int32_t>{kBlack, kDark, kLight, kWhite}));
  // More colours than steps: the first and the last colour.
  const int32_t four[4] = {0x111111, 0x222222, 0x333333, 0x444444};
  EXPECT_EQ(ramp(four, 4, 2), (std::vector<int32_t>{static_cast<int32_t>(0xFF111111u),
                                                    static_cast<int32_t>(0xFF444444u)}));

  EXPECT_VEXCEPTION_HAS(ramp(kBW, 1, 3), "at least 2 colours");
  EXPECT_VEXCEPTION_HAS(ramp(kBW, 2, 1), "at least 2 steps");
  EXPECT_VEXCEPTION_HAS(ramp(kBW, 2, -4), "at least 2 steps");
  EXPECT_VEXCEPTION_HAS(ramp(nullptr, 2, 3), "colour array is null");
}

// A 3x3 grid of unit cells sampled at (0.25, 0.25) inside each cell with p = 2. The squared
// distances to the lower left, lower right, upper right and upper left corners are 1/8, 5/8, 9/8
// and 5/8, so the weights are in the ratio 45 : 9 : 5 : 9, and the upper left term carries the
// upper right value: v = (45*lowerLeft + 9*lowerRight + 14*upperRight) / 68.
TEST(VDraw, GridSamplingWithBreaks) {
  std::vector<double> data = {0, 0, 0,  //
                              68, 68, 0,  //
                              1e6, 0, 68};  // 1e6 is the upper left corner of a cell: never read
  VCartGrid g = makeGrid(data, 3, 3, 0, 0, 1, 1);
  // Pixel values: (0,0) 14, (1,0) 0, (0,1) 54, (1,1) 59.
  std::vector<int32_t> bmp(4, kUntouched);
  int32_t* b = bmp.data();
  const double brk[3] = {10, 20, 56};
  EXPECT_EQ(VDraw::interpOnBitmap(g, b, 2, 2, 0.25, 2.25, 0.25, 2.25, brk, 3, kBW, 2, 2.0), 0);
  EXPECT_EQ(bmp, (std::vector<int32_t>{kLight, kWhite, kDark, kBlack}));  // top row first

  // Values equal to a break: 10 everywhere, weights all 1 with p = 0.
  std::vector<double> ten(9, 10.0);
  VCartGrid flat = makeGrid(ten, 3, 3, 0, 0, 1, 1);
  const double atFirst[2] = {10, 20}, atLast[2] = {5, 10}, middle[3] = {0, 5, 10};
  VDraw::interpOnBitmap(flat, b, 2, 2, 0.5, 2.5, 0.5, 2.5, atFirst, 2, kBW, 2, 0.0);
  EXPECT_EQ(bmp[0], kGrey);  // equal to the first break: class 1
  VDraw::interpOnBitmap(flat, b, 2, 2, 0.5, 2.5, 0.5, 2.5, atLast, 2, kBW, 2, 0.0);
  EXPECT_EQ(bmp[3], kGrey);  // equal to the last break: still class 1
  VDraw::interpOnBitmap(flat, b, 2, 2, 0.5, 2.5, 0.5, 2.5, middle, 3, kBW, 2, 0.0);
  EXPECT_EQ(bmp[1], kLight);  // 10 > 5, 10 <= 10: class 2 of 0..3
  // Breaks that do not ascend are taken as they stand: 10 > last break 5 gives the top class,
  // 3 finds 20 first and lands in class 1.
  const double unordered[3] = {0, 20, 5};
  VDraw::interpOnBitmap(flat, b, 2, 2, 0.5, 2.5, 0.5, 2.5, unordered, 3, kBW, 2, 0.0);
  EXPECT_EQ(bmp[2], kWhite);
  std::vector<double> three(9, 3.0);
  VCartGrid low = makeGrid(three, 3, 3, 0, 0, 1, 1);
  VDraw::interpOnBitmap(low, b, 2, 2, 0.5, 2.5, 0.5, 2.5, unordered, 3, kBW, 2, 0.0);
  EXPECT_EQ(bmp[2], kDark);
  // A single break: below, equal, above.
  const double one[1] = {3};
  VDraw::interpOnBitmap(low, b, 1, 1, 0.5, 1.5, 0.5, 1.5, one, 1, kBW, 2, 0.0);
  EXPECT_EQ(bmp[0], kWhite);  // equal: class 1 of 0..1
}

TEST(VDraw, GridSamplingWithScale) {
  std::vector<double> data = {0, 0, 0, 68, 68, 0, 1e6, 0, 68};
  VCartGrid g = makeGrid(data, 3, 3, 0, 0, 1, 1);
  std::vector<int32_t> bmp(4, kUntouched);
  int32_t* b = bmp.data();
  // Palette black, grey, white; scale = 3/60 = 0.05; index = value*0.05 - zmin.
  // zmin 0: 14 -> 0.7, 0 -> 0, 54 -> 2.7, 59 -> 2.95.
  EXPECT_EQ(VDraw::interpOnBitmap(g, b, 2, 2, 3, 0.25, 2.25, 0.25, 2.25, 0.0, 60.0, kBW, 2, 2.0),
            0);
  EXPECT_EQ(bmp, (std::vector<int32_t>{kWhite, kWhite, kBlack, kBlack}));
  // zmin is subtracted after scaling: zmin 1 gives 14 -> -0.3 (0), 54 -> 1.7, 59 -> 1.95.
  VDraw::interpOnBitmap(g, b, 2, 2, 3, 0.25, 2.25, 0.25, 2.25, 1.0, 61.0, kBW, 2, 2.0);
  EXPECT_EQ(bmp, (std::vector<int32_t>{kGrey, kGrey, kBlack, kBlack}));
  // zmin -1: 0 -> 1, 14 -> 1.7, 54 -> 3.7 and 59 -> 3.95 are beyond the 3 steps and take entry
  // ncolors-1 = 1, the grey, not the last step.
  VDraw::interpOnBitmap(g, b, 2, 2, 3, 0.25, 2.25, 0.25, 2.25, -1.0, 59.0, kBW, 2, 2.0);
  EXPECT_EQ(bmp, (std::vector<int32_t>{kGrey, kGrey, kGrey, kGrey}));
  // With more colours than steps the last step stands for the missing entry ncolors-1.
  const int32_t four[4] = {kBlack, kBlack, kWhite, kWhite};
  VDraw::interpOnBitmap(g, b, 2, 2, 2, 0.25, 2.25, 0.25, 2.25, 0.0, 2.0, four, 4, 2.0);
  EXPECT_EQ(bmp, (std::vector<int32_t>{kWhite, kWhite, kWhite, kBlack}));
}

TEST(VDraw, GridNotANumberCornersAndOutside) {
  // One missing corner drops out: (10 + 20 + 20)/3 = 16.67 with equal weights (centre of the cell).
  std::vector<double> one = {kNaN, 10, 999, 20};
  VCartGrid g1 = makeGrid(one, 2, 2, 0, 0, 1, 1);
  std::vector<int32_t> bmp(1, kUntouched);
  int32_t* b = bmp.data();
  const double brk[2] = {15, 16};
  VDraw::interpOnBitmap(g1, b, 1, 1, 0.5, 1.5, 0.5, 1.5, brk, 2, kBW, 2, 2.0);
  EXPECT_EQ(bmp[0], kWhite);
  // All four corners missing: no weight at all, the value is not a number.
  std::vector<double> none(4, kNaN);
  VCartGrid g0 = makeGrid(none, 2, 2, 0, 0, 1, 1);
  VDraw::interpOnBitmap(g0, b, 1, 1, 3, 0.5, 1.5, 0.5, 1.5, 0.0, 3.0, kBW, 2, 2.0);
  EXPECT_EQ(bmp[0], kBlack);  // palette[0]
  VDraw::interpOnBitmap(g0, b, 1, 1, 0.5, 1.5, 0.5, 1.5, brk, 2, kBW, 2, 2.0);
  EXPECT_EQ(bmp[0], kGrey);  // class 1
  // A pixel exactly on a grid node has an infinite weight there: not a number as well.
  std::vector<double> ramp4 = {5, 6, 7, 8};
  VCartGrid gr = makeGrid(ramp4, 2, 2, 0, 0, 1, 1);
  VDraw::interpOnBitmap(gr, b, 1, 1, 3, 0.0, 1.0, 0.0, 1.0, -100.0, 100.0, kBW, 2, 2.0);
  EXPECT_EQ(bmp[0], kBlack);

  // Outside: a 3x2 grid from (10, 20) with spacing 2 has cells at x in [10, 14), y in [20, 22).
  std::vector<double> six(6, 1.0);
  VCartGrid g = makeGrid(six, 3, 2, 10, 20, 2, 2);
  std::vector<int32_t> wide(5 * 3, kUntouched);
  b = wide.data();
  // Pixel corners x = 8, 10, 12, 14, 16 and y = 19, 21, 23.
  VDraw::interpOnBitmap(g, b, 5, 3, 3, 8.0, 18.0, 19.0, 25.0, 0.0, 3.0, kBW, 2, 1.0);
  for (int32_t j = 0; j < 3; ++j)
    for (int32_t i = 0; i < 5; ++i) {
      const bool inside = (i == 1 || i == 2) && j == 1;  // value 1 -> index 1: grey
      EXPECT_EQ(px(wide, 5, 3, i, j), inside ? kGrey : -1) << i << "," << j;
    }
  // A grid of one column or one row has no cell at all, and its data are never read.
  VCartGrid thin;
  thin.nx = 1;
  thin.ny = 5;
  thin.dx = thin.dy = 1;
  b = bmp.data();
  VDraw::interpOnBitmap(thin, b, 1, 1, 3, 0.0, 1.0, 0.0, 1.0, 0.0, 3.0, kBW, 2, 1.0);
  EXPECT_EQ(bmp[0], -1);
  // Not-a-number extent or grid origin: every pixel outside.
  VDraw::interpOnBitmap(g, b, 1, 1, 3, kNaN, 18.0, 19.0, 25.0, 0.0, 3.0, kBW, 2, 1.0);
  EXPECT_EQ(bmp[0], -1);
}

TEST(VDraw, GridBadInput) {
  std::vector<double> data(9, 1.0);
  VCartGrid g = makeGrid(data, 3, 3, 0, 0, 1, 1);
  std::vector<int32_t> bmp(4, kUntouched);
  int32_t* b = bmp.data();
  const double brk[2] = {0, 1};
  EXPECT_VEXCEPTION_HAS(
      VDraw::interpOnBitmap(g, b, -2, 2, 3, 0.0, 1.0, 0.0, 1.0, 0.0, 3.0, kBW, 2, 2.0),
      "bitmap size -2 x 2 is negative");
  EXPECT_VEXCEPTION_HAS(VDraw::interpOnBitmap(g, b, 2, -1, 0.0, 1.0, 0.0, 1.0, brk, 2, kBW, 2, 2.0),
                        "is negative");
  EXPECT_VEXCEPTION_HAS(
      VDraw::interpOnBitmap(g, b, 2, 2, 1, 0.0, 1.0, 0.0, 1.0, 0.0, 3.0, kBW, 2, 2.0),
      "at least 2 steps");
  EXPECT_VEXCEPTION_HAS(
      VDraw::interpOnBitmap(g, b, 2, 2, 3, 0.0, 1.0, 0.0, 1.0, 0.0, 3.0, kBW, 1, 2.0),
      "at least 2 colours");
  EXPECT_VEXCEPTION_HAS(
      VDraw::interpOnBitmap(g, b, 2, 2, 3, 0.0, 1.0, 0.0, 1.0, 2.0, 2.0, kBW, 2, 2.0),
      "colour scale from zmin = 2 to zmax = 2 is empty");
  EXPECT_VEXCEPTION_HAS(VDraw::interpOnBitmap(g, b, 2, 2, 0.0, 1.0, 0.0, 1.0, brk, 0, kBW, 2, 2.0),
                        "at least one break value");
  EXPECT_VEXCEPTION_HAS(
      VDraw::interpOnBitmap(g, b, 2, 2, 0.0, 1.0, 0.0, 1.0, nullptr, 2, kBW, 2, 2.0),
      "break array is null");
  int32_t* none = nullptr;
  EXPECT_VEXCEPTION_HAS(
      VDraw::interpOnBitmap(g, none, 2, 2, 3, 0.0, 1.0, 0.0, 1.0, 0.0, 3.0, kBW, 2, 2.0),
      "bitmap is null");
  VCartGrid empty = g;
  empty.data = nullptr;
  EXPECT_VEXCEPTION_HAS(
      VDraw::interpOnBitmap(empty, b, 2, 2, 3, 0.0, 1.0, 0.0, 1.0, 0.0, 3.0, kBW, 2, 2.0),
      "has no data");
  // An empty bitmap is painted without complaint; nothing is written.
  EXPECT_EQ(VDraw::interpOnBitmap(g, none, 0, 5, 3, 0.0, 1.0, 0.0, 1.0, 0.0, 3.0, kBW, 2, 2.0), 0);
  EXPECT_EQ(bmp, std::vector<int32_t>(4, kUntouched));
}

// Points on a 4x4 bitmap over [0,4]x[0,4] (one map unit per pixel), palette black, grey, white for
// values 0, 1, 2 (zmin 0, zmax 3, nz 3). Radius 1: pixel radii 1, distance limit (1+1) div 2 = 1.
TEST(VDraw, PointsSweepByHand) {
  // Two points: (0,0) v 0 and (2,0) v 2. The last record stops both indices, so from column 2 on
  // the range is empty and even the pixel under the second point is left alone.
  {
    const double x[2] = {0.5, 2.5}, y[2] = {0.5, 0.5}, v[2] = {0, 2};
    std::vector<int32_t> bmp(16, kUntouched);
    int32_t* b = bmp.data();
    EXPECT_EQ(VDraw::interpPointsOnBitmap(x, y, v, 2, b, 4, 4, 3, 0, 4, 0, 4, 0, 3, kBW, 2, 1.0),
              0);
    for (int32_t i = 0; i < 4; ++i)
      for (int32_t j = 0; j < 4; ++j) {
        int32_t want = kUntouched;
        if (i == 0 && j <= 1) want = kBlack;
        if (i == 1 && j == 0) want = kGrey;  // both at distance 1: (0 + 2)/2
        EXPECT_EQ(px(bmp, 4, 4, i, j), want) << i << "," << j;
      }
  }
  // Three points: (0,1) v 0, (1,1) v 2, (3,3) v 1. On pixel (1,1) the point there decides alone,
  // throwing away the 0 gathered from (0,1) first.
  {
    const double x[3] = {3.5, 0.5, 1.5}, y[3] = {3.5, 1.5, 1.5}, v[3] = {1, 0, 2};
    std::vector<int32_t> bmp(16, kUntouched);
    int32_t* b = bmp.data();
    VDraw::interpPointsOnBitmap(x, y, v, 3, b, 4, 4, 3, 0, 4, 0, 4, 0, 3, kBW, 2, 1.0);
    const int32_t U = kUntouched, B = kBlack, G = kGrey, W = kWhite;
    // Rows from the top (j = 3) down; column 3 is skipped (its range holds the last record only).
    const std::vector<int32_t> want = {U, U, G, U,  //
                                       B, W, U, U,  //
                                       B, W, W, U,  //
                                       B, W, U, U};
    EXPECT_EQ(bmp, want);
    int32_t w = 0, h = 0;
    thTest::TempDir dir;
    thTest::writePng(dir.file("points.png"), bmp.data(), 4, 4);
    const std::vector<int32_t> back = thTest::readPng(dir.file("points.png"), w, h);
    EXPECT_EQ(w, 4);
    EXPECT_EQ(h, 4);
    EXPECT_EQ(back, want);  // the top row of the picture is the first row of the file
  }
}

TEST(VDraw, PointsOutsideThePicture) {
  // Radius 1.5: points up to 1.5 outside take part; pixel radius trunc(1.5) = 1, limit 1.
  // A (-1.2, 2.5) -> pixel (-1, 2); C (-0.7, 3.5) -> (0, 3), truncated toward zero; F (2,2); B (4,0).
  // D (-1.6, 0.5) and E (2.5, -1.6) lie too far out: on their pixels (-1,0) and (2,-1) they would
  // colour (0,0) and (2,0). NaN coordinates never take part.
  const double x[7] = {-1.6, -1.2, 2.5, -0.7, 4.3, 2.5, kNaN};
  const double y[7] = {0.5, 2.5, -1.6, 3.5, 0.5, 2.5, 1.5};
  const double v[7] = {2, 2, 2, 0, 2, 1, 2};
  std::vector<int32_t> bmp(16, kUntouched);
  int32_t* b = bmp.data();
  VDraw::interpPointsOnBitmap(x, y, v, 7, b, 4, 4, 3, 0, 4, 0, 4, 0, 3, kBW, 2, 1.5);
  const int32_t U = kUntouched, B = kBlack, G = kGrey, W = kWhite;
  const std::vector<int32_t> want = {B, B, G, U,  //
                                     G, G, G, G,  //
                                     U, U, G, U,  //
                                     U, U, U, W};
  EXPECT_EQ(bmp, want);
}

TEST(VDraw, PointsDefaultRadius) {
  // r < 0: 2*((4-0)+(4-0))/sqrt(4) = 8 map units, pixel radii 8, distance limit 8, so both points
  // reach every pixel with weights 1/d^2. Two of the four points have no coordinates.
  const double x[4] = {kNaN, 0.5, 3.5, 1.0}, y[4] = {1.0, 0.5, 3.5, kNaN};
  const double v[4] = {2, 0, 2, 2};
  std::vector<int32_t> bmp(16, kUntouched);
  int32_t* b = bmp.data();
  VDraw::interpPointsOnBitmap(x, y, v, 4, b, 4, 4, 3, 0, 4, 0, 4, 0, 3, kBW, 2, -1.0);
  const int32_t B = kBlack, G = kGrey, W = kWhite;
  // e.g. (0,2): 2/10 / (1/4 + 1/10) = 0.57 -> 1; (1,1): (2/8) / (1/2 + 1/8) = 0.4 -> 0;
  // (1,3): (2/4) / (1/10 + 1/4) = 1.43 -> 1; (2,3): 2 / (1/13 + 1) = 1.86 -> 2.
  const std::vector<int32_t> want = {G, G, W, W,  //
                                     G, G, W, W,  //
                                     B, B, G, G,  //
                                     B, B, G, G};
  EXPECT_EQ(bmp, want);
}

// The spec'd sweep written out plainly (records sorted by column, then row, then given order;
// every record of the range tested for every pixel), against the painter on random points.
namespace {
void plainSweep(const std::vector<double>& x, const std::vector<double>& y,
                const std::vector<double>& v, std::vector<int32_t>& bmp, int32_t nx, int32_t ny,
                int32_t nz, double xmin, double xmax, double ymin, double ymax, double zmin,
                double zmax, const int32_t* cols, int32_t ncolors, double r) {
  struct Rec {
    int32_t ix, iy;
    double v;
  };
  const int32_t n = static_cast<int32_t>(x.size());
  if (r < 0) r = 2 * ((xmax - xmin) + (ymax - ymin)) / std::sqrt(static_cast<double>(n));
  const double sx = nx / (xmax - xmin), sy = ny / (ymax - ymin);
  std::vector<Rec> recs;
  for (int32_t k = 0; k < n; ++k)
    if (xmin - r <= x[k] && x[k] <= xmax + r && ymin - r <= y[k] && y[k] <= ymax + r)
      recs.push_back({static_cast<int32_t>((x[k] - xmin) * sx),
                      static_cast<int32_t>((y[k] - ymin) * sy), v[k]});
  std::stable_sort(recs.begin(), recs.end(), [](const Rec& a, const Rec& b) {
    return a.ix != b.ix ? a.ix < b.ix : a.iy < b.iy;
  });
  if (recs.empty()) return;
  const std::vector<int32_t> pal = ramp(cols, ncolors, nz);
  const double sz = nz / (zmax - zmin);
  const int32_t rx = static_cast<int32_t>(sx * r), ry = static_cast<int32_t>(sy * r);
  const int32_t m = static_cast<int32_t>(recs.size());
  int32_t lo = 0, hi = 0;
  for (int32_t i = 0; i < nx; ++i) {
    while (hi < m - 1 && recs[hi].ix <= i + rx) ++hi;
    while (lo < m - 1 && recs[lo].ix < i - rx) ++lo;
    if (hi <= lo) continue;
    for (int32_t j = 0; j < ny; ++j) {
      double sum = 0, w = 0;
      for (int32_t k = lo; k <= hi; ++k) {
        if (recs[k].iy < j - ry || recs[k].iy > j + ry) continue;
        if (recs[k].ix == i && recs[k].iy == j) {
          sum = recs[k].v;
          w = 1.0;
          break;
        }
        const int32_t dx = recs[k].ix - i, dy = recs[k].iy - j;
        const double d = std::sqrt(static_cast<double>(dx * dx + dy * dy));
        if (d <= (rx + ry) / 2) {
          sum += recs[k].v / (d * d);
          w += 1 / (d * d);
        }
      }
      if (w > 0) {
        const double q = (sum / w - zmin) * sz;
        bmp[static_cast<size_t>(ny - 1 - j) * nx + i] =
            q < 0 ? pal[0] : q > nz - 1 ? pal[nz - 1] : pal[static_cast<int32_t>(q + 0.5)];
      }
    }
  }
}
}  // namespace

TEST(VDraw, PointsSweepMatchesPlainSweep) {
  std::mt19937 gen(12345);
  const int32_t cols[3] = {0x0000FF, 0x00FF00, 0xFF0000};
  struct Case {
    int32_t n, nx, ny;
    double xmin, xmax, ymin, ymax, r;
  };
  // Square and stretched pixels, radii below, at and above a pixel, the default radius, more
  // points than pixels so that many share a pixel, and a radius of hundreds of pixels.
  const Case cases[] = {{300, 40, 30, 0, 40, 0, 30, 2.5},    {2000, 37, 23, 0, 10, 5, 9, 0.6},
                        {500, 50, 20, -5, 5, 0, 2, 0.35},    {4000, 30, 30, 0, 1, 0, 1, -1},
                        {50, 64, 48, 100, 164, 0, 48, 7.0},  {800, 25, 60, 0, 25, 0, 60, 0.0},
                        {200, 20, 20, 0, 20, 0, 20, 1e-3},   {60, 30, 30, 0, 1, 0, 1, 20.0}};
  for (const Case& c : cases) {
    std::uniform_real_distribution<double> ux(c.xmin - 2, c.xmax + 2), uy(c.ymin - 2, c.ymax + 2);
    std::uniform_real_distribution<double> uv(-0.5, 10.5);
    std::vector<double> x(c.n), y(c.n), v(c.n);
    for (int32_t k = 0; k < c.n; ++k) {
      x[k] = ux(gen);
      y[k] = uy(gen);
      v[k] = uv(gen);
    }
    for (int32_t k = 0; k + 1 < c.n; k += 7) {  // some points share a pixel exactly
      x[k + 1] = x[k];
      y[k + 1] = y[k];
    }
    std::vector<int32_t> want(static_cast<size_t>(c.nx) * c.ny, kUntouched), got = want;
    plainSweep(x, y, v, want, c.nx, c.ny, 12, c.xmin, c.xmax, c.ymin, c.ymax, 0, 10, cols, 3, c.r);
    int32_t* b = got.data();
    VDraw::interpPointsOnBitmap(x.data(), y.data(), v.data(), c.n, b, c.nx, c.ny, 12, c.xmin,
                                c.xmax, c.ymin, c.ymax, 0, 10, cols, 3, c.r);
    EXPECT_EQ(got, want) << "n " << c.n << " r " << c.r;
    EXPECT_NE(std::count(got.begin(), got.end(), kUntouched), static_cast<long>(got.size()));
  }
}

TEST(VDraw, PointsBadInput) {
  const double x[2] = {0.5, 1.5}, y[2] = {0.5, 0.5}, v[2] = {0, 2};
  std::vector<int32_t> bmp(4, kUntouched);
  int32_t* b = bmp.data();
  auto paint = [&](int32_t n, int32_t nx, int32_t ny, int32_t nz, double xmax, double zmax,
                   int32_t ncolors, double r) {
    return VDraw::interpPointsOnBitmap(x, y, v, n, b, nx, ny, nz, 0, xmax, 0, 2, 0, zmax, kBW,
                                       ncolors, r);
  };
  EXPECT_VEXCEPTION_HAS(paint(2, -2, 2, 3, 2, 3, 2, 1), "bitmap size -2 x 2 is negative");
  EXPECT_VEXCEPTION_HAS(paint(-1, 2, 2, 3, 2, 3, 2, 1), "number of points -1 is negative");
  EXPECT_VEXCEPTION_HAS(paint(2, 2, 2, 1, 2, 3, 2, 1), "at least 2 steps");
  EXPECT_VEXCEPTION_HAS(paint(2, 2, 2, 3, 2, 3, 1, 1), "at least 2 colours");
  EXPECT_VEXCEPTION_HAS(paint(2, 2, 2, 3, 2, 0, 2, 1), "colour scale from zmin = 0 to zmax = 0");
  // No width: x to pixels is infinite. A radius of more than 2^30 pixels, or an infinite one.
  EXPECT_VEXCEPTION_HAS(paint(2, 2, 2, 3, 0, 3, 2, 1), "no usable pixel radius");
  EXPECT_VEXCEPTION_HAS(paint(2, 2, 2, 3, 2, 3, 2, 1e12), "no usable pixel radius");
  EXPECT_VEXCEPTION_HAS(paint(2, 2, 2, 3, 2, 3, 2, INFINITY), "no usable pixel radius");
  EXPECT_VEXCEPTION_HAS(VDraw::interpPointsOnBitmap(nullptr, y, v, 2, b, 2, 2, 3, 0, 2, 0, 2, 0,
                                                    3, kBW, 2, 1.0),
                        "is null");
  EXPECT_EQ(bmp, std::vector<int32_t>(4, kUntouched));
  // Nothing to paint: no points, an empty bitmap, a radius that is not a number.
  EXPECT_EQ(paint(0, 2, 2, 3, 2, 3, 2, -1), 0);
  EXPECT_EQ(paint(2, 0, 2, 3, 2, 3, 2, 1), 0);
  EXPECT_EQ(paint(2, 2, 2, 3, 2, 3, 2, kNaN), 0);
  EXPECT_EQ(paint(2, 2, 2, 3, 0, 3, 2, kNaN), 0);
  EXPECT_EQ(bmp, std::vector<int32_t>(4, kUntouched));
  // A value that is not a number paints the bottom of the scale; a reversed scale is a scale.
  const double vn[2] = {kNaN, kNaN};
  VDraw::interpPointsOnBitmap(x, y, vn, 2, b, 2, 2, 3, 0, 2, 0, 2, 0, 3, kBW, 2, 1.0);
  EXPECT_EQ(px(bmp, 2, 2, 0, 0), kBlack);
  VDraw::interpPointsOnBitmap(x, y, v, 2, b, 2, 2, 3, 0, 2, 0, 2, 3, 0, kBW, 2, 1.0);
  EXPECT_EQ(px(bmp, 2, 2, 0, 0), kWhite);  // (0 - 3) * (3 / -3) = 3 > 2: the top
}
