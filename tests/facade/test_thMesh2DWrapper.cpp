// The mesh facade over small hand-made meshes: copies, setters, defaults of the overloads and the
// arrays of the library released after the copy (checked by the sanitizer build).
#include <vector>

#include "facade/thMesh2DWrapper.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thWrapper::thMesh2DWrapper;
using VI = std::vector<int32_t>;
using VD = std::vector<double>;

TEST(thMesh2DWrapper, CopiesSettersAndEditsThroughTheOverloads) {
  thalmod::thMesh2D m;
  m.readMeshText("3 1\n0 0\n1 0\n0 1\n0 1 2\n");
  thMesh2DWrapper w(&m);
  VD x = w.nxCoor();
  x[0] = 5;
  EXPECT_EQ(w.nxCoor(), (VD{0, 1, 0}));  // a fresh copy each time
  w.nt({1, 2, 3, 4});                    // the first non entries
  EXPECT_EQ(w.nt(), (VI{1, 2, 3}));
  EXPECT_TRUE(w.anglesVF().empty() && w.en() == (VI{0, 1, 2}) && w.vfn().size() == 6u);  // no inner faces
  EXPECT_EQ(w.editRenumberNodes({2}), -1);
  EXPECT_EQ(w.editAddSquareSection({}, {}, 3), 0);
  const std::vector<VI> nvf = w.nodevf();
  EXPECT_TRUE(nvf.size() == 3u && nvf[0].size() == 2u);
  VI ise;
  VD isd;
  EXPECT_EQ(w.sectionIntersections({0.1, 0.2}, {0.1, 0.2}, ise, isd), 1);
  EXPECT_EQ(ise, VI{0});
  EXPECT_VEXCEPTION_HAS(w.updateNodeCoor(3, 0, 0), "node 3 is out of range");

  // edits through the overloads' defaults
  thalmod::thMesh2D grid;
  grid.readMeshText(thTest::gridMeshText(2, 1));  // 6 nodes, 2 squares
  w = thMesh2DWrapper(&grid);
  // 7 entries of 3 nodes: 2 triangles, the seventh entry is left over
  w.editAddNodesElems({0.5, 1.5}, {1.8, 1.8}, {3, 4, 6, 4, 5, 7, 0});
  EXPECT_TRUE(w.non() == 8 && w.noe() == 4 && w.nt()[7] == 99);
  w.editAddNode(3, 0);
  EXPECT_EQ(w.nt()[8], 99);
  w.editDelNode(8);
  EXPECT_EQ(w.non(), 8);
  VI per, idx, nn;
  EXPECT_EQ(w.nodeNeighbors(per, idx, nn), 22);  // both ends of 7 + 4 faces
  EXPECT_TRUE(nn.size() == 22u && per.size() == 8u && w.anglesMaxPerElem().size() == 4u &&
              w.nodeElems().size() == 8u);
}
