// Text tables: lines of three numbers (x, y, z) parted by one delimiter, e.g. "1.5 2 -3\n", read as
// float; an optional first line of names ("x y z") whose first token is not a number.
#include "support/VTextTable.h"

#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <memory>

#include "support/VStr.h"

namespace VCppLib {

static bool startsAt(const std::string& text, size_t pos, const std::string& what) {
  return !what.empty() && text.compare(pos, what.size(), what) == 0;
}

// Nested blocks of the same kind are counted rather than recursed into, so that a long run of
// openings cannot exhaust the stack; the result is that of the recursive reading.
void skipCommentBlock(std::string text, int32_t& pos, std::string open, std::string close, bool skipClose) {
  if (pos < 0 || static_cast<size_t>(pos) > text.size()) {
    throw VException("The comment block position " + std::to_string(pos) + " lies outside the text.");
  }
  size_t p = static_cast<size_t>(pos) + open.size();
  int64_t depth = 1;
  while (true) {
    while (p < text.size() && !startsAt(text, p, close)) {
      if (startsAt(text, p, open)) {
        p += open.size();
        depth++;
      } else {
        p++;
      }
    }
    if (p >= text.size()) throw VException("Unmatched comment block. ");
    if (depth == 1) break;
    p += close.size();  // inner blocks always end behind their close
    depth--;
  }
  if (skipClose) p += close.size();
  pos = static_cast<int32_t>(p);
}

std::string removeComments(std::string text) {
  std::string out;
  out.reserve(text.size());
  int32_t i = 0;
  const int32_t n = static_cast<int32_t>(text.size());
  while (i < n) {
    if (startsAt(text, i, "<!--")) skipCommentBlock(text, i, "<!--", "-->", true);
    if (i < n && startsAt(text, i, "/*")) skipCommentBlock(text, i, "/*", "*/", true);
    if (i < n && startsAt(text, i, "//")) skipCommentBlock(text, i, "//", "\n", false);
    if (i < n) out += text[i];
    i++;
  }
  return out;
}

char detectDelimiter(std::string text, std::string candidates) {
  for (char c : candidates) {
    if (text.find(c) != std::string::npos) return c;
  }
  throw VException("Delimiter could not be detected.");
}

std::vector<std::string> readFirstLine(std::string path) {
  // A directory opens here but cannot be read: it has no first line.
  struct stat st;
  if (stat(path.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) return {};
  std::ifstream in(path, std::ios::binary);
  if (!in) return {};
  std::string line;
  std::getline(in, line);  // an empty file has an empty first line
  if (in.bad()) return {};
  return {line + "\n"};
}

int32_t readXYZ(std::string path, std::vector<double>& x, std::vector<double>& y, std::vector<double>& z,
                std::vector<std::string>& header, std::string delim) {
  std::vector<std::string> first = readFirstLine(path);
  if (first.empty()) return -1;
  std::vector<std::string> tokens = VStr::tokenize(first[0], delim);
  bool hasHeader = !VStr::isNumber(tokens[0]);
  if (hasHeader) {
    header = tokens;
    header.back() = VStr::stripTrailingNewlines(header.back());
  }
  // A "%" in the delimiter must stand for itself, not start a conversion.
  std::string d = VStr::replaceAll(delim, "%", "%%");
  std::string fmt = "%f" + d + "%f" + d + "%f";
  std::unique_ptr<FILE, int (*)(FILE*)> f(std::fopen(path.c_str(), "r"), std::fclose);
  if (f) {
    char buf[1024];
    if (hasHeader && std::fgets(buf, sizeof buf, f.get()) == nullptr) return static_cast<int32_t>(x.size());
    float a, b, c;
    while (std::fscanf(f.get(), fmt.c_str(), &a, &b, &c) == 3) {
      x.push_back(a);
      y.push_back(b);
      z.push_back(c);
    }
  }
  return static_cast<int32_t>(x.size());
}

}  // namespace VCppLib
