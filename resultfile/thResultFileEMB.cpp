// EMB result files, the model's own binary format, and RESTART and DECOUPLED files, which are EMB
// files under another format value (told apart by the name of their first item).
//
// Byte layout; all numbers little-endian, texts raw bytes with a separate length:
//   offset  size  field                        present in version
//        0     4  int32 version                1 and up
//        4     4  int32 layerType              1 and up
//        8     4  int32 flavor                 5 and up
//       12     4  int32 constant 1             5 and up (ignored)
//       16     4  float32 pi                   5 and up (ignored)
//       20     4  float32 topDepth             5 and up
//       24     4  int32 modelType              all (below 10 read as 0)
//       28     4  int32 headerLen              all: byte offset of the data block
//       32     8  int64 startDT                all; an int32 below version 8, the rest 4 bytes earlier
//       40     4  float32 dt, then int32 nt, number of items, item table offset, number of static
//                 items, static table offset, nol (nt at 16, 24, 40 or 44 by version)
//       68    60  gap up to 128, never written
//   item table, per item: int32 length (version 1 and up; version 0 items hold one value per
//     cell), int32 name length n, n bytes of name
//   static table, directly behind it (version 3 and up), per static item: int32 noBytes,
//     int32 noValues, int32 name length n, int32 type name length m, n bytes name, m bytes type
//     name, noBytes bytes of data if noValues > 0. Below version 3: at the static table offset all
//     (noBytes, noValues) pairs, then all data blocks; by position elemBathy, mesh, dz.
//   static items read into the model: "elemBathy" (float32 per element), "mesh" (the binary mesh
//     image), "dz" (float32 per layer), "enol" (int32 per element, version 4 and up), "proj"
//     (projection text); others are kept in staticItems.
//   data block at headerLen: per timestep, per item, its values as float32.
// Files older than 2012-06-01 (by modification time) have no version field: version 0.

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "resultfile/thLayerPick.h"
#include "resultfile/thResultFile.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace thalmod {

static_assert(std::endian::native == std::endian::little,
              "EMB files are little-endian and are read and written as the machine's bytes");

using VCppLib::VException;
namespace VStr = VCppLib::VStr;

namespace {

using VCppLib::str;

// Offset of the field nt in the header of a file of this version.
int64_t ntOffset(int32_t version) {
  if (version < 1) return 16;
  if (version < 5) return 24;
  if (version < 8) return 40;
  return 44;
}

using filePtr = std::unique_ptr<FILE, int (*)(FILE*)>;

filePtr openRead(const std::string& name, const char* fn) {
  filePtr f(std::fopen(name.c_str(), "rb"), std::fclose);
  if (!f) throw VException("thResultFile::" + std::string(fn) + ": cannot open '" + name + "' for reading.");
  return f;
}

// Reads n float32 values at a byte position; a short read is not reported and leaves the rest of
// the buffer as it was. Returns the number of values read.
int64_t readAt(FILE* f, int64_t pos, float* out, int64_t n) {
  if (pos < 0 || n <= 0 || fseeko(f, pos, SEEK_SET) != 0) return 0;
  return static_cast<int64_t>(std::fread(out, 4, static_cast<size_t>(n), f));
}

// Sequential reading of the header with every count checked against the file's size, so that a
// truncated or damaged file is reported instead of read past its end.
class headerReader {
 public:
  explicit headerReader(const std::string& fileName) : name(fileName), f(openRead(fileName, "readHeader")) {
    fseeko(f.get(), 0, SEEK_END);
    size = ftello(f.get());
    fseeko(f.get(), 0, SEEK_SET);
  }

