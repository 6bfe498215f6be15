#include "support/VStr.h"

#include "testutil/thTestUtil.h"

using namespace VCppLib::VStr;

TEST(VStr, ToStringPaddingAndPrecision) {
  EXPECT_EQ(toString<int>(7, -1, 2), "07");
  EXPECT_EQ(toString<int>(123, -1, 2), "123");
  EXPECT_EQ(toString<int>(-7, -1, 3), "0-7");  // the fill stands left of the sign
  EXPECT_EQ(toString<int>(42), "42");
  EXPECT_EQ(toString<double>(1.5, 3), "1.500");
  EXPECT_EQ(toString<double>(1.5), "1.5");
  EXPECT_EQ(toString<double>(0.1234567), "0.123457");
  EXPECT_EQ(toString<double>(1e37), "1e+37");
  EXPECT_EQ(toString<double>(2.25, 1, 6), "0002.2");  // round half to even of the binary value
  EXPECT_EQ(toString<double>(3.0, 0), "3");
}

TEST(VStr, IntegerAndNumberTests) {
  EXPECT_TRUE(isInteger("--"));
  EXPECT_TRUE(isInteger("12-3"));
  EXPECT_TRUE(isInteger("007"));
  EXPECT_FALSE(isInteger("1.5"));
  EXPECT_FALSE(isInteger(""));
  EXPECT_FALSE(isInteger(" 1"));
  EXPECT_TRUE(isNumber("1e5"));
  EXPECT_TRUE(isNumber("  -2.5"));
  EXPECT_TRUE(isNumber(".5"));
  EXPECT_FALSE(isNumber("1 "));
  EXPECT_FALSE(isNumber("abc"));
  EXPECT_FALSE(isNumber(""));
  EXPECT_FALSE(isNumber("1.5x"));
  EXPECT_FALSE(isNumber("1,5"));
}

TEST(VStr, Tokenize) {
  using V = std::vector<std::string>;
  EXPECT_EQ(tokenize("a,,b", ",", false), (V{"a", "", "b"}));
  EXPECT_EQ(tokenize("a,,b", ",", true), (V{"a", "b"}));
  EXPECT_EQ(tokenize("a,b,", ",", false), (V{"a", "b", ""}));
  EXPECT_EQ(tokenize("a b\tc", " \t", false), (V{"a", "b", "c"}));
  EXPECT_EQ(tokenize("", ",", false), (V{""}));
  EXPECT_EQ(tokenize("", ",", true), V{});
  EXPECT_EQ(tokenize("abc", "", false), (V{"abc"}));
  EXPECT_EQ(tokenize(",", ",", false), (V{"", ""}));
}

TEST(VStr, ReplaceJoinCase) {
  EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");
  EXPECT_EQ(replaceAll("abc", "", "x"), "abc");
  EXPECT_EQ(replaceAll("a.b.c", ".", ""), "abc");
  EXPECT_EQ(replaceAll("", "a", "b"), "");
  EXPECT_EQ(joinStrings({"a", "b", "c"}, ", "), "a, b, c");
  EXPECT_EQ(joinStrings({}, ","), "");
  EXPECT_EQ(joinStrings({"x"}, ","), "x");
  EXPECT_EQ(toLower("AbC-1\xC4"), "abc-1\xC4");  // bytes above 127 are left alone
  EXPECT_EQ(toUpper("aBc"), "ABC");
}

TEST(VStr, PrefixSuffixAndSmallHelpers) {
  EXPECT_TRUE(startsWith("hello", "he"));
  EXPECT_TRUE(startsWith("hello", ""));
  EXPECT_FALSE(startsWith("he", "hello"));
  EXPECT_FALSE(startsWith("Hello", "he"));
  EXPECT_TRUE(endsWith("file.nc", ".nc"));
  EXPECT_FALSE(endsWith("nc", "file.nc"));
  EXPECT_TRUE(isTrueStr("true"));
  EXPECT_FALSE(isTrueStr("True"));
  EXPECT_FALSE(isTrueStr("true "));
  EXPECT_EQ(boolStr(true), "true");
  EXPECT_EQ(boolStr(false), "false");
  EXPECT_EQ(padLeft("ab", 5), "   ab");
  EXPECT_EQ(padLeft("abcdef", 3), "abcdef");
  EXPECT_EQ(stripTrailingNewlines("a\nb\n\n\n"), "a\nb");
  EXPECT_EQ(stripTrailingNewlines("\n\n"), "");
  EXPECT_EQ(stripTrailingNewlines("a\r\n"), "a\r");
}

TEST(VStr, FindNonNumeric) {
  EXPECT_EQ(findNonNumeric("12.5e+3\n"), -1);
  EXPECT_EQ(findNonNumeric(""), -1);
  EXPECT_EQ(findNonNumeric("1 2x", false), 1);
  EXPECT_EQ(findNonNumeric("1 2x", true), 3);
  EXPECT_EQ(findNonNumeric("x12", true), 0);
}
