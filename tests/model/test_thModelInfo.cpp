// Cell, column, face and U-point numbering of thModelInfo on small models worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "model/thModelInfo.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thModelInfo;
using VI = std::vector<int32_t>;
using VD = std::vector<double>;

namespace {

template <typename T>
void put(T*& a, const std::vector<T>& v) {
  delete[] a;
  a = thTest::newArray(v);
}

// Tables of arrays (or array rows) and the values they must start with.
struct Ints {
  const char* what;
  const int32_t* got;
  VI want;
};
struct Reals {
  const char* what;
  const double* got;
  VD want;
};
void expectArrays(std::initializer_list<Ints> ints, std::initializer_list<Reals> reals = {}) {
  for (const Ints& a : ints) EXPECT_EQ(VI(a.got, a.got + a.want.size()), a.want) << a.what;
  for (const Reals& a : reals)
    for (size_t i = 0; i < a.want.size(); i++)
      EXPECT_NEAR(a.got[i], a.want[i], 1e-12) << a.what << "[" << i << "]";
}

void stack(thModelInfo& mi, const VD& dz) {
  mi.nol = static_cast<int32_t>(dz.size());
  put(mi.dz, dz);
}

// The strip of three unit squares (thTest::stripMesh) with a layer stack and a bathymetry.
void setUp(thModelInfo& mi, bool openRight, bool openLeft, const VD& dz, const VD& bathy,
           double topDepth = 0) {
  thTest::stripMesh(mi.mesh2d, openRight, openLeft);
  stack(mi, dz);
  put(mi.elemBathy, bathy);
  mi.topDepth = topDepth;
}

// Both ends open, stack dz 4,3,2,1 (layer 0 deepest): upper edges of the layers 6, 3, 1, 0 and
// centres 8, 4.5, 2, 0.5. Bathymetry 8 (all four layers), 3 (exactly on the upper edge of layer 1,
// so layers 2 and 3) and 1.05 (layers 2, 3; the 0.05 bottom cell is thickened to 0.1 x dz[2] = 0.2).
void stripModel(thModelInfo& mi, bool bndFacesOn = true) {
  setUp(mi, true, true, {4, 3, 2, 1}, {8.0, 3.0, 1.05});
  mi.bndFacesOn = bndFacesOn;
  ASSERT_EQ(mi.initCells(), 0);
}

}  // namespace

TEST(ModelEnums, TextConversions) {
  using namespace thalmod;
  EXPECT_EQ(VI({str2modelTypeEnum("Water"), str2modelTypeEnum("UNSTRUCTURED"), str2modelTypeEnum("sediment"),
                str2modelTypeEnum("ABM")}),
            (VI{0, 0, 10, 20}));
  EXPECT_VEXCEPTION(str2modelTypeEnum("Ocean"), "str2modelTypeEnum: invalid modeltype definition (ocean).");
  EXPECT_EQ(modelTypeEnum2str(water) + modelTypeEnum2str(sediment) + modelTypeEnum2str(abm),
            "watersedimentabm");
  EXPECT_VEXCEPTION(modelTypeEnum2str(static_cast<modelTypeEnum>(2)),
                    "modelTypeEnum2str: unsupported modelTypeEnum.");
  EXPECT_EQ(VI({str2layerTypeEnum("zlayer"), str2layerTypeEnum("z"), str2layerTypeEnum("Sigma")}),
            (VI{0, 0, 1}));
  EXPECT_VEXCEPTION(str2layerTypeEnum("z-layer"), "str2fileFmtEnum: invalid format definition (Z-LAYER).");
  EXPECT_EQ(layerTypeEnum2str(zlayer) + layerTypeEnum2str(sigma), "zlayersigma");
  EXPECT_VEXCEPTION(layerTypeEnum2str(static_cast<layerTypeEnum>(2)),
                    "modelTypeEnum2str: unsupported layerTypeEnum.");
}

