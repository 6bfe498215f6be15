// Item data of one timestep: a whole item, the columns of a list of elements, the next timestep in
// sequence, and the dispatch of the block reading of text tables.

#include <cstdint>
#include <cstring>
#include <memory>

#include "resultfile/thResultFile.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;

namespace {

[[noreturn]] void nullArgument(const std::string& fn, const std::string& file) {
  throw VException("thResultFile::" + fn + ": no buffer was given for the data of '" + file + "'.");
}

// The formats whose items are read by timestep; the others fail with their own words.
void checkItemDataFormat(int32_t format) {
  switch (format) {
    case EMT: throw VException("thResultFile::readItemData Not implemented for EMT files.");
    case TEXT0D:
      throw VException("thResultFile::readItemData Data cannot be read by timestep for TEXT0D files.");
    case NC:
    case EMB:
    case RESTART:
    case DECOUPLED: return;
    default: throw VException("thResultFile::readItemData undefined format.");
  }
}

}  // namespace

int32_t thResultFile::readItemData(int32_t itemNo, int32_t timestep, float* data) {
  checkItemDataFormat(format);
  checkItemNo(itemNo, "readItemData");
  if (!data) nullArgument("readItemData", filename);
  if (format == NC) return readItemDataNC(itemNo, timestep, data);
  return readItemDataEMB(itemNo, timestep, data);
}

int32_t thResultFile::readItemData(int32_t itemNo, int32_t timestep, double* data) {
  checkItemDataFormat(format);
  checkItemNo(itemNo, "readItemData");
  if (!data) nullArgument("readItemData", filename);
  int32_t len = itemLengthVec[itemNo];
  std::unique_ptr<float[]> buf(new float[len > 0 ? len : 1]);
  int32_t rc = readItemData(itemNo, timestep, buf.get());
  if (rc != 0) return rc;  // a failed read leaves the caller's buffer as it was
  for (int32_t i = 0; i < len; ++i) data[i] = buf[i];
  return 0;
}

int32_t thResultFile::readItemData(int32_t itemNo, int32_t timestep, int32_t* en, int32_t noEn,
                                   double** data) {
  checkItemDataFormat(format);
  checkItemNo(itemNo, "readItemData");
  if (!data) nullArgument("readItemData", filename);
  if (noEn < 0 || (noEn > 0 && !en))
    throw VException("thResultFile::readItemData: the element list for '" + filename +
                     "' is missing or has a negative length.");
  int32_t len = itemLengthVec[itemNo];
  // A failed read is not reported here: the item keeps the zeros it starts with, and the columns
  // are handed over from those, as the count of values.
  std::unique_ptr<double[]> item(new double[len > 0 ? len : 1]());
  readItemData(itemNo, timestep, item.get());
  int32_t nol = mInfo.nol;
  const double del = delVal;
  // The columns must lie inside the item; a column beyond it would be read out of bounds.
  auto badColumn = [&](int32_t i) {
    throw VException("thResultFile::readItemData: element " + VStr::toString<int>(en[i]) +
                     " of the list has no column in item '" + itemNameVec[itemNo] + "' of '" + filename +
                     "', which holds " + VStr::toString<int>(len) + " values.");
  };
  double* out = nullptr;
  int32_t count = 0;
  if (mInfo.layerType == sigma) {
    // every element owns nol consecutive values
    if (static_cast<int64_t>(noEn) * nol > INT32_MAX)
      throw VException("thResultFile::readItemData: the element list for '" + filename + "' asks for " +
                       VStr::toString<int>(noEn) + " columns of " + VStr::toString<int>(nol) +
                       " values, more than one array can hold.");
    count = noEn * nol;
    out = new double[count > 0 ? count : 1];
    for (int32_t i = 0; i < noEn; ++i) {
      if (en[i] < 0) {
        for (int32_t k = 0; k < nol; ++k) out[i * nol + k] = del;
        continue;
      }
      if ((static_cast<int64_t>(en[i]) + 1) * nol > len) {
        delete[] out;
        badColumn(i);
      }
      std::memcpy(out + i * nol, item.get() + static_cast<int64_t>(en[i]) * nol, nol * sizeof(double));
    }
  } else {
    // the columns of the listed elements, one after the other; negative entries leave no gap
    for (int32_t i = 0; i < noEn; ++i) {
      if (en[i] < 0) continue;
      if (en[i] >= mInfo.mesh2d.noe || !mInfo.isInit ||
          mInfo.botlayerIdx[en[i]] + nol - mInfo.ebli[en[i]] > len)
        badColumn(i);
      count += nol - mInfo.ebli[en[i]];
    }
    out = new double[count > 0 ? count : 1];
    int32_t pos = 0;
    for (int32_t i = 0; i < noEn; ++i) {
      if (en[i] < 0) continue;
      int32_t n = nol - mInfo.ebli[en[i]];
      std::memcpy(out + pos, item.get() + mInfo.botlayerIdx[en[i]], n * sizeof(double));
      pos += n;
    }
  }
  *data = out;
  return count;
}

int64_t thResultFile::readNextItemData(int32_t itemNo, double** data) {
  checkItemNo(itemNo, "readNextItemData");
  if (!data || !*data) nullArgument("readNextItemData", filename);
  if (!itemRead || itemNo >= itemReadLen)
    throw VException("thResultFile::readNextItemData: item " + VStr::toString<int>(itemNo) + " of '" +
                     filename + "' was not there when the header was read.");
  // An item already read at curTimestep means that the next timestep has begun.
  if (itemRead[itemNo]) {
    ++curTimestep;
    std::memset(itemRead, 0, itemReadLen);
  }
  itemRead[itemNo] = 1;
  if (format != EMB && format != NC && format != DECOUPLED)
    throw VException("thResultFile::readItemData undefined format.");
  readItemData(itemNo, curTimestep, *data);
  return static_cast<int64_t>(curTimestep * mInfo.dt + static_cast<double>(mInfo.startDT));
}

int64_t thResultFile::readNextTimestep(double*** data, int32_t* noLines) {
  switch (format) {
    case EMT: throw VException("thResultFile::readNextTimestep Not implemented for EMT files.");
    case EMB: throw VException("thResultFile::readNextTimestep Not implemented for EMB files.");
    case TEXT0D:
    case TEXT1D:
      if (!data || !noLines) nullArgument("readNextTimestep", filename);
      return readNextTimestepText(data, noLines);
    default: throw VException("thResultFile::readItemData undefined format.");
  }
}

void thResultFile::freeTimestepData(double** data) {
  if (format == TEXT0D || format == TEXT1D) freeTimestepDataText(data);
}

}  // namespace thalmod
