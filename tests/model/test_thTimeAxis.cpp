// The time axis of thModelInfo: timestep to date-time and back.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "model/thModelInfo.h"
#include "testutil/thTestUtil.h"

using thalmod::thModelInfo;
using VL = std::vector<int64_t>;

namespace {

const int64_t S = 951868800;  // 2000-03-01 00:00:00

void hourly(thModelInfo& mi, int32_t nt = 10) {
  mi.startDT = S;
  mi.dt = 3600;
  mi.nt = nt;
}

struct Find {
  int64_t offset;
  int32_t mode, want;
};  // offset: seconds after S

void expectFind(const thModelInfo& mi, const std::vector<Find>& cases) {
  for (const Find& c : cases)
    EXPECT_EQ(mi.findTimestep(S + c.offset, c.mode), c.want) << "S+" << c.offset << " mode " << c.mode;
}

}  // namespace

TEST(TimeAxis, TimestepToDateTime) {
  thModelInfo mi;
  hourly(mi);
  EXPECT_EQ(VL({mi.ts2DT(0), mi.ts2DT(3), mi.ts2DT(-2), mi.lastDT()}),
            (VL{S, S + 10800, S - 7200, S + 32400}));
  EXPECT_EQ(mi.ts2StrDT(1) + "|" + mi.ts2StrDT(24), "2000-03-01 01:00:00|2000-03-02 00:00:00");
  // Each step is cut to whole seconds, toward zero, from 0, so there is no drift.
  mi.startDT = 0;
  mi.dt = 1.5;
  EXPECT_EQ(VL({mi.ts2DT(0), mi.ts2DT(1), mi.ts2DT(2), mi.ts2DT(3), mi.ts2DT(4)}), (VL{0, 1, 3, 4, 6}));
  EXPECT_EQ(mi.ts2DT(1000001), 1500001);
  mi.dt = -1.5;
  EXPECT_EQ(mi.ts2DT(1), -1);
  // The offset is a 32-bit count of seconds: beyond it, the most negative int32.
  mi.startDT = S;
  mi.dt = 1e6;
  EXPECT_EQ(VL({mi.ts2DT(2147), mi.ts2DT(2148)}), (VL{S + 2147000000, S + INT32_MIN}));
  mi.dt = 0.0;
  EXPECT_EQ(mi.ts2DT(5), S);
  // A start at the end of the 64-bit range wraps instead of overflowing; so does nt-1 in lastDT.
  mi.startDT = INT64_MAX;
  mi.dt = 1;
  EXPECT_EQ(mi.ts2DT(1), INT64_MIN);
  mi.startDT = 0;
  mi.nt = INT32_MIN;
  EXPECT_EQ(mi.lastDT(), INT32_MAX);
}

TEST(TimeAxis, FindTimestep) {
  thModelInfo mi;
  hourly(mi);
  expectFind(mi, {// 1.5 steps: a tie goes up; floor, ceil; no exact step. Other positive modes are nearest,
                  // every negative one exact.
                  {5400, 0, 2},
                  {5400, 1, 1},
                  {5400, 2, 2},
                  {5400, -1, -1},
                  {7200, -1, 2},
                  {7200, -7, 2},
                  {9000, 3, 3},
                  {5399, 0, 1},
                  {3601, 2, 2},
                  {7199, 1, 1},
                  // Before the start floor doesn't apply (nearest gives 0, x = -0.5 as well); ceil does.
                  {-1, 1, 0},
                  {-1800, 0, 0},
                  {-5000, 2, 0},
                  {-3600, -1, -1},
                  {0, -1, 0},
                  {0, 1, 0},
                  // x = 10 exceeds nt-1, so ceil doesn't apply: nearest gives 10, clamped to 9.
                  {36000, 2, 9},
                  {32400, 2, 9},
                  {30000, 2, 9},
                  {1000000, 1, 9},
                  {32400, -1, 9},
                  {36000, -1, -1}});
  // Beyond 2^31 steps the truncation gives the most negative int32: clamped to 0, or -1 exact.
  mi.dt = 1.0;
  expectFind(mi, {{3000000000LL, 0, 0}, {2000000000LL, 0, 9}, {3000000000LL, -1, -1}});
  EXPECT_EQ(mi.findTimestep(INT64_MIN, 0) + mi.findTimestep(INT64_MAX, 1), 0);
  // dt = 0: x is infinite or not a number; clamped modes give 0, exact -1.
  mi.dt = 0.0;
  for (int32_t mode : {0, 1, 2, 5}) expectFind(mi, {{10, mode, 0}, {-10, mode, 0}, {0, mode, 0}});
  expectFind(mi, {{0, -1, -1}, {10, -1, -1}});
  // nt = 0: the upper bound is -1. At x = -0.3 floor doesn't apply and nearest gives 0, clamped to
  // -1; at x = -0.7 ceil does not apply either (x > nt-1) and nearest gives -1, clamped to 0.
  hourly(mi, 0);
  expectFind(mi, {{-7200, 0, 0}, {0, 0, -1}, {7200, 1, -1}, {0, -1, -1}, {-1080, 1, -1}, {-2520, 2, 0}});
  // A fractional step is exact only where x is whole: ts2DT(3) is 4, yet 4 is no exact step.
  thModelInfo frac;
  frac.dt = 1.5;
  frac.nt = 10;
  EXPECT_EQ(VL({frac.findTimestep(3, -1), frac.findTimestep(4, -1), frac.findTimestep(4, 0)}),
            (VL{2, -1, 3}));
}

TEST(TimeAxis, TextToDateTime) {
  thModelInfo mi;
  hourly(mi);
  // A whole number is a timestep, of which atoi reads the integer part ("2e1" gives 2).
  EXPECT_EQ(VL({mi.timeStr2DT("12"), mi.timeStr2DT("12.7"), mi.timeStr2DT(" 3"), mi.timeStr2DT("-2"),
                mi.timeStr2DT("2e1")}),
            (VL{S + 12 * 3600, S + 12 * 3600, S + 3 * 3600, S - 2 * 3600, S + 2 * 3600}));
  EXPECT_EQ(VL({mi.timeStr2DT("2012-06-01"), mi.timeStr2DT("2000-03-01 12:30")}),
            (VL{1338508800, S + 45000}));
  EXPECT_VEXCEPTION(mi.timeStr2DT("12 "), "Invalid date: 12 ");
  EXPECT_EQ(mi.timeList2DT("1,,2012-06-01,3,"), (VL{S + 3600, 1338508800, S + 10800}));
  EXPECT_EQ(mi.timeList2DT("2000-03-01 01:00:00,0"), (VL{S + 3600, S}));
  EXPECT_TRUE(mi.timeList2DT("").empty() && mi.timeList2DT(",,").empty());
  EXPECT_VEXCEPTION(mi.timeList2DT("1,x"), "Invalid date: x");
  mi.setStartDT("2012-06-01 00:00:10");
  EXPECT_VEXCEPTION(mi.setStartDT("2012-6-1"), "Invalid date: 2012-6-1");
  EXPECT_EQ(mi.startDT, 1338508810);
}
