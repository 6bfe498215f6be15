// The model description object: its enumerations, its arrays and their ownership, its copies and
// its layer queries. initCells, which turns the mesh and the layer stack into the numbering of
// columns, cells, faces and U-points, is in thModelCells.cpp.
#include "model/thModelInfo.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
// Qualified: inside the members, the name toString is the model's own report.
namespace VStr = VCppLib::VStr;

// ---------------------------------------------------------------- enumerations

modelTypeEnum str2modelTypeEnum(std::string s) {
  std::string t = VCppLib::VStr::toLower(s);
  if (t == "water" || t == "unstructured") return water;
  if (t == "sediment") return sediment;
  if (t == "abm") return abm;
  throw VException("str2modelTypeEnum: invalid modeltype definition (" + t + ").");
}

std::string modelTypeEnum2str(modelTypeEnum t) {
  switch (static_cast<int32_t>(t)) {
    case water: return "water";
    case sediment: return "sediment";
    case abm: return "abm";
  }
  throw VException("modelTypeEnum2str: unsupported modelTypeEnum.");
}

// The two failure texts of the layer type conversions name other functions; callers match them.
layerTypeEnum str2layerTypeEnum(std::string s) {
  std::string t = VCppLib::VStr::toUpper(s);
  if (t == "SIGMA") return sigma;
  if (t == "Z" || t == "ZLAYER") return zlayer;
  throw VException("str2fileFmtEnum: invalid format definition (" + t + ").");
}

std::string layerTypeEnum2str(layerTypeEnum t) {
  switch (static_cast<int32_t>(t)) {
    case zlayer: return "zlayer";
    case sigma: return "sigma";
  }
  throw VException("modelTypeEnum2str: unsupported layerTypeEnum.");
}

// ---------------------------------------------------------------- arrays and ownership

namespace {
// Lets go of an array (see VArrayShare) or, with free false, only forgets it.
template <typename T>
void releaseArr(VCppLib::VArrayShare& shares, T*& a, bool free) {
  if (free) shares.release(a);
  a = nullptr;
}

// A table of rows (edz, fdz, evfbli, ...) keeps all its rows in one block, and rows[0] is the
// start of that block: the block goes with the table whichever table pointer holds it, so two
// tables of one shape may swap places. Rows are never freed one by one. rows[0] is not nulled:
// a copy may still read the table.
template <typename T>
void releaseRows(VCppLib::VArrayShare& shares, T**& rows, int32_t n, bool free) {
  if (free && rows != nullptr && n > 0) {
    T* block = rows[0];
    shares.release(block);
  }
  releaseArr(shares, rows, free);
}

// The arrays that initCells derives (arr), and its tables of rows with their row counts (rows).
template <typename F, typename G>
void forEachDerived(thModelInfo& m, F arr, G rows) {
  arr(m.cellVol);
  arr(m.toplayerIdx);
  arr(m.botlayerIdx);
  arr(m.cell2elem);
  arr(m.cell2layer);
  arr(m.cellGroup);
  arr(m.cellSeq);
  arr(m.cellTop);
  arr(m.bndNoCells);
  arr(m.cellDepth);
  arr(m.hacNo);
  arr(m.hacCell);
  arr(m.hacIdx);
  arr(m.hacWeight);
  arr(m.ebli);
  arr(m.etli);
  arr(m.etliOld);
  arr(m.fbli);
  arr(m.ftli);
  arr(m.edzInit);
  arr(m.fUIdx);
  arr(m.fLayerOff);
  arr(m.layerDepth);
  rows(m.fdz, m.allocFaceRows);
  rows(m.fdzOld, m.allocFaceRows);
  rows(m.fdzc, m.allocFaceRows);
  rows(m.edz, m.allocElemRows);
  rows(m.edzOld, m.allocElemRows);
  rows(m.edzc, m.allocElemRows);
  rows(m.evfbli, m.allocElemRows);
}

template <typename T>
T* copyArr(const T* a, int32_t n) {
  if (a == nullptr) return nullptr;
  T* c = new T[std::max(n, 0)];
  std::copy(a, a + std::max(n, 0), c);
  return c;
}

}  // namespace

thModelInfo::thModelInfo() = default;

// The mesh goes with its own destructor, which likewise frees only what no copy holds.
thModelInfo::~thModelInfo() {
  releaseDerived(true);
  releaseInputs(true);
  shares.clear();
}

thModelInfo::thModelInfo(const thModelInfo& other) {
  other.holdArrays();
  copyFields(other);
  shares = other.shares;
}

thModelInfo& thModelInfo::operator=(const thModelInfo& other) {
  if (this == &other) return *this;
  other.holdArrays();
  releaseDerived(true);
  releaseInputs(true);
  copyFields(other);  // the mesh by its own assignment, which lets go of this mesh's arrays
  shares = other.shares;
  return *this;
}

