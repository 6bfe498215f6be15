// Cell, column, face and U-point numbering of thModelInfo on small models worked out by hand, the
// queries on it, copies and clones of a model, and the vertical section mesh; layer thicknesses
// next to the moving surface, wet/dry, adjacent cells, boundary models and the reports on the strip
// model, and conservation of water on random models.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "model/thModelInfo.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thModelInfo;
using thTest::arr;
using thTest::near;
using VI = std::vector<int32_t>;
using VD = std::vector<double>;

namespace {

template <typename T>
void put(T*& a, const std::vector<T>& v) {
  delete[] a;
  a = thTest::newArray(v);
}

// The rows of a table (edz, fdz, ...) laid end to end, row r with its first lens[r] entries.
template <typename T>
std::vector<T> rows(T* const* table, const VI& lens) {
  std::vector<T> v;
  for (size_t r = 0; r < lens.size(); r++) v.insert(v.end(), table[r], table[r] + lens[r]);
  return v;
}

void stack(thModelInfo& mi, const VD& dz) {
  mi.nol = static_cast<int32_t>(dz.size());
  put(mi.dz, dz);
}

// The strip of three unit squares (thTest::stripMesh) with a layer stack and a bathymetry. By
// default both ends are open and the stack is dz 4,3,2,1 (layer 0 deepest): upper edges of the
// layers 6, 3, 1, 0 and centres 8, 4.5, 2, 0.5. Bathymetry 8 (all four layers), 3 (exactly on the
// upper edge of layer 1, so layers 2 and 3) and 1.05 (layers 2, 3; the 0.05 bottom cell is
// thickened to 0.1 x dz[2] = 0.2).
void setUp(thModelInfo& mi, bool openRight = true, bool openLeft = true, const VD& dz = {4, 3, 2, 1},
           const VD& bathy = {8.0, 3.0, 1.05}, double topDepth = 0) {
  thTest::stripMesh(mi.mesh2d, openRight, openLeft);
  stack(mi, dz);
  put(mi.elemBathy, bathy);
  mi.topDepth = topDepth;
}

// setUp's strip with its right end open, initialised.
void stripModel(thModelInfo& mi, bool openLeft = true, const VD& dz = {4, 3, 2, 1},
                const VD& bathy = {8.0, 3.0, 1.05}) {
  setUp(mi, true, openLeft, dz, bathy);
  ASSERT_EQ(mi.initCells(), 0);
}

double sum(const double* v, int32_t n) { return std::accumulate(v, v + n, 0.0); }

// Checks x, y and en of the section mesh; returns its node types.
VI expectMesh(const thModelInfo& mi, VI ise, VD isd, const double* ish, VD x, VD y, VI en) {
  std::unique_ptr<thalmod::thMesh2D> m(
      mi.ise2VMesh(ise.data(), isd.data(), static_cast<int32_t>(ise.size()), ish));
  EXPECT_EQ(arr(m->nxCoor, m->non), x);
  EXPECT_EQ(arr(m->nyCoor, m->non), y);
  EXPECT_EQ(arr(m->en, m->nevf), en);
  return arr(m->nt, m->non);
}

// x, y and z of the cells from cellCoords.
std::vector<VD> coords(const thModelInfo& mi) {
  double *x = nullptr, *y = nullptr, *z = nullptr;
  EXPECT_EQ(mi.cellCoords(x, y, z), 0);
  return {thTest::take(x, mi.cells), thTest::take(y, mi.cells), thTest::take(z, mi.cells)};
}

}  // namespace

TEST(ModelEnums, TextConversions) {
  using namespace thalmod;
  EXPECT_EQ(VI({str2modelTypeEnum("Water"), str2modelTypeEnum("UNSTRUCTURED"), str2modelTypeEnum("sediment"),
                str2modelTypeEnum("ABM"), str2layerTypeEnum("zlayer"), str2layerTypeEnum("z"),
                str2layerTypeEnum("Sigma")}),
            (VI{0, 0, 10, 20, 0, 0, 1}));
  EXPECT_EQ(modelTypeEnum2str(water) + modelTypeEnum2str(sediment) + modelTypeEnum2str(abm) +
                layerTypeEnum2str(zlayer) + layerTypeEnum2str(sigma),
            "watersedimentabmzlayersigma");
  EXPECT_VEXCEPTION(str2modelTypeEnum("Ocean"), "str2modelTypeEnum: invalid modeltype definition (ocean).");
  EXPECT_VEXCEPTION(modelTypeEnum2str(static_cast<modelTypeEnum>(2)),
                    "modelTypeEnum2str: unsupported modelTypeEnum.");
  EXPECT_VEXCEPTION(str2layerTypeEnum("z-layer"), "str2fileFmtEnum: invalid format definition (Z-LAYER).");
  EXPECT_VEXCEPTION(layerTypeEnum2str(static_cast<layerTypeEnum>(2)),
                    "modelTypeEnum2str: unsupported layerTypeEnum.");
}

