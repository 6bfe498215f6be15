// The model description facade over the small hand-made run: properties, copies of the arrays and
// the vertical section mesh, which the returned wrapper owns.
#include <vector>

#include "facade/thModelInfoWrapper.h"
#include "facade/thResultFileWrapper.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using thTest::SmallModel;
using VI = std::vector<int32_t>;
using VD = std::vector<double>;

TEST(thModelInfoWrapper, PropertiesArraysAndSectionMesh) {
  thTest::TempDir dir;
  std::string fn = dir.file("run.nc");
  thTest::writeSmallModelNc(fn);
  thWrapper::thResultFileWrapper rf;
  rf.filename(fn);
  rf.readHeader();
  thWrapper::thModelInfoWrapper& mi = *rf.mInfo;
  EXPECT_TRUE(mi.startDT() == SmallModel::startDT && mi.dt() == 3600.0 && mi.nt() == 3);
  EXPECT_EQ(mi.ebli(), (VI{0, 1, 2, 0}));
  EXPECT_EQ(mi.botlayerIdx(), (VI{0, 3, 5, 6}));
  EXPECT_TRUE(mi.dz() == SmallModel::dz && mi.layerDepth() == SmallModel::layerDepth &&
              mi.elemBathy() == SmallModel::bathy);
  EXPECT_EQ(mi.ts2StrDT(1), "2010-01-01 01:00:00");
  EXPECT_EQ(mi.findTimestep(SmallModel::startDT + 5000), 1);     // nearest
  EXPECT_EQ(mi.findTimestep(SmallModel::startDT + 5000, 2), 2);  // ceil
  // one U-point face list per face, nol - fbli entries each
  std::vector<VD> fdz = mi.fdz();
  VI fbli = mi.fbli();
  ASSERT_EQ(fdz.size(), static_cast<size_t>(mi.totNoUvf()));
  for (size_t f = 0; f < fdz.size(); ++f) EXPECT_EQ(fdz[f].size(), static_cast<size_t>(3 - fbli[f]));
  mi.topDepth(0.5);  // stored, nothing rebuilt
  EXPECT_TRUE(mi.topDepth() == 0.5 && mi.mesh2d.noe() == 4);
  // e1 alone: 2 cells, nodes on levels 1..3 of both columns
  thWrapper::thMesh2DWrapper v = mi.ise2VMesh({1}, {100});
  EXPECT_TRUE(v.noe() == 2 && v.non() == 6);
  EXPECT_VEXCEPTION_HAS(mi.ise2VMesh({1, 2}, {100}), "isd");
  EXPECT_VEXCEPTION_HAS(mi.updateDZf({0, 0}, {}), "fewer than the 4 needed");
}
