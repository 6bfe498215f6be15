// The subcommands of thal on the sample run, checked against the sample's own formulas.
#include <map>

#include "resultfile/thResultFile.h"
#include "testutil/thPng.h"
#include "thalRun.h"

namespace {

using namespace thalTest;

// The value of a CSV line after its last comma.
double lastField(const std::string& line) { return std::stod(line.substr(line.rfind(',') + 1)); }

constexpr int32_t land = static_cast<int32_t>(0xFFD8D2C4);

// Colour -> colour step of the picture's palette, read off the legend bar (columns 8 to w-9 of a
// row through its middle, each column showing the step at its middle), so that the map's colours
// are checked against the legend drawn beside them rather than a copy of the palette. Checks
// that the numbers stand under the bar.
std::map<int32_t, int32_t> legendSteps(const std::vector<int32_t>& px, int32_t w, int32_t h) {
  std::map<int32_t, int32_t> steps;
  const int32_t row = h - 34 + 10;
  for (int32_t c = 8; c < w - 8; ++c)
    steps.emplace(px[row * w + c], std::min(255, static_cast<int32_t>((c - 8 + 0.5) / (w - 16) * 256)));
  EXPECT_GT(steps.size(), 200u);  // neighbouring steps may share a colour
  int text = 0;
  for (int32_t r = h - 34 + 20; r < h; ++r)
    for (int32_t c = 0; c < w; ++c) text += px[r * w + c] == static_cast<int32_t>(0xFF202020);
  EXPECT_GT(text, 20);
  return steps;
}

// Colour -> palette step; -1 for colours that are not in the palette.
int32_t indexOf(const std::map<int32_t, int32_t>& index, int32_t c) {
  auto it = index.find(c);
  return it == index.end() ? -1 : it->second;
}

TEST_F(SampleRun, SampleIsTheSameOnEveryRunAndHasTheDescribedShape) {
  thTest::TempDir again;
  Result r = thal("sample " + quoted(again.path()));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(thTest::readText(again.file("fjord.nc")), thTest::readText(run()));
  EXPECT_EQ(thTest::readText(again.file("fjord_bathy.nc")), thTest::readText(raster()));
  EXPECT_NE(thTest::ncdump(raster(), "-h").find("double depth(y, x)"), std::string::npos);
}

TEST_F(SampleRun, InfoReportsItemsTimeAxisAndMesh) {
  Result r = thal("info " + quoted(run()));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(r.err.empty());
  // The mouth is one cross-section of 15 nodes.
  const std::string parts[] = {
      "Filename:\t" + run() + "\n",
      "Format:\tNC\n",
      "\ttemperature\t3-D\t",
      "\tsalinity\t3-D\t",
      "\televation\t2-D\t3360 values per timestep\n",
      "48 timesteps from 2024-06-01 00:00:00 to 2024-06-02 23:00:00, every 3600 s\n",
      "1815 nodes, 3360 elements (3360 triangles, 0 quadrilaterals), projection UTM32\n",
      "Open boundaries:\t1 (number 1 with 14 faces)\n"};
  for (const std::string& part : parts) EXPECT_NE(r.out.find(part), std::string::npos) << part << r.out;

  // The level goes to the file's own report, which opens the output.
  thalmod::thResultFile rf(run(), -1);
  for (int level : {0, 10}) {
    Result withLevel = thal("info " + quoted(run()) + " --level " + std::to_string(level));
    ASSERT_EQ(withLevel.status, 0) << withLevel.err;
    const std::string report = rf.toString(level);
    EXPECT_EQ(withLevel.out.substr(0, report.size()), report);
    EXPECT_EQ(withLevel.out.substr(report.size(), 12), "Item kinds:\n");
  }
}

TEST_F(SampleRun, SeriesFollowTheTideAndTheDailyHeating) {
  thalmod::thResultFile rf(run(), -1);
  const thalmod::thMesh2D& g = rf.mInfo.mesh2d;
  for (int32_t e : {100, 2500}) {
    const double x = g.exCoor[e], y = g.eyCoor[e], bed = rf.mInfo.elemBathy[e];
    Result elev = thal("series " + quoted(run()) + " --item elevation --at " + point(x, y));
    ASSERT_EQ(elev.status, 0) << elev.err;
    std::vector<std::string> l = lines(elev.out);
    ASSERT_EQ(l.size(), 49u);
    EXPECT_EQ(l[0], "datetime,elevation");
    EXPECT_EQ(l[1].substr(0, 20), "2024-06-01 00:00:00,");
    EXPECT_EQ(l[48].substr(0, 20), "2024-06-02 23:00:00,");
    for (int t = 0; t < 48; ++t) EXPECT_NEAR(lastField(l[t + 1]), sampleElevation(x, t * 3600.0), 2e-6) << t;

    // The surface layer is 1 m thick, so its centre lies 0.5 m down; layer 18 lies 1.5 m down.
    Result top = thal("series " + quoted(run()) + " --item temperature --at " + point(x, y));
    Result below = thal("series " + quoted(run()) + " --item temperature --layer 18 --at " + point(x, y));
    std::vector<std::string> lt = lines(top.out), lb = lines(below.out);
    ASSERT_TRUE(lt.size() == 49u && lb.size() == 49u) << top.err << below.err;
    for (int t = 0; t < 48; ++t) {
      EXPECT_NEAR(lastField(lt[t + 1]), sampleTemperature(x, 0.5, t * 3600.0, bed), 1e-5) << t;
      EXPECT_NEAR(lastField(lb[t + 1]), sampleTemperature(x, 1.5, t * 3600.0, bed), 1e-5) << t;
    }
  }
}

TEST_F(SampleRun, ProfileListsTheColumnFromTheSurfaceDown) {
  thalmod::thResultFile rf(run(), -1);
  const int32_t e = 1500;
  const double x = rf.mInfo.mesh2d.exCoor[e], y = rf.mInfo.mesh2d.eyCoor[e];
  // Upper edges of the layers from the surface down, from the thicknesses 1, 1, 1.5, 1.5, 2, ...
  const double edges[] = {0, 1, 2, 3.5, 5, 7, 9, 12, 15, 19, 24, 30, 37, 45, 55, 67, 81, 97, 115, 135};
  size_t cells = 0;
  for (double edge : edges) cells += rf.mInfo.elemBathy[e] > edge;

  Result byStep = thal("profile " + quoted(run()) + " --item temperature --time 15 --at " + point(x, y));
  Result byDate = thal("profile " + quoted(run()) + " --item temperature --time '2024-06-01 15:00:00' --at " +
                       point(x, y));
  ASSERT_EQ(byStep.status, 0) << byStep.err;
  EXPECT_EQ(byDate.out, byStep.out);
  std::vector<std::string> l = lines(byStep.out);
  ASSERT_EQ(l.size(), cells + 1);
  ASSERT_GE(cells, 4u);
  EXPECT_EQ(l[0], "datetime,layer,depth,temperature");
  const char* starts[] = {"2024-06-01 15:00:00,19,0.5,", "2024-06-01 15:00:00,18,1.5,",
                          "2024-06-01 15:00:00,17,2.75,"};
  const double depths[] = {0.5, 1.5, 2.75};
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(l[k + 1].substr(0, std::string(starts[k]).size()), starts[k]);
    EXPECT_NEAR(lastField(l[k + 1]), sampleTemperature(x, depths[k], 15 * 3600.0, rf.mInfo.elemBathy[e]),
                1e-5);
  }
  // Temperature falls with depth all the way down.
  for (size_t k = 2; k < l.size(); ++k) EXPECT_LT(lastField(l[k]), lastField(l[k - 1])) << l[k];
}

