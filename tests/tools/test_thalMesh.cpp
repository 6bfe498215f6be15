// thal mesh: info, convert, optimise, project and merge on mesh files made here.
#include <cmath>
#include <random>
#include <sstream>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"
#include "thalRun.h"

namespace {

using namespace thalTest;
using thalmod::thMesh2D;

// 4 by 3 cells of 100 m split into triangles, open boundary 1 in the west, in UTM 32 from
// (500000, 6700000): integer coordinates, which a binary file holds exactly.
const std::string utmText = thTest::gridMeshText(4, 3, 100, 100, true, 1, 0, 500000, 6700000);

thMesh2D readBack(const std::string& path) {
  thMesh2D m;
  m.meshFmt = path.ends_with(".emb") ? 1 : 0;
  m.readMeshFromFile(path);
  return m;
}

// The number after the label in a line of a before/after table: column 0 before, 1 after.
double tableValue(const std::string& out, const std::string& label, int column) {
  std::istringstream line(out.substr(out.find(label) + label.size()));
  double v[2];
  line >> v[0] >> v[1];
  return v[column];
}

TEST(ThalMesh, InfoAndConvert) {
  thTest::TempDir d;
  thTest::writeText(d.file("model.mesh"), thTest::smallModelMeshText());
  Result r = thal("mesh info " + quoted(d.file("model.mesh")));
  ASSERT_EQ(r.status, 0) << r.err;
  for (const char* want :
       {"\nNodes:\t15\n", "\nElements:\t8 (0 triangles, 8 quadrilaterals)\n",
        "\nFaces:\t22 (10 inner, 4 open boundary, 8 closed)\n", "\nExtent:\tx 0 to 400, y 0 to 200\n",
        "\nOpen boundaries:\t2\n\tboundary 1: 2 faces\n\tboundary 2: 2 faces\n", "\nOrthogonal:\tyes\n",
        "\nFaces off by more than 5 degrees:\t0 of 10 inner faces\n", ": 90.00 degrees\n"})
    EXPECT_NE(r.out.find(want), std::string::npos) << want << r.out;

  // text -> binary -> text is the mesh that text -> text gives
  thTest::writeText(d.file("a.mesh"), utmText);
  EXPECT_EQ(thal("mesh convert " + quoted(d.file("a.mesh")) + " " + quoted(d.file("a.emb"))).status, 0);
  EXPECT_EQ(thal("mesh convert " + quoted(d.file("a.emb")) + " " + quoted(d.file("b.mesh"))).status, 0);
  EXPECT_EQ(thal("mesh convert " + quoted(d.file("a.mesh")) + " " + quoted(d.file("c.txt"))).status, 0);
  EXPECT_EQ(thTest::readText(d.file("b.mesh")), thTest::readText(d.file("c.txt")));
  EXPECT_EQ(thTest::readText(d.file("a.emb")).size(), 8u + 4 * (3 * 20 + 3 * 24 + 72));
}

TEST(ThalMesh, OptimiseProjectMerge) {
  thTest::TempDir d;
  thMesh2D j;
  j.readMeshText(utmText);
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> u(-30, 30);
  for (int i = 0; i < j.non; i++)
    if (j.nt[i] == 0) j.nxCoor[i] += u(rng), j.nyCoor[i] += u(rng);
  thTest::writeText(d.file("j.mesh"), j.toString());
  Result r =
      thal("mesh optimise " + quoted(d.file("j.mesh")) + " " + quoted(d.file("o.mesh")) + " --passes 4");
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_LT(tableValue(r.out, "Largest face deviation, degrees", 1),
            tableValue(r.out, "Largest face deviation, degrees", 0));
  EXPECT_NE(thTest::readText(d.file("o.mesh")), thTest::readText(d.file("j.mesh")));  // the moved nodes

  // x 500000 is the central meridian of zone 32; back in UTM within the series' metre
  ASSERT_EQ(
      thal("mesh project " + quoted(d.file("j.mesh")) + " " + quoted(d.file("ll.mesh")) + " --to lonlat")
          .status,
      0);
  EXPECT_NEAR(readBack(d.file("ll.mesh")).nxCoor[0], 9.0, 1e-9);
  r = thal("mesh project " + quoted(d.file("ll.mesh")) + " " + quoted(d.file("u.emb")) +
           " --projection LONLAT --to utm32");
  ASSERT_EQ(r.status, 0) << r.err;
  thMesh2D back = readBack(d.file("u.emb"));
  for (int i = 0; i < j.non; i++)
    EXPECT_NEAR(std::hypot(back.nxCoor[i] - j.nxCoor[i], back.nyCoor[i] - j.nyCoor[i]), 0, 1.5);

  thTest::writeText(d.file("l.mesh"), thTest::gridMeshText(1, 1));
  thTest::writeText(d.file("r.mesh"), thTest::gridMeshText(1, 1, 1, 1, false, 0, 0, 1));
  r = thal("mesh merge " + quoted(d.file("l.mesh")) + " " + quoted(d.file("r.mesh")) + " " +
           quoted(d.file("m.mesh")));
  EXPECT_NE(
      r.out.find(": 6 nodes (2 of the second mesh's nodes joined the first's), 2 elements, inner faces: 1;"),
      std::string::npos)
      << r.out << r.err;
  EXPECT_EQ(readBack(d.file("m.mesh")).nivf, 1);
}

TEST(ThalMesh, Mistakes) {
  thTest::TempDir d;
  const std::string a = d.file("a.mesh");
  thTest::writeText(a, utmText);
  // The usage, an unknown option and a missing file say what every command says (thal's own tests).
  for (const std::string& args :
       {std::string("mesh"), "mesh info " + a + " --tri-only", "mesh info " + d.file("none.mesh")})
    EXPECT_EQ(thal(args).status, 1) << args;
  const std::pair<std::string, std::string> cases[] = {
      {"mesh draw " + a,
       "Unknown mesh command 'draw'; it is one of info, convert, optimise, project, merge."},
      {"mesh convert " + a + " x.vtk",
       "Cannot tell the format of the mesh file 'x.vtk' from its extension; name text "
       "meshes .mesh, .emt or .txt and binary ones .emb, .bmesh or .bin."},
      {"mesh convert " + a + " " + a,
       "The output '" + a + "' is the input file '" + a + "'; give the new mesh another name."},
      {"mesh optimise " + a + " o.mesh --passes -1", "The number of passes '-1' must be 0 or more."},
      {"mesh project " + a + " p.mesh --to utm61",
       "The projection 'utm61' is neither LONLAT nor UTM followed by a zone "
       "of 1 to 60 (UTM32; UTM-33 south of the equator)."},
      {"mesh project " + a + " p.mesh --to utm32",
       "The mesh is in UTM32 already (--projection); there is nothing to project."}};
  for (const auto& [args, message] : cases) {
    Result r = thal(args);
    EXPECT_EQ(r.status, 1) << args;
    EXPECT_EQ(r.err, "thal: " + message + "\n") << args;
  }
  // a library refusal passes through as its sentence
  EXPECT_NE(thal("mesh project " + a + " p.mesh --to utm40").err.find("thal: toUTM: node 0 at longitude 9,"),
            std::string::npos);
}

}  // namespace
