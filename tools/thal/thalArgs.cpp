#include "thalArgs.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace thTool {

Args Args::parse(const std::string& command, int argc, char** argv, int first,
                 const std::set<std::string>& allowed) {
  Args a;
  a.command = command;
  for (int i = first; i < argc; ++i) {
    std::string w = argv[i];
    bool isOption = w.size() > 1 && w[0] == '-' && !(w[1] >= '0' && w[1] <= '9') && w[1] != '.';
    if (!isOption) {
      a.positional.push_back(w);
      continue;
    }
    if (!allowed.count(w)) throw ToolError("Unknown option " + w + " for 'thal " + command + "'.");
    if (i + 1 >= argc) throw ToolError("The option " + w + " needs a value.");
    a.options[w] = argv[++i];
  }
  return a;
}

const std::string& Args::required(const std::string& name) const {
  auto it = options.find(name);
  if (it == options.end()) throw ToolError("'thal " + command + "' needs the option " + name + ".");
  return it->second;
}

std::string Args::get(const std::string& name, const std::string& fallback) const {
  auto it = options.find(name);
  return it == options.end() ? fallback : it->second;
}

void Args::expectPositional(size_t n, const std::string& usage) const {
  if (positional.size() != n) throw ToolError("Usage: " + usage);
}

int parseInt(const std::string& text, const std::string& what) {
  errno = 0;
  char* end = nullptr;
  long v = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || errno == ERANGE || v < -2147483647L || v > 2147483647L)
    throw ToolError("The " + what + " '" + text + "' is not a whole number.");
  return static_cast<int>(v);
}

double parseDouble(const std::string& text, const std::string& what) {
  char* end = nullptr;
  double v = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(v))
    throw ToolError("The " + what + " '" + text + "' is not a number.");
  return v;
}

void parsePoint(const std::string& text, double& x, double& y) {
  size_t comma = text.find(',');
  if (comma == std::string::npos) throw ToolError("The point '" + text + "' is not of the form X,Y.");
  x = parseDouble(text.substr(0, comma), "x coordinate");
  y = parseDouble(text.substr(comma + 1), "y coordinate");
}

void parseSize(const std::string& text, int& w, int& h) {
  size_t sep = text.find('x');
  if (sep == std::string::npos) throw ToolError("The size '" + text + "' is not of the form WIDTHxHEIGHT.");
  w = parseInt(text.substr(0, sep), "width");
  h = parseInt(text.substr(sep + 1), "height");
  // Beyond this a bitmap stops being a picture and starts being an allocation failure.
  if (w < 1 || h < 1 || w > 10000 || h > 10000)
    throw ToolError("The size '" + text + "' must be between 1x1 and 10000x10000 pixels.");
}

void parseRange(const std::string& text, double& lo, double& hi) {
  // Numbers hold no ':', so the first one separates them, also in "-5:-1".
  size_t sep = text.find(':');
  if (sep == std::string::npos) throw ToolError("The range '" + text + "' is not of the form MIN:MAX.");
  lo = parseDouble(text.substr(0, sep), "range minimum");
  hi = parseDouble(text.substr(sep + 1), "range maximum");
  if (!(lo < hi)) throw ToolError("The range '" + text + "' needs MIN below MAX.");
}

std::string num(double v, int digits) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.*g", digits, v);
  return buf;
}

}  // namespace thTool
