// The result file facade: each read calls the library once, copies its result into the caller's
// vector and releases the native array.
#include "facade/thResultFileWrapper.h"

#include <cstring>

#include "facade/thWrapperUtil.h"
#include "resultfile/thResultFileUgrid.h"
#include "support/VDT.h"
#include "support/VFiles.h"

using thalmod::thResultFile;
using VCppLib::VException;

namespace thWrapper {

namespace {

// Frees a native array of the library when it goes out of scope.
template <typename T>
struct nativeArr {
  T* p = nullptr;
  ~nativeArr() { delete[] p; }
};

}  // namespace

thResultFileWrapper::thResultFileWrapper() : rf(std::make_unique<thResultFile>("", -1)) {}
thResultFileWrapper::~thResultFileWrapper() = default;

void thResultFileWrapper::Dispose() {
  mInfo.reset();
  rf.reset();
}

thResultFile& thResultFileWrapper::file() const {
  if (!rf) throw VException("thResultFileWrapper: the result file has been disposed of.");
  return *rf;
}

int32_t thResultFileWrapper::fileVersion() const { return file().fileVersion; }
std::string thResultFileWrapper::filename() const { return file().filename; }

void thResultFileWrapper::filename(std::string name) {
  thResultFile& f = file();
  f.filename = name;
  f.format = f.getFormatFromFile(name);
}

void thResultFileWrapper::setFilename(std::string filename, int32_t format) {
  file().filename = filename;
  file().format = format;
}

int32_t thResultFileWrapper::format() const { return file().format; }
void thResultFileWrapper::format(int32_t f) { file().format = f; }
std::string thResultFileWrapper::toString(int32_t level) const { return file().toString(level); }
int64_t thResultFileWrapper::strDT2LongDT(std::string value) { return VCppLib::VDT::strDT2longDT(value); }
std::string thResultFileWrapper::longDT2StrDT(int64_t DT) { return VCppLib::VDT::longDT2StrDT(DT); }
float thResultFileWrapper::delVal() { return ::delVal; }
std::vector<int32_t> thResultFileWrapper::itemLengths() const { return file().itemLengthVec; }

int32_t thResultFileWrapper::totNoTimesteps() {
  thalmod::thResultFile& f = file();
  if (f.format != thalmod::EMB && f.format != thalmod::RESTART && f.format != thalmod::DECOUPLED)
    return f.mInfo.nt;
  // Most runs are one physical file: getTotNoTimesteps would read its header a second time to
  // learn what is known already.
  f.fileNo = 1;
  const bool more = VCppLib::fileExists(f.getFileName());
  f.fileNo = 0;
  return more ? f.getTotNoTimesteps() : f.mInfo.nt;
}

std::vector<std::string> thResultFileWrapper::items() const { return file().itemNameVec; }

int32_t thResultFileWrapper::readHeader() {
  // The light open: the reads of this facade need no thickness or per-cell tables, and the model
  // view builds them where one of its members needs them.
  int32_t rc = file().readHeaderLight();
  mInfo = std::make_unique<thModelInfoWrapper>(&rf->mInfo);
  return rc;
}

void thResultFileWrapper::test(std::vector<uint8_t>& bmd, int32_t w, int32_t /*h*/, int32_t setCol) {
  const int64_t at = (static_cast<int64_t>(w) + 20) * 10;
  if (at < 0 || 4 * at + 4 > static_cast<int64_t>(bmd.size()))
    throw VException("thResultFileWrapper::test: pixel " + std::to_string(at) +
                     " lies outside the bitmap of " + std::to_string(bmd.size()) + " bytes.");
  std::memcpy(bmd.data() + 4 * at, &setCol, 4);
}

// ---------------------------------------------------------------- reads

std::optional<std::vector<double>> thResultFileWrapper::readLayer(int32_t itemNo, int32_t timestep,
                                                                  int32_t layer) {
  nativeArr<double> a;
  int32_t rc = file().readLayer(itemNo, timestep, layer, &a.p);
  if (rc < 0) return std::nullopt;
  return cArr2cliArr(a.p, file().mInfo.mesh2d.noe);
}

std::optional<std::vector<double>> thResultFileWrapper::readItemData(int32_t itemNo, int32_t timestep,
                                                                     const std::vector<int32_t>& en) {
  nativeArr<double> a;
  std::vector<int32_t> list(en);  // the library takes a writable list
  int32_t n = file().readItemData(itemNo, timestep, arrPtr(list), arrLen(en, "readItemData", "en"), &a.p);
  if (n < 0) return std::nullopt;
  return cArr2cliArr(a.p, n);
}

std::vector<double> thResultFileWrapper::readItemData(int32_t itemNo, int32_t timestep) {
  thResultFile& f = file();
  f.checkItemNo(itemNo, "readItemData");  // the buffer is sized by the item
  std::vector<double> out(f.itemLengthVec[itemNo]);
  if (f.readItemData(itemNo, timestep, out.data()) < 0) return {};
  return out;
}

std::optional<std::vector<double>> thResultFileWrapper::readTimeSeries(int32_t itemNo, int32_t elemNo,
                                                                       int32_t layerNo, int32_t timeStepFrom,
                                                                       int32_t timeStepTo) {
  if (timeStepTo == -1) timeStepTo = file().mInfo.nt;
  nativeArr<double> a;
  int32_t rc = file().readTimeSeries(itemNo, elemNo, layerNo, &a.p, timeStepFrom, timeStepTo);
  if (rc < 0) return std::nullopt;
  return cArr2cliArr(a.p, std::min(rc, timeStepTo - timeStepFrom));
}

std::optional<std::vector<double>> thResultFileWrapper::readTimeSeries(int32_t itemNo, int32_t elemNo,
                                                                       int32_t layerNo) {
  return readTimeSeries(itemNo, elemNo, layerNo, 0, -1);
}

int32_t thResultFileWrapper::readTimeSeriesUET(int32_t itemNo, int64_t SDT, int64_t EDT,
                                               std::vector<int64_t>& dt, std::vector<double>& d,
                                               int32_t filterItem, double filterMin, double filterMax) {
  nativeArr<int64_t> t;
  nativeArr<double> v;
  int32_t n = file().readTimeSeriesUET(itemNo, &t.p, &v.p, SDT, EDT, filterItem, filterMin, filterMax);
  if (n <= 0) return -1;  // no sample counts as a failure here
  dt = cArr2cliArr(t.p, n);
  d = cArr2cliArr(v.p, n);
  return 0;
}

int32_t thResultFileWrapper::readTimeSeriesUET(int32_t itemNo, int64_t SDT, int64_t EDT,
                                               std::vector<int64_t>& dt, std::vector<double>& d) {
  return readTimeSeriesUET(itemNo, SDT, EDT, dt, d, -1, -1e+37, 1e+37);
}

int32_t thResultFileWrapper::readTimeSeriesUET(int32_t itemNo, std::vector<int64_t>& dt,
                                               std::vector<double>& d) {
  return readTimeSeriesUET(itemNo, -1, 2147483647, dt, d);
}

int32_t thResultFileWrapper::readProfile(int32_t, int32_t, int32_t, std::vector<double>&,
                                         std::vector<double>&) {
  throw VException("Not implemented.");
}

int32_t thResultFileWrapper::extractSectionCart(int32_t itemNo, int32_t timestep,
                                                const std::vector<double>& x, const std::vector<double>& y,
                                                const std::vector<double>& z, double dist,
                                                std::vector<double>& d, std::vector<double>& v,
                                                std::vector<double>& xC, std::vector<double>& yC) {
  const char* fn = "thResultFileWrapper::extractSectionCart";
  int32_t noPnts = arrLen(x, fn, "x");
  needLength(arrLen(y, fn, "y"), noPnts, fn, "y");
  double *pd = nullptr, *pv = nullptr, *px = nullptr, *py = nullptr;
  int32_t noD = 0, noV = 0;
  int32_t rc = file().extractSectionCart(itemNo, timestep, arrPtr(x), arrPtr(y), noPnts, arrPtr(z),
                                         arrLen(z, fn, "z"), dist, &pd, &noD, &pv, &noV, &px, &py);
  if (rc == 0) {
    d = cArr2cliArr(pd, noD);
    v = cArr2cliArr(pv, noV);
    xC = cArr2cliArr(px, noD);
    yC = cArr2cliArr(py, noD);
  }
  thResultFile::extractSectionCartFreeMem(pd, pv, px, py);
  return rc;
}

int32_t thResultFileWrapper::readLayerAndInterpOnBitmap(int32_t itemNo, int32_t timestep, int32_t layer,
                                                        std::vector<uint8_t>& bitmap, int32_t nx, int32_t ny,
                                                        int32_t nz, double xmin, double xmax, double ymin,
                                                        double ymax, double zmin, double zmax,
                                                        const std::vector<int32_t>& colArr, double r,
                                                        double p) {
  const char* fn = "thResultFileWrapper::readLayerAndInterpOnBitmap";
  if (nx < 0 || ny < 0) throw VException(std::string(fn) + ": the bitmap size may not be negative.");
  needLength(static_cast<int64_t>(bitmap.size()), 4 * static_cast<int64_t>(nx) * ny, fn, "bitmap (bytes)");
  if (bitmap.empty()) return 0;
  int32_t* pixels = reinterpret_cast<int32_t*>(bitmap.data());
  std::vector<int32_t> colours(colArr);
  return file().readLayerAndInterpOnBitmap(itemNo, timestep, layer, &pixels, nx, ny, nz, xmin, xmax, ymin,
                                           ymax, zmin, zmax, arrPtr(colours), arrLen(colArr, fn, "colArr"), r,
                                           p);
}

void thResultFileWrapper::toUgrid(std::string path) { thalmod::writeUgrid(file(), path); }

}  // namespace thWrapper
