// NC result files: the NetCDF-4 form of a result file, one self-contained file that holds the
// model description beside the time-dependent items.
//
// Schema, in the order of writing:
//   global attributes: "fileType" (text "Thalmod unstructured data file"), "version" (int),
//     "layerType" (int), "flavor" (int), "topDepth" (double), "modeltype" (int, the number of the
//     model type), "projection" (text), "nItem" (int, the number of items)
//   dimensions: "time" (unlimited), "nodes" (non), "elems" (noe), "cells", "layers" (nol),
//     "totNoElemNodes" (length of the connectivity list), then the item dimensions made on demand
//     ("UPntsDim", "dcpSrcDim", "ABMDim" or the item's name + "Dim")
//   variables, fixed ones first:
//     "time"(time) int64, seconds since 1970-01-01, with the texts "long_name", "standard_name",
//       "units"
//     "nodeXCoor", "nodeYCoor"(nodes) double; "nodeType"(nodes) int
//     "noElemNodes"(elems) int; "voronoiX", "voronoiY", "elemBathy"(elems) double
//     "elemBottomLayerIdx"(elems) int; "elemlayers"(elems) int, only when the model has it
//     "connectivity"(totNoElemNodes) int, the nodes of all elements one element after the other
//     "layerThickness"(layers) double
//   and last one float variable (time, item dimension) per item, named as the item. Items are
//   found by position only: they are the last "nItem" variables of the file.
// Every variable is compressed (shuffle, deflate level 2).

#include <netcdf.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "resultfile/thResultFile.h"
#include "support/VMsg.h"
#include "support/VStr.h"
#include "support/thBigArrays.h"

namespace thalmod {

using VCppLib::VException;
using VCppLib::VNetCdf;
namespace VStr = VCppLib::VStr;

namespace {

using VCppLib::str;

const char* typeName(int32_t type) {
  switch (type) {
    case NC_INT: return "int";
    case NC_INT64: return "int64";
    case NC_DOUBLE: return "double";
    case NC_FLOAT: return "float";
    default: return "another type";
  }
}

// The checks of the header reader: what does not fit the schema is reported with the file's name
// instead of being read out of bounds later.
class ncSchema {
 public:
  ncSchema(VNetCdf& file, const std::string& fileName) : f(file), name(fileName) {}

  [[noreturn]] void fail(const std::string& why) const {
    throw VException("thResultFile::readHeader: '" + name + "' is not a result file: " + why + ".");
  }

  int32_t dimLen(const std::string& dim) {
    int32_t len = f.getDimLen(dim);
    if (len < 0) fail("the dimension '" + dim + "' is missing");
    return len;
  }

  // The id of a one-dimensional variable over `dim` of the given type; -1 if it is optional and
  // missing.
  int32_t var(const std::string& var, int32_t type, const std::string& dim, bool required = true) {
    int32_t v = f.getVarId(var);
    if (v < 0) {
      if (!required) return -1;
      fail("the variable '" + var + "' is missing");
    }
    if (f.varTypes[v] != type)
      fail("the variable '" + var + "' is of " + typeName(f.varTypes[v]) + ", not of " + typeName(type));
    if (f.varNdims[v] != 1 || f.varDimIds[v][0] != f.getDimId(dim))
      fail("the variable '" + var + "' is not laid out along the dimension '" + dim + "'");
    fitsFile(v);
    return v;
  }

  // A damaged header may declare far more values than the file holds (50 million timesteps in
  // 2 KB, which a series would then read one by one): such a file is refused, not read at that length.
  void fitsFile(int32_t v) {
    try {
      f.checkVarFitsFile(v, "readHeader");
    } catch (const VException&) {
      fail("the variable '" + f.varNames[v] + "' declares more values than the file's size can hold");
    }
  }

  template <typename T>
  std::unique_ptr<T[]> read(int32_t varid) {
    T* data = nullptr;
    f.getVarData<T>(varid, data);
    return std::unique_ptr<T[]>(data);
  }

