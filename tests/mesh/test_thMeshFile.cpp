// Mesh files: the text format, the binary image with its versions, the XML record, the report,
// round trips and bad input.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thMesh2D;
using V = std::vector<int>;
using thTest::arr;

namespace {

// A binary mesh image: nodes, element lists, optional Voronoi points.
std::vector<uint8_t> image(const std::vector<float>& x, const std::vector<float>& y,
                           const std::vector<int32_t>& nt, const std::vector<std::vector<int32_t>>& elems,
                           const std::vector<float>& vx = {}, const std::vector<float>& vy = {}) {
  std::vector<uint8_t> b;
  thTest::putLE<int32_t>(b, static_cast<int32_t>(x.size()));
  thTest::putLE<int32_t>(b, static_cast<int32_t>(elems.size()));
  for (const auto* v : {&x, &y})
    for (float f : *v) thTest::putLE(b, f);
  for (int32_t v : nt) thTest::putLE(b, v);
  for (auto& e : elems) thTest::putLE<int32_t>(b, static_cast<int32_t>(e.size()));
  for (auto& e : elems)
    for (int32_t n : e) thTest::putLE(b, n);
  for (const auto* v : {&vx, &vy})
    for (float f : *v) thTest::putLE(b, f);
  return b;
}

// Reads an image of the given version, its length known.
int32_t read(thMesh2D& m, const std::vector<uint8_t>& b, uint32_t version) {
  return m.readMeshBuffer(reinterpret_cast<const char*>(b.data()), version, static_cast<int64_t>(b.size()));
}

}  // namespace

TEST(MeshText, TokensLinesAndVoronoiBlock) {
  thMesh2D s, g, b;
  // separators mixed and repeated; a third header number of 0 reads no Voronoi points
  s.readMeshText("4,\t1;0\n1.5;2.5,,3\n3 0\n3 3\n0 3\n0;1;2,3\n9 9\n");
  EXPECT_TRUE(!s.eIsAcute[0] && s.nxCoor[0] == 1.5 && s.nyCoor[0] == 2.5 && s.eVoronoiX[0] == 7.5 / 4);
  // non-numeric tokens read 0, what follows a number is ignored, out of range gives the limit;
  // Windows line ends; node 2's type is rewritten: the node lies on a closed face
  g.readMeshText("4 1\r\nabc 0\r\n4xyz 0 \r\n0 3 7\r\n5 5 99999999999\r\n0 1 2 \r\n");
  EXPECT_TRUE(g.nxCoor[0] == 0.0 && g.nxCoor[1] == 4.0 && g.nonpe[0] == 3);
  EXPECT_EQ(V({g.nt[2], g.nt[3]}), V({99, 2147483647}));
  // a Voronoi block announced but absent or cut short: the points are computed
  const std::string kite = "4 2 1\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n";
  for (const std::string& text : {kite, kite + "1 1\n", kite + "1 1\n\n\n"}) {
    thMesh2D k;
    EXPECT_EQ(k.readMeshText(text), 0);
    EXPECT_TRUE(k.hasVoronoi && thTest::near(thTest::arr(k.eVoronoiY, 2), {5.0 / 6.0, -5.0 / 6.0}));
  }
  // a blank element line is an element without nodes (the line end closing the last node line
  // leaves one)
  EXPECT_EQ(b.readMeshText("3 1\n0 0\n1 0\n0 1\n"), 0);
  EXPECT_EQ(b.nonpe[0] + b.nvf + b.nevf, 0);
}

TEST(MeshText, BadInput) {
  std::string many = "3 1\n0 0\n1 0\n0 1\n";
  for (int i = 0; i < 51; i++) many += std::to_string(i % 3) + " ";
  const std::pair<std::string, std::string> cases[] = {
      {"", "line 1 of the mesh text must hold the number of nodes and the number of elements"},
      {"4 1\n0 0\n1 0\n", "has 4 lines, but 4 nodes and 1 elements need 6"},
      {"-4 1\n", "negative"},
      {"2000000000 2000000000\n", "need 4000000001"},
      {"3 1\n0 0\n1\n0 1\n0 1 2\n", "line 3 of the mesh text must hold the x and y"},
      {"3 1\n0 0\n1 0\n0 1\n0 -1 2\n", "line 5 of the mesh text refers to node -1, but the mesh has 3 nodes"},
      {many + "\n", "51 nodes; an element has at most 50"}};
  thMesh2D m;
  for (const auto& [text, part] : cases) EXPECT_VEXCEPTION_HAS(m.readMeshText(text), part);
  EXPECT_TRUE(m.non == 0 && m.nxCoor == nullptr);  // nothing was taken over from the failed reads
  std::string fifty = "50 1\n";
  for (int i = 0; i < 50; i++)
    fifty += std::to_string(std::cos(i * 0.1256637)) + " " + std::to_string(std::sin(i * 0.1256637)) + "\n";
  for (int i = 0; i < 50; i++) fifty += std::to_string(i) + " ";
  EXPECT_EQ(m.readMeshText(fifty + "\n"), 0);  // 50 nodes are accepted
  EXPECT_EQ(m.nvf, 50);
}

