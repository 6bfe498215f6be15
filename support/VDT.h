// Points in time as the long date-time: a signed 64-bit count of seconds since
// 1970-01-01 00:00:00 UTC without leap seconds, with the text form "YYYY-MM-DD HH:MM:SS".
// All calendar work is in UTC, apart from the two "now" functions that read the local clock.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

#include "support/VCppLib.h"

namespace VCppLib::VDT {

// Text to long date-time; a date alone means midnight, hours or hours and minutes may follow.
// Raises "Invalid date: " + s when the text fails the shape test (or a field does not fit 32 bits).
int64_t strDT2longDT(std::string s);
// date + " " + time through the above.
int64_t strDT2longDT(std::string date, std::string time);
// "YYYY-MM-DD HH:MM:SS" (a year of fewer than four digits is not padded); empty when the C library
// cannot break the time down.
std::string longDT2StrDT(int64_t t);
// Shape test of a date-time text (separators at 4 and 7 are not looked at).
bool isDateTimeStr(std::string s);
// The library's own calendar arithmetic: right from 1969 on, and deliberately one day low in leap
// years from 1901 to 1968 (and one or two days low before 1901). Fields may run over their ranges.
int64_t tm2longDT(const std::tm* t);
int64_t ymdhms2longDT(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute, int32_t second);
// The local wall clock of now through tm2longDT, as if it were UTC.
int64_t nowLongDT();
// strftime of the local time of now (at most 79 characters; empty if longer).
std::string nowStr(std::string fmt);
// strftime of t in UTC (at most 79 characters; empty if longer).
std::string longDT2Fmt(int64_t t, std::string fmt);
// days truncated toward zero, times 86400, plus t.
int64_t addDaysLongDT(double days, int64_t t);
// Day of the year of t, from 0 (-1 when the C library cannot break t down).
int32_t dayOfYear(int64_t t);
// "2d", "3h", "5M" (minutes), "1m" (30 days), "1w", "1q" (91.25 days), "1y" (365 days); a plain number is
// seconds.
int32_t parseDuration(std::string s);
// "HH:MM:SS" of a number of seconds, hours modulo 24 (whole days are dropped).
std::string secs2ClockStr(double secs);
// Processor time: clock() as a double, in ticks of CLOCKS_PER_SEC a second (not scaled).
double ticClock();
// (clock() - tic) / 1000: seconds since tic for a clock of 1000 ticks a second; with
// CLOCKS_PER_SEC 1000000 (POSIX) that is milliseconds.
double tocClock(double tic);
// Milliseconds as seconds, through toString with precision, with " sec." behind when withUnit.
std::string clockMs2Str(double ms, bool withUnit = true, int32_t precision = -1);

}  // namespace VCppLib::VDT