  // The whole of a one-dimensional variable of T's own type and `len` values, into an array of
  // that length; the whole-variable read above would make and clear a block four times as large.
  // A failed read leaves zeros, as that read does; a good one writes each entry once.
  template <typename T>
  std::unique_ptr<T[]> readExact(int32_t varid, int32_t len) {
    std::unique_ptr<T[]> data(thalmod::bigarr::newArr<T>(len));
    size_t start[1] = {0};
    size_t count[1] = {static_cast<size_t>(std::max(len, 0))};
    T* p = data.get();
    if (len <= 0) return data;
    const int32_t rc = f.getData<T>(varid, p, start, count);
    if (rc != NC_NOERR && rc != NC_ERANGE) std::fill(p, p + len, T());
    return data;
  }

  // One value of a one-dimensional int64 variable; 0 where the read fails, as the cleared arrays
  // above. Used where only a few values of a long variable count, so that a length claimed by a
  // damaged header costs nothing. VNetCdf's hyperslab read refuses int64 variables (they are
  // readable whole or converted to floating point, which would round large values), so this one
  // value is read from the open handle directly, as stored.
  int64_t readInt64At(int32_t varid, int32_t index) {
    long long value = 0;
    size_t start[1] = {static_cast<size_t>(index)};
    size_t count[1] = {1};
    nc_get_vara_longlong(f.ncid, varid, start, count, &value);
    return static_cast<int64_t>(value);
  }

