#include "support/VDT.h"

#include <cstdlib>

#include "testutil/thTestUtil.h"

using namespace VCppLib::VDT;

TEST(VDT, TextToLongAndBack) {
  EXPECT_EQ(strDT2longDT("1970-01-01 00:00:00"), 0);
  EXPECT_EQ(longDT2StrDT(0), "1970-01-01 00:00:00");
  EXPECT_EQ(strDT2longDT("2000-03-01"), 951868800);  // a date alone is midnight
  EXPECT_EQ(strDT2longDT("2000-03-01 12"), 951912000);
  EXPECT_EQ(strDT2longDT("2000-03-01 12:30"), 951913800);
  EXPECT_EQ(strDT2longDT("2000-03-01 12:30:59.9"), 951913859);  // seconds truncate
  EXPECT_EQ(strDT2longDT("2000-03-01", "12:30:00"), 951913800);
  // 2024-02-29 06:07:08: 19782 days since 1970 (54 years, 13 leap days, Jan 31 + 28 days).
  EXPECT_EQ(strDT2longDT("2024-02-29 06:07:08"), 19782LL * 86400 + 6 * 3600 + 7 * 60 + 8);
  EXPECT_EQ(longDT2StrDT(19782LL * 86400 + 6 * 3600 + 7 * 60 + 8), "2024-02-29 06:07:08");
  EXPECT_EQ(longDT2StrDT(951913859), "2000-03-01 12:30:59");
  EXPECT_EQ(longDT2StrDT(-1), "1969-12-31 23:59:59");
  EXPECT_EQ(strDT2longDT("1969-12-31 23:59:59"), -1);
  EXPECT_EQ(longDT2StrDT(-62135596800LL), "1-01-01 00:00:00");  // a short year is not padded
  EXPECT_EQ(longDT2StrDT(INT64_MAX), "");                        // beyond what can be broken down
  // Anything may follow the seconds.
  EXPECT_EQ(strDT2longDT("1970-01-02 00:00:00 UTC"), 86400);
}

TEST(VDT, RollOverAndBehaviourBefore1969) {
  EXPECT_EQ(strDT2longDT("2000-13-01"), strDT2longDT("2001-01-01"));
  EXPECT_EQ(strDT2longDT("2000-01-45"), strDT2longDT("2000-02-14"));
  EXPECT_EQ(strDT2longDT("2000-01-01 25:61:61"), strDT2longDT("2000-01-02 02:02:01"));
  // A month of 0 is December of the year before, a month of -1 November.
  EXPECT_EQ(strDT2longDT("2001-00-01"), strDT2longDT("2000-12-01"));
  EXPECT_EQ(strDT2longDT("2001--1-01"), strDT2longDT("2000-11-01"));
  EXPECT_EQ(strDT2longDT("1900-01-01 00:00:00"), -2209075200LL);  // true value -2208988800
  EXPECT_EQ(strDT2longDT("1968-03-01 00:00:00"), -58060800LL);    // one day low
  EXPECT_EQ(strDT2longDT("1969-03-01 00:00:00"), -26438400LL);    // right
  // 1967 is a common year: right (1967, 1968 and 1969 make 1096 days).
  EXPECT_EQ(strDT2longDT("1967-01-01"), -1096LL * 86400);
}

TEST(VDT, InvalidDates) {
  EXPECT_VEXCEPTION(strDT2longDT("2000-3-1"), "Invalid date: 2000-3-1");
  EXPECT_VEXCEPTION(strDT2longDT(""), "Invalid date: ");
  EXPECT_VEXCEPTION(strDT2longDT("2000-01-01T00:00:00"), "Invalid date: 2000-01-01T00:00:00");
  EXPECT_VEXCEPTION(strDT2longDT("2000-01-01 00-00"), "Invalid date: 2000-01-01 00-00");
  // Digit runs that pass the shape test but do not fit a broken-down time.
  EXPECT_VEXCEPTION(strDT2longDT("200000000000"), "Invalid date: 200000000000");
  EXPECT_VEXCEPTION(strDT2longDT("2000-01-01 00:00:0099999999999"),
                    "Invalid date: 2000-01-01 00:00:0099999999999");
  EXPECT_TRUE(isDateTimeStr("2000/03/01 00:00:00"));  // separators at 4 and 7 are not looked at
  EXPECT_TRUE(isDateTimeStr("2000-01-01"));
  EXPECT_FALSE(isDateTimeStr("2000-01-1"));
  EXPECT_TRUE(isDateTimeStr("2000-01-01 0"));  // 12 characters: the hour is not looked at
  EXPECT_TRUE(isDateTimeStr("2000-01-01 00"));
  EXPECT_TRUE(isDateTimeStr("2000-01-01 00:0"));  // 15 characters: minutes not looked at
  EXPECT_FALSE(isDateTimeStr("2000-01-01 00:0x"));
  EXPECT_FALSE(isDateTimeStr("2000-01-01x00"));
  EXPECT_TRUE(isDateTimeStr("2000-01-01 00:00:0"));  // 18 characters: seconds not looked at
  // A scan stopped by "/" leaves month and day at 1.
  EXPECT_EQ(strDT2longDT("2000/03/01 00:00:00"), strDT2longDT("2000-01-01"));
}

