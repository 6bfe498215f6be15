#include "support/VStr.h"

#include "testutil/thTestUtil.h"

using namespace VCppLib::VStr;

TEST(VStr, ToStringPaddingAndPrecision) {
  EXPECT_EQ(toString<int>(7, -1, 2), "07");
  EXPECT_EQ(toString<int>(123, -1, 2), "123");
  EXPECT_EQ(toString<int>(-7, -1, 3), "0-7");  // the fill stands left of the sign
  EXPECT_EQ(toString<double>(1.5, 3), "1.500");
  EXPECT_EQ(toString<double>(1.5), "1.5");
  EXPECT_EQ(toString<double>(0.1234567), "0.123457");
  EXPECT_EQ(toString<double>(1e37), "1e+37");
  EXPECT_EQ(toString<double>(2.25, 1, 6), "0002.2");  // round half to even of the binary value
}

TEST(VStr, IntegerAndNumberTests) {
  const std::pair<const char*, bool> ints[] = {{"--", true}, {"12-3", true}, {"007", true},
                                               {"1.5", false}, {"", false}, {" 1", false}};
  for (auto [s, want] : ints) EXPECT_EQ(isInteger(s), want) << s;
  const std::pair<const char*, bool> nums[] = {{"1e5", true}, {"  -2.5", true}, {".5", true},
                                               {"1 ", false}, {"abc", false}, {"", false},
                                               {"1.5x", false}, {"1,5", false}};
  for (auto [s, want] : nums) EXPECT_EQ(isNumber(s), want) << s;
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

TEST(VStr, SmallTextHelpers) {
  EXPECT_EQ(replaceAll("aaa", "a", "aa"), "aaaaaa");  // the inserted text is not rescanned
  EXPECT_EQ(replaceAll("abc", "", "x"), "abc");
  EXPECT_EQ(replaceAll("a.b.c", ".", ""), "abc");
  EXPECT_EQ(joinStrings({"a", "b", "c"}, ", "), "a, b, c");
  EXPECT_EQ(joinStrings({}, ",") + joinStrings({"x"}, ","), "x");
  EXPECT_EQ(toLower("AbC-1\xC4"), "abc-1\xC4");  // bytes above 127 are left alone
  EXPECT_EQ(toUpper("aBc"), "ABC");
  EXPECT_TRUE(startsWith("hello", "he") && startsWith("hello", "") && endsWith("file.nc", ".nc"));
  EXPECT_FALSE(startsWith("he", "hello") || startsWith("Hello", "he") || endsWith("nc", "file.nc"));
  EXPECT_TRUE(isTrueStr("true"));
  EXPECT_FALSE(isTrueStr("True") || isTrueStr("true "));
  EXPECT_EQ(boolStr(true) + boolStr(false), "truefalse");
  EXPECT_EQ(padLeft("ab", 5), "   ab");
  EXPECT_EQ(padLeft("abcdef", 3), "abcdef");
  EXPECT_EQ(stripTrailingNewlines("a\nb\n\n\n"), "a\nb");
  EXPECT_EQ(stripTrailingNewlines("\n\n"), "");
  EXPECT_EQ(stripTrailingNewlines("a\r\n"), "a\r");
  EXPECT_EQ(findNonNumeric("12.5e+3\n"), -1);
  EXPECT_EQ(findNonNumeric(""), -1);
  EXPECT_EQ(findNonNumeric("1 2x", false), 1);
  EXPECT_EQ(findNonNumeric("1 2x", true), 3);
  EXPECT_EQ(findNonNumeric("x12", true), 0);
}