TEST(ModelInfo, StripNumbering) {
  thModelInfo mi;
  stripModel(mi);
  // Columns 0..2 are the elements, 3 the ghost of the right end (element 2), 4 of the left
  // (element 0). Faces 0, 1 inner, 2 the right open face, 3 the left. The dense numbering of cells
  // and U-points is held against its definition on random models (ModelInvariants); here the
  // layers, counts and thicknesses that the hand-worked beds give.
  EXPECT_EQ(arr(mi.ebli, 5), VI({0, 2, 2, 2, 0}));
  EXPECT_EQ(VI({mi.cells, mi.totNoBndCells, mi.bndNoCells[0], mi.bndNoCells[1], mi.totNoUvf, mi.noUInner,
                mi.noUBnd, mi.totNoUPnts}),
            (VI{8, 6, 2, 4, 4, 4, 6, 10}));
  // Element 1's bed lies on the upper edge of layer 1, so its bottom cell is the full layer 2;
  // element 2's 0.05 is raised to 0.2 and its bed to 1.2. Face 0: the sides differ, the shallower
  // side (element 1) gives the bottom thickness. Face 1: equal bottom layers, the thinner bottom cell.
  EXPECT_TRUE(near(arr(mi.elemBathy, 3), {8.0, 3.0, 1.2}));
  EXPECT_TRUE(near(rows(mi.edz, {4, 2, 2}), {2, 3, 2, 1, 2, 1, 0.2, 1}));
  EXPECT_TRUE(near(rows(mi.fdz, {2, 2, 2, 4}), {2, 1, 0.2, 1, 0.2, 1, 2, 3, 2, 1}));
  EXPECT_TRUE(near(rows(mi.fdzc, {1, 1, 1, 3}), {1.5, 0.6, 0.6, 2.5, 2.5, 1.5}));
  // A closed mesh has no ghosts.
  thModelInfo closed;
  setUp(closed, false, false);
  ASSERT_EQ(closed.initCells(), 0);
  EXPECT_EQ(VI({closed.mesh2d.tnbe, closed.totNoUvf, closed.totNoBndCells, closed.cells, closed.cellTop[7]}),
            (VI{0, 2, 0, 8, 7}));
}

TEST(ModelInfo, BottomCells) {
  // One layer of 5: 0.2 is below 0.1 x 5 and is raised to 0.5; 7 is deeper than the stack and is
  // kept. An inner face's row is the thinner side's; with nol = 1, fdzc is half of it.
  thModelInfo one;
  stripModel(one, false, {5}, {3.0, 0.2, 7.0});
  EXPECT_TRUE(near(rows(one.edz, {1, 1, 1}), {3.0, 0.5, 7.0}));
  EXPECT_TRUE(near(rows(one.fdz, {1, 1, 1}), {0.5, 0.5, 7.0}));
  EXPECT_TRUE(near(rows(one.fdzc, {1, 1, 1}), {0.25, 0.25, 3.5}));
  // dz 10,10 below a top depth of 1: upper edges 11 and 1. 11.5, 0.5 below the upper edge of
  // layer 0, gives a bottom cell of 1.0 and a bed 0.5 deeper. 0.5 and -3 lie at or above topDepth:
  // one layer, bed raised to topDepth + 0.1 x dz[1]. minBotFrac 0 keeps a thin bottom cell but
  // lifts a bed above its layer's upper edge onto it.
  for (double frac : {0.1, 0.0}) {
    thModelInfo mi;
    setUp(mi, false, false, {10, 10}, {11.5, 0.5, -3.0}, 1.0);
    mi.minBotFrac = frac;
    ASSERT_EQ(mi.initCells(), 0);
    EXPECT_EQ(arr(mi.ebli, 3), VI({0, 1, 1}));
    EXPECT_TRUE(near(arr(mi.layerDepth, 2), {16, 6}));
    EXPECT_TRUE(near(arr(mi.elemBathy, 3), frac > 0 ? VD{12, 2, 2} : VD{11.5, 1, 1})) << frac;
    EXPECT_TRUE(near(rows(mi.edz, {2, 1, 1}), frac > 0 ? VD{1, 10, 1, 1} : VD{0.5, 10, 0, 0})) << frac;
  }
}

