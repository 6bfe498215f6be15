// Sections across the mesh and meshes made from parts of it: the elements that a polyline
// crosses, the domains that polylines of nodes cut the mesh into, a strip of quadrilaterals
// along an open boundary, and the mesh of a list of elements.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;

namespace {

using VCppLib::str;

using VCppLib::newArrayFrom;

// A new heap mesh; its arrays go with it, also when initMesh refuses them.
std::unique_ptr<thMesh2D> newOwningMesh() { return std::make_unique<thMesh2D>(); }

}  // namespace

// ---------------------------------------------------------------- sectionIntersections

int32_t thMesh2D::sectionIntersections(const double* xc, const double* yc, int32_t n, int32_t*& ise,
                                       double*& isd) const {
  if (n >= 2 && (xc == nullptr || yc == nullptr))
    throw VException("thMesh2D::sectionIntersections: the coordinates of the " + str(n) +
                     " section points are missing.");
  std::vector<int32_t> se;
  std::vector<double> sd;
  for (int32_t j = 0; j + 1 < n; ++j) {
    int32_t* le = nullptr;
    double* ld = nullptr;
    int32_t k = lineIntersections(xc[j], yc[j], xc[j + 1], yc[j + 1], le, ld);
    std::unique_ptr<int32_t[]> ownE(le);
    std::unique_ptr<double[]> ownD(ld);
    // A line that crosses no face and starts outside lies wholly outside the mesh: one stretch
    // outside, as long as the line, so that the distances further on stay right.
    int32_t outsideE = -1;
    double outsideD = std::hypot(xc[j + 1] - xc[j], yc[j + 1] - yc[j]);
    if (k < 1) {
      k = 1;
      le = &outsideE;
      ld = &outsideD;
    }
    if (se.empty()) {
      se.assign(le, le + k);
      sd.assign(ld, ld + k);
      continue;
    }
    if (se.back() != le[0])
      throw VException("line end elem != next line start elem in section. Not implemented.");
    const size_t lastIdx = sd.size() - 1;
    const double last = sd[lastIdx];
    for (int32_t i = 1; i < k; ++i) {
      se.push_back(le[i]);
      sd.push_back(ld[i] + last);
    }
    sd[lastIdx] += ld[0];  // the stretch in the shared element grows by the new line's first
  }
  ise = newArrayFrom(se);
  isd = newArrayFrom(sd);
  return static_cast<int32_t>(se.size());
}

// ---------------------------------------------------------------- chopDomian

namespace {

// The polygon of one domain: along the ring from `startFace`, and along each section met.
class DomainWalk {
 public:
  DomainWalk(const thMesh2D& mesh, const std::vector<int32_t>& ring, const int32_t* const* sections,
             int32_t nSections, const int32_t* sectionLengths)
      : m(mesh), R(ring), sec(sections), nSec(nSections), len(sectionLengths) {}

  // Fills `poly` with the nodes of the domain that begins at startFace/startNode, and moves
  // those two on to where the next domain begins: just past the first section met (a domain
  // that meets none leaves them, and the next domain is the same polygon).
  void walk(int32_t& startFace, int32_t& startNode, std::vector<int32_t>& poly) const {
    poly.clear();
    const int32_t c = static_cast<int32_t>(R.size());
    if (startFace >= c) return;  // nothing left of the ring: an empty domain
    int32_t i = startFace;
    bool first = true;
    poly.push_back(m.vfn[2 * R[i] + startNode]);
    // Every step moves on along the ring, except following a section that ends on the face it
    // began from: a ring and its sections that loop for ever are refused.
    const int64_t maxSteps = 2 * static_cast<int64_t>(c) + 2 * static_cast<int64_t>(nSec) + 2;
    for (int64_t steps = 0; i < c; ++steps) {
      if (steps > maxSteps)
        throw VException("thMesh2D::chopDomian: the sections and the circumference form no closed domain.");
      const int32_t a = m.vfn[2 * R[i]], b = m.vfn[2 * R[i] + 1];
      const int32_t v = a == poly.back() ? b : a;
      poly.push_back(v);
      int32_t s = 0;
      while (s < nSec && !(len[s] > 0 && (sec[s][0] == v || sec[s][len[s] - 1] == v))) ++s;
      if (s == nSec) {
        ++i;
        continue;
      }
      if (first) {
        startFace = i + 1;
        startNode = v == a ? 1 : 0;
        first = false;
      }
      if (sec[s][0] == v)
        for (int32_t k = 1; k < len[s]; ++k) poly.push_back(sec[s][k]);
      else
        for (int32_t k = len[s] - 2; k >= 0; --k) poly.push_back(sec[s][k]);
      const int32_t w = poly.back();
      int32_t p = c - 1;
      while (p >= 0 && m.vfn[2 * R[p]] != w && m.vfn[2 * R[p] + 1] != w) --p;
      if (p < 0) throw VException("thMesh2D::chopDomian: section does not end on cirumference.");
      if (p < i) break;  // round: the polygon is closed
      i = p;
    }
  }

