// The model description object: its enumerations, its arrays and their ownership, and initCells,
// which turns the mesh and the layer stack into the numbering of columns, cells, faces and
// U-points. The numbering is described in thModelInfo.h.
#include "model/thModelInfo.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <utility>
#include <vector>

#include "mesh/thBigArrays.h"
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
template <typename T>
void releaseArr(T*& a, bool free) {
  if (free) delete[] a;
  a = nullptr;
}

// A table of rows (edz, fdz, evfbli, ...) keeps all its rows in one block, and rows[0] is the
// start of that block: the block goes with the table whichever table pointer holds it, so two
// tables of one shape may swap places. Rows are never freed one by one.
template <typename T>
void releaseRows(T**& rows, int32_t n, bool free) {
  if (free && rows != nullptr) {
    if (n > 0) delete[] rows[0];
    delete[] rows;
  }
  rows = nullptr;
}

// A table of nRows rows over one block of `total` entries; the caller points the rows after the
// first into the block. Entries are not initialised.
template <typename T>
T** newRows(int32_t nRows, int64_t total) {
  std::unique_ptr<T*[]> rows(bigarr::newArr<T*>(nRows));
  if (nRows > 0) rows[0] = bigarr::newArr<T>(total);
  return rows.release();
}

// An array of n entries, set to 0 only when the caller will not set every one of them.
template <typename T>
T* newCells(int64_t n, bool zero) {
  return zero ? bigarr::newZeroArr<T>(n) : bigarr::newArr<T>(n);
}

// The entries of a thickness row above its bottom cell: row[k] = dz[k] and centres[k-1] the
// distance between the centres of entries k-1 and k, for k in 1..n-1 (n > 1), from the layer
// thicknesses dz and the centre distances dzCentre of the layers from the row's bottom layer up.
// One loop over the short row: the rows are many and a call per row would cost more than the row.
inline void fillRowAbove(double* row, double* centres, const double* dz, const double* dzCentre, int32_t n) {
  row[1] = dz[1];
  centres[0] = row[0] * 0.5 + row[1] * 0.5;
  for (int32_t k = 2; k < n; k++) {
    row[k] = dz[k];
    centres[k - 1] = dzCentre[k];
  }
}

template <typename T>
T* copyArr(const T* a, int32_t n) {
  if (a == nullptr) return nullptr;
  T* c = new T[std::max(n, 0)];
  std::copy(a, a + std::max(n, 0), c);
  return c;
}

}  // namespace

thModelInfo::thModelInfo() : shareCount(new int32_t(1)) {}

thModelInfo::~thModelInfo() {
  releaseShare();
  letGoOfSharedMesh();
}

// A member-wise copy shares the mesh's arrays as well, and a mesh frees them with whichever shallow
// copy goes first. So that the models still holding them stay usable, a model that goes lets go of
// a mesh that another copy still holds; the last holder frees it.
void thModelInfo::letGoOfSharedMesh() {
  if (mesh2d.ownsArrays.use_count() > 1 || mesh2d.initFlag.use_count() > 1) {
    mesh2d.initFlag = std::make_shared<uint8_t>(0);
    mesh2d.ownsArrays = std::make_shared<uint8_t>(0);
  }
}

thModelInfo::thModelInfo(const thModelInfo& other) {
  copyFields(other);
  shareCount = other.shareCount;
  ++*shareCount;
}

