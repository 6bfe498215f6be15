// Member-wise copies and clones of a mesh share arrays: every order of rebuilding, editing and
// destroying them leaves each survivor whole (the address sanitizer build checks the frees).
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "mesh/thMesh2D.h"
#include "testutil/thMeshFixtures.h"

using thalmod::thMesh2D;

namespace {

// The strip of three unit squares, both ends open: faces 0, 1 inner, 2 right end (element 2),
// 3 left end (element 0), six closed faces.
std::unique_ptr<thMesh2D> strip() {
  auto m = std::make_unique<thMesh2D>();
  thTest::stripMesh(*m, true, true);
  return m;
}

void expectWholeStrip(const thMesh2D& m) {
  EXPECT_EQ(std::vector<int>({m.nvf, m.nivf, m.vfe[1], m.vfe[3], m.bndElem[0], m.bndElem[1], m.nt[7]}),
            std::vector<int>({10, 2, 1, 2, 2, 0, 1}));
  EXPECT_EQ(std::vector<double>({m.totArea, m.nxCoor[7], m.eVoronoiX[2]}), std::vector<double>({3, 3, 2.5}));
}

}  // namespace

TEST(MeshShare, CopiesRebuiltEditedAndDestroyedInAnyOrder) {
  for (bool sourceFirst : {true, false}) {
    auto src = strip();
    src->initElemNbrs();
    auto copy = std::make_unique<thMesh2D>(*src);
    EXPECT_TRUE(copy->vfe == src->vfe && copy->eNbr == src->eNbr && copy->initFlag == src->initFlag);
    ASSERT_EQ(copy->initMesh(), 0);  // new derived arrays in the copy only
    EXPECT_TRUE(copy->vfe != src->vfe && copy->anglesVF != src->anglesVF && copy->nxCoor == src->nxCoor);
    thMesh2D edited(*copy), assigned;
    ASSERT_EQ(edited.editAddNode(5, 5, 99, true), 0);  // node arrays of its own
    assigned = edited;
    (sourceFirst ? src : copy).reset();
    expectWholeStrip(sourceFirst ? *copy : *src);
    EXPECT_EQ(assigned.non, 9);
  }
  auto raw = std::make_unique<thMesh2D>();  // filled by hand, never initialised
  raw->non = 2;
  raw->nxCoor = new double[2]{1, 2};
  thMesh2D rawCopy(*raw);
  raw.reset();
  EXPECT_EQ(rawCopy.nxCoor[1], 2.0);
}

TEST(MeshShare, CloneSharesVoronoiPoints) {
  auto orig = strip();
  std::unique_ptr<thMesh2D> c(orig->clone());
  EXPECT_TRUE(c->eVoronoiX == orig->eVoronoiX && c->eVoronoiY == orig->eVoronoiY);
  EXPECT_TRUE(c->nxCoor != orig->nxCoor && c->vfe != orig->vfe && c->initFlag != orig->initFlag);
  orig.reset();
  expectWholeStrip(*c);
}