TEST_F(SampleRun, PaintDrawsTheSurfaceTemperatureWithItsLegend) {
  thTest::TempDir out;
  const std::string png = out.file("t.png");
  Result r = thal("paint " + quoted(run()) +
                  " --item temperature --time 12 --layer 19 --size 400x300 --range 5:17 -o " + quoted(png));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("Wrote " + png), std::string::npos);
  int32_t w = 0, h = 0;
  std::vector<int32_t> px = thTest::readPng(png, w, h);
  ASSERT_TRUE(w == 400 && h == 300);
  const std::map<int32_t, int32_t> index = legendSteps(px, w, h);

  // Every water pixel shows a surface temperature between the coolest and the warmest element
  // centre, through the colour steps of the range 5 to 17.
  thalmod::thResultFile rf(run(), -1);
  const thalmod::thMesh2D& g = rf.mInfo.mesh2d;
  double lo = 1e9, hi = -1e9;
  for (int32_t e = 0; e < g.noe; ++e) {
    double v = sampleTemperature(g.exCoor[e], 0.5, 12 * 3600.0, rf.mInfo.elemBathy[e]);
    lo = std::min(lo, v);
    hi = std::max(hi, v);
  }
  auto step = [](double v) { return static_cast<int32_t>((v - 5) * 256 / 12 + 0.5); };
  int water = 0, landPixels = 0, n[3] = {};  // the steps summed in the western, middle and eastern thirds
  double sum[3] = {};
  for (int32_t row = 0; row < h - 34; ++row)
    for (int32_t col = 0; col < w; ++col) {
      const int32_t c = px[row * w + col], k = indexOf(index, c);
      landPixels += c == land;
      if (c == land) continue;
      ASSERT_TRUE(k >= step(lo) - 1 && k <= step(hi) + 1) << "pixel " << col << "," << row;
      ++water;
      sum[3 * col / w] += k;
      ++n[3 * col / w];
    }
  EXPECT_TRUE(water > 400 * 266 / 20 && landPixels > 400 * 266 / 3 && n[0] > 0 && n[2] > 0);
  EXPECT_GT(sum[2] / n[2], sum[0] / n[0] + 5);  // warmer towards the head

  // A date names the same timestep; a layer deep down leaves the shallow columns out.
  const std::string byDate = out.file("d.png");
  ASSERT_EQ(
      thal("paint " + quoted(run()) +
           " --item temperature --time '2024-06-01 12:00:00' --layer 19 --size 400x300 --range 5:17 -o " +
           quoted(byDate))
          .status,
      0);
  EXPECT_EQ(thTest::readText(byDate), thTest::readText(png));
  const std::string deepLayer = out.file("deep.png");
  Result d = thal("paint " + quoted(run()) + " --item salinity --time 3 --layer 5 --size 400x300 -o " +
                  quoted(deepLayer));
  ASSERT_EQ(d.status, 0) << d.err;
  std::vector<int32_t> dp = thTest::readPng(deepLayer, w, h);
  EXPECT_GT(std::count(dp.begin(), dp.end(), static_cast<int32_t>(0xFFA89F8E)), 1000);  // sea bed
}

