// The thal argument parser: the input is the words of a command line, split at zero bytes, and
// the number parsers of the options.
#include <set>
#include <string>
#include <vector>

#include "fuzzUtil.h"
#include "tools/thal/thalArgs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<std::string> words(1, "thal");
  std::string word;
  for (size_t i = 0; i < size; ++i) {
    if (data[i] == 0) {
      words.push_back(word);
      word.clear();
    } else {
      word += static_cast<char>(data[i]);
    }
  }
  words.push_back(word);
  std::vector<char*> argv;
  for (auto& w : words) argv.push_back(w.data());
  const std::set<std::string> allowed = {"--item", "--at", "--size", "--range", "--time", "-o"};
  try {
    thTool::Args a = thTool::Args::parse("paint", static_cast<int>(argv.size()), argv.data(), 1, allowed);
    double x = 0, y = 0, lo = 0, hi = 0;
    int w = 0, h = 0;
    if (a.has("--at")) thTool::parsePoint(a.required("--at"), x, y);
    if (a.has("--size")) thTool::parseSize(a.required("--size"), w, h);
    if (a.has("--range")) thTool::parseRange(a.required("--range"), lo, hi);
    if (a.has("--time")) thTool::parseInt(a.required("--time"), "--time");
    a.expectPositional(1, "usage");
  } catch (const thTool::ToolError&) {
  }
  for (const auto& w : words) {
    try {
      thTool::parseDouble(w, "value");
    } catch (const thTool::ToolError&) {
    }
  }
  return 0;
}
