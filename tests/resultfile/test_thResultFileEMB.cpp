// EMB result files: files of every version written byte by byte from the layout, read back; the
// writer's bytes against the same layout; physical "^" files; damaged files.

#include <utime.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::putLE;
using thTest::SmallModel;
using Bytes = std::vector<uint8_t>;

namespace {

void putText(Bytes& b, const std::string& s) { b.insert(b.end(), s.begin(), s.end()); }

// The mesh image of the small model: counts, float32 coordinates, types, element nodes, and from
// version 7 the Voronoi points (those that initMesh works out for the small model).
Bytes meshBlock(int version, const thMesh2D& m) {
  Bytes b;
  for (int32_t n : {SmallModel::non, SmallModel::noe}) putLE<int32_t>(b, n);
  for (double x : SmallModel::x) putLE<float>(b, static_cast<float>(x));
  for (double y : SmallModel::y) putLE<float>(b, static_cast<float>(y));
  // versions 0 and 1 store types shifted by one, 99 as 0
  for (int t : SmallModel::nodeType) putLE<int32_t>(b, version < 2 ? (t == 99 ? 0 : t + 1) : t);
  for (int n : SmallModel::nonpe) putLE<int32_t>(b, n);
  for (int n : SmallModel::en) putLE<int32_t>(b, n);
  if (version >= 7) {
    for (int e = 0; e < SmallModel::noe; ++e) putLE<float>(b, static_cast<float>(m.eVoronoiX[e]));
    for (int e = 0; e < SmallModel::noe; ++e) putLE<float>(b, static_cast<float>(m.eVoronoiY[e]));
  }
  return b;
}

struct Static {
  std::string name, type;
  Bytes data;
  int32_t noValues;
};

std::vector<Static> smallStatics(int version, const thMesh2D& m) {
  Bytes proj, enol, dz, bathy;
  putText(proj, "UTM32");
  for (int n : SmallModel::enol) putLE<int32_t>(enol, n);
  for (double d : SmallModel::dz) putLE<float>(dz, static_cast<float>(d));
  for (double d : SmallModel::bathy) putLE<float>(bathy, static_cast<float>(d));
  Bytes mesh = meshBlock(version, m);
  // below version 3 the meaning goes by position: elemBathy, mesh, dz
  if (version < 3) return {{"", "", bathy, 4}, {"", "", mesh, (int32_t)mesh.size()}, {"", "", dz, 3}};
  return {{"proj", "char", proj, 5},
          {"enol", "int", enol, 4},
          {"dz", "float", dz, 3},
          {"elemBathy", "float", bathy, 4},
          {"mesh", "char", mesh, (int32_t)mesh.size()}};
}

// The small model's file of a version, from the layout: header, items temp and elev (the version 0
// table has no lengths), static table, three timesteps.
Bytes embFile(int version, const thMesh2D& m, int32_t modelType = 0) {
  std::vector<Static> st = smallStatics(version, m);
  Bytes items;
  for (auto [name, len] : {std::pair<std::string, int>{"temp", 9}, {"elev", 4}}) {
    if (version >= 1) putLE<int32_t>(items, len);
    putLE<int32_t>(items, static_cast<int32_t>(name.size()));
    putText(items, name);
  }
  Bytes stat, oldData;
  for (const Static& s : st) {
    putLE<int32_t>(stat, static_cast<int32_t>(s.data.size()));
    putLE<int32_t>(stat, s.noValues);
    if (version < 3) {
      oldData.insert(oldData.end(), s.data.begin(), s.data.end());
      continue;
    }
    putLE<int32_t>(stat, static_cast<int32_t>(s.name.size()));
    putLE<int32_t>(stat, static_cast<int32_t>(s.type.size()));
    putText(stat, s.name + s.type);
    stat.insert(stat.end(), s.data.begin(), s.data.end());
  }
  stat.insert(stat.end(), oldData.begin(), oldData.end());
  int32_t headerLen = static_cast<int32_t>(128 + items.size() + stat.size());
  Bytes b;
  if (version >= 1) putLE<int32_t>(b, version), putLE<int32_t>(b, 0);  // z-layers
  if (version >= 5) {  // flavor 3 and the three fields that follow it
    putLE<int32_t>(b, 3), putLE<int32_t>(b, 1);
    putLE<float>(b, static_cast<float>(4.0 * std::atan(1.0))), putLE<float>(b, 0.0f);
  }
  putLE<int32_t>(b, modelType), putLE<int32_t>(b, headerLen);
  if (version >= 8)
    putLE<int64_t>(b, SmallModel::startDT);
  else
    putLE<int32_t>(b, static_cast<int32_t>(SmallModel::startDT));
  putLE<float>(b, 3600.0f);
  for (int32_t v : {3, 2, 128, static_cast<int32_t>(st.size()), 128 + static_cast<int32_t>(items.size()), 3})
    putLE<int32_t>(b, v);
  b.resize(128, 0);
  b.insert(b.end(), items.begin(), items.end());
  b.insert(b.end(), stat.begin(), stat.end());
  for (int t = 0; t < 3; ++t) {
    for (int c = 0; c < SmallModel::cells; ++c) putLE<float>(b, SmallModel::temp(t, c));
    // version 0 items hold one value per cell: elev is padded
    for (int e = 0; e < (version == 0 ? SmallModel::cells : SmallModel::noe); ++e)
      putLE<float>(b, e < SmallModel::noe ? SmallModel::elev(t, e) : 0.0f);
  }
  return b;
}

Bytes readBytes(const std::string& path) {
  std::string s = thTest::readText(path);
  return Bytes(s.begin(), s.end());
}

// Writes the small model through the library: items temp and elev, `steps` timesteps.
void writeSmall(const std::string& fn, int steps, int perFile = -1,
                std::vector<std::pair<std::string, int>> items = {{"temp", 9}, {"elev", 4}}) {
  thResultFile w(fn, EMB);
  thTest::buildSmallModel(w.mInfo);
  w.timestepsPerFile = perFile;
  for (auto& [name, len] : items) w.addItem(name, len);
  w.writeHeader();
  for (int t = 0; t < steps; ++t)
    for (auto& [name, len] : items) {
      std::vector<double> v(len);
      for (int k = 0; k < len; ++k) v[k] = name == "elev" ? SmallModel::elev(t, k) : SmallModel::temp(t, k);
      w.writeItemData(v.data(), len);
    }
  w.closeFile(w.writeTimestep);
}

}  // namespace

