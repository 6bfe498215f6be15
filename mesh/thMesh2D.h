// The horizontal mesh of a model: nodes, elements (polygons over the nodes), the faces between
// them, Voronoi points, face metrics and open boundaries.
//
// Callers fill the primary arrays (non, nxCoor, nyCoor, nt, noe, nonpe, en, projection, and
// optionally eVoronoiX/eVoronoiY with hasVoronoi) and run initMesh, which derives the rest.
//
// Numbering contract read by the whole library:
//  - faces: inner faces 0..nivf-1; open boundary faces nivf..nivf+tnbe-1 by ascending boundary
//    number and along each boundary; closed faces after them, up to nvf-1;
//  - node and face types: 0 inner, 1..98 open boundary of that number, 99 closed (land);
//  - vfe of an open boundary face f holds the element and the ghost column noe+(f-nivf);
//    of a closed face the element and -99; of an inner face the lower and the higher element.
//
// Copies are shallow: a copy shares every array and the initFlag byte with its source. Each
// array is freed when the last mesh that holds it goes or lets go of it (see VArrayShare), so
// copies may be destroyed in any order, and initMesh or an edit on one copy gives that copy new
// arrays while the others keep theirs. Code that replaces an array of a mesh releases the old one
// through `shares` and never deletes it itself.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/VArrayShare.h"
#include "support/VCppLib.h"

namespace VCppLib {
class Vkdtree;
class dijkstra;
}  // namespace VCppLib

namespace thalmod {
struct thMeshQueryCache;  // mesh/thMeshIndex.h
}  // namespace thalmod

