#include "support/VStr.h"

#include "testutil/thTestUtil.h"

using namespace VCppLib::VStr;

TEST(VStr, TextHelpersByTable) {
  using S = std::string;
  const std::pair<S, S> cases[] = {
      {toString<int>(7, -1, 2), "07"},
      {toString<int>(123, -1, 2), "123"},
      {toString<int>(-7, -1, 3), "0-7"},  // the fill stands left of the sign
      {toString<double>(1.5, 3), "1.500"},
      {toString<double>(1.5), "1.5"},
      {toString<double>(0.1234567), "0.123457"},
      {toString<double>(1e37), "1e+37"},
      {toString<double>(2.25, 1, 6), "0002.2"},  // round half to even of the binary value
      {replaceAll("aaa", "a", "aa"), "aaaaaa"},  // the inserted text is not rescanned
      {replaceAll("abc", "", "x"), "abc"},
      {replaceAll("a.b.c", ".", ""), "abc"},
      {joinStrings({"a", "b", "c"}, ", "), "a, b, c"},
      {joinStrings({}, ",") + joinStrings({"x"}, ","), "x"},
      {toLower("AbC-1\xC4"), "abc-1\xC4"},  // bytes above 127 are left alone
      {toUpper("aBc"), "ABC"},
      {boolStr(true) + boolStr(false), "truefalse"},
      {padLeft("ab", 5), "   ab"},
      {padLeft("abcdef", 3), "abcdef"},
      {stripTrailingNewlines("a\nb\n\n\n"), "a\nb"},
      {stripTrailingNewlines("\n\n"), ""},
      {stripTrailingNewlines("a\r\n"), "a\r"}};
  for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
  EXPECT_TRUE(startsWith("hello", "he") && startsWith("hello", "") && endsWith("file.nc", ".nc") &&
              isTrueStr("true"));
  EXPECT_FALSE(startsWith("he", "hello") || startsWith("Hello", "he") || endsWith("nc", "file.nc") ||
               isTrueStr("True") || isTrueStr("true "));
  EXPECT_EQ((std::vector<int>{findNonNumeric("12.5e+3\n"), findNonNumeric(""), findNonNumeric("1 2x", false),
                              findNonNumeric("1 2x", true), findNonNumeric("x12", true)}),
            (std::vector<int>{-1, -1, 1, 3, 0}));
}

TEST(VStr, IntegerAndNumberTests) {
  const std::pair<const char*, bool> ints[] = {{"--", true},   {"12-3", true}, {"007", true},
                                               {"1.5", false}, {"", false},    {" 1", false}};
  for (auto [s, want] : ints) EXPECT_EQ(isInteger(s), want) << s;
  const std::pair<const char*, bool> nums[] = {{"1e5", true},   {"  -2.5", true}, {".5", true},
                                               {"1 ", false},   {"abc", false},   {"", false},
                                               {"1.5x", false}, {"1,5", false}};
  for (auto [s, want] : nums) EXPECT_EQ(isNumber(s), want) << s;
}

TEST(VStr, Tokenize) {
  using V = std::vector<std::string>;
  const struct {
    const char *text, *delims;
    bool skipEmpty;
    V want;
  } cases[] = {{"a,,b", ",", false, {"a", "", "b"}},
               {"a,,b", ",", true, {"a", "b"}},
               {"a,b,", ",", false, {"a", "b", ""}},
               {"a b\tc", " \t", false, {"a", "b", "c"}},
               {"", ",", false, {""}},
               {"", ",", true, {}},
               {"abc", "", false, {"abc"}},
               {",", ",", false, {"", ""}}};
  for (const auto& c : cases) EXPECT_EQ(tokenize(c.text, c.delims, c.skipEmpty), c.want) << c.text;
}
