// The time axis of thModelInfo: timestep to date-time and back.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <tuple>
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

// findTimestep(S + offset, mode) must give want, for each {offset, mode, want}.
void expectFind(const thModelInfo& mi, const std::vector<std::array<int64_t, 3>>& cases) {
  for (auto [offset, mode, want] : cases)
    EXPECT_EQ(mi.findTimestep(S + offset, static_cast<int32_t>(mode)), want)
        << "S+" << offset << " mode " << mode;
}

}  // namespace

TEST(TimeAxis, TimestepAndTextToDateTime) {
  thModelInfo mi;
  hourly(mi);
  EXPECT_EQ(VL({mi.ts2DT(0), mi.ts2DT(3), mi.ts2DT(-2), mi.lastDT()}),
            (VL{S, S + 10800, S - 7200, S + 32400}));
  EXPECT_EQ(mi.ts2StrDT(1) + "|" + mi.ts2StrDT(24), "2000-03-01 01:00:00|2000-03-02 00:00:00");
  // Each step's offset is computed from 0 and cut to whole seconds toward zero (no drift); beyond
  // the 32 bits of the offset it is the most negative int32; a start at the end of the 64-bit range
  // wraps instead of overflowing.
  using Step = std::tuple<int64_t, double, int32_t, int64_t>;  // startDT, dt, timestep, date-time
  for (auto [start, dt, ts, want] :
       {Step{0, 1.5, 0, 0}, Step{0, 1.5, 1, 1}, Step{0, 1.5, 2, 3}, Step{0, 1.5, 3, 4}, Step{0, 1.5, 4, 6},
        Step{0, 1.5, 1000001, 1500001}, Step{0, -1.5, 1, -1}, Step{S, 1e6, 2147, S + 2147000000},
        Step{S, 1e6, 2148, S + INT32_MIN}, Step{S, 0.0, 5, S}, Step{INT64_MAX, 1, 1, INT64_MIN}}) {
    mi.startDT = start;
    mi.dt = dt;
    EXPECT_EQ(mi.ts2DT(ts), want) << start << " " << dt << " " << ts;
  }
  // So does nt-1 in lastDT.
  mi.startDT = 0;
  mi.nt = INT32_MIN;
  EXPECT_EQ(mi.lastDT(), INT32_MAX);

  // From text: a whole number is a timestep, of which atoi reads the integer part ("2e1" gives 2).
  hourly(mi);
  EXPECT_EQ(VL({mi.timeStr2DT("12"), mi.timeStr2DT("12.7"), mi.timeStr2DT(" 3"), mi.timeStr2DT("-2"),
                mi.timeStr2DT("2e1")}),
            (VL{S + 12 * 3600, S + 12 * 3600, S + 3 * 3600, S - 2 * 3600, S + 2 * 3600}));
  EXPECT_EQ(VL({mi.timeStr2DT("2012-06-01"), mi.timeStr2DT("2000-03-01 12:30")}),
            (VL{1338508800, S + 45000}));
  EXPECT_THROW(mi.timeStr2DT("12 "), VCppLib::VException);  // not a timestep: a bad date
  EXPECT_EQ(mi.timeList2DT("1,,2012-06-01,3,"), (VL{S + 3600, 1338508800, S + 10800}));
  EXPECT_EQ(mi.timeList2DT("2000-03-01 01:00:00,0"), (VL{S + 3600, S}));
  EXPECT_TRUE(mi.timeList2DT("").empty() && mi.timeList2DT(",,").empty());
  EXPECT_THROW(mi.timeList2DT("1,x"), VCppLib::VException);
  mi.setStartDT("2012-06-01 00:00:10");
  EXPECT_THROW(mi.setStartDT("2012-6-1"), VCppLib::VException);
  EXPECT_EQ(mi.startDT, 1338508810);
}

TEST(TimeAxis, FindTimestep) {
  thModelInfo mi;
  hourly(mi);
  // 1.5 steps: a tie goes up; floor, ceil; no exact step. Other positive modes are nearest, every
  // negative one exact. Before the start floor doesn't apply (nearest gives 0, x = -0.5 as well);
  // ceil does. x = 10 exceeds nt-1, so ceil doesn't apply: nearest gives 10, clamped to 9.
  expectFind(mi,
             {{5400, 0, 2},  {5400, 1, 1},    {5400, 2, 2},   {5400, -1, -1}, {7200, -1, 2}, {7200, -7, 2},
              {9000, 3, 3},  {5399, 0, 1},    {3601, 2, 2},   {7199, 1, 1},   {-1, 1, 0},    {-1800, 0, 0},
              {-5000, 2, 0}, {-3600, -1, -1}, {0, -1, 0},     {0, 1, 0},      {36000, 2, 9}, {32400, 2, 9},
              {30000, 2, 9}, {1000000, 1, 9}, {32400, -1, 9}, {36000, -1, -1}});
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
