// The description of one 3-D model run: its time axis, its 2-D mesh, its stack of z-layers and the
// numbering of every cell, column, face and U-point (velocity point) of the 3-D grid.
//
// Numbering (fixed by initCells, relied on by every reader of result files):
// - Columns: 0..noe-1 are the elements; noe+j (j in 0..tnbe-1) is the ghost column outside open
//   boundary face nivf+j, whose element is mesh2d.bndElem[j].
// - Layers: 0 is the deepest layer of the model, nol-1 the top. Column i uses ebli[i]..etli[i].
// - Cells: column after column, bottom to top: cell of column i at layer k is
//   botlayerIdx[i] + k - ebli[i]. Computational cells 0..cells-1 come first, ghost cells follow.
// - U-points: face after face, bottom to top: U-point of face f at layer k is fUIdx[f] + k - fbli[f].
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VCppLib.h"

namespace thalmod {

// Kind of model; the numbers are stored in files.
enum modelTypeEnum : int32_t { water = 0, sediment = 10, abm = 20 };
// Kind of vertical layers; the numbers are stored in files. Only z-layers are still supported.
enum layerTypeEnum : int32_t { zlayer = 0, sigma = 1 };

// Lower-cased text: "water" or "unstructured" give water, "sediment", "abm".
modelTypeEnum str2modelTypeEnum(std::string s);
// "water", "sediment", "abm".
std::string modelTypeEnum2str(modelTypeEnum t);
// Upper-cased text: "SIGMA" gives sigma, "Z" and "ZLAYER" give zlayer.
layerTypeEnum str2layerTypeEnum(std::string s);
// "sigma", "zlayer".
std::string layerTypeEnum2str(layerTypeEnum t);

class thModelInfo {
 public:
  bool isInit = false;          // initCells has run
  int64_t startDT = 0;          // long date-time of timestep 0
  double dt = -1.0;             // timestep length in seconds, -1 until set
  int32_t modelType = 0;        // a modelTypeEnum value
  int32_t flavor = -1;          // carried from file to file, not interpreted
  int32_t nt = 0;               // number of timesteps
  std::string bathymetry;       // bathymetry specification as given
  std::string layerThickness;   // layer thickness list as given
  double* elemBathy = nullptr;  // by element: depth of the sea bed, positive down (initCells may deepen it)
  double minBotFrac = 0.1;      // thinnest bottom cell as a fraction of its layer's dz; < 0 drops thin cells
  int32_t* enol = nullptr;      // by element: number of active layers (null: worked out from elemBathy)
  double* cellVol = nullptr;    // by cell (computational): volume
  int32_t* toplayerIdx = nullptr;  // by column: cell number of the top cell
  int32_t* botlayerIdx = nullptr;  // by column: cell number of the bottom cell
  int32_t* cell2elem = nullptr;    // by cell (incl. ghost cells): column
  int32_t* cell2layer = nullptr;   // by cell (incl. ghost cells): absolute layer
  int32_t* cellGroup = nullptr;    // by cell (incl. ghost cells): 0
  int32_t* cellSeq = nullptr;      // by cell (incl. ghost cells): the cell's own number
  int32_t* cellTop = nullptr;      // by cell (incl. ghost cells): cell number of its column's top cell
  bool bndFacesOn = true;          // open boundary faces carry U-points
  int32_t totNoUvf = 0;            // faces with U-points: nivf, plus tnbe when bndFacesOn
  int32_t noUInner = 0;            // U-points on inner faces
  int32_t noUBnd = 0;              // U-points on open boundary faces
  int32_t totNoUPnts = 0;          // noUInner + noUBnd
  int32_t totNoBndCells = 0;       // ghost cells: sum of bndNoCells
  int32_t* bndNoCells = nullptr;   // by open boundary: number of ghost cells
  double* cellDepth = nullptr;     // by cell (computational): depth of the cell centre
  int32_t* hacNo = nullptr;        // by cell: number of horizontally adjacent cells (popHAC)
  int32_t* hacCell = nullptr;      // by adjacency entry: the adjacent cell
  int32_t* hacIdx = nullptr;       // by cell: first adjacency entry
  double* hacWeight = nullptr;     // by adjacency entry: exchange weight
  int32_t cells = 0;               // computational cells (ghost cells excluded)
  int32_t* ebli = nullptr;         // by column: bottom layer
  int32_t* etli = nullptr;         // by column: top layer (nol-1 at rest)
  int32_t* etliOld = nullptr;      // by element: etli of the previous timestep (wet/dry runs)
  int32_t* fbli = nullptr;         // by face (0..totNoUvf-1): bottom layer
  int32_t* ftli = nullptr;         // by face: top layer
  // The tables of rows below (fdz ... edzc, evfbli) keep all rows of a table in one block that
  // starts at row 0: a row is never freed or replaced on its own, while whole tables of one shape
  // (edz and edzOld, fdz and fdzOld) may swap places.
  double** fdz = nullptr;     // by face: thickness of each layer from fbli up (nol-fbli entries)
  double** fdzOld = nullptr;  // by face: second buffer of fdz
  double** fdzc = nullptr;    // by face: distance between layer centres k and k+1 (at least 1 entry)
  double** edz = nullptr;     // by element: thickness of each layer from ebli up (nol-ebli entries)
  double** edzOld = nullptr;  // by element: second buffer of edz
  double** edzc = nullptr;    // by element: distance between layer centres k and k+1 (at least 1 entry)
  double* edzInit = nullptr;  // by element: bottom cell thickness at rest (wet/dry runs)
  int32_t* fUIdx = nullptr;   // by face: U-point number of the face's lowest layer
  int32_t* fLayerOff =
      nullptr;  // by face, at 2f and 2f+1: fbli minus the ebli of each side (0, 0 on boundaries)
  int32_t** evfbli = nullptr;    // by element: fbli of each of its faces, in mesh2d.evf order
  thMesh2D mesh2d;               // the 2-D mesh
  int32_t nol = 0;               // number of layers
  double* dz = nullptr;          // by layer: thickness
  double* layerDepth = nullptr;  // by layer: depth of the layer centre
  double topDepth = 0.0;         // depth of the upper edge of layer nol-1
  int32_t layerType = 0;         // a layerTypeEnum value
  bool wetDryOn = false;         // etliOld and edzInit exist
  // initCells leaves the tables (see cellTables) to their first use. Not carried by copies.
  bool deferTables = false;