namespace thalmod {

// Most nodes that an element may have: initMesh sorts an element's faces in working arrays of
// this size, and the readers and editors refuse larger elements.
constexpr int32_t maxNodesPerElem = 50;

class thMesh2D {
 public:
  std::string meshFN;                       // name of the mesh file
  int32_t meshFmt = 0;                      // file format of the mesh file: 0 text (EMT), 1 binary (EMB)
  std::string projection = "UTM32";         // "LONLAT" anywhere in it (any case) means degrees
  int32_t non = 0;                          // number of nodes
  int32_t* nt = nullptr;                    // [node] node type: 0 inner, 1..98 open boundary, 99 closed
  double* nxCoor = nullptr;                 // [node] x in mesh coordinates (degrees when isLonLat)
  double* nyCoor = nullptr;                 // [node] y in mesh coordinates
  int32_t utmZone = 32;                     // UTM zone of the mesh, negative south of the equator
  double* nxUTM = nullptr;                  // [node] x in metres; the very array nxCoor unless isLonLat
  double* nyUTM = nullptr;                  // [node] y in metres; the very array nyCoor unless isLonLat
  double xMean = 0, yMean = 0;              // plain means of the node coordinates
  double totArea = 0;                       // sum of eArea
  double areaCenterX = 0, areaCenterY = 0;  // area weighted mean of the element centres
  int32_t noe = 0;                          // number of elements
  double* exCoor = nullptr;                 // [element] centre: mean of its node coordinates
  double* eyCoor = nullptr;                 // [element]
  double* eVoronoiX = nullptr;              // [element] Voronoi point, mesh coordinates
  double* eVoronoiY = nullptr;              // [element]
  int32_t* nonpe = nullptr;                 // [element] number of nodes
  int32_t* en = nullptr;                    // [element entry, eni[e]..eni[e]+nonpe[e]-1] node numbers
  double* enxCoor = nullptr;                // [element entry] nxCoor of each entry of en
  double* enyCoor = nullptr;                // [element entry] nyCoor of each entry of en
  int32_t* eni = nullptr;                   // [element] first entry of the element in en, evf, ...
  double* eArea = nullptr;                  // [element] area in square metres
  double* eAreaInv = nullptr;               // [element] 1/eArea
  bool* eIsAcute = nullptr;                 // [element] passed the Voronoi test that applied to it
  double* vfDist = nullptr;                 // [face] Voronoi point to Voronoi point across the face, m
  double* vfDistInv = nullptr;              // [face] 1/vfDist
  double* vfDistX = nullptr;                // [face] |x component| of vfDist
  double* vfDistY = nullptr;                // [face] |y component| of vfDist
  double* vfxNormL = nullptr;               // [face] unit normal from side vfe[2f] to the other side
  double* vfyNormL = nullptr;               // [face]
  int32_t* eNbrNo = nullptr;                // [element] number of neighbours (built by initElemNbrs)
  int32_t* eNbrIdx = nullptr;               // [element] first entry in eNbr, eNbrVf
  int32_t* eNbr = nullptr;                  // [neighbour entry] neighbour element
  int32_t* eNbrVf = nullptr;                // [neighbour entry] face shared with that neighbour
  int32_t nBnd = 0;                         // number of open boundaries present
  int32_t* bndNoFaces = nullptr;            // [open boundary] number of faces
  int32_t tnbe = 0;                         // total number of open boundary faces
  int32_t* bndId = nullptr;                 // [open boundary] boundary number 1..98, ascending
  int32_t* bndElem = nullptr;               // [open boundary face f-nivf] element of the face
  int32_t* bndFirst = nullptr;              // [open boundary] first entry in bndElem
  int32_t nvf = 0;                          // number of faces
  int32_t* vft = nullptr;                   // [face] face type: 0 inner, 1..98 open, 99 closed
  int32_t* vfn = nullptr;                   // [2*face+side] the two nodes of each face
  int32_t* vfe = nullptr;                   // [2*face+side] the two sides of each face (see above)
  double* vfeDist = nullptr;                // [2*face+side] distance of that side's Voronoi point to the face
  double* vfl = nullptr;                    // [face] face length, m
  double* vfxCoor = nullptr;                // [face] midpoint, mesh coordinates
  double* vfyCoor = nullptr;                // [face]
  int32_t nevf = 0;                         // sum of nonpe: number of element entries
  int32_t* evf = nullptr;                   // [element entry] faces of each element, sorted by face type
  int32_t* evfNbr = nullptr;                // [element entry] neighbour across, or -(face type) at a boundary
  double* evfDist = nullptr;                // [element entry] vfeDist of the element's side of the face
  int32_t* nivfpe = nullptr;                // [element] inner faces; the first nivfpe[e] of its evf entries
  int32_t* nbvfpe = nullptr;                // [element] open boundary faces
  int8_t* evfSign = nullptr;                // [element entry] +1/-1 inner, +1 open, 0 closed
  int32_t nivf = 0;                         // number of inner faces
  bool circumInit = false;                  // the circumference cache exists
  double xMax = 0, xMin = 0, yMax = 0, yMin = 0;  // node extent, set by the circumference query
  double meanElemSize = 0;                        // sqrt of the mean eArea
  int32_t nCircum = 0;                            // circumference polygon cache
  double* circumX = nullptr;                      // [circumference node]
  double* circumY = nullptr;                      // [circumference node]
  double* vfdx = nullptr;                         // [face] x of second node minus first node, m
  double* vfdy = nullptr;                         // [face]
  bool isLonLat = false;                          // coordinates are longitude and latitude in degrees
  bool isOrthogonal = false;                      // no Voronoi test failed in the last initMesh
  bool hasVoronoi = false;                        // eVoronoiX/Y are filled and are kept by initMesh
  std::string defaultMeshText;                    // a unit square in the text format
  double* anglesVF = nullptr;                     // [inner face] deviation from a right angle, degrees
  // Non-zero once initMesh has run on this group of shallow copies, which share the byte. It says
  // nothing about ownership: the arrays go with their last holder (shares).
  std::shared_ptr<uint8_t> initFlag;
  // Shortest path graph along the mesh edges, built on first use (default scale 10000).
  VCppLib::dijkstra* dij = nullptr;
  bool dijInit = false;
  VCppLib::Vkdtree* kdTree = nullptr;  // tree over exCoor, eyCoor, built on first use

  // Capacity of anglesVF: a later run may find more inner faces than the one that allocated it.
  int32_t anglesVFCap = 0;
  // The references by which this mesh keeps the arrays that it shares with its copies.
  mutable VCppLib::VArrayShare shares;

  thMesh2D();
  thMesh2D(const thMesh2D& other);  // shallow: shares arrays and initFlag
  // Shallow: lets go of this mesh's arrays, then shares those of other and its initFlag.
  thMesh2D& operator=(const thMesh2D& other);
  ~thMesh2D();

  // A copy on the heap with its own primary arrays, initialised; the Voronoi points stay shared
  // with this mesh when it has them (hasVoronoi). The caller deletes it.
  thMesh2D* clone() const;

  // Derives faces, centres, areas, Voronoi points, face metrics and boundaries. Returns 0.
  // Throws VException "Voronoi point on face." + error tail, or a sentence on broken input
  // (node numbers outside 0..non-1, more than maxNodesPerElem nodes in an element).
  int32_t initMesh();
  // Steps of initMesh, in the order in which it runs them.
  void initFaces();
  void initVoronoi();
  void calcAnglesVF();  // anglesVF of every inner face from the current Voronoi points
  void initFaceGeometry();
  void initBoundaries();
  void initFaceDistances();

