// Item data, layers, profiles, time series, sections and the UGRID export of NC files, checked
// against the hand-made small model; series also across the physical "^" files of a logical file.
// The small model (thResultFixtures.h): temp(0, c) = c + 0.25 at timestep 0; sea beds 15, 5, 1.5,
// 10 m; layer centres at 12, 4.5 and 1 m, upper edges at 7, 2 and 0 m.

#include <netcdf.h>

#include <cmath>
#include <tuple>
#include <vector>

#include "resultfile/thResultFile.h"
#include "resultfile/thResultFileUgrid.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::SmallModel;
using thTest::SmallModelOptions;
using thTest::take;
using VF = std::vector<float>;
using VD = std::vector<double>;

namespace {

const double delD = -1.0000000031710769e-30;  // delVal widened
const float D = delVal;

// The small model as an NC file, open for reading.
struct ResultFileData : ::testing::Test {
  thTest::TempDir dir;
  const std::string fn = thTest::smallModelNc(dir.file("small.nc"));
  thResultFile rf{fn, NC};
};

// The values of a series read (layer >= 0) or of a profile series of item 0 (layer -1), as many as
// the read counts.
VD series(thResultFile& rf, int item, int elem, int layer, int from, int to) {
  double* d = nullptr;
  int32_t n = layer >= 0 ? rf.readTimeSeries(item, elem, layer, &d, from, to)
                         : rf.readTimeSeriesProfile(0, elem, &d, from, to);
  return take(d, n);
}

// A Cartesian section of temp at timestep 0: distances, values (by point, then depth) and points.
struct Cart {
  VD d, v, x, y;
};

Cart cart(thResultFile& rf, VD x, VD y, VD z, double dist) {
  double *d, *v, *xC, *yC;
  int32_t noD = 0, noV = 0;
  EXPECT_EQ(rf.extractSectionCart(0, 0, x.data(), y.data(), static_cast<int32_t>(x.size()), z.data(),
                                  static_cast<int32_t>(z.size()), dist, &d, &noD, &v, &noV, &xC, &yC),
            0);
  Cart c{{d, d + noD}, {v, v + noV}, {xC, xC + noD}, {yC, yC + noD}};
  thResultFile::extractSectionCartFreeMem(d, v, xC, yC);
  return c;
}

// A variable of any number type, as float64 (which holds every value of the file exactly).
VD getVar(int id, const char* name, size_t n) {
  int v = -1;
  EXPECT_EQ(nc_inq_varid(id, name, &v), NC_NOERR) << name;
  VD out(n);
  nc_get_var_double(id, v, out.data());
  return out;
}

}  // namespace

