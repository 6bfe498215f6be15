// Text forms of result files: EMT and EMF (written only), TEXT0D and TEXT1D (read only).
//
// Not available yet: every operation that needs a text layout reports so. This source is to be
// replaced as a whole by the reader and writer of the text formats.

#include "resultfile/thResultFile.h"

namespace thalmod {

namespace {

[[noreturn]] void notYet(const std::string& file) {
  throw VCppLib::VException("thResultFile: text result files (EMT, EMF, TEXT0D, TEXT1D) are not supported yet ('" +
                            file + "').");
}

}  // namespace

void thResultFile::readHeaderText() { notYet(filename); }
int64_t thResultFile::readNextTimestepText(double***, int32_t*) { notYet(filename); }
void thResultFile::freeTimestepDataText(double**) {}  // nothing is ever made while reading is not there
int32_t thResultFile::readTimeSeriesUETText(int32_t, int64_t**, double**, int64_t, int64_t, int32_t, double, double) {
  notYet(filename);
}
void thResultFile::writeHeaderText() { notYet(getFileName()); }
void thResultFile::writeItemDataText(float*, int32_t) { notYet(getFileName()); }
void thResultFile::closeFileText(int32_t) { notYet(getFileName()); }

}  // namespace thalmod
