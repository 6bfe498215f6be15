// The mesh as text in the mesh file format, so that it can be saved and read back.
#include <cstdint>
#include <sstream>
#include <string>

#include "mesh/thMesh2D.h"

namespace thalmod {

std::string thMesh2D::toString() {
  const std::string& nl = VCppLib::newline;
  std::ostringstream ss;
  ss.precision(10);
  // The third number announces one Voronoi point per element.
  ss << non << ' ' << noe << ' ' << noe << nl;
  // Counts set without their arrays (a mesh being filled) give the header alone.
  if (non > 0 && (nxCoor == nullptr || nyCoor == nullptr || nt == nullptr)) return ss.str();
  if (noe > 0 && (nonpe == nullptr || en == nullptr)) return ss.str();
  for (int32_t i = 0; i < non; i++) ss << nxCoor[i] << ' ' << nyCoor[i] << ' ' << nt[i] << nl;
  for (int32_t e = 0, k = 0; e < noe; e++) {
    for (int32_t i = 0; i < nonpe[e]; i++, k++) ss << (i > 0 ? " " : "") << en[k];
    ss << nl;
  }
  // A mesh that never ran initMesh has no Voronoi points; the reader then computes them.
  if (eVoronoiX != nullptr && eVoronoiY != nullptr)
    for (int32_t e = 0; e < noe; e++) ss << eVoronoiX[e] << ' ' << eVoronoiY[e] << nl;
  return ss.str();
}

}  // namespace thalmod