TEST_F(ResultFileData, WholeItemsSequenceAndElementLists) {
  for (int t = 0; t < 3; ++t) {  // temp as float32 and as float64, where delVal widens
    VF temp(9);
    VD temp64(9), elev(4);
    EXPECT_EQ(rf.readItemData(0, t, temp.data()) + rf.readItemData(0, t, temp64.data()), 0);
    for (int c = 0; c < 9; ++c)
      EXPECT_TRUE(temp[c] == SmallModel::temp(t, c) && temp64[c] == SmallModel::temp(t, c)) << t << " " << c;
    EXPECT_EQ(rf.readItemData(1, t, elev.data()), 0);
    for (int e = 0; e < 4; ++e) EXPECT_EQ(elev[e], t + 0.5 * e);
  }

  // a timestep beyond the file is no failure: the library's status, the buffer untouched
  float buf[9] = {7};
  double dbuf[9] = {7};
  EXPECT_EQ(std::vector<int>(
                {rf.readItemData(0, 3, buf), rf.readItemData(0, -1, buf), rf.readItemData(1, 3, dbuf)}),
            std::vector<int>(3, NC_EINVALCOORDS));
  EXPECT_TRUE(buf[0] == 7 && dbuf[0] == 7);
  // an item out of range: a sentence naming the file
  EXPECT_VEXCEPTION(rf.readItemData(2, 0, buf),
                    "thResultFile::readItemData: item number 2 is out of range; '" + fn + "' has 2 items.");

  double next[9], *p = next;
  // in sequence: items 0, 1, 0 read timesteps 0, 0, 1; the same item twice in a row advances one step
  const int items[] = {0, 1, 0, 0};
  const int64_t when[] = {0, 0, 3600, 7200};
  const double at3[] = {3.25, 1.5, 103.25, 203.25};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(rf.readNextItemData(items[i], &p), SmallModel::startDT + when[i]) << i;
    EXPECT_EQ(next[3], at3[i]) << i;
  }
  // past the end: the date goes on, the buffer keeps what it held
  next[0] = 42;
  EXPECT_EQ(rf.readNextItemData(0, &p), SmallModel::startDT + 10800);
  EXPECT_EQ(next[0], 42);
  rf.readHeader();  // a new header read starts over
  EXPECT_EQ(rf.readNextItemData(1, &p), SmallModel::startDT);
  EXPECT_EQ(next[3], 1.5);

  // z-layers: the columns of e3 and e1 in list order; the negative entry leaves no gap
  int32_t en[] = {3, -1, 1};
  double* d = nullptr;
  ASSERT_EQ(rf.readItemData(0, 0, en, 3, &d), 5);
  EXPECT_EQ(take(d, 5), (VD{6.25, 7.25, 8.25, 3.25, 4.25}));
  ASSERT_EQ(rf.readItemData(0, 0, en, 0, &d), 0);  // an empty list still gets a buffer
  delete[] d;
  // a failed read (timestep 5 of 3) still hands over the buffer and the count, with zeros
  ASSERT_EQ(rf.readItemData(0, 5, en, 3, &d), 5);
  EXPECT_EQ(take(d, 5), VD(5, 0.0));
  EXPECT_VEXCEPTION_HAS(rf.readItemData(1, 0, en, 3, &d), "has no column in item 'elev'");
  // sigma arithmetic: every element owns nol values; a negative entry gives nol deleted values
  rf.mInfo.layerType = 1;
  int32_t sen[] = {0, -1, 2};
  ASSERT_EQ(rf.readItemData(0, 0, sen, 3, &d), 9);
  EXPECT_EQ(take(d, 9), (VD{0.25, 1.25, 2.25, delD, delD, delD, 6.25, 7.25, 8.25}));
  // e3 would need values 9 to 11 of an item of 9
  EXPECT_VEXCEPTION_HAS(rf.readItemData(0, 0, en, 1, &d), "element 3 of the list has no column");
}

