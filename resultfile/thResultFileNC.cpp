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

#include "mesh/thBigArrays.h"
#include "resultfile/thResultFile.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
using VCppLib::VNetCdf;
namespace VStr = VCppLib::VStr;

namespace {

std::string str(int64_t v) { return VStr::toString<long long>(static_cast<long long>(v)); }

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
  ncSchema(VNetCdf& f, const std::string& name) : f(f), name(name) {}

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
    return v;
  }

  template <typename T>
  std::unique_ptr<T[]> read(int32_t varid) {
    T* data = nullptr;
    f.getVarData<T>(varid, data);
    return std::unique_ptr<T[]>(data);
  }

  // The whole of a one-dimensional variable of T's own type and `len` values, into an array of
  // that length; the whole-variable read above would make and clear a block four times as large.
  // The array is cleared first, so that a failed read leaves zeros as that read does.
  template <typename T>
  std::unique_ptr<T[]> readExact(int32_t varid, int32_t len) {
    std::unique_ptr<T[]> data(thalmod::bigarr::newZeroArr<T>(len));
    size_t start[1] = {0};
    size_t count[1] = {static_cast<size_t>(std::max(len, 0))};
    T* p = data.get();
    if (len > 0) f.getData<T>(varid, p, start, count);
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

}  // namespace

// ---------------------------------------------------------------- reading the header

