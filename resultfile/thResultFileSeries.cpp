// Time series: the values of one cell (or one element of a 2-D item), or of one whole column, over
// a range of timesteps. Unlike the timestep reads, these follow a logical file across its
// physical "^" files.

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>

#include "resultfile/thResultFile.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;

namespace {

using VCppLib::str;

// Reads timesteps from..to-1 of the physical file that fileNo names into a new array.
using partReader = std::function<int32_t(int32_t from, int32_t to, double** part)>;

}  // namespace

// Range resolution shared by both series reads. Returns true when the range lies in the present
// physical file (timeStepTo then holds the end), false after the range has been read across files
// into *data (the count is then timeStepTo - timeStepFrom, with timeStepTo as resolved).
static bool readAcrossFiles(thResultFile& rf, const char* fn, int32_t perStep, int32_t timeStepFrom,
                            int32_t& timeStepTo, double** data, const partReader& readPart) {
  int32_t nt = rf.mInfo.nt;
  if (timeStepFrom < 0)
    throw VException("thResultFile::" + std::string(fn) + ": timeStepFrom " + str(timeStepFrom) +
                     " is negative for '" + rf.filename + "'.");
  if (timeStepTo >= 0 && timeStepTo <= nt) return true;
  int32_t total = rf.getTotNoTimesteps();  // puts fileNo back to the first file
  if (timeStepTo < 0)
    timeStepTo = total;
  else if (timeStepTo > total)
    throw VException("Invalid timeStepTo");
  if (timeStepTo <= nt) return true;

  if (timeStepFrom > timeStepTo) throw VException("timeStepFrom>timeStepTo");
  if (nt <= 0)
    throw VException("thResultFile::" + std::string(fn) + ": the first file of '" + rf.filename +
                     "' holds no timesteps, so the timesteps of its further files cannot be told apart.");
  int64_t n = static_cast<int64_t>(timeStepTo - timeStepFrom) * perStep;
  std::unique_ptr<double[]> out(new double[n > 0 ? n : 1]);
  int64_t pos = 0;
  int32_t remaining = timeStepTo;
  while (remaining > 0) {
    if (timeStepFrom < nt) {
      int32_t end = std::min(nt, remaining);
      double* part = nullptr;
      int32_t k = readPart(timeStepFrom, end, &part);
      std::unique_ptr<double[]> owner(part);
      if (k < 0 || pos + k > n)
        throw VException("thResultFile::" + std::string(fn) + ": the files of '" + rf.filename +
                         "' do not add up to the timesteps asked for.");
      std::memcpy(out.get() + pos, part, static_cast<size_t>(k) * sizeof(double));
      pos += k;
      timeStepFrom = 0;
    } else {
      timeStepFrom -= nt;
    }
    // fileNo stays where the loop ends; getTotNoTimesteps puts it back at the next use
    ++rf.fileNo;
    remaining = timeStepTo - rf.fileNo * nt;
  }
  *data = out.release();
  return false;
}

