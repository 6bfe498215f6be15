#include "support/VStr.h"

#include <cctype>

namespace VCppLib::VStr {

bool isInteger(std::string s) {
  if (s.empty()) return false;
  for (unsigned char c : s) {
    if (!std::isdigit(c) && c != '-') return false;
  }
  return true;
}

bool isNumber(std::string s) {
  std::istringstream ss(s);
  double d;
  ss >> d;
  return !ss.fail() && ss.eof();
}

std::vector<std::string> tokenize(std::string s, std::string delims, bool skipEmpty) {
  std::vector<std::string> tokens;
  size_t start = 0;
  while (true) {
    size_t pos = s.find_first_of(delims, start);
    std::string tok = s.substr(start, pos == std::string::npos ? std::string::npos : pos - start);
    if (!(skipEmpty && tok.empty())) tokens.push_back(tok);
    if (pos == std::string::npos) break;
    start = pos + 1;
  }
  return tokens;
}

std::string replaceAll(std::string s, std::string from, std::string to) {
  if (from.empty()) return s;
  size_t pos = 0;
  while ((pos = s.find(from, pos)) != std::string::npos) {
    s.replace(pos, from.size(), to);
    pos += to.size();
  }
  return s;
}

std::string joinStrings(std::vector<std::string> v, std::string sep) {
  std::string out;
  for (size_t i = 0; i < v.size(); i++) {
    if (i > 0) out += sep;
    out += v[i];
  }
  return out;
}

std::string toLower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::string toUpper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

bool startsWith(std::string s, std::string prefix) {
  return prefix.size() <= s.size() && s.compare(0, prefix.size(), prefix) == 0;
}

bool endsWith(std::string s, std::string suffix) {
  return suffix.size() <= s.size() && s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool isTrueStr(std::string s) { return s == "true"; }

std::string boolStr(bool b) { return b ? "true" : "false"; }

std::string padLeft(std::string s, size_t width) {
  if (s.size() >= width) return s;
  return std::string(width - s.size(), ' ') + s;
}

std::string stripTrailingNewlines(std::string s) {
  while (!s.empty() && s.back() == '\n') s.pop_back();
  return s;
}

int32_t findNonNumeric(std::string s, bool fromEnd) {
  static const std::string numeric = "0123456789.+-eE\n";
  size_t pos = fromEnd ? s.find_last_not_of(numeric) : s.find_first_not_of(numeric);
  return pos == std::string::npos ? -1 : static_cast<int32_t>(pos);
}

}  // namespace VCppLib::VStr
