// Inverse-distance weights of the three nearest points, and the RBF interpolation, on hand-worked
// point sets.

#include <cmath>
#include <vector>

#include "interp/VInterpol.h"
#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VInterpol, WeightsOfTheThreeNearestFarthestFirstIn2DAnd3D) {
  std::vector<double> x = {0, 2, 0, 10}, y = {0, 0, 2, 10};
  std::vector<double> tx = {0.5, 2}, ty = {0.2, 0};
  VInterpol vi;
  ASSERT_EQ(vi.init2D(x.data(), y.data(), 4, tx.data(), ty.data(), 2, vinterpolIDW), 0);
  EXPECT_TRUE(vi.isInit);
  // squared distances from (0.5, 0.2): 0.29, 2.29, 3.49, 186.29; weights 1/d^2 with p = 2
  EXPECT_EQ(vi.sources[0], (std::vector<int32_t>{2, 1, 0}));
  EXPECT_TRUE(thTest::near(vi.weights[0], {1 / 3.49, 1 / 2.29, 1 / 0.29}));
  // a target on a source point: that point alone
  EXPECT_TRUE(vi.sources[1] == std::vector<int32_t>{1} && vi.weights[1] == std::vector<double>{1.0});

  // point 0 masked out: the caller's numbers come back
  uint8_t mask[4] = {0, 1, 1, 1};
  vi.init2D(x.data(), y.data(), mask, 4, tx.data(), ty.data(), 1, vinterpolIDW);
  ASSERT_EQ(vi.sources.size(), 1u);
  EXPECT_EQ(vi.sources[0], (std::vector<int32_t>{3, 2, 1}));
  EXPECT_NEAR(vi.weights[0][0], 1 / 186.29, 1e-12);

  EXPECT_VEXCEPTION(vi.init2D(x.data(), y.data(), 4, tx.data(), ty.data(), 2, 1),
                    "Unsupported interpolation type.");
  EXPECT_TRUE(vi.sources.empty() && vi.type == 1);
  uint8_t two[4] = {0, 0, 1, 1};
  EXPECT_VEXCEPTION_HAS(vi.init2D(x.data(), y.data(), two, 4, tx.data(), ty.data(), 2, 0),
                        "but 2 remain after masking");

  // Three dimensions scale the vertical, and a second call adds to the lists.
  std::vector<double> x3 = {0, 1, 0, 0}, y3 = {0, 0, 1, 0}, z3 = {0, 0, 0, 1};
  double tx3 = 0.1, ty3 = 0, tz3 = 0.25;
  VInterpol v3;
  v3.zScale = 2;
  for (int call = 1; call <= 2; ++call) {
    v3.init3D(x3.data(), y3.data(), z3.data(), 4, &tx3, &ty3, &tz3, 1, vinterpolIDW);
    ASSERT_EQ(v3.sources.size(), static_cast<size_t>(call));
  }
  // squared distances with the vertical doubled: 0.26, 1.06, 1.26, 2.26
  EXPECT_EQ(v3.sources[1], (std::vector<int32_t>{2, 1, 0}));
  EXPECT_TRUE(thTest::near(v3.weights[1], {1 / 1.26, 1 / 1.06, 1 / 0.26}));
}

TEST(RBF3DInterpol, PassesThroughItsPointsAndRefusesCoincidentOnes) {
  std::vector<double> x = {0, 3, 0}, y = {0, 0, 4}, z = {0, 1, 2}, v = {1.5, -2, 7};
  for (auto [R, k] : {std::pair{0.0, 1}, {1.0, 1}, {2.0, 3}}) {
    double* out = nullptr;
    ASSERT_EQ(
        RBF3DInterpol(x.data(), y.data(), z.data(), v.data(), 3, x.data(), y.data(), z.data(), out, 3, R, k),
        0);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(out[i], v[i], 1e-9) << "R " << R << " k " << k;
    delete[] out;
  }
  // one point: the constant term alone; a target anywhere at depth 5 gets the value
  double* out = nullptr;
  RBF3DInterpol(x.data(), y.data(), z.data(), v.data(), 1, y.data(), x.data(), 5.0, out, 2, 1.0, 1);
  EXPECT_NEAR(out[1], 1.5, 1e-12);
  delete[] out;
  std::vector<double> same = {1, 1, 5};  // points 0 and 1 coincide: R = 0, the first pivot is 0
  EXPECT_VEXCEPTION(RBF3DInterpol(same.data(), same.data(), same.data(), v.data(), 3, x.data(), y.data(),
                                  z.data(), out, 3, 0.0, 1),
                    "RBF3DInterpol: gaussian elimination failed.");
}
