// The mesh object: construction, the shared ownership of its arrays, clone.
#include "mesh/thMesh2D.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "support/VStr.h"

namespace thalmod {

namespace {

template <typename T>
void freeArr(T*& p) {
  delete[] p;
  p = nullptr;
}

template <typename T>
T* copyArr(const T* src, int64_t n) {
  if (src == nullptr || n < 0) return nullptr;
  T* dst = new T[n];
  if (n > 0) std::memcpy(dst, src, sizeof(T) * n);
  return dst;
}

}  // namespace

thMesh2D::thMesh2D()
    : initFlag(std::make_shared<uint8_t>(0)), ownsArrays(std::make_shared<uint8_t>(0)) {
  const std::string& nl = VCppLib::newline;
  defaultMeshText = "4\t1" + nl + "0\t0" + nl + "1\t0" + nl + "1\t1" + nl + "0\t1" + nl + "0\t1\t2\t3" + nl;
}

thMesh2D::~thMesh2D() { freeArrays(); }

void thMesh2D::freeDerivedArrays() {
  const bool owned = (initFlag && *initFlag != 0) || (ownsArrays && *ownsArrays != 0);
  auto drop = [owned](auto*& p) {
    if (owned) delete[] p;
    p = nullptr;
  };
  drop(eni);
  // nxUTM, nyUTM are arrays of their own only in a lon/lat mesh; otherwise they alias nxCoor,
  // nyCoor, or the arrays that an editor has since replaced and freed.
  if (isLonLat && nxUTM != nxCoor) drop(nxUTM); else nxUTM = nullptr;
  if (isLonLat && nyUTM != nyCoor) drop(nyUTM); else nyUTM = nullptr;
  drop(exCoor); drop(eyCoor); drop(enxCoor); drop(enyCoor);
  drop(eArea); drop(eAreaInv); drop(eIsAcute);
  drop(vfDist); drop(vfDistInv); drop(vfDistX); drop(vfDistY);
  drop(vfxNormL); drop(vfyNormL);
  drop(bndNoFaces); drop(bndId); drop(bndElem); drop(bndFirst);
  drop(vft); drop(vfn); drop(vfe); drop(vfeDist); drop(vfl); drop(vfxCoor); drop(vfyCoor);
  drop(evf); drop(evfNbr); drop(evfDist); drop(nivfpe); drop(nbvfpe); drop(evfSign);
  drop(vfdx); drop(vfdy);
  dropQueryCaches();  // the k-d tree, path graph and indexes describe the old arrays
  if (!owned) {
    // A copy whose arrays went with another copy holds caches that are not its own either.
    anglesVF = nullptr;
    anglesVFCap = 0;
    eNbrNo = eNbrIdx = eNbr = eNbrVf = nullptr;
    circumInit = false;
    nCircum = 0;
    circumX = circumY = nullptr;
  }
}

void thMesh2D::freeArrays() {
  const bool owned = (initFlag && *initFlag != 0) || (ownsArrays && *ownsArrays != 0);
  if (owned) {
    freeDerivedArrays();
    freeArr(nxCoor); freeArr(nyCoor); freeArr(nt); freeArr(nonpe); freeArr(en);
    freeArr(eVoronoiX); freeArr(eVoronoiY);
    freeArr(eNbrNo); freeArr(eNbrIdx); freeArr(eNbr); freeArr(eNbrVf);
    freeArr(circumX); freeArr(circumY);
    freeArr(anglesVF);
    anglesVFCap = 0;
    circumInit = false;
  }
  dropQueryCaches();
  if (initFlag) *initFlag = 0;
  if (ownsArrays) *ownsArrays = 0;
}

thMesh2D* thMesh2D::clone() const {
  auto* c = new thMesh2D(*this);
  // A group of its own, so that neither mesh frees what the other holds.
  c->initFlag = std::make_shared<uint8_t>(0);
  c->ownsArrays = std::make_shared<uint8_t>(0);
  c->freeDerivedArrays();  // owns nothing yet: only forgets the source's derived arrays and caches
  *c->ownsArrays = 1;
  c->nxCoor = copyArr(nxCoor, non);
  c->nyCoor = copyArr(nyCoor, non);
  c->nt = copyArr(nt, non);
  c->nonpe = copyArr(nonpe, noe);
  int64_t entries = 0;
  if (nonpe != nullptr)
    for (int32_t e = 0; e < noe; e++) entries += nonpe[e];
  c->en = copyArr(en, entries);
  // Own copies rather than shared Voronoi arrays: two groups freeing one array would free it twice.
  c->eVoronoiX = hasVoronoi ? copyArr(eVoronoiX, noe) : nullptr;
  c->eVoronoiY = hasVoronoi ? copyArr(eVoronoiY, noe) : nullptr;
  c->dij = nullptr;
  c->dijInit = false;
  c->kdTree = nullptr;
  try {
    c->initMesh();
  } catch (...) {
    delete c;
    throw;
  }
  return c;
}

int32_t thMesh2D::utmZoneFromProjection() {
  std::string p = VCppLib::VStr::toLower(projection);
  if (p.compare(0, 3, "utm") != 0) return -1;
  long z = std::strtol(p.c_str() + 3, nullptr, 10);
  if (z > INT32_MAX) z = INT32_MAX;
  if (z < INT32_MIN) z = INT32_MIN;
  return static_cast<int32_t>(z);
}

}  // namespace thalmod
