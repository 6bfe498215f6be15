// Layer thicknesses next to the moving surface, wet/dry, adjacent cells, boundary models and the
// reports, on the hand-worked strip model, and conservation of water on random models.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "model/thModelInfo.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thModelInfo;
using VI = std::vector<int32_t>;
using VD = std::vector<double>;

namespace {

struct Row {
  const char* what;
  const double* got;
  VD want;
};
void expectRows(std::initializer_list<Row> rows) {
  for (const Row& r : rows)
    for (size_t i = 0; i < r.want.size(); i++)
      EXPECT_NEAR(r.got[i], r.want[i], 1e-12) << r.what << "[" << i << "]";
}
VI ints(const int32_t* v, int32_t n) { return VI(v, v + n); }

// Three unit squares, the right end open (face 2, element 2); inner faces 0 (elements 0, 1) and 1
// (1, 2). dz 4,3,2,1 (upper edges 6, 3, 1, 0); beds 8, 3, 1.05 -> rows {2,3,2,1}, {2,1}, {0.2,1}
// (bed 1.2), cells 0..3, 4..5, 6..7; faces 0, 1, 2 from layer 2, U-points 0, 2, 4.
void strip(thModelInfo& mi, VD dz = {4, 3, 2, 1}, VD bathy = {8, 3, 1.05}) {
  thTest::stripMesh(mi.mesh2d, true, false);
  mi.nol = static_cast<int32_t>(dz.size());
  mi.dz = thTest::newArray(dz);
  mi.elemBathy = thTest::newArray(bathy);
  ASSERT_EQ(mi.initCells(), 0);
}

double sum(const double* v, int32_t n) { return std::accumulate(v, v + n, 0.0); }

}  // namespace

TEST(ModelDZ, TopCellsAndFaceRules) {
  thModelInfo mi;
  strip(mi);
  VD h = {0.5, -0.25, 0.1}, u(6, 0.0), zero(3, 0.0);
  mi.updateDZ(h.data(), false);
  expectRows({{"edz0", mi.edz[0], {2, 3, 2, 1.5}},
              {"edz1", mi.edz[1], {2, 0.75}},
              {"edz2", mi.edz[2], {0.2, 1.1}},
              {"edzc0", mi.edzc[0], {2.5, 2.5, 1.75}},
              {"edzc1", mi.edzc[1], {1.375}},
              {"cellVol", mi.cellVol, {2, 3, 2, 1.5, 2, 0.75, 0.2, 1.1}}});
  // Face 0 (sides 0.5 and -0.25), top entry 1: highest, lowest, mean, upwind with u > 0, u <= 0;
  // rules 4 and -1 are upwind as well. The open face takes its element: lower edge 1 + 0.1.
  struct R {
    int32_t rule;
    double u;
    double top;
  };
  for (R r : {R{0, 0, 1.5}, R{1, 0, 0.75}, R{2, 0, 1.125}, R{3, 1, 1.5}, R{3, 0, 0.75}, R{4, -1, 0.75},
              R{-1, 2, 1.5}}) {
    u[1] = r.u;
    mi.updateDZf(h.data(), u.data(), r.rule, false, false);
    expectRows({{"fdz0", mi.fdz[0], {2, r.top}}, {"fdzc0", mi.fdzc[0], {1 + r.top / 2}}});
  }
  expectRows({{"fdz2", mi.fdz[2], {0.2, 1.1}}, {"fdzc2", mi.fdzc[2], {0.65}}});
  double* before = mi.edz[0];
  mi.updateDZ(zero.data(), true);  // the tables swap; all h = 0 brings the tops back to rest
  EXPECT_EQ(mi.edzOld[0], before);
  expectRows({{"edz2 at rest", mi.edz[2], {0.2, 1}}});
}

