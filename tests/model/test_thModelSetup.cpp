// A model set up from a mesh file, a bathymetry specification and a layer list, and the General
// block of its configuration, read back.
#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "model/thModelInfo.h"
#include "support/VXml.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thModelInfo;
using thTest::arr;
using VI = std::vector<int32_t>;
using VD = std::vector<double>;

namespace {

// The numbering and thicknesses of two models agree (the cell and U-point numbers follow from
// the bottom layers and the counts).
void expectSameCells(const thModelInfo& a, const thModelInfo& b) {
  ASSERT_EQ(VI({a.cells, a.totNoUPnts, a.totNoBndCells, a.mesh2d.noe}),
            VI({b.cells, b.totNoUPnts, b.totNoBndCells, b.mesh2d.noe}));
  EXPECT_EQ(arr(a.ebli, a.mesh2d.noe), arr(b.ebli, b.mesh2d.noe));
  EXPECT_EQ(arr(a.cellVol, a.cells), arr(b.cellVol, b.cells));
  EXPECT_EQ(arr(a.elemBathy, a.mesh2d.noe), arr(b.elemBathy, b.mesh2d.noe));
}

}  // namespace

TEST(ModelSetup, BathymetryForms) {
  thTest::TempDir dir;
  thTest::writeText(dir.file("crlf.txt"), "4\r\n5 2\r\n6\t3\r\n\r\n");
  thTest::writeText(dir.file("bad.txt"), "abc\n2;\n3\n");
  thTest::writeText(dir.file("four.txt"), "1\n2\n3\n4\n");
  thModelInfo mi;
  thTest::stripMesh(mi.mesh2d, true, false);
  // spec, depths, layer counts (none: enol null). A leading blank makes an empty depth field (0) and
  // the depth the layer count.
  using Case = std::tuple<std::string, VD, VI>;
  for (const auto& [spec, depth, enol] :
       {Case{"12.5", {12.5, 12.5, 12.5}, {}}, Case{"1,2,3", {1, 2, 3}, {-1, -1, -1}},
        Case{"5;3,6;4, 7", {5, 6, 0}, {3, 4, 7}}, Case{dir.file("crlf.txt"), {4, 5, 6}, {-1, 2, 3}},
        Case{dir.file("bad.txt"), {0, 2, 3}, {-1, 0, -1}}}) {
    EXPECT_EQ(mi.setElemBathy(spec), 0);
    EXPECT_EQ(arr(mi.elemBathy, 3), depth) << spec;
    EXPECT_EQ(mi.enol ? arr(mi.enol, 3) : VI{}, enol) << spec;
  }
  // Failures leave the model as it was.
  const double* kept = mi.elemBathy;
  EXPECT_VEXCEPTION(mi.setElemBathy(dir.file("four.txt")), "Wrong number of values in bathymetry.");
  EXPECT_VEXCEPTION(mi.setElemBathy(dir.file("no.txt")),
                    "thModelInfo::setElemBathy: No such file: '" + dir.file("no.txt") + "'");
  EXPECT_TRUE(mi.elemBathy == kept && mi.elemBathy[0] == 0 && mi.bathymetry == dir.file("bad.txt"));
  EXPECT_VEXCEPTION(
      thModelInfo().setElemBathy("3"),
      "thModelInfo::setElemBathy initialize mesh2d before calling this function. " + thGlobal::errTail);
}

TEST(ModelSetup, InitModelNumbersCellsAsArraysDo) {
  thTest::TempDir dir;
  thModelInfo byArrays, mi;
  thTest::stripMesh(byArrays.mesh2d, true, false);  // the strip, right end open, also as a mesh file
  const std::string mesh = dir.file("strip.mesh");
  thTest::writeText(mesh, byArrays.mesh2d.toString());
  byArrays.nol = 4;
  byArrays.dz = new double[4]{4, 3, 2, 1};
  byArrays.elemBathy = new double[3]{8, 3, 1.05};
  byArrays.initCells();
  EXPECT_EQ(mi.initModel("4,3,2,1", mesh, "8,3,1.05", 0.0), 0);
  expectSameCells(mi, byArrays);
  // A failure, wherever it arises, leaves the model as it was.
  EXPECT_VEXCEPTION_HAS(mi.initModel("1", mesh, "1,2", 0.0), "values in bathymetry");
  EXPECT_VEXCEPTION_HAS(mi.initModel("1", dir.file("none.mesh"), "1", 0.0), "none.mesh");
  EXPECT_VEXCEPTION_HAS(mi.initModel("1,1", mesh, "1;5,1,1", 0.0), "'1,1'");
  expectSameCells(mi, byArrays);
  EXPECT_EQ(mi.layerThickness, "4,3,2,1");
  // A list that does not reach the deepest bed: the bottom cell reaches down to the bed (8 below
  // the upper edge 1.5 of layer 0). A piece that is no number is a layer of 0.
  EXPECT_EQ(mi.initModel("2,x,1", mesh, "8", 0.5), 0);
  EXPECT_TRUE(VD(mi.dz, mi.dz + 3) == VD({2, 0, 1}) && mi.edz[0][0] == 6.5);

  // The General block, and what a reader of it takes from it sets up the same model.
  mi.initModel("4,3,2,1", mesh, "8,3,1.05", 0.0);
  mi.setStartDT("2024-06-01 00:00:00");
  mi.dt = 1800;
  mi.nt = 5;
  const std::string block = mi.modelXml(0);
  EXPECT_EQ(block,
            "<General>\n\t<Type>water</Type>\n\t<Mesh>\n\t\t<Filename>" + mesh +
                "</Filename>\n\t\t<Format>EMT</Format>\n\t\t<Projection>UTM32</Projection>\n\t</Mesh>\n"
                "\t<Bathymetry>8,3,1.05</Bathymetry>\n\t<LayerThickness>4,3,2,1</LayerThickness>\n"
                "\t<LayerType>zlayer</LayerType>\n\t<StartDT>2024-06-01 00:00:00</StartDT>\n\t<DT>1800</DT>\n"
                "\t<NoTimesteps>5</NoTimesteps>\n\t<CheckBlowUp>true</CheckBlowUp>\n</General>\n");
  EXPECT_TRUE(VCppLib::xmlGetValue(mi.modelXml(7), "General/NoTimesteps") == "7" && mi.nt == 5);
  thModelInfo back;
  back.initModel(VCppLib::xmlGetValue(block, "General/LayerThickness"),
                 VCppLib::xmlGetValue(block, "Mesh/Filename"),
                 VCppLib::xmlGetValue(block, "General/Bathymetry"), 0.0);
  back.setStartDT(VCppLib::xmlGetValue(block, "General/StartDT"));
  expectSameCells(back, mi);
  EXPECT_EQ(back.startDT, mi.startDT);
}
