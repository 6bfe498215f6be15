// A small hand-made model run as an NC result file, written from CDL text through ncgen, with the
// values that a reader must find in it worked out by hand.
//
// The mesh, in metres (x to the right, y up):
//
//   n4(0,100) ---- n5(100,100) ---- n6(200,100) ---- n7(300,100)
//     |               |                 |        e3   /  |
//     |      e0       |       e1        |          /     |
//     |               |                 |       /   e2   |
//   n0(0,0) ------ n1(100,0) ------ n2(200,0) ------ n3(300,0)
//
//   e0 = quad 0 1 5 4, e1 = quad 1 2 6 5, e2 = triangle 2 3 7, e3 = triangle 2 7 6.
//   The left edge n0-n4 is open boundary 1 (both nodes of type 1); all other outer edges are closed.
//   Voronoi points (given in the file): e0 (50,50), e1 (150,50), e2 (270,30), e3 (230,70).
//
// Layers (dz, bottom first): 10, 5, 2 with topDepth 0, so the upper edges are at 7, 2 and 0 and the
// centres (layerDepth) at 12, 4.5 and 1.
// Sea bed: e0 15, e1 5, e2 1.5, e3 10, so the bottom layers (ebli) are 0, 1, 2, 0 and the elements
// hold 3, 2, 1 and 3 cells: 9 cells, numbered e0: 0 1 2, e1: 3 4, e2: 5, e3: 6 7 8 (bottom up);
// botlayerIdx 0, 3, 5, 6.
//
// Items: "temp" (one value per cell) and "elev" (one value per element), three timesteps at
// 2010-01-01 00:00:00 + 0, 1000 and 7200 seconds (so dt is 3600: only the ends count).
// temp(t, c) = 100 t + c + 0.25, except the deleted values (delVal):
//   t = 1: cells 1 and 2 (the two upper cells of e0) and cell 8 (top of e3);
//   t = 2: cells 6, 7, 8 (all of e3) and cell 4 (top of e1).
// elev(t, e) = t + 0.5 e.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace thalmod {
class thModelInfo;
}

namespace thTest {

struct SmallModel {
  static constexpr int non = 8, noe = 4, nol = 3, cells = 9, nt = 3;
  static constexpr int64_t startDT = 1262304000;  // 2010-01-01 00:00:00
  static constexpr double dt = 3600.0;
  // node coordinates and types (as stored: 1 on the open boundary, else 99)
  static inline const std::vector<double> x = {0, 100, 200, 300, 0, 100, 200, 300};
  static inline const std::vector<double> y = {0, 0, 0, 0, 100, 100, 100, 100};
  static inline const std::vector<int> nodeType = {1, 99, 99, 99, 1, 99, 99, 99};
  // element nodes
  static inline const std::vector<int> nonpe = {4, 4, 3, 3}, en = {0, 1, 5, 4, 1, 2, 6, 5, 2, 3, 7, 2, 7, 6};
  static inline const std::vector<double> vorX = {50, 150, 270, 230}, vorY = {50, 50, 30, 70};
  static inline const std::vector<double> bathy = {15, 5, 1.5, 10}, dz = {10, 5, 2};
  static inline const std::vector<int> ebli = {0, 1, 2, 0}, botlayerIdx = {0, 3, 5, 6}, enol = {3, 2, 1, 3};
  static inline const std::vector<double> layerDepth = {12, 4.5, 1};
  // The values of the items, by hand.
  static float temp(int t, int cell);
  static float elev(int t, int elem);
};

struct SmallModelOptions {
  bool elemLayers = true;   // write the variable "elemlayers"
  bool topDepthAtt = true;  // write the attribute "topDepth" (value 0)
  int layerType = 0;
  // The time axis; the items get one timestep per entry (values of timestep t as above, t < 3,
  // and 100 t + c + 0.25 / t + 0.5 e beyond).
  std::vector<int64_t> times = {1262304000, 1262305000, 1262311200};
  bool items = true;  // false: no item variables and nItem 0
  // The values of entry i of `times` are those of timestep firstStep + i, so that the physical
  // files of one logical file can be told apart.
  int firstStep = 0;
};

// The CDL text of the small model (no trailing ncgen call); tests may edit it to break the schema.
std::string smallModelCdl(const SmallModelOptions& opt = {});
// Writes the small model as a NetCDF-4 file through ncgen.
void writeSmallModelNc(const std::string& ncPath, const SmallModelOptions& opt = {});
// The same, returning the path, for a file to be opened at once.
std::string smallModelNc(const std::string& ncPath, const SmallModelOptions& opt = {});

// The small model built in memory the way a running model sets itself up (projection "UTM32",
// flavor 3, Voronoi points worked out by initMesh), ready for writing.
void buildSmallModel(thalmod::thModelInfo& mi);

}  // namespace thTest
