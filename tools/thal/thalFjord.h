// The sample model run of `thal sample`: a winding fjord with an open boundary at its mouth,
// its layers, and closed formulas for its fields. Plain functions: they know nothing of files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace thTool {

// Where and when the fjord lies. Coordinates are metres of UTM zone 32.
inline constexpr double fjordX0 = 500000.0;     // x of the middle of the mouth
inline constexpr double fjordY0 = 6700000.0;    // y of the middle of the mouth
inline constexpr double fjordLength = 24000.0;  // along the axis, mouth to head
inline const std::string fjordStart = "2024-06-01 00:00:00";
inline constexpr int32_t fjordTimesteps = 48;
inline constexpr double fjordDt = 3600.0;
// m at the mouth; growing by a quarter towards the head, it leaves the shallowest columns there
// dry at low water.
inline constexpr double fjordTideAmplitude = 2.2;
inline constexpr double fjordTidePeriod = 12.42 * 3600.0;  // the M2 tide, in seconds
inline constexpr double fjordTidePhase = 0.7;              // rad at the start of the run

struct FjordMesh {
  std::vector<double> x, y;       // node coordinates, indexed by node
  std::vector<int32_t> nodeType;  // 1 on the open boundary at the mouth, 0 elsewhere
  std::vector<double> nodeDepth;  // sea-bed depth, positive down, indexed by node
  std::vector<int32_t> nonpe;     // nodes per element (all triangles)
  std::vector<int32_t> en;        // nodes of the elements, counter-clockwise, element after element
};

// About 3400 triangles on a channel of 121 sections of 15 nodes each.
FjordMesh buildFjordMesh();

// Layer thicknesses, index 0 the deepest layer: 20 layers, thin at the surface, 160 m in all.
std::vector<double> fjordLayerThickness();

// Depth of each element: the mean of its nodes' depths.
std::vector<double> fjordElementDepth(const FjordMesh& m);

// The fields. `x` is the easting of the point, `z` its depth (positive down), `t` the seconds
// since the start of the run, `bed` the depth of the sea bed there. The tide comes in at the mouth
// and grows a little towards the head; the water is warm and fresh at the surface and near the
// head, warmer still over the shallow banks, with a daily heating cycle.
double fjordElevation(double x, double t);
double fjordTemperature(double x, double z, double t, double bed);
double fjordSalinity(double x, double z, double t);

// A bathymetry raster of the same area: depth at grid points `spacing` metres apart, NaN on land.
struct FjordRaster {
  std::vector<double> x;      // column coordinates, ascending
  std::vector<double> y;      // row coordinates, ascending
  std::vector<double> depth;  // indexed by row * x.size() + column
};
FjordRaster rasterizeFjord(const FjordMesh& m, double spacing);

}  // namespace thTool
