// thal section on the sample run: the CSV against the sample's own formulas, the picture by its
// size and colours, and a refusal.
#include <set>
#include <sstream>

#include "resultfile/thResultFile.h"
#include "testutil/thPng.h"
#include "thalRun.h"

namespace {

using namespace thalTest;

TEST_F(SampleRun, SectionCsvFollowsTheSampleFormulas) {
  Result r = thal("section " + quoted(run()) +
                  " --item temperature --line 500356,6700181:504219,6702935:508545,6702004 --time 12 --csv");
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> ls = lines(r.out);
  ASSERT_GT(ls.size(), 100u);
  EXPECT_EQ(ls[0], "distance,element,layer,depth,temperature");
  thalmod::thResultFile rf(run());
  const thalmod::thModelInfo& m = rf.mInfo;
  double lastDist = 0, dist, depth, value;
  int lastElem = -1, layer = -1, elem;
  char c;
  for (size_t i = 1; i < ls.size(); ++i) {
    std::istringstream in(ls[i]);
    const int prev = layer;
    ASSERT_TRUE(in >> dist >> c >> elem >> c >> layer >> c >> depth >> c >> value) << ls[i];
    const bool next = elem != lastElem;  // a new element further along, from the surface down
    EXPECT_EQ(layer, next ? m.nol - 1 : prev - 1) << ls[i];
    if (next) {
      EXPECT_GT(dist, lastDist);
      EXPECT_EQ(prev, lastElem < 0 ? -1 : m.ebli[lastElem]);  // the one before reached its bottom
      lastDist = dist, lastElem = elem;
    }
    EXPECT_NEAR(value, sampleTemperature(m.mesh2d.exCoor[elem], depth, 12 * 3600.0, m.elemBathy[elem]), 3e-4)
        << ls[i];
  }
  EXPECT_EQ(layer, m.ebli[lastElem]);
  EXPECT_EQ(lastElem, m.mesh2d.pointElem(508545, 6702004));  // the line ends in its last element
}

TEST_F(SampleRun, SectionPictureShowsCellsSeaBedLandAndLegend) {
  thTest::TempDir tmp;
  const std::string png = tmp.file("s.png");
  // across the fjord from bank to bank
  Result r =
      thal("section " + quoted(run()) + " --item salinity --line 506254,6702187:507365,6703603 --time 12 " +
           "--size 300x150 -o " + quoted(png));
  ASSERT_EQ(r.status, 0) << r.err;
  int32_t w = 0, h = 0;
  std::vector<int32_t> px = thTest::readPng(png, w, h);
  ASSERT_TRUE(w == 300 && h == 150) << w << "x" << h;
  const int32_t land = static_cast<int32_t>(0xFFD8D2C4), seabed = static_cast<int32_t>(0xFFA89F8E),
                rows = h - 34;
  EXPECT_EQ(px[0], land);                      // the line starts on land...
  EXPECT_EQ(px[rows / 2 * w + w - 1], land);   // ...and ends there
  EXPECT_EQ(px[(rows - 1) * w + 60], seabed);  // the bank under the water, near the shore
  std::set<int32_t> water;  // the middle column from the surface down: coloured cells, then the bed
  for (int32_t row = 0; row < rows; ++row) water.insert(px[row * w + w / 2]);
  EXPECT_GT(water.size(), 3u);
  EXPECT_EQ(water.count(land) + water.count(static_cast<int32_t>(0xFFFFFFFF)), 0u);  // nothing unpainted
}

TEST_F(SampleRun, SectionRefusesA2DItem) {
  Result r = thal("section " + quoted(run()) + " --item elevation --line 0,0:1,1 --time 0 --csv");
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "thal: Item 'elevation' is a 2-D item; a section needs a 3-D item.\n");
  EXPECT_TRUE(r.out.empty());
}

}  // namespace