void thResultFile::readHeaderNC() {
  delete nc;
  nc = nullptr;
  ncVarIds.clear();  // a second read through one object starts afresh
  nc = new VNetCdf(filename, false);
  VNetCdf& f = *nc;
  ncSchema s(f, filename);
  thMesh2D& m = mInfo.mesh2d;

  // A missing integer attribute leaves its field as it is, as "topDepth" does.
  auto intAtt = [&f](const char* att, int32_t& field) {
    if (f.hasAtt(att, NC_GLOBAL)) field = f.getGlobalAttInt(att);
  };
  intAtt("version", fileVersion);
  intAtt("layerType", mInfo.layerType);
  intAtt("flavor", mInfo.flavor);
  if (f.hasAtt("topDepth", NC_GLOBAL)) mInfo.topDepth = f.getGlobalAttDouble("topDepth");
  intAtt("modeltype", mInfo.modelType);
  std::string projection = f.getAttStr("projection", NC_GLOBAL);

  int32_t nt = s.dimLen("time");
  int32_t non = s.dimLen("nodes");
  int32_t noe = s.dimLen("elems");
  int32_t nol = s.dimLen("layers");
  int32_t nevf = s.dimLen("totNoElemNodes");
  if (noe < 1 || non < 1) s.fail("the mesh has no elements");
  if (nol < 1) s.fail("the model has no layers");

  int32_t vTime = s.var("time", NC_INT64, "time");
  int32_t vBathy = s.var("elemBathy", NC_DOUBLE, "elems");
  int32_t vLayers = s.var("elemlayers", NC_INT, "elems", false);
  int32_t vDz = s.var("layerThickness", NC_DOUBLE, "layers");
  int32_t vX = s.var("nodeXCoor", NC_DOUBLE, "nodes");
  int32_t vY = s.var("nodeYCoor", NC_DOUBLE, "nodes");
  int32_t vType = s.var("nodeType", NC_INT, "nodes");
  int32_t vVorX = s.var("voronoiX", NC_DOUBLE, "elems");
  int32_t vVorY = s.var("voronoiY", NC_DOUBLE, "elems");
  int32_t vNonpe = s.var("noElemNodes", NC_INT, "elems");
  int32_t vConn = s.var("connectivity", NC_INT, "totNoElemNodes");

  // The items: the last nItem variables, each a float record over one more dimension.
  if (!f.hasAtt("nItem", NC_GLOBAL)) s.fail("the attribute 'nItem' is missing");
  int32_t nItem = f.getGlobalAttInt("nItem");
  if (nItem < 0 || nItem > f.nvars)
    s.fail("'nItem' is " + str(nItem) + " but the file has " + str(f.nvars) + " variables");
  int32_t timeDim = f.getDimId("time");
  std::vector<int32_t> itemVars, itemLens;
  for (int32_t i = 0; i < nItem; ++i) {
    int32_t v = f.nvars - nItem + i;
    int32_t type = f.varTypes[v];
    if (f.varNdims[v] != 2 || f.varDimIds[v][0] != timeDim)
      s.fail("the item variable '" + f.varNames[v] + "' is not laid out along (time, values)");
    if (type != NC_FLOAT && type != NC_DOUBLE && type != NC_SHORT && type != NC_INT)
      s.fail("the item variable '" + f.varNames[v] + "' is of " + typeName(type) +
             ", not of a number type that items are read as");
    itemVars.push_back(v);
    itemLens.push_back(f.dimLen[f.varDimIds[v][1]]);
  }

  // All arrays are read and checked before any of them is handed to the model, so that a bad
  // file leaves nothing half-owned behind.
  // Only the ends of the time axis count (the timesteps are taken to be equidistant), so only they
  // are read: a damaged header may claim far more timesteps than the file holds.
  const int64_t timeFirst = nt > 0 ? s.readInt64At(vTime, 0) : 0;
  const int64_t timeLast = nt > 1 ? s.readInt64At(vTime, nt - 1) : timeFirst;
  auto bathy = s.readExact<double>(vBathy, noe);
  std::unique_ptr<int32_t[]> enol;
  if (vLayers >= 0) enol = s.readExact<int32_t>(vLayers, noe);
  auto dz = s.read<double>(vDz);
  auto x = s.readExact<double>(vX, non);
  auto y = s.readExact<double>(vY, non);
  auto types = s.readExact<int32_t>(vType, non);
  auto vorX = s.readExact<double>(vVorX, noe);
  auto vorY = s.readExact<double>(vVorY, noe);
  auto nonpe = s.readExact<int32_t>(vNonpe, noe);
  auto conn = s.readExact<int32_t>(vConn, nevf);

  int64_t totNodes = 0;
  for (int32_t e = 0; e < noe; ++e) {
    // the mesh sorts an element's faces in a working array of 50 entries
    if (nonpe[e] < 3 || nonpe[e] > 50)
      s.fail("element " + str(e) + " has " + str(nonpe[e]) + " nodes (3 to 50 are possible)");
    totNodes += nonpe[e];
  }
  if (totNodes != nevf)
    s.fail("the elements have " + str(totNodes) + " nodes together but 'connectivity' holds " + str(nevf));
  for (int32_t i = 0; i < nevf; ++i)
    if (conn[i] < 0 || conn[i] >= non)
      s.fail("'connectivity' names node " + str(conn[i]) + " but there are " + str(non) + " nodes");
  for (int32_t i = 0; i < non; ++i)
    if (!validNodeType(types[i])) s.fail("node " + str(i) + " has the type " + str(types[i]));
  if (enol)
    for (int32_t e = 0; e < noe; ++e)
      if (enol[e] > nol)
        s.fail("element " + str(e) + " has " + str(enol[e]) + " layers but the model has " + str(nol));

  mInfo.nt = nt;
  if (nt > 0) mInfo.startDT = timeFirst;
  mInfo.dt = nt > 1 ? axisStep(timeFirst, timeLast, nt) : 1.0;

  // A mesh read before is released as a whole and the mesh starts afresh.
  if (m.noe > 0 || m.non > 0) {
    m.~thMesh2D();
    new (&m) thMesh2D();
  }
  m.projection = projection;
  m.non = non;
  m.noe = noe;
  m.nevf = nevf;
  m.nxCoor = x.release();
  m.nyCoor = y.release();
  m.nt = types.release();
  m.nonpe = nonpe.release();
  m.en = conn.release();
  m.eVoronoiX = vorX.release();
  m.eVoronoiY = vorY.release();
  m.hasVoronoi = true;  // the Voronoi points of the file are kept

  // the arrays of an earlier read go (or stay with the copies that share them)
  mInfo.unshare(false);
  mInfo.releaseInputs(true);
  mInfo.nol = nol;
  mInfo.elemBathy = bathy.release();
  mInfo.enol = enol.release();
  mInfo.dz = dz.release();

  // initCells needs the faces, so the mesh comes first.
  m.initMesh();
  mInfo.initCells();

  for (int32_t i = 0; i < nItem; ++i) {
    ncVarIds.push_back(itemVars[i]);
    itemNameVec.push_back(f.varNames[itemVars[i]]);
    itemLengthVec.push_back(itemLens[i]);
  }
}

// ---------------------------------------------------------------- reading data

