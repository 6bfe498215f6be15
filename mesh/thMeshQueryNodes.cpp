// Queries around nodes and along the outer ring of an initialised mesh.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"

namespace thalmod {

namespace {

int32_t otherNode(const thMesh2D& m, int32_t f, int32_t n) {
  return m.vfn[2 * f] == n ? m.vfn[2 * f + 1] : m.vfn[2 * f];
}

// Entries of `keys` sorted by the library's quicksort with their positions as payload, and the
// run of entries of each key: key k owns sorted entries first[k]..first[k+1]-1. Keys must lie in
// 0..nKeys-1.
struct SortedKeys {
  std::vector<int32_t> key, pos, first;
};

SortedKeys sortByKey(const int32_t* keys, int32_t n, int32_t nKeys) {
  SortedKeys s;
  s.key.assign(keys, keys + n);
  s.pos.resize(static_cast<size_t>(n));
  std::iota(s.pos.begin(), s.pos.end(), 0);
  if (n > 0) {
    int32_t* k = s.key.data();
    int32_t* p = s.pos.data();
    VCppLib::sortPaired(k, p, 0, n - 1);
  }
  s.first.assign(static_cast<size_t>(nKeys) + 1, 0);
  for (int32_t v : s.key) s.first[static_cast<size_t>(v) + 1]++;
  for (int32_t k = 0; k < nKeys; k++) s.first[k + 1] += s.first[k];
  return s;
}

// items ordered counter-clockwise (from just past the positive x axis) by their points around
// (cx, cy), or around the points' mean when useMean.
void sortCounterClockwise(std::vector<int32_t>& items, std::vector<double>& px, std::vector<double>& py,
                          double cx, double cy, bool useMean) {
  const int32_t n = static_cast<int32_t>(items.size());
  int32_t* order = useMean ? VCppLib::sortAroundPoint(px.data(), py.data(), n, 0.0, false)
                           : VCppLib::sortAroundPoint(px.data(), py.data(), n, cx, cy, 0.0, false);
  std::vector<int32_t> sorted(items.size());
  for (int32_t i = 0; i < n; i++) sorted[i] = items[order[i]];
  delete[] order;
  items.swap(sorted);
}

[[noreturn]] void ringFailure(const std::string& what) {
  throw VCppLib::VException(what + thGlobal::errTail);
}

}  // namespace

// Faces are gathered per node from vfn sorted by node; any number of faces per node is served
// (the lists grow as needed instead of holding 100 entries).
std::vector<int32_t>* thMesh2D::nodevf() const {
  auto* lists = new std::vector<int32_t>[static_cast<size_t>(std::max(non, 0))];
  if (nvf < 1 || vfn == nullptr) return lists;
  const SortedKeys s = sortByKey(vfn, 2 * nvf, non);
  std::vector<double> px, py;
  for (int32_t n = 0; n < non; n++) {
    std::vector<int32_t>& faces = lists[n];
    px.clear();
    py.clear();
    for (int32_t k = s.first[n]; k < s.first[n + 1]; k++) {
      const int32_t f = s.pos[k] / 2;
      faces.push_back(f);
      px.push_back(vfxCoor[f]);
      py.push_back(vfyCoor[f]);
    }
    sortCounterClockwise(faces, px, py, nxCoor[n], nyCoor[n], false);
  }
  return lists;
}

std::vector<int32_t>* thMesh2D::nodeElems(bool sorted) const {
  auto* lists = new std::vector<int32_t>[static_cast<size_t>(std::max(non, 0))];
  if (nevf < 1 || en == nullptr || eni == nullptr) return lists;
  const SortedKeys s = sortByKey(en, nevf, non);
  std::vector<double> px, py;
  for (int32_t n = 0; n < non; n++) {
    std::vector<int32_t>& elems = lists[n];
    px.clear();
    py.clear();
    for (int32_t k = s.first[n]; k < s.first[n + 1]; k++) {
      // The owning element: the last whose first entry is not beyond this entry.
      const int32_t e = static_cast<int32_t>(std::upper_bound(eni, eni + noe, s.pos[k]) - eni) - 1;
      elems.push_back(e);
      px.push_back(exCoor[e]);
      py.push_back(eyCoor[e]);
    }
    if (sorted && elems.size() > 1) sortCounterClockwise(elems, px, py, 0, 0, true);
  }
  return lists;
}

// nnnIdx[n] is the offset of node n's first neighbour in nn (0 for node 0).
int32_t thMesh2D::nodeNeighbors(int32_t*& nnnPerNode, int32_t*& nnnIdx, int32_t*& nn) const {
  std::vector<int32_t>* lists = nodevf();
  nnnPerNode = new int32_t[std::max(non, 0)];
  nnnIdx = new int32_t[std::max(non, 0)];
  int32_t total = 0;
  for (int32_t n = 0; n < non; n++) {
    nnnPerNode[n] = static_cast<int32_t>(lists[n].size());
    nnnIdx[n] = total;
    total += nnnPerNode[n];
  }
  nn = new int32_t[total];
  for (int32_t n = 0, k = 0; n < non; n++)
    for (int32_t f : lists[n]) nn[k++] = otherNode(*this, f, n);
  delete[] lists;
  return total;
}

// Each node's faces in face number order (what a scan of all faces per node meets), found by one
// counting sort. An element slot that is a ghost column or land is stored as -1 and clears the
// node's all-triangles flag: it is no element, and no triangle.
int32_t thMesh2D::nodeInfo(int32_t*& nbrCount, int32_t*& nbrs, int32_t*& elems, bool*& allTri) const {
  const int32_t nn = std::max(non, 0);
  nbrCount = new int32_t[nn]();
  allTri = new bool[nn];
  std::fill(allTri, allTri + nn, true);
  const int32_t nf = vfn != nullptr ? nvf : 0;
  std::vector<int32_t> start(static_cast<size_t>(nn) + 1, 0);
  for (int32_t f = 0; f < nf; f++) {
    nbrCount[vfn[2 * f]]++;
    if (vfn[2 * f + 1] != vfn[2 * f]) nbrCount[vfn[2 * f + 1]]++;
  }
  for (int32_t n = 0; n < nn; n++) start[n + 1] = start[n] + nbrCount[n];
  const int32_t total = start[nn];
  std::vector<int32_t> faceAt(static_cast<size_t>(total)), next(start.begin(), start.end() - 1);
  for (int32_t f = 0; f < nf; f++) {
    faceAt[next[vfn[2 * f]]++] = f;
    if (vfn[2 * f + 1] != vfn[2 * f]) faceAt[next[vfn[2 * f + 1]]++] = f;
  }
  nbrs = new int32_t[total];
  elems = new int32_t[total];
  for (int32_t n = 0; n < nn; n++) {
    for (int32_t k = start[n]; k < start[n + 1]; k++) {
      const int32_t f = faceAt[k];
      const bool first = vfn[2 * f] == n;
      nbrs[k] = first ? vfn[2 * f + 1] : vfn[2 * f];
      const bool picked = std::find(elems + start[n], elems + k, vfe[2 * f]) != elems + k;
      const int32_t e = vfe[2 * f + ((first || picked) ? 1 : 0)];
      elems[k] = (e >= 0 && e < noe) ? e : -1;
      if (elems[k] < 0 || nonpe[elems[k]] != 3) allTri[n] = false;
    }
  }
  return total;
}

int32_t thMesh2D::faceBoundary(int32_t f) const {
  for (int32_t k = 0; k < nBnd; k++)
    if (f >= nivf + bndFirst[k] && f <= nivf + bndFirst[k] + bndNoFaces[k] - 1) return k;
  return -1;
}

int32_t thMesh2D::boundaryIndex(int32_t id) const {
  for (int32_t k = 0; k < nBnd; k++)
    if (bndId[k] == id) return k;
  return -1;
}

// The ring is walked from the highest node along boundary faces (open and closed alike).
std::vector<int32_t> thMesh2D::circumferenceFaces() {
  int32_t top = -1;
  for (int32_t n = 0; n < non; n++) {
    if (top < 0 || nxCoor[n] > xMax) xMax = nxCoor[n];
    if (top < 0 || nxCoor[n] < xMin) xMin = nxCoor[n];
    if (top < 0 || nyCoor[n] < yMin) yMin = nyCoor[n];
    if (top < 0 || nyCoor[n] > yMax) {
      yMax = nyCoor[n];
      top = n;
    }
  }
  std::vector<int32_t>* lists = nodevf();
  const std::vector<std::vector<int32_t>> at(lists, lists + std::max(non, 0));
  delete[] lists;

  // The steepest boundary face at the top node starts the ring.
  const double pi = std::atan(1.0) * 4;
  int32_t start = -1;
  double best = -1e37;
  for (int32_t f : top >= 0 ? at[top] : std::vector<int32_t>()) {
    if (vft[f] <= 0) continue;
    const int32_t a = vfn[2 * f], b = vfn[2 * f + 1];
    double ang = VCppLib::angleBetweenLineSegments(nxCoor[a], nyCoor[a], nxCoor[a] + vfl[f], nyCoor[a],
                                                   nxCoor[a], nyCoor[a], nxCoor[b], nyCoor[b]);
    if (ang > pi * 0.5) ang = pi - ang;
    if (ang > best) {
      best = ang;
      start = f;
    }
  }
  if (start < 0)
    ringFailure("Could not determine first face in cirmumference faces - something wrong with mesh. ");

  std::vector<int32_t> ring{start};
  int32_t walk = otherNode(*this, start, top);
  for (;;) {
    int32_t face = -1;
    for (int32_t f : at[walk])
      if (vft[f] > 0 && f != ring.back()) {
        face = f;
        break;
      }
    if (face < 0) ringFailure("Could not determine cirmumference faces - something wrong with mesh. ");
    if (face != start) {
      ring.push_back(face);
      walk = otherNode(*this, face, walk);
    }
    if (static_cast<int32_t>(ring.size()) > nvf - nivf)
      ringFailure(
          "Could not determine cirmumference faces - something wrong with mesh. A node with more than 2 bnd "
          "faces ?");
    if (face == start) return ring;
  }
}

int32_t thMesh2D::circumferenceNodes(int32_t*& nodes) {
  const std::vector<int32_t> ring = circumferenceFaces();
  const int32_t k = static_cast<int32_t>(ring.size());
  nodes = new int32_t[k];
  // The first node is the end of the first face that the second face does not hold.
  const int32_t f0 = ring[0];
  const bool secondHoldsFirst =
      k > 1 && (vfn[2 * ring[1]] == vfn[2 * f0] || vfn[2 * ring[1] + 1] == vfn[2 * f0]);
  nodes[0] = secondHoldsFirst ? vfn[2 * f0 + 1] : vfn[2 * f0];
  for (int32_t i = 1; i < k; i++) nodes[i] = otherNode(*this, ring[i - 1], nodes[i - 1]);
  return k;
}

void thMesh2D::initCircumference() {
  if (circumInit) return;
  int32_t* nodes = nullptr;
  nCircum = circumferenceNodes(nodes);
  circumX = new double[nCircum];
  circumY = new double[nCircum];
  for (int32_t i = 0; i < nCircum; i++) {
    circumX[i] = nxCoor[nodes[i]];
    circumY[i] = nyCoor[nodes[i]];
  }
  delete[] nodes;
  circumInit = true;
}

bool thMesh2D::pointInDomain(double x, double y) {
  initCircumference();
  if (x < xMin || x > xMax || y < yMin || y > yMax) return false;
  return VCppLib::pointInPolygon(nCircum, circumX, circumY, x, y);
}

}  // namespace thalmod
