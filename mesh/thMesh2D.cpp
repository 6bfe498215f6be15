// The mesh object: construction, copies and the shared ownership of their arrays, clone.
#include "mesh/thMesh2D.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/VStr.h"

namespace thalmod {

namespace {

template <typename T>
T* copyArr(const T* src, int64_t n) {
  if (src == nullptr || n < 0) return nullptr;
  T* dst = new T[n];
  if (n > 0) std::memcpy(dst, src, sizeof(T) * n);
  return dst;
}

// The arrays that initMesh derives, but nxUTM and nyUTM, which may alias nxCoor and nyCoor.
template <typename F>
void forEachDerived(thMesh2D& m, F f) {
  f(m.eni);
  f(m.exCoor);
  f(m.eyCoor);
  f(m.enxCoor);
  f(m.enyCoor);
  f(m.eArea);
  f(m.eAreaInv);
  f(m.eIsAcute);
  f(m.vfDist);
  f(m.vfDistInv);
  f(m.vfDistX);
  f(m.vfDistY);
  f(m.vfxNormL);
  f(m.vfyNormL);
  f(m.bndNoFaces);
  f(m.bndId);
  f(m.bndElem);
  f(m.bndFirst);
  f(m.vft);
  f(m.vfn);
  f(m.vfe);
  f(m.vfeDist);
  f(m.vfl);
  f(m.vfxCoor);
  f(m.vfyCoor);
  f(m.evf);
  f(m.evfNbr);
  f(m.evfDist);
  f(m.nivfpe);
  f(m.nbvfpe);
  f(m.evfSign);
  f(m.vfdx);
  f(m.vfdy);
}

// The primary arrays, with the Voronoi points.
template <typename F>
void forEachPrimary(thMesh2D& m, F f) {
  f(m.nxCoor);
  f(m.nyCoor);
  f(m.nt);
  f(m.nonpe);
  f(m.en);
  f(m.eVoronoiX);
  f(m.eVoronoiY);
}

// The caches built on demand.
template <typename F>
void forEachCache(thMesh2D& m, F f) {
  f(m.eNbrNo);
  f(m.eNbrIdx);
  f(m.eNbr);
  f(m.eNbrVf);
  f(m.circumX);
  f(m.circumY);
  f(m.anglesVF);
}

// nxUTM, nyUTM are arrays of their own only in a lon/lat mesh; otherwise they alias nxCoor,
// nyCoor, or the arrays that an editor has since replaced.
bool ownUTM(const thMesh2D& m) { return m.isLonLat && m.nxUTM != m.nxCoor && m.nyUTM != m.nyCoor; }

}  // namespace

thMesh2D::thMesh2D() : initFlag(std::make_shared<uint8_t>(0)) {
  const std::string& nl = VCppLib::newline;
  defaultMeshText = "4\t1" + nl + "0\t0" + nl + "1\t0" + nl + "1\t1" + nl + "0\t1" + nl + "0\t1\t2\t3" + nl;
}

thMesh2D::thMesh2D(const thMesh2D& other) : thMesh2D() { *this = other; }

thMesh2D& thMesh2D::operator=(const thMesh2D& other) {
  if (this == &other) return *this;
  other.holdArrays();
  freeArrays();
  const thMesh2D& o = other;
  meshFN = o.meshFN;
  meshFmt = o.meshFmt;
  projection = o.projection;
  non = o.non;
  nt = o.nt;
  nxCoor = o.nxCoor;
  nyCoor = o.nyCoor;
  utmZone = o.utmZone;
  nxUTM = o.nxUTM;
  nyUTM = o.nyUTM;
  xMean = o.xMean;
  yMean = o.yMean;
  totArea = o.totArea;
  areaCenterX = o.areaCenterX;
  areaCenterY = o.areaCenterY;
  noe = o.noe;
  exCoor = o.exCoor;
  eyCoor = o.eyCoor;
  eVoronoiX = o.eVoronoiX;
  eVoronoiY = o.eVoronoiY;
  nonpe = o.nonpe;
  en = o.en;
  enxCoor = o.enxCoor;
  enyCoor = o.enyCoor;
  eni = o.eni;
  eArea = o.eArea;
  eAreaInv = o.eAreaInv;
  eIsAcute = o.eIsAcute;
  vfDist = o.vfDist;
  vfDistInv = o.vfDistInv;
  vfDistX = o.vfDistX;
  vfDistY = o.vfDistY;
  vfxNormL = o.vfxNormL;
  vfyNormL = o.vfyNormL;
  eNbrNo = o.eNbrNo;
  eNbrIdx = o.eNbrIdx;
  eNbr = o.eNbr;
  eNbrVf = o.eNbrVf;
  nBnd = o.nBnd;
  bndNoFaces = o.bndNoFaces;
  tnbe = o.tnbe;
  bndId = o.bndId;
  bndElem = o.bndElem;
  bndFirst = o.bndFirst;
  nvf = o.nvf;
  vft = o.vft;
  vfn = o.vfn;
  vfe = o.vfe;
  vfeDist = o.vfeDist;
  vfl = o.vfl;
  vfxCoor = o.vfxCoor;
  vfyCoor = o.vfyCoor;
  nevf = o.nevf;
  evf = o.evf;
  evfNbr = o.evfNbr;
  evfDist = o.evfDist;
  nivfpe = o.nivfpe;
  nbvfpe = o.nbvfpe;
  evfSign = o.evfSign;
  nivf = o.nivf;
  circumInit = o.circumInit;
  xMax = o.xMax;
  xMin = o.xMin;
  yMax = o.yMax;
  yMin = o.yMin;
  meanElemSize = o.meanElemSize;
  nCircum = o.nCircum;
  circumX = o.circumX;
  circumY = o.circumY;
  vfdx = o.vfdx;
  vfdy = o.vfdy;
  isLonLat = o.isLonLat;
  isOrthogonal = o.isOrthogonal;
  hasVoronoi = o.hasVoronoi;
  defaultMeshText = o.defaultMeshText;
  anglesVF = o.anglesVF;
  initFlag = o.initFlag;
  dij = o.dij;
  dijInit = o.dijInit;
  kdTree = o.kdTree;
  anglesVFCap = o.anglesVFCap;
  queryCache = o.queryCache;
  shares = o.shares;
  return *this;
}

// The last holder of the initFlag byte clears it; copies that live on keep it, since their
// arrays live on with them.
thMesh2D::~thMesh2D() {
  freeArrays();
  if (initFlag.use_count() == 1) *initFlag = 0;
}

void thMesh2D::holdArrays() const {
  auto& m = const_cast<thMesh2D&>(*this);  // only the holder changes
  auto hold = [this](auto* p) { shares.hold(p); };
  forEachPrimary(m, hold);
  forEachDerived(m, hold);
  forEachCache(m, hold);
  if (ownUTM(*this)) {
    shares.hold(nxUTM);
    shares.hold(nyUTM);
  }
}

void thMesh2D::freeDerivedArrays() {
  if (ownUTM(*this)) {
    shares.release(nxUTM);
    shares.release(nyUTM);
  }
  nxUTM = nyUTM = nullptr;
  forEachDerived(*this, [this](auto*& p) { shares.release(p); });
  dropQueryCaches();  // the k-d tree, path graph and indexes describe the old arrays
}

void thMesh2D::freeCaches() {
  forEachCache(*this, [this](auto*& p) { shares.release(p); });
  anglesVFCap = 0;
  circumInit = false;
  nCircum = 0;
  dropQueryCaches();
}

void thMesh2D::freeArrays() {
  freeDerivedArrays();
  forEachPrimary(*this, [this](auto*& p) { shares.release(p); });
  freeCaches();
  shares.clear();  // arrays held but no longer in a field go as well
}

thMesh2D* thMesh2D::clone() const {
  auto c = std::make_unique<thMesh2D>(*this);
  // Not the source's group: a clone is initialised on its own.
  c->initFlag = std::make_shared<uint8_t>(0);
  c->freeCaches();  // only lets go of the source's caches, which it shares
  int64_t entries = 0;
  if (nonpe != nullptr)
    for (int32_t e = 0; e < noe; e++) entries += nonpe[e];
  auto own = [&c](auto*& field, auto* copy) {
    c->shares.release(field);  // lets go of the source's array, which the source keeps
    field = copy;
  };
  c->freeDerivedArrays();  // before nxCoor changes: nxUTM may alias it
  own(c->nxCoor, copyArr(nxCoor, non));
  own(c->nyCoor, copyArr(nyCoor, non));
  own(c->nt, copyArr(nt, non));
  own(c->nonpe, copyArr(nonpe, noe));
  own(c->en, copyArr(en, entries));
  // eVoronoiX, eVoronoiY stay shared with the source when it has them, as initMesh keeps them.
  c->initMesh();
  return c.release();
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
