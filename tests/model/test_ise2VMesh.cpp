// The vertical section mesh on the small model: layers of 10, 5 and 2 m (bottom first), so lower
// layer edges at heights -17, -7 and -2 and the surface at 0; bottom layers (ebli) 0, 1, 2, 0.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "model/thModelInfo.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

namespace {

using V = std::vector<double>;
using I = std::vector<int32_t>;

// x, y, en (and nt) of the section mesh.
void expectMesh(const thalmod::thModelInfo& mi, I ise, V isd, const double* ish, V x, V y, I en, I nt = {}) {
  std::unique_ptr<thalmod::thMesh2D> m(
      mi.ise2VMesh(ise.data(), isd.data(), static_cast<int32_t>(ise.size()), ish));
  EXPECT_EQ(V(m->nxCoor, m->nxCoor + m->non), x);
  EXPECT_EQ(V(m->nyCoor, m->nyCoor + m->non), y);
  EXPECT_EQ(I(m->en, m->en + m->nevf), en);
  if (!nt.empty()) {
    EXPECT_EQ(I(m->nt, m->nt + m->non), nt);
  }
}

TEST(Ise2VMesh, ZLayersAtASeaBedStepAndOutside) {
  thalmod::thModelInfo mi;
  thTest::buildSmallModel(mi);
  // e0 (3 layers), e1 (2): the middle column reaches down to e0's bottom. initMesh takes the node
  // types from the faces: node 6 (100, -2) alone has cells all round it.
  const I en01 = {0, 4, 5, 1, 1, 5, 6, 2, 2, 6, 7, 3, 5, 8, 9, 6, 6, 9, 10, 7};
  expectMesh(mi, {0, 1}, {100, 200}, nullptr, {0, 0, 0, 0, 100, 100, 100, 100, 200, 200, 200},
             {-17, -7, -2, 0, -17, -7, -2, 0, -7, -2, 0}, en01, {99, 99, 99, 99, 99, 99, 0, 99, 99, 99, 99});
  // surface heights: each column takes that of the element before it
  const double ish[] = {0.5, 0.3};
  expectMesh(mi, {0, 1}, {100, 200}, ish, {0, 0, 0, 0, 100, 100, 100, 100, 200, 200, 200},
             {-17, -7, -2, 0.5, -17, -7, -2, 0.5, -7, -2, 0.3}, en01);
  // e2 (the top layer only), a stretch outside (no nodes of its own), e3
  expectMesh(mi, {2, -1, 3}, {50, 150, 250}, nullptr, {0, 0, 50, 50, 150, 150, 150, 150, 250, 250, 250, 250},
             {-2, 0, -2, 0, -17, -7, -2, 0, -17, -7, -2, 0},
             {0, 2, 3, 1, 4, 8, 9, 5, 5, 9, 10, 6, 6, 10, 11, 7});
}

TEST(Ise2VMesh, SigmaLayersAndOtherKinds) {
  thalmod::thModelInfo mi;
  thTest::buildSmallModel(mi);
  mi.layerType = thalmod::sigma;  // layer edges scale with the element's depth, 5 m for e1
  expectMesh(mi, {1}, {100}, nullptr, {0, 100, 0, 100, 0, 100, 0, 100}, {-85, -85, -35, -35, -10, -10, 0, 0},
             {0, 2, 3, 1, 2, 4, 5, 3, 4, 6, 7, 5});
  mi.layerType = 7;
  EXPECT_VEXCEPTION(expectMesh(mi, {1}, {100}, nullptr, {}, {}, {}), "ise2VMesh: Not implemented.");
}

}  // namespace