  // Bookkeeping of the arrays: the references by which this object keeps the arrays that it
  // shares with its member-wise copies (each array goes with its last holder, see VArrayShare),
  // and the row counts of the thickness tables as allocated, so that they are freed right even
  // after the mesh has changed.
  mutable VCppLib::VArrayShare shares;
  int32_t allocElemRows = 0;  // rows of edz, edzOld, edzc, evfbli
  int32_t allocCols = 0;      // entries of ebli, etli, botlayerIdx, toplayerIdx (noe+tnbe then)
  int32_t allocFaceRows = 0;  // rows of fdz, fdzOld, fdzc

  thModelInfo();
  ~thModelInfo();
  // Member-wise copy: scalars, texts and the mesh (by the mesh's own, shallow copy) are copied;
  // every other array is shared with the source. Each array is freed when the last copy holding
  // it goes, the mesh's included, in any order. A copy that rebuilds its cells, resets or gets new
  // inputs gets arrays of its own, and the others keep theirs. clone() is the deep copy.
  thModelInfo(const thModelInfo& other);
  thModelInfo& operator=(const thModelInfo& other);

  // Frees the arrays and returns to the defaults, keeping the mesh.
  void reset();
  // Derives layers per column, cell and U-point numbers, thicknesses and volumes from nol, dz,
  // topDepth, elemBathy, enol and the initialised mesh (initMesh first). Returns 0. A second run
  // rebuilds everything from those inputs; the wet/dry arrays and the adjacency lists go, since
  // they describe the old cells. elemBathy may be deepened (minBotFrac) and enol is filled in.
  // With minBotFrac < 0 a dropped bottom cell keeps its number, which no column then addresses.
  // Throws "Sigma layers no longer supported." for sigma layers, and a sentence for a model
  // without layers, thicknesses or bathymetry, or a mesh that was not initialised.
  int32_t initCells();
  // What initCells builds, and who needs it:
  // - Always: layerDepth; by column ebli, etli, botlayerIdx, toplayerIdx; enol, the settled
  //   elemBathy; the counts cells, totNoUvf, noUInner, noUBnd, totNoUPnts, bndNoCells,
  //   totNoBndCells. This is all that the result file's reads need: items, layers, profiles, time
  //   series, sections, painting, and the writers.
  // - The tables: edz, edzOld, edzc; fbli, ftli, fUIdx, fLayerOff, fdz, fdzOld, fdzc; evfbli;
  //   cell2elem, cell2layer, cellVol, cellDepth, cellTop, cellGroup, cellSeq. With deferTables
  //   they stay null until cellTables() builds them, which the model's own members that read
  //   them do first (thickness updates, wet/dry, toString, blowupReport, cellCoords,
  //   cellDistances, popHAC, updateCellTop); other readers call it themselves.
  // cellTables: builds the tables of an initialised model if they are missing (a no-op
  // otherwise), from the columns as initCells left them.
  void cellTables() const;
  // The centre depths of the computational cells (cellDepth) into the caller's `cells` values,
  // from the columns alone: for readers that need the depths and none of the tables. Entries that
  // no column addresses (dropped bottom cells) are left as they are.
  void fillCellDepths(double* depth) const;
  // A new heap object owned by the caller, with its own dz, elemBathy and enol, initialised.
  thModelInfo* clone() const;
  // Every element gets the depth; nolNew > 0 also replaces the stack by nolNew equal layers of
  // 1/nolNew (in float precision). Returns the result of initCells.
  int32_t setFlatBottom(double depth, int32_t nolNew);

