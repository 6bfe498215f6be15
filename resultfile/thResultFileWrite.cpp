// Writing result files, the part common to all formats: the order of events, the counters, the
// float64 entry, the text buffer and the static items. The bytes of each format are written by
// that format's source.

#include <algorithm>
#include <climits>
#include <cstring>

#include "resultfile/thResultFile.h"
#include "support/VDT.h"
#include "support/VFiles.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;

int32_t thResultFile::writeHeader() {
  // The folder must exist; both "\\" and "/" separate folders here.
  std::string folder = VCppLib::dirPart(filename);
  if (!folder.empty() && !VCppLib::isDir(folder)) throw VException("No such folder: '" + folder + "'");
  if (itemNameVec.empty()) throw VException("thResultFile::writeHeader: itemNameVec is empty.");
  maxItemLength = itemLengthVec.empty() ? 0 : *std::max_element(itemLengthVec.begin(), itemLengthVec.end());
  if (itemLengthVec.empty()) itemLengthVec.assign(itemNameVec.size(), mInfo.cells);
  if (itemNameVec.size() != itemLengthVec.size())
    throw VException("thResultFile::writeHeader: itemNameVec.Size()!=itemLengthVec.size().");
  writeTimestep = 0;
  writeItem = 0;
  switch (format) {
    case EMT:
    case EMF: writeHeaderText(); break;
    case NC: writeHeaderNC(); break;
    case EMB:
    case RESTART:
    case DECOUPLED: writeHeaderEMB(); break;
    default: throw VException("thResultFile::writeHeader undefined format.");
  }
  fileTime = VCppLib::VDT::nowLongDT();
  return 0;
}

void thResultFile::checkModelForWrite() {
  thMesh2D& m = mInfo.mesh2d;
  std::string name = getFileName();
  if (!mInfo.isInit || m.noe < 1 || m.non < 1 || mInfo.nol < 1 || mInfo.cells < 1 || !m.en || !m.eVoronoiX ||
      !mInfo.elemBathy || !mInfo.dz)
    throw VException("thResultFile::writeHeader: the model of '" + name +
                     "' is not set up; fill the mesh and the layers and run initMesh and initCells first.");
  int64_t timestepLen = 0;
  for (size_t i = 0; i < itemNameVec.size(); ++i) {
    if (itemLengthVec[i] < 1)
      throw VException("thResultFile::writeHeader: item '" + itemNameVec[i] + "' of '" + name +
                       "' has the length " + VStr::toString<int>(itemLengthVec[i]) +
                       "; an item holds at least one value.");
    timestepLen += itemLengthVec[i];
  }
  // value positions within a timestep are 32-bit numbers
  if (timestepLen > INT32_MAX)
    throw VException("thResultFile::writeHeader: the items of '" + name + "' hold " +
                     VStr::toString<long long>(timestepLen) +
                     " values per timestep, more than a result file can address (2^31 - 1).");
}

int32_t thResultFile::writeHeader(int32_t noItems) {
  if (noItems > 0 && noItems != static_cast<int32_t>(itemNameVec.size()))
    for (int32_t i = 0; i < noItems; ++i) itemNameVec.push_back(VStr::toString<int>(i));
  return writeHeader();
}

int32_t thResultFile::writeItemData(float* data, int32_t n) {
  if (n < 0 || (n > 0 && !data))
    throw VException("thResultFile::writeItemData: no data, or a negative count, was given for '" +
                     getFileName() + "'.");
  switch (format) {
    case EMB:
    case RESTART:
    case DECOUPLED: writeItemDataEMB(data, n); break;
    case NC: writeItemDataNC(data, n); break;
    case EMF:
    case EMT: writeItemDataText(data, n); break;
    default: throw VException("thResultFile::readItemData undefined format.");
  }
  return 0;
}