TEST(ResultFileEMB, EveryVersionReadsFromTheLayout) {
  thTest::TempDir dir;
  thModelInfo ref;
  thTest::buildSmallModel(ref);
  for (int version = 0; version <= 8; ++version) {
    SCOPED_TRACE("version " + std::to_string(version));
    std::string fn = dir.file("v" + std::to_string(version) + ".emb");
    thTest::writeBytes(fn, embFile(version, ref.mesh2d, version == 0 ? 0 : 3));
    if (version == 0) {  // files from before 2012-06-01 carry no version field
      struct utimbuf old = {1262304000, 1262304000};
      ASSERT_EQ(utime(fn.c_str(), &old), 0);
    }
    thResultFile rf(fn, -1);
    // a model type of 3 is below 10 and reads as 0
    const thModelInfo& mi = rf.mInfo;
    EXPECT_EQ(std::vector<int64_t>({rf.format, rf.fileVersion, mi.modelType, mi.flavor, mi.startDT,
                                    static_cast<int64_t>(mi.dt), mi.nt}),
              (std::vector<int64_t>{EMB, version, 0, version >= 5 ? 3 : -1, SmallModel::startDT, 3600, 3}));
    EXPECT_EQ(rf.itemNameVec, (std::vector<std::string>{"temp", "elev"}));
    // version 0 items all hold one value per cell
    EXPECT_EQ(rf.itemLengthVec, (std::vector<int32_t>{9, version == 0 ? 9 : 4}));
    EXPECT_EQ(rf.mInfo.mesh2d.projection, version >= 3 ? "UTM32" : "");
    EXPECT_EQ(std::vector<int>(rf.mInfo.mesh2d.nt, rf.mInfo.mesh2d.nt + 8), SmallModel::nodeType);
    EXPECT_EQ(std::vector<int>(rf.mInfo.botlayerIdx, rf.mInfo.botlayerIdx + 4), SmallModel::botlayerIdx);
    // "enol" is consumed from version 4 on and kept as a static item before
    EXPECT_EQ(rf.staticItems.size(), version == 3 ? 1u : 0u);
    float temp[9];
    rf.readItemData(0, 2, temp);
    for (int c = 0; c < 9; ++c) EXPECT_EQ(temp[c], SmallModel::temp(2, c));
  }
}

