// The model of a result file: its report at a high level, and the same model set up from a mesh
// file, a bathymetry and a layer list.
#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;

TEST(ResultFileModel, ReportAndSetUpFromConfiguration) {
  thTest::TempDir dir;
  thTest::writeSmallModelNc(dir.file("s.nc"));
  thResultFile rf(dir.file("s.nc"), NC);
  EXPECT_EQ(rf.toString(10), rf.toString(9) + rf.mInfo.toString(10));
  EXPECT_NE(rf.toString(10).find("\nNo. Computational cells: 9\n"), std::string::npos);

  thTest::writeText(dir.file("s.mesh"), rf.mInfo.mesh2d.toString());
  thModelInfo mi;
  ASSERT_EQ(mi.initModel("10,5,2", dir.file("s.mesh"), "15,5,1.5,10", 0.0), 0);
  const thModelInfo& r = rf.mInfo;
  ASSERT_EQ(std::vector<int32_t>({mi.cells, mi.totNoUPnts, mi.totNoBndCells}),
            std::vector<int32_t>({r.cells, r.totNoUPnts, r.totNoBndCells}));
  const int32_t cols = r.mesh2d.noe + r.mesh2d.tnbe;
  EXPECT_EQ(std::vector<int32_t>(mi.ebli, mi.ebli + cols), std::vector<int32_t>(r.ebli, r.ebli + cols));
  EXPECT_EQ(std::vector<int32_t>(mi.botlayerIdx, mi.botlayerIdx + cols),
            std::vector<int32_t>(r.botlayerIdx, r.botlayerIdx + cols));
  EXPECT_EQ(std::vector<int32_t>(mi.fUIdx, mi.fUIdx + r.totNoUvf), std::vector<int32_t>(r.fUIdx, r.fUIdx + r.totNoUvf));
  for (int32_t c = 0; c < r.cells; c++) EXPECT_NEAR(mi.cellVol[c], r.cellVol[c], 1e-9 * r.cellVol[c]) << c;
}
