// The time axis of thModelInfo: timestep to date-time and back.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "model/thModelInfo.h"
#include "testutil/thTestUtil.h"

using thalmod::thModelInfo;

namespace {

const int64_t S = 951868800;  // 2000-03-01 00:00:00

thModelInfo hourly(int32_t nt = 10) {
  thModelInfo mi;
  mi.startDT = S;
  mi.dt = 3600;
  mi.nt = nt;
  return mi;
}

}  // namespace

TEST(TimeAxis, TimestepToDateTime) {
  thModelInfo mi = hourly();
  EXPECT_EQ(mi.ts2DT(0), S);
  EXPECT_EQ(mi.ts2DT(3), S + 10800);
  EXPECT_EQ(mi.ts2DT(-2), S - 7200);
  EXPECT_EQ(mi.lastDT(), S + 32400);
  EXPECT_EQ(mi.ts2StrDT(1), "2000-03-01 01:00:00");
  EXPECT_EQ(mi.ts2StrDT(24), "2000-03-02 00:00:00");

  // Each step is cut to whole seconds, from 0, so there is no drift.
  mi.startDT = 0;
  mi.dt = 1.5;
  std::vector<int64_t> got;
  for (int32_t ts = 0; ts < 5; ts++) got.push_back(mi.ts2DT(ts));
  EXPECT_EQ(got, (std::vector<int64_t>{0, 1, 3, 4, 6}));
  EXPECT_EQ(mi.ts2DT(1000001), 1500001);
  mi.dt = -1.5;
  EXPECT_EQ(mi.ts2DT(1), -1);  // toward zero

  // The offset is a 32-bit count of seconds: beyond it, the most negative int32.
  mi.startDT = S;
  mi.dt = 1e6;
  EXPECT_EQ(mi.ts2DT(2147), S + 2147000000);
  EXPECT_EQ(mi.ts2DT(2148), S + INT32_MIN);
  mi.dt = 0.0;
  EXPECT_EQ(mi.ts2DT(5), S);
}

TEST(TimeAxis, FindTimestepModes) {
  thModelInfo mi = hourly();
  // 1.5 steps after the start.
  EXPECT_EQ(mi.findTimestep(S + 5400, 0), 2);  // a tie goes up
  EXPECT_EQ(mi.findTimestep(S + 5400, 1), 1);
  EXPECT_EQ(mi.findTimestep(S + 5400, 2), 2);
  EXPECT_EQ(mi.findTimestep(S + 5400, -1), -1);
  EXPECT_EQ(mi.findTimestep(S + 7200, -1), 2);
  EXPECT_EQ(mi.findTimestep(S + 7200, -7), 2);
  EXPECT_EQ(mi.findTimestep(S + 9000, 3), 3);  // other positive modes are nearest
  EXPECT_EQ(mi.findTimestep(S + 5399, 0), 1);
  EXPECT_EQ(mi.findTimestep(S + 3601, 2), 2);
  EXPECT_EQ(mi.findTimestep(S + 7199, 1), 1);

  // Before the start: floor doesn't apply, nearest gives 0; ceil does apply.
  EXPECT_EQ(mi.findTimestep(S - 1, 1), 0);
  EXPECT_EQ(mi.findTimestep(S - 1800, 0), 0);  // x = -0.5 rounds to 0
  EXPECT_EQ(mi.findTimestep(S - 5000, 2), 0);  // ceil(-1.39) = -1, clamped
  EXPECT_EQ(mi.findTimestep(S - 3600, -1), -1);
  EXPECT_EQ(mi.findTimestep(S, -1), 0);
  EXPECT_EQ(mi.findTimestep(S, 1), 0);

  // After the end: x = 10 exceeds nt-1, so ceil doesn't apply; nearest gives 10, clamped to 9.
  EXPECT_EQ(mi.findTimestep(S + 36000, 2), 9);
  EXPECT_EQ(mi.findTimestep(S + 32400, 2), 9);
  EXPECT_EQ(mi.findTimestep(S + 30000, 2), 9);  // ceil(8.33)
  EXPECT_EQ(mi.findTimestep(S + 1000000, 1), 9);
  EXPECT_EQ(mi.findTimestep(S + 32400, -1), 9);
  EXPECT_EQ(mi.findTimestep(S + 36000, -1), -1);
  // Far beyond 2^31 steps the truncation gives the most negative int32, clamped to 0.
  mi.dt = 1.0;
  EXPECT_EQ(mi.findTimestep(S + 3000000000LL, 0), 0);
  EXPECT_EQ(mi.findTimestep(S + 2000000000LL, 0), 9);
  EXPECT_EQ(mi.findTimestep(S + 3000000000LL, -1), -1);
  EXPECT_EQ(mi.findTimestep(INT64_MIN, 0), 0);
  EXPECT_EQ(mi.findTimestep(INT64_MAX, 1), 0);
}

