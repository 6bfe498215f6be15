// The read-only accessors that the thal tool reads through: values of the small hand-made NC run
// and of a 3 x 2 bathymetry grid, worked out by hand.
#include <vector>

#include "facade/miscWrapper.h"
#include "facade/thResultFileWrapper.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using VD = std::vector<double>;
using VI = std::vector<int32_t>;

TEST(facadeAccessors, ItemLengthsCellsAndMesh) {
  thTest::TempDir dir;
  const std::string fn = dir.file("run.nc");
  thTest::writeSmallModelNc(fn);
  thWrapper::thResultFileWrapper w;
  w.filename(fn);
  ASSERT_EQ(w.readHeader(), 0);
  EXPECT_EQ(w.itemLengths(), (VI{9, 4}));
  EXPECT_EQ(w.totNoTimesteps(), 3);
  const thWrapper::thModelInfoWrapper& m = *w.mInfo;
  EXPECT_TRUE(m.isInit() && m.cells() == 9);
  // Full cells at layerDepth; a partial bottom cell at the middle of what lies above the sea bed.
  EXPECT_EQ(m.cellDepth(), (VD{11, 4.5, 1, 3.5, 1, 0.75, 8.5, 4.5, 1}));
  const thWrapper::thMesh2DWrapper& g = m.mesh2d;
  EXPECT_EQ(g.enxCoor(), (VD{0, 100, 100, 0, 100, 200, 200, 100, 200, 300, 300, 200, 300, 200}));
  EXPECT_EQ(g.enyCoor(), (VD{0, 0, 100, 100, 0, 0, 100, 100, 0, 0, 100, 0, 100, 100}));
  EXPECT_EQ(g.bndId(), (VI{1}));
  EXPECT_EQ(g.bndNoFaces(), (VI{1}));
}

TEST(facadeAccessors, BathymetryGrid) {
  thTest::TempDir dir;
  const std::string fn = dir.file("bathy.nc");
  thTest::ncgen(
      "netcdf b { dimensions: x = 3 ; y = 2 ; variables: double x(x) ; double y(y) ; "
      "float z(y, x) ; data: x = 10, 20, 30 ; y = 5, 7 ; z = 1, 2, 3, 4, 5, 6 ; }",
      fn);
  const thWrapper::bathyGrid b = thWrapper::miscWrapper::readNetCdfBathy(fn);
  EXPECT_TRUE(b.x0 == 10 && b.dx == 10 && b.y0 == 5 && b.dy == 2 && b.nx == 3 && b.ny == 2);
  EXPECT_EQ(b.depths, (VD{1, 2, 3, 4, 5, 6}));
}