TEST(ModelInfo, NegativeMinBotFracAndGivenLayerCounts) {
  thModelInfo mi;
  setUp(mi);
  // Element 2's 0.05 is below 0.5 x dz[2] = 1: its bottom cell goes, ebli 3, bed 1.0. Element 0's
  // 2.0 equals 0.5 x dz[0] and stays (strict comparison). Counts and the element's own cell range
  // keep the dropped cell; faces follow the new bottom layer (face 1's row is element 2's). The row
  // of element 2 keeps its length of two, and the entries that no layer reaches (cell 7) are 0.
  mi.minBotFrac = -0.5;
  ASSERT_EQ(mi.initCells(), 0);
  EXPECT_EQ(arr(mi.ebli, 5), VI({0, 2, 3, 3, 0}));
  EXPECT_EQ(VI({mi.cells, mi.totNoBndCells, mi.cell2elem[6], mi.cell2layer[6], mi.cellTop[6], mi.cellTop[8],
                mi.cell2elem[7], mi.cellTop[7], mi.cellSeq[7]}),
            (VI{8, 5, 2, 3, 6, 8, 0, 0, 7}));
  EXPECT_TRUE(near(arr(mi.elemBathy, 3), {8.0, 3.0, 1.0}));
  EXPECT_TRUE(near(rows(mi.edz, {4, 2, 2}), {2, 3, 2, 1, 2, 1, 1.0, 0.0}));
  EXPECT_TRUE(near({mi.edzOld[2][1], mi.cellVol[6], mi.cellVol[7], mi.cellDepth[6], mi.cellDepth[7],
                    mi.fdz[1][0], mi.fdzc[1][0]},
                   {0.0, 1.0, 0.0, 0.5, 0.0, 1.0, 0.5}));

  // Given layer counts: 0 and -1 leave the choice to the depth; 1 and 3 fix the bottom layer
  // whatever the depth. Element 1: bed 3 is 3 below the upper edge 0 of layer 3. Element 2: 1.05
  // lies above the upper edge 3 of layer 1, so the bottom cell is raised to 0.1 x 3, the bed to 3.3.
  thModelInfo given;
  setUp(given, true, false);
  for (int32_t first : {0, -1}) {
    put(given.enol, {first, 1, 3});
    ASSERT_EQ(given.initCells(), 0);
    EXPECT_EQ(arr(given.ebli, 4), VI({0, 3, 1, 1}));
    EXPECT_TRUE(near(arr(given.elemBathy, 3), {8.0, 3.0, 3.3}));
    EXPECT_TRUE(near(rows(given.edz, {4, 1, 3}), {2, 3, 2, 1, 3.0, 0.3, 2, 1}));
  }
}

TEST(ModelInfo, LayerQueriesAndCellCoords) {
  thModelInfo mi;
  stripModel(mi);
  // Upper edges 6, 3, 1, 0; a depth on an upper edge belongs to that layer. Element 0's bed is 8,
  // element 1's 3; outside 0..bed gives ebli (0 and 2).
  using Q = std::tuple<int32_t, double, int32_t>;  // element, depth, layer
  for (auto [e, depth, layer] :
       {Q{0, 6.0, 0}, Q{0, 5.9, 1}, Q{0, 3.0, 1}, Q{0, 1.0, 2}, Q{0, 0.0, 3}, Q{0, 8.0, 0}, Q{0, 8.5, 0},
        Q{0, -0.1, 0}, Q{0, NAN, 0}, Q{1, 2.5, 2}, Q{1, 0.5, 3}, Q{1, 3.5, 2}})
    EXPECT_EQ(mi.depth2Layer(e, depth), layer) << e << " " << depth;
  EXPECT_EQ(mi.depth2LayerOff(1, 0.5), 1);
  EXPECT_VEXCEPTION(mi.depth2LayerOff(-1, 1.0), "thModelInfo::depth2Layer: element -1 is outside 0..2.");
  EXPECT_EQ(VD({mi.layerUpperEdge(0, 0), mi.layerUpperEdge(3, 2)}), (VD{6.0, 0.0}));
  EXPECT_THROW(mi.layerUpperEdge(4, 0), VCppLib::VException);
  // Sigma, only read here and not rebuilt: edges and cell depths are fractions of the bed.
  mi.layerType = thalmod::sigma;
  EXPECT_DOUBLE_EQ(mi.layerUpperEdge(0, 1), 6.0 * 3.0);
  EXPECT_TRUE(near(coords(mi)[2], {64, 36, 16, 4, 6, 1.5, 2.4, 0.6}));
  mi.layerType = thalmod::zlayer;
  const std::vector<VD> c = coords(mi);
  EXPECT_TRUE(near(c[0], {0.5, 0.5, 0.5, 0.5, 1.5, 1.5, 2.5, 2.5}) && near(c[1], VD(8, 0.5)));
  EXPECT_TRUE(near(c[2], {8, 4.5, 2, 0.5, 2, 0.5, 2, 0.5}));
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
  // A column whose top moves down (as in a dry step) gets its new top cell in cellTop. After the
  // mesh has changed, the columns that initCells numbered are the ones refilled, and cell
  // coordinates are refused.
  mi.etli[0] = 2;
  mi.updateCellTop();
  EXPECT_EQ(arr(mi.cellTop, 6), VI({2, 2, 2, 2, 5, 5}));
  mi.mesh2d.tnbe = 7;
  mi.updateCellTop();
  mi.mesh2d.tnbe = 2;
  mi.mesh2d.noe = 2;
  EXPECT_VEXCEPTION(coords(mi),
                    "thModelInfo::cellCoords: the mesh has changed since initCells; run initCells again.");
  mi.mesh2d.noe = 3;
  thModelInfo empty;
  EXPECT_VEXCEPTION(coords(empty), "thModelInfo::cellCoords: the cells are not initialised (initCells).");
  EXPECT_THROW(empty.layerUpperEdge(0, 0), VCppLib::VException);
}