TEST(TimeAxis, FindTimestepEdgeAxes) {
  // nt = 0: the upper bound is -1.
  thModelInfo none = hourly(0);
  EXPECT_EQ(none.findTimestep(S - 7200, 0), 0);
  EXPECT_EQ(none.findTimestep(S, 0), -1);
  EXPECT_EQ(none.findTimestep(S + 7200, 1), -1);
  EXPECT_EQ(none.findTimestep(S, -1), -1);

  // dt = 0: x is infinite or not a number; clamped modes give 0, exact -1.
  thModelInfo flat = hourly();
  flat.dt = 0.0;
  for (int32_t mode : {0, 1, 2, 5}) {
    EXPECT_EQ(flat.findTimestep(S + 10, mode), 0) << mode;
    EXPECT_EQ(flat.findTimestep(S - 10, mode), 0) << mode;
    EXPECT_EQ(flat.findTimestep(S, mode), 0) << mode;
  }
  EXPECT_EQ(flat.findTimestep(S, -1), -1);
  EXPECT_EQ(flat.findTimestep(S + 10, -1), -1);

  // A fractional step: exact only where x is whole.
  thModelInfo frac;
  frac.dt = 1.5;
  frac.nt = 10;
  EXPECT_EQ(frac.findTimestep(3, -1), 2);
  EXPECT_EQ(frac.findTimestep(4, -1), -1);  // ts2DT(3) is 4, yet 4 is no exact step
  EXPECT_EQ(frac.findTimestep(4, 0), 3);
}

TEST(TimeAxis, TextToDateTime) {
  thModelInfo mi = hourly();
  EXPECT_EQ(mi.timeStr2DT("12"), S + 12 * 3600);
  EXPECT_EQ(mi.timeStr2DT("12.7"), S + 12 * 3600);
  EXPECT_EQ(mi.timeStr2DT(" 3"), S + 3 * 3600);
  EXPECT_EQ(mi.timeStr2DT("-2"), S - 2 * 3600);
  EXPECT_EQ(mi.timeStr2DT("2e1"), S + 2 * 3600);  // a number, whose integer part atoi reads as 2
  EXPECT_EQ(mi.timeStr2DT("2012-06-01"), 1338508800);
  EXPECT_EQ(mi.timeStr2DT("2000-03-01 12:30"), 951913800);
  EXPECT_VEXCEPTION(mi.timeStr2DT("12 "), "Invalid date: 12 ");
  EXPECT_VEXCEPTION(mi.timeStr2DT("soon"), "Invalid date: soon");
  EXPECT_VEXCEPTION(mi.timeStr2DT(""), "Invalid date: ");

  EXPECT_EQ(mi.timeList2DT("1,,2012-06-01,3,"), (std::vector<int64_t>{S + 3600, 1338508800, S + 10800}));
  EXPECT_EQ(mi.timeList2DT("2000-03-01 01:00:00,0"), (std::vector<int64_t>{S + 3600, S}));
  EXPECT_TRUE(mi.timeList2DT("").empty());
  EXPECT_TRUE(mi.timeList2DT(",,").empty());
  EXPECT_VEXCEPTION(mi.timeList2DT("1,x"), "Invalid date: x");

  mi.setStartDT("2012-06-01 00:00:10");
  EXPECT_EQ(mi.startDT, 1338508810);
  EXPECT_VEXCEPTION(mi.setStartDT("2012-6-1"), "Invalid date: 2012-6-1");
  EXPECT_EQ(mi.startDT, 1338508810);
}