 private:
  VNetCdf& f;
  std::string name;
};

// (last - first) / (n - 1) of an equidistant axis of n > 1 values. The difference of two int64 values
// may not fit into int64 on a damaged axis; it is then taken in long double, which holds it.
double axisStep(int64_t first, int64_t last, int32_t n) {
  int64_t diff = 0;
  if (!__builtin_sub_overflow(last, first, &diff)) return static_cast<double>(diff) / (n - 1);
  return static_cast<double>((static_cast<long double>(last) - static_cast<long double>(first)) / (n - 1));
}

// Node types of a result file: 0 inner, 1 to 98 open boundary, 99 closed, or the code -(100a+b) of
// a corner where open boundaries a and b meet.
bool validNodeType(int32_t t) {
  if (t >= 0 && t <= 99) return true;
  if (t > -101 || t < -9898) return false;
  int32_t a = -t / 100, b = -t - 100 * a;
  return a >= 1 && a <= 98 && b >= 1 && b <= 98;
}

// The header of a file as read, checked before any of it is handed to the model, so that a bad
// file leaves nothing half-owned behind.
struct ncHeader {
  int32_t nt = 0, non = 0, noe = 0, nol = 0, nevf = 0;
  int64_t timeFirst = 0, timeLast = 0;
  std::string projection;
  std::unique_ptr<double[]> bathy, dz, x, y, vorX, vorY;
  std::unique_ptr<int32_t[]> enol, types, nonpe, conn;
  std::vector<int32_t> itemVars, itemLens;  // variable and length of each item
};

// The global attributes. A missing integer attribute leaves its field as it is, as "topDepth" does.
void readAttributes(VNetCdf& f, thResultFile& rf, ncHeader& h) {
  auto intAtt = [&f](const char* att, int32_t& field) {
    if (f.hasAtt(att, NC_GLOBAL)) field = f.getGlobalAttInt(att);
  };
  intAtt("version", rf.fileVersion);
  intAtt("layerType", rf.mInfo.layerType);
  intAtt("flavor", rf.mInfo.flavor);
  if (f.hasAtt("topDepth", NC_GLOBAL)) rf.mInfo.topDepth = f.getGlobalAttDouble("topDepth");
  intAtt("modeltype", rf.mInfo.modelType);
  h.projection = f.getAttStr("projection", NC_GLOBAL);
}

void readDims(ncSchema& s, ncHeader& h) {
  h.nt = s.dimLen("time");
  h.non = s.dimLen("nodes");
  h.noe = s.dimLen("elems");
  h.nol = s.dimLen("layers");
  h.nevf = s.dimLen("totNoElemNodes");
  if (h.noe < 1 || h.non < 1) s.fail("the mesh has no elements");
  if (h.nol < 1) s.fail("the model has no layers");
}

// The items: the last nItem variables, each a number record over one more dimension.
void findItems(ncSchema& s, VNetCdf& f, ncHeader& h) {
  if (!f.hasAtt("nItem", NC_GLOBAL)) s.fail("the attribute 'nItem' is missing");
  const int32_t nItem = f.getGlobalAttInt("nItem");
  if (nItem < 0 || nItem > f.nvars)
    s.fail("'nItem' is " + str(nItem) + " but the file has " + str(f.nvars) + " variables");
  const int32_t timeDim = f.getDimId("time");
  for (int32_t i = 0; i < nItem; ++i) {
    const int32_t v = f.nvars - nItem + i, type = f.varTypes[v];
    if (f.varNdims[v] != 2 || f.varDimIds[v][0] != timeDim)
      s.fail("the item variable '" + f.varNames[v] + "' is not laid out along (time, values)");
    if (type != NC_FLOAT && type != NC_DOUBLE && type != NC_SHORT && type != NC_INT)
      s.fail("the item variable '" + f.varNames[v] + "' is of " + typeName(type) +
             ", not of a number type that items are read as");
    s.fitsFile(v);
    h.itemVars.push_back(v);
    h.itemLens.push_back(f.dimLen[f.varDimIds[v][1]]);
  }
}

// The model's arrays. Only the ends of the time axis count (the timesteps are taken to be
// equidistant), so only they are read: a damaged header may claim far more timesteps than the
// file holds.
void readArrays(ncSchema& s, ncHeader& h) {
  const int32_t vTime = s.var("time", NC_INT64, "time");
  const int32_t vBathy = s.var("elemBathy", NC_DOUBLE, "elems");
  const int32_t vLayers = s.var("elemlayers", NC_INT, "elems", false);
  const int32_t vDz = s.var("layerThickness", NC_DOUBLE, "layers");
  const int32_t vX = s.var("nodeXCoor", NC_DOUBLE, "nodes");
  const int32_t vY = s.var("nodeYCoor", NC_DOUBLE, "nodes");
  const int32_t vType = s.var("nodeType", NC_INT, "nodes");
  const int32_t vVorX = s.var("voronoiX", NC_DOUBLE, "elems");
  const int32_t vVorY = s.var("voronoiY", NC_DOUBLE, "elems");
  const int32_t vNonpe = s.var("noElemNodes", NC_INT, "elems");
  const int32_t vConn = s.var("connectivity", NC_INT, "totNoElemNodes");
  h.timeFirst = h.nt > 0 ? s.readInt64At(vTime, 0) : 0;
  h.timeLast = h.nt > 1 ? s.readInt64At(vTime, h.nt - 1) : h.timeFirst;
  h.bathy = s.readExact<double>(vBathy, h.noe);
  if (vLayers >= 0) h.enol = s.readExact<int32_t>(vLayers, h.noe);
  h.dz = s.read<double>(vDz);
  h.x = s.readExact<double>(vX, h.non);
  h.y = s.readExact<double>(vY, h.non);
  h.types = s.readExact<int32_t>(vType, h.non);
  h.vorX = s.readExact<double>(vVorX, h.noe);
  h.vorY = s.readExact<double>(vVorY, h.noe);
  h.nonpe = s.readExact<int32_t>(vNonpe, h.noe);
  h.conn = s.readExact<int32_t>(vConn, h.nevf);
}

// What the mesh and the cells would otherwise read out of bounds.
void checkArrays(ncSchema& s, const ncHeader& h) {
  int64_t totNodes = 0;
  for (int32_t e = 0; e < h.noe; ++e) {
    if (h.nonpe[e] < 3 || h.nonpe[e] > maxNodesPerElem)
      s.fail("element " + str(e) + " has " + str(h.nonpe[e]) + " nodes (3 to " + str(maxNodesPerElem) +
             " are possible)");
    totNodes += h.nonpe[e];
  }
  if (totNodes != h.nevf)
    s.fail("the elements have " + str(totNodes) + " nodes together but 'connectivity' holds " + str(h.nevf));
  for (int32_t i = 0; i < h.nevf; ++i)
    if (h.conn[i] < 0 || h.conn[i] >= h.non)
      s.fail("'connectivity' names node " + str(h.conn[i]) + " but there are " + str(h.non) + " nodes");
  for (int32_t i = 0; i < h.non; ++i)
    if (!validNodeType(h.types[i])) s.fail("node " + str(i) + " has the type " + str(h.types[i]));
  for (int32_t e = 0; h.enol && e < h.noe; ++e)
    if (h.enol[e] > h.nol)
      s.fail("element " + str(e) + " has " + str(h.enol[e]) + " layers but the model has " + str(h.nol));
}

// A mesh read before is let go of as a whole (reset to an empty mesh): the file's mesh starts afresh.
void installMesh(thMesh2D& m, ncHeader& h) {
  if (m.noe > 0 || m.non > 0) m = thMesh2D();
  m.projection = h.projection;
  m.non = h.non;
  m.noe = h.noe;
  m.nevf = h.nevf;
  m.nxCoor = h.x.release();
  m.nyCoor = h.y.release();
  m.nt = h.types.release();
  m.nonpe = h.nonpe.release();
  m.en = h.conn.release();
  m.eVoronoiX = h.vorX.release();
  m.eVoronoiY = h.vorY.release();
  m.hasVoronoi = true;  // the Voronoi points of the file are kept
}

// The time axis and the layer stack; the arrays of an earlier read go (or stay with the copies
// that share them).
void installModel(thModelInfo& mi, ncHeader& h) {
  mi.nt = h.nt;
  if (h.nt > 0) mi.startDT = h.timeFirst;
  mi.dt = h.nt > 1 ? axisStep(h.timeFirst, h.timeLast, h.nt) : 1.0;
  mi.unshare(false);
  mi.releaseInputs(true);
  mi.nol = h.nol;
  mi.elemBathy = h.bathy.release();
  mi.enol = h.enol.release();
  mi.dz = h.dz.release();
}

}  // namespace

// ---------------------------------------------------------------- reading the header

void thResultFile::readHeaderNC() {
  delete nc;
  nc = nullptr;
  ncVarIds.clear();  // a second read through one object starts afresh
  nc = new VNetCdf(filename, false);
  ncSchema s(*nc, filename);
  ncHeader h;
  readAttributes(*nc, *this, h);
  readDims(s, h);
  findItems(s, *nc, h);
  readArrays(s, h);
  checkArrays(s, h);
  installMesh(mInfo.mesh2d, h);
  installModel(mInfo, h);
  mInfo.mesh2d.initMesh();  // initCells needs the faces, so the mesh comes first
  mInfo.initCells();
  for (size_t i = 0; i < h.itemVars.size(); ++i) {
    ncVarIds.push_back(h.itemVars[i]);
    itemNameVec.push_back(nc->varNames[h.itemVars[i]]);
    itemLengthVec.push_back(h.itemLens[i]);
  }
}

// ---------------------------------------------------------------- reading data

int32_t thResultFile::readSlabNC(int32_t itemNo, size_t t0, size_t nt, size_t k0, size_t nk, float* out) {
  int32_t v = ncVarIds[itemNo];
  size_t start[2] = {t0, k0};
  size_t count[2] = {nt, nk};
  // With the stored type the library's status comes back; another type is converted on the way.
  if (nc->varTypes[v] == NC_FLOAT) return nc->getData<float>(v, out, start, count);
  nc->getDataIntoGivenType<float>(v, out, start, count);
  return 0;
}

int32_t thResultFile::readItemDataNC(int32_t itemNo, int32_t timestep, float* data) {
  checkItemNo(itemNo, "readItemData");
  checkOpenNC("readItemData");
  // NC data never spread over "^" files: the timestep is one of the open file. One beyond it (or a
  // negative one, which becomes a huge start) is refused by the library, and its status returned.
  return readSlabNC(itemNo, timestep, 1, 0, itemLengthVec[itemNo], data);
}

void thResultFile::readSeriesSlabNC(int32_t itemNo, size_t t0, size_t nt, size_t k0, size_t nk, double* out,
                                    const char* fn) {
  // Physical file fileNo: the open file for the first, a file opened for this call otherwise.
  std::unique_ptr<VNetCdf> other;
  VNetCdf* f = nc;
  int32_t v = -1;
  std::string name = getFileName();
  if (fileNo == 0) {
    checkOpenNC(fn);
    v = ncVarIds[itemNo];
  } else {
    other = std::make_unique<VNetCdf>(name, false);
    f = other.get();
    v = f->getVarId(itemNameVec[itemNo]);
    if (v < 0 || f->varNdims[v] != 2)
      throw VException("thResultFile::" + std::string(fn) + ": '" + name + "' holds no item '" +
                       itemNameVec[itemNo] + "'.");
  }
  size_t fileNt = static_cast<size_t>(std::max(f->dimLen[f->varDimIds[v][0]], 0));
  size_t len = static_cast<size_t>(std::max(f->dimLen[f->varDimIds[v][1]], 0));
  if (t0 + nt > fileNt || k0 + nk > len)
    throw VException("thResultFile::" + std::string(fn) + ": '" + name + "' holds " + str(fileNt) +
                     " timesteps of " + str(len) + " values of item '" + itemNameVec[itemNo] +
                     "'; timesteps " + str(t0) + " to " + str(t0 + nt) + " of values " + str(k0) + " to " +
                     str(k0 + nk) + " were asked for.");
  if (nt == 0 || nk == 0) return;
  size_t start[2] = {t0, k0};
  size_t count[2] = {nt, nk};
  int rc = NC_NOERR;
  if (f->varTypes[v] == NC_FLOAT) {
    std::unique_ptr<float[]> buf(new float[nt * nk]);
    float* p = buf.get();
    rc = f->getData<float>(v, p, start, count);
    if (rc == NC_NOERR)
      for (size_t i = 0; i < nt * nk; ++i) out[i] = p[i];
  } else {
    f->getDataIntoGivenType<double>(v, out, start, count);
  }
  if (rc != NC_NOERR)
    throw VException("thResultFile::" + std::string(fn) + ": item '" + itemNameVec[itemNo] +
                     "' cannot be read from '" + name + "': " + nc_strerror(rc));
}

// ---------------------------------------------------------------- writing

namespace {

void putText(int id, int varid, const char* att, const std::string& text) {
  nc_put_att_text(id, varid, att, text.size(), text.c_str());
}

void putInt(int id, const char* att, int32_t v) {
  int i = v;
  nc_put_att_int(id, NC_GLOBAL, att, NC_INT, 1, &i);
}

void putGlobals(int id, const thResultFile& rf, int32_t nItems) {
  putText(id, NC_GLOBAL, "fileType", "Thalmod unstructured data file");
  putInt(id, "version", rf.writeVersion);
  putInt(id, "layerType", rf.mInfo.layerType);
  putInt(id, "flavor", rf.mInfo.flavor);
  double topDepth = rf.mInfo.topDepth;
  nc_put_att_double(id, NC_GLOBAL, "topDepth", NC_DOUBLE, 1, &topDepth);
  putInt(id, "modeltype", rf.mInfo.modelType);
  putText(id, NC_GLOBAL, "projection", rf.mInfo.mesh2d.projection);
  putInt(id, "nItem", nItems);
}

// The dimensions and the fixed variables, each written as soon as it is defined.
void putFixed(VNetCdf& f, thResultFile& rf) {
  const thMesh2D& m = rf.mInfo.mesh2d;
  const thModelInfo& mi = rf.mInfo;
  rf.ncTimeDim = f.defDim("time", -1);
  const int32_t nodeDim = f.defDim("nodes", m.non);
  rf.ncElemDim = f.defDim("elems", m.noe);
  rf.ncCellDim = f.defDim("cells", mi.cells);
  const int32_t layerDim = f.defDim("layers", mi.nol);
  const int32_t connDim = f.defDim("totNoElemNodes", m.nevf);
  const int32_t timeVar = f.defVar("time", {rf.ncTimeDim}, NC_INT64);
  putText(f.ncid, timeVar, "long_name", "Time (seconds since 1970-01-01)");
  putText(f.ncid, timeVar, "standard_name", "time");
  putText(f.ncid, timeVar, "units", "seconds since 1970-01-01 00:00:00");
  auto fixed = [&f](const char* var, int32_t dim, int32_t type, void* data) {
    f.putVar(f.defVar(var, {dim}, type), data);
  };
  fixed("nodeXCoor", nodeDim, NC_DOUBLE, m.nxCoor);
  fixed("nodeYCoor", nodeDim, NC_DOUBLE, m.nyCoor);
  fixed("nodeType", nodeDim, NC_INT, m.nt);
  fixed("noElemNodes", rf.ncElemDim, NC_INT, m.nonpe);
  fixed("voronoiX", rf.ncElemDim, NC_DOUBLE, m.eVoronoiX);
  fixed("voronoiY", rf.ncElemDim, NC_DOUBLE, m.eVoronoiY);
  fixed("elemBathy", rf.ncElemDim, NC_DOUBLE, mi.elemBathy);
  fixed("elemBottomLayerIdx", rf.ncElemDim, NC_INT, mi.ebli);  // the first noe columns
  if (mi.enol) fixed("elemlayers", rf.ncElemDim, NC_INT, mi.enol);
  fixed("connectivity", connDim, NC_INT, m.en);
  fixed("layerThickness", layerDim, NC_DOUBLE, mi.dz);
}

// The second dimension of item i: by length, then by name; a new one is made where none fits.
int32_t itemDim(VNetCdf& f, const thResultFile& rf, int32_t i, const std::vector<int32_t>& itemDims,
                const std::string& name) {
  const std::string& item = rf.itemNameVec[i];
  const int32_t len = rf.itemLengthVec[i];
  if (len == rf.mInfo.cells) return rf.ncCellDim;
  if (len == rf.mInfo.mesh2d.noe) return rf.ncElemDim;
  for (int32_t j = 0; j < i; ++j)
    if (rf.itemLengthVec[j] == len) return itemDims[j];
  const std::string dimName = len == rf.mInfo.totNoUPnts      ? "UPntsDim"
                              : item == "hddcp_srcFlux"       ? "dcpSrcDim"
                              : VStr::startsWith(item, "abm") ? "ABMDim"
                                                              : item + "Dim";
  const int32_t dim = f.defDim(dimName, len);
  if (dim < 0)
    throw VException("thResultFile::writeHeader: the dimension '" + dimName + "' of item '" + item +
                     "' cannot be made in '" + name + "': " + nc_strerror(dim));
  return dim;
}

// The items last, only defined.
void defineItems(VNetCdf& f, thResultFile& rf, const std::string& name) {
  std::vector<int32_t> itemDims;
  for (int32_t i = 0; i < static_cast<int32_t>(rf.itemNameVec.size()); ++i) {
    const std::string& item = rf.itemNameVec[i];
    itemDims.push_back(itemDim(f, rf, i, itemDims, name));
    if (f.getVarId(item) >= 0)
      throw VException("thResultFile::writeHeader: the name of item '" + item +
                       "' is taken by another variable of '" + name + "'.");
    const int32_t v = f.defVar(item, {rf.ncTimeDim, itemDims.back()}, NC_FLOAT);
    if (f.getVarId(item) != v)
      throw VException("thResultFile::writeHeader: item '" + item + "' cannot be made a variable of '" +
                       name + "'.");
    rf.ncVarIds.push_back(v);
  }
}

}  // namespace

void thResultFile::writeHeaderNC() {
  std::string name = getFileName();
  checkModelForWrite();
  delete nc;
  nc = nullptr;
  ncVarIds.clear();
  nc = new VNetCdf(name, true);
  if (nc->ncid < 0) throw VException("Cannot open file for write: '" + name + "'");
  putGlobals(nc->ncid, *this, static_cast<int32_t>(itemNameVec.size()));
  putFixed(*nc, *this);
  defineItems(*nc, *this, name);
  nc->endDef();
}

void thResultFile::writeItemDataNC(float* data, int32_t n) {
  if (!nc || nc->ncid < 0)
    throw VException("thResultFile::writeItemData: the NetCDF file '" + getFileName() +
                     "' is not open for writing; call writeHeader first.");
  int32_t nItems = static_cast<int32_t>(ncVarIds.size());
  if (writeItem < 0 || writeItem >= nItems)
    throw VException("thResultFile::writeItemData: '" + getFileName() + "' has no item number " +
                     str(writeItem) + ".");
  if (n < itemLengthVec[writeItem])
    throw VException("thResultFile::writeItemData: item '" + itemNameVec[writeItem] + "' of '" +
                     getFileName() + "' takes " + str(itemLengthVec[writeItem]) + " values, not " + str(n) +
                     ".");
  nc->putTimestepData(ncVarIds[writeItem], writeTimestep, data);
  ++writeItem;
  if (writeItem < nItems) return;
  // the end of a timestep: its time goes to the same record of "time"
  int64_t t = static_cast<int64_t>(writeTimestep * mInfo.dt) + mInfo.startDT;
  nc->putTimestepData(nc->getVarId("time"), writeTimestep, &t);
  ++writeTimestep;
  writeItem = 0;
}

void thResultFile::closeFileNC() {
  if (nc && nc->ncid >= 0) nc->closeFile();
}

}  // namespace thalmod