TEST(ModelInfo, FlatBottomCloneAndReset) {
  auto mi = std::make_unique<thModelInfo>();
  stripModel(*mi);
  put(mi->enol, {1, 1, 1});
  // Three layers of 1/3 in float; enol is worked out from the depth again: a bed at 1 uses all
  // three, one at 0.5 (over the upper edge 2/3 of layer 0) two. nolNew <= 0 keeps the stack.
  ASSERT_EQ(mi->setFlatBottom(1.0, 3), 0);
  EXPECT_EQ(VD({mi->dz[0], mi->dz[2], mi->elemBathy[2]}), (VD{0.3333333432674408, 0.3333333432674408, 1}));
  EXPECT_EQ(VI({mi->nol, mi->cells, mi->totNoBndCells, mi->enol[0], mi->enol[2]}), (VI{3, 9, 6, 3, 3}));
  ASSERT_EQ(mi->setFlatBottom(0.5, 0), 0);
  EXPECT_EQ(VI({mi->nol, mi->cells, mi->ebli[0], mi->ebli[2]}), (VI{3, 6, 1, 1}));

  // clone: its own arrays, mesh included, and the layer counts as given. A clone outliving its
  // source, and member-wise copies sharing arrays: ModelShare below.
  put(mi->enol, {3, 1, 2});
  mi->startDT = 1000;
  mi->flavor = 7;
  mi->bathymetry = "bathy.txt";
  std::unique_ptr<thModelInfo> c(mi->clone());
  EXPECT_TRUE(c->isInit && c->startDT == 1000 && c->flavor == 7 && c->bathymetry == "bathy.txt");
  EXPECT_TRUE(c->dz != mi->dz && c->elemBathy != mi->elemBathy && c->mesh2d.vfe != mi->mesh2d.vfe);
  EXPECT_EQ(arr(c->ebli, 5), VI({0, 2, 1, 1, 0}));
  // reset: defaults, no arrays, the mesh kept and usable again.
  mi->nt = 4;
  mi->layerThickness = "1,1";
  mi->reset();
  EXPECT_EQ(VI({mi->isInit, mi->nt, mi->nol, mi->cells, mi->totNoUvf, mi->flavor}), (VI{0, 0, 0, 0, 0, -1}));
  EXPECT_TRUE(mi->dt == -1.0 && mi->layerThickness.empty() && mi->bathymetry.empty() && mi->mesh2d.noe == 3);
  EXPECT_TRUE(!mi->dz && !mi->elemBathy && !mi->enol && !mi->botlayerIdx && !mi->edz);
  stack(*mi, {1, 1});
  put(mi->elemBathy, {2, 2, 2});
  ASSERT_EQ(mi->initCells(), 0);
  EXPECT_EQ(mi->cells, 6);
}

TEST(ModelInfo, BadInput) {
  thModelInfo mi;
  thTest::stripMesh(mi.mesh2d, true, false);
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: the model has no layers (nol = 0).");
  mi.nol = 2;
  EXPECT_VEXCEPTION(mi.initCells(), "thModelInfo::initCells: the layer thicknesses (dz) are missing.");
  stack(mi, {4, 3, 2, 1});
  EXPECT_THROW(mi.initCells(), VCppLib::VException);  // no bathymetry
  // Sigma fails after the layer depths and before anything else.
  put(mi.elemBathy, {NAN, 3.0, 1.05});
  mi.layerType = thalmod::sigma;
  EXPECT_VEXCEPTION(mi.initCells(), "Sigma layers no longer supported.");
  EXPECT_TRUE(!mi.isInit && mi.layerDepth != nullptr && mi.layerDepth[0] == 8.0);
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
  setUp(short1);
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
  EXPECT_TRUE(coords(none)[2].empty());
  EXPECT_EQ(none.setFlatBottom(3.0, 1), 0);
  EXPECT_EQ(std::unique_ptr<thModelInfo>(none.clone())->cells, 0);
}