TEST(ModelInfo, StripNumbering) {
  thModelInfo mi;
  stripModel(mi);
  // The mesh as the numbering below assumes it. Columns 0..2 are the elements, 3 the ghost of the
  // right end (element 2), 4 of the left (element 0). Faces 0, 1 inner, 2 the right open face, 3 the left.
  const auto& m = mi.mesh2d;
  // The dense numbering of cells and U-points is held against its definition on random models
  // (ModelInvariants); here the counts and layers that the hand-worked bed depths give.
  ASSERT_TRUE(m.noe == 3 && m.nivf == 2 && m.tnbe == 2 && m.nBnd == 2 && mi.isInit);
  expectArrays({{"bndElem", m.bndElem, {2, 0}},
                {"ebli", mi.ebli, {0, 2, 2, 2, 0}},
                {"enol", mi.enol, {4, 2, 2}},
                {"bndNoCells", mi.bndNoCells, {2, 4}},
                {"botlayerIdx", mi.botlayerIdx, {0, 4, 6, 8, 10}},
                {"cellTop", mi.cellTop, {3, 3, 3, 3, 5, 5, 7, 7, 9, 9, 13, 13, 13, 13}},
                {"fbli", mi.fbli, {2, 2, 2, 0}},
                {"fLayerOff", mi.fLayerOff, {2, 0, 0, 0, 0, 0, 0, 0}},
                {"evfbli0", mi.evfbli[0], {2, 0}}},
               // Element 1's bed lies on the upper edge of layer 1, so its bottom cell is the full layer
               // 2; element 2's 0.05 is raised to 0.2 and its bed to 1.2. Face 0: the sides differ, the
               // shallower side (element 1) gives the bottom thickness, and the face has 2 U-points against
               // the 4 cells of element 0. Face 1: equal bottom layers, the thinner bottom cell.
               {{"layerDepth", mi.layerDepth, {8.0, 4.5, 2.0, 0.5}},
                {"elemBathy", mi.elemBathy, {8.0, 3.0, 1.2}},
                {"edz0", mi.edz[0], {2, 3, 2, 1}},
                {"edz1", mi.edz[1], {2, 1}},
                {"edz2", mi.edz[2], {0.2, 1}},
                {"edzc0", mi.edzc[0], {2.5, 2.5, 1.5}},
                {"edzc1", mi.edzc[1], {1.5}},
                {"edzc2", mi.edzc[2], {0.6}},
                {"cellVol", mi.cellVol, {2, 3, 2, 1, 2, 1, 0.2, 1}},
                {"cellDepth", mi.cellDepth, {7, 4.5, 2, 0.5, 2, 0.5, 1.1, 0.5}},
                {"fdz0", mi.fdz[0], {2, 1}},
                {"fdz1", mi.fdz[1], {0.2, 1}},
                {"fdz2", mi.fdz[2], {0.2, 1}},
                {"fdz3", mi.fdz[3], {2, 3, 2, 1}},
                {"fdzc0", mi.fdzc[0], {1.5}},
                {"fdzc1", mi.fdzc[1], {0.6}},
                {"fdzc3", mi.fdzc[3], {2.5, 2.5, 1.5}}});
  EXPECT_EQ(VI({mi.cells, mi.totNoBndCells, mi.totNoUvf, mi.noUInner, mi.noUBnd, mi.totNoUPnts}),
            (VI{8, 6, 4, 4, 6, 10}));

  // Without boundary faces in the face list: ghost columns and cells exist all the same, and an
  // open face reaches down to its element's bottom layer.
  thModelInfo off;
  stripModel(off, false);
  EXPECT_EQ(VI({off.totNoUvf, off.noUInner, off.noUBnd, off.totNoUPnts, off.cells, off.totNoBndCells}),
            (VI{2, 4, 0, 4, 8, 6}));
  expectArrays(
      {{"ghost cell2elem", off.cell2elem + 8, {3, 3, 4, 4, 4, 4}}, {"evfbli0", off.evfbli[0], {2, 0}}});
  // A closed mesh has no ghosts.
  thModelInfo closed;
  setUp(closed, false, false, {4, 3, 2, 1}, {8.0, 3.0, 1.05});
  ASSERT_EQ(closed.initCells(), 0);
  EXPECT_EQ(VI({closed.mesh2d.tnbe, closed.totNoUvf, closed.totNoBndCells, closed.cells}), (VI{0, 2, 0, 8}));
  expectArrays({{"cellTop", closed.cellTop, {3, 3, 3, 3, 5, 5, 7, 7}}});
}

