#include "support/VXml.h"

#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VXml, WrapAndElements) {
  EXPECT_EQ(xmlWrap("abc", "x", false), "<x>abc</x>");
  EXPECT_EQ(xmlWrap("a\nb\n", "x", true), "<x>\n\ta\n\tb\n</x>\n");
  // Nested blocks indent one tab a level.
  EXPECT_EQ(xmlWrap(xmlWrap("v\n", "in", true), "out", true), "<out>\n\t<in>\n\t\tv\n\t</in>\n</out>\n");
  EXPECT_EQ(xmlWrap("", "x", true), "<x>\n</x>\n");
  // A text literal must not fall to the bool overload.
  EXPECT_EQ(xmlElement("n", "5", "\t"), "\t<n>5</n>\n");
  EXPECT_EQ(xmlElement("n", std::string("5")), "<n>5</n>\n");
  EXPECT_EQ(xmlElement("flag", true, "  ") + xmlElement("flag", false),
            "  <flag>true</flag>\n<flag>false</flag>\n");
}

TEST(VXml, FindGetAppendSet) {
  int32_t len = 0;
  EXPECT_EQ(xmlFindTag("<a><b>1</b></a>", "c", len, "/"), -1);
  EXPECT_EQ(len, -1);
  EXPECT_EQ(xmlFindTag("<a><b>1</b></a>", "a/b", len, "/"), 3);
  EXPECT_EQ(len, 4);
  EXPECT_EQ(xmlFindTag("<a></a><b>1</b>", "a/b", len, "/"), -1);  // the child must lie inside the parent
  struct {
    const char *text, *path, *delim, *want;
  } gets[] = {{"<a><b>1</b></a>", "c", "/", ""},
              {"<a><b>1</b></a>", "a/b", "/", "1"},
              {"<a><b>1</b></a>", "a", "/", "<b>1</b>"},
              {"<a><b></b></a>", "a/b", "/", ""},
              {"<c><b>2</b></c><a><b>1</b></a>", "a/b", "/", "1"},
              {"<a/b>3</a/b>", "a/b", "", "3"},    // an empty delimiter makes the whole path one tag
              {"<a x=\"1\">v</a>", "a", "/", ""},  // attributes are not matched
              {"</a><a>", "a", "/", ""},
              {"", "a", "/", ""},
              {"<a>unclosed", "a", "/", ""}};
  for (const auto& g : gets) EXPECT_EQ(xmlGetValue(g.text, g.path, g.delim), g.want) << g.text;
  EXPECT_EQ(xmlAppendToValue("<a><b>1</b></a>", "a/b", "2", "/"), "<a><b>12</b></a>");
  EXPECT_EQ(xmlAppendToValue("<a>x</a>", "a", "<c>y</c>"), "<a>x<c>y</c></a>");
  EXPECT_EQ(xmlAppendToValue("<a>x</a>", "q", "z"), "<a>x</a>");
  EXPECT_EQ(xmlSetValue("<r><a>old</a></r>", "a", "new"), "<r><a>new</a></r>");
  EXPECT_EQ(xmlSetValue("<r><a>old</a></r>", "q", "new"), "<r><a>old</a></r>");
}
