// Point queries of an initialised mesh.
#include "mesh/thMesh2D.h"

namespace thalmod {

// A linear scan in element order, with no spatial index and no tolerance: the first element
// whose polygon holds the point by the crossing rule, in the unprojected mesh coordinates of
// enxCoor, enyCoor. A point on a face shared by two elements goes to whichever the rule gives
// first. A mesh that initMesh has not filled holds no point.
int32_t thMesh2D::pointElem(double x, double y) const {
  if (noe < 1 || nonpe == nullptr || eni == nullptr || enxCoor == nullptr || enyCoor == nullptr)
    return -1;
  for (int32_t e = 0; e < noe; ++e) {
    const int32_t n = nonpe[e];
    if (n < 1) continue;
    const double* ex = enxCoor + eni[e];
    const double* ey = enyCoor + eni[e];
    bool inside = false;
    for (int32_t i = 0, j = n - 1; i < n; j = i++) {
      if ((ey[i] > y) != (ey[j] > y) && (ex[j] - ex[i]) * (y - ey[i]) / (ey[j] - ey[i]) + ex[i] > x)
        inside = !inside;
    }
    if (inside) return e;
  }
  return -1;
}

}  // namespace thalmod
