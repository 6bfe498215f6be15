// A check of the header of a classic-format NetCDF file (CDF-1, CDF-2, CDF-5) before the library
// opens it. The library trusts what a damaged header says: it copies names longer than
// NC_MAX_NAME into the caller's buffers and takes absurd counts as they stand.
#pragma once

#include <string>

namespace VCppLib {

// NC_NOERR when path is not a classic file (the library judges those) or when its header is sound:
// complete within the file, names of at most NC_MAX_NAME characters, known types, at most
// NC_MAX_VAR_DIMS dimensions a variable and dimension ids that exist. Otherwise the NetCDF error
// code that fits (NC_ENOTNC for a broken or cut header, NC_EMAXNAME, NC_EBADTYPE, NC_EMAXDIMS,
// NC_EBADDIM);
// classicCutOff when the header is sound but the data it places end beyond the end of the file
// (a cut-off copy, which the library would read as zeros).
int classicHeaderStatus(const std::string& path);

// Not a NetCDF error code: the status of a classic file that is cut off before the end of its data.
constexpr int classicCutOff = -1000;

}  // namespace VCppLib