  double layerUpperEdge(int32_t layer, int32_t elem) const;
  // Absolute layer holding a depth in an element; ebli[elem] for depths outside 0..elemBathy[elem].
  int32_t depth2Layer(int32_t elem, double depth) const;
  // depth2Layer minus ebli[elem].
  int32_t depth2LayerOff(int32_t elem, double depth) const;
  // Kind of an item of this length: 1 gives 0, nol 1, noe 2, any other 3.
  int32_t lengthClass(int32_t length) const;
  std::string resultFileExt() const;
  // Three new arrays of cells values: element centre and layer depth of each computational cell.
  // Refuses a mesh whose element count has changed since initCells.
  int32_t cellCoords(double*& x, double*& y, double*& z) const;
  // Refills cellTop from the current etli.
  void updateCellTop();

  // The vertical section along the n stretches of a section (ise, isd as from
  // thMesh2D::sectionIntersections) as a new initialised mesh that the caller deletes: x the
  // distance along the section, y the height (depths negative), one quadrilateral per crossed
  // cell, stretch after stretch and bottom up. ish: n surface heights, or null for -topDepth
  // (z-layers) or 0 (sigma). A stretch outside the mesh (-1) has no cells and, with z-layers, no
  // nodes of its own. Throws "ise2VMesh: Not implemented." for other layer types (model/thModelSection.cpp).
  thMesh2D* ise2VMesh(const int32_t* ise, const double* isd, int32_t n, const double* ish) const;

  // Set-up from configuration values (model/thModelSetup.cpp). Everything is read and checked
  // before the model changes, so that a failure leaves it as it was.
  // initModel: reads the mesh file (by mesh2d's meshFmt, with mesh2d's projection), the
  // bathymetry (as setElemBathy), the layer thicknesses from a comma-separated list, bottom layer
  // first (a piece that is no number is a layer of 0.0), stores topDepth; returns initCells.
  int32_t initModel(std::string layerThickness, std::string meshFile, std::string bathymetry,
                    double topDepth);
  // elemBathy (and enol) from a number (every element), an inline list with "," between records,
  // or a file with one record a line; a record is a depth and optionally a layer count, split at
  // tab, blank or ";" (a count <= 0 is worked out from the depth). Needs mesh2d. Returns 0.
  int32_t setElemBathy(std::string bathymetry);
  // The General block of a model configuration file; noTs > 0 is written instead of nt.
  std::string modelXml(int32_t noTs);
  // Puts checked depths and layer counts (none: enol null) in place of elemBathy and enol.
  void installBathy(std::vector<double>& depth, std::vector<int32_t>& layers);

  // Thicknesses next to the moving surface (model/thModelDZ.cpp), z-layers only. h: surface
  // elevation by element (noe values, positive up); u: velocity by U-point (totNoUPnts values,
  // positive from vfe[2f] to vfe[2f+1]), read by face rule 3 (and any rule but 0, 1, 2) and by
  // wet/dry. Face rules: 0 highest, 1 lowest, 2 mean of the two sides, 3 upwind.
  // initWetDry: keeps the bottom thicknesses (edzInit) and top layers (etliOld) for wet/dry runs.
  void initWetDry();
  // Top entries of the face rows; with wetDry (rule 3 only, after updateDZWetDry) whole rows.
  void updateDZf(double* h, double* u, int32_t faceRule, bool swapBuffers, bool wetDry);
  // Top cells of the columns, whose top layers stay where they are.
  void updateDZ(double* h, bool swapBuffers);
  // Columns whose top layers move: the cells that flood are appended to wetCells, those that dry
  // to dryCells. A column keeps its bottom cell, with a negative thickness if the surface lies
  // under the sea bed. The volumes of the cells that flood or dry follow their thickness, so that
  // the cells hold the column's water. keepOld copies edz to edzOld and etli to etliOld first.
  void updateDZWetDry(double* h, std::vector<int32_t>& wetCells, std::vector<int32_t>& dryCells,
                      bool keepOld);
  // cellVol of each column's top cell from edz.
  void updateTopCellVol();
  // Refuses (layer type, cells, mesh changed since initCells, h missing) before anything changes.
  void checkThicknessRows(const std::string& fn, const double* h) const;

