#include "support/VStr.h"

#include <tuple>

#include "testutil/thTestUtil.h"

using namespace VCppLib::VStr;

TEST(VStr, TextHelpersAndTokenize) {
  using V = std::vector<std::string>;
  // toString: the fill stands left of the sign; 2.25 rounds half to even (of its binary value)
  EXPECT_EQ((V{toString<int>(7, -1, 2), toString<int>(123, -1, 2), toString<int>(-7, -1, 3),
               toString<double>(1.5, 3), toString<double>(1.5), toString<double>(0.1234567),
               toString<double>(1e37), toString<double>(2.25, 1, 6)}),
            (V{"07", "123", "0-7", "1.500", "1.5", "0.123457", "1e+37", "0002.2"}));
  // replaceAll does not rescan the text it inserts; toLower leaves bytes above 127 alone
  EXPECT_EQ((V{replaceAll("aaa", "a", "aa"), replaceAll("abc", "", "x"), replaceAll("a.b.c", ".", ""),
               joinStrings({"a", "b", "c"}, ", "), joinStrings({}, ",") + joinStrings({"x"}, ","),
               toLower("AbC-1\xC4"), toUpper("aBc"), boolStr(true) + boolStr(false), padLeft("ab", 5),
               padLeft("abcdef", 3), stripTrailingNewlines("a\nb\n\n\n"), stripTrailingNewlines("\n\n"),
               stripTrailingNewlines("a\r\n")}),
            (V{"aaaaaa", "abc", "abc", "a, b, c", "x", "abc-1\xC4", "ABC", "truefalse", "   ab", "abcdef",
               "a\nb", "", "a\r"}));
  EXPECT_TRUE(startsWith("hello", "he") && startsWith("hello", "") && endsWith("file.nc", ".nc") &&
              isTrueStr("true"));
  EXPECT_FALSE(startsWith("he", "hello") || startsWith("Hello", "he") || endsWith("nc", "file.nc") ||
               isTrueStr("True") || isTrueStr("true "));
  EXPECT_EQ((std::vector<int>{findNonNumeric("12.5e+3\n"), findNonNumeric(""), findNonNumeric("1 2x", false),
                              findNonNumeric("1 2x", true), findNonNumeric("x12", true)}),
            (std::vector<int>{-1, -1, 1, 3, 0}));
  // text, isInteger (digits and "-" anywhere), isNumber (a whole double, leading blanks allowed)
  const std::tuple<const char*, bool, bool> numbers[] = {
      {"--", true, false},  {"12-3", true, false}, {"007", true, true},   {"1.5", false, true},
      {"", false, false},   {" 1", false, true},   {"1e5", false, true},  {"  -2.5", false, true},
      {".5", false, true},  {"1 ", false, false},  {"abc", false, false}, {"1.5x", false, false},
      {"1,5", false, false}};
  for (auto [s, isInt, isNum] : numbers) EXPECT_TRUE(isInteger(s) == isInt && isNumber(s) == isNum) << s;
  // tokenize keeps empty tokens unless told to skip them
  EXPECT_EQ(
      (std::vector<V>{tokenize("a,,b", ",", false), tokenize("a,,b", ",", true), tokenize("a,b,", ",", false),
                      tokenize("a b\tc", " \t", false), tokenize("", ",", false), tokenize("", ",", true),
                      tokenize("abc", "", false), tokenize(",", ",", false)}),
      (std::vector<V>{
          {"a", "", "b"}, {"a", "b"}, {"a", "b", ""}, {"a", "b", "c"}, {""}, {}, {"abc"}, {"", ""}}));
}
