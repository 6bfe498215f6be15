// The numbering of columns, cells, faces and U-points, and the lengths of the rows of the tables,
// checked on a few hundred random models.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "model/thModelInfo.h"
#include "testutil/thMeshFixtures.h"

using thalmod::thModelInfo;
using VI = std::vector<int32_t>;

namespace {

// Fills a random model; returns the bottom layer that the input asks for of each element (before
// any drop), worked out independently of initCells.
VI makeRandomModel(thModelInfo& mi, std::mt19937& rng, bool negativeFrac, bool& givenEnol) {
  std::uniform_int_distribution<int32_t> side(1, 4), layers(1, 6);
  std::uniform_real_distribution<double> thick(0.5, 5.0), unit(0.0, 1.0);
  thTest::gridMesh(mi.mesh2d, side(rng), side(rng), rng, unit(rng) < 0.5);
  const int32_t noe = mi.mesh2d.noe;
  mi.nol = layers(rng);
  mi.dz = new double[mi.nol];
  double total = 0;
  for (int32_t k = 0; k < mi.nol; k++) total += (mi.dz[k] = thick(rng));
  mi.topDepth = unit(rng) < 0.3 ? unit(rng) : 0.0;
  mi.minBotFrac = negativeFrac ? -unit(rng) : (unit(rng) < 0.2 ? 0.0 : 0.3 * unit(rng));
  mi.bndFacesOn = unit(rng) < 0.7;
  mi.elemBathy = new double[noe];
  std::uniform_real_distribution<double> depth(-1.0, total + 2.0);
  for (int32_t e = 0; e < noe; e++) mi.elemBathy[e] = depth(rng);
  givenEnol = unit(rng) < 0.3;
  if (givenEnol) {
    mi.enol = new int32_t[noe];
    std::uniform_int_distribution<int32_t> n(-1, mi.nol);
    for (int32_t e = 0; e < noe; e++) mi.enol[e] = n(rng);
  }
  VI wanted;
  for (int32_t e = 0; e < noe; e++) {
    int32_t b = mi.nol - 1;  // the deepest layer whose upper edge lies above the bed
    double upperEdge = mi.topDepth;
    for (int32_t k = mi.nol - 1; k >= 0; upperEdge += mi.dz[k--])
      if (mi.elemBathy[e] > upperEdge) b = k;
    wanted.push_back(givenEnol && mi.enol[e] > 0 ? mi.nol - mi.enol[e] : b);
  }
  return wanted;
}

// Counts follow the bottom layers asked for; cell and U-point numbers are dense and agree with
// the per-cell arrays; thicknesses fill each column from the top of the stack to its sea bed.
void checkModel(const thModelInfo& mi, const VI& wanted, bool negativeFrac) {
  const auto& m = mi.mesh2d;
  const int32_t noe = m.noe, nol = mi.nol, nCols = noe + m.tnbe;
  ASSERT_TRUE(mi.isInit);
  int32_t cells = 0, dropped = 0;
  for (int32_t e = 0; e < noe; e++) {
    ASSERT_EQ(mi.enol[e], nol - wanted[e]) << e;
    cells += nol - wanted[e];
    dropped += mi.ebli[e] - wanted[e];
    ASSERT_TRUE(mi.ebli[e] == wanted[e] || (negativeFrac && mi.ebli[e] == wanted[e] + 1)) << e;
  }
  ASSERT_EQ(mi.cells, cells);
  int32_t ghostCells = 0, sumBnd = 0;
  for (int32_t i = 0; i < nCols; i++) {
    const int32_t bot = i == 0 ? 0 : mi.toplayerIdx[i - 1] + 1;
    ASSERT_EQ(VI({mi.botlayerIdx[i], mi.etli[i], mi.toplayerIdx[i]}),
              (VI{bot, nol - 1, nol - 1 + bot - (i < noe ? wanted[i] : mi.ebli[i])}))
        << i;
    if (i < noe) continue;
    ASSERT_EQ(mi.ebli[i], mi.ebli[m.bndElem[i - noe]]);  // the ghost copies the final bottom layer
    ghostCells += nol - mi.ebli[i];
  }
  ASSERT_TRUE(m.tnbe == 0 || mi.botlayerIdx[noe] == mi.cells);
  for (int32_t b = 0; b < m.nBnd; b++) sumBnd += mi.bndNoCells[b];
  ASSERT_EQ(VI({mi.totNoBndCells, sumBnd}), VI(2, ghostCells));

  // Every cell that a column's layers address maps back to that column and layer; only the cells
  // of dropped bottom layers are addressed by none.
  const int32_t allCells = mi.cells + mi.totNoBndCells;
  VI seen(allCells, 0);
  for (int32_t i = 0; i < nCols; i++) {
    for (int32_t k = mi.ebli[i]; k <= mi.etli[i]; k++) {
      const int32_t c = mi.botlayerIdx[i] + k - mi.ebli[i];
      ASSERT_TRUE(c >= 0 && c < allCells);
      seen[c]++;
      ASSERT_EQ(VI({mi.cell2elem[c], mi.cell2layer[c], mi.cellTop[c], mi.cellSeq[c], mi.cellGroup[c]}),
                (VI{i, k, mi.botlayerIdx[i] + nol - 1 - mi.ebli[i], c, 0}));
    }
  }
  ASSERT_EQ(std::count(seen.begin(), seen.end(), 0), dropped);
  ASSERT_EQ(std::count(seen.begin(), seen.end(), 1), allCells - dropped);

  // Faces: U-points dense, face after face, bottom to top.
  ASSERT_EQ(mi.totNoUvf, m.nivf + (mi.bndFacesOn ? m.tnbe : 0));
  int32_t u = 0, uInner = 0;
  for (int32_t f = 0; f < mi.totNoUvf; f++) {
    const int32_t e0 = m.vfe[2 * f], e1 = m.vfe[2 * f + 1], inner = f < m.nivf;
    const int32_t fb = inner ? std::max(mi.ebli[e0], mi.ebli[e1]) : mi.ebli[e0];
    ASSERT_TRUE(inner || e1 == noe + f - m.nivf);
    ASSERT_EQ(VI({mi.fUIdx[f], mi.fbli[f], mi.ftli[f], mi.fLayerOff[2 * f], mi.fLayerOff[2 * f + 1]}),
              (VI{u, fb, nol - 1, inner ? fb - mi.ebli[e0] : 0, inner ? fb - mi.ebli[e1] : 0}))
        << f;
    for (int32_t k = 1; k < nol - mi.fbli[f]; k++) ASSERT_EQ(mi.fdz[f][k], mi.dz[mi.fbli[f] + k]);
    u += nol - mi.fbli[f];
    uInner += inner ? nol - mi.fbli[f] : 0;
  }
  ASSERT_EQ(VI({mi.noUInner, mi.noUBnd, mi.totNoUPnts}), (VI{uInner, u - uInner, u}));
  for (int32_t e = 0; e < noe; e++)
    for (int32_t j = 0; j < m.nivfpe[e] + m.nbvfpe[e]; j++) {
      const int32_t f = m.evf[m.eni[e] + j];
      ASSERT_EQ(mi.evfbli[e][j], f < mi.totNoUvf ? mi.fbli[f] : mi.ebli[e]);
    }

  for (int32_t e = 0; e < noe; e++) {
    const int32_t b = mi.ebli[e], n = nol - b;
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
      ASSERT_NEAR(mi.cellDepth[c], mi.layerDepth[b + k] - 0.5 * mi.dz[b + k] + 0.5 * mi.edz[e][k], 1e-9);
      const bool inLayer = mi.edz[e][k] > 1e-9 && mi.edz[e][k] <= mi.dz[b + k];
      ASSERT_TRUE(!inLayer || mi.depth2Layer(e, mi.cellDepth[c]) == b + k) << e << " " << k;
      sum += mi.edz[e][k];
    }
    ASSERT_TRUE(n > 1 || mi.edzc[e][0] == 0.5 * mi.edz[e][0]) << e;
    ASSERT_NEAR(sum, mi.elemBathy[e] - mi.topDepth, 1e-9) << e;
    ASSERT_TRUE(negativeFrac || mi.edz[e][0] >= mi.minBotFrac * mi.dz[b] - 1e-9) << e;
  }
}