TEST_F(ResultFileData, LayersProfilesAndBitmaps) {
  using Row = std::tuple<int, int, int, VF>;  // item, timestep, layer, values
  const Row rows[] = {
      {0, 0, 0, {0.25f, D, D, 6.25f}},
      {0, 0, 1, {1.25f, 3.25f, D, 7.25f}},
      {0, 0, 2, {2.25f, 4.25f, 5.25f, 8.25f}},
      {0, 0, -1, {0.25f, 3.25f, 5.25f, 6.25f}},  // the bottom cells
      {0, 0, -2, {D, D, D, D}},
      // 999 and up: the top-most value; the two deleted upper cells of e0 at t 1 are skipped,
      // the all-deleted column of e3 at t 2 gives delVal
      {0, 1, 999, {100.25f, 104.25f, 105.25f, 107.25f}},
      {0, 2, 1000, {202.25f, 203.25f, 205.25f, D}},
      {1, 2, 0, {2.0f, 2.5f, 3.0f, 3.5f}},  // a 2-D item: the layer does not matter
      {1, 2, 998, {2.0f, 2.5f, 3.0f, 3.5f}},
  };
  for (const auto& [item, t, layer, want] : rows) {
    VF v(4, 42.0f);
    float* p = v.data();
    EXPECT_EQ(rf.readLayer(item, t, layer, &p), 4);
    EXPECT_EQ(v, want) << item << " " << t << " " << layer;
  }
  // above the surface, below 999: refused instead of read past the columns
  VF buf(4, 42.0f);
  float* p = buf.data();
  EXPECT_VEXCEPTION_HAS(rf.readLayer(0, 0, 998, &p), "layer 998 does not exist in '" + fn + "'");
  // a timestep beyond the file: -1 for a 3-D item, noe for a 2-D one, the buffer untouched
  EXPECT_EQ(rf.readLayer(0, 5, 0, &p) + 10 * rf.readLayer(1, 5, 0, &p), -1 + 10 * 4);
  EXPECT_EQ(buf, VF(4, 42.0f));

  // the float64 form makes its own array
  double* d = nullptr;
  ASSERT_EQ(rf.readLayer(0, 1, 1, &d), 4);
  EXPECT_EQ(take(d, 4), (VD{delD, 103.25, delD, 107.25}));
  EXPECT_EQ(rf.readLayer(0, 3, 1, &d), -1);
  delete[] d;

  // layers by depth
  double data[4] = {1, 2, 3, 4};
  // upper edges 7, 2, 0: depth 5 lies in layer 1, depth 0 in none
  // the values are dropped; the read of a missing timestep fails
  EXPECT_EQ(
      std::vector<int64_t>({rf.readLayerAtDepth(0, 0, 5.0, data), rf.readLayerAtDepth(0, 0, 0.0, data),
                            rf.readLayerAtDepth(0, 0, 0.5, data), rf.readLayerAtDepth(0, 4, 0.5, data)}),
      (std::vector<int64_t>{4, -1, 4, -1}));
  EXPECT_EQ(data[0], 1);

  // profiles (timestep, element, values) are indexed by absolute layer; below the sea bed the
  // deleted value
  const std::tuple<int, int, VF> profiles[] = {
      {0, 1, {D, 3.25f, 4.25f}},
      {1, 0, {100.25f, D, D}},  // deleted cells read as they stand
      {3, 1, {D, 9, 9}}};       // a timestep beyond the file: the rest stays
  for (const auto& [t, elem, want] : profiles) {
    VF prof(3, 9.0f);
    EXPECT_EQ(rf.readProfile(0, t, elem, prof.data()), 0);
    EXPECT_EQ(prof, want) << t << " " << elem;
  }
  float prof[3];
  EXPECT_VEXCEPTION_HAS(rf.readProfile(0, 0, 4, prof), "element number 4 is out of range");

  // a layer on a bitmap: 30 x 10 pixels over the mesh, each element's value at its centre
  std::vector<int32_t> bitmap(300, 0x12345678);
  int32_t* bm = bitmap.data();
  int32_t cols[] = {static_cast<int32_t>(0xFF000000), static_cast<int32_t>(0xFFFFFFFF)};  // black to white
  ASSERT_EQ(rf.readLayerAndInterpOnBitmap(1, 0, 2, &bm, 30, 10, 256, 0, 300, 0, 100, 0, 1.5, cols, 2, 15, 2),
            0);
  // the pixel (5, 5) holds e0's centre (50, 50): value 0, black; (15, 5) e1's (150, 50): value 0.5
  auto px = [&](int i, int j) { return static_cast<uint32_t>(bitmap[(10 - 1 - j) * 30 + i]); };
  EXPECT_EQ(px(5, 5), 0xFF000000u);
  EXPECT_NEAR(px(15, 5) & 0xFF, 255.0 / 3, 2);
  EXPECT_EQ(px(0, 9), 0x12345678u);  // no element centre within reach: left as it was
  EXPECT_VEXCEPTION_HAS(
      rf.readLayerAndInterpOnBitmap(1, 0, 2, nullptr, 30, 10, 256, 0, 300, 0, 100, 0, 1.5, cols, 2, 15, 2),
      "no bitmap");

  rf.mInfo.layerType = 1;  // sigma set after the header was read
  EXPECT_VEXCEPTION(rf.readLayer(0, 0, 0, &p), "Not implemented.");
  rf.mInfo.layerType = 7;  // neither: the buffer stays as it was
  EXPECT_EQ(rf.readLayer(0, 0, 0, &p), 4);
  EXPECT_EQ(buf, VF(4, 42.0f));
}

