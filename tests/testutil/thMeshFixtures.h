// Meshes for tests of every subsystem that needs one: texts in the mesh text format (read one with
// thalmod::thMesh2D::readMeshText; the faces and boundaries each gives are listed below) and
// builders that fill a mesh's arrays directly.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thTestUtil.h"

namespace thTest {

// A grid of nx by ny rectangular cells of size dx by dy, lower left corner at (x0, y0), node
// (i, j) numbered j*(nx+1)+i, cells counter-clockwise, numbered row by row from the south.
// triangles: each cell is split along its diagonal from (i, j) to (i+1, j+1) into two
// triangles (lower right first). Node types: 0 inside and 99 on the rim, except that the
// nodes of the west side (corners included) get westType and those of the east side eastType
// when those are not 0, so that an open side has ny faces of its type.
std::string gridMeshText(int32_t nx, int32_t ny, double dx = 1.0, double dy = 1.0, bool triangles = false,
                         int32_t westType = 0, int32_t eastType = 0, double x0 = 0.0, double y0 = 0.0);

// A small model mesh in metres: 4 by 2 quadrilaterals of 100 m (15 nodes, 8 elements), open
// boundary 1 along the west side (2 faces), open boundary 2 along the east side (2 faces), the
// rest closed. 10 inner faces, 4 open faces (faces 10, 11: boundary 1; 12, 13: boundary 2),
// 8 closed faces; nvf 22. Elements 0..3 are the southern row, west to east.
std::string smallModelMeshText();

// The same mesh, but its last two elements (the north-east corner, cells (2,1) and (3,1)) are
// each split into two triangles: a mixed mesh of 6 quadrilaterals and 4 triangles.
std::string smallMixedMeshText();

// Fills the primary arrays of a mesh (metres, projection UTM32) and runs initMesh.
inline void buildMesh(thalmod::thMesh2D& m, const std::vector<double>& x, const std::vector<double>& y,
                      const std::vector<int32_t>& types, const std::vector<std::vector<int32_t>>& elems) {
  m.projection = "UTM32";
  m.non = static_cast<int32_t>(x.size());
  m.nxCoor = newArray(x);
  m.nyCoor = newArray(y);
  m.nt = newArray(types);
  m.noe = static_cast<int32_t>(elems.size());
  m.nonpe = new int32_t[m.noe];
  std::vector<int32_t> en;
  for (int32_t e = 0; e < m.noe; e++) {
    m.nonpe[e] = static_cast<int32_t>(elems[e].size());
    en.insert(en.end(), elems[e].begin(), elems[e].end());
  }
  m.en = newArray(en);
  m.initMesh();
}

// Three unit squares in a row:
//   4---5---6---7
//   | 0 | 1 | 2 |
//   0---1---2---3
// The right end (nodes 3, 7) is open boundary 1 when openRight, the left end (nodes 0, 4) open
// boundary 2 when openLeft; all other outer faces are closed. Inner faces: 0 = (1,5) between
// elements 0 and 1, 1 = (2,6) between elements 1 and 2; then the open faces, right before left.
inline void stripMesh(thalmod::thMesh2D& m, bool openRight, bool openLeft) {
  m.readMeshText(gridMeshText(3, 1, 1.0, 1.0, false, openLeft ? 2 : 0, openRight ? 1 : 0));
}

// A grid of nx by ny cells of 10 m, each a square or (at random) two triangles, with the right
// side open boundary 1 and, if asked, the left side open boundary 2.
void gridMesh(thalmod::thMesh2D& m, int32_t nx, int32_t ny, std::mt19937& rng, bool openLeft);

}  // namespace thTest
