// The subcommands of thal on the sample run, checked against the sample's own formulas; pictures
// by their size and colours.
#include <map>
#include <set>
#include <sstream>

#include "testutil/thPng.h"
#include "thalRun.h"

namespace {

using namespace thalTest;

// The value of a CSV line after its last comma.
double lastField(const std::string& line) { return std::stod(line.substr(line.rfind(',') + 1)); }

constexpr int32_t land = static_cast<int32_t>(0xFFD8D2C4), seabed = static_cast<int32_t>(0xFFA89F8E);

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

// `thal ARGS -o PNG`, with PNG in a folder of its own, and the picture read back.
struct Picture {
  thTest::TempDir dir;
  const std::string png = dir.file("p.png");
  Result r;
  int32_t w = 0, h = 0;
  std::vector<int32_t> px;
  explicit Picture(const std::string& args) : r(thal(args + " -o " + quoted(png))) {
    if (r.status == 0) px = thTest::readPng(png, w, h);
  }
};

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

  // The file's own report opens the output, at the level given (0 without --level).
  const Result deep = thal("info " + quoted(run()) + " --level 10");
  for (const auto& [out, level] : {std::pair{r.out, 0}, {deep.out, 10}}) {
    const std::string report = native->toString(level);
    EXPECT_EQ(out.substr(0, report.size() + 12), report + "Item kinds:\n") << level;
  }
}

TEST_F(SampleRun, SeriesFollowTheTideAndTheDailyHeating) {
  for (int32_t e : {100, 2500}) {
    const double x = model().mesh2d.exCoor[e], bed = model().elemBathy[e];
    // The surface layer is 1 m thick, so its centre lies 0.5 m down; layer 18 lies 1.5 m down.
    const std::string series = "series " + quoted(run()) + " --at " + at(e) + " --item ";
    const Result elev = thal(series + "elevation"), top = thal(series + "temperature"),
                 below = thal(series + "temperature --layer 18");
    const std::vector<std::string> l = lines(elev.out), lt = lines(top.out), lb = lines(below.out);
    ASSERT_TRUE(l.size() == 49u && lt.size() == 49u && lb.size() == 49u) << elev.err << top.err << below.err;
    EXPECT_EQ(l[0], "datetime,elevation");
    EXPECT_EQ(l[1].substr(0, 20), "2024-06-01 00:00:00,");
    EXPECT_EQ(l[48].substr(0, 20), "2024-06-02 23:00:00,");
    for (int t = 0; t < 48; ++t) {
      EXPECT_NEAR(lastField(l[t + 1]), sampleElevation(x, t * 3600.0), 2e-6) << t;
      EXPECT_NEAR(lastField(lt[t + 1]), sampleTemperature(x, 0.5, t * 3600.0, bed), 1e-5) << t;
      EXPECT_NEAR(lastField(lb[t + 1]), sampleTemperature(x, 1.5, t * 3600.0, bed), 1e-5) << t;
    }
  }
}

TEST_F(SampleRun, ProfileListsTheColumnFromTheSurfaceDown) {
  const int32_t e = 1500;
  const double x = model().mesh2d.exCoor[e], bed = model().elemBathy[e];
  // Upper edges of the layers from the surface down, from the thicknesses 1, 1, 1.5, 1.5, 2, ...
  const double edges[] = {0, 1, 2, 3.5, 5, 7, 9, 12, 15, 19, 24, 30, 37, 45, 55, 67, 81, 97, 115, 135};
  size_t cells = 0;
  for (double edge : edges) cells += bed > edge;
  const std::string profile = "profile " + quoted(run()) + " --item temperature --at " + at(e) + " --time ";
  const Result byStep = thal(profile + "15"), byDate = thal(profile + "'2024-06-01 15:00:00'");
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
    EXPECT_NEAR(lastField(l[k + 1]), sampleTemperature(x, depths[k], 15 * 3600.0, bed), 1e-5);
  }
  // Temperature falls with depth all the way down.
  for (size_t k = 2; k < l.size(); ++k) EXPECT_LT(lastField(l[k]), lastField(l[k - 1])) << l[k];
}