TEST(ResultFileEMB, WriterBytesFollowTheLayout) {
  thTest::TempDir dir;
  std::string fn = dir.file("w.emb");
  writeSmall(fn, 3);
  thModelInfo ref;
  thTest::buildSmallModel(ref);
  EXPECT_EQ(readBytes(fn), embFile(8, ref.mesh2d, 0));
}

TEST(ResultFileEMB, LayersProfilesAndSeries) {
  thTest::TempDir dir;
  std::string fn = dir.file("s.emb");
  writeSmall(fn, 3);
  thResultFile rf(fn, -1);
  float lay[4] = {7, 7, 7, 7};
  float* p = lay;
  const float del = delVal;
  struct Row {
    int t, layer;
    std::vector<float> want;
  };
  // t=2: e0 cells 0..2, e1 3 4(del), e2 5, e3 6..8 all deleted
  for (const Row& r : std::vector<Row>{{2, 999, {202.25f, 203.25f, 205.25f, del}},
                                       {2, -1, {200.25f, 203.25f, 205.25f, del}},
                                       {0, 0, {0.25f, del, del, 6.25f}},
                                       {1, 999, {100.25f, 104.25f, 105.25f, 107.25f}}}) {
    // runs of 1, 4 and all values: columns cut across runs read the same
    for (int32_t run : {1, 4, 1 << 18}) {
      rf.layerRunValues = run;
      EXPECT_EQ(rf.readLayer(0, r.t, r.layer, &p), 4);
      EXPECT_EQ(std::vector<float>(lay, lay + 4), r.want) << "t " << r.t << " layer " << r.layer;
    }
  }
  rf.readLayer(1, 1, 0, &p);  // a 2-D item ignores the layer
  EXPECT_EQ(std::vector<float>(lay, lay + 4), (std::vector<float>{1, 1.5f, 2, 2.5f}));
  float prof[3];
  EXPECT_EQ(rf.readProfile(0, 1, 1, prof), 2);  // below the sea bed: 0
  EXPECT_EQ(std::vector<float>(prof, prof + 3), (std::vector<float>{0, 103.25f, 104.25f}));
  double* s = nullptr;
  ASSERT_EQ(rf.readTimeSeries(0, 3, 1, &s, 0, -1), 3);
  EXPECT_EQ(thTest::take(s, 3), (std::vector<double>{7.25, 107.25, del}));
  ASSERT_EQ(rf.readTimeSeriesProfile(0, 1, &s, 1, 3), 4);
  EXPECT_EQ(thTest::take(s, 4), (std::vector<double>{103.25, 104.25, 203.25, del}));
}

