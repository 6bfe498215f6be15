// initCells: the numbering of columns, cells, faces and U-points from the mesh and the layer stack,
// and the tables that follow from it (thickness rows, per-cell arrays). The numbering is described
// in thModelInfo.h.
//
// The set-up comes in two halves. The columns (bottom and top layer, first and last cell of each
// column, the counts of cells, ghost cells and U-points, the layer depths and the final sea bed)
// cost a few passes over the elements. The tables (edz, fdz and their buffers, fbli, fUIdx, the
// per-cell arrays) hold about 60 bytes per cell and 24 per U-point: most of the cost of a header
// read. With deferTables they are built by cellTables() on first use.
#include <algorithm>
#include <climits>
#include <memory>
#include <vector>

#include "model/thModelInfo.h"
#include "support/VStr.h"
#include "support/thBigArrays.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;

namespace {

const char* const notInitText =
    "thModelInfo::initCells: the mesh has not been initialised (initMesh must run before initCells).";
const char* const tooManyCells =
    "thModelInfo::initCells: the model has more cells than a 32-bit count can hold.";

// Checks, before any of them is read, that the mesh arrays that the cell numbering walks exist
// and point where they must; a mesh that was filled but never initialised fails here.
void checkMesh(const thMesh2D& m) {
  if (m.noe == 0) return;
  if (m.vfe == nullptr || m.evf == nullptr || m.eni == nullptr || m.eArea == nullptr || m.nivfpe == nullptr ||
      m.nbvfpe == nullptr || m.nivf < 0 || m.nivf + m.tnbe > m.nvf || (m.tnbe > 0 && m.bndElem == nullptr) ||
      (m.nBnd > 0 && (m.bndNoFaces == nullptr || m.bndFirst == nullptr)))
    throw VException(notInitText);
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
      throw VException("thModelInfo::initCells: face " + VStr::toString(f) +
                       " lacks an element on one side.");
  }
  for (int32_t e = 0; e < m.noe; e++) {
    if (m.nivfpe[e] < 0 || m.nbvfpe[e] < 0 || m.eni[e] < 0 || m.eni[e] + m.nivfpe[e] + m.nbvfpe[e] > m.nevf)
      throw VException(notInitText);
  }
}

// A table of nRows rows over one block of `total` entries; the caller points the rows into the
// block. Entries are not initialised.
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

int32_t centreLen(int32_t n) { return n > 1 ? n - 1 : 1; }

// The three tables of thickness rows of one shape (edz, edzOld, edzc or fdz, fdzOld, fdzc), laid
// out row after row in their blocks, and the layer thicknesses that fill them.
struct RowTables {
  double** z;
  double** zOld;
  double** zc;
  const double* dz;        // by layer
  const double* dzCentre;  // by layer l >= 1: distance between the centres of layers l-1 and l
  int32_t nol;
  int64_t at = 0, atC = 0;  // next free entry of the blocks of z (and zOld) and of zc

  // Row r with nAlloc entries (at least one centre distance): `bottom` in layer b, full layers
  // above it, the second buffer a copy. A row longer than its layers (a dropped bottom cell) is 0
  // beyond them. One loop over the short row: the rows are many and short.
  void place(int32_t r, int32_t nAlloc, int32_t b, double bottom) {
    const int32_t nc = centreLen(nAlloc), n = nol - b;
    double* row = z[0] + at;
    double* old = zOld[0] + at;
    double* c = zc[0] + atC;
    z[r] = row;
    zOld[r] = old;
    zc[r] = c;
    at += nAlloc;
    atC += nc;
    row[0] = bottom;
    if (n > 1) {
      row[1] = dz[b + 1];
      c[0] = row[0] * 0.5 + row[1] * 0.5;
      for (int32_t k = 2; k < n; k++) {
        row[k] = dz[b + k];
        c[k - 1] = dzCentre[b + k];
      }
    } else {
      c[0] = row[0] * 0.5;
    }
    for (int32_t k = n; k < nAlloc; k++) row[k] = 0.0;
    for (int32_t k = std::max(n - 1, 1); k < nc; k++) c[k] = 0.0;
    std::copy(row, row + nAlloc, old);
  }
};

}  // namespace