// Member-wise copies and clones of a model share arrays, the mesh's included: rebuilding,
// resetting and destroying them in any order leaves each survivor whole and frees every array
// once, whichever object or table pointer holds it.
TEST(ModelShare, CopiesAndClonesRebuiltResetAndDestroyedInAnyOrder) {
  auto expectWholeStrip = [](const thModelInfo& mi) {
    EXPECT_EQ(mi.cells + mi.botlayerIdx[4] + mi.cell2elem[5] + mi.mesh2d.vfe[1], 8 + 10 + 1 + 1);
    EXPECT_DOUBLE_EQ(mi.edz[2][1] + mi.cellVol[5] + mi.dz[0] + mi.elemBathy[2], 1 + 1 + 4 + 1.2);
  };
  for (bool sourceFirst : {true, false}) {
    auto src = std::make_unique<thModelInfo>();
    stripModel(*src);
    std::unique_ptr<thModelInfo> clone(src->clone());
    // The layer update swaps the table pointers of the double buffers; the copy shares them so.
    std::swap(src->edz, src->edzOld);
    std::swap(src->fdz, src->fdzOld);
    auto copy = std::make_unique<thModelInfo>(*src);
    EXPECT_TRUE(copy->edz == src->edz && copy->dz == src->dz && copy->mesh2d.vfe == src->mesh2d.vfe);
    ASSERT_EQ(copy->mesh2d.initMesh(), 0);
    ASSERT_EQ(copy->setFlatBottom(0.5, 1), 0);  // inputs and cells of its own: 3 cells of 0.5 m
    copy->initWetDry();
    EXPECT_TRUE(copy->dz != src->dz && copy->elemBathy != src->elemBathy && src->edzInit == nullptr);
    thModelInfo reset(*src), assigned;
    reset.reset();
    assigned = *copy;
    (sourceFirst ? src : copy).reset();  // destroyed
    expectWholeStrip(sourceFirst ? *clone : *src);
    EXPECT_EQ(assigned.edzInit[2] + assigned.cellVol[2] + assigned.cells, 0.5 + 0.5 + 3);
  }
}

// The vertical section mesh on the small model: layers of 10, 5 and 2 m (bottom first), so lower
// layer edges at heights -17, -7 and -2 and the surface at 0; bottom layers (ebli) 0, 1, 2, 0.
TEST(Ise2VMesh, ZLayersSigmaLayersAndOtherKinds) {
  thModelInfo mi;
  thTest::buildSmallModel(mi);
  // e0 (3 layers), e1 (2): the middle column reaches down to e0's bottom. initMesh takes the node
  // types from the faces: node 6 (100, -2) alone has cells all round it.
  const VI en01 = {0, 4, 5, 1, 1, 5, 6, 2, 2, 6, 7, 3, 5, 8, 9, 6, 6, 9, 10, 7};
  const VD x01 = {0, 0, 0, 0, 100, 100, 100, 100, 200, 200, 200};
  EXPECT_EQ(
      expectMesh(mi, {0, 1}, {100, 200}, nullptr, x01, {-17, -7, -2, 0, -17, -7, -2, 0, -7, -2, 0}, en01),
      (VI{99, 99, 99, 99, 99, 99, 0, 99, 99, 99, 99}));
  // surface heights: each column takes that of the element before it
  const double ish[] = {0.5, 0.3};
  expectMesh(mi, {0, 1}, {100, 200}, ish, x01, {-17, -7, -2, 0.5, -17, -7, -2, 0.5, -7, -2, 0.3}, en01);
  // e2 (the top layer only), a stretch outside (no nodes of its own), e3
  expectMesh(mi, {2, -1, 3}, {50, 150, 250}, nullptr, {0, 0, 50, 50, 150, 150, 150, 150, 250, 250, 250, 250},
             {-2, 0, -2, 0, -17, -7, -2, 0, -17, -7, -2, 0},
             {0, 2, 3, 1, 4, 8, 9, 5, 5, 9, 10, 6, 6, 10, 11, 7});
  mi.layerType = thalmod::sigma;  // layer edges scale with the element's depth, 5 m for e1
  expectMesh(mi, {1}, {100}, nullptr, {0, 100, 0, 100, 0, 100, 0, 100}, {-85, -85, -35, -35, -10, -10, 0, 0},
             {0, 2, 3, 1, 2, 4, 5, 3, 4, 6, 7, 5});
  mi.layerType = 7;
  EXPECT_VEXCEPTION(expectMesh(mi, {1}, {100}, nullptr, {}, {}, {}), "ise2VMesh: Not implemented.");
}