  // Boundaries and adjacent cells (model/thModelBoundary.cpp).
  // A new model, owned by the caller, of the strip of quadrilaterals along open boundary index
  // `boundary` (into bndId), element i outside face bndFirst[boundary]+i; oneLayer: one layer of
  // dz[1] and depth 1.0 (needs nol >= 2).
  thModelInfo* bndModel(int32_t boundary, bool oneLayer);
  // Rounded to `decimals` decimals, up when x's own fraction is 0.5 or more, else down.
  static double roundDec(double x, double decimals);
  // Horizontally adjacent cells of a sigma grid (cell e*nol+l; layerType set to sigma after
  // initCells over columns that all reach layer 0): weights are shared face areas (asAreas) or
  // shares of the neighbours' volumes, normalised and made symmetric.
  void popHAC(bool asAreas);
  // A new array of cells values, owned by the caller: the 3-D distance of each computational cell
  // to `cell` (centre depths and element centre distances).
  double* cellDistances(int32_t cell);

  // Reports (model/thModelReport.cpp). toString: mesh, layers and cells; level > 0 adds the
  // element distances, level >= 6 each open boundary. blowupReport: the column and faces of one
  // computational cell, after initWetDry. (Inside the members, toString names this report: the
  // support library's VStr::toString is written qualified there.)
  std::string toString(int32_t level) const;
  std::string blowupReport(int32_t cell) const;
  // count values at 6 significant digits with the delimiter between them; "" for null.
  static std::string joinValues(const double* values, int32_t count, std::string delimiter);
  static std::string joinValues(const int32_t* values, int32_t count, std::string delimiter);

  // Time axis. Timestep ts lies at startDT + (int32)(ts*dt) seconds.
  int64_t ts2DT(int32_t ts) const;
  std::string ts2StrDT(int32_t ts) const;
  int64_t lastDT() const;
  // Timestep of a date-time. RoundFloorCeil: 1 floor, 2 ceil (each only where it applies), 0 and
  // any other positive value nearest, all clamped to 0..nt-1; negative: exact match or -1.
  int32_t findTimestep(int64_t dateTime, int32_t RoundFloorCeil) const;
  // A number is a timestep (its integer part); any other text a date-time.
  int64_t timeStr2DT(std::string s) const;
  // Comma-separated list of timeStr2DT texts; empty pieces are skipped.
  std::vector<int64_t> timeList2DT(std::string s) const;
  void setStartDT(std::string s);

  // Array ownership, for the operations that replace arrays. Arrays are replaced through
  // `shares` (release), never deleted directly, since member-wise copies may hold them.
  // Lets go of (free = true: freed where no copy holds them) or only forgets (free = false) the
  // arrays that initCells derives, the wet/dry arrays and the adjacency lists.
  void releaseDerived(bool free);
  // The same for dz, elemBathy and enol.
  void releaseInputs(bool free);
  // Before dz, elemBathy and enol change in place: keepInputs gives this object its own copies
  // of those that a member-wise copy shares; otherwise it lets go of them.
  void unshare(bool keepInputs);
  // Puts every array of the fields into `shares`, so that a copy can take them along.
  void holdArrays() const;
  void copyFields(const thModelInfo& o);
  void fillCellTop();  // step of initCells and updateCellTop, without checks
  // Steps of initCells (model/thModelCells.cpp).
  void makeLayerDepths();
  void placeColumns();
  void settleBottom(int32_t e);
  double bottomThickness(int32_t e) const;
  void countUPoints();
  int32_t faceBottom(int32_t f) const;
  void countBoundaryCells();
  void buildTables();
  void buildElemRows(const double* dzCentre);
  void buildFaceRows(const double* dzCentre);
  void buildCellArrays();
  void placeGhostCells(int32_t allCells);
};

}  // namespace thalmod