void thModelInfo::holdArrays() const {
  auto& m = const_cast<thModelInfo&>(*this);  // only the holder changes
  forEachDerived(
      m, [this](auto* a) { shares.hold(a); },
      [this](auto** rows, int32_t n) {
        shares.hold(rows);
        if (rows != nullptr && n > 0) shares.hold(rows[0]);
      });
  shares.hold(elemBathy);
  shares.hold(enol);
  shares.hold(dz);
}

void thModelInfo::copyFields(const thModelInfo& o) {
  isInit = o.isInit;
  startDT = o.startDT;
  dt = o.dt;
  modelType = o.modelType;
  flavor = o.flavor;
  nt = o.nt;
  bathymetry = o.bathymetry;
  layerThickness = o.layerThickness;
  elemBathy = o.elemBathy;
  minBotFrac = o.minBotFrac;
  enol = o.enol;
  cellVol = o.cellVol;
  toplayerIdx = o.toplayerIdx;
  botlayerIdx = o.botlayerIdx;
  cell2elem = o.cell2elem;
  cell2layer = o.cell2layer;
  cellGroup = o.cellGroup;
  cellSeq = o.cellSeq;
  cellTop = o.cellTop;
  bndFacesOn = o.bndFacesOn;
  totNoUvf = o.totNoUvf;
  noUInner = o.noUInner;
  noUBnd = o.noUBnd;
  totNoUPnts = o.totNoUPnts;
  totNoBndCells = o.totNoBndCells;
  bndNoCells = o.bndNoCells;
  cellDepth = o.cellDepth;
  hacNo = o.hacNo;
  hacCell = o.hacCell;
  hacIdx = o.hacIdx;
  hacWeight = o.hacWeight;
  cells = o.cells;
  ebli = o.ebli;
  etli = o.etli;
  etliOld = o.etliOld;
  fbli = o.fbli;
  ftli = o.ftli;
  fdz = o.fdz;
  fdzOld = o.fdzOld;
  fdzc = o.fdzc;
  edz = o.edz;
  edzOld = o.edzOld;
  edzc = o.edzc;
  edzInit = o.edzInit;
  fUIdx = o.fUIdx;
  fLayerOff = o.fLayerOff;
  evfbli = o.evfbli;
  mesh2d = o.mesh2d;
  nol = o.nol;
  dz = o.dz;
  layerDepth = o.layerDepth;
  topDepth = o.topDepth;
  layerType = o.layerType;
  wetDryOn = o.wetDryOn;
  allocElemRows = o.allocElemRows;
  allocCols = o.allocCols;
  allocFaceRows = o.allocFaceRows;
}

void thModelInfo::releaseDerived(bool free) {
  forEachDerived(
      *this, [this, free](auto*& a) { releaseArr(shares, a, free); },
      [this, free](auto**& rows, int32_t n) { releaseRows(shares, rows, n, free); });
  allocElemRows = 0;
  allocFaceRows = 0;
  allocCols = 0;
  isInit = false;
  wetDryOn = false;
}

void thModelInfo::releaseInputs(bool free) {
  releaseArr(shares, elemBathy, free);
  releaseArr(shares, enol, free);
  releaseArr(shares, dz, free);
}

void thModelInfo::unshare(bool keepInputs) {
  if (!keepInputs) {
    releaseInputs(true);
    return;
  }
  auto own = [this](auto*& a, int32_t n) {
    if (!shares.isShared(a)) return;
    auto* mine = copyArr(a, n);
    shares.release(a);  // the copies keep theirs
    a = mine;
  };
  own(elemBathy, mesh2d.noe);
  own(enol, mesh2d.noe);
  own(dz, nol);
}

void thModelInfo::reset() {
  unshare(false);
  releaseDerived(true);
  releaseInputs(true);
  isInit = false;
  startDT = 0;
  dt = -1.0;
  modelType = 0;
  flavor = -1;
  nt = 0;
  bathymetry.clear();
  layerThickness.clear();
  minBotFrac = 0.1;
  bndFacesOn = true;
  totNoUvf = 0;
  noUInner = 0;
  noUBnd = 0;
  totNoUPnts = 0;
  totNoBndCells = 0;
  cells = 0;
  nol = 0;
  topDepth = 0.0;
  layerType = 0;
  wetDryOn = false;
}

// ---------------------------------------------------------------- copies and variants

