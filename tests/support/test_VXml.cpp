#include "support/VXml.h"

#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VXml, WrapAndElements) {
  EXPECT_EQ(xmlWrap("abc", "x", false), "<x>abc</x>");
  EXPECT_EQ(xmlWrap("a\nb\n", "x", true), "<x>\n\ta\n\tb\n</x>\n");
  // Nested blocks indent one tab a level.
  EXPECT_EQ(xmlWrap(xmlWrap("v\n", "in", true), "out", true), "<out>\n\t<in>\n\t\tv\n\t</in>\n</out>\n");
  EXPECT_EQ(xmlWrap("", "x", true), "<x>\n</x>\n");
  EXPECT_EQ(xmlElement("n", "5", "\t"), "\t<n>5</n>\n");
  EXPECT_EQ(xmlElement("n", std::string("5")), "<n>5</n>\n");
  EXPECT_EQ(xmlElement("flag", true, "  "), "  <flag>true</flag>\n");
  EXPECT_EQ(xmlElement("flag", false), "<flag>false</flag>\n");
}

TEST(VXml, FindAndGet) {
  int32_t len = 0;
  EXPECT_EQ(xmlFindTag("<a><b>1</b></a>", "c", len, "/"), -1);
  EXPECT_EQ(len, -1);
  EXPECT_EQ(xmlGetValue("<a><b>1</b></a>", "c", "/"), "");
  EXPECT_EQ(xmlFindTag("<a><b>1</b></a>", "a/b", len, "/"), 3);
  EXPECT_EQ(len, 4);
  EXPECT_EQ(xmlGetValue("<a><b>1</b></a>", "a/b", "/"), "1");
  EXPECT_EQ(xmlGetValue("<a><b>1</b></a>", "a", "/"), "<b>1</b>");
  EXPECT_EQ(xmlGetValue("<a><b></b></a>", "a/b"), "");
  // The child must lie inside the parent.
  EXPECT_EQ(xmlFindTag("<a></a><b>1</b>", "a/b", len, "/"), -1);
  EXPECT_EQ(xmlGetValue("<c><b>2</b></c><a><b>1</b></a>", "a/b"), "1");
  // An empty delimiter makes the whole path one tag.
  EXPECT_EQ(xmlGetValue("<a/b>3</a/b>", "a/b", ""), "3");
  // Attributes are not matched; a closing tag ahead of the opening one gives no value.
  EXPECT_EQ(xmlGetValue("<a x=\"1\">v</a>", "a"), "");
  EXPECT_EQ(xmlGetValue("</a><a>", "a"), "");
  EXPECT_EQ(xmlGetValue("", "a"), "");
  EXPECT_EQ(xmlGetValue("<a>unclosed", "a"), "");
}

TEST(VXml, AppendAndSet) {
  EXPECT_EQ(xmlAppendToValue("<a><b>1</b></a>", "a/b", "2", "/"), "<a><b>12</b></a>");
  EXPECT_EQ(xmlAppendToValue("<a>x</a>", "a", "<c>y</c>"), "<a>x<c>y</c></a>");
  EXPECT_EQ(xmlAppendToValue("<a>x</a>", "q", "z"), "<a>x</a>");
  EXPECT_EQ(xmlSetValue("<r><a>old</a></r>", "a", "new"), "<r><a>new</a></r>");
  EXPECT_EQ(xmlSetValue("<r><a>old</a></r>", "q", "new"), "<r><a>old</a></r>");
}
