// The two text reports of a model for a person: the summary of mesh, layers and cells that the
// result file's report embeds, and the dump of one cell's column and faces for tracing a blow-up.
#include <algorithm>
#include <cmath>
#include <sstream>

#include "model/thModelInfo.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;

namespace {

// The member toString (the report) would hide a plain toString inside the members.
using VCppLib::str;

template <typename T>
std::string join(const T* values, int32_t count, const std::string& delimiter) {
  std::ostringstream ss;
  for (int32_t i = 0; values != nullptr && i < count; i++) {
    if (i > 0) ss << delimiter;
    ss << values[i];
  }
  return ss.str();
}

// Extremes of n values in index order: a later equal value does not replace an earlier one. The
// largest starts from 0.0 and the smallest from `smallStart`, their indices from -1.
struct Extremes {
  double sum = 0, maxV = 0, minV;
  int32_t maxAt = -1, minAt = -1;
  Extremes(const double* v, int32_t n, double smallStart) : minV(smallStart) {
    for (int32_t i = 0; v != nullptr && i < n; i++) {
      sum += v[i];
      if (v[i] > maxV) {
        maxV = v[i];
        maxAt = i;
      }
      if (v[i] < minV) {
        minV = v[i];
        minAt = i;
      }
    }
  }
};

// Boundary b at level 6 and above: its number, its elements and the area of its faces.
std::string boundaryLines(const thModelInfo& mi, int32_t b) {
  const std::string& nl = VCppLib::newline;
  const thMesh2D& m = mi.mesh2d;
  const int32_t first = m.bndFirst[b], n = m.bndNoFaces[b];
  std::string s = "\tBoundary " + str(b) + " has number " + str(m.bndId[b]) + nl;
  s += "\t" + str(n) + " elems: " + join(m.bndElem + first, n, ",") + nl;
  double area = 0;
  for (int32_t i = 0; i < n; i++) {
    const int32_t f = m.nivf + first + i;
    // Open faces have thickness rows only when they carry U-points (bndFacesOn).
    if (mi.ebli == nullptr || mi.fdz == nullptr || f >= mi.totNoUvf) continue;
    const int32_t layers = mi.nol - mi.ebli[m.bndElem[first + i]];
    for (int32_t k = 0; k < layers; k++) area += m.vfl[f] * mi.fdz[f][k];
  }
  return s + "\tTotal boundary area: " + str(area) + nl;
}

}  // namespace

std::string thModelInfo::joinValues(const double* values, int32_t count, std::string delimiter) {
  return join(values, count, delimiter);
}

std::string thModelInfo::joinValues(const int32_t* values, int32_t count, std::string delimiter) {
  return join(values, count, delimiter);
}

