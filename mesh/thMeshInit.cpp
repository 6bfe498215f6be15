// initMesh and the topology it derives: faces in their fixed order, the element face lists, the
// boundary walk, the open boundaries and the element neighbour lists.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "mesh/thBigArrays.h"
#include "mesh/thMesh2D.h"
#include "mesh/thMeshUtil.h"
#include "support/VGeom.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;

namespace {

// The working array in which an element's faces are sorted has 50 entries.
constexpr int32_t maxNodesPerElem = 50;

// Going on with such input would read or write outside the arrays: stop with a clear sentence.
void checkPrimaryArrays(const thMesh2D& m) {
  if (m.non < 0 || m.noe < 0)
    throw VException("initMesh: the mesh has " + std::to_string(m.non) + " nodes and " +
                     std::to_string(m.noe) + " elements; neither count may be negative.");
  if (m.non > 0 && (m.nxCoor == nullptr || m.nyCoor == nullptr || m.nt == nullptr))
    throw VException("initMesh: the node arrays of a mesh of " + std::to_string(m.non) +
                     " nodes are missing.");
  if (m.noe > 0 && (m.nonpe == nullptr || m.en == nullptr))
    throw VException("initMesh: the element arrays of a mesh of " + std::to_string(m.noe) +
                     " elements are missing.");
  int64_t entries = 0;
  for (int32_t e = 0; e < m.noe; e++) {
    if (m.nonpe[e] < 0 || m.nonpe[e] > maxNodesPerElem)
      throw VException("initMesh: element " + std::to_string(e) + " has " + std::to_string(m.nonpe[e]) +
                       " nodes; an element has 0 to " + std::to_string(maxNodesPerElem) + " nodes.");
    entries += m.nonpe[e];
  }
  if (entries > INT32_MAX) throw VException("initMesh: the elements have more than 2^31 nodes in all.");
  int64_t k = 0;
  for (int32_t e = 0; e < m.noe; e++) {
    for (int32_t i = 0; i < m.nonpe[e]; i++, k++) {
      if (m.en[k] < 0 || m.en[k] >= m.non)
        throw VException("initMesh: element " + std::to_string(e) + " refers to node " +
                         std::to_string(m.en[k]) + ", but the mesh has " + std::to_string(m.non) +
                         " nodes.");
    }
  }
}

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

}  // namespace

int32_t thMesh2D::initMesh() {
  checkPrimaryArrays(*this);
  freeDerivedArrays();
  *ownsArrays = 1;
  // Not initialised until the run completes: a run that fails leaves the flag unset.
  *initFlag = 0;

  // 1. first entry of each element
  eni = bigarr::newArr<int32_t>(noe);
  int32_t run = 0;
  for (int32_t e = 0; e < noe; e++) {
    eni[e] = run;
    run += nonpe[e];
  }
  nevf = run;

  // 2. projection
  isLonLat = VCppLib::VStr::toUpper(projection).find("LONLAT") != std::string::npos;

  // 3. means
  double sx = 0, sy = 0;
  for (int32_t i = 0; i < non; i++) {
    sx += nxCoor[i];
    sy += nyCoor[i];
  }
  xMean = sx / non;
  yMean = sy / non;

  // 4. metres
  if (isLonLat) {
    utmZone = meshutil::utmZoneOf(xMean, yMean);
    nxUTM = bigarr::newArr<double>(non);
    nyUTM = bigarr::newArr<double>(non);
    for (int32_t i = 0; i < non; i++) VCppLib::latLon2UTM(nxCoor[i], nyCoor[i], utmZone, nxUTM[i], nyUTM[i]);
  } else {
    nxUTM = nxCoor;
    nyUTM = nyCoor;
    utmZone = 32;
  }

  // 5. element arrays
  eArea = bigarr::newArr<double>(noe);
  eAreaInv = bigarr::newArr<double>(noe);
  exCoor = bigarr::newArr<double>(noe);
  eyCoor = bigarr::newArr<double>(noe);
  totArea = areaCenterX = areaCenterY = 0;

  // 6. a mesh without elements
  if (noe < 1) {
    nivf = 0;
    nvf = 0;
    nevf = 0;
    tnbe = 0;
    nBnd = 0;
    vft = new int32_t[0];
    vfn = new int32_t[0];
    if (*ownsArrays) {
      delete[] eVoronoiX;
      delete[] eVoronoiY;
    }
    eVoronoiX = new double[0];
    eVoronoiY = new double[0];
    hasVoronoi = true;
    *initFlag = 1;
    return 0;
  }

  // 7.-9. centres, areas
  enxCoor = bigarr::newArr<double>(nevf);
  enyCoor = bigarr::newArr<double>(nevf);
  meanElemSize = 0;
  for (int32_t e = 0; e < noe; e++) {
    const int32_t n = nonpe[e], k0 = eni[e];
    double cx = 0, cy = 0;
    double ux[maxNodesPerElem], uy[maxNodesPerElem];
    for (int32_t i = 0; i < n; i++) {
      const int32_t node = en[k0 + i];
      enxCoor[k0 + i] = nxCoor[node];
      enyCoor[k0 + i] = nyCoor[node];
      cx += nxCoor[node];
      cy += nyCoor[node];
      ux[i] = nxUTM[node];
      uy[i] = nyUTM[node];
    }
    exCoor[e] = cx / n;
    eyCoor[e] = cy / n;
    eArea[e] = VCppLib::polygonArea(ux, uy, n);
    eAreaInv[e] = 1.0 / eArea[e];
    totArea += eArea[e];
    meanElemSize += eArea[e];
    areaCenterX += exCoor[e] * eArea[e];
    areaCenterY += eyCoor[e] * eArea[e];
  }
  meanElemSize = std::sqrt(meanElemSize / noe);
  areaCenterX /= totArea;
  areaCenterY /= totArea;

  // 10.
  initFaces();
  initVoronoi();
  initFaceGeometry();
  initBoundaries();
  initFaceDistances();

  *initFlag = 1;
  return 0;
}

