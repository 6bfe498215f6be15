// Mesh editing: renumbering, deleting and adding nodes and elements, joining meshes and changing
// the projection. Every edit builds its new primary arrays aside and hands them to the mesh in
// one step (MeshEdit::commit), so that an edit refused for bad input leaves the mesh as it was.
//
// After an edit with reInitMesh false the mesh holds its primary arrays and a current eni only:
// the derived arrays describe the old numbering and some of them are shorter than the new counts,
// so they are dropped (null, with nvf, nivf, tnbe and nBnd 0) rather than left to be read out of
// range. Several edits can thus follow each other (additions included) before one initMesh.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "mesh/thMeshIndex.h"
#include "support/VGeom.h"
#include "support/VMsg.h"
#include "support/VStr.h"
#include "support/thBigArrays.h"

namespace thalmod {

using VCppLib::VException;

namespace {

using VCppLib::str;

template <typename T>
std::unique_ptr<T[]> newArr(int64_t n) {
  return std::unique_ptr<T[]>(bigarr::newArr<T>(n));
}

bool hasVoronoiArrays(const thMesh2D& m) {
  return m.hasVoronoi && m.eVoronoiX != nullptr && m.eVoronoiY != nullptr;
}

int64_t entryCount(const thMesh2D& m) {
  int64_t s = 0;
  for (int32_t e = 0; e < m.noe; e++) s += m.nonpe[e];
  return s;
}

// "the mesh has nodes 0 to 9", "the mesh has no elements"
std::string rangeText(const std::string& what, int32_t count) {
  if (count < 1) return "the mesh has no " + what + "s";
  return "the mesh has " + what + "s 0 to " + str(count - 1);
}

void checkNumber(const char* op, const std::string& what, int32_t v, int32_t count) {
  if (v < 0 || v >= count)
    throw VException(std::string(op) + ": " + what + " " + str(v) + " does not exist; " +
                     rangeText(what, count) + ".");
}

void checkCount(const char* op, const std::string& what, int32_t count, const void* list) {
  if (count < 0)
    throw VException(std::string(op) + ": the number of " + what + " is " + str(count) +
                     "; it cannot be negative.");
  if (count > 0 && list == nullptr)
    throw VException(std::string(op) + ": the list of " + str(count) + " " + what + " is missing.");
}

// The primary arrays of an edited mesh, built aside. A null array leaves the mesh's own in place.
class MeshEdit {
 public:
  explicit MeshEdit(thMesh2D& mesh) : non(mesh.non), noe(mesh.noe), m(mesh) {}

  std::unique_ptr<double[]> x, y;
  std::unique_ptr<int32_t[]> nt, nonpe, en;
  bool replaceVoronoi = false;  // vx, vy replace the Voronoi arrays (null: none)
  std::unique_ptr<double[]> vx, vy;
  int32_t non, noe;

  const int32_t* curNonpe() const { return nonpe ? nonpe.get() : m.nonpe; }
  const int32_t* curEn() const { return en ? en.get() : m.en; }

  // Keeps the elements whose drop entry is 0, in order. With compactVoronoi their Voronoi points
  // go with them; otherwise the caller sets the Voronoi arrays.
  void keepElements(const std::vector<char>& drop, bool compactVoronoi);
  // Removes the nodes whose drop entry is not 0; entries of en above them are lowered. No kept
  // element may use a removed node (the callers make sure of it).
  void removeNodes(const std::vector<char>& drop);
  // Hands the arrays to the mesh; initMesh when reInit, otherwise eni is rebuilt.
  int32_t commit(bool reInit);
  // New node arrays of the mesh's nodes followed by room for `extra` more, which the caller fills.
  void growNodes(int32_t extra);