TEST(MeshFile, ReadFromFiles) {
  thTest::TempDir dir;
  const std::string text = thTest::smallModelMeshText(), tf = dir.file("model.mesh"),
                    bf = dir.file("model.bmesh");
  thTest::writeText(tf, text);
  thMesh2D m, mb, x;
  EXPECT_TRUE(m.readMeshFromFile(tf) == 0 && m.meshFN == tf && m.nvf == 22);

  // a binary stand-alone file: any Voronoi arrays are ignored, the points computed
  char* block = nullptr;
  const int32_t n = m.writeMeshBuffer(block);
  const std::vector<char> written = thTest::take(block, n);
  thTest::writeBytes(bf, {written.begin(), written.end()});
  mb.meshFmt = 1;
  // the coordinates are exact in float32
  EXPECT_TRUE(mb.readMeshFromFile(bf) == 0 && !mb.eIsAcute[0] && mb.toString() == m.toString());

  // truncated and garbage (a count near 2^31) files leave the mesh read before untouched; the
  // cuts of every length are in MeshBinary.VersionsLayoutAndBadBlocks
  thTest::truncateFile(bf, 100);
  EXPECT_VEXCEPTION_HAS(mb.readMeshFromFile(bf), "mesh file " + bf);
  thTest::writeBytes(dir.file("garbage.bmesh"), {0xff, 0xff, 0xff, 0x7f, 1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_VEXCEPTION_HAS(mb.readMeshFromFile(dir.file("garbage.bmesh")), "ends after 12 bytes");
  EXPECT_EQ(mb.nvf, 22);
  thTest::writeText(dir.file("short.mesh"), text.substr(0, text.size() / 2));
  EXPECT_VEXCEPTION_HAS(m.readMeshFromFile(dir.file("short.mesh")), "mesh file " + dir.file("short.mesh"));

  // in either format; a directory is no file
  for (const auto& [fmt, path] : {std::pair{0, dir.file("none.mesh")}, {1, dir.path()}}) {
    x.meshFmt = fmt;
    EXPECT_VEXCEPTION(x.readMeshFromFile(path), "No such file: " + path);
  }
  EXPECT_EQ(x.meshFN, dir.path());
  x.meshFmt = 4;
  EXPECT_VEXCEPTION(x.readMeshFromFile(tf), "readMeshFromFile: unsupported fileformat.");
  EXPECT_EQ(x.non, 0);
}

TEST(MeshBinary, VersionsLayoutAndBadBlocks) {
  const std::vector<float> x = {0, 4, 2, 2}, y = {0, 0, 3, -3};
  const std::vector<std::vector<int32_t>> elems = {{0, 1, 2}, {0, 3, 1}};
  // node types by version, in a mesh without elements so that initMesh leaves them as read:
  // versions 0 and 1 store them shifted; -1 is compared unsigned and keeps them
  const auto types = image(x, y, {0, 4, 3, 1}, {});
  const std::pair<uint32_t, std::vector<int>> byVersion[] = {
      {0, {99, 3, 2, 0}}, {1, {99, 3, 2, 0}}, {2, {0, 4, 3, 1}}, {static_cast<uint32_t>(-1), {0, 4, 3, 1}}};
  thMesh2D m;
  for (const auto& [version, expect] : byVersion) {
    read(m, types, version);
    EXPECT_EQ(arr(m.nt, 4), expect) << "version " << version;
  }

  // version 7 carries Voronoi points; 6 and -1 (compared signed) ignore any at the end
  const auto b = image(x, y, {0, 0, 0, 0}, elems, {2.5f, 2.0f}, {0.5f, -0.8f});
  read(m, b, 7);
  EXPECT_TRUE(m.hasVoronoi && m.eVoronoiX[0] == 2.5 && m.eVoronoiY[1] == static_cast<double>(-0.8f) &&
              !m.isOrthogonal);
  // writeMeshBuffer: 8 + 4 (3 non + 3 noe + S) bytes in the documented order, types as rewritten
  char* block = nullptr;
  const int32_t n = m.writeMeshBuffer(block);
  const std::vector<char> written = thTest::take(block, n);
  EXPECT_EQ(std::vector<uint8_t>(written.begin(), written.end()),
            image(x, y, {99, 99, 99, 99}, elems, {2.5f, 2.0f}, {0.5f, -0.8f}));

  read(m, b, 6);
  EXPECT_NEAR(m.eVoronoiY[0], 5.0 / 6.0, 1e-6);
  // length unknown: trusted
  m.readMeshBuffer(reinterpret_cast<const char*>(b.data()), static_cast<uint32_t>(-1));
  EXPECT_NEAR(m.eVoronoiY[1], -5.0 / 6.0, 1e-6);
  const auto nb = image(x, y, {0, 0, 0, 0}, elems);
  EXPECT_VEXCEPTION_HAS(read(m, nb, 7), "Voronoi points");

  // bad blocks
  const auto good = image(x, y, {0, 0, 0, 0}, {{0, 1, 2}});
  for (size_t cut = 0; cut < good.size(); cut++)
    EXPECT_VEXCEPTION_HAS(
        m.readMeshBuffer(reinterpret_cast<const char*>(good.data()), 2, static_cast<int64_t>(cut)),
        "the mesh block ends after");
  EXPECT_VEXCEPTION_HAS(m.readMeshBuffer(nullptr, 2, 0), "missing");
  auto neg = image(x, y, {0, 0, 0, 0}, {});
  neg[0] = 0xfe;
  neg[3] = 0xff;  // non = -2
  const auto many = image(x, y, {0, 0, 0, 0}, {std::vector<int32_t>(51, 0)});
  EXPECT_VEXCEPTION_HAS(read(m, neg, 2), "negative");
  EXPECT_VEXCEPTION_HAS(read(m, many, 2), "51 nodes");
  // types outside 0..99 make closed faces
  const auto odd = image(x, y, {250, 250, -7, 0}, {{0, 1, 2}});
  EXPECT_EQ(read(m, odd, 2), 0);
  EXPECT_EQ(arr(m.vft, 3), V(3, 99));
  // a stored type with no predecessor in an old (shifted) version is refused, not wrapped
  const auto lowest = image(x, y, {0, INT32_MIN, 0, 0}, {});
  EXPECT_VEXCEPTION_HAS(read(m, lowest, 1), "gives node 1 the type -2147483648");

  // nothing to write from a mesh that has counts without arrays, or no Voronoi points yet
  thMesh2D raw;
  raw.noe = 1;
  EXPECT_VEXCEPTION_HAS(raw.writeMeshBuffer(block), "not the arrays");
  raw.nonpe = new int32_t[1]();
  raw.en = new int32_t[1]();
  EXPECT_VEXCEPTION_HAS(raw.writeMeshBuffer(block), "no Voronoi points");
}

TEST(MeshReport, RoundTripsDefaultMeshAndXml) {
  thMesh2D m, r, p, l, lr, d;
  m.readMeshText(thTest::smallMixedMeshText());
  const std::string s = m.toString();
  EXPECT_EQ(s.substr(0, s.find('\n')), "15 10 10");
  // node 0: x y type; element 0; the Voronoi point of element 0
  for (const char* part : {"\n0 0 1\n", "\n0 1 6 5\n", "\n50 50\n"}) EXPECT_NE(s.find(part), s.npos);
  r.readMeshText(s);
  EXPECT_TRUE(r.hasVoronoi && r.toString() == s);

  p.readMeshText("3 1\n0.123456789012345 1000000.5\n1 0\n0 1\n0 1 2\n");
  EXPECT_NE(p.toString().find("\n0.123456789 1000000.5 99\n"), std::string::npos);  // ten digits

  l.projection = lr.projection = "LONLAT";
  l.readMeshText(thTest::gridMeshText(3, 2, 0.01, 0.01, true, 0, 0, 8.0, 54.0));
  lr.readMeshText(l.toString());  // lon/lat meshes keep their degrees
  EXPECT_TRUE(lr.toString() == l.toString() && lr.nvf == l.nvf);

  EXPECT_EQ(d.initDefaultMesh(), 0);  // the unit square; two numbers a node line: all types 99
  EXPECT_EQ(V({d.noe, d.nonpe[0], d.nvf, d.nt[0], d.nt[1], d.nt[2], d.nt[3]}), V({1, 4, 4, 99, 99, 99, 99}));
  EXPECT_TRUE(!d.eIsAcute[0] && d.totArea == 1.0);  // Voronoi points computed, not read
  d.meshFN = "a\\b.mesh";
  EXPECT_EQ(
      d.meshXml(),
      "<Mesh>\n\t<Filename>a\\b.mesh</Filename>\n\t<Format>EMT</Format>\n\t<Projection>UTM32</Projection>\n"
      "</Mesh>\n");
  d.meshFmt = 1;
  EXPECT_NE(d.meshXml().find("\t<Format>EMB</Format>\n"), std::string::npos);
  d.meshFmt = 7;
  EXPECT_VEXCEPTION(d.meshXml(), "fileFmtEnum2str: unsupported fileFmtEnum");
}