int32_t thResultFile::readTimeSeries(int32_t itemNo, int32_t elemNo, int32_t layerNo, double** data,
                                     int32_t timeStepFrom, int32_t timeStepTo) {
  const char* fn = "readTimeSeries";
  if (!data)
    throw VException("thResultFile::readTimeSeries: no place was given for the series of '" + filename +
                     "'.");
  checkItemNo(itemNo, fn);
  checkElemNo(elemNo, fn);
  int32_t from0 = timeStepFrom;
  auto part = [&](int32_t from, int32_t to, double** d) {
    return readTimeSeries(itemNo, elemNo, layerNo, d, from, to);
  };
  if (!readAcrossFiles(*this, fn, 1, timeStepFrom, timeStepTo, data, part)) return timeStepTo - from0;

  // within the physical file that fileNo names
  int32_t e = timeStepTo < 0 ? mInfo.nt : timeStepTo;
  if (timeStepFrom > e) throw VException("timeStepFrom>timeStepTo");
  int32_t nol = mInfo.nol, ebli = mInfo.ebli[elemNo];
  // binds 2-D items too: nol-1 is always a safe layer for them
  if (layerNo < ebli)
    throw VException("Layer " + str(layerNo) + " is below bottom. There are " + str(nol - ebli) +
                     " layers in element " + str(elemNo) + ", numbered (bottom) " + str(ebli) + " to " +
                     str(nol - 1) + " (surface).");
  bool is3D = itemLengthVec[itemNo] == mInfo.cells;
  if (is3D && layerNo >= nol)
    throw VException("thResultFile::readTimeSeries: layer " + str(layerNo) +
                     " lies above the surface layer " + str(nol - 1) + " of element " + str(elemNo) +
                     " in '" + filename + "'.");
  int32_t index = is3D ? mInfo.botlayerIdx[elemNo] - ebli + layerNo : elemNo;
  int32_t n = e - timeStepFrom;
  switch (format) {
    case EMT: throw VException("thResultFile::readTimeSeries Not implemented for TEXT1 files.");
    case NC:
    case EMB: break;
    default: throw VException("thResultFile::readTimeSeries undefined format.");
  }
  std::unique_ptr<double[]> out(new double[n > 0 ? n : 1]());
  if (format == NC)
    readSeriesSlabNC(itemNo, timeStepFrom, n, index, 1, out.get(), fn);
  else
    readTimeSeriesEMB(itemNo, index, timeStepFrom, e, out.get());
  *data = out.release();
  return n;
}

int32_t thResultFile::readTimeSeriesProfile(int32_t itemNo, int32_t elemNo, double** data,
                                            int32_t timeStepFrom, int32_t timeStepTo) {
  const char* fn = "readTimeSeriesProfile";
  checkItemNo(itemNo, fn);
  if (itemLengthVec[itemNo] != mInfo.cells)
    throw VException("readTimeSeriesProfile only supports 3D items. Use readTimeSeries for 2D items.");
  if (!data)
    throw VException("thResultFile::readTimeSeriesProfile: no place was given for the series of '" +
                     filename + "'.");
  checkElemNo(elemNo, fn);
  int32_t colLen = mInfo.nol - mInfo.ebli[elemNo];
  int32_t from0 = timeStepFrom;
  auto part = [&](int32_t from, int32_t to, double** d) {
    int32_t k = readTimeSeriesProfile(itemNo, elemNo, d, from, to);
    return k;
  };
  if (!readAcrossFiles(*this, fn, colLen, timeStepFrom, timeStepTo, data, part))
    return (timeStepTo - from0) * colLen;

  int32_t e = timeStepTo < 0 ? mInfo.nt : timeStepTo;
  if (timeStepFrom > e) throw VException("timeStepFrom>timeStepTo");
  switch (format) {
    case EMT: throw VException("thResultFile::readTimeSeriesProfile Not implemented for TEXT1 files.");
    case NC:
    case EMB: break;
    default: throw VException("thResultFile::readTimeSeriesProfile undefined format.");
  }
  int32_t steps = e - timeStepFrom;
  int64_t n = static_cast<int64_t>(steps) * colLen;
  std::unique_ptr<double[]> out(new double[n > 0 ? n : 1]());
  // timestep after timestep, each the column from the element's bottom cell up
  if (format == NC)
    readSeriesSlabNC(itemNo, timeStepFrom, steps, mInfo.botlayerIdx[elemNo], colLen, out.get(), fn);
  else
    readTimeSeriesProfileEMB(itemNo, elemNo, timeStepFrom, e, out.get());
  *data = out.release();
  return static_cast<int32_t>(n);
}

int32_t thResultFile::readTimeSeriesUET(int32_t itemNo, int64_t** dt, double** d, int64_t SDT, int64_t EDT,
                                        int32_t filterItem, double filterMin, double filterMax) {
  if (format != TEXT0D) throw VException("thResultFile::readTimeSeries unsuppored format.");
  if (!dt || !d)
    throw VException("thResultFile::readTimeSeriesUET: no place was given for the samples of '" + filename +
                     "'.");
  return readTimeSeriesUETText(itemNo, dt, d, SDT, EDT, filterItem, filterMin, filterMax);
}

}  // namespace thalmod