TEST_F(ResultFileData, SeriesWithinOneFile) {
  // cell 7 (e3, layer 1) over all timesteps; the end of the range is not part of it
  EXPECT_EQ(series(rf, 0, 3, 1, 0, 3), (VD{7.25, 107.25, delD}));
  EXPECT_TRUE(series(rf, 0, 3, 1, 2, 2).empty());  // an empty range is no failure
  // a 2-D item by element, at any layer from the element's bottom up
  EXPECT_EQ(series(rf, 1, 2, 2, 0, 3), (VD{1.0, 2.0, 3.0}));
  double* d = nullptr;
  EXPECT_VEXCEPTION(
      rf.readTimeSeries(1, 2, 0, &d, 0, 3),
      "Layer 0 is below bottom. There are 1 layers in element 2, numbered (bottom) 2 to 2 (surface).");
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 3, 1, &d, 3, 2), "timeStepFrom>timeStepTo");
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 3, 1, &d, 0, 4), "Invalid timeStepTo");
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 3, 3, &d, 0, 3), "layer 3 lies above the surface layer 2");
  // element 4 of 4 (the message is checked with readProfile)
  EXPECT_THROW(rf.readTimeSeries(0, 4, 1, &d, 0, 3), VCppLib::VException);
  EXPECT_VEXCEPTION_HAS(rf.readTimeSeries(0, 3, 1, &d, -1, 3), "timeStepFrom -1 is negative");
  EXPECT_EQ(d, nullptr);

  // whole columns, timestep after timestep, each from the bottom cell up
  EXPECT_EQ(series(rf, 0, 1, -1, 0, 3), (VD{3.25, 4.25, 103.25, 104.25, 203.25, delD}));
  EXPECT_EQ(series(rf, 0, 0, -1, 2, -1), (VD{200.25, 201.25, 202.25}));
  EXPECT_VEXCEPTION(rf.readTimeSeriesProfile(1, 0, &d, 0, 3),
                    "readTimeSeriesProfile only supports 3D items. Use readTimeSeries for 2D items.");
}

TEST_F(ResultFileData, SectionsCartesianAndByLayer) {
  // 10 m at steps of 3: 0, 3, 6, 9, the rest lost; then up a bend with 1 m carried: 52, 55, 58
  Cart c = cart(rf, {0, 10}, {50, 50}, {}, 3);
  EXPECT_TRUE(c.x == c.d && c.d == (VD{0, 3, 6, 9}));
  c = cart(rf, {0, 10, 10}, {50, 50, 60}, {}, 3);
  EXPECT_TRUE(c.x == (VD{0, 3, 6, 9, 10, 10, 10}) && c.y == (VD{50, 50, 50, 50, 52, 55, 58}));
  EXPECT_EQ(c.d, (VD{0, 3, 6, 9, 12, 15, 18}));
  EXPECT_EQ(cart(rf, {5}, {5}, {}, 3).x, VD{5});  // one point: the start alone
  EXPECT_VEXCEPTION_HAS(cart(rf, {0, 10}, {0, 0}, {}, 0), "must be a positive number");

  // Values by depth at x, y: the cell is l + e*nol - ebli[e], every column taken to own nol = 3
  // cells.
  const VD depths = {-1, 0, 1.5, 3, 7, 15, 16};
  const std::tuple<double, double, VD> cases[] = {
      // a negative depth takes the bottom layer; 7 lies on layer 0's upper edge; 15 is the sea bed
      {50, 50, {0.25, 2.25, 2.25, 1.25, 0.25, 0.25, delD}},
      {150, 50, {3.25, 4.25, 4.25, 3.25, delD, delD, delD}},  // sea bed at 5 m: layers 1 and 2
      {270, 30, {6.25, 6.25, 6.25, delD, delD, delD, delD}},  // e2, layer 2 only: from 2*3 + 2 - 2 = 6
      {220, 80, {delD, delD, delD, delD, delD, delD, delD}},  // e3 from 3*3 = 9: beyond the 9 cells
      {500, 50, {delD, delD, delD, delD, delD, delD, delD}},  // outside the mesh
  };
  for (const auto& [x, y, v] : cases) EXPECT_EQ(cart(rf, {x}, {y}, depths, 1).v, v) << "point " << x;

  // Layers at points: e0: all three layer centres above its 15 m; e1: 4.5 and 1; outside: skipped, the
  // distance walked goes on; e3: 4.5 and 1, cells 7 and 8.
  const VD x = {50, 150, 500, 220}, y = {50, 50, 50, 80};
  const double d3 = 450 + std::sqrt(280.0 * 280.0 + 30.0 * 30.0);
  for (int32_t columns : {1000, 0}) {  // columns read one by one, or the whole item
    rf.sectionColumnReads = columns;
    double *d, *z, *v;
    int32_t n = 0;
    ASSERT_EQ(rf.extractSectionLayers(0, 0, x.data(), y.data(), 4, &d, &z, &v, &n), 0);
    EXPECT_EQ(VD(d, d + n), (VD{0, 0, 0, 100, 100, d3, d3}));
    EXPECT_EQ(VD(z, z + n), (VD{12, 4.5, 1, 4.5, 1, 4.5, 1}));
    EXPECT_EQ(VD(v, v + n), (VD{0.25, 1.25, 2.25, 3.25, 4.25, 7.25, 8.25}));
    thResultFile::extractSectionLayersFreeMem(d, z, v);
  }
  // 100 m at most 40 apart: ceil(2.5) = 3 steps, 4 points, in e0, e0, e1, e1 (3, 3, 2, 2 layers)
  double *d, *z, *v;
  int32_t n = 0;
  rf.extractSectionLayers(0, 0, 50, 50, 150, 50, 40, &d, &z, &v, &n);
  const VD want = {0, 0, 0, 100.0 / 3, 100.0 / 3, 100.0 / 3, 200.0 / 3, 200.0 / 3, 100, 100};
  ASSERT_EQ(n, 10);
  for (int32_t i = 0; i < n; ++i) EXPECT_NEAR(d[i], want[i], 1e-12);
  thResultFile::extractSectionLayersFreeMem(d, z, v);
}