  // Element neighbour lists (eNbrNo, eNbrIdx, eNbr, eNbrVf). Throws the int -1 when an inner
  // face has no second element.
  void initElemNbrs();

  // The number after "utm" at the start of the projection (any case), or -1.
  int32_t utmZoneFromProjection();
  // ---- Queries (thMeshQuery*.cpp). Arrays handed out are new[] arrays that the caller deletes
  // with delete[]; per-node lists come as one new[] array of non vectors.
  //
  // The element holding a point by the crossing rule on enxCoor, enyCoor: the lowest-numbered
  // such element, -1 if none. pointElem answers through a bucket index over the element extents
  // (built on first use, dropped by initMesh); pointElemScan is the plain scan, the same answer.
  int32_t pointElem(double x, double y) const;
  int32_t pointElemScan(double x, double y) const;
  // pointElem inside the domain unless forceNearest; otherwise the element of the nearest centre
  // by the k-d tree (which carries its last answer into the next query).
  int32_t pointElemNearest(double x, double y, int32_t forceNearest);
  bool pointInDomain(double x, double y);  // inside the outer ring (islands ignored)
  void initCircumference();                // fills the circumference cache once
  // Faces of the outer ring, from the steepest boundary face at the highest node; sets xMin..yMax.
  std::vector<int32_t> circumferenceFaces();
  int32_t circumferenceNodes(int32_t*& nodes);         // nodes of that ring, each once
  std::vector<int32_t>* nodevf() const;                // [node] faces, counter-clockwise
  std::vector<int32_t>* nodeElems(bool sorted) const;  // [node] elements
  // Other node of each face at each node, in nodevf order: counts, offsets, flat list.
  int32_t nodeNeighbors(int32_t*& nnnPerNode, int32_t*& nnnIdx, int32_t*& nn) const;
  // Per node and face at it (in face order): the other node, the element on the node's side
  // (-1 where that side is a ghost column or land), and per node whether all its elements are
  // triangles. Returns the length of the flat lists.
  int32_t nodeInfo(int32_t*& nbrCount, int32_t*& nbrs, int32_t*& elems, bool*& allTri) const;
  int32_t faceBoundary(int32_t f) const;    // index into bndId of an open face, -1 if none
  int32_t boundaryIndex(int32_t id) const;  // index of a boundary number in bndId, -1 if none
  double* elemDistances(int32_t e) const;   // [element] centre distance to element e
  double* anglesElem() const;               // [element entry] corner angle, radians
  double* anglesMaxPerElem() const;         // [element] largest corner angle, radians
  double* anglesVFMaxPerElem() const;       // [element] largest anglesVF of its inner faces, degrees
  int32_t faceCoorsLonLat(double*& x, double*& y) const;  // [face] midpoints in degrees
  double meanElemSizeDeg() const;                         // meanElemSize in the mesh's own units
  // Grid points of spacing dx, dy inside the mesh; returns their count.
  int32_t gridPoints(double dx, double dy, double*& x, double*& y);
  int32_t* evfOrientation() const;  // [element entry] +1 face runs with the element, else -1
  // Nodes along mesh edges from node `from` to node `to`, `from` first; returns their count.
  int32_t shortestPath(int32_t from, int32_t to, int32_t*& path);
  // Elements crossed by the straight line (x0,y0)-(x1,y1) and the distance at the end of each
  // stretch (-1: outside); returns their count, or -1 (outputs untouched) when the line crosses
  // no face and starts outside. Candidate faces come from a face index; lineIntersectionsScan
  // tests every face and gives the same result.
  int32_t lineIntersections(double x0, double y0, double x1, double y1, int32_t*& ise, double*& isd) const;
  int32_t lineIntersectionsScan(double x0, double y0, double x1, double y1, int32_t*& ise,
                                double*& isd) const;
  // The k-d tree, shortest path graph and spatial indexes built by the queries. Shared between
  // shallow copies and released with the last of them; kdTree and dij point into it.
  mutable std::shared_ptr<thMeshQueryCache> queryCache;
  // Forgets those caches (the next query rebuilds them): run by initMesh and freeArrays.
  void dropQueryCaches();

