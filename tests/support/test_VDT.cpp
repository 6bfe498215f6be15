#include "support/VDT.h"

#include <cstdlib>
#include <ctime>

#include "testutil/thTestUtil.h"

using namespace VCppLib::VDT;

TEST(VDT, TextToLongAndBackAndTheShapeTest) {
  // 2024-02-29 06:07:08: 19782 days since 1970 (54 years, 13 leap days, Jan 31 + 28 days).
  const int64_t leapDay = 19782LL * 86400 + 6 * 3600 + 7 * 60 + 8;
  const std::pair<const char*, int64_t> parsed[] = {
      {"1970-01-01 00:00:00", 0},
      {"2000-03-01", 951868800},  // a date alone is midnight
      {"2000-03-01 12", 951912000},
      {"2000-03-01 12:30", 951913800},
      {"2000-03-01 12:30:59.9", 951913859},  // seconds truncate
      {"2024-02-29 06:07:08", leapDay},
      {"1969-12-31 23:59:59", -1},
      {"1970-01-02 00:00:00 UTC", 86400},  // anything may follow the seconds
      // Before 1969 the arithmetic is deliberately off in leap years and before 1901.
      {"1900-01-01 00:00:00", -2209075200LL},  // true value -2208988800
      {"1968-03-01 00:00:00", -58060800LL},    // one day low
      {"1969-03-01 00:00:00", -26438400LL},    // right
      {"1967-01-01", -1096LL * 86400}};        // a common year: right (1967 to 1969: 1096 days)
  for (auto [s, t] : parsed) EXPECT_EQ(strDT2longDT(s), t) << s;
  EXPECT_EQ(strDT2longDT("2000-03-01", "12:30:00"), 951913800);
  // A short year is not padded; a time beyond what can be broken down gives nothing.
  const std::pair<int64_t, const char*> printed[] = {
      {0, "1970-01-01 00:00:00"},  {leapDay, "2024-02-29 06:07:08"},     {951913859, "2000-03-01 12:30:59"},
      {-1, "1969-12-31 23:59:59"}, {-62135596800LL, "1-01-01 00:00:00"}, {INT64_MAX, ""}};
  for (auto [t, s] : printed) EXPECT_EQ(longDT2StrDT(t), s) << t;
  // Fields out of range roll over; a month of 0 is December of the year before, -1 November.
  const std::pair<const char*, const char*> same[] = {
      {"2000-13-01", "2001-01-01"},
      {"2000-01-45", "2000-02-14"},
      {"2000-01-01 25:61:61", "2000-01-02 02:02:01"},
      {"2001-00-01", "2000-12-01"},
      {"2001--1-01", "2000-11-01"},
      {"2000/03/01 00:00:00", "2000-01-01"}};  // a scan stopped by "/" leaves month and day at 1
  for (auto [a, b] : same) EXPECT_EQ(strDT2longDT(a), strDT2longDT(b)) << a;
  // The last two pass the shape test but do not fit a broken-down time.
  for (std::string s : {"2000-3-1", "", "2000-01-01T00:00:00", "2000-01-01 00-00", "200000000000",
                        "2000-01-01 00:00:0099999999999"})
    EXPECT_VEXCEPTION(strDT2longDT(s), "Invalid date: " + s);
  // Separators at 4 and 7 are not looked at; hour, minutes, seconds only from 13, 16, 19 characters.
  const std::pair<const char*, bool> shapes[] = {
      {"2000/03/01 00:00:00", true}, {"2000-01-01", true},     {"2000-01-1", false},
      {"2000-01-01 0", true},        {"2000-01-01 00", true},  {"2000-01-01 00:0", true},
      {"2000-01-01 00:0x", false},   {"2000-01-01x00", false}, {"2000-01-01 00:00:0", true}};
  for (auto [s, want] : shapes) EXPECT_EQ(isDateTimeStr(s), want) << s;
}

TEST(VDT, TmCoreHelpersAndTheClocks) {
  std::tm t{};
  t.tm_year = 100, t.tm_mon = 2, t.tm_mday = 1;
  const int64_t plain = tm2longDT(&t);
  t.tm_isdst = 1;
  using L = std::vector<int64_t>;
  EXPECT_EQ((L{plain, tm2longDT(&t), ymdhms2longDT(2000, 3, 1, 12, 30, 0), ymdhms2longDT(2000, 0, 1, 0, 0, 0),
               addDaysLongDT(1.9, 100), addDaysLongDT(-1.9, 0), dayOfYear(0),
               dayOfYear(strDT2longDT("2000-12-31"))}),
            (L{951868800, 951868800 - 3600, 951913800, strDT2longDT("1999-12-01"), 86500, -86400, 0, 365}));
  EXPECT_EQ(longDT2Fmt(951913800, "%Y%m%d%H%M%S"), "20000301123000");
  EXPECT_EQ(longDT2Fmt(0, std::string(100, 'x')), "");  // too long for 80 characters
  const std::pair<const char*, int32_t> durations[] = {
      {"2d", 172800}, {"2M", 120},    {"2m", 5184000}, {"90", 90},          {"1y", 31536000}, {"1q", 7884000},
      {"1w", 604800}, {"1.5h", 5400}, {"", 0},         {"1e9y", 2147483647}};  // the last saturates
  for (auto [s, secs] : durations) EXPECT_EQ(parseDuration(s), secs) << s;
  // the days are dropped
  EXPECT_EQ(secs2ClockStr(90061.0) + secs2ClockStr(59.9), "01:01:0100:00:59");
  EXPECT_EQ(clockMs2Str(1500.0, true, 2) + clockMs2Str(250.0, false, -1), "1.50 sec.0.25");
  // ticClock is clock() unscaled, tocClock the difference to it over 1000
  const double c0 = static_cast<double>(std::clock()), tic = ticClock(),
               c1 = static_cast<double>(std::clock());
  EXPECT_TRUE(c0 <= tic && tic <= c1) << c0 << " " << tic << " " << c1;
  const double toc = tocClock(tic), c2 = static_cast<double>(std::clock());
  EXPECT_TRUE((c1 - tic) / 1000.0 <= toc && toc <= (c2 - tic) / 1000.0) << toc;

  // With the zone set to UTC the local wall clock is the epoch time.
  const char* old = std::getenv("TZ");
  std::string saved = old ? old : "";
  setenv("TZ", "UTC0", 1);
  tzset();
  const int64_t before = static_cast<int64_t>(std::time(nullptr)), now = nowLongDT();
  std::string stamp = nowStr(VCppLib::VTimeStampFmt);
  EXPECT_TRUE(now >= before && now <= before + 5 && stamp.size() == 14u);
  EXPECT_EQ(stamp.substr(0, 8), longDT2Fmt(now, "%Y%m%d"));
  // One hour east of Greenwich without summer time: the wall clock is an hour ahead.
  setenv("TZ", "XXX-1", 1);
  tzset();
  EXPECT_NEAR(static_cast<double>(nowLongDT() - static_cast<int64_t>(std::time(nullptr))), 3600.0, 5.0);
  old ? setenv("TZ", saved.c_str(), 1) : unsetenv("TZ");
  tzset();
}