TEST(VDT, TmCoreAndHelpers) {
  std::tm t{};
  t.tm_year = 100;
  t.tm_mon = 2;
  t.tm_mday = 1;
  EXPECT_EQ(tm2longDT(&t), 951868800);
  t.tm_isdst = 1;
  EXPECT_EQ(tm2longDT(&t), 951868800 - 3600);
  EXPECT_EQ(ymdhms2longDT(2000, 3, 1, 12, 30, 0), 951913800);
  EXPECT_EQ(ymdhms2longDT(2000, 0, 1, 0, 0, 0), strDT2longDT("1999-12-01"));
  EXPECT_EQ(addDaysLongDT(1.9, 100), 86500);
  EXPECT_EQ(addDaysLongDT(-1.9, 0), -86400);
  EXPECT_EQ(dayOfYear(0), 0);
  EXPECT_EQ(dayOfYear(strDT2longDT("2000-12-31")), 365);
  EXPECT_EQ(longDT2Fmt(951913800, "%Y%m%d%H%M%S"), "20000301123000");
  EXPECT_EQ(longDT2Fmt(0, std::string(100, 'x')), "");  // too long for 80 characters
}

TEST(VDT, DurationsAndClock) {
  EXPECT_EQ(parseDuration("2d"), 172800);
  EXPECT_EQ(parseDuration("2M"), 120);
  EXPECT_EQ(parseDuration("2m"), 5184000);
  EXPECT_EQ(parseDuration("90"), 90);
  EXPECT_EQ(parseDuration("1y"), 31536000);
  EXPECT_EQ(parseDuration("1q"), 7884000);
  EXPECT_EQ(parseDuration("1w"), 604800);
  EXPECT_EQ(parseDuration("1.5h"), 5400);
  EXPECT_EQ(parseDuration(""), 0);
  EXPECT_EQ(parseDuration("1e9y"), 2147483647);  // saturates
  EXPECT_EQ(secs2ClockStr(90061.0), "01:01:01");
  EXPECT_EQ(secs2ClockStr(59.9), "00:00:59");
  EXPECT_EQ(clockMs2Str(1500.0, true, 2), "1.50 sec.");
  EXPECT_EQ(clockMs2Str(250.0, false, -1), "0.25");
  double tic = ticClock();
  double s = tocClock(tic);
  EXPECT_GE(s, 0.0);
  EXPECT_LT(s, 5.0);
}

TEST(VDT, NowFollowsTheLocalClock) {
  // With the zone set to UTC the local wall clock is the epoch time.
  const char* old = std::getenv("TZ");
  std::string saved = old ? old : "";
  setenv("TZ", "UTC0", 1);
  tzset();
  int64_t before = static_cast<int64_t>(std::time(nullptr));
  int64_t now = nowLongDT();
  std::string stamp = nowStr(VCppLib::VTimeStampFmt);
  EXPECT_GE(now, before);
  EXPECT_LE(now, before + 5);
  EXPECT_EQ(stamp.size(), 14u);
  EXPECT_EQ(stamp.substr(0, 8), longDT2Fmt(now, "%Y%m%d"));
  // One hour east of Greenwich without summer time: the wall clock is an hour ahead.
  setenv("TZ", "XXX-1", 1);
  tzset();
  int64_t ahead = nowLongDT() - static_cast<int64_t>(std::time(nullptr));
  EXPECT_NEAR(static_cast<double>(ahead), 3600.0, 5.0);
  if (old) setenv("TZ", saved.c_str(), 1); else unsetenv("TZ");
  tzset();
}