  // ---- Sections and meshes made from parts of this one (thMeshSection.cpp). Arrays handed out
  // are new[] arrays and meshes new objects, all the caller's.
  // The elements that the polyline of n points crosses, in order (ise, -1 for a stretch outside
  // the mesh), and the distance from its start at the end of each stretch (isd, mesh units);
  // returns their count, 0 for n < 2. A line wholly outside the mesh is one -1 stretch. Throws
  // "line end elem != next line start elem in section. Not implemented." when a line begins in
  // another element than the one before it ended in (lines that meet on a face).
  int32_t sectionIntersections(const double* xc, const double* yc, int32_t n, int32_t*& ise,
                               double*& isd) const;
  // Cuts the mesh along nSections polylines of node numbers (sections[i], sectionLengths[i]
  // nodes) that end on the outer ring into nSections+1 domains: a new[] array of new[] element
  // lists, with their lengths in the new[] array domainLengths. nullptr for nSections < 0.
  int32_t** chopDomian(const int32_t* const* sections, int32_t nSections, const int32_t* sectionLengths,
                       int32_t*& domainLengths);
  // One row of quadrilaterals along the open boundary of index `boundary` into bndId, all nodes
  // closed (99), initialised.
  thMesh2D* boundaryStripMesh(int32_t boundary) const;
  // The listed elements, in that order, with their Voronoi points; nodes renumbered in order of
  // first use and keeping their types; initialised.
  thMesh2D* subMesh(int32_t n, const int32_t* elems) const;

  // ---- Editing (thMeshEdit.cpp). Numbers are 0-based; after a deletion the numbers above a
  // deleted node or element shift down by one. Unless said otherwise an edit returns initMesh's
  // result (0), or 0 when it does not run it. An edit refused for bad input (a number out of
  // range, a missing list, a negative count) raises VException and leaves the mesh as it was.
  // With reInitMesh false only the primary arrays, the Voronoi points and eni (kept current) are
  // valid afterwards: the derived arrays are dropped (null, nvf nivf tnbe nBnd 0) until initMesh.
  // Once Voronoi points exist, edits keep those of surviving elements and give new elements
  // points of their own (see each edit); no edit refreshes the caches of the queries.
  //
  // Moves the n distinct listed nodes to consecutive numbers, nArr[0] first, at the place where
  // nArr[0] stands among the unlisted nodes; nt stays at its positions (initMesh rebuilds the
  // types of nodes on faces). -1 (nothing changed) for n < 2.
  int32_t editRenumberNodes(int32_t n, const int32_t* nArr);
  // Deletes the node and every element holding it.
  int32_t editDelNode(int32_t n, bool reInitMesh);
  // Deletes the element; its nodes stay, also those that no element uses now.
  int32_t editDelElem(int32_t e, bool reInitMesh);
  // Deletes the ne listed elements and nn listed nodes (a list may be null when its count is 0;
  // a number listed twice is deleted once). No kept element may use a deleted node. Voronoi
  // points stay with their elements.
  int32_t editDelNodesElems(int32_t ne, const int32_t* e, int32_t nn, const int32_t* n);
  int32_t editDelUnusedNodes();  // deletes the nodes that no element uses
  // Appends a node of type nodeType.
  int32_t editAddNode(double x, double y, int32_t nodeType, bool reInitMesh);
  // Appends an element of the n nodes elemNodes (0 to maxNodesPerElem); its Voronoi point is its node mean.
  int32_t editAddElem(int32_t n, const int32_t* elemNodes, bool reInitMesh);
  // The same for ne elements at once (nnPerElem[k] nodes each, one after the other in elemNodes),
  // each with its own node mean as Voronoi point.
  int32_t editAddElems(int32_t ne, const int32_t* elemNodes, const int32_t* nnPerElem, bool reInitMesh);
  // Appends nn nodes (nxc, nyc, types) and ne elements (nnPerElem[k] nodes each, from elemNodes).
  // With base >= 0 (and ne >= 1) non-base is added to every entry of elemNodes, in the caller's
  // array, so that numbers based at `base` in the added set follow the existing nodes; base -1:
  // the numbers are absolute. Every new element's Voronoi point is the mean of the first
  // nnPerElem[k] entries of elemNodes (so equal for equal node counts). Runs initMesh.
  int32_t editAddNodesElemsFull(int32_t nn, const double* nxc, const double* nyc, const int32_t* types,
                                int32_t ne, int32_t* elemNodes, const int32_t* nnPerElem, int32_t base);
  int32_t editAddNodesElemsTypes(int32_t nn, const double* nxc, const double* nyc, const int32_t* types,
                                 int32_t ne, int32_t* elemNodes, int32_t nnPerElem, int32_t base);
  int32_t editAddNodesElems(int32_t nn, const double* nxc, const double* nyc, int32_t ne, int32_t* elemNodes,
                            int32_t addnType, int32_t nnPerElem, int32_t base);
  // Appends all nodes and elements of m (coincident nodes stay double), then destroys m, which
  // frees the arrays that it shares with its source.
  int32_t editAddMesh(thMesh2D m);
  // A new initialised mesh (the caller's) of this mesh's nodes and elements followed by m's,
  // where a node of m within (x extent of both)/1e6 in x and y of a node of this mesh is that
  // node. Its projection is the default; Voronoi points are kept when both meshes have them.
  // This mesh stays as it is; m is destroyed. Meshes of different projections are refused.
  thMesh2D* mergeMesh(thMesh2D m);
  // A band of nLength-1 by nWidth quadrilaterals (cell width secWidth, negative: half the mean
  // segment length) along the polyline of n points, resampled to nLength equally spaced points;
  // new nodes of type 0.
  int32_t editAddSquareSection(const double* nxc, const double* nyc, int32_t n, int32_t nLength,
                               int32_t nWidth, double secWidth);
  // Sets the Voronoi point of e and stores in anglesVF of its inner faces the plain angle in
  // radians between face and Voronoi line (not initMesh's deviation in degrees). Returns 0;
  // notImplemented true raises "Not implemented.".
  int32_t updateVoronoiCoor(int32_t e, double x, double y, bool notImplemented);
  // UTM (zone read from the projection after its first three characters) to "LONLAT", and back
  // into a zone (1 to 60, negative south of the equator; every node within 20 degrees of the
  // zone's central meridian and on its hemisphere). Each returns 0 at once when the mesh is
  // already of that kind, and runs initMesh. The Voronoi points are not converted.
  int32_t toLonLat();
  int32_t toUTM(int32_t zone);

