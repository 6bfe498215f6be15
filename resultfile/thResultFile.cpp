// thResultFile: the object, its enumerations, format detection, the dispatch of header reading by
// format, the names of the physical files of a logical file, and item lookups.

#include "resultfile/thResultFile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "support/VDT.h"
#include "support/VFiles.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;

std::string backupFileName;

// ---------------------------------------------------------------- enumerations

namespace {

struct fmtText {
  fileFmtEnum f;
  const char* text;
};
constexpr fmtText fmtTexts[] = {{EMT, "EMT"},  {EMB, "EMB"}, {TEXT0D, "TEXT0D"},   {TEXT1D, "TEXT1D"},
                                {EMF, "EMF"},  {NC, "NC"},   {RESTART, "RESTART"}, {DECOUPLED, "DECOUPLED"},
                                {MESH, "MESH"}};

}  // namespace

fileFmtEnum str2fileFmtEnum(std::string s) {
  std::string u = VStr::toUpper(s);
  for (const auto& ft : fmtTexts)
    if (u == ft.text) return ft.f;
  throw VException("str2fileFmtEnum: invalid format definition (" + u + ").");
}

std::string fileFmtEnum2str(fileFmtEnum f) {
  for (const auto& ft : fmtTexts)
    if (f == ft.f) return ft.text;
  throw VException("fileFmtEnum2str: unsupported fileFmtEnum");
}

void backupOrRemoveFile(std::string filename, bool backup) {
  backupFileName = filename;
  if (!VCppLib::fileExists(filename)) return;
  if (backup) {
    std::string stamped = VCppLib::insertBeforeExt(filename, VCppLib::VDT::nowStr(VCppLib::VTimeStampFmt));
    std::rename(filename.c_str(), stamped.c_str());  // a failure leaves the file as it is
  } else {
    std::remove(filename.c_str());
  }
}

// ---------------------------------------------------------------- construction and end

thResultFile::thResultFile(std::string fileName, int32_t fmt) : format(fmt), filename(fileName) {
  std::memset(textBuf, 0, sizeof textBuf);
  try {
    if (fmt == -1) format = getFormatFromFile(filename);
    versionCutoffDT = VCppLib::VDT::strDT2longDT("2012-06-01");
    // A missing file is no error: the object then waits to be written, or for a name to be set.
    if (VCppLib::fileExists(this->filename)) readHeader();
  } catch (...) {
    release();  // the destructor does not run after a failed construction
    throw;
  }
}

thResultFile::thResultFile(std::string fileName, fileFmtEnum fmt)
    : thResultFile(fileName, static_cast<int32_t>(fmt)) {}

thResultFile::~thResultFile() { release(); }

void thResultFile::release() {
  for (auto& si : staticItems)
    if (si.ownsData) delete[] si.data;
  staticItems.clear();
  if (stream.is_open()) stream.close();
  delete nc;  // closes the file if it is still open
  nc = nullptr;
  delete[] floatBuf;
  floatBuf = nullptr;
  floatBufLen = 0;
  delete[] cellText;
  cellText = nullptr;
  delete[] itemRead;
  itemRead = nullptr;
  itemReadLen = 0;
}

// ---------------------------------------------------------------- format and header

fileFmtEnum thResultFile::getFormatFromFile(std::string name) {
  if (!VCppLib::fileExists(name)) return static_cast<fileFmtEnum>(-1);
  size_t dot = name.rfind('.');
  // a name without "." is taken whole, and so fails unless it is a format's text itself
  std::string ext = dot == std::string::npos ? name : name.substr(dot + 1);
  return str2fileFmtEnum(ext);
}

int32_t thResultFile::readHeader() {
  if (!VCppLib::fileExists(filename)) return -1;
  fileTime = VCppLib::fileModTime(filename);
  itemNameVec.clear();
  itemLengthVec.clear();
  curTimestep = 0;
  int32_t result = 0;
  switch (format) {
    case NC: readHeaderNC(); break;
    // EMB may become RESTART or DECOUPLED there, by its first item
    case EMB:
    case RESTART:
    case DECOUPLED: readHeaderEMB(); break;
    case TEXT0D:
    case TEXT1D: readHeaderText(); break;
    case EMT: break;  // write-only: nothing to read
    case MESH: result = mInfo.mesh2d.readMeshFromFile(filename); break;
    default: throw VException("thResultFile::readItemData undefined format.");
  }
  delete[] itemRead;
  itemReadLen = static_cast<int32_t>(itemNameVec.size());
  itemRead = new uint8_t[itemReadLen > 0 ? itemReadLen : 1]();
  return result;
}

