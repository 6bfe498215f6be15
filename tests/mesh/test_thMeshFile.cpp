// Mesh files: the text format, the binary image with its versions, round trips, bad input.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thMesh2D;

namespace {

// A binary mesh image: non nodes, element lists, optional Voronoi points.
std::vector<uint8_t> image(const std::vector<float>& x, const std::vector<float>& y, const std::vector<int32_t>& nt,
                           const std::vector<std::vector<int32_t>>& elems, const std::vector<float>& vx = {},
                           const std::vector<float>& vy = {}) {
  std::vector<uint8_t> b;
  thTest::putLE<int32_t>(b, static_cast<int32_t>(x.size()));
  thTest::putLE<int32_t>(b, static_cast<int32_t>(elems.size()));
  for (float v : x) thTest::putLE(b, v);
  for (float v : y) thTest::putLE(b, v);
  for (int32_t v : nt) thTest::putLE(b, v);
  for (auto& e : elems) thTest::putLE<int32_t>(b, static_cast<int32_t>(e.size()));
  for (auto& e : elems)
    for (int32_t n : e) thTest::putLE(b, n);
  for (float v : vx) thTest::putLE(b, v);
  for (float v : vy) thTest::putLE(b, v);
  return b;
}

const char* bytes(const std::vector<uint8_t>& b) { return reinterpret_cast<const char*>(b.data()); }

void expectSameMesh(const thMesh2D& a, const thMesh2D& b, double tol) {
  ASSERT_EQ(a.non, b.non);
  ASSERT_EQ(a.noe, b.noe);
  ASSERT_EQ(a.nevf, b.nevf);
  for (int i = 0; i < a.non; i++) {
    EXPECT_NEAR(a.nxCoor[i], b.nxCoor[i], tol * (1 + std::fabs(a.nxCoor[i])));
    EXPECT_NEAR(a.nyCoor[i], b.nyCoor[i], tol * (1 + std::fabs(a.nyCoor[i])));
    EXPECT_EQ(a.nt[i], b.nt[i]);
  }
  for (int e = 0; e < a.noe; e++) {
    EXPECT_EQ(a.nonpe[e], b.nonpe[e]);
    EXPECT_NEAR(a.eVoronoiX[e], b.eVoronoiX[e], tol * (1 + std::fabs(a.eVoronoiX[e])));
    EXPECT_NEAR(a.eVoronoiY[e], b.eVoronoiY[e], tol * (1 + std::fabs(a.eVoronoiY[e])));
  }
  for (int k = 0; k < a.nevf; k++) EXPECT_EQ(a.en[k], b.en[k]);
}

}  // namespace

TEST(MeshText, TokensAndOptionalFields) {
  thMesh2D m;
  m.readMeshText("4 1\n0 0\n1 0\n1 1\n0 1\n0 1 2 3\n");
  EXPECT_EQ(m.noe, 1);
  EXPECT_EQ(m.nonpe[0], 4);
  for (int i = 0; i < 4; i++) EXPECT_EQ(m.nt[i], 99);
  EXPECT_FALSE(m.eIsAcute[0]);  // Voronoi points were computed, not read

  // separators mixed and repeated; a third header number of 0 reads no Voronoi points
  thMesh2D s;
  s.readMeshText("4,\t1;0\n1.5;2.5,,3\n3 0\n3 3\n0 3\n0;1;2,3\n9 9\n");
  EXPECT_FALSE(s.eIsAcute[0]);
  EXPECT_DOUBLE_EQ(s.nxCoor[0], 1.5);
  EXPECT_DOUBLE_EQ(s.nyCoor[0], 2.5);
  EXPECT_DOUBLE_EQ(s.eVoronoiX[0], (1.5 + 3 + 3 + 0) / 4);

  // non-numeric tokens read as 0; what follows a number is ignored
  thMesh2D g;
  g.readMeshText("3 1\nabc 0\n4xyz 0\n0 3 7\n0 1 2\n");
  EXPECT_DOUBLE_EQ(g.nxCoor[0], 0.0);
  EXPECT_DOUBLE_EQ(g.nxCoor[1], 4.0);
  EXPECT_EQ(g.nt[2], 99);  // rewritten: the node lies on a closed face

  // Windows line ends
  thMesh2D w;
  w.readMeshText("3 1\r\n0 0\r\n1 0 \r\n0 1\r\n0 1 2 \r\n");
  EXPECT_EQ(w.nonpe[0], 3);
}