TEST(ModelDZ, WetDryThroughATide) {
  thModelInfo mi;
  strip(mi);
  EXPECT_VEXCEPTION(thModelInfo().initWetDry(),
                    "thModelInfo: Cannot init wetdry before main init. " + thGlobal::errTail);
  mi.initWetDry();
  VI wet, dry;
  VD u(6, 0.0);
  // Low water at depth 1.5: every top layer dries; element 2's surface falls under its bed (1.2).
  VD h = {-1.5, -1.5, -1.5};
  mi.updateDZWetDry(h.data(), wet, dry, true);
  EXPECT_TRUE(dry == (VI{3, 5, 7}) && ints(mi.etli, 3) == (VI{2, 2, 2}) && ints(mi.enol, 3) == (VI{3, 1, 1}));
  EXPECT_EQ(ints(mi.toplayerIdx, 3), (VI{2, 4, 6}));
  expectRows({{"edz0", mi.edz[0], {2, 3, 1.5, 0}},
              {"edzc0", mi.edzc[0], {2.5, 2.25, 0.75}},
              {"edz1", mi.edz[1], {1.5, 0}},
              {"edz2", mi.edz[2], {-0.3, 0}},
              {"edzc2", mi.edzc[2], {-0.15}}});
  // One active layer: face 0 takes the higher surface over the shallower bed, face 1 lies under
  // both beds' water (0.0); the open face copies its element and then its top entry.
  mi.updateDZf(h.data(), u.data(), 3, false, true);
  EXPECT_EQ(ints(mi.ftli, 3), (VI{2, 2, 2}));
  expectRows({{"fdz0", mi.fdz[0], {1.5, 0}},
              {"fdzc0", mi.fdzc[0], {0.75}},
              {"fdz1", mi.fdz[1], {0, 0}},
              {"fdz2", mi.fdz[2], {-0.3, 0}}});
  // Rising water: the layers flood again, the bottom cells go back to their rest thickness.
  h = {0.2, 0.4, 0.4};
  mi.updateDZWetDry(h.data(), wet, dry, true);
  EXPECT_TRUE(wet == (VI{3, 5, 7}) && ints(mi.etliOld, 3) == (VI{2, 2, 2}));
  expectRows({{"edz0", mi.edz[0], {2, 3, 2, 1.2}},
              {"edzc0", mi.edzc[0], {2.5, 2.5, 1.6}},
              {"edz2", mi.edz[2], {0.2, 1.4}},
              {"cellVol", mi.cellVol, {2, 3, 2, 1.2, 2, 1.4, 0.2, 1.4}}});
  mi.cellVol[3] = 0;
  mi.updateTopCellVol();
  EXPECT_EQ(mi.cellVol[3], 1.2);
  // Layer 3 of face 0 by the flow: from element 0 (1.2), from element 1 (1.4), or the thicker.
  for (double uf : {1.0, -1.0, 0.0}) {
    u[1] = uf;
    mi.updateDZf(h.data(), u.data(), 3, false, true);
    expectRows({{"fdz0 wet", mi.fdz[0], {2, uf > 0 ? 1.2 : 1.4}}});
  }
  // A surface exactly on a lower edge dries that layer; exactly on an upper edge floods nothing.
  h = {-1, -1, -1};
  wet.clear();
  dry.clear();
  mi.updateDZWetDry(h.data(), wet, dry, false);
  mi.updateDZWetDry(h.data(), wet, dry, false);
  EXPECT_TRUE(dry == (VI{3, 5, 7}) && wet.empty());
  expectRows({{"edz0 on the edge", mi.edz[0], {2, 3, 2, 0}}});
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
      if (mi.topDepth == 0.0) {
        EXPECT_NEAR(sum(still->cellVol, still->cells), water, 1e-9 * water);
      }
    }
    fresh->updateDZWetDry(h.data(), wet, dry, false);
    EXPECT_EQ(ints(fresh->etli, noe), ints(mi.etli, noe));
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
  strip(mi, {0.5, 0.5}, {10, 10, 20});
  EXPECT_VEXCEPTION(mi.popHAC(true), "thModelInfo::popHAC only implemented for sigma layers.");
  mi.layerType = thalmod::sigma;
  mi.popHAC(true);
  EXPECT_TRUE(ints(mi.hacNo, 6) == (VI{1, 1, 2, 2, 0, 2}) && ints(mi.hacIdx, 6) == (VI{0, 1, 2, 4, 6, 6}));
  EXPECT_EQ(ints(mi.hacCell, 8), (VI{2, 3, 0, 5, 1, 5, 2, 3}));
  expectRows({{"areas", mi.hacWeight, VD(8, 5.0)}});
  // Volumes 9.5, 0.5 | 9.5, 0.5 | 19.5, 0.5 shared out, normalised and made symmetric.
  mi.popHAC(false);
  const double a = 9.5 * 9.5 / 9.75, b = 9.5 * 0.25 / 9.75;
  expectRows({{"volumes", mi.hacWeight, {a, 1.0 / 3, a, b, 1.0 / 3, 0.025, b, 0.025}}});

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
  strip(z);
  std::unique_ptr<thModelInfo> bnd(z.bndModel(0, false)), one(z.bndModel(0, true));
  EXPECT_EQ(VI({bnd->mesh2d.noe, bnd->nol, bnd->cells, one->nol, one->cells}), (VI{1, 4, 2, 1, 1}));
  expectRows({{"bnd bathy", bnd->elemBathy, {1.2}},
              {"one layer of dz[1]", one->dz, {3}},
              {"over 1", one->edz[0], {1}}});
  EXPECT_VEXCEPTION_HAS(z.bndModel(1, false), "no open boundary of index 1");
  // Cell 0 (centre 7 m down) to cell 4 (element 1, 2 m down, 1 m across).
  std::unique_ptr<double[]> d(z.cellDistances(0));
  EXPECT_TRUE(d[0] == 0.0 && std::fabs(d[4] - std::sqrt(26.0)) < 1e-12);
}

TEST(ModelReport, SummaryAndBlowup) {
  thModelInfo mi;
  strip(mi);
  mi.nt = 5;
  mi.dt = 3600;
  const std::string head =
      "The mesh is orthogonal\nProjection:\tUTM32\nNo. timesteps:\t5\nTimestep seconds:\t3600\nNo. "
      "Layers:\t4\n"
      "LayerType:\tZLayer\nLayerThickness: 4,3,2,1\nLayerDepths (center): 8,4.5,2,0.5\n"
      "Mesh has 3 elements and 8 nodes.\nMesh area center: (1.5,0.5)\nMesh extendX: (0,0)\nMesh extendY: "
      "(0,0)\n"
      "No. Computational cells: 8\nTotal mesh volume: 12.2\nLargest cell: 1, volume=3\nSmallest cell: 6, "
      "volume=0.2\n"
      "Total mesh area: 3\nAverage element area: 1, sqrt(area)=1\n"
      "Largest element is element no. 0, size=1, sqrt(area)=1\nSmallest element is element no. 0, size=1, "
      "sqrt(area)=1\n"
      "Maximum bathymetry is 8 in element no. 0\nMinimum bathymetry is 1.2 in element no. 2\n"
      "Average face length is 1, shortest face is 1, longest is 1\n";
  const std::string bnd = "1 boundaries, numbers: 1\n";
  EXPECT_EQ(mi.toString(0), head + bnd);
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