TEST(ModelInfo, BottomCells) {
  // One layer of 5 (centre 2.5): 0.2 is below 0.1 x 5 and is raised to 0.5; 7 is deeper than the
  // stack and is kept. With nol = 1, edzc and fdzc are half the bottom thickness.
  thModelInfo one;
  setUp(one, true, false, {5}, {3.0, 0.2, 7.0});
  ASSERT_EQ(one.initCells(), 0);
  EXPECT_EQ(VI({one.cells, one.totNoBndCells, one.totNoUvf}), (VI{3, 1, 3}));
  expectArrays({{"ebli", one.ebli, {0, 0, 0, 0}},
                {"botlayerIdx", one.botlayerIdx, {0, 1, 2, 3}},
                {"fUIdx", one.fUIdx, {0, 1, 2}}},
               {{"layerDepth", one.layerDepth, {2.5}}, {"cellDepth", one.cellDepth, {1.5, 0.25, 3.5}}});
  const VD edz = {3.0, 0.5, 7.0}, fdz = {0.5, 0.5, 7.0};  // fdz: the thinner side of each inner face
  for (int32_t i = 0; i < 3; i++)
    expectArrays({}, {{"edz", one.edz[i], {edz[i]}},
                      {"edzc", one.edzc[i], {edz[i] / 2}},
                      {"fdz", one.fdz[i], {fdz[i]}},
                      {"fdzc", one.fdzc[i], {fdz[i] / 2}}});
  // dz 10,10 below a top depth of 1: upper edges 11 and 1. 11.5, 0.5 below the upper edge of
  // layer 0, gives a bottom cell of 1.0 and a bed 0.5 deeper. 0.5 and -3 lie at or above topDepth:
  // one layer, bed raised to topDepth + 0.1 x dz[1]. minBotFrac 0 keeps a thin bottom cell but
  // lifts a bed above its layer's upper edge onto it.
  for (double frac : {0.1, 0.0}) {
    thModelInfo mi;
    setUp(mi, false, false, {10, 10}, {11.5, 0.5, -3.0}, 1.0);
    mi.minBotFrac = frac;
    ASSERT_EQ(mi.initCells(), 0);
    expectArrays({{"ebli", mi.ebli, {0, 1, 1}}}, {{"layerDepth", mi.layerDepth, {16, 6}}});
    if (frac > 0)
      expectArrays({}, {{"elemBathy", mi.elemBathy, {12.0, 2.0, 2.0}},
                        {"edz0", mi.edz[0], {1.0, 10.0}},
                        {"edz1", mi.edz[1], {1}},
                        {"edz2", mi.edz[2], {1}},
                        {"edzc1", mi.edzc[1], {0.5}},
                        {"edzc2", mi.edzc[2], {0.5}},
                        {"cellDepth", mi.cellDepth, {11.5, 6, 1.5, 1.5}}});
    else
      expectArrays({}, {{"elemBathy", mi.elemBathy, {11.5, 1.0, 1.0}},
                        {"edz0", mi.edz[0], {0.5}},
                        {"edz1", mi.edz[1], {0}},
                        {"edz2", mi.edz[2], {0}}});
  }
}