  [[noreturn]] void fail(const std::string& why) const {
    throw VException("thResultFile::readHeader: '" + name + "' is not a readable EMB file: " + why + ".");
  }
  void need(int64_t bytes, const std::string& what) const {
    if (bytes < 0 || pos + bytes > size)
      fail("it ends after " + str(size) + " bytes, before " + what + " (at byte " + str(pos) + ")");
  }
  void seek(int64_t to, const std::string& what) {
    if (to < 0 || to > size) fail("the " + what + " would start at byte " + str(to) + ", outside the file");
    pos = to;
    fseeko(f.get(), pos, SEEK_SET);
  }
  void bytes(void* out, int64_t n, const std::string& what) {
    need(n, what);
    if (n > 0 && std::fread(out, 1, static_cast<size_t>(n), f.get()) != static_cast<size_t>(n))
      fail("it cannot be read at byte " + str(pos));
    pos += n;
  }
  template <typename T>
  T get(const std::string& what) {
    T v{};
    bytes(&v, sizeof v, what);
    return v;
  }
  // A count or length that must not be negative.
  int32_t count(const std::string& what) {
    int32_t v = get<int32_t>(what);
    if (v < 0) fail("the " + what + " is " + str(v));
    return v;
  }
  std::string text(int32_t n, const std::string& what) {
    need(n, what);  // before the allocation, which the count must not size beyond the file
    std::string s(static_cast<size_t>(n), '\0');
    bytes(s.data(), n, what);
    return s;
  }

