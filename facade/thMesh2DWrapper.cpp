// The mesh facade: properties over the fields, copies of the arrays, operations forwarded.
#include "facade/thMesh2DWrapper.h"

#include "facade/thWrapperUtil.h"

using thalmod::thMesh2D;
using VCppLib::VException;

namespace thWrapper {

namespace {

// Per-node lists of the library (a new[] array of non vectors) as the caller's, releasing them.
std::vector<std::vector<int32_t>> takeLists(std::vector<int32_t>* lists, int32_t non) {
  std::vector<std::vector<int32_t>> out;
  if (lists) out.assign(lists, lists + (non > 0 ? non : 0));
  delete[] lists;
  return out;
}

template <typename T>
std::vector<T> take(T* arr, int64_t n) {
  std::vector<T> out = cArr2cliArr(arr, n);
  delete[] arr;
  return out;
}

}  // namespace

thMesh2DWrapper::thMesh2DWrapper(thMesh2D* mesh) : mesh2d(mesh) {}
thMesh2DWrapper::thMesh2DWrapper(std::unique_ptr<thMesh2D> mesh)
    : mesh2d(mesh.get()), owned(std::move(mesh)) {}

thMesh2D& thMesh2DWrapper::m() const {
  if (!mesh2d) throw VException("thMesh2DWrapper: there is no mesh behind this wrapper.");
  return *mesh2d;
}

bool thMesh2DWrapper::isOrthogonal() const { return m().isOrthogonal; }
void thMesh2DWrapper::isOrthogonal(bool v) { m().isOrthogonal = v; }
int32_t thMesh2DWrapper::noe() const { return m().noe; }
void thMesh2DWrapper::noe(int32_t v) { m().noe = v; }
int32_t thMesh2DWrapper::non() const { return m().non; }
void thMesh2DWrapper::non(int32_t v) { m().non = v; }
int32_t thMesh2DWrapper::nivf() const { return m().nivf; }
void thMesh2DWrapper::nivf(int32_t v) { m().nivf = v; }
int32_t thMesh2DWrapper::nvf() const { return m().nvf; }
void thMesh2DWrapper::nvf(int32_t v) { m().nvf = v; }
int32_t thMesh2DWrapper::tnbe() const { return m().tnbe; }
void thMesh2DWrapper::tnbe(int32_t v) { m().tnbe = v; }
std::vector<int32_t> thMesh2DWrapper::nt() const { return cArr2cliArr(m().nt, m().non); }

void thMesh2DWrapper::nt(const std::vector<int32_t>& types) {
  thMesh2D& g = m();
  needLength(arrLen(types, "thMesh2DWrapper::nt", "types"), g.non, "thMesh2DWrapper::nt", "types");
  if (!g.nt && g.non > 0) throw VException("thMesh2DWrapper::nt: the mesh has no node types to set.");
  std::copy(types.begin(), types.begin() + g.non, g.nt);
}

std::vector<double> thMesh2DWrapper::nxCoor() const { return cArr2cliArr(m().nxCoor, m().non); }
std::vector<double> thMesh2DWrapper::nyCoor() const { return cArr2cliArr(m().nyCoor, m().non); }
std::vector<double> thMesh2DWrapper::exCoor() const { return cArr2cliArr(m().exCoor, m().noe); }
std::vector<double> thMesh2DWrapper::eyCoor() const { return cArr2cliArr(m().eyCoor, m().noe); }
std::vector<double> thMesh2DWrapper::eVoronoiX() const { return cArr2cliArr(m().eVoronoiX, m().noe); }
std::vector<double> thMesh2DWrapper::eVoronoiY() const { return cArr2cliArr(m().eVoronoiY, m().noe); }
std::vector<double> thMesh2DWrapper::vfxCoor() const { return cArr2cliArr(m().vfxCoor, m().nvf); }
std::vector<double> thMesh2DWrapper::vfyCoor() const { return cArr2cliArr(m().vfyCoor, m().nvf); }
std::vector<double> thMesh2DWrapper::vfxNormL() const { return cArr2cliArr(m().vfxNormL, m().nvf); }
std::vector<double> thMesh2DWrapper::vfyNormL() const { return cArr2cliArr(m().vfyNormL, m().nvf); }
std::vector<double> thMesh2DWrapper::vfl() const { return cArr2cliArr(m().vfl, m().nvf); }
std::vector<int32_t> thMesh2DWrapper::nonpe() const { return cArr2cliArr(m().nonpe, m().noe); }
std::vector<int32_t> thMesh2DWrapper::eni() const { return cArr2cliArr(m().eni, m().noe); }
std::vector<int32_t> thMesh2DWrapper::nivfpe() const { return cArr2cliArr(m().nivfpe, m().noe); }

namespace {
int64_t entries(const thMesh2D& g) {
  int64_t n = 0;
  for (int32_t e = 0; g.nonpe && e < g.noe; ++e) n += g.nonpe[e];
  return n;
}
}  // namespace

std::vector<int32_t> thMesh2DWrapper::en() const { return cArr2cliArr(m().en, entries(m())); }
std::vector<double> thMesh2DWrapper::enxCoor() const { return cArr2cliArr(m().enxCoor, entries(m())); }
std::vector<double> thMesh2DWrapper::enyCoor() const { return cArr2cliArr(m().enyCoor, entries(m())); }
std::string thMesh2DWrapper::projection() const { return m().projection; }
std::vector<int32_t> thMesh2DWrapper::bndId() const { return cArr2cliArr(m().bndId, m().nBnd); }
std::vector<int32_t> thMesh2DWrapper::bndNoFaces() const { return cArr2cliArr(m().bndNoFaces, m().nBnd); }

std::vector<bool> thMesh2DWrapper::eIsAcute() const {
  const thMesh2D& g = m();
  if (!g.eIsAcute || g.noe <= 0) return {};
  return std::vector<bool>(g.eIsAcute, g.eIsAcute + g.noe);
}

std::vector<int32_t> thMesh2DWrapper::vft() const { return cArr2cliArr(m().vft, m().nvf); }
std::vector<int32_t> thMesh2DWrapper::vfn() const { return cArr2cliArr(m().vfn, 2 * int64_t{m().nvf}); }
std::vector<int32_t> thMesh2DWrapper::vfe() const { return cArr2cliArr(m().vfe, 2 * int64_t{m().nvf}); }
std::vector<int32_t> thMesh2DWrapper::evf() const { return cArr2cliArr(m().evf, m().nevf); }

std::vector<double> thMesh2DWrapper::anglesVF() const {
  const thMesh2D& g = m();
  if (!g.hasVoronoi || g.nivf <= 0) return {};
  return cArr2cliArr(g.anglesVF, g.nivf);
}

std::vector<int32_t> thMesh2DWrapper::circumferenceNodes() const {
  int32_t* nodes = nullptr;
  int32_t n = m().circumferenceNodes(nodes);
  return take(nodes, n);
}

// ---------------------------------------------------------------- operations

int32_t thMesh2DWrapper::sectionIntersections(const std::vector<double>& xc, const std::vector<double>& yc,
                                              std::vector<int32_t>& ise, std::vector<double>& isd) {
  const char* fn = "thMesh2DWrapper::sectionIntersections";
  int32_t n = arrLen(xc, fn, "xc");
  needLength(arrLen(yc, fn, "yc"), n, fn, "yc");
  int32_t* e = nullptr;
  double* d = nullptr;
  int32_t k = m().sectionIntersections(arrPtr(xc), arrPtr(yc), n, e, d);
  ise = take(e, k);
  isd = take(d, k);
  return k;
}

int32_t thMesh2DWrapper::initMesh() { return m().initMesh(); }
std::string thMesh2DWrapper::toString() { return m().toString(); }

int32_t thMesh2DWrapper::nodeNeighbors(std::vector<int32_t>& nnnPerNode, std::vector<int32_t>& nnnIdx,
                                       std::vector<int32_t>& nn) {
  int32_t *per = nullptr, *idx = nullptr, *list = nullptr;
  int32_t k = m().nodeNeighbors(per, idx, list);
  nnnPerNode = take(per, m().non);
  nnnIdx = take(idx, m().non);
  nn = take(list, k);
  return k;
}

std::vector<std::vector<int32_t>> thMesh2DWrapper::nodevf() { return takeLists(m().nodevf(), m().non); }
std::vector<std::vector<int32_t>> thMesh2DWrapper::nodeElems() {
  return takeLists(m().nodeElems(true), m().non);
}
std::vector<double> thMesh2DWrapper::anglesVFMaxPerElem() { return take(m().anglesVFMaxPerElem(), m().noe); }
std::vector<double> thMesh2DWrapper::anglesMaxPerElem() { return take(m().anglesMaxPerElem(), m().noe); }
int32_t thMesh2DWrapper::optimRemNodesWith4TriElems() { return m().optimRemNodesWith4TriElems(); }
int32_t thMesh2DWrapper::optimCenterNodes(int32_t nIterations, bool triOnly) {
  return m().optimCenterNodes(nIterations, triOnly);
}
int32_t thMesh2DWrapper::optimCenterNodes() { return optimCenterNodes(1, true); }
int32_t thMesh2DWrapper::optimMoveNodesTowardLargeElems(double factor, bool triOnly) {
  return m().optimMoveNodesTowardLargeElems(factor, triOnly);
}
int32_t thMesh2DWrapper::optimDrawNodesTowardNode(int32_t n, double r, double p, double f, bool triOnly) {
  return m().optimDrawNodesTowardNode(n, r, p, f, triOnly);
}
int32_t thMesh2DWrapper::pointElem(double x, double y) { return m().pointElem(x, y); }

int32_t thMesh2DWrapper::editRenumberNodes(const std::vector<int32_t>& nArr) {
  if (nArr.size() < 2) return -1;
  return m().editRenumberNodes(arrLen(nArr, "thMesh2DWrapper::editRenumberNodes", "nArr"), nArr.data());
}
int32_t thMesh2DWrapper::editDelNode(int32_t n, bool reInitMesh) { return m().editDelNode(n, reInitMesh); }
int32_t thMesh2DWrapper::editDelNode(int32_t n) { return editDelNode(n, true); }
int32_t thMesh2DWrapper::editDelElem(int32_t e, bool reInitMesh) { return m().editDelElem(e, reInitMesh); }
int32_t thMesh2DWrapper::editDelElem(int32_t e) { return editDelElem(e, true); }

int32_t thMesh2DWrapper::editDelNodesElems(const std::vector<int32_t>& e, const std::vector<int32_t>& n) {
  const char* fn = "thMesh2DWrapper::editDelNodesElems";
  return m().editDelNodesElems(arrLen(e, fn, "e"), arrPtr(e), arrLen(n, fn, "n"), arrPtr(n));
}

int32_t thMesh2DWrapper::editAddNode(double x, double y, int32_t nodeType, bool reInitMesh) {
  return m().editAddNode(x, y, nodeType, reInitMesh);
}
int32_t thMesh2DWrapper::editAddNode(double x, double y) { return editAddNode(x, y, 99, true); }

int32_t thMesh2DWrapper::editAddElem(const std::vector<int32_t>& elemNodes, bool reInitMesh) {
  return m().editAddElem(arrLen(elemNodes, "thMesh2DWrapper::editAddElem", "elemNodes"), arrPtr(elemNodes),
                         reInitMesh);
}
int32_t thMesh2DWrapper::editAddElem(const std::vector<int32_t>& elemNodes) {
  return editAddElem(elemNodes, true);
}

int32_t thMesh2DWrapper::editAddNodesElems(const std::vector<double>& nxc, const std::vector<double>& nyc,
                                           const std::vector<int32_t>& elemNodes, int32_t addnType,
                                           int32_t nnPerElem) {
  const char* fn = "thMesh2DWrapper::editAddNodesElems";
  int32_t nn = arrLen(nxc, fn, "nxc");
  needLength(arrLen(nyc, fn, "nyc"), nn, fn, "nyc");
  if (nnPerElem < 1)
    throw VException(std::string(fn) + ": nnPerElem is " + std::to_string(nnPerElem) +
                     "; an element has nodes.");
  std::vector<int32_t> nodes(elemNodes);  // the library may rebase the numbers in place
  int32_t ne = arrLen(elemNodes, fn, "elemNodes") / nnPerElem;
  return m().editAddNodesElems(nn, arrPtr(nxc), arrPtr(nyc), ne, arrPtr(nodes), addnType, nnPerElem, -1);
}

int32_t thMesh2DWrapper::editAddNodesElems(const std::vector<double>& nxc, const std::vector<double>& nyc,
                                           const std::vector<int32_t>& elemNodes) {
  return editAddNodesElems(nxc, nyc, elemNodes, 99, 3);
}

int32_t thMesh2DWrapper::editAddMesh(std::string meshFN) {
  thMesh2D added;  // the text format
  added.readMeshFromFile(meshFN);
  return m().editAddMesh(added);  // a member-wise copy, which the edit consumes
}

int32_t thMesh2DWrapper::editAddSquareSection(const std::vector<double>& nxc, const std::vector<double>& nyc,
                                              int32_t nLength, int32_t nWidth, double secWidth) {
  const char* fn = "thMesh2DWrapper::editAddSquareSection";
  if (nxc.empty()) return 0;
  int32_t n = arrLen(nxc, fn, "nxc");
  needLength(arrLen(nyc, fn, "nyc"), n, fn, "nyc");
  return m().editAddSquareSection(nxc.data(), nyc.data(), n, nLength, nWidth, secWidth);
}

int32_t thMesh2DWrapper::editAddSquareSection(const std::vector<double>& nxc, const std::vector<double>& nyc,
                                              int32_t nLength) {
  return editAddSquareSection(nxc, nyc, nLength, -1, 1.0);
}

void thMesh2DWrapper::updateNodeCoor(int32_t n, double x, double y) {
  thMesh2D& g = m();
  if (n < 0 || n >= g.non)
    throw VException("thMesh2DWrapper::updateNodeCoor: node " + std::to_string(n) +
                     " is out of range; the mesh has " + std::to_string(g.non) + " nodes.");
  g.nxCoor[n] = x;
  g.nyCoor[n] = y;
}

int32_t thMesh2DWrapper::updateVoronoiCoor(int32_t e, double x, double y) {
  return m().updateVoronoiCoor(e, x, y, false);
}

}  // namespace thWrapper
