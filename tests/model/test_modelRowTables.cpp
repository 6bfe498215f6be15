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
#include "testutil/thMeshFixtures.h"

using thalmod::thModelInfo;

namespace {

void gridModel(thModelInfo& mi, uint32_t seed) {
  std::mt19937 rng(seed);
  thTest::gridMesh(mi.mesh2d, 7, 5, rng, true);
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