// Marks every entry of every row of a table with its own value and reads the marks back: a row
// that overlaps another or ends short of its length shows up as a changed mark (or, under
// AddressSanitizer, as a write out of bounds).
template <typename T, typename Len>
void markAndCheck(T** rows, int32_t nRows, Len len) {
  std::vector<std::vector<T>> want(nRows);
  for (int32_t r = 0; r < nRows; r++)
    for (int32_t k = 0; k < len(r); k++) want[r].push_back(rows[r][k] = static_cast<T>(1000 * r + k + 1));
  for (int32_t r = 0; r < nRows; r++)
    for (int32_t k = 0; k < len(r); k++) ASSERT_EQ(rows[r][k], want[r][k]) << r << " " << k;
}

// The rows of the thickness and face-layer tables have their own full length: an element's row
// its column's cells (a dropped bottom cell included), a face's its layers, the rows of centre
// distances one fewer but at least one, evfbli one entry per face of the element.
void checkRowLengths(const thModelInfo& mi) {
  const auto& m = mi.mesh2d;
  auto elem = [&mi](int32_t e) { return mi.toplayerIdx[e] - mi.botlayerIdx[e] + 1; };
  auto face = [&mi](int32_t f) { return mi.nol - mi.fbli[f]; };
  auto centres = [](auto len) { return [len](int32_t r) { return std::max(len(r) - 1, 1); }; };
  for (double** t : {mi.edz, mi.edzOld}) markAndCheck(t, m.noe, elem);
  for (double** t : {mi.fdz, mi.fdzOld}) markAndCheck(t, mi.totNoUvf, face);
  markAndCheck(mi.edzc, m.noe, centres(elem));
  markAndCheck(mi.fdzc, mi.totNoUvf, centres(face));
  markAndCheck(mi.evfbli, m.noe, [&m](int32_t e) { return m.nivfpe[e] + m.nbvfpe[e]; });
}

}  // namespace

