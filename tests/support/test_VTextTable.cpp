#include "support/VTextTable.h"

#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VTextTable, RemoveComments) {
  EXPECT_EQ(removeComments("a /* b /* c */ d */ e"), "a  e");  // block comments nest
  EXPECT_EQ(removeComments("x <!-- y --> z"), "x  z");
  EXPECT_EQ(removeComments("a // b\nc"), "a \nc");
  EXPECT_EQ(removeComments("no comment"), "no comment");
  EXPECT_EQ(removeComments(""), "");
  EXPECT_EQ(removeComments("a/*b*/"), "a");  // a block at the very end
  // Each kind is tried once a step, in order: "<!--", "/*", "//".
  EXPECT_EQ(removeComments("<!--a-->/*b*///c\nd"), "\nd");
  // A second block right behind one of the same kind comes through as text.
  EXPECT_EQ(removeComments("<!--a--><!--b-->"), "<!--b-->");
  EXPECT_EQ(removeComments("/*a*//*b*/"), "/*b*/");
  EXPECT_VEXCEPTION(removeComments("a // b"), "Unmatched comment block. ");
  EXPECT_VEXCEPTION(removeComments("a /* b"), "Unmatched comment block. ");
  EXPECT_VEXCEPTION(removeComments("a /* b /* c */"), "Unmatched comment block. ");
  EXPECT_VEXCEPTION(removeComments("<!-- x"), "Unmatched comment block. ");
  // A long run of nested openings must not exhaust the stack.
  std::string deep;
  for (int i = 0; i < 200000; i++) deep += "/*";
  for (int i = 0; i < 200000; i++) deep += "*/";
  EXPECT_EQ(removeComments("a" + deep + "b"), "ab");
}

TEST(VTextTable, SkipCommentBlock) {
  int32_t pos = 2;
  skipCommentBlock("a /* x */ b", pos, "/*", "*/", true);
  EXPECT_EQ(pos, 9);
  pos = 2;
  skipCommentBlock("a /* x */ b", pos, "/*", "*/", false);
  EXPECT_EQ(pos, 7);
  // Nested "//" inside a line comment is a block of its own that swallows its line end.
  pos = 0;
  skipCommentBlock("// a // b\nc\nd", pos, "//", "\n", false);
  EXPECT_EQ(pos, 11);
  pos = 40;
  EXPECT_VEXCEPTION_HAS(skipCommentBlock("/* */", pos, "/*", "*/", true), "outside the text");
}

TEST(VTextTable, DetectDelimiter) {
  EXPECT_EQ(detectDelimiter("1;2 3", " ;"), ' ');  // candidates in their own order
  EXPECT_EQ(detectDelimiter("1;2 3", ";"), ';');
  EXPECT_EQ(detectDelimiter("1,2", "\t;,"), ',');
  EXPECT_VEXCEPTION(detectDelimiter("123", ",;"), "Delimiter could not be detected.");
  EXPECT_VEXCEPTION(detectDelimiter("1,2", ""), "Delimiter could not be detected.");
  EXPECT_VEXCEPTION(detectDelimiter("", ","), "Delimiter could not be detected.");
}

TEST(VTextTable, ReadXYZ) {
  thTest::TempDir dir;
  std::vector<double> x, y, z;
  std::vector<std::string> header;
  std::string plain = dir.file("plain.xyz");
  thTest::writeText(plain, "1 2 3\n4.5 5 6\n0.1 -2e3 7\n");
  EXPECT_EQ(readXYZ(plain, x, y, z, header, " "), 3);
  EXPECT_TRUE(header.empty());
  EXPECT_EQ(x, (std::vector<double>{1, 4.5, static_cast<double>(0.1f)}));  // single precision
  EXPECT_EQ(y, (std::vector<double>{2, 5, -2000}));
  EXPECT_EQ(z, (std::vector<double>{3, 6, 7}));

  std::string withHeader = dir.file("header.xyz");
  thTest::writeText(withHeader, "x y z\n1 2 3\n");
  x.clear(), y.clear(), z.clear();
  EXPECT_EQ(readXYZ(withHeader, x, y, z, header, " "), 1);
  EXPECT_EQ(header, (std::vector<std::string>{"x", "y", "z"}));
  EXPECT_EQ(z, (std::vector<double>{3}));

  std::string broken = dir.file("broken.xyz");  // a short row ends the reading
  thTest::writeText(broken, "1,2,3\n4,5,6\n7,8\n9,10,11\n");
  x.clear(), y.clear(), z.clear();
  EXPECT_EQ(readXYZ(broken, x, y, z, header, ","), 2);
  EXPECT_EQ(x, (std::vector<double>{1, 4}));

  std::string noEnd = dir.file("noend.xyz");  // no line end at all
  thTest::writeText(noEnd, "1;2;3");
  x.clear(), y.clear(), z.clear();
  EXPECT_EQ(readXYZ(noEnd, x, y, z, header, ";"), 1);

  // An empty file is readable: its first line is empty, a header of one empty name, no rows.
  std::string empty = dir.file("empty.xyz");
  thTest::writeText(empty, "");
  x.clear(), y.clear(), z.clear();
  EXPECT_EQ(readXYZ(empty, x, y, z, header, " "), 0);
  EXPECT_EQ(header, (std::vector<std::string>{""}));
  EXPECT_EQ(readXYZ(dir.file("missing.xyz"), x, y, z, header, " "), -1);

  std::string garbage = dir.file("garbage.xyz");
  thTest::writeBytes(garbage, {0x00, 0xff, 0x10, '\n', 0x80, 'a', 0x00});
  header.clear();
  x.clear(), y.clear(), z.clear();
  EXPECT_EQ(readXYZ(garbage, x, y, z, header, " "), 0);
  EXPECT_EQ(header.size(), 1u);
  // A "%" in the delimiter is taken literally.
  std::string percent = dir.file("percent.xyz");
  thTest::writeText(percent, "1%2%3\n");
  EXPECT_EQ(readXYZ(percent, x, y, z, header, "%"), 1);
  EXPECT_EQ(y.back(), 2.0);
}

TEST(VTextTable, ReadFirstLine) {
  thTest::TempDir dir;
  thTest::writeText(dir.file("a.txt"), "first\nsecond\n");
  EXPECT_EQ(readFirstLine(dir.file("a.txt")), (std::vector<std::string>{"first\n"}));
  thTest::writeText(dir.file("b.txt"), "only");
  EXPECT_EQ(readFirstLine(dir.file("b.txt")), (std::vector<std::string>{"only\n"}));
  thTest::writeText(dir.file("empty.txt"), "");
  EXPECT_EQ(readFirstLine(dir.file("empty.txt")), (std::vector<std::string>{"\n"}));
  EXPECT_TRUE(readFirstLine(dir.file("none.txt")).empty());
  EXPECT_TRUE(readFirstLine(dir.path()).empty());  // a directory
}
