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
// Copies are shallow: a copy shares every array and the initFlag byte with its source, and the
// copy destroyed first frees the arrays.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "support/VCppLib.h"

namespace VCppLib {
class Vkdtree;
class dijkstra;
}  // namespace VCppLib

namespace thalmod {

class thMesh2D {
 public:
  std::string meshFN;               // name of the mesh file
  int32_t meshFmt = 0;              // file format of the mesh file: 0 text (EMT), 1 binary (EMB)
  std::string projection = "UTM32"; // "LONLAT" anywhere in it (any case) means degrees
  int32_t non = 0;                  // number of nodes
  int32_t* nt = nullptr;            // [node] node type: 0 inner, 1..98 open boundary, 99 closed
  double* nxCoor = nullptr;         // [node] x in mesh coordinates (degrees when isLonLat)
  double* nyCoor = nullptr;         // [node] y in mesh coordinates
  int32_t utmZone = 32;             // UTM zone of the mesh, negative south of the equator
  double* nxUTM = nullptr;          // [node] x in metres; the very array nxCoor unless isLonLat
  double* nyUTM = nullptr;          // [node] y in metres; the very array nyCoor unless isLonLat
  double xMean = 0, yMean = 0;      // plain means of the node coordinates
  double totArea = 0;               // sum of eArea
  double areaCenterX = 0, areaCenterY = 0;  // area weighted mean of the element centres
  int32_t noe = 0;                  // number of elements
  double* exCoor = nullptr;         // [element] centre: mean of its node coordinates
  double* eyCoor = nullptr;         // [element]
  double* eVoronoiX = nullptr;      // [element] Voronoi point, mesh coordinates
  double* eVoronoiY = nullptr;      // [element]
  int32_t* nonpe = nullptr;         // [element] number of nodes
  int32_t* en = nullptr;            // [element entry, eni[e]..eni[e]+nonpe[e]-1] node numbers
  double* enxCoor = nullptr;        // [element entry] nxCoor of each entry of en
  double* enyCoor = nullptr;        // [element entry] nyCoor of each entry of en
  int32_t* eni = nullptr;           // [element] first entry of the element in en, evf, ...
  double* eArea = nullptr;          // [element] area in square metres
  double* eAreaInv = nullptr;       // [element] 1/eArea
  bool* eIsAcute = nullptr;         // [element] passed the Voronoi test that applied to it
  double* vfDist = nullptr;         // [face] Voronoi point to Voronoi point across the face, m
  double* vfDistInv = nullptr;      // [face] 1/vfDist
  double* vfDistX = nullptr;        // [face] |x component| of vfDist
  double* vfDistY = nullptr;        // [face] |y component| of vfDist
  double* vfxNormL = nullptr;       // [face] unit normal from side vfe[2f] to the other side
  double* vfyNormL = nullptr;       // [face]
  int32_t* eNbrNo = nullptr;        // [element] number of neighbours (built by initElemNbrs)
  int32_t* eNbrIdx = nullptr;       // [element] first entry in eNbr, eNbrVf
  int32_t* eNbr = nullptr;          // [neighbour entry] neighbour element
  int32_t* eNbrVf = nullptr;        // [neighbour entry] face shared with that neighbour
  int32_t nBnd = 0;                 // number of open boundaries present
  int32_t* bndNoFaces = nullptr;    // [open boundary] number of faces
  int32_t tnbe = 0;                 // total number of open boundary faces
  int32_t* bndId = nullptr;         // [open boundary] boundary number 1..98, ascending
  int32_t* bndElem = nullptr;       // [open boundary face f-nivf] element of the face
  int32_t* bndFirst = nullptr;      // [open boundary] first entry in bndElem
  int32_t nvf = 0;                  // number of faces
  int32_t* vft = nullptr;           // [face] face type: 0 inner, 1..98 open, 99 closed
  int32_t* vfn = nullptr;           // [2*face+side] the two nodes of each face
  int32_t* vfe = nullptr;           // [2*face+side] the two sides of each face (see above)
  double* vfeDist = nullptr;        // [2*face+side] distance of that side's Voronoi point to the face
  double* vfl = nullptr;            // [face] face length, m
  double* vfxCoor = nullptr;        // [face] midpoint, mesh coordinates
  double* vfyCoor = nullptr;        // [face]
  int32_t nevf = 0;                 // sum of nonpe: number of element entries
  int32_t* evf = nullptr;           // [element entry] faces of each element, sorted by face type
  int32_t* evfNbr = nullptr;        // [element entry] neighbour across, or -(face type) at a boundary
  double* evfDist = nullptr;        // [element entry] vfeDist of the element's side of the face
  int32_t* nivfpe = nullptr;        // [element] inner faces; the first nivfpe[e] of its evf entries
  int32_t* nbvfpe = nullptr;        // [element] open boundary faces
  int8_t* evfSign = nullptr;        // [element entry] +1/-1 inner, +1 open, 0 closed
  int32_t nivf = 0;                 // number of inner faces
  bool circumInit = false;          // the circumference cache exists
  double xMax = 0, xMin = 0, yMax = 0, yMin = 0;  // node extent, set by the circumference query
  double meanElemSize = 0;          // sqrt of the mean eArea
  int32_t nCircum = 0;              // circumference polygon cache
  double* circumX = nullptr;        // [circumference node]
  double* circumY = nullptr;        // [circumference node]
  double* vfdx = nullptr;           // [face] x of second node minus first node, m
  double* vfdy = nullptr;           // [face]
  bool isLonLat = false;            // coordinates are longitude and latitude in degrees
  bool isOrthogonal = false;        // no Voronoi test failed in the last initMesh
  bool hasVoronoi = false;          // eVoronoiX/Y are filled and are kept by initMesh
  std::string defaultMeshText;      // a unit square in the text format
  double* anglesVF = nullptr;       // [inner face] deviation from a right angle, degrees
  // Non-zero once initMesh has run; shared between shallow copies, cleared by the one that frees.
  std::shared_ptr<uint8_t> initFlag;
  // Shortest path graph along the mesh edges, built on first use (default scale 10000).
  VCppLib::dijkstra* dij = nullptr;
  bool dijInit = false;
  VCppLib::Vkdtree* kdTree = nullptr;  // tree over exCoor, eyCoor, built on first use

  // Capacity of anglesVF: a later run may find more inner faces than the one that allocated it.
  int32_t anglesVFCap = 0;
  // Shared like initFlag: the arrays are this group's to free even when an initMesh failed
  // half-way or never ran after a reader allocated them.
  std::shared_ptr<uint8_t> ownsArrays;

  thMesh2D();
  thMesh2D(const thMesh2D&) = default;             // shallow: shares arrays and initFlag
  thMesh2D& operator=(const thMesh2D&) = default;  // shallow: shares arrays and initFlag
  ~thMesh2D();

  // A deep copy on the heap with its own primary arrays, initialised. The caller deletes it.
  thMesh2D* clone() const;

  // Derives faces, centres, areas, Voronoi points, face metrics and boundaries. Returns 0.
  // Throws VException "Voronoi point on face." + error tail, or a sentence on broken input
  // (node numbers outside 0..non-1, more than 50 nodes in an element).
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
  int32_t pointElem(double x, double y) const;  // first element holding the point, -1 if none

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

  // Frees every array this object's group owns and clears the shared flags.
  void freeArrays();
  // Frees the arrays that initMesh derives (not the primary arrays, not the Voronoi points,
  // not the caches), when this group owns them; always sets their pointers to null. A group
  // that owns nothing also forgets its caches, which then belong to another group.
  void freeDerivedArrays();
};

}  // namespace thalmod