TEST(MeshText, MixedElementsAndVoronoiBlock) {
  thMesh2D m;
  m.readMeshText("5 2 2\n0 0\n1 0\n1 1\n0 1\n2 0.5\n0 1 2 3\n1 4 2\n0.5 0.5\n1.375 0.5\n");
  EXPECT_TRUE(m.hasVoronoi);
  EXPECT_EQ(m.nonpe[0], 4);
  EXPECT_EQ(m.nonpe[1], 3);
  EXPECT_EQ(m.eni[1], 4);
  EXPECT_DOUBLE_EQ(m.eVoronoiX[1], 1.375);
  // points from the file are tested by the 5 degree rule: both pass
  EXPECT_TRUE(m.eIsAcute[0]);
  EXPECT_TRUE(m.eIsAcute[1]);
}

TEST(MeshText, AnnouncedVoronoiBlockMissing) {
  // the block is announced but absent, or cut short: the points are computed
  for (const std::string& text : {std::string("4 2 1\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n"),
                                  std::string("4 2 1\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n1 1\n"),
                                  std::string("4 2 1\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n1 1\n\n\n")}) {
    thMesh2D m;
    EXPECT_EQ(m.readMeshText(text), 0);
    EXPECT_TRUE(m.hasVoronoi);
    EXPECT_NEAR(m.eVoronoiY[0], 5.0 / 6.0, 1e-12);
    EXPECT_NEAR(m.eVoronoiY[1], -5.0 / 6.0, 1e-12);
  }
}

TEST(MeshText, BadInput) {
  thMesh2D m;
  EXPECT_VEXCEPTION_HAS(m.readMeshText(""), "line 1 of the mesh text");
  EXPECT_VEXCEPTION_HAS(m.readMeshText("garbage"), "number of nodes and the number of elements");
  EXPECT_VEXCEPTION_HAS(m.readMeshText("4 1\n0 0\n1 0\n"), "has 4 lines, but 4 nodes and 1 elements need 6");
  EXPECT_VEXCEPTION_HAS(m.readMeshText("-4 1\n"), "negative");
  EXPECT_VEXCEPTION_HAS(m.readMeshText("2000000000 2000000000\n"), "need 4000000001");
  EXPECT_VEXCEPTION_HAS(m.readMeshText("3 1\n0 0\n1\n0 1\n0 1 2\n"), "line 3 of the mesh text must hold the x and y");
  EXPECT_VEXCEPTION_HAS(m.readMeshText("3 1\n0 0\n1 0\n0 1\n0 1 3\n"),
                        "line 5 of the mesh text refers to node 3, but the mesh has 3 nodes");
  EXPECT_VEXCEPTION_HAS(m.readMeshText("3 1\n0 0\n1 0\n0 1\n0 -1 2\n"), "refers to node -1");
  EXPECT_VEXCEPTION_HAS(m.readMeshText("3 1\n0 0\n1 0\n0 1\n\n"), "holds no node numbers");
  std::string big = "3 1\n0 0\n1 0\n0 1\n";
  for (int i = 0; i < 51; i++) big += std::to_string(i % 3) + " ";
  EXPECT_VEXCEPTION_HAS(m.readMeshText(big + "\n"), "51 nodes; an element has at most 50");
  // nothing was taken over from the failed reads
  EXPECT_EQ(m.non, 0);
  EXPECT_EQ(m.nxCoor, nullptr);
  // 50 nodes are accepted
  std::string fifty = "50 1\n";
  for (int i = 0; i < 50; i++)
    fifty += std::to_string(std::cos(i * 0.1256637)) + " " + std::to_string(std::sin(i * 0.1256637)) + "\n";
  for (int i = 0; i < 50; i++) fifty += std::to_string(i) + " ";
  EXPECT_EQ(m.readMeshText(fifty + "\n"), 0);
  EXPECT_EQ(m.nvf, 50);
}

