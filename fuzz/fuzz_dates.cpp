// Date-times and durations as text, and the texts made back from what they give.
#include <string>

#include "fuzzUtil.h"
#include "support/VDT.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    VCppLib::VDT::isDateTimeStr(text);
    const int64_t t = VCppLib::VDT::strDT2longDT(text);
    VCppLib::VDT::longDT2StrDT(t);
    VCppLib::VDT::dayOfYear(t);
  } catch (const VCppLib::VException&) {
  }
  try {
    const size_t blank = text.find(' ');
    if (blank != std::string::npos) VCppLib::VDT::strDT2longDT(text.substr(0, blank), text.substr(blank + 1));
  } catch (const VCppLib::VException&) {
  }
  try {
    VCppLib::VDT::parseDuration(text);
  } catch (const VCppLib::VException&) {
  }
  return 0;
}