 private:
  thMesh2D& m;
};

void MeshEdit::growNodes(int32_t extra) {
  non = m.non + extra;
  x = newArr<double>(non);
  y = newArr<double>(non);
  nt = newArr<int32_t>(non);
  std::copy(m.nxCoor, m.nxCoor + m.non, x.get());
  std::copy(m.nyCoor, m.nyCoor + m.non, y.get());
  std::copy(m.nt, m.nt + m.non, nt.get());
}

void MeshEdit::keepElements(const std::vector<char>& drop, bool compactVoronoi) {
  const int32_t* np = curNonpe();
  const int32_t* ep = curEn();
  int32_t kept = 0;
  int64_t entries = 0;
  for (int32_t e = 0; e < noe; e++)
    if (!drop[e]) {
      kept++;
      entries += np[e];
    }
  auto newNonpe = newArr<int32_t>(kept);
  auto newEn = newArr<int32_t>(entries);
  const bool vor = compactVoronoi && hasVoronoiArrays(m);
  std::unique_ptr<double[]> newVx = vor ? newArr<double>(kept) : nullptr,
                            newVy = vor ? newArr<double>(kept) : nullptr;
  int64_t k = 0, out = 0;
  for (int32_t e = 0, j = 0; e < noe; e++) {
    const int32_t n = np[e];
    if (!drop[e]) {
      std::copy(ep + k, ep + k + n, newEn.get() + out);
      out += n;
      newNonpe[j] = n;
      if (vor) {
        newVx[j] = m.eVoronoiX[e];
        newVy[j] = m.eVoronoiY[e];
      }
      j++;
    }
    k += n;
  }
  nonpe = std::move(newNonpe);
  en = std::move(newEn);
  if (vor) {
    replaceVoronoi = true;
    vx = std::move(newVx);
    vy = std::move(newVy);
  }
  noe = kept;
}

void MeshEdit::removeNodes(const std::vector<char>& drop) {
  std::vector<int32_t> newNo(non);
  int32_t kept = 0;
  for (int32_t i = 0; i < non; i++) newNo[i] = drop[i] ? -1 : kept++;
  auto nx = newArr<double>(kept), ny = newArr<double>(kept);
  auto ntNew = newArr<int32_t>(kept);
  const double* ox = x ? x.get() : m.nxCoor;
  const double* oy = y ? y.get() : m.nyCoor;
  const int32_t* ot = nt ? nt.get() : m.nt;
  for (int32_t i = 0; i < non; i++) {
    if (newNo[i] < 0) continue;
    nx[newNo[i]] = ox[i];
    ny[newNo[i]] = oy[i];
    ntNew[newNo[i]] = ot[i];
  }
  // The node list is rewritten in an array of this edit's own, never in the mesh's.
  int64_t entries = 0;
  const int32_t* np = curNonpe();
  for (int32_t e = 0; e < noe; e++) entries += np[e];
  if (!en) {
    en = newArr<int32_t>(entries);
    std::copy(m.en, m.en + entries, en.get());
  }
  for (int64_t k = 0; k < entries; k++) en[k] = newNo[en[k]];
  x = std::move(nx);
  y = std::move(ny);
  nt = std::move(ntNew);
  non = kept;
}

int32_t MeshEdit::commit(bool reInit) {
  // As a reader installs new arrays: the derived ones go first (nxUTM may alias the nxCoor
  // that is about to go). Arrays that copies of this mesh share stay with them.
  m.freeDerivedArrays();
  auto put = [this](auto*& field, auto& fresh) {
    if (!fresh) return;
    m.shares.release(field);
    field = fresh.release();
  };
  put(m.nxCoor, x);
  put(m.nyCoor, y);
  put(m.nt, nt);
  put(m.nonpe, nonpe);
  put(m.en, en);
  if (replaceVoronoi) {
    m.shares.release(m.eVoronoiX);
    m.shares.release(m.eVoronoiY);
    m.eVoronoiX = vx.release();
    m.eVoronoiY = vy.release();
  }
  m.non = non;
  m.noe = noe;
  if (reInit) return m.initMesh();
  m.nvf = m.nivf = m.tnbe = m.nBnd = 0;
  m.eni = bigarr::newArr<int32_t>(noe);
  int32_t run = 0;
  for (int32_t e = 0; e < noe; e++) {
    m.eni[e] = run;
    run += m.nonpe[e];
  }
  m.nevf = run;
  return 0;
}

// Checks that the nodes of a new element exist in a mesh of `count` nodes.
void checkElemNodes(const char* op, const int32_t* nodes, int64_t n, int32_t count) {
  for (int64_t k = 0; k < n; k++)
    if (nodes[k] < 0 || nodes[k] >= count)
      throw VException(std::string(op) + ": a new element refers to node " + str(nodes[k]) + ", but " +
                       rangeText("node", count) + ".");
}

// The nodes and elements of a mesh handed in by value, copied out before this mesh changes.
struct MeshCopy {
  std::vector<double> x, y;
  std::vector<int32_t> nt, nonpe, en;
};

// A mesh whose counts and arrays disagree cannot be taken apart safely.
void checkMeshArrays(const thMesh2D& g, const char* op, const std::string& which) {
  if (g.non < 0 || g.noe < 0 ||
      (g.non > 0 && (g.nxCoor == nullptr || g.nyCoor == nullptr || g.nt == nullptr)) ||
      (g.noe > 0 && (g.nonpe == nullptr || g.en == nullptr)))
    throw VException(std::string(op) + ": " + which + " has " + str(g.non) + " nodes and " + str(g.noe) +
                     " elements but not the arrays that hold them.");
  int64_t k = 0;
  for (int32_t e = 0; e < g.noe; e++) {
    if (g.nonpe[e] < 0 || g.nonpe[e] > maxNodesPerElem)
      throw VException(std::string(op) + ": element " + str(e) + " of " + which + " has " + str(g.nonpe[e]) +
                       " nodes; an element has 0 to " + str(maxNodesPerElem) + ".");
    for (int32_t i = 0; i < g.nonpe[e]; i++, k++)
      if (g.en[k] < 0 || g.en[k] >= g.non)
        throw VException(std::string(op) + ": element " + str(e) + " of " + which + " refers to node " +
                         str(g.en[k]) + ", but " + which + " has " + str(g.non) + " nodes.");
  }
}

MeshCopy copyOf(const thMesh2D& g, const char* op) {
  checkMeshArrays(g, op, "the given mesh");
  MeshCopy c;
  c.x.assign(g.nxCoor, g.nxCoor + g.non);
  c.y.assign(g.nyCoor, g.nyCoor + g.non);
  c.nt.assign(g.nt, g.nt + g.non);
  c.nonpe.assign(g.nonpe, g.nonpe + g.noe);
  c.en.assign(g.en, g.en + entryCount(g));
  return c;
}

// For each node of the given mesh g, the first node of m within tol = (x extent of both)/1e6 in x
// and in y, or -1. Each node of m is filed in a bucket grid as the box of half-width tol around
// it, so that a node of g finds its candidates in the one cell it falls in, in ascending order:
// the first that passes is the lowest-numbered.
std::vector<int32_t> mergePartners(const thMesh2D& m, const thMesh2D& g) {
  const int32_t non = m.non, gNon = g.non;
  const double* gx = g.nxCoor;
  const double* gy = g.nyCoor;
  double lo = INFINITY, hi = -INFINITY;
  for (int32_t i = 0; i < non; i++)
    if (std::isfinite(m.nxCoor[i])) lo = std::fmin(lo, m.nxCoor[i]), hi = std::fmax(hi, m.nxCoor[i]);
  for (int32_t i = 0; i < gNon; i++)
    if (std::isfinite(gx[i])) lo = std::fmin(lo, gx[i]), hi = std::fmax(hi, gx[i]);
  const double tol = hi > lo ? (hi - lo) / 1e6 : 0.0;
  thBoxGrid grid;
  {
    std::vector<double> bx0(non, 1.0), bx1(non, 0.0), by0(non, 0.0), by1(non, 0.0);  // empty: not filed
    for (int32_t i = 0; i < non; i++) {
      const double x = m.nxCoor[i], y = m.nyCoor[i];
      if (std::isfinite(x) && std::isfinite(y))
        bx0[i] = x - tol, bx1[i] = x + tol, by0[i] = y - tol, by1[i] = y + tol;
    }
    grid.build(bx0, by0, bx1, by1);
  }
  std::vector<int32_t> partner(gNon, -1);
  for (int32_t j = 0; j < gNon; j++) {
    const double x = gx[j], y = gy[j];
    if (grid.empty() || !grid.contains(x, y)) continue;
    const int32_t ci = grid.cellX(x), cj = grid.cellY(y);
    for (int32_t k = grid.begin(ci, cj); k < grid.end(ci, cj) && partner[j] < 0; k++) {
      const int32_t i = grid.items[k];
      if (std::fabs(m.nxCoor[i] - x) <= tol && std::fabs(m.nyCoor[i] - y) <= tol) partner[j] = i;
    }
  }
  return partner;
}

// Disposes of a mesh passed by value when the operation ends, also when it fails.
struct GivenMesh {
  thMesh2D& given;
  // It lets go of its arrays: those that its source (perhaps this very mesh) still holds stay.
  ~GivenMesh() { given.freeArrays(); }
};

// Compared as initMesh reads a projection: any text with LONLAT in it is longitude and latitude.
std::string projectionKey(const std::string& p) {
  const std::string u = VCppLib::VStr::toUpper(p);
  return u.find("LONLAT") != std::string::npos ? "LONLAT" : u;
}

// The UTM zone of a projection text: the integer after its first three characters.
int32_t zoneOfProjection(const std::string& projection) {
  const char* tail = projection.size() > 3 ? projection.c_str() + 3 : "";
  char* end = nullptr;
  const long z = std::strtol(tail, &end, 10);
  if (end == tail || z == 0 || z < -60 || z > 60)
    throw VException(
        "toLonLat: the projection '" + projection +
        "' names no UTM zone; it must be UTM followed by a zone of 1 to 60 (negative south of the equator).");
  return static_cast<int32_t>(z);
}

}  // namespace

int32_t thMesh2D::editRenumberNodes(int32_t n, const int32_t* nArr) {
  if (n < 2) return -1;
  checkMeshArrays(*this, "editRenumberNodes", "the mesh");
  checkCount("editRenumberNodes", "nodes", n, nArr);
  std::vector<int32_t> pos(std::max(non, 0), -1);  // [old node] position in nArr
  for (int32_t j = 0; j < n; j++) {
    checkNumber("editRenumberNodes", "node", nArr[j], non);
    if (pos[nArr[j]] >= 0)
      throw VException("editRenumberNodes: node " + str(nArr[j]) +
                       " stands twice in the list; a renumbering moves distinct nodes.");
    pos[nArr[j]] = j;
  }
  // The listed block starts where its first node stands among the unlisted nodes: after the
  // a - c unlisted nodes below a. This gives the numbers of the step-by-step table wherever that
  // table is a permutation (no other listed node above a, or none below it), and keeps to the same
  // rule where the table would give two nodes one number (listed nodes on both sides of a).
  const int32_t a = nArr[0];
  int32_t c = 0;
  for (int32_t j = 1; j < n; j++) c += nArr[j] < a ? 1 : 0;
  const int32_t start = a - c;
  std::vector<int32_t> newNo(non);
  for (int32_t o = 0, idx = 0; o < non; o++) {
    if (pos[o] >= 0) {
      newNo[o] = start + pos[o];
    } else {
      newNo[o] = idx < start ? idx : idx + n;
      idx++;
    }
  }
  MeshEdit ed(*this);
  const int64_t entries = entryCount(*this);
  ed.en = newArr<int32_t>(entries);
  for (int64_t k = 0; k < entries; k++) ed.en[k] = newNo[en[k]];
  ed.x = newArr<double>(non);
  ed.y = newArr<double>(non);
  for (int32_t o = 0; o < non; o++) {
    ed.x[newNo[o]] = nxCoor[o];
    ed.y[newNo[o]] = nyCoor[o];
  }
  // nt stays indexed by the old numbers: initMesh rebuilds the types of nodes on faces.
  return ed.commit(true);
}

int32_t thMesh2D::editDelNode(int32_t n, bool reInitMesh) {
  checkMeshArrays(*this, "editDelNode", "the mesh");
  checkNumber("editDelNode", "node", n, non);
  std::vector<char> dropElem(noe, 0);
  for (int64_t e = 0, k = 0; e < noe; e++)
    for (int32_t i = 0; i < nonpe[e]; i++, k++)
      if (en[k] == n) dropElem[e] = 1;
  std::vector<char> dropNode(non, 0);
  dropNode[n] = 1;
  MeshEdit ed(*this);
  ed.keepElements(dropElem, true);
  ed.removeNodes(dropNode);
  return ed.commit(reInitMesh);
}

int32_t thMesh2D::editDelElem(int32_t e, bool reInitMesh) {
  checkMeshArrays(*this, "editDelElem", "the mesh");
  checkNumber("editDelElem", "element", e, noe);
  std::vector<char> drop(noe, 0);
  drop[e] = 1;
  MeshEdit ed(*this);
  ed.keepElements(drop, true);
  return ed.commit(reInitMesh);
}

int32_t thMesh2D::editDelNodesElems(int32_t ne, const int32_t* e, int32_t nn, const int32_t* n) {
  checkMeshArrays(*this, "editDelNodesElems", "the mesh");
  checkCount("editDelNodesElems", "elements", ne, e);
  checkCount("editDelNodesElems", "nodes", nn, n);
  // A number listed twice is deleted once: counting it twice would leave the counts short of
  // the arrays.
  std::vector<char> dropElem(noe, 0), dropNode(non, 0);
  for (int32_t i = 0; i < ne; i++) {
    checkNumber("editDelNodesElems", "element", e[i], noe);
    dropElem[e[i]] = 1;
  }
  for (int32_t i = 0; i < nn; i++) {
    checkNumber("editDelNodesElems", "node", n[i], non);
    dropNode[n[i]] = 1;
  }
  // An element kept with a deleted node would get node -1, which no initMesh can take.
  for (int64_t el = 0, k = 0; el < noe; el++)
    for (int32_t i = 0; i < nonpe[el]; i++, k++)
      if (!dropElem[el] && dropNode[en[k]])
        throw VException("editDelNodesElems: element " + str(el) + " is kept but uses node " + str(en[k]) +
                         ", which is to be deleted; list the element for deletion as well.");
  // The Voronoi points go with their elements (a plain compaction). Moving point i to i+kept
  // after each old element, as the bulk deletion once did, hands the points of all elements after
  // the first deleted one to other elements, and two neighbours that get one point make the next
  // initMesh fail with "Voronoi point on face.".
  MeshEdit ed(*this);
  ed.keepElements(dropElem, true);
  ed.removeNodes(dropNode);
  return ed.commit(true);
}

int32_t thMesh2D::editDelUnusedNodes() {
  checkMeshArrays(*this, "editDelUnusedNodes", "the mesh");
  // Deleting the unused nodes one by one from the highest gives the same numbers as one pass.
  std::vector<char> drop(non, 1);
  const int64_t entries = entryCount(*this);
  for (int64_t k = 0; k < entries; k++)
    if (en[k] >= 0 && en[k] < non) drop[en[k]] = 0;
  MeshEdit ed(*this);
  ed.removeNodes(drop);
  return ed.commit(true);
}

int32_t thMesh2D::editAddNode(double x, double y, int32_t nodeType, bool reInitMesh) {
  checkMeshArrays(*this, "editAddNode", "the mesh");
  MeshEdit ed(*this);
  ed.growNodes(1);
  ed.x[non] = x;
  ed.y[non] = y;
  ed.nt[non] = nodeType;
  return ed.commit(reInitMesh);
}

namespace {

// Appends ne elements of nnPerElem[k] nodes each from elemNodes; each new element's Voronoi
// point (when the mesh has them) is the mean of its own nodes.
int32_t appendElements(thMesh2D& m, const char* op, int32_t ne, const int32_t* elemNodes,
                       const int32_t* nnPerElem, bool reInit) {
  checkCount(op, "elements", ne, nnPerElem);
  int64_t added = 0;
  for (int32_t k = 0; k < ne; k++) {
    if (nnPerElem[k] < 0 || nnPerElem[k] > maxNodesPerElem)
      throw VException(std::string(op) + ": an element has 0 to " + str(maxNodesPerElem) + " nodes, not " +
                       str(nnPerElem[k]) + ".");
    added += nnPerElem[k];
  }
  checkCount(op, "element nodes", added > 0 ? 1 : 0, elemNodes);
  checkMeshArrays(m, op, "the mesh");
  checkElemNodes(op, elemNodes, added, m.non);
  if (static_cast<int64_t>(m.noe) + ne > INT32_MAX)
    throw VException(std::string(op) + ": too many elements.");
  // The end of en is found from nonpe, so that additions may follow each other without initMesh.
  const int64_t entries = entryCount(m);
  MeshEdit ed(m);
  ed.noe = m.noe + ne;
  ed.nonpe = newArr<int32_t>(ed.noe);
  std::copy(m.nonpe, m.nonpe + m.noe, ed.nonpe.get());
  std::copy(nnPerElem, nnPerElem + ne, ed.nonpe.get() + m.noe);
  ed.en = newArr<int32_t>(entries + added);
  std::copy(m.en, m.en + entries, ed.en.get());
  std::copy(elemNodes, elemNodes + added, ed.en.get() + entries);
  if (hasVoronoiArrays(m)) {
    ed.replaceVoronoi = true;
    ed.vx = newArr<double>(ed.noe);
    ed.vy = newArr<double>(ed.noe);
    std::copy(m.eVoronoiX, m.eVoronoiX + m.noe, ed.vx.get());
    std::copy(m.eVoronoiY, m.eVoronoiY + m.noe, ed.vy.get());
    for (int32_t k = 0, at = 0; k < ne; at += nnPerElem[k], k++) {
      double sx = 0, sy = 0;
      for (int32_t i = 0; i < nnPerElem[k]; i++) {
        sx += m.nxCoor[elemNodes[at + i]];
        sy += m.nyCoor[elemNodes[at + i]];
      }
      ed.vx[m.noe + k] = sx / nnPerElem[k];
      ed.vy[m.noe + k] = sy / nnPerElem[k];
    }
  }
  return ed.commit(reInit);
}

}  // namespace

int32_t thMesh2D::editAddElem(int32_t n, const int32_t* elemNodes, bool reInitMesh) {
  return appendElements(*this, "editAddElem", 1, elemNodes, &n, reInitMesh);
}

int32_t thMesh2D::editAddElems(int32_t ne, const int32_t* elemNodes, const int32_t* nnPerElem,
                               bool reInitMesh) {
  return appendElements(*this, "editAddElems", ne, elemNodes, nnPerElem, reInitMesh);
}

namespace {

// Step 3 of the bulk addition: each new element's point is the mean over the first entries of
// elemNodes, as many as the element has nodes, so that all new elements of one node count get
// the same point. initMesh then tests these points by the 5 degree rule; it does not replace them.
void bulkVoronoi(MeshEdit& ed, const thMesh2D& m, int32_t ne, const int32_t* elemNodes,
                 const int32_t* nnPerElem) {
  ed.replaceVoronoi = true;
  ed.vx = newArr<double>(ed.noe);
  ed.vy = newArr<double>(ed.noe);
  std::copy(m.eVoronoiX, m.eVoronoiX + m.noe, ed.vx.get());
  std::copy(m.eVoronoiY, m.eVoronoiY + m.noe, ed.vy.get());
  double meanX[maxNodesPerElem + 1], meanY[maxNodesPerElem + 1];
  bool known[maxNodesPerElem + 1] = {false};
  for (int32_t k = 0; k < ne; k++) {
    const int32_t c = nnPerElem[k];
    if (!known[c]) {
      double sx = 0, sy = 0;
      for (int32_t i = 0; i < c; i++) {
        sx += ed.x[elemNodes[i]];
        sy += ed.y[elemNodes[i]];
      }
      meanX[c] = sx / c;
      meanY[c] = sy / c;
      known[c] = true;
    }
    ed.vx[m.noe + k] = meanX[c];
    ed.vy[m.noe + k] = meanY[c];
  }
}

}  // namespace

int32_t thMesh2D::editAddNodesElemsFull(int32_t nn, const double* nxc, const double* nyc,
                                        const int32_t* types, int32_t ne, int32_t* elemNodes,
                                        const int32_t* nnPerElem, int32_t base) {
  const char* op = "editAddNodesElems";
  checkCount(op, "nodes", nn, nxc);
  checkCount(op, "nodes", nn, nyc);
  checkCount(op, "nodes", nn, types);
  checkCount(op, "elements", ne, nnPerElem);
  int64_t added = 0;
  for (int32_t k = 0; k < ne; k++) {
    if (nnPerElem[k] < 1 || nnPerElem[k] > maxNodesPerElem)
      throw VException(std::string(op) + ": new element " + str(k) + " has " + str(nnPerElem[k]) +
                       " nodes; an element has 1 to " + str(maxNodesPerElem) + ".");
    added += nnPerElem[k];
  }
  checkCount(op, "element nodes", ne > 0 ? 1 : 0, elemNodes);
  checkMeshArrays(*this, op, "the mesh");
  if (static_cast<int64_t>(non) + nn > INT32_MAX || static_cast<int64_t>(noe) + ne > INT32_MAX)
    throw VException(std::string(op) + ": the mesh would have more than 2^31 nodes or elements.");
  // 1. numbers based at `base` in the added set become numbers after the existing nodes, in the
  // caller's array; checked first, so that a refused call leaves that array as it was too.
  const int64_t shift = (base >= 0 && ne >= 1) ? static_cast<int64_t>(non) - base : 0;
  for (int64_t k = 0; k < added; k++) {
    const int64_t v = elemNodes[k] + shift;
    if (v < 0 || v >= static_cast<int64_t>(non) + nn)
      throw VException(std::string(op) + ": a new element refers to node " + str(v) + ", but the mesh has " +
                       str(static_cast<int64_t>(non) + nn) + " nodes with the new ones.");
  }
  for (int64_t k = 0; k < added && shift != 0; k++) elemNodes[k] += static_cast<int32_t>(shift);

  // 2. nodes and elements appended
  MeshEdit ed(*this);
  ed.growNodes(nn);
  ed.noe = noe + ne;
  std::copy(nxc, nxc + nn, ed.x.get() + non);
  std::copy(nyc, nyc + nn, ed.y.get() + non);
  std::copy(types, types + nn, ed.nt.get() + non);
  const int64_t entries = entryCount(*this);
  ed.nonpe = newArr<int32_t>(ed.noe);
  std::copy(nonpe, nonpe + noe, ed.nonpe.get());
  std::copy(nnPerElem, nnPerElem + ne, ed.nonpe.get() + noe);
  ed.en = newArr<int32_t>(entries + added);
  std::copy(en, en + entries, ed.en.get());
  std::copy(elemNodes, elemNodes + added, ed.en.get() + entries);

  // 3.
  if (hasVoronoiArrays(*this)) bulkVoronoi(ed, *this, ne, elemNodes, nnPerElem);
  // 4.
  return ed.commit(true);
}

int32_t thMesh2D::editAddNodesElemsTypes(int32_t nn, const double* nxc, const double* nyc,
                                         const int32_t* types, int32_t ne, int32_t* elemNodes,
                                         int32_t nnPerElem, int32_t base) {
  const std::vector<int32_t> counts(std::max(ne, 0), nnPerElem);
  return editAddNodesElemsFull(nn, nxc, nyc, types, ne, elemNodes, counts.data(), base);
}

int32_t thMesh2D::editAddNodesElems(int32_t nn, const double* nxc, const double* nyc, int32_t ne,
                                    int32_t* elemNodes, int32_t addnType, int32_t nnPerElem, int32_t base) {
  const std::vector<int32_t> types(std::max(nn, 0), addnType);
  return editAddNodesElemsTypes(nn, nxc, nyc, types.data(), ne, elemNodes, nnPerElem, base);
}

int32_t thMesh2D::editAddMesh(thMesh2D m) {
  // Copied out first: the given mesh may share its arrays with this one, which changes below.
  MeshCopy c;
  {
    const GivenMesh disposal{m};
    c = copyOf(m, "editAddMesh");
  }
  // Coincident nodes stay double. The projection is not compared: a mesh file holds none, and
  // a mesh read to be added carries the default.
  return editAddNodesElemsFull(static_cast<int32_t>(c.x.size()), c.x.data(), c.y.data(), c.nt.data(),
                               static_cast<int32_t>(c.nonpe.size()), c.en.data(), c.nonpe.data(), 0);
}

thMesh2D* thMesh2D::mergeMesh(thMesh2D m) {
  // The given mesh is read where it is (this mesh does not change) and disposed of at the end.
  const GivenMesh disposal{m};
  if (projectionKey(m.projection) != projectionKey(projection))
    throw VException("mergeMesh: the meshes are in different projections (" + projection + " and " +
                     m.projection + "); bring one into the other's with toLonLat or toUTM first.");
  checkMeshArrays(m, "mergeMesh", "the given mesh");
  checkMeshArrays(*this, "mergeMesh", "this mesh");

  // 1.-2. partners, and numbers after this mesh's nodes for the nodes that have none
  std::vector<int32_t> newNo = mergePartners(*this, m);
  std::vector<int32_t> keptNodes;
  for (int32_t g = 0; g < m.non; g++) {
    if (newNo[g] >= 0) continue;
    newNo[g] = non + static_cast<int32_t>(keptNodes.size());
    keptNodes.push_back(g);
  }

  // 3.-4. the new mesh: this mesh's nodes and elements, then the given mesh's, mapped
  auto* r = new thMesh2D();
  std::unique_ptr<thMesh2D> guard(r);
  const int64_t entries = entryCount(*this), gEntries = entryCount(m);
  r->non = non + static_cast<int32_t>(keptNodes.size());
  r->noe = noe + m.noe;
  r->nxCoor = bigarr::newArr<double>(r->non);
  r->nyCoor = bigarr::newArr<double>(r->non);
  r->nt = bigarr::newArr<int32_t>(r->non);
  r->nonpe = bigarr::newArr<int32_t>(r->noe);
  r->en = bigarr::newArr<int32_t>(entries + gEntries);
  std::copy(nxCoor, nxCoor + non, r->nxCoor);
  std::copy(nyCoor, nyCoor + non, r->nyCoor);
  std::copy(nt, nt + non, r->nt);
  for (size_t k = 0; k < keptNodes.size(); k++) {
    r->nxCoor[non + k] = m.nxCoor[keptNodes[k]];
    r->nyCoor[non + k] = m.nyCoor[keptNodes[k]];
    r->nt[non + k] = m.nt[keptNodes[k]];
  }
  std::copy(nonpe, nonpe + noe, r->nonpe);
  std::copy(m.nonpe, m.nonpe + m.noe, r->nonpe + noe);
  std::copy(en, en + entries, r->en);
  for (int64_t k = 0; k < gEntries; k++) r->en[entries + k] = newNo[m.en[k]];
  // The projection stays at the default of a new mesh.
  if (hasVoronoiArrays(*this) && hasVoronoiArrays(m)) {
    r->eVoronoiX = bigarr::newArr<double>(r->noe);
    r->eVoronoiY = bigarr::newArr<double>(r->noe);
    std::copy(eVoronoiX, eVoronoiX + noe, r->eVoronoiX);
    std::copy(eVoronoiY, eVoronoiY + noe, r->eVoronoiY);
    std::copy(m.eVoronoiX, m.eVoronoiX + m.noe, r->eVoronoiX + noe);
    std::copy(m.eVoronoiY, m.eVoronoiY + m.noe, r->eVoronoiY + noe);
    r->hasVoronoi = true;
  }
  // 5.
  r->initMesh();
  return guard.release();
}

int32_t thMesh2D::editAddSquareSection(const double* nxc, const double* nyc, int32_t n, int32_t nLength,
                                       int32_t nWidth, double secWidth) {
  const char* op = "editAddSquareSection";
  checkCount(op, "line points", n, nxc);
  checkCount(op, "line points", n, nyc);
  if (n < 1) throw VException(std::string(op) + ": the line has no points.");
  if (nLength < 2)
    throw VException(std::string(op) + ": the band needs at least 2 points along the line, not " +
                     str(nLength) + ".");
  if (nWidth < 1)
    throw VException(std::string(op) + ": the band needs at least 1 cell across, not " + str(nWidth) + ".");
  if ((static_cast<int64_t>(nWidth) + 1) * nLength > INT32_MAX / 4)
    throw VException(std::string(op) + ": a band of " + str(nLength) + " by " + str(nWidth) +
                     " cells is too large for one mesh.");
  // 1. equal spacing along the line
  std::vector<double> rx(nLength), ry(nLength);
  double* px = rx.data();
  double* py = ry.data();
  VCppLib::resampleLine(nxc, nyc, n, nLength, px, py);
  // 2. the strip: node (i, k) is i(nWidth+1)+k, quadrilateral (i,k), (i+1,k), (i+1,k+1), (i,k+1)
  double *sx = nullptr, *sy = nullptr;
  int32_t nNodes = 0, nQuads = 0;
  int32_t* quads = nullptr;
  VCppLib::lineRibbon(px, py, nLength, sx, sy, nNodes, nQuads, quads, nWidth, secWidth);
  std::unique_ptr<double[]> ox(sx), oy(sy);
  std::unique_ptr<int32_t[]> q(quads);
  // 3.
  const std::vector<int32_t> types(nNodes, 0);
  return editAddNodesElemsTypes(nNodes, sx, sy, types.data(), nQuads, quads, 4, 0);
}

int32_t thMesh2D::updateVoronoiCoor(int32_t e, double x, double y, bool notImplemented) {
  if (notImplemented) throw VException("Not implemented.");
  checkNumber("updateVoronoiCoor", "element", e, noe);
  if (eVoronoiX == nullptr || eVoronoiY == nullptr)
    throw VException("updateVoronoiCoor: the mesh has no Voronoi points yet; initMesh must run first.");
  eVoronoiX[e] = x;
  eVoronoiY[e] = y;
  // The plain angle between each inner face and the line between the Voronoi points across it,
  // in radians (initMesh stores the deviation in degrees). Boundary faces have no element on
  // their far side and lie beyond anglesVF: they are left out. After an edit without initMesh
  // the faces are gone, and so is this step.
  if (anglesVF == nullptr || evf == nullptr || eni == nullptr || vfn == nullptr || vfe == nullptr) return 0;
  for (int32_t i = 0; i < nonpe[e]; i++) {
    const int32_t f = evf[eni[e] + i];
    if (f < 0 || f >= nivf || f >= anglesVFCap) continue;
    const int32_t a = vfn[2 * f], b = vfn[2 * f + 1], e0 = vfe[2 * f], e1 = vfe[2 * f + 1];
    anglesVF[f] = VCppLib::angleBetweenLineSegments(nxCoor[a], nyCoor[a], nxCoor[b], nyCoor[b], eVoronoiX[e0],
                                                    eVoronoiY[e0], eVoronoiX[e1], eVoronoiY[e1]);
  }
  return 0;
}

int32_t thMesh2D::toLonLat() {
  if (isLonLat) return 0;
  checkMeshArrays(*this, "toLonLat", "the mesh");
  const int32_t zone = zoneOfProjection(projection);
  for (int32_t i = 0; i < non; i++) {
    double lon, lat;
    VCppLib::UTM2latLon(nxCoor[i], nyCoor[i], zone, lon, lat);
    nxCoor[i] = lon;
    nyCoor[i] = lat;
  }
  projection = "LONLAT";
  initMesh();
  isLonLat = true;
  return 0;
}

int32_t thMesh2D::toUTM(int32_t zone) {
  if (!isLonLat) return 0;
  checkMeshArrays(*this, "toUTM", "the mesh");
  if (zone == 0 || zone < -60 || zone > 60)
    throw VException("toUTM: " + str(zone) +
                     " is no UTM zone; a zone is 1 to 60, negative south of the equator.");
  // The series is taken no further than 20 degrees from the zone's central meridian (a regional
  // mesh may well reach beyond the zone's own 6 degrees), within UTM's latitudes, and on the
  // hemisphere that the zone's sign names, so that toLonLat can bring every node back.
  const double central = std::abs(zone) * 6.0 - 183.0, reach = 20.0;
  const double latLo = zone > 0 ? 0.0 : -80.0, latHi = zone > 0 ? 84.0 : 0.0;
  for (int32_t i = 0; i < non; i++) {
    const double d = std::remainder(nxCoor[i] - central, 360.0);
    const bool latOk =
        zone > 0 ? (nyCoor[i] >= latLo && nyCoor[i] <= latHi) : (nyCoor[i] >= latLo && nyCoor[i] < latHi);
    if (!(std::fabs(d) <= reach) || !latOk)
      throw VException("toUTM: node " + str(i) + " at longitude " + str(nxCoor[i]) + ", latitude " +
                       str(nyCoor[i]) + " lies outside the range of UTM zone " + str(zone) + " (longitudes " +
                       str(central - reach) + " to " + str(central + reach) + ", latitudes " + str(latLo) +
                       " to " + str(latHi) + ").");
  }
  for (int32_t i = 0; i < non; i++) {
    double x, y;
    VCppLib::latLon2UTM(nxCoor[i], nyCoor[i], zone, x, y);
    nxCoor[i] = x;
    nyCoor[i] = y;
  }
  projection = "UTM" + str(zone);
  return initMesh();
}

}  // namespace thalmod