TEST(MeshFile, ReadFromFiles) {
  thTest::TempDir dir;
  const std::string text = thTest::smallModelMeshText();
  thTest::writeText(dir.file("model.mesh"), text);
  thMesh2D m;
  EXPECT_EQ(m.readMeshFromFile(dir.file("model.mesh")), 0);
  EXPECT_EQ(m.meshFN, dir.file("model.mesh"));
  EXPECT_EQ(m.nvf, 22);

  // binary stand-alone file
  char* block = nullptr;
  const int32_t len = m.writeMeshBuffer(block);
  std::vector<uint8_t> b(block, block + len);
  delete[] block;
  thTest::writeBytes(dir.file("model.bmesh"), b);
  thMesh2D mb;
  mb.meshFmt = 1;
  EXPECT_EQ(mb.readMeshFromFile(dir.file("model.bmesh")), 0);
  EXPECT_FALSE(mb.eIsAcute[0]);  // stand-alone: Voronoi arrays are ignored, points computed
  expectSameMesh(m, mb, 1e-7);

  // truncated, empty and garbage binary files
  thTest::truncateFile(dir.file("model.bmesh"), 100);
  EXPECT_VEXCEPTION_HAS(mb.readMeshFromFile(dir.file("model.bmesh")), "mesh file " + dir.file("model.bmesh"));
  thTest::writeBytes(dir.file("empty.bmesh"), {});
  EXPECT_VEXCEPTION_HAS(mb.readMeshFromFile(dir.file("empty.bmesh")), "ends after 0 bytes");
  thTest::writeBytes(dir.file("garbage.bmesh"), {0xff, 0xff, 0xff, 0x7f, 1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_VEXCEPTION_HAS(mb.readMeshFromFile(dir.file("garbage.bmesh")), "ends after 12 bytes");
  EXPECT_EQ(mb.nvf, 22);  // the mesh read before is untouched

  // text files: truncated, empty
  thTest::writeText(dir.file("short.mesh"), text.substr(0, text.size() / 2));
  EXPECT_VEXCEPTION_HAS(m.readMeshFromFile(dir.file("short.mesh")), "mesh file " + dir.file("short.mesh"));
  thTest::writeText(dir.file("empty.mesh"), "");
  EXPECT_VEXCEPTION_HAS(m.readMeshFromFile(dir.file("empty.mesh")), "line 1 of mesh file");

  thMesh2D n;
  EXPECT_VEXCEPTION(n.readMeshFromFile(dir.file("none.mesh")), "No such file: " + dir.file("none.mesh"));
  EXPECT_EQ(n.meshFN, dir.file("none.mesh"));
  n.meshFmt = 4;
  EXPECT_VEXCEPTION(n.readMeshFromFile(dir.file("model.mesh")), "readMeshFromFile: unsupported fileformat.");
  EXPECT_EQ(n.non, 0);
}

TEST(MeshBinary, VersionsAndLayout) {
  const std::vector<float> x = {0, 4, 2, 2}, y = {0, 0, 3, -3};
  const std::vector<std::vector<int32_t>> elems = {{0, 1, 2}, {0, 3, 1}};
  {
    // versions 0 and 1 store types shifted
    // (a mesh without elements, so that initMesh leaves the types as read)
    thMesh2D t;
    auto bt = image(x, y, {0, 4, 3, 1}, {});
    t.readMeshBuffer(bytes(bt), 0, static_cast<int64_t>(bt.size()));
    EXPECT_EQ(t.nt[0], 99);
    EXPECT_EQ(t.nt[1], 3);
    EXPECT_EQ(t.nt[2], 2);
    EXPECT_EQ(t.nt[3], 0);
    t.readMeshBuffer(bytes(bt), 2, static_cast<int64_t>(bt.size()));
    EXPECT_EQ(t.nt[1], 4);
    t.readMeshBuffer(bytes(bt), static_cast<uint32_t>(-1), static_cast<int64_t>(bt.size()));
    EXPECT_EQ(t.nt[0], 0);
    EXPECT_EQ(t.nt[2], 3);
  }
  {
    // version 7 carries Voronoi points; version 6 and -1 ignore any at the end
    auto b = image(x, y, {0, 0, 0, 0}, elems, {2.5f, 2.0f}, {0.5f, -0.8f});
    thMesh2D m;
    m.readMeshBuffer(bytes(b), 7, static_cast<int64_t>(b.size()));
    EXPECT_TRUE(m.hasVoronoi);
    EXPECT_DOUBLE_EQ(m.eVoronoiX[0], 2.5);
    EXPECT_DOUBLE_EQ(m.eVoronoiY[1], static_cast<double>(-0.8f));
    EXPECT_FALSE(m.isOrthogonal);
    m.readMeshBuffer(bytes(b), 6, static_cast<int64_t>(b.size()));
    EXPECT_NEAR(m.eVoronoiY[0], 5.0 / 6.0, 1e-6);
    m.readMeshBuffer(bytes(b), static_cast<uint32_t>(-1));  // length unknown: trusted
    EXPECT_NEAR(m.eVoronoiY[1], -5.0 / 6.0, 1e-6);
    // a version 7 block without its Voronoi arrays is too short
    auto nb = image(x, y, {0, 0, 0, 0}, elems);
    EXPECT_VEXCEPTION_HAS(m.readMeshBuffer(bytes(nb), 7, static_cast<int64_t>(nb.size())), "Voronoi points");
  }
  {
    // writeMeshBuffer: 8 + 4 (3 non + 3 noe + S) bytes in the documented order
    thMesh2D m;
    m.readMeshText("4 2\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n");
    char* block = nullptr;
    const int32_t len = m.writeMeshBuffer(block);
    std::unique_ptr<char[]> own(block);
    EXPECT_EQ(len, 8 + 4 * (12 + 6 + 6));
    auto i32 = [&](int off) {
      int32_t v;
      std::memcpy(&v, block + off, 4);
      return v;
    };
    auto f32 = [&](int off) {
      float v;
      std::memcpy(&v, block + off, 4);
      return v;
    };
    EXPECT_EQ(i32(0), 4);
    EXPECT_EQ(i32(4), 2);
    EXPECT_EQ(f32(8 + 4), 4.0f);       // nxCoor[1]
    EXPECT_EQ(f32(8 + 16 + 12), -3.0f);  // nyCoor[3]
    EXPECT_EQ(i32(8 + 32), 99);        // nt[0]
    EXPECT_EQ(i32(8 + 48), 3);         // nonpe[0]
    EXPECT_EQ(i32(8 + 56 + 16), 3);    // en[4]
    EXPECT_FLOAT_EQ(f32(8 + 56 + 24 + 4), 2.0f);               // eVoronoiX[1]
    EXPECT_FLOAT_EQ(f32(8 + 56 + 24 + 12), -5.0f / 6.0f);      // eVoronoiY[1]
    thMesh2D r;
    r.readMeshBuffer(block, 7, len);
    expectSameMesh(m, r, 1e-7);
    EXPECT_EQ(r.nvf, m.nvf);
  }
}

TEST(MeshBinary, BadBlocks) {
  const std::vector<float> x = {0, 1, 0}, y = {0, 0, 1};
  thMesh2D m;
  auto good = image(x, y, {0, 0, 0}, {{0, 1, 2}});
  for (size_t cut = 0; cut < good.size(); cut++)
    EXPECT_VEXCEPTION_HAS(m.readMeshBuffer(bytes(good), 2, static_cast<int64_t>(cut)), "the mesh block ends after");
  EXPECT_VEXCEPTION_HAS(m.readMeshBuffer(nullptr, 2, 0), "missing");
  auto neg = image(x, y, {0, 0, 0}, {});
  neg[0] = 0xfe;
  neg[3] = 0xff;  // non = -2
  EXPECT_VEXCEPTION_HAS(m.readMeshBuffer(bytes(neg), 2, static_cast<int64_t>(neg.size())), "negative");
  auto many = image(x, y, {0, 0, 0}, {std::vector<int32_t>(51, 0)});
  EXPECT_VEXCEPTION_HAS(m.readMeshBuffer(bytes(many), 2, static_cast<int64_t>(many.size())), "51 nodes");
  auto beyond = image(x, y, {0, 0, 0}, {{0, 1, 5}});
  EXPECT_VEXCEPTION_HAS(m.readMeshBuffer(bytes(beyond), 2, static_cast<int64_t>(beyond.size())), "refers to node 5");
  // types outside 0..99 make closed faces
  auto odd = image(x, y, {250, 250, -7}, {{0, 1, 2}});
  EXPECT_EQ(m.readMeshBuffer(bytes(odd), 2, static_cast<int64_t>(odd.size())), 0);
  for (int f = 0; f < 3; f++) EXPECT_EQ(m.vft[f], 99);
  // a mesh never initialised has no Voronoi points to write
  thMesh2D raw;
  raw.noe = 1;
  char* block = nullptr;
  raw.nonpe = new int32_t[1]();
  EXPECT_VEXCEPTION_HAS(raw.writeMeshBuffer(block), "no Voronoi points");
  delete[] raw.nonpe;
  raw.nonpe = nullptr;
  raw.noe = 0;
}

TEST(MeshReport, RoundTrips) {
  thMesh2D m;
  m.readMeshText(thTest::smallMixedMeshText());
  const std::string s = m.toString();
  EXPECT_EQ(s.substr(0, s.find('\n')), "15 10 10");
  EXPECT_NE(s.find("\n0 0 1\n"), std::string::npos);     // node 0: x y type
  EXPECT_NE(s.find("\n0 1 6 5\n"), std::string::npos);   // element 0
  EXPECT_NE(s.find("\n50 50\n"), std::string::npos);     // Voronoi point of element 0
  thMesh2D r;
  r.readMeshText(s);
  EXPECT_TRUE(r.hasVoronoi);
  expectSameMesh(m, r, 1e-9);
  EXPECT_EQ(r.toString(), s);

  // ten significant digits
  thMesh2D p;
  p.readMeshText("3 1\n0.123456789012345 1000000.5\n1 0\n0 1\n0 1 2\n");
  const std::string ps = p.toString();
  EXPECT_NE(ps.find("\n0.123456789 1000000.5 99\n"), std::string::npos) << ps;

  // lon/lat meshes keep their degrees
  thMesh2D l;
  l.projection = "LONLAT";
  l.readMeshText(thTest::gridMeshText(3, 2, 0.01, 0.01, true, 0, 0, 8.0, 54.0));
  thMesh2D lr;
  lr.projection = "LONLAT";
  lr.readMeshText(l.toString());
  expectSameMesh(l, lr, 1e-9);
  EXPECT_EQ(lr.nvf, l.nvf);
}
