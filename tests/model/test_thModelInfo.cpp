// Cell, column, face and U-point numbering of thModelInfo on small models worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "model/thModelInfo.h"
#include "modelTestMeshes.h"
#include "testutil/thTestUtil.h"

using thalmod::thModelInfo;

namespace {

void setStack(thModelInfo& mi, const std::vector<double>& dz, double topDepth = 0.0) {
  delete[] mi.dz;
  mi.nol = static_cast<int32_t>(dz.size());
  mi.dz = new double[dz.size()];
  for (size_t k = 0; k < dz.size(); k++) mi.dz[k] = dz[k];
  mi.topDepth = topDepth;
}

void setBathy(thModelInfo& mi, const std::vector<double>& depth) {
  delete[] mi.elemBathy;
  mi.elemBathy = new double[depth.size()];
  for (size_t e = 0; e < depth.size(); e++) mi.elemBathy[e] = depth[e];
}

void setEnol(thModelInfo& mi, const std::vector<int32_t>& n) {
  delete[] mi.enol;
  mi.enol = new int32_t[n.size()];
  for (size_t e = 0; e < n.size(); e++) mi.enol[e] = n[e];
}

template <typename T>
std::vector<T> vec(const T* a, int32_t n) {
  return std::vector<T>(a, a + n);
}

std::vector<double> row(double* const* t, int32_t i, int32_t n) { return std::vector<double>(t[i], t[i] + n); }

void expectNear(const std::vector<double>& got, const std::vector<double>& want, const char* what) {
  ASSERT_EQ(got.size(), want.size()) << what;
  for (size_t i = 0; i < got.size(); i++) EXPECT_NEAR(got[i], want[i], 1e-12) << what << "[" << i << "]";
}

// The strip of three squares with both ends open, stack dz 4,3,2,1 (layer 0 deepest): upper edges
// of the layers 6, 3, 1, 0 and centres 8, 4.5, 2, 0.5. Bathymetry 8 (all four layers), 3 (exactly
// on the upper edge of layer 1, so layers 2 and 3) and 1.05 (layers 2, 3; the 0.05 bottom cell is
// thickened to 0.1 x dz[2] = 0.2).
void stripModel(thModelInfo& mi, bool bndFacesOn = true) {
  modelTest::stripMesh(mi.mesh2d, true, true);
  setStack(mi, {4, 3, 2, 1});
  setBathy(mi, {8.0, 3.0, 1.05});
  mi.bndFacesOn = bndFacesOn;
  ASSERT_EQ(mi.initCells(), 0);
}

}  // namespace

TEST(ModelEnums, TextConversions) {
  using namespace thalmod;
  EXPECT_EQ(str2modelTypeEnum("Water"), water);
  EXPECT_EQ(str2modelTypeEnum("UNSTRUCTURED"), water);
  EXPECT_EQ(str2modelTypeEnum("sediment"), sediment);
  EXPECT_EQ(str2modelTypeEnum("ABM"), abm);
  EXPECT_EQ(static_cast<int32_t>(sediment), 10);
  EXPECT_EQ(static_cast<int32_t>(abm), 20);
  EXPECT_VEXCEPTION(str2modelTypeEnum("Ocean"), "str2modelTypeEnum: invalid modeltype definition (ocean).");
  EXPECT_EQ(modelTypeEnum2str(water), "water");
  EXPECT_EQ(modelTypeEnum2str(sediment), "sediment");
  EXPECT_EQ(modelTypeEnum2str(abm), "abm");
  EXPECT_VEXCEPTION(modelTypeEnum2str(static_cast<modelTypeEnum>(2)), "modelTypeEnum2str: unsupported modelTypeEnum.");

  EXPECT_EQ(str2layerTypeEnum("zlayer"), zlayer);
  EXPECT_EQ(str2layerTypeEnum("z"), zlayer);
  EXPECT_EQ(str2layerTypeEnum("Sigma"), sigma);
  EXPECT_VEXCEPTION(str2layerTypeEnum("z-layer"), "str2fileFmtEnum: invalid format definition (Z-LAYER).");
  EXPECT_EQ(layerTypeEnum2str(zlayer), "zlayer");
  EXPECT_EQ(layerTypeEnum2str(sigma), "sigma");
  EXPECT_VEXCEPTION(layerTypeEnum2str(static_cast<layerTypeEnum>(2)), "modelTypeEnum2str: unsupported layerTypeEnum.");
}