TEST_F(ResultFileData, UgridExport) {
  const std::string out = dir.file("small_ugrid.nc");
  exportUgrid(fn, out);

  const std::string hdr = thTest::ncdump(out, "-h");
  for (const char* s :
       {":Conventions = \"CF-1.8 UGRID-1.0\"", "mesh:cf_role = \"mesh_topology\"",
        "mesh:face_node_connectivity = \"mesh_face_nodes\"", "mesh_face_nodes:_FillValue = -1",
        "float temp(time, face, layer)", "float elev(time, face)", "temp:location = \"face\"",
        "time:units = \"seconds since 1970-01-01 00:00:00\"", "boundary = 8"})
    EXPECT_NE(hdr.find(s), std::string::npos) << s;

  int id = -1;
  ASSERT_EQ(nc_open(out.c_str(), NC_NOWRITE, &id), NC_NOERR);
  // e2 is the triangle 2 3 7: its fourth node is the fill value
  EXPECT_EQ(getVar(id, "mesh_face_nodes", 16), (VD{0, 1, 5, 4, 1, 2, 6, 5, 2, 3, 7, -1, 2, 7, 6, -1}));
  // the open face n0-n4 comes first among the boundary faces, the 7 closed ones after it
  EXPECT_EQ(getVar(id, "mesh_boundary_type", 8), (VD{1, 99, 99, 99, 99, 99, 99, 99}));
  EXPECT_EQ(getVar(id, "interface", 4), (VD{17, 7, 2, 0}));
  // temp at timestep 1, by face and layer: e0 cells 0 1 2, e1 cells 3 4 from layer 1, e2 cell 5 at
  // layer 2, e3 cells 6 7 8; cells 1, 2 and 8 are deleted then, as is what no column reaches
  VD temp = getVar(id, "temp", 3 * 4 * 3);
  EXPECT_EQ(VD(temp.begin() + 12, temp.begin() + 24),
            (VD{100.25, delD, delD, delD, 103.25, 104.25, delD, delD, 105.25, 106.25, 107.25, delD}));
  EXPECT_EQ(getVar(id, "elev", 12), (VD{0, 0.5, 1, 1.5, 1, 1.5, 2, 2.5, 2, 2.5, 3, 3.5}));  // t + 0.5 e
  EXPECT_EQ(getVar(id, "time", 3)[2], SmallModel::startDT + 7200);
  nc_close(id);

  EXPECT_VEXCEPTION(writeUgrid(rf, fn), "writeUgrid: the output '" + fn + "' is the result file itself.");
}