  // ---- Optimisation (thMeshOptimise.cpp). The movers change only nxCoor, nyCoor of nodes of
  // type 0 (with triOnly, only of nodes whose elements are all triangles) and leave the derived
  // arrays stale until the caller runs initMesh. Each returns 0 unless said otherwise.
  //
  // Replaces each inner node of exactly 4 faces and 4 triangles by 2 triangles over its
  // neighbours (diagonal between the pair of larger face count sum, q1-q3 on a tie), skipping a
  // node that shares a triangle with one already replaced. The new triangles (clockwise, at the
  // end of the element list) get their node means as Voronoi points; runs initMesh when a node
  // went. Returns the number of nodes removed.
  int32_t optimRemNodesWith4TriElems();
  // nIterations sweeps, each moving every eligible node to the mean of its neighbours' positions
  // before the sweep.
  int32_t optimCenterNodes(int32_t nIterations, bool triOnly);
  // Moves each eligible node toward its neighbour of the largest element area sum, by
  // (area difference) x factor / (area range), in node order, later nodes seeing earlier moves.
  int32_t optimMoveNodesTowardLargeElems(double factor, bool triOnly);
  // Draws every eligible node within r (r < 0: a twentieth of the summed x and y extents) toward
  // node n by w = f ((r-d)/r)^p; node n itself stays.
  int32_t optimDrawNodesTowardNode(int32_t n, double r, double p, double f, bool triOnly);

  // Mesh files. See thMeshFile.cpp for the layouts.
  int32_t readMeshFromFile(std::string fileName);
  int32_t readMeshText(std::string content);
  // blockLen is the number of bytes in block; -1 means unknown (then the block is trusted).
  int32_t readMeshBuffer(const char* block, uint32_t version, int64_t blockLen = -1);
  // Allocates block with new[] (the caller deletes it); returns its length in bytes.
  int32_t writeMeshBuffer(char*& block);
  std::string meshXml();
  int32_t initDefaultMesh();

  // The mesh in the text format, with its Voronoi points.
  std::string toString();

  // Lets go of every array (freed where this mesh was the last holder), sets the pointers to
  // null and forgets the query caches. Counts and texts stay.
  void freeArrays();
  // The same for the arrays that initMesh derives (not the primary arrays, not the Voronoi
  // points, not the caches).
  void freeDerivedArrays();
  // Lets go of the caches built on demand: neighbour lists, circumference, anglesVF, queries.
  void freeCaches();
  // Puts every array of the fields into `shares`, so that a copy can take them along.
  void holdArrays() const;
};

}  // namespace thalmod
