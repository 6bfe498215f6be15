// Header of a classic-format NetCDF file, all integers big-endian:
//   magic "CDF" + version byte (1 classic, 2 64-bit offsets, 5 CDF-5), numrecs (4 bytes, 8 in CDF-5),
//   dimension list, global attribute list, variable list.
//   A list is a 4-byte tag (0 when absent, 0x0A dimensions, 0x0B variables, 0x0C attributes) and a
//   count (4 bytes, 8 in CDF-5). Below, N is such a count.
//   name      = N, then N characters padded with zeros to a multiple of 4
//   dimension = name, length (N)
//   attribute = name, type (4 bytes), N values of the type, padded to a multiple of 4
//   variable  = name, N dimension ids (each N-sized), attribute list, type (4 bytes),
//               vsize (N), begin (4 bytes in CDF-1, else 8)
// The data follow the header. Non-record variables lie at their begin; the records follow one
// another, each holding one record of every record variable (padded to 4 bytes unless there is only
// one record variable), so the data of a record variable end at
// begin + (numrecs - 1) * (record size) + (its bytes per record).

#include "netcdf/VNetCdfClassicCheck.h"

#include <netcdf.h>
#include <sys/stat.h>

#include <cstdint>
#include <fstream>
#include <vector>

namespace VCppLib {

namespace {

// Sequential big-endian reading that never passes the end of the file.
class HeaderReader {
 public:
  HeaderReader(const std::string& path, uint64_t bytes) : in(path, std::ios::binary), size(bytes) {}
  bool ok() const { return good; }

  uint64_t uint(int bytes) {
    unsigned char b[8] = {};
    if (!good || bytes > 8 || !take(static_cast<uint64_t>(bytes))) return fail();
    in.read(reinterpret_cast<char*>(b), bytes);
    if (!in) return fail();
    uint64_t v = 0;
    for (int i = 0; i < bytes; ++i) v = (v << 8) | b[i];
    return v;
  }
  void skip(uint64_t bytes) {
    if (!good || !take(bytes)) return;
    in.seekg(static_cast<std::streamoff>(bytes), std::ios::cur);
    if (!in) fail();
  }
  uint64_t left() const { return size - pos; }
  uint64_t fileSize() const { return size; }

 private:
  std::ifstream in;
  uint64_t size;
  uint64_t pos = 0;
  bool good = true;

  bool take(uint64_t bytes) {
    if (bytes > size - pos) return fail(), false;
    pos += bytes;
    return true;
  }
  uint64_t fail() {
    good = false;
    return 0;
  }
};

uint64_t padded(uint64_t n) { return (n + 3) / 4 * 4; }

// a * b and a + b that stop at the largest value instead of wrapping: enough to compare with a size
uint64_t satMul(uint64_t a, uint64_t b) {
  uint64_t r = 0;
  return __builtin_mul_overflow(a, b, &r) ? UINT64_MAX : r;
}
uint64_t satAdd(uint64_t a, uint64_t b) {
  uint64_t r = 0;
  return __builtin_add_overflow(a, b, &r) ? UINT64_MAX : r;
}

// Where the data of a variable lie, from its header entry.
struct VarExtent {
  bool record = false;
  uint64_t bytes = 0;  // of the whole variable, or of one record of a record variable
  uint64_t begin = 0;
};

// NC_NOERR when every variable's data end within the file, classicCutOff otherwise. A streaming
// file (numrecs all ones) has no record count to go by; its records are not looked at.
int dataStatus(const std::vector<VarExtent>& vars, uint64_t numrecs, bool streaming, uint64_t size) {
  uint64_t recSize = 0;
  int64_t records = 0;
  for (const VarExtent& v : vars) records += v.record;
  for (const VarExtent& v : vars)
    if (v.record) recSize = satAdd(recSize, records == 1 ? v.bytes : padded(v.bytes));
  for (const VarExtent& v : vars) {
    if (v.record && (streaming || numrecs == 0 || v.bytes == 0)) continue;
    uint64_t end = satAdd(v.begin, v.bytes);
    if (v.record) end = satAdd(end, satMul(numrecs - 1, recSize));
    if (end > size) return classicCutOff;
  }
  return NC_NOERR;
}

int typeSize(uint64_t type, bool cdf5) {
  switch (type) {
    case NC_BYTE:
    case NC_CHAR: return 1;
    case NC_SHORT: return 2;
    case NC_INT:
    case NC_FLOAT: return 4;
    case NC_DOUBLE: return 8;
    case NC_UBYTE: return cdf5 ? 1 : 0;
    case NC_USHORT: return cdf5 ? 2 : 0;
    case NC_UINT: return cdf5 ? 4 : 0;
    case NC_INT64:
    case NC_UINT64: return cdf5 ? 8 : 0;
    default: return 0;
  }
}

struct Header {
  HeaderReader& r;
  int n;  // bytes of a count: 4, or 8 in CDF-5
  int status = NC_NOERR;