// The strip model with the right end open only (face 2, element 2, ghost column 3). With the
// default beds the rows of edz are {2,3,2,1}, {2,1}, {0.2,1} (bed 1.2), cells 0..3, 4..5, 6..7;
// faces 0, 1, 2 start at layer 2, U-points 0, 2, 4.
TEST(ModelDZ, TopCellsAndFaceRules) {
  thModelInfo mi;
  stripModel(mi, false);
  VD h = {0.5, -0.25, 0.1}, u(6, 0.0), zero(3, 0.0);
  mi.updateDZ(h.data(), false);
  EXPECT_TRUE(near(rows(mi.edz, {4, 2, 2}), {2, 3, 2, 1.5, 2, 0.75, 0.2, 1.1}));
  EXPECT_TRUE(near(rows(mi.edzc, {3, 1}), {2.5, 2.5, 1.75, 1.375}));
  EXPECT_TRUE(near(arr(mi.cellVol, 8), {2, 3, 2, 1.5, 2, 0.75, 0.2, 1.1}));
  // Face 0 (sides 0.5 and -0.25), top entry 1: highest, lowest, mean, upwind with u > 0, u <= 0;
  // rules 4 and -1 are upwind as well. The open face takes its element: lower edge 1 + 0.1.
  using R = std::tuple<int32_t, double, double>;  // rule, u, top entry
  for (auto [rule, uf, top] : {R{0, 0, 1.5}, R{1, 0, 0.75}, R{2, 0, 1.125}, R{3, 1, 1.5}, R{3, 0, 0.75},
                               R{4, -1, 0.75}, R{-1, 2, 1.5}}) {
    u[1] = uf;
    mi.updateDZf(h.data(), u.data(), rule, false, false);
    EXPECT_TRUE(near({mi.fdz[0][0], mi.fdz[0][1], mi.fdzc[0][0]}, {2, top, 1 + top / 2})) << rule;
  }
  EXPECT_TRUE(near({mi.fdz[2][0], mi.fdz[2][1], mi.fdzc[2][0]}, {0.2, 1.1, 0.65}));
  double* before = mi.edz[0];
  mi.updateDZ(zero.data(), true);  // the tables swap; all h = 0 brings the tops back to rest
  EXPECT_EQ(mi.edzOld[0], before);
  EXPECT_TRUE(near(rows(mi.edz, {4, 2, 2}), {2, 3, 2, 1, 2, 1, 0.2, 1}));
}

TEST(ModelDZ, WetDryThroughATide) {
  thModelInfo mi;
  stripModel(mi, false);
  EXPECT_VEXCEPTION(thModelInfo().initWetDry(),
                    "thModelInfo: Cannot init wetdry before main init. " + thGlobal::errTail);
  mi.initWetDry();
  VI wet, dry;
  VD u(6, 0.0);
  // Low water at depth 1.5: every top layer dries; element 2's surface falls under its bed (1.2).
  VD h = {-1.5, -1.5, -1.5};
  mi.updateDZWetDry(h.data(), wet, dry, true);
  EXPECT_TRUE(dry == (VI{3, 5, 7}) && arr(mi.etli, 3) == (VI{2, 2, 2}) && arr(mi.enol, 3) == (VI{3, 1, 1}));
  EXPECT_EQ(arr(mi.toplayerIdx, 3), (VI{2, 4, 6}));
  EXPECT_TRUE(near(rows(mi.edz, {4, 2, 2}), {2, 3, 1.5, 0, 1.5, 0, -0.3, 0}));
  EXPECT_TRUE(near(rows(mi.edzc, {3, 1, 1}), {2.5, 2.25, 0.75, 0.75, -0.15}));
  // One active layer: face 0 takes the higher surface over the shallower bed, face 1 lies under
  // both beds' water (0.0); the open face copies its element and then its top entry.
  mi.updateDZf(h.data(), u.data(), 3, false, true);
  EXPECT_EQ(arr(mi.ftli, 3), (VI{2, 2, 2}));
  EXPECT_TRUE(near(rows(mi.fdz, {2, 2, 2}), {1.5, 0, 0, 0, -0.3, 0}));
  EXPECT_EQ(mi.fdzc[0][0], 0.75);
  // Rising water: the layers flood again, the bottom cells go back to their rest thickness.
  h = {0.2, 0.4, 0.4};
  mi.updateDZWetDry(h.data(), wet, dry, true);
  EXPECT_TRUE(wet == (VI{3, 5, 7}) && arr(mi.etliOld, 3) == (VI{2, 2, 2}));
  EXPECT_TRUE(near(rows(mi.edz, {4, 2, 2}), {2, 3, 2, 1.2, 2, 1.4, 0.2, 1.4}));
  EXPECT_TRUE(near(rows(mi.edzc, {3}), {2.5, 2.5, 1.6}));
  mi.cellVol[3] = 0;
  mi.updateTopCellVol();
  EXPECT_EQ(mi.cellVol[3], 1.2);
  // Layer 3 of face 0 by the flow: from element 0 (1.2), from element 1 (1.4), or the thicker.
  for (double uf : {1.0, -1.0, 0.0}) {
    u[1] = uf;
    mi.updateDZf(h.data(), u.data(), 3, false, true);
    EXPECT_TRUE(near(rows(mi.fdz, {2}), {2, uf > 0 ? 1.2 : 1.4})) << uf;
  }
  // A surface exactly on a lower edge dries that layer; exactly on an upper edge floods nothing.
  h = {-1, -1, -1};
  wet.clear();
  dry.clear();
  mi.updateDZWetDry(h.data(), wet, dry, false);
  mi.updateDZWetDry(h.data(), wet, dry, false);
  EXPECT_TRUE(dry == (VI{3, 5, 7}) && wet.empty());
  EXPECT_TRUE(near(rows(mi.edz, {4}), {2, 3, 2, 0}));
  h = {NAN, -1, -1};  // a surface that is no number neither floods nor dries
  mi.updateDZWetDry(h.data(), wet, dry, false);
  EXPECT_TRUE(mi.etli[0] == 2 && std::isnan(mi.edz[0][2]) && dry.size() == 3);
  EXPECT_VEXCEPTION(mi.updateDZf(h.data(), u.data(), 0, false, true), "WetDry only supports face rule 3");
  mi.layerType = thalmod::sigma;
  EXPECT_VEXCEPTION(mi.updateDZ(h.data(), false),
                    "thModelInfo::updateDZ not implemented for current layerType.");
}

