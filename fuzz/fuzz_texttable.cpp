// Text tables: comment removal, delimiter detection and three-column tables read from a file.
#include <string>
#include <vector>

#include "fuzzUtil.h"
#include "support/VTextTable.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    VCppLib::removeComments(text);
  } catch (const VCppLib::VException&) {
  }
  try {
    VCppLib::detectDelimiter(text, "\t;, ");
  } catch (const VCppLib::VException&) {
  }
  thFuzz::InputFile in(data, size, "xyz");
  std::vector<double> x, y, z;
  std::vector<std::string> header;
  try {
    VCppLib::readXYZ(in.path, x, y, z, header, "");
    VCppLib::readXYZ(in.path, x, y, z, header, ";");
    VCppLib::readFirstLine(in.path);
  } catch (const VCppLib::VException&) {
  }
  return 0;
}