TEST(ModelInfo, NegativeMinBotFracAndGivenLayerCounts) {
  thModelInfo mi;
  setUp(mi, true, true, {4, 3, 2, 1}, {8.0, 3.0, 1.05});
  // Element 2's 0.05 is below 0.5 x dz[2] = 1: its bottom cell goes, ebli 3, bed 1.0. Element 0's
  // 2.0 equals 0.5 x dz[0] and stays (strict comparison). Counts, enol and the element's own cell
  // range keep the dropped cell; faces follow the new bottom layer. The row of element 2 keeps its
  // length of two, and the entries that no layer reaches (cell 7) are 0.
  mi.minBotFrac = -0.5;
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_EQ(VI({mi.cells, mi.totNoBndCells, mi.totNoUPnts}), (VI{8, 5, 8}));
  EXPECT_EQ(VI({mi.cell2elem[6], mi.cell2layer[6], mi.cellTop[6], mi.cellTop[8], mi.cell2elem[7],
                mi.cellTop[7], mi.cellSeq[7]}),
            (VI{2, 3, 6, 8, 0, 0, 7}));
  expectArrays({{"ebli", mi.ebli, {0, 2, 3, 3, 0}},
                {"enol", mi.enol, {4, 2, 2}},
                {"botlayerIdx", mi.botlayerIdx, {0, 4, 6, 8, 9}},
                {"fbli", mi.fbli, {2, 3, 3, 0}},
                {"ghost cell2elem", mi.cell2elem + 8, {3, 4, 4, 4, 4}},
                {"fLayerOff", mi.fLayerOff, {2, 0, 1, 0}}},
               {{"elemBathy", mi.elemBathy, {8.0, 3.0, 1.0}},
                {"edz2", mi.edz[2], {1.0, 0.0}},
                {"edzOld2", mi.edzOld[2], {1.0, 0.0}},
                {"edzc2", mi.edzc[2], {0.5}},
                {"cellVol6", mi.cellVol + 6, {1.0, 0.0}},
                {"cellDepth6", mi.cellDepth + 6, {0.5, 0.0}},
                {"fdz1", mi.fdz[1], {1.0}},
                {"fdzc1", mi.fdzc[1], {0.5}}});

  // Given layer counts: 0 and -1 leave the choice to the depth; 1 and 3 fix the bottom layer
  // whatever the depth. Element 1: bed 3 is 3 below the upper edge 0 of layer 3. Element 2: 1.05
  // lies above the upper edge 3 of layer 1, so the bottom cell is raised to 0.1 x 3, the bed to 3.3.
  thModelInfo given;
  setUp(given, true, false, {4, 3, 2, 1}, {8.0, 3.0, 1.05});
  for (int32_t first : {0, -1}) {
    put(given.enol, {first, 1, 3});
    ASSERT_EQ(given.initCells(), 0);
    EXPECT_EQ(given.cells, 8);
    expectArrays({{"ebli", given.ebli, {0, 3, 1, 1}},
                  {"enol", given.enol, {4, 1, 3}},
                  {"botlayerIdx", given.botlayerIdx, {0, 4, 5, 8}}},
                 {{"elemBathy", given.elemBathy, {8.0, 3.0, 3.3}},
                  {"edz1", given.edz[1], {3.0}},
                  {"edz2", given.edz[2], {0.3, 2, 1}}});
  }
}

