#include "support/VDT.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "support/VStr.h"

namespace VCppLib::VDT {

static bool fitsInt32(long long v) {
  return v >= std::numeric_limits<int32_t>::min() && v <= std::numeric_limits<int32_t>::max();
}

bool isDateTimeStr(std::string s) {
  size_t L = s.size();
  if (L <= 9) return false;
  if (!VStr::isInteger(s.substr(0, 4)) || !VStr::isInteger(s.substr(5, 2)) ||
      !VStr::isInteger(s.substr(8, 2))) {
    return false;
  }
  if (L > 12 && (s[10] != ' ' || !VStr::isInteger(s.substr(11, 2)))) return false;
  if (L > 15 && (s[13] != ':' || !VStr::isInteger(s.substr(14, 2)))) return false;
  if (L >= 19 && (s[16] != ':' || !VStr::isInteger(s.substr(17, 2)))) return false;
  return true;
}

int64_t strDT2longDT(std::string s) {
  if (!isDateTimeStr(s)) throw VException("Invalid date: " + s);
  // Fields the text does not have keep these defaults. A scan that stops early (a separator other
  // than "-") leaves month and day at 1 rather than undefined.
  long long year = 1970, month = 1, day = 1, hour = 0, minute = 0;
  double seconds = 0.0;
  std::sscanf(s.c_str(), "%lld-%lld-%lld %lld:%lld:%lf", &year, &month, &day, &hour, &minute, &seconds);
  // The shape test lets long digit runs through; fields must fit the broken-down time.
  if (!fitsInt32(year - 1900) || !fitsInt32(month - 1) || !fitsInt32(day) || !fitsInt32(hour) ||
      !fitsInt32(minute) || !(seconds > -2147483648.0 && seconds < 2147483648.0)) {
    throw VException("Invalid date: " + s);
  }
  std::tm t{};
  t.tm_sec = static_cast<int>(seconds);  // truncated toward zero
  t.tm_min = static_cast<int>(minute);
  t.tm_hour = static_cast<int>(hour);
  t.tm_mday = static_cast<int>(day);
  t.tm_mon = static_cast<int>(month - 1);
  t.tm_year = static_cast<int>(year - 1900);
  t.tm_isdst = 0;
  return tm2longDT(&t);
}

int64_t strDT2longDT(std::string date, std::string time) { return strDT2longDT(date + " " + time); }

int64_t tm2longDT(const std::tm* t) {
  static const int64_t cum[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  int64_t q = t->tm_mon / 12;
  int64_t mon = t->tm_mon - 12 * q;
  int64_t y = t->tm_year + q;
  // A negative month (a month of 0 in a text) would index before the table; it rolls back into
  // the previous year instead, so month 0 is December before, as month 13 is January after.
  if (mon < 0) {
    mon += 12;
    y -= 1;
  }
  int64_t year = y + 1900;
  int64_t days = cum[mon] + 365 * (year - 1970) + (year - 1968) / 4;
  // Before 1969 the count is left as it comes out (one day low in leap years); time variables
  // of files rely on that.
  if (year < 1969) days -= 1;
  days = days - y / 100 + (year - 1600) / 400;
  bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  if (leap && mon < 2) days -= 1;
  int64_t result = (((days + t->tm_mday - 1) * 24 + t->tm_hour) * 60 + t->tm_min) * 60 + t->tm_sec;
  if (t->tm_isdst == 1) result -= 3600;
  return result;
}

int64_t ymdhms2longDT(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute,
                      int32_t second) {
  // The shifts by 1900 and 1 cannot overflow an int32 for any year or month but the very lowest.
  const int32_t lowest = std::numeric_limits<int32_t>::min();
  std::tm t{};
  t.tm_year = year < lowest + 1900 ? lowest : year - 1900;
  t.tm_mon = month < lowest + 1 ? lowest : month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_min = minute;
  t.tm_sec = second;
  t.tm_isdst = 0;
  return tm2longDT(&t);
}

std::string longDT2StrDT(int64_t t) {
  std::time_t tt = static_cast<std::time_t>(t);
  std::tm b{};
  if (gmtime_r(&tt, &b) == nullptr) return "";
  return std::to_string(static_cast<int64_t>(b.tm_year) + 1900) + "-" +
         VStr::toString<int>(b.tm_mon + 1, -1, 2) + "-" + VStr::toString<int>(b.tm_mday, -1, 2) + " " +
         VStr::toString<int>(b.tm_hour, -1, 2) + ":" + VStr::toString<int>(b.tm_min, -1, 2) + ":" +
         VStr::toString<int>(b.tm_sec, -1, 2);
}

int64_t nowLongDT() {
  std::time_t now = std::time(nullptr);
  std::tm b{};
  localtime_r(&now, &b);
  return tm2longDT(&b);
}

static std::string formatTm(const std::tm& b, const std::string& fmt) {
  char buf[80];
  size_t n = std::strftime(buf, sizeof buf, fmt.c_str(), &b);
  return std::string(buf, n);
}

std::string nowStr(std::string fmt) {
  std::time_t now = std::time(nullptr);
  std::tm b{};
  localtime_r(&now, &b);
  return formatTm(b, fmt);
}

std::string longDT2Fmt(int64_t t, std::string fmt) {
  std::time_t tt = static_cast<std::time_t>(t);
  std::tm b{};
  if (gmtime_r(&tt, &b) == nullptr) return "";
  return formatTm(b, fmt);
}

int64_t addDaysLongDT(double days, int64_t t) {
  // Beyond a billion years either way the sum saturates instead of overflowing.
  const double limit = 1e12;
  double d = std::isnan(days) ? 0.0 : std::trunc(days);
  if (d > limit) d = limit;
  if (d < -limit) d = -limit;
  int64_t result;
  if (__builtin_add_overflow(static_cast<int64_t>(d) * 86400, t, &result)) {
    return d > 0 ? std::numeric_limits<int64_t>::max() : std::numeric_limits<int64_t>::min();
  }
  return result;
}

int32_t dayOfYear(int64_t t) {
  std::time_t tt = static_cast<std::time_t>(t);
  std::tm b{};
  if (gmtime_r(&tt, &b) == nullptr) return -1;
  return b.tm_yday;
}

int32_t parseDuration(std::string s) {
  double n = std::atof(s.c_str());
  char unit = s.empty() ? ' ' : s.back();
  switch (unit) {
    case 'y': n *= 365.0 * 24 * 3600; break;
    case 'q': n *= 365.0 * 6 * 3600; break;
    case 'm': n *= 30.0 * 24 * 3600; break;
    case 'w': n *= 7.0 * 24 * 3600; break;
    case 'd': n *= 24.0 * 3600; break;
    case 'h': n *= 3600.0; break;
    case 'M': n *= 60.0; break;
    default: break;
  }
  // Durations beyond the 32-bit range saturate rather than wrap.
  if (std::isnan(n)) return 0;
  if (n >= 2147483647.0) return std::numeric_limits<int32_t>::max();
  if (n <= -2147483648.0) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(n);
}

std::string secs2ClockStr(double secs) {
  if (!std::isfinite(secs)) secs = 0.0;
  int h = static_cast<int>(std::fmod(std::trunc(secs / 3600), 24.0));
  int m = static_cast<int>(std::fmod(std::trunc(secs / 60), 60.0));
  int s = static_cast<int>(std::fmod(std::trunc(secs), 60.0));
  char buf[40];
  std::snprintf(buf, sizeof buf, "%02d:%02d:%02d", h, m, s);
  return buf;
}

// The raw clock() as it stands, unscaled. tocClock and clockMs2Str count a clock of 1000 ticks a
// second; where CLOCKS_PER_SEC differs (1000000 on POSIX) their results are in that proportion.
double ticClock() { return static_cast<double>(std::clock()); }

double tocClock(double tic) { return (ticClock() - tic) * 10.0 / 1000.0 / 10.0; }

std::string clockMs2Str(double ms, bool withUnit, int32_t precision) {
  return VStr::toString<double>(ms * 10.0 / 1000.0 / 10.0, precision) + (withUnit ? " sec." : "");
}

}  // namespace VCppLib::VDT
