// Member-wise copies and clones of a model share arrays, the mesh's included: rebuilding,
// resetting and destroying them in any order leaves each survivor whole.
#include <gtest/gtest.h>

#include <memory>

#include "model/thModelInfo.h"
#include "testutil/thMeshFixtures.h"

using thalmod::thModelInfo;

namespace {

// The strip of three unit squares, both ends open, two layers of 1 m over a bed at 2 m: six
// cells, then the ghost columns 3 (right end) and 4 (left end).
std::unique_ptr<thModelInfo> stripModel() {
  auto mi = std::make_unique<thModelInfo>();
  thTest::stripMesh(mi->mesh2d, true, true);
  mi->nol = 2;
  mi->dz = new double[2]{1, 1};
  mi->elemBathy = new double[3]{2, 2, 2};
  EXPECT_EQ(mi->initCells(), 0);
  return mi;
}

void expectWholeStrip(const thModelInfo& mi) {
  EXPECT_EQ(mi.cells + mi.botlayerIdx[4] + mi.cell2elem[5] + mi.mesh2d.vfe[1], 6 + 8 + 2 + 1);
  EXPECT_EQ(mi.edz[2][1] + mi.cellVol[5] + mi.dz[0] + mi.elemBathy[2], 1 + 1 + 1 + 2);
}

}  // namespace

TEST(ModelShare, CopiesRebuiltResetAndDestroyedInAnyOrder) {
  for (bool sourceFirst : {true, false}) {
    auto src = stripModel();
    auto copy = std::make_unique<thModelInfo>(*src);
    EXPECT_TRUE(copy->edz == src->edz && copy->dz == src->dz && copy->mesh2d.vfe == src->mesh2d.vfe);
    ASSERT_EQ(copy->mesh2d.initMesh(), 0);
    ASSERT_EQ(copy->setFlatBottom(0.5, 1), 0);  // inputs and cells of its own: 3 cells of 0.5 m
    copy->initWetDry();
    EXPECT_TRUE(copy->dz != src->dz && copy->elemBathy != src->elemBathy && src->edzInit == nullptr);
    thModelInfo reset(*src), assigned;
    reset.reset();
    assigned = *copy;
    (sourceFirst ? src : copy).reset();
    if (!sourceFirst) expectWholeStrip(*src);
    EXPECT_EQ(assigned.edzInit[2] + assigned.cellVol[2] + assigned.cells, 0.5 + 0.5 + 3);
  }
}

TEST(ModelShare, CloneOutlivesItsSource) {
  auto src = stripModel();
  std::unique_ptr<thModelInfo> c(src->clone());
  EXPECT_TRUE(c->mesh2d.eVoronoiX == src->mesh2d.eVoronoiX && c->mesh2d.nxCoor != src->mesh2d.nxCoor);
  src.reset();
  expectWholeStrip(*c);
}
