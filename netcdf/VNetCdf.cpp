// VNetCdf: opening, the cached dimension and variable tables, lookups, attributes and
// whole-variable reads in the stored type.
//
// Layout of the cache: dimension and variable ids are positions in the per-dimension and
// per-variable vectors. A raw block of a variable of n elements of s bytes is 4*s*n bytes long;
// the extra room lets a caller view it as an array of any type up to 8 bytes wide.

#include "netcdf/VNetCdf.h"

#include <netcdf.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>

#include "netcdf/VNetCdfClassicCheck.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace VCppLib {

namespace {

// Product of 32-bit lengths in 32-bit arithmetic that wraps instead of overflowing.
int32_t wrappedProduct(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Reads the first value of an attribute of a numeric type into `out`, which holds at least
// max(len, 1) values of the attribute's type.
int readAttNumeric(int ncid, int varid, const char* name, nc_type type, void* out) {
  switch (type) {
    case NC_FLOAT: return nc_get_att_float(ncid, varid, name, static_cast<float*>(out));
    case NC_DOUBLE: return nc_get_att_double(ncid, varid, name, static_cast<double*>(out));
    case NC_SHORT: return nc_get_att_short(ncid, varid, name, static_cast<short*>(out));
    case NC_INT: return nc_get_att_int(ncid, varid, name, static_cast<int*>(out));
    // a byte attribute is read unsigned
    case NC_BYTE: return nc_get_att_ubyte(ncid, varid, name, static_cast<unsigned char*>(out));
    default: throw VException(VNetCdf::unsupportedTypeMessage(type));
  }
}

// The first value of a block of values of a numeric attribute type, as double.
double firstAsDouble(const void* block, nc_type type) {
  auto first = [block](auto v) {
    std::memcpy(&v, block, sizeof v);
    return static_cast<double>(v);
  };
  switch (type) {
    case NC_FLOAT: return first(float{});
    case NC_DOUBLE: return first(double{});
    case NC_SHORT: return first(short{});
    case NC_INT: return first(int{});
    default: return first(static_cast<unsigned char>(0));
  }
}

}  // namespace

std::string VNetCdf::unsupportedTypeMessage(int32_t type) { return msg("Unsupported nc type: ", type); }

// ---------------------------------------------------------------- construction and end

VNetCdf::VNetCdf(std::string name, bool create) : fileName(name) {
  int id = -1;
  if (create) {
    int rc = nc_create(name.c_str(), NC_NETCDF4, &id);
    if (rc != NC_NOERR) throw VException(nc_strerror(rc));
  } else {
    FILE* f = std::fopen(name.c_str(), "r");
    if (!f) throw VException("No such file: '" + name + "'");
    std::fclose(f);
    // a damaged classic header can make the library overrun buffers or crash: refuse it first
    int rc = classicHeaderStatus(name);
    if (rc == classicCutOff)
      throw VException("The NetCDF file '" + name + "' is cut off: its header places data beyond its end.");
    if (rc != NC_NOERR) throw VException(nc_strerror(rc));
    rc = nc_open(name.c_str(), NC_NOWRITE, &id);
    if (rc != NC_NOERR) throw VException(nc_strerror(rc));
  }
  ncid = id;
  try {
    readFileInfo(create);
  } catch (...) {
    // the destructor will not run: do not leave the handle open behind a failed construction
    closeFile();
    throw;
  }
}

VNetCdf::~VNetCdf() {
  freeTabs();
  closeFile();
}

VNetCdf::VNetCdf(VNetCdf&& o) noexcept { *this = std::move(o); }

VNetCdf& VNetCdf::operator=(VNetCdf&& o) noexcept {
  if (this == &o) return *this;
  freeTabs();
  closeFile();
  status = o.status;
  deflateLevel = o.deflateLevel;
  ncid = o.ncid;
  reservedFlag = o.reservedFlag;
  ndims = o.ndims;
  nvars = o.nvars;
  ngatts = o.ngatts;
  unlimdimid = o.unlimdimid;
  dimNames = std::move(o.dimNames);
  dimLen = std::move(o.dimLen);
  varNdims = std::move(o.varNdims);
  varNames = std::move(o.varNames);
  varTypes = std::move(o.varTypes);
  varDimIds = std::move(o.varDimIds);
  layerLen3D = o.layerLen3D;
  layerLen4D = o.layerLen4D;
  fileName = std::move(o.fileName);
  scaleTab = o.scaleTab;
  offsetTab = o.offsetTab;
  missingTab = o.missingTab;
  tabLen = o.tabLen;
  // the source keeps nothing that it would close or free
  o.ncid = -1;
  o.scaleTab = nullptr;
  o.offsetTab = nullptr;
  o.missingTab = nullptr;
  o.tabLen = 0;
  o.ndims = o.nvars = 0;
  return *this;
}

void VNetCdf::freeTabs() {
  delete[] scaleTab;
  delete[] offsetTab;
  if (missingTab) {
    for (int32_t v = 0; v < tabLen; ++v) freeRaw(missingTab[v]);
    delete[] missingTab;
  }
  scaleTab = offsetTab = nullptr;
  missingTab = nullptr;
  tabLen = 0;
}

void VNetCdf::closeFile() {
  if (ncid >= 0) {
    nc_close(ncid);
    ncid = -1;
  }
}

void VNetCdf::readFileInfo(bool reset) {
  if (reset) {
    ndims = nvars = 0;
    dimNames.clear();
    dimLen.clear();
    varNdims.clear();
    varNames.clear();
    varTypes.clear();
    varDimIds.clear();
    return;
  }
  int nd = 0, nv = 0, ng = 0, unlim = -1;
  if (nc_inq(ncid, &nd, &nv, &ng, &unlim) != NC_NOERR) throw VException("Error reading file.");
  ndims = nd;
  nvars = nv;
  ngatts = ng;
  unlimdimid = unlim;

  dimNames.clear();
  dimLen.clear();
  char name[NC_MAX_NAME + 1];
  for (int d = 0; d < ndims; ++d) {
    size_t len = 0;
    if (nc_inq_dimlen(ncid, d, &len) != NC_NOERR)
      throw VException("Error reading dimension length from NetCdf file.");
    dimLen.push_back(static_cast<int32_t>(len));  // narrowed on purpose
    if (nc_inq_dimname(ncid, d, name) != NC_NOERR)
      throw VException("Error reading dimension name from NetCdf file.");
    dimNames.push_back(name);
  }

  varNdims.clear();
  varNames.clear();
  varTypes.clear();
  varDimIds.clear();
  int dimIds[NC_MAX_VAR_DIMS];
  for (int v = 0; v < nvars; ++v) {
    nc_type type = NC_NAT;
    int nvd = 0;
    // the count first: the ids must fit the array that receives them
    if (nc_inq_varndims(ncid, v, &nvd) != NC_NOERR || nvd < 0 || nvd > NC_MAX_VAR_DIMS ||
        nc_inq_var(ncid, v, name, &type, &nvd, dimIds, nullptr) != NC_NOERR)
      throw VException("Error reading variable info from NetCdf file.");
    varNames.push_back(name);
    varNdims.push_back(nvd);
    varTypes.push_back(type);
    varDimIds.emplace_back(dimIds, dimIds + nvd);
  }

  // a dimension id that the library hands out always lies below ndims; the bounds are
  // checked all the same so that a damaged file cannot make the lookup read past dimLen
  auto lenOf = [this](int32_t d) { return d >= 0 && d < ndims ? dimLen[d] : 0; };
  layerLen3D = -1;
  for (int v = 0; v < nvars; ++v) {
    const auto& ids = varDimIds[v];
    if (varNdims[v] == 3 && ids[0] == unlimdimid) {
      layerLen3D = wrappedProduct(lenOf(ids[2]), lenOf(ids[1]));
      break;
    }
  }
  layerLen4D = -1;
  for (int v = 0; v < nvars; ++v) {
    const auto& ids = varDimIds[v];
    if (varNdims[v] == 4 && ids[0] == unlimdimid) {
      layerLen4D = wrappedProduct(wrappedProduct(lenOf(ids[3]), lenOf(ids[2])), lenOf(ids[1]));
      break;
    }
  }
}

void VNetCdf::endDef() {
  nc_enddef(ncid);
  readFileInfo(false);
}

// ---------------------------------------------------------------- lookups

int32_t VNetCdf::getDimId(std::string name) {
  for (int32_t d = 0; d < static_cast<int32_t>(dimNames.size()); ++d)
    if (dimNames[d] == name) return d;
  return -1;
}

int32_t VNetCdf::getDimLen(std::string name) {
  int32_t d = getDimId(name);
  return d < 0 ? -1 : dimLen[d];
}

int32_t VNetCdf::getVarId(std::string name) {
  int id = -1;
  if (nc_inq_varid(ncid, name.c_str(), &id) != NC_NOERR) return -1;
  return id;
}

std::vector<int32_t> VNetCdf::getVarIds(std::vector<std::string> names, bool mustExist) {
  std::vector<int32_t> ids;
  ids.reserve(names.size());
  for (const auto& name : names) {
    int32_t id = getVarId(name);
    if (id < 0 && mustExist)
      throw VException("VNetCdf:: variable '" + name + "' not found in '" + fileName + "')");
    ids.push_back(id);
  }
  return ids;
}

int32_t VNetCdf::findRecordVar(std::string attName) {
  for (int32_t v = 0; v < nvars; ++v) {
    if (varNdims[v] != 1 || varDimIds[v][0] != unlimdimid) continue;
    if (attName.empty()) return v;
    int attnum = 0;
    if (nc_inq_attid(ncid, v, attName.c_str(), &attnum) == NC_NOERR) return v;
  }
  return -1;
}

// ---------------------------------------------------------------- attributes

bool VNetCdf::hasAtt(std::string name, int32_t varid) {
  status = nc_inq_att(ncid, varid, name.c_str(), nullptr, nullptr);
  return status == NC_NOERR;
}

std::string VNetCdf::getAttStr(std::string name, int32_t varid) {
  nc_type type = NC_NAT;
  size_t len = 0;
  if (nc_inq_att(ncid, varid, name.c_str(), &type, &len) != NC_NOERR) return "";
  if (type == NC_STRING) {
    // a string attribute has no fixed-size values to view as text: take its first string
    if (len == 0) return "";
    std::vector<char*> strs(len, nullptr);
    if (nc_get_att_string(ncid, varid, name.c_str(), strs.data()) != NC_NOERR) return "";
    std::string text = strs[0] ? strs[0] : "";
    nc_free_string(len, strs.data());
    return text;
  }
  size_t size = static_cast<size_t>(ncTypeSize(type));
  if (size == 0 || len == 0) return "";  // user-defined types are not text
  std::vector<char> block(size * len);
  nc_get_att(ncid, varid, name.c_str(), block.data());
  return std::string(block.data(), len);  // no terminator is looked for
}

namespace {
// The first value of a numeric attribute, read into room for all of its values (the library
// writes them all). A missing attribute gives 0 and leaves the library's status.
template <typename T, typename Get>
T firstAttValue(int ncid, int varid, const std::string& name, int32_t& status, Get get) {
  size_t len = 0;
  if (nc_inq_attlen(ncid, varid, name.c_str(), &len) != NC_NOERR || len < 1) len = 1;
  std::vector<T> v(len, T{});
  status = get(ncid, varid, name.c_str(), v.data());
  return v[0];
}
}  // namespace

float VNetCdf::getAttFloat(std::string name, int32_t varid) {
  return firstAttValue<float>(ncid, varid, name, status, nc_get_att_float);
}

double VNetCdf::getGlobalAttDouble(std::string name) {
  return firstAttValue<double>(ncid, NC_GLOBAL, name, status, nc_get_att_double);
}

int32_t VNetCdf::getGlobalAttInt(std::string name) {
  return firstAttValue<int>(ncid, NC_GLOBAL, name, status, nc_get_att_int);
}

namespace {
// The type and length of an attribute that must be of one of the numeric types read here.
nc_type inqNumericAtt(int ncid, int varid, const std::string& name, size_t& len, int32_t& status) {
  nc_type type = NC_NAT;
  status = nc_inq_att(ncid, varid, name.c_str(), &type, &len);
  if (status < 0) throw VException(nc_strerror(status));
  if (type != NC_FLOAT && type != NC_DOUBLE && type != NC_SHORT && type != NC_INT && type != NC_BYTE)
    throw VException(VNetCdf::unsupportedTypeMessage(type));
  return type;
}
}  // namespace

double VNetCdf::getAttAsDouble(std::string name, int32_t varid) {
  size_t len = 0;
  const nc_type type = inqNumericAtt(ncid, varid, name, len, status);
  // room for every value of the attribute; the first one is the result
  std::vector<double> buf(len > 0 ? len : 1, 0.0);
  status = readAttNumeric(ncid, varid, name.c_str(), type, buf.data());
  return firstAsDouble(buf.data(), type);
}

void* VNetCdf::getAttRaw(std::string name, int32_t varid) {
  size_t len = 0;
  const nc_type type = inqNumericAtt(ncid, varid, name, len, status);
  // Four values of the attribute's type, but never less than the whole attribute, and never
  // less than 8 bytes, so that a reader may view the first value at any width up to 64 bits.
  size_t size = static_cast<size_t>(ncTypeSize(type));
  size_t bytes = std::max({4 * size, len * size, sizeof(int64_t)});
  char* block = new char[bytes]();
  try {
    status = readAttNumeric(ncid, varid, name.c_str(), type, block);
  } catch (...) {
    delete[] block;
    throw;
  }
  return block;
}

// ---------------------------------------------------------------- whole-variable reads

int32_t VNetCdf::ncTypeSize(int32_t type) {
  switch (type) {
    case NC_BYTE:
    case NC_CHAR:
    case NC_UBYTE: return 1;
    case NC_SHORT:
    case NC_USHORT: return 2;
    case NC_INT:
    case NC_FLOAT:
    case NC_UINT: return 4;
    case NC_DOUBLE:
    case NC_INT64:
    case NC_UINT64: return 8;
    default: return 0;
  }
}

int32_t VNetCdf::getTypeSize(int32_t type) {
  size_t size = 0;
  if (nc_inq_type(ncid, type, nullptr, &size) != NC_NOERR) return 0;
  return static_cast<int32_t>(size);
}

int32_t VNetCdf::getVarLen(int32_t varid, bool skipRecordDim) {
  checkVarId(varid, "getVarLen");
  int32_t n = 1;
  for (int32_t d : varDimIds[varid]) {
    if (skipRecordDim && d == unlimdimid) continue;
    n = wrappedProduct(n, d >= 0 && d < ndims ? dimLen[d] : 0);
  }
  return n;
}

void VNetCdf::checkVarId(int32_t varid, const char* fn) const {
  if (varid < 0 || varid >= nvars || varid >= static_cast<int32_t>(varDimIds.size()))
    throw VException("VNetCdf::" + std::string(fn) + ": variable id " + VStr::toString<int>(varid) +
                     " is out of range in '" + fileName + "', which has " + VStr::toString<int>(nvars) +
                     " variables.");
}

int64_t VNetCdf::trueVarLen(int32_t varid, bool skipRecordDim, const char* fn) {
  checkVarId(varid, fn);
  // The library's own lengths: the cache may be stale (records written since the last refresh)
  // or narrowed, and a buffer sized from it could be overrun.
  int nd = 0;
  int dimIds[NC_MAX_VAR_DIMS];
  if (nc_inq_varndims(ncid, varid, &nd) != NC_NOERR || nd < 0 || nd > NC_MAX_VAR_DIMS ||
      nc_inq_vardimid(ncid, varid, dimIds) != NC_NOERR)
    throw VException("VNetCdf::" + std::string(fn) + ": cannot read the dimensions of variable " +
                     VStr::toString<int>(varid) + " in '" + fileName + "'.");
  // skipping only applies to the unlimited dimension, wherever it stands
  int64_t n = 1;
  for (int i = 0; i < nd; ++i) {
    if (skipRecordDim && dimIds[i] == unlimdimid) continue;
    size_t len = 0;
    nc_inq_dimlen(ncid, dimIds[i], &len);
    if (len == 0) return 0;
    if (len > static_cast<size_t>(std::numeric_limits<int32_t>::max()) ||
        n > std::numeric_limits<int32_t>::max() / static_cast<int64_t>(len))
      throw VException("VNetCdf::" + std::string(fn) + ": variable '" + varNames[varid] + "' in '" +
                       fileName + "' is too large to be read at once.");
    n *= static_cast<int64_t>(len);
  }
  return n;
}

void VNetCdf::checkVarFitsFile(int32_t varid, const char* fn) {
  checkVarId(varid, fn);
  struct stat st;
  if (stat(fileName.c_str(), &st) != 0) return;  // nothing to measure by; the reads will tell
  // A classic file stores each value as it is; a NetCDF-4 file deflates its chunks, and deflate
  // packs at most 1032 bytes into one. A chunk never written is not stored at all, but such a
  // variable holds nothing to read either.
  int format = 0;
  nc_inq_format(ncid, &format);
  const bool packed = format == NC_FORMAT_NETCDF4 || format == NC_FORMAT_NETCDF4_CLASSIC;
  const long double room = static_cast<long double>(st.st_size) * (packed ? 1032 : 1);
  int nd = 0;
  int dimIds[NC_MAX_VAR_DIMS];
  if (nc_inq_varndims(ncid, varid, &nd) != NC_NOERR || nd < 0 || nd > NC_MAX_VAR_DIMS ||
      nc_inq_vardimid(ncid, varid, dimIds) != NC_NOERR)
    return;  // the read itself reports what is wrong
  long double values = 1;
  for (int i = 0; i < nd; ++i) {
    size_t len = 0;
    nc_inq_dimlen(ncid, dimIds[i], &len);
    values *= static_cast<long double>(len);
  }
  const int32_t typeSize = std::max(ncTypeSize(varTypes[varid]), 1);
  if (values * typeSize > room)
    throw VException(msg("VNetCdf::", fn, ": variable '", varNames[varid], "' in '", fileName, "' declares ",
                         fullPrecision{static_cast<double>(values)}, " values of ", typeSize,
                         " bytes, more than the file's ", static_cast<int64_t>(st.st_size),
                         " bytes can hold."));
}

int32_t VNetCdf::rawBlockInfo(int32_t varid, int32_t& typeSize) {
  int64_t n = trueVarLen(varid, false, "getVarRaw");
  typeSize = getTypeSize(varTypes[varid]);
  // the block is 4*s*n bytes and its s*n 32-bit words may be transformed in place
  if (typeSize > 0 && n > std::numeric_limits<int32_t>::max() / (4 * typeSize))
    throw VException("VNetCdf::getVarRaw: variable '" + varNames[varid] + "' in '" + fileName +
                     "' is too large to be read at once.");
  return static_cast<int32_t>(n);
}

void VNetCdf::readVarRawInto(int32_t varid, void* block, int32_t typeSize, int32_t n) {
  int32_t type = varTypes[varid];
  switch (type) {
    case NC_FLOAT: nc_get_var_float(ncid, varid, static_cast<float*>(block)); break;
    case NC_DOUBLE: nc_get_var_double(ncid, varid, static_cast<double*>(block)); break;
    case NC_SHORT: nc_get_var_short(ncid, varid, static_cast<short*>(block)); break;
    case NC_INT: nc_get_var_int(ncid, varid, static_cast<int*>(block)); break;
    case NC_INT64: nc_get_var_long(ncid, varid, static_cast<long*>(block)); break;
    default: throw VException(VNetCdf::unsupportedTypeMessage(type));
  }
  // with tables present the block is transformed as 32-bit words, whatever was stored
  int32_t* words = static_cast<int32_t*>(block);
  scaleOffset<int32_t>(words, typeSize * n, varid);
}

void* VNetCdf::getVarRaw(int32_t varid) {
  int32_t s = 0;
  int32_t n = rawBlockInfo(varid, s);
  std::unique_ptr<char[]> block(new char[4 * static_cast<size_t>(s) * n]());
  readVarRawInto(varid, block.get(), s, n);
  return block.release();
}

template <typename T>
int32_t VNetCdf::getVarData(int32_t varid, T*& data) {
  int32_t s = 0;
  int32_t n = rawBlockInfo(varid, s);
  // the same 4*s*n bytes as getVarRaw, made as an array of T so that the caller's
  // array delete matches
  size_t bytes = 4 * static_cast<size_t>(s) * n;
  std::unique_ptr<T[]> block(new T[(bytes + sizeof(T) - 1) / sizeof(T)]());
  readVarRawInto(varid, block.get(), s, n);
  data = block.release();
  return n;
}

template int32_t VNetCdf::getVarData<double>(int32_t, double*&);
template int32_t VNetCdf::getVarData<float>(int32_t, float*&);
template int32_t VNetCdf::getVarData<int32_t>(int32_t, int32_t*&);
template int32_t VNetCdf::getVarData<int16_t>(int32_t, int16_t*&);
template int32_t VNetCdf::getVarData<int64_t>(int32_t, int64_t*&);

}  // namespace VCppLib