thModelInfo& thModelInfo::operator=(const thModelInfo& other) {
  if (this == &other) return *this;
  if (shareCount != other.shareCount) {
    releaseShare();
    shareCount = other.shareCount;
    ++*shareCount;
  }
  if (mesh2d.ownsArrays != other.mesh2d.ownsArrays) {
    // The mesh's own assignment overwrites without freeing: free a mesh that nobody else holds.
    if (mesh2d.ownsArrays.use_count() == 1 && mesh2d.initFlag.use_count() == 1)
      mesh2d.freeArrays();
    else
      letGoOfSharedMesh();
  }
  copyFields(other);
  return *this;
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
  releaseArr(cellVol, free);
  releaseArr(toplayerIdx, free);
  releaseArr(botlayerIdx, free);
  releaseArr(cell2elem, free);
  releaseArr(cell2layer, free);
  releaseArr(cellGroup, free);
  releaseArr(cellSeq, free);
  releaseArr(cellTop, free);
  releaseArr(bndNoCells, free);
  releaseArr(cellDepth, free);
  releaseArr(hacNo, free);
  releaseArr(hacCell, free);
  releaseArr(hacIdx, free);
  releaseArr(hacWeight, free);
  releaseArr(ebli, free);
  releaseArr(etli, free);
  releaseArr(etliOld, free);
  releaseArr(fbli, free);
  releaseArr(ftli, free);
  releaseRows(fdz, allocFaceRows, free);
  releaseRows(fdzOld, allocFaceRows, free);
  releaseRows(fdzc, allocFaceRows, free);
  releaseRows(edz, allocElemRows, free);
  releaseRows(edzOld, allocElemRows, free);
  releaseRows(edzc, allocElemRows, free);
  releaseArr(edzInit, free);
  releaseArr(fUIdx, free);
  releaseArr(fLayerOff, free);
  releaseRows(evfbli, allocElemRows, free);
  releaseArr(layerDepth, free);
  allocElemRows = 0;
  allocFaceRows = 0;
  allocCols = 0;
  isInit = false;
  wetDryOn = false;
}

void thModelInfo::releaseInputs(bool free) {
  releaseArr(elemBathy, free);
  releaseArr(enol, free);
  releaseArr(dz, free);
}

void thModelInfo::unshare(bool keepInputs) {
  if (*shareCount <= 1) return;
  if (keepInputs) {
    elemBathy = copyArr(elemBathy, mesh2d.noe);
    enol = copyArr(enol, mesh2d.noe);
    dz = copyArr(dz, nol);
  } else {
    releaseInputs(false);
  }
  releaseDerived(false);
  --*shareCount;
  shareCount = new int32_t(1);
}