TEST(ModelInfo, LayerQueriesAndCellCoords) {
  thModelInfo mi;
  stripModel(mi);
  // Upper edges 6, 3, 1, 0; a depth on an upper edge belongs to that layer. Element 0's bed is 8,
  // element 1's 3; outside 0..bed gives ebli (0 and 2).
  struct Q {
    int32_t e;
    double depth;
    int32_t layer;
  };
  for (Q q : {Q{0, 6.0, 0}, Q{0, 5.9, 1}, Q{0, 3.0, 1}, Q{0, 1.0, 2}, Q{0, 0.0, 3}, Q{0, 8.0, 0},
              Q{0, 8.5, 0}, Q{0, -0.1, 0}, Q{0, NAN, 0}, Q{1, 2.5, 2}, Q{1, 0.5, 3}, Q{1, 3.5, 2}}) {
    EXPECT_EQ(mi.depth2Layer(q.e, q.depth), q.layer) << q.e << " " << q.depth;
    EXPECT_EQ(mi.depth2LayerOff(q.e, q.depth), q.layer - mi.ebli[q.e]) << q.e << " " << q.depth;
  }
  EXPECT_VEXCEPTION(mi.depth2LayerOff(-1, 1.0), "thModelInfo::depth2Layer: element -1 is outside 0..2.");
  EXPECT_EQ(VD({mi.layerUpperEdge(0, 0), mi.layerUpperEdge(3, 2)}), (VD{6.0, 0.0}));
  EXPECT_VEXCEPTION(mi.layerUpperEdge(4, 0), "thModelInfo::layerUpperEdge: layer 4 is outside 0..3.");
  // Sigma, only read here and not rebuilt: edges and cell depths are fractions of the bed.
  mi.layerType = thalmod::sigma;
  EXPECT_DOUBLE_EQ(mi.layerUpperEdge(0, 1), 6.0 * 3.0);
  double *x = nullptr, *y = nullptr, *z = nullptr;
  ASSERT_EQ(mi.cellCoords(x, y, z), 0);
  std::unique_ptr<double[]> ox(x), oy(y), oz(z);
  expectArrays({}, {{"sigma z", z, {64, 36, 16, 4, 6, 1.5, 2.4, 0.6}}});
  mi.layerType = thalmod::zlayer;
  // lengthClass tests 1, nol (4) and noe (3) in this order; with nol 3, noe's length is nol's.
  EXPECT_EQ(
      VI({mi.lengthClass(1), mi.lengthClass(4), mi.lengthClass(3), mi.lengthClass(8), mi.lengthClass(0)}),
      (VI{0, 1, 2, 3, 3}));
  mi.nol = 3;
  EXPECT_EQ(mi.lengthClass(3), 1);
  mi.nol = 4;
  for (int32_t type : {0, 2, 3, 10}) {
    mi.modelType = type;
    EXPECT_EQ(mi.resultFileExt(), type == 2 || type == 3 ? "emu" : "emc") << type;
  }

  ASSERT_EQ(mi.cellCoords(x, y, z), 0);
  ox.reset(x);
  oy.reset(y);
  oz.reset(z);
  expectArrays({}, {{"x", x, {0.5, 0.5, 0.5, 0.5, 1.5, 1.5, 2.5, 2.5}},
                    {"y", y, VD(8, 0.5)},
                    {"z", z, {8, 4.5, 2, 0.5, 2, 0.5, 2, 0.5}}});
  // A column whose top moves down (as in a dry step) gets its new top cell in cellTop. After the
  // mesh has changed, the columns that initCells numbered are the ones refilled, and cell
  // coordinates are refused.
  mi.etli[0] = 2;
  mi.updateCellTop();
  expectArrays({{"cellTop", mi.cellTop, {2, 2, 2, 2, 5, 5}}});
  mi.mesh2d.tnbe = 7;
  mi.updateCellTop();
  mi.mesh2d.tnbe = 2;
  mi.mesh2d.noe = 2;
  EXPECT_VEXCEPTION(mi.cellCoords(x, y, z),
                    "thModelInfo::cellCoords: the mesh has changed since initCells; run initCells again.");
  mi.mesh2d.noe = 3;

  thModelInfo empty;
  EXPECT_VEXCEPTION(empty.cellCoords(x, y, z),
                    "thModelInfo::cellCoords: the cells are not initialised (initCells).");
  EXPECT_VEXCEPTION(empty.layerUpperEdge(0, 0),
                    "thModelInfo::layerUpperEdge: the layers are not initialised (initCells).");
}

TEST(ModelInfo, FlatBottomCloneCopiesAndReset) {
  auto mi = std::make_unique<thModelInfo>();
  stripModel(*mi);
  put(mi->enol, {1, 1, 1});
  // Three layers of 1/3 in float; enol is worked out from the depth again: a bed at 1 uses all
  // three. nolNew <= 0 keeps the stack.
  ASSERT_EQ(mi->setFlatBottom(1.0, 3), 0);
  EXPECT_EQ(VD({mi->dz[0], mi->dz[2]}), VD(2, 0.3333333432674408));
  EXPECT_EQ(VI({mi->nol, mi->cells, mi->totNoBndCells}), (VI{3, 9, 6}));
  expectArrays({{"enol", mi->enol, {3, 3, 3}}, {"ebli", mi->ebli, VI(5, 0)}},
               {{"elemBathy", mi->elemBathy, {1, 1, 1}}});
  ASSERT_EQ(mi->setFlatBottom(0.5, 0), 0);
  EXPECT_EQ(VI({mi->nol, mi->cells}), (VI{3, 6}));
  expectArrays({{"ebli", mi->ebli, {1, 1, 1}}});

  // clone: its own arrays, mesh included, and the layer counts as given; it outlives its source.
  put(mi->enol, {3, 1, 2});
  mi->startDT = 1000;
  mi->flavor = 7;
  mi->bathymetry = "bathy.txt";
  std::unique_ptr<thModelInfo> c(mi->clone());
  EXPECT_TRUE(c->isInit && c->startDT == 1000 && c->flavor == 7 && c->bathymetry == "bathy.txt");
  EXPECT_TRUE(c->dz != mi->dz && c->elemBathy != mi->elemBathy && c->mesh2d.vfe != mi->mesh2d.vfe);
  expectArrays(
      {{"clone ebli", c->ebli, {0, 2, 1, 1, 0}}, {"clone botlayerIdx", c->botlayerIdx, {0, 3, 4, 6, 8}}});
  // A clone outliving its source, and member-wise copies sharing arrays: ModelShare.
  thModelInfo third;
  stripModel(third);
  // reset: defaults, no arrays, the mesh kept and usable again.
  third.nt = 4;
  third.layerThickness = "1,1";
  third.reset();
  EXPECT_EQ(VI({third.isInit, third.nt, third.nol, third.cells, third.totNoUvf, third.flavor}),
            (VI{0, 0, 0, 0, 0, -1}));
  EXPECT_TRUE(third.dt == -1.0 && third.layerThickness.empty() && third.mesh2d.noe == 3);
  EXPECT_TRUE(!third.dz && !third.elemBathy && !third.botlayerIdx && !third.edz);
  stack(third, {1, 1});
  put(third.elemBathy, {2, 2, 2});
  ASSERT_EQ(third.initCells(), 0);
  EXPECT_EQ(third.cells, 6);
}

