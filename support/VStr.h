// Small text helpers shared by the whole library. All text is 8-bit, one character a byte;
// strings come in by value and a new string goes back, so a caller's string is never changed.
#pragma once

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "support/VCppLib.h"

namespace VCppLib::VStr {

// A value as text through a text stream. noDec >= 0: fixed notation with that many decimals
// (-1 keeps the stream's default of 6 significant digits). totWidth > 0: padded on the left with
// "0" to that width; the fill stands left of any sign, so -7 at width 3 is "0-7".
template <typename T>
std::string toString(const T& t, int32_t noDec = -1, int32_t totWidth = -1) {
  std::ostringstream ss;
  if (noDec >= 0) ss << std::fixed << std::setprecision(noDec);
  if (totWidth > 0) ss << std::setfill('0') << std::setw(totWidth);
  ss << t;
  return ss.str();
}

// True when s is not empty and holds only digits and "-" (a minus may stand anywhere, repeated).
bool isInteger(std::string s);
// True when a double reads from s and nothing follows it; leading blanks pass, trailing ones don't.
bool isNumber(std::string s);
// Splits s at every character of delims; the text after the last delimiter is a token too, so
// "" gives one empty token and "a," gives "a" and "". skipEmpty leaves the empty tokens out.
std::vector<std::string> tokenize(std::string s, std::string delims, bool skipEmpty = false);
// Every occurrence of from, left to right; what was put in is not scanned again. from "" changes nothing.
std::string replaceAll(std::string s, std::string from, std::string to);
std::string joinStrings(std::vector<std::string> v, std::string sep);
std::string toLower(std::string s);
std::string toUpper(std::string s);
bool startsWith(std::string s, std::string prefix);
bool endsWith(std::string s, std::string suffix);
// True only for exactly "true".
bool isTrueStr(std::string s);
std::string boolStr(bool b);
// Blanks on the left up to width; a longer s stays as it is.
std::string padLeft(std::string s, size_t width);
// Removes all "\n" at the end.
std::string stripTrailingNewlines(std::string s);
// Position of the first (fromEnd: last) character not among "0123456789.+-eE\n"; -1 if none.
int32_t findNonNumeric(std::string s, bool fromEnd = false);

}  // namespace VCppLib::VStr
