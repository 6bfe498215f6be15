// thMesh2DWrapper: a mesh as callers outside the library see it, in vectors and strings.
//
// A view: it holds a pointer to a thMesh2D that someone else owns (a model description, a result
// file) and must not outlive that owner. Only a mesh made for the caller by the facade itself
// (the vertical section mesh of thModelInfoWrapper::ise2VMesh) is owned, shared by the copies of
// its wrapper and freed with the last of them.
//
// Every array handed out is a fresh copy; changing it does not reach the mesh. The setters and
// the operations are the only writers. Setting a count (noe, non, ...) resizes nothing and runs
// nothing: keeping the arrays consistent with it is the caller's business.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"

namespace thWrapper {

class thMesh2DWrapper {
 public:
  explicit thMesh2DWrapper(thalmod::thMesh2D* mesh);
  // Owns the mesh (a heap mesh made for the caller).
  explicit thMesh2DWrapper(std::unique_ptr<thalmod::thMesh2D> mesh);

  thalmod::thMesh2D* mesh2d = nullptr;

  // ---- read and write properties
  bool isOrthogonal() const;
  void isOrthogonal(bool v);
  int32_t noe() const;
  void noe(int32_t v);
  int32_t non() const;
  void non(int32_t v);
  int32_t nivf() const;
  void nivf(int32_t v);
  int32_t nvf() const;
  void nvf(int32_t v);
  int32_t tnbe() const;
  void tnbe(int32_t v);
  std::vector<int32_t> nt() const;
  void nt(const std::vector<int32_t>& types);  // the first non entries go into the mesh

  // ---- read-only arrays (copies)
  std::vector<double> nxCoor() const;
  std::vector<double> nyCoor() const;
  std::vector<double> exCoor() const;
  std::vector<double> eyCoor() const;
  std::vector<double> eVoronoiX() const;
  std::vector<double> eVoronoiY() const;
  std::vector<double> vfxCoor() const;
  std::vector<double> vfyCoor() const;
  std::vector<double> vfxNormL() const;
  std::vector<double> vfyNormL() const;
  std::vector<double> vfl() const;
  std::vector<int32_t> nonpe() const;
  std::vector<int32_t> eni() const;
  std::vector<int32_t> nivfpe() const;
  std::vector<int32_t> en() const;  // the sum of nonpe entries
  std::vector<bool> eIsAcute() const;
  std::vector<int32_t> vft() const;
  std::vector<int32_t> vfn() const;      // 2 nvf
  std::vector<int32_t> vfe() const;      // 2 nvf
  std::vector<int32_t> evf() const;      // nevf
  std::vector<double> anglesVF() const;  // nivf entries with Voronoi points, else empty
  std::vector<int32_t> circumferenceNodes() const;
  std::string projection() const;
  std::vector<double> enxCoor() const;  // the sum of nonpe entries: the coordinates of en
  std::vector<double> enyCoor() const;
  // The open boundaries: their numbers (ascending) and their faces, nBnd entries each.
  std::vector<int32_t> bndId() const;
  std::vector<int32_t> bndNoFaces() const;

  // ---- operations
  // Returns the number of entries, which go into ise and isd.
  int32_t sectionIntersections(const std::vector<double>& xc, const std::vector<double>& yc,
                               std::vector<int32_t>& ise, std::vector<double>& isd);
  int32_t initMesh();
  std::string toString();
  int32_t nodeNeighbors(std::vector<int32_t>& nnnPerNode, std::vector<int32_t>& nnnIdx,
                        std::vector<int32_t>& nn);
  std::vector<std::vector<int32_t>> nodevf();
  std::vector<std::vector<int32_t>> nodeElems();  // sorted around their mean centre
  std::vector<double> anglesVFMaxPerElem();
  std::vector<double> anglesMaxPerElem();
  int32_t optimRemNodesWith4TriElems();
  int32_t optimCenterNodes(int32_t nIterations, bool triOnly);
  int32_t optimCenterNodes();  // one sweep over triangle-only nodes
  int32_t optimMoveNodesTowardLargeElems(double factor, bool triOnly);
  int32_t optimDrawNodesTowardNode(int32_t n, double r, double p, double f, bool triOnly);
  int32_t pointElem(double x, double y);
  int32_t editRenumberNodes(const std::vector<int32_t>& nArr);  // -1 for fewer than 2 entries
  int32_t editDelNode(int32_t n, bool reInitMesh);
  int32_t editDelNode(int32_t n);
  int32_t editDelElem(int32_t e, bool reInitMesh);
  int32_t editDelElem(int32_t e);
  int32_t editDelNodesElems(const std::vector<int32_t>& e, const std::vector<int32_t>& n);
  int32_t editAddNode(double x, double y, int32_t nodeType, bool reInitMesh);
  int32_t editAddNode(double x, double y);  // a closed node, initMesh run
  int32_t editAddElem(const std::vector<int32_t>& elemNodes, bool reInitMesh);
  int32_t editAddElem(const std::vector<int32_t>& elemNodes);
  // ne = elemNodes.size() / nnPerElem, truncating; node numbers are absolute.
  int32_t editAddNodesElems(const std::vector<double>& nxc, const std::vector<double>& nyc,
                            const std::vector<int32_t>& elemNodes, int32_t addnType, int32_t nnPerElem);
  int32_t editAddNodesElems(const std::vector<double>& nxc, const std::vector<double>& nyc,
                            const std::vector<int32_t>& elemNodes);  // closed nodes, triangles
  int32_t editAddMesh(std::string meshFN);                           // a text mesh file appended
  int32_t editAddSquareSection(const std::vector<double>& nxc, const std::vector<double>& nyc,
                               int32_t nLength, int32_t nWidth, double secWidth);  // 0 at once for no points
  int32_t editAddSquareSection(const std::vector<double>& nxc, const std::vector<double>& nyc,
                               int32_t nLength);
  void updateNodeCoor(int32_t n, double x, double y);  // stores, runs nothing
  int32_t updateVoronoiCoor(int32_t e, double x, double y);

 private:
  std::shared_ptr<thalmod::thMesh2D> owned;  // set only for a mesh made for the caller
  thalmod::thMesh2D& m() const;
};

}  // namespace thWrapper