int32_t thModelInfo::initCells() {
  if (nol < 1)
    throw VException("thModelInfo::initCells: the model has no layers (nol = " + VStr::toString(nol) + ").");
  if (dz == nullptr) throw VException("thModelInfo::initCells: the layer thicknesses (dz) are missing.");
  const thMesh2D& m = mesh2d;
  if (m.noe < 0 || m.tnbe < 0 || (m.noe == 0 && m.tnbe > 0)) throw VException(notInitText);
  unshare(true);
  releaseDerived(true);
  makeLayerDepths();
  if (layerType == sigma) throw VException("Sigma layers no longer supported.");
  if (m.noe > 0 && elemBathy == nullptr)
    throw VException("thModelInfo::initCells: the bathymetry (elemBathy) is missing.");
  checkMesh(m);
  placeColumns();
  countUPoints();
  countBoundaryCells();
  if (!deferTables) buildTables();
  isInit = true;
  return 0;
}

// Steps 1 and 2: the column arrays, and the depth of each layer centre from the top down.
void thModelInfo::makeLayerDepths() {
  allocCols = mesh2d.noe + mesh2d.tnbe;
  toplayerIdx = bigarr::newArr<int32_t>(allocCols);
  botlayerIdx = bigarr::newArr<int32_t>(allocCols);
  ebli = bigarr::newArr<int32_t>(allocCols);
  etli = bigarr::newArr<int32_t>(allocCols);
  layerDepth = new double[nol];
  layerDepth[nol - 1] = dz[nol - 1] * 0.5 + topDepth;
  for (int32_t k = nol - 2; k >= 0; k--) layerDepth[k] = dz[k + 1] * 0.5 + layerDepth[k + 1] + dz[k] * 0.5;
}

// Steps 4, 5 and 7, and the sea bed of step 6: bottom layer of each element from its layer count
// or else from its depth, its cell numbers, then the sea bed moved to the thinnest permitted bottom
// cell (or the cell dropped, minBotFrac < 0); then the ghost columns.
void thModelInfo::placeColumns() {
  const int32_t noe = mesh2d.noe;
  const bool enolGiven = enol != nullptr;
  if (!enolGiven) enol = bigarr::newArr<int32_t>(noe);
  int64_t running = 0;  // cells so far, to refuse a model whose count leaves 32 bits
  for (int32_t e = 0; e < noe; e++) {
    etli[e] = nol - 1;
    if (enolGiven && enol[e] > 0) {
      if (enol[e] > nol)
        throw VException("thModelInfo::initCells: element " + VStr::toString(e) + " has " +
                         VStr::toString(enol[e]) + " layers, more than the " + VStr::toString(nol) +
                         " layers of the model.");
      ebli[e] = nol - enol[e];
    } else {
      int32_t k = 0;
      // strict: a layer whose upper edge lies on the sea bed is not used
      while (k < nol && !(elemBathy[e] > layerDepth[k] - dz[k] * 0.5)) k++;
      ebli[e] = k < nol ? k : nol - 1;
      enol[e] = nol - ebli[e];
    }
    running += nol - ebli[e];
    if (running > INT32_MAX) throw VException(tooManyCells);
    botlayerIdx[e] = e == 0 ? 0 : toplayerIdx[e - 1] + 1;
    toplayerIdx[e] = nol - 1 + botlayerIdx[e] - ebli[e];
    settleBottom(e);
  }
  cells = static_cast<int32_t>(running);
  for (int32_t j = 0; j < mesh2d.tnbe; j++) {
    const int32_t i = noe + j;
    ebli[i] = ebli[mesh2d.bndElem[j]];
    etli[i] = nol - 1;
    botlayerIdx[i] = i == 0 ? 0 : toplayerIdx[i - 1] + 1;
    toplayerIdx[i] = nol - 1 + botlayerIdx[i] - ebli[i];
  }
}

// The sea bed of element e against the thinnest permitted bottom cell. A dropped cell keeps the
// counts and numbers already given (the column keeps a cell that no layer addresses).
void thModelInfo::settleBottom(int32_t e) {
  const int32_t b = ebli[e];
  const double upperEdge = layerDepth[b] - dz[b] * 0.5;
  const double bottom = elemBathy[e] - upperEdge;
  if (minBotFrac < 0 && b < nol - 1 && -minBotFrac * dz[b] > bottom) {
    ebli[e] = b + 1;
    elemBathy[e] = dz[b + 1] * 0.5 + layerDepth[b + 1];
  } else if (minBotFrac * dz[b] > bottom) {
    elemBathy[e] = upperEdge + minBotFrac * dz[b];
  }
}

// Thickness of the bottom cell of element e, as settleBottom left it.
double thModelInfo::bottomThickness(int32_t e) const {
  const int32_t b = ebli[e];
  if (toplayerIdx[e] - botlayerIdx[e] != nol - 1 - b) return dz[b];  // the cell below was dropped
  return elemBathy[e] - (layerDepth[b] - dz[b] * 0.5);
}