TEST(ModelInvariants, RandomModels) {
  std::mt19937 rng(20240611);
  // How often the cases that the numbering must cope with came up.
  int32_t twoBoundaries = 0, facesOff = 0, givenEnols = 0, drops = 0, oneLayer = 0, steps = 0;
  for (int32_t run = 0; run < 300; run++) {
    SCOPED_TRACE(run);
    const bool negativeFrac = run % 5 == 4;
    bool givenEnol = false;
    thModelInfo mi;
    const VI wanted = makeRandomModel(mi, rng, negativeFrac, givenEnol);
    ASSERT_EQ(mi.initCells(), 0);
    checkModel(mi, wanted, negativeFrac);
    twoBoundaries += mi.mesh2d.nBnd == 2;
    facesOff += !mi.bndFacesOn;
    givenEnols += givenEnol;
    oneLayer += mi.nol == 1;
    for (int32_t e = 0; e < mi.mesh2d.noe; e++) drops += mi.ebli[e] != wanted[e];
    for (int32_t f = 0; f < mi.mesh2d.nivf; f++) steps += mi.fLayerOff[2 * f] + mi.fLayerOff[2 * f + 1] > 0;
    checkRowLengths(mi);
    if (negativeFrac) continue;
    // A second run (enol now given, elemBathy possibly moved) keeps the bottom layers and meets
    // the same definition of the numbering.
    ASSERT_EQ(mi.initCells(), 0);
    checkModel(mi, wanted, false);
  }
  EXPECT_GT(std::min({twoBoundaries, facesOff, givenEnols}), 50);
  EXPECT_GT(std::min(drops, oneLayer), 20);
  EXPECT_GT(steps, 300);
}
