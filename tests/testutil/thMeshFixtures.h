// Mesh texts (in the mesh text format) for tests of every subsystem that needs a mesh. Read one
// with thalmod::thMesh2D::readMeshText; the faces and boundaries each gives are listed below.
#pragma once

#include <cstdint>
#include <string>

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

}  // namespace thTest