int32_t thResultFile::readSlabNC(int32_t itemNo, size_t t0, size_t nt, size_t k0, size_t nk,
                                 float* out) {
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

void thResultFile::readSeriesSlabNC(int32_t itemNo, size_t t0, size_t nt, size_t k0, size_t nk,
                                    double* out, const char* fn) {
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
                     "'; timesteps " + str(t0) + " to " + str(t0 + nt) + " of values " + str(k0) +
                     " to " + str(k0 + nk) + " were asked for.");
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

void thResultFile::writeHeaderNC() {
  thMesh2D& m = mInfo.mesh2d;
  std::string name = getFileName();
  checkModelForWrite();
  int32_t nItems = static_cast<int32_t>(itemNameVec.size());

  delete nc;
  nc = nullptr;
  ncVarIds.clear();
  nc = new VNetCdf(name, true);
  if (nc->ncid < 0) throw VException("Cannot open file for write: '" + name + "'");
  VNetCdf& f = *nc;
  int id = f.ncid;

  auto putText = [id](int varid, const char* att, const std::string& text) {
    nc_put_att_text(id, varid, att, text.size(), text.c_str());
  };
  auto putInt = [id](const char* att, int32_t v) {
    int i = v;
    nc_put_att_int(id, NC_GLOBAL, att, NC_INT, 1, &i);
  };
  putText(NC_GLOBAL, "fileType", "Thalmod unstructured data file");
  putInt("version", writeVersion);
  putInt("layerType", mInfo.layerType);
  putInt("flavor", mInfo.flavor);
  double topDepth = mInfo.topDepth;
  nc_put_att_double(id, NC_GLOBAL, "topDepth", NC_DOUBLE, 1, &topDepth);
  putInt("modeltype", mInfo.modelType);
  putText(NC_GLOBAL, "projection", m.projection);
  putInt("nItem", nItems);

  ncTimeDim = f.defDim("time", -1);
  int32_t nodeDim = f.defDim("nodes", m.non);
  ncElemDim = f.defDim("elems", m.noe);
  ncCellDim = f.defDim("cells", mInfo.cells);
  int32_t layerDim = f.defDim("layers", mInfo.nol);
  int32_t connDim = f.defDim("totNoElemNodes", m.nevf);

  int32_t timeVar = f.defVar("time", {ncTimeDim}, NC_INT64);
  putText(timeVar, "long_name", "Time (seconds since 1970-01-01)");
  putText(timeVar, "standard_name", "time");
  putText(timeVar, "units", "seconds since 1970-01-01 00:00:00");
  // every fixed variable is written as soon as it is defined
  auto fixed = [&f](const char* var, int32_t dim, int32_t type, void* data) {
    f.putVar(f.defVar(var, {dim}, type), data);
  };
  fixed("nodeXCoor", nodeDim, NC_DOUBLE, m.nxCoor);
  fixed("nodeYCoor", nodeDim, NC_DOUBLE, m.nyCoor);
  fixed("nodeType", nodeDim, NC_INT, m.nt);
  fixed("noElemNodes", ncElemDim, NC_INT, m.nonpe);
  fixed("voronoiX", ncElemDim, NC_DOUBLE, m.eVoronoiX);
  fixed("voronoiY", ncElemDim, NC_DOUBLE, m.eVoronoiY);
  fixed("elemBathy", ncElemDim, NC_DOUBLE, mInfo.elemBathy);
  fixed("elemBottomLayerIdx", ncElemDim, NC_INT, mInfo.ebli);  // the first noe columns
  if (mInfo.enol) fixed("elemlayers", ncElemDim, NC_INT, mInfo.enol);
  fixed("connectivity", connDim, NC_INT, m.en);
  fixed("layerThickness", layerDim, NC_DOUBLE, mInfo.dz);

  // The items last, only defined. The second dimension goes by length, then by name.
  std::vector<int32_t> itemDims;
  for (int32_t i = 0; i < nItems; ++i) {
    const std::string& item = itemNameVec[i];
    int32_t len = itemLengthVec[i];
    int32_t dim = -1;
    if (len == mInfo.cells) dim = ncCellDim;
    else if (len == m.noe) dim = ncElemDim;
    for (int32_t j = 0; dim < 0 && j < i; ++j)
      if (itemLengthVec[j] == len) dim = itemDims[j];
    if (dim < 0) {
      std::string dimName = len == mInfo.totNoUPnts       ? "UPntsDim"
                            : item == "hddcp_srcFlux"      ? "dcpSrcDim"
                            : VStr::startsWith(item, "abm") ? "ABMDim"
                                                           : item + "Dim";
      dim = f.defDim(dimName, len);
      if (dim < 0)
        throw VException("thResultFile::writeHeader: the dimension '" + dimName + "' of item '" +
                         item + "' cannot be made in '" + name + "': " + nc_strerror(dim));
    }
    itemDims.push_back(dim);
    if (f.getVarId(item) >= 0)
      throw VException("thResultFile::writeHeader: the name of item '" + item +
                       "' is taken by another variable of '" + name + "'.");
    int32_t v = f.defVar(item, {ncTimeDim, dim}, NC_FLOAT);
    if (f.getVarId(item) != v)
      throw VException("thResultFile::writeHeader: item '" + item + "' cannot be made a variable of '" +
                       name + "'.");
    ncVarIds.push_back(v);
  }
  f.endDef();
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
                     getFileName() + "' takes " + str(itemLengthVec[writeItem]) + " values, not " +
                     str(n) + ".");
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
