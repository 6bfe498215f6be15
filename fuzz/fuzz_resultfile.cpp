// Result files of any format: the header, then a few item, layer, profile and series reads. The
// format is found from the bytes: NetCDF (classic or HDF5) by its signature, other binary input
// as EMB (which becomes RESTART or DECOUPLED by its first item; once new and once dated back to
// before EMB files had versions), text as TEXT0D and as TEXT1D. NetCDF-4 (HDF5) input is read only
// with THALMOD_FUZZ_HDF5 set (see fuzzUtil.h).
#include <cstring>
#include <memory>
#include <vector>

#include "fuzzUtil.h"
#include "resultfile/thResultFile.h"

namespace {

bool isText(const uint8_t* data, size_t size) {
  for (size_t i = 0; i < size && i < 64; ++i)
    if (data[i] < 9 || (data[i] > 13 && data[i] < 32)) return false;
  return true;
}

void readSome(thalmod::thResultFile& rf) {
  const int32_t items = static_cast<int32_t>(rf.itemNameVec.size());
  const int32_t noe = rf.mInfo.mesh2d.noe;
  for (int32_t i = 0; i < items && i < 3; ++i) {
    const int32_t len = rf.itemLengthVec[i];
    if (len > 0 && len < (1 << 22)) {
      std::vector<float> buf(static_cast<size_t>(len));
      rf.readItemData(i, 0, buf.data());
      rf.readItemData(i, rf.mInfo.nt - 1, buf.data());
    }
    if (noe > 0 && noe < (1 << 22) && rf.format != thalmod::TEXT0D && rf.format != thalmod::TEXT1D) {
      std::vector<float> layer(static_cast<size_t>(noe));
      float* p = layer.data();
      rf.readLayer(i, 0, -1, &p);
      rf.readLayer(i, 0, 999, &p);
      std::vector<float> col(static_cast<size_t>(rf.mInfo.nol > 0 ? rf.mInfo.nol : 1));
      rf.readProfile(i, 0, noe - 1, col.data());
      double* series = nullptr;
      rf.readTimeSeries(i, 0, rf.mInfo.nol - 1, &series, 0, 4);
      delete[] series;
    }
  }
  double** rows = nullptr;
  int32_t lines = 0;
  if (rf.format == thalmod::TEXT0D || rf.format == thalmod::TEXT1D) {
    for (int k = 0; k < 3; ++k) {
      rows = nullptr;
      rf.readNextTimestep(&rows, &lines);
      if (rows) rf.freeTimestepData(rows);
    }
  }
  rf.toString(1);
}

void openAndRead(const uint8_t* data, size_t size, const char* ext, bool old = false) {
  thFuzz::InputFile in(data, size, ext);
  if (old) in.makeOld();
  try {
    thalmod::thResultFile rf(in.path);
    readSome(rf);
  } catch (const VCppLib::VException&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (thFuzz::skipHdf5(data, size)) return 0;
  if (size >= 4 && (std::memcmp(data, "CDF", 3) == 0 || std::memcmp(data, "\x89HDF", 4) == 0)) {
    openAndRead(data, size, "nc");
  } else if (isText(data, size)) {
    openAndRead(data, size, "text0d");
    openAndRead(data, size, "text1d");
  } else {
    openAndRead(data, size, "emb");
    openAndRead(data, size, "emb", true);  // an EMB file of before version numbers
  }
  return 0;
}
