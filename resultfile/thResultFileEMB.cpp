// EMB, RESTART and DECOUPLED result files: the model's own binary format.
//
// Not available yet: every operation that needs the binary layout reports so. This source is to
// be replaced as a whole by the reader and writer of the format.

#include "resultfile/thResultFile.h"

namespace thalmod {

namespace {

[[noreturn]] void notYet(const std::string& file) {
  throw VCppLib::VException("thResultFile: binary (EMB, RESTART, DECOUPLED) result files are not supported yet ('" +
                            file + "').");
}

}  // namespace

void thResultFile::readHeaderEMB() { notYet(filename); }
int32_t thResultFile::readItemDataEMB(int32_t, int32_t, float*) { notYet(filename); }
int32_t thResultFile::readLayerEMB(int32_t, int32_t, int32_t, float*) { notYet(filename); }
int32_t thResultFile::readProfileEMB(int32_t, int32_t, int32_t, float*) { notYet(filename); }
void thResultFile::readTimeSeriesEMB(int32_t, int32_t, int32_t, int32_t, double*) { notYet(filename); }
void thResultFile::readTimeSeriesProfileEMB(int32_t, int32_t, int32_t, int32_t, double*) { notYet(filename); }
void thResultFile::writeHeaderEMB() { notYet(getFileName()); }
void thResultFile::writeItemDataEMB(float*, int32_t) { notYet(getFileName()); }
void thResultFile::closeFileEMB(int32_t) { notYet(getFileName()); }
void thResultFile::patchNoTimestepsEMB(int32_t) { notYet(getFileName()); }

}  // namespace thalmod
