// The equidistant time axis of a model run: startDT (long date-time of timestep 0), dt (seconds,
// need not be whole) and nt timesteps. Each step is computed from 0, and its offset from the start
// is cut to a signed 32-bit count of seconds.
#include <climits>
#include <cmath>
#include <cstdlib>

#include "model/thModelInfo.h"
#include "support/VDT.h"
#include "support/VStr.h"

namespace thalmod {

namespace {

// Truncation toward zero to int32 as the processor does it: NaN and values outside the int32
// range give the most negative int32 (so an offset beyond 2^31 seconds does not survive).
int32_t truncInt32(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(v);
}

}  // namespace

// A startDT near the ends of the 64-bit range wraps around instead of overflowing.
int64_t thModelInfo::ts2DT(int32_t ts) const {
  const int32_t offset = truncInt32(static_cast<double>(ts) * dt);
  return static_cast<int64_t>(static_cast<uint64_t>(startDT) + static_cast<uint64_t>(int64_t{offset}));
}

std::string thModelInfo::ts2StrDT(int32_t ts) const { return VCppLib::VDT::longDT2StrDT(ts2DT(ts)); }

int64_t thModelInfo::lastDT() const { return ts2DT(static_cast<int32_t>(int64_t{nt} - 1)); }

int32_t thModelInfo::findTimestep(int64_t dateTime, int32_t RoundFloorCeil) const {
  int64_t diff;
  const double span = __builtin_sub_overflow(dateTime, startDT, &diff)
                          ? static_cast<double>(dateTime) - static_cast<double>(startDT)
                          : static_cast<double>(diff);
  const double x = span / dt;
  const int32_t last = nt > INT32_MIN ? nt - 1 : INT32_MIN;
  if (RoundFloorCeil < 0) {
    const int32_t t = truncInt32(std::floor(x + 0.5));
    return (static_cast<double>(t) == x && t >= 0 && t <= last) ? t : -1;
  }
  // With nt = 0 the upper bound is -1: a timestep below 0 gives 0, any other -1.
  auto clamp = [last](int32_t t) { return t < 0 ? 0 : (t > last ? last : t); };
  if (RoundFloorCeil == 1 && x >= 0) return clamp(truncInt32(std::floor(x)));
  if (RoundFloorCeil == 2 && x <= static_cast<double>(last)) return clamp(truncInt32(std::ceil(x)));
  return clamp(truncInt32(std::floor(x + 0.5)));  // nearest; a tie goes up
}

int64_t thModelInfo::timeStr2DT(std::string s) const {
  if (VCppLib::VStr::isNumber(s)) {
    // The integer part as atoi reads it (atoi is strtol cut to int).
    return ts2DT(static_cast<int32_t>(std::strtol(s.c_str(), nullptr, 10)));
  }
  return VCppLib::VDT::strDT2longDT(s);
}

std::vector<int64_t> thModelInfo::timeList2DT(std::string s) const {
  std::vector<int64_t> out;
  for (const std::string& piece : VCppLib::VStr::tokenize(s, ",", true)) out.push_back(timeStr2DT(piece));
  return out;
}

void thModelInfo::setStartDT(std::string s) { startDT = VCppLib::VDT::strDT2longDT(s); }

}  // namespace thalmod
