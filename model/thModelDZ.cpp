// The thicknesses of the cells and faces next to the moving free surface, once per timestep: the
// top rows of edz/fdz and their centre distances, the top cell volumes, and in wet/dry runs the
// top layer of each column moving up and down the stack.
//
// Only the top entries are touched unless a column wets or dries, and the double buffers change
// place by swapping table pointers, since these updates run over the whole model every timestep.
#include <algorithm>
#include <utility>
#include <vector>

#include "model/thModelInfo.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;

namespace {

// Lower edge (depth) of column e's top layer: the sea bed while the column has one active layer.
inline double topLowerEdge(const thModelInfo& m, int32_t e) {
  const int32_t t = m.etli[e];
  return t == m.ebli[e] ? m.elemBathy[e] : m.dz[t] * 0.5 + m.layerDepth[t];
}

// Elevation on inner face f by a face rule; the upwind rule reads the face's U-point uAt.
inline double faceElevation(int32_t rule, const double* h, int32_t e0, int32_t e1, const double* u,
                            int32_t uAt) {
  switch (rule) {
    case 0: return std::max(h[e0], h[e1]);
    case 1: return std::min(h[e0], h[e1]);
    case 2: return (h[e0] + h[e1]) * 0.5;
    default: return h[u[uAt] > 0 ? e0 : e1];  // an index, not a branch: the sign of u is not predictable
  }
}

// The side that the flow comes from; with no flow (or none to speak of) the larger value.
inline double upwind(double uf, double a, double b) {
  if (uf > 0) return a;
  if (uf < 0) return b;
  return std::max(a, b);
}

// Inner face f of a wet/dry step: layers above the higher of the two top layers are empty, the
// others take the upwind side's thickness, the bottom entry the thinner side's.
void wetDryInnerFace(thModelInfo& m, int32_t f, const double* h, const double* u) {
  const int32_t e0 = m.mesh2d.vfe[2 * f], e1 = m.mesh2d.vfe[2 * f + 1];
  const int32_t b = m.fbli[f], n = m.nol - b, u0 = m.fUIdx[f];
  const int32_t top = std::max(m.etli[e0], m.etli[e1]);
  const double* z0 = m.edz[e0];
  const double* z1 = m.edz[e1];
  const int32_t off0 = b - m.ebli[e0], off1 = b - m.ebli[e1];  // face layer k is side layer k + off
  double* fz = m.fdz[f];
  double* fc = m.fdzc[f];
  m.ftli[f] = top;
  for (int32_t k = top - b + 1; k < n; k++) fz[k] = 0.0;
  for (int32_t k = 1; k <= top - b; k++) fz[k] = upwind(u[u0 + k], z0[k + off0], z1[k + off1]);
  if (b != top) {
    fz[0] = std::min(z0[off0], z1[off1]);
  } else {
    const double hf = upwind(u[u0], h[e0], h[e1]);
    fz[0] = std::max(hf + std::min(m.elemBathy[e0], m.elemBathy[e1]), 0.0);
  }
  for (int32_t k = 0; k + 1 < n; k++) fc[k] = (fz[k + 1] + fz[k]) * 0.5;
  if (b == top) fc[0] = fz[0] * 0.5;
}

// Inner face f without wet/dry: only its top entry follows the surface.
inline void innerFaceTop(thModelInfo& m, int32_t f, const double* h, const double* u, int32_t rule,
                         double dzTop) {
  const int32_t e0 = m.mesh2d.vfe[2 * f], e1 = m.mesh2d.vfe[2 * f + 1];
  const int32_t top = m.nol - m.fbli[f] - 1;
  double* fz = m.fdz[f];
  // A one-layer face takes the top layer's thickness as well, not the depth under it.
  fz[top] = faceElevation(rule, h, e0, e1, u, m.fUIdx[f] + top) + dzTop;
  m.fdzc[f][top > 0 ? top - 1 : 0] = top > 0 ? fz[top - 1] * 0.5 + fz[top] * 0.5 : fz[0] * 0.5;
}

// Open boundary face f: its top entry reaches from the lower edge of its element's top layer to
// the element's surface.
inline void boundaryFaceTop(thModelInfo& m, int32_t f, const double* h) {
  const int32_t e = m.mesh2d.vfe[2 * f];
  const int32_t k = m.ftli[f] - m.fbli[f];
  double* fz = m.fdz[f];
  fz[k] = topLowerEdge(m, e) + h[e];
  m.fdzc[f][k > 0 ? k - 1 : 0] = k > 0 ? fz[k] * 0.5 + fz[k - 1] * 0.5 : fz[0] * 0.5;
}

// Column e of a wet/dry step: floods the layers that the surface has risen into, dries those it
// has left, then sets the new top cell.
void wetDryColumn(thModelInfo& m, int32_t e, double he, std::vector<int32_t>& wetCells,
                  std::vector<int32_t>& dryCells) {
  const int32_t b = m.ebli[e], top = m.nol - 1;
  double* ez = m.edz[e];
  double* ec = m.edzc[e];
  // The volumes of the cells that flood or dry follow their thickness as well as the top cell's,
  // so that the cells always hold the water of the column.
  double* vol = m.cellVol + m.botlayerIdx[e];
  const double area = m.mesh2d.eArea[e];
  const double s = -he;  // depth of the surface
  // Flooding: the top layer's upper edge lies strictly below the surface. A NaN surface neither
  // floods nor dries a layer.
  for (int32_t t = m.etli[e]; t < top && m.layerDepth[t] - m.dz[t] * 0.5 > s; t = m.etli[e]) {
    const int32_t k = t - b;
    if (k > 0) {
      ez[k] = m.dz[t];
      ec[k - 1] = ez[k - 1] * 0.5 + ez[k] * 0.5;
    } else {
      ez[0] = m.edzInit[e];
      ec[0] = ez[0] * 0.5;
    }
    vol[k] = ez[k] * area;
    m.etli[e]++;
    m.toplayerIdx[e]++;
    m.enol[e]++;
    wetCells.push_back(m.botlayerIdx[e] + m.etli[e] - b);
  }
  // Drying: the surface lies on or below the top layer's lower edge. The bottom cell stays.
  for (double L = topLowerEdge(m, e); s >= L && m.etli[e] > b; L = topLowerEdge(m, e)) {
    const int32_t k = m.etli[e] - b;
    dryCells.push_back(m.botlayerIdx[e] + k);
    ez[k] = 0.0;
    vol[k] = 0.0;
    ec[k - 1] = ez[k - 1] * 0.5;
    if (m.etli[e] < top) ec[k] = 0.0;  // the top-most layer has no centre distance above it
    m.etli[e]--;
    m.toplayerIdx[e]--;
    m.enol[e]--;
  }
  const int32_t k = m.etli[e] - b;
  if (k > 0) {
    ez[k] = he + topLowerEdge(m, e);
    ec[k - 1] = ez[k] * 0.5 + ez[k - 1] * 0.5;
    if (m.etli[e] < top) ec[k] = ez[k] * 0.5;
  } else {
    // A surface under the sea bed leaves a negative thickness; it is not clipped.
    ez[0] = he + m.elemBathy[e];
    ec[0] = ez[0] * 0.5;
  }
  vol[k] = ez[k] * area;
}

}  // namespace