thModelInfo* thModelInfo::clone() const {
  auto c = std::make_unique<thModelInfo>();
  c->startDT = startDT;
  c->dt = dt;
  c->modelType = modelType;
  c->flavor = flavor;
  c->nt = nt;
  c->bathymetry = bathymetry;
  c->layerThickness = layerThickness;
  c->minBotFrac = minBotFrac;
  c->bndFacesOn = bndFacesOn;
  c->nol = nol;
  c->topDepth = topDepth;
  c->layerType = layerType;
  // The mesh is deep-copied as well, so that the clone and this object can go in any order.
  // Swapping through shallow copies hands the clone's arrays over without freeing them.
  std::unique_ptr<thMesh2D> meshCopy(mesh2d.clone());
  std::swap(c->mesh2d, *meshCopy);
  meshCopy.reset();
  c->dz = copyArr(dz, nol);
  c->elemBathy = copyArr(elemBathy, c->mesh2d.noe);
  c->enol = copyArr(enol, c->mesh2d.noe);
  c->initCells();
  return c.release();
}

int32_t thModelInfo::setFlatBottom(double depth, int32_t nolNew) {
  unshare(true);
  const int32_t noe = mesh2d.noe;
  if (elemBathy == nullptr && noe > 0) elemBathy = new double[noe];
  for (int32_t e = 0; e < noe; e++) elemBathy[e] = depth;
  if (nolNew > 0) {
    nol = nolNew;
    shares.release(dz);
    dz = new double[nolNew];
    const float thickness = 1.0f / static_cast<float>(nolNew);  // float on purpose: stored stacks carry it
    for (int32_t k = 0; k < nolNew; k++) dz[k] = thickness;
  }
  // A flat bottom decides the layer counts from the depth alone.
  shares.release(enol);
  return initCells();
}

// ---------------------------------------------------------------- layer queries

double thModelInfo::layerUpperEdge(int32_t layer, int32_t elem) const {
  if (layerDepth == nullptr || dz == nullptr)
    throw VException("thModelInfo::layerUpperEdge: the layers are not initialised (initCells).");
  if (layer < 0 || layer >= nol)
    throw VException("thModelInfo::layerUpperEdge: layer " + VStr::toString(layer) + " is outside 0.." +
                     VStr::toString(nol - 1) + ".");
  double edge = layerDepth[layer] - dz[layer] * 0.5;
  if (layerType == sigma) {
    if (elemBathy == nullptr || elem < 0 || elem >= mesh2d.noe)
      throw VException("thModelInfo::layerUpperEdge: element " + VStr::toString(elem) + " is outside 0.." +
                       VStr::toString(mesh2d.noe - 1) + ".");
    edge *= elemBathy[elem];
  }
  return edge;
}

int32_t thModelInfo::depth2Layer(int32_t elem, double depth) const {
  if (ebli == nullptr || elemBathy == nullptr || layerDepth == nullptr)
    throw VException("thModelInfo::depth2Layer: the cells are not initialised (initCells).");
  if (elem < 0 || elem >= mesh2d.noe)
    throw VException("thModelInfo::depth2Layer: element " + VStr::toString(elem) + " is outside 0.." +
                     VStr::toString(mesh2d.noe - 1) + ".");
  if (depth > elemBathy[elem] || depth < 0) return ebli[elem];
  if (layerType == sigma) depth /= elemBathy[elem];
  int32_t l = ebli[elem];
  while (layerDepth[l] - dz[l] * 0.5 > depth && l < nol - 1)
    l++;  // a depth on an upper edge belongs to that layer
  return l;
}

int32_t thModelInfo::depth2LayerOff(int32_t elem, double depth) const {
  return depth2Layer(elem, depth) - ebli[elem];
}

int32_t thModelInfo::lengthClass(int32_t length) const {
  if (length == 1) return 0;
  if (length == nol) return 1;
  if (length == mesh2d.noe) return 2;
  return 3;
}

// 2 and 3 are not model types of this library; files of older programs carry them.
std::string thModelInfo::resultFileExt() const { return (modelType == 2 || modelType == 3) ? "emu" : "emc"; }

int32_t thModelInfo::cellCoords(double*& x, double*& y, double*& z) const {
  if (!isInit) throw VException("thModelInfo::cellCoords: the cells are not initialised (initCells).");
  cellTables();
  if (mesh2d.noe != allocElemRows || (cells > 0 && (mesh2d.exCoor == nullptr || mesh2d.eyCoor == nullptr)))
    throw VException("thModelInfo::cellCoords: the mesh has changed since initCells; run initCells again.");
  auto xs = std::make_unique<double[]>(cells);
  auto ys = std::make_unique<double[]>(cells);
  auto zs = std::make_unique<double[]>(cells);
  for (int32_t c = 0; c < cells; c++) {
    const int32_t col = cell2elem[c];
    xs[c] = mesh2d.exCoor[col];
    ys[c] = mesh2d.eyCoor[col];
    zs[c] = layerDepth[cell2layer[c]];
    if (layerType != zlayer) zs[c] *= elemBathy[col];
  }
  x = xs.release();
  y = ys.release();
  z = zs.release();
  return 0;
}

}  // namespace thalmod
