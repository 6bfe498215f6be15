#include "support/VStats.h"

#include <cmath>

#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VStats, ValuesAndReport) {
  double mean, sd, rms;
  meanStdRms({2, 4, 4, 4, 5, 5, 7, 9}, mean, sd, rms);
  EXPECT_TRUE(thTest::near({mean, sd, rms}, {5, 2, std::sqrt(232.0 / 8)}, 1e-14));  // sd: population form
  meanStdRms({}, mean, sd, rms);
  EXPECT_TRUE(std::isnan(mean) && std::isnan(sd) && std::isnan(rms));

  EXPECT_EQ(statsReport({1, -3}, mean, sd, rms),
            "count:\t2\nmin:\t1\t(idx=0)\nmax:\t3\t(idx=1)\nmean:\t-1\nvariance:\t2\nRMS:\t2.23607");
  EXPECT_TRUE(thTest::near({mean, sd}, {-1, 2}, 1e-15));
  // Magnitudes, the first of equal ones keeping the place.
  EXPECT_EQ(statsReport({-2, 2, 0.5, -0.5}),
            "count:\t4\nmin:\t0.5\t(idx=2)\nmax:\t2\t(idx=0)\nmean:\t0\nvariance:\t1.45774\nRMS:\t1.45774");
  // No values: the divisions give NaN (its sign as the machine makes it).
  std::string empty = statsReport({});
  EXPECT_EQ(empty.substr(0, 56), "count:\t0\nmin:\t1e+37\t(idx=-1)\nmax:\t-1e+37\t(idx=-1)\nmean:\t");
  EXPECT_NE(empty.find("variance:\t"), std::string::npos);
  EXPECT_EQ(empty.back(), 'n');
}
