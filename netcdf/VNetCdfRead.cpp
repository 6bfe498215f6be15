// VNetCdf: typed reading of hyperslabs and records, and the per-variable linear transform
// value * scale + offset with its missing-value guard.
//
// A hyperslab is a pair of size_t arrays, start and count, one entry per dimension of the
// variable in the variable's own order; arrays made here have 1024 entries, the library's limit
// of dimensions per variable. The tables scaleTab, offsetTab and missingTab are indexed by
// variable id; an entry of missingTab is a raw attribute block of at least 8 bytes whose first
// value is read at the width of the type being transformed.

#include <netcdf.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <typeinfo>

#include "netcdf/VNetCdf.h"
#include "support/VStr.h"

namespace VCppLib {

namespace {

constexpr int maxVarDims = NC_MAX_VAR_DIMS;

bool isReadableType(int32_t type) {
  return type == NC_FLOAT || type == NC_DOUBLE || type == NC_SHORT || type == NC_INT;
}

// The library's hyperslab read into an array of the caller's type; the library converts from the
// stored type, so a caller's array of another type is filled with values, not with foreign bytes.
int ncGetVara(int nc, int v, const size_t* s, const size_t* c, float* d) {
  return nc_get_vara_float(nc, v, s, c, d);
}
int ncGetVara(int nc, int v, const size_t* s, const size_t* c, double* d) {
  return nc_get_vara_double(nc, v, s, c, d);
}
int ncGetVara(int nc, int v, const size_t* s, const size_t* c, short* d) {
  return nc_get_vara_short(nc, v, s, c, d);
}
int ncGetVara(int nc, int v, const size_t* s, const size_t* c, int* d) {
  return nc_get_vara_int(nc, v, s, c, d);
}
int ncGetVara(int nc, int v, const size_t* s, const size_t* c, long* d) {
  return nc_get_vara_long(nc, v, s, c, d);
}

// Product of the low 32 bits of the counts, in wrapping 32-bit arithmetic.
int32_t wrappedCountProduct(int32_t n, const size_t* count) {
  uint32_t p = 1;
  for (int32_t i = 0; i < n; ++i) p *= static_cast<uint32_t>(count[i]);
  return static_cast<int32_t>(p);
}

// Exact number of elements a hyperslab read writes: 1 for a variable without dimensions.
int64_t exactCount(int32_t n, const size_t* count) {
  int64_t p = 1;
  for (int32_t i = 0; i < n; ++i) {
    if (count[i] == 0) return 0;
    if (count[i] > static_cast<size_t>(std::numeric_limits<int64_t>::max() / p)) return -1;
    p *= static_cast<int64_t>(count[i]);
  }
  return p;
}

// A value as Out. Converting a floating value that an integer type cannot hold (NaN, or beyond
// its range, such as the default float fill value 9.97e36) is undefined behaviour in C++: such a
// value saturates at the nearer limit instead, and NaN gives the lowest value, so that a caller's
// range check on an index catches it. Everything else is the plain conversion.
template <typename Out, typename V>
inline Out convertTo(V v) {
  if constexpr (std::is_integral_v<Out> && std::is_floating_point_v<V>) {
    constexpr double lo = static_cast<double>(std::numeric_limits<Out>::lowest());
    constexpr double hi = static_cast<double>(std::numeric_limits<Out>::max());  // 2^63 for int64
    if (!(v >= lo)) return std::numeric_limits<Out>::lowest();
    if (v >= hi) return std::numeric_limits<Out>::max();
    return static_cast<Out>(v);
  } else {
    return static_cast<Out>(v);
  }
}

// The missing value of a table entry at the width of T.
template <typename T>
T missingAs(const void* block) {
  T m;
  std::memcpy(&m, block, sizeof m);
  return m;
}

}  // namespace

// ---------------------------------------------------------------- types and hyperslabs

const std::type_info& VNetCdf::NCType2cppType(int32_t xtype) {
  switch (xtype) {
    case NC_BYTE: return typeid(unsigned char);  // shares its type with NC_UBYTE on purpose
    case NC_CHAR: return typeid(char);
    case NC_SHORT: return typeid(int16_t);
    case NC_INT: return typeid(int32_t);
    case NC_FLOAT: return typeid(float);
    case NC_DOUBLE: return typeid(double);
    case NC_UBYTE: return typeid(unsigned char);
    case NC_USHORT: return typeid(uint16_t);
    case NC_UINT: return typeid(uint32_t);
    case NC_INT64: return typeid(int64_t);
    case NC_UINT64: return typeid(uint64_t);
    case NC_STRING: return typeid(char*);
    default: throw VException("Unsupported type.");
  }
}

int32_t VNetCdf::getStartAndCountArr(int32_t varid, size_t*& start, size_t*& count) {
  checkVarId(varid, "getStartAndCountArr");
  int dimIds[maxVarDims];
  int nd = 0;
  nc_inq_varndims(ncid, varid, &nd);
  if (nd < 0 || nd > maxVarDims || nc_inq_vardimid(ncid, varid, dimIds) != NC_NOERR) nd = 0;
  std::unique_ptr<size_t[]> s(new size_t[maxVarDims]());
  std::unique_ptr<size_t[]> c(new size_t[maxVarDims]());
  uint32_t n = 1;
  for (int i = 0; i < nd; ++i) {
    size_t len = 0;
    nc_inq_dimlen(ncid, dimIds[i], &len);
    c[i] = len;
    n *= static_cast<uint32_t>(len);
  }
  start = s.release();
  count = c.release();
  return static_cast<int32_t>(n);
}

int32_t VNetCdf::getTimestepStartAndCount(int32_t varid, int32_t t, size_t*& start, size_t*& count) {
  getStartAndCountArr(varid, start, count);
  start[0] = static_cast<size_t>(t);
  count[0] = 1;
  int32_t nd = varNdims[varid];
  if (nd < 2) return 1;
  return wrappedCountProduct(nd - 1, count + 1);
}

int32_t VNetCdf::getStartAndCountTotLen(int32_t ndims, size_t* /*start*/, size_t* count) {
  if (ndims <= 0) return 0;
  return wrappedCountProduct(ndims, count);
}

// ---------------------------------------------------------------- typed reads

template <typename T>
int32_t VNetCdf::getData(int32_t varid, T*& data, size_t* start, size_t* count) {
  checkVarId(varid, "getData");
  int32_t type = varTypes[varid];
  if (!isReadableType(type)) throw VException(VNetCdf::unsupportedTypeMessage(type));
  int rc = ncGetVara(ncid, varid, start, count, data);
  // a failed read leaves the caller's array as it was, untransformed
  if (rc == NC_NOERR || rc == NC_ERANGE)
    scaleOffset<T>(data, getStartAndCountTotLen(varNdims[varid], start, count), varid);
  return rc;
}

template <typename T>
void VNetCdf::getDataIntoGivenType(int32_t varid, T*& data, size_t* start, size_t* count) {
  checkVarId(varid, "getDataIntoGivenType");
  int32_t type = varTypes[varid];
  if (typeid(T) == NCType2cppType(type)) {
    getData<T>(varid, data, start, count);
    return;
  }
  int32_t nd = varNdims[varid];
  int32_t l = getStartAndCountTotLen(nd, start, count);
  // the library writes the exact count (one value for a variable without dimensions), so the
  // temporary must hold that many even where l, the count that is converted, says otherwise
  int64_t exact = exactCount(nd, count);
  if (exact < 0 || (nd > 0 && exact != l))
    throw VException("VNetCdf::getDataIntoGivenType: the hyperslab of variable '" + varNames[varid] +
                     "' in '" + fileName + "' has too many elements.");
  size_t room = static_cast<size_t>(exact > 0 ? exact : 1);
  auto convert = [&](auto* tag) {
    using In = std::remove_pointer_t<decltype(tag)>;
    std::unique_ptr<In[]> temp(new In[room]);
    int rc = ncGetVara(ncid, varid, start, count, temp.get());
    if (rc == NC_NOERR) scaleOffset<In, T>(temp.get(), data, l, varid);
  };
  switch (type) {
    case NC_FLOAT: convert(static_cast<float*>(nullptr)); break;
    case NC_DOUBLE: convert(static_cast<double*>(nullptr)); break;
    case NC_SHORT: convert(static_cast<short*>(nullptr)); break;
    case NC_INT: convert(static_cast<int*>(nullptr)); break;
    case NC_INT64: convert(static_cast<long*>(nullptr)); break;
    default: throw VException(VNetCdf::unsupportedTypeMessage(type));
  }
}

// A caller sizes its array from the 32-bit counts of this class (getVarLen, dimLen), which a length
// or a product beyond 32 bits does not fit: such a read would overrun the array, so it is refused.
void VNetCdf::checkReadFits(int32_t varid, const size_t* count, const char* fn) {
  int64_t n = exactCount(varNdims[varid], count);
  if (n < 0 || n > std::numeric_limits<int32_t>::max())
    throw VException("VNetCdf::" + std::string(fn) + ": variable '" + varNames[varid] + "' in '" + fileName +
                     "' is too large to be read at once.");
}

template <typename T>
void VNetCdf::getAllDataIntoGivenType(int32_t varid, T*& data) {
  size_t* start = nullptr;
  size_t* count = nullptr;
  getStartAndCountArr(varid, start, count);
  std::unique_ptr<size_t[]> s(start), c(count);
  checkReadFits(varid, count, "getAllDataIntoGivenType");
  getDataIntoGivenType<T>(varid, data, start, count);
}

template <typename T>
void VNetCdf::getTimestepData(int32_t varid, int32_t t, T*& data) {
  size_t* start = nullptr;
  size_t* count = nullptr;
  getTimestepStartAndCount(varid, t, start, count);
  std::unique_ptr<size_t[]> s(start), c(count);
  checkReadFits(varid, count, "getTimestepData");
  getData<T>(varid, data, start, count);
}

void* VNetCdf::getTimestepRaw(int32_t varid, int32_t t) {
  int64_t n = trueVarLen(varid, true, "getTimestepRaw");
  int32_t type = varTypes[varid];
  if (!isReadableType(type)) throw VException(VNetCdf::unsupportedTypeMessage(type));
  int32_t s = getTypeSize(type);
  size_t* start = nullptr;
  size_t* count = nullptr;
  getTimestepStartAndCount(varid, t, start, count);
  std::unique_ptr<size_t[]> st(start), co(count);
  int32_t nd = varNdims[varid];
  // Room for what the read writes: the record, and one value for a variable without
  // dimensions. A record variable has its unlimited dimension first, and then that equals n.
  int64_t read = exactCount(nd, count);
  int64_t elems = std::max<int64_t>({n, read, 1});
  if (read < 0 || elems > std::numeric_limits<int32_t>::max() / (4 * s))
    throw VException("VNetCdf::getTimestepRaw: variable '" + varNames[varid] + "' in '" + fileName +
                     "' is too large to be read at once.");
  std::unique_ptr<char[]> block(new char[4 * static_cast<size_t>(s) * elems]());
  switch (type) {
    case NC_FLOAT: nc_get_vara_float(ncid, varid, start, count, reinterpret_cast<float*>(block.get())); break;
    case NC_DOUBLE:
      nc_get_vara_double(ncid, varid, start, count, reinterpret_cast<double*>(block.get()));
      break;
    case NC_SHORT: nc_get_vara_short(ncid, varid, start, count, reinterpret_cast<short*>(block.get())); break;
    default: nc_get_vara_int(ncid, varid, start, count, reinterpret_cast<int*>(block.get())); break;
  }
  int32_t* words = reinterpret_cast<int32_t*>(block.get());
  scaleOffset<int32_t>(words, getStartAndCountTotLen(nd, start, count), varid);
  return block.release();
}

// ---------------------------------------------------------------- scale, offset, missing value

template <typename In, typename Out>
void VNetCdf::scaleOffset(In* dataIn, Out*& dataOut, int32_t l, int32_t varid) {
  // a variable defined after the tables were made has no entry: it passes unscaled
  if (!scaleTab || varid < 0 || varid >= tabLen) {
    for (int32_t i = 0; i < l; ++i) dataOut[i] = convertTo<Out>(dataIn[i]);
    return;
  }
  const double sc = scaleTab[varid];
  const double off = offsetTab[varid];
  if (!missingTab || !missingTab[varid]) {
    for (int32_t i = 0; i < l; ++i) dataOut[i] = convertTo<Out>(sc * static_cast<double>(dataIn[i]) + off);
    return;
  }
  const In m = missingAs<In>(missingTab[varid]);
  for (int32_t i = 0; i < l; ++i) {
    if (dataIn[i] != m)
      dataOut[i] = convertTo<Out>(sc * static_cast<double>(dataIn[i]) + off);
    else
      dataOut[i] = convertTo<Out>(m);  // missing values keep their raw value
  }
}

template <typename T>
void VNetCdf::scaleOffset(T*& data, int32_t l, int32_t varid) {
  if (!scaleTab || varid < 0 || varid >= tabLen) return;
  const double sc = scaleTab[varid];
  const double off = offsetTab[varid];
  if (!missingTab || !missingTab[varid]) {
    for (int32_t i = 0; i < l; ++i) data[i] = convertTo<T>(sc * static_cast<double>(data[i]) + off);
    return;
  }
  const T m = missingAs<T>(missingTab[varid]);
  for (int32_t i = 0; i < l; ++i)
    if (data[i] != m) data[i] = convertTo<T>(sc * static_cast<double>(data[i]) + off);
}

void VNetCdf::setScaleOffsetAtts(std::string scaleName, std::string offsetName, std::string missingName) {
  // built aside and installed at the end, so that a failing attribute leaves the old tables
  const int32_t n = nvars;
  std::unique_ptr<double[]> scale(new double[n > 0 ? n : 1]);
  std::unique_ptr<double[]> offset(new double[n > 0 ? n : 1]);
  std::unique_ptr<void*[]> missing(new void*[n > 0 ? n : 1]());
  auto freeMissing = [&]() {
    for (int32_t v = 0; v < n; ++v) freeRaw(missing[v]);
  };
  try {
    for (int32_t v = 0; v < n; ++v) {
      scale[v] = !scaleName.empty() && hasAtt(scaleName, v) ? getAttAsDouble(scaleName, v) : 1.0;
      offset[v] = !offsetName.empty() && hasAtt(offsetName, v) ? getAttAsDouble(offsetName, v) : 0.0;
      missing[v] = !missingName.empty() && hasAtt(missingName, v) ? getAttRaw(missingName, v) : nullptr;
    }
  } catch (...) {
    freeMissing();
    throw;
  }
  freeTabs();
  scaleTab = scale.release();
  offsetTab = offset.release();
  missingTab = missing.release();
  tabLen = n;
}

// ---------------------------------------------------------------- instantiations

#define VNETCDF_READS(T)                                                          \
  template int32_t VNetCdf::getData<T>(int32_t, T*&, size_t*, size_t*);           \
  template void VNetCdf::getDataIntoGivenType<T>(int32_t, T*&, size_t*, size_t*); \
  template void VNetCdf::getAllDataIntoGivenType<T>(int32_t, T*&);                \
  template void VNetCdf::getTimestepData<T>(int32_t, int32_t, T*&);               \
  template void VNetCdf::scaleOffset<T>(T*&, int32_t, int32_t);
VNETCDF_READS(double)
VNETCDF_READS(float)
VNETCDF_READS(int32_t)
VNETCDF_READS(int16_t)
VNETCDF_READS(int64_t)
#undef VNETCDF_READS

#define VNETCDF_SCALE_OFFSET(In)                                                     \
  template void VNetCdf::scaleOffset<In, double>(In*, double*&, int32_t, int32_t);   \
  template void VNetCdf::scaleOffset<In, float>(In*, float*&, int32_t, int32_t);     \
  template void VNetCdf::scaleOffset<In, int32_t>(In*, int32_t*&, int32_t, int32_t); \
  template void VNetCdf::scaleOffset<In, int16_t>(In*, int16_t*&, int32_t, int32_t); \
  template void VNetCdf::scaleOffset<In, int64_t>(In*, int64_t*&, int32_t, int32_t);
VNETCDF_SCALE_OFFSET(float)
VNETCDF_SCALE_OFFSET(double)
VNETCDF_SCALE_OFFSET(int16_t)
VNETCDF_SCALE_OFFSET(int32_t)
VNETCDF_SCALE_OFFSET(long)
#undef VNETCDF_SCALE_OFFSET

}  // namespace VCppLib
