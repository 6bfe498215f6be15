// The neighbourhood of the cell numbering: an open boundary as a model of its own, the cells that
// touch a cell horizontally in a terrain-following grid (popHAC), and 3-D distances between cells.
#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "model/thModelInfo.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;  // qualified: in the members toString is the report

namespace {

// roundDec with the scale 10^decimals given. The direction follows the fraction of x itself, not
// the last digit kept.
inline double roundScaled(double x, double s) {
  return x - std::floor(x) >= 0.5 ? std::ceil(s * x) / s : std::floor(s * x) / s;
}

}  // namespace

double thModelInfo::roundDec(double x, double decimals) { return roundScaled(x, std::pow(10.0, decimals)); }

thModelInfo* thModelInfo::bndModel(int32_t boundary, bool oneLayer) {
  const thMesh2D& m = mesh2d;
  if (boundary < 0 || boundary >= m.nBnd || m.bndNoFaces == nullptr || m.bndFirst == nullptr)
    throw VException("thModelInfo::bndModel: there is no open boundary of index " + VStr::toString(boundary) +
                     " (the model has " + VStr::toString(m.nBnd) + ").");
  if (elemBathy == nullptr || dz == nullptr)
    throw VException(
        "thModelInfo::bndModel: the model has no bathymetry or layers to take the boundary's from.");
  // The one layer of a one-layer boundary model takes the thickness of layer 1, not layer 0.
  if (oneLayer && nol < 2)
    throw VException(
        "thModelInfo::bndModel: a one-layer boundary model takes the thickness of layer 1, and the "
        "model has " +
        VStr::toString(nol) + " layer(s).");
  const int32_t n = m.bndNoFaces[boundary], first = m.bndFirst[boundary];
  auto b = std::make_unique<thModelInfo>();
  b->layerType = layerType;
  {
    std::unique_ptr<thMesh2D> strip(m.boundaryStripMesh(boundary));
    if (strip->noe != n)
      throw VException("thModelInfo::bndModel: the strip mesh of boundary " + VStr::toString(boundary) +
                       " has " + VStr::toString(strip->noe) + " elements for " + VStr::toString(n) +
                       " faces.");
    std::swap(b->mesh2d, *strip);  // the strip's arrays go to the new model
  }
  b->nol = oneLayer ? 1 : nol;
  b->dz = new double[b->nol];
  if (oneLayer)
    b->dz[0] = dz[1];
  else
    std::copy(dz, dz + nol, b->dz);
  b->elemBathy = new double[n];
  if (enol != nullptr) b->enol = new int32_t[n];
  for (int32_t i = 0; i < n; i++) {
    const int32_t e = m.bndElem[first + i];
    b->elemBathy[i] = oneLayer ? 1.0 : elemBathy[e];
    if (enol != nullptr) b->enol[i] = oneLayer ? 0 : enol[e];  // 0: worked out from the depth
  }
  b->dt = dt;
  b->startDT = startDT;
  b->nt = nt;
  b->topDepth = topDepth;
  b->initCells();
  return b.release();
}

namespace {

// Upper and lower edge of each layer of one element in a sigma grid, on the fixed grid of 0.0001
// on which the edges of neighbouring columns are compared.
void sigmaEdges(const thModelInfo& m, int32_t e, double* lo, double* hi) {
  for (int32_t l = 0; l < m.nol; l++) {
    lo[l] = roundScaled((m.layerDepth[l] - m.dz[l] * 0.5) * m.elemBathy[e], 1e4);  // roundDec(..., 4)
    hi[l] = roundScaled((m.layerDepth[l] + m.dz[l] * 0.5) * m.elemBathy[e], 1e4);
  }
}

bool nonIncreasing(const double* v, int32_t n) {
  for (int32_t i = 1; i < n; i++)
    if (!(v[i] <= v[i - 1])) return false;  // NaN as well
  return true;
}

// Working space of forEachOverlap: the edges of an element (entry 0) and of its neighbours
// (entry j+1), and per neighbour the window of its layers that the current layer overlaps.
struct OverlapWork {
  std::vector<double> lo, hi;
  std::vector<int32_t> from, past;
  std::vector<char> window;
};

// Calls visit(cell, adjacent cell, shared height, the adjacent cell's height, face) for every
// overlap of a cell of element e with a cell of a neighbour: cell after cell, and for each cell
// neighbour after neighbour and layer after layer. Edges that only touch are no overlap.
// Where both columns' edges fall with the layer number (the usual case), the overlapping layers
// of a neighbour are a window that moves up with the cell's layer: found by two pointers instead
// of a test of every pair.
template <typename Visit>
void forEachOverlap(const thModelInfo& m, int32_t e, OverlapWork& w, Visit visit) {
  const thMesh2D& g = m.mesh2d;
  const int32_t nol = m.nol, n0 = g.eNbrIdx[e], nn = g.eNbrNo[e];
  w.lo.resize(static_cast<size_t>(nn + 1) * nol);
  w.hi.resize(w.lo.size());
  w.from.assign(nn, 0);
  w.past.assign(nn, 0);
  w.window.resize(nn);
  const double* lo = w.lo.data();
  const double* hi = w.hi.data();
  sigmaEdges(m, e, w.lo.data(), w.hi.data());
  const bool ordered = nonIncreasing(lo, nol) && nonIncreasing(hi, nol);
  for (int32_t j = 0; j < nn; j++) {
    double* lo2 = w.lo.data() + (j + 1) * nol;
    double* hi2 = w.hi.data() + (j + 1) * nol;
    sigmaEdges(m, g.eNbr[n0 + j], lo2, hi2);
    w.window[j] = ordered && nonIncreasing(lo2, nol) && nonIncreasing(hi2, nol);
  }
  for (int32_t l = 0; l < nol; l++) {
    for (int32_t j = 0; j < nn; j++) {
      const double* lo2 = lo + (j + 1) * nol;
      const double* hi2 = hi + (j + 1) * nol;
      int32_t k0 = 0, k1 = nol;
      if (w.window[j]) {
        // lo2[k] < hi[l] from `from` on, hi2[k] > lo[l] before `past`.
        while (w.from[j] < nol && !(hi[l] > lo2[w.from[j]])) w.from[j]++;
        while (w.past[j] < nol && hi2[w.past[j]] > lo[l]) w.past[j]++;
        k0 = w.from[j];
        k1 = w.past[j];
      }
      const int32_t nb = g.eNbr[n0 + j];
      for (int32_t k = k0; k < k1; k++) {
        if (hi[l] > lo2[k] && hi2[k] > lo[l])
          visit(e * nol + l, nb * nol + k, std::min(hi[l], hi2[k]) - std::max(lo[l], lo2[k]), hi2[k] - lo2[k],
                g.eNbrVf[n0 + j]);
      }
    }
  }
}

}  // namespace