  std::string name;
  filePtr f;
  int64_t size = 0;
  int64_t pos = 0;
};

// The fixed fields of the header, as read.
struct embHeader {
  int32_t version = 0, layerType = 0, flavor = -1, modelType = 0, headerLen = 0, nt = 0, nItems = 0;
  int32_t itemTableOff = 0, nStatic = 0, staticTableOff = 0, nol = 0;
  bool hasFlavor = false;
  double topDepth = 0.0, dt = 0.0;
  int64_t startDT = 0;
};

embHeader readFixedFields(headerReader& r, int32_t version) {
  embHeader h;
  h.version = version;
  if (version > 0) {
    h.version = r.get<int32_t>("the version");
    h.layerType = r.get<int32_t>("the layer type");
    if (h.version >= 5) {
      h.hasFlavor = true;
      h.flavor = r.get<int32_t>("the flavor");
      r.get<int32_t>("the constant 1");
      r.get<float>("the constant pi");
      h.topDepth = r.get<float>("the top depth");
    }
  }
  h.modelType = r.get<int32_t>("the model type");
  if (h.modelType < 10) h.modelType = 0;
  h.headerLen = r.get<int32_t>("the header length");
  h.startDT = h.version >= 8 ? r.get<int64_t>("the start time") : r.get<int32_t>("the start time");
  h.dt = r.get<float>("the timestep length");
  h.nt = r.count("number of timesteps");
  h.nItems = r.count("number of items");
  h.itemTableOff = r.get<int32_t>("the item table offset");
  h.nStatic = r.count("number of static items");
  h.staticTableOff = r.get<int32_t>("the static table offset");
  h.nol = r.get<int32_t>("the number of layers");
  if (h.headerLen < 0 || h.headerLen > r.size)
    r.fail("its data would start at byte " + str(h.headerLen) + ", outside the file");
  return h;
}

// A static record as read: the item and its bytes.
struct rawStatic {
  staticItem item;
  std::string bytes;
};

std::vector<rawStatic> readStaticRecords(headerReader& r, int32_t n) {
  std::vector<rawStatic> out;
  for (int32_t i = 0; i < n; ++i) {
    rawStatic s;
    std::string which = "static item " + str(i);
    s.item.noBytes = r.count("byte count of " + which);
    s.item.noValues = r.get<int32_t>("value count of " + which);
    int32_t nameLen = r.count("name length of " + which);
    int32_t typeLen = r.count("type name length of " + which);
    s.item.name = r.text(nameLen, "the name of " + which);
    s.item.typeName = r.text(typeLen, "the type name of " + which);
    if (s.item.noValues > 0)
      s.bytes = r.text(s.item.noBytes, "the data of static item '" + s.item.name + "'");
    out.push_back(std::move(s));
  }
  return out;
}

// Below version 3: first all (noBytes, noValues) pairs, then the data; the meaning goes by position.
std::vector<rawStatic> readOldStatic(headerReader& r, const embHeader& h) {
  static const char* names[] = {"elemBathy", "mesh", "dz"};
  r.seek(h.staticTableOff, "static table");
  std::vector<rawStatic> out;
  for (int32_t i = 0; i < h.nStatic; ++i) {
    rawStatic s;
    s.item.noBytes = r.count("byte count of static item " + str(i));
    s.item.noValues = r.get<int32_t>("value count of static item " + str(i));
    if (i < 3) s.item.name = names[i];
    out.push_back(std::move(s));
  }
  for (auto& s : out)
    if (s.item.noValues > 0)
      s.bytes = r.text(s.item.noBytes, "the data of static item '" + s.item.name + "'");
  return out;
}

// Copies n values of T out of a static block that must hold exactly that many.
template <typename T>
T* staticArray(const headerReader& r, const rawStatic& s, int64_t n, const char* what) {
  if (s.item.noValues != n || static_cast<int64_t>(s.bytes.size()) != 4 * n)
    r.fail("the static item '" + s.item.name + "' holds " + str(s.item.noValues) + " values in " +
           str(static_cast<int64_t>(s.bytes.size())) + " bytes, not the " + str(n) + " of " + what);
  T* p = new T[n > 0 ? n : 1];
  std::memcpy(p, s.bytes.data(), s.bytes.size());
  return p;
}

// n values of float32 from a static block, widened into a new array.
double* staticDoubles(const headerReader& r, const rawStatic& s, int64_t n, const char* what) {
  std::unique_ptr<float[]> f(staticArray<float>(r, s, n, what));
  double* d = new double[n > 0 ? n : 1];
  for (int64_t i = 0; i < n; ++i) d[i] = f[i];
  return d;
}

void installFixedFields(thResultFile& rf, const embHeader& h) {
  thModelInfo& mi = rf.mInfo;
  rf.fileVersion = h.version;
  rf.headerLen = h.headerLen;
  mi.layerType = h.layerType;
  if (h.hasFlavor) {
    mi.flavor = h.flavor;
    mi.topDepth = h.topDepth;
  }
  mi.modelType = h.modelType;
  mi.startDT = h.startDT;
  mi.dt = h.dt;
  mi.nt = h.nt;
  mi.nol = h.nol;
}

// A static item that the reader does not consume stays with the object, with a copy of its bytes.
void keepStatic(thResultFile& rf, const rawStatic& s) {
  staticItem si = s.item;
  si.data = nullptr;
  si.ownsData = false;
  if (si.noValues > 0 && !s.bytes.empty()) {
    si.data = new uint8_t[s.bytes.size()];
    std::memcpy(si.data, s.bytes.data(), s.bytes.size());
    si.ownsData = true;
  }
  rf.staticItems.push_back(si);
}

// Hands the static items to the model (mesh, bathymetry, layers, projection) or keeps them, then
// sets up the cells; the mesh comes first, since the cells need its faces.
void installStatics(thResultFile& rf, const headerReader& r, const std::vector<rawStatic>& statics) {
  const rawStatic *mesh = nullptr, *bathy = nullptr, *dz = nullptr, *enol = nullptr, *proj = nullptr;
  for (const rawStatic& s : statics) {
    const std::string& n = s.item.name;
    if (n == "mesh")
      mesh = &s;
    else if (n == "elemBathy")
      bathy = &s;
    else if (n == "dz")
      dz = &s;
    else if (n == "enol" && rf.fileVersion >= 4)
      enol = &s;  // older files count it unknown
    else if (n == "proj")
      proj = &s;
    else
      keepStatic(rf, s);
  }
  if (!mesh) r.fail("it holds no mesh");
  thModelInfo& mi = rf.mInfo;
  thMesh2D& m = mi.mesh2d;
  m.readMeshBuffer(mesh->bytes.data(), static_cast<uint32_t>(rf.fileVersion),
                   static_cast<int64_t>(mesh->bytes.size()));
  m.projection = proj ? proj->bytes : std::string();
  mi.unshare(false);
  mi.releaseInputs(true);
  if (bathy) mi.elemBathy = staticDoubles(r, *bathy, m.noe, "the elements");
  if (dz) mi.dz = staticDoubles(r, *dz, mi.nol, "the layers");
  if (enol) mi.enol = staticArray<int32_t>(r, *enol, m.noe, "the elements");
  mi.initCells();
}

}  // namespace