TEST(ModelInfo, StripColumnsCellsAndGhosts) {
  thModelInfo mi;
  stripModel(mi);
  const auto& m = mi.mesh2d;
  // The mesh as the numbering below assumes it.
  ASSERT_EQ(m.noe, 3);
  ASSERT_EQ(m.nivf, 2);
  ASSERT_EQ(m.tnbe, 2);
  ASSERT_EQ(m.nBnd, 2);
  EXPECT_EQ(vec(m.bndElem, 2), (std::vector<int32_t>{2, 0}));
  EXPECT_EQ(vec(m.vfe, 8), (std::vector<int32_t>{0, 1, 1, 2, 2, 3, 0, 4}));

  EXPECT_TRUE(mi.isInit);
  expectNear(vec(mi.layerDepth, 4), {8.0, 4.5, 2.0, 0.5}, "layerDepth");
  // Columns 0..2 are the elements, 3 the ghost of the right end (element 2), 4 of the left (element 0).
  EXPECT_EQ(vec(mi.ebli, 5), (std::vector<int32_t>{0, 2, 2, 2, 0}));
  EXPECT_EQ(vec(mi.etli, 5), (std::vector<int32_t>{3, 3, 3, 3, 3}));
  EXPECT_EQ(vec(mi.enol, 3), (std::vector<int32_t>{4, 2, 2}));
  EXPECT_EQ(vec(mi.botlayerIdx, 5), (std::vector<int32_t>{0, 4, 6, 8, 10}));
  EXPECT_EQ(vec(mi.toplayerIdx, 5), (std::vector<int32_t>{3, 5, 7, 9, 13}));
  EXPECT_EQ(mi.cells, 8);
  EXPECT_EQ(mi.totNoBndCells, 6);
  EXPECT_EQ(vec(mi.bndNoCells, 2), (std::vector<int32_t>{2, 4}));
  EXPECT_EQ(vec(mi.cell2elem, 14), (std::vector<int32_t>{0, 0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4, 4}));
  EXPECT_EQ(vec(mi.cell2layer, 14), (std::vector<int32_t>{0, 1, 2, 3, 2, 3, 2, 3, 2, 3, 0, 1, 2, 3}));
  EXPECT_EQ(vec(mi.cellTop, 14), (std::vector<int32_t>{3, 3, 3, 3, 5, 5, 7, 7, 9, 9, 13, 13, 13, 13}));
  EXPECT_EQ(vec(mi.cellGroup, 14), std::vector<int32_t>(14, 0));
  EXPECT_EQ(vec(mi.cellSeq, 14), (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}));

  // Thicknesses: element 1's bed lies on the upper edge of layer 1, so its bottom cell is the full
  // layer 2; element 2's 0.05 is raised to 0.2 and its bed to 1.2.
  expectNear(row(mi.edz, 0, 4), {2, 3, 2, 1}, "edz0");
  expectNear(row(mi.edz, 1, 2), {2, 1}, "edz1");
  expectNear(row(mi.edz, 2, 2), {0.2, 1}, "edz2");
  expectNear(row(mi.edzOld, 2, 2), {0.2, 1}, "edzOld2");
  expectNear(row(mi.edzc, 0, 3), {2.5, 2.5, 1.5}, "edzc0");
  expectNear(row(mi.edzc, 1, 1), {1.5}, "edzc1");
  expectNear(row(mi.edzc, 2, 1), {0.6}, "edzc2");
  expectNear(vec(mi.elemBathy, 3), {8.0, 3.0, 1.2}, "elemBathy");
  expectNear(vec(mi.cellVol, 8), {2, 3, 2, 1, 2, 1, 0.2, 1}, "cellVol");
  expectNear(vec(mi.cellDepth, 8), {7, 4.5, 2, 0.5, 2, 0.5, 1.1, 0.5}, "cellDepth");
}