int32_t thResultFile::writeItemData(double* data, int32_t n) {
  if (n < 0 || (n > 0 && !data))
    throw VException("thResultFile::writeItemData: no data, or a negative count, was given for '" +
                     getFileName() + "'.");
  // floatBuf holds maxItemLength values; with the lengths filled in by writeHeader the longest
  // item may be longer than that, so the buffer takes the larger of the two.
  int32_t room = maxItemLength;
  for (int32_t len : itemLengthVec) room = std::max(room, len);
  if (n > room)
    throw VException("thResultFile::writeItemData: " + VStr::toString<int>(n) +
                     " values are more than the longest item of '" + getFileName() + "' holds (" +
                     VStr::toString<int>(room) + ").");
  // A header written again may bring longer items than the buffer was made for.
  if (!floatBuf || floatBufLen < room) {
    delete[] floatBuf;
    floatBufLen = room > 0 ? room : 1;
    floatBuf = new float[floatBufLen];
  }
  for (int32_t i = 0; i < n; ++i) floatBuf[i] = static_cast<float>(data[i]);
  return writeItemData(floatBuf, n);
}

void thResultFile::appendText(std::string s) {
  const size_t cap = sizeof textBuf;
  size_t pos = 0;
  while (pos < s.size()) {
    size_t rest = s.size() - pos;
    if (textBufLen + rest >= cap) {
      closeFile(writeTimestep);  // flushes the text formats
      if (textBufLen + 1 >= static_cast<int32_t>(cap))
        throw VException("thResultFile::appendText: the text buffer of '" + getFileName() +
                         "' cannot be flushed in this format.");
    }
    // a text longer than the buffer goes in pieces
    size_t take = std::min(rest, cap - 1 - textBufLen);
    std::memcpy(textBuf + textBufLen, s.data() + pos, take);
    textBufLen += static_cast<int32_t>(take);
    pos += take;
  }
}

void thResultFile::closeFile(int32_t noTimesteps) {
  switch (format) {
    case EMT:
    case EMF: closeFileText(noTimesteps); break;
    case EMB:
    case RESTART:
    case DECOUPLED: closeFileEMB(noTimesteps); break;
    case NC: closeFileNC(); break;  // the time dimension is the count: nothing to patch
    default: break;
  }
}

int32_t thResultFile::setNoTimesteps(int32_t noTimesteps) {
  mInfo.nt = noTimesteps;
  // only the binary header carries a count to patch; the other formats have none
  if (format == EMB || format == RESTART || format == DECOUPLED) patchNoTimestepsEMB(noTimesteps);
  return 0;
}

// ---------------------------------------------------------------- static items

namespace {

void removeStatic(std::vector<staticItem>& items, const std::string& name) {
  for (auto it = items.begin(); it != items.end();)
    if (it->name == name) {
      if (it->ownsData) delete[] it->data;
      it = items.erase(it);
    } else {
      ++it;
    }
}

staticItem makeStatic(const std::string& name, void* data, int32_t n, int32_t bytesPerValue,
                      const char* typeName) {
  staticItem si;
  si.noValues = n;
  si.noBytes = bytesPerValue * n;
  si.data = n > 0 ? static_cast<uint8_t*>(data) : nullptr;
  si.name = name;
  si.typeName = typeName;
  return si;
}

}  // namespace

void thResultFile::addStaticItem(std::string name, float* data, int32_t n) {
  removeStatic(staticItems, name);
  staticItems.insert(staticItems.begin(), makeStatic(name, data, n, 4, "float"));
}

void thResultFile::addStaticItem(std::string name, int32_t* data, int32_t n) {
  removeStatic(staticItems, name);
  staticItems.insert(staticItems.begin(), makeStatic(name, data, n, 4, "int"));
}

void thResultFile::addStaticItem(std::string name, char* data, int32_t n, int32_t pos) {
  removeStatic(staticItems, name);
  staticItem si = makeStatic(name, data, n, 1, "char");
  if (pos >= 0 && pos < static_cast<int32_t>(staticItems.size()))
    staticItems.insert(staticItems.begin() + pos, si);
  else
    staticItems.push_back(si);
}

}  // namespace thalmod