// ---------------------------------------------------------------- reading the header

void thResultFile::readHeaderEMB() {
  headerReader r(filename);
  if (fileTime < versionCutoffDT) fileVersion = 0;
  embHeader h = readFixedFields(r, fileVersion);
  r.seek(h.itemTableOff, "item table");
  std::vector<std::string> names;
  std::vector<int32_t> lengths;
  int64_t timestepLen = 0;
  for (int32_t i = 0; i < h.nItems; ++i) {
    int32_t len = h.version >= 1 ? r.count("length of item " + str(i)) : 0;
    int32_t nameLen = r.count("name length of item " + str(i));
    names.push_back(r.text(nameLen, "the name of item " + str(i)));
    lengths.push_back(len);
    timestepLen += len;
  }
  // Value positions within a physical file are 32-bit numbers; a larger stated count cannot be
  // the writer's and would size the arrays of the series reads beyond any file.
  if (timestepLen * std::max(h.nt, 1) > INT32_MAX || static_cast<int64_t>(h.nt) * 4 > INT32_MAX)
    r.fail("its " + str(h.nt) + " timesteps of " + str(timestepLen) +
           " values each are more than a file holds");
  std::vector<rawStatic> statics = h.version >= 3 ? readStaticRecords(r, h.nStatic) : readOldStatic(r, h);
  installFixedFields(*this, h);
  installStatics(*this, r, statics);
  // Version 0 stores no lengths: every item holds one value per cell.
  if (h.version == 0) lengths.assign(names.size(), mInfo.cells);
  itemNameVec = names;
  itemLengthVec = lengths;
  // The first item tells a restart or a decoupled-flux file from a plain result file.
  if (!names.empty() && names[0] == "hdrst_u")
    format = RESTART;
  else if (!names.empty() && (names[0] == "hddcp_uFlux" || names[0] == "uFlux") &&
           lengths[0] == mInfo.totNoUPnts)
    format = DECOUPLED;
}

// ---------------------------------------------------------------- reading data

namespace {

// Byte position of value `index` of an item at a timestep of a physical file; 64-bit throughout.
int32_t itemCount(const thResultFile& rf) { return static_cast<int32_t>(rf.itemLengthVec.size()); }

int64_t valuePos(const thResultFile& rf, int64_t itemOffset, int64_t timestepLen, int64_t timestep,
                 int64_t index) {
  return rf.headerLen + 4 * (itemOffset + timestep * timestepLen + index);
}

}  // namespace

int32_t thResultFile::readItemDataEMB(int32_t itemNo, int32_t timestep, float* data) {
  std::string name = getFileForTimestep(timestep);
  filePtr f = openRead(name, "readItemData");
  readAt(f.get(), valuePos(*this, getItemOffset(itemNo), getItemOffset(itemCount(*this)), timestep, 0), data,
         itemLengthVec[itemNo]);
  return 0;
}