TEST(ModelInfo, StripFacesAndUPoints) {
  thModelInfo mi;
  stripModel(mi);
  // Faces 0, 1 inner, 2 the right open face (element 2), 3 the left one (element 0).
  EXPECT_EQ(mi.totNoUvf, 4);
  EXPECT_EQ(vec(mi.fbli, 4), (std::vector<int32_t>{2, 2, 2, 0}));
  EXPECT_EQ(vec(mi.ftli, 4), (std::vector<int32_t>{3, 3, 3, 3}));
  EXPECT_EQ(vec(mi.fUIdx, 4), (std::vector<int32_t>{0, 2, 4, 6}));
  EXPECT_EQ(vec(mi.fLayerOff, 8), (std::vector<int32_t>{2, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(mi.noUInner, 4);
  EXPECT_EQ(mi.noUBnd, 6);
  EXPECT_EQ(mi.totNoUPnts, 10);
  // Face 0: the sides differ, the shallower side (element 1) gives the bottom thickness.
  expectNear(row(mi.fdz, 0, 2), {2, 1}, "fdz0");
  expectNear(row(mi.fdzc, 0, 1), {1.5}, "fdzc0");
  // Face 1: equal bottom layers, the thinner bottom cell.
  expectNear(row(mi.fdz, 1, 2), {0.2, 1}, "fdz1");
  expectNear(row(mi.fdzOld, 1, 2), {0.2, 1}, "fdzOld1");
  expectNear(row(mi.fdzc, 1, 1), {0.6}, "fdzc1");
  expectNear(row(mi.fdz, 2, 2), {0.2, 1}, "fdz2");
  expectNear(row(mi.fdz, 3, 4), {2, 3, 2, 1}, "fdz3");
  expectNear(row(mi.fdzOld, 3, 4), {2, 3, 2, 1}, "fdzOld3");
  expectNear(row(mi.fdzc, 3, 3), {2.5, 2.5, 1.5}, "fdzc3");
  // The deeper element has more cells than its face to the shallower one has U-points.
  EXPECT_LT(mi.totNoUvf > 0 ? mi.ftli[0] - mi.fbli[0] + 1 : 0, mi.toplayerIdx[0] - mi.botlayerIdx[0] + 1);
  // Element faces: inner first, then open; the fbli of each.
  EXPECT_EQ(vec(mi.evfbli[0], 2), (std::vector<int32_t>{2, 0}));
  EXPECT_EQ(vec(mi.evfbli[1], 2), (std::vector<int32_t>{2, 2}));
  EXPECT_EQ(vec(mi.evfbli[2], 2), (std::vector<int32_t>{2, 2}));
}

TEST(ModelInfo, BoundaryFacesOff) {
  thModelInfo mi;
  stripModel(mi, false);
  EXPECT_EQ(mi.totNoUvf, 2);
  EXPECT_EQ(mi.noUInner, 4);
  EXPECT_EQ(mi.noUBnd, 0);
  EXPECT_EQ(mi.totNoUPnts, 4);
  EXPECT_EQ(vec(mi.fUIdx, 2), (std::vector<int32_t>{0, 2}));
  // Ghost columns and cells exist all the same.
  EXPECT_EQ(mi.cells, 8);
  EXPECT_EQ(mi.totNoBndCells, 6);
  EXPECT_EQ(vec(mi.botlayerIdx, 5), (std::vector<int32_t>{0, 4, 6, 8, 10}));
  EXPECT_EQ(vec(mi.cell2elem + 8, 6), (std::vector<int32_t>{3, 3, 4, 4, 4, 4}));
  // An open face outside the face list reaches down to its element's bottom layer.
  EXPECT_EQ(vec(mi.evfbli[0], 2), (std::vector<int32_t>{2, 0}));
  EXPECT_EQ(vec(mi.evfbli[2], 2), (std::vector<int32_t>{2, 2}));
}

TEST(ModelInfo, ClosedMeshHasNoGhosts) {
  thModelInfo mi;
  modelTest::stripMesh(mi.mesh2d, false, false);
  setStack(mi, {4, 3, 2, 1});
  setBathy(mi, {8.0, 3.0, 1.05});
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_EQ(mi.mesh2d.tnbe, 0);
  EXPECT_EQ(mi.totNoUvf, 2);
  EXPECT_EQ(mi.totNoBndCells, 0);
  EXPECT_EQ(mi.cells, 8);
  EXPECT_EQ(vec(mi.cellTop, 8), (std::vector<int32_t>{3, 3, 3, 3, 5, 5, 7, 7}));
}

TEST(ModelInfo, SingleLayer) {
  thModelInfo mi;
  modelTest::stripMesh(mi.mesh2d, true, false);
  setStack(mi, {5});
  setBathy(mi, {3.0, 0.2, 7.0});
  ASSERT_EQ(mi.initCells(), 0);
  expectNear(vec(mi.layerDepth, 1), {2.5}, "layerDepth");
  EXPECT_EQ(vec(mi.ebli, 4), (std::vector<int32_t>{0, 0, 0, 0}));
  EXPECT_EQ(vec(mi.botlayerIdx, 4), (std::vector<int32_t>{0, 1, 2, 3}));
  EXPECT_EQ(mi.cells, 3);
  EXPECT_EQ(mi.totNoBndCells, 1);
  // 0.2 is below 0.1 x 5 and is raised to 0.5; 7 is deeper than the stack and is kept.
  expectNear({mi.edz[0][0], mi.edz[1][0], mi.edz[2][0]}, {3.0, 0.5, 7.0}, "edz");
  expectNear({mi.edzc[0][0], mi.edzc[1][0], mi.edzc[2][0]}, {1.5, 0.25, 3.5}, "edzc");
  EXPECT_EQ(mi.totNoUvf, 3);
  expectNear({mi.fdz[0][0], mi.fdz[1][0], mi.fdz[2][0]}, {0.5, 0.5, 7.0}, "fdz");
  expectNear({mi.fdzc[0][0], mi.fdzc[1][0], mi.fdzc[2][0]}, {0.25, 0.25, 3.5}, "fdzc");
  EXPECT_EQ(vec(mi.fUIdx, 3), (std::vector<int32_t>{0, 1, 2}));
  expectNear(vec(mi.cellDepth, 3), {1.5, 0.25, 3.5}, "cellDepth");
}

TEST(ModelInfo, BedAboveTopAndThinBottomCells) {
  thModelInfo mi;
  modelTest::stripMesh(mi.mesh2d, false, false);
  // dz 10,10 with a top depth of 1: upper edges 11 and 1.
  setStack(mi, {10, 10}, 1.0);
  // 11.5: 0.5 below the upper edge of layer 0 gives a bottom cell of 1.0 and a bed 0.5 deeper.
  // 0.5 and -3: at or above topDepth, one layer, bed raised to topDepth + 0.1 x dz[1].
  setBathy(mi, {11.5, 0.5, -3.0});
  ASSERT_EQ(mi.initCells(), 0);
  expectNear(vec(mi.layerDepth, 2), {16, 6}, "layerDepth");
  EXPECT_EQ(vec(mi.ebli, 3), (std::vector<int32_t>{0, 1, 1}));
  expectNear(vec(mi.elemBathy, 3), {12.0, 2.0, 2.0}, "elemBathy");
  expectNear(row(mi.edz, 0, 2), {1.0, 10.0}, "edz0");
  expectNear({mi.edz[1][0], mi.edz[2][0]}, {1.0, 1.0}, "edz1,2");
  expectNear({mi.edzc[1][0], mi.edzc[2][0]}, {0.5, 0.5}, "edzc1,2");
  expectNear(vec(mi.cellDepth, 4), {11.5, 6, 1.5, 1.5}, "cellDepth");
  // minBotFrac 0 keeps a thin bottom cell but lifts a bed above its layer's upper edge onto it.
  thModelInfo m0;
  modelTest::stripMesh(m0.mesh2d, false, false);
  setStack(m0, {10, 10}, 1.0);
  setBathy(m0, {11.5, 0.5, -3.0});
  m0.minBotFrac = 0.0;
  ASSERT_EQ(m0.initCells(), 0);
  expectNear(vec(m0.elemBathy, 3), {11.5, 1.0, 1.0}, "elemBathy");
  expectNear({m0.edz[0][0], m0.edz[1][0], m0.edz[2][0]}, {0.5, 0.0, 0.0}, "edz");
}

TEST(ModelInfo, NegativeMinBotFracDropsThinBottomCells) {
  thModelInfo mi;
  modelTest::stripMesh(mi.mesh2d, true, true);
  setStack(mi, {4, 3, 2, 1});
  setBathy(mi, {8.0, 3.0, 1.05});
  // Element 2's 0.05 is below 0.5 x dz[2] = 1: its bottom cell goes, ebli 3, bed 1.0. Element 0's
  // 2.0 equals 0.5 x dz[0] and stays (strict comparison).
  mi.minBotFrac = -0.5;
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_EQ(vec(mi.ebli, 5), (std::vector<int32_t>{0, 2, 3, 3, 0}));
  expectNear(vec(mi.elemBathy, 3), {8.0, 3.0, 1.0}, "elemBathy");
  expectNear({mi.edz[2][0]}, {1.0}, "edz2");
  expectNear({mi.edzc[2][0]}, {0.5}, "edzc2");
  // Counts, enol and the element's own cell range keep the dropped cell.
  EXPECT_EQ(mi.cells, 8);
  EXPECT_EQ(vec(mi.enol, 3), (std::vector<int32_t>{4, 2, 2}));
  EXPECT_EQ(vec(mi.botlayerIdx, 5), (std::vector<int32_t>{0, 4, 6, 8, 9}));
  EXPECT_EQ(vec(mi.toplayerIdx, 5), (std::vector<int32_t>{3, 5, 7, 8, 12}));
  EXPECT_EQ(mi.totNoBndCells, 5);
  EXPECT_EQ(vec(mi.bndNoCells, 2), (std::vector<int32_t>{1, 4}));
  EXPECT_EQ(mi.cell2elem[6], 2);
  EXPECT_EQ(mi.cell2layer[6], 3);
  EXPECT_EQ(vec(mi.cell2elem + 8, 5), (std::vector<int32_t>{3, 4, 4, 4, 4}));
  EXPECT_EQ(vec(mi.cell2layer + 8, 5), (std::vector<int32_t>{3, 0, 1, 2, 3}));
  EXPECT_EQ(mi.cellTop[6], 6);
  EXPECT_EQ(mi.cellTop[8], 8);
  expectNear({mi.cellVol[6], mi.cellDepth[6]}, {1.0, 0.5}, "cell 6");
  // Faces follow the new bottom layer.
  EXPECT_EQ(vec(mi.fbli, 4), (std::vector<int32_t>{2, 3, 3, 0}));
  EXPECT_EQ(vec(mi.fUIdx, 4), (std::vector<int32_t>{0, 2, 3, 4}));
  EXPECT_EQ(vec(mi.fLayerOff, 4), (std::vector<int32_t>{2, 0, 1, 0}));
  EXPECT_EQ(mi.totNoUPnts, 8);
  expectNear({mi.fdz[1][0], mi.fdzc[1][0]}, {1.0, 0.5}, "fdz1");
}

TEST(ModelInfo, GivenLayerCounts) {
  thModelInfo mi;
  modelTest::stripMesh(mi.mesh2d, true, false);
  setStack(mi, {4, 3, 2, 1});
  setBathy(mi, {8.0, 3.0, 1.05});
  // 0 and -1 leave the choice to the depth; 1 and 3 fix the bottom layer whatever the depth.
  setEnol(mi, {0, 1, 3});
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_EQ(vec(mi.ebli, 4), (std::vector<int32_t>{0, 3, 1, 1}));
  EXPECT_EQ(vec(mi.enol, 3), (std::vector<int32_t>{4, 1, 3}));
  // Element 1: bed 3 is 3 below the upper edge 0 of layer 3. Element 2: 1.05 lies above the upper
  // edge 3 of layer 1, so the bottom cell is raised to 0.1 x 3 with the bed at 3.3.
  expectNear(vec(mi.elemBathy, 3), {8.0, 3.0, 3.3}, "elemBathy");
  expectNear({mi.edz[1][0]}, {3.0}, "edz1");
  expectNear(row(mi.edz, 2, 3), {0.3, 2, 1}, "edz2");
  EXPECT_EQ(vec(mi.botlayerIdx, 4), (std::vector<int32_t>{0, 4, 5, 8}));
  EXPECT_EQ(mi.cells, 8);
  // enol is kept: a second run gives the same numbering.
  setEnol(mi, {-1, 1, 3});
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_EQ(vec(mi.ebli, 4), (std::vector<int32_t>{0, 3, 1, 1}));
}

TEST(ModelInfo, LayerQueries) {
  thModelInfo mi;
  stripModel(mi);
  // Upper edges 6, 3, 1, 0.
  EXPECT_DOUBLE_EQ(mi.layerUpperEdge(0, 0), 6.0);
  EXPECT_DOUBLE_EQ(mi.layerUpperEdge(3, 2), 0.0);
  EXPECT_VEXCEPTION(mi.layerUpperEdge(4, 0), "thModelInfo::layerUpperEdge: layer 4 is outside 0..3.");
  // Element 0, bed 8: a depth on an upper edge belongs to that layer.
  EXPECT_EQ(mi.depth2Layer(0, 6.0), 0);
  EXPECT_EQ(mi.depth2Layer(0, 5.9), 1);
  EXPECT_EQ(mi.depth2Layer(0, 3.0), 1);
  EXPECT_EQ(mi.depth2Layer(0, 1.0), 2);
  EXPECT_EQ(mi.depth2Layer(0, 0.0), 3);
  EXPECT_EQ(mi.depth2Layer(0, 8.0), 0);
  EXPECT_EQ(mi.depth2Layer(0, 8.5), 0);   // below the bed
  EXPECT_EQ(mi.depth2Layer(0, -0.1), 0);  // above the surface
  EXPECT_EQ(mi.depth2Layer(1, 2.5), 2);
  EXPECT_EQ(mi.depth2Layer(1, 0.5), 3);
  EXPECT_EQ(mi.depth2Layer(1, 3.5), 2);  // below element 1's bed
  EXPECT_EQ(mi.depth2LayerOff(1, 0.5), 1);
  EXPECT_EQ(mi.depth2LayerOff(1, 9.0), 0);
  EXPECT_EQ(mi.depth2LayerOff(0, 4.0), 1);
  EXPECT_EQ(mi.depth2Layer(0, std::nan("")), 0);
  EXPECT_VEXCEPTION(mi.depth2Layer(3, 1.0), "thModelInfo::depth2Layer: element 3 is outside 0..2.");
  EXPECT_VEXCEPTION(mi.depth2LayerOff(-1, 1.0), "thModelInfo::depth2Layer: element -1 is outside 0..2.");
  // Sigma after the fact: edges and depths are fractions of the bed.
  mi.layerType = thalmod::sigma;
  mi.dz[0] = 0.5;  // the stack is only read, not rebuilt
  EXPECT_DOUBLE_EQ(mi.layerUpperEdge(0, 1), (8.0 - 0.25) * 3.0);
  mi.layerType = 0;

  // lengthClass tests 1, nol and noe in this order.
  EXPECT_EQ(mi.lengthClass(1), 0);
  EXPECT_EQ(mi.lengthClass(4), 1);
  EXPECT_EQ(mi.lengthClass(3), 2);
  EXPECT_EQ(mi.lengthClass(8), 3);
  EXPECT_EQ(mi.lengthClass(0), 3);
  mi.nol = 3;
  EXPECT_EQ(mi.lengthClass(3), 1);
  mi.nol = 4;

  EXPECT_EQ(mi.resultFileExt(), "emc");
  mi.modelType = 2;
  EXPECT_EQ(mi.resultFileExt(), "emu");
  mi.modelType = 3;
  EXPECT_EQ(mi.resultFileExt(), "emu");
  mi.modelType = thalmod::sediment;
  EXPECT_EQ(mi.resultFileExt(), "emc");

  thModelInfo empty;
  EXPECT_VEXCEPTION(empty.depth2Layer(0, 1.0), "thModelInfo::depth2Layer: the cells are not initialised (initCells).");
  EXPECT_VEXCEPTION(empty.layerUpperEdge(0, 0), "thModelInfo::layerUpperEdge: the layers are not initialised (initCells).");
}

TEST(ModelInfo, CellCoordsAndCellTop) {
  thModelInfo mi;
  stripModel(mi);
  double *x = nullptr, *y = nullptr, *z = nullptr;
  ASSERT_EQ(mi.cellCoords(x, y, z), 0);
  std::unique_ptr<double[]> ox(x), oy(y), oz(z);
  expectNear(vec(x, 8), {0.5, 0.5, 0.5, 0.5, 1.5, 1.5, 2.5, 2.5}, "x");
  expectNear(vec(y, 8), std::vector<double>(8, 0.5), "y");
  expectNear(vec(z, 8), {8, 4.5, 2, 0.5, 2, 0.5, 2, 0.5}, "z");

  // A column whose top moves down (as in a dry step) gets its new top cell in cellTop.
  mi.etli[0] = 2;
  mi.updateCellTop();
  EXPECT_EQ(vec(mi.cellTop, 6), (std::vector<int32_t>{2, 2, 2, 2, 5, 5}));

  thModelInfo empty;
  EXPECT_VEXCEPTION(empty.cellCoords(x, y, z), "thModelInfo::cellCoords: the cells are not initialised (initCells).");
  EXPECT_VEXCEPTION(empty.updateCellTop(), "thModelInfo::updateCellTop: the cells are not initialised (initCells).");
}

TEST(ModelInfo, FlatBottom) {
  thModelInfo mi;
  stripModel(mi);
  setEnol(mi, {1, 1, 1});
  // Three layers of 1/3 in float; a bed at 1 uses all three.
  ASSERT_EQ(mi.setFlatBottom(1.0, 3), 0);
  EXPECT_EQ(mi.nol, 3);
  EXPECT_EQ(mi.dz[0], 0.3333333432674408);
  EXPECT_EQ(mi.dz[2], 0.3333333432674408);
  EXPECT_EQ(mi.enol[0], 3);  // worked out from the depth again
  EXPECT_EQ(vec(mi.ebli, 5), (std::vector<int32_t>{0, 0, 0, 0, 0}));
  EXPECT_EQ(mi.cells, 9);
  EXPECT_EQ(mi.totNoBndCells, 6);
  expectNear(vec(mi.elemBathy, 3), {1, 1, 1}, "elemBathy");
  // nolNew <= 0 keeps the stack.
  ASSERT_EQ(mi.setFlatBottom(0.5, 0), 0);
  EXPECT_EQ(mi.nol, 3);
  EXPECT_EQ(vec(mi.ebli, 3), (std::vector<int32_t>{1, 1, 1}));
  EXPECT_EQ(mi.cells, 6);
}

TEST(ModelInfo, CloneIsDeep) {
  auto mi = std::make_unique<thModelInfo>();
  stripModel(*mi);
  mi->startDT = 1000;
  mi->dt = 60;
  mi->nt = 5;
  mi->flavor = 7;
  mi->bathymetry = "bathy.txt";
  std::unique_ptr<thModelInfo> c(mi->clone());
  EXPECT_TRUE(c->isInit);
  EXPECT_EQ(c->startDT, 1000);
  EXPECT_EQ(c->dt, 60);
  EXPECT_EQ(c->nt, 5);
  EXPECT_EQ(c->flavor, 7);
  EXPECT_EQ(c->bathymetry, "bathy.txt");
  EXPECT_NE(c->dz, mi->dz);
  EXPECT_NE(c->elemBathy, mi->elemBathy);
  EXPECT_NE(c->mesh2d.vfe, mi->mesh2d.vfe);
  EXPECT_EQ(vec(c->botlayerIdx, 5), vec(mi->botlayerIdx, 5));
  EXPECT_EQ(vec(c->fUIdx, 4), vec(mi->fUIdx, 4));
  // The clone outlives its source, mesh included.
  mi.reset();
  EXPECT_EQ(c->mesh2d.bndElem[1], 0);
  EXPECT_DOUBLE_EQ(c->mesh2d.eArea[2], 1.0);
  EXPECT_EQ(c->setFlatBottom(2.0, 2), 0);
  EXPECT_EQ(c->cells, 6);
}

TEST(ModelInfo, MemberwiseCopySharesArrays) {
  auto src = std::make_unique<thModelInfo>();
  stripModel(*src);
  {
    thModelInfo copy(*src);
    EXPECT_EQ(copy.botlayerIdx, src->botlayerIdx);
    EXPECT_EQ(copy.edz, src->edz);
    EXPECT_EQ(copy.dz, src->dz);
    EXPECT_EQ(copy.mesh2d.vfe, src->mesh2d.vfe);
    EXPECT_EQ(copy.cells, 8);
  }
  // The copy is gone; the source keeps its arrays and its mesh.
  EXPECT_EQ(src->botlayerIdx[4], 10);
  EXPECT_EQ(src->mesh2d.vfe[7], 4);

  thModelInfo other;
  other = *src;
  EXPECT_EQ(other.fdz, src->fdz);
  // Rebuilding the copy gives it arrays of its own and leaves the source as it was.
  other.setFlatBottom(0.5, 2);
  EXPECT_NE(other.dz, src->dz);
  EXPECT_EQ(other.cells, 3);
  EXPECT_EQ(src->cells, 8);
  EXPECT_EQ(src->dz[0], 4.0);
  EXPECT_EQ(src->toplayerIdx[4], 13);
  // The source goes first; the copy still holds the mesh.
  src.reset();
  EXPECT_EQ(other.mesh2d.bndElem[0], 2);
  EXPECT_EQ(other.botlayerIdx[3], 3);
  // Assigning over an object that owns arrays frees them (checked by the address sanitizer).
  thModelInfo third;
  stripModel(third);
  third = other;
  EXPECT_EQ(third.cells, 3);
  thModelInfo& alias = third;
  third = alias;
  EXPECT_EQ(third.cells, 3);
}

TEST(ModelInfo, ResetKeepsTheMesh) {
  thModelInfo mi;
  stripModel(mi);
  mi.nt = 4;
  mi.dt = 10;
  mi.layerThickness = "4,3,2,1";
  mi.reset();
  EXPECT_FALSE(mi.isInit);
  EXPECT_EQ(mi.nt, 0);
  EXPECT_EQ(mi.dt, -1.0);
  EXPECT_EQ(mi.nol, 0);
  EXPECT_EQ(mi.cells, 0);
  EXPECT_EQ(mi.totNoUvf, 0);
  EXPECT_EQ(mi.layerThickness, "");
  EXPECT_EQ(mi.dz, nullptr);
  EXPECT_EQ(mi.elemBathy, nullptr);
  EXPECT_EQ(mi.botlayerIdx, nullptr);
  EXPECT_EQ(mi.edz, nullptr);
  EXPECT_EQ(mi.mesh2d.noe, 3);
  // Set up again on the kept mesh.
  setStack(mi, {1, 1});
  setBathy(mi, {2, 2, 2});
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_EQ(mi.cells, 6);
}

TEST(ModelInfo, BadInput) {
  thModelInfo mi;
  modelTest::stripMesh(mi.mesh2d, true, false);
  setBathy(mi, {8.0, 3.0, 1.05});
  // No layers, no thicknesses.
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: the model has no layers (nol = 0).");
  mi.nol = 2;
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: the layer thicknesses (dz) are missing.");
  EXPECT_FALSE(mi.isInit);
  // Sigma, after the layer depths and before anything else.
  setStack(mi, {4, 3, 2, 1});
  mi.layerType = thalmod::sigma;
  EXPECT_VEXCEPTION(mi.initCells(), "Sigma layers no longer supported.");
  EXPECT_FALSE(mi.isInit);
  ASSERT_NE(mi.layerDepth, nullptr);
  EXPECT_DOUBLE_EQ(mi.layerDepth[0], 8.0);
  mi.layerType = thalmod::zlayer;
  // More layers in an element than the model has.
  setEnol(mi, {2, 5, 1});
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: element 1 has 5 layers, more than the 4 layers of the model.");
  delete[] mi.enol;
  mi.enol = nullptr;
  // No bathymetry.
  delete[] mi.elemBathy;
  mi.elemBathy = nullptr;
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: the bathymetry (elemBathy) is missing.");
  // NaN depths give one layer and stay NaN; nothing else is touched.
  setBathy(mi, {std::nan(""), 3.0, 1.05});
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_EQ(mi.ebli[0], 3);
  EXPECT_TRUE(std::isnan(mi.edz[0][0]));
  EXPECT_EQ(mi.cells, 5);
  // Boundary lists that count fewer faces than there are ghost columns.
  thModelInfo short1;
  modelTest::stripMesh(short1.mesh2d, true, true);
  setStack(short1, {4, 3, 2, 1});
  setBathy(short1, {8.0, 3.0, 1.05});
  short1.mesh2d.bndNoFaces[1] = 0;
  EXPECT_VEXCEPTION(short1.initCells(), "Bugger! bnd cell2elem error 42. " + thGlobal::errTail);
  // A mesh whose primary arrays are filled but never initialised.
  thModelInfo raw;
  raw.mesh2d.noe = 2;
  setStack(raw, {1});
  setBathy(raw, {1, 1});
  EXPECT_VEXCEPTION(raw.initCells(),
                    "thModelInfo::initCells: the mesh has not been initialised (initMesh must run before initCells).");
  raw.mesh2d.noe = 0;
}

TEST(ModelInfo, MeshWithoutElements) {
  thModelInfo mi;
  modelTest::buildMesh(mi.mesh2d, {0, 1}, {0, 0}, {0, 0}, {});
  setStack(mi, {2, 1});
  ASSERT_EQ(mi.initCells(), 0);  // no bathymetry needed without elements
  EXPECT_TRUE(mi.isInit);
  EXPECT_EQ(mi.cells, 0);
  EXPECT_EQ(mi.totNoUvf, 0);
  EXPECT_EQ(mi.totNoUPnts, 0);
  EXPECT_EQ(mi.totNoBndCells, 0);
  double *x = nullptr, *y = nullptr, *z = nullptr;
  EXPECT_EQ(mi.cellCoords(x, y, z), 0);
  delete[] x;
  delete[] y;
  delete[] z;
  EXPECT_EQ(mi.setFlatBottom(3.0, 1), 0);
  std::unique_ptr<thModelInfo> c(mi.clone());
  EXPECT_EQ(c->cells, 0);
}