TEST(ResultFileSeries, AcrossPhysicalFiles) {
  // run.nc with timesteps 0-2, run^1.nc with 3-5, run^2.nc with 6-7 (the last file holds fewer)
  thTest::TempDir dir;
  for (int f = 0; f < 3; ++f) {
    SmallModelOptions opt{.times = {}, .firstStep = 3 * f};
    for (int t = 0; t < (f < 2 ? 3 : 2); ++t) opt.times.push_back(SmallModel::startDT + 3600 * (3 * f + t));
    thTest::writeSmallModelNc(dir.file(f == 0 ? "run.nc" : "run^" + std::to_string(f) + ".nc"), opt);
  }
  const std::string fn = dir.file("run.nc");
  thResultFile rf(fn, NC);
  // 2 x 3 + the 2 of the last file
  EXPECT_TRUE(rf.mInfo.nt == 3 && rf.getTotNoTimesteps() == 8 && rf.fileNo == 0);

  // physical files of timesteps
  int32_t t = 4;
  EXPECT_EQ(rf.getFileForTimestep(t), dir.file("run^1.nc"));
  EXPECT_TRUE(t == 1 && rf.fileNo == 1);
  t = 2;
  EXPECT_EQ(rf.getFileForTimestep(t), fn);  // within the first: fileNo stays
  EXPECT_EQ(rf.fileNo, 1);
  t = 9;
  EXPECT_VEXCEPTION(rf.getFileForTimestep(t),
                    "Not that many timesteps in file (" + fn + "). fileNo=3, timestep=0");
  t = -1;
  EXPECT_VEXCEPTION(rf.getFileForTimestep(t),
                    "Negative timestep requested from  (" + fn + "). " + thGlobal::errTail);

  // the whole logical file: cell 0 (bottom of e0) of timesteps 0 to 7
  EXPECT_EQ(series(rf, 0, 0, 0, 0, -1), (VD{0.25, 100.25, 200.25, 300.25, 400.25, 500.25, 600.25, 700.25}));
  EXPECT_EQ(rf.fileNo, 3);  // the loop leaves fileNo behind the last file
  // a range within nt is now served by the file that fileNo names, which does not exist
  double* d = nullptr;
  EXPECT_VEXCEPTION(rf.readTimeSeries(0, 0, 0, &d, 0, 3), "No such file: '" + dir.file("run^3.nc") + "'");
  // a range beyond the first file starts over from the first
  EXPECT_EQ(series(rf, 1, 1, 2, 4, 7), (VD{4.5, 5.5, 6.5}));
  EXPECT_EQ(rf.fileNo, 3);
  // a negative end puts fileNo back first, so the first file serves the next short range
  EXPECT_EQ(series(rf, 0, 0, 0, 6, -1), (VD{600.25, 700.25}));
  rf.getTotNoTimesteps();
  EXPECT_EQ(series(rf, 0, 0, 0, 1, 3), (VD{100.25, 200.25}));

  // columns across files: e1 (cells 3, 4) of timesteps 2 to 4
  EXPECT_EQ(series(rf, 0, 1, -1, 2, 5), (VD{203.25, delD, 303.25, 304.25, 403.25, 404.25}));

  // an empty first file: with nt 0 every timestep walks the "^" files until one is missing
  thTest::writeSmallModelNc(dir.file("e^1.nc"));
  thResultFile empty(thTest::smallModelNc(dir.file("e.nc"), {.times = {}}), NC);
  t = 0;
  EXPECT_THROW(empty.getFileForTimestep(t), VCppLib::VException);
  EXPECT_EQ(empty.fileNo, 2);
  EXPECT_EQ(empty.getTotNoTimesteps(), 3);  // 0 x 1 + the 3 of e^1.nc
  EXPECT_VEXCEPTION_HAS(empty.readTimeSeries(0, 0, 0, &d, 0, 2), "holds no timesteps");
}
