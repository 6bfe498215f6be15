// The vertical section through the model as a mesh of its own: x is the distance along the
// section, y the height (depths negative), one quadrilateral per cell that the section crosses.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/thModelInfo.h"
#include "support/VGeom.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;

namespace {

using VCppLib::str;

using VCppLib::newArrayFrom;

// Lower edge of layer k as a height.
double lowerEdge(const thModelInfo& mi, int32_t k) { return -(mi.dz[k] * 0.5 + mi.layerDepth[k]); }

// Z-layers: node columns at the n+1 edges between the crossed elements, shared by the two
// elements beside them and reaching down to the deeper of them.
void zLayerSection(const thModelInfo& mi, const int32_t* ise, const double* isd, int32_t n, const double* ish,
                   thMesh2D& m) {
  const int32_t nol = mi.nol, levels = nol + 1;
  const int32_t none = nol + 1;  // deeper than any level: a stretch outside the mesh has no nodes
  auto bottomOf = [&](int32_t c) { return c >= 0 && c < n && ise[c] >= 0 ? mi.ebli[ise[c]] : none; };
  std::vector<int32_t> nodeNo(static_cast<size_t>(n + 1) * levels, -1);
  std::vector<double> x, y;
  std::vector<int32_t> type;
  for (int32_t c = 0; c <= n; ++c) {
    const double S = ish ? ish[c == 0 ? 0 : c - 1] : -mi.topDepth;
    const int32_t from = std::min(bottomOf(c - 1), bottomOf(c));  // the deeper element decides
    bool firstInColumn = true;
    for (int32_t k = from; k <= nol; ++k) {
      x.push_back(c == 0 ? 0.0 : isd[c - 1]);
      y.push_back(k < nol ? lowerEdge(mi, k) : S);
      type.push_back(c == 0 || c == n || firstInColumn || k == nol ? 99 : 0);
      nodeNo[static_cast<size_t>(c) * levels + k] = static_cast<int32_t>(x.size()) - 1;
      firstInColumn = false;
    }
  }
  std::vector<int32_t> nonpe, en;
  for (int32_t c = 0; c < n; ++c) {
    if (ise[c] < 0) continue;
    for (int32_t k = mi.ebli[ise[c]]; k < nol; ++k) {
      const int32_t a = nodeNo[static_cast<size_t>(c) * levels + k],
                    b = nodeNo[static_cast<size_t>(c + 1) * levels + k];
      nonpe.push_back(4);
      en.insert(en.end(), {a, b, b + 1, a + 1});  // lower left, lower right, upper right, upper left
      type[a] = type[b] = 99;
    }
  }
  m.non = static_cast<int32_t>(x.size());
  m.nxCoor = newArrayFrom(x);
  m.nyCoor = newArrayFrom(y);
  m.nt = newArrayFrom(type);
  m.noe = static_cast<int32_t>(nonpe.size());
  m.nonpe = newArrayFrom(nonpe);
  m.en = newArrayFrom(en);
}

// Sigma layers: every crossed element has two node columns of its own.
void sigmaSection(const thModelInfo& mi, const int32_t* ise, const double* isd, int32_t n, const double* ish,
                  thMesh2D& m) {
  const int32_t nol = mi.nol;
  for (int32_t c = 0; c < n; ++c)
    if (ise[c] < 0)  // its depth would come from no element
      throw VException(
          "ise2VMesh: stretch " + str(c) +
          " of the section lies outside the mesh; cut such stretches off a section of sigma layers.");
  m.non = n * (nol + 1) * 2;
  m.nxCoor = new double[m.non];
  m.nyCoor = new double[m.non];
  m.nt = new int32_t[m.non];
  for (int32_t c = 0; c < n; ++c) {
    const double S = ish ? ish[c] : 0.0;
    for (int32_t k = 0; k <= nol; ++k) {
      const int32_t i = 2 * (c * (nol + 1) + k);
      const double yk = k < nol ? lowerEdge(mi, k) * mi.elemBathy[ise[c]] : S;
      m.nxCoor[i] = c == 0 ? 0.0 : isd[c - 1];
      m.nxCoor[i + 1] = isd[c];
      m.nyCoor[i] = m.nyCoor[i + 1] = yk;
      m.nt[i] = m.nt[i + 1] = 99;
    }
  }
  m.noe = n * nol;
  m.nonpe = new int32_t[m.noe];
  m.en = new int32_t[4 * static_cast<int64_t>(m.noe)];
  for (int32_t c = 0; c < n; ++c)
    for (int32_t k = 0; k < nol; ++k) {
      const int32_t e = c * nol + k, i = 2 * (c * (nol + 1) + k);
      m.nonpe[e] = 4;
      int32_t* q = m.en + 4 * static_cast<int64_t>(e);
      q[0] = i;  // lower left, upper left, upper right, lower right
      q[1] = i + 2;
      q[2] = i + 3;
      q[3] = i + 1;
    }
}

}  // namespace

thMesh2D* thModelInfo::ise2VMesh(const int32_t* ise, const double* isd, int32_t n, const double* ish) const {
  auto m = std::make_unique<thMesh2D>();
  if (layerType != zlayer && layerType != sigma) throw VException("ise2VMesh: Not implemented.");
  // A stretch outside the mesh is -1; any other element number must have a column.
  if (n < 0 || (n > 0 && (ise == nullptr || isd == nullptr)))
    throw VException("ise2VMesh: the section of " + str(n) + " stretches is missing.");
  if (nol < 1 || dz == nullptr || layerDepth == nullptr || ebli == nullptr || elemBathy == nullptr)
    throw VException("ise2VMesh: the model has no layers set up; run initCells first.");
  for (int32_t c = 0; c < n; ++c)
    if (ise[c] >= mesh2d.noe)
      throw VException("ise2VMesh: element " + str(ise[c]) + " of the section is not in the mesh of " +
                       str(mesh2d.noe) + " elements.");
  if (layerType == zlayer)
    zLayerSection(*this, ise, isd, n, ish, *m);
  else
    sigmaSection(*this, ise, isd, n, ish, *m);
  m->initMesh();
  return m.release();
}

}  // namespace thalmod
