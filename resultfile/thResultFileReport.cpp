// The plain-text report of a result file: name, format, static items and items, and at a high
// level the report of the model description.

#include "resultfile/thResultFile.h"
#include "support/VStr.h"

namespace thalmod {

std::string thResultFile::toString(int32_t level) {
  namespace VStr = VCppLib::VStr;
  const std::string& nl = VCppLib::newline;
  std::string s = "Filename:\t" + filename + nl;
  s += "Format:\t" + fileFmtEnum2str(static_cast<fileFmtEnum>(format)) + nl;
  s += "Static items:" + nl;
  for (const auto& si : staticItems)
    s += "\t" + si.name + ", length=" + VStr::toString<int>(si.noValues) + nl;
  s += "Items:" + nl;
  size_t n = std::min(itemNameVec.size(), itemLengthVec.size());
  for (size_t i = 0; i < n; ++i)
    s += "\t" + itemNameVec[i] + ", length=" + VStr::toString<int>(itemLengthVec[i]) + nl;
  if (level > 9) s += mInfo.toString(level);
  return s;
}

}  // namespace thalmod