int32_t thResultFile::readLayerEMB(int32_t itemNo, int32_t timestep, int32_t layer, float* data) {
  int32_t noe = mInfo.mesh2d.noe, nol = mInfo.nol, len = itemLengthVec[itemNo];
  if (mInfo.layerType != zlayer && mInfo.layerType != sigma)
    throw VException("thResultFile::readLayer unsupported layerType.");
  bool is2D = mInfo.layerType == zlayer && len == noe;
  if (mInfo.layerType == zlayer && !is2D && len != mInfo.cells)
    throw VException("thResultFile::readLayer: item '" + itemNameVec[itemNo] + "' of '" + filename +
                     "' holds " + str(len) + " values, which is neither one per cell (" + str(mInfo.cells) +
                     ") nor one per element (" + str(noe) + ").");
  if (mInfo.layerType == zlayer && !is2D && !mInfo.isInit)
    throw VException("thResultFile::readLayer: the cells of '" + filename +
                     "' are not set up; read the header first.");
  std::string name = getFileForTimestep(timestep);
  filePtr f = openRead(name, "readLayer");
  int64_t first = valuePos(*this, getItemOffset(itemNo), getItemOffset(itemCount(*this)), timestep, 0);
  if (mInfo.layerType == zlayer && !is2D) {
    pickColumnsEMB(f.get(), first, layer, data);
    return noe;
  }
  // The item's block of this timestep is read in one piece and the values are picked from it, as
  // if each were read at its own position; a value outside the block is read on its own.
  if (layerBuf.size() < static_cast<size_t>(len)) layerBuf.resize(len);
  int64_t got = readAt(f.get(), first, layerBuf.data(), len);
  auto valueAt = [&](int64_t i, float& v) {
    if (i >= 0 && i < got) {
      v = layerBuf[i];
      return true;
    }
    if (i >= 0 && i < len) return false;  // inside the block but past the end of the file
    return readAt(f.get(), first + 4 * i, &v, 1) == 1;
  };
  // sigma: every column holds nol cells, whatever the layer code
  for (int32_t e = 0; e < noe; ++e) valueAt(is2D ? e : static_cast<int64_t>(e) * nol + layer, data[e]);
  return noe;
}

void thResultFile::pickColumnsEMB(FILE* f, int64_t first, int32_t layer, float* data) {
  // The columns are read in runs of about a megabyte and picked while the run is in the cache;
  // consecutive elements own consecutive cells, so the runs follow one another in the file.
  const int64_t runValues = std::max<int64_t>(layerRunValues, 1);
  const int32_t noe = mInfo.mesh2d.noe, nol = mInfo.nol;
  const int32_t* bli = mInfo.botlayerIdx;
  const int32_t* ebli = mInfo.ebli;
  if (layerBuf.size() < static_cast<size_t>(runValues)) layerBuf.resize(runValues);
  for (int32_t e0 = 0; e0 < noe;) {
    int64_t lo = bli[e0];
    int32_t e1 = e0 + 1;  // a column longer than a run is a run of its own
    while (e1 < noe && bli[e1] + nol - ebli[e1] - lo <= runValues) ++e1;
    int64_t hi = bli[e1 - 1] + nol - ebli[e1 - 1];
    if (layerBuf.size() < static_cast<size_t>(hi - lo)) layerBuf.resize(hi - lo);
    int64_t got = readAt(f, first + 4 * lo, layerBuf.data(), hi - lo);
    pickLayer(
        mInfo, layer, data,
        [&](int64_t i, float& v) {
          if (i < lo || i >= lo + got) return false;  // past the end of the file
          v = layerBuf[i - lo];
          return true;
        },
        e0, e1);
    e0 = e1;
  }
}

int32_t thResultFile::readProfileEMB(int32_t itemNo, int32_t timestep, int32_t elemNo, float* data) {
  std::string name = getFileForTimestep(timestep);
  filePtr f = openRead(name, "readProfile");
  int32_t nol = mInfo.nol, b = mInfo.ebli[elemNo], n = nol - b;
  // below the sea bed the column reads 0
  for (int32_t l = 0; l < nol; ++l) data[l] = 0.0f;
  readAt(f.get(),
         valuePos(*this, getItemOffset(itemNo), getItemOffset(itemCount(*this)), timestep,
                  mInfo.botlayerIdx[elemNo]),
         data + b, n);
  return n;
}

void thResultFile::readTimeSeriesEMB(int32_t itemNo, int32_t index, int32_t from, int32_t to, double* data) {
  filePtr f = openRead(getFileName(), "readTimeSeries");
  int64_t off = getItemOffset(itemNo), len = getItemOffset(itemCount(*this));
  for (int32_t t = from; t < to; ++t) {
    float v = 0.0f;
    if (readAt(f.get(), valuePos(*this, off, len, t, index), &v, 1) == 1) data[t - from] = v;
  }
}