void thModelInfo::releaseShare() {
  if (shareCount == nullptr) return;
  if (--*shareCount == 0) {
    releaseDerived(true);
    releaseInputs(true);
    delete shareCount;
  }
  shareCount = nullptr;
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

// ---------------------------------------------------------------- initCells

namespace {

// Checks, before any of them is read, that the mesh arrays that the cell numbering walks exist
// and point where they must; a mesh that was filled but never initialised fails here.
void checkMesh(const thMesh2D& m) {
  const std::string notInit =
      "thModelInfo::initCells: the mesh has not been initialised (initMesh must run before initCells).";
  if (m.noe == 0) return;
  if (m.vfe == nullptr || m.evf == nullptr || m.eni == nullptr || m.eArea == nullptr ||
      m.nivfpe == nullptr || m.nbvfpe == nullptr || m.nivf < 0 || m.nivf + m.tnbe > m.nvf ||
      (m.tnbe > 0 && m.bndElem == nullptr) ||
      (m.nBnd > 0 && (m.bndNoFaces == nullptr || m.bndFirst == nullptr)))
    throw VException(notInit);
  for (int32_t j = 0; j < m.tnbe; j++) {
    if (m.bndElem[j] < 0 || m.bndElem[j] >= m.noe)
      throw VException("thModelInfo::initCells: open boundary face " + VStr::toString(m.nivf + j) +
                       " has no element in the mesh.");
  }
  for (int32_t b = 0; b < m.nBnd; b++) {
    if (m.bndFirst[b] < 0 || m.bndNoFaces[b] < 0 || m.bndFirst[b] + m.bndNoFaces[b] > m.tnbe)
      throw VException("thModelInfo::initCells: open boundary " + VStr::toString(b) +
                       " lists faces outside the mesh's open boundary faces.");
  }
  for (int32_t f = 0; f < m.nivf + m.tnbe; f++) {
    int32_t e0 = m.vfe[2 * f], e1 = m.vfe[2 * f + 1];
    if (e0 < 0 || e0 >= m.noe || (f < m.nivf && (e1 < 0 || e1 >= m.noe)))
      throw VException("thModelInfo::initCells: face " + VStr::toString(f) + " lacks an element on one side.");
  }
  for (int32_t e = 0; e < m.noe; e++) {
    if (m.nivfpe[e] < 0 || m.nbvfpe[e] < 0 || m.eni[e] < 0 || m.eni[e] + m.nivfpe[e] + m.nbvfpe[e] > m.nevf)
      throw VException(notInit);
  }
}

}  // namespace

int32_t thModelInfo::initCells() {
  if (nol < 1)
    throw VException("thModelInfo::initCells: the model has no layers (nol = " + VStr::toString(nol) + ").");
  if (dz == nullptr) throw VException("thModelInfo::initCells: the layer thicknesses (dz) are missing.");
  const thMesh2D& m = mesh2d;
  const int32_t noe = m.noe, tnbe = m.tnbe, nivf = m.nivf;
  if (noe < 0 || tnbe < 0 || (noe == 0 && tnbe > 0))
    throw VException("thModelInfo::initCells: the mesh has not been initialised (initMesh must run before initCells).");
  unshare(true);
  releaseDerived(true);
  const int32_t nCols = noe + tnbe;
  allocCols = nCols;

  // 1, 2: columns and the depth of each layer centre, from the top down.
  toplayerIdx = bigarr::newZeroArr<int32_t>(nCols);
  botlayerIdx = bigarr::newZeroArr<int32_t>(nCols);
  ebli = bigarr::newZeroArr<int32_t>(nCols);
  etli = bigarr::newZeroArr<int32_t>(nCols);
  layerDepth = new double[nol]();
  layerDepth[nol - 1] = dz[nol - 1] * 0.5 + topDepth;
  for (int32_t k = nol - 2; k >= 0; k--) layerDepth[k] = dz[k + 1] * 0.5 + layerDepth[k + 1] + dz[k] * 0.5;

  // 3
  if (layerType == sigma) throw VException("Sigma layers no longer supported.");

  if (noe > 0 && elemBathy == nullptr)
    throw VException("thModelInfo::initCells: the bathymetry (elemBathy) is missing.");
  checkMesh(m);

  // 4, 5: bottom layer of each element, from its layer count or else from its depth.
  const bool enolGiven = enol != nullptr;
  if (!enolGiven) enol = bigarr::newZeroArr<int32_t>(noe);
  int64_t running = 0;      // cells so far, to refuse a model whose count leaves 32 bits
  int64_t centreRows = 0;   // entries of edzc: max(n-1, 1) per element
  int64_t faceEntries = 0;  // entries of evfbli
  for (int32_t e = 0; e < noe; e++) {
    etli[e] = nol - 1;
    if (enolGiven && enol[e] > 0) {
      if (enol[e] > nol)
        throw VException("thModelInfo::initCells: element " + VStr::toString(e) + " has " + VStr::toString(enol[e]) +
                         " layers, more than the " + VStr::toString(nol) + " layers of the model.");
      ebli[e] = nol - enol[e];
    } else {
      int32_t k = 0;
      while (k < nol && !(elemBathy[e] > layerDepth[k] - dz[k] * 0.5)) k++;  // strict: an edge on the bed is not used
      ebli[e] = k < nol ? k : nol - 1;
      enol[e] = nol - ebli[e];
    }
    const int32_t n = nol - ebli[e];
    running += n;
    if (running > INT32_MAX)
      throw VException("thModelInfo::initCells: the model has more cells than a 32-bit count can hold.");
    centreRows += n > 1 ? n - 1 : 1;
    faceEntries += m.nivfpe[e] + m.nbvfpe[e];
    botlayerIdx[e] = e == 0 ? 0 : toplayerIdx[e - 1] + 1;
    toplayerIdx[e] = nol - 1 + botlayerIdx[e] - ebli[e];
  }

  // Centre-to-centre distance of layers l-1 and l, for the rows above a bottom cell; worked out
  // as the rows do, so that the copies are the very same numbers.
  std::vector<double> dzCentre(nol, 0.0);
  for (int32_t l = 1; l < nol; l++) dzCentre[l] = dz[l - 1] * 0.5 + dz[l] * 0.5;

  // 6: thickness rows of the elements; the bottom cell is partial.
  allocElemRows = noe;
  edz = newRows<double>(noe, running);
  edzOld = newRows<double>(noe, running);
  edzc = newRows<double>(noe, centreRows);
  evfbli = newRows<int32_t>(noe, faceEntries);
  cells = 0;
  bool dropped = false;  // a bottom cell was dropped: some cell numbers are then not addressed
  int64_t at = 0, atC = 0;
  for (int32_t e = 0; e < noe; e++) {
    const int32_t n = nol - ebli[e];
    const int32_t nc = n > 1 ? n - 1 : 1;
    double* ez = edz[0] + at;
    double* ezc = edzc[0] + atC;
    edz[e] = ez;
    edzOld[e] = edzOld[0] + at;
    edzc[e] = ezc;
    at += n;
    atC += nc;
    cells += n;
    const int32_t b = ebli[e];
    const double upperEdge = layerDepth[b] - dz[b] * 0.5;
    ez[0] = elemBathy[e] - upperEdge;
    if (minBotFrac < 0 && b < nol - 1 && -minBotFrac * dz[b] > ez[0]) {
      // The thin bottom cell is dropped; the counts and row lengths stay as allocated above, and
      // the entries that the shorter column leaves are 0.
      dropped = true;
      std::fill(ez, ez + n, 0.0);
      std::fill(ezc, ezc + nc, 0.0);
      const int32_t b1 = b + 1;
      ebli[e] = b1;
      elemBathy[e] = dz[b1] * 0.5 + layerDepth[b1];
      ez[0] = dz[b1];
    } else if (minBotFrac * dz[b] > ez[0]) {
      elemBathy[e] = layerDepth[b] - dz[b] * 0.5 + minBotFrac * dz[b];
      ez[0] = elemBathy[e] - upperEdge;
    }
    const int32_t b2 = ebli[e], n2 = nol - b2;
    if (n2 > 1) {
      fillRowAbove(ez, ezc, dz + b2, dzCentre.data() + b2, n2);
    } else {
      ezc[0] = ez[0] * 0.5;
    }
  }
  // The second buffer starts as a copy; its rows lie in its block as those of edz in theirs.
  if (noe > 0) std::copy(edz[0], edz[0] + running, edzOld[0]);

  // 7: ghost columns outside the open boundary faces.
  int64_t ghostCells = 0;  // cells of the ghost columns, against the cells of the boundaries below
  for (int32_t j = 0; j < tnbe; j++) {
    const int32_t i = noe + j;
    ebli[i] = ebli[m.bndElem[j]];
    etli[i] = nol - 1;
    botlayerIdx[i] = i == 0 ? 0 : toplayerIdx[i - 1] + 1;
    toplayerIdx[i] = nol - 1 + botlayerIdx[i] - ebli[i];
    ghostCells += nol - ebli[i];
  }

  // 8, 9: faces and their U-points; first the layers and numbers, then the thickness rows.
  totNoUvf = nivf + (bndFacesOn ? tnbe : 0);
  fbli = bigarr::newArr<int32_t>(totNoUvf);
  ftli = bigarr::newArr<int32_t>(totNoUvf);
  fUIdx = bigarr::newArr<int32_t>(totNoUvf);
  fLayerOff = bigarr::newArr<int32_t>(2 * static_cast<int64_t>(totNoUvf));
  int64_t uInner = 0, uBnd = 0;  // U-points so far, checked against the 32-bit count
  int64_t faceCentreRows = 0;
  for (int32_t f = 0; f < totNoUvf; f++) {
    const int32_t e0 = m.vfe[2 * f], e1 = m.vfe[2 * f + 1];
    ftli[f] = nol - 1;
    if (uInner + uBnd + nol > INT32_MAX)
      throw VException("thModelInfo::initCells: the model has more U-points than a 32-bit count can hold.");
    fUIdx[f] = static_cast<int32_t>(uInner + uBnd);
    if (f < nivf) {
      fbli[f] = std::max(ebli[e0], ebli[e1]);
      uInner += nol - fbli[f];
      fLayerOff[2 * f] = fbli[f] - ebli[e0];
      fLayerOff[2 * f + 1] = fbli[f] - ebli[e1];
    } else {
      fbli[f] = ebli[e0];
      uBnd += nol - fbli[f];
      fLayerOff[2 * f] = 0;
      fLayerOff[2 * f + 1] = 0;
    }
    faceCentreRows += fbli[f] < nol - 1 ? nol - fbli[f] - 1 : 1;
  }
  allocFaceRows = totNoUvf;
  fdz = newRows<double>(totNoUvf, uInner + uBnd);
  fdzOld = newRows<double>(totNoUvf, uInner + uBnd);
  fdzc = newRows<double>(totNoUvf, faceCentreRows);
  at = 0;
  atC = 0;
  for (int32_t f = 0; f < totNoUvf; f++) {
    const int32_t e0 = m.vfe[2 * f], e1 = m.vfe[2 * f + 1];
    double bottom;
    if (f < nivf) {
      // The side with the higher bottom layer has its partial cell in the face's bottom layer.
      if (ebli[e0] == ebli[e1])
        bottom = std::min(edz[e0][0], edz[e1][0]);
      else
        bottom = ebli[e0] > ebli[e1] ? edz[e0][0] : edz[e1][0];
    } else {
      bottom = edz[e0][0];
    }
    const int32_t b = fbli[f], n = nol - b;
    double* fz = fdz[0] + at;
    double* fc = fdzc[0] + atC;
    fdz[f] = fz;
    fdzOld[f] = fdzOld[0] + at;
    fdzc[f] = fc;
    at += n;
    atC += n > 1 ? n - 1 : 1;
    fz[0] = bottom;
    if (n > 1) {
      fillRowAbove(fz, fc, dz + b, dzCentre.data() + b, n);
    } else {
      fc[0] = fz[0] * 0.5;
    }
  }

  if (totNoUvf > 0) std::copy(fdz[0], fdz[0] + uInner + uBnd, fdzOld[0]);

  noUInner = static_cast<int32_t>(uInner);
  noUBnd = static_cast<int32_t>(uBnd);

  // 10: ghost cells per open boundary.
  bndNoCells = new int32_t[std::max(m.nBnd, 0)]();
  int64_t allCells64 = cells;
  for (int32_t b = 0; b < m.nBnd; b++) {
    for (int32_t i = 0; i < m.bndNoFaces[b]; i++) {
      const int32_t n = nol - ebli[m.bndElem[m.bndFirst[b] + i]];
      allCells64 += n;
      if (allCells64 > INT32_MAX)
        throw VException("thModelInfo::initCells: the model has more cells than a 32-bit count can hold.");
      bndNoCells[b] += n;
    }
  }
  totNoBndCells = static_cast<int32_t>(allCells64 - cells);
  totNoUPnts = noUInner + noUBnd;

  // 11: per-cell arrays of the computational cells, the top cell of each (13), and the bottom
  // layer of each element face. The columns fill every cell unless a bottom cell was dropped or
  // the boundaries count other ghost cells than the ghost columns hold; then the cells that no
  // column reaches are 0.
  const int32_t allCells = cells + totNoBndCells;
  const bool everyCell = !dropped && ghostCells == totNoBndCells;
  cell2elem = newCells<int32_t>(allCells, !everyCell);
  cell2layer = newCells<int32_t>(allCells, !everyCell);
  cellVol = newCells<double>(cells, !everyCell);
  cellDepth = newCells<double>(cells, !everyCell);
  cellTop = newCells<int32_t>(allCells, !everyCell);
  int64_t atF = 0;
  for (int32_t e = 0; e < noe; e++) {
    const int32_t b = ebli[e], n = nol - b, c0 = botlayerIdx[e];
    const int32_t top = etli[e] - b + c0;
    const double area = m.eArea[e];
    const double* ez = edz[e];
    for (int32_t k = 0; k < n; k++) {
      const int32_t c = c0 + k;
      cellVol[c] = ez[k] * area;
      cell2elem[c] = e;
      cell2layer[c] = b + k;
      cellTop[c] = top;
      cellDepth[c] = layerDepth[b + k];
    }
    cellDepth[c0] = layerDepth[b] - dz[b] * 0.5 + ez[0] * 0.5;  // the centre of the partial bottom cell
    const int32_t nf = m.nivfpe[e] + m.nbvfpe[e];
    int32_t* row = evfbli[0] + atF;
    evfbli[e] = row;
    atF += nf;
    const int32_t* faces = m.evf + m.eni[e];
    for (int32_t j = 0; j < nf; j++) {
      const int32_t f = faces[j];
      // Without boundary faces in the face list, an open face still reaches down to its element's bottom.
      row[j] = (f >= 0 && f < totNoUvf) ? fbli[f] : b;
    }
  }

  // 12: ghost cells.
  for (int32_t j = 0; j < tnbe; j++) {
    const int32_t i = noe + j;
    const int32_t top = etli[i] - ebli[i] + botlayerIdx[i];
    for (int32_t k = 0; k < nol - ebli[i]; k++) {
      const int32_t c = botlayerIdx[i] + k;
      if (c >= allCells) throw VException("Bugger! bnd cell2elem error 42. " + thGlobal::errTail);
      cell2elem[c] = i;
      cell2layer[c] = ebli[i] + k;
      cellTop[c] = top;
    }
  }

  // 14
  cellGroup = bigarr::newZeroArr<int32_t>(allCells);
  cellSeq = bigarr::newArr<int32_t>(allCells);
  for (int32_t c = 0; c < allCells; c++) cellSeq[c] = c;

  // 15
  isInit = true;
  return 0;
}

void thModelInfo::updateCellTop() {
  if (!isInit || cellTop == nullptr)
    throw VException("thModelInfo::updateCellTop: the cells are not initialised (initCells).");
  fillCellTop();
}

// Over the columns as initCells numbered them, even if the mesh has been edited since.
void thModelInfo::fillCellTop() {
  for (int32_t i = 0; i < allocCols; i++) {
    const int32_t top = etli[i] - ebli[i] + botlayerIdx[i];
    for (int32_t k = 0; k < nol - ebli[i]; k++) cellTop[botlayerIdx[i] + k] = top;
  }
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
    delete[] dz;
    dz = new double[nolNew];
    const float thickness = 1.0f / static_cast<float>(nolNew);  // float on purpose: stored stacks carry it
    for (int32_t k = 0; k < nolNew; k++) dz[k] = thickness;
  }
  // A flat bottom decides the layer counts from the depth alone.
  delete[] enol;
  enol = nullptr;
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
  while (layerDepth[l] - dz[l] * 0.5 > depth && l < nol - 1) l++;  // a depth on an upper edge belongs to that layer
  return l;
}

int32_t thModelInfo::depth2LayerOff(int32_t elem, double depth) const { return depth2Layer(elem, depth) - ebli[elem]; }

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