namespace {

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

}  // namespace

void thMesh2D::initFaces() {
  for (int32_t i = 0; i < non; i++)
    if (nt[i] == 0) nt[i] = 99;
  nvf = 0;

  // 2.-4.
  TempFaces tf;
  discoverFaces(*this, tf);
  nvf = static_cast<int32_t>(tf.a.size());

  // 5.-6. stable counting sort by type
  int32_t count[101] = {0};
  for (int32_t f = 0; f < nvf; f++) count[tf.type[f] + 1]++;
  nivf = count[1];
  tnbe = nvf - count[100] - nivf;
  for (int32_t t = 1; t < 101; t++) count[t] += count[t - 1];
  bigarr::vector<int32_t> finalNo(nvf);
  std::vector<std::vector<int32_t>> openFaces(99);  // [type] temporary faces of open types
  for (int32_t f = 0; f < nvf; f++) {
    finalNo[f] = count[tf.type[f]]++;
    if (tf.type[f] >= 1 && tf.type[f] <= 98) openFaces[tf.type[f]].push_back(f);
  }

  // 7. open boundaries along the boundary
  nBnd = 0;
  int32_t base = nivf;
  for (int32_t t = 1; t <= 98; t++) {
    const std::vector<int32_t>& L = openFaces[t];
    if (L.empty()) continue;
    nBnd++;
    std::vector<int32_t> order = walkBoundary(*this, tf, L);
    for (size_t k = 0; k < order.size(); k++) finalNo[L[order[k]]] = base + static_cast<int32_t>(k);
    base += static_cast<int32_t>(L.size());
  }

  // 8.-9.
  alloc(evf, nevf);
  alloc(vft, nvf);
  alloc(vfn, 2 * static_cast<int64_t>(nvf));
  alloc(nivfpe, noe);
  alloc(nbvfpe, noe);
  for (int32_t t = 0; t < nvf; t++) {
    const int32_t f = finalNo[t];
    vft[f] = tf.type[t];
    vfn[2 * f] = tf.a[t];
    vfn[2 * f + 1] = tf.b[t];
  }
  // The quicksort moves faces by their types alone, so the order that it leaves for n equal types
  // is worked out once and serves every element whose faces are all of one type.
  std::vector<std::vector<int32_t>> equalOrder(maxNodesPerElem + 1);
  for (int32_t e = 0; e < noe; e++) {
    const int32_t n = nonpe[e], k0 = eni[e];
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
    nivfpe[e] = inner;
    nbvfpe[e] = open;
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
      for (int32_t i = 0; i < n; i++) evf[k0 + i] = faces[order[i]];
    } else {
      int32_t* kp = keys;
      int32_t* fp = faces;
      VCppLib::sortPaired(kp, fp, 0, n - 1);
      for (int32_t i = 0; i < n; i++) evf[k0 + i] = faces[i];
    }
  }

  // 10. sides
  alloc(vfe, 2 * static_cast<int64_t>(nvf));
  std::fill(vfe, vfe + 2 * static_cast<int64_t>(nvf), -1);
  for (int32_t e = 0; e < noe; e++) {
    const int32_t n = nonpe[e], k0 = eni[e];
    for (int32_t i = 0; i < n; i++) {
      const int32_t f = evf[k0 + i];
      if (i < nivfpe[e]) {
        if (vfe[2 * f] < 0)
          vfe[2 * f] = e;
        else
          vfe[2 * f + 1] = e;
      } else {
        vfe[2 * f] = e;
        vfe[2 * f + 1] = -vft[f];
      }
    }
  }

  // 11. neighbours across and signs
  alloc(evfSign, nevf);
  alloc(evfNbr, nevf);
  for (int32_t e = 0; e < noe; e++) {
    const int32_t n = nonpe[e], k0 = eni[e];
    for (int32_t i = 0; i < n; i++) {
      const int32_t f = evf[k0 + i];
      evfNbr[k0 + i] = vfe[2 * f] == e ? vfe[2 * f + 1] : vfe[2 * f];
      if (vft[f] == 0)
        evfSign[k0 + i] = vfe[2 * f] == e ? 1 : -1;
      else if (vft[f] == 99)
        evfSign[k0 + i] = 0;
      else
        evfSign[k0 + i] = 1;
    }
  }

  // 12. inner and open faces run against the node order of their first element
  for (int32_t e = 0; e < noe; e++) {
    const int32_t n = nonpe[e], k0 = eni[e];
    for (int32_t i = 0; i < n; i++) {
      if (evfSign[k0 + i] != 1) continue;
      const int32_t f = evf[k0 + i];
      int32_t p = 0;
      while (p < n && en[k0 + p] != vfn[2 * f]) p++;
      if (p < n && en[k0 + (p + 1 < n ? p + 1 : 0)] == vfn[2 * f + 1]) std::swap(vfn[2 * f], vfn[2 * f + 1]);
    }
  }

  // 13.-15. node types; open boundaries win at shared nodes
  for (int32_t f = 0; f < nivf; f++) nt[vfn[2 * f]] = nt[vfn[2 * f + 1]] = 0;
  for (int32_t f = nivf + tnbe; f < nvf; f++) nt[vfn[2 * f]] = nt[vfn[2 * f + 1]] = vft[f];
  for (int32_t f = nivf; f < nivf + tnbe; f++) nt[vfn[2 * f]] = nt[vfn[2 * f + 1]] = vft[f];
}