int32_t thResultFile::readHeaderLight() {
  const bool defer = mInfo.deferTables;
  mInfo.deferTables = true;
  try {
    const int32_t result = readHeader();
    mInfo.deferTables = defer;
    return result;
  } catch (...) {
    mInfo.deferTables = defer;
    throw;
  }
}

// ---------------------------------------------------------------- physical files

std::string thResultFile::getFileName() {
  if (fileNo == 0) return filename;
  std::string tag(1, '^');
  tag += VStr::toString<int>(fileNo);
  return VCppLib::insertBeforeExt(filename, tag);
}

std::string thResultFile::getFileForTimestep(int32_t& timestep) {
  int32_t nt = mInfo.nt;
  if (timestep < nt) {
    if (timestep < 0)
      throw VException("Negative timestep requested from  (" + filename + "). " + thGlobal::errTail);
    return filename;
  }
  fileNo = 0;
  for (;;) {
    ++fileNo;
    timestep -= nt;
    std::string name = getFileName();
    if (timestep < 0 || !VCppLib::fileExists(name))
      throw VException("Not that many timesteps in file (" + filename + "). fileNo=" +
                       VStr::toString<int>(fileNo) + ", timestep=" + VStr::toString<int>(timestep));
    if (timestep < nt) return name;
  }
}

int32_t thResultFile::getTotNoTimesteps() {
  while (VCppLib::fileExists(getFileName())) ++fileNo;
  --fileNo;
  if (fileNo < 0) fileNo = 0;  // not even the first file exists
  int32_t lastFileNo = fileNo;
  std::string last = getFileName();
  fileNo = 0;
  int32_t lastNt = 0;
  if (format == NC) {
    // Only the length of the time axis is needed; opening the file for it spares the rebuilding
    // of a whole mesh that a second object would do.
    if (VCppLib::fileExists(last)) {
      VCppLib::VNetCdf other(last, false);
      lastNt = other.getDimLen("time");
      if (lastNt < 0)
        throw VException("thResultFile::getTotNoTimesteps: '" + last +
                         "' is not a result file: the dimension 'time' is missing.");
    }
  } else {
    thResultFile other(last, format);
    lastNt = other.mInfo.nt;
  }
  return mInfo.nt * lastFileNo + lastNt;
}

// ---------------------------------------------------------------- items

int32_t thResultFile::getItemNo(std::string name) {
  int32_t n = static_cast<int32_t>(itemNameVec.size());
  for (int32_t i = 0; i < n; ++i)
    if (itemNameVec[i] == name) return i;
  return n;
}

void thResultFile::addItem(std::string name, int32_t length) {
  itemNameVec.push_back(name);
  itemLengthVec.push_back(length);
}

int32_t thResultFile::getItemOffset(int32_t itemNo) {
  int32_t n = static_cast<int32_t>(itemLengthVec.size());
  if (itemNo < 0 || itemNo > n)
    throw VException("thResultFile::getItemOffset: item number " + VStr::toString<int>(itemNo) +
                     " is out of range 0 to " + VStr::toString<int>(n) + " for '" + filename + "'.");
  int32_t off = 0;
  for (int32_t i = 0; i < itemNo; ++i) off += itemLengthVec[i];
  return off;
}

// ---------------------------------------------------------------- checks

void thResultFile::checkItemNo(int32_t itemNo, const char* fn) {
  int32_t n = static_cast<int32_t>(std::min(itemNameVec.size(), itemLengthVec.size()));
  if (itemNo < 0 || itemNo >= n)
    throw VException("thResultFile::" + std::string(fn) + ": item number " + VStr::toString<int>(itemNo) +
                     " is out of range; '" + filename + "' has " + VStr::toString<int>(n) + " items.");
}

void thResultFile::checkElemNo(int32_t elemNo, const char* fn) {
  int32_t noe = mInfo.mesh2d.noe;
  if (elemNo < 0 || elemNo >= noe)
    throw VException("thResultFile::" + std::string(fn) + ": element number " + VStr::toString<int>(elemNo) +
                     " is out of range; the mesh of '" + filename + "' has " + VStr::toString<int>(noe) +
                     " elements.");
  if (!mInfo.isInit)
    throw VException("thResultFile::" + std::string(fn) + ": the cells of '" + filename +
                     "' are not set up; read the header first.");
}

void thResultFile::checkOpenNC(const char* fn) {
  if (!nc || nc->ncid < 0)
    throw VException("thResultFile::" + std::string(fn) + ": the NetCDF file '" + filename +
                     "' is not open; read its header first.");
}

}  // namespace thalmod