void thModelInfo::checkThicknessRows(const std::string& fn, const double* h) const {
  if (layerType != zlayer) throw VException("thModelInfo::updateDZ not implemented for current layerType.");
  cellTables();
  if (!isInit || edz == nullptr || fdz == nullptr)
    throw VException("thModelInfo::" + fn + ": the cells are not initialised (initCells).");
  if (mesh2d.noe != allocElemRows || totNoUvf != allocFaceRows || mesh2d.nivf > totNoUvf ||
      allocCols != mesh2d.noe + mesh2d.tnbe ||
      (mesh2d.noe > 0 && (mesh2d.vfe == nullptr || mesh2d.eArea == nullptr)))
    throw VException("thModelInfo::" + fn + ": the mesh has changed since initCells; run initCells again.");
  if (h == nullptr) throw VException("thModelInfo::" + fn + ": the surface elevations (h) are missing.");
}

void thModelInfo::initWetDry() {
  if (!isInit) throw VException("thModelInfo: Cannot init wetdry before main init. " + thGlobal::errTail);
  cellTables();
  const int32_t noe = allocElemRows;
  shares.release(edzInit);
  shares.release(etliOld);
  edzInit = new double[noe];
  etliOld = new int32_t[noe];
  for (int32_t e = 0; e < noe; e++) {
    edzInit[e] = edz[e][0];
    etliOld[e] = etli[e];
  }
  wetDryOn = true;
}