 private:
  const thMesh2D& m;
  const std::vector<int32_t>& R;
  const int32_t* const* sec;
  int32_t nSec;
  const int32_t* len;
};

}  // namespace

int32_t** thMesh2D::chopDomian(const int32_t* const* sections, int32_t nSections,
                               const int32_t* sectionLengths, int32_t*& domainLengths) {
  if (nSections < 0) {
    domainLengths = nullptr;
    return nullptr;
  }
  if (nSections > 0 && (sections == nullptr || sectionLengths == nullptr))
    throw VException("thMesh2D::chopDomian: the " + str(nSections) + " sections are missing.");
  for (int32_t s = 0; s < nSections; ++s) {
    if (sectionLengths[s] > 0 && sections[s] == nullptr)
      throw VException("thMesh2D::chopDomian: the nodes of section " + str(s) + " are missing.");
    for (int32_t k = 0; k < sectionLengths[s]; ++k)
      if (sections[s][k] < 0 || sections[s][k] >= non)
        throw VException("thMesh2D::chopDomian: section " + str(s) + " refers to node " +
                         str(sections[s][k]) + ", but the mesh has " + str(non) + " nodes.");
  }
  const int32_t nDom = nSections + 1;
  std::vector<std::vector<int32_t>> domains(nDom);
  if (nSections == 0) {
    for (int32_t e = 0; e < noe; ++e) domains[0].push_back(e);
  } else {
    const std::vector<int32_t> ring = circumferenceFaces();
    DomainWalk walker(*this, ring, sections, nSections, sectionLengths);
    int32_t startFace = 0, startNode = 0;
    std::vector<int32_t> poly;
    std::vector<double> px, py;
    for (int32_t d = 0; d < nDom; ++d) {
      walker.walk(startFace, startNode, poly);
      px.resize(poly.size());
      py.resize(poly.size());
      for (size_t k = 0; k < poly.size(); ++k) {
        px[k] = nxCoor[poly[k]];
        py[k] = nyCoor[poly[k]];
      }
      const int32_t np = static_cast<int32_t>(poly.size());
      for (int32_t e = 0; e < noe; ++e)
        if (VCppLib::pointInPolygon(np, px.data(), py.data(), exCoor[e], eyCoor[e])) domains[d].push_back(e);
    }
  }
  int32_t** out = new int32_t*[nDom];
  domainLengths = new int32_t[nDom];
  for (int32_t d = 0; d < nDom; ++d) {
    out[d] = newArrayFrom(domains[d]);
    domainLengths[d] = static_cast<int32_t>(domains[d].size());
  }
  return out;
}

// ---------------------------------------------------------------- boundaryStripMesh, subMesh

