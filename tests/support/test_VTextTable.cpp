#include "support/VTextTable.h"

#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VTextTable, CommentsAndDelimiter) {
  // Block comments nest; each kind goes once a step, in the order "<!--", "/*", "//", so that a second
  // block right behind one of the same kind comes through as text.
  using V = std::vector<std::string>;
  EXPECT_EQ((V{removeComments("a /* b /* c */ d */ e"), removeComments("x <!-- y --> z"),
               removeComments("a // b\nc"), removeComments("no comment"), removeComments(""),
               removeComments("a/*b*/"), removeComments("<!--a-->/*b*///c\nd"),
               removeComments("<!--a--><!--b-->"), removeComments("/*a*//*b*/")}),
            (V{"a  e", "x  z", "a \nc", "no comment", "", "a", "\nd", "<!--b-->", "/*b*/"}));
  for (const char* in : {"a // b", "a /* b", "a /* b /* c */", "<!-- x"})
    EXPECT_VEXCEPTION(removeComments(in), "Unmatched comment block. ");
  // A long run of nested openings must not exhaust the stack.
  std::string deep;
  for (int i = 0; i < 200000; i++) deep += "/*";
  for (int i = 0; i < 200000; i++) deep += "*/";
  EXPECT_EQ(removeComments("a" + deep + "b"), "ab");

  int32_t p1 = 2, p2 = 2, p3 = 0, pos = 40;
  skipCommentBlock("a /* x */ b", p1, "/*", "*/", true);
  skipCommentBlock("a /* x */ b", p2, "/*", "*/", false);
  // Nested "//" inside a line comment is a block of its own that swallows its line end.
  skipCommentBlock("// a // b\nc\nd", p3, "//", "\n", false);
  EXPECT_EQ((std::vector<int32_t>{p1, p2, p3}), (std::vector<int32_t>{9, 7, 11}));
  EXPECT_VEXCEPTION_HAS(skipCommentBlock("/* */", pos, "/*", "*/", true), "outside the text");

  // candidates in their own order
  EXPECT_EQ(std::string() + detectDelimiter("1;2 3", " ;") + detectDelimiter("1;2 3", ";") +
                detectDelimiter("1,2", "\t;,"),
            " ;,");
  for (auto [text, cands] : {std::pair{"123", ",;"}, {"1,2", ""}, {"", ","}})
    EXPECT_VEXCEPTION(detectDelimiter(text, cands), "Delimiter could not be detected.");
}

TEST(VTextTable, ReadXYZAndFirstLine) {
  thTest::TempDir dir;
  std::vector<double> x, y, z;
  std::vector<std::string> header;
  auto read = [&](const std::string& content, const std::string& delim) {
    thTest::writeText(dir.file("t.xyz"), content);
    x.clear(), y.clear(), z.clear(), header.clear();
    return readXYZ(dir.file("t.xyz"), x, y, z, header, delim);
  };
  using V = std::vector<double>;
  EXPECT_EQ(read("1 2 3\n4.5 5 6\n0.1 -2e3 7\n", " "), 3);
  EXPECT_TRUE(header.empty() && y == (V{2, 5, -2000}) && z == (V{3, 6, 7}));
  EXPECT_EQ(x, (V{1, 4.5, static_cast<double>(0.1f)}));  // single precision
  EXPECT_EQ(read("x y z\n1 2 3\n", " "), 1);
  EXPECT_TRUE(header == (std::vector<std::string>{"x", "y", "z"}) && z == (V{3}));
  // a short row ends the reading
  EXPECT_TRUE(read("1,2,3\n4,5,6\n7,8\n9,10,11\n", ",") == 2 && x == (V{1, 4}));
  EXPECT_EQ(read("1;2;3", ";"), 1);    // no line end at all
  EXPECT_EQ(read("1%2%3\n", "%"), 1);  // a "%" in the delimiter is taken literally
  // An empty file is readable: its first line is empty, a header of one empty name, no rows.
  EXPECT_TRUE(read("", " ") == 0 && header == std::vector<std::string>(1));
  EXPECT_TRUE(read(std::string("\0\xff\x10\n\x80\x61\0", 7), " ") == 0 && header.size() == 1);  // garbage
  EXPECT_EQ(readXYZ(dir.file("missing.xyz"), x, y, z, header, " "), -1);

  for (auto [content, line] : {std::pair{"first\nsecond\n", "first\n"}, {"only", "only\n"}, {"", "\n"}}) {
    thTest::writeText(dir.file("a.txt"), content);
    EXPECT_EQ(readFirstLine(dir.file("a.txt")), (std::vector<std::string>{line}));
  }
  EXPECT_TRUE(readFirstLine(dir.file("none.txt")).empty());
  EXPECT_TRUE(readFirstLine(dir.path()).empty());  // a directory
}