void thMesh2D::initBoundaries() {
  if (tnbe < 1) return;
  bndElem = bigarr::newArr<int32_t>(tnbe);
  bndNoFaces = new int32_t[nBnd];
  bndId = new int32_t[nBnd];
  bndFirst = new int32_t[nBnd];
  int32_t last = 100, cur = -1;
  for (int32_t i = 0; i < tnbe; i++) {
    const int32_t f = nivf + i;
    bndElem[i] = vfe[2 * f];
    vfe[2 * f + 1] = noe + i;
    if (vft[f] != last) {
      cur++;
      bndNoFaces[cur] = 0;
      bndFirst[cur] = i;
      bndId[cur] = vft[f];
      last = vft[f];
    }
    bndNoFaces[cur]++;
  }
}

void thMesh2D::initElemNbrs() {
  // The elements of each face in ascending order; the neighbour across an inner face is the
  // first of them other than the element itself.
  std::vector<int32_t> first(static_cast<size_t>(nvf) + 1, 0);
  for (int32_t k = 0; k < nevf; k++) first[evf[k] + 1]++;
  for (int32_t f = 0; f < nvf; f++) first[f + 1] += first[f];
  std::vector<int32_t> fill(first.begin(), first.end() - 1), elems(nevf);
  for (int32_t e = 0; e < noe; e++)
    for (int32_t i = 0; i < nonpe[e]; i++) elems[fill[evf[eni[e] + i]]++] = e;

  std::vector<int32_t> no(noe, 0), nbr, nbrVf;
  for (int32_t e = 0; e < noe; e++) {
    for (int32_t i = 0; i < nivfpe[e]; i++) {
      const int32_t f = evf[eni[e] + i];
      int32_t other = -1;
      for (int32_t j = first[f]; j < first[f + 1]; j++) {
        if (elems[j] != e) {
          other = elems[j];
          break;
        }
      }
      if (other < 0) throw -1;
      nbr.push_back(other);
      nbrVf.push_back(f);
      no[e]++;
    }
  }

  if (*initFlag || *ownsArrays) {
    delete[] eNbrNo;
    delete[] eNbrIdx;
    delete[] eNbr;
    delete[] eNbrVf;
  }
  *ownsArrays = 1;
  eNbrNo = new int32_t[noe];
  eNbrIdx = new int32_t[noe];
  eNbr = new int32_t[nbr.size()];
  eNbrVf = new int32_t[nbr.size()];
  for (int32_t e = 0; e < noe; e++) {
    eNbrNo[e] = no[e];
    eNbrIdx[e] = e == 0 ? 0 : eNbrIdx[e - 1] + eNbrNo[e - 1];
  }
  std::copy(nbr.begin(), nbr.end(), eNbr);
  std::copy(nbrVf.begin(), nbrVf.end(), eNbrVf);
}

}  // namespace thalmod
