// The thickness and face-layer tables of thModelInfo (edz, fdz, evfbli and their companions): each
// row has its own full length, the buffers may swap places as the layer update swaps them, and
// every table is freed once whichever object or table pointer holds it.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "model/thModelInfo.h"
#include "modelTestMeshes.h"

using thalmod::thModelInfo;

namespace {

void gridModel(thModelInfo& mi, uint32_t seed) {
  std::mt19937 rng(seed);
  modelTest::gridMesh(mi.mesh2d, 7, 5, rng, true);
  mi.nol = 6;
  mi.dz = new double[6]{5, 4, 3, 2, 1, 0.5};
  mi.elemBathy = new double[mi.mesh2d.noe];
  for (int32_t e = 0; e < mi.mesh2d.noe; e++) mi.elemBathy[e] = 0.3 + (e * 37 % 16);
  ASSERT_EQ(mi.initCells(), 0);
}

// Every entry of every row gets its own mark; a row that overlaps another or ends short of its
// length shows up as a changed mark (or, under AddressSanitizer, as a write out of bounds).
template <typename T, typename Len>
void markAndCheck(T** rows, int32_t nRows, Len len, const char* what) {
  std::vector<std::vector<T>> want(nRows);
  for (int32_t r = 0; r < nRows; r++)
    for (int32_t k = 0; k < len(r); k++) want[r].push_back(rows[r][k] = static_cast<T>(1000 * r + k + 1));
  for (int32_t r = 0; r < nRows; r++)
    for (int32_t k = 0; k < len(r); k++) ASSERT_EQ(rows[r][k], want[r][k]) << what << " " << r << " " << k;
}

}  // namespace

TEST(ModelRowTables, RowsHaveTheirOwnFullLength) {
  thModelInfo mi;
  gridModel(mi, 5);
  const thalmod::thMesh2D& m = mi.mesh2d;
  ASSERT_GT(mi.cells, m.noe);  // the bathymetry gives columns of several lengths
  const int32_t nol = mi.nol;
  auto elemLen = [&](int32_t e) { return nol - mi.ebli[e]; };
  auto elemCentres = [&](int32_t e) { return std::max(nol - mi.ebli[e] - 1, 1); };
  auto faceLen = [&](int32_t f) { return nol - mi.fbli[f]; };
  auto faceCentres = [&](int32_t f) { return std::max(nol - mi.fbli[f] - 1, 1); };
  auto faces = [&](int32_t e) { return m.nivfpe[e] + m.nbvfpe[e]; };
  markAndCheck(mi.edz, m.noe, elemLen, "edz");
  markAndCheck(mi.edzOld, m.noe, elemLen, "edzOld");
  markAndCheck(mi.edzc, m.noe, elemCentres, "edzc");
  markAndCheck(mi.fdz, mi.totNoUvf, faceLen, "fdz");
  markAndCheck(mi.fdzOld, mi.totNoUvf, faceLen, "fdzOld");
  markAndCheck(mi.fdzc, mi.totNoUvf, faceCentres, "fdzc");
  markAndCheck(mi.evfbli, m.noe, faces, "evfbli");
}

TEST(ModelRowTables, SwappedBuffersAreFreedWithTheirTables) {
  thModelInfo mi;
  gridModel(mi, 9);
  // The layer update swaps the table pointers of the double buffers.
  mi.edzOld[0][0] = 42.0;
  mi.fdzOld[1][0] = 43.0;
  std::swap(mi.edz, mi.edzOld);
  std::swap(mi.fdz, mi.fdzOld);
  {
    thModelInfo copy(mi);  // shares the swapped tables
    EXPECT_EQ(copy.edz[0][0], 42.0);
    EXPECT_EQ(copy.fdz[1][0], 43.0);
    // The original rebuilds: it gets tables of its own, the copy keeps the shared ones.
    ASSERT_EQ(mi.initCells(), 0);
    EXPECT_NE(mi.edz[0][0], 42.0);
    EXPECT_EQ(copy.edz[0][0], 42.0);
    EXPECT_EQ(copy.fdz[1][0], 43.0);
  }
  std::swap(mi.fdz, mi.fdzOld);
  std::unique_ptr<thModelInfo> clone(mi.clone());
  EXPECT_EQ(clone->edz[0][0], mi.edz[0][0]);
  mi.reset();
  EXPECT_EQ(mi.edz, nullptr);
  EXPECT_EQ(clone->cells, clone->botlayerIdx[clone->mesh2d.noe]);
}

// Dropping a thin bottom cell (minBotFrac < 0) shortens the column but not its row or its cell
// range: the entries that no layer of the column reaches are 0.
TEST(ModelRowTables, DroppedBottomCellLeavesZeros) {
  thModelInfo mi;
  modelTest::stripMesh(mi.mesh2d, true, true);
  mi.nol = 4;
  mi.dz = new double[4]{4, 3, 2, 1};  // upper edges of the layers 6, 3, 1, 0
  mi.elemBathy = new double[3]{8.0, 3.0, 1.05};
  mi.minBotFrac = -0.5;
  ASSERT_EQ(mi.initCells(), 0);
  // Element 2 starts in layer 2 with a 0.05 bottom cell, below 0.5 x 2: it moves to layer 3 with
  // a full cell of 1. Its row of two keeps a second entry, its cells are 6 and 7, and cell 7 is
  // reached by no layer.
  ASSERT_EQ(mi.ebli[2], 3);
  ASSERT_EQ(mi.botlayerIdx[2], 6);
  EXPECT_EQ(std::vector<double>(mi.edz[2], mi.edz[2] + 2), (std::vector<double>{1.0, 0.0}));
  EXPECT_EQ(std::vector<double>(mi.edzOld[2], mi.edzOld[2] + 2), (std::vector<double>{1.0, 0.0}));
  EXPECT_EQ(mi.edzc[2][0], 0.5);
  EXPECT_EQ(std::vector<int32_t>({mi.cell2elem[7], mi.cell2layer[7], mi.cellTop[7]}), (std::vector<int32_t>{0, 0, 0}));
  EXPECT_EQ(mi.cellVol[7], 0.0);
  EXPECT_EQ(mi.cellDepth[7], 0.0);
  EXPECT_EQ(mi.cellSeq[7], 7);
  // The columns beside it are whole: element 1 (bed 3, layers 2 and 3) and the first ghost cell.
  EXPECT_EQ(std::vector<int32_t>({mi.cell2elem[4], mi.cell2elem[5], mi.cell2elem[6], mi.cell2elem[8]}),
            (std::vector<int32_t>{1, 1, 2, 3}));
}
