// A regular 2-D grid of float64 values, such as a gridded bathymetry raster.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace VCppLib {

// A plain record. It never frees `data` or `z`: whoever allocated them frees them, and a copy
// points at the same arrays.
class VCartGrid {
 public:
  double x0 = 0;  // x of the first grid column
  double y0 = 0;  // y of the first grid row
  double dx = 0;
  double dy = 0;
  int32_t nx = 0;             // columns
  int32_t ny = 0;             // rows
  int32_t nz = 1;             // z levels, 1 unless a z variable was read
  double* data = nullptr;     // nx*ny values, indexed by row j and column i as j*nx+i
  double* z = nullptr;        // values of the z variable, or null
  double deleteVal = -1e-37;  // carried only: missing values are NaN
  std::string name;
  int32_t start[3] = {0, 0, 0};  // carried with the record; nothing here reads them
  int32_t count[3] = {-1, -1, -1};

  VCartGrid() = default;
  VCartGrid(const VCartGrid&) = default;
  VCartGrid& operator=(const VCartGrid&) = default;
  VCartGrid(VCartGrid&& o) noexcept { *this = std::move(o); }
  VCartGrid& operator=(VCartGrid&& o) noexcept {
    if (this != &o) {
      x0 = o.x0;
      y0 = o.y0;
      dx = o.dx;
      dy = o.dy;
      nx = o.nx;
      ny = o.ny;
      nz = o.nz;
      data = o.data;
      z = o.z;
      deleteVal = o.deleteVal;
      name = std::move(o.name);
      o.name.clear();
      for (int k = 0; k < 3; ++k) {
        start[k] = o.start[k];
        count[k] = o.count[k];
      }
    }
    return *this;
  }
  ~VCartGrid() = default;
};

}  // namespace VCppLib
