// XML text: lookups, appends and replacements of tag paths. The input is "path\nxml".
#include <string>

#include "fuzzUtil.h"
#include "support/VXml.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string in(reinterpret_cast<const char*>(data), size);
  const size_t nl = in.find('\n');
  const std::string path = nl == std::string::npos ? std::string("a/b") : in.substr(0, nl);
  const std::string text = nl == std::string::npos ? in : in.substr(nl + 1);
  try {
    int32_t len = 0;
    VCppLib::xmlFindTag(text, path, len);
    VCppLib::xmlFindTag(text, path, len, "");
    VCppLib::xmlGetValue(text, path);
    VCppLib::xmlAppendToValue(text, path, "x");
    VCppLib::xmlSetValue(text, path, "v");
  } catch (const VCppLib::VException&) {
  }
  return 0;
}
