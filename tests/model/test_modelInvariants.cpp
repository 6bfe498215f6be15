// The numbering of columns, cells, faces and U-points checked on a few hundred random models.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "model/thModelInfo.h"
#include "modelTestMeshes.h"

using thalmod::thModelInfo;

namespace {

struct RandomModel {
  bool givenEnol = false;
  std::vector<int32_t> ebliWanted;  // the bottom layers that the input asks for, before any drop
};

RandomModel makeRandomModel(thModelInfo& mi, std::mt19937& rng, bool negativeFrac) {
  RandomModel r;
  std::uniform_int_distribution<int32_t> side(1, 4), layers(1, 6);
  modelTest::gridMesh(mi.mesh2d, side(rng), side(rng), rng, std::bernoulli_distribution(0.5)(rng));
  const int32_t noe = mi.mesh2d.noe;
  mi.nol = layers(rng);
  mi.dz = new double[mi.nol];
  std::uniform_real_distribution<double> thick(0.5, 5.0), unit(0.0, 1.0);
  double total = 0;
  for (int32_t k = 0; k < mi.nol; k++) total += (mi.dz[k] = thick(rng));
  mi.topDepth = unit(rng) < 0.3 ? unit(rng) : 0.0;
  mi.minBotFrac = negativeFrac ? -unit(rng) : (unit(rng) < 0.2 ? 0.0 : 0.3 * unit(rng));
  mi.bndFacesOn = unit(rng) < 0.7;
  mi.elemBathy = new double[noe];
  std::uniform_real_distribution<double> depth(-1.0, total + 2.0);
  for (int32_t e = 0; e < noe; e++) mi.elemBathy[e] = depth(rng);
  r.givenEnol = unit(rng) < 0.3;
  if (r.givenEnol) {
    mi.enol = new int32_t[noe];
    std::uniform_int_distribution<int32_t> n(-1, mi.nol);
    for (int32_t e = 0; e < noe; e++) mi.enol[e] = n(rng);
  }
  // The bottom layer the input asks for, worked out independently of initCells.
  for (int32_t e = 0; e < noe; e++) {
    if (r.givenEnol && mi.enol[e] > 0) {
      r.ebliWanted.push_back(mi.nol - mi.enol[e]);
      continue;
    }
    double upperEdge = mi.topDepth;  // upper edge of layer k, walking from the top down
    int32_t b = mi.nol - 1;
    for (int32_t k = mi.nol - 1; k >= 0; k--) {
      if (mi.elemBathy[e] > upperEdge) b = k;
      upperEdge += mi.dz[k];
    }
    r.ebliWanted.push_back(b);
  }
  return r;
}

// Invariants that hold whatever minBotFrac is: the counts follow the bottom layers asked for,
// the cell and U-point numbers are dense and consistent with the per-cell arrays.
void checkNumbering(const thModelInfo& mi, const RandomModel& r, bool negativeFrac) {
  const auto& m = mi.mesh2d;
  const int32_t noe = m.noe, nol = mi.nol, nCols = noe + m.tnbe;
  ASSERT_TRUE(mi.isInit);
  int32_t cells = 0;
  for (int32_t e = 0; e < noe; e++) {
    ASSERT_EQ(mi.enol[e], nol - r.ebliWanted[e]) << e;
    cells += nol - r.ebliWanted[e];
    if (negativeFrac) {
      ASSERT_TRUE(mi.ebli[e] == r.ebliWanted[e] || mi.ebli[e] == r.ebliWanted[e] + 1) << e;
    } else {
      ASSERT_EQ(mi.ebli[e], r.ebliWanted[e]) << e;
    }
  }
  ASSERT_EQ(mi.cells, cells);
  for (int32_t i = 0; i < nCols; i++) {
    ASSERT_EQ(mi.botlayerIdx[i], i == 0 ? 0 : mi.toplayerIdx[i - 1] + 1) << i;
    ASSERT_EQ(mi.etli[i], nol - 1);
    const int32_t bottom = i < noe ? r.ebliWanted[i] : mi.ebli[i];
    ASSERT_EQ(mi.toplayerIdx[i], nol - 1 + mi.botlayerIdx[i] - bottom);
  }
  if (m.tnbe > 0) {
    ASSERT_EQ(mi.botlayerIdx[noe], mi.cells);
  }
  // Ghost columns copy the (final) bottom layer of their element, and count per boundary.
  int32_t ghostCells = 0;
  for (int32_t j = 0; j < m.tnbe; j++) {
    ASSERT_EQ(mi.ebli[noe + j], mi.ebli[m.bndElem[j]]);
    ghostCells += nol - mi.ebli[noe + j];
  }
  ASSERT_EQ(mi.totNoBndCells, ghostCells);
  int32_t sumBnd = 0;
  for (int32_t b = 0; b < m.nBnd; b++) sumBnd += mi.bndNoCells[b];
  ASSERT_EQ(sumBnd, ghostCells);

  // Every cell that a column's layers address maps back to that column and layer.
  const int32_t allCells = mi.cells + mi.totNoBndCells;
  std::vector<int32_t> seen(allCells, 0);
  for (int32_t i = 0; i < nCols; i++) {
    for (int32_t k = mi.ebli[i]; k <= mi.etli[i]; k++) {
      const int32_t c = mi.botlayerIdx[i] + k - mi.ebli[i];
      ASSERT_GE(c, 0);
      ASSERT_LT(c, allCells);
      seen[c]++;
      ASSERT_EQ(mi.cell2elem[c], i);
      ASSERT_EQ(mi.cell2layer[c], k);
      ASSERT_EQ(mi.cellTop[c], mi.botlayerIdx[i] + nol - 1 - mi.ebli[i]);
      ASSERT_EQ(mi.cellSeq[c], c);
      ASSERT_EQ(mi.cellGroup[c], 0);
    }
  }
  int32_t unused = 0;  // cells of dropped bottom layers
  for (int32_t c = 0; c < allCells; c++) {
    ASSERT_LE(seen[c], 1);
    unused += seen[c] == 0;
  }
  int32_t dropped = 0;
  for (int32_t e = 0; e < noe; e++) dropped += mi.ebli[e] - r.ebliWanted[e];
  ASSERT_EQ(unused, dropped);

  // Faces: U-points dense, face after face, bottom to top.
  ASSERT_EQ(mi.totNoUvf, m.nivf + (mi.bndFacesOn ? m.tnbe : 0));
  int32_t u = 0, uInner = 0;
  for (int32_t f = 0; f < mi.totNoUvf; f++) {
    const int32_t e0 = m.vfe[2 * f], e1 = m.vfe[2 * f + 1];
    ASSERT_EQ(mi.fUIdx[f], u);
    if (f < m.nivf) {
      ASSERT_EQ(mi.fbli[f], std::max(mi.ebli[e0], mi.ebli[e1]));
      ASSERT_EQ(mi.fLayerOff[2 * f], mi.fbli[f] - mi.ebli[e0]);
      ASSERT_EQ(mi.fLayerOff[2 * f + 1], mi.fbli[f] - mi.ebli[e1]);
      uInner += nol - mi.fbli[f];
    } else {
      ASSERT_EQ(e1, noe + f - m.nivf);
      ASSERT_EQ(mi.fbli[f], mi.ebli[e0]);
      ASSERT_EQ(mi.fLayerOff[2 * f], 0);
      ASSERT_EQ(mi.fLayerOff[2 * f + 1], 0);
    }
    ASSERT_EQ(mi.ftli[f], nol - 1);
    for (int32_t k = 1; k < nol - mi.fbli[f]; k++) ASSERT_EQ(mi.fdz[f][k], mi.dz[mi.fbli[f] + k]);
    u += nol - mi.fbli[f];
  }
  ASSERT_EQ(mi.noUInner, uInner);
  ASSERT_EQ(mi.noUBnd, u - uInner);
  ASSERT_EQ(mi.totNoUPnts, u);
  for (int32_t e = 0; e < noe; e++) {
    for (int32_t j = 0; j < m.nivfpe[e] + m.nbvfpe[e]; j++) {
      const int32_t f = m.evf[m.eni[e] + j];
      ASSERT_EQ(mi.evfbli[e][j], f < mi.totNoUvf ? mi.fbli[f] : mi.ebli[e]);
    }
  }
}

// Thicknesses and volumes of the columns.
void checkThickness(const thModelInfo& mi, bool negativeFrac) {
  const auto& m = mi.mesh2d;
  for (int32_t e = 0; e < m.noe; e++) {
    const int32_t b = mi.ebli[e], n = mi.nol - b;
    double sum = 0;
    for (int32_t k = 0; k < n; k++) {
      if (k >= 1) {
        ASSERT_EQ(mi.edz[e][k], mi.dz[b + k]);
        ASSERT_DOUBLE_EQ(mi.edzc[e][k - 1], 0.5 * (mi.edz[e][k - 1] + mi.edz[e][k]));
      }
      ASSERT_EQ(mi.edzOld[e][k], mi.edz[e][k]);
      const int32_t c = mi.botlayerIdx[e] + k;
      ASSERT_NEAR(mi.cellVol[c], mi.edz[e][k] * m.eArea[e], 1e-9);
      // The centre of each cell lies in its layer and depth2Layer finds it there.
      const double upper = mi.layerDepth[b + k] - 0.5 * mi.dz[b + k];
      ASSERT_NEAR(mi.cellDepth[c], upper + 0.5 * mi.edz[e][k], 1e-9);
      if (mi.edz[e][k] > 1e-9 && mi.edz[e][k] <= mi.dz[b + k]) {
        ASSERT_EQ(mi.depth2Layer(e, mi.cellDepth[c]), b + k);
      }
      sum += mi.edz[e][k];
    }
    if (n == 1) {
      ASSERT_DOUBLE_EQ(mi.edzc[e][0], 0.5 * mi.edz[e][0]);
    }
    // The cells fill the column from the top of the stack to the (possibly moved) sea bed.
    ASSERT_NEAR(sum, mi.elemBathy[e] - mi.topDepth, 1e-9) << e;
    if (!negativeFrac) {
      ASSERT_GE(mi.edz[e][0], mi.minBotFrac * mi.dz[b] - 1e-9) << e;
    }
  }
}

}  // namespace