// Water volume: the cells of each column hold the water between its bed and its surface, for any
// path of the surface; the wet/dry state depends on the last surface alone.
TEST(ModelDZ, ConservationOnRandomModels) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int32_t trial = 0; trial < 20; trial++) {
    thModelInfo mi;
    thTest::gridMesh(mi.mesh2d, 3 + trial % 5, 2 + trial % 3, rng, trial % 2 == 0);
    const int32_t noe = mi.mesh2d.noe;
    mi.nol = 3 + trial % 6;
    mi.dz = new double[mi.nol];
    for (int32_t k = 0; k < mi.nol; k++) mi.dz[k] = 0.5 + 3 * unit(rng);
    mi.elemBathy = new double[noe];
    for (int32_t e = 0; e < noe; e++) mi.elemBathy[e] = 0.3 + 15 * unit(rng);
    mi.topDepth = trial % 3 == 0 ? 0.0 : unit(rng);
    ASSERT_EQ(mi.initCells(), 0);
    std::unique_ptr<thModelInfo> fresh(mi.clone()), still(mi.clone());
    mi.initWetDry();
    fresh->initWetDry();
    VD h(noe);
    VI wet, dry;
    for (int32_t step = 0; step < 6; step++) {
      double water = 0;
      for (int32_t e = 0; e < noe; e++) {
        h[e] = std::max(-0.99 * mi.elemBathy[e], -6 + 8 * unit(rng));
        water += mi.mesh2d.eArea[e] * (mi.elemBathy[e] + h[e]);
      }
      mi.updateDZWetDry(h.data(), wet, dry, step % 2 == 0);
      still->updateDZ(h.data(), step % 2 == 0);  // the top layer stays and takes all of h
      EXPECT_NEAR(sum(mi.cellVol, mi.cells), water, 1e-9 * water) << trial << " " << step;
      EXPECT_NEAR(mi.topDepth == 0.0 ? sum(still->cellVol, still->cells) : water, water, 1e-9 * water);
    }
    fresh->updateDZWetDry(h.data(), wet, dry, false);
    EXPECT_EQ(arr(fresh->etli, noe), arr(mi.etli, noe));
    for (int32_t e = 0; e < noe; e++)
      for (int32_t k = 0; k < mi.nol - mi.ebli[e]; k++)
        EXPECT_EQ(fresh->edz[e][k], mi.edz[e][k]) << trial << " " << e;
  }
}