// Step 8 and the counts of step 9: U-points of the inner and the open boundary faces.
void thModelInfo::countUPoints() {
  const thMesh2D& m = mesh2d;
  totNoUvf = m.nivf + (bndFacesOn ? m.tnbe : 0);
  int64_t inner = 0, bnd = 0;
  for (int32_t f = 0; f < totNoUvf; f++) {
    const int32_t n = nol - faceBottom(f);
    (f < m.nivf ? inner : bnd) += n;
    if (inner + bnd > INT32_MAX)
      throw VException("thModelInfo::initCells: the model has more U-points than a 32-bit count can hold.");
  }
  noUInner = static_cast<int32_t>(inner);
  noUBnd = static_cast<int32_t>(bnd);
  totNoUPnts = noUInner + noUBnd;
}

// An inner face reaches down to the shallower of its sides, an open boundary face to its element's.
int32_t thModelInfo::faceBottom(int32_t f) const {
  const int32_t* vfe = mesh2d.vfe;
  return f < mesh2d.nivf ? std::max(ebli[vfe[2 * f]], ebli[vfe[2 * f + 1]]) : ebli[vfe[2 * f]];
}

// Step 10: ghost cells per open boundary.
void thModelInfo::countBoundaryCells() {
  const thMesh2D& m = mesh2d;
  bndNoCells = new int32_t[std::max(m.nBnd, 0)]();
  int64_t all = cells;
  for (int32_t b = 0; b < m.nBnd; b++) {
    for (int32_t i = 0; i < m.bndNoFaces[b]; i++) {
      const int32_t n = nol - ebli[m.bndElem[m.bndFirst[b] + i]];
      all += n;
      if (all > INT32_MAX) throw VException(tooManyCells);
      bndNoCells[b] += n;
    }
  }
  totNoBndCells = static_cast<int32_t>(all - cells);
}

void thModelInfo::cellTables() const {
  if (!isInit || cell2elem != nullptr) return;
  // The tables are a cache of what the columns already fix: building them changes nothing that
  // the object describes, so a reader holding a const model may have them built.
  // Arrays that a member-wise copy adds here are its own (VArrayShare), never its source's.
  const_cast<thModelInfo&>(*this).buildTables();
}

// Steps 6 (rows), 9 (rows), 11 to 14: the tables that the columns fix.
void thModelInfo::buildTables() {
  std::vector<double> dzCentre(nol, 0.0);
  for (int32_t l = 1; l < nol; l++) dzCentre[l] = dz[l - 1] * 0.5 + dz[l] * 0.5;
  buildElemRows(dzCentre.data());
  buildFaceRows(dzCentre.data());
  buildCellArrays();
}

void thModelInfo::buildElemRows(const double* dzCentre) {
  const int32_t noe = mesh2d.noe;
  int64_t centres = 0, faceEntries = 0;
  for (int32_t e = 0; e < noe; e++) {
    centres += centreLen(toplayerIdx[e] - botlayerIdx[e] + 1);
    faceEntries += mesh2d.nivfpe[e] + mesh2d.nbvfpe[e];
  }
  allocElemRows = noe;
  edz = newRows<double>(noe, cells);
  edzOld = newRows<double>(noe, cells);
  edzc = newRows<double>(noe, centres);
  evfbli = newRows<int32_t>(noe, faceEntries);
  RowTables t{edz, edzOld, edzc, dz, dzCentre, nol};
  for (int32_t e = 0; e < noe; e++)
    t.place(e, toplayerIdx[e] - botlayerIdx[e] + 1, ebli[e], bottomThickness(e));
}