void thModelInfo::popHAC(bool asAreas) {
  if (layerType != sigma) throw VException("thModelInfo::popHAC only implemented for sigma layers.");
  const int32_t noe = mesh2d.noe;
  cellTables();
  // Cell e*nol+l: every column must hold all layers, as the columns of a sigma grid do.
  if (!isInit || layerDepth == nullptr || elemBathy == nullptr || cellVol == nullptr ||
      noe != allocElemRows || static_cast<int64_t>(noe) * nol != cells)
    throw VException("thModelInfo::popHAC: the cells are not those of a sigma grid of " +
                     VStr::toString(noe) + " columns of " + VStr::toString(nol) +
                     " layers (initCells, with every column reaching layer 0).");
  mesh2d.initElemNbrs();
  shares.release(hacNo);
  shares.release(hacIdx);
  shares.release(hacCell);
  shares.release(hacWeight);
  hacNo = new int32_t[cells]();
  hacIdx = new int32_t[cells]();
  // Counted first, so that the lists are made at their length.
  OverlapWork work;
  for (int32_t e = 0; e < noe; e++)
    forEachOverlap(*this, e, work, [&](int32_t c, int32_t, double, double, int32_t) { hacNo[c]++; });
  int64_t total = 0;
  for (int32_t c = 0; c < cells; c++) {
    hacIdx[c] = static_cast<int32_t>(total);
    total += hacNo[c];
  }
  if (total > INT32_MAX)
    throw VException("thModelInfo::popHAC: more adjacent cells than a 32-bit count can hold.");
  hacCell = new int32_t[total];
  hacWeight = new double[total];
  int64_t at = 0;
  for (int32_t e = 0; e < noe; e++)
    forEachOverlap(*this, e, work, [&](int32_t, int32_t d, double h, double height, int32_t face) {
      hacCell[at] = d;
      // The shared face area, or the part of the neighbour's volume that faces this cell.
      hacWeight[at] = asAreas ? h * mesh2d.vfl[face] : h / height * cellVol[d];
      at++;
    });
  if (asAreas) return;
  for (int32_t c = 0; c < cells; c++) {
    double sum = 0;
    for (int32_t i = hacIdx[c]; i < hacIdx[c] + hacNo[c]; i++) sum += hacWeight[i];
    for (int32_t i = hacIdx[c]; i < hacIdx[c] + hacNo[c]; i++) hacWeight[i] = cellVol[c] * hacWeight[i] / sum;
  }
  // Symmetric: each pair of entries gets the smaller of its two weights.
  std::vector<char> marked(total, 0);
  for (int32_t c = 0; c < cells; c++) {
    for (int32_t i = hacIdx[c]; i < hacIdx[c] + hacNo[c]; i++) {
      if (marked[i]) continue;
      const int32_t d = hacCell[i];
      int32_t j = hacIdx[d];
      while (j < hacIdx[d] + hacNo[d] && hacCell[j] != c) j++;
      if (j == hacIdx[d] + hacNo[d]) throw VException("Horisontal adjacent cell not found!");
      marked[j] = 1;
      hacWeight[i] = hacWeight[j] = std::min(hacWeight[i], hacWeight[j]);
    }
  }
}

double* thModelInfo::cellDistances(int32_t cell) {
  cellTables();
  if (!isInit || cellDepth == nullptr || mesh2d.noe != allocElemRows)
    throw VException("thModelInfo::cellDistances: the cells are not initialised for this mesh (initCells).");
  if (cell < 0 || cell >= cells)
    throw VException("thModelInfo::cellDistances: cell " + VStr::toString(cell) + " is outside 0.." +
                     VStr::toString(cells - 1) + ".");
  std::unique_ptr<double[]> d(mesh2d.elemDistances(cell2elem[cell]));
  auto r = std::make_unique<double[]>(cells);
  for (int32_t c = 0; c < cells; c++) {
    const double dv = cellDepth[cell] - cellDepth[c], dh = d[cell2elem[c]];
    r[c] = std::sqrt(dv * dv + dh * dh);
  }
  return r.release();
}

}  // namespace thalmod
