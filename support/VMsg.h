// Messages of exceptions and reports built from their parts, one way for the whole library: a
// message reads "thMesh2D::f: element " , e, " has " , n, " nodes." instead of each file keeping
// its own number-to-text helper.
#pragma once

#include <cstdio>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>

namespace VCppLib {

// A floating value written with all 17 significant digits, for values whose difference would hide
// at the stream's default of 6 (map extents, colour scales).
struct fullPrecision {
  double value;
};

inline std::ostream& operator<<(std::ostream& os, fullPrecision f) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.17g", f.value);
  return os << buf;
}

namespace detail {
// 8-bit integers are numbers in a message, not characters.
template <typename T>
const auto& msgPart(const T& part) {
  return part;
}
inline int msgPart(const signed char& part) { return part; }
inline int msgPart(const unsigned char& part) { return part; }
}  // namespace detail

// The parts one after the other as a text stream writes them: text as it is, integers in
// decimal, floating values at 6 significant digits (fullPrecision for all of them).
template <typename... Parts>
std::string msg(const Parts&... parts) {
  std::ostringstream ss;
  (ss << ... << detail::msgPart(parts));
  return ss.str();
}

// One value as msg writes it: the short form for the "..." + str(n) + "..." of longer texts.
template <typename T>
std::string str(const T& value) {
  return msg(value);
}

}  // namespace VCppLib