TEST(ModelInfo, BadInput) {
  thModelInfo mi;
  thTest::stripMesh(mi.mesh2d, true, false);
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: the model has no layers (nol = 0).");
  mi.nol = 2;
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: the layer thicknesses (dz) are missing.");
  stack(mi, {4, 3, 2, 1});
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: the bathymetry (elemBathy) is missing.");
  // Sigma fails after the layer depths and before anything else.
  put(mi.elemBathy, {NAN, 3.0, 1.05});
  mi.layerType = thalmod::sigma;
  EXPECT_VEXCEPTION(mi.initCells(), "Sigma layers no longer supported.");
  EXPECT_FALSE(mi.isInit);
  ASSERT_NE(mi.layerDepth, nullptr);
  EXPECT_DOUBLE_EQ(mi.layerDepth[0], 8.0);
  mi.layerType = thalmod::zlayer;
  put(mi.enol, {2, 5, 1});
  EXPECT_VEXCEPTION(mi.initCells(),
                    "thModelInfo::initCells: element 1 has 5 layers, more than the 4 layers of the model.");
  // A depth that is not a number gives one layer and stays as it is.
  put(mi.enol, {-1, -1, -1});
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_TRUE(mi.ebli[0] == 3 && std::isnan(mi.edz[0][0]) && mi.cells == 5);
  // Boundary lists that count fewer faces than there are ghost columns.
  thModelInfo short1;
  setUp(short1, true, true, {4, 3, 2, 1}, {8.0, 3.0, 1.05});
  short1.mesh2d.bndNoFaces[1] = 0;
  EXPECT_VEXCEPTION(short1.initCells(), "Bugger! bnd cell2elem error 42. " + thGlobal::errTail);
  // A mesh whose primary arrays are filled but never initialised.
  thModelInfo raw;
  raw.mesh2d.noe = 2;
  stack(raw, {1});
  put(raw.elemBathy, {1, 1});
  EXPECT_VEXCEPTION(
      raw.initCells(),
      "thModelInfo::initCells: the mesh has not been initialised (initMesh must run before initCells).");
  raw.mesh2d.noe = 0;
  // A mesh without elements needs no bathymetry and gives empty numbering.
  thModelInfo none;
  thTest::buildMesh(none.mesh2d, {0, 1}, {0, 0}, {0, 0}, {});
  stack(none, {2, 1});
  ASSERT_EQ(none.initCells(), 0);
  EXPECT_EQ(VI({none.cells, none.totNoUvf, none.totNoUPnts, none.totNoBndCells}), VI(4, 0));
  double *x = nullptr, *y = nullptr, *z = nullptr;
  EXPECT_EQ(none.cellCoords(x, y, z), 0);
  std::unique_ptr<double[]> ox(x), oy(y), oz(z);
  EXPECT_EQ(none.setFlatBottom(3.0, 1), 0);
  EXPECT_EQ(std::unique_ptr<thModelInfo>(none.clone())->cells, 0);
}