TEST(ModelBoundary, AdjacentCellsBoundaryModelsAndDistances) {
  // roundDec goes by the fraction of x itself.
  EXPECT_TRUE(thModelInfo::roundDec(2.74999, 4) == 2.75 && thModelInfo::roundDec(2.40001, 4) == 2.4);
  // Sigma layers of 0.5 over beds 10, 10, 20: edges 0-5-10, 0-5-10, 0-10-20; touching edges don't count.
  thModelInfo mi;
  stripModel(mi, false, {0.5, 0.5}, {10, 10, 20});
  EXPECT_VEXCEPTION(mi.popHAC(true), "thModelInfo::popHAC only implemented for sigma layers.");
  mi.layerType = thalmod::sigma;
  mi.popHAC(true);
  EXPECT_TRUE(arr(mi.hacNo, 6) == (VI{1, 1, 2, 2, 0, 2}) && arr(mi.hacIdx, 6) == (VI{0, 1, 2, 4, 6, 6}));
  EXPECT_EQ(arr(mi.hacCell, 8), (VI{2, 3, 0, 5, 1, 5, 2, 3}));
  // Volumes 9.5, 0.5 | 9.5, 0.5 | 19.5, 0.5 shared out, normalised and made symmetric.
  mi.popHAC(false);
  const double a = 9.5 * 9.5 / 9.75, b = 9.5 * 0.25 / 9.75;
  EXPECT_TRUE(near(VD(mi.hacWeight, mi.hacWeight + 8), {a, 1.0 / 3, a, b, 1.0 / 3, 0.025, b, 0.025}));

  // On random sigma grids, against the definition: every pair of layers of neighbouring columns.
  std::mt19937 rng(3);
  for (int32_t trial = 0; trial < 4; trial++) {
    thModelInfo r;
    thTest::gridMesh(r.mesh2d, 4, 3, rng, false);
    const thalmod::thMesh2D& g = r.mesh2d;
    r.nol = 5;
    r.dz = new double[5]{0.1, 0.3, 0.2, 0.25, 0.15};
    r.elemBathy = new double[g.noe];
    for (int32_t e = 0; e < g.noe; e++)
      r.elemBathy[e] = 1 + 20 * std::uniform_real_distribution<double>()(rng);
    ASSERT_EQ(r.initCells(), 0);
    r.layerType = thalmod::sigma;
    if (trial == 3) r.elemBathy[0] = -5;  // edges that rise with the layer number
    r.popHAC(true);
    auto edge = [&](int32_t e, int32_t l, double side) {
      return thModelInfo::roundDec((r.layerDepth[l] + side * r.dz[l] * 0.5) * r.elemBathy[e], 4);
    };
    std::vector<std::pair<int32_t, double>> want, got;
    for (int32_t c = 0; c < r.cells; c++)
      for (int32_t j = g.eNbrIdx[c / 5], e = c / 5, l = c % 5; j < g.eNbrIdx[e] + g.eNbrNo[e]; j++)
        for (int32_t k = 0, n = g.eNbr[j]; k < 5; k++) {
          const double top = std::max(edge(e, l, -1), edge(n, k, -1)),
                       bottom = std::min(edge(e, l, 1), edge(n, k, 1));
          if (bottom > top) want.push_back({n * 5 + k, (bottom - top) * g.vfl[g.eNbrVf[j]]});
        }
    for (int32_t i = 0; i < r.hacIdx[r.cells - 1] + r.hacNo[r.cells - 1]; i++)
      got.push_back({r.hacCell[i], r.hacWeight[i]});
    EXPECT_EQ(got, want) << trial;
  }

  thModelInfo z;
  stripModel(z, false);
  std::unique_ptr<thModelInfo> bnd(z.bndModel(0, false)), one(z.bndModel(0, true));
  EXPECT_EQ(VI({bnd->mesh2d.noe, bnd->nol, bnd->cells, one->nol, one->cells}), (VI{1, 4, 2, 1, 1}));
  // The one-layer model: one layer of dz[1] over a bed at 1.
  EXPECT_TRUE(near({bnd->elemBathy[0], one->dz[0], one->edz[0][0]}, {1.2, 3, 1}));
  EXPECT_VEXCEPTION_HAS(z.bndModel(1, false), "no open boundary of index 1");
  // Cell 0 (centre 7 m down) to cell 4 (element 1, 2 m down, 1 m across).
  std::unique_ptr<double[]> d(z.cellDistances(0));
  EXPECT_TRUE(d[0] == 0.0 && std::fabs(d[4] - std::sqrt(26.0)) < 1e-12);
}

TEST(ModelReport, SummaryAndBlowup) {
  thModelInfo mi;
  stripModel(mi, false);
  mi.nt = 5;
  mi.dt = 3600;
  const std::string head =
      "The mesh is orthogonal\nProjection:\tUTM32\nNo. timesteps:\t5\nTimestep seconds:\t3600\n"
      "No. Layers:\t4\nLayerType:\tZLayer\nLayerThickness: 4,3,2,1\nLayerDepths (center): 8,4.5,2,0.5\n"
      "Mesh has 3 elements and 8 nodes.\nMesh area center: (1.5,0.5)\nMesh extendX: (0,0)\n"
      "Mesh extendY: (0,0)\nNo. Computational cells: 8\nTotal mesh volume: 12.2\n"
      "Largest cell: 1, volume=3\nSmallest cell: 6, volume=0.2\nTotal mesh area: 3\n"
      "Average element area: 1, sqrt(area)=1\nLargest element is element no. 0, size=1, sqrt(area)=1\n"
      "Smallest element is element no. 0, size=1, sqrt(area)=1\nMaximum bathymetry is 8 in element no. 0\n"
      "Minimum bathymetry is 1.2 in element no. 2\n"
      "Average face length is 1, shortest face is 1, longest is 1\n";
  EXPECT_EQ(mi.toString(0), head + "1 boundaries, numbers: 1\n");
  EXPECT_EQ(mi.toString(1).substr(head.size(), 27), "Average element distance: 1");
  EXPECT_EQ(mi.toString(6).substr(mi.toString(1).size()),
            "\tBoundary 0 has number 1\n\t1 elems: 2\n\tTotal boundary area: 1.2\n");
  // Face 0 lists 4 - (3 - 2) = 3 entries of its 2: the row's end stops it.
  EXPECT_VEXCEPTION_HAS(mi.blowupReport(3), "initWetDry");
  mi.initWetDry();
  EXPECT_EQ(
      mi.blowupReport(3),
      "\n --------------- Thalmod modelInfo Blowup report, cell=3, elem=0, layer=3 ----------------------\n"
      "elemBathy\t=8\nenol\t=4 (of 4)\nebli\t=0\netli\t=3 (previous timestep: 3)\n"
      "edz \t=2,3,2,1 (previous timestep: 2,3,2,1)\nfaces:\nface 0:\tfdz=2,1 (previous timestep: 2,1)\n");
  EXPECT_EQ(thModelInfo().toString(0).find("No. Computational cells"), std::string::npos);
}