// The face rows start at the bottom layer of the face: on an inner face where both sides have it
// as their bottom layer the thinner bottom cell, else the partial bottom cell of the side whose
// bottom layer it is (the other side's cell there is not looked at).
void thModelInfo::buildFaceRows(const double* dzCentre) {
  const int32_t nivf = mesh2d.nivf;
  const int32_t* vfe = mesh2d.vfe;
  fbli = bigarr::newArr<int32_t>(totNoUvf);
  ftli = bigarr::newArr<int32_t>(totNoUvf);
  fUIdx = bigarr::newArr<int32_t>(totNoUvf);
  fLayerOff = bigarr::newArr<int32_t>(2 * static_cast<int64_t>(totNoUvf));
  int64_t centres = 0;
  int32_t u = 0;
  for (int32_t f = 0; f < totNoUvf; f++) {
    const int32_t e0 = vfe[2 * f], e1 = vfe[2 * f + 1];
    fbli[f] = faceBottom(f);
    ftli[f] = nol - 1;
    fUIdx[f] = u;
    u += nol - fbli[f];
    fLayerOff[2 * f] = f < nivf ? fbli[f] - ebli[e0] : 0;
    fLayerOff[2 * f + 1] = f < nivf ? fbli[f] - ebli[e1] : 0;
    centres += centreLen(nol - fbli[f]);
  }
  allocFaceRows = totNoUvf;
  fdz = newRows<double>(totNoUvf, totNoUPnts);
  fdzOld = newRows<double>(totNoUvf, totNoUPnts);
  fdzc = newRows<double>(totNoUvf, centres);
  RowTables t{fdz, fdzOld, fdzc, dz, dzCentre, nol};
  for (int32_t f = 0; f < totNoUvf; f++) {
    const int32_t e0 = vfe[2 * f], e1 = vfe[2 * f + 1];
    double bottom = edz[e0][0];
    if (f < nivf && ebli[e0] == ebli[e1])
      bottom = std::min(edz[e0][0], edz[e1][0]);
    else if (f < nivf && ebli[e1] > ebli[e0])
      bottom = edz[e1][0];
    t.place(f, nol - fbli[f], fbli[f], bottom);
  }
}

// Steps 11 to 14. The columns fill every cell unless a bottom cell was dropped or the boundaries
// count other ghost cells than the ghost columns hold; the cells that no column reaches are then 0.
void thModelInfo::buildCellArrays() {
  const thMesh2D& m = mesh2d;
  const int32_t noe = m.noe, allCells = cells + totNoBndCells;
  bool everyCell = true;
  int64_t ghostCells = 0;
  for (int32_t e = 0; e < noe; e++) everyCell &= toplayerIdx[e] - botlayerIdx[e] == nol - 1 - ebli[e];
  for (int32_t i = noe; i < allocCols; i++) ghostCells += nol - ebli[i];
  everyCell &= ghostCells == totNoBndCells;
  cell2elem = newCells<int32_t>(allCells, !everyCell);
  cell2layer = newCells<int32_t>(allCells, !everyCell);
  cellVol = newCells<double>(cells, !everyCell);
  cellDepth = newCells<double>(cells, !everyCell);
  cellTop = newCells<int32_t>(allCells, !everyCell);
  int64_t atF = 0;  // next free entry of evfbli's block
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
    }
    int32_t* row = evfbli[0] + atF;
    evfbli[e] = row;
    atF += m.nivfpe[e] + m.nbvfpe[e];
    const int32_t* faces = m.evf + m.eni[e];
    for (int32_t j = 0; j < m.nivfpe[e] + m.nbvfpe[e]; j++) {
      // Without boundary faces in the face list, an open face still reaches down to its element's bottom.
      row[j] = (faces[j] >= 0 && faces[j] < totNoUvf) ? fbli[faces[j]] : b;
    }
  }
  fillCellDepths(cellDepth);
  placeGhostCells(allCells);
  cellGroup = bigarr::newZeroArr<int32_t>(allCells);
  cellSeq = bigarr::newArr<int32_t>(allCells);
  for (int32_t c = 0; c < allCells; c++) cellSeq[c] = c;
}

void thModelInfo::fillCellDepths(double* depth) const {
  for (int32_t e = 0; e < mesh2d.noe; e++) {
    const int32_t b = ebli[e], c0 = botlayerIdx[e];
    for (int32_t k = 1; k < nol - b; k++) depth[c0 + k] = layerDepth[b + k];
    depth[c0] = layerDepth[b] - dz[b] * 0.5 + bottomThickness(e) * 0.5;  // the partial bottom cell's centre
  }
}

// Step 12, and the ghost cells' entries of step 13.
void thModelInfo::placeGhostCells(int32_t allCells) {
  for (int32_t i = mesh2d.noe; i < allocCols; i++) {
    const int32_t top = etli[i] - ebli[i] + botlayerIdx[i];
    for (int32_t k = 0; k < nol - ebli[i]; k++) {
      const int32_t c = botlayerIdx[i] + k;
      if (c >= allCells) throw VException("Bugger! bnd cell2elem error 42. " + thGlobal::errTail);
      cell2elem[c] = i;
      cell2layer[c] = ebli[i] + k;
      cellTop[c] = top;
    }
  }
}

void thModelInfo::updateCellTop() {
  cellTables();
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

}  // namespace thalmod