TEST(ResultFileEMB, SevenTimestepsAtThreePerFileReadAsOne) {
  thTest::TempDir dir;
  std::string fn = dir.file("x.emb");
  writeSmall(fn, 7, 3);
  for (auto [name, nt, start] : {std::tuple{"x.emb", 3, 0}, {"x^1.emb", 3, 3}, {"x^2.emb", 1, 6}}) {
    thResultFile part(dir.file(name), -1);
    EXPECT_TRUE(part.mInfo.nt == nt && part.mInfo.startDT == SmallModel::startDT + 3600 * start) << name;
  }
  thResultFile rf(fn, -1);
  EXPECT_EQ(rf.getTotNoTimesteps(), 7);
  float elev[4];
  rf.readItemData(1, 5, elev);  // in x^1.emb
  EXPECT_EQ(elev[3], SmallModel::elev(5, 3));
  double* s = nullptr;
  ASSERT_EQ(rf.readTimeSeries(1, 2, 2, &s, 1, -1), 6);  // elev(t, 2) = t + 1
  EXPECT_EQ(thTest::take(s, 6), (std::vector<double>{2, 3, 4, 5, 6, 7}));
  ASSERT_EQ(rf.readTimeSeriesProfile(0, 2, &s, 2, 5), 3);  // e2 has one cell, 5
  EXPECT_EQ(thTest::take(s, 3), (std::vector<double>{205.25, 305.25, 405.25}));
  // in sequence: items 0, 1, 0 read timesteps 0, 0, 1
  std::vector<double> buf(9);
  double* b = buf.data();
  EXPECT_EQ(rf.readNextItemData(0, &b) + rf.readNextItemData(1, &b), 2 * SmallModel::startDT);
  EXPECT_EQ(rf.readNextItemData(0, &b), SmallModel::startDT + 3600);
  EXPECT_EQ(buf[5], SmallModel::temp(1, 5));
  thResultFile(fn, -1).setNoTimesteps(2);  // patched into the first file
  EXPECT_EQ(thResultFile(fn, -1).mInfo.nt, 2);
}

TEST(ResultFileEMB, FirstItemSetsTheFormat) {
  thTest::TempDir dir;
  struct Row {
    std::string item;
    int len;
    int32_t format;
  };
  for (const Row& r : std::vector<Row>{{"hdrst_u", 9, RESTART},
                                       {"uFlux", 8, DECOUPLED},
                                       {"hddcp_uFlux", 8, DECOUPLED},
                                       {"uFlux", 9, EMB}}) {
    std::string fn = dir.file(r.item + std::to_string(r.len) + ".emb");
    writeSmall(fn, 1, -1, {{r.item, r.len}});
    EXPECT_EQ(thResultFile(fn, -1).format, r.format) << r.item;
  }
}

TEST(ResultFileEMB, DamagedFilesAreReported) {
  thTest::TempDir dir;
  std::string fn = dir.file("d.emb");
  writeSmall(fn, 1);
  Bytes good = readBytes(fn);
  int32_t headerLen;
  std::memcpy(&headerLen, good.data() + 28, 4);
  // every cut inside the header is reported; cuts in the data block leave a readable file
  for (size_t keep = 0; keep < good.size(); keep += 7) {
    thTest::writeBytes(fn, Bytes(good.begin(), good.begin() + keep));
    if (static_cast<int32_t>(keep) < headerLen)
      EXPECT_THROW(thResultFile(fn, -1), VCppLib::VException) << keep;
    else
      EXPECT_NO_THROW(thResultFile(fn, -1)) << keep;
  }
  thTest::writeBytes(fn, {});
  EXPECT_VEXCEPTION(
      thResultFile(fn, -1),
      "thResultFile::readHeader: '" + fn +
          "' is not a readable EMB file: it ends after 0 bytes, before the version (at byte 0).");
  // counts and lengths beyond the file, negative ones, garbage
  uint32_t seed = 7;
  for (auto [at, value] :
       {std::pair{48, 0x7fffffff}, {48, -1}, {56, 1000000}, {132, 1 << 30}, {28, -5}, {52, 1 << 30}}) {
    Bytes bad = good;
    std::memcpy(bad.data() + at, &value, 4);
    thTest::writeBytes(fn, bad);
    EXPECT_THROW(thResultFile(fn, -1), VCppLib::VException) << at;
  }
  for (int round = 0; round < 200; ++round) {
    Bytes bad = good;
    for (int k = 0; k < 4; ++k) {
      seed = seed * 1103515245u + 12345u;
      bad[(seed >> 8) % static_cast<uint32_t>(headerLen)] = static_cast<uint8_t>(seed >> 24);
    }
    thTest::writeBytes(fn, bad);
    try {
      thResultFile rf(fn, -1);
    } catch (const VCppLib::VException&) {
    }
  }
}