void thResultFile::readTimeSeriesProfileEMB(int32_t itemNo, int32_t elemNo, int32_t from, int32_t to,
                                            double* data) {
  filePtr f = openRead(getFileName(), "readTimeSeriesProfile");
  int64_t off = getItemOffset(itemNo), len = getItemOffset(itemCount(*this));
  int32_t n = mInfo.nol - mInfo.ebli[elemNo];
  std::vector<float> col(n > 0 ? n : 1);
  for (int32_t t = from; t < to; ++t) {
    int64_t got = readAt(f.get(), valuePos(*this, off, len, t, mInfo.botlayerIdx[elemNo]), col.data(), n);
    for (int64_t k = 0; k < got; ++k) data[static_cast<int64_t>(t - from) * n + k] = col[k];
  }
}

// ---------------------------------------------------------------- writing

namespace {

template <typename T>
void put(std::string& out, T v) {
  out.append(reinterpret_cast<const char*>(&v), sizeof v);
}

template <typename T>
T* copyAs(const double* from, int32_t n) {
  T* p = new T[n > 0 ? n : 1];
  for (int32_t i = 0; i < n; ++i) p[i] = static_cast<T>(from[i]);
  return p;
}

// The static items that stand for the model, each a block of the object's own, in the order that
// files carry: "proj", "enol", "dz", "elemBathy", "mesh", then those that were there before.
void addModelStatics(thResultFile& rf) {
  thModelInfo& mi = rf.mInfo;
  thMesh2D& m = mi.mesh2d;
  rf.addStaticItem("elemBathy", copyAs<float>(mi.elemBathy, m.noe), m.noe);
  char* mesh = nullptr;
  int32_t meshLen = m.writeMeshBuffer(mesh);
  rf.addStaticItem("mesh", mesh, meshLen, 1);
  rf.addStaticItem("dz", copyAs<float>(mi.dz, mi.nol), mi.nol);
  if (mi.enol) {
    int32_t* enol = new int32_t[m.noe];
    std::memcpy(enol, mi.enol, sizeof(int32_t) * m.noe);
    rf.addStaticItem("enol", enol, m.noe);
  }
  int32_t projLen = static_cast<int32_t>(m.projection.size());
  char* proj = new char[projLen > 0 ? projLen : 1];
  std::memcpy(proj, m.projection.data(), projLen);
  rf.addStaticItem("proj", proj, projLen, 0);
  if (projLen == 0) delete[] proj;  // an empty item keeps no block
  for (staticItem& si : rf.staticItems)
    if (si.name == "elemBathy" || si.name == "mesh" || si.name == "dz" || si.name == "enol" ||
        si.name == "proj")
      si.ownsData = si.data != nullptr;
}

// Header fields up to byte 68, the item table at 128 and the static table records (without their
// data), as the version 8 layout has them.
std::string headerBytes(thResultFile& rf, int32_t itemTableLen) {
  thModelInfo& mi = rf.mInfo;
  std::string h;
  put<int32_t>(h, rf.writeVersion);
  put<int32_t>(h, mi.layerType);
  put<int32_t>(h, mi.flavor);
  put<int32_t>(h, 1);
  put<float>(h, static_cast<float>(4.0 * std::atan(1.0)));
  put<float>(h, static_cast<float>(mi.topDepth));
  put<int32_t>(h, mi.modelType);
  put<int32_t>(h, rf.headerLen);
  put<int64_t>(h, mi.startDT);
  put<float>(h, static_cast<float>(mi.dt));
  put<int32_t>(h, mi.nt);
  put<int32_t>(h, static_cast<int32_t>(rf.itemNameVec.size()));
  put<int32_t>(h, 128);
  put<int32_t>(h, static_cast<int32_t>(rf.staticItems.size()));
  put<int32_t>(h, 128 + itemTableLen);
  put<int32_t>(h, mi.nol);
  h.resize(128, '\0');  // the gap, which readers never look at
  for (size_t i = 0; i < rf.itemNameVec.size(); ++i) {
    put<int32_t>(h, rf.itemLengthVec[i]);
    put<int32_t>(h, static_cast<int32_t>(rf.itemNameVec[i].size()));
    h += rf.itemNameVec[i];
  }
  return h;
}

}  // namespace

