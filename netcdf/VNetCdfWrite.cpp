// VNetCdf: defining dimensions and compressed variables in a created file, writing whole
// variables and single records, and copying dimensions, variables and attributes between files.
//
// Every variable defined here is stored with the shuffle filter and deflate level 2. A record is
// one entry of the unlimited first dimension: start (t, 0, 0, ...) and count (1, len1, len2, ...).
// Dimensions of a copied variable are matched by name in the target file.

#include <netcdf.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "netcdf/VNetCdf.h"
#include "support/VStr.h"

namespace VCppLib {

namespace {

// Bytes that a whole-variable write of `varid` takes from the caller's block, from the library's
// present lengths; -1 when the library does not know the variable.
int64_t writeBytes(int ncid, int varid) {
  nc_type type = NC_NAT;
  int nd = 0;
  int dimIds[NC_MAX_VAR_DIMS];
  if (nc_inq_vartype(ncid, varid, &type) != NC_NOERR || nc_inq_varndims(ncid, varid, &nd) != NC_NOERR ||
      nd < 0 || nd > NC_MAX_VAR_DIMS || nc_inq_vardimid(ncid, varid, dimIds) != NC_NOERR)
    return -1;
  size_t size = 0;
  if (nc_inq_type(ncid, type, nullptr, &size) != NC_NOERR) return -1;
  int64_t bytes = static_cast<int64_t>(size);
  for (int i = 0; i < nd; ++i) {
    size_t len = 0;
    nc_inq_dimlen(ncid, dimIds[i], &len);
    if (len == 0) return 0;
    if (len > static_cast<size_t>(INT64_MAX / bytes)) return INT64_MAX;
    bytes *= static_cast<int64_t>(len);
  }
  return bytes;
}

}  // namespace

// ---------------------------------------------------------------- definitions

int32_t VNetCdf::defDim(std::string name, int32_t len) {
  int id = -1;
  int rc;
  if (len < 0) {
    rc = nc_def_dim(ncid, name.c_str(), NC_UNLIMITED, &id);
    len = 0;
    unlimdimid = ndims;  // the id that the new dimension gets
  } else {
    rc = nc_def_dim(ncid, name.c_str(), static_cast<size_t>(len), &id);
  }
  // the tables follow the caller's definitions, whatever the library said
  dimLen.push_back(len);
  dimNames.push_back(name);
  ++ndims;
  return rc != NC_NOERR ? rc : id;
}

int32_t VNetCdf::defVar(std::string name, std::vector<int32_t> dimIds, int32_t type) {
  if (name.size() > NC_MAX_NAME)
    throw VException("VNetCdf::defVar: the variable name '" + name + "' for '" + fileName +
                     "' is longer than " + VStr::toString<int>(NC_MAX_NAME) + " characters.");
  char buf[NC_MAX_NAME + 1] = {};
  std::memcpy(buf, name.data(), name.size());
  int varid = -1;
  nc_def_var(ncid, buf, type, static_cast<int>(dimIds.size()), dimIds.data(), &varid);
  nc_def_var_deflate(ncid, varid, 1, 1, deflateLevel);
  varNames.push_back(name);
  varNdims.push_back(static_cast<int32_t>(dimIds.size()));
  varTypes.push_back(type);
  varDimIds.push_back(dimIds);
  ++nvars;
  return varid;
}

// ---------------------------------------------------------------- writing

int32_t VNetCdf::putVar(int32_t varid, void* data) {
  nc_type type = NC_NAT;
  int rc = nc_inq_vartype(ncid, varid, &type);
  if (rc != NC_NOERR) return rc;
  switch (type) {
    case NC_FLOAT: return nc_put_var_float(ncid, varid, static_cast<const float*>(data));
    case NC_DOUBLE: return nc_put_var_double(ncid, varid, static_cast<const double*>(data));
    case NC_SHORT: return nc_put_var_short(ncid, varid, static_cast<const short*>(data));
    case NC_INT: return nc_put_var_int(ncid, varid, static_cast<const int*>(data));
    case NC_INT64: return nc_put_var_long(ncid, varid, static_cast<const long*>(data));
    default: throw VException(VNetCdf::unsupportedTypeMessage(type));
  }
}

int32_t VNetCdf::putTimestepData(int32_t varid, int32_t t, void* data) {
  checkVarId(varid, "putTimestepData");
  const std::vector<int32_t>& ids = varDimIds[varid];
  if (ids.empty())
    throw VException("VNetCdf::putTimestepData: variable '" + varNames[varid] + "' in '" + fileName +
                     "' has no dimensions and so no records.");
  auto cachedLen = [this](int32_t d) { return d >= 0 && d < ndims ? dimLen[d] : 0; };
  // the cached length of an unlimited dimension is 0 in a file being written
  if (cachedLen(ids[0]) != 0) throw VException("putTimestepData: first dim must be unlimited.");
  std::vector<size_t> start(NC_MAX_VAR_DIMS, 0), count(NC_MAX_VAR_DIMS, 0);
  start[0] = static_cast<size_t>(t);
  count[0] = 1;
  for (size_t i = 1; i < ids.size(); ++i) count[i] = static_cast<size_t>(cachedLen(ids[i]));
  nc_type type = NC_NAT;
  int rc = nc_inq_vartype(ncid, varid, &type);
  if (rc != NC_NOERR) return rc;
  const size_t* s = start.data();
  const size_t* c = count.data();
  switch (type) {
    case NC_FLOAT: return nc_put_vara_float(ncid, varid, s, c, static_cast<const float*>(data));
    case NC_DOUBLE: return nc_put_vara_double(ncid, varid, s, c, static_cast<const double*>(data));
    case NC_SHORT: return nc_put_vara_short(ncid, varid, s, c, static_cast<const short*>(data));
    case NC_INT: return nc_put_vara_int(ncid, varid, s, c, static_cast<const int*>(data));
    case NC_INT64: return nc_put_vara_long(ncid, varid, s, c, static_cast<const long*>(data));
    default: throw VException(VNetCdf::unsupportedTypeMessage(type));
  }
}

// ---------------------------------------------------------------- lookups by lists

std::vector<int32_t> VNetCdf::getVarIdsFromList(std::string list) {
  std::vector<int32_t> ids;
  for (const auto& token : VStr::tokenize(list, ",", false))
    // a number is taken as the id itself, unchecked
    ids.push_back(VStr::isInteger(token) ? std::atoi(token.c_str()) : getVarId(token));
  return ids;
}

std::vector<int32_t> VNetCdf::getDimIdsFromList(std::string list) {
  std::vector<int32_t> ids;
  for (const auto& token : VStr::tokenize(list, ",", false)) ids.push_back(getDimId(token));
  return ids;
}

int32_t VNetCdf::getDimIdsArr(std::string list, int32_t*& ids) {
  std::vector<int32_t> v = getDimIdsFromList(list);
  ids = new int32_t[v.size()];
  std::copy(v.begin(), v.end(), ids);
  return static_cast<int32_t>(v.size());
}

// ---------------------------------------------------------------- copying

int32_t VNetCdf::copyAttByName(int32_t srcNcid, int32_t srcVar, std::string name, int32_t dstNcid,
                               int32_t dstVar) {
  nc_type type = NC_NAT;
  size_t len = 0;
  const char* nm = name.c_str();
  int rc = nc_inq_att(srcNcid, srcVar, nm, &type, &len);
  if (rc != NC_NOERR) return rc;
  if (type < NC_STRING) {
    size_t bytes = static_cast<size_t>(ncTypeSize(type)) * len;
    std::unique_ptr<char[]> block;
    if (bytes > 0) {
      block.reset(new (std::nothrow) char[bytes]);
      if (!block) return NC_ENOMEM;
      rc = nc_get_att(srcNcid, srcVar, nm, block.get());
      if (rc != NC_NOERR) return rc;
    }
    return nc_put_att(dstNcid, dstVar, nm, type, len, block.get());
  }
  if (type == NC_STRING) {
    std::unique_ptr<char*[]> strs;
    if (len > 0) {
      strs.reset(new (std::nothrow) char*[len]());
      if (!strs) return NC_ENOMEM;
      rc = nc_get_att_string(srcNcid, srcVar, nm, strs.get());
      if (rc != NC_NOERR) return rc;
    }
    rc = nc_put_att_string(dstNcid, dstVar, nm, len, const_cast<const char**>(strs.get()));
    if (len > 0) nc_free_string(len, strs.get());
    return rc;
  }
  return NC_NOERR;  // user-defined types are not copied
}

void VNetCdf::copyAtt(VNetCdf& src, int32_t srcVar, int32_t dstVar, int32_t attNum) {
  char name[NC_MAX_NAME + 1] = {};
  if (nc_inq_attname(src.ncid, srcVar, attNum, name) != NC_NOERR) return;
  copyAttByName(src.ncid, srcVar, name, ncid, dstVar);
}

void VNetCdf::copyVarAtts(VNetCdf& src, int32_t srcVar, int32_t dstVar) {
  int natts = 0;
  if (nc_inq_varnatts(src.ncid, srcVar, &natts) != NC_NOERR) return;
  for (int a = 0; a < natts; ++a) copyAtt(src, srcVar, dstVar, a);
}

int32_t VNetCdf::copyVar(VNetCdf& src, int32_t varid, bool copyData, std::string /*newName*/) {
  char name[NC_MAX_NAME + 1] = {};
  nc_type type = NC_NAT;
  int nd = 0;
  int srcDims[NC_MAX_VAR_DIMS];
  if (nc_inq_varndims(src.ncid, varid, &nd) != NC_NOERR || nd < 0 || nd > NC_MAX_VAR_DIMS ||
      nc_inq_var(src.ncid, varid, name, &type, &nd, srcDims, nullptr) != NC_NOERR)
    throw VException("VNetCdf::copyVar: variable id " + VStr::toString<int>(varid) +
                     " is not a variable of '" + src.fileName + "'.");
  // dimensions are matched by name; a name this file lacks maps to -1
  std::vector<int32_t> dims(static_cast<size_t>(nd));
  for (int i = 0; i < nd; ++i) {
    int32_t d = srcDims[i];
    dims[i] = d >= 0 && d < static_cast<int32_t>(src.dimNames.size()) ? getDimId(src.dimNames[d]) : -1;
  }
  int32_t newId = defVar(name, dims, type);
  // a refused definition leaves no id: -1 would be taken for the file's global attributes
  if (newId < 0) return newId;
  copyVarAtts(src, varid, newId);
  if (copyData) copyVarData(src, varid, newId);
  return newId;
}

void VNetCdf::copyVarData(VNetCdf& src, int32_t srcVar, int32_t dstVar) {
  int32_t s = 0;
  int32_t n = src.rawBlockInfo(srcVar, s);
  std::unique_ptr<char[]> block(static_cast<char*>(src.getVarRaw(srcVar)));
  // A target the library does not know makes the write fail, unreported; a target larger than
  // the source block would make it read past the block.
  int64_t need = writeBytes(ncid, dstVar);
  if (need < 0) return;
  if (need > 4 * static_cast<int64_t>(s) * n)
    throw VException("VNetCdf::copyVarData: variable '" + std::string(src.varNames[srcVar]) + "' of '" +
                     src.fileName + "' is smaller than its copy in '" + fileName + "'.");
  putVar(dstVar, block.get());
}

void VNetCdf::copyAllVars(VNetCdf& src, bool copyData) {
  for (int32_t v = 0; v < src.nvars; ++v) copyVar(src, v, copyData, "");
  nc_enddef(ncid);
  readFileInfo(false);
}

void VNetCdf::copyDim(VNetCdf& src, int32_t dimId, bool withVar, std::string newName) {
  if (!newName.empty() && withVar)
    throw VException("Cannot copy var when renaming dimension (dimensions a mapped by name).");
  if (dimId < 0 || dimId >= static_cast<int32_t>(src.dimNames.size()))
    throw VException("VNetCdf::copyDim: dimension id " + VStr::toString<int>(dimId) +
                     " is out of range in '" + src.fileName + "'.");
  if (newName.empty()) newName = src.dimNames[dimId];
  if (dimId == src.unlimdimid)
    defDim(newName, -1);
  else
    defDim(newName, src.dimLen[dimId]);
  if (withVar) {
    int32_t id = src.getVarId(src.dimNames[dimId]);
    if (id >= 0) copyVar(src, id, true, newName);
  }
}

void VNetCdf::copyAllDims(VNetCdf& src, bool withVar) {
  for (int32_t d = 0; d < static_cast<int32_t>(src.dimNames.size()); ++d) copyDim(src, d, withVar, "");
}

}  // namespace VCppLib
