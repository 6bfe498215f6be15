// The faces of the mesh in their fixed order: discovery through node-keyed lists, the numbering
// by type with each open boundary ordered along the boundary, the element face lists, the sides,
// signs and orientation of the faces, and the node types that follow from them.
#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"
#include "support/thBigArrays.h"

namespace thalmod {

namespace {

// Type of a face met for the first time, from the types of its two nodes. A corner node
// -(100a+b) lends the face the type of the other node when that is a or b.
int32_t newFaceType(int32_t typeA, int32_t typeB) {
  int32_t type = typeA == typeB ? typeA : 99;
  if (typeA < 0 || typeB < 0) {
    int64_t neg = typeA < 0 ? typeA : typeB;
    int64_t other = typeA < 0 ? typeB : typeA;
    int64_t a = neg / -100;
    int64_t b = -neg - 100 * a;
    if (other == a || other == b) type = static_cast<int32_t>(other);
  }
  // Node types outside 0..99, or two neighbouring corners of one code, name no boundary:
  // such a face is taken as closed.
  if (type < 0 || type > 99) type = 99;
  return type;
}

// Faces as first met, before they get their final numbers.
struct TempFaces {
  bigarr::vector<int32_t> a, b;     // [temporary face] nodes in the order of first encounter
  bigarr::vector<int32_t> type;     // [temporary face]
  bigarr::vector<int32_t> elem;     // [temporary face] element that met it first
  bigarr::vector<int32_t> ofEntry;  // [element entry] temporary face of that entry
};

// Face discovery through node-keyed lists: each face is filed under its lower node, so a lookup
// scans only the faces of one node.
void discoverFaces(const thMesh2D& m, TempFaces& tf) {
  const int32_t noe = m.noe, non = m.non;
  const int32_t* en = m.en;
  const int32_t* nonpe = m.nonpe;
  const int32_t* eni = m.eni;
  bigarr::vector<int32_t> first(static_cast<size_t>(non) + 1, 0);
  for (int32_t e = 0; e < noe; e++) {
    const int32_t n = nonpe[e];
    const int32_t* nd = en + eni[e];
    for (int32_t i = 0; i < n; i++) {
      const int32_t a = nd[i], b = nd[i + 1 < n ? i + 1 : 0];
      first[std::min(a, b) + 1]++;
    }
  }
  for (int32_t i = 0; i < non; i++) first[i + 1] += first[i];
  bigarr::vector<int32_t> fill(first.begin(), first.end() - 1);
  struct Filed {
    int32_t otherNode, face;
  };
  bigarr::vector<Filed> filed(m.nevf);  // [entry of the node lists]

  tf.a.resize(m.nevf);
  tf.b.resize(m.nevf);
  tf.type.resize(m.nevf);
  tf.elem.resize(m.nevf);
  tf.ofEntry.resize(m.nevf);
  int32_t nf = 0;
  for (int32_t e = 0; e < noe; e++) {
    const int32_t n = nonpe[e], k0 = eni[e];
    const int32_t* nd = en + k0;
    for (int32_t i = 0; i < n; i++) {
      const int32_t nodeA = nd[i], nodeB = nd[i + 1 < n ? i + 1 : 0];
      const int32_t lo = std::min(nodeA, nodeB), hi = std::max(nodeA, nodeB);
      int32_t found = -1;
      const int32_t end = fill[lo];
      for (int32_t j = first[lo]; j < end; j++) {
        if (filed[j].otherNode == hi) {
          found = filed[j].face;
          break;
        }
      }
      if (found >= 0) {
        tf.type[found] = 0;  // met twice: inner
      } else {
        found = nf++;
        tf.a[found] = nodeA;
        tf.b[found] = nodeB;
        tf.type[found] = newFaceType(m.nt[nodeA], m.nt[nodeB]);
        tf.elem[found] = e;
        filed[end] = {hi, found};
        fill[lo] = end + 1;
      }
      tf.ofEntry[k0 + i] = found;
    }
  }
  tf.a.resize(nf);
  tf.b.resize(nf);
  tf.type.resize(nf);
  tf.elem.resize(nf);
}

// Orders the faces of one open boundary along the boundary: from a free end that has the domain
// on its left, or from the first face of a ring. Returns positions in L in walk order.
std::vector<int32_t> walkBoundary(const thMesh2D& m, const TempFaces& tf, const std::vector<int32_t>& L) {
  const int32_t c = static_cast<int32_t>(L.size());
  // (node, position in L), sorted: the faces at a node in the order of L
  std::vector<std::pair<int32_t, int32_t>> at;
  at.reserve(2 * static_cast<size_t>(c));
  for (int32_t i = 0; i < c; i++) {
    at.emplace_back(tf.a[L[i]], i);
    if (tf.b[L[i]] != tf.a[L[i]]) at.emplace_back(tf.b[L[i]], i);
  }
  std::sort(at.begin(), at.end());
  auto facesAt = [&at](int32_t node) {
    auto lo = std::lower_bound(at.begin(), at.end(), std::make_pair(node, INT32_MIN));
    auto hi = std::upper_bound(at.begin(), at.end(), std::make_pair(node, INT32_MAX));
    return std::make_pair(lo, hi);
  };
  auto shared = [&](int32_t node, int32_t self) {
    auto [lo, hi] = facesAt(node);
    for (auto it = lo; it != hi; ++it)
      if (it->second != self) return true;
    return false;
  };

  std::vector<char> visited(c, 0), rejected(c, 0);
  int32_t scan = 0, firstFree = 0;
  // The start of a chain among the faces not yet walked; the walk node goes into walkNode.
  auto findStart = [&](int32_t& walkNode) {
    for (; scan < c; scan++) {
      const int32_t i = scan;
      if (visited[i] || rejected[i]) continue;
      const int32_t a = tf.a[L[i]], b = tf.b[L[i]];
      const bool aShared = shared(a, i), bShared = shared(b, i);
      if (!(aShared && bShared)) {
        const int32_t e = tf.elem[L[i]];
        const double ex = m.exCoor[e], ey = m.eyCoor[e];
        const double* x = m.nxCoor;
        const double* y = m.nyCoor;
        if (!aShared && (x[b] - x[a]) * (ey - y[a]) - (y[b] - y[a]) * (ex - x[a]) > 0) {
          walkNode = b;
          return i;
        }
        if (!bShared && (x[a] - x[b]) * (ey - y[b]) - (y[a] - y[b]) * (ex - x[b]) > 0) {
          walkNode = a;
          return i;
        }
      }
      rejected[i] = 1;
    }
    while (firstFree < c && visited[firstFree]) firstFree++;
    walkNode = tf.a[L[firstFree]];
    return firstFree;
  };

  std::vector<int32_t> order;
  order.reserve(c);
  int32_t walk = 0;
  int32_t cur = findStart(walk);
  visited[cur] = 1;
  order.push_back(cur);
  for (int32_t k = 1; k < c; k++) {
    int32_t next = -1;
    auto [lo, hi] = facesAt(walk);
    for (auto it = lo; it != hi; ++it) {
      if (it->second != cur && !visited[it->second]) {
        next = it->second;
        break;
      }
    }
    if (next >= 0) {
      walk = tf.a[L[next]] == walk ? tf.b[L[next]] : tf.a[L[next]];
    } else {
      // The chain has ended before all faces of this number were met: the number forms several
      // chains, and the next one is walked in the same way.
      next = findStart(walk);
    }
    cur = next;
    visited[cur] = 1;
    order.push_back(cur);
  }
  return order;
}

template <typename T>
void alloc(T*& p, int64_t n) {
  p = bigarr::newArr<T>(n);
}

// Final face numbers by a stable counting sort on the type; each open boundary's faces are then
// renumbered along the boundary. Sets nivf, tnbe and nBnd. Returns [temporary face] final number.
bigarr::vector<int32_t> numberFaces(thMesh2D& m, const TempFaces& tf) {
  const int32_t nvf = m.nvf;
  int32_t count[101] = {0};
  for (int32_t f = 0; f < nvf; f++) count[tf.type[f] + 1]++;
  m.nivf = count[1];
  m.tnbe = nvf - count[100] - m.nivf;
  for (int32_t t = 1; t < 101; t++) count[t] += count[t - 1];
  bigarr::vector<int32_t> finalNo(nvf);
  std::vector<std::vector<int32_t>> openFaces(99);  // [type] temporary faces of open types
  for (int32_t f = 0; f < nvf; f++) {
    finalNo[f] = count[tf.type[f]]++;
    if (tf.type[f] >= 1 && tf.type[f] <= 98) openFaces[tf.type[f]].push_back(f);
  }
  m.nBnd = 0;
  int32_t base = m.nivf;
  for (int32_t t = 1; t <= 98; t++) {
    const std::vector<int32_t>& L = openFaces[t];
    if (L.empty()) continue;
    m.nBnd++;
    std::vector<int32_t> order = walkBoundary(m, tf, L);
    for (size_t k = 0; k < order.size(); k++) finalNo[L[order[k]]] = base + static_cast<int32_t>(k);
    base += static_cast<int32_t>(L.size());
  }
  return finalNo;
}

// The element face lists (evf sorted by face type with the quicksort of sortPaired), the inner and
// open face counts per element, and vft and vfn.
void fillFaceLists(thMesh2D& m, const TempFaces& tf, const bigarr::vector<int32_t>& finalNo) {
  alloc(m.evf, m.nevf);
  alloc(m.vft, m.nvf);
  alloc(m.vfn, 2 * static_cast<int64_t>(m.nvf));
  alloc(m.nivfpe, m.noe);
  alloc(m.nbvfpe, m.noe);
  for (int32_t t = 0; t < m.nvf; t++) {
    const int32_t f = finalNo[t];
    m.vft[f] = tf.type[t];
    m.vfn[2 * f] = tf.a[t];
    m.vfn[2 * f + 1] = tf.b[t];
  }
  // The quicksort moves faces by their types alone, so the order that it leaves for n equal types
  // is worked out once and serves every element whose faces are all of one type.
  std::vector<std::vector<int32_t>> equalOrder(maxNodesPerElem + 1);
  for (int32_t e = 0; e < m.noe; e++) {
    const int32_t n = m.nonpe[e], k0 = m.eni[e];
    int32_t inner = 0, open = 0;
    int32_t keys[maxNodesPerElem], faces[maxNodesPerElem];
    bool oneType = true;
    for (int32_t i = 0; i < n; i++) {
      const int32_t t = tf.ofEntry[k0 + i];
      const int32_t type = tf.type[t];
      if (type == 0)
        inner++;
      else if (type < 99)
        open++;
      keys[i] = type;
      faces[i] = finalNo[t];
      oneType = oneType && type == keys[0];
    }
    m.nivfpe[e] = inner;
    m.nbvfpe[e] = open;
    if (n < 1) continue;
    if (oneType) {
      std::vector<int32_t>& order = equalOrder[n];
      if (order.empty()) {
        std::vector<int32_t> equalKeys(n, 0);
        order.resize(n);
        for (int32_t i = 0; i < n; i++) order[i] = i;
        int32_t* kp = equalKeys.data();
        int32_t* op = order.data();
        VCppLib::sortPaired(kp, op, 0, n - 1);
      }
      for (int32_t i = 0; i < n; i++) m.evf[k0 + i] = faces[order[i]];
    } else {
      int32_t* kp = keys;
      int32_t* fp = faces;
      VCppLib::sortPaired(kp, fp, 0, n - 1);
      for (int32_t i = 0; i < n; i++) m.evf[k0 + i] = faces[i];
    }
  }
}

// vfe: the lower and the higher element of an inner face; the element and minus the type of a
// boundary face (initBoundaries puts the ghost column there for open faces).
void fillFaceSides(thMesh2D& m) {
  const int64_t n2 = 2 * static_cast<int64_t>(m.nvf);
  alloc(m.vfe, n2);
  int32_t* vfe = m.vfe;
  std::fill(vfe, vfe + n2, -1);
  for (int32_t e = 0; e < m.noe; e++) {
    const int32_t n = m.nonpe[e], k0 = m.eni[e];
    for (int32_t i = 0; i < n; i++) {
      const int32_t f = m.evf[k0 + i];
      if (i < m.nivfpe[e]) {
        if (vfe[2 * f] < 0)
          vfe[2 * f] = e;
        else
          vfe[2 * f + 1] = e;
      } else {
        vfe[2 * f] = e;
        vfe[2 * f + 1] = -m.vft[f];
      }
    }
  }
}

// What lies across each element face, and the sign of the face for the element.
void fillNeighboursAndSigns(thMesh2D& m) {
  alloc(m.evfSign, m.nevf);
  alloc(m.evfNbr, m.nevf);
  const int32_t* vfe = m.vfe;
  for (int32_t e = 0; e < m.noe; e++) {
    const int32_t n = m.nonpe[e], k0 = m.eni[e];
    for (int32_t i = 0; i < n; i++) {
      const int32_t f = m.evf[k0 + i];
      m.evfNbr[k0 + i] = vfe[2 * f] == e ? vfe[2 * f + 1] : vfe[2 * f];
      if (m.vft[f] == 0)
        m.evfSign[k0 + i] = vfe[2 * f] == e ? 1 : -1;
      else if (m.vft[f] == 99)
        m.evfSign[k0 + i] = 0;
      else
        m.evfSign[k0 + i] = 1;
    }
  }
}

// Inner and open faces run against the node order of their first element.
void orientFaces(thMesh2D& m) {
  int32_t* vfn = m.vfn;
  for (int32_t e = 0; e < m.noe; e++) {
    const int32_t n = m.nonpe[e], k0 = m.eni[e];
    const int32_t* nd = m.en + k0;
    for (int32_t i = 0; i < n; i++) {
      if (m.evfSign[k0 + i] != 1) continue;
      const int32_t f = m.evf[k0 + i];
      int32_t p = 0;
      while (p < n && nd[p] != vfn[2 * f]) p++;
      if (p < n && nd[p + 1 < n ? p + 1 : 0] == vfn[2 * f + 1]) std::swap(vfn[2 * f], vfn[2 * f + 1]);
    }
  }
}

// Node types from the faces: inner, then closed, then open, so that open boundaries win at
// shared nodes, and a later boundary over an earlier one.
void nodeTypesFromFaces(thMesh2D& m) {
  int32_t* nt = m.nt;
  const int32_t* vfn = m.vfn;
  const int32_t nivf = m.nivf, open = m.nivf + m.tnbe;
  for (int32_t f = 0; f < nivf; f++) nt[vfn[2 * f]] = nt[vfn[2 * f + 1]] = 0;
  for (int32_t f = open; f < m.nvf; f++) nt[vfn[2 * f]] = nt[vfn[2 * f + 1]] = m.vft[f];
  for (int32_t f = nivf; f < open; f++) nt[vfn[2 * f]] = nt[vfn[2 * f + 1]] = m.vft[f];
}

}  // namespace

void thMesh2D::initFaces() {
  for (int32_t i = 0; i < non; i++)
    if (nt[i] == 0) nt[i] = 99;
  TempFaces tf;
  discoverFaces(*this, tf);
  nvf = static_cast<int32_t>(tf.a.size());
  const bigarr::vector<int32_t> finalNo = numberFaces(*this, tf);
  fillFaceLists(*this, tf, finalNo);
  fillFaceSides(*this);
  fillNeighboursAndSigns(*this);
  orientFaces(*this);
  nodeTypesFromFaces(*this);
}

}  // namespace thalmod
