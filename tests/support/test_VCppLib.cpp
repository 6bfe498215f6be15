#include "support/VCppLib.h"

#include <gtest/gtest-spi.h>

#include <cstring>

#include "testutil/thTestUtil.h"

using VCppLib::VException;

TEST(VCppLib, ExceptionAndSharedConstants) {
  VException e("Something went wrong.");
  e.code = 7;
  VException copy = e;
  EXPECT_EQ(copy.code, 7);
  testing::internal::CaptureStdout();
  copy.print();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Something went wrong.\n");

  uint32_t bits;
  std::memcpy(&bits, &delVal, 4);
  EXPECT_EQ(bits, 0x8DA24260u);
  EXPECT_EQ(thGlobal::errTail,
            " If this error message makes no sense to you, please contact " + thGlobal::email);
  EXPECT_EQ(VCppLib::newline + VCppLib::VTimeStampFmt, "\n%Y%m%d%H%M%S");
  EXPECT_TRUE(VCppLib::vfloatIsDbl);
}

// The shared exception checks must fail a test when nothing is thrown or the message differs.
TEST(VCppLib, ExceptionChecksFailWhenTheyShould) {
  EXPECT_NONFATAL_FAILURE(EXPECT_VEXCEPTION((void)0, "x"), "expected a VException from (void)0");
  EXPECT_NONFATAL_FAILURE(EXPECT_VEXCEPTION(throw VException("a"), "b"), "message_");
  EXPECT_NONFATAL_FAILURE(EXPECT_VEXCEPTION_HAS(throw VException("abc"), "x"), "does not contain");
}