  bool bad(int code) {
    if (status == NC_NOERR) status = code;
    return false;
  }
  // The tag and count of a list; false when the list is broken. Each entry takes at least 4 bytes.
  bool list(uint64_t tag, uint64_t& count) {
    uint64_t t = r.uint(4);
    count = r.uint(n);
    if (!r.ok() || (t != 0 && t != tag) || (t == 0 && count != 0) || count > r.left() / 4)
      return bad(NC_ENOTNC);
    return true;
  }
  bool name() {
    uint64_t len = r.uint(n);
    if (!r.ok()) return bad(NC_ENOTNC);
    if (len > NC_MAX_NAME) return bad(NC_EMAXNAME);
    r.skip(padded(len));
    return r.ok() || bad(NC_ENOTNC);
  }
  bool attributes() {
    uint64_t count = 0;
    if (!list(NC_ATTRIBUTE_TAG, count)) return false;
    for (uint64_t a = 0; a < count; ++a) {
      if (!name()) return false;
      int size = typeSize(r.uint(4), n == 8);
      uint64_t values = r.uint(n);
      if (!r.ok()) return bad(NC_ENOTNC);
      if (size == 0) return bad(NC_EBADTYPE);
      if (values > r.left() / static_cast<uint64_t>(size)) return bad(NC_ENOTNC);
      r.skip(padded(values * static_cast<uint64_t>(size)));
      if (!r.ok()) return bad(NC_ENOTNC);
    }
    return true;
  }
  static constexpr uint64_t NC_DIMENSION_TAG = 0x0A, NC_VARIABLE_TAG = 0x0B, NC_ATTRIBUTE_TAG = 0x0C;
};

}  // namespace

int classicHeaderStatus(const std::string& path) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0 || st.st_size < 4) return NC_NOERR;
  HeaderReader r(path, static_cast<uint64_t>(st.st_size));
  uint64_t magic = r.uint(4);
  uint64_t version = magic & 0xFF;
  if (!r.ok() || (magic >> 8) != 0x434446 || (version != 1 && version != 2 && version != 5))
    return NC_NOERR;  // not a classic file: the library judges it
  const bool cdf5 = version == 5;
  Header h{r, cdf5 ? 8 : 4};
  const uint64_t numrecs = r.uint(h.n);  // any value (streaming files carry all ones)
  const bool streaming = numrecs == (cdf5 ? UINT64_MAX : 0xFFFFFFFFull);

  uint64_t ndims = 0;
  if (!h.list(Header::NC_DIMENSION_TAG, ndims)) return h.status;
  std::vector<uint64_t> dimLens;
  for (uint64_t d = 0; d < ndims; ++d) {
    if (!h.name()) return h.status;
    dimLens.push_back(r.uint(h.n));  // length; 0 marks the record dimension
  }
  if (!r.ok()) return NC_ENOTNC;
  if (!h.attributes()) return h.status;

  uint64_t nvars = 0;
  if (!h.list(Header::NC_VARIABLE_TAG, nvars)) return h.status;
  std::vector<VarExtent> vars;
  for (uint64_t v = 0; v < nvars; ++v) {
    if (!h.name()) return h.status;
    uint64_t nd = r.uint(h.n);
    if (!r.ok()) return NC_ENOTNC;
    if (nd > NC_MAX_VAR_DIMS) return NC_EMAXDIMS;
    VarExtent e;
    e.bytes = 1;
    for (uint64_t i = 0; i < nd; ++i) {
      uint64_t dim = r.uint(h.n);
      if (dim >= ndims && r.ok()) return NC_EBADDIM;
      if (!r.ok()) return NC_ENOTNC;
      // only the first dimension can be the record dimension
      if (dimLens[dim] == 0 && i == 0)
        e.record = true;
      else
        e.bytes = satMul(e.bytes, dimLens[dim]);
    }
    if (!h.attributes()) return h.status;
    const int size = typeSize(r.uint(4), cdf5);
    if (size == 0 && r.ok()) return NC_EBADTYPE;
    e.bytes = satMul(e.bytes, static_cast<uint64_t>(size));
    r.uint(h.n);  // vsize, which cannot tell sizes beyond 4 GB: the size is worked out above
    e.begin = r.uint(version == 1 ? 4 : 8);
    if (!r.ok()) return NC_ENOTNC;
    vars.push_back(e);
  }
  return dataStatus(vars, numrecs, streaming, r.fileSize());
}

}  // namespace VCppLib