TEST(ModelInvariants, RandomModels) {
  std::mt19937 rng(20240611);
  // How often the cases that the numbering must cope with came up.
  int32_t twoBoundaries = 0, facesOff = 0, givenEnol = 0, drops = 0, oneLayer = 0, steps = 0;
  for (int32_t run = 0; run < 300; run++) {
    SCOPED_TRACE(run);
    const bool negativeFrac = run % 5 == 4;
    thModelInfo mi;
    RandomModel r = makeRandomModel(mi, rng, negativeFrac);
    ASSERT_EQ(mi.initCells(), 0);
    checkNumbering(mi, r, negativeFrac);
    checkThickness(mi, negativeFrac);
    twoBoundaries += mi.mesh2d.nBnd == 2;
    facesOff += !mi.bndFacesOn;
    givenEnol += r.givenEnol;
    oneLayer += mi.nol == 1;
    for (int32_t e = 0; e < mi.mesh2d.noe; e++) drops += mi.ebli[e] != r.ebliWanted[e];
    for (int32_t f = 0; f < mi.mesh2d.nivf; f++) steps += mi.fLayerOff[2 * f] + mi.fLayerOff[2 * f + 1] > 0;
    if (negativeFrac) continue;
    // A second run rebuilds the same numbering (enol is now given, elemBathy possibly moved).
    std::vector<int32_t> bot(mi.botlayerIdx, mi.botlayerIdx + mi.mesh2d.noe + mi.mesh2d.tnbe);
    std::vector<int32_t> uIdx(mi.fUIdx, mi.fUIdx + mi.totNoUvf);
    ASSERT_EQ(mi.initCells(), 0);
    ASSERT_EQ(std::vector<int32_t>(mi.botlayerIdx, mi.botlayerIdx + bot.size()), bot);
    ASSERT_EQ(std::vector<int32_t>(mi.fUIdx, mi.fUIdx + uIdx.size()), uIdx);
  }
  EXPECT_GT(twoBoundaries, 50);
  EXPECT_GT(facesOff, 50);
  EXPECT_GT(givenEnol, 50);
  EXPECT_GT(drops, 20);
  EXPECT_GT(oneLayer, 20);
  EXPECT_GT(steps, 300);
}