std::string thModelInfo::toString(int32_t level) const {
  const std::string& nl = VCppLib::newline;
  const thMesh2D& m = mesh2d;
  std::string s = std::string(m.isOrthogonal ? "The mesh is orthogonal" : "The mesh is not orthogonal") + nl;
  s += "Projection:\t" + m.projection + nl;
  s += "No. timesteps:\t" + str(nt) + nl;
  s += "Timestep seconds:\t" + str(dt) + nl;
  s += "No. Layers:\t" + str(nol) + nl;
  s += std::string("LayerType:\t") + (layerType != 0 ? "Sigma" : "ZLayer") + nl;
  s += "LayerThickness: " + joinValues(dz, nol, ",") + nl;
  s += "LayerDepths (center): " + joinValues(layerDepth, nol, ",") + nl;
  s += "Mesh has " + str(m.noe) + " elements and " + str(m.non) + " nodes." + nl;
  s += "Mesh area center: (" + str(m.areaCenterX) + "," + str(m.areaCenterY) + ")" + nl;
  s += "Mesh extendX: (" + str(m.xMin) + "," + str(m.xMax) + ")" + nl;
  s += "Mesh extendY: (" + str(m.yMin) + "," + str(m.yMax) + ")" + nl;
  if (cells >= 1) {
    cellTables();  // the volumes
    const Extremes v(cellVol, cells, 1e37);
    s += "No. Computational cells: " + str(cells) + nl;
    s += "Total mesh volume: " + str(v.sum) + nl;
    s += "Largest cell: " + str(v.maxAt) + ", volume=" + str(v.maxV) + nl;
    s += "Smallest cell: " + str(v.minAt) + ", volume=" + str(v.minV) + nl;
  }
  const Extremes a(m.eArea, m.noe, 1e37);
  const double mean = a.sum / m.noe;
  s += "Total mesh area: " + str(a.sum) + nl;
  s += "Average element area: " + str(mean) + ", sqrt(area)=" + str(std::sqrt(mean)) + nl;
  s += "Largest element is element no. " + str(a.maxAt) + ", size=" + str(a.maxV) +
       ", sqrt(area)=" + str(std::sqrt(a.maxV)) + nl;
  s += "Smallest element is element no. " + str(a.minAt) + ", size=" + str(a.minV) +
       ", sqrt(area)=" + str(std::sqrt(a.minV)) + nl;
  const Extremes d(elemBathy, m.noe, 999999.0);
  s += "Maximum bathymetry is " + str(d.maxV) + " in element no. " + str(d.maxAt) + nl;
  s += "Minimum bathymetry is " + str(d.minV) + " in element no. " + str(d.minAt) + nl;
  const Extremes fl(m.vfl, m.nvf, 1e37);
  s += "Average face length is " + str(fl.sum / m.nvf) + ", shortest face is " + str(fl.minV) +
       ", longest is " + str(fl.maxV) + nl;
  if (level > 0) {
    const Extremes fd(m.vfDist, m.nvf, 1e37);
    s += "Average element distance: " + str(fd.sum / m.nvf) + nl;
    s += "Shortest element distance: " + str(fd.minV) + nl;
    s += "Longest element distance: " + str(fd.maxV) + nl;
  }
  s += str(m.nBnd) + " boundaries, numbers: " + joinValues(m.bndId, m.nBnd, ",") + nl;
  if (level >= 6 && dz != nullptr && m.bndFirst != nullptr && m.bndNoFaces != nullptr &&
      m.bndElem != nullptr && m.vfl != nullptr)
    for (int32_t b = 0; b < m.nBnd; b++) s += boundaryLines(*this, b);
  return s;
}

std::string thModelInfo::blowupReport(int32_t cell) const {
  cellTables();
  if (!isInit || cell2elem == nullptr || mesh2d.noe != allocElemRows)
    throw VException("thModelInfo::blowupReport: the cells are not initialised for this mesh (initCells).");
  // Ghost cells have no depth or layer count of their own: only computational cells are reported.
  if (cell < 0 || cell >= cells)
    throw VException("thModelInfo::blowupReport: cell " + str(cell) +
                     " is outside the computational cells 0.." + str(cells - 1) + ".");
  if (etliOld == nullptr)
    throw VException(
        "thModelInfo::blowupReport: the previous timestep's top layers are kept only in wet/dry runs; "
        "call initWetDry first.");
  const std::string& nl = VCppLib::newline;
  const thMesh2D& m = mesh2d;
  const int32_t e = cell2elem[cell], l = cell2layer[cell], n = nol - ebli[e];
  std::string s = nl + " --------------- Thalmod modelInfo Blowup report, cell=" + str(cell) +
                  ", elem=" + str(e) + ", layer=" + str(l) + " ----------------------" + nl;
  s += "elemBathy\t=" + str(elemBathy[e]) + nl;
  s += "enol\t=" + str(enol[e]) + " (of " + str(nol) + ")" + nl;
  s += "ebli\t=" + str(ebli[e]) + nl;
  s += "etli\t=" + str(etli[e]) + " (previous timestep: " + str(etliOld[e]) + ")" + nl;
  s += "edz \t=" + joinValues(edz[e], n, ",") + " (previous timestep: " + joinValues(edzOld[e], n, ",") +
       ")" + nl;
  s += "faces:" + nl;
  for (int32_t j = 0; j < m.nivfpe[e] + m.nbvfpe[e]; j++) {
    const int32_t f = m.evf[m.eni[e] + j];
    // The count runs down from the cell's layer; it stops at the end of the face's row, and an
    // open face without a row (bndFacesOn false) lists nothing.
    const bool hasRow = f >= 0 && f < totNoUvf;
    const int32_t count = hasRow ? std::min(nol - (l - fbli[f]), nol - fbli[f]) : 0;
    const double* row = hasRow ? fdz[f] : nullptr;
    s += "face " + str(f) + ":\tfdz=" + joinValues(row, count, ",") +
         " (previous timestep: " + joinValues(row, count, ",") + ")" + nl;
  }
  return s;
}

}  // namespace thalmod