thMesh2D* thMesh2D::boundaryStripMesh(int32_t boundary) const {
  if (boundary < 0 || boundary >= nBnd || bndNoFaces == nullptr || bndFirst == nullptr)
    throw VException("thMesh2D::boundaryStripMesh: there is no open boundary of index " + str(boundary) +
                     "; the mesh has " + str(nBnd) + ".");
  const int32_t nf = bndNoFaces[boundary], f0 = nivf + bndFirst[boundary];
  if (nf < 1)
    throw VException("thMesh2D::boundaryStripMesh: open boundary " + str(bndId[boundary]) + " has no faces.");
  auto holds = [this](int32_t f, int32_t node) { return vfn[2 * f] == node || vfn[2 * f + 1] == node; };
  auto other = [this](int32_t f, int32_t node) { return vfn[2 * f] == node ? vfn[2 * f + 1] : vfn[2 * f]; };
  // The first point is the first face's node that the next face does not hold (either node of a
  // boundary of one face); every face then adds its other node.
  std::vector<double> x, y;
  int32_t p = vfn[2 * f0];
  if (nf > 1 && holds(f0 + 1, p)) p = vfn[2 * f0 + 1];
  x.push_back(nxCoor[p]);
  y.push_back(nyCoor[p]);
  for (int32_t k = 0; k < nf; ++k) {
    p = other(f0 + k, p);
    x.push_back(nxCoor[p]);
    y.push_back(nyCoor[p]);
  }
  double *ox = nullptr, *oy = nullptr;
  int32_t *quads = nullptr, nNodes = 0, nQuads = 0;
  VCppLib::lineRibbon(x.data(), y.data(), nf + 1, ox, oy, nNodes, nQuads, quads, 1, -1.0);
  auto m = newOwningMesh();
  m->projection = projection;
  m->non = nNodes;
  m->nxCoor = ox;
  m->nyCoor = oy;
  m->nt = new int32_t[nNodes];
  for (int32_t i = 0; i < nNodes; ++i) m->nt[i] = 99;
  m->noe = nQuads;
  m->en = quads;
  m->nonpe = new int32_t[nQuads];
  for (int32_t e = 0; e < nQuads; ++e) m->nonpe[e] = 4;
  m->initMesh();
  return m.release();
}

thMesh2D* thMesh2D::subMesh(int32_t n, const int32_t* elems) const {
  if (n < 0 || (n > 0 && elems == nullptr))
    throw VException("thMesh2D::subMesh: the list of " + str(n) + " elements is missing.");
  if (n > 0 && (eni == nullptr || eVoronoiX == nullptr || eVoronoiY == nullptr))
    throw VException("thMesh2D::subMesh: the mesh is not initialised; run initMesh first.");
  std::vector<int32_t> newNo(non, -1), nodes, en2, nonpe2;
  std::vector<double> vx, vy;
  for (int32_t i = 0; i < n; ++i) {
    const int32_t e = elems[i];
    if (e < 0 || e >= noe)
      throw VException("thMesh2D::subMesh: element " + str(e) + " is not in the mesh of " + str(noe) +
                       " elements.");
    nonpe2.push_back(nonpe[e]);
    vx.push_back(eVoronoiX[e]);
    vy.push_back(eVoronoiY[e]);
    for (int32_t k = 0; k < nonpe[e]; ++k) {
      const int32_t node = en[eni[e] + k];
      if (newNo[node] < 0) {  // numbered in order of first use
        newNo[node] = static_cast<int32_t>(nodes.size());
        nodes.push_back(node);
      }
      en2.push_back(newNo[node]);
    }
  }
  auto m = newOwningMesh();
  m->non = static_cast<int32_t>(nodes.size());
  m->nxCoor = new double[nodes.size()];
  m->nyCoor = new double[nodes.size()];
  m->nt = new int32_t[nodes.size()];
  for (size_t k = 0; k < nodes.size(); ++k) {
    m->nxCoor[k] = nxCoor[nodes[k]];
    m->nyCoor[k] = nyCoor[nodes[k]];
    m->nt[k] = nt[nodes[k]];
  }
  m->noe = n;
  m->nonpe = newArrayFrom(nonpe2);
  m->en = newArrayFrom(en2);
  m->eVoronoiX = newArrayFrom(vx);
  m->eVoronoiY = newArrayFrom(vy);
  m->hasVoronoi = true;
  m->initMesh();
  return m.release();
}

}  // namespace thalmod
