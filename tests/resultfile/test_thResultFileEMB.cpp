// EMB result files: files of every version written byte by byte from the layout, read back; the
// writer's bytes against the same layout; physical "^" files; damaged files.

#include <utime.h>

#include <cmath>
#include <cstring>
#include <tuple>
#include <vector>

#include "resultfile/thResultFile.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::putLE;
using thTest::SmallModel;
using thTest::take;
using Bytes = std::vector<uint8_t>;
using VD = std::vector<double>;
using VF = std::vector<float>;

namespace {

// Appends each value as T.
template <typename T, typename... U>
void put(Bytes& b, U... v) {
  (putLE<T>(b, static_cast<T>(v)), ...);
}

template <typename T, typename U>
void putAll(Bytes& b, const std::vector<U>& v) {
  for (U x : v) putLE<T>(b, static_cast<T>(x));
}

void putText(Bytes& b, const std::string& s) { b.insert(b.end(), s.begin(), s.end()); }

// The header fields that the writer takes from the model, as buildSmallModel leaves them.
struct Fields {
  int32_t layerType = 0, flavor = 3, modelType = 0;
  float topDepth = 0;
  std::string proj = "UTM32";
};

// The mesh image of the small model: counts, float32 coordinates, types, element nodes, and from
// version 7 the Voronoi points that initMesh works out: the centres of the squares, and of the
// right-angled triangles e2 (200,0 300,0 300,100) and e3 (200,0 300,100 200,100) their centroids.
Bytes meshBlock(int version) {
  Bytes b;
  put<int32_t>(b, SmallModel::non, SmallModel::noe);
  putAll<float>(b, SmallModel::x);
  putAll<float>(b, SmallModel::y);
  // versions 0 and 1 store types shifted by one, 99 as 0
  for (int t : SmallModel::nodeType) putLE<int32_t>(b, version < 2 ? (t == 99 ? 0 : t + 1) : t);
  putAll<int32_t>(b, SmallModel::nonpe);
  putAll<int32_t>(b, SmallModel::en);
  if (version >= 7) {
    putAll<float>(b, VD{50, 150, 800.0 / 3, 700.0 / 3});
    putAll<float>(b, VD{50, 50, 100.0 / 3, 200.0 / 3});
  }
  return b;
}

// The small model's file of a version, from the layout: header, items temp and elev (the version 0
// table has no lengths), static table, three timesteps.
Bytes embFile(int version, const Fields& f = {}) {
  using Static = std::tuple<std::string, std::string, Bytes, int32_t>;  // name, type, data, values
  Bytes proj, enol, dz, bathy, mesh = meshBlock(version);
  putText(proj, f.proj);
  putAll<int32_t>(enol, SmallModel::enol);
  putAll<float>(dz, SmallModel::dz);
  putAll<float>(bathy, SmallModel::bathy);
  const int32_t meshLen = static_cast<int32_t>(mesh.size());
  std::vector<Static> st = {{"proj", "char", proj, 5},
                            {"enol", "int", enol, 4},
                            {"dz", "float", dz, 3},
                            {"elemBathy", "float", bathy, 4},
                            {"mesh", "char", mesh, meshLen}};
  // below version 3 the meaning goes by position: elemBathy, mesh, dz
  if (version < 3) st = {{"", "", bathy, 4}, {"", "", mesh, meshLen}, {"", "", dz, 3}};
  Bytes items, stat, oldData;
  for (auto [name, len] : {std::pair<std::string, int>{"temp", 9}, {"elev", 4}}) {
    if (version >= 1) putLE<int32_t>(items, len);
    put<int32_t>(items, name.size());
    putText(items, name);
  }
  for (const auto& [name, type, data, noValues] : st) {
    put<int32_t>(stat, data.size(), noValues);
    if (version < 3) {
      oldData.insert(oldData.end(), data.begin(), data.end());
      continue;
    }
    put<int32_t>(stat, name.size(), type.size());
    putText(stat, name + type);
    stat.insert(stat.end(), data.begin(), data.end());
  }
  stat.insert(stat.end(), oldData.begin(), oldData.end());
  Bytes b;
  if (version >= 1) put<int32_t>(b, version, f.layerType);
  if (version >= 5) {  // the flavor, the constants 1 and pi, the top depth
    put<int32_t>(b, f.flavor, 1);
    put<float>(b, 4.0 * std::atan(1.0), f.topDepth);
  }
  put<int32_t>(b, f.modelType, 128 + items.size() + stat.size());
  put<int32_t>(b, SmallModel::startDT);
  if (version >= 8) put<int32_t>(b, SmallModel::startDT >> 32);  // the upper half of an int64
  putLE<float>(b, 3600.0f);
  put<int32_t>(b, 3, 2, 128, st.size(), 128 + items.size(), 3);
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

// Writes the small model through the library: items temp and elev, `steps` timesteps.
void writeSmall(const std::string& fn, int steps, const Fields& f = {}, int perFile = -1,
                std::vector<std::pair<std::string, int>> items = {{"temp", 9}, {"elev", 4}}) {
  thResultFile w(fn, EMB);
  thTest::buildSmallModel(w.mInfo);
  w.mInfo.layerType = f.layerType;
  w.mInfo.flavor = f.flavor;
  w.mInfo.modelType = f.modelType;
  w.mInfo.topDepth = f.topDepth;
  w.mInfo.mesh2d.projection = f.proj;
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
  for (int version = 0; version <= 8; ++version) {
    SCOPED_TRACE("version " + std::to_string(version));
    std::string fn = dir.file("v" + std::to_string(version) + ".emb");
    thTest::writeBytes(fn, embFile(version, {.modelType = version == 0 ? 0 : 3}));
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
    EXPECT_EQ(mi.mesh2d.projection, version >= 3 ? "UTM32" : "");
    EXPECT_EQ(thTest::arr(mi.mesh2d.nt, 8), SmallModel::nodeType);
    EXPECT_EQ(thTest::arr(mi.botlayerIdx, 4), SmallModel::botlayerIdx);
    // "enol" is consumed from version 4 on and kept as a static item before
    EXPECT_EQ(rf.staticItems.size(), version == 3 ? 1u : 0u);
    VF temp(9);
    rf.readItemData(0, 2, temp.data());
    for (int c = 0; c < 9; ++c) EXPECT_EQ(temp[c], SmallModel::temp(2, c));
  }
}

TEST(ResultFileEMB, WriterBytesFollowTheLayoutAndTheFirstItemSetsTheFormat) {
  thTest::TempDir dir;
  std::string fn = dir.file("w.emb");
  // header fields that no fresh object has, so that a field left unwritten or unread shows (layer
  // type 2 is no kind of its own, but sigma, 1, cannot be read back)
  const Fields f{.layerType = 2, .flavor = 5, .modelType = 12, .topDepth = 2.5f, .proj = "UTM33"};
  writeSmall(fn, 3, f);
  const Bytes want = embFile(8, f);
  EXPECT_EQ(thTest::readText(fn), std::string(want.begin(), want.end()));
  thResultFile r(fn, -1);
  const thModelInfo& mi = r.mInfo;
  EXPECT_EQ(VD({double(mi.layerType), double(mi.flavor), double(mi.modelType), mi.topDepth}),
            VD({2, 5, 12, 2.5}));
  EXPECT_EQ(mi.mesh2d.projection, "UTM33");
  // the first item makes RESTART and DECOUPLED files of EMB
  for (auto [item, len, format] : {std::tuple<std::string, int, int32_t>{"hdrst_u", 9, RESTART},
                                   {"uFlux", 8, DECOUPLED},
                                   {"hddcp_uFlux", 8, DECOUPLED},
                                   {"uFlux", 9, EMB}}) {
    const std::string one = dir.file(item + std::to_string(len) + ".emb");
    writeSmall(one, 1, {}, -1, {{item, len}});
    EXPECT_EQ(thResultFile(one, -1).format, format) << item;
  }
}

TEST(ResultFileEMB, SevenTimestepsAtThreePerFileReadAsOne) {
  thTest::TempDir dir;
  std::string fn = dir.file("x.emb");
  writeSmall(fn, 7, {}, 3);
  for (auto [name, nt, start] : {std::tuple{"x.emb", 3, 0}, {"x^1.emb", 3, 3}, {"x^2.emb", 1, 6}}) {
    thResultFile part(dir.file(name), -1);
    EXPECT_TRUE(part.mInfo.nt == nt && part.mInfo.startDT == SmallModel::startDT + 3600 * start) << name;
  }
  thResultFile rf(fn, -1);
  EXPECT_EQ(rf.getTotNoTimesteps(), 7);
  VF lay(4, 7.0f);
  float* p = lay.data();
  const float del = delVal;
  using Row = std::tuple<int, int, VF>;  // timestep, layer, values
  // t=2: e0 cells 0..2, e1 3 4(del), e2 5, e3 6..8 all deleted
  for (const auto& [t, layer, want] : std::vector<Row>{{2, 999, {202.25f, 203.25f, 205.25f, del}},
                                                       {2, -1, {200.25f, 203.25f, 205.25f, del}},
                                                       {0, 0, {0.25f, del, del, 6.25f}},
                                                       {1, 999, {100.25f, 104.25f, 105.25f, 107.25f}}}) {
    // runs of 1, 4 and all values: columns cut across runs read the same
    for (int32_t run : {1, 4, 1 << 18}) {
      rf.layerRunValues = run;
      EXPECT_EQ(rf.readLayer(0, t, layer, &p), 4);
      EXPECT_EQ(lay, want) << "t " << t << " layer " << layer;
    }
  }
  rf.readLayer(1, 1, 0, &p);  // a 2-D item ignores the layer
  EXPECT_EQ(lay, (VF{1, 1.5f, 2, 2.5f}));
  VF prof(3), elev(4);
  EXPECT_EQ(rf.readProfile(0, 1, 1, prof.data()), 2);  // below the sea bed: 0
  EXPECT_EQ(prof, (VF{0, 103.25f, 104.25f}));
  // series across the files, each read of the first file's part being one within it (a read of a
  // later file leaves fileNo on it)
  double* s = nullptr;
  ASSERT_EQ(rf.readTimeSeries(1, 2, 2, &s, 1, -1), 6);  // elev(t, 2) = t + 1
  EXPECT_EQ(take(s, 6), (VD{2, 3, 4, 5, 6, 7}));
  ASSERT_EQ(rf.readTimeSeriesProfile(0, 1, &s, 2, 5), 6);  // e1: cells 3 and 4 (deleted at t 2)
  EXPECT_EQ(take(s, 6), (VD{203.25, del, 303.25, 304.25, 403.25, 404.25}));
  rf.readItemData(1, 5, elev.data());  // in x^1.emb
  EXPECT_EQ(elev[3], SmallModel::elev(5, 3));
  double buf[9], *b = buf;  // EMB is read in sequence too
  EXPECT_EQ(rf.readNextItemData(0, &b), SmallModel::startDT);
  thResultFile(fn, -1).setNoTimesteps(2);  // patched into the first file
  EXPECT_EQ(thResultFile(fn, -1).mInfo.nt, 2);
}

TEST(ResultFileEMB, DamagedFilesAreReported) {
  thTest::TempDir dir;
  std::string fn = dir.file("d.emb");
  writeSmall(fn, 1);
  const std::string text = thTest::readText(fn);
  const Bytes good(text.begin(), text.end());
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
    for (int k = 0; k < 4; ++k, seed = seed * 1103515245u + 12345u)
      bad[(seed >> 8) % static_cast<uint32_t>(headerLen)] = static_cast<uint8_t>(seed >> 24);
    thTest::writeBytes(fn, bad);
    try {
      thResultFile rf(fn, -1);
    } catch (const VCppLib::VException&) {
    }
  }
}