void thModelInfo::updateDZ(double* h, bool swapBuffers) {
  checkThicknessRows("updateDZ", h);
  if (swapBuffers) std::swap(edz, edzOld);  // the rows below the top cells are not copied
  const double dzTop = dz[nol - 1];
  const double* area = mesh2d.eArea;
  for (int32_t e = 0; e < allocElemRows; e++) {
    const int32_t k = etli[e] - ebli[e];
    double* ez = edz[e];
    if (k > 0) {
      ez[k] = dzTop + h[e];
      edzc[e][k - 1] = ez[k - 1] * 0.5 + ez[k] * 0.5;
    } else {
      ez[0] = elemBathy[e] + h[e];
      edzc[e][0] = ez[0] * 0.5;
    }
    cellVol[botlayerIdx[e] + k] = ez[k] * area[e];
  }
}

void thModelInfo::updateDZWetDry(double* h, std::vector<int32_t>& wetCells, std::vector<int32_t>& dryCells,
                                 bool keepOld) {
  checkThicknessRows("updateDZWetDry", h);
  if (!wetDryOn || edzInit == nullptr || etliOld == nullptr)
    throw VException("thModelInfo::updateDZWetDry: the wet/dry state is not set up; call initWetDry first.");
  const int32_t noe = allocElemRows;
  if (keepOld) {
    for (int32_t e = 0; e < noe; e++) std::copy(edz[e], edz[e] + (nol - ebli[e]), edzOld[e]);
    std::copy(etli, etli + noe, etliOld);
  }
  for (int32_t e = 0; e < noe; e++) wetDryColumn(*this, e, h[e], wetCells, dryCells);
}

void thModelInfo::updateDZf(double* h, double* u, int32_t faceRule, bool swapBuffers, bool wetDry) {
  checkThicknessRows("updateDZf", h);
  const bool readsU = wetDry ? faceRule == 3 : (faceRule < 0 || faceRule > 2);
  if (readsU && u == nullptr)
    throw VException("thModelInfo::updateDZf: face rule " + VCppLib::VStr::toString(faceRule) +
                     " reads the velocities (u), which are missing.");
  if (swapBuffers) std::swap(fdz, fdzOld);
  if (wetDry && faceRule != 3) throw VException("WetDry only supports face rule 3");
  const int32_t nivf = mesh2d.nivf;
  const int32_t bndEnd = bndFacesOn ? totNoUvf : nivf;  // open faces carry rows only when bndFacesOn
  if (wetDry) {
    for (int32_t f = 0; f < nivf; f++) wetDryInnerFace(*this, f, h, u);
    for (int32_t f = nivf; f < bndEnd; f++) {
      const int32_t e = mesh2d.vfe[2 * f];
      ftli[f] = etli[e];
      std::copy(edz[e], edz[e] + (nol - fbli[f]), fdz[f]);
    }
  } else {
    const double dzTop = dz[nol - 1];
    for (int32_t f = 0; f < nivf; f++) innerFaceTop(*this, f, h, u, faceRule, dzTop);
  }
  for (int32_t f = nivf; f < bndEnd; f++) boundaryFaceTop(*this, f, h);
}

void thModelInfo::updateTopCellVol() {
  cellTables();
  if (!isInit || edz == nullptr || mesh2d.noe != allocElemRows || mesh2d.eArea == nullptr)
    throw VException(
        "thModelInfo::updateTopCellVol: the cells are not initialised for this mesh (initCells).");
  for (int32_t e = 0; e < allocElemRows; e++) {
    const int32_t k = etli[e] - ebli[e];
    cellVol[botlayerIdx[e] + k] = edz[e][k] * mesh2d.eArea[e];
  }
}

}  // namespace thalmod