void thResultFile::writeHeaderEMB() {
  checkModelForWrite();
  std::string name = getFileName();
  addModelStatics(*this);
  int64_t itemTableLen = 0, len = 128;
  for (const std::string& n : itemNameVec) itemTableLen += 8 + static_cast<int64_t>(n.size());
  len += itemTableLen;
  for (const staticItem& si : staticItems)
    len += 16 + static_cast<int64_t>(si.noBytes) + si.name.size() + si.typeName.size();
  if (len > INT32_MAX)
    throw VException("thResultFile::writeHeader: the header of '" + name + "' would take " + str(len) +
                     " bytes, more than an EMB file can address.");
  headerLen = static_cast<int32_t>(len);
  // A physical file stays below 2,000,000,000 bytes unless a count was set beforehand.
  if (timestepsPerFile < 0)
    timestepsPerFile = static_cast<int32_t>(
        std::floor((2e9 - headerLen) / (4.0 * getItemOffset(static_cast<int32_t>(itemLengthVec.size())))));
  if (stream.is_open()) stream.close();
  stream.clear();
  stream.open(name, std::ios::out | std::ios::binary | std::ios::trunc);
  if (!stream.is_open()) throw VException("Cannot open file for write: '" + name + "'");
  std::string h = headerBytes(*this, static_cast<int32_t>(itemTableLen));
  stream.write(h.data(), static_cast<std::streamsize>(h.size()));
  for (const staticItem& si : staticItems) {
    std::string rec;
    put<int32_t>(rec, si.noBytes);
    put<int32_t>(rec, si.noValues);
    put<int32_t>(rec, static_cast<int32_t>(si.name.size()));
    put<int32_t>(rec, static_cast<int32_t>(si.typeName.size()));
    rec += si.name + si.typeName;
    stream.write(rec.data(), static_cast<std::streamsize>(rec.size()));
    if (si.noValues > 0 && si.data) stream.write(reinterpret_cast<const char*>(si.data), si.noBytes);
  }
}

void thResultFile::writeItemDataEMB(float* data, int32_t n) {
  if (!stream.is_open())
    throw VException("thResultFile::writeItemData: '" + getFileName() +
                     "' is not open for writing; call writeHeader first.");
  stream.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(n) * 4);
  if (++writeItem < static_cast<int32_t>(itemNameVec.size())) return;
  writeItem = 0;
  ++writeTimestep;
  if (timestepsPerFile <= 0 || writeTimestep < timestepsPerFile) return;
  // The file is full: the next timesteps go to the next "^" file, with a header of its own.
  closeFile(writeTimestep);
  setNoTimesteps(timestepsPerFile);
  ++fileNo;
  mInfo.startDT += static_cast<int64_t>(timestepsPerFile * mInfo.dt);
  writeHeader();
  writeTimestep = 0;
}

void thResultFile::closeFileEMB(int32_t noTimesteps) {
  if (!stream.is_open()) return;  // nothing written, nothing to patch
  stream.seekp(ntOffset(fileVersion));
  stream.write(reinterpret_cast<const char*>(&noTimesteps), 4);
  stream.close();
}

void thResultFile::patchNoTimestepsEMB(int32_t noTimesteps) {
  // A file of its own: the writing stream may still be open on another file.
  std::fstream f(getFileName(), std::ios::in | std::ios::out | std::ios::binary);
  if (!f.is_open()) return;  // a missing file has no count to patch
  f.seekp(ntOffset(fileVersion));
  f.write(reinterpret_cast<const char*>(&noTimesteps), 4);
}

}  // namespace thalmod
