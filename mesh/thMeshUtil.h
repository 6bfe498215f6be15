// Small helpers shared by the mesh sources.
#pragma once

#include <cmath>
#include <cstdint>

namespace thalmod::meshutil {

// UTM zone of a position: floor((lon+180)/6)+1 reduced by the truncating remainder modulo 60
// (so 60 becomes 0), negative unless lat > 0. Positions that are not finite give zone 0.
inline int32_t utmZoneOf(double lon, double lat) {
  const double zf = std::floor((lon + 180.0) / 6.0) + 1.0;
  if (!std::isfinite(zf) || std::fabs(zf) > 2.0e9) return 0;
  const int32_t z = static_cast<int32_t>(zf) % 60;
  return lat > 0 ? z : -z;
}

}  // namespace thalmod::meshutil