TEST_F(SampleRun, PaintBathyDrawsTheRasterFromShallowToDeep) {
  thTest::TempDir out;
  const std::string png = out.file("b.png");
  Result r = thal("paint-bathy " + quoted(raster()) + " --size 500x200 --range 0:150 -o " + quoted(png));
  ASSERT_EQ(r.status, 0) << r.err;
  int32_t w = 0, h = 0;
  std::vector<int32_t> px = thTest::readPng(png, w, h);
  ASSERT_TRUE(w == 500 && h == 200);
  EXPECT_EQ(px[0], land);  // the raster's margin holds no depth
  const std::map<int32_t, int32_t> index = legendSteps(px, w, h);
  int water = 0, shallow = 0, deepest = 0;
  for (int32_t i = 0; i < w * (h - 34); ++i) {
    if (px[i] == land) continue;
    int32_t k = indexOf(index, px[i]);
    ASSERT_GE(k, 3) << "pixel " << i;  // 2 m, the shallowest depth, is colour step 3
    ++water;
    shallow += k < 16;   // less than 9.4 m: the banks
    deepest += k > 230;  // more than 135 m: the basin
  }
  EXPECT_GT(water, 500 * 166 / 20);
  EXPECT_GT(shallow, 10);
  EXPECT_GT(deepest, 10);
}

}  // namespace
