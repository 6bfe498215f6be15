#include "support/VXml.h"

#include <vector>

#include "support/VStr.h"

namespace VCppLib {

std::string xmlWrap(std::string content, std::string tag, bool block) {
  if (!block) return "<" + tag + ">" + content + "</" + tag + ">";
  // Appending, rather than prefixing a literal, keeps g++ 12 at -O3 free of a false -Wrestrict.
  std::string body(1, '\t');
  body += VStr::replaceAll(content, newline, newline + "\t");
  if (!body.empty() && body.back() == '\t') body.pop_back();
  return "<" + tag + ">" + newline + body + "</" + tag + ">" + newline;
}

std::string xmlElement(std::string tag, std::string value, std::string indent) {
  return indent + "<" + tag + ">" + value + "</" + tag + ">" + newline;
}

std::string xmlElement(std::string tag, const char* value, std::string indent) {
  return xmlElement(tag, std::string(value == nullptr ? "" : value), indent);
}

std::string xmlElement(std::string tag, bool value, std::string indent) {
  return xmlElement(tag, std::string(value ? "true" : "false"), indent);
}

int32_t xmlFindTag(std::string text, std::string tagPath, int32_t& len, std::string delim) {
  len = -1;
  std::vector<std::string> tags =
      delim.empty() ? std::vector<std::string>{tagPath} : VStr::tokenize(tagPath, delim);
  size_t start = 0, end = text.size();  // the search span [start, end)
  for (size_t k = 0; k < tags.size(); k++) {
    std::string open = "<" + tags[k] + ">", close = "</" + tags[k] + ">";
    size_t p1 = text.find(open, start), p2 = text.find(close, start);
    if (p1 == std::string::npos || p2 == std::string::npos || p1 + open.size() > end ||
        p2 + close.size() > end) {
      return -1;
    }
    if (k + 1 == tags.size()) {
      len = static_cast<int32_t>(static_cast<int64_t>(p2) - static_cast<int64_t>(p1));
      return static_cast<int32_t>(p1);
    }
    if (p2 < p1 + open.size()) return -1;  // a closing tag ahead of its opening one
    start = p1 + open.size();
    end = p2;
  }
  return -1;
}

std::string xmlGetValue(std::string text, std::string tagPath, std::string delim) {
  int32_t len;
  int32_t pos = xmlFindTag(text, tagPath, len, delim);
  if (pos < 0 || len <= 0) return "";
  size_t gt = text.find('>', pos);
  size_t stop = static_cast<size_t>(pos) + len;
  if (gt == std::string::npos || gt + 1 > stop) return "";
  return text.substr(gt + 1, stop - gt - 1);
}

std::string xmlAppendToValue(std::string text, std::string tagPath, std::string addition, std::string delim) {
  int32_t len;
  int32_t pos = xmlFindTag(text, tagPath, len, delim);
  if (pos < 0 || len < 1) return text;
  size_t at = static_cast<size_t>(pos) + len;
  return text.substr(0, at) + addition + text.substr(at);
}

std::string xmlSetValue(std::string text, std::string tagPath, std::string value, std::string delim) {
  int32_t len;
  int32_t pos = xmlFindTag(text, tagPath, len, delim);
  if (pos < 0 || len < 1) return text;
  return text.substr(0, pos) + "<" + tagPath + ">" + value + text.substr(static_cast<size_t>(pos) + len);
}

}  // namespace VCppLib