TEST_F(SampleRun, PaintDrawsTheSurfaceTemperatureWithItsLegend) {
  const Picture p("paint " + quoted(run()) +
                  " --item temperature --time 12 --layer 19 --size 400x300 --range 5:17");
  ASSERT_EQ(p.r.status, 0) << p.r.err;
  EXPECT_NE(p.r.out.find("Wrote " + p.png), std::string::npos);
  ASSERT_TRUE(p.w == 400 && p.h == 300);
  const std::map<int32_t, int32_t> index = legendSteps(p.px, p.w, p.h);

  // Every water pixel shows a surface temperature between the coolest and the warmest element
  // centre, through the colour steps of the range 5 to 17.
  const thalmod::thModelInfo& m = model();
  std::vector<double> temp(m.mesh2d.noe);
  for (int32_t e = 0; e < m.mesh2d.noe; ++e)
    temp[e] = sampleTemperature(m.mesh2d.exCoor[e], 0.5, 12 * 3600.0, m.elemBathy[e]);
  const auto [lo, hi] = std::minmax_element(temp.begin(), temp.end());
  auto step = [](double v) { return static_cast<int32_t>((v - 5) * 256 / 12 + 0.5); };
  int water = 0, landPixels = 0, n[3] = {};  // the steps summed in the western, middle and eastern thirds
  double sum[3] = {};
  for (int32_t row = 0; row < p.h - 34; ++row)
    for (int32_t col = 0; col < p.w; ++col) {
      const int32_t c = p.px[row * p.w + col], k = index.contains(c) ? index.at(c) : -1;
      landPixels += c == land;
      if (c == land) continue;
      ASSERT_TRUE(k >= step(*lo) - 1 && k <= step(*hi) + 1) << "pixel " << col << "," << row;
      ++water;
      sum[3 * col / p.w] += k;
      ++n[3 * col / p.w];
    }
  EXPECT_TRUE(water > 400 * 266 / 20 && landPixels > 400 * 266 / 3 && n[0] > 0 && n[2] > 0);
  EXPECT_GT(sum[2] / n[2], sum[0] / n[0] + 5);  // warmer towards the head

  // A layer deep down leaves the shallow columns out.
  const Picture deep("paint " + quoted(run()) + " --item salinity --time 3 --layer 5 --size 400x300");
  ASSERT_EQ(deep.r.status, 0) << deep.r.err;
  EXPECT_GT(std::count(deep.px.begin(), deep.px.end(), seabed), 1000);
}

TEST_F(SampleRun, PaintBathyDrawsTheRasterFromShallowToDeep) {
  const Picture p("paint-bathy " + quoted(raster()) + " --size 500x200 --range 0:150");
  ASSERT_EQ(p.r.status, 0) << p.r.err;
  ASSERT_TRUE(p.w == 500 && p.h == 200);
  EXPECT_EQ(p.px[0], land);  // the raster's margin holds no depth
  const std::map<int32_t, int32_t> index = legendSteps(p.px, p.w, p.h);
  int water = 0, shallow = 0, deepest = 0;
  for (int32_t i = 0; i < p.w * (p.h - 34); ++i) {
    if (p.px[i] == land) continue;
    const int32_t k = index.contains(p.px[i]) ? index.at(p.px[i]) : -1;
    ASSERT_GE(k, 3) << "pixel " << i;  // 2 m, the shallowest depth, is colour step 3
    ++water;
    shallow += k < 16;   // less than 9.4 m: the banks
    deepest += k > 230;  // more than 135 m: the basin
  }
  EXPECT_GT(water, 500 * 166 / 20);
  EXPECT_GT(shallow, 10);
  EXPECT_GT(deepest, 10);
}

TEST_F(SampleRun, SectionCsvFollowsTheSampleFormulas) {
  Result r = thal("section " + quoted(run()) +
                  " --item temperature --line 500356,6700181:504219,6702935:508545,6702004 --time 12 --csv");
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> ls = lines(r.out);
  ASSERT_GT(ls.size(), 100u);
  EXPECT_EQ(ls[0], "distance,element,layer,depth,temperature");
  const thalmod::thModelInfo& m = model();
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
  // across the fjord from bank to bank
  const Picture p("section " + quoted(run()) +
                  " --item salinity --line 506254,6702187:507365,6703603 --time 12 --size 300x150");
  ASSERT_EQ(p.r.status, 0) << p.r.err;
  ASSERT_TRUE(p.w == 300 && p.h == 150) << p.w << "x" << p.h;
  const int32_t w = p.w, rows = p.h - 34;
  EXPECT_EQ(p.px[0], land);                      // the line starts on land...
  EXPECT_EQ(p.px[rows / 2 * w + w - 1], land);   // ...and ends there
  EXPECT_EQ(p.px[(rows - 1) * w + 60], seabed);  // the bank under the water, near the shore
  std::set<int32_t> water;  // the middle column from the surface down: coloured cells, then the bed
  for (int32_t row = 0; row < rows; ++row) water.insert(p.px[row * w + w / 2]);
  EXPECT_GT(water.size(), 3u);
  EXPECT_EQ(water.count(land) + water.count(static_cast<int32_t>(0xFFFFFFFF)), 0u);  // nothing unpainted
}

}  // namespace
